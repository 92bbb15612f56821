// What a scripted session needs to know about the curve control and its editor, learnt
// only through the control's public operations and the editor's windows.
#pragma once

#include "curvectl/icurvectl.h"

#include <vector>

class ReferenceTarget;

namespace session {

/// The curve control among the references of `effect` (any depth), or null.
ICurveCtl* FindCurveControl(ReferenceTarget* effect);

/// The first window below `parent` (any depth) of class `cls` and, when given, text
/// `text`; null when there is none.
HWND FindChild(HWND parent, const char* cls, const char* text = nullptr);
/// The graph window ("DefCurveWindow") of the control's open editor, or null.
HWND EditorGraph(ICurveCtl* control);

/// The graph pixel of curve point `p` in the open editor's current view. The view is
/// read back from the control (GetZoomState, GetScrollState) and mapped the way the
/// editor maps it: column = trunc(x xs) - X0, row = (Hm + 1) / 2 + 4 - Y0 - trunc(y ys),
/// X0 = 2 hpos - 7, Y0 = trunc((Hm + 1) vpos / 100) with bit 0 clear, Hm the height of
/// the graph inset by 6 pixels at the top and bottom when the rulers are drawn.
POINT GraphPixel(ICurveCtl* control, HWND graph, Point2 p);

/// Every point of every curve at time t.
using CurveState = std::vector<std::vector<CurveKnot>>;
CurveState Snapshot(ICurveCtl* control, TimeValue t);
/// Whether two states have the same points (positions and handles within 1e-6, point
/// types equal; selection ignored).
bool SamePoints(const CurveState& a, const CurveState& b);

/// ValueAt (exact, no lookup table) of every curve at the given frames, at 65 evenly
/// spaced x across [0, 1].
std::vector<float> ValueTable(ICurveCtl* control, const std::vector<int>& frames);

} // namespace session
