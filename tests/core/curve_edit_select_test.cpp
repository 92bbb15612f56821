// Selection changes, the selection's position (numeric entry fields), and point types.
#include "core/curve_edit_fixture.h"

#include <doctest/doctest.h>

#include <cmath>
#include <limits>

using namespace edit_test;

namespace {

BitArray bits(int n, std::initializer_list<int> on) {
    BitArray b(n);
    for (int i : on)
        b.Set(i);
    return b;
}

std::vector<CurveKnot> fivePoints() {
    return {Knot(0.0f, 0.0f), Knot(0.25f, 0.2f), Knot(0.5f, 0.4f), Knot(0.75f, 0.6f),
            Knot(1.0f, 1.0f)};
}

void checkPoint(const Point2& got, float x, float y) {
    CHECK(got.x == doctest::Approx(x).epsilon(1e-5));
    CHECK(got.y == doctest::Approx(y).epsilon(1e-5));
}

} // namespace

TEST_CASE("selection modes add, remove and replace") {
    CurveFixture f(fivePoints());
    Curve& c = f.curve();
    c.SetSelection(bits(5, {1, 2}), 1);
    CHECK(Selected(c) == std::vector<int>{1, 2});
    c.SetSelection(bits(5, {2, 3}), 1);
    CHECK(Selected(c) == std::vector<int>{1, 2, 3});
    c.SetSelection(bits(5, {1, 4}), 2);
    CHECK(Selected(c) == std::vector<int>{2, 3});
    c.SetSelection(bits(5, {0}), 4);
    CHECK(Selected(c) == std::vector<int>{0});
    c.SetSelection(BitArray(), 4); // an empty list clears
    CHECK(Selected(c).empty());

    SUBCASE("other modes change nothing") {
        c.SetSelection(bits(5, {1}), 3);
        c.SetSelection(bits(5, {1}), 0);
        CHECK(Selected(c).empty());
    }
    SUBCASE("bits beyond the points are ignored, missing bits are clear") {
        c.SetSelection(bits(40, {3, 30}), 1);
        CHECK(Selected(c) == std::vector<int>{3});
        c.SetSelection(bits(2, {1}), 4);
        CHECK(Selected(c) == std::vector<int>{1});
    }
    SUBCASE("GetSelection reads the bits") {
        c.SetSelection(bits(5, {1, 4}), 4);
        CHECK(c.GetSelection() == bits(5, {1, 4}));
    }
}

TEST_CASE("a selection change is one undoable record, and no change leaves no step") {
    CurveFixture f(fivePoints());
    Curve& c = f.curve();
    Select(c, {1});
    theHold.Begin();
    c.SetSelection(bits(5, {3}), 1);
    theHold.Accept("Select");
    CHECK(theHold.NumUndo() == 1);
    REQUIRE(theHold.Undo());
    CHECK(Selected(c) == std::vector<int>{1});
    REQUIRE(theHold.Redo());
    CHECK(Selected(c) == std::vector<int>{1, 3});

    theHold.Begin();
    c.SetSelection(bits(5, {1}), 1); // already selected
    theHold.Accept("Select");
    CHECK(theHold.NumUndo() == 1);
}

TEST_CASE("the selection's position: flags 2 for a common x, 8 for a common y") {
    CurveFixture f(fivePoints());
    Curve& c = f.curve();
    Point2 pos(9.0f, 9.0f);
    Interval valid = FOREVER;
    CHECK(c.GetSelectedPosition(kNow, pos, valid) == 0);
    CHECK(pos == Point2());
    CHECK(valid == FOREVER);

    Select(c, {2});
    CHECK(c.GetSelectedPosition(kNow, pos, valid) ==
          (SELPOS_HAS_POINTS | SELPOS_X_UNIFORM | SELPOS_Y_UNIFORM));
    CHECK(pos == Point2(0.5f, 0.4f));

    Select(c, {1, 2});
    CHECK(c.GetSelectedPosition(kNow, pos, valid) == SELPOS_HAS_POINTS);

    c.Knots()[3].pos.y = 0.4f;
    c.InvalidateCache();
    Select(c, {2, 3});
    CHECK(c.GetSelectedPosition(kNow, pos, valid) == (SELPOS_HAS_POINTS | SELPOS_Y_UNIFORM));
    CHECK(pos.y == 0.4f);

    Select(c, {0}); // an end point is shown where the curve has it: at the x range's start
    CHECK(c.GetSelectedPosition(kNow, pos, valid) ==
          (SELPOS_HAS_POINTS | SELPOS_X_UNIFORM | SELPOS_Y_UNIFORM));
    CHECK(pos == Point2(0.0f, 0.0f));
}

