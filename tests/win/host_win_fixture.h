// Shared pieces of the host window-service tests: a recording parent window, a message
// pump, mouse clicks sent as real messages, pixel capture and a PNG writer for screenshots.
#pragma once

#include "host/win_types.h"

#include <commctrl.h>

#include <string>
#include <vector>

namespace hostwin_test {

/// One message a child sent to the recording parent.
struct Received {
    UINT msg;
    WPARAM wParam;
    LPARAM lParam;
};

/// A visible window (a child of one top-level stage window shared by all tests) that
/// records WM_COMMAND, WM_CUSTEDIT_ENTER and WM_NEXTDLGCTL from its children.
class ParentWindow {
public:
    explicit ParentWindow(int width = 640, int height = 240);
    ~ParentWindow();
    ParentWindow(const ParentWindow&) = delete;
    ParentWindow& operator=(const ParentWindow&) = delete;

    HWND hwnd() const { return hwnd_; }
    const std::vector<Received>& received() const { return received_; }
    void Clear() { received_.clear(); }
    /// WM_COMMAND messages with this id and notification code.
    int Commands(int id, int code) const;
    /// Every message of kind `msg`.
    int Count(UINT msg) const;

private:
    static LRESULT CALLBACK Proc(HWND hwnd, UINT msg, WPARAM wParam, LPARAM lParam);
    HWND hwnd_ = nullptr;
    std::vector<Received> received_;
};

/// Dispatches the thread's messages for `ms` milliseconds (timers included).
void Pump(int ms);

/// Left press and release at client point `p` of `hwnd`, as the system sends them.
void Click(HWND hwnd, POINT p);
/// The centre of a rectangle.
POINT Center(const RECT& r);

/// The window's client area as the screen shows it now, painted first (UpdateWindow).
/// Pixels in COLORREF order; empty when the capture failed.
struct Capture {
    int width = 0, height = 0;
    std::vector<COLORREF> pixels;
    COLORREF at(int x, int y) const { return pixels[size_t(y) * size_t(width) + size_t(x)]; }
};
Capture CaptureClient(HWND hwnd);

/// Writes the capture as a 24-bit PNG.
bool WritePng(const Capture& capture, const std::string& path);

/// An image list of `colors.size()` solid 16 x 15 images, one colour each, with a
/// one-pixel transparent border (mask) around each.
HIMAGELIST MakeSolidImages(const std::vector<COLORREF>& colors);

} // namespace hostwin_test
