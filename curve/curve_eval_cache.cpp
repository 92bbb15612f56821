// Reader slots, publication and retirement of a curve's cache states (curve_eval_cache.h).
//
// Protocol (hazard pointers that stay set between calls):
//   reader:  p = state (acquire); when p differs from its hazard:
//              repeat { hazard = p (seq_cst); q = state (seq_cst); if q == p done; p = q }
//   writer:  under the lock: state = next (seq_cst); retire the old state; free each
//            retired state that no hazard names (hazards loaded seq_cst).
// Either the writer sees a reader's hazard, or that reader sees the new state and
// re-protects; a state named by a hazard is never freed, so a reader whose hazard already
// equals the current state reads it without any fence.
//
// The quick path (QuickEntry) compares publication serials instead of state pointers: a
// serial is never reused, so an equal serial means the very state the entry was taken
// from, never a new one that happens to sit at a freed state's address. A reader that
// still sees the old serial just after a publication reads the old state, which its
// hazard keeps alive, as if it had run a moment earlier.
//
// The one fence left to readers (protect's sequentially consistent store) is paid once
// per thread per new state, not per value. An asymmetric barrier (a plain store in the
// reader, a process-wide barrier such as membarrier in the writer) would move that cost
// to every publication, a system call on the UI thread at every edit and drag step, for
// no gain on the common path; it is not used.
#include "curve/curve_eval_cache.h"

#include <algorithm>
#include <new>

