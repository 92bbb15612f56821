// The editor's window procedure: a flat dispatcher from window messages to the
// operations of the window's object (base_window.h).
#include "editor/base_window.h"

#include "control/curve_control.h"
#include "curvectl/messages.h"
#include "editor/curve_ctl_window.h"
#include "host/custctrl.h"
#include "host/mouse_manager.h"

// ---------------------------------------------------------------------------------------
// Base operations: nothing but Move has a default behaviour

LRESULT BaseWindow::Move(int x, int y, int width, int height) {
    MoveWindow(hWnd_, x, y, width, height, TRUE);
    return 0;
}

LRESULT BaseWindow::LButtonDown(int, int, int) { return 0; }
LRESULT BaseWindow::RButtonDown(int, int, int) { return 0; }
LRESULT BaseWindow::MButtonDown(int, int, int) { return 0; }
LRESULT BaseWindow::MouseMove(int, int, int) { return 0; }
LRESULT BaseWindow::LButtonUp(int, int, int) { return 0; }
LRESULT BaseWindow::RButtonUp(int, int, int) { return 0; }
LRESULT BaseWindow::MButtonUp(int, int, int) { return 0; }
LRESULT BaseWindow::Command(int, int, HWND) { return 0; }
LRESULT BaseWindow::Paint() { return 0; }
LRESULT BaseWindow::Timer(int) { return 0; }
LRESULT BaseWindow::SetFocus(HWND) { return 0; }
LRESULT BaseWindow::Size(int, int, int) { return 0; }
LRESULT BaseWindow::Enable(BOOL) { return 0; }
LRESULT BaseWindow::Notify(LPARAM) { return 0; }
LRESULT BaseWindow::HScroll(int, int, HWND) { return 0; }
LRESULT BaseWindow::VScroll(int, int, HWND) { return 0; }
LRESULT BaseWindow::HostControlNotify(int, int) { return 0; }
LRESULT BaseWindow::InitMenuPopup(HMENU, int, BOOL) { return 0; }
LRESULT BaseWindow::Activate(int, BOOL, HWND) { return 0; }
LRESULT BaseWindow::MouseActivate(HWND, UINT, WPARAM, LPARAM) { return 0; }
LRESULT BaseWindow::EditEnter(int, LPARAM) { return 0; }
LRESULT BaseWindow::MenuSelect(int, int, HMENU) { return 0; }
LRESULT BaseWindow::NextDlgCtl(WPARAM) { return 0; }
LRESULT BaseWindow::MouseWheel(int) { return 0; }

BaseWindow::~BaseWindow() {
    if (hWnd_ && IsWindow(hWnd_) &&
        GetWindowLongPtrA(hWnd_, GWLP_USERDATA) == reinterpret_cast<LONG_PTR>(this))
        SetWindowLongPtrA(hWnd_, GWLP_USERDATA, 0);
}

