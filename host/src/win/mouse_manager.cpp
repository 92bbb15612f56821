// [SECTION] index
//   Hooks          Escape, keys and lost capture seen during a gesture
//   Installation   SetMouseProc, destruction
//   Dispatch       MouseWinProc: press, move, release
//   Gestures       placing points, aborting, ending, panning
//
// Every call into a mode may change the manager under our feet: the mode can install
// another mode, abort, or start a new gesture. Each such change bumps `generation_`, and
// code after a call into a mode checks it before touching the gesture again.

#include "host/mouse_manager.h"

#include <windowsx.h>

#include <algorithm>

int MouseCallBack::proc(HWND, int, int, int, IPoint2) { return TRUE; }

namespace {

// -------------------------------------------------------------------------------------
// [SECTION] Hooks
// -------------------------------------------------------------------------------------

// Installed only while a gesture is in progress, for the one manager that holds it
// (the mouse capture, and so a gesture, is one per thread).
MouseManager* hookOwner = nullptr;
HHOOK getMessageHook = nullptr;
HHOOK callWndHook = nullptr;

int KeyFlags() {
    int f = 0;
    if (GetKeyState(VK_SHIFT) < 0)
        f |= MOUSE_SHIFT;
    if (GetKeyState(VK_CONTROL) < 0)
        f |= MOUSE_CTRL;
    if (GetKeyState(VK_MENU) < 0)
        f |= MOUSE_ALT;
    return f;
}

int MouseFlags(WPARAM wParam) {
    int f = 0;
    if (wParam & MK_SHIFT)
        f |= MOUSE_SHIFT;
    if (wParam & MK_CONTROL)
        f |= MOUSE_CTRL;
    if (GetKeyState(VK_MENU) < 0)
        f |= MOUSE_ALT; // mouse messages carry no Alt bit
    if (wParam & MK_LBUTTON)
        f |= MOUSE_LBUTTON;
    if (wParam & MK_MBUTTON)
        f |= MOUSE_MBUTTON;
    if (wParam & MK_RBUTTON)
        f |= MOUSE_RBUTTON;
    return f;
}

// Keys come to whichever window has the focus, rarely the one that holds the capture:
// the hook sees them as the thread takes them from its queue.
LRESULT CALLBACK GetMessageHook(int code, WPARAM wParam, LPARAM lParam) {
    if (code == HC_ACTION && wParam == PM_REMOVE && hookOwner) {
        MSG* msg = reinterpret_cast<MSG*>(lParam);
        if (msg->message == WM_KEYDOWN || msg->message == WM_SYSKEYDOWN) {
            if (msg->wParam == VK_ESCAPE) {
                msg->message = WM_NULL; // used up: nobody else acts on this Escape
                hookOwner->AbortFromHook();
            } else {
                hookOwner->KeyFromHook(int(msg->wParam));
            }
        }
    }
    return CallNextHookEx(nullptr, code, wParam, lParam);
}

// WM_CAPTURECHANGED and WM_CANCELMODE are sent to the capture window, whose procedure may
// not pass them on to the manager.
LRESULT CALLBACK CallWndHook(int code, WPARAM wParam, LPARAM lParam) {
    if (code == HC_ACTION && hookOwner) {
        const CWPSTRUCT* cwp = reinterpret_cast<const CWPSTRUCT*>(lParam);
        if (cwp->hwnd == hookOwner->CaptureWindow()) {
            bool lost = cwp->message == WM_CAPTURECHANGED &&
                        reinterpret_cast<HWND>(cwp->lParam) != cwp->hwnd;
            if (lost || cwp->message == WM_CANCELMODE || cwp->message == WM_DESTROY)
                hookOwner->AbortFromHook();
        }
    }
    return CallNextHookEx(nullptr, code, wParam, lParam);
}

void InstallHooks(MouseManager* owner) {
    DWORD thread = GetCurrentThreadId();
    if (!getMessageHook)
        getMessageHook = SetWindowsHookExA(WH_GETMESSAGE, GetMessageHook, nullptr, thread);
    if (!callWndHook)
        callWndHook = SetWindowsHookExA(WH_CALLWNDPROC, CallWndHook, nullptr, thread);
    hookOwner = owner;
}

void RemoveHooks(MouseManager* owner) {
    if (hookOwner != owner)
        return;
    hookOwner = nullptr;
    if (getMessageHook)
        UnhookWindowsHookEx(getMessageHook);
    if (callWndHook)
        UnhookWindowsHookEx(callWndHook);
    getMessageHook = callWndHook = nullptr;
}

} // namespace

