// Point editing under the curve's constraints: the point-position and tangent setters,
// move and handle ranges, clamping, handle drags, scaling, whole-point storing and
// SetKnot. Point types are in curve_knot_type.cpp, selection in curve_select.cpp,
// insertion and deletion in curve_insert_delete.cpp.
//
// The constraints: the point table never folds back on itself in x, the first and last
// points keep their x, a handle stays between its point and the neighbouring point on its
// side, and with the control's CC_CONSTRAIN_Y nothing leaves the y range. Positions are
// read at time t through the evaluation cache (CachedPosition, CachedInHandle,
// CachedOutHandle), so animated points and pinned end points are taken where the user
// sees them.
//
// Every operation follows one order: the undo record is put and the new state stored, the
// evaluation cache is dropped, and the client message goes last, so a client that reads
// the curve from its handler sees the new state.
//
// Index
//   [SECTION] Shared helpers (curve_edit_detail.h)
//   [SECTION] Neighbours and handle geometry
//   [SECTION] Position and tangent setters
//   [SECTION] Move ranges and clamping
//   [SECTION] Handle drags
//   [SECTION] Scaling
//   [SECTION] Whole points
//   [SECTION] SetKnot
#include "control/curve_control.h"
#include "curve/curve.h"
#include "curve/curve_edit_detail.h"
#include "curve/curve_settled_records.h"
#include "curve/curve_undo.h"
#include "curvectl/messages.h"
#include "host/controller.h"
#include "host/hold.h"
#include "platform/client_message.h"

#include <algorithm>
#include <cmath>

using namespace curve_edit;

// ---------------------------------------------------------------------------------------
// [SECTION] Shared helpers (curve_edit_detail.h)

namespace curve_edit {

bool Different(const Point2& a, const Point2& b) { return double(Length(a - b)) > 0.0001; }

bool Finite(const Point2& p) { return std::isfinite(p.x) && std::isfinite(p.y); }

YConfinement YConfinementOf(const Curve& c) {
    YConfinement y;
    if (CurveControl* owner = c.Owner()) {
        const Point2 range = owner->GetYRange();
        y.on = (owner->GetControlFlags() & CC_CONSTRAIN_Y) != 0;
        y.low = range.x;
        y.high = range.y;
    }
    return y;
}

DeformPtPosChange* PositionRecord(Curve& c) {
    if (!theHold.Holding())
        return nullptr;
    if (!c.OpenPosRecord())
        theHold.Put(new DeformPtPosChange(&c)); // becomes the open one
    return c.OpenPosRecord();
}

void ClosePositionRecord(Curve& c) { c.SetOpenPosRecord(nullptr); }

bool StorePosition(Curve& c, TimeValue t, int i, const Point2& pos) {
    CurveKnot* k = c.Knots();
    if (!k || i < 0 || i >= c.PointCount())
        return false;
    auto lock = c.LockPointTable();
    if (auto* ctrl = dynamic_cast<Control*>(c.Controller(i))) {
        Point3 v(pos.x, pos.y, 0.0f);
        ctrl->SetValue(t, &v, 1, CTRL_ABSOLUTE);
    } else {
        if (DeformPtPosChange* rec = PositionRecord(c))
            rec->SetAfterPos(i, pos);
        k[i].pos = pos;
    }
    c.InvalidateCache();
    return true;
}

int SelectedCount(Curve& c) {
    const CurveKnot* k = c.Knots();
    int n = 0;
    for (int i = 0; k && i < c.PointCount(); ++i)
        if (k[i].flags & KNOT_SELECTED)
            ++n;
    return n;
}

} // namespace curve_edit

// ---------------------------------------------------------------------------------------
// [SECTION] Neighbours and handle geometry (curve_edit_detail.h)

