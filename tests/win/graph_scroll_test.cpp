// Scrolling and the extents commands on a real editor: after each command and wheel step
// the real scroll bars' ranges and positions are compared with the formulas, worked out
// here from what the windows measure (strip width, graph size, usable height).
#include "doctest/doctest.h"
#include "host/core_interface.h"
#include "tests/win/graph_test_support.h"

#include <algorithm>
#include <climits>

using namespace graphtest;

namespace {

constexpr DWORD kFlags = CC_DEFAULT_FLAGS & ~DWORD(CC_ASPOPUP); // embedded, every part

struct Bar {
    int lo = 0, hi = 0, pos = 0;
};

Bar readBar(HWND bar) {
    Bar b;
    GetScrollRange(bar, SB_CTL, &b.lo, &b.hi);
    b.pos = GetScrollPos(bar, SB_CTL);
    return b;
}

int clientWidth(HWND hwnd) {
    RECT r{};
    GetClientRect(hwnd, &r);
    return r.right;
}

/// Hm + 1 of the graph's usable area (flag 2 is set: inset by 6 at top and bottom).
int usableHeight(OpenEditor& ed) {
    RECT r{};
    GetClientRect(ed.graph(), &r);
    return (r.bottom - 6) - 6 + 1;
}

float clampX(float v) { return v > 1000000.0f ? 1000000.0f : !(v >= 0.00002f) ? 0.00002f : v; }
float clampY(float v) {
    return v > 100000000.0f ? 100000000.0f : !(v >= 0.0000001f) ? 0.0000001f : v;
}

/// The horizontal range for the x range 0 .. 100.
Bar horizontalRange(float xs, int w) {
    const int span = int(100.0f * xs) - w;
    Bar b;
    b.lo = (int(xs * 0.0f) - 200) / 2;
    b.hi = span + 408 == 0 ? b.lo : b.lo + (span + 408) / 2;
    return b;
}

Bar verticalRange(float lo, float hi, float ys, int h) {
    Bar b;
    b.lo = (-1 - int(ys * hi / float(h))) * 100;
    b.hi = 100 - int(ys * lo / float(h)) * 100;
    return b;
}

int clampTo(int v, const Bar& r) { return std::clamp(v, r.lo, std::max(r.lo, r.hi)); }

void command(OpenEditor& ed, int id) {
    SendMessageA(ed.editor().Handle(), WM_COMMAND, WPARAM(id), 0);
    edtest::Pump();
}

void wheel(OpenEditor& ed, int delta) {
    SendMessageA(ed.control().GetEditorWindow(), WM_MOUSEWHEEL, MAKEWPARAM(0, WORD(short(delta))),
                 0);
}

/// Two curves: curve 0 from (0, -10) to (100, 30), curve 1 (hidden) from 20 to 50: the
/// value bounds over all curves are -10 .. 50.
void loadCurves(OpenEditor& ed) {
    LoadPoints(ed.curve(0), {Knot(0, -10), Knot(100, 30)});
    LoadPoints(ed.curve(1), {Knot(0, 20), Knot(100, 50)});
    BitArray shown(2);
    shown.Set(0);
    ed.control().SetShownCurves(shown);
}

} // namespace

TEST_CASE_FIXTURE(edtest::EditorFixture, "Zoom Horizontal Extents sets xs, the range and the "
                                         "centred position") {
    OpenEditor ed(2, kFlags);
    loadCurves(ed);
    command(ed, 1050);
    const int w = clientWidth(ed.strip());
    const float xs = clampX(float((w - 34) / (100.0 * 1.1)));
    CHECK(ed.editor().Scale().xs == xs);
    const Bar want = horizontalRange(xs, w);
    const Bar got = readBar(ed.hbar());
    CHECK(got.lo == want.lo);
    CHECK(got.hi == want.hi);
    CHECK(got.pos == clampTo((int(50.0 * xs) - (w + 1) / 2 - 6) / 2, want));
}

