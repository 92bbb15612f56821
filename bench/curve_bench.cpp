// Curve evaluation benchmarks. Prints one JSON object per line:
//   {"name": ..., "ns_per_op": ..., "ratio": ...}
// where ratio is the product's time over a bare kernel measured in the same run (or, for
// valueat_lookup_2t, the throughput of two threads over one; for memory, the bytes per
// point over those of the description's literal layout).
//
//   valueat_lookup_1t   ValueAt with lookup, warm cache, one thread; kernel: a bare table
//                       interpolation (target ratio <= 1.3)
//   valueat_lookup_2t   the same on two threads at once (target >= 1.8)
//   valueat_exact_10pts ValueAt without lookup on a 10-point curve; kernel: a bare 20-step
//                       bisection of one segment (target <= 1.25)
//   cache_rebuild_10k   invalidate and rebuild a 10,000-point curve (target well under
//                       5 ms); kernel: one pass resolving positions and handles
//   build_lookup_1000   a 1001-entry table of a 100-point curve; kernel: 1001 bare
//                       bisections (target <= 1.3)
//   memory              bytes per point of a 1000-point curve with its cache and table
//
// Batch evaluation (ICurveBatch); these rows also name the code path that ran them:
//   valuesat_lookup_batch   ValuesAt of 4,096 random x a call with lookup, warm cache, on
//                           the path in force; ratio: time per value over ValueAt's with
//                           lookup on the same curve and x, measured in turn (target <= 0.15)
//   valuesat_exact_batch    the same without lookup, over ValueAt's exact (target <= 0.25)
//   ..._sse2, _avx2, _avx512  the same rows on each path (the processor's widest path
//                           stands in for one it lacks)
//   valuesat_lookup_batch_2t  two threads at once, throughput over one (target >= 1.9)
//   picture_1080p_rgb_1t, _2t  the sample client's frame: a drawn 1920 x 1080 picture of RGB
//                           floats through three curves (a strided batch call per row and
//                           channel) into 8-bit pixels; ns_per_op is per frame, and ratio the
//                           time over the target (2.5 ms on one thread, 1.5 ms on two)
//   picture_1080p_rgb_noise_1t  the same with a picture of random values
//
// Times are the measuring thread's own CPU time (natively; see threadCpuNs), so that other
// programs sharing the machine do not count; each measurement is repeated and the fastest
// repetition kept. The two-thread figure assumes each thread has a core of its own: it is
// twice the one-thread CPU time per value over each thread's CPU time per value while
// both run, so what it shows is the cost of the threads' sharing (cache lines that bounce
// between cores, locks), not the machine's load. CURVECTL_BENCH_SCALE scales the
// iteration counts (default 1).
#include "control/curve_control.h"
#include "curve/curve.h"
#include "curve/curve_batch.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include <emmintrin.h>
#include <malloc.h>
#if defined(_WIN32)
#define WIN32_LEAN_AND_MEAN
#include <windows.h>
#else
#include <time.h>
#endif

// The kernels sit behind a call the compiler may not look through, as the product sits
// behind ValueAt's call into another file. With only `noinline`, GCC still sees which
// registers a kernel in this file leaves alone and keeps the loop's sum in one of them
// across the call, a saving no call into another file can have; the ratios would then
// measure the calling convention rather than the evaluation.
#if defined(__GNUC__) && !defined(__clang__)
#define BENCH_NOINLINE __attribute__((noinline, noipa))
#else
#define BENCH_NOINLINE __attribute__((noinline))
#endif

namespace {

/// CPU time of the calling thread, in nanoseconds. Windows' thread times advance in
/// scheduler ticks (about 15 ms, and coarser still under Wine), far too coarse for these
/// runs: there the wall clock is used instead, so keep such a machine otherwise idle.
double threadCpuNs() {
#if defined(_WIN32)
    LARGE_INTEGER now, freq;
    QueryPerformanceCounter(&now);
    QueryPerformanceFrequency(&freq);
    return double(now.QuadPart) * 1e9 / double(freq.QuadPart);
#else
    timespec ts;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &ts);
    return double(ts.tv_sec) * 1e9 + double(ts.tv_nsec);
#endif
}

