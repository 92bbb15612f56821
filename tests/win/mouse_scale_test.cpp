// The scale mode through real mouse messages: the y of the selected points (and their
// handles) times the ratio of the mouse's height to the press height, both measured from
// the row H - S (H the usable height plus one, S the vertical scroll offset in pixels);
// the refused press at height 0; the factor's bounds under the y constraint; one undo
// step "Scale Point".
//
// View: xs 2, ys 1, X0 -61, Y0 0: curve x at column 2x + 61, y at row (Hm + 1) / 2 + 4 - y.
#include "curvectl/messages.h"
#include "doctest/doctest.h"
#include "host/hold.h"
#include "tests/win/mouse_test_support.h"

#include <cmath>

using namespace graphtest;
using namespace mousetest;

namespace {

/// The two curves (TwoCurves) in the scale mode.
struct Scene : TwoCurves {
    explicit Scene(DWORD flags = edtest::kEmbedded) : TwoCurves(CC_TOOL_SCALE, flags) {}
    float y(int c, int i) { return ed.curve(c).CachedPosition(0, i).y; }
    /// H - S: the row at which the height is 0.
    int baseRow() {
        const view::ViewMapping m = ed.View();
        return m.Height() - m.y0;
    }
    /// The row whose height is `factor` times the height of row `r0` (an integer factor
    /// times an integer height: exact).
    int rowFor(int r0, int factor) { return baseRow() - factor * (baseRow() - r0); }
};

using Names = std::vector<std::string>;

} // namespace

TEST_CASE_FIXTURE(edtest::EditorFixture,
                  "a scale drag multiplies y by the ratio of heights, in one undo step") {
    Scene s;
    s.select(0, {1, 2});
    s.select(1, {2});
    // Point 2 becomes Bezier with handles 5 above and below its level: they scale too.
    CurveKnot& k = s.curve(0).Knots()[2];
    k.flags |= KNOT_BEZIER;
    k.inTan = Point2(-10.0f, 5.0f);
    k.outTan = Point2(10.0f, -5.0f);
    s.curve(0).InvalidateCache();
    const std::vector<Point2> before0 = Positions(s.curve(0)), before1 = Positions(s.curve(1));

    const IPoint2 p = s.at(0, 2);
    const IPoint2 to(p.x + 7, p.y - 37);
    // ys is 1 and S is 0 here: heights are pixel counts.
    const float factor = float(s.baseRow() - to.y) / float(s.baseRow() - p.y);
    Drag(s.graph(), p, to, 4);
    CHECK(s.y(0, 1) == doctest::Approx(30.0f * factor));
    CHECK(s.y(0, 2) == doctest::Approx(60.0f * factor));
    CHECK(s.y(1, 2) == doctest::Approx(20.0f * factor));
    CHECK(s.curve(0).CachedPosition(0, 2).x == 50.0f); // x never changes
    CHECK(s.curve(0).CachedInHandle(0, 2).y == doctest::Approx(65.0f * factor));
    CHECK(s.curve(0).CachedOutHandle(0, 2).y == doctest::Approx(55.0f * factor));
    CHECK(s.y(0, 3) == -40.0f); // unselected
    CHECK(s.y(1, 1) == -30.0f);
    CHECK(UndoNames() == Names{"Scale Point"});
    CHECK_FALSE(s.curve(0).DragMark());

    REQUIRE(theHold.Undo());
    CHECK(Positions(s.curve(0)) == before0);
    CHECK(Positions(s.curve(1)) == before1);
    CHECK(s.curve(0).Knots()[2].inTan == Point2(-10.0f, 5.0f));
}

TEST_CASE_FIXTURE(edtest::EditorFixture, "dragging back to the press row restores exactly") {
    Scene s;
    s.select(0, {1, 2});
    s.select(1, {2});
    const std::vector<Point2> before = Positions(s.curve(0));
    const IPoint2 p = s.at(0, 2);
    Press(s.graph(), p);
    MoveTo(s.graph(), p + IPoint2(0, -25));
    MoveTo(s.graph(), p + IPoint2(3, 40));
    CHECK(s.y(0, 2) != 60.0f);
    MoveTo(s.graph(), p + IPoint2(5, 0)); // the same row: factor 1
    Release(s.graph(), p + IPoint2(5, 0));
    CHECK(Positions(s.curve(0)) == before);
}

