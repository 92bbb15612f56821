// The machinery behind a curve's evaluation cache: immutable cache states published
// through one atomic pointer, per-thread reader slots (a hazard pointer and an evaluation
// counter each), and the retirement of replaced states once no reader can hold them.
//
// Why not the literal double-checked lock: it frees the segment cache while another thread
// may still be reading it, and lets readers see a lookup table that another thread is
// filling. Here a state is never changed after it is published (its lookup table is
// published once, whole), and a replaced state is freed only when no reader's hazard
// pointer names it.
//
// Cost on the common path (a table lookup on a curve this thread evaluated before): one
// plain load of the curve's publication serial compared with the thread's QuickEntry, and
// an unshared counter store; no lock, no fence, no shared write. The reader's hazard
// pointer stays set between calls, so the state it last read stays alive. Any other
// evaluation reads the thread's slot number and the curve's slot of it; only a reader that
// meets a new state pays for one sequentially consistent store.
//
// Rules:
//   - Publish, Reclaim and the table memory run under Lock() only.
//   - A reader without a slot (more threads evaluating at once than kMaxReaderSlots)
//     holds Lock() for the whole evaluation instead; states cannot be retired meanwhile.
//   - Retired states wait in a list of at most one entry per reader slot (plus the one
//     just replaced), so memory stays bounded however often the curve is edited.
#pragma once

#include "host/geom.h"
#include "host/interval.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

namespace curve_eval {

/// One resolved point: the ten floats of a segment-cache record, in their order.
struct CachedKnot {
    float px, py;      // position at the cached time, after pinning and ordering
    float inX, inY;    // absolute in-handle
    float outX, outY;  // absolute out-handle
    float right, left; // x move limits: how far right / left the point may go
    float up, down;    // y move limits
};
static_assert(sizeof(CachedKnot) == 40, "a cache record is ten floats");

/// A filled lookup table with the spacing it was built with.
struct LookupTable {
    float step = 0.0f;        // (x high - x low) / size
    float indexScale = 0.0f;  // (size - 1) / (x high - x low)
    int size = 0;             // intervals; `values` holds size + 1 entries
    float sizeAsFloat = 0.0f; // float(size): the bound of a valid index
    std::unique_ptr<float[]> values;
};

/// Everything evaluation reads, resolved for the times of `validity`. Immutable once
/// published, except that the lookup table is attached once, under the cache lock.
struct CacheState {
    /// Sets the validity and the fields derived from it.
    void SetValidity(const Interval& v) {
        validity = v;
        forever = v == FOREVER;
        firstTime = v.Empty() ? 1 : v.Start();
        lastTime = v.Empty() ? 0 : v.End();
    }
    /// Whether the state holds at t (the interval test in two compares).
    bool HoldsAt(TimeValue t) const { return t >= firstTime && t <= lastTime; }

    Interval validity;       // times for which this state holds
    TimeValue firstTime = 1; // validity as a plain range (1 .. 0 when empty)
    TimeValue lastTime = 0;
    bool forever = false;         // validity is FOREVER: narrowing by it changes nothing
    bool plainLookup = false;     // forever, and two or more points: see QuickEntry
    int count = 0;                // number of records
    int lookupSize = 0;           // the curve's lookup size when this state was built
    bool ordered = false;         // record x positions never decrease: binary search is exact
    bool firstPureCorner = false; // point 0 is KNOT_CORNER without KNOT_BEZIER
    bool lastPureCorner = false;  // the last point is
    std::unique_ptr<CachedKnot[]> knots; // count records
    /// The handles the cached-point queries answer: the record's position plus the point's
    /// tangent. They equal the record's own handles bit for bit unless an end point was
    /// pinned away from its stored x (a pinned record's handles keep their x) or a pass
    /// moved a record (its handles moved by the same amount, rounded on their own). So they
    /// are kept only where they differ: for every record when a pass moved one (rare: points
    /// out of order), else for the two end records when pinning moved one of them.
    std::unique_ptr<Point2[]> queryHandles; // in, out of every record, or null
    Point2 endQueryHandles[4] = {};         // in, out of the first, then of the last record
    bool endsApart = false;                 // endQueryHandles holds them
    /// What CachedInHandle / CachedOutHandle answer for record i.
    Point2 InHandle(int i) const { return queryHandle(i, 0); }
    Point2 OutHandle(int i) const { return queryHandle(i, 1); }
    Point2 queryHandle(int i, int side) const {
        if (queryHandles)
            return queryHandles[2 * i + side];
        if (endsApart && (i == 0 || i == count - 1))
            return endQueryHandles[(i == 0 ? 0 : 2) + side];
        const CachedKnot& k = knots[i];
        return side == 0 ? Point2(k.inX, k.inY) : Point2(k.outX, k.outY);
    }
    std::uint64_t serial = 0; // this publication's number (set by Publish)

