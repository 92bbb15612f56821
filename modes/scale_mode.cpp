// DeformScaleMouseProc: scales the y of the selected points of every displayed curve about
// y = 0 by the ratio of the mouse's height to its height at the press. One drag is one
// undo step, "Scale Point".
//
// Heights are measured from the row H - S, H being the graph's usable height plus one and
// S the vertical scroll offset in pixels: d = (H - S - row) / yScale. A press at d = 0
// would divide by zero and is refused.
#include "control/curve_control.h"
#include "curve/move_limits.h"
#include "editor/curve_ctl_window.h"
#include "editor/graph_paint.h"
#include "modes/edit_drag.h"
#include "modes/mouse_modes.h"
#include "res/resource.h"

using namespace edit_drag;

namespace {

/// The upper factor bound when the selection's highest point lies at y = 0 (the bound's
/// denominator yHigh - hi is 0). Such a point stays at 0 under every factor, so the top of
/// the y range sets no bound; the bound is then the "unconstrained" limit the point
/// operations use, finite so that every later product stays finite.
constexpr float kNoUpperFactorBound = move_limits::kUnbounded;

} // namespace

float DeformScaleMouseProc::heightAt(int y) {
    CurveCtlWindow& w = *window;
    const RECT usable = w.UsableArea();
    const int h = usable.bottom - usable.top + 1;
    const int s = w.GetVerticalOffset(true);
    return float(h - s - y) / CurveYScale(w.Scale().ys);
}

// The height is taken before any hold opens: a refused press leaves no hold behind and
// prepares no point.
int DeformScaleMouseProc::pressed(IPoint2 m) {
    if (openDrag) // a press without the release of the one before: that drag is kept
        finish(true);
    const float d0 = heightAt(m.y);
    pressHeight = d0;
    if (d0 == 0.0f)
        return 0;
    limits.computed = 0;
    BeginDrag(*window, true, IDS_SCALE_POINT);
    openDrag = window->Control();
    press = m;
    return 1;
}

void DeformScaleMouseProc::drag(int, IPoint2 m) {
    CurveCtlWindow& w = *window;
    CurveControl& control = *w.Control();
    const TimeValue t = Now();
    RestorePressState(w);
    float factor = heightAt(m.y) / pressHeight;
    if (control.GetControlFlags() & CC_CONSTRAIN_Y) {
        if (!limits.computed)
            SelectionLimits(w, t, limits);
        // yLow - lo is the lowest y of the selection (handles included), yHigh - hi the
        // highest.
        const Point2 range = control.GetYRange();
        const float low = range.x - limits.yLow;
        const float high = range.y - limits.yHigh;
        const float lower = low == 0.0f ? 0.0f : range.x / low;
        const float upper = high == 0.0f ? kNoUpperFactorBound : range.y / high;
        factor = ClampInto(factor, lower, upper);
    }
    ForEachDisplayed(w, [&](Curve& c, int) { c.ScaleSelectedY(t, 0.0f, factor, FALSE); });
    w.RepaintDragStep();
}

void DeformScaleMouseProc::finish(bool accept) {
    openDrag = nullptr;
    EndDrag(*window, accept, IDS_SCALE_POINT);
}