TEST_CASE("the selection's position narrows the validity for an animated point") {
    CurveFixture f(fivePoints());
    Curve& c = f.curve();
    Control* ctrl = f.Animate(2);
    AnimateOn();
    Point3 a(0.5f, 0.2f, 0.0f), b(0.5f, 0.8f, 0.0f);
    ctrl->SetValue(0, &a, 1, CTRL_ABSOLUTE);
    ctrl->SetValue(100, &b, 1, CTRL_ABSOLUTE);
    AnimateOff();
    c.InvalidateCache();
    Select(c, {2});
    Point2 pos;
    Interval valid = FOREVER;
    c.GetSelectedPosition(50, pos, valid);
    CHECK(pos.y == doctest::Approx(0.5f));
    CHECK(valid.InInterval(50));
    CHECK_FALSE(valid.InInterval(60));
}

TEST_CASE("SetSelectedX moves selected points as far as their neighbours allow") {
    CurveFixture f(fivePoints());
    Curve& c = f.curve();
    SUBCASE("one point goes to x") {
        Select(c, {2});
        CHECK(c.SetSelectedX(kNow, 0.6f) == TRUE);
        checkPoint(c.Knots()[2].pos, 0.6f, 0.4f);
    }
    SUBCASE("a point stops at its neighbour") {
        Select(c, {2});
        CHECK(c.SetSelectedX(kNow, 0.9f) == TRUE);
        checkPoint(c.Knots()[2].pos, 0.75f, 0.4f);
    }
    SUBCASE("selected points gather at x, each following the one nearer to x") {
        Select(c, {1, 2, 3});
        CHECK(c.SetSelectedX(kNow, 0.3f) == TRUE);
        checkPoint(c.Knots()[1].pos, 0.3f, 0.2f);
        checkPoint(c.Knots()[2].pos, 0.3f, 0.4f);
        checkPoint(c.Knots()[3].pos, 0.3f, 0.6f);
    }
    SUBCASE("end points keep their x, unless free") {
        Select(c, {0, 4});
        CHECK(c.SetSelectedX(kNow, 0.5f) == FALSE);
        CHECK(c.Knots()[0].pos.x == 0.0f);
        CHECK(c.Knots()[4].pos.x == 1.0f);
        c.Knots()[0].flags |= KNOT_FREE_END_X;
        CHECK(c.SetSelectedX(kNow, 0.5f) == TRUE);
        checkPoint(c.CachedPosition(kNow, 0), 0.25f, 0.0f); // up to its neighbour
    }
    SUBCASE("a value that is not finite changes nothing") {
        Select(c, {2});
        CHECK(c.SetSelectedX(kNow, std::numeric_limits<float>::quiet_NaN()) == FALSE);
        CHECK(c.Knots()[2].pos.x == 0.5f);
    }
}

TEST_CASE("SetSelectedY moves selected points, end points too, inside the y range") {
    CurveFixture f(fivePoints());
    Curve& c = f.curve();
    Select(c, {0, 2});
    CHECK(c.SetSelectedY(kNow, 0.7f) == TRUE);
    checkPoint(c.Knots()[0].pos, 0.0f, 0.7f);
    checkPoint(c.Knots()[2].pos, 0.5f, 0.7f);
    CHECK(c.SetSelectedY(kNow, 3.0f) == TRUE);
    CHECK(c.Knots()[2].pos.y == doctest::Approx(1.0f));

    SUBCASE("the same y again changes nothing and records nothing") {
        theHold.Begin();
        CHECK(c.SetSelectedY(kNow, 1.0f) == FALSE);
        theHold.Accept("Move Points");
        CHECK(theHold.NumUndo() == 0);
    }
    SUBCASE("handles limit the point under CC_CONSTRAIN_Y") {
        c.Knots()[2].outTan = Point2(0.1f, 0.2f); // handle 0.2 above the point
        c.InvalidateCache();
        c.SetSelectedY(kNow, 1.0f);
        CHECK(c.Knots()[2].pos.y == doctest::Approx(0.8f));
    }
}