TEST_CASE_FIXTURE(edtest::EditorFixture, "Zoom Vertical Extents covers every curve, shown or "
                                         "not") {
    OpenEditor ed(2, kFlags);
    loadCurves(ed);
    const float xsBefore = ed.editor().Scale().xs;
    command(ed, 1040);
    const int h = usableHeight(ed);
    const float ys = clampY(float(h / (60.0 * 1.4)));
    CHECK(ed.editor().Scale().ys == ys);
    CHECK(ed.editor().Scale().xs == xsBefore);
    const Bar want = verticalRange(-10.0f, 50.0f, ys, h);
    const Bar got = readBar(ed.vbar());
    CHECK(got.lo == want.lo);
    CHECK(got.hi == want.hi);
    const int c = int((50.0f + -10.0f) * 0.5 * ys);
    CHECK(got.pos == clampTo(-c * 100 / h, want));
}

TEST_CASE_FIXTURE(edtest::EditorFixture, "Zoom Vertical Extents over flat curves: ys is the "
                                         "usable height plus one") {
    OpenEditor ed(2, kFlags);
    LoadPoints(ed.curve(0), {Knot(0, 3), Knot(100, 3)});
    LoadPoints(ed.curve(1), {Knot(0, 3), Knot(100, 3)});
    command(ed, 1040);
    const int h = usableHeight(ed);
    CHECK(ed.editor().Scale().ys == float(h));
    // The bounds come from the ten pieces of each segment, whose sums may miss 3 by a
    // rounding error: the range is worked from the bounds the curves report.
    float lo = 0, hi = 0;
    ed.editor().ValueBounds(0, lo, hi);
    CHECK(lo == doctest::Approx(3.0f));
    CHECK(hi == doctest::Approx(3.0f));
    const Bar want = verticalRange(lo, hi, float(h), h);
    const Bar got = readBar(ed.vbar());
    CHECK(got.lo == want.lo);
    CHECK(got.hi == want.hi);
    CHECK(got.pos == clampTo(-int((hi + lo) * 0.5 * h) * 100 / h, want));
}

TEST_CASE_FIXTURE(edtest::EditorFixture, "Zoom Extents is both, and repaints both windows") {
    OpenEditor ed(2, kFlags);
    loadCurves(ed);
    ed.editor().Cache().lastCursor = POINT{5, 5};
    command(ed, 1035);
    const int w = clientWidth(ed.strip());
    const int h = usableHeight(ed);
    const float xs = clampX(float((w - 34) / (100.0 * 1.1)));
    const float ys = clampY(float(h / (60.0 * 1.4)));
    CHECK(ed.editor().Scale().xs == xs);
    CHECK(ed.editor().Scale().ys == ys);
    const Bar hr = horizontalRange(xs, w), vr = verticalRange(-10.0f, 50.0f, ys, h);
    const Bar hb = readBar(ed.hbar()), vb = readBar(ed.vbar());
    CHECK(hb.lo == hr.lo);
    CHECK(hb.hi == hr.hi);
    CHECK(vb.lo == vr.lo);
    CHECK(vb.hi == vr.hi);
    CHECK(ed.editor().Cache().lastCursor.x == INT_MIN);
    // ICurveCtl::ZoomExtents sends the same command.
    ed.editor().Scale().xs = 1.0f;
    ed.control().ZoomExtents();
    CHECK(ed.editor().Scale().xs == xs);
}

