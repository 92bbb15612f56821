// Curve::HitTestCurve and the screen geometry it shares with drawing (curve_screen.h).
//
// Expected pixels are worked by hand from the mapping
//     column = trunc(xScale * x) - xScroll,  row = h / 2 - trunc(y * yScale) - yScroll + 4
// with the rectangle (0, 0, 200, 100): h = 101, h / 2 = 50, so with scales 2 and 1 and no
// scroll a point (x, y) lies at (2x, 54 - y).
#include "control/curve_control.h"
#include "curve/curve.h"
#include "curve/curve_screen.h"
#include "host/hold.h"

#include <doctest/doctest.h>

#include <limits>
#include <vector>

namespace {

constexpr TimeValue kT = 0;

CurveKnot knot(float x, float y, uint32_t flags = KNOT_TYPE_CORNER, Point2 in = {},
               Point2 out = {}) {
    return CurveKnot(Point2(x, y), in, out, flags);
}

/// One control with x range 0 .. 100 and a wide y range, holding one curve with `knots`.
class OneCurve {
public:
    explicit OneCurve(const std::vector<CurveKnot>& knots, bool cyclic = false) {
        theHold.Reset();
        control_ = new CurveControl;
        control_->SetXRange(0.0f, 100.0f, FALSE);
        control_->SetYRange(-1000.0f, 1000.0f);
        control_->SetCurveCount(1, FALSE);
        curve_ = control_->GetCurveObject(0);
        curve_->SetPointCount(int(knots.size()));
        for (size_t i = 0; i < knots.size(); ++i)
            curve_->Knots()[i] = knots[i];
        if (cyclic)
            curve_->SetCurveFlags(curve_->CurveFlags() | 0x1);
        curve_->InvalidateCache();
    }
    ~OneCurve() {
        theHold.Reset();
        control_->DeleteThis();
    }
    OneCurve(const OneCurve&) = delete;
    OneCurve& operator=(const OneCurve&) = delete;

    Curve& curve() { return *curve_; }
    CurveKnot& point(int i) { return curve_->Knots()[i]; }
    void changed() { curve_->InvalidateCache(); }

private:
    CurveControl* control_;
    Curve* curve_;
};

CurveScreen screen(float xScale = 2.0f, int xScroll = 0, float yScale = 1.0f, int yScroll = 0) {
    CurveScreen s;
    s.rect = RECT{0, 0, 200, 100};
    s.xScale = xScale;
    s.xScroll = xScroll;
    s.yScale = yScale;
    s.yScroll = yScroll;
    return s;
}

struct Result {
    int bits = 0;
    std::vector<std::pair<int, int>> hits;
};

Result hitTest(Curve& c, const CurveScreen& s, IPoint2 mouse, int request) {
    Tab<CurveHit> tab;
    Result r;
    r.bits = c.HitTestCurve(kT, s, CurveClickBox(mouse), request | CURVE_HIT_CLICK, tab);
    for (int i = 0; i < tab.Count(); ++i)
        r.hits.emplace_back(tab[i].index, tab[i].part);
    return r;
}

using Hits = std::vector<std::pair<int, int>>;

/// P0 (0, 20) corner; P1 (50, 40) selected Bezier with handles 10 to each side; P2 (100, 0).
/// Pixels: P0 (0, 34), P1 (100, 14), in-handle (80, 14), out-handle (120, 14), P2 (200, 54).
std::vector<CurveKnot> threePoints(bool selectMiddle = true) {
    return {knot(0, 20, KNOT_CORNER | KNOT_ENDPOINT),
            knot(50, 40, KNOT_BEZIER | (selectMiddle ? KNOT_SELECTED : 0u), Point2(-10.0f, 0.0f),
                 Point2(10.0f, 0.0f)),
            knot(100, 0, KNOT_CORNER | KNOT_ENDPOINT)};
}

} // namespace

