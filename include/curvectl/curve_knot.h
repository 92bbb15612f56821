// CurveKnot: one point of a curve, and the bits of its flag word.
#pragma once

#include "host/geom.h"

#include <cstdint>

/// The point has Bezier tangents.
#define KNOT_BEZIER 0x1
/// The point is a corner: its tangents are not kept in line.
#define KNOT_CORNER 0x2
/// Lock bits carried by SetKnot (x and y).
#define KNOT_LOCK_X 0x4
#define KNOT_LOCK_Y 0x8
/// The point is selected. A curve's selection is exactly these bits.
#define KNOT_SELECTED 0x10
/// The point is the first or the last of the curve.
#define KNOT_ENDPOINT 0x100
/// An end point that may nevertheless move in x.
#define KNOT_FREE_END_X 0x200

/// Point types, `flags & 3`.
#define KNOT_TYPE_MASK 0x3
#define KNOT_TYPE_BEZIER_SMOOTH 0x1
#define KNOT_TYPE_CORNER 0x2
#define KNOT_TYPE_BEZIER_CORNER 0x3

/// One point: position and tangent handles (relative to `pos`), 28 bytes with no padding.
/// The same layout is used in memory, in undo records and in the older saved format.
struct CurveKnot {
    Point2 pos;     // position in curve space
    Point2 inTan;   // in-tangent handle, relative to pos
    Point2 outTan;  // out-tangent handle, relative to pos
    uint32_t flags; // KNOT_... bits

    CurveKnot() : flags(0) {}
    CurveKnot(const Point2& p, const Point2& in, const Point2& out, uint32_t f)
        : pos(p), inTan(in), outTan(out), flags(f) {}
};
static_assert(sizeof(CurveKnot) == 28, "CurveKnot is 28 bytes with no padding");
