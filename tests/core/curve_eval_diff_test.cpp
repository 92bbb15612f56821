// Differential test: the product's evaluation against the reference evaluator written
// straight from the description (curve_eval_reference.h), bit for bit, on thousands of
// random curves: points in and out of order, cyclic curves, animated points, free end
// points, the y range enforced or not, both end behaviours, lookup sizes 1 to 5000, x
// inside, at the ends of and outside the range. The seed is fixed, so a failure repeats;
// the message names the curve number and the query.
#include "curve_eval_reference.h"
#include "curve_eval_test_util.h"

#include <doctest/doctest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

using evalref::ReferenceEvaluator;
using evaltest::Bits;
using evaltest::Rng;

namespace {

const TimeValue kKeyTimes[] = {0, 160, 320, 480};

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
    if (p < 0.45)
        return rng.Int(1, 12);
    if (p < 0.85)
        return rng.Int(13, 300);
    if (p < 0.97)
        return rng.Int(301, 1500);
    return rng.Int(1501, 5000);
}

float pickTangent(Rng& rng, float scale) {
    const double p = rng.Unit();
    if (p < 0.15)
        return 0.0f;
    if (p < 0.2)
        return 0.00005f * (rng.Chance(0.5) ? 1.0f : -1.0f); // under the 0.0001 reach
    return rng.Uniform(-scale, scale);
}

uint32_t pickFlags(Rng& rng) {
    static const uint32_t types[] = {KNOT_TYPE_CORNER, KNOT_TYPE_BEZIER_SMOOTH,
                                     KNOT_TYPE_BEZIER_CORNER, 0};
    uint32_t f = types[rng.Int(0, 3)];
    if (rng.Chance(0.2))
        f |= KNOT_SELECTED;
    return f;
}

