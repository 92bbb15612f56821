// Curve evaluation: the per-time cache of resolved points, the Bezier segment solve, the
// continuation outside the x range and the lookup table.
//
// [SECTION] Index
//   Geometry ............ the Bezier formula and the 20-halving solve (pure functions)
//   Rebuild ............. buildCacheState, Initialize, InvalidateCache
//   Cache access ........ acquireState (the double-checked test), EnsureCache, CacheValidity
//   Lookup table ........ acquireLookup, BuildLookup
//   Queries ............. ValueAt (quick case, general path), SegmentValue, SegmentPoint, the
//   cached-point queries,
//                         GetValueBounds, LookupCount
//
// Every result is the one the straightforward algorithm gives, bit for bit (the tests
// compare against such a reference); the differences are only in how it gets there:
//   - a rebuild recomputes the move limits of the neighbours of a moved record only,
//     which are the only limits a move can change (linear instead of quadratic time);
//   - when the cached positions are in x order, the segment holding x is found by binary
//     search, and a lookup build walks the segments forward; both find the first segment
//     a linear search would find. Points out of order use the linear search;
//   - the bisection computes y once, at its last parameter, not at every step;
//   - the cache is an immutable state per rebuild (curve_eval_cache.h), so the lookup
//     table belongs to the state it was built from;
//   - ValueAt answers the common lookup case (warm cache valid for all times, x inside
//     the range, a curve this thread evaluated before) from a thread-local entry before
//     it takes the general path.
#include "control/curve_control.h"
#include "curve/curve.h"
#include "curve/curve_eval_shared.h"
#include "curve/curve_records.h"
#include "host/controller.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>

using curve_eval::CachedKnot;
using curve_eval::CacheState;
using curve_eval::EvalCache;
using curve_eval::kMaxBuiltLookupSize;
using curve_eval::LookupTable;
using namespace curve_records;

