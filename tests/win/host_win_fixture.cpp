#include "win/host_win_fixture.h"

#include "host/actctx.h"
#include "host/custctrl.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>

namespace hostwin_test {

// -------------------------------------------------------------------------------------
// Recording parent
// -------------------------------------------------------------------------------------

namespace {

constexpr const char* kParentClass = "HostTestParent";

// One visible top-level window for the whole run, holding each test's parent as a child.
// Under Wine without a window manager, hiding or destroying a shown top-level window waits
// two seconds for a withdrawal notice that never comes; child windows come and go at once.
HWND Stage() {
    static HWND stage = [] {
        HWND w =
            CreateWindowExA(0, "STATIC", "host tests", WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN, 20,
                            20, 900, 600, nullptr, nullptr, GetModuleHandleA(nullptr), nullptr);
        ShowWindow(w, SW_SHOW);
        UpdateWindow(w);
        return w;
    }();
    return stage;
}

} // namespace

ParentWindow::ParentWindow(int width, int height) {
    static bool registered = false;
    if (!registered) {
        WNDCLASSA wc = {};
        wc.lpfnWndProc = Proc;
        wc.hInstance = GetModuleHandleA(nullptr);
        wc.hCursor = LoadCursorA(nullptr, IDC_ARROW);
        wc.hbrBackground = static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH));
        wc.lpszClassName = kParentClass;
        RegisterClassA(&wc);
        registered = true;
    }
    hwnd_ = CreateWindowExA(0, kParentClass, "host test",
                            WS_CHILD | WS_VISIBLE | WS_CLIPCHILDREN | WS_CLIPSIBLINGS, 0, 0, width,
                            height, Stage(), nullptr, GetModuleHandleA(nullptr), this);
    UpdateWindow(hwnd_);
}

ParentWindow::~ParentWindow() {
    if (IsWindow(hwnd_))
        DestroyWindow(hwnd_);
}

LRESULT CALLBACK ParentWindow::Proc(HWND hwnd, UINT msg, WPARAM wParam, LPARAM lParam) {
    if (msg == WM_NCCREATE) {
        auto* cs = reinterpret_cast<CREATESTRUCTA*>(lParam);
        SetWindowLongPtrA(hwnd, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(cs->lpCreateParams));
    }
    auto* self = reinterpret_cast<ParentWindow*>(GetWindowLongPtrA(hwnd, GWLP_USERDATA));
    if (self && (msg == WM_COMMAND || msg == WM_CUSTEDIT_ENTER || msg == WM_NEXTDLGCTL)) {
        self->received_.push_back({msg, wParam, lParam});
        return 0;
    }
    return DefWindowProcA(hwnd, msg, wParam, lParam);
}

int ParentWindow::Commands(int id, int code) const {
    int n = 0;
    for (const Received& r : received_)
        if (r.msg == WM_COMMAND && LOWORD(r.wParam) == id && HIWORD(r.wParam) == code)
            ++n;
    return n;
}

int ParentWindow::Count(UINT msg) const {
    int n = 0;
    for (const Received& r : received_)
        if (r.msg == msg)
            ++n;
    return n;
}

// -------------------------------------------------------------------------------------
// Messages
// -------------------------------------------------------------------------------------

void Pump(int ms) {
    DWORD end = GetTickCount() + DWORD(ms);
    do {
        MSG msg;
        while (PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE)) {
            if (msg.message == WM_QUIT)
                continue;
            TranslateMessage(&msg);
            DispatchMessageA(&msg);
        }
        Sleep(5);
    } while (int(GetTickCount() - end) < 0);
}

void Click(HWND hwnd, POINT p) {
    LPARAM at = MAKELPARAM(p.x, p.y);
    SendMessageA(hwnd, WM_LBUTTONDOWN, MK_LBUTTON, at);
    SendMessageA(hwnd, WM_LBUTTONUP, 0, at);
}

POINT Center(const RECT& r) { return {(r.left + r.right) / 2, (r.top + r.bottom) / 2}; }

// -------------------------------------------------------------------------------------
// Pixels
// -------------------------------------------------------------------------------------

Capture CaptureClient(HWND hwnd) {
    Capture c;
    RECT rc;
    if (!IsWindow(hwnd) || !GetClientRect(hwnd, &rc) || rc.right <= 0 || rc.bottom <= 0)
        return c;
    RedrawWindow(hwnd, nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW | RDW_ALLCHILDREN);
    c.width = rc.right;
    c.height = rc.bottom;
    HDC screen = GetDC(hwnd);
    HDC mem = CreateCompatibleDC(screen);
    BITMAPINFO bi = {};
    bi.bmiHeader.biSize = sizeof bi.bmiHeader;
    bi.bmiHeader.biWidth = c.width;
    bi.bmiHeader.biHeight = -c.height; // top-down
    bi.bmiHeader.biPlanes = 1;
    bi.bmiHeader.biBitCount = 32;
    void* bits = nullptr;
    HBITMAP dib = CreateDIBSection(screen, &bi, DIB_RGB_COLORS, &bits, nullptr, 0);
    HGDIOBJ old = SelectObject(mem, dib);
    BitBlt(mem, 0, 0, c.width, c.height, screen, 0, 0, SRCCOPY);
    GdiFlush();
    c.pixels.resize(size_t(c.width) * size_t(c.height));
    const auto* px = static_cast<const uint32_t*>(bits);
    for (size_t i = 0; i < c.pixels.size(); ++i) {
        uint32_t v = px[i]; // 0x00RRGGBB in a 32-bit DIB
        c.pixels[i] = RGB((v >> 16) & 0xFF, (v >> 8) & 0xFF, v & 0xFF);
    }
    SelectObject(mem, old);
    DeleteObject(dib);
    DeleteDC(mem);
    ReleaseDC(hwnd, screen);
    return c;
}

