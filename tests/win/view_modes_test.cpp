// The pan, zoom and zoom-region view modes on a real editor, driven by real mouse
// messages to the graph. Expected scroll positions and scales are worked out here from
// the view's formulas and what the windows measure:
//     X0 = 2 hpos - 7; Y0 = trunc((Hm + 1) vpos 0.01) & ~1; vpos = trunc(Y0 100 / (Hm + 1))
//     zoom factor of a drag of d pixels: f = 1 + 0.01 d, below 1 replaced by -1 / (f - 2)
#include "doctest/doctest.h"
#include "editor/editor_resources.h"
#include "host/core_interface.h"
#include "tests/win/mouse_test_support.h"

#include <cmath>
#include <cstdlib>
#include <vector>

using namespace graphtest;
using namespace mousetest;

namespace {

constexpr DWORD kFlags = CC_DEFAULT_FLAGS & ~DWORD(CC_ASPOPUP); // embedded, every part

void command(OpenEditor& ed, int id) {
    SendMessageA(ed.editor().Handle(), WM_COMMAND, WPARAM(id), 0);
    edtest::Pump();
}

int hpos(OpenEditor& ed) { return GetScrollPos(ed.hbar(), SB_CTL); }
int vpos(OpenEditor& ed) { return GetScrollPos(ed.vbar(), SB_CTL); }
int x0(OpenEditor& ed) { return 2 * hpos(ed) - 7; }
int y0(OpenEditor& ed) { return ed.editor().GetVerticalOffset(true); }

RECT client(HWND hwnd) {
    RECT r{};
    GetClientRect(hwnd, &r);
    return r;
}

/// Hm + 1 (the usable area is inset by 6 at top and bottom under flag 2).
int usableHeight(OpenEditor& ed) { return client(ed.graph()).bottom - 12 + 1; }

float clampX(float v) { return v > 1000000.0f ? 1000000.0f : !(v >= 0.00002f) ? 0.00002f : v; }
float clampY(float v) {
    return v > 100000000.0f ? 100000000.0f : !(v >= 0.0000001f) ? 0.0000001f : v;
}

/// A curve from y -200 up to 200 and down again across the x range: the vertical scroll
/// range has room for the views below.
OpenEditor& withHill(OpenEditor& ed) {
    LoadPoints(ed.curve(0), {Knot(0, -200, 0x102), Knot(50, 200), Knot(100, -200, 0x102)});
    ed.Repaint();
    return ed;
}

/// The curve point under the middle of the graph, as the zoom modes anchor it.
Point2 middleAnchor(OpenEditor& ed) {
    const RECT c = client(ed.graph());
    const view::ViewMapping v = ed.View();
    const float ax = float(c.right / 2 + v.x0) / v.xs;
    const float ay = float(usableHeight(ed) / 2 - (c.bottom / 2 - 4 + v.y0)) / v.ys;
    return Point2(ax, ay);
}

/// How far Y0 may be from an exact value: vpos holds hundredths of Hm + 1, and bit 0 goes.
int y0Slack(OpenEditor& ed) { return usableHeight(ed) / 100 + 2; }

} // namespace

// ---------------------------------------------------------------------------------------
// Zoom