namespace curve_edit {

Neighbour LeftNeighbour(Curve& c, TimeValue t, int i) {
    const int n = c.PointCount();
    if (i > 0)
        return {i - 1, false};
    if (!c.IsCyclic() || n < 2)
        return {};
    return {n - 1, c.CachedPosition(t, n - 1).x > c.CachedPosition(t, i).x};
}

Neighbour RightNeighbour(Curve& c, TimeValue t, int i) {
    const int n = c.PointCount();
    if (i < n - 1)
        return {i + 1, false};
    if (!c.IsCyclic() || n < 2)
        return {};
    return {0, c.CachedPosition(t, 0).x < c.CachedPosition(t, i).x};
}

Point2 ShortenToX(const Point2& p, const Point2& h, float limitX, bool limitOnRight) {
    const bool passes = limitOnRight ? h.x > limitX : h.x < limitX;
    if (!passes)
        return h;
    const float f = (limitX - p.x) / (h.x - p.x); // in (0, 1] while p is inside the limit
    if (!(f > 0.0f))
        return p;
    Point2 r = p + (h - p) * f;
    r.x = limitX; // exactly, whatever the rounding
    return r;
}

Point2 ShortenToY(const Point2& p, const Point2& h, float low, float high) {
    auto towards = [&](float limit) {
        const float f = std::clamp((limit - p.y) / (h.y - p.y), 0.0f, 1.0f);
        Point2 r = p + (h - p) * f;
        if (f > 0.0f)
            r.y = limit;
        return r;
    };
    if (h.y > high)
        return towards(high);
    if (h.y < low)
        return towards(low);
    return h;
}

} // namespace curve_edit

// ---------------------------------------------------------------------------------------
// [SECTION] Position and tangent setters

void Curve::SetKnotPosition(TimeValue t, int i, const Point2& pos) {
    if (!Finite(pos))
        return; // a non-finite position would break every later evaluation
    if (!StorePosition(*this, t, i, pos))
        return;
    SendClientMessage(CURVE_MSG_POINT_CHANGED, client_message::PackWParam(i));
}

// Moves both handles with their point exactly, as a rescale of the x range does: there is
// no threshold to pass, so undo and redo give back the very values stored.
void Curve::StoreTangents(int i, const Point2& inTan, const Point2& outTan) {
    if (!points_ || i < 0 || i >= count_ || !Finite(inTan) || !Finite(outTan))
        return;
    if (DeformPtPosChange* rec = PositionRecord(*this)) {
        rec->SetAfterInTan(i, inTan);
        rec->SetAfterOutTan(i, outTan);
    }
    auto lock = LockPointTable();
    points_[i].inTan = inTan;
    points_[i].outTan = outTan;
    InvalidateCache();
}

namespace {

enum class Side { In, Out };

// The tangent is stored, and recorded, only when it moved by more than 0.0001; the record
// then always matches the table, so redo gives back exactly what the edit left.
// `position` is point i's position as the cache has it at the time of the edit.
int setTangentFrom(Curve& c, const Point2& position, int i, const Point2& handle, BOOL invalidate,
                   BOOL notify, Side side) {
    const Point2 tan = handle - position;
    const int bit =
        side == Side::In ? client_message::kInTangentChanged : client_message::kOutTangentChanged;
    int changed = 0;
    CurveKnot* k = c.Knots();
    if (k && i >= 0 && i < c.PointCount() && Finite(tan)) {
        Point2& cur = side == Side::In ? k[i].inTan : k[i].outTan;
        if (Different(cur, tan)) {
            if (DeformPtPosChange* rec = PositionRecord(c)) {
                if (side == Side::In)
                    rec->SetAfterInTan(i, tan);
                else
                    rec->SetAfterOutTan(i, tan);
            }
            auto lock = c.LockPointTable();
            cur = tan;
            changed = bit;
        }
    }
    // Without `invalidate` the caller drops the cache itself after its last change, as
    // DragHandle and ScaleSelectedY do with the out-handle.
    if (invalidate)
        c.InvalidateCache();
    if (notify && changed)
        c.SendClientMessage(CURVE_MSG_TANGENT_CHANGED, client_message::PackWParam(i, changed));
    return changed;
}

int setTangent(Curve& c, TimeValue t, int i, const Point2& handle, BOOL invalidate, BOOL notify,
               Side side) {
    return setTangentFrom(c, c.CachedPosition(t, i), i, handle, invalidate, notify, side);
}

} // namespace

