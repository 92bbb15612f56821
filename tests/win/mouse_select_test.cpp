// Selection in the graph through real mouse messages: clicks, Ctrl and the subtract
// modifier (Alt), region boxes, the 2-pixel drag threshold, the handle hits a press keeps
// for the move mode, the hover cursor, and one "Select" undo step per change.
//
// View: xs 2, ys 1, X0 -61, Y0 0: curve x at column 2x + 61, y at row (Hm + 1) / 2 + 4 - y,
// so one pixel is half an x unit and one y unit.
#include "curvectl/messages.h"
#include "doctest/doctest.h"
#include "editor/editor_resources.h"
#include "host/hold.h"
#include "tests/win/mouse_test_support.h"

using namespace graphtest;
using namespace mousetest;

namespace {

/// Two curves in the move mode: curve 0 with five corner points, curve 1 with four, no
/// selection.
struct Scene {
    OpenEditor ed{2, edtest::kEmbedded};
    Scene() {
        LoadPoints(ed.curve(0),
                   {Knot(0, 0), Knot(20, 30), Knot(50, 60), Knot(80, -40), Knot(100, 0)});
        LoadPoints(ed.curve(1), {Knot(0, 10), Knot(30, -30), Knot(60, 20), Knot(100, 10)});
        ed.SetView(2.0f, 1.0f, -27, 0);
        ed.editor().SetEditMode(editor_id::kMove);
        ed.Repaint();
    }
    HWND graph() { return ed.graph(); }
    IPoint2 at(int c, int i) { return PointPixel(ed, c, i); }
    IPoint2 at(float x, float y) { return PixelOf(ed, Point2(x, y)); }
    void select(int c, std::initializer_list<int> points) {
        for (int i : points)
            ed.curve(c).Knots()[i].flags |= KNOT_SELECTED;
    }
};

using Sel = std::vector<int>;
using Names = std::vector<std::string>;

} // namespace

TEST_CASE_FIXTURE(edtest::EditorFixture, "a move of 2 pixels or less is a click, more is a drag") {
    Scene s;
    s.select(0, {2});
    const std::vector<Point2> before = Positions(s.ed.curve(0));
    const IPoint2 p = s.at(0, 2);

    // (2, 0) and then (0, 2): squared distance 4, still a click.
    Press(s.graph(), p);
    MoveTo(s.graph(), p + IPoint2(2, 0));
    MoveTo(s.graph(), p + IPoint2(0, 2));
    Release(s.graph(), p + IPoint2(0, 2));
    CHECK(Positions(s.ed.curve(0)) == before);
    CHECK(UndoNames().empty());
    CHECK(Selected(s.ed.curve(0)) == Sel{2});

    // (2, 1): squared distance 5, a drag that moves the point 1 unit right and 1 down.
    Drag(s.graph(), p, p + IPoint2(2, 1), 1);
    CHECK(s.ed.curve(0).CachedPosition(0, 2) == Point2(51.0f, 59.0f));
    CHECK(UndoNames() == Names{"Move Points"});
}

TEST_CASE_FIXTURE(edtest::EditorFixture, "a click on an unselected point selects it alone") {
    Scene s;
    s.select(0, {1, 3});
    s.select(1, {2});
    Click(s.graph(), s.at(1, 1));
    CHECK(Selected(s.ed.curve(0)).empty());
    CHECK(Selected(s.ed.curve(1)) == Sel{1});
    CHECK(s.ed.editor().Graph().CurrentCurve() == 1);
    CHECK(UndoNames() == Names{"Select"});

    REQUIRE(theHold.Undo());
    CHECK(Selected(s.ed.curve(0)) == Sel{1, 3});
    CHECK(Selected(s.ed.curve(1)) == Sel{2});
}

TEST_CASE_FIXTURE(edtest::EditorFixture,
                  "a click on empty space clears the selection; with Ctrl it does not") {
    Scene s;
    s.select(0, {1, 2});
    s.select(1, {1});
    const IPoint2 empty = s.at(40.0f, -70.0f);

    Click(s.graph(), empty, kCtrl);
    CHECK(Selected(s.ed.curve(0)) == Sel{1, 2});
    CHECK(Selected(s.ed.curve(1)) == Sel{1});
    CHECK(UndoNames().empty());
    CHECK(s.ed.editor().Graph().CurrentCurve() == -1);

    Click(s.graph(), empty);
    CHECK(Selected(s.ed.curve(0)).empty());
    CHECK(Selected(s.ed.curve(1)).empty());
    CHECK(UndoNames() == Names{"Select"});
    REQUIRE(theHold.Undo());
    CHECK(Selected(s.ed.curve(0)) == Sel{1, 2});
    CHECK(Selected(s.ed.curve(1)) == Sel{1});

    // Nothing selected: the click changes nothing and leaves no empty step.
    s.ed.curve(0).SetSelectionEx(BitArray(5), 4, FALSE);
    s.ed.curve(1).SetSelectionEx(BitArray(4), 4, FALSE);
    theHold.Reset();
    Click(s.graph(), empty);
    CHECK(UndoNames().empty());
}

