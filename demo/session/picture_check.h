// The check that the viewport shows the picture through the curves: the pixels on screen
// against the source picture mapped through the control's curves, evaluated here exactly
// (no lookup table), independently of how the effect computes them.
#pragma once

#include "curvectl/icurvectl.h"

class Viewport;

namespace session {

struct PictureCheck {
    int samples = 0;    // pixels compared (those another window covers are not)
    int mismatches = 0; // pixels with a channel more than kTolerance levels off
    int worst = 0;      // largest difference of a channel, in 8-bit levels
    int changed = 0;    // pixels the curves move more than kTolerance levels off the source
    /// The lookup table the effect uses and the rounding to 8 bits stay within this.
    static constexpr int kTolerance = 2;
    bool Passed() const { return samples > 0 && mismatches == 0; }
};

/// Compares every 4th pixel of every 4th row of the viewport's picture with the curves of
/// `control` at time t, leaving out what the program's other top-level windows (a floating
/// editor) cover.
PictureCheck CheckPicture(Viewport& view, ICurveCtl* control, TimeValue t);

} // namespace session