TEST_CASE("Zoom Vertically: 100 pixels up doubles ys, down halves it, 200 down gives a third") {
    OpenEditor ed(1, kFlags);
    withHill(ed);
    ed.SetView(3.0f, 0.25f, -20, 0);
    command(ed, 1010);
    REQUIRE(ed.editor().ViewMode() == kViewZoomVertical);
    const float xs = ed.editor().Scale().xs;
    const float ys = ed.editor().Scale().ys;

    // The anchor and the vertical position the drag must end at, worked out by hand.
    const Point2 anchor = middleAnchor(ed);
    const int y0Start = y0(ed);
    Drag(ed.graph(), IPoint2(200, 150), IPoint2(200, 50));
    CHECK(ed.editor().Scale().ys == clampY(2.0f * ys));
    CHECK(ed.editor().Scale().xs == xs);
    const int wantY0 = int(anchor.y * (1.0f - 2.0f) * ys) + y0Start;
    CHECK(vpos(ed) == wantY0 * 100 / usableHeight(ed));
    CHECK(y0(ed) % 2 == 0);
    // The curve y at the middle row stays there (up to the bar's percentage steps).
    const RECT c = client(ed.graph());
    CHECK(std::abs(ed.View().Row(anchor.y) - c.bottom / 2) <= y0Slack(ed));
    CHECK(UndoNames().empty()); // views are not undone

    // A new drag starts from the scale it finds: 100 down halves, 200 down thirds.
    const float doubled = ed.editor().Scale().ys;
    Drag(ed.graph(), IPoint2(200, 50), IPoint2(200, 150));
    CHECK(ed.editor().Scale().ys == doctest::Approx(doubled / 2.0f).epsilon(1e-6));
    const float half = ed.editor().Scale().ys;
    Drag(ed.graph(), IPoint2(200, 20), IPoint2(200, 220), 8);
    CHECK(ed.editor().Scale().ys == doctest::Approx(half / 3.0f).epsilon(1e-6));
    CHECK(ed.editor().Scale().xs == xs);
}

TEST_CASE("Zoom: the factor follows the drag within one gesture, from the press scale") {
    OpenEditor ed(1, kFlags);
    withHill(ed);
    ed.SetView(3.0f, 0.25f, -20, 0);
    command(ed, 1010);
    const float ys = ed.editor().Scale().ys;
    Press(ed.graph(), IPoint2(200, 150));
    MoveTo(ed.graph(), IPoint2(200, 100)); // 50 up: 1.5
    CHECK(ed.editor().Scale().ys == doctest::Approx(1.5f * ys).epsilon(1e-6));
    MoveTo(ed.graph(), IPoint2(200, 175)); // 25 down: 1 / 1.25
    CHECK(ed.editor().Scale().ys == doctest::Approx(ys / 1.25f).epsilon(1e-6));
    MoveTo(ed.graph(), IPoint2(260, 150)); // sideways only: back to the press scale
    CHECK(ed.editor().Scale().ys == ys);
    Release(ed.graph(), IPoint2(260, 150));
    CHECK(ed.editor().Scale().ys == ys);
}

TEST_CASE("Zoom Horizontally: 100 pixels right doubles xs and keeps the middle column") {
    OpenEditor ed(1, kFlags);
    withHill(ed);
    ed.SetView(3.0f, 0.25f, -20, 0);
    command(ed, 1015);
    const float xs = ed.editor().Scale().xs;
    const float ys = ed.editor().Scale().ys;
    const Point2 anchor = middleAnchor(ed);
    const int x0Start = x0(ed);

    Press(ed.graph(), IPoint2(150, 120));
    MoveTo(ed.graph(), IPoint2(200, 160)); // the vertical part of the drag does nothing
    MoveTo(ed.graph(), IPoint2(250, 90));
    CHECK(ed.editor().Scale().xs == clampX(2.0f * xs));
    CHECK(ed.editor().Scale().ys == ys);
    CHECK(hpos(ed) == (x0Start - int(anchor.x * (1.0f - 2.0f) * xs) + 7) / 2);
    const RECT c = client(ed.graph());
    CHECK(std::abs(ed.View().Column(anchor.x) - c.right / 2) <= 1);
    Release(ed.graph(), IPoint2(250, 90));

    Drag(ed.graph(), IPoint2(250, 90), IPoint2(150, 90)); // 100 left: half
    CHECK(ed.editor().Scale().xs == doctest::Approx(xs).epsilon(1e-6));
    CHECK(ed.editor().Scale().ys == ys);
}

