// The colour manager, grey brushes, the user-interface font, Rect3D and XORDottedRect.

#include "host/colorman.h"
#include "host/gdi_tracking.h"
#include "win/host_win_fixture.h"

#include <doctest/doctest.h>

#include <string>

using namespace hostwin_test;

namespace {

COLORREF BrushColor(HBRUSH brush) {
    LOGBRUSH lb = {};
    GetObjectA(brush, sizeof lb, &lb);
    return lb.lbColor;
}

// A memory DC with a white 40 x 30 bitmap.
struct Canvas {
    MemoryDC dc{CreateCompatibleDC(nullptr)};
    GdiBitmap bitmap;
    HGDIOBJ old = nullptr;
    Canvas() {
        WindowDC screen(nullptr);
        bitmap.reset(CreateCompatibleBitmap(screen.get(), 40, 30));
        old = SelectObject(dc.get(), bitmap.get());
        RECT all = {0, 0, 40, 30};
        FillRect(dc.get(), &all, static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH)));
    }
    ~Canvas() { SelectObject(dc.get(), old); }
    COLORREF at(int x, int y) const { return GetPixel(dc.get(), x, y); }
};

} // namespace

TEST_CASE("the colours the editor uses are distinct theme colours with brushes") {
    IColorManager* cm = ColorMan();
    REQUIRE(cm != nullptr);
    CHECK(cm == ColorMan());
    const COLORREF highlight = cm->GetColor(4), shade = cm->GetColor(15), line = cm->GetColor(16);
    CHECK(highlight == cm->GetColor(kColorActiveCommand));
    CHECK(shade == cm->GetColor(kColorViewShade));
    CHECK(line == cm->GetColor(kColorViewLine));
    // Faint lines on the light grey must show, and the strong ones more so.
    CHECK(shade != cm->GetColor(kColorLightGrey));
    CHECK(GetGValue(line) < GetGValue(shade));
    CHECK(GetGValue(shade) < GetGValue(cm->GetColor(kColorLightGrey)));
    CHECK(BrushColor(cm->GetBrush(16)) == line);
    CHECK(cm->GetBrush(16) == cm->GetBrush(16)); // the same brush each time

    CHECK(BrushColor(GetDarkGreyBrush()) == cm->GetColor(kColorDarkGrey));
    CHECK(BrushColor(GetLightGreyBrush()) == cm->GetColor(kColorLightGrey));
    CHECK(GetGValue(cm->GetColor(kColorDarkGrey)) < GetGValue(cm->GetColor(kColorLightGrey)));

    // Unknown ids answer the background.
    CHECK(cm->GetColor(-1) == cm->GetColor(kColorBackground));
    CHECK(cm->GetColor(kColorCount) == cm->GetColor(kColorBackground));
    CHECK(cm->GetBrush(1000) == cm->GetBrush(kColorBackground));
}

TEST_CASE("changing a colour changes its brush; ResetDefaults puts everything back") {
    IColorManager* cm = ColorMan();
    const COLORREF before = cm->GetColor(kColorViewLine);
    cm->SetColor(kColorViewLine, RGB(1, 2, 3));
    CHECK(cm->GetColor(kColorViewLine) == RGB(1, 2, 3));
    CHECK(BrushColor(cm->GetBrush(kColorViewLine)) == RGB(1, 2, 3));
    cm->SetColor(99, RGB(9, 9, 9)); // ignored
    cm->ResetDefaults();
    CHECK(cm->GetColor(kColorViewLine) == before);
    CHECK(BrushColor(cm->GetBrush(kColorViewLine)) == before);
}

TEST_CASE("the user-interface font is a small sans-serif face that stays the same") {
    HFONT font = GetUIFont();
    REQUIRE(font != nullptr);
    CHECK(GetUIFont() == font);
    LOGFONTA lf = {};
    REQUIRE(GetObjectA(font, sizeof lf, &lf) == sizeof lf);
    CHECK(lf.lfHeight == -11);
    CHECK(std::string(lf.lfFaceName) == "Tahoma");
}

