// Curve::HitTestCurve: which segments, points and tangent handles of a curve lie in a
// screen box. Portable (no drawing), so the native and sanitizer builds test it too.
#include "control/curve_control.h"
#include "curve/curve.h"
#include "curve/curve_pixels.h"

#include <algorithm>
#include <cstdint>
#include <utility>

using curve_eval::CachedKnot;
using curve_eval::CacheState;
using curve_eval::EvalCache;

bool CurvePieceHitsBox(IPoint2 a, IPoint2 b, const Box2& box) {
    if (a.x > b.x)
        std::swap(a, b);
    const int minY = std::min(a.y, b.y);
    const int maxY = std::max(a.y, b.y);
    if (b.x < box.left || a.x > box.right || maxY < box.top || minY > box.bottom)
        return false;
    // In double: pixel differences of far-away pieces do not fit an int.
    const double ax = a.x, ay = a.y, dx = double(b.x) - ax, dy = double(b.y) - ay;
    const auto withinRows = [&](double y) { return y >= box.top && y <= box.bottom; };
    const auto withinColumns = [&](double x) { return x >= box.left && x <= box.right; };
    if (dx != 0.0) {
        const double slope = dy / dx;
        if (withinRows(ay + (box.left - ax) * slope) || withinRows(ay + (box.right - ax) * slope))
            return true;
    }
    // Vertical, or steep enough to pass between the left and right edges' rows.
    if (dy != 0.0) {
        const double inverse = dx / dy;
        if (withinColumns(ax + (box.top - ay) * inverse) ||
            withinColumns(ax + (box.bottom - ay) * inverse))
            return true;
    }
    return false;
}

namespace {

/// Whether segment i certainly misses `box`: a Bezier segment lies within the hull of its
/// four control points, so no piece can leave the bounds of their pixels, widened by one
/// pixel for the rounding of the evaluation. Skipping such segments changes no result.
/// Only for the plain mapping: a y transform may bend the hull.
bool segmentClearOf(const CurveScreen& screen, const CacheState& s, int i, const Box2& box) {
    if (screen.transform)
        return false;
    const CachedKnot& a = s.knots[i];
    const CachedKnot& b = s.knots[(i + 1) % s.count];
    const IPoint2 p[4] = {screen.Pixel(a.px, a.py), screen.Pixel(a.outX, a.outY),
                          screen.Pixel(b.inX, b.inY), screen.Pixel(b.px, b.py)};
    int64_t left = p[0].x, right = p[0].x, top = p[0].y, bottom = p[0].y;
    for (const IPoint2& q : p) {
        left = std::min<int64_t>(left, q.x);
        right = std::max<int64_t>(right, q.x);
        top = std::min<int64_t>(top, q.y);
        bottom = std::max<int64_t>(bottom, q.y);
    }
    return right + 1 < box.left || left - 1 > box.right || bottom + 1 < box.top ||
           top - 1 > box.bottom;
}

} // namespace

int Curve::HitTestCurve(TimeValue t, const CurveScreen& screen, const Box2& box, int request,
                        Tab<CurveHit>& hits) {
    if (count_ <= 0)
        return 0;
    EvalCache::Reader reader(evalCache_);
    // The cache test of every query (acquireState): unlocked first, then the locked test
    // and rebuild.
    reader.Count(1);
    const CacheState* s = reader.Current();
    if (!(s && s->HoldsAt(t)))
        s = rebuildState(reader, t);
    if (!s)
        return 0;
    // The cache is built from the point table, so both have count_ entries; take the
    // smaller all the same so that the flags read below always exist.
    const int n = std::min(s->count, count_);
    if (n <= 0)
        return 0;
    const bool cyclic = IsCyclic();
    const Point2 xRange = owner_ ? owner_->GetXRange() : Point2(0.0f, 1.0f);
    const CurveSpan span = curve_pixels::Span(screen, *s, cyclic, xRange);
    if (span.Empty())
        return 0; // the window lies wholly outside the x range: nothing can be hit
    const int last = std::min(span.last, n - 1);
    const bool stopAtFirst = (request & (CURVE_HIT_STOP_FIRST | CURVE_HIT_STOP_IN_CURVE)) != 0;
    const auto append = [&hits](int index, int part) {
        const CurveHit hit{index, part};
        hits.Append(1, &hit);
    };
    int result = 0;

    // The curve before the points: a click on a point lying on the curve, with stop at
    // first, reports the curve.
    if (request & CURVE_HIT_CURVE) {
        IPoint2 px[curve_pixels::kSegmentPixels];
        for (int i = span.first; i < last; ++i) {
            if (segmentClearOf(screen, *s, i, box))
                continue;
            curve_pixels::SegmentPixels(screen, *s, i, px);
            for (int k = 1; k <= kCurvePiecesPerSegment; ++k) {
                if (!CurvePieceHitsBox(px[k - 1], px[k], box))
                    continue;
                append(i, KNOT_PART_POINT);
                result |= CURVE_HIT_RESULT_CURVE;
                if (stopAtFirst)
                    return CURVE_HIT_RESULT_CURVE;
                break; // one hit per segment
            }
        }
    }

    if (request & CURVE_HIT_POINTS) {
        for (int i = span.first; i <= last; ++i) {
            const bool selected = (points_[i].flags & KNOT_SELECTED) != 0;
            if (selected ? (request & CURVE_HIT_SKIP_SELECTED)
                         : (request & CURVE_HIT_SKIP_UNSELECTED))
                continue;
            if (!box.Contains(curve_pixels::Position(screen, s->knots[i])))
                continue;
            append(i, KNOT_PART_POINT);
            result |= CURVE_HIT_RESULT_POINT;
            if (stopAtFirst)
                return CURVE_HIT_RESULT_POINT;
        }
    }

    // Handles of every selected Bezier point, not only the visible ones: a handle may
    // reach into the window from a point outside it.
    if (request & CURVE_HIT_HANDLES) {
        for (int i = 0; i < n; ++i) {
            const uint32_t flags = points_[i].flags;
            if (!(flags & KNOT_BEZIER) || !(flags & KNOT_SELECTED))
                continue;
            if ((cyclic || i > 0) && box.Contains(curve_pixels::InHandle(screen, *s, i))) {
                append(i, KNOT_PART_IN_HANDLE);
                result |= CURVE_HIT_RESULT_HANDLE;
                if (stopAtFirst)
                    return CURVE_HIT_RESULT_HANDLE;
            }
            if ((cyclic || i < n - 1) && box.Contains(curve_pixels::OutHandle(screen, *s, i))) {
                append(i, KNOT_PART_OUT_HANDLE);
                result |= CURVE_HIT_RESULT_HANDLE;
                if (stopAtFirst)
                    return CURVE_HIT_RESULT_HANDLE;
            }
        }
    }
    return result;
}
