// ColourPanel: the command-panel UI of ColourCurves and the curve control's messages.
#include "colour_panel.h"

#include "client_module.h"
#include "colour_curves.h"
#include "host/actctx.h"
#include "host/core_interface.h"
#include "host/host_window.h"

#include <cstdarg>
#include <cstdio>

namespace {

#define COLOUR_PANEL_CLASS "ColourCurvesPanel"

// Command ids of the panel's buttons.
enum : int { kIdEmbedded = 101, kIdFloating = 102, kIdReset = 103 };

// Layout inside the command panel, in pixels.
constexpr int kMargin = 6;
constexpr int kButtonHeight = 24;
constexpr int kEditorHeight = 300;
constexpr int kEventHeight = 44;   // three lines
constexpr int kPointerHeight = 30; // two lines
constexpr int kFrameHeight = 16;   // one line

void RegisterPanelClass(WNDPROC proc) {
    static bool registered = false;
    if (registered)
        return;
    WNDCLASSA wc = {};
    wc.lpfnWndProc = proc;
    wc.hInstance = ClientInstance();
    wc.hCursor = LoadCursorA(nullptr, IDC_ARROW);
    wc.hbrBackground = GetSysColorBrush(COLOR_BTNFACE);
    wc.lpszClassName = COLOUR_PANEL_CLASS;
    registered = ActCtxRegisterClassA(&wc) != 0;
}

HWND Child(HWND parent, const char* cls, const char* text, DWORD style, int x, int y, int w, int h,
           int id) {
    HWND hwnd = CreateWindowExA(0, cls, text, WS_CHILD | WS_VISIBLE | style, x, y, w, h, parent,
                                reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), ClientInstance(),
                                nullptr);
    SendMessageA(hwnd, WM_SETFONT, reinterpret_cast<WPARAM>(GetStockObject(DEFAULT_GUI_FONT)),
                 FALSE);
    return hwnd;
}

} // namespace

ColourPanel::ColourPanel(ColourCurves& effect, HWND commandPanel) : effect_(effect) {
    RegisterPanelClass(PanelProc);
    RECT rc = {};
    GetClientRect(commandPanel, &rc);
    const int width = rc.right;
    panel_ = CreateWindowExA(0, COLOUR_PANEL_CLASS, "", WS_CHILD | WS_VISIBLE | WS_CLIPCHILDREN, 0,
                             0, width, rc.bottom, commandPanel, nullptr, ClientInstance(), nullptr);
    SetWindowLongPtrA(panel_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));

    const int inner = width - 2 * kMargin;
    const int half = (inner - kMargin) / 2;
    int y = kMargin;
    Child(panel_, "STATIC", "Colour Curves", SS_LEFT, kMargin, y, inner, 16, 0);
    y += 20;
    Child(panel_, "BUTTON", "Embedded", BS_PUSHBUTTON, kMargin, y, half, kButtonHeight,
          kIdEmbedded);
    Child(panel_, "BUTTON", "Floating", BS_PUSHBUTTON, width - kMargin - half, y, half,
          kButtonHeight, kIdFloating);
    y += kButtonHeight + kMargin;
    // The embedded editor fills this window; its text shows while the editor floats.
    area_ = Child(panel_, "STATIC", "\n\n\n\nThe editor is floating.\nEmbedded brings it back.",
                  SS_CENTER | WS_CLIPCHILDREN | WS_BORDER, kMargin, y, inner, kEditorHeight, 0);
    y += kEditorHeight + kMargin;
    Child(panel_, "BUTTON", "Reset Curves", BS_PUSHBUTTON, kMargin, y, inner, kButtonHeight,
          kIdReset);
    y += kButtonHeight + kMargin;
    event_ = Child(panel_, "STATIC", "Drag a point of a curve.", SS_LEFT, kMargin, y, inner,
                   kEventHeight, 0);
    y += kEventHeight;
    pointer_ = Child(panel_, "STATIC", "Move the mouse over the picture.", SS_LEFT, kMargin, y,
                     inner, kPointerHeight, 0);
    y += kPointerHeight;
    frame_ = Child(panel_, "STATIC", "", SS_LEFT, kMargin, y, inner, kFrameHeight, 0);

    if (ICurveCtl* control = effect_.Control()) {
        control->SetNotifyWindow(panel_);
        control->SetParentWindow(area_);
        OpenEditor(false);
    } else {
        ShowText("The curve control module (curvectl.dll) is not loaded.");
    }
}

ColourPanel::~ColourPanel() {
    if (ICurveCtl* control = effect_.Control()) {
        control->SetEditorOpen(FALSE);
        control->SetNotifyWindow(nullptr);
        control->SetParentWindow(nullptr);
    }
    SetWindowLongPtrA(panel_, GWLP_USERDATA, 0);
    DestroyWindow(panel_);
}

void ColourPanel::OpenEditor(bool floating) {
    ICurveCtl* control = effect_.Control();
    if (!control)
        return;
    // The flag word is read when the editor opens, so switching means closing it first.
    // The mouse mode chosen in the toolbar goes over to the new editor.
    const int tool = control->GetToolMode();
    HWND frame = control->GetEditorWindow();
    if (frame && (control->GetControlFlags() & CC_ASPOPUP)) {
        GetWindowRect(frame, &floatingRect_);
        hasFloatingRect_ = true;
    }
    control->SetEditorOpen(FALSE);
    // The command panel is narrow: embedded, the editor leaves out the view toolbar and
    // the reset button (the panel has its own) so that its curve buttons fit; floating,
    // it has every part.
    constexpr DWORD kFloatingOnly = CC_ASPOPUP | CC_SHOWZOOMTOOLBAR | CC_SHOWRESET;
    const DWORD flags = control->GetControlFlags();
    control->SetControlFlags(floating ? flags | kFloatingOnly : flags & ~kFloatingOnly);
    if (!control->SetEditorOpen(TRUE))
        return;
    if (floating)
        PlaceFloating(control->GetEditorWindow());
    control->SetToolMode(tool);
    control->ZoomExtents(); // a new editor starts far out: show the whole range
}

