// The point-position and tangent setters, StoreKnot and SetKnot: what they store, what
// they record for undo, and what they refuse.
#include "core/curve_edit_fixture.h"

#include <doctest/doctest.h>

#include <cmath>
#include <limits>

using namespace edit_test;

namespace {

// (0, 0) corner, (0.5, 0.5) Bezier-Corner with handles 0.1 long either side, (1, 1) corner.
std::vector<CurveKnot> threePoints() {
    return {Knot(0.0f, 0.0f),
            Knot(0.5f, 0.5f, KNOT_TYPE_BEZIER_CORNER, Point2(-0.1f, 0.0f), Point2(0.1f, 0.0f)),
            Knot(1.0f, 1.0f)};
}

const float kNaN = std::numeric_limits<float>::quiet_NaN();

} // namespace

TEST_CASE("the position setter stores the position and the cache follows") {
    CurveFixture f(threePoints());
    Curve& c = f.curve();
    c.SetKnotPosition(kNow, 1, Point2(0.4f, 0.6f));
    CHECK(c.Knots()[1].pos == Point2(0.4f, 0.6f));
    CHECK(c.CachedPosition(kNow, 1) == Point2(0.4f, 0.6f));
    // Tangents are relative: the handles travel with the point.
    CHECK(c.CachedOutHandle(kNow, 1).x == doctest::Approx(0.5f));
}

TEST_CASE("position changes of one hold gather in one record; undo and redo restore them") {
    CurveFixture f(threePoints());
    Curve& c = f.curve();
    const TableState start = Snapshot(c);

    theHold.Begin();
    c.SetKnotPosition(kNow, 1, Point2(0.4f, 0.6f));
    DeformPtPosChange* record = c.OpenPosRecord();
    REQUIRE(record != nullptr);
    c.SetKnotPosition(kNow, 1, Point2(0.45f, 0.65f));
    c.SetKnot(
        kNow, 1,
        CurveKnot(Point2(0.3f, 0.7f), c.Knots()[1].inTan, c.Knots()[1].outTan, c.Knots()[1].flags),
        FALSE, FALSE);
    CHECK(c.OpenPosRecord() == record); // every later change wrote into the same record
    theHold.Accept("Move Points");
    CHECK(c.OpenPosRecord() == nullptr); // the hold's end closed it
    const TableState end = Snapshot(c);
    CHECK(end.knots[1].pos == Point2(0.3f, 0.7f));

    REQUIRE(theHold.Undo());
    CHECK(Snapshot(c) == start); // the positions at the start of the hold
    REQUIRE(theHold.Redo());
    CHECK(Snapshot(c) == end); // those of the last call
}

TEST_CASE("the position setter hands an animated point's position to its controller") {
    CurveFixture f(threePoints());
    Curve& c = f.curve();
    Control* ctrl = f.Animate(1);
    theHold.Begin();
    c.SetKnotPosition(kNow, 1, Point2(0.3f, 0.2f));
    CHECK(c.OpenPosRecord() == nullptr); // the controller records its own change
    theHold.Accept("Move Points");

    Point3 v;
    Interval valid = FOREVER;
    ctrl->GetValue(kNow, &v, valid, CTRL_ABSOLUTE);
    CHECK(v.x == 0.3f);
    CHECK(v.y == 0.2f);
    CHECK(c.Knots()[1].pos == Point2(0.5f, 0.5f)); // the table is not the point's source
    CHECK(c.CachedPosition(kNow, 1) == Point2(0.3f, 0.2f));

    REQUIRE(theHold.Undo());
    ctrl->GetValue(kNow, &v, valid, CTRL_ABSOLUTE);
    CHECK(v.x == 0.5f);
    CHECK(v.y == 0.5f);
}

TEST_CASE("setters ignore indices outside the table and non-finite values") {
    CurveFixture f(threePoints());
    Curve& c = f.curve();
    const TableState before = Snapshot(c);
    c.SetKnotPosition(kNow, -1, Point2(0.2f, 0.2f));
    c.SetKnotPosition(kNow, 3, Point2(0.2f, 0.2f));
    c.SetKnotPosition(kNow, 1, Point2(kNaN, 0.2f));
    CHECK(c.SetInHandle(kNow, 3, Point2(0.2f, 0.2f), TRUE, TRUE) == 0);
    CHECK(c.SetOutHandle(kNow, -1, Point2(0.2f, 0.2f), TRUE, TRUE) == 0);
    CHECK(c.SetOutHandle(kNow, 1, Point2(0.7f, kNaN), TRUE, TRUE) == 0);
    c.SetKnot(kNow, 3, Knot(0.2f, 0.2f), TRUE, TRUE);
    c.SetKnot(kNow, 1, Knot(kNaN, 0.2f), TRUE, TRUE);
    c.StoreKnot(7, Knot(0.2f, 0.2f));
    CHECK(Snapshot(c) == before);
}

