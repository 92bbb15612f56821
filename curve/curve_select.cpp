// Selection of a curve's points, and the position of the selection that the editor's
// numeric entry fields show and set.
//
// A curve's selection is exactly the KNOT_SELECTED bits of its points.
#include "curve/curve.h"
#include "curve/curve_edit_detail.h"
#include "curve/curve_undo.h"
#include "curvectl/messages.h"
#include "host/hold.h"
#include "platform/client_message.h"

#include <cmath>

using namespace curve_edit;

// Modes: CURVE_SELECT_ADD adds `sel` to the selection, CURVE_SELECT_REMOVE removes it,
// CURVE_SELECT_REPLACE replaces the selection by it (an empty `sel` clears it); any other
// mode changes nothing. Bits beyond the point count are
// ignored and missing bits count as clear.
//
// A change that changes nothing puts no record, so a click that leaves the selection as
// it was leaves no empty "Select" step behind. The client hears the number of selected
// points afterwards unless the selection was and stays empty, or `notify` is off.
void Curve::SetSelectionEx(const BitArray& sel, int mode, BOOL notify) {
    if (mode != CURVE_SELECT_ADD && mode != CURVE_SELECT_REMOVE && mode != CURVE_SELECT_REPLACE)
        return;
    const BitArray before = GetSelection();
    BitArray after(count_);
    for (int i = 0; i < count_; ++i) {
        bool on = before[i] != 0;
        if (mode == CURVE_SELECT_ADD)
            on = on || sel[i];
        else if (mode == CURVE_SELECT_REMOVE)
            on = on && !sel[i];
        else
            on = sel[i] != 0;
        if (on)
            after.Set(i);
    }
    if (after != before && points_) {
        if (theHold.Holding())
            theHold.Put(new DeformSelectRestore(this, before, after));
        // Evaluation reads other bits of the flag words while it rebuilds; the shape does
        // not depend on the selection, so the cache stays.
        auto lock = LockPointTable();
        for (int i = 0; i < count_; ++i) {
            if (after[i])
                points_[i].flags |= KNOT_SELECTED;
            else
                points_[i].flags &= ~uint32_t(KNOT_SELECTED);
        }
    }
    if (notify && !(before.IsEmpty() && after.IsEmpty()))
        SendClientMessage(CURVE_MSG_SELECTION, client_message::PackWParam(after.NumberSet()));
}

// Result: SELPOS_HAS_POINTS when a point is selected; SELPOS_X_UNIFORM when every selected
// point has the x of the first (within 0.0001), SELPOS_Y_UNIFORM likewise for y. `pos` is
// the first selected point's position, (0, 0) without a selection. With a selection,
// `valid` is narrowed to the times for which these positions hold.
int Curve::GetSelectedPosition(TimeValue t, Point2& pos, Interval& valid) {
    pos = Point2();
    int result = 0;
    for (int i = 0; points_ && i < count_; ++i) {
        if (!(points_[i].flags & KNOT_SELECTED))
            continue;
        const Point2 p = CachedPosition(t, i);
        if (!result) {
            pos = p;
            result = SELPOS_HAS_POINTS | SELPOS_X_UNIFORM | SELPOS_Y_UNIFORM;
            continue;
        }
        if (std::fabs(double(p.x) - double(pos.x)) > 0.0001)
            result &= ~SELPOS_X_UNIFORM;
        if (std::fabs(double(p.y) - double(pos.y)) > 0.0001)
            result &= ~SELPOS_Y_UNIFORM;
    }
    if (result)
        valid &= CacheValidity(t);
    return result;
}

// Every selected point goes to x as far as its constraints allow: an interior point up to
// its neighbours and their handles (ClampKnotPosition), a free end point (KNOT_FREE_END_X)
// up to its one neighbour; pinned end points keep their x. Points left of x move right,
// the one nearest x first, so that each can follow the one before it up to x; points right
// of x likewise move left nearest first. Selected points therefore gather at x when
// nothing lies between them, and stop at the first obstacle otherwise.
//
// A point that cannot move is not touched (no record, no message); TRUE when a point moved.
BOOL Curve::SetSelectedX(TimeValue t, float x) {
    if (!std::isfinite(x) || !points_)
        return FALSE;
    bool moved = false;
    auto moveTo = [&](int i) {
        const Point2 p = CachedPosition(t, i);
        const bool freeEnd =
            (points_[i].flags & KNOT_FREE_END_X) && !IsCyclic() && (i == 0 || i == count_ - 1);
        Point2 target(x, p.y);
        if (freeEnd)
            ClampFreeEndPosition(*this, t, i, target);
        else
            ClampKnotPosition(t, i, target);
        const float nx = target.x;
        if (nx == p.x)
            return;
        SetKnotPosition(t, i, Point2(nx, p.y));
        moved = true;
    };
    auto selected = [&](int i) { return (points_[i].flags & KNOT_SELECTED) != 0; };
    for (int i = count_ - 1; i >= 0; --i)
        if (selected(i) && CachedPosition(t, i).x < x)
            moveTo(i);
    for (int i = 0; i < count_; ++i)
        if (selected(i) && CachedPosition(t, i).x > x)
            moveTo(i);
    return moved ? TRUE : FALSE;
}

// Every selected point, end points included, goes to y; under CC_CONSTRAIN_Y only as far
// as keeps the point and both its handles inside the y range. TRUE when a point moved.
BOOL Curve::SetSelectedY(TimeValue t, float y) {
    if (!std::isfinite(y) || !points_)
        return FALSE;
    const bool confined = YConfinementOf(*this).on;
    bool moved = false;
    for (int i = 0; i < count_; ++i) {
        if (!(points_[i].flags & KNOT_SELECTED))
            continue;
        const Point2 p = CachedPosition(t, i);
        float ny = y;
        if (confined) {
            float lo, hi;
            GetMoveYRange(t, i, lo, hi);
            if (y - p.y < lo)
                ny = p.y + lo;
            if (y - p.y > hi)
                ny = p.y + hi;
        }
        if (ny == p.y)
            continue;
        SetKnotPosition(t, i, Point2(p.x, ny));
        moved = true;
    }
    return moved ? TRUE : FALSE;
}
