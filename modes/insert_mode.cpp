// DeformInsertMouseProc: a click on a curve inserts a point there, into every displayed
// curve whose segment passes under the click, without changing the curves' shapes.
// Hovering shows the point cursor where a click would insert.
#include "control/curve_control.h"
#include "editor/curve_ctl_window.h"
#include "editor/editor_resources.h"
#include "host/core_interface.h"
#include "host/hold.h"
#include "modes/mouse_modes.h"
#include "platform/res_string.h"

#include <algorithm>
#include <vector>

namespace {

/// A point under the click: nothing is inserted on top of it.
constexpr int kPointAtClick = CURVE_HIT_CLICK | CURVE_HIT_STOP_IN_CURVE | CURVE_HIT_POINTS;
/// The segments under the click, at most one per curve.
constexpr int kSegmentAtClick = CURVE_HIT_CLICK | CURVE_HIT_STOP_IN_CURVE | CURVE_HIT_CURVE;
/// Hover: a point, else a segment, under the cursor.
constexpr int kPointAtCursor = CURVE_HIT_CLICK | CURVE_HIT_STOP_FIRST | CURVE_HIT_POINTS;
constexpr int kSegmentAtCursor = CURVE_HIT_CLICK | CURVE_HIT_STOP_FIRST | CURVE_HIT_CURVE;
static_assert(kPointAtClick == 0x450 && kSegmentAtClick == 0x460, "insert press requests");
static_assert(kPointAtCursor == 0x414 && kSegmentAtCursor == 0x424, "insert hover requests");

/// 0 Corner, 1 Bezier: the Add Point fly-off's entry when the edit toolbar has the
/// button, else the control's tool mode (5 is Insert Bezier).
int insertKind(CurveCtlWindow& w) {
    if (ICustButton* button = w.Toolbars().Button(editor_id::kAddPoint))
        return button->GetCurFlyOff() == 1 ? 1 : 0;
    return w.Control()->GetToolMode() == CC_TOOL_INSERT_BEZIER ? 1 : 0;
}

void insertAt(CurveCtlWindow& w, HWND hwnd, IPoint2 m) {
    CurveControl* control = w.Control();
    if (!control)
        return;
    CurveWindow& graph = w.Graph();
    GraphHits hits;
    if (graph.HitTestGraph(hwnd, m, hits, kPointAtClick) & CURVE_HIT_RESULT_POINT)
        return;
    if (!(graph.HitTestGraph(hwnd, m, hits, kSegmentAtClick) & CURVE_HIT_RESULT_CURVE))
        return;

    // The curve x under the mouse column, summed in this order (the same float result the
    // graph's mapping has always given the insertion).
    const float xs = w.Scale().xs;
    const float x = float(w.HorizontalOffset()) / xs + float(m.x) / xs;
    const Point2 range = control->GetXRange();
    if (!(x >= range.x && x <= range.y))
        return; // also a NaN from a degenerate scale

    theHold.Begin();
    const int kind = insertKind(w);
    const TimeValue t = GetCOREInterface()->GetTime();
    bool inserted = false;
    for (const CurveHitList& record : hits) {
        Curve* curve = control->GetCurveObject(record.curve);
        if (!curve)
            continue;
        std::vector<int> segments;
        for (int k = 0; k < record.hits.Count(); ++k)
            segments.push_back(record.hits[k].index);
        // Last segment first: an insertion renumbers the segments after it.
        std::sort(segments.rbegin(), segments.rend());
        for (int segment : segments)
            inserted |= curve->InsertKnotAtX(t, segment, x, kind) != 0;
    }
    theHold.Accept(GetResString(IDS_INSERT_POINTS));
    if (inserted)
        w.RedrawGraph();
}

void hover(CurveCtlWindow& w, HWND hwnd, IPoint2 m) {
    CurveWindow& graph = w.Graph();
    GraphHits hits;
    HCURSOR cursor = LoadCursorA(nullptr, IDC_ARROW);
    // Over a point a click inserts nothing: the plain arrow says so.
    if (!graph.HitTestGraph(hwnd, m, hits, kPointAtCursor) &&
        graph.HitTestGraph(hwnd, m, hits, kSegmentAtCursor))
        cursor = LoadEditorResources().pointCursor;
    SetCursor(cursor);
}

} // namespace

int DeformInsertMouseProc::proc(HWND hwnd, int msg, int point, int, IPoint2 m) {
    if (!window)
        return 1;
    switch (msg) {
    case MOUSE_POINT:
        if (point != 0)
            return 1;
        insertAt(*window, hwnd, m);
        // The insertion is complete: no drag and no release follow.
        return 0;
    case MOUSE_FREEMOVE:
        hover(*window, hwnd, m);
        return 1;
    default:
        return 1;
    }
}
