#include "modes/edit_drag.h"

#include "control/control_undo.h"
#include "control/curve_control.h"
#include "editor/curve_ctl_window.h"
#include "host/core_interface.h"
#include "host/hold.h"
#include "modes/mouse_modes.h"
#include "platform/res_string.h"

#include <algorithm>

namespace edit_drag {

namespace {

/// Holds the control's repaints back for a scope: a hold that rolls back restores each
/// curve's points, and each restored curve asks its owner for a whole repaint. Sixteen
/// curves would repaint the graph sixteen times per drag step; the step repaints once.
class QuietRedraw {
public:
    explicit QuietRedraw(CurveControl* control)
        : control_(control), was_(control ? control->RedrawEnabled() : FALSE) {
        if (control_)
            control_->EnableRedraw(FALSE);
    }
    ~QuietRedraw() {
        if (control_)
            control_->EnableRedraw(was_);
    }
    QuietRedraw(const QuietRedraw&) = delete;
    QuietRedraw& operator=(const QuietRedraw&) = delete;

private:
    CurveControl* control_; // not owned
    BOOL was_;              // the setting to put back
};

void dropCaches(CurveCtlWindow& w) {
    ForEachDisplayed(w, [](Curve& c, int) { c.InvalidateCache(); });
}

} // namespace

TimeValue Now() { return GetCOREInterface()->GetTime(); }

void SelectionLimits(CurveCtlWindow& w, TimeValue t, DragLimits& limits) {
    bool first = true;
    ForEachDisplayed(w, [&](Curve& c, int) {
        float xlo, xhi, ylo, yhi;
        c.GetMoveRange(t, -1, xlo, xhi);
        c.GetMoveYRange(t, -1, ylo, yhi);
        limits.xLow = first ? xlo : std::max(limits.xLow, xlo);
        limits.xHigh = first ? xhi : std::min(limits.xHigh, xhi);
        limits.yLow = first ? ylo : std::max(limits.yLow, ylo);
        limits.yHigh = first ? yhi : std::min(limits.yHigh, yhi);
        first = false;
    });
    if (first) // nothing displayed: nothing moves, whatever the limits
        limits.xLow = limits.xHigh = limits.yLow = limits.yHigh = 0.0f;
    limits.computed = 1;
}

void BeginDrag(CurveCtlWindow& w, bool prepare, int prepareName) {
    theHold.SuperBegin();
    if (prepare) {
        theHold.Begin();
        ForEachDisplayed(w, [](Curve& c, int) { c.AnimateSelectedKnots(TRUE, nullptr); });
        theHold.Accept(GetResString(prepareName));
    }
    theHold.Begin();
    if (theHold.Holding() && w.Control())
        theHold.Put(new CurveAFlagHandler(w.Control()));
}

void RestorePressState(CurveCtlWindow& w) {
    {
        QuietRedraw quiet(w.Control());
        theHold.Restore();
    }
    dropCaches(w);
}

void EndDrag(CurveCtlWindow& w, bool accept, int name) {
    {
        QuietRedraw quiet(w.Control());
        if (accept) {
            theHold.Accept(GetResString(name));
            theHold.SuperAccept(GetResString(name));
        } else {
            theHold.Cancel();
            theHold.SuperCancel();
        }
    }
    dropCaches(w);
    if (accept && w.Control())
        w.Control()->NotifyDependents(FOREVER, PART_ALL, REFMSG_CHANGE);
    w.RepaintDragEnd();
}

void AbandonDrag(CurveControl& control) {
    {
        QuietRedraw quiet(&control);
        theHold.Cancel();
        theHold.SuperCancel();
    }
    for (int i = 0; i < control.GetCurveCount(); ++i)
        if (Curve* c = control.GetCurveObject(i))
            c->InvalidateCache();
}

} // namespace edit_drag

// ---------------------------------------------------------------------------------------
// The modes' dispatch

// The window is being torn down: only the holds are closed.
EditDragMouseProc::~EditDragMouseProc() {
    if (openDrag)
        edit_drag::AbandonDrag(*openDrag);
}

int EditDragMouseProc::proc(HWND, int msg, int point, int flags, IPoint2 m) {
    if (!window || !window->Control())
        return 1;
    switch (msg) {
    case MOUSE_POINT:
        if (point == 0)
            return pressed(m);
        if (openDrag)
            finish(true);
        break;
    case MOUSE_MOVE:
        if (openDrag)
            drag(flags, m);
        break;
    case MOUSE_ABORT:
        if (openDrag)
            finish(false);
        break;
    default:
        break;
    }
    return 1;
}
