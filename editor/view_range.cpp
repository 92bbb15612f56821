// The view of a CurveCtlWindow: two scales, and the two scroll positions, which are the
// offsets (the arithmetic is view_mapping.h's):
//
//   X0 = 2 * hpos - 7                          (hpos: horizontal bar position)
//   Y0 = trunc((Hm + 1) * (vpos * 0.01)) & ~1  (vpos: vertical bar position, in hundredths
//                                               of the usable height plus one)
//   column = trunc(x * xs) - X0;   row = (Hm + 1) / 2 + 4 - Y0 - trunc(y * ys)
//
// [SECTION] Scales, usable area, offsets
// [SECTION] Scroll ranges
// [SECTION] Scroll bars and wheel
// [SECTION] Extents and aspect coupling
// [SECTION] Refreshing
#include "control/curve_control.h"
#include "editor/curve_ctl_window.h"
#include "editor/view_mapping.h"
#include "host/core_interface.h"

#include <algorithm>

namespace {

TimeValue now() { return GetCOREInterface()->GetTime(); }

view::ScrollRange rangeOf(HWND bar) {
    view::ScrollRange r;
    GetScrollRange(bar, SB_CTL, &r.lo, &r.hi);
    return r;
}

int clientWidth(HWND hwnd) {
    RECT r{};
    if (hwnd)
        GetClientRect(hwnd, &r);
    return r.right - r.left;
}

} // namespace

int& DoubleBuffering() {
    static int on = 1; // per process; the painting code reads it
    return on;
}

// ---------------------------------------------------------------------------------------
// [SECTION] Scales, usable area, offsets

float CurveCtlWindow::ClampXScale(float xs) { return view::ClampXScale(xs); }
float CurveCtlWindow::ClampYScale(float ys) { return view::ClampYScale(ys); }

RECT CurveCtlWindow::UsableArea() const {
    RECT client{};
    GetClientRect(graph_.Handle(), &client);
    return view::UsableArea(client, Flags());
}

int CurveCtlWindow::HorizontalOffset() const {
    return view::X0FromHpos(GetScrollPos(hScrollBar_, SB_CTL));
}

void CurveCtlWindow::SetHorizontalOffset(int x0) {
    SetScrollPos(hScrollBar_, SB_CTL, view::HposFromX0(x0), TRUE);
}

namespace {
/// Hm + 1 of a usable area.
int usableHeight(const RECT& r) { return r.bottom - r.top + 1; }
} // namespace

int CurveCtlWindow::GetVerticalOffset(bool inPixels) const {
    const int vpos = GetScrollPos(vScrollBar_, SB_CTL);
    return inPixels ? view::Y0FromVpos(vpos, usableHeight(UsableArea())) : vpos;
}

void CurveCtlWindow::SetVerticalOffset(int value, bool inPixels) {
    const int vpos = inPixels ? view::VposFromY0(value, usableHeight(UsableArea())) : value;
    SetScrollPos(vScrollBar_, SB_CTL, vpos, TRUE);
}

// ---------------------------------------------------------------------------------------
// [SECTION] Scroll ranges

void CurveCtlWindow::UpdateHorizontalRange(int expandOnly) {
    if (!control_)
        return;
    const int width = clientWidth(strip_ ? strip_->Handle() : nullptr);
    view::ScrollRange wanted = view::HorizontalRange(control_->GetXRange(), scale_.xs, width);
    const view::ScrollRange current = rangeOf(hScrollBar_);
    if (expandOnly)
        wanted = view::Union(current, wanted);
    if (wanted == current)
        return;
    SetScrollRange(hScrollBar_, SB_CTL, wanted.lo, wanted.hi, TRUE);
    RefreshView();
}

void CurveCtlWindow::ValueBounds(TimeValue time, float& lo, float& hi) const {
    bool any = false;
    lo = hi = 0.0f;
    for (int i = 0; control_ && i < control_->GetCurveCount(); ++i) {
        Curve* c = control_->GetCurveObject(i);
        if (!c)
            continue;
        float clo = 0.0f, chi = 0.0f;
        c->GetValueBounds(time, clo, chi);
        lo = any ? std::min(lo, clo) : clo;
        hi = any ? std::max(hi, chi) : chi;
        any = true;
    }
}

