// The colour curves, evaluated per pixel from several threads at once. The picture's
// values are floats, not 8-bit levels, so there is no small table to build first: every
// channel of every pixel is one ValueAt with the lookup table, which the curves allow from
// any number of threads while the user-interface thread edits.
#include "curve_filter.h"

#include <algorithm>
#include <thread>
#include <vector>

namespace {

void ApplyRows(ICurve* const curves[3], TimeValue t, int width, int rowBegin, int rowEnd,
               const float* src, uint32_t* out) {
    for (int y = rowBegin; y < rowEnd; ++y) {
        const std::size_t row = std::size_t(y) * std::size_t(width);
        for (int x = 0; x < width; ++x) {
            const float* p = src + (row + std::size_t(x)) * 3;
            uint32_t pixel = 0;
            for (int c = 0; c < 3; ++c) {
                float v = p[c];
                if (curves[c]) {
                    Interval valid = FOREVER;
                    v = curves[c]->ValueAt(t, v, valid, TRUE);
                }
                pixel = (pixel << 8) | ChannelByte(v);
            }
            out[row + std::size_t(x)] = pixel;
        }
    }
}

} // namespace

void ApplyCurves(ICurve* const curves[3], TimeValue t, int width, int height, const float* src,
                 uint32_t* out) {
    if (width < 1 || height < 1 || !src || !out)
        return;
    // At least two bands even on one core: the curves are meant to be read concurrently,
    // and the demo shows that they can be.
    const int cores = std::clamp(int(std::thread::hardware_concurrency()), 2, 8);
    const int bands = std::min(cores, height);
    const int rows = (height + bands - 1) / bands;
    std::vector<std::thread> threads;
    threads.reserve(std::size_t(bands));
    // Band 0 is the calling thread's; a band whose thread cannot start is done here too,
    // since nothing may be thrown back into the host.
    for (int b = 1; b < bands; ++b) {
        const int begin = b * rows, end = std::min(height, begin + rows);
        if (begin >= end)
            continue;
        try {
            threads.emplace_back(ApplyRows, curves, t, width, begin, end, src, out);
        } catch (...) {
            ApplyRows(curves, t, width, begin, end, src, out);
        }
    }
    ApplyRows(curves, t, width, 0, std::min(height, rows), src, out);
    for (std::thread& th : threads)
        th.join();
}
