// Curve::SettledRecords: what the cache would answer for each point at one time, followed
// through a loop's edits of single points without rebuilding the cache after each.
//
// A loop that edits point after point and reads each one through the cache (ScaleSelectedY)
// would rebuild the whole cache twice per point: quadratic in the points. While a rebuild's
// ordering passes would move no record (curve_records.h), the cache holds exactly each
// point's initial record with its limits; an edit of point i then changes record i and the
// limits of i - 1 .. i + 1 only, and whether the passes would still move nothing shows in
// those three. So the records follow the edits exactly, one point at a time. The moment
// the passes would move something, or anything else changed the curve or its owner (a
// client's message handler may), the records give up and every later read goes through
// the cache itself: the answers are always the cache's.
#pragma once

#include "curve/curve.h"
#include "curve/curve_records.h"

#include <cstdint>
#include <vector>

class Curve::SettledRecords {
public:
    SettledRecords(Curve& c, TimeValue t);

    /// What CachedPosition, CachedInHandle and CachedOutHandle(t, i) answer now.
    Point2 Position(int i);
    Point2 InHandle(int i);
    Point2 OutHandle(int i);

    /// The curve's own setters changed point i (or nothing, for i < 0) and called
    /// InvalidateCache `invalidations` times, client messages included.
    void Edited(int i, int invalidations);

    /// From now on every read goes through the cache.
    void Stop() { following_ = false; }

    /// Whether the records still follow the edits (else reads go through the cache).
    bool Following() const { return following_; }

private:
    /// What the records were made from, besides the point table.
    struct Inputs {
        uint64_t invalidations = 0;
        int count = 0;
        DWORD curveFlags = 0;
        curve_records::OwnerSettings owner;
        bool operator==(const Inputs& o) const {
            return invalidations == o.invalidations && count == o.count &&
                   curveFlags == o.curveFlags && owner == o.owner;
        }
    };
    Inputs current() const;
    const curve_eval::CachedKnot* record(int i) const;
    /// Makes record i (and its tangents) from point i of the table.
    void take(int i, Interval& valid);

    Curve& c_;
    TimeValue t_;
    std::vector<curve_eval::CachedKnot> k_;
    std::vector<Point2> tangents_; // in- and out-tangent of each record's point, as taken
    Inputs inputs_;
    bool following_ = false;
};
