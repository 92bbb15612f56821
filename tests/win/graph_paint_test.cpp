// The graph's picture, read back from its off-screen buffer after a real paint of an open
// editor: curve markers, handles and centres where the mapping puts them, hidden curves
// beneath shown ones, the grid, the limit lines, the marker line and the background.
// (The curve drawing against the plain GDI calls: curve_draw_pixels_test.cpp.)
//
// The view of most tests: xs 2, ys 1, hpos -27 (X0 = -61), vpos 0 (Y0 = 0), so curve x
// lies at column 2x + 61 and y at row (Hm + 1) / 2 + 4 - y.
#include "doctest/doctest.h"
#include "editor/graph_paint.h"
#include "host/colorman.h"
#include "host/gdi_tracking.h"
#include "host/offscreen.h"
#include "tests/win/graph_test_support.h"

#include <cstdlib>
#include <vector>

using namespace graphtest;

namespace {

constexpr DWORD kFlags = CC_DRAWBG | CC_DRAWRULER | CC_SHOWSCROLLBARS;
constexpr COLORREF kBlack = RGB(0, 0, 0);
constexpr COLORREF kWhite = RGB(255, 255, 255);
constexpr COLORREF kRed = RGB(255, 0, 0);
constexpr COLORREF kBlue = RGB(0, 0, 255);
constexpr COLORREF kGreen = RGB(0, 160, 0);

bool isBlackSquare(OpenEditor& ed, int cx, int cy, int lo, int hi) {
    for (int y = cy + lo; y < cy + hi; ++y)
        for (int x = cx + lo; x < cx + hi; ++x)
            if (ed.Pixel(x, y) != kBlack)
                return false;
    return true;
}

/// Whether any pixel of the 3 x 3 block around (x, y) has `colour`.
bool hasColourNear(OpenEditor& ed, int x, int y, COLORREF colour) {
    for (int dy = -1; dy <= 1; ++dy)
        for (int dx = -1; dx <= 1; ++dx)
            if (ed.Pixel(x + dx, y + dy) == colour)
                return true;
    return false;
}

} // namespace

