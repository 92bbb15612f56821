// CurveWindow::HitTestGraph on an open editor: which curves it tests (displayed ones, in
// index order), the boxes it builds for a click and a dragged region, and its stop rules.
//
// View: xs 2, ys 1, X0 -61, Y0 0: curve x at column 2x + 61, y at row (Hm + 1) / 2 + 4 - y.
#include "doctest/doctest.h"
#include "editor/hit_record.h"
#include "host/controller.h"
#include "host/core_interface.h"
#include "tests/win/graph_test_support.h"

#include <string>

using namespace graphtest;

namespace {

constexpr DWORD kFlags = CC_DRAWBG | CC_DRAWRULER | CC_SHOWSCROLLBARS;

/// Three curves with a point at (50, 60): curve 0 (shown, the point selected), curve 1
/// (hidden) and curve 2 (shown). Curve 0 also has a selected point at (20, 30).
struct Scene {
    OpenEditor ed{3, kFlags};
    view::ViewMapping m;
    Scene() {
        LoadPoints(ed.curve(0), {Knot(0, 0), Knot(20, 30, KNOT_CORNER | KNOT_SELECTED),
                                 Knot(50, 60, KNOT_CORNER | KNOT_SELECTED), Knot(100, 0)});
        LoadPoints(ed.curve(1), {Knot(0, 0), Knot(50, 60), Knot(100, 0)});
        LoadPoints(ed.curve(2), {Knot(0, 0), Knot(50, 60), Knot(100, 0)});
        BitArray shown(3);
        shown.Set(0);
        shown.Set(2);
        ed.control().SetShownCurves(shown);
        ed.SetView(2.0f, 1.0f, -27, 0);
        m = ed.View();
    }
    IPoint2 at(float x, float y) const { return IPoint2(m.Column(x), m.Row(y)); }
    int click(IPoint2 p, GraphHits& out, int request) {
        return ed.editor().Graph().HitTestGraph(ed.graph(), p, out, request);
    }
};

/// The curve indices of the records, as text ("0 2") so that a failure shows them.
std::string curvesOf(const GraphHits& hits) {
    std::string out;
    for (const CurveHitList& h : hits)
        out += (out.empty() ? "" : " ") + std::to_string(h.curve);
    return out;
}

} // namespace

TEST_CASE_FIXTURE(edtest::EditorFixture, "a click tests displayed curves only, in index order") {
    Scene s;
    GraphHits hits;
    const int r = s.click(s.at(50, 60) + IPoint2(4, -4), hits, CURVE_HIT_CLICK | CURVE_HIT_POINTS);
    CHECK(r == CURVE_HIT_RESULT_POINT);
    CHECK(curvesOf(hits) == "0 2");
    REQUIRE(hits[0].hits.Count() == 1);
    CHECK(hits[0].hits[0].index == 2);
    CHECK(hits[0].hits[0].part == KNOT_PART_POINT);
    CHECK(hits[1].hits[0].index == 1);

    // 5 pixels away: nothing, and the list is emptied.
    CHECK(s.click(s.at(50, 60) + IPoint2(5, 0), hits, CURVE_HIT_CLICK | CURVE_HIT_POINTS) == 0);
    CHECK(hits.empty());
}