    /// The lookup table, null until first needed; set once under the cache lock.
    mutable std::atomic<const LookupTable*> lookup{nullptr};
    /// Owns `lookup` (shared with the curve's table memory).
    mutable std::shared_ptr<const LookupTable> lookupOwner;
};

/// The per-thread part of a curve's cache. A slot belongs to one thread at a time; only
/// that thread writes it (the writer thread reads the hazard, LookupCount reads the count).
struct alignas(64) ReaderSlot {
    std::atomic<long> count{0};                     // evaluations counted by this thread
    std::atomic<const CacheState*> hazard{nullptr}; // the state this thread may be reading
};

/// Thread-local variables are plain __thread (no constructor) so that reading one is a
/// thread-pointer-relative load; thread_local would go through a wrapper call from other
/// files. (The initial-exec model keeps the compiler from assuming a call to the TLS
/// resolver, which would make it save every argument of ValueAt first.)
#if defined(__ELF__)
#define CURVE_EVAL_TLS_MODEL __attribute__((tls_model("initial-exec")))
#else
#define CURVE_EVAL_TLS_MODEL
#endif

/// This thread's slot number: -2 before its first evaluation, -1 when every slot is taken.
extern __thread int tReaderSlot CURVE_EVAL_TLS_MODEL;

/// A thread's shortcut to the lookup table of a curve it evaluated, for Curve::ValueAt's
/// common case. Filled by the general path from a state that is valid for all times, has
/// two or more points, a built table, and is this thread's hazard on that curve; emptied
/// (serial 0) whenever the thread's hazard on that curve changes and when the thread gives
/// its slot number back. So while `serial` equals the curve's Serial(), the state is
/// current and cannot be freed, and every field below is still good.
struct QuickEntry {
    std::uint64_t serial; // publication the entry was taken from; 0: empty
    ReaderSlot* slot;     // this thread's slot of that curve: counts the evaluations
    const float* values;  // the table's size + 1 entries
    float indexScale;     // the table's (size - 1) / (x high - x low); never negative
    float step;           // the table's (x high - x low) / size
    float sizeAsFloat;    // float(size): indices must stay below it
};

/// Each curve uses the entry of its lane. Curves take lanes in turn as they first fill an
/// entry, so a client that evaluates up to this many curves in turn keeps all of them on
/// the quick path; curves that share a lane take the general path in turn.
constexpr unsigned kQuickLanes = 4;
extern __thread QuickEntry tQuickEntries[kQuickLanes] CURVE_EVAL_TLS_MODEL;

class EvalCache {
public:
    static constexpr int kSlotsPerChunk = 8;
    static constexpr int kSlotChunks = 16;
    static constexpr int kMaxReaderSlots = kSlotsPerChunk * kSlotChunks;

    EvalCache();
    ~EvalCache();
    EvalCache(const EvalCache&) = delete;
    EvalCache& operator=(const EvalCache&) = delete;

    /// Guards rebuilding, publication, retirement, the table memory and (see curve.h) the
    /// point table. Recursive: an editor holding it may invalidate or evaluate.
    std::recursive_mutex& Lock() const { return lock_; }

