// The counting GDI wrappers: every way out of a wrapper brings the count back.

#include "host/gdi_tracking.h"
#include "win/host_win_fixture.h"

#include <doctest/doctest.h>

#include <utility>

using namespace hostwin_test;

TEST_CASE("each kind is counted while its wrapper lives") {
    const int pens = LiveGdiCount(GdiKind::Pen), brushes = LiveGdiCount(GdiKind::Brush);
    const int fonts = LiveGdiCount(GdiKind::Font), bitmaps = LiveGdiCount(GdiKind::Bitmap);
    const int regions = LiveGdiCount(GdiKind::Region), dcs = LiveGdiCount(GdiKind::DC);
    const int total = LiveGdiTotal();
    {
        GdiPen pen(CreatePen(PS_SOLID, 1, RGB(1, 2, 3)));
        GdiBrush brush(CreateSolidBrush(RGB(4, 5, 6)));
        GdiFont font(
            CreateFontA(-11, 0, 0, 0, FW_NORMAL, 0, 0, 0, DEFAULT_CHARSET, 0, 0, 0, 0, "Tahoma"));
        GdiBitmap bitmap(CreateBitmap(4, 4, 1, 1, nullptr));
        GdiRegion region(CreateRectRgn(0, 0, 10, 10));
        MemoryDC dc(CreateCompatibleDC(nullptr));
        CHECK(LiveGdiCount(GdiKind::Pen) == pens + 1);
        CHECK(LiveGdiCount(GdiKind::Brush) == brushes + 1);
        CHECK(LiveGdiCount(GdiKind::Font) == fonts + 1);
        CHECK(LiveGdiCount(GdiKind::Bitmap) == bitmaps + 1);
        CHECK(LiveGdiCount(GdiKind::Region) == regions + 1);
        CHECK(LiveGdiCount(GdiKind::DC) == dcs + 1);
        CHECK(LiveGdiTotal() == total + 6);
        CHECK(GetObjectType(pen.get()) == OBJ_PEN);
    }
    CHECK(LiveGdiTotal() == total);
    CHECK(LiveGdiCount(GdiKind::Count) == 0); // not a kind
}

TEST_CASE("deleting through the wrapper really frees the object") {
    HPEN raw = CreatePen(PS_SOLID, 1, RGB(1, 2, 3));
    { GdiPen pen(raw); }
    CHECK(GetObjectType(raw) == 0); // deleted
}

TEST_CASE("null handles, moves, reset and release keep the count exact") {
    const int pens = LiveGdiCount(GdiKind::Pen);
    GdiPen none(nullptr);
    CHECK_FALSE(none);
    CHECK(LiveGdiCount(GdiKind::Pen) == pens);

    GdiPen a(CreatePen(PS_SOLID, 1, 0));
    GdiPen b(std::move(a));
    CHECK_FALSE(a);
    CHECK(b);
    CHECK(LiveGdiCount(GdiKind::Pen) == pens + 1);
    GdiPen c(CreatePen(PS_DOT, 1, 0));
    c = std::move(b); // c's own pen is deleted
    CHECK(LiveGdiCount(GdiKind::Pen) == pens + 1);
    c = std::move(c); // self-move: nothing
    CHECK(c);
    c.reset(CreatePen(PS_DASH, 1, 0));
    CHECK(LiveGdiCount(GdiKind::Pen) == pens + 1);
    HPEN mine = c.release();
    CHECK_FALSE(c);
    CHECK(LiveGdiCount(GdiKind::Pen) == pens);
    CHECK(GetObjectType(mine) == OBJ_PEN); // still alive: ours now
    DeleteObject(mine);
    c.reset();
    CHECK(LiveGdiCount(GdiKind::Pen) == pens);
}