TEST_CASE_FIXTURE(edtest::EditorFixture,
                  "a press at height 0 is refused: nothing is scaled and no hold stays open") {
    Scene s(edtest::kEmbedded & ~DWORD(CC_CONSTRAIN_Y));
    // A selected point drawn exactly on the row H - S.
    const view::ViewMapping m = s.ed.View();
    const float y0 = float(m.Height() / 2 + 4 - m.Height());
    LoadPoints(s.curve(0), {Knot(0, 0), Knot(50, y0, KNOT_CORNER | KNOT_SELECTED), Knot(100, 0)});
    s.select(1, {1});
    const IPoint2 p = s.at(0, 1);
    REQUIRE(p.y == s.baseRow());

    Press(s.graph(), p);
    MoveTo(s.graph(), p + IPoint2(0, -20));
    CHECK_FALSE(theHold.Holding());
    MoveTo(s.graph(), p + IPoint2(0, -40));
    Release(s.graph(), p + IPoint2(0, -40));
    CHECK(s.y(0, 1) == y0);
    CHECK(s.y(1, 1) == -30.0f);
    CHECK(UndoNames().empty());
    CHECK_FALSE(theHold.Holding());
    CHECK_FALSE(s.curve(0).DragMark());

    // One row higher the height is 1 pixel, and the same drag scales by 41.
    Drag(s.graph(), p + IPoint2(0, -1), p + IPoint2(0, -41), 2);
    CHECK(s.y(1, 1) == doctest::Approx(-30.0f * 41.0f));
    CHECK(UndoNames() == Names{"Scale Point"});
}

TEST_CASE_FIXTURE(edtest::EditorFixture,
                  "under the y constraint the factor stays within yLow / lowest and "
                  "yHigh / highest") {
    SUBCASE("constrained") {
        Scene s;
        s.ed.control().SetYRange(-100.0f, 100.0f);
        s.select(0, {1, 2}); // y 30 and 60: factor within [-100 / 30, 100 / 60]
        const IPoint2 p = s.at(0, 2);
        Drag(s.graph(), p, IPoint2(p.x, s.rowFor(p.y, 3)), 2);
        CHECK(s.y(0, 2) == doctest::Approx(100.0f));
        CHECK(s.y(0, 1) == doctest::Approx(50.0f));
    }
    SUBCASE("constrained, one point, both bounds") {
        Scene s;
        s.ed.control().SetYRange(-100.0f, 100.0f);
        s.select(0, {1}); // y 30: factor within [-100 / 30, 100 / 30]
        const IPoint2 p = s.at(0, 1);
        Drag(s.graph(), p, IPoint2(p.x, s.rowFor(p.y, 5)), 2);
        CHECK(s.y(0, 1) == doctest::Approx(100.0f));
        REQUIRE(theHold.Undo());
        Drag(s.graph(), p, IPoint2(p.x, s.rowFor(p.y, -5)), 2);
        CHECK(s.y(0, 1) == doctest::Approx(-100.0f));
    }
    SUBCASE("free") {
        Scene s(edtest::kEmbedded & ~DWORD(CC_CONSTRAIN_Y));
        s.ed.control().SetYRange(-100.0f, 100.0f);
        s.select(0, {1, 2});
        const IPoint2 p = s.at(0, 2);
        Drag(s.graph(), p, IPoint2(p.x, s.rowFor(p.y, 3)), 2);
        CHECK(s.y(0, 2) == 180.0f);
        CHECK(s.y(0, 1) == 90.0f);
    }
}