int Curve::SetInHandle(TimeValue t, int i, const Point2& handle, BOOL invalidate, BOOL notify) {
    return setTangent(*this, t, i, handle, invalidate, notify, Side::In);
}

int Curve::SetOutHandle(TimeValue t, int i, const Point2& handle, BOOL invalidate, BOOL notify) {
    return setTangent(*this, t, i, handle, invalidate, notify, Side::Out);
}

// ---------------------------------------------------------------------------------------
// [SECTION] Move ranges and clamping

namespace {

// A point may travel left until it reaches its left neighbour's out-handle or its own
// in-handle reaches that neighbour. For a neighbour across the wrap (to the right of the
// point) the same two limits bound the travel to the right.
void limitByLeft(Curve& c, TimeValue t, int i, const Neighbour& l, float& lo, float& hi) {
    const float px = c.CachedPosition(t, i).x;
    const float a = c.CachedOutHandle(t, l.index).x - px;
    const float b = c.CachedPosition(t, l.index).x - c.CachedInHandle(t, i).x;
    if (l.across)
        hi = std::min(hi, std::min(a, b));
    else
        lo = std::max(lo, std::max(a, b));
}

void limitByRight(Curve& c, TimeValue t, int i, const Neighbour& r, float& lo, float& hi) {
    const float px = c.CachedPosition(t, i).x;
    const float a = c.CachedInHandle(t, r.index).x - px;
    const float b = c.CachedPosition(t, r.index).x - c.CachedOutHandle(t, i).x;
    if (r.across)
        lo = std::max(lo, std::max(a, b));
    else
        hi = std::min(hi, std::min(a, b));
}

// The selection moves together, so a selected point is held back only by neighbours that
// stay where they are: unselected ones and, on an open curve, the first and last points
// (which never move in x). End points of an open curve do not limit the selection
// themselves: they stay in x while the rest moves.
//
// A free end point (KNOT_FREE_END_X) does move with the selection, so it is treated as
// any other point: held back by its one neighbour unless that moves too, and not holding
// back a selected neighbour. On a curve without free end points this changes nothing.
//
// On a cyclic curve nothing is pinned in x: every selected point, the first and last
// included, is limited by its unselected neighbours, wrapped round the table. A neighbour
// across the wrap limits the opposite direction (see limitByLeft).
void selectionMoveRange(Curve& c, TimeValue t, float& lo, float& hi) {
    lo = -kUnbounded;
    hi = kUnbounded;
    const CurveKnot* k = c.Knots();
    const int n = c.PointCount();
    const bool cyclic = c.IsCyclic();
    auto selected = [&](int j) { return (k[j].flags & KNOT_SELECTED) != 0; };
    auto pinnedEnd = [&](int j) {
        return !cyclic && (j == 0 || j == n - 1) && !(k[j].flags & KNOT_FREE_END_X);
    };
    auto staysInX = [&](int j) { return !selected(j) || pinnedEnd(j); };
    for (int i = 0; i < n; ++i) {
        if (!selected(i))
            continue;
        const bool freeEnd = (k[i].flags & KNOT_FREE_END_X) && !pinnedEnd(i);
        if (!cyclic && (k[i].flags & KNOT_ENDPOINT) && !freeEnd)
            continue;
        const Neighbour l = LeftNeighbour(c, t, i);
        const Neighbour r = RightNeighbour(c, t, i);
        if (l.index >= 0 && staysInX(l.index))
            limitByLeft(c, t, i, l, lo, hi);
        if (r.index >= 0 && staysInX(r.index))
            limitByRight(c, t, i, r, lo, hi);
    }
}

} // namespace

void curve_edit::NeighbourMoveRange(Curve& c, TimeValue t, int i, float& lo, float& hi) {
    lo = -kUnbounded;
    hi = kUnbounded;
    if (i < 0 || i >= c.PointCount() || !c.Knots())
        return;
    if (i > 0)
        limitByLeft(c, t, i, Neighbour{i - 1, false}, lo, hi);
    if (i < c.PointCount() - 1)
        limitByRight(c, t, i, Neighbour{i + 1, false}, lo, hi);
}

