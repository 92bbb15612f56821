// Curve evaluation: each rule and odd case of the description, one test each. Expected
// numbers are worked by hand from the description unless a comment says otherwise; where
// a formula is the point of the test, the test applies the formula itself.
#include "curve_eval_test_util.h"
#include "host/hold.h"
#include "test_support.h"

#include <doctest/doctest.h>

#include <cmath>
#include <limits>

using evaltest::Bits;

namespace {

const float kNaN = std::numeric_limits<float>::quiet_NaN();

Point2 P(float x, float y) { return Point2(x, y); }

CurveKnot knot(float x, float y, uint32_t flags = KNOT_TYPE_CORNER, Point2 in = P(0, 0),
               Point2 out = P(0, 0)) {
    return CurveKnot(P(x, y), in, out, flags);
}

/// A curve and the control that owns it, with the given ranges and flag word.
struct OwnedCurve {
    explicit OwnedCurve(float xlo = 0.0f, float xhi = 1.0f, float ylo = 0.0f, float yhi = 1.0f,
                        DWORD flags = CC_DEFAULT_FLAGS)
        : owner(evaltest::MakeOwner(xlo, xhi, ylo, yhi, flags)), curve(new Curve(owner, 0)) {}
    ~OwnedCurve() {
        theHold.Reset(); // undo records pin the curve: they go first
        delete curve;
        delete owner;
    }
    OwnedCurve(const OwnedCurve&) = delete;
    OwnedCurve& operator=(const OwnedCurve&) = delete;

    /// Replaces the points; the end points keep their end flag.
    void SetKnots(std::initializer_list<CurveKnot> knots) {
        curve->SetPointCount(int(knots.size()));
        int i = 0;
        for (const CurveKnot& k : knots)
            evaltest::WriteKnot(*curve, i++, k);
    }
    float Value(float x, BOOL lookup = FALSE, TimeValue t = 0) {
        Interval valid = FOREVER;
        return curve->ValueAt(t, x, valid, lookup);
    }

    CurveControl* owner; // owned
    Curve* curve;        // owned
};

using Fixture = testsupport::CoreFixture;

} // namespace

// ---------------------------------------------------------------------------------------
// Extrapolation and the range ends

TEST_CASE_FIXTURE(Fixture, "two corner points continue as a line or hold their end value") {
    OwnedCurve oc;
    oc.SetKnots({knot(0, 0), knot(1, 1)});
    CHECK(oc.Value(2.0f) == 2.0f);
    CHECK(oc.Value(-1.0f) == -1.0f);
    oc.curve->SetEndBehaviour(1); // no rebuild needed: read at each evaluation
    CHECK(oc.Value(2.0f) == 1.0f);
    CHECK(oc.Value(-1.0f) == 0.0f);
}

TEST_CASE_FIXTURE(Fixture,
                  "a Bezier end continues along its handle, a short handle along the chord") {
    OwnedCurve oc;
    // Last point (1, 1) with its in-handle at (0.5, 0): the line through both has slope 2.
    oc.SetKnots({knot(0, 0), knot(1, 1, KNOT_TYPE_BEZIER_SMOOTH, P(-0.5f, -1.0f))});
    CHECK(oc.Value(2.0f) == 3.0f); // (1 - 0) / (1 - 0.5) * (2 - 0.5) + 0
    // The same point with a handle that reaches left by only 0.0001 uses the chord to
    // point 0 (slope 1). The range is (-1, 0) so that the difference is exact in float.
    OwnedCurve shortReach(-1.0f, 0.0f);
    shortReach.SetKnots({knot(-1, 0), knot(0, 1, KNOT_TYPE_BEZIER_SMOOTH, P(-0.0001f, -5.0f))});
    CHECK(shortReach.Value(1.0f) == 2.0f); // (1 - 0) / (0 - -1) * (1 - -1) + 0
    // One float further the handle counts ("at most 0.0001" is the chord's side).
    const float further = std::nextafter(-0.0001f, -1.0f);
    shortReach.SetKnots({knot(-1, 0), knot(0, 1, KNOT_TYPE_BEZIER_SMOOTH, P(further, -5.0f))});
    const float ax = 0.0f, bx = 0.0f + further, ay = 1.0f, by = 1.0f - 5.0f;
    CHECK(Bits(shortReach.Value(1.0f)) == Bits((ay - by) / (ax - bx) * (1.0f - bx) + by));
}

