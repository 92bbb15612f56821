// The editor's whole-curve commands: they act on every displayed curve at once (mirror,
// refit, delete the selected points), on the display itself, or on the control as a
// whole. The editor's command dispatcher calls RunControlCommand with the id of the
// WM_COMMAND it received; each command is one undo step on theHold.
//
// "Displayed" is CurveControl::DisplayedCurves: the open editor's copy of the display bits,
// or, while the editor is closed, the control's shown-curves bits (GetShownCurves), so that
// the commands also work on a control whose editor is not open.
#pragma once

#include <functional>

class CurveControl;
class SplineShape;

/// @name Command ids
/// @{
#define CC_CMD_MIRROR_X 403           // mirror horizontally (x reversed)
#define CC_CMD_MIRROR_Y 404           // mirror vertically (y reversed)
#define CC_CMD_REFIT_CCW 406          // quarter turn counter-clockwise, fitted to the range
#define CC_CMD_REFIT_CW 407           // quarter turn clockwise, fitted to the range
#define CC_CMD_DELETE_POINTS 420      // delete the selected points (also the Delete key)
#define CC_CMD_TOGGLE_CURVE_FIRST 500 // 500 + i: show or hide curve i
#define CC_CMD_TOGGLE_CURVE_LAST 599
#define CC_CMD_RESET_CURVES 660   // ResetSelectedCurves
#define CC_CMD_GENERATE_PATH 680  // a new spline shape holding a unit line
#define CC_CMD_NOTIFY_CHANGED 690 // tell the control's dependents it changed
/// @}

/// Receives the spline shape that the generate-path command makes, inside the command's
/// hold. A receiver that keeps the shape makes a reference to it (which the hold records,
/// so the command's undo step takes the shape away again); a shape that nothing references
/// when the receiver returns is released.
using PathReceiver = std::function<void(SplineShape& shape)>;

/// Runs command `id`; false when `id` is none of the ids above. `receiver` is only used by
/// CC_CMD_GENERATE_PATH.
bool RunControlCommand(CurveControl& control, int id, const PathReceiver& receiver = {});

/// @name One entry point per command
/// @{

/// Mirrors every displayed curve (direction 0 horizontal, 1 vertical) as one undo step
/// "IDS_TH_MIRROR". When a displayed curve is animated, first asks the user (Yes/No, owned
/// by the editor window) whether to go on, since mirroring drops every point controller;
/// false when the answer was not Yes, and nothing changed.
bool MirrorDisplayedCurves(CurveControl& control, int direction);

/// Turns every displayed curve by a quarter (direction 0 counter-clockwise, 1 clockwise)
/// and fits it into the x range, as one undo step "IDS_TH_ROTATE" bracketed by the
/// aspect-lock records. Asks first like MirrorDisplayedCurves.
bool RefitDisplayedCurves(CurveControl& control, int direction);

/// Deletes the selected points of every displayed curve as one undo step "Delete Point";
/// false (and no undo step) when no curve had a selected point to delete.
bool DeleteSelectedPoints(CurveControl& control);

/// Shows or hides curve `curve` as one undo step "Display Curve Toggle"; does nothing while
/// the control flag CC_NOFILTERBUTTONS is set. The open editor records the display change
/// itself; with the editor closed the command records it.
void ToggleCurveDisplayCommand(CurveControl& control, int curve);

/// Builds a spline shape with one spline from (0, 0, 0) to (1, 0, 0) (two corner knots on a
/// curve segment), hands it to `receiver`, accepts the hold as "IDS_TH_GENPATH" and asks
/// the host to redraw its views at the current time. The path takes nothing from the
/// curves: it is always that unit line, a starting object.
void GeneratePath(const PathReceiver& receiver);

/// Tells the control's dependents that it changed over all time, all parts.
void NotifyControlChanged(CurveControl& control);

/// @}
