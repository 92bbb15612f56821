// Curve::Mirror and Curve::Rotate. Expected numbers are worked by hand from the mirror
// and rotation rules (reflection about X / 2 or the middle of the y span; a quarter turn
// about the centre of the points' bounds, then a fit that puts the lowest x at 0 and the
// highest at 100).
#include "whole_curve_support.h"

#include <cmath>

using namespace wholetest;

namespace {

/// Runs `change` inside one accepted hold named "test".
template <class F> void inHold(F change) {
    theHold.Begin();
    change();
    theHold.Accept("test");
}

bool approx(float a, float b, float eps = 1e-5f) { return std::fabs(a - b) <= eps; }

} // namespace

// ---------------------------------------------------------------------------------------
// Mirror

TEST_CASE("horizontal mirror reverses the points: x 0, 0.25, 1 become 0, 0.75, 1") {
    CleanHold hold;
    TestControl ctl(1);
    Curve& c = ctl.curve(0);
    SetPoints(
        c,
        {Knot(0.0f, 0.1f, KNOT_ENDPOINT | KNOT_TYPE_CORNER),
         Knot(0.25f, 0.5f, KNOT_TYPE_BEZIER_SMOOTH, Point2(-0.1f, -0.2f), Point2(0.05f, 0.3f)),
         Knot(1.0f, 0.9f, KNOT_ENDPOINT | KNOT_TYPE_BEZIER_CORNER, Point2(-0.2f, 0.0f), Point2())});
    c.Mirror(0);
    REQUIRE(c.PointCount() == 3);
    const CurveKnot* k = c.Knots();
    CHECK(k[0].pos == Point2(0.0f, 0.9f)); // the old last point comes first
    CHECK(k[1].pos == Point2(0.75f, 0.5f));
    CHECK(k[2].pos == Point2(1.0f, 0.1f));
    // Travel reverses: the in-tangent is the negated old out-tangent and vice versa.
    CHECK(k[1].inTan == Point2(-0.05f, 0.3f));
    CHECK(k[1].outTan == Point2(0.1f, -0.2f));
    CHECK(k[0].outTan == Point2(0.2f, 0.0f));
    // Flags travel with their points unchanged.
    CHECK(k[0].flags == (KNOT_ENDPOINT | KNOT_TYPE_BEZIER_CORNER));
    CHECK(k[1].flags == KNOT_TYPE_BEZIER_SMOOTH);
    CHECK(k[2].flags == (KNOT_ENDPOINT | KNOT_TYPE_CORNER));
}

TEST_CASE("horizontal mirror reflects about half the x high end, not the range middle") {
    CleanHold hold;
    TestControl ctl(1);
    ctl->SetXRange(2.0f, 4.0f, FALSE);
    Curve& c = ctl.curve(0);
    SetPoints(c, {Knot(2.0f, 0.0f), Knot(3.0f, 0.5f), Knot(4.0f, 1.0f)});
    c.Mirror(0);
    // x -> 4 - x: the point at 3 goes to 1, the ends to 0 and 2.
    CHECK(c.Knots()[0].pos == Point2(0.0f, 1.0f));
    CHECK(c.Knots()[1].pos == Point2(1.0f, 0.5f));
    CHECK(c.Knots()[2].pos == Point2(2.0f, 0.0f));
}

TEST_CASE("vertical mirror flips y about the middle of the points' y span") {
    CleanHold hold;
    TestControl ctl(1);
    Curve& c = ctl.curve(0);
    SetPoints(
        c, {Knot(0.0f, 0.0f, KNOT_ENDPOINT | KNOT_TYPE_BEZIER_CORNER, Point2(), Point2(0.2f, 0.3f)),
            Knot(1.0f, 1.0f, KNOT_ENDPOINT | KNOT_TYPE_CORNER, Point2(-0.25f, -0.5f), Point2())});
    c.Mirror(1);
    CHECK(c.Knots()[0].pos == Point2(0.0f, 1.0f));
    CHECK(c.Knots()[1].pos == Point2(1.0f, 0.0f));
    CHECK(c.Knots()[0].outTan == Point2(0.2f, -0.3f));
    CHECK(c.Knots()[1].inTan == Point2(-0.25f, 0.5f));
    CHECK(c.Knots()[0].flags == (KNOT_ENDPOINT | KNOT_TYPE_BEZIER_CORNER));
}

