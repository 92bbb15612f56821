// The move mode through real mouse messages: dragging selected points and tangent handles,
// the limits of a drag, the axis constraints, auto-scroll, one undo step per drag, and
// what the client hears.
//
// View: xs 2, ys 1, X0 -61, Y0 0: curve x at column 2x + 61, y at row (Hm + 1) / 2 + 4 - y,
// so a drag of (px, py) pixels is (px / 2, -py) in curve units, exactly.
#include "curvectl/messages.h"
#include "doctest/doctest.h"
#include "host/hold.h"
#include "tests/win/mouse_test_support.h"

using namespace graphtest;
using namespace mousetest;

namespace {

/// The two curves (TwoCurves) in the move mode.
struct Scene : TwoCurves {
    explicit Scene(DWORD flags = edtest::kEmbedded) : TwoCurves(CC_TOOL_MOVE_XY, flags) {}
    Point2 pos(int c, int i) { return ed.curve(c).CachedPosition(0, i); }
    /// Makes point i of curve c a selected Bezier point of the given type with the given
    /// tangents.
    void bezier(int c, int i, uint32_t type, Point2 in, Point2 out) {
        CurveKnot& k = ed.curve(c).Knots()[i];
        k.flags = (k.flags & KNOT_ENDPOINT) | type | KNOT_SELECTED;
        k.inTan = in;
        k.outTan = out;
        ed.curve(c).InvalidateCache();
    }
};

using Names = std::vector<std::string>;

Point2 P(float x, float y) { return Point2(x, y); }

} // namespace

// ---------------------------------------------------------------------------------------
// Points

TEST_CASE_FIXTURE(edtest::EditorFixture,
                  "a drag moves the selected points of every displayed curve in one undo step") {
    Scene s;
    s.select(0, {1, 2});
    s.select(1, {2});
    const std::vector<Point2> before0 = Positions(s.curve(0)), before1 = Positions(s.curve(1));

    // 20 pixels right and 10 up: dx 10, dy 10.
    Drag(s.graph(), s.at(0, 2), s.at(0, 2) + IPoint2(20, -10), 5);
    CHECK(s.pos(0, 1) == P(30, 40));
    CHECK(s.pos(0, 2) == P(60, 70));
    CHECK(s.pos(1, 2) == P(70, 30));
    CHECK(s.pos(0, 3) == P(80, -40)); // unselected points stay
    CHECK(s.pos(1, 1) == P(30, -30));
    CHECK(UndoNames() == Names{"Move Points"});
    CHECK_FALSE(s.curve(0).DragMark());
    CHECK_FALSE(s.curve(1).DragMark());
    CHECK_FALSE(s.ed.editor().Graph().Moving());

    REQUIRE(theHold.Undo());
    CHECK(Positions(s.curve(0)) == before0);
    CHECK(Positions(s.curve(1)) == before1);
    REQUIRE(theHold.Redo());
    CHECK(s.pos(0, 2) == P(60, 70));
    CHECK(s.pos(1, 2) == P(70, 30));
}

TEST_CASE_FIXTURE(edtest::EditorFixture,
                  "each step starts from the press: dragging back restores the press state") {
    Scene s;
    s.select(0, {1, 2, 3});
    s.bezier(0, 2, KNOT_BEZIER, P(-7.25f, 1.5f), P(5.125f, -0.75f));
    const std::vector<Point2> before = Positions(s.curve(0));
    const CurveKnot k2 = s.curve(0).Knots()[2];
    const IPoint2 p = s.at(0, 2);

    Press(s.graph(), p);
    const IPoint2 path[] = {{7, 3}, {-9, 13}, {3, -17}, {11, 5}};
    for (const IPoint2& d : path) {
        MoveTo(s.graph(), p + d);
        // Always the whole offset from the press, never the sum of the steps.
        CHECK(s.pos(0, 2).x == doctest::Approx(50.0f + float(d.x) / 2.0f));
        CHECK(s.pos(0, 2).y == doctest::Approx(60.0f - float(d.y)));
        CHECK(s.curve(0).DragMark());
    }
    MoveTo(s.graph(), p);
    Release(s.graph(), p);
    CHECK(Positions(s.curve(0)) == before);
    CHECK(s.curve(0).Knots()[2].inTan == k2.inTan);
    CHECK(s.curve(0).Knots()[2].outTan == k2.outTan);
    CHECK(s.curve(0).Knots()[2].flags == k2.flags);
}

