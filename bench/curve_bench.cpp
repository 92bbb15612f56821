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
// Times are the measuring thread's own CPU time (natively; see threadCpuNs), so that other
// programs sharing the machine do not count; each measurement is repeated and the fastest
// repetition kept. The two-thread figure assumes each thread has a core of its own: it is
// twice the one-thread CPU time per value over each thread's CPU time per value while
// both run, so what it shows is the cost of the threads' sharing (cache lines that bounce
// between cores, locks), not the machine's load. CURVECTL_BENCH_SCALE scales the
// iteration counts (default 1).
#include "control/curve_control.h"
#include "curve/curve.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

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
    return 0;
}