TEST_CASE_FIXTURE(edtest::EditorFixture,
                  "Ctrl-click adds an unselected point and removes a selected one") {
    Scene s;
    s.select(0, {1});
    Click(s.graph(), s.at(1, 2), kCtrl);
    CHECK(Selected(s.ed.curve(0)) == Sel{1});
    CHECK(Selected(s.ed.curve(1)) == Sel{2});
    Click(s.graph(), s.at(0, 1), kCtrl);
    CHECK(Selected(s.ed.curve(0)).empty());
    CHECK(Selected(s.ed.curve(1)) == Sel{2});
    CHECK(UndoNames() == Names{"Select", "Select"});

    REQUIRE(theHold.Undo());
    CHECK(Selected(s.ed.curve(0)) == Sel{1});
    REQUIRE(theHold.Undo());
    CHECK(Selected(s.ed.curve(1)).empty());
}

TEST_CASE_FIXTURE(edtest::EditorFixture,
                  "the subtract modifier removes a selected point and ignores an unselected one") {
    Scene s;
    s.select(0, {1, 2});
    Click(s.graph(), s.at(0, 2), kAlt);
    CHECK(Selected(s.ed.curve(0)) == Sel{1});
    CHECK(UndoNames() == Names{"Select"});

    // On an unselected point the press starts a region; released at once it clears nothing.
    Click(s.graph(), s.at(0, 3), kAlt);
    CHECK(Selected(s.ed.curve(0)) == Sel{1});
    CHECK(UndoNames() == Names{"Select"});
}

TEST_CASE_FIXTURE(edtest::EditorFixture,
                  "a click on a selected point keeps the selection: the release looks only for "
                  "unselected points") {
    Scene s;
    s.select(0, {1, 2, 3});
    Click(s.graph(), s.at(0, 2));
    CHECK(Selected(s.ed.curve(0)) == Sel{1, 2, 3});
    CHECK(UndoNames().empty());

    // An unselected point under the same pixel is picked alone at the release.
    LoadPoints(s.ed.curve(1), {Knot(0, 10), Knot(50, 60), Knot(100, 10)});
    Click(s.graph(), s.at(0, 2));
    CHECK(Selected(s.ed.curve(0)).empty());
    CHECK(Selected(s.ed.curve(1)) == Sel{1});
    CHECK(UndoNames() == Names{"Select"});
}

TEST_CASE_FIXTURE(edtest::EditorFixture, "a region drag selects the points inside it alone") {
    Scene s;
    s.select(0, {4});
    s.select(1, {2});
    // From above-left of (20, 30) to below-right of (50, 60): the box holds curve 0's
    // points 1 and 2 and nothing of curve 1.
    Drag(s.graph(), s.at(15.0f, 70.0f), s.at(55.0f, 25.0f), 3);
    CHECK(Selected(s.ed.curve(0)) == Sel{1, 2});
    CHECK(Selected(s.ed.curve(1)).empty());
    CHECK(UndoNames() == Names{"Select"});
    REQUIRE(theHold.Undo());
    CHECK(Selected(s.ed.curve(0)) == Sel{4});
    CHECK(Selected(s.ed.curve(1)) == Sel{2});

    // Dragged the other way round, and widened by 4 pixels: a point 3 pixels outside the
    // box's edge is inside.
    s.ed.curve(0).SetSelectionEx(BitArray(5), 4, FALSE);
    s.ed.curve(1).SetSelectionEx(BitArray(4), 4, FALSE);
    const IPoint2 p = s.at(1, 1); // (30, -30)
    Drag(s.graph(), p + IPoint2(20, 20), p + IPoint2(3, 3), 2);
    CHECK(Selected(s.ed.curve(1)) == Sel{1});
    CHECK(Selected(s.ed.curve(0)).empty());
}

TEST_CASE_FIXTURE(edtest::EditorFixture, "a region drag with Ctrl adds to the selection") {
    Scene s;
    s.select(0, {1, 4});
    Drag(s.graph(), s.at(15.0f, 70.0f), s.at(55.0f, 25.0f), 3, kCtrl);
    CHECK(Selected(s.ed.curve(0)) == Sel{1, 2, 4});
    CHECK(UndoNames() == Names{"Select"});
    REQUIRE(theHold.Undo());
    CHECK(Selected(s.ed.curve(0)) == Sel{1, 4});
}

TEST_CASE_FIXTURE(edtest::EditorFixture,
                  "a region drag with the subtract modifier removes only selected points") {
    Scene s;
    s.select(0, {1, 3, 4});
    s.select(1, {1});
    // The box holds curve 0's points 1 (selected) and 2 (not) and curve 1's point 1.
    Drag(s.graph(), s.at(15.0f, 70.0f), s.at(55.0f, -35.0f), 3, kAlt);
    CHECK(Selected(s.ed.curve(0)) == Sel{3, 4});
    CHECK(Selected(s.ed.curve(1)).empty());
    CHECK(UndoNames() == Names{"Select"});
}