TEST_SUITE("curve screen geometry") {
    TEST_CASE("the mapping truncates the scaled value and adds 4 below the half height") {
        CurveScreen s = screen(2.5f, 3, 10.0f, -2);
        CHECK(s.Height() == 101);
        CHECK(s.Column(1.3f) == 0);    // trunc(3.25) - 3
        CHECK(s.Row(1.05f) == 46);     // 50 - trunc(10.5) + 2 + 4
        CHECK(s.Row(-1.05f) == 66);    // 50 - trunc(-10.5) + 2 + 4: toward zero
        s.rect = RECT{10, 30, 60, 20}; // upside down: |bottom - top| + 1
        CHECK(s.Height() == 11);
    }

    TEST_CASE("conversions of absurd values stay defined") {
        CHECK(TruncToInt(1e30) == INT_MIN);
        CHECK(TruncToInt(-1e30) == INT_MIN);
        CHECK(TruncToInt(std::numeric_limits<double>::quiet_NaN()) == INT_MIN);
        CHECK(TruncToInt(-2.9) == -2);
        CHECK(WrapSub(INT_MIN, 1) == INT_MAX);
    }

    TEST_CASE("click and region boxes") {
        const Box2 click = CurveClickBox(IPoint2(10, 20));
        CHECK(click.left == 6);
        CHECK(click.top == 16);
        CHECK(click.right == 14);
        CHECK(click.bottom == 24);
        // Dragged up and left: normalised, then 4 pixels wider on every side.
        const Box2 region = CurveRegionBox(IPoint2(50, 40), IPoint2(30, 10));
        CHECK(region.left == 26);
        CHECK(region.top == 6);
        CHECK(region.right == 54);
        CHECK(region.bottom == 44);
    }

    TEST_CASE("a piece hits a box it crosses, edges included") {
        const Box2 box(10, 10, 20, 20);
        CHECK(CurvePieceHitsBox(IPoint2(0, 15), IPoint2(30, 15), box)); // through
        CHECK(CurvePieceHitsBox(IPoint2(30, 15), IPoint2(0, 15), box)); // either order
        CHECK(CurvePieceHitsBox(IPoint2(15, 0), IPoint2(15, 30), box)); // vertical
        CHECK(CurvePieceHitsBox(IPoint2(0, 20), IPoint2(30, 20), box)); // on the edge
        CHECK_FALSE(CurvePieceHitsBox(IPoint2(0, 21), IPoint2(30, 21), box));
        CHECK(CurvePieceHitsBox(IPoint2(14, 0), IPoint2(16, 30), box));  // steep
        CHECK(CurvePieceHitsBox(IPoint2(12, 12), IPoint2(13, 13), box)); // inside
        // Bounding boxes overlap but the line passes the corner outside.
        CHECK_FALSE(CurvePieceHitsBox(IPoint2(0, 15), IPoint2(15, 0), box));
        CHECK(CurvePieceHitsBox(IPoint2(0, 20), IPoint2(20, 0), box)); // touches (10, 10)
        // Far away, in any direction.
        CHECK_FALSE(CurvePieceHitsBox(IPoint2(40, 0), IPoint2(50, 30), box));
        CHECK_FALSE(CurvePieceHitsBox(IPoint2(INT_MIN, 0), IPoint2(INT_MIN, 5), box));
    }

    TEST_CASE("visible span: one point beyond each edge of the window") {
        // x = 0, 10, .. 100 at scale 2 with the window 0 .. 200 scrolled by 60: x 30 .. 130,
        // clamped to 30 .. 100.
        const std::vector<float> xs = {0, 10, 20, 30, 40, 50, 60, 70, 80, 90, 100};
        const auto xAt = [&](int i) { return xs[size_t(i)]; };
        const int n = int(xs.size());
        CurveSpan span = VisibleCurveSpan(n, false, screen(2, 60), Point2(0.0f, 100.0f), xAt);
        CHECK(span.first == 2); // smallest i >= 1 with x >= 30 is 3
        CHECK(span.last == 10); // largest i <= 9 with x <= 100 is 9
        span =
            VisibleCurveSpan(n, false, screen(2, -150), Point2(0.0f, 100.0f), xAt); // x -75 .. 25
        CHECK(span.first == 0);
        CHECK(span.last == 3);
        // Cyclic: everything, once the window meets the range.
        span = VisibleCurveSpan(n, true, screen(2, 60), Point2(0.0f, 100.0f), xAt);
        CHECK(span.first == 0);
        CHECK(span.last == 10);
        // Wholly outside the x range: nothing, cyclic or not.
        CHECK(VisibleCurveSpan(n, false, screen(2, 201), Point2(0.0f, 100.0f), xAt).Empty());
        CHECK(VisibleCurveSpan(n, true, screen(2, -201), Point2(0.0f, 100.0f), xAt).Empty());
        // Points all left of the window: "none" falls back to the first point.
        const std::vector<float> left = {0, 1, 2};
        span = VisibleCurveSpan(3, false, screen(2, 100), Point2(0.0f, 100.0f),
                                [&](int i) { return left[size_t(i)]; });
        CHECK(span.first == 0);
        CHECK(span.last == 2);
    }
}