// -------------------------------------------------------------------------------------
// [SECTION] Installation
// -------------------------------------------------------------------------------------

MouseManager::MouseManager() = default;

MouseManager::~MouseManager() {
    if (IsActive())
        End(); // no MOUSE_ABORT: the modes may be destroyed already
}

void MouseManager::SetMouseProc(MouseCallBack* proc, int button, int numPoints) {
    if (button < LEFT_BUTTON || button > RIGHT_BUTTON)
        return;
    if (activeButton_ == button)
        Abort();
    if (button == RIGHT_BUTTON)
        pendingRight_ = nullptr;
    slots_[button].proc = proc;
    slots_[button].numPoints = std::max(1, numPoints);
}

MouseCallBack* MouseManager::GetMouseProc(int button) const {
    return button >= LEFT_BUTTON && button <= RIGHT_BUTTON ? slots_[button].proc : nullptr;
}

int MouseManager::GetNumPoints(int button) const {
    return button >= LEFT_BUTTON && button <= RIGHT_BUTTON ? slots_[button].numPoints : 0;
}

// -------------------------------------------------------------------------------------
// [SECTION] Dispatch
// -------------------------------------------------------------------------------------

LRESULT MouseManager::MouseWinProc(MouseManager* manager, HWND hwnd, UINT msg, WPARAM wParam,
                                   LPARAM lParam) {
    return manager ? manager->MouseWinProc(hwnd, msg, wParam, lParam) : 0;
}

LRESULT MouseManager::MouseWinProc(HWND hwnd, UINT msg, WPARAM wParam, LPARAM lParam) {
    const IPoint2 m(GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam));
    switch (msg) {
    case WM_LBUTTONDOWN:
    case WM_LBUTTONDBLCLK:
        OnPress(hwnd, LEFT_BUTTON, MouseFlags(wParam), m, msg == WM_LBUTTONDBLCLK);
        break;
    case WM_MBUTTONDOWN:
    case WM_MBUTTONDBLCLK:
        OnPress(hwnd, MIDDLE_BUTTON, MouseFlags(wParam), m, msg == WM_MBUTTONDBLCLK);
        break;
    case WM_RBUTTONDOWN:
    case WM_RBUTTONDBLCLK:
        OnPress(hwnd, RIGHT_BUTTON, MouseFlags(wParam), m, msg == WM_RBUTTONDBLCLK);
        break;
    case WM_LBUTTONUP:
        OnRelease(hwnd, LEFT_BUTTON, MouseFlags(wParam), m);
        break;
    case WM_MBUTTONUP:
        OnRelease(hwnd, MIDDLE_BUTTON, MouseFlags(wParam), m);
        break;
    case WM_RBUTTONUP:
        OnRelease(hwnd, RIGHT_BUTTON, MouseFlags(wParam), m);
        break;
    case WM_MOUSEMOVE:
        OnMove(hwnd, MouseFlags(wParam), m);
        break;
    case WM_CAPTURECHANGED:
        if (IsActive() && hwnd == window_ && reinterpret_cast<HWND>(lParam) != hwnd)
            Abort();
        break;
    case WM_CANCELMODE:
        Abort();
        break;
    case WM_KEYDOWN:
        if (wParam == VK_ESCAPE)
            Abort();
        break;
    default:
        break;
    }
    return 0;
}