double scale() {
    const char* s = std::getenv("CURVECTL_BENCH_SCALE");
    const double v = s ? std::atof(s) : 1.0;
    return v > 0.0 ? v : 1.0;
}

long scaled(long n) { return std::max(1L, long(double(n) * scale())); }

volatile float gSink; // keeps results alive

/// Fastest of `reps` runs of f, in nanoseconds of this thread's CPU time.
template <class F> double fastest(int reps, F&& f) {
    double best = 1e300;
    for (int r = 0; r < reps; ++r) {
        const double t0 = threadCpuNs();
        f();
        best = std::min(best, threadCpuNs() - t0);
    }
    return best;
}

/// Fastest of `reps` runs each of a product and its kernel, run in turn (product, kernel,
/// product, ...), so that a slow spell of the machine (another program's load, a lower
/// clock) falls on both alike rather than on whichever was measured during it.
template <class P, class K> std::pair<double, double> fastestInTurn(int reps, P&& p, K&& k) {
    double bestP = 1e300, bestK = 1e300;
    for (int r = 0; r < reps; ++r) {
        bestP = std::min(bestP, fastest(1, p));
        bestK = std::min(bestK, fastest(1, k));
    }
    return {bestP, bestK};
}

void report(const char* name, double nsPerOp, double ratio) {
    std::printf("{\"name\": \"%s\", \"ns_per_op\": %.3f, \"ratio\": %.3f}\n", name, nsPerOp, ratio);
    std::fflush(stdout);
}

/// A row of the batch benchmarks: which code path ran it, and any extra field.
void reportPath(const char* name, double nsPerOp, double ratio, curve_batch::Path path,
                const char* extra = "") {
    std::printf("{\"name\": \"%s\", \"ns_per_op\": %.3f, \"ratio\": %.3f, \"path\": \"%s\"%s}\n",
                name, nsPerOp, ratio, curve_batch::PathName(path), extra);
    std::fflush(stdout);
}

/// Owner and curve: n points on a wave over the range 0 .. 1, Bezier handles a third of
/// the way to the neighbours.
struct BenchCurve {
    explicit BenchCurve(int n) : owner(new CurveControl), curve(new Curve(owner, 0)) {
        owner->SetXRange(0.0f, 1.0f, FALSE);
        owner->SetYRange(-2.0f, 2.0f);
        curve->SetPointCount(n);
        auto lock = curve->LockPointTable();
        const float dx = 1.0f / float(n - 1);
        for (int i = 0; i < n; ++i) {
            CurveKnot& k = curve->Knots()[i];
            k.pos = Point2(float(i) * dx, 0.5f * float((i * 7919) % 13) / 13.0f);
            k.inTan = Point2(-dx / 3.0f, 0.05f);
            k.outTan = Point2(dx / 3.0f, -0.05f);
            k.flags = KNOT_TYPE_BEZIER_CORNER | ((i == 0 || i == n - 1) ? KNOT_ENDPOINT : 0);
        }
        curve->InvalidateCache();
    }
    ~BenchCurve() {
        delete curve;
        delete owner;
    }
    CurveControl* owner; // owned
    Curve* curve;        // owned
};

/// Sample x arrays have this many entries (a power of two: loops wrap with a mask, not a
/// division, so the loop costs next to nothing in either measurement).
constexpr std::size_t kSamples = 4096;
constexpr std::size_t kSampleMask = kSamples - 1;

std::vector<float> randomXs(int n, float lo, float hi) {
    std::mt19937 gen(12345);
    std::vector<float> xs(n);
    for (float& x : xs)
        x = lo + (hi - lo) * float(gen() >> 8) / float(1 << 24);
    return xs;
}

// ---------------------------------------------------------------------------------------
// Bare kernels

struct BareTable {
    const float* v;
    float xlo, scale, step;
};

BENCH_NOINLINE float bareLookup(const BareTable& t, float x) {
    const int k = int((x - t.xlo) * t.scale);
    return t.v[k] + (t.v[k + 1] - t.v[k]) * (x - float(k) * t.step) / t.step;
}

inline float bez(const float* p, float u) {
    const float v = 1.0f - u;
    return ((p[0] * v + 3.0f * u * p[1]) * v + 3.0f * u * u * p[2]) * v + u * u * u * p[3];
}