    /// Makes `next` (null: no state, the cache is empty) the current state and retires the
    /// previous one. Caller holds Lock().
    void Publish(std::unique_ptr<CacheState> next);
    /// The current state, for a caller that holds Lock().
    const CacheState* CurrentLocked() const { return state_.load(std::memory_order_relaxed); }
    /// The serial of the current publication: never 0, never the same for two
    /// publications of any curves. Equal to a QuickEntry's serial while that entry's state
    /// is current.
    std::uint64_t Serial() const { return serial_.load(std::memory_order_acquire); }
    /// This thread's quick entry for this curve (see QuickEntry).
    QuickEntry& ThreadQuickEntry() const {
        return tQuickEntries[lane_.load(std::memory_order_relaxed)];
    }
    /// Slot n of this curve when this curve has met slot n before, else null.
    ReaderSlot* AttachedSlot(int n) const {
        const unsigned u = unsigned(n); // n >= 0: unsigned division is a plain shift
        ReaderSlot* chunk = chunks_[u / kSlotsPerChunk].load(std::memory_order_acquire);
        return chunk ? chunk + u % kSlotsPerChunk : nullptr;
    }

    /// The values the lookup table held last (entries a build does not reach keep them).
    /// Caller holds Lock().
    const std::shared_ptr<const LookupTable>& TableMemory() const { return tableMemory_; }
    void SetTableMemory(std::shared_ptr<const LookupTable> t) { tableMemory_ = std::move(t); }

    /// Evaluations counted so far, summed over all threads.
    long Count() const;

    class Reader;

private:
    ReaderSlot* slotAt(int index);
    void reclaim();
    void chooseLane();

    mutable std::recursive_mutex lock_;
    std::atomic<const CacheState*> state_{nullptr}; // owned; the current state or null
    std::atomic<std::uint64_t> serial_;             // state_'s serial (see Serial)
    std::atomic<unsigned> lane_{0};                 // index into tQuickEntries, see chooseLane
    std::atomic<bool> laneChosen_{false};           // lane_ is final
    std::vector<std::unique_ptr<const CacheState>> retired_; // replaced, maybe still read
    std::shared_ptr<const LookupTable> tableMemory_;         // last built table, or null
    std::atomic<ReaderSlot*> chunks_[kSlotChunks] = {};      // owned arrays of kSlotsPerChunk
    std::atomic<long> lockedCount_{0}; // evaluations of readers without a slot
};

/// Gives slot number n back to the pool; runs on the thread that held it, as it ends.
void ReleaseReaderSlot(int n);
/// Platform part (curve_eval_thread_win32.cpp, curve_eval_thread_native.cpp): makes
/// ReleaseReaderSlot(n) run when the calling thread ends; false when it cannot.
bool ReleaseReaderSlotAtThreadExit(int n);

/// One evaluation's access to the cache. Construct it on the evaluating thread, keep it for
/// the duration of the evaluation, never share it.
class EvalCache::Reader {
public:
    explicit Reader(EvalCache& cache) : cache_(cache), slot_(nullptr) {
        const int n = tReaderSlot;
        if (n >= 0 && (slot_ = cache.AttachedSlot(n)))
            return;
        attach();
    }
    ~Reader() {
        if (!slot_)
            cache_.lock_.unlock();
    }
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;

    /// The current state (null when empty), safe to read until this reader meets another
    /// state or is destroyed.
    const CacheState* Current() {
        const CacheState* p = cache_.state_.load(std::memory_order_acquire);
        if (slot_ && p != slot_->hazard.load(std::memory_order_relaxed))
            p = protect(p);
        return p;
    }
    /// After a rebuild under Lock(): makes `s` (the state just published) this reader's.
    void Adopt(const CacheState* s);
    /// Makes `lt`, the table of `s` (this reader's current state), the thread's QuickEntry
    /// when `s` qualifies (see QuickEntry).
    void RememberQuick(const CacheState& s, const LookupTable& lt);
    /// Adds n to the evaluation counter.
    void Count(long n) {
        if (slot_)
            slot_->count.store(slot_->count.load(std::memory_order_relaxed) + n,
                               std::memory_order_relaxed);
        else
            cache_.lockedCount_.fetch_add(n, std::memory_order_relaxed);
    }

private:
    /// The first evaluation of this thread, or of this thread on this curve: takes a slot
    /// number and the curve's slot, or, when there is none, the lock.
    void attach();
    const CacheState* protect(const CacheState* p);

    EvalCache& cache_;
    ReaderSlot* slot_; // this thread's slot; null when it has none and holds the lock
};

} // namespace curve_eval