TEST_CASE("vertical mirror uses the span of all points, wherever the lowest lies") {
    CleanHold hold;
    TestControl ctl(1);
    Curve& c = ctl.curve(0);
    // Lowest y -1 at point 2, highest 3 at point 1: middle 1.
    SetPoints(c, {Knot(0.0f, 0.5f), Knot(0.5f, 3.0f), Knot(0.75f, -1.0f), Knot(1.0f, 2.0f)});
    c.Mirror(1);
    CHECK(c.Knots()[0].pos.y == 1.5f);
    CHECK(c.Knots()[1].pos.y == -1.0f);
    CHECK(c.Knots()[2].pos.y == 3.0f);
    CHECK(c.Knots()[3].pos.y == 0.0f);
}

TEST_CASE("an odd count mirrors the middle point in place, an even count swaps all pairs") {
    CleanHold hold;
    TestControl ctl(1);
    Curve& c = ctl.curve(0);
    SUBCASE("odd") {
        SetPoints(c, {Knot(0.0f, 0.0f),
                      Knot(0.25f, 0.5f, KNOT_TYPE_BEZIER_SMOOTH, Point2(-0.125f, 0.0f),
                           Point2(0.0625f, 0.25f)),
                      Knot(1.0f, 1.0f)});
        c.Mirror(0);
        CHECK(c.Knots()[1].pos == Point2(0.75f, 0.5f));
        CHECK(c.Knots()[1].inTan == Point2(-0.0625f, 0.25f));
        CHECK(c.Knots()[1].outTan == Point2(0.125f, 0.0f));
    }
    SUBCASE("even") {
        SetPoints(c, {Knot(0.0f, 0.0f), Knot(0.25f, 0.25f), Knot(0.5f, 0.5f), Knot(1.0f, 1.0f)});
        c.Mirror(0);
        const float xs[] = {0.0f, 0.5f, 0.75f, 1.0f};
        const float ys[] = {1.0f, 0.5f, 0.25f, 0.0f};
        for (int i = 0; i < 4; ++i)
            CHECK(c.Knots()[i].pos == Point2(xs[i], ys[i]));
    }
}

TEST_CASE("mirroring an animated curve leaves no controllers, and undo brings them back") {
    CleanHold hold;
    TestControl ctl(1);
    Curve& c = ctl.curve(0);
    SetPoints(c, {Knot(0.0f, 0.0f), Knot(0.5f, 0.5f), Knot(1.0f, 1.0f)});
    Control* ctrl = Animate(c, 1);
    const ControlState before = Snapshot(*ctl);
    for (int axis : {0, 1, 7}) {
        CAPTURE(axis);
        inHold([&] { c.Mirror(axis); });
        CHECK_FALSE(c.IsAnimated());
        CHECK_FALSE(AnyController(c));
        REQUIRE(theHold.Undo());
        CHECK(SameState(Snapshot(*ctl), before));
        CHECK(c.Controller(1) == ctrl);
    }
}

TEST_CASE("any other axis changes no point but still drops the controllers") {
    CleanHold hold;
    TestControl ctl(1);
    Curve& c = ctl.curve(0);
    SetPoints(c, {Knot(0.0f, 0.25f), Knot(1.0f, 0.75f)});
    Animate(c, 0);
    const ControlState before = Snapshot(*ctl);
    c.Mirror(2);
    c.Mirror(-1);
    REQUIRE(c.PointCount() == 2);
    for (int i = 0; i < 2; ++i)
        CHECK(std::memcmp(&c.Knots()[i], &before.curves[0].knots[i], sizeof(CurveKnot)) == 0);
    CHECK_FALSE(AnyController(c));
}

