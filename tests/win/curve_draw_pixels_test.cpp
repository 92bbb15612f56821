// Curve::DrawCurve against the plain sequence of GDI calls its picture is defined by
// (MoveToEx and ten LineTo per segment, one Rectangle per marker), pixel for pixel: the
// batched segments, the polyline through fewer points, and the marker squares written
// straight into a DIB section's pixels, on every kind of surface and clip it meets.
#include "doctest/doctest.h"
#include "tests/win/graph_test_support.h"

#include <cstdlib>
#include <vector>

using namespace graphtest;

namespace {

constexpr DWORD kFlags = CC_DRAWBG | CC_DRAWRULER | CC_SHOWSCROLLBARS;

/// The curve as the plain sequence of GDI calls draws it, for a displayed curve.
void referenceDraw(Curve& c, HDC hdc, const CurveScreen& s) {
    const int n = c.PointCount();
    const CurveSpan span = VisibleCurveSpan(n, c.IsCyclic(), s, Point2(0.0f, 100.0f),
                                            [&](int i) { return c.CachedPosition(0, i).x; });
    if (n == 0 || span.Empty())
        return;
    COLORREF colour;
    int width, style;
    c.GetPen(colour, width, style);
    HPEN pen = CreatePen(style, width, colour);
    HGDIOBJ oldPen = SelectObject(hdc, pen);
    HGDIOBJ oldBrush = SelectObject(hdc, GetStockObject(WHITE_BRUSH));
    const auto px = [&](Point2 p) { return IPoint2(s.Column(p.x), s.Row(p.y)); };
    for (int i = span.first; i < span.last; ++i) {
        const IPoint2 a = px(c.CachedPosition(0, i));
        MoveToEx(hdc, a.x, a.y, nullptr);
        for (int k = 1; k <= 10; ++k) {
            const IPoint2 b = px(c.SegmentPoint(0, i, float(k) * 0.1f));
            LineTo(hdc, b.x, b.y);
        }
    }
    SelectObject(hdc, GetStockObject(NULL_PEN));
    for (int i = span.first; i <= span.last; ++i) {
        const IPoint2 p = px(c.CachedPosition(0, i));
        SelectObject(hdc, GetStockObject(BLACK_BRUSH));
        Rectangle(hdc, WrapAdd(p.x, -3), WrapAdd(p.y, -3), WrapAdd(p.x, 4), WrapAdd(p.y, 4));
        const uint32_t f = c.Knots()[i].flags;
        if (!(f & KNOT_SELECTED))
            continue;
        if (f & KNOT_BEZIER) {
            for (int side = 0; side < 2; ++side) {
                if (!c.IsCyclic() && (side == 0 ? i == 0 : i == n - 1))
                    continue;
                const IPoint2 h = px(side == 0 ? c.CachedInHandle(0, i) : c.CachedOutHandle(0, i));
                Rectangle(hdc, WrapAdd(h.x, -2), WrapAdd(h.y, -2), WrapAdd(h.x, 3),
                          WrapAdd(h.y, 3));
                SelectObject(hdc, GetStockObject(BLACK_PEN));
                MoveToEx(hdc, h.x, h.y, nullptr);
                LineTo(hdc, p.x, p.y);
                SelectObject(hdc, GetStockObject(NULL_PEN));
            }
        }
        SelectObject(hdc, GetStockObject(WHITE_BRUSH));
        Rectangle(hdc, WrapAdd(p.x, -2), WrapAdd(p.y, -2), WrapAdd(p.x, 3), WrapAdd(p.y, 3));
    }
    SelectObject(hdc, oldBrush);
    SelectObject(hdc, oldPen);
    DeleteObject(pen);
}

/// A control with one curve of `knots`, x range 0 .. 100.
struct OneCurve {
    edtest::ControlPtr control = edtest::MakeControl(1, kFlags, nullptr);
    explicit OneCurve(const std::vector<CurveKnot>& knots) {
        control->SetXRange(0.0f, 100.0f, FALSE);
        control->SetYRange(-1000.0f, 1000.0f);
        LoadPoints(curve(), knots);
        curve().SetPen(RGB(200, 30, 30), 1, PS_SOLID);
    }
    Curve& curve() { return *control->GetCurveObject(0); }
};

/// 120 points 0.84 apart: at 2.3 pixels per unit, markers overlap their neighbours, so
/// the order of selected and unselected markers shows; Bezier points with handles among
/// them. Fixed seed.
std::vector<CurveKnot> crowdedPoints() {
    std::vector<CurveKnot> knots;
    srand(1234);
    const int n = 120;
    for (int i = 0; i < n; ++i) {
        const float x = 100.0f * float(i) / float(n - 1);
        const float y = float(rand() % 160 - 80);
        uint32_t f = (rand() % 2) ? KNOT_BEZIER : KNOT_CORNER;
        if (rand() % 3 == 0)
            f |= KNOT_SELECTED;
        const float t = 0.3f * float(rand() % 3);
        knots.push_back(
            Knot(x, y, f, Point2(-t, float(rand() % 20 - 10)), Point2(t, float(rand() % 20 - 10))));
    }
    return knots;
}

CurveScreen screen(RECT rect, float xScale, int xScroll, float yScale) {
    CurveScreen s;
    s.rect = rect;
    s.xScale = xScale;
    s.xScroll = xScroll;
    s.yScale = yScale;
    s.yScroll = 0;
    return s;
}

CurveScreen crowdedScreen() { return screen(RECT{0, 6, 400, 250}, 2.3f, -5, 1.1f); }

/// Draws `c` both ways on two canvases of `kind`, each prepared by `prepare`, and returns
/// how many pixels differ.
template <class Prepare>
int differences(Curve& c, const CurveScreen& s, Canvas::Kind kind, Prepare prepare) {
    Canvas drawn(kind), plain(kind);
    prepare(drawn.dc());
    prepare(plain.dc());
    c.DrawCurve(0, drawn.dc(), s, 0);
    referenceDraw(c, plain.dc(), s);
    return drawn.Differences(plain);
}

int differences(Curve& c, const CurveScreen& s, Canvas::Kind kind = Canvas::TopDown) {
    return differences(c, s, kind, [](HDC) {});
}

} // namespace

