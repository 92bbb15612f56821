// DeformZoomRegionMouseProc: the user drags a dotted box; on release the box's width and
// height are zoomed to fill the graph's usable area, centred. A box without width (or
// height) leaves that axis as it was.
#include "editor/curve_ctl_window.h"
#include "editor/editor_resources.h"
#include "host/colorman.h"
#include "host/core_interface.h"
#include "modes/mouse_modes.h"
#include "modes/view_mode_math.h"

#include <cstdlib>

namespace {

/// Zooms the box `a`-`b` (graph pixels) to fill the usable area.
void zoomTo(CurveCtlWindow& w, IPoint2 a, IPoint2 b) {
    const RECT usable = w.UsableArea();
    const IPoint2 centre((a.x + b.x) / 2, (a.y + b.y) / 2);
    ViewScale& scale = w.Scale();
    // Both halves start from the view before the zoom.
    const int hpos = GetScrollPos(w.HorizontalBar(), SB_CTL);
    const int y0 = w.GetVerticalOffset(true);

    if (const int dx = std::abs(b.x - a.x)) {
        const viewmode::RegionX x = viewmode::ZoomRegionX(usable, dx, centre.x, scale.xs, hpos);
        scale.xs = x.xs;
        w.UpdateHorizontalRange(0);
        SetScrollPos(w.HorizontalBar(), SB_CTL, x.hpos, TRUE);
    }
    if (const int dy = std::abs(b.y - a.y)) {
        const int height = usable.bottom - usable.top + 1;
        const viewmode::RegionY y = viewmode::ZoomRegionY(height, dy, centre.y, scale.ys, y0);
        scale.ys = y.ys;
        w.UpdateVerticalRange(GetCOREInterface()->GetTime());
        w.SetVerticalOffset(y.y0, true);
    }
    w.AspectCoupling(1);
    w.RefreshView();
}

} // namespace

int DeformZoomRegionMouseProc::proc(HWND hwnd, int msg, int point, int, IPoint2 m) {
    if (!window)
        return 1;
    switch (msg) {
    case MOUSE_POINT:
        if (point == 0) {
            start = previous = m;
            XORDottedRect(hwnd, start, m);
        } else {
            XORDottedRect(hwnd, start, previous); // erase
            zoomTo(*window, start, m);
        }
        break;
    case MOUSE_MOVE:
        SetCursor(LoadEditorResources().zoomRegionCursor);
        XORDottedRect(hwnd, start, previous);
        XORDottedRect(hwnd, start, m);
        previous = m;
        break;
    case MOUSE_ABORT:
        XORDottedRect(hwnd, start, previous);
        break;
    case MOUSE_FREEMOVE:
        SetCursor(LoadEditorResources().zoomRegionCursor);
        break;
    default:
        break;
    }
    return 1;
}