TEST_CASE("a mirrored curve evaluates to the mirrored function") {
    CleanHold hold;
    TestControl ctl(1);
    Curve& c = ctl.curve(0);
    SetPoints(c, {Knot(0.0f, 0.0f, KNOT_ENDPOINT | KNOT_TYPE_CORNER),
                  Knot(1.0f, 1.0f, KNOT_ENDPOINT | KNOT_TYPE_CORNER)});
    Interval valid = FOREVER;
    CHECK(approx(c.ValueAt(0, 0.25f, valid, FALSE), 0.25f));
    c.Mirror(0);
    valid = FOREVER;
    CHECK(approx(c.ValueAt(0, 0.25f, valid, FALSE), 0.75f)); // the old cache is gone
    c.Mirror(1);
    valid = FOREVER;
    CHECK(approx(c.ValueAt(0, 0.25f, valid, FALSE), 0.25f));
}

TEST_CASE("mirror tells the owner's dependents once, unless notification is suspended") {
    CleanHold hold;
    TestControl ctl(1);
    Curve& c = ctl.curve(0);
    SetPoints(c, {Knot(0.0f, 0.0f), Knot(1.0f, 1.0f)});
    Watcher watcher(ctl.get());
    c.Mirror(0);
    REQUIRE(watcher.notices.size() == 1);
    CHECK(watcher.notices[0].message == REFMSG_CHANGE);
    CHECK(watcher.notices[0].part == 3u);
    CHECK(watcher.notices[0].interval == FOREVER);
    watcher.notices.clear();
    c.SetNotifySuspended(1);
    c.Mirror(1);
    CHECK(watcher.notices.empty());
    c.SetNotifySuspended(0);
}

TEST_CASE("an empty curve is left alone, and an ownerless one cannot mirror horizontally") {
    CleanHold hold;
    SUBCASE("empty") {
        TestControl ctl(1);
        Curve& c = ctl.curve(0);
        SetPoints(c, {});
        Watcher watcher(ctl.get());
        c.Mirror(0);
        c.Mirror(1);
        c.Rotate(0, 0);
        CHECK(c.PointCount() == 0);
        CHECK(watcher.notices.empty());
    }
    SUBCASE("no owner") {
        auto* c = new Curve(nullptr, 0);
        SetPoints(*c, {Knot(0.0f, 0.0f), Knot(0.5f, 1.0f)});
        c->Mirror(0);
        CHECK(c->Knots()[0].pos == Point2(0.0f, 0.0f));
        CHECK(c->Knots()[1].pos == Point2(0.5f, 1.0f));
        c->Mirror(1); // needs no range
        CHECK(c->Knots()[0].pos == Point2(0.0f, 1.0f));
        c->Rotate(0, 0); // no range to fit into
        CHECK(c->Knots()[1].pos == Point2(0.5f, 0.0f));
        c->MaybeAutoDelete();
    }
}

TEST_CASE("property: two horizontal and two vertical mirrors give back the original points") {
    CleanHold hold;
    RandomCurves rnd(20261121u);
    for (float xHigh : {1.0f, 4.0f, 100.0f}) {
        TestControl ctl(1);
        ctl->SetXRange(0.0f, xHigh, FALSE);
        Curve& c = ctl.curve(0);
        for (int round = 0; round < 200; ++round) {
            SetPoints(c, rnd.Points(xHigh));
            const ControlState original = Snapshot(*ctl);
            for (int axis : {0, 1}) {
                CAPTURE(xHigh);
                CAPTURE(round);
                CAPTURE(axis);
                c.Mirror(axis);
                c.Mirror(axis);
                REQUIRE(SameState(Snapshot(*ctl), original));
            }
        }
    }
}

TEST_CASE("property: undo of a mirror restores the points exactly and redo repeats it") {
    CleanHold hold;
    RandomCurves rnd(7u);
    TestControl ctl(1);
    Curve& c = ctl.curve(0);
    for (int round = 0; round < 200; ++round) {
        CAPTURE(round);
        SetPoints(c, rnd.Points(1.0f));
        if (rnd.Int(0, 1))
            Animate(c, rnd.Int(0, c.PointCount() - 1));
        const ControlState before = Snapshot(*ctl);
        const int axis = rnd.Int(0, 1);
        inHold([&] { c.Mirror(axis); });
        const ControlState after = Snapshot(*ctl);
        CHECK_FALSE(AnyController(c));
        REQUIRE(theHold.Undo());
        REQUIRE(SameState(Snapshot(*ctl), before));
        REQUIRE(theHold.Redo());
        REQUIRE(SameState(Snapshot(*ctl), after));
        theHold.Reset();
    }
}

