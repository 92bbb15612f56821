// The ruler strip's picture (DrawRuler): a framed strip with ticks along its bottom edge
// and x labels, on the graph's horizontal mapping. Fine scales label fractions of a unit
// (steps 0.1 to 2.5, ten ticks per label); coarse scales label whole numbers (steps of 5
// or more, five or ten ticks per label).
#include "editor/graph_paint.h"

#include "editor/curve_ctl_window.h"
#include "host/colorman.h"
#include "host/gdi_tracking.h"

#include <cstdint>
#include <cstdio>
#include <cstring>

namespace {

/// At most this many ticks per paint: more than any strip is wide, a bound against
/// absurd scales only.
constexpr int kMaxTicks = 20000;

/// A labelled tick: the text right of a full-height black line.
void labelTick(HDC hdc, const RECT& client, int column, const char* text) {
    TextOutA(hdc, column + 3, 0, text, int(std::strlen(text)));
    SelectObject(hdc, GetStockObject(BLACK_PEN));
    MoveToEx(hdc, column, client.top, nullptr);
    LineTo(hdc, column, client.bottom + 1);
}

/// A short tick at the bottom edge in the tick pen.
void shortTick(HDC hdc, const RECT& client, int column, HPEN tickPen) {
    SelectObject(hdc, tickPen);
    MoveToEx(hdc, column, client.bottom - 2, nullptr);
    LineTo(hdc, column, client.bottom + 1);
}

void drawFractionalTicks(HDC hdc, const RECT& client, const view::RulerSteps& r, float xs, int x0,
                         HPEN tickPen) {
    const float first = view::FirstFractionalTick(r, client.left, x0, xs);
    char text[64];
    // Ticks are first + i * step rather than running sums: no drift along the strip.
    for (int i = 0; i < kMaxTicks; ++i) {
        const float x = first + float(i) * r.tickStep;
        const int column = TruncToInt(x * xs - float(x0));
        if (column >= client.right)
            break;
        if (view::IsFractionalLabel(r, x)) {
            view::FormatRulerLabel(x, text, sizeof text);
            labelTick(hdc, client, column, text);
        } else {
            shortTick(hdc, client, column, tickPen);
        }
    }
}

void drawWholeTicks(HDC hdc, const RECT& client, const view::RulerSteps& r, float xs, int x0,
                    HPEN tickPen) {
    const int first = view::FirstWholeTick(r, client.left, x0, xs);
    char text[32];
    for (int i = 0; i < kMaxTicks; ++i) {
        const int64_t s = int64_t(first) + int64_t(i) * r.wholeTickStep;
        if (s > INT32_MAX)
            break;
        const int column = WrapSub(TruncToInt(float(s) * xs), x0);
        if (column >= client.right)
            break;
        if (s % r.wholeLabelStep == 0) {
            std::snprintf(text, sizeof text, "%d", int(s));
            labelTick(hdc, client, column, text);
        } else {
            shortTick(hdc, client, column, tickPen);
        }
    }
}

} // namespace

void DrawRuler(CurveCtlWindow& w, HWND strip, HDC hdc) {
    if (!hdc)
        return;
    RECT client{};
    GetClientRect(strip, &client);
    GdiPen tickPen(CreatePen(PS_SOLID, 0, ColorMan()->GetColor(kColorViewLine)));
    SavedDC saved(hdc);

    SelectObject(hdc, GetStockObject(BLACK_PEN));
    SelectObject(hdc, GetStockObject(NULL_BRUSH));
    Rectangle(hdc, client.left, client.top, client.right, client.bottom);
    const RECT inner{client.left + 1, client.top + 1, client.right - 1, client.bottom - 1};
    Rect3D(hdc, inner, 0);
    IntersectClipRect(hdc, client.left, client.top, client.right, client.bottom);
    SelectObject(hdc, GetUIFont());
    SetBkMode(hdc, TRANSPARENT);
    SetTextColor(hdc, RGB(0, 0, 0));

    const float xs = w.Scale().xs;
    const int x0 = w.HorizontalOffset();
    const view::RulerSteps r = view::ComputeRulerSteps(xs);
    if (r.fractional)
        drawFractionalTicks(hdc, client, r, xs, x0, tickPen.get());
    else
        drawWholeTicks(hdc, client, r, xs, x0, tickPen.get());
}
