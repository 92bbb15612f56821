// CurveWindow: the graph's window. Its painting is in view_paint.cpp; its mouse input goes
// to the editor's mouse manager and from there to the mouse modes.
#include "editor/curve_ctl_window.h"
#include "editor/editor_resources.h"
#include "editor/sub_windows.h"
#include "host/offscreen.h"

void CurveWindow::Create(CurveCtlWindow* owner) {
    owner_ = owner;
    HWND hwnd = CreateWindowExA(0, kCurveWindowClass, "", WS_CHILD | WS_CLIPSIBLINGS, 0, 0, 0, 0,
                                owner->Handle(), nullptr, EditorInstance(), nullptr);
    Attach(hwnd);
    buffer_.Create(hwnd);
}

LRESULT CurveWindow::Move(int x, int y, int width, int height) {
    MoveWindow(hWnd_, x, y, width, height, TRUE);
    return 0;
}

MouseManager* CurveWindow::GetMouseManager() { return owner_ ? &owner_->Mice() : nullptr; }

LRESULT CurveWindow::Size(int, int, int) {
    if (buffer_)
        buffer_->Resize();
    InvalidateRect(hWnd_, nullptr, FALSE);
    if (owner_) {
        owner_->Cache().graphValid = 0;
        // The first paint after a resize repaints all of it.
        owner_->Cache().wholeWindow = 1;
    }
    return 0;
}

LRESULT CurveWindow::MouseActivate(HWND hwnd, UINT msg, WPARAM wParam, LPARAM lParam) {
    return DefWindowProcA(hwnd, msg, wParam, lParam);
}