TEST_CASE_FIXTURE(Fixture, "a pure corner end ignores its handle; a Bezier-corner end does not") {
    OwnedCurve oc;
    // First point: a handle pointing up steeply. As a corner (type 2) the chord to point 1
    // gives the direction; as a Bezier corner (type 3) the handle does.
    oc.SetKnots({knot(0, 0, KNOT_TYPE_CORNER, P(0, 0), P(0.5f, 2.0f)), knot(1, 1)});
    CHECK(oc.Value(-1.0f) == -1.0f);
    oc.SetKnots({knot(0, 0, KNOT_TYPE_BEZIER_CORNER, P(0, 0), P(0.5f, 2.0f)), knot(1, 1)});
    CHECK(oc.Value(-1.0f) == -4.0f); // (2 - 0) / (0.5 - 0) * (-1 - 0) + 0
}

TEST_CASE_FIXTURE(Fixture, "x exactly at the range ends is evaluated inside, not continued") {
    OwnedCurve oc;
    // Free end points inside the range leave the range ends outside every segment: inside
    // the range such an x gives 0, while a continuation would give the line's value.
    oc.SetKnots({knot(0.25f, 0.25f, KNOT_TYPE_CORNER | KNOT_FREE_END_X),
                 knot(0.75f, 0.75f, KNOT_TYPE_CORNER | KNOT_FREE_END_X)});
    CHECK(oc.Value(1.0f) == 0.0f);
    CHECK(oc.Value(0.0f) == 0.0f);
    CHECK(oc.Value(std::nextafter(1.0f, 2.0f)) == doctest::Approx(1.0));
    CHECK(oc.Value(std::nextafter(0.0f, -1.0f)) == doctest::Approx(0.0));
    CHECK(oc.Value(-0.5f) == -0.5f);
}

TEST_CASE_FIXTURE(Fixture, "a vertical end segment is not guarded: the float result comes back") {
    OwnedCurve oc(0.0f, 0.0f); // zero-width range: both end points pinned to x = 0
    oc.SetKnots({knot(0, 0), knot(0, 1)});
    CHECK(oc.Value(1.0f) == std::numeric_limits<float>::infinity());   // 1 / 0 * 1 + 0
    CHECK(oc.Value(-1.0f) == -std::numeric_limits<float>::infinity()); // 1 / 0 * -1 + 0
}

// ---------------------------------------------------------------------------------------
// Segments

TEST_CASE_FIXTURE(Fixture, "a point exactly at a segment end gives its y without bisection") {
    OwnedCurve oc;
    oc.SetKnots({knot(0, 0),
                 knot(0.5f, 0.7f, KNOT_TYPE_BEZIER_SMOOTH, P(-0.1f, -0.3f), P(0.1f, 0.3f)),
                 knot(1, 0.2f)});
    CHECK(oc.Value(0.5f) == 0.7f);
    CHECK(oc.curve->SegmentValue(0, 0, 0.5f, 1) == 1.0f);
    CHECK(oc.curve->SegmentValue(0, 1, 0.5f, 1) == 0.0f);
    CHECK(oc.curve->SegmentValue(0, 1, 0.5f, 0) == 0.7f);
}

TEST_CASE_FIXTURE(Fixture, "the segment solve halves the parameter exactly 20 times") {
    OwnedCurve oc;
    // Handles at the thirds make x(u) = u up to rounding. 0.3 is hit by no dyadic u, so
    // the search runs all 20 halvings: u is an odd multiple of 2^-20.
    oc.SetKnots({knot(0, 0, KNOT_TYPE_BEZIER_SMOOTH, P(0, 0), P(1.0f / 3, 1.0f / 3)),
                 knot(1, 1, KNOT_TYPE_BEZIER_SMOOTH, P(-1.0f / 3, -1.0f / 3))});
    const float u = oc.curve->SegmentValue(0, 0, 0.3f, 1);
    const double scaled = double(u) * 1048576.0;
    CHECK(scaled == std::floor(scaled));
    CHECK(std::fmod(scaled, 2.0) == 1.0);
    CHECK(std::fabs(oc.curve->SegmentPoint(0, 0, u).x - 0.3f) < 2.0f / 1048576.0f);
    // mode 0 answers the y at that parameter
    CHECK(oc.curve->SegmentValue(0, 0, 0.3f, 0) == oc.curve->SegmentPoint(0, 0, u).y);
}

TEST_CASE_FIXTURE(Fixture, "a segment whose x falls with u is solved with the roles swapped") {
    OwnedCurve oc;
    // The closing segment of a cyclic curve runs from the last point back to the first,
    // so its x falls with u.
    oc.curve->SetPointCount(2);
    oc.curve->SetCurveFlags(0x1);
    evaltest::WriteKnot(*oc.curve, 0, knot(0.2f, 0.0f));
    evaltest::WriteKnot(*oc.curve, 1, knot(0.8f, 1.0f));
    const float u = oc.curve->SegmentValue(0, 1, 0.5f, 1);
    CHECK(u == doctest::Approx(0.5).epsilon(1e-5));
    CHECK(oc.curve->SegmentValue(0, 1, 0.5f, 0) == doctest::Approx(0.5).epsilon(1e-5));
}