void CurveCtlWindow::UpdateVerticalRange(TimeValue time) {
    float lo = 0.0f, hi = 0.0f;
    ValueBounds(time, lo, hi);
    const view::ScrollRange r = view::VerticalRange(lo, hi, scale_.ys, usableHeight(UsableArea()));
    SetScrollRange(vScrollBar_, SB_CTL, r.lo, r.hi, TRUE);
}

// ---------------------------------------------------------------------------------------
// [SECTION] Scroll bars and wheel

LRESULT CurveCtlWindow::HScroll(int code, int position, HWND) {
    const int before = GetScrollPos(hScrollBar_, SB_CTL);
    const int after = view::ScrolledPosition(before, code, position, rangeOf(hScrollBar_));
    SetScrollPos(hScrollBar_, SB_CTL, after, TRUE);
    // At the end of the range (and for SB_THUMBPOSITION) nothing moved: no repaint.
    if (after == before)
        return 0;
    RefreshView();
    UpdateWindow(graph_.Handle());
    if (strip_)
        UpdateWindow(strip_->Handle());
    return 0;
}

LRESULT CurveCtlWindow::VScroll(int code, int position, HWND) {
    const int before = GetScrollPos(vScrollBar_, SB_CTL);
    SetScrollPos(vScrollBar_, SB_CTL,
                 view::ScrolledPosition(before, code, position, rangeOf(vScrollBar_)), TRUE);
    // The ruler shows x only: the graph alone is repainted.
    paint_.graphValid = 0;
    InvalidateRect(graph_.Handle(), nullptr, DoubleBuffering() ? FALSE : TRUE);
    paint_.lastCursor = POINT{INT_MIN, INT_MIN};
    UpdateWindow(graph_.Handle());
    return 0;
}

LRESULT CurveWindow::MouseWheel(int delta) {
    // The frame checks flag 32 before it forwards the wheel; a wheel message that reaches
    // the graph directly (it had the focus) is held to the same rule.
    if (!owner_ || !(owner_->Flags() & CC_SHOWSCROLLBARS))
        return 0;
    CurveCtlWindow& w = *owner_;
    ViewScale& s = w.Scale();
    RECT client{};
    GetClientRect(hWnd_, &client);
    view::ViewMapping m;
    m.usable = w.UsableArea();
    m.xs = s.xs;
    m.ys = s.ys;
    m.x0 = w.HorizontalOffset();
    m.y0 = w.GetVerticalOffset(true);
    // The curve point under the middle of the graph stays where it is.
    const view::WheelZoom zoom = view::WheelStep(delta, m, client.right, client.bottom);

    const float ys = s.ys * zoom.g;
    s.ys = view::ClampYScale(ys);
    w.UpdateVerticalRange(now());
    w.SetVerticalOffset(view::WheelY0(zoom, ys, m.y0), true);

    const float xs = s.xs * zoom.g;
    s.xs = view::ClampXScale(xs);
    // The current time is the expand-only argument: at time 0 the range is recomputed
    // outright, at any other time it only grows. The wheel has always done this.
    w.UpdateHorizontalRange(now());
    const int hpos = GetScrollPos(w.HorizontalBar(), SB_CTL);
    SetScrollPos(w.HorizontalBar(), SB_CTL, view::WheelHpos(zoom, xs, hpos), TRUE);
    // No refresh here: the scroll-bar changes and the next paint show the new view.
    return 1;
}

// ---------------------------------------------------------------------------------------
// [SECTION] Extents and aspect coupling

void CurveCtlWindow::ZoomHorizontalExtents(bool redraw) {
    if (!control_)
        return;
    const int width = clientWidth(strip_ ? strip_->Handle() : nullptr);
    const Point2 range = control_->GetXRange();
    // An empty range divides by zero: the clamp turns infinity into the top.
    scale_.xs = view::HorizontalExtentsScale(range, width);
    if (mode_ == 4 && aspectLocked_) {
        AspectCoupling(1);
        UpdateVerticalRange(now());
    }
    UpdateHorizontalRange(0);
    SetScrollPos(hScrollBar_, SB_CTL, view::CentredHpos(range, scale_.xs, width), TRUE);
    if (redraw)
        RefreshView();
}

