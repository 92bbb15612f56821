// Evaluation under threads: worker threads evaluate a curve at random x and times, one by
// one and in batches (ICurveBatch::ValuesAt), while the main thread (the UI thread) edits
// it. Every value a worker gets must be one the curve had in some state the editor left it
// in: the main thread evaluates a fixed grid of queries after each edit, and each worker's
// answers (on the same grid) must be among those values, bit for bit. Animated points make
// the validity intervals single instants, so the workers also rebuild and retire cache
// states all the time.
//
// The edits go through operations that follow the point-table rule of curve.h: point
// insertion and deletion, SetKnot, undo and redo of insertions, and direct writes under
// LockPointTable() followed by InvalidateCache(). Run it under ThreadSanitizer and
// AddressSanitizer as well; CURVECTL_TEST_SCALE scales its length.
#include "curve_eval_test_util.h"
#include "host/hold.h"
#include "test_support.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <atomic>
#include <thread>
#include <vector>

using evaltest::Bits;
using evaltest::Rng;

namespace {

/// One query of the grid.
struct Query {
    TimeValue t;
    float x;
    BOOL lookup;
};

/// Times between and outside the keys (0, 100, 200) of the animated points.
const TimeValue kTimes[] = {-10, 0, 25, 50, 75, 100, 130, 175, 250};

std::vector<Query> makeGrid() {
    std::vector<Query> grid;
    for (TimeValue t : kTimes) {
        for (int k = 0; k <= 12; ++k) {
            const float x = -0.2f + 1.4f * float(k) / 12.0f; // outside, inside, outside
            grid.push_back(Query{t, x, FALSE});
            // The last table interval may hold an entry beyond x high, which keeps what
            // an earlier table held: which table that was depends on the threads' order.
            if (x >= 0.0f && x < 0.95f)
                grid.push_back(Query{t, x, TRUE});
        }
        grid.push_back(Query{t, 1.0f, FALSE});
    }
    return grid;
}

CurveKnot plainKnot(float x, float y, uint32_t flags = KNOT_TYPE_BEZIER_CORNER) {
    return CurveKnot(Point2(x, y), Point2(-0.04f, 0.1f), Point2(0.04f, -0.1f), flags);
}

/// Values each grid query has had, as bit patterns (few per query: kept unsorted).
class AllowedValues {
public:
    explicit AllowedValues(std::size_t n) : values_(n) {}
    void Record(Curve& c, const std::vector<Query>& grid) {
        for (std::size_t g = 0; g < grid.size(); ++g) {
            Interval valid = FOREVER;
            const uint32_t v = Bits(c.ValueAt(grid[g].t, grid[g].x, valid, grid[g].lookup));
            std::vector<uint32_t>& seen = values_[g];
            if (std::find(seen.begin(), seen.end(), v) == seen.end())
                seen.push_back(v);
        }
    }
    bool Allowed(std::size_t g, uint32_t v) const {
        return std::find(values_[g].begin(), values_[g].end(), v) != values_[g].end();
    }

private:
    std::vector<std::vector<uint32_t>> values_;
};

struct Sample {
    uint32_t query;
    uint32_t bits;
};

/// The editing thread's moves; `inserted` counts the insertions that undo may take back.
void edit(Curve& c, Rng& rng, int& undoable) {
    const int n = c.PointCount();
    const double p = rng.Unit();
    if (p < 0.2 && n < 12) {
        // Insert an unanimated point right of the animated point 1.
        const int where = rng.Int(2, n - 1);
        const float x = 0.5f * (c.Knots()[where - 1].pos.x + c.Knots()[where].pos.x);
        theHold.Begin();
        c.InsertKnot(where, plainKnot(x, rng.Uniform(-1.0f, 1.0f)));
        theHold.Accept("Insert Points");
        ++undoable;
    } else if (p < 0.3 && undoable > 0) {
        theHold.Undo();
        --undoable;
    } else if (p < 0.35 && theHold.NumRedo() > 0) {
        theHold.Redo();
        ++undoable;
    } else if (p < 0.45 && n > 5) {
        // Delete an unanimated interior point (never point 1, whose controller workers read).
        c.DeleteKnot(rng.Int(2, n - 2));
        undoable = 0; // the deletion's own undo record replaces the table unlocked
        theHold.Reset();
    } else if (p < 0.7) {
        const int i = rng.Int(2, n - 2);
        CurveKnot k = c.Knots()[i];
        // Only the position: SetKnot stores position and tangents one after the other,
        // and a worker may see the curve between the two.
        k.pos.y = rng.Uniform(-1.5f, 1.5f);
        c.SetKnot(0, i, k, FALSE, FALSE);
    } else if (p < 0.95) {
        const int i = rng.Int(0, n - 1);
        auto lock = c.LockPointTable();
        c.Knots()[i].inTan.y = rng.Uniform(-0.5f, 0.5f);
        c.Knots()[i].outTan.y = rng.Uniform(-0.5f, 0.5f);
        c.InvalidateCache();
    } else {
        c.InvalidateCache(); // no change of shape: only a rebuild
    }
}

} // namespace

