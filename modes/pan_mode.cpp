// DeformPanMouseProc: dragging moves the view with the mouse, drawn live. Installed on the
// left button by the Pan view mode and, with scroll bars (flag 32), on the middle button.
#include "editor/curve_ctl_window.h"
#include "editor/editor_resources.h"
#include "modes/mouse_modes.h"
#include "modes/view_mode_math.h"

int DeformPanMouseProc::proc(HWND, int msg, int point, int, IPoint2 m) {
    if (!window)
        return 1;
    CurveCtlWindow& w = *window;
    switch (msg) {
    case MOUSE_POINT:
        if (point == 0) {
            start = m;
            startX0 = w.HorizontalOffset();
            startY0 = w.GetVerticalOffset(true);
        } else {
            w.UpdateHorizontalRange(0);
        }
        break;
    case MOUSE_MOVE:
        SetCursor(LoadEditorResources().panCursor);
        SetScrollPos(w.HorizontalBar(), SB_CTL, viewmode::PannedHpos(startX0, start.x - m.x), TRUE);
        w.SetVerticalOffset(viewmode::PannedY0(startY0, start.y - m.y), true);
        w.RefreshViewNow();
        break;
    case MOUSE_ABORT:
        w.SetOffsets(startX0, startY0);
        w.RefreshView();
        break;
    case MOUSE_FREEMOVE:
        SetCursor(LoadEditorResources().panCursor);
        break;
    default:
        break;
    }
    return 1;
}