void ColourPanel::PlaceFloating(HWND frame) {
    // The control reopens an editor where the last one closed, and the last one may have
    // been the embedded editor: the floating one goes where it last floated instead, or,
    // the first time, 600 x 320 at the viewport's top left corner.
    RECT r = floatingRect_;
    if (!hasFloatingRect_) {
        HWND view = GetHostViewPanel(GetCOREInterface()->GetMAXHWnd());
        RECT v = {};
        if (view)
            GetWindowRect(view, &v);
        r = RECT{v.left + 20, v.top + 20, v.left + 20 + 600, v.top + 20 + 320};
    }
    SetWindowPos(frame, nullptr, r.left, r.top, r.right - r.left, r.bottom - r.top,
                 SWP_NOZORDER | SWP_NOACTIVATE);
}

void ColourPanel::ShowText(const char* format, ...) {
    char text[160];
    va_list args;
    va_start(args, format);
    std::vsnprintf(text, sizeof text, format, args);
    va_end(args);
    SetWindowTextA(event_, text);
}

void ColourPanel::ShowPointer(const float* rgb, float markerX) {
    char text[160];
    std::snprintf(text, sizeof text, "Under the mouse: R %.2f G %.2f B %.2f\nMarker at %.3f",
                  double(rgb[kRed]), double(rgb[kGreen]), double(rgb[kBlue]), double(markerX));
    SetWindowTextA(pointer_, text);
}

void ColourPanel::ShowFrameTime(double milliseconds, int width, int height, int threads) {
    char text[120];
    std::snprintf(text, sizeof text, "Frame: %.1f ms (%d x %d, %d threads)", milliseconds, width,
                  height, threads);
    SetWindowTextA(frame_, text);
}

LRESULT CALLBACK ColourPanel::PanelProc(HWND hwnd, UINT msg, WPARAM wParam, LPARAM lParam) {
    auto* self = reinterpret_cast<ColourPanel*>(GetWindowLongPtrA(hwnd, GWLP_USERDATA));
    if (!self)
        return DefWindowProcA(hwnd, msg, wParam, lParam);
    return self->OnMessage(msg, wParam, lParam);
}

LRESULT ColourPanel::OnMessage(UINT msg, WPARAM wParam, LPARAM lParam) {
    if (msg >= CURVE_MSG_SELECTION && msg <= CURVE_MSG_LBUTTONUP) {
        OnCurveMessage(msg, wParam, lParam);
        return 0; // the control ignores the answer
    }
    if (msg == WM_COMMAND && HIWORD(wParam) == BN_CLICKED) {
        switch (LOWORD(wParam)) {
        case kIdEmbedded:
            OpenEditor(false);
            return 0;
        case kIdFloating:
            OpenEditor(true);
            return 0;
        case kIdReset:
            // One undo step; the control calls ResetCurve for every displayed curve.
            if (ICurveCtl* control = effect_.Control())
                control->ResetSelectedCurves();
            return 0;
        default:
            break;
        }
    }
    return DefWindowProcA(panel_, msg, wParam, lParam);
}

int ColourPanel::ChannelOf(LPARAM curve) const {
    for (int c = 0; c < kChannels; ++c)
        if (ICurve* mine = effect_.ChannelCurve(c); mine && reinterpret_cast<LPARAM>(mine) == curve)
            return c;
    return -1;
}

void ColourPanel::OnCurveMessage(UINT msg, WPARAM wParam, LPARAM lParam) {
    const int point = int(LOWORD(wParam));
    switch (msg) {
    case CURVE_MSG_POINT_CHANGED:
    case CURVE_MSG_TANGENT_CHANGED:
    case CURVE_MSG_POINT_INSERTED:
    case CURVE_MSG_POINT_DELETED: {
        // The curve already holds its new state: repaint the picture now, during the drag.
        effect_.PictureChanged();
        ++changesInDrag_;
        const int c = ChannelOf(lParam);
        ICurve* curve = effect_.ChannelCurve(c);
        if (!curve)
            break;
        if (msg == CURVE_MSG_POINT_DELETED) {
            ShowText("%s: point %d deleted", ChannelName(c), point + 1);
            break;
        }
        Interval valid = FOREVER;
        const CurveKnot k = curve->GetKnot(GetCOREInterface()->GetTime(), point, valid);
        ShowText("%s: point %d %s\nat (%.3f, %.3f)", ChannelName(c), point + 1,
                 msg == CURVE_MSG_POINT_INSERTED    ? "inserted"
                 : msg == CURVE_MSG_TANGENT_CHANGED ? "tangent changed"
                                                    : "moved",
                 double(k.pos.x), double(k.pos.y));
        break;
    }
    case CURVE_MSG_SELECTION: {
        const int c = ChannelOf(lParam);
        ShowText("%s: %d point%s selected", ChannelName(c), point, point == 1 ? "" : "s");
        break;
    }
    case CURVE_MSG_LBUTTONDOWN:
        dragging_ = true;
        changesInDrag_ = 0;
        break;
    case CURVE_MSG_LBUTTONUP:
        if (dragging_ && changesInDrag_ > 0) {
            char text[160];
            GetWindowTextA(event_, text, sizeof text);
            char summary[200];
            std::snprintf(summary, sizeof summary, "%s\n(%d changes in the drag)", text,
                          changesInDrag_);
            SetWindowTextA(event_, summary);
        }
        dragging_ = false;
        break;
    default:
        break;
    }
}