BENCH_NOINLINE float bareBisect(const float* px, const float* py, float x) {
    float lo = 0.0f, hi = 1.0f, u = 0.0f;
    for (int n = 0; n < 20; ++n) {
        u = (lo + hi) * 0.5f;
        if (bez(px, u) >= x)
            hi = u;
        else
            lo = u;
    }
    return bez(py, u);
}

struct Rec {
    float px, py, ix, iy, ox, oy, r, l, up, down;
};

BENCH_NOINLINE void bareResolve(const CurveKnot* k, int n, Rec* out) {
    for (int i = 0; i < n; ++i) {
        out[i].px = k[i].pos.x;
        out[i].py = k[i].pos.y;
        out[i].ix = k[i].pos.x + k[i].inTan.x;
        out[i].iy = k[i].pos.y + k[i].inTan.y;
        out[i].ox = k[i].pos.x + k[i].outTan.x;
        out[i].oy = k[i].pos.y + k[i].outTan.y;
    }
}

// ---------------------------------------------------------------------------------------
// Benchmarks

float lookupLoop(ICurve* c, const std::vector<float>& xs, long ops) {
    float sum = 0.0f;
    Interval valid = FOREVER;
    for (long i = 0; i < ops; ++i)
        sum += c->ValueAt(0, xs[std::size_t(i) & kSampleMask], valid, TRUE);
    return sum;
}

void benchLookup() {
    BenchCurve bc(10);
    ICurve* c = bc.curve;
    const std::vector<float> xs = randomXs(int(kSamples), 0.0f, 1.0f);
    Interval valid = FOREVER;
    c->ValueAt(0, 0.5f, valid, TRUE); // warm: cache and table built

    // The kernel interpolates a table of the same size with the same arithmetic.
    std::vector<float> table(1001);
    for (int k = 0; k <= 1000; ++k)
        table[k] = c->ValueAt(0, float(k) / 1000.0f, valid, FALSE);
    const BareTable bt{table.data(), 0.0f, 999.0f, 0.001f};

    const long ops = scaled(10000000);
    const auto [product, kernel] = fastestInTurn(
        9, [&] { gSink = lookupLoop(c, xs, ops); },
        [&] {
            float sum = 0.0f;
            for (long i = 0; i < ops; ++i)
                sum += bareLookup(bt, xs[std::size_t(i) & kSampleMask]);
            gSink = sum;
        });
    report("valueat_lookup_1t", product / double(ops), product / kernel);

    // Two threads on the same curve at once, each timing its own CPU time.
    double twoPerOp = 1e300;
    for (int rep = 0; rep < 5; ++rep) {
        double cpu[2] = {0.0, 0.0};
        float sums[2] = {0.0f, 0.0f};
        auto work = [&](int k) {
            const double t0 = threadCpuNs();
            sums[k] = lookupLoop(c, xs, ops);
            cpu[k] = threadCpuNs() - t0;
        };
        std::thread a(work, 0), b(work, 1);
        a.join();
        b.join();
        gSink = sums[0] + sums[1];
        twoPerOp = std::min(twoPerOp, (cpu[0] + cpu[1]) / (2.0 * double(ops)));
    }
    const double onePerOp = product / double(ops);
    report("valueat_lookup_2t", twoPerOp, 2.0 * onePerOp / twoPerOp);
}

void benchExact() {
    BenchCurve bc(10);
    ICurve* c = bc.curve;
    const std::vector<float> xs = randomXs(int(kSamples), 0.0f, 1.0f);
    Interval valid = FOREVER;
    c->ValueAt(0, 0.5f, valid, FALSE);

    float px[4], py[4];
    const Point2 p0 = bc.curve->CachedPosition(0, 3), p1 = bc.curve->CachedOutHandle(0, 3);
    const Point2 p2 = bc.curve->CachedInHandle(0, 4), p3 = bc.curve->CachedPosition(0, 4);
    px[0] = p0.x, px[1] = p1.x, px[2] = p2.x, px[3] = p3.x;
    py[0] = p0.y, py[1] = p1.y, py[2] = p2.y, py[3] = p3.y;
    const std::vector<float> segXs = randomXs(int(kSamples), p0.x, p3.x);

    const long ops = scaled(2000000);
    const auto [product, kernel] = fastestInTurn(
        7,
        [&] {
            float sum = 0.0f;
            for (long i = 0; i < ops; ++i)
                sum += c->ValueAt(0, xs[std::size_t(i) & kSampleMask], valid, FALSE);
            gSink = sum;
        },
        [&] {
            float sum = 0.0f;
            for (long i = 0; i < ops; ++i)
                sum += bareBisect(px, py, segXs[std::size_t(i) & kSampleMask]);
            gSink = sum;
        });
    report("valueat_exact_10pts", product / double(ops), product / kernel);
}