TEST_CASE_FIXTURE(edtest::EditorFixture,
                  "a selection whose highest point is at y 0 has no upper factor bound") {
    Scene s;
    s.ed.control().SetYRange(-100.0f, 100.0f);
    // Points at y 0 only: both bound denominators are 0, the factor is free upwards and
    // nothing becomes NaN.
    LoadPoints(s.curve(0), {Knot(0, 0), Knot(40, 0, KNOT_CORNER | KNOT_SELECTED),
                            Knot(60, 0, KNOT_CORNER | KNOT_SELECTED), Knot(100, 0)});
    const IPoint2 p = s.at(0, 1) + IPoint2(0, -3); // 3 pixels above the point
    Drag(s.graph(), p, IPoint2(p.x, s.rowFor(p.y, 50)), 2);
    CHECK(s.y(0, 1) == 0.0f);
    CHECK(s.y(0, 2) == 0.0f);
    CHECK(UndoNames() == Names{"Scale Point"});

    // With curve 1's point (30, -30) selected too, the lower bound -100 / -30 still
    // applies: a factor of 2 is raised to it, and the point ends on the y range's low end.
    s.select(1, {1});
    const IPoint2 q = s.at(1, 1);
    Drag(s.graph(), q, IPoint2(q.x, s.rowFor(q.y, 2)), 2);
    CHECK(s.y(1, 1) == doctest::Approx(-100.0f));
    CHECK(s.y(0, 1) == 0.0f);
}

TEST_CASE_FIXTURE(edtest::EditorFixture, "only the displayed curves are scaled") {
    Scene s;
    s.select(0, {2});
    s.select(1, {1});
    BitArray shown(2);
    shown.Set(0);
    s.ed.control().SetShownCurves(shown);
    const IPoint2 p = s.at(0, 2);
    Drag(s.graph(), p, IPoint2(p.x, s.rowFor(p.y, 2)), 2);
    CHECK(s.y(0, 2) == 120.0f);
    CHECK(s.y(1, 1) == -30.0f);
}

TEST_CASE_FIXTURE(edtest::EditorFixture, "escape during a scale puts the points back") {
    Scene s;
    s.select(0, {1, 2});
    const std::vector<Point2> before = Positions(s.curve(0));
    const IPoint2 p = s.at(0, 2);
    Press(s.graph(), p);
    MoveTo(s.graph(), p + IPoint2(0, -30));
    REQUIRE(s.y(0, 2) != 60.0f);
    Escape(s.graph());
    CHECK(Positions(s.curve(0)) == before);
    CHECK(UndoNames().empty());
    CHECK_FALSE(theHold.Holding());
    CHECK_FALSE(s.curve(0).DragMark());
}

TEST_CASE_FIXTURE(edtest::EditorFixture, "closing the editor during a scale rolls it back") {
    Scene s;
    s.select(0, {1, 2});
    const std::vector<Point2> before = Positions(s.curve(0));
    const IPoint2 p = s.at(0, 2);
    Press(s.graph(), p);
    MoveTo(s.graph(), p + IPoint2(0, -30));
    REQUIRE(s.y(0, 2) != 60.0f);
    s.ed.control().SetEditorOpen(FALSE);
    CHECK_FALSE(theHold.Holding());
    CHECK(Positions(s.curve(0)) == before);
    CHECK(UndoNames().empty());
}

TEST_CASE_FIXTURE(edtest::EditorFixture, "each scale step tells the client of every point") {
    Scene s;
    ClientLog log;
    s.ed.control().SetNotifyWindow(log.get());
    s.select(0, {1, 2});
    const IPoint2 p = s.at(0, 2);
    Drag(s.graph(), p, p + IPoint2(0, -20), 2);
    std::vector<WPARAM> moved, tangents;
    for (const ClientLog::Message& m : log.messages()) {
        if (m.msg == CURVE_MSG_POINT_CHANGED)
            moved.push_back(m.wParam);
        if (m.msg == CURVE_MSG_TANGENT_CHANGED)
            tangents.push_back(m.wParam & 0xFFFF);
    }
    CHECK(moved == std::vector<WPARAM>{1, 2, 1, 2});
    CHECK(tangents == std::vector<WPARAM>{1, 2, 1, 2});
    s.ed.control().SetNotifyWindow(nullptr);
}