TEST_CASE_FIXTURE(edtest::EditorFixture,
                  "the first and last point keep their x; vertically they move") {
    Scene s;
    s.select(0, {0});
    Drag(s.graph(), s.at(0, 0), s.at(0, 0) + IPoint2(30, 0), 3);
    CHECK(s.pos(0, 0) == P(0, 0));
    Drag(s.graph(), s.at(0, 0), s.at(0, 0) + IPoint2(30, -20), 3);
    CHECK(s.pos(0, 0) == P(0, 20));

    s.curve(0).SetSelectionEx(BitArray(5), 4, FALSE);
    s.select(0, {4});
    Drag(s.graph(), s.at(0, 4), s.at(0, 4) + IPoint2(-40, 0), 3);
    CHECK(s.pos(0, 4) == P(100, 0));
    Drag(s.graph(), s.at(0, 4), s.at(0, 4) + IPoint2(-40, 15), 3);
    CHECK(s.pos(0, 4) == P(100, -15));

    // Together with an interior point, the end point still keeps its x.
    s.select(0, {3});
    Drag(s.graph(), s.at(0, 3), s.at(0, 3) + IPoint2(-10, 0), 2);
    CHECK(s.pos(0, 3) == P(75, -40));
    CHECK(s.pos(0, 4) == P(100, -15));
}

TEST_CASE_FIXTURE(edtest::EditorFixture, "a point stops at its unselected neighbour") {
    Scene s;
    s.select(0, {2});
    // (50, 60) towards (80, -40): room 30 to the right; the drag asks for 50.
    Drag(s.graph(), s.at(0, 2), s.at(0, 2) + IPoint2(100, 0), 4);
    CHECK(s.pos(0, 2) == P(80, 60));
    // With its right neighbour selected too, the pair goes on to the last point.
    REQUIRE(theHold.Undo());
    s.select(0, {3});
    Drag(s.graph(), s.at(0, 2), s.at(0, 2) + IPoint2(100, 0), 4);
    CHECK(s.pos(0, 2) == P(70, 60));
    CHECK(s.pos(0, 3) == P(100, -40));

    // The limits of all displayed curves apply together: to the left, curve 1's point 2
    // (60, 20) has 30 units of room, curve 0's point 1 (20, 30) only 20.
    s.curve(0).SetSelectionEx(BitArray(5), 4, FALSE);
    theHold.Reset();
    LoadPoints(s.curve(0), {Knot(0, 0), Knot(20, 30), Knot(50, 60), Knot(80, -40), Knot(100, 0)});
    s.select(0, {1});
    s.select(1, {2});
    Drag(s.graph(), s.at(0, 1), s.at(0, 1) + IPoint2(-80, 0), 4);
    CHECK(s.pos(0, 1) == P(0, 30));
    CHECK(s.pos(1, 2) == P(40, 20));
}

TEST_CASE_FIXTURE(edtest::EditorFixture,
                  "vertical limits apply only with the y constraint (flag 0x200)") {
    SUBCASE("constrained") {
        Scene s;
        s.ed.control().SetYRange(-100.0f, 100.0f);
        s.select(0, {2});
        // 60 up would put (50, 60) at 120: it stops at 100.
        Drag(s.graph(), s.at(0, 2), s.at(0, 2) + IPoint2(0, -60), 3);
        CHECK(s.pos(0, 2) == P(50, 100));
    }
    SUBCASE("free") {
        Scene s(edtest::kEmbedded & ~DWORD(CC_CONSTRAIN_Y));
        s.ed.control().SetYRange(-100.0f, 100.0f);
        s.select(0, {2});
        Drag(s.graph(), s.at(0, 2), s.at(0, 2) + IPoint2(0, -60), 3);
        CHECK(s.pos(0, 2) == P(50, 120));
    }
}

