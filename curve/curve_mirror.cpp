// Curve: the whole-curve operations of the editor's mirror and refit commands.
//
// Both change every point through StoreKnot, so each point change is one DeformPtChange
// in the caller's hold, and both drop every point controller first (a reference change
// that the hold records too): the result is a plain, unanimated curve, and one undo puts
// back points and controllers alike.
//
// A curve without an owner has no x range: it keeps its points under a horizontal mirror
// and a rotation, and so does a rotation under an empty x range, which has nothing to fit
// into (the controllers are still dropped, as for every call).
#include "curve/curve.h"

#include "control/curve_control.h"
#include "curve/curve_undo.h"
#include "host/core_interface.h"
#include "host/hold.h"

namespace {

/// The reflection of p about X / 2. Travel reverses, so the handles swap roles.
CurveKnot mirrorX(const CurveKnot& p, float X) {
    return CurveKnot(Point2(X - p.pos.x, p.pos.y), Point2(-p.outTan.x, p.outTan.y),
                     Point2(-p.inTan.x, p.inTan.y), p.flags);
}

/// Lowest and highest value of one coordinate over the points. Starts from point 0; a
/// value below the lowest replaces it, otherwise one above the highest replaces that.
void coordinateBounds(const CurveKnot* k, int n, int axis, float& lo, float& hi) {
    lo = hi = k[0].pos[axis];
    for (int i = 1; i < n; ++i) {
        const float v = k[i].pos[axis];
        if (v < lo)
            lo = v;
        else if (v > hi)
            hi = v;
    }
}

/// The snapping rule of a rotated curve's fit into an x range from 0 to 100: the lowest
/// x goes to exactly 0 and the highest to exactly 100, anything within 0.01 of an end
/// goes to that end, the rest scales by s. `end` tells whether v landed on an end.
float snapFitted(float v, float lo, float hi, float s, bool& end) {
    end = true;
    if (v == lo)
        return 0.0f;
    if (v == hi)
        return 100.0f;
    const float r = (v - lo) * s;
    if (r < 0.01f)
        return 0.0f;
    if (r > 99.99f)
        return 100.0f;
    end = false;
    return r;
}

/// A mirrored or rotated curve is no longer animated. Recorded by the hold like any
/// reference change, so undo brings the controllers back. The controller table changes
/// under the point-table lock, so that no evaluation rebuilds from a controller that is
/// going away.
void dropControllers(Curve& c) {
    auto lock = c.LockPointTable();
    for (int i = 0; i < c.PointCount(); ++i)
        if (c.Controller(i))
            c.DeleteReference(i);
    c.InvalidateCache();
}

/// The common tail: drop the evaluation cache and tell the owner's dependents. No redraw:
/// the editor command that called repaints once for all its curves.
void finishWholeCurveChange(Curve& c) {
    c.InvalidateCache();
    if (!c.NotifySuspended() && c.Owner())
        c.Owner()->NotifyDependents(FOREVER, PART_TOPO | PART_GEOM, REFMSG_CHANGE, NOTIFY_ALL,
                                    TRUE);
}

} // namespace

void Curve::Mirror(int axis) {
    if (count_ == 0 || !points_)
        return;
    dropControllers(*this);

    if (axis == 0 && owner_) {
        // Reflects about X / 2, not about the middle of the range: this matches the
        // control's range only when it starts at 0, which is the required behaviour.
        const float X = owner_->GetXRange().y;
        for (int i = 0, j = count_ - 1; i <= j; ++i, --j) {
            const CurveKnot a = points_[i];
            const CurveKnot b = points_[j];
            if (i != j) {
                StoreKnot(i, mirrorX(b, X));
                StoreKnot(j, mirrorX(a, X));
            } else {
                StoreKnot(i, mirrorX(a, X));
            }
        }
    } else if (axis == 1) {
        float lo, hi;
        coordinateBounds(points_, count_, 1, lo, hi);
        const float m = (hi + lo) * 0.5f;
        for (int i = 0; i < count_; ++i) {
            const CurveKnot& p = points_[i];
            StoreKnot(i,
                      CurveKnot(Point2(p.pos.x, m - (p.pos.y - m)), Point2(p.inTan.x, -p.inTan.y),
                                Point2(p.outTan.x, -p.outTan.y), p.flags));
        }
    }

    finishWholeCurveChange(*this);
}

