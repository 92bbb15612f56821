// What the graph and the ruler strip draw, given a device context: the pictures behind
// CurveWindow::Paint and PosWindow::Paint, which own the off-screen caching around them.
//
//   graph_paint.cpp  DrawGraph: background, marker line, value grid and labels, x-range
//                    limits, zero line, curves
//   ruler_paint.cpp  DrawRuler: frame, ticks and x labels
#pragma once

#include "editor/view_mapping.h"
#include "host/interval.h"
#include "host/win_types.h"

class CurveCtlWindow;

/// The editor's current view: the graph's usable area, the scales and the offsets read
/// from the scroll bars.
view::ViewMapping CurrentView(CurveCtlWindow& w);

/// The y scale the curves are drawn and hit-tested with: ys times the conversion factor
/// of the host's default dimension when that dimension is a percentage (type 8), else ys.
/// The host offers no dimensions to this module, so the factor is 1.
float CurveYScale(float ys);

/// The mapping curves are drawn and hit-tested with in the graph of `w`.
CurveScreen GraphCurveScreen(CurveCtlWindow& w);

/// Draws the graph of `w` for `time` into `hdc` (graph client coordinates), covering
/// `rect`: the background and frame (control flag 1), the marker line (0x40000), the value
/// grid with labels, the x-range limits and the zero line (flag 2, which also clips the
/// curves to the usable area), then the curves: those not displayed first (unless flag
/// 0x400 hides them), then the displayed ones, each group from the last curve to the first.
/// Stores the grid step (0 without flag 2) in the window's paint state. Leaves `hdc` as it
/// found it.
void DrawGraph(CurveCtlWindow& w, HDC hdc, const RECT& rect, TimeValue time);

/// Draws the ruler strip `strip` of `w` into `hdc` (strip client coordinates): its frame,
/// its ticks and its x labels. Leaves `hdc` as it found it.
void DrawRuler(CurveCtlWindow& w, HWND strip, HDC hdc);
