// An end point stored away from the range end it is pinned to (after SetXRange without
// rescale, SetKnot without checks, a load, a client's direct write). Its record's position
// sits on the range end while the record's handles keep the stored x; the cached-point
// queries answer the record's position plus the point's tangents, and everything that
// measures from the handles (the continuation outside the range, the move ranges of the
// neighbours, insertion next to it) uses those.
#include "control/curve_control.h"
#include "curve/curve.h"
#include "curve_eval_test_util.h"
#include "test_support.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <cmath>

using evaltest::Bits;
using testsupport::CoreFixture;

namespace {

using P = Point2;

/// A curve of `owner` with the given points; the end points carry KNOT_ENDPOINT.
Curve* makeCurve(CurveControl& owner, std::initializer_list<CurveKnot> knots) {
    auto* c = new Curve(&owner, 0);
    c->SetPointCount(int(knots.size()));
    int i = 0;
    for (const CurveKnot& k : knots)
        evaltest::WriteKnot(*c, i++, k);
    return c;
}

float valueAt(Curve& c, float x) {
    Interval valid = FOREVER;
    return c.ValueAt(0, x, valid, FALSE);
}

constexpr uint32_t kBezierCorner = KNOT_BEZIER | KNOT_CORNER;
constexpr uint32_t kEnd = KNOT_ENDPOINT;

} // namespace

TEST_CASE_FIXTURE(CoreFixture, "pinned end: the cached handles are the pinned position + tangent") {
    CurveControl owner;
    owner.SetXRange(0.0f, 2.0f, FALSE);
    // The last point stored at (1, 1), pinned to x = 2.
    Curve* c =
        makeCurve(owner, {CurveKnot(P(0.0f, 0.0f), P(), P(), kEnd | KNOT_CORNER),
                          CurveKnot(P(1.0f, 1.0f), P(-0.3f, -0.3f), P(), kEnd | kBezierCorner)});
    c->SetEndBehaviour(0);
    CHECK(c->CachedPosition(0, 1) == P(2.0f, 1.0f));
    CHECK(c->CachedInHandle(0, 1) == P(2.0f + -0.3f, 1.0f + -0.3f)); // (1.7, 0.7)
    CHECK(c->CachedOutHandle(0, 1) == P(2.0f, 1.0f));
    // Outside the range: the line through the in-handle (1.7, 0.7) and the point (2, 1).
    const float ax = 2.0f, ay = 1.0f, bx = 2.0f + -0.3f, by = 1.0f + -0.3f;
    CHECK(Bits(valueAt(*c, 3.0f)) == Bits((ay - by) / (ax - bx) * (3.0f - bx) + by));
    CHECK(valueAt(*c, 3.0f) == doctest::Approx(2.0).epsilon(1e-5));
    c->SetEndBehaviour(1);
    CHECK(valueAt(*c, 3.0f) == 1.0f);
    // The segment itself is still solved with the record's handle, at the stored x 0.7.
    const float u = 0.5f, v = 1.0f - u;
    const float want =
        ((0.0f * v + 3.0f * u * 0.0f) * v + 3.0f * u * u * (1.0f + -0.3f)) * v + u * u * u * 2.0f;
    CHECK(Bits(c->SegmentPoint(0, 0, u).x) == Bits(want));
    delete c;
}