void curve_edit::ClampFreeEndPosition(Curve& c, TimeValue t, int i, Point2& pos) {
    if (i < 0 || i >= c.PointCount() || !c.Knots())
        return;
    const Point2 p = c.CachedPosition(t, i);
    float lo, hi;
    NeighbourMoveRange(c, t, i, lo, hi);
    pos.x = std::clamp(pos.x - p.x, lo, std::max(lo, hi)) + p.x;
    if (YConfinementOf(c).on) {
        c.GetMoveYRange(t, i, lo, hi);
        pos.y = std::clamp(pos.y - p.y, lo, std::max(lo, hi)) + p.y;
    }
}

void Curve::GetMoveRange(TimeValue t, int i, float& lo, float& hi) {
    const int n = count_;
    if (n == 0 || !points_) {
        lo = hi = 0.0f;
        return;
    }
    if (i < 0 || i >= n) {
        selectionMoveRange(*this, t, lo, hi);
        return;
    }
    lo = hi = 0.0f;
    if (i == 0 || i == n - 1)
        return; // the first and last point never move in x
    lo = -kUnbounded;
    hi = kUnbounded;
    limitByLeft(*this, t, i, Neighbour{i - 1, false}, lo, hi);
    limitByRight(*this, t, i, Neighbour{i + 1, false}, lo, hi);
}

// The point carries both its handles, so all three must stay inside the y range. The
// same holds for a selection on a cyclic curve: y limits do not depend on neighbours.
void Curve::GetMoveYRange(TimeValue t, int i, float& lo, float& hi) {
    lo = -kUnbounded;
    hi = kUnbounded;
    const YConfinement y = YConfinementOf(*this);
    if (!y.on || count_ == 0 || !points_)
        return;
    auto room = [&](int j, float& down, float& up) {
        const Point2 p = CachedPosition(t, j), in = CachedInHandle(t, j),
                     out = CachedOutHandle(t, j);
        up = std::min(y.high - p.y, std::min(y.high - in.y, y.high - out.y));
        down = std::max(y.low - p.y, std::max(y.low - in.y, y.low - out.y));
    };
    if (i >= 0 && i < count_) {
        room(i, lo, hi);
        return;
    }
    for (int j = 0; j < count_; ++j) {
        if (!(points_[j].flags & KNOT_SELECTED))
            continue;
        float down, up;
        room(j, down, up);
        lo = std::max(lo, down);
        hi = std::min(hi, up);
    }
}

// A handle lives between its own point and the neighbouring point on its side.
void Curve::GetHandleXRange(TimeValue t, int i, int selector, float& lo, float& hi) {
    lo = hi = 0.0f;
    if (i < 0 || i >= count_ || !points_)
        return;
    const float px = CachedPosition(t, i).x;
    if (selector & kOutHandle) {
        const Neighbour r = RightNeighbour(*this, t, i);
        if (r.index < 0)
            return; // the last point's out-handle: [0, 0]
        const float hx = CachedOutHandle(t, i).x, nx = CachedPosition(t, r.index).x;
        lo = (r.across ? nx : px) - hx;
        hi = (r.across ? px : nx) - hx;
    } else {
        const Neighbour l = LeftNeighbour(*this, t, i);
        if (l.index < 0)
            return; // the first point's in-handle: [0, 0]
        const float hx = CachedInHandle(t, i).x, nx = CachedPosition(t, l.index).x;
        lo = (l.across ? px : nx) - hx;
        hi = (l.across ? nx : px) - hx;
    }
}