TEST_CASE_FIXTURE(testsupport::CoreFixture,
                  "threads evaluating while the UI thread edits see only states the curve had") {
    CurveControl* owner = evaltest::MakeOwner(0.0f, 1.0f, -2.0f, 2.0f, CC_DEFAULT_FLAGS);
    Curve* curve = new Curve(owner, 0);
    curve->SetLookupSize(100);
    curve->SetPointCount(6);
    const float xs[] = {0.0f, 0.2f, 0.4f, 0.6f, 0.8f, 1.0f};
    for (int i = 0; i < 6; ++i)
        evaltest::WriteKnot(*curve, i,
                            plainKnot(xs[i], 0.1f * float(i),
                                      i == 0 || i == 5 ? KNOT_TYPE_CORNER | KNOT_ENDPOINT
                                                       : KNOT_TYPE_BEZIER_CORNER));
    const TimeValue keyTimes[] = {0, 100, 200};
    const Point2 keyValues[] = {Point2(0.15f, -1.0f), Point2(0.25f, 1.0f), Point2(0.2f, 0.0f)};
    evaltest::AnimatePoint(*curve, 1, keyTimes, keyValues, 3);

    const std::vector<Query> grid = makeGrid();
    // The queries of each query's time and lookup flag, for batch calls (ICurveBatch).
    std::vector<std::vector<uint32_t>> sameKind(grid.size());
    for (std::size_t g = 0; g < grid.size(); ++g)
        for (std::size_t h = 0; h < grid.size(); ++h)
            if (grid[h].t == grid[g].t && grid[h].lookup == grid[g].lookup)
                sameKind[g].push_back(uint32_t(h));
    auto* batch = static_cast<ICurveBatch*>(curve->GetInterface(I_CURVE_BATCH_INTERFACE));
    AllowedValues allowed(grid.size());
    allowed.Record(*curve, grid);

    const int workers = 4;
    std::atomic<bool> done{false};
    std::vector<std::vector<Sample>> samples(workers);
    std::vector<std::thread> threads;
    for (int w = 0; w < workers; ++w) {
        threads.emplace_back([&, w] {
            Rng rng(1000u + unsigned(w));
            std::vector<Sample>& out = samples[w];
            long n = 0;
            while (!done.load(std::memory_order_acquire) || n < 2000) {
                const uint32_t g = uint32_t(rng.Int(0, int(grid.size()) - 1));
                Interval valid = FOREVER;
                const float v = curve->ValueAt(grid[g].t, grid[g].x, valid, grid[g].lookup);
                if (out.size() < 400000)
                    out.push_back(Sample{g, Bits(v)});
                if ((n & 7) == 0) {
                    // A batch call over every query of this kind: each of its values must
                    // be one the curve had too.
                    const std::vector<uint32_t>& kind = sameKind[g];
                    std::vector<float> at(kind.size()), ys(kind.size());
                    for (std::size_t k = 0; k < kind.size(); ++k)
                        at[k] = grid[kind[k]].x;
                    Interval bv = FOREVER;
                    batch->ValuesAt(grid[g].t, at.data(), ys.data(), int(at.size()), bv,
                                    grid[g].lookup);
                    for (std::size_t k = 0; k < kind.size() && out.size() < 400000; ++k)
                        out.push_back(Sample{kind[k], Bits(ys[k])});
                }
                if ((++n & 63) == 0) {
                    // The other queries must hold up as well (their values are not checked).
                    float lo, hi, r0, r1, r2, r3;
                    curve->GetValueBounds(grid[g].t, lo, hi);
                    curve->CachedRoom(grid[g].t, 2, r0, r1, r2, r3);
                    (void)curve->SegmentValue(grid[g].t, 1, 0.3f, 1);
                    (void)curve->CacheValidity(grid[g].t);
                    (void)curve->LookupCount();
                }
            }
        });
    }

    Rng rng(77u);
    int undoable = 0;
    const int edits = evaltest::Scaled(600, 60);
    for (int e = 0; e < edits; ++e) {
        edit(*curve, rng, undoable);
        allowed.Record(*curve, grid);
        if (rng.Chance(0.3))
            std::this_thread::yield();
    }
    done.store(true, std::memory_order_release);
    for (std::thread& t : threads)
        t.join();

    long checked = 0, bad = 0;
    for (const std::vector<Sample>& out : samples) {
        for (const Sample& s : out) {
            ++checked;
            if (!allowed.Allowed(s.query, s.bits)) {
                if (bad++ < 5) {
                    const Query& q = grid[s.query];
                    INFO("t=", q.t, " x=", q.x, " lookup=", q.lookup, " bits=", s.bits);
                    CHECK(false);
                }
            }
        }
    }
    CHECK(bad == 0);
    CHECK(checked >= long(workers) * 2000);
    MESSAGE("checked ", checked, " values against ", edits, " edits");

    theHold.Reset();
    delete curve;
    delete owner;
}

