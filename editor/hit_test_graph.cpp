// CurveWindow::HitTestGraph: the graph's hit test, on which the mouse modes pick points,
// handles and segments. It tests the displayed curves in index order (the order in which
// they lie on top of each other) at the host's current time, with the mapping the graph
// draws them with.
#include "control/curve_control.h"
#include "editor/curve_ctl_window.h"
#include "editor/graph_paint.h"
#include "editor/hit_record.h"
#include "host/core_interface.h"

namespace {

/// The box the request asks for: around the mouse point, the dragged rectangle, or the
/// rectangle as given when neither bit is set.
Box2 hitBox(IPoint2 a, IPoint2 b, int request) {
    if (request & CURVE_HIT_CLICK)
        return CurveClickBox(a);
    if (request & CURVE_HIT_REGION)
        return CurveRegionBox(a, b);
    Box2 box(a, b);
    box.Rectify();
    return box;
}

} // namespace

int CurveWindow::HitTestGraph(HWND hwnd, IPoint2 a, IPoint2 b, GraphHits& records, int request) {
    records.clear();
    if (!owner_ || !hwnd || hwnd != hWnd_)
        return 0;
    CurveControl* control = owner_->Control();
    if (!control)
        return 0;
    const Box2 box = hitBox(a, b, request);
    const TimeValue t = GetCOREInterface()->GetTime();
    const CurveScreen screen = GraphCurveScreen(*owner_);
    const BitArray& shown = owner_->ShownCurves();
    // A click in a control that allows a single selection stops like CURVE_HIT_STOP_FIRST.
    const bool stopAtPoint =
        (request & CURVE_HIT_STOP_FIRST) ||
        ((control->GetControlFlags() & CC_SINGLESELECT) && (request & CURVE_HIT_CLICK));

    int result = 0;
    CurveHitList record;
    for (int i = 0; i < control->GetCurveCount(); ++i) {
        Curve* curve = control->GetCurveObject(i);
        if (!curve || !shown[i])
            continue; // a curve not displayed is drawn but never hit
        record.hits.ZeroCount();
        const int r = curve->HitTestCurve(t, screen, box, request, record.hits);
        if (r == 0)
            continue;
        record.curve = i;
        records.push_back(record);
        result |= r;
        if (stopAtPoint && (r & CURVE_HIT_RESULT_POINT))
            break;
    }
    return result;
}
