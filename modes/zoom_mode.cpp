// DeformZoomMouseProc: the three zoom view modes. Zoom Vertically scales y by the
// vertical drag, Zoom Horizontally x by the horizontal drag, and Zoom both by the vertical
// drag, or, with Ctrl, each by its own direction. The curve point at the middle of the
// graph stays where it is.
#include "editor/curve_ctl_window.h"
#include "editor/editor_resources.h"
#include "editor/graph_paint.h"
#include "host/core_interface.h"
#include "modes/mouse_modes.h"
#include "modes/view_mode_math.h"

int DeformZoomMouseProc::proc(HWND hwnd, int msg, int point, int flags, IPoint2 m) {
    if (!window)
        return 1;
    CurveCtlWindow& w = *window;
    ViewScale& scale = w.Scale();
    switch (msg) {
    case MOUSE_POINT:
        if (point == 0) {
            const view::ViewMapping view = CurrentView(w);
            start = m;
            startYScale = view.ys;
            startXScale = view.xs;
            startY0 = view.y0;
            startX0 = view.x0;
            RECT client{};
            GetClientRect(hwnd, &client);
            anchor =
                viewmode::ZoomAnchor(view, client.right - client.left, client.bottom - client.top);
        } else {
            w.UpdateHorizontalRange(0);
        }
        break;

    case MOUSE_MOVE: {
        SetCursor(LoadEditorResources().zoomCursor);
        const int mode = w.ViewMode();
        bool coupled = false;
        if (mode == kViewZoomVertical || mode == kViewZoom) {
            // Dragging up zooms in.
            const float f = viewmode::ZoomFactor(start.y - m.y);
            scale.ys = CurveCtlWindow::ClampYScale(f * startYScale);
            w.UpdateVerticalRange(GetCOREInterface()->GetTime());
            w.SetVerticalOffset(viewmode::ZoomedY0(anchor.y, f, startYScale, startY0), true);
            coupled = w.AspectCoupling(0) != 0;
        }
        if ((mode == kViewZoomHorizontal || mode == kViewZoom) && !coupled) {
            // Plain Zoom follows the vertical drag on both axes, so both scale alike.
            const bool ownDirection = mode == kViewZoomHorizontal || (flags & MOUSE_CTRL);
            const float f = viewmode::ZoomFactor(ownDirection ? m.x - start.x : start.y - m.y);
            scale.xs = CurveCtlWindow::ClampXScale(f * startXScale);
            w.AspectCoupling(1);
            w.UpdateHorizontalRange(0);
            SetScrollPos(w.HorizontalBar(), SB_CTL,
                         viewmode::ZoomedHpos(anchor.x, f, startXScale, startX0), TRUE);
        }
        w.RefreshViewNow();
        break;
    }

    case MOUSE_ABORT:
        scale.ys = CurveCtlWindow::ClampYScale(startYScale);
        scale.xs = CurveCtlWindow::ClampXScale(startXScale);
        w.SetOffsets(startX0, startY0);
        w.RefreshView();
        break;

    case MOUSE_FREEMOVE:
        SetCursor(LoadEditorResources().zoomCursor);
        break;

    default:
        break;
    }
    return 1;
}