// Callers apply this only under CC_CONSTRAIN_Y. Cyclic curves get the same range as open
// ones: the y range does not depend on the wrap.
void Curve::GetHandleYRange(TimeValue t, int i, int selector, float& lo, float& hi) {
    lo = hi = 0.0f;
    if (i < 0 || i >= count_ || !points_)
        return;
    if (!owner_) {
        lo = -kUnbounded;
        hi = kUnbounded;
        return;
    }
    const YConfinement y = YConfinementOf(*this);
    const Point2 h = (selector & kOutHandle) ? CachedOutHandle(t, i) : CachedInHandle(t, i);
    lo = y.low - h.y;
    hi = y.high - h.y;
}

// An inverted range (lo > hi) means the neighbours already overlap. The point next to a
// fixed end point then keeps clear of that end point: point 1 takes lo (its left
// neighbour, point 0, never moves), point n-2 takes hi. The two rules apply in this
// order, so point 1 of a three-point curve, which is both, ends with hi.
void Curve::ClampKnotPosition(TimeValue t, int i, Point2& pos) {
    if (i < 0 || i >= count_ || !points_)
        return;
    float lo, hi;
    GetMoveRange(t, i, lo, hi);
    const Point2 p = CachedPosition(t, i);
    const float dx = pos.x - p.x;
    if (dx < lo)
        pos.x = p.x + lo;
    if (dx > hi)
        pos.x = p.x + hi;
    if (lo > hi) {
        if (i == 1)
            pos.x = p.x + lo;
        if (i == count_ - 2)
            pos.x = p.x + hi;
    }
    if (YConfinementOf(*this).on) {
        GetMoveYRange(t, i, lo, hi);
        const float dy = pos.y - p.y;
        if (dy < lo)
            pos.y = p.y + lo;
        if (dy > hi)
            pos.y = p.y + hi;
    }
}

// ---------------------------------------------------------------------------------------
// [SECTION] Handle drags

namespace {

// DragHandle without or with its client message. SetKnot drags through here silently and
// sends its own messages, so that a client hears one message per tangent it set.
void dragHandle(Curve& c, TimeValue t, int i, int selector, float dx, float dy, bool notify) {
    c.InvalidateCache();
    CurveKnot* k = c.Knots();
    if (!k || c.PointCount() == 0 || i < 0 || i >= c.PointCount())
        return;
    if (!std::isfinite(dx) || !std::isfinite(dy))
        return;

    if ((selector & kBreakTangent) && !(k[i].flags & KNOT_CORNER)) {
        CurveKnot broken = k[i];
        broken.flags |= KNOT_CORNER; // Bezier-Smooth becomes Bezier-Corner
        c.StoreKnot(i, broken);
    }

    const bool out = (selector & kOutHandle) != 0;
    const Point2 p = c.CachedPosition(t, i);
    const Point2 inH = c.CachedInHandle(t, i);
    const Point2 outH = c.CachedOutHandle(t, i);
    const Point2 h = out ? outH : inH; // the dragged handle
    const Point2 o = out ? inH : outH; // the opposite one
    const Neighbour own = out ? RightNeighbour(c, t, i) : LeftNeighbour(c, t, i);
    const Neighbour opposite = out ? LeftNeighbour(c, t, i) : RightNeighbour(c, t, i);
    const YConfinement y = YConfinementOf(c);

    // The dragged handle stays on its own side of the point.
    Point2 nh = h + Point2(dx, dy);
    const bool rightSide = out != own.across;
    nh.x = rightSide ? std::max(nh.x, p.x) : std::min(nh.x, p.x);
    if (y.on)
        nh.y = std::min(std::max(nh.y, y.low), y.high);

    const float dragged = Length(h - p);
    const float ratio = dragged == 0.0f ? 1.0f : Length(nh - p) / dragged;

    Point2 no = o;
    const bool smooth = (k[i].flags & KNOT_TYPE_MASK) == KNOT_TYPE_BEZIER_SMOOTH;
    if (smooth && !(c.IsCyclic() && (k[i].flags & KNOT_ENDPOINT))) {
        // Collinear and opposite, its length scaled as the dragged handle's was.
        no = p - Normalize(nh - p) * (Length(o - p) * ratio);
        // The opposite neighbour lies to the right when it is the right one (an in-handle
        // is dragged), unless it lies across the wrap.
        if (opposite.index >= 0)
            no = ShortenToX(p, no, c.CachedPosition(t, opposite.index).x, out == opposite.across);
        if (y.on)
            no = ShortenToY(p, no, y.low, y.high);
    }

    const int changed = c.SetInHandle(t, i, out ? no : nh, FALSE, FALSE) |
                        c.SetOutHandle(t, i, out ? nh : no, TRUE, FALSE);
    if (notify)
        c.SendClientMessage(CURVE_MSG_TANGENT_CHANGED, client_message::PackWParam(i, changed));
}

// The requested tangent becomes a drag by the difference, clamped so that the handle stays
// between its point and the neighbour (and, under CC_CONSTRAIN_Y, inside the y range).
void setHandleConstrained(Curve& c, TimeValue t, int i, int selector, const Point2& tangent,
                          bool notify) {
    const CurveKnot* k = c.Knots();
    if (!k || i < 0 || i >= c.PointCount() || !Finite(tangent))
        return;
    const Point2 cur = (selector & kOutHandle) ? k[i].outTan : k[i].inTan;
    float lo, hi;
    c.GetHandleXRange(t, i, selector, lo, hi);
    float dx = tangent.x - cur.x;
    if (dx < lo)
        dx = lo;
    if (dx > hi)
        dx = hi;
    float dy = tangent.y - cur.y;
    if (YConfinementOf(c).on) {
        c.GetHandleYRange(t, i, selector, lo, hi);
        if (dy < lo)
            dy = lo;
        if (dy > hi)
            dy = hi;
    }
    dragHandle(c, t, i, selector, dx, dy, notify);
}

} // namespace