void CurveCtlWindow::ZoomVerticalExtents(TimeValue time, bool redraw) {
    float lo = 0.0f, hi = 0.0f;
    ValueBounds(time, lo, hi);
    const int h = usableHeight(UsableArea());
    // Flat curves get the usable height plus one.
    scale_.ys = view::VerticalExtentsScale(lo, hi, h);
    if (mode_ == 4 && aspectLocked_) {
        AspectCoupling(0);
        UpdateHorizontalRange(0);
    }
    UpdateVerticalRange(time);
    SetScrollPos(vScrollBar_, SB_CTL, view::CentredVpos(lo, hi, scale_.ys, h), TRUE);
    if (redraw)
        RefreshView();
}

void CurveCtlWindow::ZoomExtents() {
    if (!(mode_ == 4 && aspectLocked_)) {
        ZoomHorizontalExtents(true);
        ZoomVerticalExtents(now(), true);
        return;
    }
    // Aspect-locked: the extents may only zoom out; a zoom in puts the view back.
    const ViewScale before = scale_;
    const int y0 = GetVerticalOffset(true);
    const int x0 = HorizontalOffset();
    ZoomHorizontalExtents(false);
    ZoomVerticalExtents(now(), false);
    if (before.xs < scale_.xs) {
        scale_.xs = view::ClampXScale(before.xs);
        scale_.ys = view::ClampYScale(before.ys);
        aspectLocked_ = 1;
        SetHorizontalOffset(x0);
        SetVerticalOffset(y0, true);
    }
    RefreshView();
}

int CurveCtlWindow::AspectCoupling(int argument) {
    if (!(mode_ == 4 && aspectLocked_) || !control_)
        return 0;
    const float h = float(usableHeight(UsableArea()));
    const Point2 range = control_->GetXRange();
    // The numerator is a literal zero: argument 0 sets xs to 0 (NaN for an empty range)
    // and argument 1 divides by zero. Kept as the view has always behaved; not clamped.
    const float k = 0.0f / (range.y - range.x);
    if (argument == 0) {
        scale_.xs = k * scale_.ys * h;
        UpdateHorizontalRange(0);
    } else {
        scale_.ys = scale_.xs / k / h;
        UpdateVerticalRange(now());
    }
    return 1;
}

// ---------------------------------------------------------------------------------------
// [SECTION] Refreshing

void CurveCtlWindow::RefreshView() {
    const BOOL erase = DoubleBuffering() ? FALSE : TRUE;
    paint_.graphValid = 0;
    InvalidateRect(graph_.Handle(), nullptr, erase);
    paint_.lastCursor = POINT{INT_MIN, INT_MIN};
    paint_.rulerValid = 0;
    if (strip_)
        InvalidateRect(strip_->Handle(), nullptr, erase);
}

void CurveCtlWindow::RefreshViewNow() {
    RefreshView();
    if (strip_)
        UpdateWindow(strip_->Handle());
    UpdateWindow(graph_.Handle());
}

void CurveCtlWindow::repaintStripNow() {
    if (strip_) {
        InvalidateRect(strip_->Handle(), nullptr, FALSE);
        UpdateWindow(strip_->Handle());
    }
}

// The ruler's picture depends on the view alone (scale, offset, size), so the strip is
// repainted from the picture it keeps rather than drawn again: the same pixels, without
// drawing the ruler's text at every step.
void CurveCtlWindow::RepaintDragStep() {
    RedrawGraph();
    repaintStripNow();
}

void CurveCtlWindow::RepaintDragEnd() {
    RepaintDragStep();
    InvalidateRect(hWnd_, nullptr, FALSE);
    UpdateWindow(hWnd_);
}

void CurveCtlWindow::RepaintRequest() {
    paint_.graphValid = 0;
    InvalidateRect(graph_.Handle(), nullptr, FALSE);
    paint_.lastCursor = POINT{INT_MIN, INT_MIN};
    paint_.rulerValid = 0;
    if (strip_)
        InvalidateRect(strip_->Handle(), nullptr, FALSE);
}
