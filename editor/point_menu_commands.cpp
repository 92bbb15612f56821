// The commands of the point menu (menu 101), which reach the graph window because it owns
// the tracked menu: the type of the selected points, the edit mode, Delete.
#include "control/control_commands.h"
#include "control/curve_control.h"
#include "editor/curve_ctl_window.h"
#include "editor/sub_windows.h"
#include "host/core_interface.h"
#include "host/hold.h"
#include "platform/res_string.h"
#include "res/resource.h"

namespace {

/// Gives the selected points of every displayed curve the type `type` (flags & 3), as one
/// undo step, then repaints and tells the control's dependents.
void changeSelectedTypes(CurveCtlWindow& w, int type) {
    CurveControl& control = *w.Control();
    const TimeValue t = GetCOREInterface()->GetTime();
    const BitArray& shown = w.ShownCurves();
    theHold.Begin();
    for (int i = 0; i < control.GetCurveCount(); ++i) {
        Curve* c = control.GetCurveObject(i);
        if (!c || !shown[i])
            continue;
        // The selection bits live in the point table, which a type change does not
        // reorder: reading them as we go is safe.
        for (int k = 0; k < c->PointCount(); ++k)
            if (c->Knots()[k].flags & KNOT_SELECTED)
                c->ChangeKnotType(t, k, type);
    }
    theHold.Accept(GetResString(IDS_TYPE_CHANGE));
    w.RedrawGraph();
    NotifyControlChanged(control);
}

} // namespace

LRESULT CurveWindow::Command(int, int id, HWND) {
    if (!owner_ || !owner_->Control())
        return 0;
    CurveControl& control = *owner_->Control();
    switch (id) {
    case IDM_TYPE_CORNER:
        changeSelectedTypes(*owner_, KNOT_TYPE_CORNER);
        break;
    case IDM_TYPE_BEZIER_SMOOTH:
        changeSelectedTypes(*owner_, KNOT_TYPE_BEZIER_SMOOTH);
        break;
    case IDM_TYPE_BEZIER_CORNER:
        changeSelectedTypes(*owner_, KNOT_TYPE_BEZIER_CORNER);
        break;
    case IDM_MOVE_XY:
        control.SetToolMode(CC_TOOL_MOVE_XY);
        break;
    case IDM_MOVE_X:
        control.SetToolMode(CC_TOOL_MOVE_X);
        break;
    case IDM_MOVE_Y:
        control.SetToolMode(CC_TOOL_MOVE_Y);
        break;
    case IDM_SCALE:
        control.SetToolMode(CC_TOOL_SCALE);
        break;
    case IDM_INSERT_CORNER:
        control.SetToolMode(CC_TOOL_INSERT_CORNER);
        break;
    case IDM_INSERT_BEZIER:
        control.SetToolMode(CC_TOOL_INSERT_BEZIER);
        break;
    case IDM_DELETE:
        // One hold; no undo step when no displayed curve had a selected point to delete.
        DeleteSelectedPoints(control);
        break;
    default:
        break; // anything else (40008, 40011, ids of other menus) is not ours
    }
    return 0;
}