namespace {

// ---------------------------------------------------------------------------------------
// [SECTION] Geometry

/// Halvings of the Bezier parameter; the result after the last one is taken as it is.
constexpr int kHalvings = 20;
/// A handle that reaches no further than this towards the outside does not give the end
/// direction. Compared in double precision with a single-precision difference.
constexpr double kHandleReach = 0.0001;

/// One coordinate of a cubic Bezier at u, with v = 1 - u:
///   ((P0 v + 3u P1) v + 3u^2 P2) v + u^3 P3.
/// The order of operations is part of the result: keep it.
inline float bezier(float p0, float p1, float p2, float p3, float u) {
    const float v = 1.0f - u;
    return ((p0 * v + 3.0f * u * p1) * v + 3.0f * u * u * p2) * v + u * u * u * p3;
}

/// The control points of segment i: point i to point (i + 1) mod count.
struct Segment {
    float x0, x1, x2, x3;
    float y0, y1, y2, y3;
};

inline Segment segmentOf(const CacheState& s, int i) {
    const int j = (i + 1) % s.count;
    const CachedKnot& a = s.knots[i];
    const CachedKnot& b = s.knots[j];
    return Segment{a.px, a.outX, b.inX, b.px, a.py, a.outY, b.inY, b.py};
}

inline float segmentX(const Segment& g, float u) { return bezier(g.x0, g.x1, g.x2, g.x3, u); }
inline float segmentY(const Segment& g, float u) { return bezier(g.y0, g.y1, g.y2, g.y3, u); }

/// The 20 halvings of the segment solve, for x rising (or falling) with u: an x at or
/// above the wanted one moves the high (low) bound; an exact hit stops. The new bounds are
/// formed before the test for the hit so that the compiler makes them selects, not a
/// branch that random x would mispredict at every step.
template <bool Rising> float halve(const Segment& g, float x, int mode) {
    float lo = 0.0f, hi = 1.0f, u = 0.0f;
    for (int n = 0; n < kHalvings; ++n) {
        u = (lo + hi) * 0.5f;
        const float xu = segmentX(g, u);
        const bool atOrAbove = xu >= x;
        const float newLo = (atOrAbove == Rising) ? lo : u;
        const float newHi = (atOrAbove == Rising) ? u : hi;
        if (xu == x)
            break;
        lo = newLo;
        hi = newHi;
    }
    return mode == 1 ? u : segmentY(g, u);
}

/// Solves the segment for x: mode 1 answers the parameter, any other mode y there.
/// Both ends are tested first; then at most 20 halvings, stopping early only on an exact
/// hit. The halving keeps the side of x at the low bound whether x rises or falls with u.
float solveSegment(const Segment& g, float x, int mode) {
    const float x0 = segmentX(g, 0.0f);
    if (x0 == x)
        return mode == 1 ? 0.0f : segmentY(g, 0.0f);
    const float x1 = segmentX(g, 1.0f);
    if (x1 == x)
        return mode == 1 ? 1.0f : segmentY(g, 1.0f);
    return !(x0 > x1) ? halve<true>(g, x, mode) : halve<false>(g, x, mode);
}

/// The first segment i (0 .. count - 2) with x_i <= x <= x_(i+1), or -1.
int findSegment(const CacheState& s, float x) {
    const CachedKnot* k = s.knots.get();
    const int n = s.count;
    if (!s.ordered) {
        for (int i = 0; i + 1 < n; ++i)
            if (k[i].px <= x && x <= k[i + 1].px)
                return i;
        return -1;
    }
    // Positions in order: the first match is the first i whose right end reaches x,
    // provided its left end does not lie beyond x.
    int lo = 1, hi = n; // search positions 1 .. n - 1 for the first px >= x
    while (lo < hi) {
        const int mid = lo + (hi - lo) / 2;
        if (k[mid].px < x)
            lo = mid + 1;
        else
            hi = mid;
    }
    if (lo >= n)
        return -1;
    const int i = lo - 1;
    return k[i].px <= x ? i : -1;
}

inline bool isPureCorner(uint32_t flags) {
    return (flags & (KNOT_CORNER | KNOT_BEZIER)) == KNOT_CORNER;
}

} // namespace

namespace curve_records {

bool OwnerSettings::ConstrainY() const { return (flags & CC_CONSTRAIN_Y) != 0; }

OwnerSettings ReadOwner(CurveControl* owner) {
    OwnerSettings o;
    if (owner) {
        o.x = owner->GetXRange();
        o.y = owner->GetYRange();
        o.flags = owner->GetControlFlags();
    }
    return o;
}

} // namespace curve_records

namespace {

/// The x range on the evaluation path. The qualified call reads the control's range
/// without a virtual dispatch per value (CurveControl has no subclasses).
inline Point2 ownerXRange(CurveControl* owner) {
    return owner ? owner->CurveControl::GetXRange() : Point2(0.0f, 1.0f);
}

} // namespace

// ---------------------------------------------------------------------------------------
// [SECTION] Rebuild

namespace {

/// A point's position (from its controller when it has one) and absolute handles.
inline void placeRecord(CachedKnot& r, const CurveKnot& src, ReferenceTarget* controller,
                        TimeValue t, Interval& valid) {
    Point2 pos = src.pos;
    if (auto* ctrl = dynamic_cast<Control*>(controller)) {
        Point3 v;
        ctrl->GetValue(t, &v, valid, CTRL_ABSOLUTE);
        pos = Point2(v.x, v.y);
    }
    r.px = pos.x;
    r.py = pos.y;
    r.inX = pos.x + src.inTan.x;
    r.inY = pos.y + src.inTan.y;
    r.outX = pos.x + src.outTan.x;
    r.outY = pos.y + src.outTan.y;
}

} // namespace

