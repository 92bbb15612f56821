// Move ranges of points, of the selection and of handles, and ClampKnotPosition.
//
// Expected values are worked by hand from the point tables below.
#include "core/curve_edit_fixture.h"

#include <doctest/doctest.h>

using namespace edit_test;

namespace {

// p0 (0, 0)     out +0.1
// p1 (0.4, 0.5) in -0.1, out +0.1
// p2 (0.7, 0.5) in -0.05, out +0.05
// p3 (1, 1)     in -0.1
std::vector<CurveKnot> fourPoints() {
    return {Knot(0.0f, 0.0f, KNOT_TYPE_BEZIER_CORNER, Point2(), Point2(0.1f, 0.0f)),
            Knot(0.4f, 0.5f, KNOT_TYPE_BEZIER_CORNER, Point2(-0.1f, 0.0f), Point2(0.1f, 0.0f)),
            Knot(0.7f, 0.5f, KNOT_TYPE_BEZIER_CORNER, Point2(-0.05f, 0.0f), Point2(0.05f, 0.0f)),
            Knot(1.0f, 1.0f, KNOT_TYPE_BEZIER_CORNER, Point2(-0.1f, 0.0f), Point2())};
}

struct Range {
    float lo, hi;
};

Range moveRange(Curve& c, int i) {
    Range r{};
    c.GetMoveRange(kNow, i, r.lo, r.hi);
    return r;
}

Range moveYRange(Curve& c, int i) {
    Range r{};
    c.GetMoveYRange(kNow, i, r.lo, r.hi);
    return r;
}

Range handleXRange(Curve& c, int i, int selector) {
    Range r{};
    c.GetHandleXRange(kNow, i, selector, r.lo, r.hi);
    return r;
}

const int kAll = -1; // any index outside the table: the whole selection

} // namespace

TEST_CASE("the first and last points never move in x") {
    CurveFixture f(fourPoints());
    CHECK(moveRange(f.curve(), 0).lo == 0.0f);
    CHECK(moveRange(f.curve(), 0).hi == 0.0f);
    CHECK(moveRange(f.curve(), 3).lo == 0.0f);
    CHECK(moveRange(f.curve(), 3).hi == 0.0f);
    // ... but in y they do, within the y range.
    const Range y = moveYRange(f.curve(), 0);
    CHECK(y.lo == doctest::Approx(0.0f));
    CHECK(y.hi == doctest::Approx(1.0f));
}

TEST_CASE("a point moves until it meets its neighbour's handle or its handle meets the neighbour") {
    CurveFixture f(fourPoints());
    // Left: p0's out-handle at 0.1 allows -0.3, p1's in-handle reaching p0 allows -0.3.
    // Right: p2's in-handle at 0.65 allows 0.25, p1's out-handle reaching p2 allows 0.2.
    const Range r = moveRange(f.curve(), 1);
    CHECK(r.lo == doctest::Approx(-0.3f));
    CHECK(r.hi == doctest::Approx(0.2f));
}

TEST_CASE("an empty curve has no room at all") {
    CurveFixture f({});
    CHECK(f.curve().PointCount() == 0);
    const Range r = moveRange(f.curve(), kAll);
    CHECK(r.lo == 0.0f);
    CHECK(r.hi == 0.0f);
    const Range h = handleXRange(f.curve(), 0, 0x200);
    CHECK(h.lo == 0.0f);
    CHECK(h.hi == 0.0f);
}

TEST_CASE("a whole selection is limited only by the neighbours that stay") {
    CurveFixture f(fourPoints());
    Curve& c = f.curve();

    SUBCASE("nothing selected: no limit") {
        const Range r = moveRange(c, kAll);
        CHECK(r.lo == -1e8f);
        CHECK(r.hi == 1e8f);
    }
    SUBCASE("p1 and p2 move together: p0 and p3 limit them") {
        Select(c, {1, 2});
        // p1 against p0: -0.3. p2 against p3: p3's in-handle at 0.9 allows 0.2, p2's
        // out-handle at 0.75 reaching p3 allows 0.25.
        const Range r = moveRange(c, kAll);
        CHECK(r.lo == doctest::Approx(-0.3f));
        CHECK(r.hi == doctest::Approx(0.2f));
    }
    SUBCASE("a selected end point still limits its selected neighbour, and is not limited") {
        Select(c, {0, 1});
        const Range r = moveRange(c, kAll);
        CHECK(r.lo == doctest::Approx(-0.3f));
        CHECK(r.hi == doctest::Approx(0.2f));
        Select(c, {0});
        const Range ends = moveRange(c, 100);
        CHECK(ends.lo == -1e8f);
        CHECK(ends.hi == 1e8f);
    }
    SUBCASE("a free end point moves with the selection and is held by its neighbour") {
        c.Knots()[0].flags |= KNOT_FREE_END_X;
        Select(c, {0});
        // p0's out-handle (0.1) may reach p1's x 0.4; p1's in-handle (0.3) stops p0 at 0.3.
        Range r = moveRange(c, kAll);
        CHECK(r.lo == -1e8f);
        CHECK(r.hi == doctest::Approx(0.3f));
        Select(c, {0, 1}); // p1 moves too, so p2 holds them: 0.2 as for p1 alone
        r = moveRange(c, kAll);
        CHECK(r.lo == -1e8f);
        CHECK(r.hi == doctest::Approx(0.2f));
    }
}