TEST_CASE("Zoom: with Ctrl each axis follows its own direction, without it both the vertical") {
    OpenEditor ed(1, kFlags);
    withHill(ed);
    ed.SetView(3.0f, 0.25f, -20, 0);
    command(ed, 1090);
    REQUIRE(ed.editor().ViewMode() == kViewZoom);
    const float xs = ed.editor().Scale().xs;
    const float ys = ed.editor().Scale().ys;
    auto reset = [&] { ed.SetView(xs, ys, -20, 0); };

    SUBCASE("Ctrl, horizontal drag: only xs") {
        Drag(ed.graph(), IPoint2(150, 120), IPoint2(250, 120), 4, kCtrl);
        CHECK(ed.editor().Scale().xs == clampX(2.0f * xs));
        CHECK(ed.editor().Scale().ys == ys);
    }
    SUBCASE("Ctrl, vertical drag: only ys") {
        Drag(ed.graph(), IPoint2(150, 150), IPoint2(150, 50), 4, kCtrl);
        CHECK(ed.editor().Scale().ys == clampY(2.0f * ys));
        CHECK(ed.editor().Scale().xs == xs);
    }
    SUBCASE("no Ctrl, vertical drag: both by the same factor") {
        Drag(ed.graph(), IPoint2(150, 150), IPoint2(150, 50));
        CHECK(ed.editor().Scale().ys == clampY(2.0f * ys));
        CHECK(ed.editor().Scale().xs == clampX(2.0f * xs));
        reset();
        Drag(ed.graph(), IPoint2(150, 50), IPoint2(150, 100));
        CHECK(ed.editor().Scale().ys == doctest::Approx(ys / 1.5f).epsilon(1e-6));
        CHECK(ed.editor().Scale().xs == doctest::Approx(xs / 1.5f).epsilon(1e-6));
    }
    SUBCASE("no Ctrl, horizontal drag: nothing") {
        Drag(ed.graph(), IPoint2(150, 120), IPoint2(250, 120));
        CHECK(ed.editor().Scale().xs == xs);
        CHECK(ed.editor().Scale().ys == ys);
    }
}

TEST_CASE("Zoom: the scales stay inside their limits however far the drag goes") {
    OpenEditor ed(1, kFlags);
    withHill(ed);
    ed.SetView(900000.0f, 90000000.0f, 0, 0);
    command(ed, 1090);
    Drag(ed.graph(), IPoint2(150, 200), IPoint2(150, 10));
    CHECK(ed.editor().Scale().xs == 1000000.0f);
    CHECK(ed.editor().Scale().ys == 100000000.0f);

    ed.SetView(0.00003f, 0.0000002f, 0, 0);
    Drag(ed.graph(), IPoint2(150, 10), IPoint2(150, 2000), 4);
    CHECK(ed.editor().Scale().xs >= 0.00002f);
    CHECK(ed.editor().Scale().ys >= 0.0000001f);
    CHECK(ed.editor().Scale().xs < 0.00003f);
}

TEST_CASE("Zoom: Escape puts the scales and the scroll positions back") {
    OpenEditor ed(1, kFlags);
    withHill(ed);
    ed.SetView(3.0f, 0.25f, -20, 10);
    command(ed, 1090);
    const float xs = ed.editor().Scale().xs, ys = ed.editor().Scale().ys;
    const int h = hpos(ed), y = y0(ed);
    Press(ed.graph(), IPoint2(150, 150));
    MoveTo(ed.graph(), IPoint2(150, 60));
    REQUIRE(ed.editor().Scale().ys != ys);
    Escape(ed.graph());
    CHECK(ed.editor().Scale().xs == xs);
    CHECK(ed.editor().Scale().ys == ys);
    CHECK(hpos(ed) == h);
    // vpos is written back from the remembered Y0 in pixels: trunc(Y0 * 100 / (Hm + 1)),
    // which may be a hundredth below the vpos that Y0 came from.
    CHECK(vpos(ed) == y * 100 / usableHeight(ed));
    CHECK_FALSE(ed.editor().Mice().IsActive());
}

// ---------------------------------------------------------------------------------------
// Pan

