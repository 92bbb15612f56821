// The editor's commands: toolbar buttons, fly-offs and the ids the control and the
// Delete key send; the edit and view modes they switch; the status prompt of each mode.
#include "control/control_commands.h"
#include "control/curve_control.h"
#include "editor/curve_ctl_window.h"
#include "host/core_interface.h"
#include "platform/res_string.h"

namespace {

/// Set while SetEditMode makes the host leave its command mode: the host may call back
/// into the editor meanwhile. Per process, user-interface thread only.
bool leavingHostMode = false;

constexpr int kEditButtons[] = {editor_id::kMove, editor_id::kScale, editor_id::kAddPoint};
/// View mode -> its button: pan, zoom horizontally, zoom vertically, zoom region, zoom.
constexpr int kViewButtons[] = {editor_id::kPan, editor_id::kZoomHorizontally,
                                editor_id::kZoomVertically, editor_id::kZoomRegion,
                                editor_id::kZoom};
/// View mode -> its prompt: pan, zoom horizontally, zoom vertically, zoom region, zoom.
constexpr int kViewPrompts[] = {IDS_PROMPT_PAN, IDS_PROMPT_ZOOM_HORIZONTAL,
                                IDS_PROMPT_ZOOM_VERTICAL, IDS_PROMPT_ZOOM_REGION, IDS_PROMPT_ZOOM};

} // namespace

// ---------------------------------------------------------------------------------------
// Command dispatch

LRESULT CurveCtlWindow::Command(int notifyCode, int id, HWND) {
    CurveControl& control = *control_;
    if (id >= editor_id::kCurveButton && id <= editor_id::kCurveButtonLast)
        ToggleCurveDisplayCommand(control, id - editor_id::kCurveButton);

    switch (id) {
    case editor_id::kZoomVertically:
        SetViewMode(kViewZoomVertical);
        break;
    case editor_id::kZoomHorizontally:
        SetViewMode(kViewZoomHorizontal);
        break;
    case editor_id::kZoomRegion:
        SetViewMode(kViewZoomRegion);
        break;
    case editor_id::kPan:
        SetViewMode(kViewPan);
        break;
    case editor_id::kZoom:
        SetViewMode(kViewZoom);
        break;
    case editor_id::kZoomExtents:
        ZoomExtents();
        break;
    case editor_id::kZoomVerticalExtents:
        ZoomVerticalExtents(GetCOREInterface()->GetTime(), true);
        break;
    case editor_id::kZoomHorizontalExtents:
        ZoomHorizontalExtents(true);
        break;
    case editor_id::kWholeCurveCommand:
        RunControlCommand(control, id);
        break;
    case editor_id::kNotifyChanged:
        NotifyControlChanged(control);
        break;
    case editor_id::kResetCurves:
        control.ResetSelectedCurves();
        break;
    case editor_id::kMove:
    case editor_id::kScale:
    case editor_id::kAddPoint:
    case editor_id::kHostCommandMode:
        if (notifyCode == 0 || notifyCode == BN_FLYOFF) {
            if (id == editor_id::kHostCommandMode && editMode_ == editor_id::kHostCommandMode)
                GetCOREInterface()->PopCommandMode();
            else
                SetEditMode(id);
        }
        break;
    case editor_id::kGeneratePath:
        GeneratePath({});
        break;
    case editor_id::kMirror0:
        MirrorDisplayedCurves(control, 0);
        break;
    case editor_id::kMirror1:
        MirrorDisplayedCurves(control, 1);
        break;
    case editor_id::kRefit0:
        RefitDisplayedCurves(control, 0);
        break;
    case editor_id::kRefit1:
        RefitDisplayedCurves(control, 1);
        break;
    case editor_id::kDeletePoint:
        DeleteSelectedPoints(control);
        break;
    default:
        break;
    }
    ShowPrompt();
    return 0;
}

// ---------------------------------------------------------------------------------------
// Prompts

