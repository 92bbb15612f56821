// DeformMoveMouseProc: drags the selected points of every displayed curve, or, when the
// press landed on tangent handles (the graph's handle hits, filled by DeformMouseProc),
// those handles. One drag is one undo step, "Move Points" or "Adjust Tangents".
//
// Every drag step rolls the hold back to the press state and applies the whole offset
// from the press again, so the points never drift with rounding, and dragging back to
// the press point gives exactly the press state.
//
// Snapping: the host offers no snap setting to this module, so offsets are used as the
// mouse gives them.
#include "control/curve_control.h"
#include "editor/curve_ctl_window.h"
#include "editor/graph_paint.h"
#include "modes/edit_drag.h"
#include "modes/mouse_modes.h"
#include "res/resource.h"

#include <vector>

using namespace edit_drag;

namespace {

/// DragHandle's selector bit that breaks the tangent of a Bezier-Smooth point first.
constexpr int kBreakTangentBit = 0x2;

/// The axis constraint: CC_TOOL_MOVE_XY, CC_TOOL_MOVE_X or CC_TOOL_MOVE_Y. The move
/// button's fly-off, when the toolbar has the button, decides; else the control's tool
/// mode (a value outside the three moves both axes).
int moveAxes(CurveCtlWindow& w) {
    if (ICustButton* button = w.Toolbars().Button(editor_id::kMove))
        if (button->GetNumFlyOffs() > 0)
            return button->GetCurFlyOff();
    return w.Control()->GetToolMode();
}

/// Moves the selected points of `c` by (dx, dy). All positions are read before any point
/// moves: each move drops the curve's cache, and reading after it would rebuild the cache
/// once per point. The first and last point of an open curve keep their x unless they
/// are free (KNOT_FREE_END_X); the selection's limits were computed the same way.
void moveSelected(Curve& c, TimeValue t, float dx, float dy) {
    const CurveKnot* k = c.Knots();
    const int n = c.PointCount();
    if (!k)
        return;
    struct Target {
        int index;
        Point2 pos;
    };
    std::vector<Target> targets;
    for (int i = 0; i < n; ++i) {
        if (!(k[i].flags & KNOT_SELECTED))
            continue;
        const Point2 p = c.CachedPosition(t, i);
        const bool pinnedX =
            !c.IsCyclic() && (i == 0 || i == n - 1) && !(k[i].flags & KNOT_FREE_END_X);
        targets.push_back({i, Point2(pinnedX ? p.x : p.x + dx, p.y + dy)});
    }
    for (const Target& target : targets)
        c.SetKnotPosition(t, target.index, target.pos);
}

} // namespace

int DeformMoveMouseProc::pressed(IPoint2 m) {
    CurveCtlWindow& w = *window;
    if (openDrag) // a press without the release of the one before: that drag is kept
        finish(true);
    limits.computed = 0;
    breakTangent = 0;
    w.Graph().SetMoving(true);
    BeginDrag(w, w.Graph().HandleHits().empty(), IDS_MOVE_POINTS);
    openDrag = window->Control();
    press = m;
    return 1;
}

void DeformMoveMouseProc::drag(int flags, IPoint2 m) {
    CurveCtlWindow& w = *window;
    const int axes = moveAxes(w);
    const bool handles = !w.Graph().HandleHits().empty();
    const bool xFree = axes != CC_TOOL_MOVE_Y;

    // Auto-scroll comes first, so that this very step already keeps the point under the
    // mouse: the view moves by the overshoot and the press moves with the content.
    if (!handles && xFree && m.x != press.x && (w.Control()->GetControlFlags() & CC_AUTOSCROLL)) {
        RECT client{};
        GetClientRect(w.Graph().Handle(), &client);
        const int over = m.x < client.left    ? m.x - client.left
                         : m.x > client.right ? m.x - client.right
                                              : 0;
        if (over != 0) {
            const int before = w.HorizontalOffset();
            w.SetHorizontalOffset(before + over); // the bar keeps it inside its range
            const int scrolled = w.HorizontalOffset() - before;
            if (scrolled != 0) {
                press.x -= scrolled;
                w.RefreshView();
            }
        }
    }

    const int px = m.x - press.x;
    const int py = press.y - m.y; // screen rows grow downwards
    float dx = float(px) / w.Scale().xs;
    float dy = float(py) / CurveYScale(w.Scale().ys);
    if (axes == CC_TOOL_MOVE_X)
        dy = 0.0f;
    if (axes == CC_TOOL_MOVE_Y)
        dx = 0.0f;

    RestorePressState(w);
    if (handles)
        dragHandles(flags, dx, dy);
    else
        dragPoints(dx, dy);
    w.RepaintDragStep();
}

void DeformMoveMouseProc::dragPoints(float dx, float dy) {
    CurveCtlWindow& w = *window;
    const TimeValue t = Now();
    if (!limits.computed)
        SelectionLimits(w, t, limits);
    dx = ClampInto(dx, limits.xLow, limits.xHigh);
    if (w.Control()->GetControlFlags() & CC_CONSTRAIN_Y)
        dy = ClampInto(dy, limits.yLow, limits.yHigh);
    ForEachDisplayed(w, [&](Curve& c, int) { moveSelected(c, t, dx, dy); });
}

void DeformMoveMouseProc::dragHandles(int flags, float dx, float dy) {
    CurveCtlWindow& w = *window;
    CurveControl& control = *w.Control();
    const std::vector<int>& curves = w.Graph().HandleCurves();
    const std::vector<CurveHit>& hits = w.Graph().HandleHits();
    const TimeValue t = Now();
    if (flags & MOUSE_SHIFT)
        breakTangent = 1;
    if (!limits.computed) {
        // Each handle overwrites the limits of the one before: those of the last handle
        // hit apply to all of them.
        for (size_t k = 0; k < hits.size() && k < curves.size(); ++k) {
            if (Curve* c = control.GetCurveObject(curves[k])) {
                c->GetHandleXRange(t, hits[k].index, hits[k].part, limits.xLow, limits.xHigh);
                c->GetHandleYRange(t, hits[k].index, hits[k].part, limits.yLow, limits.yHigh);
            }
        }
        limits.computed = 1;
    }
    dx = ClampInto(dx, limits.xLow, limits.xHigh);
    if (control.GetControlFlags() & CC_CONSTRAIN_Y)
        dy = ClampInto(dy, limits.yLow, limits.yHigh);
    const int selectorBits = breakTangent ? kBreakTangentBit : 0;
    for (size_t k = 0; k < hits.size() && k < curves.size(); ++k)
        if (Curve* c = control.GetCurveObject(curves[k]))
            c->DragHandle(t, hits[k].index, hits[k].part | selectorBits, dx, dy);
}

void DeformMoveMouseProc::finish(bool accept) {
    CurveCtlWindow& w = *window;
    openDrag = nullptr;
    w.Graph().SetMoving(false);
    EndDrag(w, accept, w.Graph().HandleHits().empty() ? IDS_MOVE_POINTS : IDS_ADJUST_TANGENTS);
}
