// Undo records across the steps of one drag: a drag rolls the hold back to the press state
// (Hold::Restore) before every step, and the records must describe only what the last
// step did.
#include "curve/curve_undo.h"
#include "curve_edit_fixture.h"
#include "test_support.h"

#include "doctest/doctest.h"

using namespace edit_test;
using testsupport::CoreFixture;

namespace {
std::vector<CurveKnot> fourPoints() {
    return {Knot(0.0f, 0.1f), Knot(0.3f, 0.2f), Knot(0.6f, 0.3f), Knot(1.0f, 0.4f)};
}
} // namespace

TEST_CASE_FIXTURE(CoreFixture,
                  "a drag whose steps move different points redoes only the last step") {
    CurveFixture f(fourPoints());
    Curve& c = f.curve();
    const TableState press = Snapshot(c);

    theHold.SuperBegin();
    theHold.Begin();
    c.SetKnot(kNow, 1, Knot(0.3f, 0.8f), FALSE, FALSE); // first step moves point 1
    theHold.Restore();
    c.InvalidateCache();
    c.SetKnot(kNow, 2, Knot(0.6f, 0.9f), FALSE, FALSE); // second step moves point 2 only
    theHold.Accept("Move Points");
    theHold.SuperAccept("Move Points");
    const TableState released = Snapshot(c);
    CHECK(released.knots[1].pos.y == 0.2f);
    CHECK(released.knots[2].pos.y == 0.9f);

    REQUIRE(theHold.Undo());
    CHECK(Snapshot(c) == press);
    REQUIRE(theHold.Redo());
    CHECK(Snapshot(c) == released); // point 1 stays where the press left it
}

TEST_CASE_FIXTURE(CoreFixture, "a resize inside a hold closes the open position record") {
    CurveFixture f(fourPoints());
    Curve& c = f.curve();
    const TableState before = Snapshot(c);

    theHold.Begin();
    c.SetKnot(kNow, 1, Knot(0.3f, 0.7f), FALSE, FALSE);
    REQUIRE(c.OpenPosRecord() != nullptr);
    c.SetPointCount(3);
    CHECK(c.OpenPosRecord() == nullptr);
    c.SetKnot(kNow, 1, Knot(0.5f, 0.6f), FALSE, FALSE);
    theHold.Accept("edit");
    const TableState after = Snapshot(c);

    REQUIRE(theHold.Undo());
    CHECK(Snapshot(c).knots.size() == before.knots.size());
    CHECK(Snapshot(c).knots[1].pos.y == before.knots[1].pos.y);
    REQUIRE(theHold.Redo());
    CHECK(Snapshot(c).knots.size() == 3);
    CHECK(Snapshot(c).knots[1].pos.x == after.knots[1].pos.x);
    CHECK(Snapshot(c).knots[1].pos.y == after.knots[1].pos.y);
}