TEST_CASE_FIXTURE(edtest::EditorFixture, "the batched drawing gives the pixels of the plain "
                                         "call sequence") {
    OneCurve one(crowdedPoints());
    Curve& c = one.curve();
    CurveScreen s = crowdedScreen();
    for (const int style : {PS_SOLID, PS_DASH, PS_DOT}) {
        for (const int width : {0, 1, 3}) {
            if (style != PS_SOLID && width > 1)
                continue;
            CAPTURE(style);
            CAPTURE(width);
            c.SetPen(RGB(200, 30, 30), width, style);
            CHECK(differences(c, s) == 0);
        }
    }
    // Scrolled so that only part of the curve is visible: the span, not all of it.
    s.xScroll = 150;
    c.SetPen(RGB(200, 30, 30), 1, PS_SOLID);
    CHECK(differences(c, s) == 0);
}

TEST_CASE_FIXTURE(edtest::EditorFixture, "markers written into the pixels match on every "
                                         "surface, clip and origin") {
    OneCurve one(crowdedPoints());
    Curve& c = one.curve();
    const CurveScreen s = crowdedScreen();
    SUBCASE("bottom-up DIB section") { CHECK(differences(c, s, Canvas::BottomUp) == 0); }
    SUBCASE("bitmap compatible with the screen (drawn through GDI)") {
        CHECK(differences(c, s, Canvas::ScreenBitmap) == 0);
    }
    SUBCASE("a clip rectangle through the markers") {
        for (const Canvas::Kind kind : {Canvas::TopDown, Canvas::BottomUp}) {
            CHECK(differences(c, s, kind,
                              [](HDC dc) { IntersectClipRect(dc, 37, 61, 181, 149); }) == 0);
        }
    }
    SUBCASE("a clip of two rectangles (drawn through GDI)") {
        CHECK(differences(c, s, Canvas::TopDown, [](HDC dc) {
                  HRGN a = CreateRectRgn(10, 10, 120, 200);
                  HRGN b = CreateRectRgn(150, 40, 300, 120);
                  CombineRgn(a, a, b, RGN_OR);
                  SelectClipRgn(dc, a);
                  DeleteObject(a);
                  DeleteObject(b);
              }) == 0);
    }
    SUBCASE("an empty clip") {
        CHECK(differences(c, s, Canvas::TopDown,
                          [](HDC dc) { IntersectClipRect(dc, 50, 50, 50, 90); }) == 0);
    }
    SUBCASE("viewport and window origins") {
        CHECK(differences(c, s, Canvas::TopDown, [](HDC dc) {
                  SetViewportOrgEx(dc, 23, -17, nullptr);
                  SetWindowOrgEx(dc, -4, 9, nullptr);
                  IntersectClipRect(dc, 0, 0, 300, 200);
              }) == 0);
    }
    SUBCASE("a mapping mode other than the plain one (drawn through GDI)") {
        CHECK(differences(c, s, Canvas::TopDown, [](HDC dc) {
                  SetMapMode(dc, MM_ANISOTROPIC);
                  SetWindowExtEx(dc, 3, 3, nullptr);
                  SetViewportExtEx(dc, 2, 2, nullptr);
              }) == 0);
    }
}