TEST_CASE_FIXTURE(edtest::EditorFixture, "escape during a region drag changes nothing") {
    Scene s;
    s.select(0, {4});
    Press(s.graph(), s.at(15.0f, 70.0f));
    MoveTo(s.graph(), s.at(55.0f, 25.0f));
    Escape(s.graph());
    CHECK_FALSE(s.ed.editor().Mice().IsActive());
    Release(s.graph(), s.at(55.0f, 25.0f));
    CHECK(Selected(s.ed.curve(0)) == Sel{4});
    CHECK(UndoNames().empty());
}

TEST_CASE_FIXTURE(edtest::EditorFixture,
                  "a press on a handle keeps its hits for the drag and leaves the selection") {
    Scene s;
    // Curve 0, point 2: a selected Bezier point with handles 10 units either side.
    CurveKnot& k = s.ed.curve(0).Knots()[2];
    k.flags = KNOT_BEZIER | KNOT_SELECTED;
    k.inTan = Point2(-10.0f, 0.0f);
    k.outTan = Point2(10.0f, 0.0f);
    s.ed.curve(0).InvalidateCache();
    s.select(1, {2});

    Press(s.graph(), OutHandlePixel(s.ed, 0, 2));
    CurveWindow& g = s.ed.editor().Graph();
    CHECK(g.HandleCurves() == std::vector<int>{0});
    REQUIRE(g.HandleHits().size() == 1);
    CHECK(g.HandleHits()[0].index == 2);
    CHECK(g.HandleHits()[0].part == KNOT_PART_OUT_HANDLE);
    Release(s.graph(), OutHandlePixel(s.ed, 0, 2));
    CHECK(Selected(s.ed.curve(0)) == Sel{2});
    CHECK(Selected(s.ed.curve(1)) == Sel{2});
    CHECK(UndoNames().empty());

    // The next press on a point empties the lists.
    Click(s.graph(), s.at(0, 1));
    CHECK(g.HandleCurves().empty());
    CHECK(g.HandleHits().empty());
}

TEST_CASE_FIXTURE(edtest::EditorFixture,
                  "hovering over a point or a handle of a selected Bezier point shows the point "
                  "cursor") {
    Scene s;
    CurveKnot& k = s.ed.curve(0).Knots()[2];
    k.flags = KNOT_BEZIER | KNOT_SELECTED;
    k.inTan = Point2(-10.0f, 0.0f);
    k.outTan = Point2(10.0f, 0.0f);
    s.ed.curve(0).InvalidateCache();
    const HCURSOR point = LoadEditorResources().pointCursor;
    const HCURSOR arrow = LoadCursorA(nullptr, IDC_ARROW);
    REQUIRE(point != nullptr);

    Hover(s.graph(), InHandlePixel(s.ed, 0, 2) + IPoint2(3, -3));
    CHECK(GetCursor() == point);
    Hover(s.graph(), s.at(40.0f, -70.0f));
    CHECK(GetCursor() == arrow);
    Hover(s.graph(), s.at(1, 1)); // an unselected point
    CHECK(GetCursor() == point);
    Hover(s.graph(), OutHandlePixel(s.ed, 0, 2) + IPoint2(-4, 4));
    CHECK(GetCursor() == point);

    // The handles of an unselected Bezier point are not there to hover.
    s.ed.curve(0).Knots()[2].flags = KNOT_BEZIER;
    Hover(s.graph(), OutHandlePixel(s.ed, 0, 2));
    CHECK(GetCursor() == arrow);
}

TEST_CASE_FIXTURE(edtest::EditorFixture, "selection changes reach the client") {
    Scene s;
    ClientLog log;
    s.ed.control().SetNotifyWindow(log.get());
    s.select(0, {1, 2});
    Click(s.graph(), s.at(1, 2));
    // Curve 0 is cleared (0 selected) and curve 1 gets one point; curve 1 had nothing and
    // hears only of the addition.
    std::vector<std::pair<WPARAM, LPARAM>> selections;
    for (const ClientLog::Message& m : log.messages())
        if (m.msg == CURVE_MSG_SELECTION)
            selections.emplace_back(m.wParam, m.lParam);
    REQUIRE(selections.size() == 2);
    CHECK(selections[0].first == 0);
    CHECK(selections[0].second == LPARAM(static_cast<ICurve*>(&s.ed.curve(0))));
    CHECK(selections[1].first == 1);
    CHECK(selections[1].second == LPARAM(static_cast<ICurve*>(&s.ed.curve(1))));
    CHECK(log.Count(CURVE_MSG_LBUTTONDOWN) == 1);
    CHECK(log.Count(CURVE_MSG_LBUTTONUP) == 1);
    s.ed.control().SetNotifyWindow(nullptr);
}
