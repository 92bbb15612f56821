// A plain curve evaluator written straight from the description of curve evaluation, for
// the tests only. It keeps the description's shape on purpose: one mutable segment cache
// of ten floats per point, the move limits recomputed for all records after every point,
// a linear search for the segment, a lookup table filled entry by entry by linear search
// with an x accumulated by repeated addition, and a counter incremented wherever the
// description tests the cache. It is single-threaded and slow; the product must give the
// same bits.
//
// It reads the curve's point table, controllers, curve flags, lookup size and owner
// directly, as the product's rebuild does. The few rules that the description leaves open
// are the product's documented ones (curve.h): a curve without owner uses the x range
// (0, 1), the y range (0, 1) and the flag word 0; a lookup size below 1, or a table index
// outside the table, gives the exact value; a segment index out of range gives 0; a
// not-a-number candidate never wins a largest-of or smallest-of.
#pragma once

#include "curve/curve.h"

#include <vector>

namespace evalref {

class ReferenceEvaluator {
public:
    explicit ReferenceEvaluator(Curve& curve);

    float ValueAt(TimeValue t, float x, Interval& valid, BOOL useLookup);
    float SegmentValue(TimeValue t, int i, float x, int mode);
    Point2 SegmentPoint(TimeValue t, int i, float u);
    Point2 CachedPosition(TimeValue t, int i);
    Point2 CachedInHandle(TimeValue t, int i);
    Point2 CachedOutHandle(TimeValue t, int i);
    void CachedRoom(TimeValue t, int i, float& right, float& left, float& up, float& down);
    Interval CacheValidity(TimeValue t);
    void GetValueBounds(TimeValue t, float& lo, float& hi);
    void EnsureCache(TimeValue t);
    void Initialize(TimeValue t, Interval& valid);
    void BuildLookup(TimeValue t);
    long LookupCount() const { return counter_; }

    /// What every change of the curve's points does: validity empty, segment cache freed.
    void InvalidateCache();
    /// What SetLookupSize with a new size and Copy do: a fresh table of zeros, not valid,
    /// and the validity empty.
    void FreshLookupTable();

private:
    // Field indices of a record, in the description's order.
    enum { PX, PY, IX, IY, OX, OY, RIGHT, LEFT, UP, DOWN, kFields };

    float& rec(int i, int f) { return seg_[std::size_t(i) * kFields + f]; }
    int pointCount() const;
    void computeAllRooms();
    void ownerRanges(float& xlo, float& xhi, float& ylo, float& yhi, DWORD& flags) const;
    Point2 evalSegment(int i, float u);

    Curve& curve_;
    Interval validity_;       // empty until the first rebuild
    std::vector<float> seg_;  // the segment cache; empty when freed
    float step_ = 0.0f;       // lookup step of the last build
    float indexScale_ = 0.0f; // lookup index scale of the last build
    bool lookupValid_ = false;
    std::vector<float> table_; // size + 1 entries, zeros when fresh
    long counter_ = 0;
};

} // namespace evalref
