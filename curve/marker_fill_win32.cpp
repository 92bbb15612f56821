#include "curve/marker_fill_win32.h"

#include <algorithm>
#include <cstdint>

namespace {

/// Squares whose corners lie further out than this go through GDI: their pixels, if any,
/// are then whatever GDI makes of such coordinates.
constexpr int kDirectLimit = 1 << 26;

bool plainMapping(HDC hdc) {
    if (GetMapMode(hdc) != MM_TEXT || GetGraphicsMode(hdc) != GM_COMPATIBLE ||
        GetLayout(hdc) != 0 || GetROP2(hdc) != R2_COPYPEN)
        return false;
    return true;
}

/// The device rectangle the DC's clip region (with its meta region) allows, or false when
/// it is not one rectangle. No region at all allows everything.
bool clipRectangle(HDC hdc, RECT& out) {
    HRGN rgn = CreateRectRgn(0, 0, 0, 0);
    if (!rgn)
        return false;
    constexpr int kApiRegion = 3; // clip region intersected with the meta region
    const int has = GetRandomRgn(hdc, rgn, kApiRegion);
    bool simple = true;
    if (has == 0) {
        out = RECT{-kDirectLimit, -kDirectLimit, kDirectLimit, kDirectLimit};
    } else if (has == 1) {
        const int kind = GetRgnBox(rgn, &out);
        if (kind == NULLREGION)
            out = RECT{0, 0, 0, 0};
        else
            simple = kind == SIMPLEREGION;
    } else {
        simple = false;
    }
    DeleteObject(rgn);
    return simple;
}

uint32_t pixelOf(COLORREF c) {
    // 32-bit BI_RGB pixels are blue, green, red and an unused byte GDI leaves at zero.
    return (uint32_t(GetRValue(c)) << 16) | (uint32_t(GetGValue(c)) << 8) | GetBValue(c);
}

uint32_t* pixelAt(uint8_t* origin, ptrdiff_t stride, int x, int y) {
    return reinterpret_cast<uint32_t*>(origin + stride * y) + x;
}

/// Whether the rows of the DIB section at `bits` run top-down. GetObject gives the height
/// as a positive number either way, so one pixel set through GDI shows where row `y` lies;
/// both places it could lie get their pixels back. Rows the clip leaves out do not matter,
/// nor does the order when the only row drawn is the middle one.
bool topDown(HDC hdc, uint8_t* bits, ptrdiff_t stride, int height, const RECT& clip, POINT offset) {
    int y = clip.top;
    if (y == height - 1 - y)
        ++y;
    if (clip.left >= clip.right || y >= clip.bottom)
        return true;
    const int x = clip.left;
    GdiFlush(); // drawing still queued must reach the pixels before they are read
    uint32_t* down = pixelAt(bits, stride, x, y);
    uint32_t* up = pixelAt(bits, stride, x, height - 1 - y);
    const uint32_t wasDown = *down, wasUp = *up;
    COLORREF probe = RGB(1, 2, 3);
    while (pixelOf(probe) == (wasDown & 0xFFFFFFu) || pixelOf(probe) == (wasUp & 0xFFFFFFu))
        probe += RGB(1, 1, 1);
    SetPixelV(hdc, x - offset.x, y - offset.y, probe);
    GdiFlush();
    const bool result = (*down & 0xFFFFFFu) == pixelOf(probe);
    *down = wasDown;
    *up = wasUp;
    return result;
}

} // namespace

MarkerFill::MarkerFill(HDC hdc) : hdc_(hdc) {
    if (!hdc || GetObjectType(hdc) != OBJ_MEMDC || !plainMapping(hdc))
        return;
    DIBSECTION dib{};
    HGDIOBJ bitmap = GetCurrentObject(hdc, OBJ_BITMAP);
    if (!bitmap || GetObjectA(bitmap, sizeof dib, &dib) != int(sizeof dib))
        return;
    const BITMAPINFOHEADER& h = dib.dsBmih;
    if (!dib.dsBm.bmBits || h.biBitCount != 32 || h.biCompression != BI_RGB)
        return;
    RECT clip{};
    if (!clipRectangle(hdc, clip))
        return;
    const int width = dib.dsBm.bmWidth, height = dib.dsBm.bmHeight;
    clip_ = RECT{std::max<LONG>(clip.left, 0), std::max<LONG>(clip.top, 0),
                 std::min<LONG>(clip.right, width), std::min<LONG>(clip.bottom, height)};
    POINT viewport{}, window{};
    GetViewportOrgEx(hdc, &viewport);
    GetWindowOrgEx(hdc, &window);
    offset_ = POINT{viewport.x - window.x, viewport.y - window.y};
    stride_ = ptrdiff_t(dib.dsBm.bmWidthBytes);
    origin_ = static_cast<uint8_t*>(dib.dsBm.bmBits);
    if (!topDown(hdc, origin_, stride_, height, clip_, offset_)) {
        origin_ += stride_ * (height - 1); // bottom-up: row 0 is the last in memory
        stride_ = -stride_;
    }
}

void MarkerFill::Square(int left, int top, int right, int bottom, COLORREF colour) {
    const auto remote = [](int v) { return v <= -kDirectLimit || v >= kDirectLimit; };
    if (!origin_ || remote(left) || remote(top) || remote(right) || remote(bottom)) {
        gdiSquare(left, top, right, bottom, colour);
        return;
    }
    if (!flushed_) {
        GdiFlush();
        flushed_ = true;
    }
    // Rectangle with the null pen fills one pixel less than the rectangle each way.
    const int x0 = std::max<int>(left + offset_.x, clip_.left);
    const int x1 = std::min<int>(right - 1 + offset_.x, clip_.right);
    const int y0 = std::max<int>(top + offset_.y, clip_.top);
    const int y1 = std::min<int>(bottom - 1 + offset_.y, clip_.bottom);
    if (x0 >= x1 || y0 >= y1)
        return;
    const uint32_t pixel = pixelOf(colour);
    for (int y = y0; y < y1; ++y) {
        uint32_t* row = pixelAt(origin_, stride_, 0, y);
        std::fill(row + x0, row + x1, pixel);
    }
}

void MarkerFill::gdiSquare(int left, int top, int right, int bottom, COLORREF colour) {
    if (!brushKnown_ || brushColour_ != colour) {
        SetDCBrushColor(hdc_, colour);
        brushKnown_ = true;
        brushColour_ = colour;
    }
    Rectangle(hdc_, left, top, right, bottom);
    flushed_ = false;
}