CachedKnot Curve::initialRecord(TimeValue t, int i, Point2 xRange, Interval& valid) {
    CachedKnot r{};
    const CurveKnot& src = points_[i];
    placeRecord(r, src, Controller(i), t, valid);
    // As buildCacheState pins the end points.
    if (!IsCyclic()) {
        if (i == 0 && !(src.flags & KNOT_FREE_END_X))
            r.px = xRange.x;
        if (i == count_ - 1 && !(src.flags & KNOT_FREE_END_X))
            r.px = xRange.y;
    }
    return r;
}

std::unique_ptr<CacheState> Curve::buildCacheState(TimeValue t) {
    std::unique_ptr<CacheState> s(new (std::nothrow) CacheState);
    if (!s)
        return nullptr;
    Interval valid = FOREVER;
    // A failed allocation of the point table left the count set and the table null:
    // there are no points to see.
    const int n = points_ ? count_ : 0;
    s->count = n;
    s->lookupSize = lookupSize_;
    if (n > 0) {
        s->knots.reset(new (std::nothrow) CachedKnot[std::size_t(n)]);
        if (!s->knots)
            return nullptr;
    }
    CachedKnot* k = s->knots.get();

    for (int i = 0; i < n; ++i)
        placeRecord(k[i], points_[i], Controller(i), t, valid);

    const OwnerSettings o = ReadOwner(owner_);
    // End points sit on the range ends; their handles keep the x they had.
    bool endsApart = false; // pinning moved an end record away from its handles
    bool moved = false;     // a pass moved a record
    auto pin = [&](CachedKnot& r, float x) {
        endsApart |= !(r.px == x);
        r.px = x;
    };
    if (!IsCyclic() && n >= 1) {
        if (!(points_[0].flags & KNOT_FREE_END_X))
            pin(k[0], o.x.x);
        if (!(points_[n - 1].flags & KNOT_FREE_END_X))
            pin(k[n - 1], o.x.y);
    }

    const float ylo = o.y.x, yhi = o.y.y;
    const bool constrainY = o.ConstrainY();
    for (int i = 0; i < n; ++i)
        ComputeRoom(k, n, i, ylo, yhi);

    // Forward: a point left of what its neighbours allow moves right; with the y range
    // enforced, a point below it moves up.
    for (int i = 0; i < n; ++i) {
        bool shifted = false;
        if (k[i].left > 0.0f) {
            ShiftX(k[i], k[i].left);
            shifted = true;
        }
        if (constrainY && k[i].py < ylo) {
            PlaceY(k[i], ylo);
            shifted = true;
        }
        if (shifted)
            RecomputeAround(k, n, i, ylo, yhi);
        moved |= shifted;
    }
    // Backward: the same to the left and down.
    for (int i = n - 1; i >= 0; --i) {
        bool shifted = false;
        if (k[i].right < 0.0f) {
            ShiftX(k[i], k[i].right);
            shifted = true;
        }
        if (constrainY && k[i].py > yhi) {
            PlaceY(k[i], yhi);
            shifted = true;
        }
        if (shifted)
            RecomputeAround(k, n, i, ylo, yhi);
        moved |= shifted;
    }
    if ((moved || endsApart) && !placeQueryHandles(*s, moved))
        return nullptr;

    bool ordered = true;
    for (int i = 0; i + 1 < n && ordered; ++i)
        ordered = k[i].px <= k[i + 1].px;
    s->ordered = ordered;
    if (n > 0) {
        s->firstPureCorner = isPureCorner(points_[0].flags);
        s->lastPureCorner = isPureCorner(points_[n - 1].flags);
    }
    s->SetValidity(valid);
    s->plainLookup = s->forever && n >= 2;
    return s;
}

