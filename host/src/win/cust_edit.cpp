// The entry field: a "CustEdit" frame window around a standard edit control. The frame
// draws the sunken border and owns the state; the inner control is subclassed so that
// Enter reaches the field's parent as WM_CUSTEDIT_ENTER and Tab as WM_NEXTDLGCTL.

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "cust_classes.h"
#include "host/colorman.h"

namespace hostwin {

namespace {
// The frame's object, stored on the inner edit control.
constexpr const char* kOwnerProp = "HostCustEditOwner";
} // namespace

std::string EditControl::Text() const {
    if (!edit_)
        return std::string();
    int n = GetWindowTextLengthA(edit_);
    std::string s(size_t(n) + 1, '\0');
    GetWindowTextA(edit_, s.data(), n + 1);
    s.resize(strlen(s.c_str()));
    return s;
}

void EditControl::GetText(char* buf, int size) {
    CopyText(buf, size, "");
    if (edit_ && buf && size > 0)
        GetWindowTextA(edit_, buf, size);
}

void EditControl::SetText(const char* text) {
    if (edit_)
        SetWindowTextA(edit_, text ? text : "");
}

void EditControl::SetText(int value) {
    char text[16];
    snprintf(text, sizeof text, "%d", value);
    SetText(text);
}

void EditControl::SetText(float value, int precision) {
    char text[64];
    snprintf(text, sizeof text, "%.*f",
             precision < 0   ? 0
             : precision > 9 ? 9
                             : precision,
             double(value));
    SetText(text);
}

float EditControl::GetFloat(BOOL* valid) {
    std::string s = Text();
    char* end = nullptr;
    errno = 0;
    double v = strtod(s.c_str(), &end);
    while (end && (*end == ' ' || *end == '\t'))
        ++end;
    if (valid)
        *valid = !s.empty() && end && *end == '\0' && end != s.c_str() && errno == 0;
    return float(v);
}

int EditControl::GetInt(BOOL* valid) {
    std::string s = Text();
    char* end = nullptr;
    errno = 0;
    long v = strtol(s.c_str(), &end, 10);
    while (end && (*end == ' ' || *end == '\t'))
        ++end;
    bool ok = !s.empty() && end && *end == '\0' && end != s.c_str() && errno == 0 && v >= INT_MIN &&
              v <= INT_MAX;
    if (valid)
        *valid = ok;
    return ok ? int(v) : 0;
}

BOOL EditControl::GotReturn() {
    BOOL got = gotReturn_;
    gotReturn_ = FALSE;
    return got;
}

BOOL EditControl::HasFocus() { return edit_ && GetFocus() == edit_; }

void EditControl::GiveFocus() {
    if (edit_)
        SetFocus(edit_);
}

void EditControl::Enable(BOOL on) {
    if (!hwnd_)
        return;
    EnableWindow(hwnd_, on); // WM_ENABLE passes it on to the inner control
}

BOOL EditControl::IsEnabled() { return hwnd_ && IsWindowEnabled(hwnd_); }

LRESULT CALLBACK EditControl::InnerProc(HWND hwnd, UINT msg, WPARAM wParam, LPARAM lParam) {
    auto* self = static_cast<EditControl*>(GetPropA(hwnd, kOwnerProp));
    if (!self)
        return DefWindowProcA(hwnd, msg, wParam, lParam);
    return self->Inner(msg, wParam, lParam);
}

LRESULT EditControl::Inner(UINT msg, WPARAM wParam, LPARAM lParam) {
    HWND edit = edit_;
    WNDPROC base = editProc_;
    switch (msg) {
    case WM_GETDLGCODE:
        // In a dialog, Enter and Tab still come to us.
        return CallWindowProcA(base, edit, msg, wParam, lParam) | DLGC_WANTALLKEYS;
    case WM_KEYDOWN:
        if (wParam == VK_RETURN) {
            gotReturn_ = TRUE;
            if (wantReturn_ && hwnd_) {
                HWND frame = hwnd_;
                SendMessageA(GetParent(frame), WM_CUSTEDIT_ENTER, WPARAM(GetDlgCtrlID(frame)),
                             reinterpret_cast<LPARAM>(frame));
            }
            return 0;
        }
        if (wParam == VK_TAB && hwnd_) {
            bool back = GetKeyState(VK_SHIFT) < 0;
            SendMessageA(GetParent(hwnd_), WM_NEXTDLGCTL, back ? 1 : 0, FALSE);
            return 0;
        }
        break;
    case WM_CHAR:
        if (wParam == '\r' || wParam == '\t')
            return 0; // no beep for keys handled above
        break;
    case WM_NCDESTROY:
        SetWindowLongPtrA(edit, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(base));
        RemovePropA(edit, kOwnerProp);
        edit_ = nullptr;
        return CallWindowProcA(base, edit, msg, wParam, lParam);
    default:
        break;
    }
    return CallWindowProcA(base, edit, msg, wParam, lParam);
}

LRESULT EditControl::WndProc(UINT msg, WPARAM wParam, LPARAM lParam) {
    switch (msg) {
    case WM_CREATE: {
        RECT rc;
        GetClientRect(hwnd_, &rc);
        DWORD style = WS_CHILD | WS_VISIBLE | ES_AUTOHSCROLL | ES_LEFT;
        edit_ = CreateWindowExA(0, "EDIT", "", style, 1, 1, rc.right - 2, rc.bottom - 2, hwnd_,
                                nullptr, HostInstance(), nullptr);
        if (!edit_)
            return -1;
        SendMessageA(edit_, WM_SETFONT, reinterpret_cast<WPARAM>(GetUIFont()), FALSE);
        SetPropA(edit_, kOwnerProp, this);
        editProc_ = reinterpret_cast<WNDPROC>(SetWindowLongPtrA(
            edit_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&EditControl::InnerProc)));
        auto* cs = reinterpret_cast<const CREATESTRUCTA*>(lParam);
        if (cs && cs->lpszName)
            SetWindowTextA(edit_, cs->lpszName);
        return 0;
    }
    case WM_SIZE:
        if (edit_)
            MoveWindow(edit_, 1, 1, std::max(0, LOWORD(lParam) - 2),
                       std::max(0, HIWORD(lParam) - 2), TRUE);
        return 0;
    case WM_SETFOCUS:
        if (edit_)
            SetFocus(edit_);
        return 0;
    case WM_ENABLE:
        if (edit_)
            EnableWindow(edit_, BOOL(wParam));
        return 0;
    // The frame's text is the field's text.
    case WM_SETTEXT:
    case WM_GETTEXT:
    case WM_GETTEXTLENGTH:
        return edit_ ? SendMessageA(edit_, msg, wParam, lParam) : Default(msg, wParam, lParam);
    case WM_PAINT: {
        PAINTSTRUCT ps;
        HDC hdc = BeginPaint(hwnd_, &ps);
        RECT rc;
        GetClientRect(hwnd_, &rc);
        Rect3D(hdc, rc, TRUE);
        EndPaint(hwnd_, &ps);
        return 0;
    }
    case WM_PRINTCLIENT: {
        RECT rc;
        GetClientRect(hwnd_, &rc);
        Rect3D(reinterpret_cast<HDC>(wParam), rc, TRUE);
        return 0;
    }
    case WM_DESTROY:
        tooltip_.Destroy();
        return 0;
    default:
        return Default(msg, wParam, lParam);
    }
}

} // namespace hostwin
