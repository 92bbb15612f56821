// Inserting and deleting points: the ICurve operations InsertKnotEx and DeleteKnot, the
// editor's split of a segment at x (InsertKnotAtX) and the deletion of the selection.
//
// Point controllers are references indexed by point: reference i is the controller of
// point i. Inserting or deleting a point therefore renumbers the references of every
// later point. The controller array is shifted directly, and no reference is replaced
// for it: the reference system's bookkeeping (which targets the curve depends on) is kept
// per target, not per index, so it stays right as the indices move. Replacing the
// references one by one instead would record and notify a reference change per moved
// controller and drop each controller for a moment, deleting one that nothing else holds.
// Index-based reference records of earlier undo steps stay consistent because undo and
// redo run whole steps in order: the insertion's or deletion's own record has put the
// indices back before an earlier step's reference record runs.
#include "curve/curve.h"
#include "curve/curve_edit_detail.h"
#include "curve/curve_undo.h"
#include "curvectl/messages.h"
#include "host/hold.h"
#include "platform/client_message.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <vector>

using namespace curve_edit;

// ---------------------------------------------------------------------------------------
// Insertion

// `where` is clamped into 0 .. count; the result is the index used, or -1 when the knot
// has a non-finite coordinate, the curve holds CURVECTL_MAX_COUNT points already or the
// table cannot grow (the curve is then unchanged).
//
// Without `noRecord` the insertion is recorded (DeformInsertRestore) and the client hears
// CURVE_MSG_POINT_INSERTED, then, when the new point is selected, CURVE_MSG_SELECTION with
// the number of selected points. Undo and redo insert with `noRecord`: no record, no
// message, nothing else changed.
int Curve::InsertKnotEx(int where, CurveKnot knot, BOOL noRecord) {
    if (!Finite(knot.pos) || !Finite(knot.inTan) || !Finite(knot.outTan))
        return -1;
    const int n = count_;
    if (n > 0 && !points_)
        return -1; // the table was lost to a failed allocation
    if (n >= CURVECTL_MAX_COUNT)
        return -1; // full: what a file can hold
    where = std::clamp(where, 0, n);

    auto* knots = static_cast<CurveKnot*>(std::calloc(std::size_t(n) + 1, sizeof(CurveKnot)));
    auto* controllers =
        static_cast<ReferenceTarget**>(std::calloc(std::size_t(n) + 1, sizeof(ReferenceTarget*)));
    if (!knots || !controllers) {
        std::free(knots);
        std::free(controllers);
        return -1;
    }
    for (int i = 0; i < n; ++i) {
        const int to = i < where ? i : i + 1;
        knots[to] = points_[i];
        controllers[to] = Controller(i);
    }
    knots[where] = knot; // its controller slot stays null: a new point is not animated

    const bool record = !noRecord && theHold.Holding();
    if (record) {
        ClosePositionRecord(*this);
        theHold.Put(new DeformInsertRestore(this, where, knot));
    }
    {
        auto lock = LockPointTable();
        std::free(points_);
        std::free(controllers_);
        points_ = knots;
        controllers_ = controllers;
        count_ = n + 1;
        InvalidateCache();
    }

    if (!noRecord) {
        SendClientMessage(CURVE_MSG_POINT_INSERTED, client_message::PackWParam(where));
        if (knot.flags & KNOT_SELECTED)
            SendClientMessage(CURVE_MSG_SELECTION,
                              client_message::PackWParam(SelectedCount(*this)));
    }
    return where;
}

// Splits segment i (point i to point j = (i + 1) mod n) at x by de Casteljau subdivision.
//
// A Bezier point keeps the curve's shape exactly: it is the subdivision point S with the
// two inner subdivision points as handles. A Corner point has no handles; it is placed
// where segment i, as it is before the split, reaches the parameter u, which is S up to
// rounding, so it too sits on the curve where the user clicked. The outer handles
// (Q01, Q23) are kept on their side of the new point's x.
//
// The selection is cleared without a message of its own: the client hears the insertion
// and then the new selection of one point.
int Curve::InsertKnotAtX(TimeValue t, int i, float x, int kind) {
    InvalidateCache();
    const int n = count_;
    if (!points_ || n < 2 || !std::isfinite(x))
        return 0;
    if (i < 0 || i >= n || (i == n - 1 && !IsCyclic()))
        return 0; // no such segment
    if (n >= CURVECTL_MAX_COUNT)
        return 0; // full: the new point could not go in, so no handle may change either
    const int j = (i + 1) % n;

    const Point2 p0 = CachedPosition(t, i), p1 = CachedOutHandle(t, i);
    const Point2 p2 = CachedInHandle(t, j), p3 = CachedPosition(t, j);
    if (p0.x == p3.x)
        return 0; // a vertical segment cannot be split at an x

    const float u = SegmentValue(t, i, x, 1);
    const Point2 q01 = p0 + (p1 - p0) * u, q12 = p1 + (p2 - p1) * u, q23 = p2 + (p3 - p2) * u;
    Point2 q012 = q01 + (q12 - q01) * u, q123 = q12 + (q23 - q12) * u;
    const Point2 s = q012 + (q123 - q012) * u;
    const bool bezier = kind == 1;
    const Point2 at = bezier ? s : SegmentPoint(t, i, u);

    // Keep the four inner points in x order, also against rounding. A segment across the
    // wrap of a cyclic curve runs backwards, and every comparison turns round.
    Point2 out = q01, in = q23;
    if (p0.x < p3.x) {
        q012.x = std::max(q012.x, p0.x);
        q123.x = std::min(q123.x, p3.x);
        out.x = std::min(out.x, at.x);
        in.x = std::max(in.x, at.x);
    } else {
        q012.x = std::min(q012.x, p0.x);
        q123.x = std::max(q123.x, p3.x);
        out.x = std::max(out.x, at.x);
        in.x = std::min(in.x, at.x);
    }
    SetOutHandle(t, i, out, TRUE, TRUE);
    SetInHandle(t, j, in, TRUE, TRUE);

    SetSelectionEx(BitArray(), CURVE_SELECT_REPLACE, FALSE);

    const CurveKnot knot =
        bezier ? CurveKnot(s, q012 - s, q123 - s, KNOT_SELECTED | KNOT_TYPE_BEZIER_SMOOTH)
               : CurveKnot(at, Point2(), Point2(), KNOT_SELECTED | KNOT_TYPE_CORNER);
    return InsertKnotEx(j, knot, FALSE) >= 0 ? 1 : 0;
}

