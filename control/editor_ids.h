// The vocabulary a CurveControl and its editor share: the editor's command ids (the control
// uses some of them: ZoomExtents sends kZoomExtents, SetToolMode selects kMove, kScale or
// kAddPoint) and the limits and starting values of the editor's view scales (SetZoomState
// clamps to them). The ids are fixed: clients send some of them to the editor window as
// WM_COMMAND (kZoomExtents, kDeletePoint, as the Delete key does).
#pragma once

namespace editor_id {

// Edit toolbar (top)
constexpr int kMove = 400;
constexpr int kScale = 401;
constexpr int kAddPoint = 402;
constexpr int kMirror0 = 403; // mirror displayed curves, direction 0
constexpr int kMirror1 = 404; // direction 1
constexpr int kRefit0 = 406;  // refit under the aspect lock, direction 0
constexpr int kRefit1 = 407;  // direction 1
constexpr int kDeletePoint = 420;
constexpr int kCurveButton = 500; // 500 + i: display toggle of curve i (up to 599)
constexpr int kCurveButtonLast = 599;
constexpr int kResetCurves = 660;
constexpr int kHostCommandMode = 670; // the host's own command mode as an edit mode
constexpr int kGeneratePath = 680;
constexpr int kNotifyChanged = 690;
constexpr int kWholeCurveCommand = 1110;

// View toolbar (bottom)
constexpr int kStatus = 1000;
constexpr int kZoomVertically = 1010;
constexpr int kZoomHorizontally = 1015;
constexpr int kZoomRegion = 1020;
constexpr int kPan = 1030;
constexpr int kZoomExtents = 1035;
constexpr int kZoomVerticalExtents = 1040;
constexpr int kZoomHorizontalExtents = 1050;
constexpr int kXEntry = 1070;
constexpr int kYEntry = 1080;
constexpr int kZoom = 1090;

} // namespace editor_id

/// The editor's view scales (pixels per curve unit): their limits and the scales of a
/// newly opened editor.
namespace view_scale {

constexpr float kXScaleMin = 0.00002f;
constexpr float kXScaleMax = 1000000.0f;
constexpr float kYScaleMin = 0.0000001f;
constexpr float kYScaleMax = 100000000.0f;
constexpr float kInitialXScale = 0.138f;
constexpr float kInitialYScale = 0.003f;

} // namespace view_scale
