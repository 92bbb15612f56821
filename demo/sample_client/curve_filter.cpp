// The colour curves, evaluated per pixel from several threads at once. The picture's
// values are floats, not 8-bit levels, so there is no small table to build first: every
// channel of every pixel is one value of its curve with the lookup table, which the curves
// allow from any number of threads while the user-interface thread edits.
//
// A row's channel is one batch call (ICurveBatch::ValuesAtStrided): the values are read
// from the interleaved picture three floats apart and written into a plane per channel,
// and the curve answers all 1,920 of them as 1,920 calls of ValueAt would, bit for bit,
// with the processor's vector instructions. A curve module without the batch interface
// is asked value by value.
#include "curve_filter.h"

#include "curvectl/icurve_batch.h"

#include <algorithm>
#include <thread>
#include <vector>

namespace {

/// Channel c of `count` pixels (RGB floats from `src`) through `curve` into `plane`.
void MapChannel(ICurve* curve, ICurveBatch* batch, TimeValue t, const float* src, int c, int count,
                float* plane) {
    Interval valid = FOREVER;
    if (!curve) {
        for (int x = 0; x < count; ++x)
            plane[x] = src[3 * x + c];
        return;
    }
    constexpr int kPixelStride = 3 * sizeof(float);
    if (batch && batch->ValuesAtStrided(t, src + c, kPixelStride, plane, sizeof(float), count,
                                        valid, TRUE) == count)
        return;
    for (int x = 0; x < count; ++x)
        plane[x] = curve->ValueAt(t, src[3 * x + c], valid, TRUE);
}

void ApplyRows(ICurve* const curves[3], TimeValue t, int width, int rowBegin, int rowEnd,
               const float* src, uint32_t* out) {
    ICurveBatch* batch[3] = {};
    for (int c = 0; c < 3; ++c)
        if (curves[c])
            batch[c] = static_cast<ICurveBatch*>(curves[c]->GetInterface(I_CURVE_BATCH_INTERFACE));
    std::vector<float> planes(std::size_t(width) * 3);
    float* plane[3] = {planes.data(), planes.data() + width, planes.data() + 2 * width};
    for (int y = rowBegin; y < rowEnd; ++y) {
        const std::size_t row = std::size_t(y) * std::size_t(width);
        for (int c = 0; c < 3; ++c)
            MapChannel(curves[c], batch[c], t, src + row * 3, c, width, plane[c]);
        for (int x = 0; x < width; ++x)
            out[row + std::size_t(x)] = (ChannelByte(plane[0][x]) << 16) |
                                        (ChannelByte(plane[1][x]) << 8) | ChannelByte(plane[2][x]);
    }
}

/// ApplyRows that never throws back into the host: a band without memory for its planes
/// is left as it was.
void ApplyRowsSafely(ICurve* const curves[3], TimeValue t, int width, int rowBegin, int rowEnd,
                     const float* src, uint32_t* out) {
    try {
        ApplyRows(curves, t, width, rowBegin, rowEnd, src, out);
    } catch (...) {
    }
}

} // namespace

int ApplyCurves(ICurve* const curves[3], TimeValue t, int width, int height, const float* src,
                uint32_t* out) {
    if (width < 1 || height < 1 || !src || !out)
        return 0;
    // At least two bands even on one core: the curves are meant to be read concurrently,
    // and the demo shows that they can be.
    const int cores = std::clamp(int(std::thread::hardware_concurrency()), 2, 8);
    const int bands = std::min(cores, height);
    const int rows = (height + bands - 1) / bands;
    std::vector<std::thread> threads;
    int workers = 1;
    try {
        threads.reserve(std::size_t(bands));
    } catch (...) {
    }
    // Band 0 is the calling thread's; a band whose thread cannot start is done here too,
    // since nothing may be thrown back into the host.
    for (int b = 1; b < bands; ++b) {
        const int begin = b * rows, end = std::min(height, begin + rows);
        if (begin >= end)
            continue;
        try {
            threads.emplace_back(ApplyRowsSafely, curves, t, width, begin, end, src, out);
            ++workers;
        } catch (...) {
            ApplyRowsSafely(curves, t, width, begin, end, src, out);
        }
    }
    ApplyRowsSafely(curves, t, width, 0, std::min(height, rows), src, out);
    for (std::thread& th : threads)
        th.join();
    return workers;
}