namespace {

uint32_t Crc32(const uint8_t* data, size_t n, uint32_t crc = 0) {
    static uint32_t table[256];
    static bool ready = false;
    if (!ready) {
        for (uint32_t i = 0; i < 256; ++i) {
            uint32_t c = i;
            for (int k = 0; k < 8; ++k)
                c = (c & 1) ? 0xEDB88320u ^ (c >> 1) : c >> 1;
            table[i] = c;
        }
        ready = true;
    }
    crc = ~crc;
    for (size_t i = 0; i < n; ++i)
        crc = table[(crc ^ data[i]) & 0xFF] ^ (crc >> 8);
    return ~crc;
}

void Put32(std::vector<uint8_t>& out, uint32_t v) {
    for (int s = 24; s >= 0; s -= 8)
        out.push_back(uint8_t(v >> s));
}

void Chunk(std::vector<uint8_t>& out, const char* type, const std::vector<uint8_t>& data) {
    Put32(out, uint32_t(data.size()));
    std::vector<uint8_t> body(type, type + 4);
    body.insert(body.end(), data.begin(), data.end());
    out.insert(out.end(), body.begin(), body.end());
    Put32(out, Crc32(body.data(), body.size()));
}

} // namespace

bool WritePng(const Capture& capture, const std::string& path) {
    if (capture.width <= 0 || capture.height <= 0)
        return false;
    // Raw scanlines: filter byte 0, then RGB.
    std::vector<uint8_t> raw;
    for (int y = 0; y < capture.height; ++y) {
        raw.push_back(0);
        for (int x = 0; x < capture.width; ++x) {
            COLORREF c = capture.at(x, y);
            raw.push_back(GetRValue(c));
            raw.push_back(GetGValue(c));
            raw.push_back(GetBValue(c));
        }
    }
    // zlib stream of stored blocks (at most 65535 bytes each) and the Adler-32 checksum.
    std::vector<uint8_t> z = {0x78, 0x01};
    for (size_t pos = 0; pos < raw.size() || pos == 0;) {
        size_t n = std::min<size_t>(65535, raw.size() - pos);
        bool last = pos + n == raw.size();
        z.push_back(last ? 1 : 0);
        z.push_back(uint8_t(n));
        z.push_back(uint8_t(n >> 8));
        z.push_back(uint8_t(~n));
        z.push_back(uint8_t(~n >> 8));
        z.insert(z.end(), raw.begin() + long(pos), raw.begin() + long(pos + n));
        pos += n;
        if (last)
            break;
    }
    uint32_t a = 1, b = 0;
    for (uint8_t v : raw) {
        a = (a + v) % 65521;
        b = (b + a) % 65521;
    }
    Put32(z, (b << 16) | a);

    std::vector<uint8_t> png = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    std::vector<uint8_t> ihdr;
    Put32(ihdr, uint32_t(capture.width));
    Put32(ihdr, uint32_t(capture.height));
    ihdr.insert(ihdr.end(), {8, 2, 0, 0, 0}); // 8-bit RGB, no interlace
    Chunk(png, "IHDR", ihdr);
    Chunk(png, "IDAT", z);
    Chunk(png, "IEND", {});

    FILE* f = fopen(path.c_str(), "wb");
    if (!f)
        return false;
    bool ok = fwrite(png.data(), 1, png.size(), f) == png.size();
    return fclose(f) == 0 && ok;
}

// -------------------------------------------------------------------------------------
// Images
// -------------------------------------------------------------------------------------

HIMAGELIST MakeSolidImages(const std::vector<COLORREF>& colors) {
    const int w = 16, h = 15, n = int(colors.size());
    HIMAGELIST list = ActCtxImageList_Create(w, h, ILC_COLOR24 | ILC_MASK, n, 0);
    HDC screen = GetDC(nullptr);
    HDC dc = CreateCompatibleDC(screen);
    HBITMAP image = CreateCompatibleBitmap(screen, w * n, h);
    HBITMAP mask = CreateBitmap(w * n, h, 1, 1, nullptr);
    HGDIOBJ old = SelectObject(dc, image);
    for (int i = 0; i < n; ++i) {
        RECT r = {i * w, 0, i * w + w, h};
        HBRUSH brush = CreateSolidBrush(colors[size_t(i)]);
        FillRect(dc, &r, brush);
        DeleteObject(brush);
    }
    SelectObject(dc, mask);
    RECT all = {0, 0, w * n, h};
    FillRect(dc, &all, static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH))); // transparent
    for (int i = 0; i < n; ++i) {
        RECT inner = {i * w + 1, 1, i * w + w - 1, h - 1};
        FillRect(dc, &inner, static_cast<HBRUSH>(GetStockObject(BLACK_BRUSH))); // opaque
    }
    SelectObject(dc, old);
    ActCtxImageList_Add(list, image, mask);
    DeleteObject(image);
    DeleteObject(mask);
    DeleteDC(dc);
    ReleaseDC(nullptr, screen);
    return list;
}

} // namespace hostwin_test