void MouseManager::OnPress(HWND hwnd, int button, int flags, IPoint2 m, bool doubleClick) {
    if (button != RIGHT_BUTTON)
        pendingRight_ = nullptr;
    if (IsActive()) {
        if (button == activeButton_) {
            // Points after the first release are placed by presses.
            if (hwnd == window_ && point_ >= 2) {
                last_ = m;
                Place(flags, m);
            }
        } else {
            // Another button during a gesture: the gesture is off, and this button's
            // release belongs to nobody.
            swallowUntilUp_[button] = true;
            Abort();
        }
        return;
    }
    swallowUntilUp_[button] = false;
    MouseCallBack* proc = slots_[button].proc;
    if (!proc)
        return;
    if (doubleClick) {
        unsigned generation = generation_;
        proc->proc(hwnd, MOUSE_DBLCLICK, 0, flags, m);
        proc = slots_[button].proc;
        if (generation != generation_ || IsActive() || !proc)
            return;
    }
    const int points = std::max(1, proc->override(slots_[button].numPoints));
    if (button == RIGHT_BUTTON && points == 1) {
        pendingRight_ = hwnd; // the property click comes with the release
        return;
    }
    if (points == 1) {
        proc->proc(hwnd, MOUSE_POINT, 0, flags, m);
        return;
    }
    // Capture first: taking it from another manager's window aborts that gesture (its
    // hook sees the capture change) before this one installs its own hooks.
    SetCapture(hwnd);
    activeButton_ = button;
    activePoints_ = points;
    point_ = 0;
    window_ = hwnd;
    press_ = last_ = m;
    ++generation_;
    InstallHooks(this);
    Place(flags, m);
}

void MouseManager::OnRelease(HWND hwnd, int button, int flags, IPoint2 m) {
    if (swallowUntilUp_[button]) {
        swallowUntilUp_[button] = false;
        return;
    }
    if (button == RIGHT_BUTTON && pendingRight_) {
        bool here = pendingRight_ == hwnd;
        pendingRight_ = nullptr;
        MouseCallBack* proc = slots_[RIGHT_BUTTON].proc;
        if (here && proc && !IsActive())
            proc->proc(hwnd, MOUSE_PROPCLICK, 0, flags, m);
        return;
    }
    // Only the first release places a point; later points come with presses.
    if (IsActive() && button == activeButton_ && hwnd == window_ && point_ == 1) {
        last_ = m;
        Place(flags, m);
    }
}

void MouseManager::OnMove(HWND hwnd, int flags, IPoint2 m) {
    if (IsActive()) {
        if (hwnd != window_)
            return;
        last_ = m;
        unsigned generation = generation_;
        int go = Deliver(MOUSE_MOVE, point_, flags, m);
        if (generation == generation_ && !go)
            End();
        return;
    }
    if (MouseCallBack* proc = slots_[LEFT_BUTTON].proc)
        proc->proc(hwnd, MOUSE_FREEMOVE, 0, flags, m);
}

// -------------------------------------------------------------------------------------
// [SECTION] Gestures
// -------------------------------------------------------------------------------------

int MouseManager::Deliver(int msg, int point, int flags, IPoint2 m) {
    MouseCallBack* proc = IsActive() ? slots_[activeButton_].proc : nullptr;
    return proc ? proc->proc(window_, msg, point, flags, m) : 0;
}

void MouseManager::Place(int flags, IPoint2 m) {
    unsigned generation = generation_;
    int go = Deliver(MOUSE_POINT, point_, flags, m);
    if (generation != generation_)
        return; // the mode ended or replaced the gesture
    if (!go || point_ + 1 >= activePoints_)
        End();
    else
        ++point_;
}

void MouseManager::End() {
    HWND w = window_;
    activeButton_ = -1;
    window_ = nullptr;
    ++generation_;
    RemoveHooks(this);
    // Idle before the release: the WM_CAPTURECHANGED it sends must not read as a loss.
    if (w && GetCapture() == w)
        ReleaseCapture();
}

void MouseManager::Abort() {
    if (!IsActive())
        return;
    MouseCallBack* proc = slots_[activeButton_].proc;
    HWND w = window_;
    int point = point_;
    IPoint2 m = last_;
    End();
    if (proc)
        proc->proc(w, MOUSE_ABORT, point, KeyFlags(), m);
}

void MouseManager::AbortFromHook() { Abort(); }

void MouseManager::KeyFromHook(int virtualKey) {
    if (IsActive())
        Deliver(MOUSE_KEYBOARD, virtualKey, KeyFlags(), last_);
}

void MouseManager::Pan(IPoint2 offset) {
    if (!IsActive())
        return;
    press_ = press_ + offset;
    last_ = last_ + offset;
    if (MouseCallBack* proc = slots_[activeButton_].proc)
        proc->pan(offset);
}
