// Batch evaluation: ICurveBatch::ValuesAt and ValuesAtStrided.
//
// A call does what n calls of ValueAt would do at one moment, with the per-call work done
// once: one cache test (the same acquireState ValueAt runs) and one narrowing of `valid`,
// the x range, the end behaviour and the end lines read once through the helpers ValueAt
// uses (curve_eval_shared.h), the lookup table fetched once. The values then go through the
// vector kernels of the path in force (curve_batch.h) in blocks: the classifying kernel
// answers every x outside the range and every x the table answers, and lists the rest,
// which the exact kernel solves together (segment search and 20 halvings, many x at once).
// The evaluation counter advances as the n calls would advance it.
#include "curve/curve_batch.h"
#include "curve/curve.h"
#include "curve/curve_eval_shared.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>

using curve_eval::CacheState;
using curve_eval::EvalCache;
using curve_eval::LookupTable;

namespace {

/// Values per kernel call: the pending list of a block lives on the stack.
constexpr int kBlock = 512;

/// Curves with up to this many segments get their segment table on the stack.
constexpr int kStackSegments = 64;

bool StrideAllowed(int stride) { return stride != 0 && stride % int(sizeof(float)) == 0; }

float ReadAt(const char* p, std::ptrdiff_t stride, int i) {
    float v;
    std::memcpy(&v, p + std::ptrdiff_t(i) * stride, sizeof v);
    return v;
}

void Fill(char* ys, std::ptrdiff_t stride, int n, float v) {
    for (int i = 0; i < n; ++i)
        std::memcpy(ys + std::ptrdiff_t(i) * stride, &v, sizeof v);
}

/// Whether ValueAt would interpolate the table for any of the x: an x neither above nor
/// below the range (a NaN counts, as ValueAt tests it). ValueAt builds the table only then.
bool AnyInside(const char* xs, std::ptrdiff_t stride, int n, Point2 xr) {
    for (int i = 0; i < n; ++i) {
        const float x = ReadAt(xs, stride, i);
        if (!(x > xr.y) && !(x < xr.x))
            return true;
    }
    return false;
}

/// The exact solve of a call's pending values: the segment table (made with the helpers
/// ValueAt's solve uses, once, when the first value needs it) and the path's exact kernel.
/// A curve with more segments than the call has values is solved one value at a time by
/// ValueAt's own code instead, which is cheaper than making its table.
class ExactSolver {
public:
    ExactSolver(const CacheState& s, int values) : s_(s), values_(values) {}

    /// ys[j] = ValueAt's exact answer at xs[j]; returns how many found a segment.
    long Solve(const curve_batch::KernelSet& k, const float* xs, float* ys, int m) {
        if (!prepared_)
            prepare();
        if (table_.px)
            return k.exact(table_, xs, ys, m);
        long solved = 0;
        for (int j = 0; j < m; ++j) {
            bool found = false;
            ys[j] = curve_eval::ExactValue(s_, xs[j], found);
            solved += found ? 1 : 0;
        }
        return solved;
    }

private:
    void prepare() {
        prepared_ = true;
        const int points = s_.count;
        const int segments = points - 1;
        float* store = local_;
        if (segments > kStackSegments) {
            if (values_ < 2 * segments)
                return;
            heap_.reset(new (std::nothrow) float[std::size_t(points) * 9]);
            if (!(store = heap_.get()))
                return; // no memory: one value at a time
        }
        float* px = store;
        float* coef = store + points;
        for (int i = 0; i < points; ++i)
            px[i] = s_.knots[i].px;
        for (int i = 0; i < segments; ++i) {
            float c[8];
            curve_eval::SegmentCoefficients(s_, i, c);
            for (int j = 0; j < 8; ++j)
                coef[j * segments + i] = c[j];
        }
        table_ = curve_batch::SegmentTable{points, s_.ordered ? 1 : 0, px, coef};
    }

