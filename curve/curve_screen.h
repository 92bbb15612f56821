// How a curve meets the pixels of the graph: the screen mapping the graph hands to every
// curve it draws or hit-tests, the hit-test request and result words, and the small pure
// geometry both share (visible span, the ten pieces of a segment, piece-against-box).
//
// Screen mapping, with h = |bottom - top| + 1 of the rectangle handed in (the graph's
// usable area) and integer halving:
//     column = trunc(xScale * x) - xScroll
//     row    = h / 2 - trunc(transform(y) * yScale) - yScroll + 4
// The constant 4 belongs to the mapping: drawing and hit testing apply it alike.
//
// Portable: nothing here draws. Drawing is Curve::DrawCurve (curve_draw_win32.cpp); hit
// testing is Curve::HitTestCurve (curve_hit_test.cpp).
#pragma once

#include "host/geom.h"
#include "host/win_types.h"

#include <climits>
#include <cstdint>
#include <cstdlib>

/// @name Hit-test request bits (one request word per call)
/// @{
#define CURVE_HIT_SKIP_UNSELECTED 0x1 // do not test unselected points
#define CURVE_HIT_SKIP_SELECTED 0x2   // do not test selected points
#define CURVE_HIT_STOP_FIRST 0x4      // stop at the first hit (also ends the graph's search)
#define CURVE_HIT_HANDLES 0x8         // test the handles of selected Bezier points
#define CURVE_HIT_POINTS 0x10         // test the points
#define CURVE_HIT_CURVE 0x20          // test the curve's segments
#define CURVE_HIT_STOP_IN_CURVE 0x40  // stop at the first hit within one curve
#define CURVE_HIT_CLICK 0x400         // the box is 4 pixels around a mouse point
#define CURVE_HIT_REGION 0x800        // the box is a dragged region, 4 pixels wider
/// @}

/// @name Hit-test result bits
/// @{
#define CURVE_HIT_RESULT_POINT 0x1  // a point was hit
#define CURVE_HIT_RESULT_CURVE 0x2  // a segment was hit
#define CURVE_HIT_RESULT_HANDLE 0x4 // a tangent handle was hit
/// @}

/// @name Parts of a hit (the same selector words the point operations take)
/// @{
#define KNOT_PART_POINT 0x0 // the point itself, or a segment for a curve hit
#define KNOT_PART_IN_HANDLE 0x100
#define KNOT_PART_OUT_HANDLE 0x200
/// @}

/// Half the side of the click box, and how far a dragged region is widened.
constexpr int kCurveHitSlop = 4;
/// Straight pieces per drawn segment: fixed, whatever the zoom.
constexpr int kCurvePiecesPerSegment = 10;

/// One hit: a point (or segment, for a curve hit) index and its part.
struct CurveHit {
    int index; // point index, or segment index for KNOT_PART_POINT of a curve hit
    int part;  // KNOT_PART_...
};

/// float/double to int as the x86 truncating conversion does it: toward zero, and INT_MIN
/// for a NaN or a value outside int. Defined for every input, so extreme zooms and
/// not-a-number positions give far-away pixels instead of undefined behaviour.
inline int TruncToInt(double v) {
    if (!(v > -2147483649.0 && v < 2147483648.0))
        return INT_MIN;
    return int(v);
}

/// a - b with two's-complement wrap-around, as the machine subtracts.
inline int WrapSub(int a, int b) { return int(uint32_t(a) - uint32_t(b)); }
inline int WrapAdd(int a, int b) { return int(uint32_t(a) + uint32_t(b)); }

/// The editor's y transform: maps a curve y to the value displayed. The editor's own is
/// the identity.
class CurveYTransform {
public:
    virtual ~CurveYTransform() = default;
    virtual float Display(float y) const { return y; }
};

/// The screen mapping of one draw or hit test (see the formulas at the top).
struct CurveScreen {
    RECT rect{};                                // the graph's usable area
    float xScale = 1.0f;                        // pixels per x unit
    int xScroll = 0;                            // X0
    float yScale = 1.0f;                        // pixels per displayed y unit
    int yScroll = 0;                            // Y0
    const CurveYTransform* transform = nullptr; // null: identity

