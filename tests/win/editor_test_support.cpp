#include "tests/win/editor_test_support.h"

#include "host/core_interface.h"
#include "host/hold.h"
#include "platform/platform.h"
#include "png/png_file.h"

#include <vector>

namespace edtest {

void ResetHostState() {
    platform::SetModuleInstance(GetModuleHandleA(nullptr));
    while (theHold.IsSuspended())
        theHold.Resume();
    theHold.Reset();
    GetCOREInterface()->SetTime(0, FALSE);
}

void ControlDelete::operator()(CurveControl* c) const {
    if (!c)
        return;
    if (c->GetEditorWindow())
        c->SetEditorOpen(FALSE);
    c->DeleteThis();
}

ControlPtr MakeControl(int curves, DWORD flags, HWND parent) {
    ControlPtr c(new CurveControl);
    c->SetCurveCount(curves, FALSE);
    BitArray all(curves > 0 ? curves : 1);
    all.SetAll();
    c->SetShownCurves(all);
    c->SetControlFlags(flags);
    c->SetParentWindow(parent);
    return c;
}

namespace {
const char* kParentClass = "EditorTestParent";

void registerParentClass() {
    static bool done = false;
    if (done)
        return;
    done = true;
    WNDCLASSA wc{};
    wc.lpfnWndProc = DefWindowProcA;
    wc.hInstance = GetModuleHandleA(nullptr);
    wc.hbrBackground = static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH));
    wc.hCursor = LoadCursorA(nullptr, IDC_ARROW);
    wc.lpszClassName = kParentClass;
    RegisterClassA(&wc);
}
} // namespace

ParentWindow::ParentWindow(int width, int height) {
    registerParentClass();
    RECT r{0, 0, width, height};
    AdjustWindowRectEx(&r, WS_POPUP, FALSE, 0);
    hwnd_ = CreateWindowExA(0, kParentClass, "parent", WS_POPUP | WS_VISIBLE | WS_CLIPCHILDREN, 40,
                            40, r.right - r.left, r.bottom - r.top, nullptr, nullptr,
                            GetModuleHandleA(nullptr), nullptr);
}

ParentWindow::~ParentWindow() { DestroyWindow(hwnd_); }

CurveCtlWindow* EditorOf(CurveControl& control) {
    return static_cast<CurveCtlWindow*>(control.Editor());
}

void Pump() {
    MSG msg;
    while (PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE)) {
        TranslateMessage(&msg);
        DispatchMessageA(&msg);
    }
}

RECT RectIn(HWND child, HWND reference) {
    RECT r{};
    GetWindowRect(child, &r);
    MapWindowPoints(HWND_DESKTOP, reference, reinterpret_cast<POINT*>(&r), 2);
    return r;
}

bool HasVisibleStyle(HWND hwnd) { return (GetWindowLongA(hwnd, GWL_STYLE) & WS_VISIBLE) != 0; }

std::string WindowText(HWND hwnd) {
    char buf[512] = {};
    GetWindowTextA(hwnd, buf, int(sizeof buf));
    return buf;
}

bool SaveScreenshot(HWND hwnd, const std::string& path) {
    RECT r{};
    GetWindowRect(hwnd, &r);
    const int w = r.right - r.left, h = r.bottom - r.top;
    if (w <= 0 || h <= 0)
        return false;
    HDC screen = GetDC(nullptr);
    HDC mem = CreateCompatibleDC(screen);
    BITMAPINFO bi{};
    bi.bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
    bi.bmiHeader.biWidth = w;
    bi.bmiHeader.biHeight = -h; // top-down rows
    bi.bmiHeader.biPlanes = 1;
    bi.bmiHeader.biBitCount = 32;
    bi.bmiHeader.biCompression = BI_RGB;
    void* bits = nullptr;
    HBITMAP bmp = CreateDIBSection(mem, &bi, DIB_RGB_COLORS, &bits, nullptr, 0);
    HGDIOBJ old = SelectObject(mem, bmp);
    BitBlt(mem, 0, 0, w, h, screen, r.left, r.top, SRCCOPY);
    GdiFlush();
    RgbImage image;
    image.width = w;
    image.height = h;
    image.rgb.resize(size_t(w) * size_t(h) * 3);
    const auto* px = static_cast<const unsigned char*>(bits);
    for (size_t i = 0; i < size_t(w) * size_t(h); ++i) {
        image.rgb[3 * i + 0] = px[4 * i + 2];
        image.rgb[3 * i + 1] = px[4 * i + 1];
        image.rgb[3 * i + 2] = px[4 * i + 0];
    }
    SelectObject(mem, old);
    DeleteObject(bmp);
    DeleteDC(mem);
    ReleaseDC(nullptr, screen);
    return WritePngFile(path, image);
}

} // namespace edtest
