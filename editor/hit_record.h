// What a hit test of the graph reports: one record per curve that was hit, holding the
// curve's index and its hits (point, segment or handle, curve/curve_screen.h). The mouse
// modes read these to pick points, handles and segments.
//
// Request and result words are those of the curves (CURVE_HIT_... in curve_screen.h):
//   CURVE_HIT_CLICK (0x400)  the box is 4 pixels around the mouse point
//   CURVE_HIT_REGION (0x800) the box is the dragged rectangle, normalised and 4 pixels wider
//   CURVE_HIT_STOP_FIRST (0x4) ends the search after the first curve with a point hit
#pragma once

#include "curve/curve_screen.h"
#include "host/tab.h"

#include <vector>

/// The hits of one curve.
struct CurveHitList {
    int curve = -1;     // index of the curve in the control
    Tab<CurveHit> hits; // (index, part) pairs in the order they were found
};

/// The records of one graph hit test, in curve order; only curves that were hit appear.
using GraphHits = std::vector<CurveHitList>;
