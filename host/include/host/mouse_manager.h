// The host's mouse manager: turns a window's raw mouse messages into the gestures of a
// mouse mode (a MouseCallBack): press, drag, release, abort, hover, right click.
//
// A window hands its mouse messages to its manager:
//
//     case WM_LBUTTONDOWN: case WM_LBUTTONUP: case WM_MOUSEMOVE: ...
//         return MouseManager::MouseWinProc(&manager, hwnd, msg, wParam, lParam);
//
// and installs one mode per button with SetMouseProc(mode, button, numPoints).
//
// Gestures of a button whose mode takes two or more points (numPoints >= 2):
//   button down          -> MOUSE_POINT, point 0; the window captures the mouse
//   moves while held     -> MOUSE_MOVE, point 1
//   button up            -> MOUSE_POINT, point 1; with numPoints 2 the gesture ends and
//                           the capture is released
//   numPoints > 2: later moves give MOUSE_MOVE with the next point number and each later
//   press places that point (MOUSE_POINT k) until point numPoints - 1 ends the gesture.
// Ways out before the end, each giving the mode MOUSE_ABORT (point = the point being
// placed) and releasing the capture: Escape, losing the capture (another window takes it,
// WM_CANCELMODE), pressing another button, or installing another mode on the button.
// A mode that answers 0 to MOUSE_POINT or MOUSE_MOVE ends its gesture at once, without
// MOUSE_ABORT (a refused press, an insertion that is complete at the press).
//
// numPoints 1: left and middle button down -> MOUSE_POINT point 0, no capture, nothing
// more for that press. The right button with numPoints 1 is the property click: a press
// and release in the window -> MOUSE_PROPCLICK (point 0) at the release.
//
// Moves without a button pressed -> MOUSE_FREEMOVE (point 0) to the left button's mode
// (hover feedback such as cursors). A double click that reaches the manager
// (WM_LBUTTONDBLCLK and friends) gives MOUSE_DBLCLICK and then counts as a press.
// Keys taken from the thread's message queue during a gesture, other than Escape, give
// MOUSE_KEYBOARD with the virtual-key code as the point number.
//
// The mode's `flags` hold MOUSE_SHIFT, MOUSE_CTRL, MOUSE_ALT (from the keyboard state,
// so a test can set them with SetKeyboardState) and the MOUSE_xBUTTON bits of the
// buttons held; `m` is the mouse point in the window's client coordinates (negative
// outside it while captured).
//
// Escape and lost capture reach the manager even when the window only passes it mouse
// messages: during a gesture the manager watches the thread's messages with hooks that it
// removes when the gesture ends. A window may also pass WM_CAPTURECHANGED, WM_CANCELMODE
// and WM_KEYDOWN (only Escape counts) to MouseWinProc; it answers 0 for them.
//
// Windows only; one user-interface thread.
#pragma once

#include "host/export.h"
#include "host/geom.h"
#include "host/win_types.h"

// Messages of MouseCallBack::proc
#define MOUSE_ABORT 0
#define MOUSE_POINT 1
#define MOUSE_MOVE 2
#define MOUSE_DBLCLICK 3
#define MOUSE_FREEMOVE 6
#define MOUSE_KEYBOARD 7
#define MOUSE_PROPCLICK 8

// Bits of the `flags` argument
#define MOUSE_SHIFT 0x01
#define MOUSE_CTRL 0x02
#define MOUSE_ALT 0x04
#define MOUSE_LBUTTON 0x08
#define MOUSE_MBUTTON 0x10
#define MOUSE_RBUTTON 0x20

// Buttons of SetMouseProc
#define LEFT_BUTTON 0
#define MIDDLE_BUTTON 1
#define RIGHT_BUTTON 2

/// Base of the host's interface-serving objects; mouse modes derive from it through
/// MouseCallBack.
class HOST_API BaseInterfaceServer {
public:
    virtual ~BaseInterfaceServer() = default;
};