TEST_CASE("the tangent setters store the handle relative to the point, past 0.0001 only") {
    CurveFixture f({Knot(0.0f, 0.0f), Knot(0.5f, 0.5f, KNOT_TYPE_BEZIER_CORNER), Knot(1.0f, 1.0f)});
    Curve& c = f.curve();

    CHECK(c.SetInHandle(kNow, 1, Point2(0.4f, 0.45f), TRUE, FALSE) == 1);
    CHECK(c.Knots()[1].inTan.x == doctest::Approx(-0.1f));
    CHECK(c.Knots()[1].inTan.y == doctest::Approx(-0.05f));
    CHECK(c.SetOutHandle(kNow, 1, Point2(0.7f, 0.5f), TRUE, FALSE) == 2);
    CHECK(c.Knots()[1].outTan.x == doctest::Approx(0.2f));

    // A point at y 0, so that the handle's y is the tangent's y without rounding. A change
    // of 0.0001f (whose float value lies just below 0.0001) is no change; 0.0002f is.
    f.Load({Knot(0.0f, 0.0f), Knot(0.25f, 0.0f, KNOT_TYPE_BEZIER_CORNER), Knot(1.0f, 1.0f)});
    CHECK(c.SetOutHandle(kNow, 1, Point2(0.25f, 0.0001f), TRUE, FALSE) == 0);
    CHECK(c.Knots()[1].outTan == Point2(0.0f, 0.0f));
    CHECK(c.SetOutHandle(kNow, 1, Point2(0.25f, 0.0002f), TRUE, FALSE) == 2);
    CHECK(c.Knots()[1].outTan == Point2(0.0f, 0.0002f));
}

TEST_CASE("a tangent change too small to store is not recorded either") {
    CurveFixture f(threePoints());
    Curve& c = f.curve();
    theHold.Begin();
    CHECK(c.SetInHandle(kNow, 1, Point2(0.4f, 0.50005f), TRUE, FALSE) == 0);
    theHold.Accept("Adjust Tangents");
    CHECK(theHold.NumUndo() == 0);
}

TEST_CASE("StoreKnot writes the whole point with a record of its own") {
    CurveFixture f(threePoints());
    Curve& c = f.curve();
    const TableState before = Snapshot(c);
    const CurveKnot k(Point2(0.3f, 0.2f), Point2(-0.05f, 0.0f), Point2(0.05f, 0.1f),
                      KNOT_TYPE_BEZIER_SMOOTH | KNOT_LOCK_X);
    theHold.Begin();
    c.SetKnotPosition(kNow, 1, Point2(0.6f, 0.6f)); // opens the position record
    c.StoreKnot(1, k);
    // A whole-point record ends the position record: the next position change opens a
    // new one, so that redo cannot replay a later position under the whole point.
    CHECK(c.OpenPosRecord() == nullptr);
    c.SetKnotPosition(kNow, 1, Point2(0.35f, 0.25f));
    theHold.Accept("Move Points");
    const TableState after = Snapshot(c);
    CHECK(after.knots[1].pos == Point2(0.35f, 0.25f));
    CHECK(after.knots[1].flags == (KNOT_TYPE_BEZIER_SMOOTH | KNOT_LOCK_X));

    REQUIRE(theHold.Undo());
    CHECK(Snapshot(c) == before);
    REQUIRE(theHold.Redo());
    CHECK(Snapshot(c) == after);
}

TEST_CASE("SetKnot without checks stores the point as given") {
    CurveFixture f(threePoints());
    Curve& c = f.curve();
    const CurveKnot k(Point2(0.9f, 1.5f), Point2(-0.7f, 0.3f), Point2(0.4f, -0.2f),
                      KNOT_TYPE_BEZIER_CORNER | KNOT_LOCK_Y);
    c.SetKnot(kNow, 1, k, FALSE, FALSE);
    CHECK(c.Knots()[1].pos == k.pos);
    CHECK(c.Knots()[1].inTan == k.inTan);
    CHECK(c.Knots()[1].outTan == k.outTan);
    CHECK(c.Knots()[1].flags == k.flags);
}

