// The view: two scales and two scroll positions, which are the offsets.
//
//   X0 = 2 * hpos - 7                         (hpos: horizontal bar position)
//   Y0 = trunc((Hm + 1) * vpos * 0.01) & ~1   (vpos: vertical bar position, in hundredths
//                                              of the usable height plus one)
//   column = x * xs - X0;   row = (Hm + 1) / 2 + 4 - Y0 - y * ys
//
// [SECTION] Scales, usable area, offsets
// [SECTION] Scroll ranges
// [SECTION] Scroll bars and wheel
// [SECTION] Extents and aspect coupling
// [SECTION] Refreshing
#include "control/curve_control.h"
#include "editor/curve_ctl_window.h"
#include "host/core_interface.h"

#include <cmath>

namespace {
constexpr float kXScaleMin = 0.00002f, kXScaleMax = 1000000.0f;
constexpr float kYScaleMin = 0.0000001f, kYScaleMax = 100000000.0f;

TimeValue now() { return GetCOREInterface()->GetTime(); }
/// Truncation toward zero, as the view arithmetic is specified.
int toInt(double v) { return int(v); }
} // namespace

int& DoubleBuffering() {
    static int on = 1; // per process; the painting code reads it
    return on;
}

// ---------------------------------------------------------------------------------------
// [SECTION] Scales, usable area, offsets

// A value not at least the bottom (NaN included) becomes the bottom.
float CurveCtlWindow::ClampXScale(float xs) {
    if (xs > kXScaleMax)
        return kXScaleMax;
    if (!(xs >= kXScaleMin))
        return kXScaleMin;
    return xs;
}

float CurveCtlWindow::ClampYScale(float ys) {
    if (ys > kYScaleMax)
        return kYScaleMax;
    if (!(ys >= kYScaleMin))
        return kYScaleMin;
    return ys;
}

RECT CurveCtlWindow::UsableArea() const {
    RECT r{};
    GetClientRect(graph_.Handle(), &r);
    if (Flags() & CC_DRAWRULER) {
        r.left = 32;
        r.top = 6;
        r.right -= 6;
        r.bottom -= 6;
    }
    return r;
}

int CurveCtlWindow::HorizontalOffset() const { return 2 * GetScrollPos(hScrollBar_, SB_CTL) - 7; }

void CurveCtlWindow::SetHorizontalOffset(int x0) {
    SetScrollPos(hScrollBar_, SB_CTL, (x0 + 7) / 2, TRUE);
}

int CurveCtlWindow::GetVerticalOffset(bool inPixels) const {
    const int vpos = GetScrollPos(vScrollBar_, SB_CTL);
    if (!inPixels)
        return vpos;
    const RECT r = UsableArea();
    const int hm = r.bottom - r.top;
    return toInt(float(hm + 1) * (float(vpos) * 0.01f)) & ~1;
}

void CurveCtlWindow::SetVerticalOffset(int value, bool inPixels) {
    int vpos = value;
    if (inPixels) {
        const RECT r = UsableArea();
        vpos = toInt(float(value) * 100.0f / float(r.bottom - r.top + 1));
    }
    SetScrollPos(vScrollBar_, SB_CTL, vpos, TRUE);
}

// ---------------------------------------------------------------------------------------
// [SECTION] Scroll ranges

void CurveCtlWindow::UpdateHorizontalRange(int expandOnly) {
    RECT strip{};
    if (strip_)
        GetClientRect(strip_->Handle(), &strip);
    const int w = strip.right;
    const Point2 range = control_->GetXRange();
    const float xs = scale_.xs;
    const int span = toInt((range.y - range.x) * xs) - w;
    int lo = (toInt(xs * range.x) - 200) / 2;
    int hi = (span + 408 == 0) ? lo : lo + (span + 408) / 2;
    int curLo = 0, curHi = 0;
    GetScrollRange(hScrollBar_, SB_CTL, &curLo, &curHi);
    if (expandOnly) {
        lo = std::min(lo, curLo);
        hi = std::max(hi, curHi);
    }
    if (lo == curLo && hi == curHi)
        return;
    SetScrollRange(hScrollBar_, SB_CTL, lo, hi, TRUE);
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
    const RECT r = UsableArea();
    const float h = float(r.bottom - r.top + 1);
    const float ys = scale_.ys;
    SetScrollRange(vScrollBar_, SB_CTL, (-1 - toInt(ys * hi / h)) * 100,
                   100 - toInt(ys * lo / h) * 100, TRUE);
}

// ---------------------------------------------------------------------------------------
// [SECTION] Scroll bars and wheel

namespace {
/// The bar position after `code`; `same` when the code keeps it (SB_THUMBPOSITION too).
int scrolledPosition(HWND bar, int code, int thumb) {
    int pos = GetScrollPos(bar, SB_CTL);
    switch (code) {
    case SB_LINEUP:
        pos -= 1;
        break;
    case SB_LINEDOWN:
        pos += 1;
        break;
    case SB_PAGEUP:
        pos -= 10;
        break;
    case SB_PAGEDOWN:
        pos += 10;
        break;
    case SB_THUMBTRACK:
        pos = thumb;
        break;
    default:
        break;
    }
    int lo = 0, hi = 0;
    GetScrollRange(bar, SB_CTL, &lo, &hi);
    return std::clamp(pos, lo, std::max(lo, hi));
}
} // namespace

