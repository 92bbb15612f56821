// Pixels of a curve's cached positions under a screen mapping: what drawing and hit
// testing both compute, so that both see exactly the same pixels. Internal to curve/.
#pragma once

#include "curve/curve_eval_cache.h"
#include "curve/curve_screen.h"

namespace curve_pixels {

using curve_eval::CachedKnot;
using curve_eval::CacheState;

/// Pixels per segment: its start and the ends of its ten pieces.
constexpr int kSegmentPixels = kCurvePiecesPerSegment + 1;

inline IPoint2 Position(const CurveScreen& s, const CachedKnot& k) { return s.Pixel(k.px, k.py); }
/// The handle markers of record i sit where the cached-point queries put the handles
/// (CacheState::InHandle), so that what is drawn and hit is what a drag moves.
inline IPoint2 InHandle(const CurveScreen& s, const CacheState& c, int i) {
    const Point2 h = c.InHandle(i);
    return s.Pixel(h.x, h.y);
}
inline IPoint2 OutHandle(const CurveScreen& s, const CacheState& c, int i) {
    const Point2 h = c.OutHandle(i);
    return s.Pixel(h.x, h.y);
}

/// The pixels of segment i (record i to record (i + 1) mod count): out[0] is point i,
/// out[k] the segment's point at u = k * 0.1 for k = 1 .. 10.
inline void SegmentPixels(const CurveScreen& s, const CacheState& c, int i,
                          IPoint2 (&out)[kSegmentPixels]) {
    const CachedKnot& a = c.knots[i];
    const CachedKnot& b = c.knots[(i + 1) % c.count];
    out[0] = Position(s, a);
    for (int k = 1; k <= kCurvePiecesPerSegment; ++k) {
        const float u = CurvePieceParameter(k);
        out[k] = s.Pixel(CurveSegmentCoord(a.px, a.outX, b.inX, b.px, u),
                         CurveSegmentCoord(a.py, a.outY, b.inY, b.py, u));
    }
}

/// The visible span of the cached positions (VisibleCurveSpan over the records' x).
inline CurveSpan Span(const CurveScreen& s, const CacheState& c, bool cyclic, Point2 xRange) {
    const CachedKnot* k = c.knots.get();
    return VisibleCurveSpan(c.count, cyclic, s, xRange, [k](int i) { return k[i].px; });
}

} // namespace curve_pixels