TEST_CASE_FIXTURE(edtest::EditorFixture, "stop rules: 0x4, and flag 0x80000 for clicks") {
    Scene s;
    GraphHits hits;
    const IPoint2 p = s.at(50, 60);
    s.click(p, hits, CURVE_HIT_CLICK | CURVE_HIT_POINTS | CURVE_HIT_STOP_FIRST);
    CHECK(curvesOf(hits) == "0");

    s.ed.control().SetControlFlags(kFlags | CC_SINGLESELECT);
    s.click(p, hits, CURVE_HIT_CLICK | CURVE_HIT_POINTS);
    CHECK(curvesOf(hits) == "0");
    // A region is not a click: every curve.
    const int r = s.ed.editor().Graph().HitTestGraph(s.ed.graph(), p, p, hits,
                                                     CURVE_HIT_REGION | CURVE_HIT_POINTS);
    CHECK(r == CURVE_HIT_RESULT_POINT);
    CHECK(curvesOf(hits) == "0 2");

    // Only a point hit ends the search: with 0x4 each curve stops at its first curve hit,
    // and the next curve is tested all the same. (25, 30) lies on curve 2 and 3 pixels
    // from curve 0's second segment.
    s.ed.control().SetControlFlags(kFlags);
    const int c =
        s.click(s.at(25, 30), hits, CURVE_HIT_CLICK | CURVE_HIT_CURVE | CURVE_HIT_STOP_FIRST);
    CHECK(c == CURVE_HIT_RESULT_CURVE);
    CHECK(curvesOf(hits) == "0 2");
    REQUIRE(hits[0].hits.Count() == 1);
    CHECK(hits[0].hits[0].index == 1);
}

TEST_CASE_FIXTURE(edtest::EditorFixture, "a dragged region in either direction") {
    Scene s;
    GraphHits hits;
    // From below right of (50, 60) to above left of (20, 30), 3 pixels short of both:
    // the 4 extra pixels take them in.
    const IPoint2 a = s.at(50, 60) + IPoint2(-3, 3);
    const IPoint2 b = s.at(20, 30) + IPoint2(3, -3);
    const int r = s.ed.editor().Graph().HitTestGraph(s.ed.graph(), a, b, hits,
                                                     CURVE_HIT_REGION | CURVE_HIT_POINTS);
    CHECK(r == CURVE_HIT_RESULT_POINT);
    REQUIRE(curvesOf(hits) == "0 2");
    REQUIRE(hits[0].hits.Count() == 2);
    CHECK(hits[0].hits[0].index == 1);
    CHECK(hits[0].hits[1].index == 2);
    CHECK(hits[1].hits.Count() == 1);
    // Skipping unselected points leaves curve 2 out.
    s.ed.editor().Graph().HitTestGraph(
        s.ed.graph(), b, a, hits, CURVE_HIT_REGION | CURVE_HIT_POINTS | CURVE_HIT_SKIP_UNSELECTED);
    CHECK(curvesOf(hits) == "0");
}

TEST_CASE_FIXTURE(edtest::EditorFixture, "another window gets no hits") {
    Scene s;
    GraphHits hits;
    hits.push_back(CurveHitList{});
    CHECK(s.ed.editor().Graph().HitTestGraph(s.ed.strip(), s.at(50, 60), hits,
                                             CURVE_HIT_CLICK | CURVE_HIT_POINTS) == 0);
    CHECK(hits.empty());
}

TEST_CASE_FIXTURE(edtest::EditorFixture, "hit testing reads the host's current time") {
    Scene s;
    // Animate point 2 of curve 0: at time 0 it is at (50, 60), at time 100 at (50, 10).
    Curve& c = s.ed.curve(0);
    Control* ctrl = NewDefaultPoint3Controller();
    c.ReplaceReference(2, ctrl, TRUE);
    AnimateOn();
    Point3 v0(50.0f, 60.0f, 0.0f), v1(50.0f, 10.0f, 0.0f);
    ctrl->SetValue(0, &v0, 1, CTRL_ABSOLUTE);
    ctrl->SetValue(100, &v1, 1, CTRL_ABSOLUTE);
    AnimateOff();
    c.InvalidateCache();
    GraphHits hits;
    const int request = CURVE_HIT_CLICK | CURVE_HIT_POINTS;
    GetCOREInterface()->SetTime(100, FALSE);
    s.click(s.at(50, 10), hits, request);
    CHECK(curvesOf(hits) == "0");
    GetCOREInterface()->SetTime(0, FALSE);
    s.click(s.at(50, 10), hits, request);
    CHECK(hits.empty());
}