void benchRebuild() {
    const int n = 10000;
    BenchCurve bc(n);
    Curve* c = bc.curve;
    std::vector<Rec> recs(n);
    const long ops = scaled(200);
    const double product = fastest(5, [&] {
        for (long i = 0; i < ops; ++i) {
            c->InvalidateCache();
            c->EnsureCache(0);
        }
    });
    const double kernel = fastest(5, [&] {
        for (long i = 0; i < ops; ++i) {
            bareResolve(c->Knots(), n, recs.data());
            gSink = recs[std::size_t(i) % n].px;
        }
    });
    report("cache_rebuild_10k", product / double(ops), product / kernel);
}

void benchBuildLookup() {
    BenchCurve bc(100);
    Curve* c = bc.curve;
    const long ops = scaled(400);
    // The rebuild of 100 points is measured apart and taken off, leaving the table build.
    const double rebuild = fastest(5, [&] {
        for (long i = 0; i < ops; ++i) {
            c->InvalidateCache();
            c->EnsureCache(0);
        }
    });
    const double withTable = fastest(5, [&] {
        for (long i = 0; i < ops; ++i) {
            c->InvalidateCache();
            c->BuildLookup(0);
        }
    });
    float px[4], py[4];
    const Point2 p0 = c->CachedPosition(0, 50), p1 = c->CachedOutHandle(0, 50);
    const Point2 p2 = c->CachedInHandle(0, 51), p3 = c->CachedPosition(0, 51);
    px[0] = p0.x, px[1] = p1.x, px[2] = p2.x, px[3] = p3.x;
    py[0] = p0.y, py[1] = p1.y, py[2] = p2.y, py[3] = p3.y;
    const std::vector<float> segXs = randomXs(1001, p0.x, p3.x);
    const double kernel = fastest(5, [&] {
        for (long i = 0; i < ops; ++i) {
            float sum = 0.0f;
            for (float x : segXs)
                sum += bareBisect(px, py, x);
            gSink = sum;
        }
    });
    const double product = withTable - rebuild;
    report("build_lookup_1000", product / double(ops), product / kernel);
}

/// Bytes in use on the C heap, where the platform can tell.
long heapInUse() {
#if defined(__GLIBC__)
    return long(mallinfo2().uordblks);
#elif defined(_WIN32)
    long used = 0;
    _HEAPINFO info{};
    while (_heapwalk(&info) == _HEAPOK)
        if (info._useflag == _USEDENTRY)
            used += long(info._size);
    return used;
#else
    return -1;
#endif
}

void benchMemory() {
    const int n = 1000;
    const long before = heapInUse();
    {
        auto* bc = new BenchCurve(n);
        Interval valid = FOREVER;
        bc->curve->ValueAt(0, 0.5f, valid, TRUE); // cache and table built
        const long after = heapInUse();
        const double perPoint = double(after - before) / double(n);
        // The literal layout: the point, its controller pointer, a ten-float record, and
        // the 1001-float table spread over the points.
        const double literal = 28.0 + double(sizeof(void*)) + 40.0 + 1001.0 * 4.0 / double(n);
        report("memory", perPoint, perPoint / literal);
        delete bc;
    }
}

// ---------------------------------------------------------------------------------------
// Batch evaluation (ICurveBatch)

ICurveBatch* batchOf(ICurve* c) {
    return static_cast<ICurveBatch*>(c->GetInterface(I_CURVE_BATCH_INTERFACE));
}

/// Values per batch call.
constexpr int kBatchValues = 4096;

