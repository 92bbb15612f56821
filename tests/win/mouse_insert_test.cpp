// Insert mode on a real editor: clicks on the graph (real mouse messages at pixels of the
// view mapping) insert points into the displayed curves under them, as one undo step
// "Insert Points"; clicks on a point, beside the curves or outside the x range insert
// nothing; hovering shows where a click would insert.
#include "doctest/doctest.h"
#include "editor/editor_resources.h"
#include "host/hold.h"
#include "tests/win/mouse_test_support.h"

#include <cmath>

using namespace graphtest;
using namespace mousetest;

namespace {

constexpr DWORD kFlags = CC_DEFAULT_FLAGS & ~DWORD(CC_ASPOPUP); // embedded, every part

/// An editor whose curve 0 is the straight line (0, 0) - (100, 100), shown with x from 0
/// at column 47 (3 pixels per unit) and y 0 on the middle row (1 pixel per unit).
struct InsertEditor : OpenEditor {
    explicit InsertEditor(int curves = 1, DWORD flags = kFlags) : OpenEditor(curves, flags) {
        for (int c = 0; c < curves; ++c)
            LoadPoints(curve(c), {Knot(0, 0, 0x102), Knot(100, 100, 0x102)});
        SetView(3.0f, 1.0f, -20, 0);
        Repaint();
        theHold.Reset();
    }
    void Mode(int toolMode) {
        control().SetToolMode(toolMode);
        edtest::Pump();
    }
};

/// The curve x of graph column `column`, as the insert mode computes it.
float xAt(OpenEditor& ed, int column) {
    const float xs = ed.editor().Scale().xs;
    return float(ed.View().x0) / xs + float(column) / xs;
}

} // namespace

TEST_CASE("Insert: a click on the curve inserts a corner point there, selected alone") {
    InsertEditor ed;
    ed.Mode(CC_TOOL_INSERT_CORNER);
    REQUIRE(ed.editor().EditMode() == 402);
    REQUIRE(ed.editor().Mice().GetMouseProc(LEFT_BUTTON) == &edtest::ModeSetOf(ed.editor()).insert);
    ClientLog log;
    ed.control().SetNotifyWindow(log.get());

    const IPoint2 p = PixelOf(ed, Point2(40.0f, 40.0f));
    Click(ed.graph(), p);

    Curve& c = ed.curve(0);
    REQUIRE(c.PointCount() == 3);
    const float x = xAt(ed, p.x);
    CHECK(c.Knots()[1].pos.x == doctest::Approx(x).epsilon(1e-5));
    CHECK(c.Knots()[1].pos.y == doctest::Approx(x).epsilon(1e-3)); // on the line y = x
    CHECK((c.Knots()[1].flags & 0x3FF) == (KNOT_SELECTED | KNOT_CORNER));
    CHECK(Selected(c) == std::vector<int>{1});
    CHECK(UndoNames() == std::vector<std::string>{"Insert Points"});
    CHECK(log.Count(CURVE_MSG_POINT_INSERTED) == 1);

    // The press ended the gesture: moving and releasing afterwards adds nothing.
    MoveTo(ed.graph(), IPoint2(p.x + 30, p.y - 30));
    Release(ed.graph(), IPoint2(p.x + 30, p.y - 30));
    CHECK(c.PointCount() == 3);
    CHECK_FALSE(ed.editor().Mice().IsActive());

    theHold.Undo();
    CHECK(c.PointCount() == 2);
    ed.control().SetNotifyWindow(nullptr);
}

