// The common lookup case of ValueAt answers from a per-thread entry per curve lane
// (curve_eval_cache.h, QuickEntry). These tests drive that case where it could go wrong:
// many curves evaluated in turn (more curves than lanes, so lanes are shared), curves
// deleted and made again (likely at the same addresses), edits, new lookup sizes and
// x ranges changed without a rebuild, on one thread against the reference evaluator, and
// on several threads while the UI thread edits. Run it under ThreadSanitizer and
// AddressSanitizer as well; CURVECTL_TEST_SCALE scales its length.
#include "curve_eval_reference.h"
#include "curve_eval_test_util.h"
#include "test_support.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <atomic>
#include <limits>
#include <memory>
#include <thread>
#include <vector>

using evalref::ReferenceEvaluator;
using evaltest::Bits;
using evaltest::Rng;

namespace {

/// A curve of n points spread over the owner's x range in order, with random heights,
/// handles and point types.
void fillPoints(Rng& rng, Curve& c, int n, float xlo, float xhi) {
    c.SetPointCount(n);
    static const uint32_t types[] = {KNOT_TYPE_CORNER, KNOT_TYPE_BEZIER_SMOOTH,
                                     KNOT_TYPE_BEZIER_CORNER};
    const float dx = (xhi - xlo) / float(n - 1);
    for (int i = 0; i < n; ++i) {
        CurveKnot k;
        k.pos = Point2(xlo + dx * float(i), rng.Uniform(-1.0f, 1.0f));
        k.inTan = Point2(-rng.Uniform(0.0f, 0.4f) * dx, rng.Uniform(-0.5f, 0.5f));
        k.outTan = Point2(rng.Uniform(0.0f, 0.4f) * dx, rng.Uniform(-0.5f, 0.5f));
        k.flags = types[rng.Int(0, 2)] | (i == 0 || i == n - 1 ? KNOT_ENDPOINT : 0);
        evaltest::WriteKnot(c, i, k);
    }
}

/// Mostly inside the range (where the quick case answers), also at its ends, outside it
/// and not a number.
float pickX(Rng& rng, float xlo, float xhi) {
    const double p = rng.Unit();
    const float w = xhi - xlo;
    if (p < 0.8)
        return rng.Uniform(xlo, xhi);
    if (p < 0.84)
        return xlo;
    if (p < 0.88)
        return xhi;
    if (p < 0.99)
        return rng.Uniform(xlo - 0.5f * w, xhi + 0.5f * w);
    return std::numeric_limits<float>::quiet_NaN();
}

struct CurveUnderTest {
    Curve* curve = nullptr;                  // owned
    std::unique_ptr<ReferenceEvaluator> ref; // reads `curve`
};

} // namespace

TEST_CASE_FIXTURE(testsupport::CoreFixture,
                  "curves evaluated in turn, more than there are lanes, answer as each alone") {
    Rng rng(0x1A7E5u);
    float xlo = 0.0f, xhi = 1.0f;
    CurveControl* owner = evaltest::MakeOwner(xlo, xhi, -2.0f, 2.0f, CC_DEFAULT_FLAGS);
    const int count = 2 * int(curve_eval::kQuickLanes) + 1;
    std::vector<CurveUnderTest> curves(count);
    auto make = [&](CurveUnderTest& c, int tag) {
        delete c.curve;
        c.curve = new Curve(owner, tag);
        fillPoints(rng, *c.curve, rng.Int(2, 9), xlo, xhi);
        c.ref = std::make_unique<ReferenceEvaluator>(*c.curve);
    };
    for (int i = 0; i < count; ++i)
        make(curves[i], i);

    const int queries = evaltest::Scaled(200000, 5000);
    for (int q = 0; q < queries; ++q) {
        // Mostly in turn (each lane shared by two or three curves), sometimes at random.
        const int k = rng.Chance(0.8) ? q % count : rng.Int(0, count - 1);
        CurveUnderTest& c = curves[k];
        const float x = pickX(rng, xlo, xhi);
        const BOOL lookup = rng.Chance(0.9) ? TRUE : FALSE;
        Interval valid = FOREVER, refValid = FOREVER;
        const long before = c.curve->LookupCount(), refBefore = c.ref->LookupCount();
        const float got = c.curve->ValueAt(0, x, valid, lookup);
        const float want = c.ref->ValueAt(0, x, refValid, lookup);
        INFO("query ", q, " curve ", k, " x=", x, " lookup=", lookup, " got=", got, " want=", want);
        REQUIRE(Bits(got) == Bits(want));
        REQUIRE(valid == refValid);
        REQUIRE(c.curve->LookupCount() - before == c.ref->LookupCount() - refBefore);

        const double p = rng.Unit();
        if (p < 0.01) {
            // A new height for one point: a rebuild, a new state, a new table.
            const int i = rng.Int(0, c.curve->PointCount() - 1);
            CurveKnot knot = c.curve->Knots()[i];
            knot.pos.y = rng.Uniform(-1.0f, 1.0f);
            evaltest::WriteKnot(*c.curve, i, knot);
            c.ref->InvalidateCache();
        } else if (p < 0.014) {
            static const int sizes[] = {0, 1, 2, 7, 100, 1000};
            const int size = sizes[rng.Int(0, 5)];
            if (size != c.curve->GetLookupSize()) {
                c.curve->SetLookupSize(size);
                c.ref->FreshLookupTable();
            }
        } else if (p < 0.018) {
            // Deleted and made again, quite likely at the address the old one had.
            make(c, k);
        } else if (p < 0.02) {
            // Without rescaling, the curves keep their caches and tables: the table's
            // index now starts from the new x low, and may fall outside the table.
            xlo = rng.Uniform(-0.3f, 0.3f);
            xhi = xlo + rng.Uniform(0.5f, 1.5f);
            owner->SetXRange(xlo, xhi, FALSE);
        } else if (p < 0.022) {
            c.curve->InvalidateCache();
            c.ref->InvalidateCache();
        }
    }

    // The quick case was there to be taken: some of this thread's entries hold a table.
    int filled = 0;
    for (const curve_eval::QuickEntry& e : curve_eval::tQuickEntries)
        filled += e.serial != 0 ? 1 : 0;
    CHECK(filled > 0);

    for (CurveUnderTest& c : curves) {
        c.ref.reset();
        delete c.curve;
    }
    delete owner;
}