TEST_CASE_FIXTURE(edtest::EditorFixture, "markers, centres and handles at the mapped pixels") {
    OpenEditor ed(1, kFlags);
    Curve& c = ed.curve(0);
    c.SetPen(kRed, 1, PS_SOLID);
    const uint32_t sel = KNOT_SELECTED, bez = KNOT_BEZIER;
    LoadPoints(
        c, {
               Knot(0, 20, bez | sel | KNOT_ENDPOINT, Point2(-5.0f, 0.0f), Point2(5.0f, 0.0f)),
               Knot(50, 60, bez | sel, Point2(-10.0f, 0.0f), Point2(10.0f, 0.0f)),
               Knot(70, 10, bez, Point2(-5.0f, 0.0f), Point2(5.0f, 0.0f)),
               Knot(85, -20, KNOT_CORNER | sel, Point2(-5.0f, 0.0f), Point2(5.0f, 0.0f)),
               Knot(100, -30, bez | sel | KNOT_ENDPOINT, Point2(-5.0f, 0.0f), Point2(5.0f, 0.0f)),
           });
    ed.SetView(2.0f, 1.0f, -27, 0);
    ed.Repaint();
    const view::ViewMapping m = ed.View();
    REQUIRE(m.x0 == -61);
    REQUIRE(m.y0 == 0);

    SUBCASE("a selected Bezier point: black rim, white centre, both handles with lines") {
        const int x = m.Column(50), y = m.Row(60);
        CHECK(x == 161);
        // The marker Rectangle(x-3, y-3, x+4, y+4) with the null pen fills x-3 .. x+2.
        for (const auto& [dx, dy] : {std::pair{-3, -3}, {2, -3}, {-3, 2}, {2, 2}})
            CHECK(ed.Pixel(x + dx, y + dy) == kBlack);
        CHECK(ed.Pixel(x - 4, y - 3) != kBlack); // the marker ends at x - 3 and x + 2
        CHECK(ed.Pixel(x + 3, y - 3) != kBlack);
        CHECK(ed.Pixel(x, y - 4) != kBlack);
        CHECK(ed.Pixel(x, y + 3) != kBlack);
        for (const auto& [dx, dy] : {std::pair{-2, -2}, {1, -2}, {-2, 1}, {1, 1}, {0, 0}})
            CHECK(ed.Pixel(x + dx, y + dy) == kWhite);
        // Handles: 4 x 4 black squares at (x -+ 20, y), lines to the point in black.
        CHECK(isBlackSquare(ed, m.Column(40), y, -2, 2));
        CHECK(isBlackSquare(ed, m.Column(60), y, -2, 2));
        for (int hx = m.Column(40) + 2; hx < x - 3; ++hx)
            CHECK(ed.Pixel(hx, y) == kBlack);
        for (int hx = x + 3; hx < m.Column(60) - 2; ++hx)
            CHECK(ed.Pixel(hx, y) == kBlack);
    }

    SUBCASE("an unselected Bezier point: plain marker, no handles") {
        const int x = m.Column(70), y = m.Row(10);
        CHECK(isBlackSquare(ed, x, y, -3, 3));
        CHECK_FALSE(hasColourNear(ed, m.Column(65), y, kBlack));
        CHECK_FALSE(hasColourNear(ed, m.Column(75), y, kBlack));
    }

    SUBCASE("a selected corner: white centre, no handles") {
        const int x = m.Column(85), y = m.Row(-20);
        CHECK(ed.Pixel(x - 3, y - 3) == kBlack);
        CHECK(ed.Pixel(x + 2, y + 2) == kBlack);
        CHECK(ed.Pixel(x, y) == kWhite);
        CHECK(ed.Pixel(x - 2, y - 2) == kWhite);
        CHECK_FALSE(hasColourNear(ed, m.Column(80), y, kBlack));
        CHECK_FALSE(hasColourNear(ed, m.Column(90), y, kBlack));
    }

    SUBCASE("end points: only their inner handles") {
        const int y0 = m.Row(20), y4 = m.Row(-30);
        CHECK(ed.Pixel(m.Column(0), y0) == kWhite); // selected: white centre
        CHECK(isBlackSquare(ed, m.Column(5), y0, -2, 2));
        CHECK_FALSE(hasColourNear(ed, m.Column(-5), y0, kBlack));
        CHECK(isBlackSquare(ed, m.Column(95), y4, -2, 2));
        CHECK_FALSE(hasColourNear(ed, m.Column(105), y4, kBlack));
    }

    SUBCASE("the curve in its pen between the points") {
        // Segment 0 at u = 0.5: x 21.25 (a piece end), y 30 + .. worked from the points.
        const Point2 p = c.SegmentPoint(0, 0, 0.5f);
        CHECK(hasColourNear(ed, m.Column(p.x), m.Row(p.y), kRed));
    }
}