TEST_CASE("Insert: the Add Point fly-off chooses Bezier; without a toolbar the tool mode does") {
    SUBCASE("fly-off") {
        InsertEditor ed;
        ed.Mode(CC_TOOL_INSERT_BEZIER);
        REQUIRE(ed.editor().Toolbars().Button(402)->GetCurFlyOff() == 1);
        Click(ed.graph(), PixelOf(ed, Point2(40.0f, 40.0f)));
        REQUIRE(ed.curve(0).PointCount() == 3);
        CHECK((ed.curve(0).Knots()[1].flags & 0x3FF) == (KNOT_SELECTED | KNOT_BEZIER));

        // The fly-off itself, not the mode last set, decides.
        ed.editor().Toolbars().Button(402)->SetCurFlyOff(0);
        Click(ed.graph(), PixelOf(ed, Point2(80.0f, 80.0f)));
        REQUIRE(ed.curve(0).PointCount() == 4);
        CHECK((ed.curve(0).Knots()[2].flags & 0x3FF) == (KNOT_SELECTED | KNOT_CORNER));
    }
    SUBCASE("no edit toolbar") {
        InsertEditor ed(1, kFlags & ~DWORD(CC_SHOWTOOLBAR));
        REQUIRE_FALSE(ed.editor().HasTopToolbar());
        ed.Mode(CC_TOOL_INSERT_BEZIER);
        CHECK(ed.control().GetToolMode() == CC_TOOL_INSERT_BEZIER);
        Click(ed.graph(), PixelOf(ed, Point2(40.0f, 40.0f)));
        REQUIRE(ed.curve(0).PointCount() == 3);
        CHECK((ed.curve(0).Knots()[1].flags & 0x3FF) == (KNOT_SELECTED | KNOT_BEZIER));

        ed.Mode(CC_TOOL_INSERT_CORNER);
        CHECK(ed.control().GetToolMode() == CC_TOOL_INSERT_CORNER);
        Click(ed.graph(), PixelOf(ed, Point2(80.0f, 80.0f)));
        REQUIRE(ed.curve(0).PointCount() == 4);
        CHECK((ed.curve(0).Knots()[2].flags & 0x3FF) == (KNOT_SELECTED | KNOT_CORNER));
    }
}

TEST_CASE("Insert: a Bezier insertion keeps the curve's shape") {
    InsertEditor ed;
    Curve& c = ed.curve(0);
    LoadPoints(c, {Knot(0, 0, 0x103, Point2(), Point2(30.0f, 90.0f)),
                   Knot(100, 100, 0x103, Point2(-30.0f, -90.0f), Point2())});
    ed.Repaint();
    ed.Mode(CC_TOOL_INSERT_BEZIER);
    Interval valid = FOREVER;
    std::vector<float> before;
    for (int k = 0; k <= 20; ++k)
        before.push_back(c.ValueAt(0, 5.0f * k, valid, FALSE));

    // Click on the drawn curve where it crosses x = 30.
    const float y30 = c.ValueAt(0, 30.0f, valid, FALSE);
    Click(ed.graph(), PixelOf(ed, Point2(30.0f, y30)));
    REQUIRE(c.PointCount() == 3);
    for (int k = 0; k <= 20; ++k) {
        CAPTURE(k);
        CHECK(c.ValueAt(0, 5.0f * k, valid, FALSE) == doctest::Approx(before[k]).epsilon(1e-3));
    }
}

TEST_CASE("Insert: a click exactly on a point inserts nothing") {
    InsertEditor ed;
    Curve& c = ed.curve(0);
    LoadPoints(c, {Knot(0, 0, 0x102), Knot(50, 50), Knot(100, 100, 0x102)});
    ed.Repaint();
    ed.Mode(CC_TOOL_INSERT_CORNER);
    const std::vector<Point2> before = Positions(c);

    Click(ed.graph(), PointPixel(ed, 0, 1));
    // Within the click box of the point, 3 pixels along the line.
    Click(ed.graph(), IPoint2(PointPixel(ed, 0, 1).x + 3, PointPixel(ed, 0, 1).y - 1));
    Click(ed.graph(), PointPixel(ed, 0, 2)); // an end point

    CHECK(Positions(c) == before);
    CHECK(UndoNames().empty());
}

