// Batch evaluation (ICurveBatch::ValuesAt and ValuesAtStrided) against ValueAt, bit for
// bit, on every code path this processor has (SSE2 always; AVX2 and AVX-512 where present,
// under Wine too): thousands of random curves (points in and out of order, cyclic curves,
// animated points, free end points, the y range enforced or not, both end behaviours,
// lookup sizes from below 1 to beyond the largest built, ranges that do not start at 0 and
// of zero width), x inside, at and outside the range, at points and at table positions,
// NaN and infinite, at every stride. `valid` must come out as the single calls leave it,
// and the evaluation counter must advance as they advance it. The seed is fixed; a failure
// names the path, the curve and the query.
#include "curve/curve_batch.h"
#include "curve_eval_test_util.h"
#include "test_support.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

using curve_batch::Path;
using evaltest::Bits;
using evaltest::Rng;

namespace {

const TimeValue kKeyTimes[] = {0, 160, 320, 480};
const float kNaN = std::numeric_limits<float>::quiet_NaN();
const float kInf = std::numeric_limits<float>::infinity();

/// Every path this processor runs, narrowest first.
std::vector<Path> PathsHere() {
    std::vector<Path> paths;
    for (int p = 0; p <= int(curve_batch::WidestPath()); ++p)
        paths.push_back(Path(p));
    return paths;
}

/// Batch calls take path p while this lives.
struct ForcedPath {
    explicit ForcedPath(Path p) : path(curve_batch::ForceBatchPath(p)) {}
    ~ForcedPath() { curve_batch::ReleaseBatchPath(); }
    Path path;
};

ICurveBatch* BatchOf(Curve& c) {
    return static_cast<ICurveBatch*>(c.GetInterface(I_CURVE_BATCH_INTERFACE));
}

struct RandomCurve {
    CurveControl* owner = nullptr; // owned; null for a curve evaluated without owner
    Curve* curve = nullptr;        // owned
    float xlo = 0.0f, xhi = 1.0f, ylo = 0.0f, yhi = 1.0f;
    ~RandomCurve() {
        delete curve;
        delete owner;
    }
};

int pickLookupSize(Rng& rng) {
    const double p = rng.Unit();
    if (p < 0.04)
        return rng.Int(-3, 0); // no table: exact values
    if (p < 0.06)
        return INT_MAX; // beyond the largest table built: exact values
    if (p < 0.4)
        return rng.Int(1, 12);
    if (p < 0.85)
        return rng.Int(13, 300);
    return rng.Int(301, 5000);
}

float pickTangent(Rng& rng, float scale) {
    const double p = rng.Unit();
    if (p < 0.15)
        return 0.0f;
    if (p < 0.2)
        return 0.00005f * (rng.Chance(0.5) ? 1.0f : -1.0f); // under the 0.0001 reach
    return rng.Uniform(-scale, scale);
}

void fillCurve(Rng& rng, RandomCurve& rc) {
    if (!rng.Chance(0.05)) {
        rc.xlo = rng.Chance(0.4) ? 0.0f : rng.Uniform(-50.0f, 50.0f);
        const float w = rng.Chance(0.02) ? 0.0f : rng.Uniform(0.01f, 100.0f);
        rc.xhi = rc.xlo + w;
        rc.ylo = rng.Uniform(-10.0f, 0.0f);
        rc.yhi = rc.ylo + rng.Uniform(0.1f, 20.0f);
        const DWORD flags =
            rng.Chance(0.5) ? CC_DEFAULT_FLAGS : (CC_DEFAULT_FLAGS & ~CC_CONSTRAIN_Y);
        rc.owner = evaltest::MakeOwner(rc.xlo, rc.xhi, rc.ylo, rc.yhi, flags);
    }
    rc.curve = new Curve(rc.owner, 0);
    Curve& c = *rc.curve;
    const double sizeKind = rng.Unit();
    // Up to 32 points count their way to the segment, more search; beyond 65 points the
    // segment table no longer fits the stack.
    const int n = sizeKind < 0.04   ? 0
                  : sizeKind < 0.08 ? 1
                  : sizeKind < 0.85 ? rng.Int(2, 12)
                  : sizeKind < 0.95 ? rng.Int(13, 70)
                                    : rng.Int(71, 200);
    c.SetPointCount(n);
    if (rng.Chance(0.15))
        c.SetCurveFlags(c.CurveFlags() | 0x1); // cyclic
    if (rng.Chance(0.5))
        c.SetEndBehaviour(1);
    c.SetLookupSize(pickLookupSize(rng));

    const float w = rc.xhi - rc.xlo;
    const float span = w > 0.0f ? w : 1.0f;
    const float h = rc.yhi - rc.ylo;
    const bool ordered = rng.Chance(0.75);
    float x = rc.xlo - 0.1f * span;
    static const uint32_t types[] = {KNOT_TYPE_CORNER, KNOT_TYPE_BEZIER_SMOOTH,
                                     KNOT_TYPE_BEZIER_CORNER, 0};
    for (int i = 0; i < n; ++i) {
        CurveKnot k;
        if (ordered) {
            // Occasional equal neighbours: the first segment that holds x must win.
            x += rng.Chance(0.1) ? 0.0f : rng.Uniform(0.0f, 1.4f * span / float(n));
            k.pos.x = x;
        } else {
            k.pos.x = rng.Uniform(rc.xlo - 0.2f * span, rc.xhi + 0.2f * span);
        }
        k.pos.y = rng.Uniform(rc.ylo - 0.5f * h, rc.yhi + 0.5f * h);
        const float tanScale = 0.6f * span / float(n > 1 ? n - 1 : 1);
        k.inTan = Point2(pickTangent(rng, tanScale), pickTangent(rng, h));
        k.outTan = Point2(pickTangent(rng, tanScale), pickTangent(rng, h));
        k.flags = types[rng.Int(0, 3)];
        if ((i == 0 || i == n - 1) && rng.Chance(0.25))
            k.flags |= KNOT_FREE_END_X;
        if (i == 0 || i == n - 1)
            k.flags |= KNOT_ENDPOINT;
        evaltest::WriteKnot(c, i, k);
    }
    for (int i = 0; i < n; ++i) {
        if (!rng.Chance(0.2))
            continue;
        const int keys = rng.Int(1, 4);
        TimeValue times[4];
        Point2 values[4];
        for (int k = 0; k < keys; ++k) {
            times[k] = kKeyTimes[k];
            values[k] = Point2(rng.Uniform(rc.xlo - 0.1f * span, rc.xhi + 0.1f * span),
                               rng.Uniform(rc.ylo - 0.3f * h, rc.yhi + 0.3f * h));
        }
        evaltest::AnimatePoint(c, i, times, values, keys);
    }
}

TimeValue pickTime(Rng& rng) {
    const double p = rng.Unit();
    if (p < 0.4)
        return kKeyTimes[rng.Int(0, 3)];
    if (p < 0.8)
        return rng.Int(-50, 530);
    return 77;
}

float pickX(Rng& rng, RandomCurve& rc, TimeValue t) {
    const float w = rc.xhi - rc.xlo;
    const float span = w > 0.0f ? w : 1.0f;
    Curve& c = *rc.curve;
    const double p = rng.Unit();
    if (p < 0.5)
        return rng.Uniform(rc.xlo, rc.xhi);
    if (p < 0.55)
        return rc.xlo;
    if (p < 0.6)
        return rc.xhi;
    if (p < 0.63)
        return std::nextafter(rng.Chance(0.5) ? rc.xlo : rc.xhi, rng.Chance(0.5) ? kInf : -kInf);
    if (p < 0.7 && c.PointCount() > 0) // a resolved point: an exact hit of a segment end
        return c.CachedPosition(t, rng.Int(0, c.PointCount() - 1)).x;
    if (p < 0.75 && c.GetLookupSize() > 0 && c.GetLookupSize() < 100000) {
        // A table position, where the index changes
        const int size = c.GetLookupSize();
        const int e = rng.Int(0, size);
        return rc.xlo + float(e) * (w / float(size - 1 > 0 ? size - 1 : 1));
    }
    if (p < 0.83)
        return rng.Uniform(rc.xhi, rc.xhi + span);
    if (p < 0.91)
        return rng.Uniform(rc.xlo - span, rc.xlo);
    if (p < 0.95)
        return kNaN;
    if (p < 0.98)
        return rng.Chance(0.5) ? kInf : -kInf;
    return rng.Uniform(-1e30f, 1e30f);
}

int pickStride(Rng& rng) {
    static const int strides[] = {4, 4, 4, 8, 12, 16, -4, -12, 20};
    return strides[rng.Int(0, 8)];
}

/// Floats of the buffers' unused places: a NaN payload no evaluation produces.
constexpr uint32_t kUntouched = 0x7FC0DEADu;

/// A buffer of n floats at a byte stride, with every other place holding kUntouched.
class StridedBuffer {
public:
    StridedBuffer(int n, int stride) : n_(n), stride_(stride) {
        const std::size_t step = std::size_t(stride < 0 ? -stride : stride) / sizeof(float);
        places_.assign(std::size_t(n > 0 ? n : 1) * step + 1, kUntouched);
        first_ = stride < 0 ? (std::size_t(n > 0 ? n - 1 : 0)) * step : 0;
    }
    float* Base() { return reinterpret_cast<float*>(places_.data() + first_); }
    std::size_t Place(int i) const {
        return std::size_t(std::ptrdiff_t(first_) + std::ptrdiff_t(i) * stride_ / 4);
    }
    uint32_t Bits(int i) const { return places_[Place(i)]; }
    void Set(int i, float v) { std::memcpy(&places_[Place(i)], &v, sizeof v); }
    /// Whether every place that is not one of the n values still holds kUntouched.
    bool OthersUntouched() const {
        std::vector<bool> used(places_.size(), false);
        for (int i = 0; i < n_; ++i)
            used[Place(i)] = true;
        for (std::size_t k = 0; k < places_.size(); ++k)
            if (!used[k] && places_[k] != kUntouched)
                return false;
        return true;
    }

private:
    int n_;
    int stride_;
    std::vector<uint32_t> places_;
    std::size_t first_ = 0;
};

/// One batch call against the same n calls of ValueAt. With `batchFirst` the cache is
/// dropped and the batch call goes first, so that it rebuilds the state and builds the
/// table; else the single calls warm the cache and both must count alike.
void checkBatch(RandomCurve& rc, TimeValue t, const std::vector<float>& xs, BOOL lookup,
                int xStride, int yStride, bool batchFirst, const std::string& where) {
    Curve& c = *rc.curve;
    const int n = int(xs.size());
    StridedBuffer in(n, xStride), out(n, yStride);
    for (int i = 0; i < n; ++i)
        in.Set(i, xs[i]);

    Interval batchValid(-1000, 1000);
    int result = 0;
    long batchCount = 0;
    auto runBatch = [&] {
        const long before = c.LookupCount();
        result = BatchOf(c)->ValuesAtStrided(t, in.Base(), xStride, out.Base(), yStride, n,
                                             batchValid, lookup);
        batchCount = c.LookupCount() - before;
    };
    if (batchFirst) {
        c.InvalidateCache();
        runBatch();
    }
    Interval valid(-1000, 1000);
    std::vector<uint32_t> want(xs.size());
    long singleCount = 0;
    // Twice: the first round may rebuild the cache and the table, the second is counted.
    for (int round = 0; round < 2; ++round) {
        const long before = c.LookupCount();
        valid = Interval(-1000, 1000);
        for (int i = 0; i < n; ++i)
            want[std::size_t(i)] = Bits(c.ValueAt(t, xs[std::size_t(i)], valid, lookup));
        singleCount = c.LookupCount() - before;
    }
    if (!batchFirst)
        runBatch();

    INFO(where, " t=", t, " n=", n, " lookup=", lookup, " strides ", xStride, "/", yStride,
         " points=", c.PointCount(), " size=", c.GetLookupSize(), " ordered x range ", rc.xlo,
         " .. ", rc.xhi, " batch first ", batchFirst);
    REQUIRE(result == n);
    for (int i = 0; i < n; ++i) {
        if (out.Bits(i) != want[std::size_t(i)]) {
            INFO("value ", i, " x=", xs[std::size_t(i)], " got bits ", out.Bits(i), " want ",
                 want[std::size_t(i)]);
            REQUIRE(out.Bits(i) == want[std::size_t(i)]);
        }
    }
    CHECK(out.OthersUntouched());
    CHECK(batchValid == valid);
    if (!batchFirst)
        CHECK(batchCount == singleCount);
}

} // namespace