    int Height() const { return std::abs(rect.bottom - rect.top) + 1; }
    int Column(float x) const { return WrapSub(TruncToInt(xScale * x), xScroll); }
    int Row(float y) const {
        const float d = transform ? transform->Display(y) : y;
        return WrapAdd(WrapSub(WrapSub(Height() / 2, TruncToInt(d * yScale)), yScroll), 4);
    }
    IPoint2 Pixel(float x, float y) const { return IPoint2(Column(x), Row(y)); }
};

/// The points that can be on screen: first .. last inclusive.
struct CurveSpan {
    int first = 0;
    int last = -1;
    bool Empty() const { return last < first; }
};

/// The visible span of a curve of `n` points whose x positions `xAt(i)` answers, for the
/// control's x range (lo, hi):
///   xLeft = (left + xScroll) * (1 / xScale), xRight likewise, clamped into (lo, hi); a
///   window wholly outside the range shows nothing (an empty span).
///   Not cyclic: first = i - 1 for the smallest i >= 1 with x_i >= xLeft (0 when none),
///   last = i + 1 for the largest i <= n - 2 with x_i <= xRight (n - 1 when none).
///   Cyclic: 0 .. n - 1.
template <class XAt>
CurveSpan VisibleCurveSpan(int n, bool cyclic, const CurveScreen& s, Point2 xRange, XAt xAt) {
    CurveSpan span;
    if (n <= 0)
        return span;
    const float inv = 1.0f / s.xScale;
    float xLeft = float(WrapAdd(s.rect.left, s.xScroll)) * inv;
    float xRight = float(WrapAdd(s.rect.right, s.xScroll)) * inv;
    if (xLeft < xRange.x)
        xLeft = xRange.x;
    if (xRight > xRange.y)
        xRight = xRange.y;
    if (!(xLeft <= xRight))
        return span; // wholly outside the x range (or a NaN scale): nothing
    if (cyclic) {
        span.first = 0;
        span.last = n - 1;
        return span;
    }
    span.first = 0;
    for (int i = 1; i < n; ++i) {
        if (xAt(i) >= xLeft) {
            span.first = i - 1;
            break;
        }
    }
    span.last = n - 1;
    for (int i = n - 2; i >= 0; --i) {
        if (xAt(i) <= xRight) {
            span.last = i + 1;
            break;
        }
    }
    return span;
}

/// The point of a segment at parameter u, one coordinate, with v = 1 - u:
///   ((P0 v + 3u P1) v + 3u^2 P2) v + u^3 P3
/// the same formula, in the same order of operations, as Curve::SegmentPoint.
inline float CurveSegmentCoord(float p0, float p1, float p2, float p3, float u) {
    const float v = 1.0f - u;
    return ((p0 * v + 3.0f * u * p1) * v + 3.0f * u * u * p2) * v + u * u * u * p3;
}

/// The parameter of piece end k (1 .. 10) of a segment.
inline float CurvePieceParameter(int k) { return float(k) * 0.1f; }

/// The click box: kCurveHitSlop pixels on every side of `p` (edges inclusive).
inline Box2 CurveClickBox(IPoint2 p) {
    return Box2(p.x - kCurveHitSlop, p.y - kCurveHitSlop, p.x + kCurveHitSlop, p.y + kCurveHitSlop);
}

/// The box of a dragged region from `a` to `b`: normalised, then widened by kCurveHitSlop
/// on every side, so a drag in any direction covers what it shows.
inline Box2 CurveRegionBox(IPoint2 a, IPoint2 b) {
    Box2 box(a, b);
    box.Rectify();
    box.Inflate(kCurveHitSlop);
    return box;
}

/// Whether the piece a-b hits `box`: its bounding box overlaps the box, and the line
/// through it crosses the box. With the piece ordered by x: a piece that is not vertical
/// must have its y at the box's left edge, or else at its right edge, within the box's top
/// and bottom; failing that (a vertical or steep piece), its x at the box's top edge, or
/// else at its bottom edge, must lie within the box's left and right. Edges inclusive.
bool CurvePieceHitsBox(IPoint2 a, IPoint2 b, const Box2& box);
