// Painting of the graph and the ruler strip: the off-screen cache and double-buffering
// pipeline around the drawing of each window.
//
// [SECTION] Graph
// [SECTION] Ruler
#include "control/curve_control.h"
#include "editor/curve_ctl_window.h"
#include "host/colorman.h"
#include "host/core_interface.h"
#include "host/gdi_tracking.h"
#include "host/offscreen.h"

namespace {

/// The graph's frame and background: dark grey outside the control's x range, light grey
/// inside it.
void drawBackground(CurveCtlWindow& w, HDC hdc, const RECT& rect) {
    RECT client{};
    GetClientRect(w.Graph().Handle(), &client);
    Rect3D(hdc, client, 1);
    const Point2 range = w.Control()->GetXRange();
    const float xs = w.Scale().xs;
    const int x0 = w.HorizontalOffset();
    const int lo = int(range.x * xs) - x0;
    const int hi = int(range.y * xs) - x0;
    SelectedObject pen(hdc, GetStockObject(NULL_PEN));
    auto fill = [&](HBRUSH brush, int left, int right) {
        if (left >= right)
            return;
        SelectedObject keep(hdc, brush);
        // The null pen leaves the right and bottom edges out: one pixel wider and taller.
        Rectangle(hdc, left, rect.top, right + 1, rect.bottom + 1);
    };
    if (hi <= rect.left || lo >= rect.right) {
        fill(GetDarkGreyBrush(), rect.left, rect.right);
        return;
    }
    fill(GetDarkGreyBrush(), rect.left, std::min<int>(lo, rect.right));
    fill(GetLightGreyBrush(), std::max<int>(lo, rect.left), std::min<int>(hi, rect.right));
    fill(GetDarkGreyBrush(), std::max<int>(hi, rect.left), rect.right);
}

/// Draws the graph for `time` into `hdc` within `rect`.
void drawGraph(CurveCtlWindow& w, HDC hdc, const RECT& rect, TimeValue) {
    if (w.Control()->GetControlFlags() & CC_DRAWBG)
        drawBackground(w, hdc, rect);
}

} // namespace

// ---------------------------------------------------------------------------------------
// [SECTION] Graph

LRESULT CurveWindow::Paint() {
    if (!owner_)
        return 0;
    CurveCtlWindow& w = *owner_;
    const TimeValue t = GetCOREInterface()->GetTime();
    w.UpdateEntryFields(t);

    const bool buffered = DoubleBuffering() && buffer_;
    RECT paintRect{};
    {
        PaintDC dc(hWnd_);
        paintRect = dc.PaintRect();
        PaintState& cache = w.Cache();
        if (!cache.graphValid) {
            RECT rect = paintRect;
            if (cache.wholeWindow) {
                GetClientRect(hWnd_, &rect);
                cache.wholeWindow = 0;
            }
            if (buffered)
                buffer_->Erase(&rect);
            drawGraph(w, buffered ? buffer_->GetDC() : dc.get(), rect, t);
            if (buffered)
                cache.graphValid = 1;
        }
    }
    if (buffered)
        buffer_->Blit(&paintRect);
    return 0;
}

// ---------------------------------------------------------------------------------------
// [SECTION] Ruler

namespace {

void drawRuler(HWND strip, HDC hdc) {
    RECT client{};
    GetClientRect(strip, &client);
    SelectedObject pen(hdc, GetStockObject(BLACK_PEN));
    SelectedObject brush(hdc, GetStockObject(NULL_BRUSH));
    Rectangle(hdc, client.left, client.top, client.right, client.bottom);
    RECT inner{client.left + 1, client.top + 1, client.right - 1, client.bottom - 1};
    Rect3D(hdc, inner, 0);
}

} // namespace

LRESULT PosWindow::Paint() {
    if (!owner_)
        return 0;
    PaintState& cache = owner_->Cache();
    const bool buffered = DoubleBuffering() && buffer_;
    {
        PaintDC dc(hWnd_);
        if (!(buffered && cache.rulerValid)) {
            if (buffered)
                buffer_->Erase();
            drawRuler(hWnd_, buffered ? buffer_->GetDC() : dc.get());
            if (buffered)
                cache.rulerValid = 1;
        }
    }
    if (buffered)
        buffer_->Blit();
    return 0;
}