TEST_CASE_FIXTURE(testsupport::CoreFixture,
                  "batch values equal ValueAt bit for bit on every path, on random curves") {
    const std::vector<Path> paths = PathsHere();
    MESSAGE("widest batch path here: ",
            std::string(curve_batch::PathName(curve_batch::WidestPath())));
    Rng rng(0xBA7C4u);
    const int curves = evaltest::Scaled(2000, 60);
    for (int number = 0; number < curves; ++number) {
        RandomCurve rc;
        fillCurve(rng, rc);
        const int queries = rng.Int(4, 12);
        for (int q = 0; q < queries; ++q) {
            const TimeValue t = pickTime(rng);
            const int n = rng.Chance(0.05) ? rng.Int(500, 1500) : rng.Int(0, 70);
            std::vector<float> xs(static_cast<std::size_t>(n));
            for (float& x : xs)
                x = pickX(rng, rc, t);
            const BOOL lookup = rng.Chance(0.6) ? TRUE : FALSE;
            const int xStride = pickStride(rng), yStride = pickStride(rng);
            const bool batchFirst = rng.Chance(0.3);
            for (Path p : paths) {
                ForcedPath forced(p);
                REQUIRE(forced.path == p);
                checkBatch(rc, t, xs, lookup, xStride, yStride, batchFirst,
                           std::string(curve_batch::PathName(p)) + " curve " +
                               std::to_string(number) + " query " + std::to_string(q));
            }
            if (rng.Chance(0.15))
                rc.curve->SetEndBehaviour(rc.curve->GetEndBehaviour() ? 0 : 1);
        }
    }
}