// ---------------------------------------------------------------------------------------
// Rotate

TEST_CASE("a quarter turn lays the curve out from exactly 0 to exactly 100") {
    CleanHold hold;
    for (Point2 range : {Point2(0.0f, 1.0f), Point2(2.0f, 4.0f)}) {
        CAPTURE(range.x);
        TestControl ctl(1);
        ctl->SetXRange(range.x, range.y, FALSE);
        Curve& c = ctl.curve(0);
        const float w = range.y - range.x;
        // Before: (0, 0) E, (0.25, 1), (0.75, -1), (1, 0) E, scaled to the range width.
        SetPoints(c,
                  {Knot(0.0f, 0.0f, KNOT_ENDPOINT | KNOT_TYPE_CORNER), Knot(0.25f * w, 1.0f),
                   Knot(0.75f * w, -1.0f), Knot(1.0f * w, 0.0f, KNOT_ENDPOINT | KNOT_TYPE_CORNER)});
        c.SetFittedWidth(w); // points already fitted to this range: f = 1
        c.Rotate(0, 0);
        // Counter-clockwise about the centre (w / 2, 0): (x, y) -> (c.x - y, c.y + x - c.x).
        // New x: w/2, w/2 - 1, w/2 + 1, w/2; lo = w/2 - 1 (point 1), hi = w/2 + 1 (point 2).
        const CurveKnot* k = c.Knots();
        CHECK(k[1].pos.x == 0.0f);
        CHECK(k[2].pos.x == 100.0f);
        CHECK((k[1].flags & KNOT_ENDPOINT) != 0);
        CHECK((k[2].flags & KNOT_ENDPOINT) != 0);
        // The old ends lie inside now: (x - lo) * s with s = w / 2 = 0.5 * w.
        CHECK(approx(k[0].pos.x, 1.0f * (w / 2.0f)));
        CHECK(approx(k[3].pos.x, 1.0f * (w / 2.0f)));
        CHECK((k[0].flags & KNOT_ENDPOINT) == 0);
        CHECK((k[3].flags & KNOT_ENDPOINT) == 0);
        // y: the old x turned, about the centre's y 0.
        CHECK(approx(k[0].pos.y, -0.5f * w));
        CHECK(approx(k[1].pos.y, -0.25f * w));
        CHECK(approx(k[2].pos.y, 0.25f * w));
        CHECK(approx(k[3].pos.y, 0.5f * w));
        CHECK(approx(c.FittedWidth(), 2.0f));
    }
}

TEST_CASE("clockwise and counter-clockwise turns go opposite ways") {
    CleanHold hold;
    TestControl ctl(1);
    Curve& c = ctl.curve(0);
    SetPoints(c, {Knot(0.0f, 0.0f), Knot(0.5f, 0.25f), Knot(1.0f, 1.0f)});
    SUBCASE("counter-clockwise") {
        c.Rotate(0, 0);
        // Centre (0.5, 0.5): point 0 -> (1, 0), point 1 -> (0.75, 0.5), point 2 -> (0, 1).
        CHECK(c.Knots()[0].pos.x == 100.0f);
        CHECK(approx(c.Knots()[0].pos.y, 0.0f));
        CHECK(approx(c.Knots()[1].pos.x, 0.75f));
        CHECK(approx(c.Knots()[1].pos.y, 0.5f));
        CHECK(c.Knots()[2].pos.x == 0.0f);
        CHECK(approx(c.Knots()[2].pos.y, 1.0f));
    }
    SUBCASE("clockwise") {
        c.Rotate(1, 0);
        // Point 0 -> (0, 1), point 1 -> (0.25, 0.5), point 2 -> (1, 0).
        CHECK(c.Knots()[0].pos.x == 0.0f);
        CHECK(approx(c.Knots()[0].pos.y, 1.0f));
        CHECK(approx(c.Knots()[1].pos.x, 0.25f));
        CHECK(approx(c.Knots()[1].pos.y, 0.5f));
        CHECK(c.Knots()[2].pos.x == 100.0f);
        CHECK(approx(c.Knots()[2].pos.y, 0.0f));
    }
}

