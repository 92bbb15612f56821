// PosWindow: the ruler strip's window, its placement between the toolbars and the drag
// that moves it up and down. Its painting is in view_paint.cpp.
#include "control/curve_control.h"
#include "editor/curve_ctl_window.h"
#include "editor/editor_resources.h"
#include "editor/sub_windows.h"
#include "host/offscreen.h"

namespace {
/// Height of the top toolbar's band as the strip sees it.
constexpr int kTopBand = 28;
constexpr int kBottomBand = 24;
constexpr int kStripMargin = 15;
} // namespace

void PosWindow::Create(CurveCtlWindow* owner) {
    owner_ = owner;
    HWND hwnd = CreateWindowExA(0, kPosWindowClass, "", WS_CHILD, 0, 0, 0, 0, owner->Handle(),
                                nullptr, EditorInstance(), nullptr);
    Attach(hwnd);
    dragging_ = 0;
    top_ = owner->HasTopToolbar() ? kTopBand : 0;
    buffer_.Create(hwnd);
}

LRESULT PosWindow::Move(int x, int y, int width, int height) {
    MoveWindow(hWnd_, x, y, width, height, TRUE);
    return 0;
}

LRESULT PosWindow::Size(int, int, int) {
    if (buffer_)
        buffer_->Resize();
    return 0;
}

LRESULT PosWindow::MouseActivate(HWND hwnd, UINT msg, WPARAM wParam, LPARAM lParam) {
    return DefWindowProcA(hwnd, msg, wParam, lParam);
}

void PosWindow::Place() {
    if (!owner_)
        return;
    RECT client;
    GetClientRect(owner_->Handle(), &client);
    const DWORD flags = owner_->Flags();
    const bool scrollBars = (flags & CC_SHOWSCROLLBARS) != 0;
    const int cx = GetSystemMetrics(SM_CXVSCROLL);
    const int cy = GetSystemMetrics(SM_CYHSCROLL);
    const int lower = client.bottom - (owner_->HasBottomToolbar() ? kBottomBand : 0) -
                      (scrollBars ? cy : 0) - kStripMargin;
    const int upper = owner_->HasTopToolbar() ? kTopBand : 0;
    // The upper clamp comes last: on a window too short for both the strip sits at the
    // upper bound.
    if (top_ > lower)
        top_ = lower;
    if (top_ < upper)
        top_ = upper;
    Move(0, top_, client.right - (scrollBars ? cx : 0), kHeight);
    SetWindowPos(hWnd_, HWND_TOP, 0, 0, 0, 0, SWP_NOSIZE | SWP_NOMOVE);
}

int PosWindow::parentY(int x, int y) const {
    POINT p{x, y};
    MapWindowPoints(hWnd_, GetParent(hWnd_), &p, 1);
    return p.y;
}

LRESULT PosWindow::LButtonDown(int x, int y, int) {
    if (dragging_)
        return 0;
    dragging_ = 1;
    SetCapture(hWnd_);
    dragOffset_ = top_ - parentY(x, y);
    return 0;
}

LRESULT PosWindow::MouseMove(int x, int y, int) {
    if (!dragging_)
        return 0;
    top_ = parentY(x, y) + dragOffset_;
    Place();
    return 0;
}

LRESULT PosWindow::LButtonUp(int, int, int) {
    if (!dragging_)
        return 0;
    ReleaseCapture();
    dragging_ = 0;
    return 0;
}
