// Painting of the graph and the ruler strip: the off-screen cache and double-buffering
// pipeline around the drawing of each window (the pictures are graph_paint.h's).
//
// [SECTION] Graph
// [SECTION] Ruler
#include "control/curve_control.h"
#include "editor/curve_ctl_window.h"
#include "editor/graph_paint.h"
#include "host/core_interface.h"
#include "host/gdi_tracking.h"
#include "host/offscreen.h"

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
            DrawGraph(w, buffered ? buffer_->GetDC() : dc.get(), rect, t);
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
            DrawRuler(*owner_, hWnd_, buffered ? buffer_->GetDC() : dc.get());
            if (buffered)
                cache.rulerValid = 1;
        }
    }
    if (buffered)
        buffer_->Blit();
    return 0;
}