TEST_CASE_FIXTURE(testsupport::CoreFixture,
                  "more evaluating threads than reader slots still evaluate and count") {
    CurveControl* owner = evaltest::MakeOwner(0.0f, 1.0f, -2.0f, 2.0f, CC_DEFAULT_FLAGS);
    Curve* curve = new Curve(owner, 0);
    curve->SetPointCount(3);
    evaltest::WriteKnot(*curve, 1, plainKnot(0.5f, 1.0f));
    Interval valid = FOREVER;
    const uint32_t want = Bits(curve->ValueAt(0, 0.3f, valid, TRUE));
    const long before = curve->LookupCount();

    // Every thread stays alive until all have evaluated, so the last ones find every slot
    // taken and evaluate under the lock.
    const int count = curve_eval::EvalCache::kMaxReaderSlots + 8;
    std::atomic<int> evaluated{0};
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < count; ++i) {
        threads.emplace_back([&] {
            Interval v = FOREVER;
            if (Bits(curve->ValueAt(0, 0.3f, v, TRUE)) != want)
                ++wrong;
            ++evaluated;
            while (evaluated.load() < count)
                std::this_thread::yield();
        });
    }
    for (std::thread& t : threads)
        t.join();
    CHECK(wrong.load() == 0);
    CHECK(curve->LookupCount() == before + count); // one cache test each
    delete curve;
    delete owner;
}

TEST_CASE_FIXTURE(testsupport::CoreFixture, "threads that end give their reader slot back") {
    CurveControl* owner = evaltest::MakeOwner(0.0f, 1.0f, -2.0f, 2.0f, CC_DEFAULT_FLAGS);
    Curve* curve = new Curve(owner, 0);
    curve->SetPointCount(2);
    // Many more threads than slots, one after the other: each still finds a slot.
    int withoutSlot = 0;
    for (int i = 0; i < 2 * curve_eval::EvalCache::kMaxReaderSlots + 10; ++i) {
        std::thread t([&] {
            Interval valid = FOREVER;
            curve->ValueAt(0, 0.5f, valid, TRUE);
            if (curve_eval::tReaderSlot < 0)
                ++withoutSlot;
        });
        t.join();
    }
    CHECK(withoutSlot == 0);
    delete curve;
    delete owner;
}
