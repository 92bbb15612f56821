#include "win/host_win_fixture.h"

#include "host/actctx.h"
#include "host/custctrl.h"
#include "png/png_file.h"

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

bool WritePng(const Capture& capture, const std::string& path) {
    if (capture.width <= 0 || capture.height <= 0)
        return false;
    RgbImage image;
    image.width = capture.width;
    image.height = capture.height;
    image.rgb.reserve(capture.pixels.size() * 3);
    for (COLORREF c : capture.pixels)
        image.rgb.insert(image.rgb.end(), {GetRValue(c), GetGValue(c), GetBValue(c)});
    return WritePngFile(path, image);
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