namespace {

/// An owner with the range 0 .. 1 and a curve of three points through (0, 0), (0.5, 0.8)
/// and (1, 1).
struct SmallCurve {
    SmallCurve() : owner(evaltest::MakeOwner(0.0f, 1.0f, 0.0f, 1.0f, CC_DEFAULT_FLAGS)) {
        curve = new Curve(owner, 0);
        curve->SetPointCount(3);
        evaltest::WriteKnot(*curve, 1,
                            CurveKnot(Point2(0.5f, 0.8f), Point2(-0.1f, 0.0f), Point2(0.1f, 0.0f),
                                      KNOT_TYPE_BEZIER_SMOOTH));
        evaltest::WriteKnot(*curve, 2,
                            CurveKnot(Point2(1.0f, 1.0f), Point2(0.0f, 0.0f), Point2(0.0f, 0.0f),
                                      KNOT_TYPE_CORNER | KNOT_ENDPOINT));
    }
    ~SmallCurve() {
        delete curve;
        delete owner;
    }
    CurveControl* owner; // owned
    Curve* curve;        // owned
};

} // namespace

TEST_CASE_FIXTURE(testsupport::CoreFixture, "a curve answers the batch interface under its id") {
    SmallCurve sc;
    void* p = sc.curve->GetInterface(I_CURVE_BATCH_INTERFACE);
    REQUIRE(p != nullptr);
    CHECK(p == static_cast<ICurveBatch*>(sc.curve));
    // The curve's own interface is unchanged by it.
    CHECK(sc.curve->GetInterface(I_CURVE_INTERFACE) == static_cast<void*>(sc.curve));
}

