// Off-screen buffers: a memory DC with a 32-bit DIB section the size of the window's
// client area.
//
// The DC and the bitmap are held in the counting wrappers of gdi_tracking.h, so leak
// tests of windows that own buffers see them.

#include "host/offscreen.h"

#include <algorithm>
#include <new>

#include "host/gdi_tracking.h"

namespace {

class OffScreenBuf final : public IOffScreenBuf {
public:
    explicit OffScreenBuf(HWND hwnd) : hwnd_(hwnd) {
        WindowDC screen(hwnd_);
        dc_.reset(CreateCompatibleDC(screen.get()));
        Allocate();
    }
    ~OffScreenBuf() {
        if (dc_ && original_)
            SelectObject(dc_.get(), original_); // before the bitmap goes
    }

    HDC GetDC() override { return dc_.get(); }

    void Erase(const RECT* rect) override {
        if (!dc_)
            return;
        RECT all = {0, 0, width_, height_};
        SetDCBrushColor(dc_.get(), bk_);
        FillRect(dc_.get(), rect ? rect : &all, static_cast<HBRUSH>(GetStockObject(DC_BRUSH)));
    }

    void Blit(const RECT* rect) override {
        if (!dc_ || !IsWindow(hwnd_))
            return;
        RECT r = rect ? *rect : RECT{0, 0, width_, height_};
        WindowDC screen(hwnd_);
        if (!screen.get())
            return;
        BitBlt(screen.get(), r.left, r.top, r.right - r.left, r.bottom - r.top, dc_.get(), r.left,
               r.top, SRCCOPY);
    }

    void Resize() override {
        RECT rc = {};
        if (IsWindow(hwnd_))
            GetClientRect(hwnd_, &rc);
        if (std::max(1, int(rc.right)) == width_ && std::max(1, int(rc.bottom)) == height_)
            return;
        Allocate();
    }

    void SetBkColor(COLORREF color) override { bk_ = color; }
    COLORREF GetBkColor() override { return bk_; }
    int Width() override { return width_; }
    int Height() override { return height_; }

private:
    // A new bitmap of the current client size (at least 1 x 1, so the DC always has a
    // real surface), erased to the background.
    void Allocate() {
        if (!dc_)
            return;
        RECT rc = {};
        if (IsWindow(hwnd_))
            GetClientRect(hwnd_, &rc);
        width_ = std::max(1, int(rc.right));
        height_ = std::max(1, int(rc.bottom));
        // A top-down 32-bit DIB section rather than a screen-compatible bitmap: drawing
        // code may then write pixels straight into it (the curves' point markers do).
        BITMAPINFO info{};
        info.bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
        info.bmiHeader.biWidth = width_;
        info.bmiHeader.biHeight = -height_;
        info.bmiHeader.biPlanes = 1;
        info.bmiHeader.biBitCount = 32;
        info.bmiHeader.biCompression = BI_RGB;
        void* bits = nullptr;
        GdiBitmap fresh(CreateDIBSection(dc_.get(), &info, DIB_RGB_COLORS, &bits, nullptr, 0));
        if (!fresh)
            return;
        HGDIOBJ previous = SelectObject(dc_.get(), fresh.get());
        if (!original_)
            original_ = previous;   // the DC's own 1 x 1 bitmap
        bitmap_ = std::move(fresh); // the old bitmap is deselected: delete it
        Erase(nullptr);
    }

    HWND hwnd_;                  // the window whose client area is buffered
    MemoryDC dc_;                // owned
    GdiBitmap bitmap_;           // owned, selected into dc_
    HGDIOBJ original_ = nullptr; // the DC's initial bitmap, selected back at the end
    int width_ = 0, height_ = 0; // bitmap size
    COLORREF bk_ = RGB(255, 255, 255);
};

} // namespace

IOffScreenBuf* CreateIOffScreenBuf(HWND hwnd) {
    if (!hwnd || !IsWindow(hwnd))
        return nullptr;
    auto* buf = new (std::nothrow) OffScreenBuf(hwnd);
    if (buf && !buf->GetDC()) {
        delete buf;
        return nullptr;
    }
    return buf;
}

void DestroyIOffScreenBuf(IOffScreenBuf* buf) { delete static_cast<OffScreenBuf*>(buf); }