// The cached-point queries answer a handle as the record's position plus the point's
// tangent, while segments and move limits use the record's own handles. After a pass moved
// a record every record is given its own; otherwise only the end records differ (pinned
// away from their stored x), and only they are kept: a rebuild of a long curve whose end
// sits a rounding off the range end does no work per point for it.
bool Curve::placeQueryHandles(CacheState& s, bool all) const {
    const int n = s.count;
    auto handle = [&](int i, int side) {
        const CachedKnot& r = s.knots[i];
        const Point2 tan = side == 0 ? points_[i].inTan : points_[i].outTan;
        return Point2(r.px + tan.x, r.py + tan.y);
    };
    if (!all) {
        s.endQueryHandles[0] = handle(0, 0);
        s.endQueryHandles[1] = handle(0, 1);
        s.endQueryHandles[2] = handle(n - 1, 0);
        s.endQueryHandles[3] = handle(n - 1, 1);
        s.endsApart = true;
        return true;
    }
    s.queryHandles.reset(new (std::nothrow) Point2[2 * std::size_t(n)]);
    if (!s.queryHandles)
        return false;
    for (int i = 0; i < n; ++i) {
        s.queryHandles[2 * i] = handle(i, 0);
        s.queryHandles[2 * i + 1] = handle(i, 1);
    }
    return true;
}

void Curve::Initialize(TimeValue t, Interval& valid) {
    std::lock_guard<std::recursive_mutex> g(evalCache_.Lock());
    std::unique_ptr<CacheState> s = buildCacheState(t);
    valid = s ? s->validity : NEVER;
    evalCache_.Publish(std::move(s));
}

void Curve::InvalidateCache() {
    std::lock_guard<std::recursive_mutex> g(evalCache_.Lock());
    ++invalidations_;
    evalCache_.Publish(nullptr);
}

void Curve::resetLookupMemory() {
    std::lock_guard<std::recursive_mutex> g(evalCache_.Lock());
    evalCache_.SetTableMemory(nullptr);
}

// ---------------------------------------------------------------------------------------
// [SECTION] Cache access

// The double-checked test: the unlocked test of the current state, then, under the lock,
// the test again and the rebuild. Counts one test, and one more after a rebuild.
inline const CacheState* Curve::acquireState(EvalCache::Reader& r, TimeValue t) {
    r.Count(1);
    const CacheState* s = r.Current();
    if (s && s->HoldsAt(t))
        return s;
    return rebuildState(r, t);
}

const CacheState* Curve::rebuildState(EvalCache::Reader& r, TimeValue t) {
    std::lock_guard<std::recursive_mutex> g(evalCache_.Lock());
    const CacheState* s = evalCache_.CurrentLocked();
    if (!(s && s->HoldsAt(t))) {
        std::unique_ptr<CacheState> next = buildCacheState(t);
        if (!next)
            return nullptr; // out of memory: answer as a curve without points
        s = next.get();
        evalCache_.Publish(std::move(next));
        r.Count(1);
    }
    r.Adopt(s);
    return s;
}

bool Curve::cacheHolds(TimeValue t, const CachedKnot* k, int n) {
    EvalCache::Reader r(evalCache_);
    const CacheState* s = acquireState(r, t);
    return s && s->count == n &&
           (n == 0 || std::memcmp(s->knots.get(), k, sizeof(CachedKnot) * size_t(n)) == 0);
}

void Curve::EnsureCache(TimeValue t) {
    EvalCache::Reader r(evalCache_);
    acquireState(r, t);
}

Interval Curve::CacheValidity(TimeValue t) {
    EvalCache::Reader r(evalCache_);
    const CacheState* s = acquireState(r, t);
    return s ? s->validity : NEVER;
}

// ---------------------------------------------------------------------------------------
// [SECTION] Lookup table

// Entries the build does not reach (x outside every segment) keep the value the table
// held before, as a table reused from build to build would; a new size or a copy starts
// from zeros (resetLookupMemory).
inline const LookupTable* Curve::acquireLookup(EvalCache::Reader& r, const CacheState& s) {
    if (const LookupTable* lt = s.lookup.load(std::memory_order_acquire))
        return lt;
    return buildLookupTable(r, s);
}

