// Lookup tables sized to an accuracy (ICurveBatch::SetLookupTolerance, GetLookupError) on
// flat, steep and animated curves, and on ranges where no table can be accurate. The
// reported difference is checked against ValueAt itself: sampled densely, with and without
// the table, the difference never exceeds what was measured, and comes close to it.
#include "curve_eval_test_util.h"
#include "test_support.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <cmath>
#include <limits>

using evaltest::Rng;

namespace {

ICurveBatch* BatchOf(Curve& c) {
    return static_cast<ICurveBatch*>(c.GetInterface(I_CURVE_BATCH_INTERFACE));
}

/// A curve of the given points (x, y, handle length in x, handle slope) over the owner's
/// x range.
struct ShapedCurve {
    struct P {
        float x, y, reach, slope;
    };
    ShapedCurve(float xlo, float xhi, std::initializer_list<P> points)
        : owner(
              evaltest::MakeOwner(xlo, xhi, -100.0f, 100.0f, CC_DEFAULT_FLAGS & ~CC_CONSTRAIN_Y)) {
        curve = new Curve(owner, 0);
        curve->SetPointCount(int(points.size()));
        int i = 0;
        for (const P& p : points) {
            const bool end = i == 0 || i == int(points.size()) - 1;
            evaltest::WriteKnot(*curve, i,
                                CurveKnot(Point2(p.x, p.y), Point2(-p.reach, -p.reach * p.slope),
                                          Point2(p.reach, p.reach * p.slope),
                                          KNOT_TYPE_BEZIER_CORNER | (end ? KNOT_ENDPOINT : 0)));
            ++i;
        }
    }
    ~ShapedCurve() {
        delete curve;
        delete owner;
    }
    CurveControl* owner; // owned
    Curve* curve;        // owned
};

/// The largest |ValueAt with the table - without| over many x of the range at time t:
/// random ones, and every float next to each table index boundary.
float SampledError(Curve& c, float xlo, float xhi, TimeValue t) {
    Rng rng(99u);
    float worst = 0.0f;
    auto at = [&](float x) {
        if (!(x >= xlo && x <= xhi))
            return;
        Interval v1 = FOREVER, v2 = FOREVER;
        const float a = c.ValueAt(t, x, v1, TRUE), b = c.ValueAt(t, x, v2, FALSE);
        const float d = std::fabs(a - b);
        worst = std::isnan(d) ? std::numeric_limits<float>::infinity() : std::max(worst, d);
    };
    for (int k = 0; k < 20000; ++k)
        at(rng.Uniform(xlo, xhi));
    const int size = c.GetLookupSize();
    for (int e = 0; e <= size && size < 100000; ++e) {
        const float x = xlo + (xhi - xlo) * float(e) / float(size > 1 ? size - 1 : 1);
        at(std::nextafter(x, -1e30f));
        at(x);
        at(std::nextafter(x, 1e30f));
        at(xlo + (xhi - xlo) * (float(e) + 0.5f) / float(size > 1 ? size - 1 : 1));
    }
    at(xlo);
    at(xhi);
    return worst;
}

/// The chosen size meets the tolerance, the size below it does not, and ValueAt agrees
/// with the measurement.
void CheckChoice(Curve& c, float tolerance, float xlo, float xhi, int chosen,
                 std::initializer_list<TimeValue> times) {
    INFO("tolerance ", tolerance, " chosen ", chosen);
    REQUIRE(chosen >= 1);
    CHECK(c.GetLookupSize() == chosen);
    const float error = BatchOf(c)->GetLookupError();
    CHECK(error <= tolerance);
    for (TimeValue t : times) {
        const float sampled = SampledError(c, xlo, xhi, t);
        INFO("t=", t, " measured ", error, " sampled ", sampled);
        // Measured, not estimated: no sample beats it (beyond float noise near it), and
        // the samples come near it somewhere.
        CHECK(sampled <= error * 1.0001f + 1e-7f);
    }
    CHECK(SampledError(c, xlo, xhi, *times.begin()) >= 0.5f * error);
    if (chosen > 1) {
        c.SetLookupSize(chosen - 1);
        CHECK(BatchOf(c)->GetLookupError() > tolerance);
        c.SetLookupSize(chosen);
    }
}

} // namespace

TEST_CASE_FIXTURE(testsupport::CoreFixture, "a flat curve needs a table of one interval") {
    ShapedCurve flat(0.0f, 1.0f, {{0.0f, 0.5f, 0.1f, 0.0f}, {1.0f, 0.5f, 0.1f, 0.0f}});
    ICurveBatch* b = BatchOf(*flat.curve);
    CHECK(b->SetLookupTolerance(1e-6f) == 1);
    CHECK(flat.curve->GetLookupSize() == 1);
    // What is left is the exact solve's own rounding: an ulp of 0.5.
    CHECK(b->GetLookupError() <= 6e-8f);
    CHECK(SampledError(*flat.curve, 0.0f, 1.0f, 0) <= b->GetLookupError());
}