/// `calls` batch calls of 4,096 values at the x of `xs`.
float batchLoop(ICurveBatch* b, const std::vector<float>& xs, std::vector<float>& ys, long calls,
                BOOL lookup) {
    float sum = 0.0f;
    Interval valid = FOREVER;
    for (long i = 0; i < calls; ++i) {
        b->ValuesAt(0, xs.data(), ys.data(), kBatchValues, valid, lookup);
        sum += ys[std::size_t(i) & kSampleMask];
    }
    return sum;
}

/// The widest path first (the row without a suffix), then one row per path.
std::vector<curve_batch::Path> pathsToMeasure() {
    std::vector<curve_batch::Path> paths = {curve_batch::WidestPath()};
    for (int p = 0; p < curve_batch::kPathCount; ++p)
        paths.push_back(curve_batch::Path(p));
    return paths;
}

/// valuesat_lookup_batch / valuesat_exact_batch: time per value of batch calls over time
/// per value of ValueAt on the same curve and x, measured in turn.
void benchBatch(bool lookup) {
    BenchCurve bc(10);
    ICurve* c = bc.curve;
    ICurveBatch* b = batchOf(c);
    const std::vector<float> xs = randomXs(int(kSamples), 0.0f, 1.0f);
    std::vector<float> ys(kSamples);
    Interval valid = FOREVER;
    c->ValueAt(0, 0.5f, valid, lookup ? TRUE : FALSE);

    const long values = scaled(lookup ? 20000000 : 2000000);
    const long calls = std::max(1L, values / kBatchValues);
    const long scalarOps = calls * kBatchValues / (lookup ? 1 : 4);
    const char* base = lookup ? "valuesat_lookup_batch" : "valuesat_exact_batch";
    std::vector<curve_batch::Path> paths = pathsToMeasure();
    double widestPerValue = 0.0;
    for (std::size_t k = 0; k < paths.size(); ++k) {
        const curve_batch::Path p = curve_batch::ForceBatchPath(paths[k]);
        const auto [product, reference] = fastestInTurn(
            7, [&] { gSink = batchLoop(b, xs, ys, calls, lookup ? TRUE : FALSE); },
            [&] {
                float sum = 0.0f;
                for (long i = 0; i < scalarOps; ++i)
                    sum += c->ValueAt(0, xs[std::size_t(i) & kSampleMask], valid,
                                      lookup ? TRUE : FALSE);
                gSink = sum;
            });
        const double perValue = product / double(calls * kBatchValues);
        const double scalarPerValue = reference / double(scalarOps);
        if (k == 0)
            widestPerValue = perValue;
        const std::string name =
            k == 0 ? std::string(base) : std::string(base) + "_" + curve_batch::PathName(p);
        reportPath(name.c_str(), perValue, perValue / scalarPerValue, p);
    }
    curve_batch::ReleaseBatchPath();

    if (!lookup)
        return;
    // Two threads on the same curve at once, each timing its own CPU time.
    double twoPerValue = 1e300;
    for (int rep = 0; rep < 5; ++rep) {
        double cpu[2] = {0.0, 0.0};
        float sums[2] = {0.0f, 0.0f};
        auto work = [&](int k) {
            std::vector<float> out(kSamples);
            const double t0 = threadCpuNs();
            sums[k] = batchLoop(b, xs, out, calls, TRUE);
            cpu[k] = threadCpuNs() - t0;
        };
        std::thread ta(work, 0), tb(work, 1);
        ta.join();
        tb.join();
        gSink = sums[0] + sums[1];
        twoPerValue =
            std::min(twoPerValue, (cpu[0] + cpu[1]) / (2.0 * double(calls * kBatchValues)));
    }
    reportPath("valuesat_lookup_batch_2t", twoPerValue, 2.0 * widestPerValue / twoPerValue,
               curve_batch::ActivePath());
}

