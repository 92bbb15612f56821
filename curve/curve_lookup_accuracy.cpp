// Lookup sizes chosen by measured accuracy: ICurveBatch::SetLookupTolerance and
// GetLookupError (contracts in curvectl/icurve_batch.h).
//
// How the difference is measured. A table of `size` intervals answers an x inside the
// range from the entries e and e + 1, e = int((x - x low) * index scale), and that index
// only grows with x; so the floats of the range fall into index intervals, one per e, and
// on each the table's answer is a straight line in x while the exact answer is the curve.
// For every index interval the measurement
//   - finds its first and last float exactly (a binary search over the floats in order),
//   - splits it at the curve's points inside it (where the curve may bend sharply), and on
//     each piece evaluates the difference at both ends and at evenly spaced samples, then
//     searches between the samples around the largest difference for its maximum (golden
//     section), since the difference of a line and a smooth curve rises to a peak between
//     samples rather than at one.
// Each difference is |ValueAt with the table - ValueAt without|, computed by the very code
// ValueAt runs (curve_eval_shared.h) on a cache state built for the time and on a table
// filled as the curve fills its own after a size change: nothing is estimated from
// derivatives or bounds. What a search between samples can miss is a peak narrower than
// the samples' spacing inside one piece; the curve's points, where such peaks arise, are
// evaluated themselves.
#include "curve/curve.h"
#include "curve/curve_eval_shared.h"
#include "host/controller.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>
#include <vector>

using curve_eval::CacheState;

namespace {

/// Times of an animated curve that are measured, at most.
constexpr std::size_t kMaxTimes = 33;
/// Evenly spaced samples inside each piece of an index interval.
constexpr int kSamples = 6;
/// Golden-section steps around the largest sample.
constexpr int kRefineSteps = 24;

constexpr float kInfinity = std::numeric_limits<float>::infinity();

/// Floats in order as unsigned integers: a < b exactly when Key(a) < Key(b) (no NaN).
uint32_t Key(float f) {
    uint32_t b;
    std::memcpy(&b, &f, sizeof b);
    return (b & 0x80000000u) ? ~b : (b | 0x80000000u);
}

float FromKey(uint32_t k) {
    const uint32_t b = (k & 0x80000000u) ? (k & 0x7FFFFFFFu) : ~k;
    float f;
    std::memcpy(&f, &b, sizeof f);
    return f;
}

/// The worst difference of one table size at one cache state.
class TableMeasure {
public:
    TableMeasure(const CacheState& s, Point2 xr, int size, std::vector<float>& table)
        : s_(s), xr_(xr), size_(size), v_(table) {
        curve_eval::LookupSpacing(xr, size, step_, indexScale_);
        // A fresh table: zeros, then the entries the curve's own build fills.
        v_.assign(std::size_t(size) + 1, 0.0f);
        curve_eval::FillLookupTable(s, xr, size, step_, v_.data());
    }

    /// The largest difference over the range; stops as soon as one exceeds `limit` (and
    /// then answers that one).
    float Worst(float limit) {
        worst_ = 0.0f;
        limit_ = limit;
        if (s_.count < 2 || !(xr_.x <= xr_.y) || !(indexScale_ >= 0.0f))
            return 0.0f; // no table interpolation happens, or no x is inside the range
        uint32_t start = firstWithIndexAtLeast(0, Key(xr_.x));
        for (int e = 0; e < size_ && start != kNone && worst_ <= limit_; ++e) {
            const uint32_t next = firstWithIndexAtLeast(e + 1, start);
            const uint32_t last = next == kNone ? Key(xr_.y) : next - 1;
            if (start <= last)
                measureInterval(FromKey(start), FromKey(last));
            start = next;
        }
        return worst_;
    }

private:
    static constexpr uint32_t kNone = 0;

    float indexAt(float x) const { return (x - xr_.x) * indexScale_; }

    /// The first float in [from, x high] (as keys) whose index position is at least e,
    /// or kNone.
    uint32_t firstWithIndexAtLeast(int e, uint32_t from) const {
        uint32_t lo = from, hi = Key(xr_.y);
        if (lo > hi || !(indexAt(FromKey(hi)) >= float(e)))
            return kNone;
        while (lo < hi) {
            const uint32_t mid = lo + (hi - lo) / 2;
            if (indexAt(FromKey(mid)) >= float(e))
                hi = mid;
            else
                lo = mid + 1;
        }
        return lo;
    }

    /// |with table - without| at x, as ValueAt computes both; 0 where ValueAt would not
    /// use the table; +infinity for a difference that is not a number.
    float differenceAt(float x) {
        const float f = indexAt(x);
        if (!(f > -1.0f && f < float(size_)))
            return 0.0f;
        const float withTable = curve_eval::LookupValue(v_.data(), f, x, step_);
        bool solved = false;
        const float exact = curve_eval::ExactValue(s_, x, solved);
        if (withTable == exact)
            return 0.0f;
        const float d = std::fabs(withTable - exact);
        const float r = std::isnan(d) ? kInfinity : d;
        worst_ = std::max(worst_, r);
        return r;
    }

    void measureInterval(float a, float b) {
        // Pieces between the curve's points inside [a, b]; each point starts a piece and
        // the float below it ends the one before.
        float from = a;
        for (int i = 0; i < s_.count && worst_ <= limit_; ++i) {
            const float px = s_.knots[i].px;
            if (px > from && px <= b) {
                measurePiece(from, std::nextafter(px, -kInfinity));
                from = px;
            }
        }
        if (worst_ <= limit_)
            measurePiece(from, b);
    }