const LookupTable* Curve::buildLookupTable(EvalCache::Reader& r, const CacheState& s) {
    if (s.lookupSize < 1 || s.lookupSize > kMaxBuiltLookupSize)
        return nullptr;

    std::lock_guard<std::recursive_mutex> g(evalCache_.Lock());
    if (const LookupTable* lt = s.lookup.load(std::memory_order_relaxed))
        return lt;

    const int size = s.lookupSize;
    std::shared_ptr<LookupTable> table;
    try {
        table = std::make_shared<LookupTable>();
        table->values.reset(new float[std::size_t(size) + 1]);
    } catch (const std::bad_alloc&) {
        return nullptr; // no table: values come from the exact solve
    }
    float* v = table->values.get();
    const std::shared_ptr<const LookupTable>& memory = evalCache_.TableMemory();
    if (memory && memory->size == size)
        std::copy(memory->values.get(), memory->values.get() + size + 1, v);
    else
        std::fill(v, v + size + 1, 0.0f);

    const Point2 xr = ReadOwner(owner_).x;
    table->size = size;
    table->sizeAsFloat = float(size);
    curve_eval::LookupSpacing(xr, size, table->step, table->indexScale);
    const long solved = curve_eval::FillLookupTable(s, xr, size, table->step, v);
    r.Count(solved); // each entry is one segment solve, and each solve tests the cache

    s.lookupOwner = table;
    s.lookup.store(table.get(), std::memory_order_release);
    evalCache_.SetTableMemory(std::move(table));
    return s.lookup.load(std::memory_order_relaxed);
}

void Curve::BuildLookup(TimeValue t) {
    EvalCache::Reader r(evalCache_);
    if (const CacheState* s = acquireState(r, t))
        acquireLookup(r, *s);
}

// ---------------------------------------------------------------------------------------
// [SECTION] Queries

namespace {
/// The table interpolation at index position f (0 <= f < size): the index from f, the
/// fraction from x itself with the step of size, as the table is defined.
inline float interpolate(const float* v, float f, float x, float step) {
    const int e = int(f);
    return v[e] + (v[e + 1] - v[e]) * (x - float(e) * step) / step;
}
} // namespace

