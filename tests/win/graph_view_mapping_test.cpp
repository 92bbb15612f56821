// The view's arithmetic (editor/view_mapping.h). Every expected number is worked by hand
// from the formulas in the header; where float or double rounding decides a result, the
// comment says which way and why.
#include "doctest/doctest.h"
#include "editor/view_mapping.h"

#include <cmath>
#include <limits>
#include <string>

using namespace view;

namespace {

std::string gridLabel(double v, double step) {
    char buf[64];
    FormatGridLabel(v, step, step < 1.0, buf, sizeof buf);
    return buf;
}

std::string rulerLabel(float x) {
    char buf[64];
    FormatRulerLabel(x, buf, sizeof buf);
    return buf;
}

/// usable (32, 6, 294, 194): Hm + 1 = 189, (Hm + 1) / 2 = 94.
ViewMapping mapping(float xs, float ys, int x0, int y0) {
    ViewMapping m;
    m.usable = RECT{32, 6, 294, 194};
    m.xs = xs;
    m.ys = ys;
    m.x0 = x0;
    m.y0 = y0;
    return m;
}

} // namespace

TEST_SUITE("view arithmetic") {
    TEST_CASE("scale clamps: above the top the top, not at least the bottom the bottom") {
        CHECK(ClampXScale(2e6f) == 1000000.0f);
        CHECK(ClampXScale(0.5f) == 0.5f);
        CHECK(ClampXScale(0.0f) == 0.00002f);
        CHECK(ClampXScale(-3.0f) == 0.00002f);
        CHECK(ClampXScale(std::numeric_limits<float>::quiet_NaN()) == 0.00002f);
        CHECK(ClampXScale(std::numeric_limits<float>::infinity()) == 1000000.0f);
        CHECK(ClampYScale(2e8f) == 100000000.0f);
        CHECK(ClampYScale(std::numeric_limits<float>::quiet_NaN()) == 0.0000001f);
        CHECK(ClampYScale(0.003f) == 0.003f);
    }

    TEST_CASE("horizontal offset: X0 = 2 hpos - 7, hpos = (X0 + 7) / 2 toward zero") {
        CHECK(X0FromHpos(0) == -7);
        CHECK(X0FromHpos(-17) == -41);
        CHECK(HposFromX0(-41) == -17);
        CHECK(HposFromX0(-8) == 0); // -1 / 2 is 0: the offset holds half pixels
        CHECK(HposFromX0(-10) == -1);
        CHECK(HposFromX0(10) == 8);
    }

    TEST_CASE("vertical offset: hundredths of Hm + 1, bit 0 cleared") {
        CHECK(Y0FromVpos(0, 101) == 0);
        CHECK(Y0FromVpos(7, 101) == 6);   // 7.07 -> 7 -> 6
        CHECK(Y0FromVpos(-7, 101) == -8); // -7.07 -> -7 -> bit 0 cleared: -8
        CHECK(Y0FromVpos(50, 201) == 100);
        // 58 * 0.01 is 0.57999999999999996 in double: 100 times that truncates to 57.
        CHECK(Y0FromVpos(58, 100) == 56);
        CHECK(VposFromY0(6, 101) == 5);   // 600 / 101
        CHECK(VposFromY0(-8, 101) == -7); // toward zero
        CHECK(VposFromY0(5, 0) == 0);     // no height, no percentage
    }

    TEST_CASE("usable area: inset for the value labels with flag 2 only") {
        const RECT client{0, 0, 300, 200};
        const RECT inset = UsableArea(client, 0x2);
        CHECK(inset.left == 32);
        CHECK(inset.top == 6);
        CHECK(inset.right == 294);
        CHECK(inset.bottom == 194);
        const RECT plain = UsableArea(client, 0x3FFFF & ~0x2u);
        CHECK(plain.left == 0);
        CHECK(plain.right == 300);
        CHECK(plain.bottom == 200);
    }

    TEST_CASE("the mapping and its inverse") {
        const ViewMapping m = mapping(2.0f, 1.0f, -41, 0);
        CHECK(m.Height() == 189);
        CHECK(m.Column(0.0f) == 41);
        CHECK(m.Column(50.0f) == 141);
        CHECK(m.Row(0.0f) == 98); // 94 + 4
        CHECK(m.Row(60.0f) == 38);
        CHECK(m.Row(-30.0f) == 128);
        CHECK(m.XAt(141) == 50.0f);
        CHECK(m.YAt(38) == 60.0f);
        // The curves draw with the same numbers.
        const CurveScreen s = m.Screen(1.0f);
        CHECK(s.Column(50.0f) == m.Column(50.0f));
        CHECK(s.Row(60.0f) == m.Row(60.0f));
        CHECK(s.Row(-30.0f) == m.Row(-30.0f));
    }

    TEST_CASE("horizontal scroll range") {
        // span = 200 - 300 = -100; lo = (0 - 200) / 2 = -100; hi = lo + 308 / 2 = 54.
        CHECK(HorizontalRange(Point2(0.0f, 100.0f), 2.0f, 300) == ScrollRange{-100, 54});
        // span = trunc(5.52) - 400 = -395; lo = (1 - 200) / 2 = -99; hi = -99 + 13 / 2.
        CHECK(HorizontalRange(Point2(10.0f, 50.0f), 0.138f, 400) == ScrollRange{-99, -93});
        // span + 408 = 0: hi = lo.
        CHECK(HorizontalRange(Point2(0.0f, 100.0f), 1.0f, 508) == ScrollRange{-100, -100});
        // Expand only: the union of both.
        CHECK(Union(ScrollRange{-50, 10}, ScrollRange{-100, 5}) == ScrollRange{-100, 10});
    }

    TEST_CASE("vertical scroll range") {
        // ys * hi / h = 60 / 101 -> 0, ys * lo / h = -20 / 101 -> 0.
        CHECK(VerticalRange(-10.0f, 30.0f, 2.0f, 101) == ScrollRange{-100, 100});
        // 600 / 101 = 5.94 -> 5; -200 / 101 = -1.98 -> -1.
        CHECK(VerticalRange(-10.0f, 30.0f, 20.0f, 101) == ScrollRange{-600, 200});
        CHECK(VerticalRange(0.0f, 0.0f, 20.0f, 101) == ScrollRange{-100, 100});
    }

    TEST_CASE("scroll-bar codes: only SB_THUMBTRACK follows the thumb") {
        const ScrollRange r{0, 100};
        CHECK(ScrolledPosition(5, kThumbPosition, 40, r) == 5);
        CHECK(ScrolledPosition(5, kThumbTrack, 40, r) == 40);
        CHECK(ScrolledPosition(5, kLineUp, 0, r) == 4);
        CHECK(ScrolledPosition(5, kLineDown, 0, r) == 6);
        CHECK(ScrolledPosition(5, kPageUp, 0, r) == 0);
        CHECK(ScrolledPosition(95, kPageDown, 0, r) == 100);
        CHECK(ScrolledPosition(5, 8 /* SB_ENDSCROLL */, 40, r) == 5);
        CHECK(ScrolledPosition(5, kThumbTrack, 400, r) == 100);
        CHECK(ScrolledPosition(5, kLineDown, 0, ScrollRange{10, 3}) == 10);
    }

    TEST_CASE("extents") {
        // (334 - 34) / (100 * 1.1) = 2.7272...
        CHECK(HorizontalExtentsScale(Point2(0.0f, 100.0f), 334) == doctest::Approx(300.0 / 110.0));
        // An empty range: infinity becomes the top, 0 / 0 the bottom.
        CHECK(HorizontalExtentsScale(Point2(5.0f, 5.0f), 334) == 1000000.0f);
        CHECK(HorizontalExtentsScale(Point2(5.0f, 5.0f), 34) == 0.00002f);
        // centre trunc(50 * 2.7272) = 136; (136 - 335 / 2 - 6) / 2 = -37 / 2 = -18.
        CHECK(CentredHpos(Point2(0.0f, 100.0f), float(300.0 / 110.0), 334) == -18);
        // d = 40 * 1.4 = 56: 281 / 56.
        CHECK(VerticalExtentsScale(-10.0f, 30.0f, 281) == doctest::Approx(281.0 / 56.0));
        // Flat curves: the usable height plus one.
        CHECK(VerticalExtentsScale(3.0f, 3.0f, 281) == 281.0f);
        CHECK(VerticalExtentsScale(3.0f, 3.0005f, 281) == 281.0f); // d = 0.0007
        // c = trunc(10 * 5.0178) = 50; -5000 / 281 = -17.8 -> -17.
        CHECK(CentredVpos(-10.0f, 30.0f, float(281.0 / 56.0), 281) == -17);
    }

    TEST_CASE("wheel: factor, anchor under the middle, new offsets") {
        const ViewMapping m = mapping(2.0f, 1.0f, -41, 0);
        WheelZoom w = WheelStep(120, m, 300, 200);
        CHECK(w.g == 1.2f);
        CHECK(w.ax == 54.5f); // (150 - 41) / 2
        CHECK(w.ay == -2.0f); // 94 - (100 - 4 + 0)
        CHECK(WheelStep(-120, m, 300, 200).g == 0.8f);
        CHECK(WheelStep(0, m, 300, 200).g == 1.2f); // a zero delta zooms in
        w.ay = 51.0f;
        CHECK(WheelY0(w, 1.2f, 10) == -2); // trunc(51 * -0.2 * 1.2 = -12.24) + 10
        // (2 * -17 - trunc(54.5 * -0.2 * 2.4 = -26.16)) / 2 = (-34 + 26) / 2.
        CHECK(WheelHpos(w, 2.4f, -17) == -4);
    }
}

