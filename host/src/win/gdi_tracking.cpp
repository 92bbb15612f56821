// Live counts of the GDI objects, device contexts and windows held in the owning wrappers
// of host/gdi_tracking.h.
//
// The counters are plain ints: GDI objects are made and freed on the user-interface thread.

#include "host/gdi_tracking.h"

namespace {

int liveCounts[int(GdiKind::Count)] = {}; // per kind: adopted and not yet disposed

BOOL CALLBACK CountChild(HWND, LPARAM count) {
    ++*reinterpret_cast<int*>(count);
    return TRUE;
}

BOOL CALLBACK CountTopLevel(HWND hwnd, LPARAM count) {
    ++*reinterpret_cast<int*>(count);
    EnumChildWindows(hwnd, CountChild, count); // all descendants, not just children
    return TRUE;
}

} // namespace

int LiveGdiCount(GdiKind kind) {
    int k = int(kind);
    return k >= 0 && k < int(GdiKind::Count) ? liveCounts[k] : 0;
}

int LiveGdiTotal() {
    int total = 0;
    for (int n : liveCounts)
        total += n;
    return total;
}

int CountThreadWindows() {
    int count = 0;
    EnumThreadWindows(GetCurrentThreadId(), CountTopLevel, reinterpret_cast<LPARAM>(&count));
    return count;
}

namespace gdi_detail {

void Adopt(GdiKind kind, void* handle) {
    if (handle)
        ++liveCounts[int(kind)];
}

void Dispose(GdiKind kind, void* handle) {
    if (!handle)
        return;
    switch (kind) {
    case GdiKind::DC:
        DeleteDC(static_cast<HDC>(handle));
        break;
    case GdiKind::Window:
        // A window destroyed by its parent or owner meanwhile is simply gone.
        if (IsWindow(static_cast<HWND>(handle)))
            DestroyWindow(static_cast<HWND>(handle));
        break;
    default:
        DeleteObject(static_cast<HGDIOBJ>(handle));
        break;
    }
    --liveCounts[int(kind)];
}

void Forget(GdiKind kind, void* handle) {
    if (handle)
        --liveCounts[int(kind)];
}

} // namespace gdi_detail

SelectedObject::SelectedObject(HDC hdc, HGDIOBJ object)
    : hdc_(hdc), previous_(hdc && object ? SelectObject(hdc, object) : nullptr) {}

SelectedObject::~SelectedObject() {
    if (hdc_ && previous_)
        SelectObject(hdc_, previous_);
}

WindowDC::WindowDC(HWND hwnd) : hwnd_(hwnd), hdc_(GetDC(hwnd)) {
    gdi_detail::Adopt(GdiKind::DC, hdc_);
}

WindowDC::~WindowDC() {
    if (!hdc_)
        return;
    ReleaseDC(hwnd_, hdc_);
    gdi_detail::Forget(GdiKind::DC, hdc_);
}

PaintDC::PaintDC(HWND hwnd) : hwnd_(hwnd), ps_(), hdc_(BeginPaint(hwnd, &ps_)) {
    gdi_detail::Adopt(GdiKind::DC, hdc_);
}

PaintDC::~PaintDC() {
    EndPaint(hwnd_, &ps_); // also when BeginPaint failed: it validates nothing then
    gdi_detail::Forget(GdiKind::DC, hdc_);
}

SavedDC::SavedDC(HDC hdc) : hdc_(hdc), saved_(hdc ? SaveDC(hdc) : 0) {}

SavedDC::~SavedDC() {
    if (hdc_ && saved_)
        RestoreDC(hdc_, saved_);
}
