// What the custom controls share: the window classes, the reference-counted object behind
// each control window, the tooltip helper and small text helpers.
#pragma once

#include <new>

#include "host/custctrl.h"

namespace hostwin {

/// The instance of hostcore.dll, which owns the control classes.
HINSTANCE HostInstance();

/// The host's control classes, in registration order.
enum class ControlClass { Toolbar, Button, Edit, Status, FlyOff, Count };

/// Registers every control class that is not registered yet.
void RegisterControlClasses();
/// Unregisters them (hostcore.dll unloading).
void UnregisterControlClasses();
/// TRUE when `hwnd` is a window of class `cls` registered by this library.
bool IsControlClass(HWND hwnd, ControlClass cls);

/// The object behind one control window. The window holds one reference from WM_NCCREATE
/// to WM_NCDESTROY and every interface handed out holds one more, so the object outlives
/// whichever goes last. Once the window is gone, Window() is null and the operations of
/// the derived classes do nothing.
class ControlObject {
public:
    explicit ControlObject(HWND hwnd) : hwnd_(hwnd) {}
    ControlObject(const ControlObject&) = delete;
    ControlObject& operator=(const ControlObject&) = delete;

    void AddRef() { ++refs_; }
    void Release() {
        if (--refs_ == 0)
            delete this;
    }
    HWND Window() const { return hwnd_; }

    /// The window's messages (after WM_NCCREATE, before WM_NCDESTROY).
    virtual LRESULT WndProc(UINT msg, WPARAM wParam, LPARAM lParam) = 0;
    /// Last message of the window; the object detaches itself.
    void WindowGone() {
        OnWindowGone();
        hwnd_ = nullptr;
        Release();
    }

protected:
    virtual ~ControlObject() = default;
    virtual void OnWindowGone() {}
    LRESULT Default(UINT msg, WPARAM wParam, LPARAM lParam) {
        return DefWindowProcA(hwnd_, msg, wParam, lParam);
    }

    HWND hwnd_; // the control window; null once it is destroyed

private:
    int refs_ = 1; // the window's own, plus one per interface handed out
};

/// A control that paints every pixel of its window itself, so there is nothing to erase.
class PaintedControl : public ControlObject {
public:
    using ControlObject::ControlObject;

protected:
    virtual void Paint(HDC hdc) = 0;
    /// Answers WM_PAINT, WM_PRINTCLIENT and WM_ERASEBKGND into `result`; false for any
    /// other message.
    bool PaintMessage(UINT msg, WPARAM wParam, LRESULT& result) {
        switch (msg) {
        case WM_PAINT: {
            PAINTSTRUCT ps;
            Paint(BeginPaint(hwnd_, &ps));
            EndPaint(hwnd_, &ps);
            result = 0;
            return true;
        }
        case WM_PRINTCLIENT:
            Paint(reinterpret_cast<HDC>(wParam));
            result = 0;
            return true;
        case WM_ERASEBKGND:
            result = 1;
            return true;
        default:
            return false;
        }
    }
};

/// The object attached to a control window (window extra bytes, slot 0), or null.
ControlObject* ObjectOf(HWND hwnd);

/// Window procedure of a control class whose object type is T (T(HWND) constructor).
template <class T>
LRESULT CALLBACK ControlWndProc(HWND hwnd, UINT msg, WPARAM wParam, LPARAM lParam) {
    ControlObject* self = ObjectOf(hwnd);
    if (msg == WM_NCCREATE) {
        self = new (std::nothrow) T(hwnd);
        if (!self)
            return FALSE; // creation fails rather than a control without state
        SetWindowLongPtrA(hwnd, 0, reinterpret_cast<LONG_PTR>(self));
    }
    if (!self)
        return DefWindowProcA(hwnd, msg, wParam, lParam);
    if (msg == WM_NCDESTROY) {
        SetWindowLongPtrA(hwnd, 0, 0);
        LRESULT r = DefWindowProcA(hwnd, msg, wParam, lParam);
        self->WindowGone();
        return r;
    }
    return self->WndProc(msg, wParam, lParam);
}

/// The object of a window of class `cls` with one more reference, or null.
template <class T> T* AcquireControl(HWND hwnd, ControlClass cls) {
    if (!hwnd || !IsControlClass(hwnd, cls))
        return nullptr;
    T* obj = static_cast<T*>(ObjectOf(hwnd));
    if (obj)
        obj->AddRef();
    return obj;
}

/// The tooltip of one control window: a tool of the comctl32 tooltip window that all
/// controls under the same top-level window share (it follows the mouse over each control
/// by subclassing it). One window per top-level window rather than per control: a
/// toolbar of thirty buttons would otherwise make thirty top-level windows, and those are
/// what costs when an editor opens. The shared window goes with its last tool.
class Tooltip {
public:
    Tooltip() = default;
    ~Tooltip() { Destroy(); }
    Tooltip(const Tooltip&) = delete;
    Tooltip& operator=(const Tooltip&) = delete;

    /// Turns the tip of `tool` on with `text` (null = empty), or off (destroyed).
    void Set(HWND tool, BOOL on, const char* text);
    /// Reads the text back from the tooltip control; FALSE and "" without a tooltip.
    BOOL Get(char* buf, int size) const;
    /// Destroys the tooltip window (the tool's WM_DESTROY).
    void Destroy();

private:
    TOOLINFOA Info(char* text) const;
    HWND tip_ = nullptr;  // the shared tooltip window this tool is registered with
    HWND tool_ = nullptr; // the control it describes
};

/// Copies `text` into `buf` of `size` bytes, always terminated; nothing for size <= 0.
void CopyText(char* buf, int size, const char* text);

/// Sends WM_COMMAND(id, code) from `control` to its parent.
void NotifyParent(HWND control, int code);

} // namespace hostwin