TEST_CASE_FIXTURE(edtest::EditorFixture, "wheel steps: scales, anchor, and the ranges at time 0 "
                                         "and at another time") {
    OpenEditor ed(2, kFlags);
    loadCurves(ed);
    command(ed, 1035);
    CurveCtlWindow& w = ed.editor();
    RECT graph{};
    GetClientRect(ed.graph(), &graph);
    const int h = usableHeight(ed);
    const int stripW = clientWidth(ed.strip());

    // One step, the expected bars worked from the state before it.
    const auto step = [&](int delta, TimeValue t) {
        GetCOREInterface()->SetTime(t, FALSE);
        edtest::Pump();
        const float xs = w.Scale().xs, ys = w.Scale().ys;
        const Bar h0 = readBar(ed.hbar()), v0 = readBar(ed.vbar());
        const int x0 = 2 * h0.pos - 7;
        const int y0 = int(h * (v0.pos * 0.01)) & ~1;
        const float g = delta < 0 ? 0.8f : 1.2f;
        const float ax = float(graph.right / 2 + x0) / xs;
        const float ay = float(h / 2 - (graph.bottom / 2 - 4 + y0)) / ys;

        wheel(ed, delta);

        const float ys1 = ys * g, xs1 = xs * g;
        CHECK(w.Scale().ys == clampY(ys1));
        CHECK(w.Scale().xs == clampX(xs1));
        const Bar vr = verticalRange(-10.0f, 50.0f, clampY(ys1), h);
        const Bar v1 = readBar(ed.vbar());
        CHECK(v1.lo == vr.lo);
        CHECK(v1.hi == vr.hi);
        const int y0New = int(ay * (1.0f - g) * ys1) + y0;
        CHECK(v1.pos == clampTo(y0New * 100 / h, vr));

        Bar hr = horizontalRange(clampX(xs1), stripW);
        if (t != 0) { // expand only
            hr.lo = std::min(hr.lo, h0.lo);
            hr.hi = std::max(hr.hi, h0.hi);
        }
        const Bar h1 = readBar(ed.hbar());
        CHECK(h1.lo == hr.lo);
        CHECK(h1.hi == hr.hi);
        // The new range has already taken the position in when the wheel reads it back.
        const int hpos = clampTo(h0.pos, hr);
        CHECK(h1.pos == clampTo((2 * hpos - int(ax * (1.0f - g) * xs1)) / 2, hr));
        return std::pair{h0, h1};
    };

    SUBCASE("zooming out at time 0 shrinks the horizontal range") {
        const auto [before, after] = step(-120, 0);
        CHECK(after.hi < before.hi);
    }
    SUBCASE("zooming out at another time never shrinks it") {
        const auto [before, after] = step(-120, 160);
        CHECK(after.lo == before.lo);
        CHECK(after.hi == before.hi);
    }
    SUBCASE("zooming in, and a zero delta zooms in too") {
        step(120, 0);
        step(0, 0);
        step(120, 160);
    }
    SUBCASE("no wheel without the scroll-bar flag") {
        ed.control().SetControlFlags(kFlags & ~DWORD(CC_SHOWSCROLLBARS));
        const float xs = w.Scale().xs;
        CHECK(SendMessageA(ed.control().GetEditorWindow(), WM_MOUSEWHEEL, MAKEWPARAM(0, 120), 0) ==
              0);
        CHECK(w.Scale().xs == xs);
    }
}