TEST_CASE("type change to Corner drops the tangents") {
    CurveFixture f(
        {Knot(0.0f, 0.0f),
         Knot(0.5f, 0.5f, KNOT_TYPE_BEZIER_SMOOTH, Point2(-0.1f, -0.1f), Point2(0.1f, 0.1f)),
         Knot(1.0f, 0.5f)});
    Curve& c = f.curve();
    c.ChangeKnotType(kNow, 1, KNOT_TYPE_CORNER);
    CHECK(c.Knots()[1].flags == KNOT_TYPE_CORNER);
    CHECK(c.Knots()[1].inTan == Point2());
    CHECK(c.Knots()[1].outTan == Point2());
}

TEST_CASE("type change of a Corner to Bezier-Smooth follows the line through the neighbours") {
    CurveFixture f({Knot(0.0f, 0.0f), Knot(0.5f, 0.5f), Knot(1.0f, 0.5f)});
    Curve& c = f.curve();
    c.ChangeKnotType(kNow, 1, KNOT_TYPE_BEZIER_SMOOTH);
    // Slope 0.5 from (0, 0) to (1, 0.5); each handle reaches a third of the way in x.
    CHECK((c.Knots()[1].flags & KNOT_TYPE_MASK) == KNOT_TYPE_BEZIER_SMOOTH);
    checkPoint(c.Knots()[1].inTan, -1.0f / 6.0f, -1.0f / 12.0f);
    checkPoint(c.Knots()[1].outTan, 1.0f / 6.0f, 1.0f / 12.0f);

    SUBCASE("and stays inside the y range") {
        f.Load({Knot(0.0f, 0.0f), Knot(0.5f, 0.98f), Knot(1.0f, 1.0f)});
        c.ChangeKnotType(kNow, 1, KNOT_TYPE_BEZIER_SMOOTH);
        // Slope 1: the out-handle would reach y 0.98 + 1/6; it stops at y 1.
        checkPoint(c.CachedOutHandle(kNow, 1), 0.52f, 1.0f);
        checkPoint(c.Knots()[1].inTan, -1.0f / 6.0f, -1.0f / 6.0f);
    }
}

TEST_CASE("type change of a Bezier-Corner to Bezier-Smooth aligns the handles, keeping lengths") {
    CurveFixture f(
        {Knot(0.0f, 0.0f),
         Knot(0.5f, 0.5f, KNOT_TYPE_BEZIER_CORNER, Point2(-0.1f, 0.1f), Point2(0.1f, 0.1f)),
         Knot(1.0f, 0.5f)});
    Curve& c = f.curve();
    c.ChangeKnotType(kNow, 1, KNOT_TYPE_BEZIER_SMOOTH);
    // The mean of the directions (1, 1) and (1, -1) is horizontal; both lengths sqrt(0.02).
    const float len = std::sqrt(0.02f);
    checkPoint(c.Knots()[1].inTan, -len, 0.0f);
    checkPoint(c.Knots()[1].outTan, len, 0.0f);
}