TEST_CASE_FIXTURE(edtest::EditorFixture, "hidden curves lie beneath shown ones, or not at all") {
    OpenEditor ed(3, kFlags);
    // Curve 0: flat red at y = 20. Curve 1: hidden, blue disabled pen, a straight line from
    // (0, -20) to (100, 60) crossing curve 0 at x = 50. Curve 2: shown, green, straight
    // from (0, 60) to (100, -20), crossing both at x = 50.
    ed.curve(0).SetPen(kRed, 1, PS_SOLID);
    LoadPoints(ed.curve(0), {Knot(0, 20), Knot(100, 20)});
    ed.curve(1).SetDisabledPen(kBlue, 1, PS_SOLID);
    LoadPoints(ed.curve(1), {Knot(0, -20, KNOT_CORNER | KNOT_SELECTED), Knot(100, 60)});
    ed.curve(2).SetPen(kGreen, 1, PS_SOLID);
    LoadPoints(ed.curve(2), {Knot(0, 60), Knot(100, -20)});
    BitArray shown(3);
    shown.Set(0);
    shown.Set(2);
    ed.control().SetShownCurves(shown);
    ed.SetView(2.0f, 1.0f, -27, 0);
    ed.Repaint();
    const view::ViewMapping m = ed.View();

    // Curve 1 away from the others: x 75 lies on its line at y 40.
    CHECK(hasColourNear(ed, m.Column(75), m.Row(40), kBlue));
    // Its points: squares in the disabled colour, no selection centre.
    CHECK(ed.Pixel(m.Column(0), m.Row(-20)) == kBlue);
    CHECK(ed.Pixel(m.Column(0) - 3, m.Row(-20) - 3) == kBlue);
    // At the crossing of all three the shown curves lie on top, and curve 0 over curve 2.
    CHECK(ed.Pixel(m.Column(50), m.Row(20)) == kRed);
    CHECK(hasColourNear(ed, m.Column(75), m.Row(0), kGreen)); // curve 2 alone

    ed.control().SetControlFlags(kFlags | CC_HIDE_DISABLED_CURVES);
    ed.Repaint();
    CHECK_FALSE(hasColourNear(ed, m.Column(75), m.Row(40), kBlue));
    CHECK(ed.Pixel(m.Column(0), m.Row(-20)) != kBlue);
    CHECK(ed.Pixel(m.Column(50), m.Row(20)) == kRed);
}

TEST_CASE_FIXTURE(edtest::EditorFixture, "grid, limit lines, marker line and background") {
    OpenEditor ed(1, kFlags | CC_SHOW_CURRENTXVAL);
    LoadPoints(ed.curve(0), {Knot(0, 0), Knot(100, 0)});
    ed.control().SetMarkerX(30.0f);
    // ys 0.5: major step 100 (50 pixels), minor 10 (divisor 10: 5 pixels; 20 gives 2.5).
    ed.SetView(2.0f, 0.5f, -27, 0);
    ed.Repaint();
    const view::ViewMapping m = ed.View();
    const COLORREF shade = ColorMan()->GetColor(kColorViewShade);
    const COLORREF line = ColorMan()->GetColor(kColorViewLine);
    const COLORREF light = ColorMan()->GetColor(kColorLightGrey);
    const COLORREF dark = ColorMan()->GetColor(kColorDarkGrey);
    const int x = m.Column(45); // inside the x range, clear of the marker line
    const int zero = m.Row(0);

    CHECK(ed.editor().Cache().gridStep == 10.0f);
    CHECK(ed.Pixel(x, m.Row(100)) == line);
    CHECK(ed.Pixel(x, m.Row(-100)) == line);
    CHECK(ed.Pixel(x, m.Row(10)) == shade);
    CHECK(ed.Pixel(x, m.Row(-30)) == shade);
    CHECK(ed.Pixel(x, m.Row(14)) == light); // between minor lines
    // The zero line: three rows in colour 16 under the curve (black, at row `zero`).
    CHECK(ed.Pixel(x, zero - 1) == line);
    CHECK(ed.Pixel(x, zero + 1) == line);
    // The marker line at x 30 in colour 15, from top to bottom.
    CHECK(ed.Pixel(m.Column(30), m.Row(14)) == shade);
    CHECK(ed.Pixel(m.Column(30), m.Row(-14)) == shade);
    // Outside the x range the background is dark grey.
    CHECK(ed.Pixel(m.Column(-3), m.Row(14)) == dark);
    CHECK(ed.Pixel(m.Column(103), m.Row(14)) == dark);
    // The dotted limit lines in RGB(0, 100, 100) at the columns of 0 and 100.
    int dots0 = 0, dots100 = 0;
    for (int y = m.Row(40); y < m.Row(20); ++y) {
        dots0 += ed.Pixel(m.Column(0), y) == RGB(0, 100, 100);
        dots100 += ed.Pixel(m.Column(100), y) == RGB(0, 100, 100);
    }
    CHECK(dots0 > 0);
    CHECK(dots100 > 0);
    CHECK(dots0 < m.Row(20) - m.Row(40)); // dotted, not solid

    // Without flag 2: no grid, no labels, and the grid step is 0.
    ed.control().SetControlFlags(CC_DRAWBG | CC_SHOWSCROLLBARS);
    ed.Repaint();
    CHECK(ed.editor().Cache().gridStep == 0.0f);
    const view::ViewMapping plain = ed.View();
    CHECK(ed.Pixel(plain.Column(45), plain.Row(100)) == light);
}