TEST_CASE_FIXTURE(edtest::EditorFixture, "markers hanging over the edges of the bitmap are "
                                         "cut as GDI cuts them") {
    // Points on all four edges and corners of the 420 x 260 canvas, selected Bezier
    // points among them, whose handles lie outside it.
    const uint32_t sel = KNOT_SELECTED, bez = KNOT_BEZIER;
    OneCurve one({Knot(0, 0, sel), Knot(1, 118, bez | sel, Point2(-1.0f, 0.0f), Point2(1.0f, 5.0f)),
                  Knot(30, -130, sel), Knot(60, 131, KNOT_CORNER),
                  Knot(99, -118, bez | sel, Point2(-2.0f, 0.0f), Point2(2.0f, -9.0f)),
                  Knot(100, 2, sel)});
    CurveScreen s = screen(RECT{0, 0, Canvas::kW, Canvas::kH - 1}, 4.2f, 1, 1.0f);
    CHECK(differences(one.curve(), s) == 0);
    CHECK(differences(one.curve(), s, Canvas::BottomUp) == 0);
    // Far beyond any bitmap: what GDI makes of such coordinates, if anything.
    s.yScale = 3.0e7f;
    CHECK(differences(one.curve(), s) == 0);
}

TEST_CASE_FIXTURE(edtest::EditorFixture, "runs along an axis or a diagonal draw as the pieces "
                                         "they join") {
    // At equal scales a straight point-to-point segment at 45 degrees is all diagonal
    // pieces; a steep saw is mostly vertical ones, and a flat curve horizontal ones. The
    // bends between them keep their pieces.
    CurveScreen s = screen(RECT{0, 0, 400, 250}, 2.0f, -10, 2.0f);
    SUBCASE("diagonals") {
        OneCurve one({Knot(0, -50), Knot(50, 0), Knot(70, -20), Knot(100, 10)});
        CHECK(differences(one.curve(), s) == 0);
    }
    SUBCASE("a steep saw") {
        std::vector<CurveKnot> saw;
        for (int i = 0; i <= 60; ++i)
            saw.push_back(Knot(float(i) * 100.0f / 60.0f, (i % 2) ? 55.0f : -48.0f,
                               (i % 3) ? KNOT_CORNER : KNOT_BEZIER, Point2(-0.5f, 9.0f),
                               Point2(0.5f, -9.0f)));
        OneCurve one(saw);
        CHECK(differences(one.curve(), s) == 0);
        s.xScale = 0.7f; // several points a pixel apart: pieces to the same pixel
        CHECK(differences(one.curve(), s) == 0);
    }
    SUBCASE("flat with steps") {
        OneCurve one(
            {Knot(0, 3), Knot(30, 3), Knot(31, 4), Knot(60, 4), Knot(61, 3.5f), Knot(100, 3.5f)});
        CHECK(differences(one.curve(), s) == 0);
    }
}
