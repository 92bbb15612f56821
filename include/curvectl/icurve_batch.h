/// @file
/// ICurveBatch: many values of a curve in one call, and lookup tables sized to an accuracy.
///
/// An extension of ICurve that a client asks the curve for:
///
///     auto* batch = static_cast<ICurveBatch*>(curve->GetInterface(I_CURVE_BATCH_INTERFACE));
///
/// Every curve of this module answers it; the pointer stays good as long as the curve, and
/// the client must not delete it. ICurve's own operations are unchanged by it.
#pragma once

#include "host/interval.h"
#include "host/win_types.h"

/// Interface id under which a curve answers GetInterface with its ICurveBatch.
#define I_CURVE_BATCH_INTERFACE 0x3C5E91B7

/// @name Results of ValuesAt and ValuesAtStrided
/// A refused call writes no value, leaves `valid` as it was and evaluates nothing.
/// @{
#define CURVE_BATCH_BAD_COUNT (-1)   ///< n is negative
#define CURVE_BATCH_NULL_BUFFER (-2) ///< xs or ys is null while n > 0
#define CURVE_BATCH_BAD_STRIDE (-3)  ///< a stride is zero or not a whole number of floats
/// @}

/// @name Results of SetLookupTolerance
/// @{
#define CURVE_LOOKUP_EXACT 0                ///< no table meets the tolerance: values are exact
#define CURVE_LOOKUP_BAD_TOLERANCE (-1)     ///< not a positive finite number; nothing changed
#define CURVE_LOOKUP_NO_MEMORY (-2)         ///< the measurement could not be made; nothing changed
#define CURVE_LOOKUP_LARGEST_MEASURED 65536 ///< the largest lookup size the search measures
/// @}

/// Batch evaluation and accuracy-sized lookup tables of one curve (see the file comment).
class ICurveBatch {
public:
    /// @name Batch evaluation
    /// ys[i] = ValueAt(t, xs[i], valid, useLookup) for i = 0 .. n - 1, bit for bit, for
    /// every x (inside, at the ends of and outside the x range, infinite, not a number),
    /// and `valid` narrowed exactly as those calls would narrow it. All n values come from
    /// one state of the curve: a call made while the user edits answers as the n single
    /// calls would have answered at one moment. Callable from any thread, like ValueAt.
    ///
    /// Returns n, or a negative CURVE_BATCH_... refusal. n == 0 returns 0 and touches
    /// nothing (the buffers may then be null).
    /// @{

    /// `xs` and `ys` hold n floats each. ys may be xs itself (in place); no other overlap.
    virtual int ValuesAt(TimeValue t, const float* xs, float* ys, int n, Interval& valid,
                         BOOL useLookup = TRUE) = 0;
    /// As ValuesAt, with value i read at byte offset i * xStride from xs and written at
    /// i * yStride from ys: one channel of interleaved data such as RGB(A) pixels. Each
    /// stride is a non-zero multiple of sizeof(float), and may be negative. ys may equal
    /// xs with yStride equal to xStride (in place); results that overlap each other or
    /// inputs other than their own are not defined (but never read or written outside the
    /// n places of each buffer).
    virtual int ValuesAtStrided(TimeValue t, const float* xs, int xStride, float* ys, int yStride,
                                int n, Interval& valid, BOOL useLookup = TRUE) = 0;
    /// @}

    /// @name Lookup accuracy
    /// The difference a lookup table makes is measured, not estimated: for every index
    /// interval of the table (the x values that interpolate between the same two entries)
    /// the difference between ValueAt with and without the table is evaluated at the
    /// interval's ends, at the curve's points inside it and at samples between, and its
    /// largest value is searched for between the samples. A curve with animated points is
    /// measured at each of its key times and half way between consecutive ones; a curve
    /// with fewer than two points, or a zero-width x range, has no difference to measure.
    /// User-interface thread only.
    /// @{

    /// Sets the lookup size (as ICurve::SetLookupSize) to the smallest size found whose
    /// worst difference is at most maxError: sizes are measured doubling from 1, then
    /// halving the gap, so the size chosen meets the tolerance and the size one below it
    /// does not (the difference does not always shrink as the size grows, so a smaller
    /// size far below may meet it too). Returns the size, or CURVE_LOOKUP_EXACT (0) when
    /// no size up to CURVE_LOOKUP_LARGEST_MEASURED meets it: the lookup size is then 0,
    /// with which ValueAt answers exact values. maxError must be a positive finite number;
    /// anything else is refused (CURVE_LOOKUP_BAD_TOLERANCE) and nothing changes.
    /// The choice holds for the curve as it is now; after edits, GetLookupError tells
    /// whether it still holds.
    virtual int SetLookupTolerance(float maxError) = 0;
    /// The worst difference of the current lookup size, measured as above: 0 when the
    /// lookup gives exact values (a size below 1 or too large to build); +infinity when a
    /// difference is not a number.
    virtual float GetLookupError() = 0;
    /// @}

protected:
    ~ICurveBatch() = default;
};