TEST_CASE("tangents turn with the points; handles within 0.01 of an end snap onto it") {
    CleanHold hold;
    TestControl ctl(1);
    Curve& c = ctl.curve(0);
    SetPoints(
        c, {Knot(0.0f, 0.0f, KNOT_ENDPOINT | KNOT_TYPE_CORNER),
            Knot(0.5f, 0.5f, KNOT_TYPE_BEZIER_CORNER, Point2(-0.125f, 0.0f), Point2(0.0f, 0.125f)),
            Knot(1.0f, 1.0f, KNOT_ENDPOINT | KNOT_TYPE_CORNER)});
    c.Rotate(0, 0);
    // The middle point stays at the centre (0.5, 0.5); its in-tangent (-0.125, 0) turns to
    // (0, -0.125) and its out-tangent (0, 0.125) to (-0.125, 0). lo 0, hi 1, s 1.
    const CurveKnot& m = c.Knots()[1];
    CHECK(approx(m.pos.x, 0.5f));
    CHECK(approx(m.inTan.x, 0.0f));
    CHECK(approx(m.inTan.y, -0.125f));
    CHECK(approx(m.outTan.x, -0.125f));
    CHECK(approx(m.outTan.y, 0.0f));
    // The end points have no handles: their absolute handles snap with them, so the
    // tangents come out exactly zero in x.
    CHECK(c.Knots()[2].pos.x == 0.0f);
    CHECK(c.Knots()[2].inTan.x == 0.0f);
    CHECK(c.Knots()[0].outTan.x == 0.0f);
}

TEST_CASE("a smooth point that becomes an end turns Bezier-Corner; other flags are kept") {
    CleanHold hold;
    TestControl ctl(1);
    Curve& c = ctl.curve(0);
    SetPoints(c, {Knot(0.0f, 0.0f, KNOT_ENDPOINT | KNOT_SELECTED | KNOT_TYPE_BEZIER_SMOOTH),
                  Knot(0.5f, 0.25f, KNOT_TYPE_BEZIER_SMOOTH),
                  Knot(1.0f, 1.0f, KNOT_ENDPOINT | KNOT_TYPE_BEZIER_CORNER)});
    c.Rotate(0, 0);
    // Point 0 goes to x 100 and point 2 to x 0 (see the turn above); point 1 stays inside.
    CHECK(c.Knots()[0].flags == (KNOT_ENDPOINT | KNOT_SELECTED | KNOT_TYPE_BEZIER_CORNER));
    CHECK(c.Knots()[1].flags == KNOT_TYPE_BEZIER_SMOOTH);
    CHECK(c.Knots()[2].flags == (KNOT_ENDPOINT | KNOT_TYPE_BEZIER_CORNER));
}

TEST_CASE("the fit starts from the fitted width: x is scaled by fitted width / range width") {
    CleanHold hold;
    TestControl ctl(1);
    ctl->SetXRange(0.0f, 2.0f, FALSE);
    Curve& c = ctl.curve(0);
    SetPoints(c, {Knot(0.0f, 0.0f), Knot(2.0f, 1.0f)});
    SUBCASE("fitted width 1: the x span halves before the turn") {
        c.SetFittedWidth(1.0f);
        c.Rotate(0, 0);
        // (0, 0), (1, 1) about (0.5, 0.5): y becomes 0 and 1.
        CHECK(approx(c.Knots()[0].pos.y, 0.0f));
        CHECK(approx(c.Knots()[1].pos.y, 1.0f));
    }
    SUBCASE("fitted width 2: no scaling") {
        c.SetFittedWidth(2.0f);
        c.Rotate(0, 0);
        // (0, 0), (2, 1) about (1, 0.5): y becomes -0.5 and 1.5.
        CHECK(approx(c.Knots()[0].pos.y, -0.5f));
        CHECK(approx(c.Knots()[1].pos.y, 1.5f));
    }
    CHECK(approx(c.FittedWidth(), 1.0f)); // hi - lo of the turned points: the old y span
}