TEST_CASE("type change between the Bezier types keeps or makes handles") {
    SUBCASE("Bezier-Smooth to Bezier-Corner keeps the tangents") {
        CurveFixture f(
            {Knot(0.0f, 0.0f),
             Knot(0.5f, 0.5f, KNOT_TYPE_BEZIER_SMOOTH, Point2(-0.1f, -0.05f), Point2(0.2f, 0.1f)),
             Knot(1.0f, 0.5f)});
        f.curve().ChangeKnotType(kNow, 1, KNOT_TYPE_BEZIER_CORNER);
        CHECK(f.curve().Knots()[1].flags == KNOT_TYPE_BEZIER_CORNER);
        CHECK(f.curve().Knots()[1].inTan == Point2(-0.1f, -0.05f));
        CHECK(f.curve().Knots()[1].outTan == Point2(0.2f, 0.1f));
    }
    SUBCASE("Corner to Bezier-Corner: handles a third of the way to each neighbour") {
        CurveFixture f({Knot(0.0f, 0.0f), Knot(0.5f, 0.5f), Knot(1.0f, 0.5f)});
        Curve& c = f.curve();
        c.ChangeKnotType(kNow, 1, KNOT_TYPE_BEZIER_CORNER);
        checkPoint(c.Knots()[1].inTan, -1.0f / 6.0f, -1.0f / 6.0f);
        checkPoint(c.Knots()[1].outTan, 1.0f / 6.0f, 0.0f);
        // The first point gets an out-handle only: it has no segment to its left.
        c.ChangeKnotType(kNow, 0, KNOT_TYPE_BEZIER_CORNER);
        CHECK(c.Knots()[0].inTan == Point2());
        checkPoint(c.Knots()[0].outTan, 1.0f / 6.0f, 1.0f / 6.0f);
    }
}

TEST_CASE("an end point may not become Bezier-Smooth") {
    CurveFixture f({Knot(0.0f, 0.0f), Knot(0.5f, 0.5f), Knot(1.0f, 1.0f)});
    Curve& c = f.curve();
    const TableState before = Snapshot(c);
    theHold.Begin();
    c.ChangeKnotType(kNow, 0, KNOT_TYPE_BEZIER_SMOOTH);
    c.ChangeKnotType(kNow, 2, KNOT_TYPE_BEZIER_SMOOTH);
    theHold.Accept("Type Change");
    CHECK(Snapshot(c) == before);
    CHECK(theHold.NumUndo() == 0);
}

TEST_CASE("the refit form turns a Bezier-Smooth end point into Bezier-Corner, tangents kept") {
    CurveFixture f({Knot(0.0f, 0.0f, KNOT_TYPE_BEZIER_SMOOTH | KNOT_ENDPOINT, Point2(-0.1f, 0.0f),
                         Point2(0.1f, 0.1f)),
                    Knot(1.0f, 1.0f)});
    Curve& c = f.curve();
    c.ChangeKnotType(kNow, 0, KNOT_TYPE_BEZIER_SMOOTH, KNOT_TYPE_CHANGE_REFIT);
    CHECK(c.Knots()[0].flags == (KNOT_TYPE_BEZIER_CORNER | KNOT_ENDPOINT));
    CHECK(c.Knots()[0].inTan == Point2(-0.1f, 0.0f));
    CHECK(c.Knots()[0].outTan == Point2(0.1f, 0.1f));
    c.ChangeKnotType(kNow, 1, KNOT_TYPE_CORNER, KNOT_TYPE_CHANGE_REFIT); // stays as it is
    CHECK(c.Knots()[1].flags == (KNOT_TYPE_CORNER | KNOT_ENDPOINT));
}

TEST_CASE("a type change is undone whole, and bad arguments change nothing") {
    CurveFixture f(
        {Knot(0.0f, 0.0f),
         Knot(0.5f, 0.5f, KNOT_TYPE_BEZIER_SMOOTH, Point2(-0.1f, -0.1f), Point2(0.1f, 0.1f)),
         Knot(1.0f, 0.5f)});
    Curve& c = f.curve();
    const TableState before = Snapshot(c);
    c.ChangeKnotType(kNow, 1, 0);
    c.ChangeKnotType(kNow, 1, 4);
    c.ChangeKnotType(kNow, 3, KNOT_TYPE_CORNER);
    c.ChangeKnotType(kNow, 1, KNOT_TYPE_BEZIER_SMOOTH); // already
    CHECK(Snapshot(c) == before);

    theHold.Begin();
    c.ChangeKnotType(kNow, 1, KNOT_TYPE_CORNER);
    theHold.Accept("Type Change");
    REQUIRE(theHold.Undo());
    CHECK(Snapshot(c) == before);
}