LRESULT CurveCtlWindow::HScroll(int code, int position, HWND) {
    const int before = GetScrollPos(hScrollBar_, SB_CTL);
    const int after = scrolledPosition(hScrollBar_, code, position);
    SetScrollPos(hScrollBar_, SB_CTL, after, TRUE);
    if (after == before)
        return 0;
    RefreshView();
    UpdateWindow(graph_.Handle());
    if (strip_)
        UpdateWindow(strip_->Handle());
    return 0;
}

LRESULT CurveCtlWindow::VScroll(int code, int position, HWND) {
    SetScrollPos(vScrollBar_, SB_CTL, scrolledPosition(vScrollBar_, code, position), TRUE);
    paint_.graphValid = 0;
    InvalidateRect(graph_.Handle(), nullptr, DoubleBuffering() ? FALSE : TRUE);
    paint_.lastCursor = POINT{INT_MIN, INT_MIN};
    UpdateWindow(graph_.Handle());
    return 0;
}

LRESULT CurveWindow::MouseWheel(int delta) {
    if (!owner_)
        return 0;
    CurveCtlWindow& w = *owner_;
    ViewScale& s = w.Scale();
    const float g = delta < 0 ? 0.8f : 1.2f; // a zero delta zooms in as well
    RECT client{};
    GetClientRect(hWnd_, &client);
    const RECT usable = w.UsableArea();
    const int hm = usable.bottom - usable.top;
    const int x0 = w.HorizontalOffset();
    const int y0 = w.GetVerticalOffset(true);
    // The curve point under the middle of the graph stays where it is.
    const float ax = float(client.right / 2 + x0) / s.xs;
    const float ay = float((hm + 1) / 2 - (client.bottom / 2 - 4 + y0)) / s.ys;

    const float ys = s.ys * g;
    s.ys = CurveCtlWindow::ClampYScale(ys);
    w.UpdateVerticalRange(now());
    w.SetVerticalOffset(toInt(ay * (1.0f - g) * ys) + y0, true);

    const float xs = s.xs * g;
    s.xs = CurveCtlWindow::ClampXScale(xs);
    // The current time is the expand-only argument: at time 0 the range is recomputed
    // outright, at any other time it only grows.
    w.UpdateHorizontalRange(now());
    const int hpos = GetScrollPos(w.HorizontalBar(), SB_CTL);
    SetScrollPos(w.HorizontalBar(), SB_CTL, (2 * hpos - toInt(ax * (1.0f - g) * xs)) / 2, TRUE);
    return 1;
}

// ---------------------------------------------------------------------------------------
// [SECTION] Extents and aspect coupling

void CurveCtlWindow::ZoomHorizontalExtents(bool redraw) {
    RECT strip{};
    if (strip_)
        GetClientRect(strip_->Handle(), &strip);
    const int w = strip.right;
    const Point2 range = control_->GetXRange();
    // An empty range divides by zero: the clamp turns infinity into the top.
    scale_.xs = ClampXScale(float(float(w - 34) / ((range.y - range.x) * 1.1)));
    if (mode_ == 4 && aspectLocked_) {
        AspectCoupling(1);
        UpdateVerticalRange(now());
    }
    UpdateHorizontalRange(0);
    const int centre = toInt(((range.y - range.x) * 0.5f + range.x) * scale_.xs);
    SetScrollPos(hScrollBar_, SB_CTL, (centre - (w + 1) / 2 - 6) / 2, TRUE);
    if (redraw)
        RefreshView();
}

void CurveCtlWindow::ZoomVerticalExtents(TimeValue time, bool redraw) {
    float lo = 0.0f, hi = 0.0f;
    ValueBounds(time, lo, hi);
    const RECT r = UsableArea();
    const int h = r.bottom - r.top + 1;
    const double d = (hi - lo) * 1.4;
    // Flat curves get the usable height plus one.
    scale_.ys = ClampYScale(d > 0.001 ? float(h / d) : float(h));
    if (mode_ == 4 && aspectLocked_) {
        AspectCoupling(0);
        UpdateHorizontalRange(0);
    }
    UpdateVerticalRange(time);
    const int c = toInt((hi + lo) * 0.5f * scale_.ys);
    SetScrollPos(vScrollBar_, SB_CTL, -c * 100 / h, TRUE);
    if (redraw)
        RefreshView();
}

void CurveCtlWindow::ZoomExtents() {
    if (!(mode_ == 4 && aspectLocked_)) {
        ZoomHorizontalExtents(true);
        ZoomVerticalExtents(now(), true);
        return;
    }
    const ViewScale before = scale_;
    const int y0 = GetVerticalOffset(true);
    const int x0 = HorizontalOffset();
    ZoomHorizontalExtents(false);
    ZoomVerticalExtents(now(), false);
    if (before.xs < scale_.xs) {
        scale_.xs = ClampXScale(before.xs);
        scale_.ys = ClampYScale(before.ys);
        aspectLocked_ = 1;
        SetHorizontalOffset(x0);
        SetVerticalOffset(y0, true);
    }
    RepaintRequest();
    if (!DoubleBuffering())
        InvalidateRect(graph_.Handle(), nullptr, TRUE);
}

int CurveCtlWindow::AspectCoupling(int argument) {
    if (!(mode_ == 4 && aspectLocked_))
        return 0;
    const RECT r = UsableArea();
    const float h = float(r.bottom - r.top + 1);
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

void CurveCtlWindow::RepaintRequest() {
    paint_.graphValid = 0;
    InvalidateRect(graph_.Handle(), nullptr, FALSE);
    paint_.lastCursor = POINT{INT_MIN, INT_MIN};
    paint_.rulerValid = 0;
    if (strip_)
        InvalidateRect(strip_->Handle(), nullptr, FALSE);
}