TEST_CASE_FIXTURE(Fixture, "a cyclic curve's last segment runs from the last point to the first") {
    OwnedCurve oc;
    oc.curve->SetPointCount(3);
    oc.curve->SetCurveFlags(0x1);
    evaltest::WriteKnot(*oc.curve, 0,
                        knot(0.1f, 0.0f, KNOT_TYPE_BEZIER_SMOOTH, P(-0.1f, 0), P(0.1f, 0)));
    evaltest::WriteKnot(*oc.curve, 1, knot(0.5f, 1.0f));
    evaltest::WriteKnot(*oc.curve, 2,
                        knot(0.9f, 0.0f, KNOT_TYPE_BEZIER_SMOOTH, P(-0.1f, 0), P(0.2f, 0.4f)));
    Curve& c = *oc.curve;
    // Cyclic: the end points are not pinned to the range.
    CHECK(c.CachedPosition(0, 0).x == 0.1f);
    CHECK(c.CachedPosition(0, 2).x == 0.9f);
    CHECK(c.SegmentPoint(0, 2, 0.0f).x == 0.9f);
    CHECK(c.SegmentPoint(0, 2, 1.0f).x == 0.1f);
    // P0 = (0.9, 0), P1 = (1.1, 0.4), P2 = (0.0, 0), P3 = (0.1, 0) at u = 0.5
    const float u = 0.5f, v = 0.5f;
    const float p1x = 0.9f + 0.2f, p2x = 0.1f + -0.1f;
    const float want =
        ((0.9f * v + 3.0f * u * p1x) * v + 3.0f * u * u * p2x) * v + u * u * u * 0.1f;
    CHECK(Bits(c.SegmentPoint(0, 2, 0.5f).x) == Bits(want));
    CHECK(c.SegmentPoint(0, 2, 0.5f).y == doctest::Approx(0.4 * 3 / 8));
}

// ---------------------------------------------------------------------------------------
// The rebuild: pinning, move limits, the two passes

TEST_CASE_FIXTURE(Fixture, "end points are pinned to the range unless they carry KNOT_FREE_END_X") {
    OwnedCurve oc(-2.0f, 3.0f);
    oc.SetKnots({knot(0.3f, 0.5f, KNOT_TYPE_BEZIER_CORNER, P(0, 0), P(0.1f, 0.2f)),
                 knot(1.0f, 1.0f), knot(2.0f, 0.0f)});
    Curve& c = *oc.curve;
    CHECK(c.CachedPosition(0, 0) == P(-2.0f, 0.5f));
    CHECK(c.CachedPosition(0, 2).x == 3.0f);
    // Only the record's position moves: the segment is solved with the handle at the x of
    // the unpinned position (the segment's first control point after P0).
    const float u = 0.5f, v = 1.0f - u;
    const float p2x = 1.0f; // point 1 is a corner: its in-handle is its position
    const float want =
        ((-2.0f * v + 3.0f * u * (0.3f + 0.1f)) * v + 3.0f * u * u * p2x) * v + u * u * u * 1.0f;
    CHECK(Bits(c.SegmentPoint(0, 0, u).x) == Bits(want));
    // The cached out-handle is the record's position + outTan of the point.
    CHECK(c.CachedOutHandle(0, 0) == P(-2.0f + 0.1f, 0.5f + 0.2f));
    oc.SetKnots({knot(0.3f, 0.5f, KNOT_TYPE_CORNER | KNOT_FREE_END_X), knot(1.0f, 1.0f),
                 knot(2.0f, 0.0f, KNOT_TYPE_CORNER | KNOT_FREE_END_X)});
    CHECK(c.CachedPosition(0, 0).x == 0.3f);
    CHECK(c.CachedPosition(0, 2).x == 2.0f);
}