TEST_CASE_FIXTURE(edtest::EditorFixture, "the grid step field holds the major step without "
                                         "minor lines") {
    // Far from zero, where floats are 4 apart, no minor step is 4 pixels on screen. The
    // paint keeps whatever ComputeValueGrid decides for its rectangle; checked against
    // the pure function here and by hand in the view arithmetic tests.
    OpenEditor ed(1, kFlags);
    ed.SetView(2.0f, 20.0f, -27, 0);
    ed.Repaint();
    CHECK(ed.editor().Cache().gridStep == doctest::Approx(0.2f)); // divisor 5

    RECT client{};
    GetClientRect(ed.graph(), &client);
    const view::ViewMapping m = ed.View();
    const int h = m.Height();
    // vb near 2^25 + 4k: vpos so that Y0 is about -20 * 2^25.
    const int vpos = int(-671088762LL * 100 / h);
    ed.SetView(2.0f, 20.0f, -27, vpos);
    ed.Repaint();
    const view::ValueGrid g = view::ComputeValueGrid(ed.View(), client.top, client.bottom);
    CHECK(float(g.GridStep()) == ed.editor().Cache().gridStep);
    if (g.minor == 0.0)
        CHECK(ed.editor().Cache().gridStep == 1.0f);
}

TEST_CASE_FIXTURE(edtest::EditorFixture, "painting frees what it creates and leaves the context "
                                         "as it found it") {
    OpenEditor ed(2, kFlags | CC_SHOW_CURRENTXVAL);
    LoadPoints(ed.curve(0),
               {Knot(0, 0),
                Knot(50, 20, KNOT_BEZIER | KNOT_SELECTED, Point2(-5.0f, 0.0f), Point2(5.0f, 0.0f)),
                Knot(100, 0)});
    LoadPoints(ed.curve(1), {Knot(0, 10), Knot(100, -10)});
    BitArray shown(2);
    shown.Set(0);
    ed.control().SetShownCurves(shown);
    ed.SetView(2.0f, 1.0f, -27, 0);
    ed.Repaint();
    const int pens = LiveGdiCount(GdiKind::Pen);
    const int total = LiveGdiTotal();
    for (int i = 0; i < 5; ++i)
        ed.Repaint();
    InvalidateRect(ed.strip(), nullptr, FALSE);
    ed.editor().Cache().rulerValid = 0;
    UpdateWindow(ed.strip());
    CHECK(LiveGdiCount(GdiKind::Pen) == pens);
    CHECK(LiveGdiTotal() == total);

    Canvas canvas;
    const HGDIOBJ pen = GetCurrentObject(canvas.dc(), OBJ_PEN);
    const HGDIOBJ brush = GetCurrentObject(canvas.dc(), OBJ_BRUSH);
    const HGDIOBJ font = GetCurrentObject(canvas.dc(), OBJ_FONT);
    const int mode = GetBkMode(canvas.dc());
    const COLORREF text = GetTextColor(canvas.dc());
    RECT client{};
    GetClientRect(ed.graph(), &client);
    DrawGraph(ed.editor(), canvas.dc(), client, 0);
    DrawRuler(ed.editor(), ed.strip(), canvas.dc());
    CHECK(GetCurrentObject(canvas.dc(), OBJ_PEN) == pen);
    CHECK(GetCurrentObject(canvas.dc(), OBJ_BRUSH) == brush);
    CHECK(GetCurrentObject(canvas.dc(), OBJ_FONT) == font);
    CHECK(GetBkMode(canvas.dc()) == mode);
    CHECK(GetTextColor(canvas.dc()) == text);
    HRGN clip = CreateRectRgn(0, 0, 0, 0);
    CHECK(GetClipRgn(canvas.dc(), clip) == 0); // no clip region left behind
    DeleteObject(clip);
}
