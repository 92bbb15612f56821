// Viewport: the picture at the current time, the time strip, and the mouse over the picture.
#include "viewport.h"

#include "host_menu.h"
#include "scene_doc.h"

#include <windowsx.h>

#include <algorithm>
#include <cstdio>

namespace {

#define VIEWPORT_PROP "DemoHostViewport"

constexpr int kBorder = 4; // around the picture; red in animate mode
constexpr int kStrip = 34; // height of the time strip at the bottom
constexpr int kButtonWidth = 84;
constexpr int kLabelWidth = 80;
constexpr COLORREF kAnimateRed = RGB(200, 30, 30);
constexpr COLORREF kBackground = RGB(70, 70, 70);

enum : int { kIdAnimate = 1, kIdSlider = 2 };

HWND Child(HWND parent, const char* cls, const char* text, DWORD style, int id) {
    HWND hwnd = CreateWindowExA(0, cls, text, WS_CHILD | WS_VISIBLE | style, 0, 0, 0, 0, parent,
                                reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)),
                                GetModuleHandleA(nullptr), nullptr);
    SendMessageA(hwnd, WM_SETFONT, reinterpret_cast<WPARAM>(GetStockObject(DEFAULT_GUI_FONT)),
                 FALSE);
    return hwnd;
}

void Fill(HDC dc, const RECT& r, COLORREF colour) {
    SetBkColor(dc, colour);
    ExtTextOutA(dc, 0, 0, ETO_OPAQUE, &r, nullptr, 0, nullptr); // a fill without a brush
}

} // namespace

Viewport::Viewport(HWND viewPanel, SceneDoc& scene, std::function<void(int)> command)
    : panel_(viewPanel), scene_(scene), command_(std::move(command)) {
    animate_ = Child(panel_, "BUTTON", "Animate", BS_CHECKBOX | BS_PUSHLIKE, kIdAnimate);
    slider_ = Child(panel_, TRACKBAR_CLASSA, "", TBS_HORZ | TBS_AUTOTICKS, kIdSlider);
    SendMessageA(slider_, TBM_SETRANGE, TRUE, MAKELPARAM(0, VIEW_LAST_FRAME));
    SendMessageA(slider_, TBM_SETTICFREQ, 10, 0);
    SendMessageA(slider_, TBM_SETPAGESIZE, 0, 10);
    frameLabel_ = Child(panel_, "STATIC", "", SS_CENTER, 0);

    SetPropA(panel_, VIEWPORT_PROP, this);
    hostProc_ = reinterpret_cast<WNDPROC>(
        SetWindowLongPtrA(panel_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(PanelProc)));
    GetCOREInterface()->RegisterTimeChangeCallback(this);
    TimeChanged(GetCOREInterface()->GetTime());
    Layout();
}

Viewport::~Viewport() {
    GetCOREInterface()->UnRegisterTimeChangeCallback(this);
    if (IsWindow(panel_)) {
        SetWindowLongPtrA(panel_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(hostProc_));
        RemovePropA(panel_, VIEWPORT_PROP);
        DestroyWindow(animate_);
        DestroyWindow(slider_);
        DestroyWindow(frameLabel_);
    }
}

void Viewport::Invalidate() { InvalidateRect(panel_, nullptr, FALSE); }

void Viewport::ShowAnimate(bool on) {
    animating_ = on;
    SendMessageA(animate_, BM_SETCHECK, on ? BST_CHECKED : BST_UNCHECKED, 0);
    Invalidate();
}

void Viewport::TimeChanged(TimeValue t) {
    const int frame = t / VIEW_TICKS_PER_FRAME;
    if (SendMessageA(slider_, TBM_GETPOS, 0, 0) != frame)
        SendMessageA(slider_, TBM_SETPOS, TRUE, frame);
    char text[32];
    std::snprintf(text, sizeof text, "Frame %d", frame);
    SetWindowTextA(frameLabel_, text);
    Invalidate();
}

RECT Viewport::PictureRect() const {
    RECT rc = {};
    GetClientRect(panel_, &rc);
    rc.left += kBorder;
    rc.top += kBorder;
    rc.right = std::max(rc.left, rc.right - kBorder);
    rc.bottom = std::max(rc.top, rc.bottom - kStrip - kBorder);
    return rc;
}

void Viewport::Layout() {
    RECT rc = {};
    GetClientRect(panel_, &rc);
    const int y = rc.bottom - kStrip + 5;
    const int h = kStrip - 10;
    MoveWindow(animate_, kBorder, y, kButtonWidth, h, TRUE);
    const int sliderLeft = kBorder + kButtonWidth + 6;
    const int sliderRight = std::max(sliderLeft, int(rc.right) - kLabelWidth - kBorder);
    MoveWindow(slider_, sliderLeft, y - 2, sliderRight - sliderLeft, h + 4, TRUE);
    MoveWindow(frameLabel_, sliderRight, y + 5, kLabelWidth, h - 8, TRUE);
    Invalidate();
}