TEST_CASE("Pan: an odd number of pixels moves the view an even number; Y0 stays even") {
    OpenEditor ed(1, kFlags);
    withHill(ed);
    ed.SetView(3.0f, 0.25f, 10, 20);
    command(ed, 1030);
    REQUIRE(ed.editor().ViewMode() == kViewPan);
    const int x0Start = x0(ed);
    const int y0Start = y0(ed);
    const int h = usableHeight(ed);
    const IPoint2 start(200, 120);

    Press(ed.graph(), start);
    for (int d = -7; d <= 7; ++d) {
        CAPTURE(d);
        MoveTo(ed.graph(), IPoint2(start.x + d, start.y + d));
        CHECK(hpos(ed) == (x0Start + start.x - (start.x + d) + 7) / 2);
        CHECK((x0(ed) - x0Start) % 2 == 0);
        CHECK(vpos(ed) == (y0Start - d) * 100 / h);
        CHECK(y0(ed) % 2 == 0);
        // The view goes with the mouse, to within the bars' steps.
        CHECK(std::abs(x0(ed) - (x0Start - d)) <= 1);
        CHECK(std::abs(y0(ed) - (y0Start - d)) <= y0Slack(ed));
    }
    Release(ed.graph(), IPoint2(start.x + 7, start.y + 7));
    CHECK(UndoNames().empty());
}

TEST_CASE("Pan: each drag step is drawn at once, graph and ruler") {
    OpenEditor ed(1, kFlags);
    withHill(ed);
    ed.SetView(3.0f, 0.25f, 10, 0);
    command(ed, 1030);
    Press(ed.graph(), IPoint2(200, 120));
    // Sent without pumping afterwards: whatever is painted, the mode painted.
    HoldKeys(kNoKeys);
    SendMessageA(ed.graph(), WM_MOUSEMOVE, MK_LBUTTON, MAKELPARAM(150, 100));
    RECT pending{};
    CHECK_FALSE(GetUpdateRect(ed.graph(), &pending, FALSE));
    CHECK_FALSE(GetUpdateRect(ed.strip(), &pending, FALSE));
    CHECK(ed.editor().Cache().graphValid == 1);
    CHECK(GetCursor() == SharedEditorResources().panCursor);
    Release(ed.graph(), IPoint2(150, 100));
}

TEST_CASE("Pan: Escape puts the view back; release re-derives the horizontal range") {
    OpenEditor ed(1, kFlags);
    withHill(ed);
    ed.SetView(3.0f, 0.25f, 10, 20);
    command(ed, 1030);
    const int h = hpos(ed), v = vpos(ed), y0Start = y0(ed);
    Press(ed.graph(), IPoint2(200, 120));
    MoveTo(ed.graph(), IPoint2(120, 60));
    REQUIRE(hpos(ed) != h);
    Escape(ed.graph());
    CHECK(hpos(ed) == h);
    CHECK(vpos(ed) == y0Start * 100 / usableHeight(ed)); // from Y0, as the zoom's abort
    CHECK(std::abs(vpos(ed) - v) <= 1);

    // SetView widened the bar to +-1000000; the release puts the x range's own back.
    Drag(ed.graph(), IPoint2(200, 120), IPoint2(190, 120));
    int lo = 0, hi = 0;
    GetScrollRange(ed.hbar(), SB_CTL, &lo, &hi);
    CHECK(lo == -100); // (trunc(3 * 0) - 200) / 2
    CHECK(hi < 1000000);
}

TEST_CASE("Pan: the middle button pans in any edit mode when the scroll bars are on") {
    OpenEditor ed(1, kFlags);
    withHill(ed);
    ed.SetView(3.0f, 0.25f, 10, 0);
    command(ed, 400);
    const int x0Start = x0(ed);
    SendMessageA(ed.graph(), WM_MBUTTONDOWN, MK_MBUTTON, MAKELPARAM(200, 100));
    SendMessageA(ed.graph(), WM_MOUSEMOVE, MK_MBUTTON, MAKELPARAM(180, 100));
    CHECK(x0(ed) == 2 * ((x0Start + 20 + 7) / 2) - 7);
    SendMessageA(ed.graph(), WM_MBUTTONUP, 0, MAKELPARAM(180, 100));
    edtest::Pump();
    CHECK(ed.editor().EditMode() == 400);
}