TEST_CASE_FIXTURE(edtest::EditorFixture, "Move X ignores vertical motion, Move Y horizontal") {
    Scene s;
    s.select(0, {2});
    s.ed.control().SetToolMode(CC_TOOL_MOVE_X);
    REQUIRE(s.ed.control().GetToolMode() == CC_TOOL_MOVE_X);
    Drag(s.graph(), s.at(0, 2), s.at(0, 2) + IPoint2(10, -30), 3);
    CHECK(s.pos(0, 2) == P(55, 60));

    s.ed.control().SetToolMode(CC_TOOL_MOVE_Y);
    Drag(s.graph(), s.at(0, 2), s.at(0, 2) + IPoint2(10, -30), 3);
    CHECK(s.pos(0, 2) == P(55, 90));

    // The fly-off of the move button decides, whatever the control last stored.
    ICustButton* move = s.ed.editor().Toolbars().Button(editor_id::kMove);
    REQUIRE(move != nullptr);
    move->SetCurFlyOff(CC_TOOL_MOVE_X);
    Drag(s.graph(), s.at(0, 2), s.at(0, 2) + IPoint2(-10, 20), 3);
    CHECK(s.pos(0, 2) == P(50, 90));
    move->SetCurFlyOff(CC_TOOL_MOVE_XY);
    Drag(s.graph(), s.at(0, 2), s.at(0, 2) + IPoint2(-10, 20), 3);
    CHECK(s.pos(0, 2) == P(45, 70));
    CHECK(UndoNames() == Names(4, "Move Points"));
}

TEST_CASE_FIXTURE(edtest::EditorFixture,
                  "without the edit toolbar the control's tool mode sets the axes") {
    Scene s(edtest::kEmbedded & ~DWORD(CC_SHOWTOOLBAR));
    s.select(0, {2});
    s.ed.control().SetToolMode(CC_TOOL_MOVE_Y);
    Drag(s.graph(), s.at(0, 2), s.at(0, 2) + IPoint2(10, -30), 3);
    CHECK(s.pos(0, 2) == P(50, 90));
}

TEST_CASE_FIXTURE(edtest::EditorFixture, "escape puts everything back and leaves no undo step") {
    Scene s;
    s.select(0, {1, 2});
    const std::vector<Point2> before = Positions(s.curve(0));
    Press(s.graph(), s.at(0, 2));
    MoveTo(s.graph(), s.at(0, 2) + IPoint2(20, -20));
    REQUIRE(s.pos(0, 2) == P(60, 80));
    Escape(s.graph());
    CHECK_FALSE(s.ed.editor().Mice().IsActive());
    CHECK(Positions(s.curve(0)) == before);
    CHECK(UndoNames().empty());
    CHECK_FALSE(theHold.Holding());
    CHECK_FALSE(s.curve(0).DragMark());
    CHECK_FALSE(s.ed.editor().Graph().Moving());
}

TEST_CASE_FIXTURE(edtest::EditorFixture,
                  "closing the editor during a drag rolls the drag back and closes its hold") {
    Scene s;
    s.select(0, {2});
    Press(s.graph(), s.at(0, 2));
    MoveTo(s.graph(), s.at(0, 2) + IPoint2(20, -20));
    REQUIRE(s.pos(0, 2) == P(60, 80));
    // As a client might from a message handler.
    s.ed.control().SetEditorOpen(FALSE);
    CHECK_FALSE(theHold.Holding());
    CHECK(s.pos(0, 2) == P(50, 60));
    CHECK(UndoNames().empty());
    CHECK_FALSE(s.curve(0).DragMark());
    // The next change is a step of its own again.
    theHold.Begin();
    s.curve(0).SetKnotPosition(0, 1, P(25, 35));
    theHold.Accept("after");
    CHECK(UndoNames() == Names{"after"});
}

TEST_CASE_FIXTURE(edtest::EditorFixture, "a selection click and a drag are two undo steps") {
    Scene s;
    // The press selects the unselected point (a "Select" step) and the drag moves it.
    Drag(s.graph(), s.at(1, 1), s.at(1, 1) + IPoint2(6, 0), 2);
    CHECK(s.pos(1, 1) == P(33, -30));
    CHECK(UndoNames() == Names{"Move Points", "Select"});
    REQUIRE(theHold.Undo());
    CHECK(s.pos(1, 1) == P(30, -30));
    CHECK((s.curve(1).Knots()[1].flags & KNOT_SELECTED) != 0);
    REQUIRE(theHold.Undo());
    CHECK((s.curve(1).Knots()[1].flags & KNOT_SELECTED) == 0);
}

