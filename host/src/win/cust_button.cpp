// [SECTION] index
//   Button state and settings   ButtonControl operations of ICustButton
//   Mouse                       press, drag, release, fly-off timer, cancel
//   Painting                    frame, highlight fill, image or label, fly-off mark
//   Window procedure

#include <algorithm>

#include "cust_classes.h"
#include "host/colorman.h"

namespace hostwin {

namespace {
constexpr UINT_PTR kFlyOffTimer = 1; // the press is held long enough to open the strip
}

// -------------------------------------------------------------------------------------
// [SECTION] Button state and settings
// -------------------------------------------------------------------------------------

ButtonControl::ButtonControl(HWND hwnd)
    : PaintedControl(hwnd), highlight_(ColorMan()->GetColor(kColorActiveCommand)) {}

void ButtonControl::Invalidate() {
    if (hwnd_)
        InvalidateRect(hwnd_, nullptr, FALSE);
}

void ButtonControl::SetText(const char* text) {
    if (hwnd_)
        SetWindowTextA(hwnd_, text ? text : ""); // WM_SETTEXT repaints
}

void ButtonControl::GetText(char* buf, int size) {
    CopyText(buf, size, "");
    if (hwnd_ && buf && size > 0)
        GetWindowTextA(hwnd_, buf, size);
}

void ButtonControl::SetImage(HIMAGELIST images, int iOutEn, int iInEn, int iOutDis, int iInDis,
                             int w, int h) {
    images_ = images;
    image_[0] = iOutEn;
    image_[1] = iInEn;
    image_[2] = iOutDis;
    image_[3] = iInDis;
    imageW_ = w;
    imageH_ = h;
    Invalidate();
}

void ButtonControl::SetType(int type) {
    type_ = type == CBT_CHECK ? CBT_CHECK : CBT_PUSH;
    if (type_ == CBT_PUSH)
        checked_ = FALSE;
    Invalidate();
}

void ButtonControl::SetCheck(BOOL checked) {
    BOOL now = type_ == CBT_CHECK && checked;
    if (now == checked_)
        return;
    checked_ = now;
    Invalidate();
}

void ButtonControl::SetCheckHighlight(BOOL on) {
    checkHighlight_ = on ? TRUE : FALSE;
    Invalidate();
}

void ButtonControl::SetHighlightColor(COLORREF color) {
    highlight_ = color;
    Invalidate();
}

void ButtonControl::SetFlyOff(int count, const FlyOffData* data, int timeOut, int init, int dir,
                              int columns) {
    CloseFlyOff();
    flyOffs_.clear();
    if (count > 0 && data)
        flyOffs_.assign(data, data + count);
    curFlyOff_ = flyOffs_.empty() ? 0 : std::clamp(init, 0, int(flyOffs_.size()) - 1);
    flyOffDelay_ = std::max(0, timeOut);
    flyOffDir_ = dir;
    flyOffColumns_ = std::max(1, columns);
    Invalidate();
}

void ButtonControl::SetCurFlyOff(int f, BOOL notify) {
    if (f < 0 || f >= int(flyOffs_.size()))
        return;
    curFlyOff_ = f;
    Invalidate();
    if (notify && hwnd_)
        NotifyParent(hwnd_, BN_FLYOFF);
}

void ButtonControl::Enable(BOOL on) {
    if (!hwnd_)
        return;
    if (!on)
        CancelPress();
    EnableWindow(hwnd_, on);
    Invalidate();
}

BOOL ButtonControl::IsEnabled() { return hwnd_ && IsWindowEnabled(hwnd_); }

// -------------------------------------------------------------------------------------
// [SECTION] Mouse
// -------------------------------------------------------------------------------------

void ButtonControl::OnLButtonDown(POINT) {
    if (!IsEnabled() || pressed_)
        return;
    pressed_ = inside_ = true;
    SetCapture(hwnd_);
    Invalidate();
    AddRef(); // the parent may destroy us while it handles the notification
    if (downNotify_)
        NotifyParent(hwnd_, BN_BUTTONDOWN);
    if (hwnd_ && pressed_ && !flyOffs_.empty())
        SetTimer(hwnd_, kFlyOffTimer, UINT(std::max(1, flyOffDelay_)), nullptr);
    Release();
}

void ButtonControl::OnMouseMove(POINT p) {
    if (!pressed_)
        return;
    if (flyOffWindow_) {
        POINT s = p;
        ClientToScreen(hwnd_, &s);
        if (auto* strip = static_cast<FlyOffControl*>(ObjectOf(flyOffWindow_)))
            strip->Track(s);
        return;
    }
    RECT rc;
    GetClientRect(hwnd_, &rc);
    bool now = PtInRect(&rc, p);
    if (now != inside_) {
        inside_ = now;
        Invalidate();
    }
}

void ButtonControl::OnTimer() {
    KillTimer(hwnd_, kFlyOffTimer);
    if (pressed_ && inside_ && !flyOffWindow_)
        OpenFlyOff();
}

void ButtonControl::OnLButtonUp(POINT p) {
    if (!pressed_)
        return;
    int chosen = -1;
    bool click = false;
    if (flyOffWindow_) {
        POINT s = p;
        ClientToScreen(hwnd_, &s);
        if (auto* strip = static_cast<FlyOffControl*>(ObjectOf(flyOffWindow_)))
            chosen = strip->Track(s);
    } else {
        RECT rc;
        GetClientRect(hwnd_, &rc);
        click = PtInRect(&rc, p);
    }
    // Back to rest before anyone hears of it: the parent may look at the check state.
    pressed_ = inside_ = false;
    KillTimer(hwnd_, kFlyOffTimer);
    CloseFlyOff();
    if (GetCapture() == hwnd_)
        ReleaseCapture();
    if (chosen >= 0) {
        curFlyOff_ = chosen;
        if (type_ == CBT_CHECK)
            checked_ = TRUE;
    } else if (click && type_ == CBT_CHECK) {
        checked_ = !checked_;
    }
    Invalidate();

    AddRef(); // each notification may destroy the window
    if (downNotify_ && hwnd_)
        NotifyParent(hwnd_, BN_BUTTONUP);
    if (chosen >= 0 && hwnd_)
        NotifyParent(hwnd_, BN_FLYOFF);
    else if (click && hwnd_)
        NotifyParent(hwnd_, BN_CLICKED);
    Release();
}

void ButtonControl::CancelPress() {
    if (!pressed_)
        return;
    pressed_ = inside_ = false;
    KillTimer(hwnd_, kFlyOffTimer);
    CloseFlyOff();
    if (GetCapture() == hwnd_)
        ReleaseCapture();
    Invalidate();
}

void ButtonControl::OpenFlyOff() {
    flyOffWindow_ = FlyOffControl::Open(this, hwnd_, flyOffDir_, flyOffColumns_);
    Invalidate();
}

void ButtonControl::CloseFlyOff() {
    if (!flyOffWindow_)
        return;
    HWND strip = flyOffWindow_;
    flyOffWindow_ = nullptr;
    DestroyWindow(strip);
    Invalidate();
}

bool ButtonControl::IsIn() const {
    return (pressed_ && inside_) || checked_ || flyOffWindow_ != nullptr;
}

// -------------------------------------------------------------------------------------
// [SECTION] Painting
// -------------------------------------------------------------------------------------

void ButtonControl::Paint(HDC hdc) {
    RECT rc;
    GetClientRect(hwnd_, &rc);
    const bool in = IsIn();
    const bool enabled = IsWindowEnabled(hwnd_);

    FillRect(hdc, &rc, ColorMan()->GetBrush(kColorBackground));
    if (checked_ && checkHighlight_) {
        RECT fill = {rc.left + 1, rc.top + 1, rc.right - 1, rc.bottom - 1};
        SetDCBrushColor(hdc, highlight_);
        FillRect(hdc, &fill, static_cast<HBRUSH>(GetStockObject(DC_BRUSH)));
    }
    Rect3D(hdc, rc, in);

    const int shift = in ? 1 : 0; // pressed content moves down and right by a pixel
    if (images_) {
        int idx[4] = {image_[0], image_[1], image_[2], image_[3]};
        if (!flyOffs_.empty()) {
            const FlyOffData& d = flyOffs_[size_t(curFlyOff_)];
            idx[0] = d.iOutEn, idx[1] = d.iInEn, idx[2] = d.iOutDis, idx[3] = d.iInDis;
        }
        int image = enabled ? (in ? idx[1] : idx[0]) : (in ? idx[3] : idx[2]);
        int x = (rc.right - imageW_) / 2 + shift;
        int y = (rc.bottom - imageH_) / 2 + shift;
        ImageList_Draw(images_, image, hdc, x, y, ILD_TRANSPARENT);
    } else {
        char text[256];
        GetWindowTextA(hwnd_, text, sizeof text);
        HGDIOBJ oldFont = SelectObject(hdc, GetUIFont());
        SetBkMode(hdc, TRANSPARENT);
        SetTextColor(hdc, ColorMan()->GetColor(enabled ? kColorText : kColorDisabledText));
        RECT tr = {rc.left + shift, rc.top + shift, rc.right + shift, rc.bottom + shift};
        DrawTextA(hdc, text, -1, &tr, DT_CENTER | DT_VCENTER | DT_SINGLELINE | DT_NOPREFIX);
        SelectObject(hdc, oldFont);
    }

    if (flyOffs_.size() > 1) {
        // A small triangle in the bottom-right corner says "hold for more".
        HBRUSH mark = ColorMan()->GetBrush(enabled ? kColorText : kColorDisabledText);
        for (int k = 0; k < 4; ++k) {
            RECT row = {rc.right - 3 - k, rc.bottom - 6 + k, rc.right - 2, rc.bottom - 5 + k};
            FillRect(hdc, &row, mark);
        }
    }
}

// -------------------------------------------------------------------------------------
// [SECTION] Window procedure
// -------------------------------------------------------------------------------------

LRESULT ButtonControl::WndProc(UINT msg, WPARAM wParam, LPARAM lParam) {
    POINT p = {short(LOWORD(lParam)), short(HIWORD(lParam))};
    if (LRESULT result; PaintMessage(msg, wParam, result))
        return result;
    switch (msg) {
    case WM_LBUTTONDOWN:
    case WM_LBUTTONDBLCLK:
        OnLButtonDown(p);
        return 0;
    case WM_MOUSEMOVE:
        OnMouseMove(p);
        return 0;
    case WM_LBUTTONUP:
        OnLButtonUp(p);
        return 0;
    case WM_TIMER:
        if (wParam == kFlyOffTimer)
            OnTimer();
        return 0;
    case WM_CAPTURECHANGED:
        if (reinterpret_cast<HWND>(lParam) != hwnd_)
            CancelPress();
        return 0;
    case WM_CANCELMODE:
        CancelPress();
        return 0;
    case WM_RBUTTONUP:
        if (rightNotify_ && IsEnabled())
            NotifyParent(hwnd_, BN_RIGHTCLICK);
        return 0;
    case WM_ENABLE:
        Invalidate();
        return 0;
    case WM_SETTEXT: {
        LRESULT r = Default(msg, wParam, lParam);
        Invalidate();
        return r;
    }
    case WM_DESTROY:
        KillTimer(hwnd_, kFlyOffTimer);
        CloseFlyOff();
        tooltip_.Destroy();
        return 0;
    default:
        return Default(msg, wParam, lParam);
    }
}

} // namespace hostwin