TEST_CASE_FIXTURE(testsupport::CoreFixture,
                  "threads on the quick path while the UI thread edits see only values the "
                  "curves had, and every evaluation counts") {
    CurveControl* owner = evaltest::MakeOwner(0.0f, 1.0f, -2.0f, 2.0f, CC_DEFAULT_FLAGS);
    const int curveCount = int(curve_eval::kQuickLanes) + 1; // two curves share a lane
    Rng rng(0x7A1Eu);
    std::vector<Curve*> curves;
    for (int i = 0; i < curveCount; ++i) {
        curves.push_back(new Curve(owner, i));
        curves.back()->SetLookupSize(i % 2 ? 1000 : 64);
        fillPoints(rng, *curves.back(), 5, 0.0f, 1.0f);
    }

    // Queries: x on a grid inside the range, most with lookup. Points keep their x, so
    // every table entry up to the last interval is solved and depends only on the state
    // it belongs to; the last interval may hold an entry beyond x high, which keeps what
    // an earlier table held, so x high itself is asked without lookup.
    struct Query {
        int curve;
        float x;
        BOOL lookup;
    };
    std::vector<Query> grid;
    for (int c = 0; c < curveCount; ++c)
        for (int k = 0; k <= 16; ++k)
            grid.push_back(Query{c, float(k) / 16.0f, k % 4 == 3 || k == 16 ? FALSE : TRUE});
    std::vector<std::vector<uint32_t>> allowed(grid.size());
    auto record = [&] {
        for (std::size_t g = 0; g < grid.size(); ++g) {
            Interval valid = FOREVER;
            const uint32_t v =
                Bits(curves[grid[g].curve]->ValueAt(0, grid[g].x, valid, grid[g].lookup));
            if (std::find(allowed[g].begin(), allowed[g].end(), v) == allowed[g].end())
                allowed[g].push_back(v);
        }
    };
    record();

    // Counts before the workers start; the UI thread's own evaluations are added up apart.
    long countsBefore = 0;
    for (Curve* c : curves)
        countsBefore += c->LookupCount();

    struct Sample {
        uint32_t query;
        uint32_t bits;
    };
    const int workers = 3;
    std::atomic<bool> done{false};
    std::vector<std::vector<Sample>> samples(workers);
    std::vector<long> evaluations(workers, 0);
    std::vector<std::thread> threads;
    for (int w = 0; w < workers; ++w) {
        threads.emplace_back([&, w] {
            Rng wrng(500u + unsigned(w));
            long n = 0;
            while (!done.load(std::memory_order_acquire) || n < 5000) {
                const uint32_t g = uint32_t(wrng.Int(0, int(grid.size()) - 1));
                Interval valid = FOREVER;
                const float v = curves[grid[g].curve]->ValueAt(0, grid[g].x, valid, grid[g].lookup);
                if (samples[w].size() < 300000)
                    samples[w].push_back(Sample{g, Bits(v)});
                ++n;
            }
            evaluations[w] = n;
        });
    }

    // The UI thread: new heights and handles, plain rebuilds, and the grid after each.
    long uiEvaluations = 0;
    const int edits = evaltest::Scaled(400, 40);
    for (int e = 0; e < edits; ++e) {
        Curve& c = *curves[rng.Int(0, curveCount - 1)];
        if (rng.Chance(0.8)) {
            const int i = rng.Int(0, c.PointCount() - 1);
            CurveKnot k = c.Knots()[i];
            k.pos.y = rng.Uniform(-1.0f, 1.0f);
            k.outTan.y = rng.Uniform(-0.5f, 0.5f);
            evaltest::WriteKnot(c, i, k);
        } else {
            c.InvalidateCache();
        }
        record();
        uiEvaluations += long(grid.size());
        if (rng.Chance(0.3))
            std::this_thread::yield();
    }
    done.store(true, std::memory_order_release);
    for (std::thread& t : threads)
        t.join();

    long bad = 0, checked = 0;
    for (const std::vector<Sample>& out : samples) {
        for (const Sample& s : out) {
            ++checked;
            const std::vector<uint32_t>& ok = allowed[s.query];
            if (std::find(ok.begin(), ok.end(), s.bits) == ok.end() && bad++ < 5) {
                INFO("curve ", grid[s.query].curve, " x=", grid[s.query].x,
                     " lookup=", grid[s.query].lookup, " bits=", s.bits);
                CHECK(false);
            }
        }
    }
    CHECK(bad == 0);
    CHECK(checked >= long(workers) * 5000);

    // Each evaluation counts at least once (a cache test); rebuilds and table entries add
    // more, so the sum can only be larger.
    long countsAfter = 0, workerEvaluations = 0;
    for (Curve* c : curves)
        countsAfter += c->LookupCount();
    for (long n : evaluations)
        workerEvaluations += n;
    CHECK(countsAfter - countsBefore >= workerEvaluations + uiEvaluations);
    MESSAGE("checked ", checked, " values against ", edits, " edits");

    for (Curve* c : curves)
        delete c;
    delete owner;
}