TEST_CASE("Insert: clicks beside the curve or outside the x range insert nothing") {
    InsertEditor ed;
    Curve& c = ed.curve(0);
    // The line runs on beyond the x range 20 .. 80 of the control.
    ed.control().SetXRange(20.0f, 80.0f, FALSE);
    LoadPoints(c, {Knot(0, 0, 0x102), Knot(100, 100, 0x102)});
    ed.SetView(3.0f, 1.0f, -20, 0);
    ed.Repaint();
    ed.Mode(CC_TOOL_INSERT_CORNER);

    // Beside the curve: 20 pixels below the line.
    const IPoint2 on = PixelOf(ed, Point2(50.0f, 50.0f));
    Click(ed.graph(), IPoint2(on.x, on.y + 20));
    CHECK(c.PointCount() == 2);

    // On the curve, left and right of the x range.
    Click(ed.graph(), PixelOf(ed, Point2(10.0f, 10.0f)));
    Click(ed.graph(), PixelOf(ed, Point2(90.0f, 90.0f)));
    CHECK(c.PointCount() == 2);
    CHECK(UndoNames().empty());

    // Inside the range the same curve takes a point.
    Click(ed.graph(), PixelOf(ed, Point2(50.0f, 50.0f)));
    CHECK(c.PointCount() == 3);
    CHECK(UndoNames() == std::vector<std::string>{"Insert Points"});
}

TEST_CASE("Insert: every displayed curve under the click takes a point, in one undo step") {
    InsertEditor ed(3);
    // Curves 0 and 1 cross at (50, 50); curve 2 runs the same way but is hidden.
    LoadPoints(ed.curve(1), {Knot(0, 100, 0x102), Knot(100, 0, 0x102)});
    LoadPoints(ed.curve(2), {Knot(0, 100, 0x102), Knot(100, 0, 0x102)});
    BitArray shown(3);
    shown.Set(0);
    shown.Set(1);
    ed.control().SetShownCurves(shown);
    ed.Repaint();
    theHold.Reset();
    ed.Mode(CC_TOOL_INSERT_CORNER);

    Click(ed.graph(), PixelOf(ed, Point2(50.0f, 50.0f)));
    CHECK(ed.curve(0).PointCount() == 3);
    CHECK(ed.curve(1).PointCount() == 3);
    CHECK(ed.curve(2).PointCount() == 2);
    CHECK(ed.curve(0).Knots()[1].pos.x == ed.curve(1).Knots()[1].pos.x);
    CHECK(UndoNames() == std::vector<std::string>{"Insert Points"});

    theHold.Undo();
    CHECK(ed.curve(0).PointCount() == 2);
    CHECK(ed.curve(1).PointCount() == 2);
    theHold.Redo();
    CHECK(ed.curve(0).PointCount() == 3);
    CHECK(ed.curve(1).PointCount() == 3);
}

TEST_CASE("Insert: hovering shows the point cursor over the curve, the arrow elsewhere") {
    InsertEditor ed;
    Curve& c = ed.curve(0);
    LoadPoints(c, {Knot(0, 0, 0x102), Knot(50, 50), Knot(100, 100, 0x102)});
    ed.Repaint();
    ed.Mode(CC_TOOL_INSERT_CORNER);
    HCURSOR arrow = LoadCursorA(nullptr, IDC_ARROW);
    HCURSOR point = LoadEditorResources().pointCursor;

    SetCursor(nullptr);
    Hover(ed.graph(), PixelOf(ed, Point2(25.0f, 25.0f)));
    CHECK(GetCursor() == point);
    Hover(ed.graph(), PointPixel(ed, 0, 1)); // over a point: a click would insert nothing
    CHECK(GetCursor() == arrow);
    Hover(ed.graph(), PixelOf(ed, Point2(75.0f, 75.0f)));
    CHECK(GetCursor() == point);
    const IPoint2 off = PixelOf(ed, Point2(75.0f, 30.0f));
    Hover(ed.graph(), off);
    CHECK(GetCursor() == arrow);
    CHECK(c.PointCount() == 3); // hovering changes nothing
}