    void measurePiece(float a, float b) {
        if (!(a <= b))
            return;
        // Samples at both ends and evenly between; the difference between consecutive
        // samples has its peak next to the largest sample.
        double at[kSamples + 2];
        float diff[kSamples + 2];
        int best = 0;
        for (int j = 0; j < kSamples + 2; ++j) {
            const double x = double(a) + (double(b) - double(a)) * j / (kSamples + 1);
            at[j] = j == kSamples + 1 ? double(b) : x;
            diff[j] = differenceAt(float(at[j]));
            if (diff[j] > diff[best])
                best = j;
        }
        if (worst_ > limit_ || a == b)
            return;
        // Golden section for the largest difference between the best sample's neighbours.
        constexpr double kGolden = 0.6180339887498949;
        double lo = at[std::max(best - 1, 0)], hi = at[std::min(best + 1, kSamples + 1)];
        double c = hi - kGolden * (hi - lo), d = lo + kGolden * (hi - lo);
        float fc = differenceAt(float(c)), fd = differenceAt(float(d));
        for (int k = 0; k < kRefineSteps && worst_ <= limit_; ++k) {
            if (float(lo) == float(hi))
                break; // one float left
            if (fc >= fd) {
                hi = d;
                d = c;
                fd = fc;
                c = hi - kGolden * (hi - lo);
                fc = differenceAt(float(c));
            } else {
                lo = c;
                c = d;
                fc = fd;
                d = lo + kGolden * (hi - lo);
                fd = differenceAt(float(d));
            }
        }
    }

    const CacheState& s_;
    Point2 xr_;
    int size_;
    std::vector<float>& v_; // the table, size + 1 entries
    float step_ = 0.0f;
    float indexScale_ = 0.0f;
    float worst_ = 0.0f; // largest difference so far
    float limit_ = kInfinity;
};

/// The worst difference of a table of `size` over all states, stopping once it exceeds
/// `limit`.
float WorstOver(const std::vector<std::unique_ptr<CacheState>>& states, Point2 xr, int size,
                float limit, std::vector<float>& table) {
    if (size < 1 || size > curve_eval::kMaxBuiltLookupSize)
        return 0.0f; // no table: values are exact
    float worst = 0.0f;
    for (const auto& s : states) {
        worst = std::max(worst, TableMeasure(*s, xr, size, table).Worst(limit));
        if (worst > limit)
            break;
    }
    return worst;
}

} // namespace

bool Curve::measuredStates(std::vector<std::unique_ptr<CacheState>>& states) {
    // The shape of a curve with animated points changes with time: it is measured where
    // its keys are and half way between them (the points move between keys, and the
    // middle is where a shape furthest from both keys' may lie).
    std::vector<TimeValue> keys;
    for (int i = 0; i < count_; ++i)
        if (auto* c = dynamic_cast<Control*>(Controller(i)))
            for (int k = 0; k < c->NumKeys(); ++k)
                keys.push_back(c->GetKeyTime(k));
    std::sort(keys.begin(), keys.end());
    keys.erase(std::unique(keys.begin(), keys.end()), keys.end());
    std::vector<TimeValue> times;
    for (std::size_t k = 0; k < keys.size(); ++k) {
        times.push_back(keys[k]);
        if (k + 1 < keys.size() && keys[k + 1] - keys[k] > 1)
            times.push_back(keys[k] + (keys[k + 1] - keys[k]) / 2);
    }
    if (times.empty())
        times.push_back(0); // no keys: one shape for all times
    if (times.size() > kMaxTimes) {
        std::vector<TimeValue> spread;
        for (std::size_t j = 0; j < kMaxTimes; ++j)
            spread.push_back(times[j * (times.size() - 1) / (kMaxTimes - 1)]);
        times.swap(spread);
    }
    for (TimeValue t : times) {
        auto lock = LockPointTable();
        std::unique_ptr<CacheState> s = buildCacheState(t);
        if (!s)
            return false;
        states.push_back(std::move(s));
    }
    return true;
}

int Curve::SetLookupTolerance(float maxError) {
    if (!(maxError > 0.0f) || !std::isfinite(maxError))
        return CURVE_LOOKUP_BAD_TOLERANCE;
    int chosen = CURVE_LOOKUP_EXACT;
    try {
        std::vector<std::unique_ptr<CacheState>> states;
        if (!measuredStates(states))
            return CURVE_LOOKUP_NO_MEMORY;
        const Point2 xr = evalXRange();
        std::vector<float> table;
        auto meets = [&](int size) {
            return WorstOver(states, xr, size, maxError, table) <= maxError;
        };
        if (meets(1)) {
            chosen = 1;
        } else {
            // Doubling until a size meets the tolerance, then halving the gap between the
            // last size that did not and the first that did.
            int lo = 1, hi = 2;
            while (hi <= CURVE_LOOKUP_LARGEST_MEASURED && !meets(hi)) {
                lo = hi;
                hi *= 2;
            }
            if (hi <= CURVE_LOOKUP_LARGEST_MEASURED) {
                while (hi - lo > 1) {
                    const int mid = lo + (hi - lo) / 2;
                    (meets(mid) ? hi : lo) = mid;
                }
                chosen = hi;
            }
        }
    } catch (const std::bad_alloc&) {
        return CURVE_LOOKUP_NO_MEMORY;
    }
    SetLookupSize(chosen);
    return chosen;
}

float Curve::GetLookupError() {
    try {
        std::vector<std::unique_ptr<CacheState>> states;
        if (!measuredStates(states))
            return kInfinity;
        std::vector<float> table;
        return WorstOver(states, evalXRange(), lookupSize_, kInfinity, table);
    } catch (const std::bad_alloc&) {
        return kInfinity; // not measured: no promise
    }
}