TEST_CASE_FIXTURE(testsupport::CoreFixture,
                  "a steep curve gets the smallest size that meets the tolerance") {
    // From -50 up to 50 in a tight S around x = 0.5, flat at both ends.
    ShapedCurve steep(
        0.0f, 1.0f,
        {{0.0f, -50.0f, 0.2f, 0.0f}, {0.5f, 0.0f, 0.02f, 400.0f}, {1.0f, 50.0f, 0.2f, 0.0f}});
    Curve& c = *steep.curve;
    ICurveBatch* b = BatchOf(c);
    const float loose = 0.5f, tight = 0.01f;
    const int forLoose = b->SetLookupTolerance(loose);
    CheckChoice(c, loose, 0.0f, 1.0f, forLoose, {0});
    const int forTight = b->SetLookupTolerance(tight);
    CheckChoice(c, tight, 0.0f, 1.0f, forTight, {0});
    CHECK(forTight > forLoose);
    CHECK(forLoose > 1);
}

TEST_CASE_FIXTURE(testsupport::CoreFixture,
                  "an animated curve's table meets the tolerance at its keys and between") {
    ShapedCurve c(0.0f, 1.0f,
                  {{0.0f, 0.0f, 0.1f, 0.0f}, {0.5f, 0.5f, 0.1f, 0.0f}, {1.0f, 1.0f, 0.1f, 0.0f}});
    // Point 1 rises from a flat curve at time 0 to a sharp peak at time 200.
    const TimeValue times[] = {0, 200};
    const Point2 values[] = {Point2(0.5f, 0.5f), Point2(0.5f, 6.0f)};
    evaltest::AnimatePoint(*c.curve, 1, times, values, 2);
    ICurveBatch* b = BatchOf(*c.curve);
    const float tolerance = 0.002f;
    const int chosen = b->SetLookupTolerance(tolerance);
    CheckChoice(*c.curve, tolerance, 0.0f, 1.0f, chosen, {200, 0, 100});

    // The peak at time 200 decides: the same shape standing still needs as much.
    ShapedCurve still(
        0.0f, 1.0f, {{0.0f, 0.0f, 0.1f, 0.0f}, {0.5f, 6.0f, 0.1f, 0.0f}, {1.0f, 1.0f, 0.1f, 0.0f}});
    CHECK(BatchOf(*still.curve)->SetLookupTolerance(tolerance) == chosen);
}

TEST_CASE_FIXTURE(testsupport::CoreFixture,
                  "where no table meets the tolerance the curve evaluates exactly") {
    // A range that does not start at 0: the table's fraction is taken from x itself, so
    // its values stray far from the curve whatever the size.
    ShapedCurve shifted(
        10.0f, 11.0f,
        {{10.0f, 0.0f, 0.1f, 0.0f}, {10.5f, 1.0f, 0.1f, 0.0f}, {11.0f, 0.0f, 0.1f, 0.0f}});
    Curve& c = *shifted.curve;
    ICurveBatch* b = BatchOf(c);
    c.SetLookupSize(100);
    CHECK(b->GetLookupError() > 1.0f);
    CHECK(b->SetLookupTolerance(0.01f) == CURVE_LOOKUP_EXACT);
    CHECK(c.GetLookupSize() == 0);
    CHECK(b->GetLookupError() == 0.0f);
    CHECK(SampledError(c, 10.0f, 11.0f, 0) == 0.0f);
}

TEST_CASE_FIXTURE(testsupport::CoreFixture,
                  "a tolerance that is not a positive number is refused") {
    ShapedCurve c(0.0f, 1.0f, {{0.0f, 0.0f, 0.1f, 1.0f}, {1.0f, 1.0f, 0.1f, 1.0f}});
    ICurveBatch* b = BatchOf(*c.curve);
    c.curve->SetLookupSize(77);
    for (float bad :
         {0.0f, -0.0f, -1.0f, std::numeric_limits<float>::quiet_NaN(),
          std::numeric_limits<float>::infinity(), -std::numeric_limits<float>::infinity()}) {
        CHECK(b->SetLookupTolerance(bad) == CURVE_LOOKUP_BAD_TOLERANCE);
        CHECK(c.curve->GetLookupSize() == 77);
    }
    // The smallest positive float is a tolerance like any other.
    CHECK(b->SetLookupTolerance(std::numeric_limits<float>::denorm_min()) >= 0);
}

TEST_CASE_FIXTURE(testsupport::CoreFixture, "curves with nothing to measure take one interval") {
    Curve empty(nullptr, 0), single(nullptr, 0); // without owner: the range 0 .. 1
    single.SetPointCount(1);
    for (Curve* c : {&empty, &single}) {
        CHECK(BatchOf(*c)->SetLookupTolerance(1e-6f) == 1);
        CHECK(BatchOf(*c)->GetLookupError() == 0.0f);
    }
    // A zero-width range evaluates exactly whatever the size.
    ShapedCurve thin(0.5f, 0.5f, {{0.5f, 0.0f, 0.1f, 1.0f}, {0.5f, 1.0f, 0.1f, 1.0f}});
    thin.curve->SetLookupSize(300);
    CHECK(BatchOf(*thin.curve)->GetLookupError() == 0.0f);
    CHECK(BatchOf(*thin.curve)->SetLookupTolerance(1e-6f) == 1);
}