TEST_CASE_FIXTURE(edtest::EditorFixture, "a drag tells the client of every point it moves") {
    Scene s;
    ClientLog log;
    s.ed.control().SetNotifyWindow(log.get());
    s.select(0, {1, 2});
    Drag(s.graph(), s.at(0, 2), s.at(0, 2) + IPoint2(4, 4), 2);
    // Two steps, two points each.
    std::vector<WPARAM> changed;
    for (const ClientLog::Message& m : log.messages()) {
        if (m.msg != CURVE_MSG_POINT_CHANGED)
            continue;
        changed.push_back(m.wParam);
        CHECK(m.lParam == LPARAM(static_cast<ICurve*>(&s.curve(0))));
    }
    CHECK(changed == std::vector<WPARAM>{1, 2, 1, 2});
    CHECK(log.Count(CURVE_MSG_LBUTTONDOWN) == 1);
    CHECK(log.Count(CURVE_MSG_LBUTTONUP) == 1);
    // The button-up message comes after the last change.
    CHECK(log.messages().back().msg == CURVE_MSG_LBUTTONUP);
    s.ed.control().SetNotifyWindow(nullptr);
}

TEST_CASE_FIXTURE(edtest::EditorFixture,
                  "auto-scroll (flag 0x40) keeps the dragged point under the mouse") {
    Scene s;
    s.select(0, {1}); // (20, 30): 30 units (60 pixels) of room to the right
    RECT client{};
    GetClientRect(s.graph(), &client);
    // Scrolled so that x 20 lies about 20 pixels inside the right edge.
    const int hpos = (60 - int(client.right) + 7) / 2;
    s.ed.SetView(2.0f, 1.0f, hpos, 0);
    const IPoint2 p = s.at(0, 1);
    const int x0 = s.ed.View().x0;
    REQUIRE(p.x > client.right - 25);

    // 10 pixels beyond the right edge: the view scrolls by those 10 pixels and the point
    // is drawn under the mouse.
    const IPoint2 beyond(client.right + 10, p.y);
    Drag(s.graph(), p, beyond, 1);
    CHECK(s.ed.View().x0 == x0 + 10);
    CHECK(PointPixel(s.ed, 0, 1).x == beyond.x);
    CHECK(s.pos(0, 1).y == 30.0f);

    // Without the flag the view stays and the point moves by the mouse's offset alone.
    REQUIRE(theHold.Undo());
    s.ed.control().SetControlFlags(edtest::kEmbedded & ~DWORD(CC_AUTOSCROLL));
    s.ed.SetView(2.0f, 1.0f, hpos, 0);
    Drag(s.graph(), p, beyond, 1);
    CHECK(s.ed.View().x0 == x0);
    CHECK(s.pos(0, 1).x == 20.0f + float(beyond.x - p.x) / 2.0f);
}

// ---------------------------------------------------------------------------------------
// Handles

TEST_CASE_FIXTURE(edtest::EditorFixture,
                  "a handle drag adjusts the tangents in one step named Adjust Tangents") {
    Scene s;
    // Point 2 (50, 60): Bezier-Smooth, handles 10 units either side, level.
    s.bezier(0, 2, KNOT_BEZIER, P(-10, 0), P(10, 0));
    const CurveKnot before = s.curve(0).Knots()[2];
    const IPoint2 h = OutHandlePixel(s.ed, 0, 2);

    // The out-handle 10 units up: (60, 70); the in-handle turns to stay opposite.
    Drag(s.graph(), h, h + IPoint2(0, -10), 3);
    const CurveKnot& k = s.curve(0).Knots()[2];
    CHECK(k.pos == P(50, 60));
    CHECK(k.outTan == P(10, 10));
    CHECK(k.inTan.x == doctest::Approx(-10.0f));
    CHECK(k.inTan.y == doctest::Approx(-10.0f));
    CHECK((k.flags & 3) == KNOT_BEZIER);
    CHECK(UndoNames() == Names{"Adjust Tangents"});

    REQUIRE(theHold.Undo());
    CHECK(s.curve(0).Knots()[2].inTan == before.inTan);
    CHECK(s.curve(0).Knots()[2].outTan == before.outTan);
}

TEST_CASE_FIXTURE(edtest::EditorFixture,
                  "Shift during a handle drag breaks the tangent for the rest of the drag") {
    Scene s;
    s.bezier(0, 2, KNOT_BEZIER, P(-10, 0), P(10, 0));
    const IPoint2 h = OutHandlePixel(s.ed, 0, 2);
    Press(s.graph(), h);
    MoveTo(s.graph(), h + IPoint2(0, -6), kShift);
    // Shift is let go: the latch holds, so the in-handle still does not follow.
    MoveTo(s.graph(), h + IPoint2(0, -10));
    Release(s.graph(), h + IPoint2(0, -10));
    const CurveKnot& k = s.curve(0).Knots()[2];
    CHECK((k.flags & 3) == (KNOT_BEZIER | KNOT_CORNER));
    CHECK(k.outTan == P(10, 10));
    CHECK(k.inTan == P(-10, 0));
    CHECK(UndoNames() == Names{"Adjust Tangents"});
    REQUIRE(theHold.Undo());
    CHECK((s.curve(0).Knots()[2].flags & 3) == KNOT_BEZIER);
}