TEST_SUITE("value grid") {
    TEST_CASE("the major step drops from 1 to 0.1 at y scale 158.12") {
        CHECK(MajorGridStep(158.11f) == 1.0);
        CHECK(MajorGridStep(158.12f) == doctest::Approx(0.1));
        CHECK(MajorGridStep(1.0f) == 100.0);
        CHECK(MajorGridStep(15.0f) == 10.0);
        CHECK(MajorGridStep(20.0f) == 1.0);
        CHECK(MajorGridStep(1600.0f) == doctest::Approx(0.01));
        CHECK(MajorGridStep(1e8f) == doctest::Approx(1e-6));

        // And with it the labels switch from "%d" to "%f" without trailing zeros.
        const ValueGrid coarse = ComputeValueGrid(mapping(2.0f, 158.11f, -41, 0), 0, 200);
        const ValueGrid fine = ComputeValueGrid(mapping(2.0f, 158.12f, -41, 0), 0, 200);
        CHECK_FALSE(coarse.FractionalLabels());
        CHECK(fine.FractionalLabels());
        CHECK(gridLabel(1.0, coarse.step) == "1");
        CHECK(gridLabel(0.3, fine.step) == "0.3");
    }

    TEST_CASE("bottom value, top value and the first divisor 4 pixels apart") {
        // ys 20: step 1. vb = (94 - 196) / 20 - 1 = -6.1, aligned with fmod: -6.
        // vt = (94 + 4) / 20 = 4.9. Rows: 98 + 120 = 218 for -6; divisor 20 (0.05) gives
        // one row, 10 (0.1) two, 5 (0.2) four: minor 0.2.
        const ValueGrid g = ComputeValueGrid(mapping(2.0f, 20.0f, -41, 0), 0, 200);
        CHECK(g.step == 1.0);
        CHECK(g.vb == doctest::Approx(-6.0));
        CHECK(g.vt == doctest::Approx(4.9));
        CHECK(g.minor == doctest::Approx(0.2));
        CHECK(g.GridStep() == doctest::Approx(0.2));
        CHECK(GridRow(mapping(2.0f, 20.0f, -41, 0), g.vb) == 218);
    }

    TEST_CASE("no minor lines when no divisor gives 4 pixels on screen") {
        // Scrolled to values near 2^25, where floats are 4 apart: every minor step lands
        // on the row of vb itself. Y0 = -671088762 makes vb exactly 33554432.
        const ViewMapping m = mapping(2.0f, 20.0f, -41, -671088762);
        const ValueGrid g = ComputeValueGrid(m, 0, 200);
        CHECK(g.vb == 33554432.0);
        CHECK(g.minor == 0.0);
        CHECK(g.step == 1.0);
        CHECK(g.GridStep() == 1.0);
    }

    TEST_CASE("grid labels") {
        CHECK(gridLabel(0.3, 0.1) == "0.3");
        CHECK(gridLabel(2.0, 0.1) == "2");
        CHECK(gridLabel(-1e-13, 0.1) == "0"); // a sum that missed zero
        CHECK(gridLabel(-0.25, 0.05) == "-0.25");
        CHECK(gridLabel(1000.1, 0.1) == "1000.1");
        CHECK(gridLabel(7.9, 1.0) == "7");
        CHECK(gridLabel(-7.9, 10.0) == "-7");
    }
}