// The common case of a client's per-frame calls: a table lookup inside the range on a
// curve this thread evaluated before, with the state unchanged since (the thread's
// QuickEntry for the curve, curve_eval_cache.h). It costs a serial compare and three
// float compares before the interpolation, and counts as the general path does; anything
// else goes there. Given x >= x low and an index scale that is not negative, the index is
// not negative (or not a number, which fails the bound): whenever this answers, the
// general path would have interpolated the same entries with the same arithmetic.
float Curve::ValueAt(TimeValue t, float x, Interval& valid, BOOL useLookup) {
    const curve_eval::QuickEntry& q = evalCache_.ThreadQuickEntry();
    if (q.serial == evalCache_.Serial() && useLookup) [[likely]] {
        const Point2 xr = ownerXRange(owner_);
        if (x >= xr.x && x <= xr.y) [[likely]] {
            const float f = (x - xr.x) * q.indexScale;
            if (f < q.sizeAsFloat) [[likely]] {
                std::atomic<long>& count = q.slot->count;
                count.store(count.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
                return interpolate(q.values, f, x, q.step);
            }
        }
    }
    return valueAtGeneral(t, x, valid, useLookup);
}

float Curve::valueAtGeneral(TimeValue t, float x, Interval& valid, BOOL useLookup) {
    EvalCache::Reader r(evalCache_);
    const CacheState* s = acquireState(r, t);
    if (!s)
        return 0.0f;
    valid &= s->validity;
    const int n = s->count;
    if (n == 0)
        return 0.0f;
    const CachedKnot* k = s->knots.get();
    if (n == 1) {
        r.Count(1); // the description tests the cache once more here
        return k[0].py;
    }

    const Point2 xr = evalXRange();
    if (x > xr.y)
        return curve_eval::RightEnd(*s).At(x, endsHold());
    if (x < xr.x)
        return curve_eval::LeftEnd(*s).At(x, endsHold());

    if (useLookup) {
        if (const LookupTable* lt = acquireLookup(r, *s)) {
            r.RememberQuick(*s, *lt); // the next call on this curve can take the quick path
            // The index comes from x - x low with the scale of size - 1, the fraction from
            // x itself with the step of size: both are the table's defined behaviour.
            const float f = (x - xr.x) * lt->indexScale;
            if (f > -1.0f && f < float(lt->size))
                return interpolate(lt->values.get(), f, x, lt->step);
        }
    }

    bool solved = false;
    const float y = curve_eval::ExactValue(*s, x, solved);
    if (solved)
        r.Count(1); // the segment solve tests the cache
    return y;
}

float Curve::SegmentValue(TimeValue t, int i, float x, int mode) {
    EvalCache::Reader r(evalCache_);
    const CacheState* s = acquireState(r, t);
    if (!s || i < 0 || i >= s->count)
        return 0.0f;
    return solveSegment(segmentOf(*s, i), x, mode);
}

Point2 Curve::SegmentPoint(TimeValue t, int i, float u) {
    EvalCache::Reader r(evalCache_);
    const CacheState* s = acquireState(r, t);
    if (!s || i < 0 || i >= s->count)
        return Point2(0.0f, 0.0f);
    const Segment g = segmentOf(*s, i);
    return Point2(segmentX(g, u), segmentY(g, u));
}

namespace {
/// Record i of the state, or null when there is none.
inline const CachedKnot* recordAt(const CacheState* s, int i) {
    return (s && i >= 0 && i < s->count) ? &s->knots[i] : nullptr;
}
} // namespace

Point2 Curve::CachedPosition(TimeValue t, int i) {
    EvalCache::Reader r(evalCache_);
    const CachedKnot* k = recordAt(acquireState(r, t), i);
    return k ? Point2(k->px, k->py) : Point2(0.0f, 0.0f);
}

Point2 Curve::CachedInHandle(TimeValue t, int i) {
    EvalCache::Reader r(evalCache_);
    const CacheState* s = acquireState(r, t);
    return recordAt(s, i) ? s->InHandle(i) : Point2(0.0f, 0.0f);
}

Point2 Curve::CachedOutHandle(TimeValue t, int i) {
    EvalCache::Reader r(evalCache_);
    const CacheState* s = acquireState(r, t);
    return recordAt(s, i) ? s->OutHandle(i) : Point2(0.0f, 0.0f);
}

void Curve::CachedRoom(TimeValue t, int i, float& right, float& left, float& up, float& down) {
    EvalCache::Reader r(evalCache_);
    const CachedKnot* k = recordAt(acquireState(r, t), i);
    right = k ? k->right : 0.0f;
    left = k ? k->left : 0.0f;
    up = k ? k->up : 0.0f;
    down = k ? k->down : 0.0f;
}

void Curve::GetValueBounds(TimeValue t, float& lo, float& hi) {
    EvalCache::Reader r(evalCache_);
    const CacheState* s = acquireState(r, t);
    float low = std::numeric_limits<float>::infinity();
    float high = -low;
    auto take = [&](float y) {
        if (y < low)
            low = y;
        if (y > high)
            high = y;
    };
    const int n = s ? s->count : 0;
    for (int i = 0; i < n; ++i)
        take(s->knots[i].py);
    // The ten pieces the editor draws each segment with; the closing segment of a cyclic
    // curve is not drawn, so it does not count either.
    for (int i = 0; i + 1 < n; ++i) {
        const Segment g = segmentOf(*s, i);
        for (int piece = 1; piece <= 10; ++piece)
            take(segmentY(g, float(piece) * 0.1f));
    }
    if (low > high)
        low = high = 0.0f; // no points, or no value that is a number
    lo = low;
    hi = high;
}

long Curve::LookupCount() const { return evalCache_.Count(); }

// ---------------------------------------------------------------------------------------
// [SECTION] Shared with batch evaluation and the lookup measurement (curve_eval_shared.h)

Point2 Curve::evalXRange() const { return ownerXRange(owner_); }

bool Curve::endsHold() const { return (curveFlags_ & 0x4) != 0; } // end behaviour 1

// acquireState and acquireLookup stay inline here, on ValueAt's path; other files call them
// through these.
const CacheState* Curve::sharedState(EvalCache::Reader& r, TimeValue t) {
    return acquireState(r, t);
}

const LookupTable* Curve::sharedLookup(EvalCache::Reader& r, const CacheState& s) {
    return acquireLookup(r, s);
}

namespace curve_eval {

// Continue through the last point along its in-handle, or along the last segment's chord
// when it is a pure corner or its handle does not reach left.
EndLine RightEnd(const CacheState& s) {
    const CachedKnot* k = s.knots.get();
    const CachedKnot& a = k[s.count - 1];
    // The handle the cached-point queries answer (position + tangent), also for a pinned end.
    const Point2 in = s.InHandle(s.count - 1);
    float bx = in.x, by = in.y;
    if (s.lastPureCorner || double(a.px - bx) <= kHandleReach) {
        bx = k[s.count - 2].px;
        by = k[s.count - 2].py;
    }
    return EndLine{a.py, (a.py - by) / (a.px - bx), bx, by};
}

EndLine LeftEnd(const CacheState& s) {
    const CachedKnot* k = s.knots.get();
    const CachedKnot& a = k[0];
    const Point2 out = s.OutHandle(0);
    float bx = out.x, by = out.y;
    if (s.firstPureCorner || double(bx - a.px) <= kHandleReach) {
        bx = k[1].px;
        by = k[1].py;
    }
    return EndLine{a.py, (by - a.py) / (bx - a.px), a.px, a.py};
}

float ExactValue(const CacheState& s, float x, bool& solved) {
    const int i = findSegment(s, x);
    solved = i >= 0;
    if (i < 0)
        return 0.0f; // points out of order leave x in no segment
    return solveSegment(segmentOf(s, i), x, 0);
}

void SegmentCoefficients(const CacheState& s, int i, float out[8]) {
    const Segment g = segmentOf(s, i);
    const float c[8] = {g.x0, g.x1, g.x2, g.x3, g.y0, g.y1, g.y2, g.y3};
    std::copy(c, c + 8, out);
}

void LookupSpacing(Point2 xr, int size, float& step, float& indexScale) {
    step = (xr.y - xr.x) / float(size);
    indexScale = float(size - 1) / (xr.y - xr.x);
}

long FillLookupTable(const CacheState& s, Point2 xr, int size, float step, float* v) {
    // x advances by repeated addition, as the table's x positions are defined.
    const CachedKnot* k = s.knots.get();
    const int n = s.count;
    float x = xr.x;
    long solved = 0;
    if (s.ordered && step >= 0.0f) {
        // x never decreases, so the first segment holding it never moves back.
        int i = 0;
        for (int e = 0; e <= size; ++e, x += step) {
            while (i + 1 < n && k[i + 1].px < x)
                ++i;
            if (i + 1 < n && k[i].px <= x) {
                v[e] = solveSegment(segmentOf(s, i), x, 0);
                ++solved;
            }
        }
    } else {
        for (int e = 0; e <= size; ++e, x += step) {
            for (int i = 0; i + 1 < n; ++i) {
                if (k[i].px <= x && !(x > k[i + 1].px)) {
                    v[e] = solveSegment(segmentOf(s, i), x, 0);
                    ++solved;
                    break;
                }
            }
        }
    }
    return solved;
}

float LookupValue(const float* v, float f, float x, float step) {
    return interpolate(v, f, x, step);
}

} // namespace curve_eval