TEST_CASE("Rect3D draws a sunken or raised one-pixel frame and leaves the inside alone") {
    const COLORREF dark = ColorMan()->GetColor(kColorShadow);
    const COLORREF light = ColorMan()->GetColor(kColorHilight3D);
    {
        Canvas c;
        Rect3D(c.dc.get(), RECT{5, 5, 25, 20}, TRUE);
        CHECK(c.at(10, 5) == dark);   // top
        CHECK(c.at(5, 10) == dark);   // left
        CHECK(c.at(10, 19) == light); // bottom (right/bottom exclusive)
        CHECK(c.at(24, 10) == light); // right
        CHECK(c.at(10, 10) == RGB(255, 255, 255));
        CHECK(c.at(10, 20) == RGB(255, 255, 255));
        CHECK(c.at(25, 10) == RGB(255, 255, 255));
    }
    {
        Canvas c;
        Rect3D(c.dc.get(), RECT{5, 5, 25, 20}, FALSE);
        CHECK(c.at(10, 5) == light);
        CHECK(c.at(5, 10) == light);
        CHECK(c.at(10, 19) == dark);
        CHECK(c.at(24, 10) == dark);
    }
    {
        Canvas c;
        Rect3D(c.dc.get(), RECT{5, 5, 5, 20}, TRUE); // empty: nothing
        CHECK(c.at(5, 10) == RGB(255, 255, 255));
        Rect3D(nullptr, RECT{0, 0, 1, 1}, TRUE);
    }
}

TEST_CASE("XORDottedRect inverts a dotted frame that a second call erases") {
    ParentWindow parent(300, 200);
    HWND view = CreateWindowExA(0, "STATIC", "", WS_CHILD | WS_VISIBLE, 0, 0, 100, 80,
                                parent.hwnd(), nullptr, GetModuleHandleA(nullptr), nullptr);
    auto whiten = [&] {
        WindowDC dc(view);
        RECT all = {0, 0, 100, 80};
        FillRect(dc.get(), &all, static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH)));
    };
    auto changedOnFrame = [&](int l, int t, int r, int b, int& inside) {
        WindowDC dc(view);
        int n = 0;
        inside = 0;
        for (int y = 0; y < 80; ++y)
            for (int x = 0; x < 100; ++x) {
                bool onFrame = (x == l || x == r) && y >= t && y <= b;
                onFrame = onFrame || ((y == t || y == b) && x >= l && x <= r);
                if (GetPixel(dc.get(), x, y) == RGB(255, 255, 255))
                    continue;
                if (onFrame)
                    ++n;
                else
                    ++inside;
            }
        return n;
    };
    whiten();
    // Corners given in either order: the frame runs from (10, 8) to (60, 40) inclusive.
    XORDottedRect(view, IPoint2(60, 40), IPoint2(10, 8));
    int stray = 0;
    int dots = changedOnFrame(10, 8, 60, 40, stray);
    CHECK(dots > 40);  // about every other pixel of the 164 on the frame
    CHECK(dots < 164); // dotted, not solid
    CHECK(stray == 0);
    XORDottedRect(view, IPoint2(10, 8), IPoint2(60, 40));
    CHECK(changedOnFrame(10, 8, 60, 40, stray) == 0);
    CHECK(stray == 0);

    XORDottedRect(view, IPoint2(10, 8), IPoint2(60, 40), 1); // solid
    CHECK(changedOnFrame(10, 8, 60, 40, stray) == 2 * 51 + 2 * 31);
    CHECK(stray == 0);
    XORDottedRect(view, IPoint2(10, 8), IPoint2(60, 40), 1);
    CHECK(changedOnFrame(10, 8, 60, 40, stray) == 0);

    XORDottedRect(nullptr, IPoint2(0, 0), IPoint2(5, 5)); // no window: nothing
}