TEST_CASE("a flat curve turns onto one x: fitted width 0 and no fit") {
    CleanHold hold;
    TestControl ctl(1);
    Curve& c = ctl.curve(0);
    SUBCASE("three points at one y") {
        // The quarter turn's cosine is -4.4e-8 in single precision, not 0: the points sit
        // around x 0.75 so that the x error (at most 0.25 * 4.4e-8) rounds away and all
        // three land on exactly one x, as they would with an exact turn.
        SetPoints(c, {Knot(0.5f, 0.5f, KNOT_ENDPOINT | KNOT_TYPE_CORNER), Knot(0.75f, 0.5f),
                      Knot(1.0f, 0.5f, KNOT_ENDPOINT | KNOT_TYPE_CORNER)});
        c.Rotate(0, 0);
        CHECK(c.FittedWidth() == 0.0f);
        // Centre (0.75, 0.5): every point lands on x 0.75 (not snapped to 0 or 100), y
        // 0.25, 0.5, 0.75, and the end marks are gone.
        for (int i = 0; i < 3; ++i) {
            CAPTURE(i);
            CHECK(c.Knots()[i].pos.x == 0.75f);
            CHECK(approx(c.Knots()[i].pos.y, 0.25f + 0.25f * float(i)));
            CHECK((c.Knots()[i].flags & KNOT_ENDPOINT) == 0);
        }
    }
    SUBCASE("one point") {
        SetPoints(c, {Knot(0.25f, 0.5f, KNOT_ENDPOINT | KNOT_TYPE_CORNER)});
        c.Rotate(1, 0);
        CHECK(c.FittedWidth() == 0.0f);
        CHECK(c.Knots()[0].pos == Point2(0.25f, 0.5f));
        CHECK(c.Knots()[0].flags == KNOT_TYPE_CORNER);
    }
}

TEST_CASE("a rotation under an empty x range has nothing to fit into and keeps the points") {
    CleanHold hold;
    TestControl ctl(1);
    testsupport::LoadRanges(*ctl, 0.5f, 0.5f); // SetXRange refuses it
    Curve& c = ctl.curve(0);
    SetPoints(c, {Knot(0.0f, 0.0f), Knot(1.0f, 1.0f)});
    Animate(c, 1);
    c.Rotate(0, 0);
    CHECK(c.Knots()[0].pos == Point2(0.0f, 0.0f));
    CHECK(c.Knots()[1].pos == Point2(1.0f, 1.0f));
    CHECK(c.FittedWidth() == 1.0f);
    CHECK_FALSE(AnyController(c));
}

TEST_CASE("undo of a rotation restores points, controllers and the fitted width exactly") {
    CleanHold hold;
    RandomCurves rnd(99u);
    TestControl ctl(1);
    Curve& c = ctl.curve(0);
    for (int round = 0; round < 100; ++round) {
        CAPTURE(round);
        SetPoints(c, rnd.Points(1.0f));
        c.SetFittedWidth(rnd.Grid(1, 2));
        if (rnd.Int(0, 1))
            Animate(c, rnd.Int(0, c.PointCount() - 1));
        const ControlState before = Snapshot(*ctl);
        inHold([&] { c.Rotate(rnd.Int(0, 1), 0); });
        const ControlState after = Snapshot(*ctl);
        CHECK_FALSE(AnyController(c));
        REQUIRE(theHold.Undo());
        REQUIRE(SameState(Snapshot(*ctl), before));
        REQUIRE(theHold.Redo());
        REQUIRE(SameState(Snapshot(*ctl), after));
        theHold.Reset();
    }
}

TEST_CASE("rotation tells the owner's dependents") {
    CleanHold hold;
    TestControl ctl(1);
    Curve& c = ctl.curve(0);
    SetPoints(c, {Knot(0.0f, 0.0f), Knot(1.0f, 1.0f)});
    Watcher watcher(ctl.get());
    c.Rotate(1, 0);
    REQUIRE_FALSE(watcher.notices.empty());
    CHECK(watcher.notices.back().message == REFMSG_CHANGE);
    CHECK(watcher.notices.back().part == 3u);
}