TEST_CASE_FIXTURE(CoreFixture, "pinned end: the value left of the range uses the first point's") {
    CurveControl owner;
    owner.SetXRange(0.0f, 2.0f, FALSE);
    // The first point stored at (1, 0) with out-tangent (0.3, 0.3), pinned to x = 0.
    Curve* c = makeCurve(owner, {CurveKnot(P(1.0f, 0.0f), P(), P(0.3f, 0.3f), kEnd | kBezierCorner),
                                 CurveKnot(P(2.0f, 1.0f), P(), P(), kEnd | KNOT_CORNER)});
    CHECK(c->CachedPosition(0, 0) == P(0.0f, 0.0f));
    CHECK(c->CachedOutHandle(0, 0) == P(0.3f, 0.3f));
    CHECK(c->CachedInHandle(0, 0) == P(0.0f, 0.0f));
    const float ax = 0.0f, ay = 0.0f, bx = 0.0f + 0.3f, by = 0.0f + 0.3f;
    CHECK(Bits(valueAt(*c, -1.0f)) == Bits((by - ay) / (bx - ax) * (-1.0f - ax) + ay));
    CHECK(valueAt(*c, -1.0f) == doctest::Approx(-1.0).epsilon(1e-5));
    c->SetEndBehaviour(1);
    CHECK(valueAt(*c, -1.0f) == 0.0f);
    delete c;
}

TEST_CASE_FIXTURE(CoreFixture, "pinned end: a handle that reaches no further falls back to the "
                               "neighbour, whatever the stored x") {
    CurveControl owner;
    owner.SetXRange(0.0f, 2.0f, FALSE);
    // The last point stored at (3, 1) with in-tangent (0, -1): its handle is vertical above
    // the pinned point, so the continuation takes the chord to point 0 instead of a slope
    // through a handle left of x = 2 (the stored handle's x, 3, lies right of it).
    Curve* c =
        makeCurve(owner, {CurveKnot(P(0.0f, 0.0f), P(), P(), kEnd | KNOT_CORNER),
                          CurveKnot(P(3.0f, 1.0f), P(0.0f, -1.0f), P(), kEnd | kBezierCorner)});
    CHECK(c->CachedInHandle(0, 1) == P(2.0f, 0.0f));
    CHECK(Bits(valueAt(*c, 4.0f)) == Bits((1.0f - 0.0f) / (2.0f - 0.0f) * (4.0f - 0.0f) + 0.0f));
    delete c;
}

namespace {
/// Range 0 .. 1, four points; the first stored at x = -0.4 and the last at x = 1.4, so
/// that the records' handles (x -0.2 and 1.2) and the queries' (x 0.2 and 0.8) differ, and
/// no pass moves a record.
Curve* fourPoints(CurveControl& owner) {
    return makeCurve(owner, {CurveKnot(P(-0.4f, 0.0f), P(), P(0.2f, 0.0f), kEnd | kBezierCorner),
                             CurveKnot(P(0.5f, 0.5f), P(-0.05f, 0.0f), P(0.05f, 0.0f), KNOT_BEZIER),
                             CurveKnot(P(0.7f, 0.5f), P(-0.05f, 0.0f), P(0.05f, 0.0f), KNOT_BEZIER),
                             CurveKnot(P(1.4f, 1.0f), P(-0.2f, 0.0f), P(), kEnd | kBezierCorner)});
}
} // namespace

TEST_CASE_FIXTURE(CoreFixture, "pinned end: the move ranges of points 1 and n - 2") {
    CurveControl owner;
    Curve* c = fourPoints(owner);
    REQUIRE(c->CachedPosition(0, 0).x == 0.0f);
    REQUIRE(c->CachedPosition(0, 3).x == 1.0f);
    CHECK(c->CachedOutHandle(0, 0) == P(0.0f + 0.2f, 0.0f));
    CHECK(c->CachedInHandle(0, 3) == P(1.0f + -0.2f, 1.0f));

    float lo = 0, hi = 0;
    c->GetMoveRange(0, 1, lo, hi);
    // lo: the largest of outHandle(0).x - pos(1).x and pos(0).x - inHandle(1).x.
    CHECK(lo == std::max((0.0f + 0.2f) - 0.5f, 0.0f - (0.5f + -0.05f)));
    CHECK(lo == doctest::Approx(-0.3));
    // hi: the smallest of inHandle(2).x - pos(1).x and pos(2).x - outHandle(1).x.
    CHECK(hi == std::min((0.7f + -0.05f) - 0.5f, 0.7f - (0.5f + 0.05f)));

    c->GetMoveRange(0, 2, lo, hi);
    CHECK(lo == std::max((0.5f + 0.05f) - 0.7f, 0.5f - (0.7f + -0.05f)));
    // hi: inHandle(3).x is 0.8 (the pinned position 1 + -0.2), not the record's 1.2.
    CHECK(hi == std::min((1.0f + -0.2f) - 0.7f, 1.0f - (0.7f + 0.05f)));
    CHECK(hi == doctest::Approx(0.1));

    // A drag of point 2 far right stops there.
    Point2 want(5.0f, 0.5f);
    c->ClampKnotPosition(0, 2, want);
    CHECK(want.x == 0.7f + hi);

    // The move limits of the records themselves still measure from the records' handles.
    float right, left, up, down;
    c->CachedRoom(0, 2, right, left, up, down);
    CHECK(right == std::min((1.4f + -0.2f) - 0.7f, 1.0f - (0.7f + 0.05f)));
    delete c;
}

