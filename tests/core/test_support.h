// Shared helpers of the core tests.
//
//   CoreFixture      a clean host state around each test (module instance, hold, animate
//                    mode, current time); use with TEST_CASE_FIXTURE.
//   MessageRecorder  a client notify window that records the CURVE_MSG_... messages it
//                    gets (a real window on Windows, the platform's message sink natively).
//   FakeClient       a client object whose GetInterface(CURVE_CLIENT_INTERFACE_ID) answers
//                    the client callback interface and logs every call.
#pragma once

#include "curvectl/icurvectl.h"
#include "host/animatable.h"
#include "host/win_types.h"

#include <functional>
#include <string>
#include <vector>

namespace testsupport {

/// Puts the host state every test expects: the module instance set (string resources
/// load), no open or suspended hold and empty undo stacks, animate mode off and not
/// suspended, current time 0. Runs again on destruction.
void ResetHostState();

struct CoreFixture {
    CoreFixture() { ResetHostState(); }
    ~CoreFixture() { ResetHostState(); }
};

/// Gives `control` the x range (low, high) and y range (0, 1) the way a scene file gives
/// them (the control's range chunk), for ranges SetXRange refuses: without width,
/// inverted or not finite.
void LoadRanges(ICurveCtl& control, float low, float high, float yLow = 0.0f, float yHigh = 1.0f);

/// One client message as the notify window received it.
struct ClientMessage {
    UINT msg;
    WPARAM wParam;
    LPARAM lParam;
};

/// A notify window for SetNotifyWindow that records the client messages sent to it.
class MessageRecorder {
public:
    MessageRecorder();
    ~MessageRecorder();
    MessageRecorder(const MessageRecorder&) = delete;
    MessageRecorder& operator=(const MessageRecorder&) = delete;

    HWND window() const { return window_; }
    /// How many of the recorded messages are `msg`.
    int Count(UINT msg) const;
    void Clear() { messages.clear(); }

    std::vector<ClientMessage> messages; // oldest first
    /// Run for each message after it is recorded, as a client's handler would be.
    std::function<void(const ClientMessage&)> onMessage;

    /// Called by the platform layer's delivery (window procedure or native sink).
    void Record(UINT msg, WPARAM wParam, LPARAM lParam);

private:
    HWND window_ = nullptr; // a real window on Windows; a unique token natively
};

/// A client object. Its callback interface logs each call as a line:
/// "images", "text <i>", "reset <i>", "new <i>".
class FakeClient : public ReferenceTarget, public ICurveCtlClient {
public:
    void* GetInterface(ULONG id) override;

    BOOL GetCurveButtonImages(HIMAGELIST* images, ICurveCtl* control) override;
    BOOL GetCurveButtonText(int i, CStr& text, ICurveCtl* control) override;
    void ResetCurve(int i, ICurveCtl* control) override;
    void NewCurveCreated(int i, ICurveCtl* control) override;

    std::vector<std::string> calls;               // every callback, oldest first
    ICurveCtl* lastControl = nullptr;             // the control of the last call
    HIMAGELIST images = nullptr;                  // supplied by GetCurveButtonImages when non-null
    std::vector<std::string> texts;               // text of button i (when present and non-empty)
    std::function<void(int, ICurveCtl*)> onReset; // run by ResetCurve after logging
    std::function<void(int, ICurveCtl*)> onNew;   // run by NewCurveCreated after logging
};

} // namespace testsupport