    const CacheState& s_;
    int values_; // values in the call
    bool prepared_ = false;
    curve_batch::SegmentTable table_{0, 0, nullptr, nullptr}; // px null: one at a time
    std::unique_ptr<float[]> heap_;                           // owned; large curves' table
    float local_[9 * (kStackSegments + 1)];                   // small curves' table
};

} // namespace

int Curve::ValuesAt(TimeValue t, const float* xs, float* ys, int n, Interval& valid,
                    BOOL useLookup) {
    return ValuesAtStrided(t, xs, int(sizeof(float)), ys, int(sizeof(float)), n, valid, useLookup);
}

int Curve::ValuesAtStrided(TimeValue t, const float* xs, int xStride, float* ys, int yStride, int n,
                           Interval& valid, BOOL useLookup) {
    if (n < 0)
        return CURVE_BATCH_BAD_COUNT;
    if (!StrideAllowed(xStride) || !StrideAllowed(yStride))
        return CURVE_BATCH_BAD_STRIDE;
    if (n == 0)
        return 0;
    if (!xs || !ys)
        return CURVE_BATCH_NULL_BUFFER;
    return valuesAt(t, reinterpret_cast<const char*>(xs), xStride, reinterpret_cast<char*>(ys),
                    yStride, n, valid, useLookup);
}

int Curve::valuesAt(TimeValue t, const char* xs, std::ptrdiff_t xStride, char* ys,
                    std::ptrdiff_t yStride, int n, Interval& valid, BOOL useLookup) {
    EvalCache::Reader r(evalCache_);
    const CacheState* s = sharedState(r, t);
    if (!s) {
        Fill(ys, yStride, n, 0.0f); // out of memory: as a curve without points
        return n;
    }
    valid &= s->validity;
    r.Count(n - 1); // acquireState counted the first value's cache test
    if (s->count == 0) {
        Fill(ys, yStride, n, 0.0f);
        return n;
    }
    if (s->count == 1) {
        r.Count(n); // ValueAt tests the cache once more for a single point
        Fill(ys, yStride, n, s->knots[0].py);
        return n;
    }

    curve_batch::LookupParams p{};
    const Point2 xr = evalXRange();
    p.xlo = xr.x;
    p.xhi = xr.y;
    p.holdEnds = endsHold() ? 1 : 0;
    const curve_eval::EndLine right = curve_eval::RightEnd(*s);
    const curve_eval::EndLine left = curve_eval::LeftEnd(*s);
    p.rightHold = right.hold;
    p.rightSlope = right.slope;
    p.rightX0 = right.x0;
    p.rightY0 = right.y0;
    p.leftHold = left.hold;
    p.leftSlope = left.slope;
    p.leftX0 = left.x0;
    p.leftY0 = left.y0;
    if (useLookup) {
        const LookupTable* lt = s->lookup.load(std::memory_order_acquire);
        if (!lt && AnyInside(xs, xStride, n, xr))
            lt = sharedLookup(r, *s);
        if (lt) {
            r.RememberQuick(*s, *lt);
            p.table = lt->values.get();
            p.tableSize = lt->size;
            p.indexScale = lt->indexScale;
            p.step = lt->step;
            p.sizeAsFloat = float(lt->size);
        }
    }

    const curve_batch::KernelSet& k = curve_batch::ActiveKernels();
    ExactSolver exact(*s, n);
    int pendIdx[kBlock];
    float pendX[kBlock];
    float pendY[kBlock];
    long solved = 0;
    for (int b = 0; b < n; b += kBlock) {
        const int len = std::min(kBlock, n - b);
        const char* bx = xs + std::ptrdiff_t(b) * xStride;
        char* by = ys + std::ptrdiff_t(b) * yStride;
        const int m = k.classify(p, bx, xStride, by, yStride, len, pendIdx, pendX);
        if (m == 0)
            continue;
        solved += exact.Solve(k, pendX, pendY, m);
        for (int j = 0; j < m; ++j)
            std::memcpy(by + std::ptrdiff_t(pendIdx[j]) * yStride, &pendY[j], sizeof(float));
    }
    r.Count(solved); // each segment solve tests the cache, as in ValueAt
    return n;
}
