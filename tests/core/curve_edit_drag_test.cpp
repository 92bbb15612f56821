// Handle drags (DragHandle, SetHandleConstrained) and ScaleSelectedY.
//
// Expected values are worked by hand; most drags are chosen so that the results are
// short decimals (unit vectors of (2, 1) and (1, 2) scaled by multiples of sqrt(5)).
#include "core/curve_edit_fixture.h"

#include <doctest/doctest.h>

using namespace edit_test;

namespace {

constexpr int kIn = 0x100;
constexpr int kOut = 0x200;
constexpr int kBreak = 0x2;

// (0, 0.5) corner, then point 1 at (0.5, 0.5) of the given type and tangents, (1, 0.5).
std::vector<CurveKnot> middlePoint(uint32_t type, Point2 in, Point2 out, float y = 0.5f) {
    return {Knot(0.0f, 0.5f), Knot(0.5f, y, type, in, out), Knot(1.0f, 0.5f)};
}

void checkPoint(const Point2& got, float x, float y) {
    CHECK(got.x == doctest::Approx(x).epsilon(1e-5));
    CHECK(got.y == doctest::Approx(y).epsilon(1e-5));
}

} // namespace

TEST_CASE("dragging a Bezier-Smooth handle turns the other one and scales it by the same ratio") {
    CurveFixture f(middlePoint(KNOT_TYPE_BEZIER_SMOOTH, Point2(-0.1f, 0.0f), Point2(0.2f, 0.0f)));
    Curve& c = f.curve();
    // Out-handle (0.7, 0.5) -> (0.7, 0.6): direction (2, 1), length sqrt(0.05), ratio
    // sqrt(0.05) / 0.2. The in-handle: 0.1 * ratio = sqrt(0.05) / 2 along -(2, 1) / sqrt(5),
    // that is -(0.1, 0.05).
    c.DragHandle(kNow, 1, kOut, 0.0f, 0.1f);
    checkPoint(c.Knots()[1].outTan, 0.2f, 0.1f);
    checkPoint(c.Knots()[1].inTan, -0.1f, -0.05f);
    CHECK((c.Knots()[1].flags & KNOT_TYPE_MASK) == KNOT_TYPE_BEZIER_SMOOTH);
}

TEST_CASE("the break bit makes the point Bezier-Corner and leaves the other handle alone") {
    CurveFixture f(middlePoint(KNOT_TYPE_BEZIER_SMOOTH, Point2(-0.1f, 0.0f), Point2(0.2f, 0.0f)));
    Curve& c = f.curve();
    c.DragHandle(kNow, 1, kOut | kBreak, 0.0f, 0.1f);
    CHECK((c.Knots()[1].flags & KNOT_TYPE_MASK) == KNOT_TYPE_BEZIER_CORNER);
    checkPoint(c.Knots()[1].outTan, 0.2f, 0.1f);
    checkPoint(c.Knots()[1].inTan, -0.1f, 0.0f);

    SUBCASE("a Corner point stays Corner") {
        f.Load(middlePoint(KNOT_TYPE_CORNER, Point2(-0.1f, 0.0f), Point2(0.1f, 0.0f)));
        c.DragHandle(kNow, 1, kIn | kBreak, -0.1f, 0.0f);
        CHECK((c.Knots()[1].flags & KNOT_TYPE_MASK) == KNOT_TYPE_CORNER);
    }
}

TEST_CASE("undo of a breaking drag restores the type and both handles") {
    CurveFixture f(middlePoint(KNOT_TYPE_BEZIER_SMOOTH, Point2(-0.1f, 0.0f), Point2(0.2f, 0.0f)));
    Curve& c = f.curve();
    const TableState before = Snapshot(c);
    theHold.SuperBegin();
    theHold.Begin();
    // Two drag steps, each starting again from the press state, as the move mode drags.
    c.DragHandle(kNow, 1, kOut | kBreak, 0.0f, 0.1f);
    theHold.Restore();
    c.DragHandle(kNow, 1, kOut | kBreak, 0.05f, 0.2f);
    theHold.Accept("Adjust Tangents");
    theHold.SuperAccept("Adjust Tangents");
    const TableState after = Snapshot(c);
    checkPoint(after.knots[1].outTan, 0.25f, 0.2f);
    CHECK((after.knots[1].flags & KNOT_TYPE_MASK) == KNOT_TYPE_BEZIER_CORNER);

    REQUIRE(theHold.Undo());
    CHECK(Snapshot(c) == before);
    REQUIRE(theHold.Redo());
    CHECK(Snapshot(c) == after);
}

