#include "host/core_interface.h"

#include <algorithm>
#include <vector>

namespace {

class CoreInterface : public Interface {
public:
    TimeValue GetTime() override { return time_; }
    void SetTime(TimeValue t, BOOL) override {
        if (t == time_)
            return;
        time_ = t;
        std::vector<TimeChangeCallback*> cbs = callbacks_; // a callback may unregister
        for (TimeChangeCallback* cb : cbs)
            cb->TimeChanged(t);
    }
    void RegisterTimeChangeCallback(TimeChangeCallback* tc) override {
        if (tc && std::find(callbacks_.begin(), callbacks_.end(), tc) == callbacks_.end())
            callbacks_.push_back(tc);
    }
    void UnRegisterTimeChangeCallback(TimeChangeCallback* tc) override {
        callbacks_.erase(std::remove(callbacks_.begin(), callbacks_.end(), tc), callbacks_.end());
    }
    HWND GetMAXHWnd() override { return mainWindow_; }
    void SetMAXHWnd(HWND hwnd) override { mainWindow_ = hwnd; }
    void RedrawViews(TimeValue) override { ++redraws_; }
    void PopCommandMode() override { ++pops_; }
    int RedrawRequests() override { return redraws_; }
    int CommandModePops() override { return pops_; }

private:
    TimeValue time_ = 0;                         // current time
    std::vector<TimeChangeCallback*> callbacks_; // not owned
    HWND mainWindow_ = nullptr;                  // set by the host application
    int redraws_ = 0;
    int pops_ = 0;
};

} // namespace

Interface* GetCOREInterface() {
    static CoreInterface core;
    return &core;
}