/// Three curves over 0 .. 1 shaped as the sample client's defaults: the diagonal with one
/// smooth point at a quarter, half or three quarters, pulled off it.
struct PictureCurves {
    PictureCurves() : owner(new CurveControl) {
        owner->SetXRange(0.0f, 1.0f, FALSE);
        owner->SetYRange(0.0f, 1.0f);
        for (int c = 0; c < 3; ++c) {
            curves[c] = new Curve(owner, 0);
            curves[c]->SetPointCount(3);
            auto lock = curves[c]->LockPointTable();
            const float mid = 0.25f * float(c + 1);
            CurveKnot* k = curves[c]->Knots();
            k[0] = CurveKnot(Point2(0.0f, 0.0f), Point2(0.0f, 0.0f), Point2(0.1f, 0.05f),
                             KNOT_TYPE_CORNER | KNOT_ENDPOINT);
            k[1] = CurveKnot(Point2(mid, 1.0f - mid), Point2(-0.1f, 0.0f), Point2(0.1f, 0.0f),
                             KNOT_TYPE_BEZIER_SMOOTH);
            k[2] = CurveKnot(Point2(1.0f, 1.0f), Point2(-0.1f, -0.05f), Point2(0.0f, 0.0f),
                             KNOT_TYPE_CORNER | KNOT_ENDPOINT);
            curves[c]->InvalidateCache();
            batch[c] = batchOf(curves[c]);
        }
    }
    ~PictureCurves() {
        for (Curve* c : curves)
            delete c;
        delete owner;
    }
    CurveControl* owner; // owned
    Curve* curves[3];    // owned
    ICurveBatch* batch[3];
};

constexpr int kPictureWidth = 1920, kPictureHeight = 1080;

/// A drawn picture of RGB floats in [0, 1]: sky and hills in smooth gradients, as a
/// picture (and the sample client's) mostly is, so that neighbouring pixels read
/// neighbouring table entries; with `noise`, every value random instead.
std::vector<float> makePicture(bool noise) {
    std::vector<float> rgb(std::size_t(kPictureWidth) * kPictureHeight * 3);
    std::mt19937 gen(777);
    for (int y = 0; y < kPictureHeight; ++y) {
        for (int x = 0; x < kPictureWidth; ++x) {
            float* p = &rgb[(std::size_t(y) * kPictureWidth + std::size_t(x)) * 3];
            if (noise) {
                for (int c = 0; c < 3; ++c)
                    p[c] = float(gen() >> 8) / float(1 << 24);
                continue;
            }
            const float u = float(x) / float(kPictureWidth), v = float(y) / float(kPictureHeight);
            const float hill =
                0.6f + 0.1f * std::sin(6.0f * u) + 0.05f * std::sin(17.0f * u + 1.0f);
            if (v < hill) { // sky: blue above, orange at the horizon
                p[0] = 0.2f + 0.7f * v / hill;
                p[1] = 0.3f + 0.4f * v / hill;
                p[2] = 0.9f - 0.5f * v / hill;
            } else { // hills: darker downwards, with a slow pattern
                const float d = (v - hill) / (1.0f - hill);
                p[0] = 0.15f + 0.2f * (1.0f - d) + 0.05f * std::sin(40.0f * u);
                p[1] = 0.35f + 0.3f * (1.0f - d);
                p[2] = 0.1f + 0.1f * std::cos(25.0f * u + 3.0f * d);
            }
        }
    }
    return rgb;
}

/// out[x] = 0x00RRGGBB of the three planes' values, each clamped to [0, 1] (NaN to 0),
/// times 255, rounded: the sample client's ChannelByte, four pixels at a time.
void packRow(const float* r, const float* g, const float* b, uint32_t* out, int n) {
    const __m128 zero = _mm_setzero_ps(), one = _mm_set1_ps(1.0f);
    const __m128 scale = _mm_set1_ps(255.0f), half = _mm_set1_ps(0.5f);
    auto level = [&](const float* p) {
        // max(v, 0) answers 0 for a NaN v; the conversion truncates, as uint32_t(float).
        const __m128 v = _mm_min_ps(_mm_max_ps(_mm_loadu_ps(p), zero), one);
        return _mm_cvttps_epi32(_mm_add_ps(_mm_mul_ps(v, scale), half));
    };
    int x = 0;
    for (; x + 4 <= n; x += 4) {
        const __m128i px = _mm_or_si128(
            _mm_or_si128(_mm_slli_epi32(level(r + x), 16), _mm_slli_epi32(level(g + x), 8)),
            level(b + x));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + x), px);
    }
    for (; x < n; ++x) {
        auto one1 = [](float v) {
            v = v > 0.0f ? (v < 1.0f ? v : 1.0f) : 0.0f;
            return uint32_t(v * 255.0f + 0.5f);
        };
        out[x] = (one1(r[x]) << 16) | (one1(g[x]) << 8) | one1(b[x]);
    }
}