TEST_CASE("an opposite handle that would pass the neighbour ends exactly at its x") {
    CurveFixture f(
        {Knot(0.0f, 0.5f),
         Knot(0.5f, 0.5f, KNOT_TYPE_BEZIER_SMOOTH, Point2(-0.1f, 0.0f), Point2(0.1f, 0.0f)),
         Knot(0.7f, 0.5f), Knot(1.0f, 0.5f)});
    Curve& c = f.curve();
    // In-handle (0.4, 0.5) -> (0.1, 0.4): N - p = (-0.4, -0.1), ratio |N - p| / 0.1, so
    // the out-handle becomes p + (0.4, 0.1) = (0.9, 0.6), past p2 at x 0.7. Shortened
    // along its line to x 0.7: (0.7, 0.55).
    c.DragHandle(kNow, 1, kIn, -0.3f, -0.1f);
    checkPoint(c.CachedInHandle(kNow, 1), 0.1f, 0.4f);
    CHECK(c.CachedOutHandle(kNow, 1).x == 0.7f);
    CHECK(c.CachedOutHandle(kNow, 1).y == doctest::Approx(0.55f).epsilon(1e-5));
}

TEST_CASE("under CC_CONSTRAIN_Y both handles stay inside the y range") {
    CurveFixture f(
        middlePoint(KNOT_TYPE_BEZIER_SMOOTH, Point2(-0.1f, 0.0f), Point2(0.1f, 0.0f), 0.9f));
    Curve& c = f.curve();
    SUBCASE("the opposite handle is shortened along its line to the top") {
        // In-handle to (0.4, 0.7): the out-handle would be p + (0.1, 0.2) = (0.6, 1.1);
        // halfway along it reaches y 1.
        c.DragHandle(kNow, 1, kIn, 0.0f, -0.2f);
        checkPoint(c.CachedOutHandle(kNow, 1), 0.55f, 1.0f);
    }
    SUBCASE("the dragged handle stops at the top") {
        c.DragHandle(kNow, 1, kOut, 0.0f, 0.5f);
        CHECK(c.CachedOutHandle(kNow, 1).y == 1.0f);
    }
    SUBCASE("without the flag nothing is held back") {
        f.control().SetControlFlags(CC_DEFAULT_FLAGS & ~DWORD(CC_CONSTRAIN_Y));
        c.DragHandle(kNow, 1, kOut, 0.0f, 0.5f);
        checkPoint(c.CachedOutHandle(kNow, 1), 0.6f, 1.4f);
        checkPoint(c.CachedInHandle(kNow, 1), 0.4f, 0.4f);
    }
}

TEST_CASE("a dragged handle stays on its own side of the point") {
    CurveFixture f(middlePoint(KNOT_TYPE_BEZIER_CORNER, Point2(-0.1f, 0.0f), Point2(0.1f, 0.0f)));
    Curve& c = f.curve();
    c.DragHandle(kNow, 1, kOut, -0.4f, 0.1f);
    CHECK(c.CachedOutHandle(kNow, 1).x == 0.5f);
    c.DragHandle(kNow, 1, kIn, 0.3f, 0.0f);
    CHECK(c.CachedInHandle(kNow, 1).x == 0.5f);
}

TEST_CASE("a zero-length dragged handle counts as ratio 1") {
    CurveFixture f(middlePoint(KNOT_TYPE_BEZIER_SMOOTH, Point2(-0.1f, 0.0f), Point2()));
    Curve& c = f.curve();
    // The in-handle keeps its length 0.1 and turns opposite to (2, 1): -(0.2, 0.1)/sqrt(5)*0.5.
    c.DragHandle(kNow, 1, kOut, 0.2f, 0.1f);
    checkPoint(c.Knots()[1].inTan, -0.0894427f, -0.0447214f);
}

TEST_CASE("a Corner or Bezier-Corner point's other handle does not follow") {
    for (uint32_t type : {uint32_t(KNOT_TYPE_CORNER), uint32_t(KNOT_TYPE_BEZIER_CORNER)}) {
        CAPTURE(type);
        CurveFixture f(middlePoint(type, Point2(-0.1f, 0.05f), Point2(0.1f, 0.0f)));
        Curve& c = f.curve();
        c.DragHandle(kNow, 1, kOut, 0.1f, 0.1f);
        checkPoint(c.Knots()[1].outTan, 0.2f, 0.1f);
        checkPoint(c.Knots()[1].inTan, -0.1f, 0.05f);
    }
}