// ---------------------------------------------------------------------------------------
// Zoom region

TEST_CASE("Zoom Region: the box fills the usable area, centred") {
    OpenEditor ed(1, kFlags);
    withHill(ed);
    ed.SetView(2.0f, 0.25f, -20, 0);
    command(ed, 1020);
    REQUIRE(ed.editor().ViewMode() == kViewZoomRegion);
    const RECT r = ed.editor().UsableArea();
    const int width = r.right - r.left;
    const int h = usableHeight(ed);
    const float xs = ed.editor().Scale().xs, ys = ed.editor().Scale().ys;
    const int hposOld = hpos(ed), x0Old = x0(ed), y0Old = y0(ed);

    const IPoint2 a(110, 80), b(210, 130); // 100 x 50
    const IPoint2 c((a.x + b.x) / 2, (a.y + b.y) / 2);
    const float cx = float(c.x + x0Old) / xs;
    const float cy = float(h / 2 - (c.y - 4 + y0Old)) / ys;
    Drag(ed.graph(), a, b, 5);

    const float grow = float(width) / 100.0f;
    CHECK(ed.editor().Scale().xs == clampX(grow * xs));
    CHECK(ed.editor().Scale().ys == clampY(float(h) / 50.0f * ys));
    CHECK(hpos(ed) ==
          (c.x - int(cx * (1.0f - grow) * xs) - (r.left + r.right) / 2 + 2 * hposOld) / 2);
    const int wantY0 = 4 - int(cy * ed.editor().Scale().ys);
    CHECK(vpos(ed) == wantY0 * 100 / h);
    // The box's centre is now in the middle of the usable area.
    CHECK(std::abs(ed.View().Column(cx) - (r.left + r.right) / 2) <= 1);
    CHECK(std::abs(ed.View().Row(cy) - h / 2) <= y0Slack(ed));
    CHECK(UndoNames().empty());
}

TEST_CASE("Zoom Region: a box without width or height leaves that axis alone") {
    OpenEditor ed(1, kFlags);
    withHill(ed);
    ed.SetView(2.0f, 0.25f, -20, 0);
    command(ed, 1020);
    const float xs = ed.editor().Scale().xs, ys = ed.editor().Scale().ys;
    const int h = hpos(ed), v = vpos(ed);

    SUBCASE("a click") {
        Click(ed.graph(), IPoint2(150, 100));
        CHECK(ed.editor().Scale().xs == xs);
        CHECK(ed.editor().Scale().ys == ys);
        CHECK(hpos(ed) == h);
        CHECK(vpos(ed) == v);
    }
    SUBCASE("a flat box: x only") {
        Drag(ed.graph(), IPoint2(100, 100), IPoint2(200, 100));
        CHECK(ed.editor().Scale().xs != xs);
        CHECK(ed.editor().Scale().ys == ys);
        CHECK(vpos(ed) == v);
    }
    SUBCASE("a thin box: y only") {
        Drag(ed.graph(), IPoint2(150, 60), IPoint2(150, 140));
        CHECK(ed.editor().Scale().xs == xs);
        CHECK(hpos(ed) == h);
        CHECK(ed.editor().Scale().ys != ys);
    }
    SUBCASE("Escape") {
        Press(ed.graph(), IPoint2(100, 60));
        MoveTo(ed.graph(), IPoint2(200, 140));
        Escape(ed.graph());
        Release(ed.graph(), IPoint2(200, 140));
        CHECK(ed.editor().Scale().xs == xs);
        CHECK(ed.editor().Scale().ys == ys);
        CHECK(hpos(ed) == h);
        CHECK(vpos(ed) == v);
    }
}