TEST_CASE_FIXTURE(edtest::EditorFixture,
                  "a handle stays between its point and the neighbour; dragging back restores") {
    Scene s;
    s.bezier(0, 2, KNOT_BEZIER | KNOT_CORNER, P(-10, 0), P(10, 0));
    const CurveKnot before = s.curve(0).Knots()[2];
    const IPoint2 h = OutHandlePixel(s.ed, 0, 2);
    Press(s.graph(), h);
    // 30 units right asked; the out-handle at x 60 has 20 to the neighbour at 80.
    MoveTo(s.graph(), h + IPoint2(60, 0));
    CHECK(s.curve(0).Knots()[2].outTan == P(30, 0));
    MoveTo(s.graph(), h);
    Release(s.graph(), h);
    CHECK(s.curve(0).Knots()[2].outTan == before.outTan);
    CHECK(s.curve(0).Knots()[2].inTan == before.inTan);
}

TEST_CASE_FIXTURE(edtest::EditorFixture, "with several handles hit, the last one's limits apply") {
    Scene s;
    // Both curves get a Bezier-Corner point whose out-handle is at (60, 20): curve 0's
    // point (55, 20), its right neighbour at 65 (room 5); curve 1's point (50, 20), its
    // neighbour at 100 (room 40). Curve 1's handle is hit last.
    LoadPoints(s.curve(0), {Knot(0, 0), Knot(55, 20), Knot(65, 50), Knot(100, 0)});
    LoadPoints(s.curve(1), {Knot(0, 10), Knot(50, 20), Knot(100, 10)});
    s.bezier(0, 1, KNOT_BEZIER | KNOT_CORNER, P(-5, 0), P(5, 0));
    s.bezier(1, 1, KNOT_BEZIER | KNOT_CORNER, P(-10, 0), P(10, 0));
    const IPoint2 h = OutHandlePixel(s.ed, 0, 1);
    REQUIRE(OutHandlePixel(s.ed, 1, 1) == h);

    // 15 units to the right: curve 1's handle (the last hit) allows it, so both move 15,
    // curve 0's past its own neighbour.
    Drag(s.graph(), h, h + IPoint2(30, 0), 3);
    CHECK(s.curve(0).Knots()[1].outTan == P(20, 0));
    CHECK(s.curve(1).Knots()[1].outTan == P(25, 0));

    // The other way round: curve 1's handle has 5 units of room, curve 0's 40.
    theHold.Reset();
    LoadPoints(s.curve(0), {Knot(0, 0), Knot(50, 20), Knot(100, 0)});
    LoadPoints(s.curve(1), {Knot(0, 10), Knot(55, 20), Knot(65, 50), Knot(100, 10)});
    s.bezier(0, 1, KNOT_BEZIER | KNOT_CORNER, P(-10, 0), P(10, 0));
    s.bezier(1, 1, KNOT_BEZIER | KNOT_CORNER, P(-5, 0), P(5, 0));
    Drag(s.graph(), h, h + IPoint2(30, 0), 3);
    CHECK(s.curve(0).Knots()[1].outTan == P(15, 0));
    CHECK(s.curve(1).Knots()[1].outTan == P(10, 0));
    CHECK(UndoNames() == Names{"Adjust Tangents"});
}

TEST_CASE_FIXTURE(edtest::EditorFixture, "a handle drag tells the client of the tangents") {
    Scene s;
    ClientLog log;
    s.ed.control().SetNotifyWindow(log.get());
    s.bezier(0, 2, KNOT_BEZIER, P(-10, 0), P(10, 0));
    const IPoint2 h = OutHandlePixel(s.ed, 0, 2);
    Drag(s.graph(), h, h + IPoint2(0, -10), 1);
    // Both handles of the smooth point changed: high word 3, point 2.
    bool seen = false;
    for (const ClientLog::Message& m : log.messages())
        if (m.msg == CURVE_MSG_TANGENT_CHANGED && m.wParam == WPARAM((3 << 16) | 2))
            seen = true;
    CHECK(seen);
    CHECK(log.Count(CURVE_MSG_POINT_CHANGED) == 0);
    s.ed.control().SetNotifyWindow(nullptr);
}