TEST_CASE("the y move range keeps the point and both handles inside the y range") {
    CurveFixture f(
        {Knot(0.0f, 0.0f),
         Knot(0.4f, 0.5f, KNOT_TYPE_BEZIER_CORNER, Point2(-0.1f, -0.2f), Point2(0.1f, 0.3f)),
         Knot(1.0f, 1.0f)});
    Curve& c = f.curve();
    // Handles at y 0.3 and 0.8: up 0.2, down 0.3.
    Range r = moveYRange(c, 1);
    CHECK(r.lo == doctest::Approx(-0.3f));
    CHECK(r.hi == doctest::Approx(0.2f));

    Select(c, {1, 2}); // p2 at y 1 cannot go up
    r = moveYRange(c, kAll);
    CHECK(r.lo == doctest::Approx(-0.3f));
    CHECK(r.hi == doctest::Approx(0.0f));

    SUBCASE("without CC_CONSTRAIN_Y there is no y limit") {
        f.control().SetControlFlags(CC_DEFAULT_FLAGS & ~DWORD(CC_CONSTRAIN_Y));
        r = moveYRange(c, 1);
        CHECK(r.lo == -1e8f);
        CHECK(r.hi == 1e8f);
    }
}

TEST_CASE("a handle lives between its point and the neighbour on its side") {
    CurveFixture f(fourPoints());
    Curve& c = f.curve();
    Range r = handleXRange(c, 1, 0x100); // in-handle at 0.3, between 0 and 0.4
    CHECK(r.lo == doctest::Approx(-0.3f));
    CHECK(r.hi == doctest::Approx(0.1f));
    r = handleXRange(c, 1, 0x200); // out-handle at 0.5, between 0.4 and 0.7
    CHECK(r.lo == doctest::Approx(-0.1f));
    CHECK(r.hi == doctest::Approx(0.2f));
    r = handleXRange(c, 0, 0x100); // the first point's in-handle does not move in x
    CHECK(r.lo == 0.0f);
    CHECK(r.hi == 0.0f);
    r = handleXRange(c, 3, 0x200); // nor the last point's out-handle
    CHECK(r.lo == 0.0f);
    CHECK(r.hi == 0.0f);
    r = handleXRange(c, 9, 0x200); // nor a handle that does not exist
    CHECK(r.lo == 0.0f);
    CHECK(r.hi == 0.0f);

    float lo, hi;
    c.GetHandleYRange(kNow, 1, 0x200, lo, hi); // out-handle at y 0.5, range 0 .. 1
    CHECK(lo == doctest::Approx(-0.5f));
    CHECK(hi == doctest::Approx(0.5f));
}

TEST_CASE("on a cyclic curve the neighbours wrap and exchange roles across the wrap") {
    // p0 (0, 0) in +0.1 (towards the last point across the wrap), out +0.1
    // p1 (0.5, 0.5) in -0.1, out +0.1
    // p2 (1, 0) in -0.1, out -0.1 (towards the first point across the wrap)
    FixtureOptions o;
    o.cyclic = true;
    CurveFixture f(
        {Knot(0.0f, 0.0f, KNOT_TYPE_BEZIER_CORNER, Point2(0.1f, 0.0f), Point2(0.1f, 0.0f)),
         Knot(0.5f, 0.5f, KNOT_TYPE_BEZIER_CORNER, Point2(-0.1f, 0.0f), Point2(0.1f, 0.0f)),
         Knot(1.0f, 0.0f, KNOT_TYPE_BEZIER_CORNER, Point2(-0.1f, 0.0f), Point2(-0.1f, 0.0f))},
        o);
    Curve& c = f.curve();

    // p0's in-handle (at 0.1) lives between p0 (0) and p2 (1), to the right of p0.
    Range r = handleXRange(c, 0, 0x100);
    CHECK(r.lo == doctest::Approx(-0.1f));
    CHECK(r.hi == doctest::Approx(0.9f));
    // p2's out-handle (at 0.9) lives between p0 (0) and p2 (1), to the left of p2.
    r = handleXRange(c, 2, 0x200);
    CHECK(r.lo == doctest::Approx(-0.9f));
    CHECK(r.hi == doctest::Approx(0.1f));

    // A selected end point moves with the selection: p0 is held to the right by p1
    // (0.4, from p1's in-handle and its own out-handle) and by p2 across the wrap (0.9),
    // and nothing holds it to the left.
    Select(c, {0});
    r = moveRange(c, kAll);
    CHECK(r.lo == -1e8f);
    CHECK(r.hi == doctest::Approx(0.4f));
    // p2 likewise: p1 holds it to the left at -0.4, p0 across the wrap at -0.9.
    Select(c, {2});
    r = moveRange(c, kAll);
    CHECK(r.lo == doctest::Approx(-0.4f));
    CHECK(r.hi == 1e8f);
}

