// The graph's picture (DrawGraph), in the order it is drawn:
//
// [SECTION] View          the current mapping and the curves' y scale
// [SECTION] Background    frame, grey background and label margins (flag 1), marker line
// [SECTION] Value grid    minor and major lines, labels (flag 2)
// [SECTION] Limits        x-range limit lines and the zero line (flag 2)
// [SECTION] Curves        hidden curves beneath, displayed curves on top
#include "editor/graph_paint.h"

#include "control/curve_control.h"
#include "editor/curve_ctl_window.h"
#include "host/colorman.h"
#include "host/gdi_tracking.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace {

/// Colour of the dotted x-range limit lines.
constexpr COLORREF kLimitColour = RGB(0, 100, 100);
/// How many lines one pass of the grid may draw at most: far more than a screen holds,
/// a bound only against absurd scales.
constexpr int kMaxGridLines = 20000;

/// The pens of one drawing, created together and deleted after the context lets go.
struct GraphPens {
    GdiPen shade{CreatePen(PS_SOLID, 0, ColorMan()->GetColor(kColorViewShade))}; // 15
    GdiPen line{CreatePen(PS_SOLID, 0, ColorMan()->GetColor(kColorViewLine))};   // 16
    GdiPen limit{CreatePen(PS_DOT, 1, kLimitColour)};
};

void horizontalLine(HDC hdc, const RECT& rect, int row) {
    MoveToEx(hdc, rect.left, row, nullptr);
    LineTo(hdc, rect.right, row);
}

void verticalLine(HDC hdc, const RECT& rect, int column) {
    MoveToEx(hdc, column, rect.top, nullptr);
    LineTo(hdc, column, rect.bottom);
}

} // namespace

// ---------------------------------------------------------------------------------------
// [SECTION] View

view::ViewMapping CurrentView(CurveCtlWindow& w) {
    view::ViewMapping m;
    m.usable = w.UsableArea();
    m.xs = w.Scale().xs;
    m.ys = w.Scale().ys;
    m.x0 = w.HorizontalOffset();
    m.y0 = w.GetVerticalOffset(true);
    return m;
}

float CurveYScale(float ys) { return ys; }

CurveScreen GraphCurveScreen(CurveCtlWindow& w) {
    const view::ViewMapping m = CurrentView(w);
    return m.Screen(CurveYScale(m.ys));
}