/// The sample client's frame for the rows begin .. end: each row's three channels read
/// from the interleaved picture through the three curves (one strided batch call each,
/// into a plane per channel), then packed into 0x00RRGGBB words.
void pictureRows(ICurveBatch* const batch[3], const float* src, uint32_t* out, int begin, int end) {
    float planes[3][kPictureWidth];
    Interval valid = FOREVER;
    for (int y = begin; y < end; ++y) {
        const float* in = src + std::size_t(y) * kPictureWidth * 3;
        for (int c = 0; c < 3; ++c)
            batch[c]->ValuesAtStrided(0, in + c, 12, planes[c], 4, kPictureWidth, valid, TRUE);
        packRow(planes[0], planes[1], planes[2], out + std::size_t(y) * kPictureWidth,
                kPictureWidth);
    }
}

/// picture_1080p_rgb: the sample client's frame, a 1920 x 1080 picture of RGB floats
/// through three curves into 8-bit RGB words, in milliseconds per frame on one thread and
/// on two (each taking half the rows; the frame takes as long as the slower half). ratio:
/// the time over the target, 2.5 ms on one thread and 1.5 ms on two (below 1 meets it).
/// picture_1080p_rgb_noise: the same on one thread with a picture of random values, where
/// every value reads a table pair of its own.
void benchPicture() {
    PictureCurves pc;
    std::vector<uint32_t> out(std::size_t(kPictureWidth) * kPictureHeight);
    const int frames = int(std::max(3L, scaled(20)));
    for (int noise = 0; noise <= 1; ++noise) {
        const std::vector<float> src = makePicture(noise != 0);
        pictureRows(pc.batch, src.data(), out.data(), 0, 1); // warm: caches and tables built
        const double one = fastest(
            frames, [&] { pictureRows(pc.batch, src.data(), out.data(), 0, kPictureHeight); });
        char extra[64];
        std::snprintf(extra, sizeof extra, ", \"ms_per_frame\": %.3f", one * 1e-6);
        reportPath(noise ? "picture_1080p_rgb_noise_1t" : "picture_1080p_rgb_1t", one,
                   one * 1e-6 / 2.5, curve_batch::ActivePath(), extra);
        if (noise)
            break;
        double two = 1e300;
        for (int f = 0; f < frames; ++f) {
            double cpu[2] = {0.0, 0.0};
            auto half = [&](int k) {
                const double t0 = threadCpuNs();
                pictureRows(pc.batch, src.data(), out.data(), k * kPictureHeight / 2,
                            (k + 1) * kPictureHeight / 2);
                cpu[k] = threadCpuNs() - t0;
            };
            std::thread other(half, 1);
            half(0);
            other.join();
            two = std::min(two, std::max(cpu[0], cpu[1]));
        }
        std::snprintf(extra, sizeof extra, ", \"ms_per_frame\": %.3f", two * 1e-6);
        reportPath("picture_1080p_rgb_2t", two, two * 1e-6 / 1.5, curve_batch::ActivePath(), extra);
    }
    gSink = float(out[12345]);
}

} // namespace

int main(int argc, char** argv) {
    // An optional argument picks one benchmark by name prefix.
    const char* only = argc > 1 ? argv[1] : "";
    auto wanted = [&](const char* name) {
        return std::string_view(name).substr(0, std::strlen(only)) == only;
    };
    if (wanted("valueat_lookup"))
        benchLookup();
    if (wanted("valueat_exact"))
        benchExact();
    if (wanted("cache_rebuild"))
        benchRebuild();
    if (wanted("build_lookup"))
        benchBuildLookup();
    if (wanted("memory"))
        benchMemory();
    if (wanted("valuesat_lookup_batch"))
        benchBatch(true);
    if (wanted("valuesat_exact_batch"))
        benchBatch(false);
    if (wanted("picture_1080p_rgb"))
        benchPicture();
    return 0;
}