TEST_CASE_FIXTURE(testsupport::CoreFixture, "bad batch arguments are refused and change nothing") {
    SmallCurve sc;
    ICurveBatch* b = BatchOf(*sc.curve);
    float xs[4] = {0.1f, 0.2f, 0.3f, 0.4f};
    float ys[4] = {7.0f, 7.0f, 7.0f, 7.0f};
    const Interval before(-5, 5);
    for (Path p : PathsHere()) {
        ForcedPath forced(p);
        Interval valid = before;
        const long count = sc.curve->LookupCount();
        CHECK(b->ValuesAt(0, xs, ys, -1, valid) == CURVE_BATCH_BAD_COUNT);
        CHECK(b->ValuesAt(0, nullptr, ys, 4, valid) == CURVE_BATCH_NULL_BUFFER);
        CHECK(b->ValuesAt(0, xs, nullptr, 4, valid) == CURVE_BATCH_NULL_BUFFER);
        CHECK(b->ValuesAtStrided(0, xs, -4, ys, 4, INT_MIN, valid) == CURVE_BATCH_BAD_COUNT);
        for (int stride : {0, 1, 2, 3, 5, 6, 7, -1, -2, -6, INT_MIN + 2})
            CHECK(b->ValuesAtStrided(0, xs, stride, ys, 4, 4, valid) == CURVE_BATCH_BAD_STRIDE);
        CHECK(b->ValuesAtStrided(0, xs, 4, ys, 0, 4, valid) == CURVE_BATCH_BAD_STRIDE);
        CHECK(b->ValuesAtStrided(0, xs, 4, ys, 3, 4, valid) == CURVE_BATCH_BAD_STRIDE);
        // Nothing to do: 0, whatever the buffers.
        CHECK(b->ValuesAt(0, nullptr, nullptr, 0, valid) == 0);
        CHECK(b->ValuesAtStrided(0, nullptr, 4, nullptr, 8, 0, valid) == 0);
        CHECK(valid == before);
        for (float y : ys)
            CHECK(y == 7.0f);
        CHECK(sc.curve->LookupCount() == count); // nothing evaluated
    }
}