TEST_SUITE("Curve::HitTestCurve") {
    TEST_CASE("a click within 4 pixels of a point hits it, 5 pixels misses") {
        OneCurve g(threePoints());
        const CurveScreen s = screen();
        const int req = CURVE_HIT_POINTS;
        for (const IPoint2 d : {IPoint2(4, 0), IPoint2(-4, 0), IPoint2(0, 4), IPoint2(0, -4),
                                IPoint2(4, 4), IPoint2(-4, -4)}) {
            CAPTURE(d.x);
            CAPTURE(d.y);
            const Result r = hitTest(g.curve(), s, IPoint2(100 + d.x, 14 + d.y), req);
            CHECK(r.bits == CURVE_HIT_RESULT_POINT);
            CHECK(r.hits == Hits{{1, KNOT_PART_POINT}});
        }
        for (const IPoint2 d : {IPoint2(5, 0), IPoint2(-5, 0), IPoint2(0, 5), IPoint2(0, -5)})
            CHECK(hitTest(g.curve(), s, IPoint2(100 + d.x, 14 + d.y), req).bits == 0);
    }

    TEST_CASE("handles: within 4 pixels, only for selected Bezier points") {
        OneCurve g(threePoints());
        const CurveScreen s = screen();
        Result r = hitTest(g.curve(), s, IPoint2(84, 10), CURVE_HIT_HANDLES);
        CHECK(r.bits == CURVE_HIT_RESULT_HANDLE);
        CHECK(r.hits == Hits{{1, KNOT_PART_IN_HANDLE}});
        r = hitTest(g.curve(), s, IPoint2(116, 18), CURVE_HIT_HANDLES);
        CHECK(r.hits == Hits{{1, KNOT_PART_OUT_HANDLE}});
        CHECK(hitTest(g.curve(), s, IPoint2(125, 14), CURVE_HIT_HANDLES).bits == 0);
        // Unselected: not hittable.
        g.point(1).flags &= ~KNOT_SELECTED;
        CHECK(hitTest(g.curve(), s, IPoint2(80, 14), CURVE_HIT_HANDLES).bits == 0);
        // Selected corner (no KNOT_BEZIER): no handles either.
        g.point(1).flags = KNOT_CORNER | KNOT_SELECTED;
        CHECK(hitTest(g.curve(), s, IPoint2(80, 14), CURVE_HIT_HANDLES).bits == 0);
        // Without the request bit nothing is tested.
        g.point(1).flags = KNOT_BEZIER | KNOT_SELECTED;
        CHECK(hitTest(g.curve(), s, IPoint2(80, 14), CURVE_HIT_POINTS).bits == 0);
    }

    TEST_CASE("the outer handles of the end points of a curve that is not cyclic") {
        // Both end points selected Bezier with handles 5 each side: the first point's
        // in-handle (-5, 20) at (-10, 34) and the last point's out-handle (105, 0) at
        // (210, 54) are never hit; their inner handles are.
        std::vector<CurveKnot> k = threePoints(false);
        k[0] = knot(0, 20, KNOT_BEZIER | KNOT_SELECTED | KNOT_ENDPOINT, Point2(-5.0f, 0.0f),
                    Point2(5.0f, 0.0f));
        k[2] = knot(100, 0, KNOT_BEZIER | KNOT_SELECTED | KNOT_ENDPOINT, Point2(-5.0f, 0.0f),
                    Point2(5.0f, 0.0f));
        OneCurve g(k);
        const CurveScreen s = screen();
        CHECK(hitTest(g.curve(), s, IPoint2(-10, 34), CURVE_HIT_HANDLES).bits == 0);
        CHECK(hitTest(g.curve(), s, IPoint2(210, 54), CURVE_HIT_HANDLES).bits == 0);
        CHECK(hitTest(g.curve(), s, IPoint2(10, 34), CURVE_HIT_HANDLES).hits ==
              Hits{{0, KNOT_PART_OUT_HANDLE}});
        CHECK(hitTest(g.curve(), s, IPoint2(190, 54), CURVE_HIT_HANDLES).hits ==
              Hits{{2, KNOT_PART_IN_HANDLE}});

        // A cyclic curve has no ends: all four are handles.
        OneCurve c(k, true);
        CHECK(hitTest(c.curve(), s, IPoint2(-10, 34), CURVE_HIT_HANDLES).hits ==
              Hits{{0, KNOT_PART_IN_HANDLE}});
        CHECK(hitTest(c.curve(), s, IPoint2(210, 54), CURVE_HIT_HANDLES).hits ==
              Hits{{2, KNOT_PART_OUT_HANDLE}});
    }

    TEST_CASE("the handle of an end point pinned away from its stored x is hit where a drag "
              "takes it from") {
        // The last point stored at x 80 with in-tangent (-5, 0), pinned to x 100: its
        // in-handle is (95, 0), at (190, 54), not at the stored (75, 0), at (150, 54).
        std::vector<CurveKnot> k = threePoints(false);
        k[2] = knot(80, 0, KNOT_BEZIER | KNOT_SELECTED | KNOT_ENDPOINT, Point2(-5.0f, 0.0f));
        OneCurve g(k);
        const CurveScreen s = screen();
        REQUIRE(g.curve().CachedInHandle(kT, 2) == Point2(95.0f, 0.0f));
        CHECK(hitTest(g.curve(), s, IPoint2(190, 54), CURVE_HIT_HANDLES).hits ==
              Hits{{2, KNOT_PART_IN_HANDLE}});
        CHECK(hitTest(g.curve(), s, IPoint2(150, 54), CURVE_HIT_HANDLES).bits == 0);
    }

    TEST_CASE("the curve is hit within 4 pixels of its pieces") {
        // A flat curve at y = 0: row 54 from column 0 to 200.
        OneCurve g({knot(0, 0, KNOT_CORNER | KNOT_ENDPOINT), knot(100, 0, KNOT_CORNER)});
        const CurveScreen s = screen();
        Result r = hitTest(g.curve(), s, IPoint2(77, 50), CURVE_HIT_CURVE);
        CHECK(r.bits == CURVE_HIT_RESULT_CURVE);
        CHECK(r.hits == Hits{{0, KNOT_PART_POINT}});
        CHECK(hitTest(g.curve(), s, IPoint2(77, 58), CURVE_HIT_CURVE).bits ==
              CURVE_HIT_RESULT_CURVE);
        CHECK(hitTest(g.curve(), s, IPoint2(77, 49), CURVE_HIT_CURVE).bits == 0);
        CHECK(hitTest(g.curve(), s, IPoint2(77, 59), CURVE_HIT_CURVE).bits == 0);
        // Segment indices: the second segment of the three-point curve, P1 .. P2, ends at
        // (200, 54); a click there is on no other segment.
        OneCurve three(threePoints());
        CHECK(hitTest(three.curve(), s, IPoint2(198, 53), CURVE_HIT_CURVE).hits ==
              Hits{{1, KNOT_PART_POINT}});
    }

    TEST_CASE("stop at first reports the curve before the point it lies on") {
        OneCurve g(threePoints());
        const CurveScreen s = screen();
        const int all = CURVE_HIT_CURVE | CURVE_HIT_POINTS | CURVE_HIT_HANDLES;
        Result r = hitTest(g.curve(), s, IPoint2(100, 14), all | CURVE_HIT_STOP_FIRST);
        CHECK(r.bits == CURVE_HIT_RESULT_CURVE);
        CHECK(r.hits.size() == 1);
        CHECK(r.hits[0].second == KNOT_PART_POINT);
        r = hitTest(g.curve(), s, IPoint2(100, 14), all | CURVE_HIT_STOP_IN_CURVE);
        CHECK(r.bits == CURVE_HIT_RESULT_CURVE);
        CHECK(r.hits.size() == 1);
        // Without stopping, every test runs: both segments meet at P1, then the point.
        r = hitTest(g.curve(), s, IPoint2(100, 14), all);
        CHECK(r.bits == (CURVE_HIT_RESULT_CURVE | CURVE_HIT_RESULT_POINT));
        CHECK(r.hits == Hits{{0, 0}, {1, 0}, {1, 0}});
    }

    TEST_CASE("points are skipped by selection as the request says") {
        OneCurve g(threePoints()); // P1 selected, P0 not
        const CurveScreen s = screen();
        CHECK(hitTest(g.curve(), s, IPoint2(100, 14), CURVE_HIT_POINTS | CURVE_HIT_SKIP_SELECTED)
                  .bits == 0);
        CHECK(hitTest(g.curve(), s, IPoint2(100, 14), CURVE_HIT_POINTS | CURVE_HIT_SKIP_UNSELECTED)
                  .bits == CURVE_HIT_RESULT_POINT);
        CHECK(hitTest(g.curve(), s, IPoint2(0, 34), CURVE_HIT_POINTS | CURVE_HIT_SKIP_UNSELECTED)
                  .bits == 0);
        CHECK(hitTest(g.curve(), s, IPoint2(0, 34), CURVE_HIT_POINTS | CURVE_HIT_SKIP_SELECTED)
                  .hits == Hits{{0, 0}});
    }

    TEST_CASE("a region reports every point inside it, in order") {
        OneCurve g(threePoints());
        Tab<CurveHit> tab;
        const int r =
            g.curve().HitTestCurve(kT, screen(), CurveRegionBox(IPoint2(104, 60), IPoint2(-4, 0)),
                                   CURVE_HIT_POINTS | CURVE_HIT_REGION, tab);
        CHECK(r == CURVE_HIT_RESULT_POINT);
        REQUIRE(tab.Count() == 2);
        CHECK(tab[0].index == 0);
        CHECK(tab[1].index == 1);
    }

    TEST_CASE("points are tested in the visible span only; handles everywhere") {
        // x = 0 .. 100 in steps of 1 at scale 10 scrolled by 300: the window shows x 30
        // to 50, so points 29 .. 51 are tested. Point 10 lies at column -200.
        std::vector<CurveKnot> k;
        for (int i = 0; i <= 100; ++i)
            k.push_back(knot(float(i), 0, KNOT_CORNER));
        k[10] = knot(10, 0, KNOT_BEZIER | KNOT_SELECTED, Point2(-0.5f, 0.0f), Point2(0.5f, 0.0f));
        OneCurve g(k);
        const CurveScreen s = screen(10, 300);
        CHECK(hitTest(g.curve(), s, IPoint2(-200, 54), CURVE_HIT_POINTS).bits == 0);
        CHECK(hitTest(g.curve(), s, IPoint2(-10, 54), CURVE_HIT_POINTS).hits == Hits{{29, 0}});
        CHECK(hitTest(g.curve(), s, IPoint2(210, 54), CURVE_HIT_POINTS).hits == Hits{{51, 0}});
        CHECK(hitTest(g.curve(), s, IPoint2(220, 54), CURVE_HIT_POINTS).bits == 0);
        // The out-handle of point 10 at x 10.5: column -195.
        CHECK(hitTest(g.curve(), s, IPoint2(-195, 54), CURVE_HIT_HANDLES).hits ==
              Hits{{10, KNOT_PART_OUT_HANDLE}});
    }

    TEST_CASE("nothing is hit outside the x range or on a curve without points") {
        OneCurve g(threePoints());
        // Scrolled so that the window shows x 101 .. 201: wholly right of the range. The
        // handle and the point at column 100 - 202 would otherwise be in the box.
        const CurveScreen s = screen(2, 202);
        const int all = CURVE_HIT_CURVE | CURVE_HIT_POINTS | CURVE_HIT_HANDLES;
        CHECK(hitTest(g.curve(), s, IPoint2(-102, 14), all).bits == 0);
        CHECK(hitTest(g.curve(), screen(2, 0), IPoint2(100, 14), all).bits != 0);

        g.curve().SetPointCount(0);
        Tab<CurveHit> tab;
        CHECK(g.curve().HitTestCurve(kT, screen(), CurveClickBox(IPoint2(100, 14)), all, tab) == 0);
        CHECK(tab.Count() == 0);
    }

    TEST_CASE("hit pixels follow the drawn pieces of a Bezier segment") {
        // The midpoint of segment 0 of the three-point curve at u = 0.5 (a piece end):
        // x = 0.125*0 + 0.375*0 + 0.375*40 + 0.125*50 = 21.25 -> column 42; y = 0.125*20 +
        // 0.375*20 + 0.375*40 + 0.125*40 = 30 -> row 24.
        OneCurve g(threePoints());
        const Point2 mid = g.curve().SegmentPoint(kT, 0, 0.5f);
        CHECK(mid.x == doctest::Approx(21.25f));
        CHECK(mid.y == doctest::Approx(30.0f));
        CHECK(hitTest(g.curve(), screen(), IPoint2(42, 24), CURVE_HIT_CURVE).hits == Hits{{0, 0}});
        CHECK(hitTest(g.curve(), screen(), IPoint2(42, 34), CURVE_HIT_CURVE).bits == 0);
    }
}