TEST_CASE_FIXTURE(Fixture, "move limits come from the neighbours and the y range") {
    OwnedCurve oc(0.0f, 1.0f, -1.0f, 2.0f);
    oc.SetKnots({knot(0, 0, KNOT_TYPE_BEZIER_SMOOTH, P(0, 0), P(0.2f, 0.1f)),
                 knot(0.5f, 0.5f, KNOT_TYPE_BEZIER_SMOOTH, P(-0.1f, -0.3f), P(0.1f, 0.4f)),
                 knot(1, 1, KNOT_TYPE_BEZIER_SMOOTH, P(-0.25f, 0.0f))});
    float right, left, up, down;
    oc.curve->CachedRoom(0, 1, right, left, up, down);
    // left: largest of -1e8, 0.2 - 0.5, 0 - 0.4
    CHECK(left == 0.2f - 0.5f);
    // right: smallest of 1e8, 0.75 - 0.5, 1 - 0.6
    CHECK(right == (1.0f - 0.25f) - 0.5f);
    // up: smallest of 2 - y for y = 0.5, 0.2, 0.9; down: largest of -1 - y
    CHECK(up == 2.0f - (0.5f + 0.4f));
    CHECK(down == -1.0f - (0.5f - 0.3f));
    // End points are not limited.
    oc.curve->CachedRoom(0, 0, right, left, up, down);
    CHECK(right == 100000000.0f);
    CHECK(left == -100000000.0f);
    CHECK(up == 100000000.0f);
    CHECK(down == -100000000.0f);
    // Out of range: zeros.
    oc.curve->CachedRoom(0, 3, right, left, up, down);
    CHECK((right == 0.0f && left == 0.0f && up == 0.0f && down == 0.0f));
}

TEST_CASE_FIXTURE(Fixture, "the forward pass pushes a point right of its left neighbour") {
    OwnedCurve oc;
    oc.SetKnots({knot(0, 0), knot(0.6f, 0.5f), knot(0.4f, 0.5f), knot(1, 1)});
    Curve& c = *oc.curve;
    // Point 2's left room is 0.6 - 0.4 > 0: it moves right by that much, handles with it.
    CHECK(c.CachedPosition(0, 2).x == 0.4f + (0.6f - 0.4f));
    float right, left, up, down;
    c.CachedRoom(0, 2, right, left, up, down);
    CHECK(left <= 0.0f);
    // Once in order, the exact solve finds x in the segments again.
    CHECK(oc.Value(0.8f) == doctest::Approx(0.5 + 0.5 * 0.5).epsilon(0.1));
}

TEST_CASE_FIXTURE(Fixture,
                  "the backward pass pulls back a point whose handle passes its right neighbour") {
    OwnedCurve oc;
    oc.SetKnots(
        {knot(0, 0), knot(0.5f, 0.5f, KNOT_TYPE_BEZIER_CORNER, P(0, 0), P(0.7f, 0)), knot(1, 1)});
    // Right room of point 1: 1 - (0.5 + 0.7) < 0: it moves left by that, its handle too.
    const float room = 1.0f - (0.5f + 0.7f);
    CHECK(oc.curve->CachedPosition(0, 1).x == 0.5f + room);
    CHECK(oc.curve->CachedOutHandle(0, 1).x == (0.5f + room) + 0.7f);
    // The segment's control point moved by the same room: x 0.5 + 0.7, then + room.
    const float u = 0.5f, v = 1.0f - u;
    const float want =
        ((((0.5f + room) * v + 3.0f * u * ((0.5f + 0.7f) + room)) * v + 3.0f * u * u * 1.0f) * v) +
        u * u * u * 1.0f;
    CHECK(Bits(oc.curve->SegmentPoint(0, 1, u).x) == Bits(want));
}

TEST_CASE_FIXTURE(Fixture,
                  "with CC_CONSTRAIN_Y points are pushed into the y range, handles along") {
    OwnedCurve on(0.0f, 1.0f, 0.0f, 1.0f, CC_DEFAULT_FLAGS);
    on.SetKnots({knot(0, -0.5f, KNOT_TYPE_BEZIER_CORNER, P(0, 0), P(0.2f, 0.1f)), knot(0.5f, 1.5f),
                 knot(1, 0.5f)});
    CHECK(on.curve->CachedPosition(0, 0).y == 0.0f);
    CHECK(on.curve->CachedOutHandle(0, 0).y == 0.0f + 0.1f); // the pushed position + outTan
    CHECK(on.curve->CachedPosition(0, 1).y == 1.0f);
    OwnedCurve off(0.0f, 1.0f, 0.0f, 1.0f, CC_DEFAULT_FLAGS & ~CC_CONSTRAIN_Y);
    off.SetKnots({knot(0, -0.5f), knot(0.5f, 1.5f), knot(1, 0.5f)});
    CHECK(off.curve->CachedPosition(0, 0).y == -0.5f);
    CHECK(off.curve->CachedPosition(0, 1).y == 1.5f);
}

TEST_CASE_FIXTURE(Fixture, "points out of order leave x in no segment: 0 without lookup") {
    OwnedCurve oc;
    // Free ends keep the x order broken: 0.7 then 0.3, nothing interior to push.
    oc.SetKnots({knot(0.7f, 0.4f, KNOT_TYPE_CORNER | KNOT_FREE_END_X),
                 knot(0.3f, 0.9f, KNOT_TYPE_CORNER | KNOT_FREE_END_X)});
    CHECK(oc.Value(0.5f) == 0.0f);
    CHECK(oc.Value(kNaN) == 0.0f);
}