TEST_CASE_FIXTURE(edtest::EditorFixture, "scroll-bar codes: SB_THUMBPOSITION keeps the view, "
                                         "SB_THUMBTRACK moves it") {
    OpenEditor ed(1, kFlags);
    CurveCtlWindow& w = ed.editor();
    HWND editor = w.Handle();
    SetScrollRange(ed.hbar(), SB_CTL, -50, 50, FALSE);
    SetScrollPos(ed.hbar(), SB_CTL, 0, FALSE);
    edtest::Pump();

    w.Cache().lastCursor = POINT{5, 5};
    CHECK(SendMessageA(editor, WM_HSCROLL, MAKEWPARAM(SB_THUMBPOSITION, 20), LPARAM(ed.hbar())) ==
          0);
    CHECK(GetScrollPos(ed.hbar(), SB_CTL) == 0);
    CHECK(w.Cache().lastCursor.x == 5); // no refresh

    CHECK(SendMessageA(editor, WM_HSCROLL, MAKEWPARAM(SB_THUMBTRACK, 20), LPARAM(ed.hbar())) == 0);
    CHECK(GetScrollPos(ed.hbar(), SB_CTL) == 20);
    CHECK(w.Cache().lastCursor.x == INT_MIN); // refreshed
    CHECK(w.Cache().graphValid == 1);         // and repainted at once

    SendMessageA(editor, WM_HSCROLL, MAKEWPARAM(SB_LINERIGHT, 0), LPARAM(ed.hbar()));
    CHECK(GetScrollPos(ed.hbar(), SB_CTL) == 21);
    SendMessageA(editor, WM_HSCROLL, MAKEWPARAM(SB_PAGELEFT, 0), LPARAM(ed.hbar()));
    CHECK(GetScrollPos(ed.hbar(), SB_CTL) == 11);

    // Vertical: the position follows the same codes, the graph is refreshed every time.
    SetScrollRange(ed.vbar(), SB_CTL, -500, 500, FALSE);
    SetScrollPos(ed.vbar(), SB_CTL, 0, FALSE);
    w.Cache().lastCursor = POINT{5, 5};
    SendMessageA(editor, WM_VSCROLL, MAKEWPARAM(SB_THUMBPOSITION, 30), LPARAM(ed.vbar()));
    CHECK(GetScrollPos(ed.vbar(), SB_CTL) == 0);
    CHECK(w.Cache().lastCursor.x == INT_MIN);
    SendMessageA(editor, WM_VSCROLL, MAKEWPARAM(SB_THUMBTRACK, -30), LPARAM(ed.vbar()));
    CHECK(GetScrollPos(ed.vbar(), SB_CTL) == -30);
    SendMessageA(editor, WM_VSCROLL, MAKEWPARAM(SB_PAGEDOWN, 0), LPARAM(ed.vbar()));
    CHECK(GetScrollPos(ed.vbar(), SB_CTL) == -20);
}

TEST_CASE_FIXTURE(edtest::EditorFixture, "a horizontal scroll at the end of its range returns "
                                         "without redrawing") {
    OpenEditor ed(1, kFlags);
    CurveCtlWindow& w = ed.editor();
    SetScrollRange(ed.hbar(), SB_CTL, -50, 50, FALSE);
    SetScrollPos(ed.hbar(), SB_CTL, 50, FALSE);
    ed.Repaint();
    REQUIRE(w.Cache().graphValid == 1);
    w.Cache().lastCursor = POINT{5, 5};

    CHECK(SendMessageA(w.Handle(), WM_HSCROLL, MAKEWPARAM(SB_LINERIGHT, 0), LPARAM(ed.hbar())) ==
          0);
    CHECK(GetScrollPos(ed.hbar(), SB_CTL) == 50);
    CHECK(w.Cache().lastCursor.x == 5);
    RECT update{};
    CHECK_FALSE(GetUpdateRect(ed.graph(), &update, FALSE));
    CHECK_FALSE(GetUpdateRect(ed.strip(), &update, FALSE));

    SendMessageA(w.Handle(), WM_HSCROLL, MAKEWPARAM(SB_PAGERIGHT, 0), LPARAM(ed.hbar()));
    CHECK(w.Cache().lastCursor.x == 5);
    SendMessageA(w.Handle(), WM_HSCROLL, MAKEWPARAM(SB_LINELEFT, 0), LPARAM(ed.hbar()));
    CHECK(GetScrollPos(ed.hbar(), SB_CTL) == 49);
    CHECK(w.Cache().lastCursor.x == INT_MIN);
}

TEST_CASE_FIXTURE(edtest::EditorFixture, "vertical offset in pixels and in hundredths") {
    OpenEditor ed(1, kFlags);
    CurveCtlWindow& w = ed.editor();
    const int h = usableHeight(ed);
    SetScrollRange(ed.vbar(), SB_CTL, -1000, 1000, FALSE);
    w.SetVerticalOffset(37, false);
    CHECK(w.GetVerticalOffset(false) == 37);
    CHECK(w.GetVerticalOffset(true) == (int(h * (37 * 0.01)) & ~1));
    w.SetVerticalOffset(-120, true);
    CHECK(w.GetVerticalOffset(false) == -120 * 100 / h);
    SetScrollRange(ed.hbar(), SB_CTL, -1000, 1000, FALSE);
    w.SetHorizontalOffset(-41);
    CHECK(GetScrollPos(ed.hbar(), SB_CTL) == -17);
    CHECK(w.HorizontalOffset() == -41);
}