void CurveCtlWindow::ShowPrompt() {
    ICustStatus* status = toolbars_.status.get();
    if (!status)
        return;
    int prompt = 0;
    if (viewMode_ >= 0 && viewMode_ < int(std::size(kViewPrompts))) {
        prompt = kViewPrompts[viewMode_];
    } else if (viewMode_ < 0) {
        switch (editMode_) {
        case editor_id::kMove:
            prompt = IDS_PROMPT_MOVE;
            break;
        case editor_id::kScale:
            prompt = IDS_PROMPT_SCALE; // keeps the two blanks after "scale."
            break;
        case editor_id::kAddPoint:
            prompt = IDS_PROMPT_INSERT;
            break;
        default:
            return; // any other edit mode leaves the text as it is
        }
    } else {
        return;
    }
    status->SetText(GetResString(prompt));
}

// ---------------------------------------------------------------------------------------
// Edit modes

void CurveCtlWindow::SetEditMode(int id) {
    if (leavingHostMode)
        return;
    if (viewMode_ != kViewNone) {
        viewMode_ = kViewNone;
        for (int b : kViewButtons)
            if (ICustButton* button = toolbars_.Button(b))
                button->SetCheck(FALSE);
    }
    for (int b : kEditButtons)
        if (ICustButton* button = toolbars_.Button(b))
            button->SetCheck(b == id);

    const int previous = editMode_;
    if (previous == editor_id::kHostCommandMode && id != editor_id::kHostCommandMode &&
        control_->GetControlFlags() == 0) {
        leavingHostMode = true;
        GetCOREInterface()->PopCommandMode();
        leavingHostMode = false;
    }
    if (previous == editor_id::kHostCommandMode && id == editor_id::kHostCommandMode)
        return;

    editMode_ = id;
    switch (id) {
    case editor_id::kMove:
        modes_->SetDragMode(IEditorModes::kMove);
        mice_.SetMouseProc(modes_->Get(IEditorModes::kSelect), LEFT_BUTTON, 2);
        break;
    case editor_id::kScale:
        modes_->SetDragMode(IEditorModes::kScale);
        mice_.SetMouseProc(modes_->Get(IEditorModes::kSelect), LEFT_BUTTON, 2);
        break;
    case editor_id::kAddPoint:
        mice_.SetMouseProc(modes_->Get(IEditorModes::kInsert), LEFT_BUTTON, 2);
        break;
    default:
        break;
    }
}

// ---------------------------------------------------------------------------------------
// View modes

void CurveCtlWindow::SetViewMode(int mode) {
    if (mode == viewMode_) {
        // The active view tool again: back to the edit mode that was active before.
        mice_.SetMouseProc(modes_->Get(IEditorModes::kIdle), LEFT_BUTTON, 2);
        SetEditMode(editMode_);
        viewMode_ = kViewNone;
        ShowPrompt();
        return;
    }
    if (editMode_ == editor_id::kHostCommandMode)
        GetCOREInterface()->PopCommandMode();

    for (int b :
         {editor_id::kMove, editor_id::kScale, editor_id::kAddPoint, editor_id::kDeletePoint})
        if (ICustButton* button = toolbars_.Button(b))
            button->SetCheck(FALSE);
    viewMode_ = mode;
    if (mode < kViewPan || mode > kViewZoom) {
        ShowPrompt();
        return;
    }
    for (int m = kViewPan; m <= kViewZoom; ++m)
        if (ICustButton* button = toolbars_.Button(kViewButtons[m]))
            button->SetCheck(m == mode);

    switch (mode) {
    case kViewPan:
        mice_.SetMouseProc(modes_->Get(IEditorModes::kPan), LEFT_BUTTON, 2);
        break;
    case kViewZoomRegion:
        mice_.SetMouseProc(modes_->Get(IEditorModes::kZoomRegion), LEFT_BUTTON, 2);
        break;
    default:
        mice_.SetMouseProc(modes_->Get(IEditorModes::kZoom), LEFT_BUTTON, 2);
        break;
    }
    ShowPrompt();
}