TEST_CASE_FIXTURE(testsupport::CoreFixture, "a batch evaluates in place and at wide strides") {
    SmallCurve sc;
    ICurveBatch* b = BatchOf(*sc.curve);
    Rng rng(5u);
    for (Path p : PathsHere()) {
        ForcedPath forced(p);
        for (BOOL lookup : {FALSE, TRUE}) {
            // In place, contiguous and interleaved (every third float, as one channel of RGB).
            for (int stride : {4, 12, -8}) {
                const int n = 101;
                StridedBuffer buf(n, stride);
                std::vector<uint32_t> want(n);
                for (int i = 0; i < n; ++i) {
                    const float x = rng.Uniform(-0.5f, 1.5f);
                    buf.Set(i, x);
                    Interval v = FOREVER;
                    want[std::size_t(i)] = Bits(sc.curve->ValueAt(0, x, v, lookup));
                }
                Interval valid = FOREVER;
                REQUIRE(b->ValuesAtStrided(0, buf.Base(), stride, buf.Base(), stride, n, valid,
                                           lookup) == n);
                for (int i = 0; i < n; ++i)
                    CHECK(buf.Bits(i) == want[std::size_t(i)]);
                CHECK(buf.OthersUntouched());
            }
            // Values more than a megabyte apart are read and written one by one.
            const int wide = (1 << 20) + 16, n = 19;
            StridedBuffer in(n, wide), out(n, wide);
            std::vector<uint32_t> want(n);
            for (int i = 0; i < n; ++i) {
                const float x = rng.Uniform(-0.5f, 1.5f);
                in.Set(i, x);
                Interval v = FOREVER;
                want[std::size_t(i)] = Bits(sc.curve->ValueAt(0, x, v, lookup));
            }
            Interval valid = FOREVER;
            REQUIRE(b->ValuesAtStrided(0, in.Base(), wide, out.Base(), wide, n, valid, lookup) ==
                    n);
            for (int i = 0; i < n; ++i)
                CHECK(out.Bits(i) == want[std::size_t(i)]);
        }
    }
}

