// Point types of a curve: ChangeKnotType and the tangents each type change derives.
//
// Types: 2 Corner, 1 Bezier-Smooth, 3 Bezier-Corner (flags & 3).
#include "curve/curve.h"
#include "curve/curve_edit_detail.h"

#include <cmath>
#include <cstring>

using namespace curve_edit;

namespace {

bool isZero(const Point2& tan) { return !Different(tan, Point2()); }

bool sameKnot(const CurveKnot& a, const CurveKnot& b) {
    return std::memcmp(&a, &b, sizeof(CurveKnot)) == 0;
}

/// A tangent of point p kept inside its segment (the neighbour's x, when there is one) and,
/// under CC_CONSTRAIN_Y, inside the y range, shortened along its own line. A tangent that
/// needs no shortening is returned as it is, bit for bit.
Point2 keepInside(const Point2& p, const Point2& tan, const Neighbour& n, const Point2& np,
                  bool onRight, const YConfinement& y) {
    const Point2 h = p + tan;
    Point2 s = n.index >= 0 && !n.across ? ShortenToX(p, h, np.x, onRight) : h;
    if (y.on)
        s = ShortenToY(p, s, y.low, y.high);
    return s == h ? tan : s - p;
}

/// Tangents of a point that becomes Bezier-Smooth: collinear, opposite, each inside its
/// segment (and inside the y range under CC_CONSTRAIN_Y).
///
/// A point that already has both handles keeps their lengths and turns them to the mean
/// of their directions, so a Bezier-Corner point straightens the least it can (handles
/// already in line stay exactly as they are). Otherwise (a Corner point, or handles that
/// point the wrong way) the direction is that of the line through the two neighbours, as
/// in a Catmull-Rom spline, and each handle reaches a third of the way to its neighbour
/// in x.
void smoothTangents(Curve& c, TimeValue t, int i, CurveKnot& k) {
    const Point2 p = c.CachedPosition(t, i);
    const Neighbour l = LeftNeighbour(c, t, i), r = RightNeighbour(c, t, i);
    const bool hasL = l.index >= 0 && !l.across, hasR = r.index >= 0 && !r.across;
    const Point2 lp = hasL ? c.CachedPosition(t, l.index) : p;
    const Point2 rp = hasR ? c.CachedPosition(t, r.index) : p;

    Point2 d;
    if (!isZero(k.inTan) && !isZero(k.outTan))
        d = Normalize(Normalize(k.outTan) - Normalize(k.inTan));
    if (!(d.x > 0.0f)) {
        const Point2 chord = rp - lp;
        d = chord.x > 0.0f ? Normalize(Point2(1.0f, chord.y / chord.x)) : Point2(1.0f, 0.0f);
    }
    // A handle already along the direction keeps its exact value.
    auto along = [&](const Point2& tan, const Point2& dir, float dxToNeighbour) {
        if (isZero(tan))
            return dir * (std::fabs(dxToNeighbour) / 3.0f / d.x);
        if (!Different(Normalize(tan), dir))
            return tan;
        return dir * Length(tan);
    };
    const YConfinement y = YConfinementOf(c);
    k.inTan = keepInside(p, along(k.inTan, -d, p.x - lp.x), l, lp, false, y);
    k.outTan = keepInside(p, along(k.outTan, d, rp.x - p.x), r, rp, true, y);
}

/// Tangents of a point that becomes Bezier-Corner from Corner: a handle that has no
/// length reaches a third of the way to its neighbour along the chord, so the user gets
/// handles to drag and a segment between two such points stays the straight line it was.
/// Handles that have a length are kept; a handle without a neighbour stays as it is.
void cornerHandles(Curve& c, TimeValue t, int i, CurveKnot& k) {
    const Point2 p = c.CachedPosition(t, i);
    const Neighbour l = LeftNeighbour(c, t, i), r = RightNeighbour(c, t, i);
    if (l.index >= 0 && isZero(k.inTan))
        k.inTan = (c.CachedPosition(t, l.index) - p) / 3.0f;
    if (r.index >= 0 && isZero(k.outTan))
        k.outTan = (c.CachedPosition(t, r.index) - p) / 3.0f;
}

} // namespace

// From the menu (mode 0):
//   - Corner: both tangents become zero; the curve has a sharp point there.
//   - Bezier-Smooth: see smoothTangents. End points may not be Bezier-Smooth: the request
//     leaves them unchanged.
//   - Bezier-Corner: from Bezier-Smooth only the coupling of the handles is released
//     (tangents kept); from Corner see cornerHandles.
//   A point that already has the type is left as it is.
// Refit (mode 3, Rotate): the point has just become an end point of a refitted curve and
// the caller sets its handles itself; a Bezier-Smooth type turns into Bezier-Corner, any
// other type is stored as given, and the tangents are kept.
// The change is one DeformPtChange (StoreKnot); no client message is sent.
void Curve::ChangeKnotType(TimeValue t, int i, int type, int mode) {
    if (i < 0 || i >= count_ || !points_)
        return;
    if (type < KNOT_TYPE_BEZIER_SMOOTH || type > KNOT_TYPE_BEZIER_CORNER)
        return;
    CurveKnot k = points_[i];
    const int old = int(k.flags & KNOT_TYPE_MASK);
    if (mode == KNOT_TYPE_CHANGE_REFIT) {
        if (type == KNOT_TYPE_BEZIER_SMOOTH)
            type = KNOT_TYPE_BEZIER_CORNER;
    } else {
        if (type == old)
            return;
        if (type == KNOT_TYPE_BEZIER_SMOOTH && (k.flags & KNOT_ENDPOINT))
            return;
        if (type == KNOT_TYPE_CORNER) {
            k.inTan = k.outTan = Point2();
        } else if (type == KNOT_TYPE_BEZIER_SMOOTH) {
            smoothTangents(*this, t, i, k);
        } else if (old != KNOT_TYPE_BEZIER_SMOOTH) {
            cornerHandles(*this, t, i, k);
        }
    }
    k.flags = (k.flags & ~uint32_t(KNOT_TYPE_MASK)) | uint32_t(type);
    if (!sameKnot(k, points_[i]))
        StoreKnot(i, k);
}