// ---------------------------------------------------------------------------------------
// Lookup table

TEST_CASE_FIXTURE(Fixture, "lookup follows its formula: index from x - x low, fraction from x") {
    OwnedCurve oc(2.0f, 4.0f, 0.0f, 2.0f);
    oc.SetKnots({knot(2, 0), knot(4, 2)});
    oc.curve->SetLookupSize(4);
    // The table: SegmentValue at x = 2, 2 + step, ... accumulated, step = 2 / 4.
    const float step = (4.0f - 2.0f) / 4.0f;
    const float scale = float(4 - 1) / (4.0f - 2.0f);
    float table[5];
    float x = 2.0f;
    for (int k = 0; k <= 4; ++k, x += step)
        table[k] = oc.curve->SegmentValue(0, 0, x, 0);
    for (float q : {2.0f, 2.3f, 3.0f, 3.7f, 4.0f}) {
        const int k = int((q - 2.0f) * scale);
        const float want = table[k] + (table[k + 1] - table[k]) * (q - k * step) / step;
        INFO("x = ", q);
        CHECK(Bits(oc.Value(q, TRUE)) == Bits(want));
    }
    // The fraction taken from x itself lands far from the curve here: at x = 3 the curve
    // is 1 but the table answers about 0.5 + 0.5 * 5.
    CHECK(oc.Value(3.0f, FALSE) == doctest::Approx(1.0).epsilon(1e-5));
    CHECK(oc.Value(3.0f, TRUE) == doctest::Approx(3.0).epsilon(1e-4));
}

TEST_CASE_FIXTURE(Fixture, "lookup entries no segment reaches keep what the table held") {
    OwnedCurve oc;
    oc.SetKnots({knot(0, 0.5f), knot(1, 0.5f)});
    oc.curve->SetLookupSize(10);
    CHECK(oc.Value(0.2f, TRUE) == doctest::Approx(0.5));
    // Now the first point starts at 0.6: entries below it are not rebuilt and keep 0.5,
    // while the exact answer there is 0 (no segment). (SetPointCount would copy the curve
    // and so start a fresh table: the points are rewritten in place.)
    evaltest::WriteKnot(*oc.curve, 0, knot(0.6f, 0.1f, KNOT_TYPE_CORNER | KNOT_FREE_END_X));
    evaltest::WriteKnot(*oc.curve, 1, knot(1, 0.1f));
    CHECK(oc.Value(0.2f, FALSE) == 0.0f);
    CHECK(oc.Value(0.2f, TRUE) == doctest::Approx(0.5));
    CHECK(oc.Value(0.8f, TRUE) == doctest::Approx(0.1));
    // A new size starts from a fresh table: zeros where no segment reaches.
    oc.curve->SetLookupSize(20);
    CHECK(oc.Value(0.2f, TRUE) == 0.0f);
}

TEST_CASE_FIXTURE(Fixture, "the lookup table is rebuilt after every cache rebuild") {
    OwnedCurve oc(0.0f, 1.0f, 0.0f, 4.0f);
    oc.SetKnots({knot(0, 0), knot(1, 1)});
    const float before = oc.Value(0.5f, TRUE);
    evaltest::WriteKnot(*oc.curve, 1, knot(1, 3));
    const float after = oc.Value(0.5f, TRUE);
    CHECK(before == doctest::Approx(0.5).epsilon(0.01));
    CHECK(after == doctest::Approx(1.5).epsilon(0.01));
}

TEST_CASE_FIXTURE(Fixture, "a lookup size below 1 and a not-a-number x answer the exact value") {
    OwnedCurve oc;
    oc.SetKnots({knot(0, 0), knot(0.5f, 0.8f), knot(1, 0.2f)});
    const float exact = oc.Value(0.3f, FALSE);
    for (int size : {0, -1, -1000}) {
        oc.curve->SetLookupSize(size);
        INFO("size ", size);
        CHECK(Bits(oc.Value(0.3f, TRUE)) == Bits(exact));
    }
    oc.curve->SetLookupSize(1000);
    CHECK(oc.Value(kNaN, TRUE) == 0.0f);
}

