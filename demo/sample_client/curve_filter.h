// Colour curves applied to a picture: each channel of each pixel goes through its curve.
#pragma once

#include "curvectl/icurve.h"

#include <cstdint>

/// out[i] = 0x00RRGGBB of the pixel src[3i .. 3i+2] with each channel c replaced by
/// curves[c]->ValueAt(t, value) (the lookup table), clamped to [0, 1] and rounded to 8
/// bits. A null curve leaves its channel as it is. The rows are shared out among several
/// threads, which evaluate the curves at once; all have finished when this returns.
/// Returns the number of threads that worked.
int ApplyCurves(ICurve* const curves[3], TimeValue t, int width, int height, const float* src,
                uint32_t* out);

/// The 8-bit value of a curve result: clamped to [0, 1], times 255, rounded.
inline uint32_t ChannelByte(float v) {
    v = v < 0.0f ? 0.0f : (v > 1.0f ? 1.0f : v);
    return uint32_t(v * 255.0f + 0.5f);
}
