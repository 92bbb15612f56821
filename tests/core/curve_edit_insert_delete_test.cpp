// Inserting and deleting points: InsertKnotAtX, InsertKnotEx, DeleteKnotEx and
// DeleteSelectedKnots, with their undo records and the point controllers they renumber.
#include "core/curve_edit_fixture.h"

#include <doctest/doctest.h>

#include <limits>

using namespace edit_test;

namespace {

// One segment from (0, 0) to (1, 1) with handles (0.5, 0) and (0.5, 1):
// x(u) = 1.5u(1 - u) + u^3, y(u) = 3u^2(1 - u) + u^3. At u = 0.25 both are dyadic:
// x = 0.296875, so a split at that x is found exactly and every subdivision point below
// is exact in binary.
std::vector<CurveKnot> oneSegment() {
    return {Knot(0.0f, 0.0f, KNOT_TYPE_BEZIER_CORNER, Point2(), Point2(0.5f, 0.0f)),
            Knot(1.0f, 1.0f, KNOT_TYPE_BEZIER_CORNER, Point2(-0.5f, 0.0f), Point2())};
}

constexpr float kSplitX = 0.296875f;

float valueAt(Curve& c, float x) {
    Interval valid = FOREVER;
    return c.ValueAt(kNow, x, valid, FALSE);
}

} // namespace

TEST_CASE("a Bezier point splits the segment without changing the curve") {
    CurveFixture f(oneSegment());
    Curve& c = f.curve();
    std::vector<float> before;
    for (int k = 0; k <= 20; ++k)
        before.push_back(valueAt(c, k / 20.0f));

    REQUIRE(c.InsertKnotAtX(kNow, 0, kSplitX, 1) == 1);
    REQUIRE(c.PointCount() == 3);
    // de Casteljau at u = 0.25: Q01 (0.125, 0), Q12 (0.5, 0.25), Q23 (0.625, 1),
    // Q012 (0.21875, 0.0625), Q123 (0.53125, 0.4375), S (0.296875, 0.15625).
    const CurveKnot& k = c.Knots()[1];
    CHECK(k.pos == Point2(0.296875f, 0.15625f));
    CHECK(k.inTan == Point2(0.21875f - 0.296875f, 0.0625f - 0.15625f));
    CHECK(k.outTan == Point2(0.53125f - 0.296875f, 0.4375f - 0.15625f));
    CHECK(k.flags == (KNOT_SELECTED | KNOT_TYPE_BEZIER_SMOOTH));
    CHECK(c.Knots()[0].outTan == Point2(0.125f, 0.0f));
    CHECK(c.Knots()[2].inTan == Point2(0.625f - 1.0f, 0.0f));

    for (int s = 0; s <= 20; ++s)
        CHECK(valueAt(c, s / 20.0f) == doctest::Approx(before[std::size_t(s)]).epsilon(1e-4));
}

TEST_CASE("a Corner point lands on the curve where it is split, without handles") {
    CurveFixture f(oneSegment());
    Curve& c = f.curve();
    REQUIRE(c.InsertKnotAtX(kNow, 0, kSplitX, 0) == 1);
    // The segment before the split at u = 0.25: S = (0.296875, 0.15625). The outer handles
    // are shortened as for a Bezier point.
    const CurveKnot& k = c.Knots()[1];
    CHECK(k.pos.x == doctest::Approx(0.296875f));
    CHECK(k.pos.y == doctest::Approx(0.15625f));
    CHECK(k.inTan == Point2());
    CHECK(k.outTan == Point2());
    CHECK(k.flags == (KNOT_SELECTED | KNOT_TYPE_CORNER));
    CHECK(c.Knots()[0].outTan == Point2(0.125f, 0.0f));
    CHECK(c.Knots()[2].inTan == Point2(0.625f - 1.0f, 0.0f));
}

TEST_CASE("the new point becomes the only selected point; undo and redo of an insertion") {
    CurveFixture f(oneSegment());
    Curve& c = f.curve();
    Select(c, {0, 1});
    const TableState before = Snapshot(c);
    theHold.Begin();
    REQUIRE(c.InsertKnotAtX(kNow, 0, kSplitX, 1) == 1);
    theHold.Accept("Insert Points");
    CHECK(Selected(c) == std::vector<int>{1});
    const TableState after = Snapshot(c);

    REQUIRE(theHold.Undo());
    CHECK(Snapshot(c) == before);
    REQUIRE(theHold.Redo());
    CHECK(Snapshot(c) == after);
    CHECK(c.CachedPosition(kNow, 1) == Point2(0.296875f, 0.15625f));
}