TEST_CASE_FIXTURE(Fixture,
                  "SetLookupSize to the same size keeps the cache; a new size empties it") {
    OwnedCurve oc;
    oc.SetKnots({knot(0, 0), knot(1, 1)});
    Curve& c = *oc.curve;
    c.EnsureCache(0);
    long n = c.LookupCount();
    c.SetLookupSize(1000);
    c.EnsureCache(0);
    CHECK(c.LookupCount() == n + 1); // one test, no rebuild
    n = c.LookupCount();
    c.SetLookupSize(10);
    c.EnsureCache(0);
    CHECK(c.LookupCount() == n + 2); // the test and the rebuild
}

// ---------------------------------------------------------------------------------------
// The cache: validity, counting, controllers

TEST_CASE_FIXTURE(Fixture, "the cache is rebuilt at most once per validity interval") {
    OwnedCurve oc;
    oc.SetKnots({knot(0, 0), knot(0.5f, 0.5f), knot(1, 1)});
    Curve& c = *oc.curve;
    const long start = c.LookupCount();
    oc.Value(0.25f); // test + rebuild + the segment solve's test
    CHECK(c.LookupCount() == start + 3);
    oc.Value(0.25f, FALSE, 500); // no controllers: valid forever, no rebuild
    CHECK(c.LookupCount() == start + 5);
    // test + one per table entry that a segment holds: the entries' x accumulate 0.001
    // a thousand times, and the last one may pass 1 by rounding.
    long entries = 0;
    float x = 0.0f;
    for (int k = 0; k <= 1000; ++k, x += 1.0f / 1000.0f)
        entries += x <= 1.0f ? 1 : 0;
    CHECK(entries >= 1000);
    oc.Value(0.25f, TRUE);
    CHECK(c.LookupCount() == start + 5 + 1 + entries);
    oc.Value(0.75f, TRUE); // the table is built: one test
    CHECK(c.LookupCount() == start + 5 + 1 + entries + 1);
}

TEST_CASE_FIXTURE(Fixture, "animated points narrow the validity to the controller's") {
    OwnedCurve oc;
    oc.SetKnots({knot(0, 0), knot(0.5f, 0.5f), knot(1, 1)});
    const TimeValue times[] = {0, 100};
    const Point2 values[] = {P(0.5f, 0.0f), P(0.5f, 1.0f)};
    evaltest::AnimatePoint(*oc.curve, 1, times, values, 2);
    Curve& c = *oc.curve;
    Interval valid = FOREVER;
    CHECK(c.ValueAt(50, 0.5f, valid, FALSE) == doctest::Approx(0.5));
    CHECK(valid == Interval(50, 50));
    CHECK(c.CacheValidity(50) == Interval(50, 50));
    valid = Interval(0, 1000);
    CHECK(c.ValueAt(200, 0.5f, valid, FALSE) == 1.0f);
    CHECK(valid == Interval(100, 1000));
    CHECK(c.CachedPosition(-20, 1).y == 0.0f);
    CHECK(c.CacheValidity(-20) == Interval(TIME_NegInfinity, 0));
}

TEST_CASE_FIXTURE(Fixture,
                  "a curve without points is 0 everywhere; one point is its y everywhere") {
    OwnedCurve oc;
    CHECK(oc.Value(0.5f) == 0.0f);
    CHECK(oc.Value(0.5f, TRUE) == 0.0f);
    CHECK(oc.Value(7.0f) == 0.0f);
    float lo = 1, hi = 1;
    oc.curve->GetValueBounds(0, lo, hi);
    CHECK((lo == 0.0f && hi == 0.0f));
    CHECK(oc.curve->SegmentValue(0, 0, 0.5f, 0) == 0.0f);
    oc.SetKnots({knot(0.3f, 0.25f)});
    CHECK(oc.Value(0.5f) == 0.25f);
    CHECK(oc.Value(-3.0f) == 0.25f);
    CHECK(oc.Value(9.0f, TRUE) == 0.25f);
}

TEST_CASE_FIXTURE(Fixture, "queries with an index out of range answer zeros") {
    OwnedCurve oc;
    oc.SetKnots({knot(0, 0), knot(1, 1)});
    Curve& c = *oc.curve;
    for (int i : {-1, 2, 1000}) {
        INFO("index ", i);
        CHECK(c.CachedPosition(0, i) == P(0, 0));
        CHECK(c.CachedInHandle(0, i) == P(0, 0));
        CHECK(c.CachedOutHandle(0, i) == P(0, 0));
        CHECK(c.SegmentPoint(0, i, 0.5f) == P(0, 0));
        CHECK(c.SegmentValue(0, i, 0.5f, 0) == 0.0f);
    }
}