// ---------------------------------------------------------------------------------------
// Deletion

// With a record, the order is what makes undo and redo exact:
//   1. the table is copied for DeformDeleteRestore (controller pointers included);
//   2. reference i is dropped with DeleteReference while it still is point i's
//      controller, so the host records the reference change against the table it refers
//      to;
//   3. the table shrinks;
//   4. DeformDeleteRestore is put (its after table read from the shrunk curve).
// Undo runs records last to first: the delete record puts the old table back, controller
// pointer included and without reference bookkeeping, and the host's reference record
// then finds reference i already holding the controller it restores, so it only restores
// the dependency. Redo runs first to last: the reference record finds the old table with
// reference i still holding the controller and drops it, then the delete record installs
// the shrunk table. Had the delete record gone first, the reference record would meet a
// shrunk table in which reference i is the next point's controller.
//
// The deleted point leaves the selection with the table; the copy keeps its KNOT_SELECTED
// bit, so undo gives the point back selected, as it was when the user deleted it.
//
// When the first or last point goes, its neighbour becomes the new end point: it gets
// KNOT_ENDPOINT and, as end points may not be Bezier-Smooth, a Bezier-Smooth type becomes
// Bezier-Corner. The no-record form (the undo of an insertion) removes the point and
// nothing else, and sends no message.
void Curve::DeleteKnotEx(int i, BOOL noRecord) {
    if (i < 0 || i >= count_ || !points_)
        return;
    const int n = count_;
    const bool record = !noRecord && theHold.Holding();
    std::vector<CurveKnot> beforeKnots;
    std::vector<ReferenceTarget*> beforeControllers;
    if (record) {
        ClosePositionRecord(*this);
        beforeKnots.assign(points_, points_ + n);
        for (int j = 0; j < n; ++j)
            beforeControllers.push_back(Controller(j));
    }

    {
        auto lock = LockPointTable();
        if (Controller(i))
            DeleteReference(i);

        const CurveKnot gone = points_[i];
        std::memmove(points_ + i, points_ + i + 1, sizeof(CurveKnot) * std::size_t(n - 1 - i));
        if (controllers_)
            std::memmove(static_cast<void*>(controllers_ + i), controllers_ + i + 1,
                         sizeof(ReferenceTarget*) * std::size_t(n - 1 - i));
        count_ = n - 1; // the arrays keep their size; only count_ entries are used

        if (!noRecord && count_ > 0 && (gone.flags & KNOT_ENDPOINT) && (i == 0 || i == n - 1)) {
            CurveKnot& end = points_[i == 0 ? 0 : count_ - 1];
            end.flags |= KNOT_ENDPOINT;
            if ((end.flags & KNOT_TYPE_MASK) == KNOT_TYPE_BEZIER_SMOOTH)
                end.flags |= KNOT_CORNER;
        }
        if (record)
            theHold.Put(
                new DeformDeleteRestore(this, n, beforeKnots.data(), beforeControllers.data()));
        InvalidateCache();
    }
    if (!noRecord)
        SendClientMessage(CURVE_MSG_POINT_DELETED, client_message::PackWParam(i));
}

// The first and last points stay: they hold the curve's ends at the x range, and a curve
// keeps at least them. Deleting from the highest index down keeps the lower indices valid
// and gives the client one CURVE_MSG_POINT_DELETED per point in descending order.
int Curve::DeleteSelectedKnots() {
    int deleted = 0;
    for (int i = count_ - 1; i >= 0 && points_; --i) {
        const uint32_t f = points_[i].flags;
        if (!(f & KNOT_SELECTED) || (f & KNOT_ENDPOINT))
            continue;
        DeleteKnotEx(i, FALSE);
        ++deleted;
    }
    return deleted;
}