TEST_CASE("SelectedObject puts the previous object back") {
    MemoryDC dc(CreateCompatibleDC(nullptr));
    GdiPen pen(CreatePen(PS_SOLID, 3, RGB(9, 9, 9)));
    HGDIOBJ before = GetCurrentObject(dc.get(), OBJ_PEN);
    {
        SelectedObject keep(dc.get(), pen.get());
        CHECK(GetCurrentObject(dc.get(), OBJ_PEN) == pen.get());
    }
    CHECK(GetCurrentObject(dc.get(), OBJ_PEN) == before);
    SelectedObject nothing(nullptr, pen.get()); // no DC: harmless
}

TEST_CASE("SavedDC restores clip region and colours") {
    MemoryDC dc(CreateCompatibleDC(nullptr));
    SetTextColor(dc.get(), RGB(1, 1, 1));
    {
        SavedDC saved(dc.get());
        SetTextColor(dc.get(), RGB(200, 0, 0));
        GdiRegion clip(CreateRectRgn(0, 0, 5, 5));
        SelectClipRgn(dc.get(), clip.get());
    }
    CHECK(GetTextColor(dc.get()) == RGB(1, 1, 1));
    GdiRegion probe(CreateRectRgn(0, 0, 0, 0));
    CHECK(GetClipRgn(dc.get(), probe.get()) == 0); // no clip region again
}

TEST_CASE("window and paint DCs count while held") {
    ParentWindow parent;
    const int dcs = LiveGdiCount(GdiKind::DC);
    {
        WindowDC dc(parent.hwnd());
        CHECK(dc.get() != nullptr);
        CHECK(LiveGdiCount(GdiKind::DC) == dcs + 1);
    }
    CHECK(LiveGdiCount(GdiKind::DC) == dcs);
    InvalidateRect(parent.hwnd(), nullptr, FALSE);
    {
        PaintDC paint(parent.hwnd());
        CHECK(paint.get() != nullptr);
        CHECK(paint.PaintRect().right > 0);
        CHECK(LiveGdiCount(GdiKind::DC) == dcs + 1);
    }
    CHECK(LiveGdiCount(GdiKind::DC) == dcs);
    CHECK(GetUpdateRect(parent.hwnd(), nullptr, FALSE) == FALSE); // EndPaint validated
}

TEST_CASE("windows: UniqueWindow destroys its window; CountThreadWindows sees every level") {
    // Wine gives a thread a hidden IME window with its first top-level window; this one
    // makes sure it exists before the counting starts.
    ParentWindow settled;
    const int windows = CountThreadWindows();
    const int owned = LiveGdiCount(GdiKind::Window);
    HWND top;
    {
        UniqueWindow w(CreateWindowExA(0, "STATIC", "", WS_POPUP, 0, 0, 10, 10, nullptr, nullptr,
                                       GetModuleHandleA(nullptr), nullptr));
        top = w.get();
        CreateWindowExA(0, "STATIC", "", WS_CHILD, 0, 0, 5, 5, top, nullptr,
                        GetModuleHandleA(nullptr), nullptr);
        HWND child = GetWindow(top, GW_CHILD);
        CreateWindowExA(0, "STATIC", "", WS_CHILD, 0, 0, 5, 5, child, nullptr,
                        GetModuleHandleA(nullptr), nullptr);
        CHECK(CountThreadWindows() == windows + 3); // grandchildren too
        CHECK(LiveGdiCount(GdiKind::Window) == owned + 1);
    }
    CHECK_FALSE(IsWindow(top));
    CHECK(CountThreadWindows() == windows);
    CHECK(LiveGdiCount(GdiKind::Window) == owned);

    // A window that someone else destroyed first is only counted out.
    UniqueWindow early(CreateWindowExA(0, "STATIC", "", WS_POPUP, 0, 0, 10, 10, nullptr, nullptr,
                                       GetModuleHandleA(nullptr), nullptr));
    DestroyWindow(early.get());
    early.reset();
    CHECK(LiveGdiCount(GdiKind::Window) == owned);
}