TEST_CASE("a vertical segment cannot be split") {
    CurveFixture f({Knot(0.0f, 0.0f), Knot(0.5f, 0.2f), Knot(0.5f, 0.8f), Knot(1.0f, 1.0f)});
    Curve& c = f.curve();
    const TableState before = Snapshot(c);
    CHECK(c.InsertKnotAtX(kNow, 1, 0.5f, 1) == 0);
    CHECK(c.InsertKnotAtX(kNow, 1, 0.5f, 0) == 0);
    CHECK(Snapshot(c) == before);
}

TEST_CASE("there is no segment after the last point of an open curve") {
    CurveFixture f(oneSegment());
    const TableState before = Snapshot(f.curve());
    CHECK(f.curve().InsertKnotAtX(kNow, 1, 0.5f, 1) == 0);
    CHECK(f.curve().InsertKnotAtX(kNow, -1, 0.5f, 1) == 0);
    CHECK(Snapshot(f.curve()) == before);
}

TEST_CASE("the wrap segment of a cyclic curve runs backwards and its point goes first") {
    FixtureOptions o;
    o.cyclic = true;
    CurveFixture f({Knot(0.0f, 0.0f), Knot(0.5f, 1.0f), Knot(1.0f, 0.0f)}, o);
    Curve& c = f.curve();
    // Segment 2 runs from (1, 0) back to (0, 0); the new point is inserted at index 0.
    REQUIRE(c.InsertKnotAtX(kNow, 2, 0.25f, 1) == 1);
    REQUIRE(c.PointCount() == 4);
    CHECK(c.Knots()[0].pos.x == doctest::Approx(0.25f).epsilon(1e-3));
    CHECK(c.Knots()[0].pos.y == doctest::Approx(0.0f));
    CHECK(c.Knots()[1].pos == Point2(0.0f, 0.0f));
    CHECK(c.Knots()[3].pos == Point2(1.0f, 0.0f));
    // Its in-handle points back towards the last point, its out-handle towards the old first.
    CHECK(c.Knots()[0].inTan.x >= 0.0f);
    CHECK(c.Knots()[0].outTan.x <= 0.0f);
}

TEST_CASE(
    "InsertKnotEx inserts a null controller slot and keeps the controllers with their points") {
    CurveFixture f({Knot(0.0f, 0.0f), Knot(0.3f, 0.3f), Knot(0.6f, 0.6f), Knot(1.0f, 1.0f)});
    Curve& c = f.curve();
    Control* a = f.Animate(1);
    Control* b = f.Animate(2);
    const TableState before = Snapshot(c);
    theHold.Begin();
    CHECK(c.InsertKnotEx(2, Knot(0.45f, 0.45f), FALSE) == 2);
    theHold.Accept("Insert Points");
    CHECK(c.PointCount() == 5);
    CHECK(c.NumRefs() == 5);
    CHECK(c.Controller(1) == a);
    CHECK(c.Controller(2) == nullptr);
    CHECK(c.Controller(3) == b);
    CHECK(c.CachedPosition(kNow, 3) == Point2(0.6f, 0.6f)); // from b, at its new index
    // The reference bookkeeping stays per target: each controller still has the curve as
    // its one dependent.
    CHECK(b->NumDependents() == 1);
    CHECK(b->GetDependent(0) == &c);

    REQUIRE(theHold.Undo());
    CHECK(Snapshot(c) == before);
    CHECK(b->NumDependents() == 1);
}

TEST_CASE("InsertKnotEx clamps the index and refuses non-finite points") {
    CurveFixture f({Knot(0.0f, 0.0f), Knot(1.0f, 1.0f)});
    Curve& c = f.curve();
    CHECK(c.InsertKnotEx(-5, Knot(0.0f, 0.5f), FALSE) == 0);
    CHECK(c.InsertKnotEx(99, Knot(1.0f, 0.5f), FALSE) == 3);
    CHECK(c.PointCount() == 4);
    CHECK(c.Knots()[3].pos == Point2(1.0f, 0.5f));
    CHECK(c.InsertKnotEx(1, Knot(std::numeric_limits<float>::infinity(), 0.5f), FALSE) == -1);
    CHECK(c.PointCount() == 4);
}