TEST_CASE("Zoom Region: the dotted box leaves no trace on the graph") {
    OpenEditor ed(1, kFlags);
    withHill(ed);
    ed.SetView(2.0f, 0.25f, -20, 0);
    command(ed, 1020);
    HDC dc = GetDC(ed.graph());
    auto sample = [&] {
        std::vector<COLORREF> px;
        for (int y = 40; y <= 160; y += 4)
            for (int x = 60; x <= 260; x += 4)
                px.push_back(GetPixel(dc, x, y));
        return px;
    };
    const std::vector<COLORREF> before = sample();
    Press(ed.graph(), IPoint2(60, 40));
    MoveTo(ed.graph(), IPoint2(200, 120));
    MoveTo(ed.graph(), IPoint2(260, 160));
    CHECK(sample() != before); // the box is there
    Escape(ed.graph());
    CHECK(sample() == before); // and gone
    ReleaseDC(ed.graph(), dc);
}

// ---------------------------------------------------------------------------------------
// Cursors and switching

TEST_CASE("View modes show their cursors on every move, with and without the button") {
    OpenEditor ed(1, kFlags);
    const EditorResources& res = LoadEditorResources();
    struct Case {
        int command;
        HCURSOR cursor;
    } cases[] = {{1030, res.panCursor},
                 {1010, res.zoomCursor},
                 {1015, res.zoomCursor},
                 {1090, res.zoomCursor},
                 {1020, res.zoomRegionCursor}};
    for (const Case& c : cases) {
        CAPTURE(c.command);
        command(ed, c.command);
        SetCursor(nullptr);
        Hover(ed.graph(), IPoint2(150, 100));
        CHECK(GetCursor() == c.cursor);
        Press(ed.graph(), IPoint2(150, 100));
        SetCursor(nullptr);
        MoveTo(ed.graph(), IPoint2(151, 100));
        CHECK(GetCursor() == c.cursor);
        Escape(ed.graph());
        command(ed, c.command); // off again
    }
}

TEST_CASE("Choosing the active view mode again returns to the edit mode before it") {
    OpenEditor ed(1, kFlags);
    CurveCtlWindow& w = ed.editor();
    MouseModeSet& modes = edtest::ModeSetOf(w);
    auto checked = [&](int id) { return w.Toolbars().Button(id)->IsChecked() != FALSE; };

    command(ed, 401); // Scale
    REQUIRE(w.Mice().GetMouseProc(LEFT_BUTTON) == &modes.base);
    command(ed, 1010);
    CHECK(w.ViewMode() == kViewZoomVertical);
    CHECK(w.Mice().GetMouseProc(LEFT_BUTTON) == &modes.zoom);
    CHECK(checked(1010));
    CHECK_FALSE(checked(401));

    command(ed, 1030); // another view mode: pan replaces zoom
    CHECK(w.ViewMode() == kViewPan);
    CHECK(w.Mice().GetMouseProc(LEFT_BUTTON) == &modes.pan);
    CHECK(checked(1030));
    CHECK_FALSE(checked(1010));

    command(ed, 1030); // the active one again
    CHECK(w.ViewMode() == kViewNone);
    CHECK(w.EditMode() == 401);
    CHECK(w.Mice().GetMouseProc(LEFT_BUTTON) == &modes.base);
    CHECK(modes.base.subMode == &modes.scale);
    CHECK(checked(401));
    CHECK_FALSE(checked(1030));

    command(ed, 402); // from insert, through zoom region, back to insert
    command(ed, 1020);
    CHECK(w.Mice().GetMouseProc(LEFT_BUTTON) == &modes.zoomRegion);
    command(ed, 1020);
    CHECK(w.EditMode() == 402);
    CHECK(w.Mice().GetMouseProc(LEFT_BUTTON) == &modes.insert);
    CHECK(checked(402));

    command(ed, 1090); // an edit button leaves the view mode as well
    command(ed, 400);
    CHECK(w.ViewMode() == kViewNone);
    CHECK(w.Mice().GetMouseProc(LEFT_BUTTON) == &modes.base);
    CHECK_FALSE(checked(1090));
}