TEST_CASE("an end point of a cyclic curve keeps its handles apart even when smooth") {
    FixtureOptions o;
    o.cyclic = true;
    CurveFixture f(
        {Knot(0.0f, 0.5f, KNOT_TYPE_BEZIER_SMOOTH, Point2(0.1f, 0.0f), Point2(0.1f, 0.0f)),
         Knot(0.5f, 0.5f), Knot(1.0f, 0.5f)},
        o);
    Curve& c = f.curve();
    c.DragHandle(kNow, 0, kOut, 0.0f, 0.1f);
    checkPoint(c.Knots()[0].outTan, 0.1f, 0.1f);
    checkPoint(c.Knots()[0].inTan, 0.1f, 0.0f);
}

TEST_CASE("DragHandle on a curve without points or a point that does not exist does nothing") {
    CurveFixture f({});
    f.curve().DragHandle(kNow, 0, kOut | kBreak, 0.1f, 0.1f);
    CHECK(f.curve().PointCount() == 0);
    CurveFixture g(middlePoint(KNOT_TYPE_BEZIER_SMOOTH, Point2(-0.1f, 0.0f), Point2(0.1f, 0.0f)));
    const TableState before = Snapshot(g.curve());
    g.curve().DragHandle(kNow, 3, kOut | kBreak, 0.1f, 0.1f);
    CHECK(Snapshot(g.curve()) == before);
}

TEST_CASE("SetHandleConstrained clamps the requested tangent into the handle's ranges") {
    CurveFixture f(
        {Knot(0.0f, 0.5f),
         Knot(0.5f, 0.5f, KNOT_TYPE_BEZIER_CORNER, Point2(-0.1f, 0.0f), Point2(0.1f, 0.0f)),
         Knot(0.7f, 0.5f), Knot(1.0f, 0.5f)});
    Curve& c = f.curve();
    c.SetHandleConstrained(kNow, 1, kOut, Point2(0.5f, 0.9f));
    // x: up to p2 at 0.7, so the tangent is 0.2. y: up to the top of the range, 0.5.
    checkPoint(c.Knots()[1].outTan, 0.2f, 0.5f);
    c.SetHandleConstrained(kNow, 1, kIn, Point2(-0.9f, -0.9f));
    checkPoint(c.Knots()[1].inTan, -0.5f, -0.5f);
    c.SetHandleConstrained(kNow, 1, kIn, Point2(-0.2f, 0.1f)); // inside: taken as it is
    checkPoint(c.Knots()[1].inTan, -0.2f, 0.1f);
}

TEST_CASE("ScaleSelectedY scales the selected points and their handles about the origin") {
    CurveFixture f(
        {Knot(0.0f, 0.2f),
         Knot(0.5f, 0.4f, KNOT_TYPE_BEZIER_CORNER, Point2(-0.1f, -0.1f), Point2(0.1f, 0.1f)),
         Knot(1.0f, 0.2f)});
    Curve& c = f.curve();
    Select(c, {1});
    SUBCASE("about 0") {
        c.ScaleSelectedY(kNow, 0.0f, 2.0f, FALSE);
        // Handles at y 0.3 and 0.5 go to 0.6 and 1.0, the point to 0.8.
        checkPoint(c.Knots()[1].pos, 0.5f, 0.8f);
        checkPoint(c.Knots()[1].inTan, -0.1f, -0.2f);
        checkPoint(c.Knots()[1].outTan, 0.1f, 0.2f);
        checkPoint(c.Knots()[0].pos, 0.0f, 0.2f); // not selected
    }
    SUBCASE("about another origin") {
        c.ScaleSelectedY(kNow, 0.4f, 0.5f, FALSE);
        checkPoint(c.Knots()[1].pos, 0.5f, 0.4f);
        checkPoint(c.Knots()[1].inTan, -0.1f, -0.05f);
    }
    SUBCASE("animated points are skipped on request") {
        f.Animate(1);
        const TableState before = Snapshot(c);
        c.ScaleSelectedY(kNow, 0.0f, 2.0f, TRUE);
        CHECK(Snapshot(c) == before);
        CHECK(c.CachedPosition(kNow, 1).y == doctest::Approx(0.4f));
        c.ScaleSelectedY(kNow, 0.0f, 2.0f, FALSE); // else scaled through the controller
        CHECK(c.CachedPosition(kNow, 1).y == doctest::Approx(0.8f));
    }
    SUBCASE("undo gives back the positions and handles") {
        const TableState before = Snapshot(c);
        theHold.Begin();
        c.ScaleSelectedY(kNow, 0.0f, 2.0f, FALSE);
        theHold.Accept("Scale Point");
        const TableState after = Snapshot(c);
        REQUIRE(theHold.Undo());
        CHECK(Snapshot(c) == before);
        REQUIRE(theHold.Redo());
        CHECK(Snapshot(c) == after);
    }
}
