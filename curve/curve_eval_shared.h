// The pieces of ValueAt that batch evaluation (curve_batch.cpp) and the lookup measurement
// (curve_lookup_accuracy.cpp) use as they are, so that both follow ValueAt wherever it
// goes: the continuation beyond the range ends, the exact solve of one x, a segment's
// control points, and the table's spacing, filling and interpolation. Defined in
// curve_eval.cpp beside the code ValueAt runs.
#pragma once

#include "curve/curve_eval_cache.h"
#include "host/geom.h"

namespace curve_eval {

/// The curve's continuation beyond one end of the x range: the end value held (end
/// behaviour 1), or the straight line y = slope * (x - x0) + y0 through the end point and
/// its handle (or its neighbour).
struct EndLine {
    float hold;  // the end point's y
    float slope; // the line's slope, as ValueAt divides it
    float x0;    // a point of the line
    float y0;
    float At(float x, bool holdEnds) const { return holdEnds ? hold : slope * (x - x0) + y0; }
};

/// Beyond x high, continuing through the last point; the state has two or more points.
EndLine RightEnd(const CacheState& s);
/// Below x low, continuing through point 0; the state has two or more points.
EndLine LeftEnd(const CacheState& s);

/// ValueAt's answer for an x inside the range without the table: the first segment that
/// holds x, solved by the 20 halvings, or 0 when none holds it (`solved` false then).
float ExactValue(const CacheState& s, float x, bool& solved);

/// Segment i's control points (point i to point (i + 1) mod count) in the order
/// x0 x1 x2 x3 y0 y1 y2 y3, as the solve uses them.
void SegmentCoefficients(const CacheState& s, int i, float out[8]);

/// The largest table that is built: 16M intervals (64 MiB). A client may ask for any size,
/// and GetLookupSize answers it, but a table of billions of entries would take the memory
/// and the minutes of a hung host; beyond this size values come from the exact solve.
constexpr int kMaxBuiltLookupSize = 1 << 24;

/// The spacing of a table of `size` intervals over the x range `xr`.
void LookupSpacing(Point2 xr, int size, float& step, float& indexScale);

/// Fills the size + 1 entries of `v` as the curve's table is filled: entry e at the x
/// reached by adding `step` e times to x low, from the first segment that holds it; an
/// entry no segment holds keeps what `v` held. Returns the number of segment solves.
long FillLookupTable(const CacheState& s, Point2 xr, int size, float step, float* v);

/// The table's value at index position f (0 <= f < size) for x, as ValueAt interpolates.
float LookupValue(const float* v, float f, float x, float step);

} // namespace curve_eval