namespace curve_eval {

// ---------------------------------------------------------------------------------------
// Thread slot numbers
//
// Each evaluating thread owns one slot number for its lifetime; every curve keeps one
// ReaderSlot per number it has met. Numbers go back to the pool when their thread ends
// (the platform part, curve_eval_thread_*.cpp, arranges the call): a later thread then
// inherits the slot's count (which keeps counting) and its hazard (which it overwrites on
// its first read of each curve). No thread_local object with a destructor is used: with
// MinGW's emulated TLS such a destructor can run after its object's storage is gone.

__thread int tReaderSlot CURVE_EVAL_TLS_MODEL = -2;
__thread QuickEntry tQuickEntries[kQuickLanes] CURVE_EVAL_TLS_MODEL;

namespace {

constexpr int kNoSlot = -1;
constexpr int kUnassigned = -2;

// Never destroyed: a thread may end (and give its number back) while the program exits.
std::mutex& slotPoolLock() {
    static std::mutex* m = new std::mutex;
    return *m;
}

bool slotUsed[EvalCache::kMaxReaderSlots]; // guarded by slotPoolLock()

int takeSlotNumber() {
    std::lock_guard<std::mutex> g(slotPoolLock());
    for (int i = 0; i < EvalCache::kMaxReaderSlots; ++i) {
        if (!slotUsed[i]) {
            slotUsed[i] = true;
            return i;
        }
    }
    return kNoSlot;
}

int assignSlot() {
    const int n = takeSlotNumber();
    if (n >= 0 && !ReleaseReaderSlotAtThreadExit(n)) {
        ReleaseReaderSlot(n); // no way to learn of the thread's end: use the lock
        tReaderSlot = kNoSlot;
        return kNoSlot;
    }
    tReaderSlot = n;
    return n;
}

} // namespace

void ReleaseReaderSlot(int n) {
    // Evaluations that still run on this thread (from other exit handlers) use the lock;
    // the slot's next thread overwrites its hazards, so the quick entry goes too.
    tReaderSlot = kNoSlot;
    for (QuickEntry& e : tQuickEntries)
        e = QuickEntry{};
    std::lock_guard<std::mutex> g(slotPoolLock());
    if (n >= 0 && n < EvalCache::kMaxReaderSlots)
        slotUsed[n] = false;
}

// ---------------------------------------------------------------------------------------
// EvalCache

namespace {

/// A serial no publication of any curve has had; never 0 (the empty QuickEntry's).
std::uint64_t nextSerial() {
    static std::atomic<std::uint64_t> last{0};
    return last.fetch_add(1, std::memory_order_relaxed) + 1;
}

} // namespace

EvalCache::EvalCache() : serial_(nextSerial()) {}

EvalCache::~EvalCache() {
    // No reader may run any more: the curve is going away.
    delete state_.load(std::memory_order_relaxed);
    retired_.clear();
    for (auto& c : chunks_)
        delete[] c.load(std::memory_order_relaxed);
}

ReaderSlot* EvalCache::slotAt(int index) {
    std::atomic<ReaderSlot*>& chunkRef = chunks_[index / kSlotsPerChunk];
    ReaderSlot* chunk = chunkRef.load(std::memory_order_acquire);
    if (!chunk) {
        auto* fresh = new (std::nothrow) ReaderSlot[kSlotsPerChunk];
        if (!fresh)
            return nullptr;
        if (chunkRef.compare_exchange_strong(chunk, fresh, std::memory_order_acq_rel,
                                             std::memory_order_acquire)) {
            chunk = fresh;
        } else {
            delete[] fresh; // another thread installed the chunk first; `chunk` holds it
        }
    }
    return &chunk[index % kSlotsPerChunk];
}

void EvalCache::Publish(std::unique_ptr<CacheState> next) {
    const std::uint64_t serial = nextSerial();
    if (next)
        next->serial = serial;
    const CacheState* old = state_.exchange(next.release(), std::memory_order_seq_cst);
    serial_.store(serial, std::memory_order_release);
    if (old)
        retired_.emplace_back(old);
    reclaim();
}

// The lane is chosen when the curve first fills a quick entry, not when it is made (making
// one curve may make others, such as temporaries): the curves a client evaluates in turn
// then take lanes in turn. A thread that fills an entry in lane 0 while another thread is
// between choosing and storing the lane leaves an entry that no curve will match (serials
// are unique) and that this curve no longer reads, which is harmless.
void EvalCache::chooseLane() {
    static std::atomic<unsigned> lastLane{0};
    if (laneChosen_.load(std::memory_order_relaxed) ||
        laneChosen_.exchange(true, std::memory_order_relaxed))
        return;
    lane_.store(lastLane.fetch_add(1, std::memory_order_relaxed) % kQuickLanes,
                std::memory_order_relaxed);
}

void EvalCache::reclaim() {
    if (retired_.empty())
        return;
    const CacheState* held[kMaxReaderSlots];
    int n = 0;
    for (auto& c : chunks_) {
        ReaderSlot* chunk = c.load(std::memory_order_acquire);
        if (!chunk)
            continue;
        for (int i = 0; i < kSlotsPerChunk; ++i)
            if (const CacheState* h = chunk[i].hazard.load(std::memory_order_seq_cst))
                held[n++] = h;
    }
    auto stillHeld = [&](const std::unique_ptr<const CacheState>& s) {
        return std::find(held, held + n, s.get()) != held + n;
    };
    retired_.erase(
        std::remove_if(retired_.begin(), retired_.end(),
                       [&](const std::unique_ptr<const CacheState>& s) { return !stillHeld(s); }),
        retired_.end());
}

long EvalCache::Count() const {
    long sum = lockedCount_.load(std::memory_order_relaxed);
    for (auto& c : chunks_) {
        ReaderSlot* chunk = c.load(std::memory_order_acquire);
        if (!chunk)
            continue;
        for (int i = 0; i < kSlotsPerChunk; ++i)
            sum += chunk[i].count.load(std::memory_order_relaxed);
    }
    return sum;
}

// ---------------------------------------------------------------------------------------
// EvalCache::Reader

void EvalCache::Reader::attach() {
    int n = tReaderSlot;
    if (n == kUnassigned)
        n = assignSlot();
    if (n >= 0)
        slot_ = cache_.slotAt(n);
    // More threads than slots (or no memory for one): evaluate under the lock, where no
    // state can be retired.
    if (!slot_)
        cache_.lock_.lock();
}

namespace {

/// Empties `e` when it was taken through `slot`: the slot's hazard is about to change, and
/// the entry's state would no longer be protected.
inline void forgetQuickEntry(QuickEntry& e, const ReaderSlot* slot) {
    if (e.slot == slot)
        e.serial = 0;
}

} // namespace

const CacheState* EvalCache::Reader::protect(const CacheState* p) {
    forgetQuickEntry(cache_.ThreadQuickEntry(), slot_);
    for (;;) {
        slot_->hazard.store(p, std::memory_order_seq_cst);
        const CacheState* q = cache_.state_.load(std::memory_order_seq_cst);
        if (q == p)
            return p;
        p = q;
    }
}

void EvalCache::Reader::Adopt(const CacheState* s) {
    // The caller holds the lock, so `s` cannot be retired before the hazard is visible to
    // the next reclaim (which takes the lock after us).
    if (slot_) {
        forgetQuickEntry(cache_.ThreadQuickEntry(), slot_);
        slot_->hazard.store(s, std::memory_order_seq_cst);
    }
}

void EvalCache::Reader::RememberQuick(const CacheState& s, const LookupTable& lt) {
    // A negative index scale (a range given high to low) could make an index below 0 from
    // an x inside the range; the quick path relies on x >= x low giving an index >= 0.
    if (!slot_ || !s.plainLookup || lt.indexScale < 0.0f ||
        slot_->hazard.load(std::memory_order_relaxed) != &s)
        return;
    cache_.chooseLane();
    cache_.ThreadQuickEntry() =
        QuickEntry{s.serial, slot_, lt.values.get(), lt.indexScale, lt.step, lt.sizeAsFloat};
}

} // namespace curve_eval
