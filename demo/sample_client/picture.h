// The picture that ColourCurves works on, drawn by code at any size: an evening landscape
// above two test strips, a rainbow (every hue at full strength) and a grey ramp from 0 to
// 1, on which the three curves show directly.
#pragma once

/// Writes `width` x `height` pixels (rows top to bottom, red, green, blue floats in
/// [0, 1]) into `rgb`. Nothing happens when either size is below 1.
void DrawPicture(int width, int height, float* rgb);
