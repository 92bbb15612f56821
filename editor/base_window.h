// BaseWindow and BaseSubWindow: the objects behind the editor's windows.
//
// Every window of the editor except its frame ("DefPopUp") carries its object in
// GWLP_USERDATA, attached by the creator right after CreateWindowExA returns. The one
// window procedure, EditorWindowProc, unpacks each message and calls the object's
// operation for it; the operations change state and invalidate, only Paint draws.
//
// Operations are declared in the order of their slots; each returns the window
// procedure's result. The base implementations do nothing and return 0, except Move.
#pragma once

#include "host/win_types.h"

class CurveCtlWindow;
class MouseManager;

class BaseWindow {
public:
    BaseWindow() = default;
    BaseWindow(const BaseWindow&) = delete;
    BaseWindow& operator=(const BaseWindow&) = delete;
    /// Detaches the object from its window if the window still carries it, so that no
    /// message reaches a deleted object.
    virtual ~BaseWindow();

    /// @name Message operations, in slot order
    /// Coordinates are the signed 16-bit halves of lParam; `keys` is wParam's low word.
    /// @{
    /// The frame resizes the window: MoveWindow with repaint.
    virtual LRESULT Move(int x, int y, int width, int height);
    /// The manager that receives this window's mouse input, or null for the slots below.
    virtual MouseManager* GetMouseManager() { return nullptr; }
    virtual LRESULT LButtonDown(int x, int y, int keys);
    virtual LRESULT RButtonDown(int x, int y, int keys);
    virtual LRESULT MButtonDown(int x, int y, int keys);
    virtual LRESULT MouseMove(int x, int y, int keys);
    virtual LRESULT LButtonUp(int x, int y, int keys);
    virtual LRESULT RButtonUp(int x, int y, int keys);
    virtual LRESULT MButtonUp(int x, int y, int keys);
    virtual LRESULT Command(int notifyCode, int id, HWND control);
    virtual LRESULT Paint();
    virtual LRESULT Timer(int id);
    virtual LRESULT SetFocus(HWND previous);
    virtual LRESULT Size(int type, int width, int height);
    virtual LRESULT Enable(BOOL enabled);
    virtual LRESULT Notify(LPARAM header);
    virtual LRESULT HScroll(int code, int position, HWND bar);
    virtual LRESULT VScroll(int code, int position, HWND bar);
    /// Message 0x658 of the host's custom controls; no editor window handles it.
    virtual LRESULT HostControlNotify(int low, int high);
    virtual LRESULT InitMenuPopup(HMENU menu, int position, BOOL systemMenu);
    virtual LRESULT Activate(int state, BOOL minimised, HWND other);
    virtual LRESULT MouseActivate(HWND hwnd, UINT msg, WPARAM wParam, LPARAM lParam);
    /// Message 0x6AD: Enter was pressed in the host edit field `id`.
    virtual LRESULT EditEnter(int id, LPARAM lParam);
    virtual LRESULT MenuSelect(int item, int flags, HMENU menu);
    /// The window procedure answers 1 whatever this returns.
    virtual LRESULT NextDlgCtl(WPARAM wParam);
    /// Wheel delta (signed); forwarded by the frame window.
    virtual LRESULT MouseWheel(int delta);
    /// @}

    /// The editor window this one belongs to (null for the editor window itself): the
    /// window procedure tells its control's notify window about button presses.
    virtual CurveCtlWindow* OwnerWindow() const { return nullptr; }

    HWND Handle() const { return hWnd_; }
    /// Stores `hwnd` and attaches this object to it (GWLP_USERDATA).
    void Attach(HWND hwnd);

protected:
    HWND hWnd_ = nullptr; // the window; set by the creator, attached at once
};

/// A child window of a CurveCtlWindow: the ruler strip or the graph.
class BaseSubWindow : public BaseWindow {
public:
    /// Slot 26: creates the window as a child of `owner`'s window.
    virtual void Create(CurveCtlWindow* owner) = 0;
    CurveCtlWindow* OwnerWindow() const override { return owner_; }

protected:
    CurveCtlWindow* owner_ = nullptr; // not owned; set first thing in Create
};

/// The window procedure of "DefPosWindow", "DefCurveWindow" and "BaseWindow".
LRESULT CALLBACK EditorWindowProc(HWND hwnd, UINT msg, WPARAM wParam, LPARAM lParam);
/// The window procedure of the frame, "DefPopUp".
LRESULT CALLBACK FrameWindowProc(HWND hwnd, UINT msg, WPARAM wParam, LPARAM lParam);

/// Messages of the host's custom controls and of the editor.
/// (Enter in a host edit field, 0x6AD, is WM_CUSTEDIT_ENTER of host/custctrl.h.)
constexpr UINT WM_HOST_CONTROL_NOTIFY = 0x658; // custom controls' own notice (1624)
constexpr UINT WM_EDITOR_REPAINT = 0x2400;     // repaint request to the frame (9216)
