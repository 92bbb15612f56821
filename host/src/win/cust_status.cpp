// The status item: a sunken strip that shows one line of text, cut with an ellipsis when
// it does not fit. The text is the window text, so the ordinary window-text calls see it.

#include "cust_classes.h"
#include "host/colorman.h"

namespace hostwin {

void StatusControl::SetText(const char* text) {
    if (hwnd_)
        SetWindowTextA(hwnd_, text ? text : "");
}

void StatusControl::GetText(char* buf, int size) {
    CopyText(buf, size, "");
    if (hwnd_ && buf && size > 0)
        GetWindowTextA(hwnd_, buf, size);
}

void StatusControl::SetTextFormat(int format) {
    if (format != STATUSTEXT_LEFT && format != STATUSTEXT_CENTERED && format != STATUSTEXT_RIGHT)
        return;
    format_ = format;
    if (hwnd_)
        InvalidateRect(hwnd_, nullptr, FALSE);
}

void StatusControl::Paint(HDC hdc) {
    RECT rc;
    GetClientRect(hwnd_, &rc);
    FillRect(hdc, &rc, ColorMan()->GetBrush(kColorBackground));
    Rect3D(hdc, rc, TRUE);

    char text[512];
    GetWindowTextA(hwnd_, text, sizeof text);
    HGDIOBJ oldFont = SelectObject(hdc, GetUIFont());
    SetBkMode(hdc, TRANSPARENT);
    SetTextColor(hdc, ColorMan()->GetColor(kColorStatusText));
    RECT tr = {rc.left + 4, rc.top + 1, rc.right - 4, rc.bottom - 1};
    UINT align = format_ == STATUSTEXT_CENTERED ? DT_CENTER
                 : format_ == STATUSTEXT_RIGHT  ? DT_RIGHT
                                                : DT_LEFT;
    DrawTextA(hdc, text, -1, &tr,
              align | DT_VCENTER | DT_SINGLELINE | DT_NOPREFIX | DT_END_ELLIPSIS);
    SelectObject(hdc, oldFont);
}

LRESULT StatusControl::WndProc(UINT msg, WPARAM wParam, LPARAM lParam) {
    if (LRESULT result; PaintMessage(msg, wParam, result))
        return result;
    switch (msg) {
    case WM_SETTEXT: {
        LRESULT r = Default(msg, wParam, lParam);
        InvalidateRect(hwnd_, nullptr, FALSE);
        return r;
    }
    case WM_DESTROY:
        tooltip_.Destroy();
        return 0;
    default:
        return Default(msg, wParam, lParam);
    }
}

} // namespace hostwin
