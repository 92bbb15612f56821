#include "curve/curve_settled_records.h"

#include <algorithm>

using curve_eval::CachedKnot;
using namespace curve_records;

Curve::SettledRecords::SettledRecords(Curve& c, TimeValue t) : c_(c), t_(t) {
    inputs_ = current();
    const int n = c_.points_ ? c_.count_ : 0;
    k_.resize(size_t(n));
    tangents_.resize(2 * size_t(n));
    Interval valid = FOREVER; // the records' validity is the cache's business
    for (int i = 0; i < n; ++i)
        take(i, valid);
    for (int i = 0; i < n; ++i)
        ComputeRoom(k_.data(), n, i, inputs_.owner.y.x, inputs_.owner.y.y);
    following_ = std::none_of(k_.begin(), k_.end(),
                              [&](const CachedKnot& r) { return WouldMove(r, inputs_.owner); });
    // The records start as the cache's own, bit for bit, or not at all: a cache left
    // standing across a change that did not drop it answers what it holds.
    if (following_)
        following_ = c_.cacheHolds(t_, k_.data(), n);
}

Curve::SettledRecords::Inputs Curve::SettledRecords::current() const {
    Inputs in;
    in.invalidations = c_.invalidations_;
    in.count = c_.points_ ? c_.count_ : 0;
    in.curveFlags = c_.curveFlags_;
    in.owner = ReadOwner(c_.owner_);
    return in;
}

void Curve::SettledRecords::take(int i, Interval& valid) {
    k_[size_t(i)] = c_.initialRecord(t_, i, inputs_.owner.x, valid);
    tangents_[2 * size_t(i)] = c_.points_[i].inTan;
    tangents_[2 * size_t(i) + 1] = c_.points_[i].outTan;
}

const CachedKnot* Curve::SettledRecords::record(int i) const {
    return i >= 0 && size_t(i) < k_.size() ? &k_[size_t(i)] : nullptr;
}

Point2 Curve::SettledRecords::Position(int i) {
    if (!following_)
        return c_.CachedPosition(t_, i);
    const CachedKnot* r = record(i);
    return r ? Point2(r->px, r->py) : Point2(0.0f, 0.0f);
}

// As the cache's queries answer: the record's position plus the point's tangent. While
// the records follow, no pass moved one, so this differs from the record's own handles only
// at an end point pinned away from its stored x.
Point2 Curve::SettledRecords::InHandle(int i) {
    if (!following_)
        return c_.CachedInHandle(t_, i);
    const CachedKnot* r = record(i);
    if (!r)
        return Point2(0.0f, 0.0f);
    const Point2 tan = tangents_[2 * size_t(i)];
    return Point2(r->px + tan.x, r->py + tan.y);
}

Point2 Curve::SettledRecords::OutHandle(int i) {
    if (!following_)
        return c_.CachedOutHandle(t_, i);
    const CachedKnot* r = record(i);
    if (!r)
        return Point2(0.0f, 0.0f);
    const Point2 tan = tangents_[2 * size_t(i) + 1];
    return Point2(r->px + tan.x, r->py + tan.y);
}

void Curve::SettledRecords::Edited(int i, int invalidations) {
    if (!following_)
        return;
    inputs_.invalidations += uint64_t(invalidations);
    if (!(current() == inputs_)) {
        following_ = false; // changed by someone else too: the cache knows best
        return;
    }
    const int n = int(k_.size());
    if (i < 0 || i >= n)
        return;
    Interval valid = FOREVER;
    take(i, valid);
    RecomputeAround(k_.data(), n, i, inputs_.owner.y.x, inputs_.owner.y.y);
    for (int j = std::max(0, i - 1); j <= std::min(n - 1, i + 1); ++j)
        if (WouldMove(k_[size_t(j)], inputs_.owner))
            following_ = false;
}