void Curve::SetHandleConstrained(TimeValue t, int i, int selector, const Point2& tangent) {
    setHandleConstrained(*this, t, i, selector, tangent, true);
}

void Curve::DragHandle(TimeValue t, int i, int selector, float dx, float dy) {
    dragHandle(*this, t, i, selector, dx, dy, true);
}

// ---------------------------------------------------------------------------------------
// [SECTION] Scaling

// Each point is read as the cache has it after the edits of the points before it. Read
// through the cache itself, that would rebuild the cache twice per point (quadratic in the
// selection: 300 ms for 16 curves of 1,000 selected points); SettledRecords gives the same
// answers, bit for bit, without.
void Curve::ScaleSelectedY(TimeValue t, float origin, float factor, BOOL skipAnimated) {
    if (!std::isfinite(origin) || !std::isfinite(factor))
        return;
    auto scaled = [&](Point2 p) {
        p.y = (p.y - origin) * factor + origin;
        return p;
    };
    SettledRecords cache(*this, t);
    for (int i = 0; i < count_ && points_; ++i) {
        if (!(points_[i].flags & KNOT_SELECTED))
            continue;
        if (skipAnimated && Controller(i))
            continue;
        // Both handles are read before the position moves; the setters then turn them
        // into tangents relative to the new position.
        const Point2 in = scaled(cache.InHandle(i));
        const Point2 out = scaled(cache.OutHandle(i));
        const Point2 pos = scaled(cache.Position(i));
        if (Controller(i))
            cache.Stop(); // the controller takes the position, with its own messages
        SetKnotPosition(t, i, pos);
        cache.Edited(i, Finite(pos) ? 1 : 0);
        // Neither the in-handle's setter nor anything between drops the cache: both
        // setters see the same position.
        const Point2 at = cache.Position(i);
        const int inChanged = setTangentFrom(*this, at, i, in, FALSE, FALSE, Side::In);
        const int outChanged = setTangentFrom(*this, at, i, out, TRUE, FALSE, Side::Out);
        cache.Edited(i, 1);
        SendClientMessage(CURVE_MSG_TANGENT_CHANGED,
                          client_message::PackWParam(i, inChanged | outChanged));
        cache.Edited(-1, 0);
    }
}

// ---------------------------------------------------------------------------------------
// [SECTION] Whole points