TEST_CASE_FIXTURE(Fixture, "a curve without owner evaluates in the range (0, 1)") {
    Curve c(nullptr, 0);
    c.SetPointCount(2);
    evaltest::WriteKnot(c, 0, knot(0.4f, 0.0f));
    evaltest::WriteKnot(c, 1, knot(0.6f, 1.0f));
    CHECK(c.CachedPosition(0, 0).x == 0.0f);
    CHECK(c.CachedPosition(0, 1).x == 1.0f);
    Interval valid = FOREVER;
    CHECK(c.ValueAt(0, 2.0f, valid, FALSE) == 2.0f);
    CHECK(c.ValueAt(0, 0.5f, valid, TRUE) == doctest::Approx(0.5).epsilon(0.01));
}

TEST_CASE_FIXTURE(Fixture, "value bounds cover the points and the drawn pieces") {
    OwnedCurve oc;
    oc.SetKnots({knot(0, 0), knot(1, 1)});
    float lo, hi;
    oc.curve->GetValueBounds(0, lo, hi);
    CHECK(lo == 0.0f);
    CHECK(hi == 1.0f);
    // A handle that lifts the segment above both points: the bound follows the sampled
    // curve, whose highest piece end is at u = 0.5 for this symmetric hump.
    oc.SetKnots({knot(0, 0, KNOT_TYPE_BEZIER_CORNER, P(0, 0), P(0.3f, 2.0f)),
                 knot(1, 0, KNOT_TYPE_BEZIER_CORNER, P(-0.3f, 2.0f))});
    oc.curve->GetValueBounds(0, lo, hi);
    CHECK(lo == 0.0f);
    CHECK(hi == oc.curve->SegmentPoint(0, 0, 0.5f).y);
    CHECK(hi == doctest::Approx(1.5));
}

TEST_CASE_FIXTURE(Fixture, "Initialize rebuilds at once and reports the validity") {
    OwnedCurve oc;
    oc.SetKnots({knot(0, 0), knot(1, 1)});
    Interval valid(3, 4);
    oc.curve->Initialize(10, valid);
    CHECK(valid == FOREVER);
    const long n = oc.curve->LookupCount();
    oc.curve->EnsureCache(10);
    CHECK(oc.curve->LookupCount() == n + 1); // Initialize made the cache current
}

// ---------------------------------------------------------------------------------------
// Undo records and the cache: which undo and redo operations rebuild it

namespace {

/// A stand-in for the editor window that counts the repaints the control asks for.
class RepaintCounter : public IEditorView {
public:
    HWND Handle() override { return reinterpret_cast<HWND>(this); }
    void RedrawGraph() override { ++redraws; }
    void InvalidateGraph() override {}
    void CaptureView(float&, float&, int&, int&) override {}
    void SetZoom(float, float) override {}
    void SetScroll(int, int) override {}
    void SetCaption(const char*) override {}
    void SelectEditMode(int, int) override {}
    void GetEditMode(int& mode, int& flyOff) override { mode = flyOff = 0; }
    void SetDisplayMode(const BitArray&) override {}
    BitArray DisplayMode() override { return BitArray(); }
    void RebuildCurveButtons() override {}
    void SendCommand(int) override {}
    bool AspectRescale(int) override { return false; }
    void InvalidateRuler() override {}
    void RedrawRuler() override {}

    int redraws = 0;
};

/// How many cache rebuilds one evaluation at t needs now (0 or 1).
long rebuildsToEvaluate(Curve& c, TimeValue t = 0) {
    const long before = c.LookupCount();
    c.EnsureCache(t);
    return c.LookupCount() - before - 1;
}

bool sameKnot(const CurveKnot& a, const CurveKnot& b) {
    return a.pos == b.pos && a.inTan == b.inTan && a.outTan == b.outTan && a.flags == b.flags;
}

} // namespace

TEST_CASE_FIXTURE(Fixture, "undo of an insertion then redo gives the same point, cache rebuilt") {
    OwnedCurve oc;
    oc.SetKnots({knot(0, 0), knot(0.5f, 0.5f), knot(1, 0)});
    Curve& c = *oc.curve;
    const float before = oc.Value(0.25f);

    theHold.Begin();
    const CurveKnot added = knot(0.25f, 0.9f, KNOT_TYPE_BEZIER_CORNER, P(-0.05f, 0), P(0.05f, 0));
    const int at = c.InsertKnot(1, added);
    theHold.Accept("Insert Points");
    REQUIRE(at == 1);
    const CurveKnot stored = c.Knots()[1];
    const float inserted = oc.Value(0.25f);
    CHECK(inserted == 0.9f); // the new point lies exactly at x = 0.25

    REQUIRE(theHold.Undo());
    CHECK(c.PointCount() == 3);
    CHECK(rebuildsToEvaluate(c) == 1);
    CHECK(Bits(oc.Value(0.25f)) == Bits(before));

    REQUIRE(theHold.Redo());
    REQUIRE(c.PointCount() == 4);
    CHECK(sameKnot(c.Knots()[1], stored));
    CHECK(rebuildsToEvaluate(c) == 1);
    CHECK(Bits(oc.Value(0.25f)) == Bits(inserted));
}