void fillCurve(Rng& rng, RandomCurve& rc) {
    const bool withOwner = !rng.Chance(0.05);
    if (withOwner) {
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
    const int n = sizeKind < 0.05   ? 0
                  : sizeKind < 0.12 ? 1
                  : sizeKind < 0.97 ? rng.Int(2, 12)
                                    : rng.Int(13, 200);
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
        k.flags = pickFlags(rng);
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
    return 77; // a time visited often, so caches are reused
}

float pickX(Rng& rng, const RandomCurve& rc) {
    const float w = rc.xhi - rc.xlo;
    const float span = w > 0.0f ? w : 1.0f;
    const double p = rng.Unit();
    if (p < 0.6)
        return rng.Uniform(rc.xlo, rc.xhi);
    if (p < 0.66)
        return rc.xlo;
    if (p < 0.72)
        return rc.xhi;
    if (p < 0.8 && rc.curve->PointCount() > 0) {
        return rc.curve->Knots()[rng.Int(0, rc.curve->PointCount() - 1)].pos.x;
    }
    if (p < 0.88)
        return rng.Uniform(rc.xhi, rc.xhi + span);
    if (p < 0.96)
        return rng.Uniform(rc.xlo - span, rc.xlo);
    if (p < 0.98)
        return std::numeric_limits<float>::quiet_NaN();
    return rng.Chance(0.5) ? std::numeric_limits<float>::infinity()
                           : -std::numeric_limits<float>::infinity();
}

/// Compares everything the cache answers at t.
void compareCacheAt(Curve& c, ReferenceEvaluator& ref, TimeValue t, Rng& rng,
                    const std::string& where) {
    INFO(where, " t=", t);
    CHECK(c.CacheValidity(t) == ref.CacheValidity(t));
    const int n = c.PointCount();
    for (int i = -1; i <= n; ++i) {
        const Point2 p = c.CachedPosition(t, i), rp = ref.CachedPosition(t, i);
        const Point2 in = c.CachedInHandle(t, i), rin = ref.CachedInHandle(t, i);
        const Point2 out = c.CachedOutHandle(t, i), rout = ref.CachedOutHandle(t, i);
        float r[4], rr[4];
        c.CachedRoom(t, i, r[0], r[1], r[2], r[3]);
        ref.CachedRoom(t, i, rr[0], rr[1], rr[2], rr[3]);
        INFO("point ", i);
        CHECK(Bits(p.x) == Bits(rp.x));
        CHECK(Bits(p.y) == Bits(rp.y));
        CHECK(Bits(in.x) == Bits(rin.x));
        CHECK(Bits(in.y) == Bits(rin.y));
        CHECK(Bits(out.x) == Bits(rout.x));
        CHECK(Bits(out.y) == Bits(rout.y));
        for (int f = 0; f < 4; ++f)
            CHECK(Bits(r[f]) == Bits(rr[f]));
    }
    float lo, hi, rlo, rhi;
    c.GetValueBounds(t, lo, hi);
    ref.GetValueBounds(t, rlo, rhi);
    CHECK(Bits(lo) == Bits(rlo));
    CHECK(Bits(hi) == Bits(rhi));
    if (n > 0) {
        const int i = rng.Int(0, n - 1);
        const float u = rng.Uniform(0.0f, 1.0f);
        const Point2 sp = c.SegmentPoint(t, i, u), rsp = ref.SegmentPoint(t, i, u);
        CHECK(Bits(sp.x) == Bits(rsp.x));
        CHECK(Bits(sp.y) == Bits(rsp.y));
        const float x = c.CachedPosition(t, i).x + rng.Uniform(-0.1f, 0.3f);
        for (int mode = 0; mode <= 1; ++mode)
            CHECK(Bits(c.SegmentValue(t, i, x, mode)) == Bits(ref.SegmentValue(t, i, x, mode)));
    }
}

/// One random change of the curve, made to both sides.
void mutate(Rng& rng, RandomCurve& rc, ReferenceEvaluator& ref) {
    Curve& c = *rc.curve;
    const double p = rng.Unit();
    if (p < 0.3) {
        c.SetEndBehaviour(c.GetEndBehaviour() ? 0 : 1); // takes effect without a rebuild
    } else if (p < 0.6 && c.PointCount() > 0) {
        const int i = rng.Int(0, c.PointCount() - 1);
        CurveKnot k = c.Knots()[i];
        k.pos.y += rng.Uniform(-1.0f, 1.0f);
        k.outTan.x += rng.Uniform(-0.2f, 0.2f);
        evaltest::WriteKnot(c, i, k);
        ref.InvalidateCache();
    } else if (p < 0.8) {
        const int size = pickLookupSize(rng);
        if (size != c.GetLookupSize()) {
            c.SetLookupSize(size);
            ref.FreshLookupTable();
        }
    } else if (p < 0.9) {
        c.InvalidateCache();
        ref.InvalidateCache();
    } else {
        // A toggle of the selection bit changes no shape and asks for no rebuild.
        if (c.PointCount() > 0)
            c.Knots()[0].flags ^= KNOT_SELECTED;
    }
}

void runCurve(int number, Rng& rng) {
    RandomCurve rc;
    fillCurve(rng, rc);
    Curve& c = *rc.curve;
    ReferenceEvaluator ref(c);
    const int queries = rng.Int(10, 40);
    for (int q = 0; q < queries; ++q) {
        const TimeValue t = pickTime(rng);
        const float x = pickX(rng, rc);
        const BOOL lookup = rng.Chance(0.5) ? TRUE : FALSE;
        Interval valid(-1000, 1000), refValid(-1000, 1000);
        const long countBefore = c.LookupCount(), refCountBefore = ref.LookupCount();
        const float got = c.ValueAt(t, x, valid, lookup);
        const float want = ref.ValueAt(t, x, refValid, lookup);
        INFO("curve ", number, " query ", q, " t=", t, " x=", x, " lookup=", lookup,
             " points=", c.PointCount(), " size=", c.GetLookupSize(), " got=", got, " want=", want);
        REQUIRE(Bits(got) == Bits(want));
        REQUIRE(valid == refValid);
        REQUIRE(c.LookupCount() - countBefore == ref.LookupCount() - refCountBefore);
        if (rng.Chance(0.1))
            compareCacheAt(c, ref, t, rng, "curve " + std::to_string(number));
        if (rng.Chance(0.15))
            mutate(rng, rc, ref);
    }
    if (rng.Chance(0.1)) {
        // A copy starts from a fresh table and cache, and evaluates like its source.
        Curve copy(nullptr, 0);
        copy.Copy(c);
        ReferenceEvaluator copyRef(copy);
        const TimeValue t = pickTime(rng);
        for (int q = 0; q < 8; ++q) {
            const float x = pickX(rng, rc);
            Interval v1 = FOREVER, v2 = FOREVER;
            CHECK(Bits(copy.ValueAt(t, x, v1, q & 1)) == Bits(copyRef.ValueAt(t, x, v2, q & 1)));
            CHECK(v1 == v2);
        }
    }
}

} // namespace

TEST_CASE("evaluation matches the reference bit for bit on random curves") {
    Rng rng(0x5EED2024u);
    const int curves = evaltest::Scaled(2000, 50);
    for (int i = 0; i < curves; ++i)
        runCurve(i, rng);
}