void BaseWindow::Attach(HWND hwnd) {
    hWnd_ = hwnd;
    SetWindowLongPtrA(hwnd, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
}

// ---------------------------------------------------------------------------------------
// The window procedure

namespace {

int lowX(LPARAM lParam) { return short(LOWORD(lParam)); }
int highY(LPARAM lParam) { return short(HIWORD(lParam)); }
int keysOf(WPARAM wParam) { return LOWORD(wParam); }

/// Mouse input goes to the window's mouse manager when it has one, else to the slot.
template <typename Slot>
LRESULT routeMouse(BaseWindow* w, HWND hwnd, UINT msg, WPARAM wParam, LPARAM lParam, Slot slot) {
    if (MouseManager* mm = w->GetMouseManager())
        return mm->MouseWinProc(hwnd, msg, wParam, lParam);
    return (w->*slot)(lowX(lParam), highY(lParam), keysOf(wParam));
}

/// After a button press or release has been handled, the client hears of it.
void tellClient(BaseWindow* w, UINT clientMsg, WPARAM wParam, LPARAM lParam) {
    CurveCtlWindow* owner = w->OwnerWindow();
    if (!owner)
        return;
    CurveControl* control = owner->Control();
    if (control && control->NotifyWindow())
        SendMessageA(control->NotifyWindow(), clientMsg, wParam, lParam);
}

} // namespace

LRESULT CALLBACK EditorWindowProc(HWND hwnd, UINT msg, WPARAM wParam, LPARAM lParam) {
    auto* w = reinterpret_cast<BaseWindow*>(GetWindowLongPtrA(hwnd, GWLP_USERDATA));
    // Messages sent while CreateWindowExA runs (before the creator attaches the object)
    // and after WM_DESTROY detached it.
    if (!w)
        return DefWindowProcA(hwnd, msg, wParam, lParam);

    switch (msg) {
    case WM_DESTROY:
        // Only detach: the object belongs to its CurveCtlWindow, not to the window.
        SetWindowLongPtrA(hwnd, GWLP_USERDATA, 0);
        return 0;

    case WM_MOUSEMOVE:
        return routeMouse(w, hwnd, msg, wParam, lParam, &BaseWindow::MouseMove);
    case WM_RBUTTONUP:
        return routeMouse(w, hwnd, msg, wParam, lParam, &BaseWindow::RButtonUp);
    case WM_MBUTTONDOWN:
        return routeMouse(w, hwnd, msg, wParam, lParam, &BaseWindow::MButtonDown);
    case WM_MBUTTONUP:
        return routeMouse(w, hwnd, msg, wParam, lParam, &BaseWindow::MButtonUp);
    case WM_LBUTTONDOWN: {
        const LRESULT r = routeMouse(w, hwnd, msg, wParam, lParam, &BaseWindow::LButtonDown);
        tellClient(w, CURVE_MSG_LBUTTONDOWN, wParam, lParam);
        return r;
    }
    case WM_LBUTTONUP: {
        const LRESULT r = routeMouse(w, hwnd, msg, wParam, lParam, &BaseWindow::LButtonUp);
        tellClient(w, CURVE_MSG_LBUTTONUP, wParam, lParam);
        return r;
    }
    case WM_RBUTTONDOWN: {
        const LRESULT r = routeMouse(w, hwnd, msg, wParam, lParam, &BaseWindow::RButtonDown);
        tellClient(w, CURVE_MSG_RBUTTONDOWN, wParam, lParam);
        return r;
    }

    case WM_COMMAND:
        return w->Command(HIWORD(wParam), LOWORD(wParam), reinterpret_cast<HWND>(lParam));
    case WM_PAINT:
        return w->Paint();
    case WM_TIMER:
        return w->Timer(LOWORD(wParam));
    case WM_SETFOCUS:
        return w->SetFocus(reinterpret_cast<HWND>(wParam));
    case WM_SIZE:
        return w->Size(int(wParam), LOWORD(lParam), HIWORD(lParam));
    case WM_ENABLE:
        return w->Enable(BOOL(wParam));
    case WM_NOTIFY:
        return w->Notify(lParam);
    case WM_HSCROLL:
        return w->HScroll(LOWORD(wParam), short(HIWORD(wParam)), reinterpret_cast<HWND>(lParam));
    case WM_VSCROLL:
        return w->VScroll(LOWORD(wParam), short(HIWORD(wParam)), reinterpret_cast<HWND>(lParam));
    case WM_HOST_CONTROL_NOTIFY:
        return w->HostControlNotify(LOWORD(wParam), HIWORD(wParam));
    case WM_INITMENUPOPUP:
        return w->InitMenuPopup(reinterpret_cast<HMENU>(wParam), LOWORD(lParam), HIWORD(lParam));
    case WM_ACTIVATE:
        return w->Activate(LOWORD(wParam), HIWORD(wParam), reinterpret_cast<HWND>(lParam));
    case WM_MOUSEACTIVATE:
        return w->MouseActivate(hwnd, msg, wParam, lParam);
    case WM_CUSTEDIT_ENTER:
        return w->EditEnter(int(wParam), lParam);
    case WM_MENUSELECT:
        return w->MenuSelect(LOWORD(wParam), HIWORD(wParam), reinterpret_cast<HMENU>(lParam));
    case WM_NEXTDLGCTL:
        w->NextDlgCtl(wParam);
        return 1;
    case WM_MOUSEWHEEL:
        return w->MouseWheel(short(HIWORD(wParam)));

    default:
        // Double-clicks included: the modes see presses only.
        return DefWindowProcA(hwnd, msg, wParam, lParam);
    }
}
