#include "control/control_commands.h"

#include "control/control_undo.h"
#include "control/curve_control.h"
#include "host/core_interface.h"
#include "host/hold.h"
#include "host/spline_shape.h"
#include "platform/platform.h"
#include "platform/res_string.h"

BitArray CurveControl::DisplayedCurves() {
    if (IsEditorOpen())
        return editorWindow_->DisplayMode();
    return shownCurves_;
}

namespace {

bool anyDisplayedAnimated(CurveControl& control, const BitArray& shown) {
    const int n = control.GetCurveCount();
    for (int i = 0; i < n; ++i) {
        Curve* c = control.GetCurveObject(i);
        if (c && shown[i] && c->IsAnimated())
            return true;
    }
    return false;
}

/// Repaints an open editor after a command changed curves. With `rescale` (the refits)
/// the view is first rescaled when the editor is in its aspect-locked zoom mode, and the
/// ruler follows.
void repaint(CurveControl& control, bool rescale) {
    if (!control.IsEditorOpen())
        return;
    IEditorView* editor = control.Editor();
    if (rescale && editor->AspectRescale(0))
        editor->RedrawRuler();
    editor->RedrawGraph();
}

enum class WholeCurveOp { Mirror, Refit };

bool runWholeCurveCommand(CurveControl& control, WholeCurveOp op, int direction) {
    const bool refit = op == WholeCurveOp::Refit;
    const BitArray shown = control.DisplayedCurves();
    // Both operations drop every point controller of the curve: animation would be lost
    // without a word. The caption and the message are kept as these literal identifiers.
    if (anyDisplayedAnimated(control, shown) &&
        !platform::AskYesNo(control.GetEditorWindow(), "IDS_TH_FIT_CurveCtlWindow",
                            refit ? "40318" : "40329"))
        return false;

    theHold.Begin();
    if (refit && theHold.Holding())
        theHold.Put(new AspectLockStartRestore(&control, 0));
    for (int i = 0; i < control.GetCurveCount(); ++i) {
        Curve* c = control.GetCurveObject(i);
        if (!c || !shown[i])
            continue;
        if (refit)
            c->Rotate(direction, 0);
        else
            c->Mirror(direction);
    }
    if (refit && theHold.Holding())
        theHold.Put(new AspectLockEndRestore(&control, 0));
    theHold.Accept(refit ? "IDS_TH_ROTATE" : "IDS_TH_MIRROR");

    repaint(control, refit);
    NotifyControlChanged(control);
    return true;
}

} // namespace

bool MirrorDisplayedCurves(CurveControl& control, int direction) {
    return runWholeCurveCommand(control, WholeCurveOp::Mirror, direction);
}

bool RefitDisplayedCurves(CurveControl& control, int direction) {
    return runWholeCurveCommand(control, WholeCurveOp::Refit, direction);
}

bool DeleteSelectedPoints(CurveControl& control) {
    theHold.Begin();
    const BitArray shown = control.DisplayedCurves();
    int deleted = 0;
    for (int i = 0; i < control.GetCurveCount(); ++i) {
        Curve* c = control.GetCurveObject(i);
        if (c && shown[i])
            deleted += c->DeleteSelectedKnots();
    }
    if (deleted == 0) {
        theHold.End();
        return false;
    }
    theHold.Accept(GetResString(IDS_DELETE_POINT));
    repaint(control, false);
    NotifyControlChanged(control);
    return true;
}

void ToggleCurveDisplayCommand(CurveControl& control, int curve) {
    if (control.GetControlFlags() & CC_NOFILTERBUTTONS)
        return;
    theHold.Begin();
    const bool editorRecords = control.IsEditorOpen() != FALSE;
    const BitArray before = control.GetShownCurves();
    control.ToggleCurveDisplay(curve);
    if (!editorRecords && theHold.Holding())
        theHold.Put(new DeformDispModeRestore(&control, before, control.GetShownCurves()));
    theHold.Accept(GetResString(IDS_DISPLAY_CURVE_TOGGLE));
}

void GeneratePath(const PathReceiver& receiver) {
    theHold.Begin();
    auto* path = new SplineShape;
    BezierShape& shape = path->shape;
    shape.NewShape();
    Spline3D* spline = shape.NewSpline();
    for (float x : {0.0f, 1.0f}) {
        const Point3 p(x, 0.0f, 0.0f);
        spline->AddKnot(SplineKnot(KTYPE_CORNER, LTYPE_CURVE, p, p, p));
    }
    spline->ComputeBezPoints();
    shape.UpdateSels();
    path->InvalidateGeomCache();
    if (receiver)
        receiver(*path);
    theHold.Accept("IDS_TH_GENPATH");
    Interface* core = GetCOREInterface();
    core->RedrawViews(core->GetTime());
    // Kept only by what the receiver made reference it (or an undo record that pins it).
    path->MaybeAutoDelete();
}

void NotifyControlChanged(CurveControl& control) {
    control.NotifyDependents(FOREVER, PART_ALL, REFMSG_CHANGE);
}

bool RunControlCommand(CurveControl& control, int id, const PathReceiver& receiver) {
    if (id >= CC_CMD_TOGGLE_CURVE_FIRST && id <= CC_CMD_TOGGLE_CURVE_LAST) {
        ToggleCurveDisplayCommand(control, id - CC_CMD_TOGGLE_CURVE_FIRST);
        return true;
    }
    switch (id) {
    case CC_CMD_MIRROR_X:
        MirrorDisplayedCurves(control, 0);
        return true;
    case CC_CMD_MIRROR_Y:
        MirrorDisplayedCurves(control, 1);
        return true;
    case CC_CMD_REFIT_CCW:
        RefitDisplayedCurves(control, 0);
        return true;
    case CC_CMD_REFIT_CW:
        RefitDisplayedCurves(control, 1);
        return true;
    case CC_CMD_DELETE_POINTS:
        DeleteSelectedPoints(control);
        return true;
    case CC_CMD_RESET_CURVES:
        control.ResetSelectedCurves();
        return true;
    case CC_CMD_GENERATE_PATH:
        GeneratePath(receiver);
        return true;
    case CC_CMD_NOTIFY_CHANGED:
        NotifyControlChanged(control);
        return true;
    default:
        return false;
    }
}