TEST_CASE("SetKnot with checks keeps the point between its neighbours and in the y range") {
    CurveFixture f(threePoints());
    Curve& c = f.curve();
    // Past the last point in x and above the y range (0 .. 1).
    c.SetKnot(kNow, 1,
              CurveKnot(Point2(1.5f, 1.5f), Point2(-0.1f, 0.0f), Point2(0.1f, 0.0f),
                        KNOT_TYPE_BEZIER_CORNER),
              TRUE, FALSE);
    // Its out-handle (0.1 to the right) may reach the last point at x 1: x stops at 0.9.
    CHECK(c.Knots()[1].pos.x == doctest::Approx(0.9f));
    CHECK(c.Knots()[1].pos.y == doctest::Approx(1.0f));

    SUBCASE("an end point keeps its x but moves in y") {
        c.SetKnot(kNow, 0, Knot(0.3f, 0.4f, KNOT_TYPE_CORNER | KNOT_ENDPOINT), TRUE, FALSE);
        CHECK(c.Knots()[0].pos == Point2(0.0f, 0.4f));
    }
    SUBCASE("a free end point moves in x, but not past its neighbour") {
        c.SetKnot(kNow, 0, Knot(0.3f, 0.4f, KNOT_TYPE_CORNER | KNOT_ENDPOINT | KNOT_FREE_END_X),
                  TRUE, FALSE);
        CHECK(c.Knots()[0].pos == Point2(0.3f, 0.4f));
        CHECK(c.CachedPosition(kNow, 0) == Point2(0.3f, 0.4f));
        // Point 1 stands at 0.9 with its in-handle at 0.8: the first point stops there.
        c.SetKnot(kNow, 0, Knot(2.0f, 0.4f, KNOT_TYPE_CORNER | KNOT_ENDPOINT | KNOT_FREE_END_X),
                  TRUE, FALSE);
        CHECK(c.Knots()[0].pos.x == doctest::Approx(0.8f));
        c.SetKnot(kNow, 0, Knot(2.0f, 0.4f, KNOT_TYPE_CORNER | KNOT_ENDPOINT | KNOT_FREE_END_X),
                  FALSE, FALSE);
        CHECK(c.Knots()[0].pos.x == 2.0f); // without checks, as given
    }
    SUBCASE("a tangent is kept between the point and its neighbour, and in the y range") {
        c.SetKnot(kNow, 1,
                  CurveKnot(c.Knots()[1].pos, Point2(-5.0f, 0.3f), Point2(0.1f, 0.0f),
                            KNOT_TYPE_BEZIER_CORNER),
                  TRUE, FALSE);
        // The point now stands at (0.9, 1): its in-handle may reach the first point's x
        // and no higher than the top of the range.
        CHECK(c.CachedInHandle(kNow, 1).x == doctest::Approx(0.0f));
        CHECK(c.CachedInHandle(kNow, 1).y == doctest::Approx(1.0f));
    }
}

TEST_CASE("SetKnot takes the lock bits and the type, and changes the selection with a record") {
    CurveFixture f(threePoints());
    Curve& c = f.curve();
    const TableState before = Snapshot(c);
    const CurveKnot k(Point2(0.5f, 0.5f), Point2(-0.1f, 0.0f), Point2(0.1f, 0.0f),
                      KNOT_TYPE_BEZIER_SMOOTH | KNOT_LOCK_X | KNOT_LOCK_Y | KNOT_SELECTED);
    theHold.Begin();
    c.SetKnot(kNow, 1, k, TRUE, FALSE);
    theHold.Accept("Move Points");
    CHECK(c.Knots()[1].flags == k.flags);
    CHECK(Selected(c) == std::vector<int>{1});
    // The knot's tangents were given, so they win over those the type rule derived.
    CHECK(c.Knots()[1].inTan == k.inTan);
    CHECK(c.Knots()[1].outTan == k.outTan);
    const TableState after = Snapshot(c);

    REQUIRE(theHold.Undo());
    CHECK(Snapshot(c) == before);
    REQUIRE(theHold.Redo());
    CHECK(Snapshot(c) == after);
}

TEST_CASE("SetKnot changing everything at once undoes and redoes exactly") {
    CurveFixture f(threePoints());
    Curve& c = f.curve();
    Select(c, {1});
    const TableState before = Snapshot(c);
    theHold.Begin();
    c.SetKnot(
        kNow, 1,
        CurveKnot(Point2(0.3f, 0.2f), Point2(-0.2f, -0.1f), Point2(0.3f, 0.4f), KNOT_TYPE_CORNER),
        TRUE, TRUE);
    c.SetKnot(kNow, 1,
              CurveKnot(Point2(0.35f, 0.25f), Point2(-0.1f, -0.1f), Point2(0.2f, 0.2f),
                        KNOT_TYPE_BEZIER_SMOOTH | KNOT_SELECTED),
              TRUE, TRUE);
    theHold.Accept("Move Points");
    const TableState after = Snapshot(c);
    CHECK(after.knots[1].pos == Point2(0.35f, 0.25f));
    CHECK(Selected(c) == std::vector<int>{1});

    REQUIRE(theHold.Undo());
    CHECK(Snapshot(c) == before);
    REQUIRE(theHold.Redo());
    CHECK(Snapshot(c) == after);
}
