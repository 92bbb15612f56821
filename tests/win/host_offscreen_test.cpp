// Off-screen buffers: erase, draw, copy to the window, follow the window's size.

#include "host/gdi_tracking.h"
#include "host/offscreen.h"
#include "win/host_win_fixture.h"

#include <doctest/doctest.h>

using namespace hostwin_test;

namespace {

// A plain child window of a known client size inside the recording parent.
struct BufferFixture {
    ParentWindow parent;
    HWND view = nullptr;

    BufferFixture() {
        view = CreateWindowExA(0, "STATIC", "", WS_CHILD | WS_VISIBLE, 10, 10, 120, 60,
                               parent.hwnd(), nullptr, GetModuleHandleA(nullptr), nullptr);
        UpdateWindow(parent.hwnd());
    }
};

void Fill(HDC hdc, RECT r, COLORREF color) {
    GdiBrush brush(CreateSolidBrush(color));
    FillRect(hdc, &r, brush.get());
}

} // namespace

TEST_CASE("a buffer has the window's client size and starts white") {
    BufferFixture f;
    IOffScreenBuf* buf = CreateIOffScreenBuf(f.view);
    REQUIRE(buf != nullptr);
    CHECK(buf->Width() == 120);
    CHECK(buf->Height() == 60);
    CHECK(buf->GetBkColor() == RGB(255, 255, 255));
    CHECK(GetPixel(buf->GetDC(), 0, 0) == RGB(255, 255, 255));
    CHECK(GetPixel(buf->GetDC(), 119, 59) == RGB(255, 255, 255));
    DestroyIOffScreenBuf(buf);

    CHECK(CreateIOffScreenBuf(nullptr) == nullptr);
    DestroyIOffScreenBuf(nullptr);
}

TEST_CASE("Erase fills the rectangle, or everything, with the background colour") {
    BufferFixture f;
    IOffScreenBuf* buf = CreateIOffScreenBuf(f.view);
    HDC dc = buf->GetDC();
    buf->SetBkColor(RGB(190, 190, 190));
    CHECK(buf->GetBkColor() == RGB(190, 190, 190));
    RECT part = {10, 10, 20, 20};
    buf->Erase(&part);
    CHECK(GetPixel(dc, 10, 10) == RGB(190, 190, 190));
    CHECK(GetPixel(dc, 19, 19) == RGB(190, 190, 190));
    CHECK(GetPixel(dc, 20, 20) == RGB(255, 255, 255));
    buf->Erase();
    CHECK(GetPixel(dc, 100, 50) == RGB(190, 190, 190));
    DestroyIOffScreenBuf(buf);
}

TEST_CASE("drawing goes to the buffer; Blit copies it to the window, only the given part") {
    BufferFixture f;
    IOffScreenBuf* buf = CreateIOffScreenBuf(f.view);
    HDC dc = buf->GetDC();
    buf->SetBkColor(RGB(0, 0, 128));
    buf->Erase();
    Fill(dc, {20, 10, 60, 30}, RGB(250, 0, 0));
    CHECK(GetPixel(dc, 30, 20) == RGB(250, 0, 0));

    // Paint the window white first so that what the buffer brings is visible.
    {
        WindowDC screen(f.view);
        Fill(screen.get(), {0, 0, 120, 60}, RGB(255, 255, 255));
    }
    RECT left = {0, 0, 40, 60};
    buf->Blit(&left);
    {
        WindowDC screen(f.view);
        CHECK(GetPixel(screen.get(), 30, 20) == RGB(250, 0, 0));     // copied
        CHECK(GetPixel(screen.get(), 5, 5) == RGB(0, 0, 128));       // copied background
        CHECK(GetPixel(screen.get(), 50, 20) == RGB(255, 255, 255)); // outside the rectangle
    }
    buf->Blit();
    {
        WindowDC screen(f.view);
        CHECK(GetPixel(screen.get(), 50, 20) == RGB(250, 0, 0));
        CHECK(GetPixel(screen.get(), 100, 50) == RGB(0, 0, 128));
    }
    DestroyIOffScreenBuf(buf);
}

TEST_CASE("Resize follows the window; an unchanged size keeps the picture") {
    BufferFixture f;
    IOffScreenBuf* buf = CreateIOffScreenBuf(f.view);
    buf->SetBkColor(RGB(0, 128, 0));
    Fill(buf->GetDC(), {0, 0, 10, 10}, RGB(250, 0, 0));
    buf->Resize(); // same size
    CHECK(GetPixel(buf->GetDC(), 5, 5) == RGB(250, 0, 0));

    SetWindowPos(f.view, nullptr, 0, 0, 200, 90, SWP_NOMOVE | SWP_NOZORDER);
    buf->Resize();
    CHECK(buf->Width() == 200);
    CHECK(buf->Height() == 90);
    CHECK(GetPixel(buf->GetDC(), 5, 5) == RGB(0, 128, 0));    // erased
    CHECK(GetPixel(buf->GetDC(), 199, 89) == RGB(0, 128, 0)); // the new area is real

    SetWindowPos(f.view, nullptr, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOZORDER);
    buf->Resize();
    CHECK(buf->Width() == 1); // never an empty surface
    CHECK(buf->Height() == 1);
    DestroyIOffScreenBuf(buf);
}

TEST_CASE("a buffer's GDI objects are counted while it lives and all freed with it") {
    BufferFixture f;
    const int dcs = LiveGdiCount(GdiKind::DC);
    const int bitmaps = LiveGdiCount(GdiKind::Bitmap);
    IOffScreenBuf* buf = CreateIOffScreenBuf(f.view);
    CHECK(LiveGdiCount(GdiKind::DC) == dcs + 1);
    CHECK(LiveGdiCount(GdiKind::Bitmap) == bitmaps + 1);
    for (int i = 0; i < 5; ++i) {
        SetWindowPos(f.view, nullptr, 0, 0, 100 + 10 * i, 50, SWP_NOMOVE | SWP_NOZORDER);
        buf->Resize();
    }
    CHECK(LiveGdiCount(GdiKind::Bitmap) == bitmaps + 1); // old bitmaps freed
    buf->Blit();
    CHECK(LiveGdiCount(GdiKind::DC) == dcs + 1); // the window DC went back
    DestroyIOffScreenBuf(buf);
    CHECK(LiveGdiCount(GdiKind::DC) == dcs);
    CHECK(LiveGdiCount(GdiKind::Bitmap) == bitmaps);
}

TEST_CASE("a buffer outliving its window does nothing harmful") {
    BufferFixture f;
    IOffScreenBuf* buf = CreateIOffScreenBuf(f.view);
    DestroyWindow(f.view);
    buf->Blit();
    buf->Resize();
    buf->Erase();
    CHECK(buf->GetDC() != nullptr);
    DestroyIOffScreenBuf(buf);
}