namespace {

// ---------------------------------------------------------------------------------------
// [SECTION] Background

/// Dark grey outside the control's x range, light grey inside it (columns of xlo to xhi
/// inclusive); then, with double buffering, the label margins in the stock light grey;
/// and last the sunken frame, so that no fill covers it.
void drawBackground(HDC hdc, const RECT& rect, const RECT& client, const view::ViewMapping& m,
                    Point2 xRange) {
    const int lo = m.Column(xRange.x);
    const int hi = m.Column(xRange.y);
    const auto fill = [hdc, &rect](HBRUSH brush, int left, int right) {
        const RECT r{std::max<int>(left, rect.left), rect.top, std::min<int>(right, rect.right),
                     rect.bottom};
        if (r.left < r.right)
            FillRect(hdc, &r, brush);
    };
    if (hi < rect.left || lo >= rect.right) {
        fill(GetDarkGreyBrush(), rect.left, rect.right);
    } else {
        fill(GetDarkGreyBrush(), rect.left, lo);
        fill(GetLightGreyBrush(), lo, WrapAdd(hi, 1));
        fill(GetDarkGreyBrush(), WrapAdd(hi, 1), rect.right);
    }
    if (DoubleBuffering()) {
        SelectedObject pen(hdc, GetStockObject(NULL_PEN));
        SelectedObject brush(hdc, GetStockObject(LTGRAY_BRUSH));
        Rectangle(hdc, 0, 0, 30, m.usable.bottom + 8);
        Rectangle(hdc, 0, 0, m.usable.right + 4, m.usable.top);
    }
    Rect3D(hdc, client, 1);
}

// ---------------------------------------------------------------------------------------
// [SECTION] Value grid

/// Minor lines (colour 15), then major lines (colour 16) with their labels at x = 2,
/// centred on the line. Returns the grid step to remember.
double drawValueGrid(HDC hdc, const RECT& rect, const view::ViewMapping& m, GraphPens& pens) {
    SIZE text{};
    GetTextExtentPoint32A(hdc, "1234567890", 10, &text);
    const view::ValueGrid g = view::ComputeValueGrid(m, rect.top, rect.bottom);

    // Values are vb + i * step rather than running sums, so that labels far from zero do
    // not collect rounding errors.
    if (g.minor > 0.0) {
        SelectObject(hdc, pens.shade.get());
        for (int i = 0; i < kMaxGridLines; ++i) {
            const double v = g.vb + i * g.minor;
            if (!(v <= g.vt))
                break;
            horizontalLine(hdc, rect, view::GridRow(m, v));
        }
    }
    SelectObject(hdc, pens.line.get());
    char label[64];
    for (int i = 0; i < kMaxGridLines; ++i) {
        const double v = g.vb + i * g.step;
        if (!(v <= g.vt))
            break;
        const int row = view::GridRow(m, v);
        horizontalLine(hdc, rect, row);
        view::FormatGridLabel(v, g.step, g.FractionalLabels(), label, sizeof label);
        TextOutA(hdc, 2, row - text.cy / 2, label, int(std::strlen(label)));
    }
    return g.GridStep();
}

// ---------------------------------------------------------------------------------------
// [SECTION] Limits

void drawLimitLines(HDC hdc, const RECT& rect, const view::ViewMapping& m, Point2 xRange,
                    GraphPens& pens) {
    SelectObject(hdc, pens.limit.get());
    for (const float x : {xRange.x, xRange.y}) {
        const int column = m.Column(x);
        if (column >= rect.left && column < rect.right)
            verticalLine(hdc, rect, column);
    }
}

void drawZeroLine(HDC hdc, const RECT& rect, const view::ViewMapping& m, GraphPens& pens) {
    SelectObject(hdc, pens.line.get());
    const int r0 = m.Row(0.0f);
    for (int d = -1; d <= 1; ++d)
        horizontalLine(hdc, rect, WrapAdd(r0, d));
}

// ---------------------------------------------------------------------------------------
// [SECTION] Curves

/// Curves not displayed first (unless flag 0x400 leaves them out), then displayed ones,
/// each group from the last curve to the first: displayed curves lie on top, and lower
/// indices on top of higher ones.
void drawCurves(CurveCtlWindow& w, HDC hdc, const CurveScreen& screen, TimeValue time) {
    CurveControl& control = *w.Control();
    const BitArray& shown = w.ShownCurves();
    const bool hideHidden = (control.GetControlFlags() & CC_HIDE_DISABLED_CURVES) != 0;
    const int n = control.GetCurveCount();
    for (const bool displayedPass : {false, true}) {
        if (!displayedPass && hideHidden)
            continue;
        for (int i = n - 1; i >= 0; --i) {
            if ((shown[i] != 0) != displayedPass)
                continue;
            if (Curve* c = control.GetCurveObject(i))
                c->DrawCurve(time, hdc, screen, i);
        }
    }
}

} // namespace

void DrawGraph(CurveCtlWindow& w, HDC hdc, const RECT& rect, TimeValue time) {
    CurveControl* control = w.Control();
    if (!control || !hdc)
        return;
    const DWORD flags = control->GetControlFlags();
    const view::ViewMapping m = CurrentView(w);
    const Point2 xRange = control->GetXRange();
    RECT client{};
    GetClientRect(w.Graph().Handle(), &client);

    GraphPens pens;     // deleted after the context is restored below
    SavedDC saved(hdc); // clip region, pen, font, colours and modes come back at the end

    if (flags & CC_DRAWBG)
        drawBackground(hdc, rect, client, m, xRange);
    if (flags & CC_SHOW_CURRENTXVAL) {
        SelectObject(hdc, pens.shade.get());
        verticalLine(hdc, rect, m.Column(control->MarkerX()));
    }

    if (!(flags & CC_DRAWRULER)) {
        w.Cache().gridStep = 0.0f;
    } else {
        SelectObject(hdc, GetUIFont());
        SetTextColor(hdc, RGB(0, 0, 0));
        SetBkMode(hdc, TRANSPARENT);
        w.Cache().gridStep = float(drawValueGrid(hdc, rect, m, pens));
        drawLimitLines(hdc, rect, m, xRange, pens);
        SetBkMode(hdc, OPAQUE);
        IntersectClipRect(hdc, m.usable.left, m.usable.top, m.usable.right, m.usable.bottom);
        drawZeroLine(hdc, rect, m, pens);
    }

    drawCurves(w, hdc, m.Screen(CurveYScale(m.ys)), time);
}