void Curve::Rotate(int clockwise, int tag) {
    if (count_ == 0 || !points_)
        return;
    dropControllers(*this);

    const Point2 range = owner_ ? owner_->GetXRange() : Point2();
    const float width = range.y - range.x;
    // Without an owner, or with an empty x range, there is nothing to fit into.
    if (!owner_ || !(width > 0.0f)) {
        finishWholeCurveChange(*this);
        return;
    }

    // Into fitted units, so that the quarter turn keeps the curve's proportions.
    const float f = fittedWidth_ / width;
    for (int i = 0; i < count_; ++i) {
        CurveKnot k = points_[i];
        k.pos.x *= f;
        k.inTan.x *= f;
        k.outTan.x *= f;
        StoreKnot(i, k);
    }

    float loX, hiX, loY, hiY;
    coordinateBounds(points_, count_, 0, loX, hiX);
    coordinateBounds(points_, count_, 1, loY, hiY);
    const Point3 c((loX + hiX) * 0.5f, (loY + hiY) * 0.5f, 0.0f);

    Matrix3 turn;
    turn.IdentityMatrix();
    turn.RotateZ(clockwise ? -1.5707964f : 1.5707964f);
    auto turned = [&turn](const Point2& v) {
        const Point3 r = Point3(v.x, v.y, 0.0f) * turn;
        return Point2(r.x, r.y);
    };
    for (int i = 0; i < count_; ++i) {
        const CurveKnot& p = points_[i];
        const Point3 r = Point3(p.pos.x - c.x, p.pos.y - c.y, 0.0f) * turn;
        StoreKnot(
            i, CurveKnot(Point2(r.x + c.x, r.y + c.y), turned(p.inTan), turned(p.outTan), p.flags));
    }

    // The ends are found again below, from the new layout.
    float lo, hi;
    coordinateBounds(points_, count_, 0, lo, hi);
    for (int i = 0; i < count_; ++i) {
        if (!(points_[i].flags & KNOT_ENDPOINT))
            continue;
        CurveKnot k = points_[i];
        k.flags &= ~uint32_t(KNOT_ENDPOINT);
        StoreKnot(i, k);
    }

    if (theHold.Holding())
        theHold.Put(new DefFitRangeRestore(this, tag, fittedWidth_, hi - lo));
    fittedWidth_ = hi - lo;

    if (fittedWidth_ > 0.0f) {
        // The rotated curve is laid out for an x range from 0 to 100 whatever the
        // control's range: the fixed numbers of snapFitted are part of the behaviour.
        const float s = width / (hi - lo);
        const TimeValue now = GetCOREInterface()->GetTime();
        for (int i = 0; i < count_; ++i) {
            CurveKnot k = points_[i];
            Point2 in = k.pos + k.inTan;
            Point2 out = k.pos + k.outTan;
            bool end = false, handleEnd = false;
            const float x = snapFitted(k.pos.x, lo, hi, s, end);
            if (end) {
                // The refit type rule changes only the stored point type (a Bezier-Smooth
                // end becomes Bezier-Corner); the handles are set here below. Applying it
                // before the one store of the point gives the same point as after.
                if ((k.flags & KNOT_TYPE_MASK) != KNOT_TYPE_CORNER) {
                    ChangeKnotType(now, i, int(k.flags & KNOT_TYPE_MASK), KNOT_TYPE_CHANGE_REFIT);
                    k.flags = points_[i].flags;
                }
                k.flags |= KNOT_ENDPOINT;
            }
            k.pos.x = x;
            in.x = snapFitted(in.x, lo, hi, s, handleEnd);
            out.x = snapFitted(out.x, lo, hi, s, handleEnd);
            k.inTan = in - k.pos;
            k.outTan = out - k.pos;
            StoreKnot(i, k);
        }
    }

    finishWholeCurveChange(*this);
}