void Curve::StoreKnot(int i, const CurveKnot& knot) {
    if (i < 0 || i >= count_ || !points_)
        return;
    if (theHold.Holding()) {
        ClosePositionRecord(*this);
        theHold.Put(new DeformPtChange(this, i, points_[i], knot));
    }
    auto lock = LockPointTable();
    points_[i] = knot;
    InvalidateCache();
}

// ---------------------------------------------------------------------------------------
// [SECTION] SetKnot

namespace {

// A tangent set without constraint checks: recorded and stored as given.
void storeTangent(Curve& c, int i, const Point2& tan, Side side) {
    CurveKnot* k = c.Knots();
    DeformPtPosChange* rec = PositionRecord(c);
    auto lock = c.LockPointTable();
    if (side == Side::In) {
        if (rec)
            rec->SetAfterInTan(i, tan);
        k[i].inTan = tan;
    } else {
        if (rec)
            rec->SetAfterOutTan(i, tan);
        k[i].outTan = tan;
    }
    c.InvalidateCache();
}

bool finiteKnot(const CurveKnot& k) { return Finite(k.pos) && Finite(k.inTan) && Finite(k.outTan); }

} // namespace

// A knot with a non-finite coordinate is refused whole: the curve keeps its point.
//
// With checks, a knot flagged KNOT_FREE_END_X skips ClampKnotPosition (which would hold an
// end point at its x) but still may not pass its neighbour (ClampFreeEndPosition).
//
// The flag word is stored whole, except KNOT_SELECTED, which goes through the selection
// operation so that the selection change has its own record and message. The lock bits
// do not take part in the type rule, so replacing them together with the rest of the
// flags gives what replacing them first would.
void Curve::SetKnot(TimeValue t, int i, const CurveKnot& knot, BOOL checkConstraints, BOOL notify) {
    if (i < 0 || i >= count_ || !points_ || !finiteKnot(knot))
        return;

    Point2 pos = knot.pos;
    if (checkConstraints) {
        if (!(knot.flags & KNOT_FREE_END_X))
            ClampKnotPosition(t, i, pos);
        else
            ClampFreeEndPosition(*this, t, i, pos);
    }
    StorePosition(*this, t, i, pos);
    if (notify)
        SendClientMessage(CURVE_MSG_POINT_CHANGED, client_message::PackWParam(i));

    const uint32_t old = points_[i].flags;
    const int type = int(knot.flags & KNOT_TYPE_MASK);
    if (type != int(old & KNOT_TYPE_MASK))
        ChangeKnotType(t, i, type, KNOT_TYPE_CHANGE_FROM_MENU);
    const uint32_t flags = (knot.flags & ~uint32_t(KNOT_SELECTED)) | (old & KNOT_SELECTED);
    if (points_[i].flags != flags) {
        CurveKnot k = points_[i];
        k.flags = flags;
        StoreKnot(i, k);
    }
    if ((old ^ knot.flags) & KNOT_SELECTED) {
        BitArray bit(count_);
        bit.Set(i);
        SetSelectionEx(bit, (knot.flags & KNOT_SELECTED) ? CURVE_SELECT_ADD : CURVE_SELECT_REMOVE,
                       notify);
    }

    if (Different(knot.inTan, points_[i].inTan)) {
        if (checkConstraints)
            setHandleConstrained(*this, t, i, kInHandle, knot.inTan, false);
        else
            storeTangent(*this, i, knot.inTan, Side::In);
        if (notify)
            SendClientMessage(CURVE_MSG_TANGENT_CHANGED,
                              client_message::PackWParam(i, client_message::kInTangentChanged));
    }
    // The out-tangent message carries no change bit, unlike the in-tangent's above and
    // unlike SetOutHandle's: clients read a zero high word as "either tangent changed".
    if (Different(knot.outTan, points_[i].outTan)) {
        if (checkConstraints)
            setHandleConstrained(*this, t, i, kOutHandle, knot.outTan, false);
        else
            storeTangent(*this, i, knot.outTan, Side::Out);
        if (notify)
            SendClientMessage(CURVE_MSG_TANGENT_CHANGED, client_message::PackWParam(i));
    }
    InvalidateCache();
}