void Viewport::EnsureSource(ViewEffect& effect, int width, int height) {
    if (&effect == sourceOf_ && width == sourceWidth_ && height == sourceHeight_ &&
        !source_.empty())
        return;
    sourceOf_ = &effect;
    sourceWidth_ = width;
    sourceHeight_ = height;
    source_.assign(std::size_t(width) * std::size_t(height) * 3, 0.0f);
    effect.DrawSource(width, height, source_.data());
}

void Viewport::Paint() {
    PAINTSTRUCT ps;
    HDC dc = BeginPaint(panel_, &ps);
    RECT client = {};
    GetClientRect(panel_, &client);
    const RECT pic = PictureRect();
    const int width = pic.right - pic.left, height = pic.bottom - pic.top;

    // Everything around the picture: the frame (red while animating) and the strip.
    RECT frame = client;
    frame.bottom = std::max(client.top, client.bottom - kStrip);
    const int saved = SaveDC(dc);
    ExcludeClipRect(dc, pic.left, pic.top, pic.right, pic.bottom);
    Fill(dc, frame, animating_ ? kAnimateRed : kBackground);
    RECT strip = client;
    strip.top = frame.bottom;
    Fill(dc, strip, GetSysColor(COLOR_BTNFACE));
    RestoreDC(dc, saved);

    ViewEffect* effect = scene_.Effect();
    if (effect && width > 0 && height > 0) {
        EnsureSource(*effect, width, height);
        shown_.resize(std::size_t(width) * std::size_t(height));
        effect->Apply(GetCOREInterface()->GetTime(), width, height, source_.data(), shown_.data());
        BITMAPINFO bmi = {};
        bmi.bmiHeader.biSize = sizeof bmi.bmiHeader;
        bmi.bmiHeader.biWidth = width;
        bmi.bmiHeader.biHeight = -height; // rows top to bottom
        bmi.bmiHeader.biPlanes = 1;
        bmi.bmiHeader.biBitCount = 32; // 0x00RRGGBB words are BGRX bytes
        bmi.bmiHeader.biCompression = BI_RGB;
        SetDIBitsToDevice(dc, pic.left, pic.top, DWORD(width), DWORD(height), 0, 0, 0, UINT(height),
                          shown_.data(), &bmi, DIB_RGB_COLORS);
    } else {
        Fill(dc, pic, kBackground);
        SetTextColor(dc, RGB(230, 230, 230));
        RECT text = pic;
        DrawTextA(dc, "No view effect: no plug-in in the class directory offers one.", -1, &text,
                  DT_CENTER | DT_VCENTER | DT_SINGLELINE);
    }
    EndPaint(panel_, &ps);
}

void Viewport::OnMouseMove(int x, int y) {
    ViewEffect* effect = scene_.Effect();
    if (!effect)
        return;
    if (!tracking_) {
        TRACKMOUSEEVENT track = {sizeof track, TME_LEAVE, panel_, 0};
        tracking_ = TrackMouseEvent(&track) != FALSE;
    }
    const RECT pic = PictureRect();
    const int px = x - pic.left, py = y - pic.top;
    if (px < 0 || py < 0 || px >= sourceWidth_ || py >= sourceHeight_ || source_.empty()) {
        effect->ViewPointer(nullptr);
        return;
    }
    effect->ViewPointer(&source_[(std::size_t(py) * std::size_t(sourceWidth_) + px) * 3]);
}

void Viewport::OnSlider() {
    const int frame = int(SendMessageA(slider_, TBM_GETPOS, 0, 0));
    GetCOREInterface()->SetTime(frame * VIEW_TICKS_PER_FRAME);
}

LRESULT CALLBACK Viewport::PanelProc(HWND hwnd, UINT msg, WPARAM wParam, LPARAM lParam) {
    auto* self = static_cast<Viewport*>(GetPropA(hwnd, VIEWPORT_PROP));
    if (!self)
        return DefWindowProcA(hwnd, msg, wParam, lParam);
    return self->OnMessage(msg, wParam, lParam);
}

LRESULT Viewport::OnMessage(UINT msg, WPARAM wParam, LPARAM lParam) {
    switch (msg) {
    case WM_PAINT:
        Paint();
        return 0;
    case WM_ERASEBKGND:
        return 1; // Paint covers every pixel
    case WM_SIZE:
        Layout();
        break;
    case WM_MOUSEMOVE:
        OnMouseMove(GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam));
        break;
    case WM_MOUSELEAVE:
        tracking_ = false;
        if (ViewEffect* effect = scene_.Effect())
            effect->ViewPointer(nullptr);
        return 0;
    case WM_HSCROLL:
        if (reinterpret_cast<HWND>(lParam) == slider_) {
            OnSlider();
            return 0;
        }
        break;
    case WM_COMMAND:
        if (LOWORD(wParam) == kIdAnimate && HIWORD(wParam) == BN_CLICKED) {
            command_(kCmdAnimate);
            return 0;
        }
        break;
    default:
        break;
    }
    return CallWindowProcA(hostProc_, panel_, msg, wParam, lParam);
}
