/// @file
/// CurveKnot: one point of a curve, and the bits of its flag word.
#pragma once

#include "host/geom.h"

#include <cstdint>

/// The point has Bezier tangents.
#define KNOT_BEZIER 0x1
/// The point is a corner: its tangents are not kept in line.
#define KNOT_CORNER 0x2
/// Lock bit carried by SetKnot: the point's x is locked.
#define KNOT_LOCK_X 0x4
/// Lock bit carried by SetKnot: the point's y is locked.
#define KNOT_LOCK_Y 0x8
/// The point is selected. A curve's selection is exactly these bits.
#define KNOT_SELECTED 0x10
/// The point is the first or the last of the curve.
#define KNOT_ENDPOINT 0x100
/// An end point that may nevertheless move in x.
#define KNOT_FREE_END_X 0x200

/// @name Point types
/// The point type is `flags & KNOT_TYPE_MASK`; the editor's point menu shows it.
/// @{
#define KNOT_TYPE_MASK 0x3          ///< The bits of the point type.
#define KNOT_TYPE_BEZIER_SMOOTH 0x1 ///< Bezier handles kept in line.
#define KNOT_TYPE_CORNER 0x2        ///< No handles: the curve turns at the point.
#define KNOT_TYPE_BEZIER_CORNER 0x3 ///< Bezier handles that move independently.
/// @}

/// One point: position and tangent handles (relative to `pos`), 28 bytes with no padding.
/// The same layout is used in memory, in undo records and in the older saved format.
struct CurveKnot {
    Point2 pos;     ///< position in curve space
    Point2 inTan;   ///< in-tangent handle, relative to pos
    Point2 outTan;  ///< out-tangent handle, relative to pos
    uint32_t flags; ///< KNOT_... bits

    /// An all-zero point: at (0, 0), no handles, no flags.
    CurveKnot() : flags(0) {}
    /// A point at `p` with handles `in` and `out` (relative to `p`) and flags `f`.
    CurveKnot(const Point2& p, const Point2& in, const Point2& out, uint32_t f)
        : pos(p), inTan(in), outTan(out), flags(f) {}
};
static_assert(sizeof(CurveKnot) == 28, "CurveKnot is 28 bytes with no padding");