TEST_CASE("ClampKnotPosition clamps a requested position into the move ranges") {
    CurveFixture f(fourPoints());
    Curve& c = f.curve();
    Point2 p(0.9f, 0.5f);
    c.ClampKnotPosition(kNow, 1, p);
    CHECK(p.x == doctest::Approx(0.6f)); // 0.4 + 0.2
    CHECK(p.y == 0.5f);

    p = Point2(-1.0f, 2.0f);
    c.ClampKnotPosition(kNow, 1, p);
    CHECK(p.x == doctest::Approx(0.1f)); // 0.4 - 0.3
    CHECK(p.y == doctest::Approx(1.0f)); // 0.5 + 0.5

    p = Point2(0.3f, 0.2f);
    c.ClampKnotPosition(kNow, 0, p); // an end point keeps its x
    CHECK(p.x == 0.0f);
    CHECK(p.y == doctest::Approx(0.2f));

    SUBCASE("without CC_CONSTRAIN_Y the y is free") {
        f.control().SetControlFlags(CC_DEFAULT_FLAGS & ~DWORD(CC_CONSTRAIN_Y));
        p = Point2(0.45f, 7.0f);
        c.ClampKnotPosition(kNow, 1, p);
        CHECK(p.x == 0.45f);
        CHECK(p.y == 7.0f);
    }
    SUBCASE("an index outside the table leaves the position alone") {
        p = Point2(5.0f, 5.0f);
        c.ClampKnotPosition(kNow, 4, p);
        CHECK(p == Point2(5.0f, 5.0f));
    }
}

// Inverted ranges survive the evaluation cache's own correction (which pushes points back
// into order) only next to the first point, whose out-handle the cache never moves. The
// cached positions below follow from that correction, worked by hand.
TEST_CASE("an inverted range keeps point 1 clear of the first point, point n-2 of the last") {
    SUBCASE("point 1 of four takes lo") {
        // p0's out-handle reaches 0.6; p3's in-handle reaches back to 0.3. The cache
        // pushes p1 right to 0.6, then p2 and p1 left to 0.3: p1 may only go right by
        // 0.3 (to p0's handle) and not right at all (p2 is at 0.3).
        CurveFixture f({Knot(0.0f, 0.0f, KNOT_TYPE_BEZIER_CORNER, Point2(), Point2(0.6f, 0.0f)),
                        Knot(0.5f, 0.5f), Knot(0.7f, 0.5f),
                        Knot(1.0f, 1.0f, KNOT_TYPE_BEZIER_CORNER, Point2(-0.7f, 0.0f), Point2())});
        Curve& c = f.curve();
        REQUIRE(c.CachedPosition(kNow, 1).x == doctest::Approx(0.3f));
        const Range r = moveRange(c, 1);
        CHECK(r.lo == doctest::Approx(0.3f));
        CHECK(r.hi == doctest::Approx(0.0f));
        Point2 p(0.35f, 0.5f);
        c.ClampKnotPosition(kNow, 1, p);
        CHECK(p.x == doctest::Approx(0.6f)); // 0.3 + lo
    }
    SUBCASE("point 1 of three is also point n-2: the later rule, hi, applies") {
        CurveFixture f({Knot(0.0f, 0.0f, KNOT_TYPE_BEZIER_CORNER, Point2(), Point2(0.6f, 0.0f)),
                        Knot(0.5f, 0.5f),
                        Knot(1.0f, 1.0f, KNOT_TYPE_BEZIER_CORNER, Point2(-0.7f, 0.0f), Point2())});
        Curve& c = f.curve();
        REQUIRE(c.CachedPosition(kNow, 1).x == doctest::Approx(0.3f));
        const Range r = moveRange(c, 1);
        REQUIRE(r.lo > r.hi);
        Point2 p(0.35f, 0.5f);
        c.ClampKnotPosition(kNow, 1, p);
        CHECK(p.x == doctest::Approx(0.3f)); // 0.3 + hi
    }
}