TEST_CASE_FIXTURE(testsupport::CoreFixture,
                  "a batch builds the lookup table exactly when single calls would") {
    // Entries no segment reaches keep what the previous table of the size held, so a table
    // built when ValueAt would not have built one could change later values.
    for (Path p : PathsHere()) {
        ForcedPath forced(p);
        SmallCurve batchSide, singleSide;
        const float outside[] = {-1.0f, 2.0f, -0.5f, 1.5f, 3.0f};
        Interval v1 = FOREVER, v2 = FOREVER;
        float ys[5];
        const long b0 = batchSide.curve->LookupCount(), s0 = singleSide.curve->LookupCount();
        REQUIRE(BatchOf(*batchSide.curve)->ValuesAt(0, outside, ys, 5, v1, TRUE) == 5);
        for (float x : outside)
            singleSide.curve->ValueAt(0, x, v2, TRUE);
        CHECK(batchSide.curve->LookupCount() - b0 == singleSide.curve->LookupCount() - s0);
        // One x inside (a NaN counts as inside): now both build it, and count its entries.
        const float withNaN[] = {-1.0f, kNaN};
        REQUIRE(BatchOf(*batchSide.curve)->ValuesAt(0, withNaN, ys, 2, v1, TRUE) == 2);
        for (float x : withNaN)
            singleSide.curve->ValueAt(0, x, v2, TRUE);
        CHECK(batchSide.curve->LookupCount() - b0 == singleSide.curve->LookupCount() - s0);
        CHECK(batchSide.curve->LookupCount() - b0 > 1000); // the 1001 entries were solved
    }
}

TEST_CASE_FIXTURE(testsupport::CoreFixture, "each batch path can be forced, and only if present") {
    const Path widest = curve_batch::WidestPath();
    for (int i = 0; i < curve_batch::kPathCount; ++i) {
        const Path wanted = Path(i);
        const Path got = curve_batch::ForceBatchPath(wanted);
        CHECK(int(got) == std::min(i, int(widest)));
        CHECK(curve_batch::ActivePath() == got);
        CHECK(std::string(curve_batch::ActiveKernels().name) == curve_batch::PathName(got));
        Path parsed;
        REQUIRE(curve_batch::PathFromName(curve_batch::PathName(wanted), parsed));
        CHECK(parsed == wanted);
    }
    Path parsed = Path::Avx2;
    CHECK_FALSE(curve_batch::PathFromName("avx", parsed));
    CHECK_FALSE(curve_batch::PathFromName(nullptr, parsed));
    CHECK(parsed == Path::Avx2);
    curve_batch::ReleaseBatchPath();
}

namespace {

void SetPathVariable(const char* value) {
#if defined(_WIN32)
    _putenv_s("CURVECTL_BATCH_PATH", value ? value : "");
#else
    if (value)
        setenv("CURVECTL_BATCH_PATH", value, 1);
    else
        unsetenv("CURVECTL_BATCH_PATH");
#endif
}

} // namespace

TEST_CASE_FIXTURE(testsupport::CoreFixture, "CURVECTL_BATCH_PATH asks for a narrower path") {
    const char* old = std::getenv("CURVECTL_BATCH_PATH");
    const std::string saved = old ? old : "";
    SetPathVariable("sse2");
    curve_batch::ReleaseBatchPath();
    CHECK(curve_batch::ActivePath() == Path::Sse2);
    SetPathVariable("avx512"); // never wider than the processor
    curve_batch::ReleaseBatchPath();
    CHECK(curve_batch::ActivePath() == curve_batch::WidestPath());
    SetPathVariable("fastest"); // not a path: ignored
    curve_batch::ReleaseBatchPath();
    CHECK(curve_batch::ActivePath() == curve_batch::WidestPath());
    SetPathVariable(old ? saved.c_str() : nullptr);
    curve_batch::ReleaseBatchPath();
}
