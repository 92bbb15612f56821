// Screen capture through a DIB section: the display's pixels, exactly as shown.
#include "session_capture.h"

#include <algorithm>
#include <cstdint>

namespace session {

RgbImage CaptureScreen(const RECT& screen) {
    RgbImage image;
    const int w = screen.right - screen.left, h = screen.bottom - screen.top;
    if (w <= 0 || h <= 0)
        return image;
    BITMAPINFO bmi = {};
    bmi.bmiHeader.biSize = sizeof bmi.bmiHeader;
    bmi.bmiHeader.biWidth = w;
    bmi.bmiHeader.biHeight = -h; // rows top to bottom
    bmi.bmiHeader.biPlanes = 1;
    bmi.bmiHeader.biBitCount = 32;
    bmi.bmiHeader.biCompression = BI_RGB;
    void* bits = nullptr;
    HDC display = GetDC(nullptr);
    HDC memory = CreateCompatibleDC(display);
    HBITMAP dib = CreateDIBSection(display, &bmi, DIB_RGB_COLORS, &bits, nullptr, 0);
    if (dib && bits) {
        HGDIOBJ old = SelectObject(memory, dib);
        BitBlt(memory, 0, 0, w, h, display, screen.left, screen.top, SRCCOPY);
        GdiFlush();
        image.width = w;
        image.height = h;
        image.rgb.resize(std::size_t(w) * std::size_t(h) * 3);
        const auto* px = static_cast<const uint32_t*>(bits);
        for (std::size_t i = 0, n = std::size_t(w) * std::size_t(h); i < n; ++i) {
            image.rgb[i * 3 + 0] = static_cast<unsigned char>(px[i] >> 16);
            image.rgb[i * 3 + 1] = static_cast<unsigned char>(px[i] >> 8);
            image.rgb[i * 3 + 2] = static_cast<unsigned char>(px[i]);
        }
        SelectObject(memory, old);
    }
    if (dib)
        DeleteObject(dib);
    DeleteDC(memory);
    ReleaseDC(nullptr, display);
    return image;
}

RgbImage CaptureWindow(HWND hwnd) {
    RECT rc = {};
    GetWindowRect(hwnd, &rc);
    return CaptureScreen(rc);
}

RgbImage CaptureClient(HWND hwnd, const RECT& client) {
    POINT corners[2] = {{client.left, client.top}, {client.right, client.bottom}};
    MapWindowPoints(hwnd, nullptr, corners, 2);
    return CaptureScreen(RECT{corners[0].x, corners[0].y, corners[1].x, corners[1].y});
}

RECT Around(HWND a, HWND b) {
    RECT ra = {}, rb = {};
    GetWindowRect(a, &ra);
    GetWindowRect(b, &rb);
    return RECT{std::min(ra.left, rb.left), std::min(ra.top, rb.top), std::max(ra.right, rb.right),
                std::max(ra.bottom, rb.bottom)};
}

} // namespace session