TEST_CASE_FIXTURE(Fixture, "undo of a selection change repaints but does not rebuild the cache") {
    OwnedCurve oc;
    oc.SetKnots({knot(0, 0), knot(0.5f, 0.5f), knot(1, 0)});
    Curve& c = *oc.curve;
    RepaintCounter view;
    oc.owner->AttachEditor(reinterpret_cast<HWND>(&view), &view);

    BitArray sel(3);
    sel.Set(1);
    theHold.Begin();
    c.SetSelection(sel, 4);
    theHold.Accept("Select");
    REQUIRE((c.Knots()[1].flags & KNOT_SELECTED) != 0);

    c.EnsureCache(0);
    view.redraws = 0;
    REQUIRE(theHold.Undo());
    CHECK((c.Knots()[1].flags & KNOT_SELECTED) == 0);
    CHECK(view.redraws >= 1);
    CHECK(rebuildsToEvaluate(c) == 0);

    view.redraws = 0;
    REQUIRE(theHold.Redo());
    CHECK((c.Knots()[1].flags & KNOT_SELECTED) != 0);
    CHECK(view.redraws >= 1);
    CHECK(rebuildsToEvaluate(c) == 0);
    oc.owner->DetachEditor();
}

TEST_CASE_FIXTURE(Fixture, "undo and redo of a stored point rebuild the cache") {
    OwnedCurve oc;
    oc.SetKnots({knot(0, 0), knot(0.5f, 0.5f), knot(1, 0)});
    Curve& c = *oc.curve;
    const float before = oc.Value(0.5f);
    theHold.Begin();
    c.StoreKnot(1, knot(0.5f, 0.8f));
    theHold.Accept("Move Points");
    const float after = oc.Value(0.5f);
    CHECK(after == 0.8f);

    REQUIRE(theHold.Undo());
    CHECK(rebuildsToEvaluate(c) == 1);
    CHECK(oc.Value(0.5f) == before);
    REQUIRE(theHold.Redo());
    CHECK(rebuildsToEvaluate(c) == 1);
    CHECK(oc.Value(0.5f) == after);
}

TEST_CASE_FIXTURE(Fixture, "rolling a hold back restores positions without rebuilding the cache") {
    OwnedCurve oc;
    oc.SetKnots({knot(0, 0), knot(0.5f, 0.5f), knot(1, 0)});
    Curve& c = *oc.curve;
    const Point2 start = c.Knots()[1].pos;

    theHold.Begin();
    CurveKnot moved = c.Knots()[1];
    moved.pos.y = 0.8f;
    c.SetKnot(0, 1, moved, FALSE, FALSE);
    CHECK(oc.Value(0.5f) == 0.8f); // the cache now holds the moved point
    // A roll-back is not a real undo: the position record puts the point back but leaves
    // the cache as it is (only a real undo empties it), so evaluation keeps the moved
    // shape until the next change of the curve.
    theHold.Cancel();
    CHECK(c.Knots()[1].pos == start);
    CHECK(rebuildsToEvaluate(c) == 0);
    CHECK(oc.Value(0.5f) == 0.8f);
    c.InvalidateCache();
    CHECK(oc.Value(0.5f) == 0.5f);
}

TEST_CASE_FIXTURE(Fixture, "undo of SetPointCount gives back the animated points' values") {
    OwnedCurve oc(0.0f, 1.0f, -2.0f, 2.0f);
    oc.SetKnots({knot(0, 0), knot(0.5f, 0.5f), knot(1, 0)});
    Curve& c = *oc.curve;
    const TimeValue times[] = {0, 100};
    const Point2 values[] = {P(0.4f, -1.0f), P(0.6f, 1.0f)};
    evaltest::AnimatePoint(c, 1, times, values, 2);
    const float at50 = oc.Value(0.5f, FALSE, 50);
    const float at100 = oc.Value(0.6f, TRUE, 100);

    theHold.Begin();
    c.SetPointCount(5);
    theHold.Accept("Reset Curve");
    CHECK(c.PointCount() == 5);
    CHECK(oc.Value(0.5f, FALSE, 50) == 0.0f);

    REQUIRE(theHold.Undo());
    REQUIRE(c.PointCount() == 3);
    CHECK(c.IsPointAnimated(1));
    CHECK(Bits(oc.Value(0.5f, FALSE, 50)) == Bits(at50));
    CHECK(Bits(oc.Value(0.6f, TRUE, 100)) == Bits(at100));
}