TEST_CASE("deleting an animated point: undo and redo put back points, controllers and references") {
    CurveFixture f({Knot(0.0f, 0.0f), Knot(0.3f, 0.3f), Knot(0.6f, 0.6f), Knot(1.0f, 1.0f)});
    Curve& c = f.curve();
    Control* a = f.Animate(1);
    Control* b = f.Animate(2);
    const TableState before = Snapshot(c);

    theHold.Begin();
    c.DeleteKnot(1);
    theHold.Accept("Delete Point");
    const TableState after = Snapshot(c);
    REQUIRE(c.PointCount() == 3);
    CHECK(c.Controller(1) == b);
    CHECK(a->NumDependents() == 0); // dropped, but alive: the undo step still holds it
    CHECK(b->NumDependents() == 1);

    REQUIRE(theHold.Undo());
    CHECK(Snapshot(c) == before);
    CHECK(a->NumDependents() == 1);
    CHECK(a->GetDependent(0) == &c);
    CHECK(c.CachedPosition(kNow, 1) == Point2(0.3f, 0.3f));

    REQUIRE(theHold.Redo());
    CHECK(Snapshot(c) == after);
    CHECK(a->NumDependents() == 0);
    CHECK(b->NumDependents() == 1);
    CHECK(c.CachedPosition(kNow, 1) == Point2(0.6f, 0.6f));
}

TEST_CASE("deleting an end point makes its neighbour the new end point") {
    CurveFixture f(
        {Knot(0.0f, 0.0f),
         Knot(0.3f, 0.3f, KNOT_TYPE_BEZIER_SMOOTH, Point2(-0.1f, 0.0f), Point2(0.1f, 0.0f)),
         Knot(1.0f, 1.0f)});
    Curve& c = f.curve();
    c.DeleteKnot(0);
    REQUIRE(c.PointCount() == 2);
    CHECK(c.Knots()[0].flags == (KNOT_ENDPOINT | KNOT_TYPE_BEZIER_CORNER));
    CHECK(c.Knots()[0].pos == Point2(0.3f, 0.3f));
}

TEST_CASE("the no-record deletion removes the point and nothing else") {
    CurveFixture f({Knot(0.0f, 0.0f), Knot(0.3f, 0.3f, KNOT_TYPE_BEZIER_SMOOTH), Knot(1.0f, 1.0f)});
    Curve& c = f.curve();
    theHold.Begin();
    c.DeleteKnotEx(0, TRUE);
    theHold.Accept("Delete Point");
    CHECK(theHold.NumUndo() == 0);
    REQUIRE(c.PointCount() == 2);
    CHECK(c.Knots()[0].flags == KNOT_TYPE_BEZIER_SMOOTH);
}

TEST_CASE("deleting the selection keeps the end points and goes from the highest index down") {
    CurveFixture f({Knot(0.0f, 0.0f), Knot(0.2f, 0.2f), Knot(0.4f, 0.4f), Knot(0.6f, 0.6f),
                    Knot(0.8f, 0.8f), Knot(1.0f, 1.0f)});
    Curve& c = f.curve();
    Select(c, {0, 1, 3, 5});
    const TableState before = Snapshot(c);
    theHold.Begin();
    CHECK(c.DeleteSelectedKnots() == 2);
    theHold.Accept("Delete Point");
    REQUIRE(c.PointCount() == 4);
    CHECK(c.Knots()[1].pos == Point2(0.4f, 0.4f));
    CHECK(c.Knots()[2].pos == Point2(0.8f, 0.8f));
    CHECK(Selected(c) == std::vector<int>{0, 3}); // the end points, still selected

    REQUIRE(theHold.Undo());
    CHECK(Snapshot(c) == before); // the deleted points come back selected
}

TEST_CASE("deleting with nothing selected leaves no undo step") {
    CurveFixture f({Knot(0.0f, 0.0f), Knot(0.5f, 0.5f), Knot(1.0f, 1.0f)});
    theHold.Begin();
    CHECK(f.curve().DeleteSelectedKnots() == 0);
    theHold.Accept("Delete Point");
    CHECK(theHold.NumUndo() == 0);
}

TEST_CASE("DeleteKnot ignores indices outside the table") {
    CurveFixture f({Knot(0.0f, 0.0f), Knot(1.0f, 1.0f)});
    const TableState before = Snapshot(f.curve());
    f.curve().DeleteKnot(-1);
    f.curve().DeleteKnot(2);
    CHECK(Snapshot(f.curve()) == before);
}