TEST_CASE_FIXTURE(CoreFixture, "pinned end: inserting next to a pinned end splits with its "
                               "cached handle") {
    CurveControl owner;
    Curve* c = fourPoints(owner);
    const float x = 0.25f;
    const float u = c->SegmentValue(0, 0, x, 1);
    REQUIRE(u > 0.0f);
    REQUIRE(u < 1.0f);
    // De Casteljau from the positions and the cached handles of points 0 and 1.
    const P p0(0.0f, 0.0f), p1(0.0f + 0.2f, 0.0f), p2(0.5f + -0.05f, 0.5f), p3(0.5f, 0.5f);
    const P q01 = p0 + (p1 - p0) * u, q12 = p1 + (p2 - p1) * u, q23 = p2 + (p3 - p2) * u;
    P q012 = q01 + (q12 - q01) * u, q123 = q12 + (q23 - q12) * u;
    const P s = q012 + (q123 - q012) * u;
    q012.x = std::max(q012.x, p0.x);
    q123.x = std::min(q123.x, p3.x);
    P out = q01, in = q23;
    out.x = std::min(out.x, s.x);
    in.x = std::max(in.x, s.x);

    REQUIRE(c->InsertKnotAtX(0, 0, x, 1) == 1);
    REQUIRE(c->PointCount() == 5);
    const CurveKnot* k = c->Knots();
    CHECK(k[1].pos == s);
    CHECK(k[1].inTan == q012 - s);
    CHECK(k[1].outTan == q123 - s);
    // Point 0's out-tangent is measured from its pinned position (0, 0).
    CHECK(k[0].outTan == out - p0);
    CHECK(k[2].inTan == in - p3);
    // The new point lies on the curve the user saw: the old segment at u.
    CHECK(k[1].pos.y == doctest::Approx(0.5 * (3 * u * u * (1 - u)) + 0.5 * u * u * u));
    delete c;
}

TEST_CASE_FIXTURE(CoreFixture, "pinned end: after SetXRange without rescale") {
    CurveControl owner;
    owner.SetCurveCount(1, FALSE);
    Curve* c = owner.GetCurveObject(0);
    CurveKnot last = c->Knots()[1];
    last.flags = kEnd | kBezierCorner;
    last.inTan = P(-0.25f, -0.5f);
    last.pos.y = 1.0f;
    c->StoreKnot(1, last);
    owner.SetXRange(0.0f, 4.0f, FALSE); // the point stays stored at x 1, pinned to 4
    CHECK(c->CachedInHandle(0, 1) == P(4.0f + -0.25f, 1.0f + -0.5f));
    CHECK(Bits(valueAt(*c, 5.0f)) ==
          Bits((1.0f - 0.5f) / (4.0f - 3.75f) * (5.0f - 3.75f) + 0.5f)); // slope 2
    CHECK(std::isfinite(valueAt(*c, 5.0f)));
}