/// A mouse mode.
class HOST_API MouseCallBack : public BaseInterfaceServer {
public:
    /// One mouse event of a gesture (see the top of this file). `point` is the number of
    /// the point being placed. Answer non-zero to go on; 0 to MOUSE_POINT or MOUSE_MOVE
    /// ends the gesture. The base accepts everything and does nothing.
    virtual int proc(HWND hwnd, int msg, int point, int flags, IPoint2 m);

    /// Asked at every press with the number of points installed for the button; the
    /// mode may answer another count (at least 1) for this gesture. The base keeps it.
    virtual int override(int numPoints) { return numPoints; }

    /// The window's view moved by `offset` pixels during a gesture (MouseManager::Pan).
    /// Points the mode remembers from earlier in the gesture should move by the same
    /// amount to stay over the same content. The base ignores it.
    virtual void pan(IPoint2 offset) { (void)offset; }
};

class HOST_API MouseManager {
public:
    MouseManager();
    /// Ends a gesture in progress without calling its mode (the modes may be gone already)
    /// and releases the capture the gesture held.
    ~MouseManager();
    MouseManager(const MouseManager&) = delete;
    MouseManager& operator=(const MouseManager&) = delete;

    /// Installs `proc` (not owned; null removes the mode) on `button` (LEFT_BUTTON,
    /// MIDDLE_BUTTON, RIGHT_BUTTON; other values are ignored) with `numPoints` points
    /// (below 1 counts as 1). A gesture of that button in progress is aborted first.
    void SetMouseProc(MouseCallBack* proc, int button, int numPoints = 2);
    MouseCallBack* GetMouseProc(int button) const;
    int GetNumPoints(int button) const;

    /// Hands one window message to the modes; see the top of this file. Answers 0 for every
    /// message it handles or ignores.
    LRESULT MouseWinProc(HWND hwnd, UINT msg, WPARAM wParam, LPARAM lParam);
    static LRESULT MouseWinProc(MouseManager* manager, HWND hwnd, UINT msg, WPARAM wParam,
                                LPARAM lParam);

    /// TRUE while a gesture holds the mouse (from the press to its end or abort).
    BOOL IsActive() const { return activeButton_ >= 0; }
    /// The button of the gesture in progress, or -1.
    int ActiveButton() const { return activeButton_; }
    /// Aborts the gesture in progress (MOUSE_ABORT to its mode); nothing when idle.
    void Abort();
    /// Tells the mode of the gesture in progress that the view moved (MouseCallBack::pan)
    /// and shifts the press point the manager keeps by the same amount.
    void Pan(IPoint2 offset);

    /// Used by the manager's message hooks; not for callers.
    void AbortFromHook();
    void KeyFromHook(int virtualKey);
    HWND CaptureWindow() const { return window_; }

private:
    struct Slot {
        MouseCallBack* proc = nullptr; // not owned
        int numPoints = 2;             // points per gesture
    };

    void OnPress(HWND hwnd, int button, int flags, IPoint2 m, bool doubleClick);
    void OnRelease(HWND hwnd, int button, int flags, IPoint2 m);
    void OnMove(HWND hwnd, int flags, IPoint2 m);
    void Place(int flags, IPoint2 m);
    int Deliver(int msg, int point, int flags, IPoint2 m);
    void End();

    Slot slots_[3];               // per button
    int activeButton_ = -1;       // button of the gesture in progress, -1 when idle
    int activePoints_ = 0;        // numPoints of that gesture (after override)
    int point_ = 0;               // number of the point being placed
    HWND window_ = nullptr;       // window of the gesture (holds the capture)
    IPoint2 press_;               // where the gesture's point 0 was placed
    IPoint2 last_;                // last mouse point seen during the gesture
    unsigned generation_ = 0;     // changes whenever a gesture begins or ends
    HWND pendingRight_ = nullptr; // window of a right press awaiting its release
    bool swallowUntilUp_[3] = {}; // a button whose press aborted a gesture
};
