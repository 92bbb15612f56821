// Helpers shared by the evaluation tests: iteration scaling, bit comparison, a seeded
// random source, and curve set-up through the curve's own API.
#pragma once

#include "control/curve_control.h"
#include "curve/curve.h"
#include "host/controller.h"
#include "test_support.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <random>

namespace evaltest {

/// How much of the full iteration count to run. CURVECTL_TEST_SCALE overrides; builds with
/// sanitizers or without optimisation default to a tenth.
inline double TestScale() {
    if (const char* s = std::getenv("CURVECTL_TEST_SCALE")) {
        const double v = std::atof(s);
        if (v > 0.0)
            return v;
    }
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || !defined(NDEBUG)
    return 0.1;
#else
    return 1.0;
#endif
}

inline int Scaled(int n, int atLeast = 1) {
    const int v = int(n * TestScale());
    return v < atLeast ? atLeast : v;
}

inline uint32_t Bits(float f) {
    uint32_t u;
    std::memcpy(&u, &f, sizeof u);
    return u;
}

/// Seeded random numbers, the same sequence on every platform (only raw mt19937 output
/// is used; the standard distributions differ between libraries).
class Rng {
public:
    explicit Rng(uint32_t seed) : gen_(seed) {}
    /// In [0, 1).
    double Unit() { return (gen_() >> 5) * (1.0 / 134217728.0); }
    float Uniform(float lo, float hi) { return float(lo + (hi - lo) * Unit()); }
    /// In [lo, hi].
    int Int(int lo, int hi) { return lo + int(Unit() * double(hi - lo + 1)); }
    bool Chance(double p) { return Unit() < p; }

private:
    std::mt19937 gen_;
};

/// Writes the points of `c` as the UI thread must: under the table lock, followed by the
/// invalidation of the cache.
inline void WriteKnot(Curve& c, int i, const CurveKnot& k) {
    auto lock = c.LockPointTable();
    c.Knots()[i] = k;
    c.InvalidateCache();
}

/// A new controller on point i with keys (time, x, y) at each of `n` times.
inline Control* AnimatePoint(Curve& c, int i, const TimeValue* times, const Point2* values, int n) {
    Control* ctrl = NewDefaultPoint3Controller();
    c.ReplaceReference(i, ctrl, TRUE);
    AnimateOn();
    for (int k = 0; k < n; ++k) {
        Point3 v(values[k].x, values[k].y, 0.0f);
        ctrl->SetValue(times[k], &v, 1, CTRL_ABSOLUTE);
    }
    AnimateOff();
    c.InvalidateCache();
    return ctrl;
}

/// A control used only as the owner of stand-alone curves (its ranges and flags).
/// SetXRange refuses an x range without width; such a range still comes from a scene file,
/// and is given here the way a file gives it.
inline CurveControl* MakeOwner(float xlo, float xhi, float ylo, float yhi, DWORD flags) {
    auto* ctl = new CurveControl;
    if (xlo < xhi)
        ctl->SetXRange(xlo, xhi, FALSE);
    else
        testsupport::LoadRanges(*ctl, xlo, xhi);
    ctl->SetYRange(ylo, yhi);
    ctl->SetControlFlags(flags);
    return ctl;
}

} // namespace evaltest
