// Helpers shared by the point-editing files of Curve (curve_edit.cpp, curve_knot_type.cpp,
// curve_select.cpp, curve_insert_delete.cpp) and its loader (curve_io.cpp). Not part of the
// curve's interface.
//
// Undo records of one hold. A DeformPtPosChange gathers every position and tangent change
// of a hold into one record whose "after" arrays are rewritten as the hold goes on, and
// its undo and redo rewrite the whole table. That is exact only while no record that
// rewrites whole points or the table itself (DeformPtChange, DeformInsertRestore,
// DeformDeleteRestore) lies between the record's creation and a later write into it:
// redo would replay the later write first and the whole-point record over it. So every
// operation that puts one of those records first closes the open position record
// (ClosePositionRecord), and the next position change opens a fresh one. The records of
// a hold then cover consecutive stretches of it, and undo (last to first) and redo (first
// to last) replay them exactly. A hold that only moves points keeps one position record,
// as the host expects.
#pragma once

#include "curve/curve.h"
#include "curve/move_limits.h"

namespace curve_edit {

/// Limits of an unconstrained move: [-kUnbounded, +kUnbounded].
using move_limits::kUnbounded;

/// Handle selector bits (in operations and hit results alike).
constexpr int kInHandle = 0x100;
constexpr int kOutHandle = 0x200;
/// DragHandle: break the tangent (a Bezier-Smooth point becomes Bezier-Corner) first.
constexpr int kBreakTangent = 0x2;

/// Whether two positions or tangents differ: the length of their difference, computed
/// in single precision, exceeds 0.0001 (compared in double precision).
bool Different(const Point2& a, const Point2& b);

/// Both coordinates are finite. Editing operations refuse non-finite input: the curve
/// keeps its points rather than carrying a NaN into every later evaluation.
bool Finite(const Point2& p);

/// The owner's y confinement: control flag CC_CONSTRAIN_Y and the y range. A curve
/// without an owner is not confined.
struct YConfinement {
    bool on = false;  // points and handles must stay inside [low, high]
    float low = 0.0f; // the control's y range
    float high = 0.0f;
};
YConfinement YConfinementOf(const Curve& c);

/// The curve's open position record for this hold, opened (and put) on first use; null
/// when the hold is not holding.
DeformPtPosChange* PositionRecord(Curve& c);

/// Ends the curve's open position record early (see the note at the top).
void ClosePositionRecord(Curve& c);

/// Writes the position of point i and records it: through the point's controller at t
/// when it is animated (the controller records its own change), else into the table and
/// the hold's position record. Drops the evaluation cache. Sends nothing. False when i is
/// out of range.
bool StorePosition(Curve& c, TimeValue t, int i, const Point2& pos);

/// The x range of point i against its neighbours alone, without the pinning of the
/// first and last points: what a free end point (KNOT_FREE_END_X) may travel.
void NeighbourMoveRange(Curve& c, TimeValue t, int i, float& lo, float& hi);

/// A neighbour of point i. On a cyclic curve the first and last points are neighbours
/// across the wrap; there the neighbour usually lies on the "wrong" side in x (the left
/// neighbour of point 0 is the last point, far to the right), and the roles of left and
/// right are exchanged for it.
struct Neighbour {
    int index = -1;      // -1: no neighbour on this side
    bool across = false; // across the wrap and on the other side in x
};
Neighbour LeftNeighbour(Curve& c, TimeValue t, int i);
Neighbour RightNeighbour(Curve& c, TimeValue t, int i);

/// Moves the absolute handle h back along the line from p until its x equals limitX, when
/// it reaches past limitX (the x of the neighbour on its side: to the right of p when
/// `limitOnRight`). When p itself stands at or past the limit, the handle collapses onto p.
Point2 ShortenToX(const Point2& p, const Point2& h, float limitX, bool limitOnRight);

/// Moves h back along the line from p into [low, high] in y. When p itself lies outside,
/// the handle collapses onto p rather than flipping to the other side.
Point2 ShortenToY(const Point2& p, const Point2& h, float low, float high);

/// The position check of a free end point (KNOT_FREE_END_X), which ClampKnotPosition
/// would hold at its x: it may travel in x up to its one neighbour, and, under
/// CC_CONSTRAIN_Y, in y as far as keeps it and its handles inside the y range. A free end
/// point that may not fold the table is what a user moving it expects.
void ClampFreeEndPosition(Curve& c, TimeValue t, int i, Point2& pos);

/// Number of points with KNOT_SELECTED.
int SelectedCount(Curve& c);

} // namespace curve_edit