TEST_SUITE("ruler") {
    TEST_CASE("at u = 0.07 labels every 0.5 with ticks every 0.05") {
        const float xs = 60.0f / (5.0f * 0.07f);
        const RulerSteps r = ComputeRulerSteps(xs);
        CHECK(r.u == doctest::Approx(0.07f));
        CHECK(r.fractional);
        CHECK(r.labelStep == 0.5f);
        CHECK(r.tickStep == doctest::Approx(0.05f));
    }

    TEST_CASE("fractional label steps") {
        const auto stepAt = [](float u) { return ComputeRulerSteps(12.0f / u).labelStep; };
        CHECK(stepAt(0.5f) == 2.5f);
        CHECK(stepAt(0.3f) == 2.5f);
        CHECK(stepAt(0.2f) == 1.0f);
        CHECK(stepAt(0.03f) == 0.25f);
        CHECK(stepAt(0.02f) == 0.1f);
    }

    TEST_CASE("whole-number label and tick steps") {
        const auto at = [](float u) { return ComputeRulerSteps(12.0f / u); };
        CHECK_FALSE(at(0.6f).fractional);
        CHECK(at(0.6f).wholeLabelStep == 5);
        CHECK(at(0.6f).wholeTickStep == 1);   // 5 is no multiple of 10: L / 5
        CHECK(at(1.5f).wholeLabelStep == 10); // n = trunc(2.5) = 2
        CHECK(at(1.5f).wholeTickStep == 1);
        CHECK(at(2.2f).wholeLabelStep == 20); // n = 3, odd: 4
        CHECK(at(2.2f).wholeTickStep == 2);
        CHECK(at(4.5f).wholeLabelStep == 30); // n = 5 -> 6
        CHECK(at(4.5f).wholeTickStep == 3);
    }

    TEST_CASE("first ticks") {
        const RulerSteps fine = ComputeRulerSteps(60.0f / (5.0f * 0.07f));
        // x = 100 / 171.43 = 0.5833; minus fmod(0.5833, 0.05) = 0.0333: 0.55.
        CHECK(FirstFractionalTick(fine, 0, 100, 60.0f / (5.0f * 0.07f)) == doctest::Approx(0.55f));
        const RulerSteps whole = ComputeRulerSteps(4.0f);   // u = 3: L 20, T 2
        CHECK(FirstWholeTick(whole, 0, 101, 4.0f) == 24);   // k = 25
        CHECK(FirstWholeTick(whole, 0, -101, 4.0f) == -24); // k = -25, toward zero
        CHECK(IsFractionalLabel(fine, 1.0f));
        CHECK_FALSE(IsFractionalLabel(fine, 1.05f));
        CHECK(IsFractionalLabel(fine, 0.55f + 0.05f * 9.0f));
    }

    TEST_CASE("ruler labels") {
        CHECK(rulerLabel(0.5f) == "0.5");
        CHECK(rulerLabel(1.0f) == "1");
        CHECK(rulerLabel(0.00005f) == "0");
        CHECK(rulerLabel(-0.00005f) == "0");
        CHECK(rulerLabel(-1.25f) == "-1.25");
        CHECK(rulerLabel(12.34567f) == "12.3457");
    }
}
