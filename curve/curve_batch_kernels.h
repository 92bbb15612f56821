// The vector kernels of batch evaluation (Curve::ValuesAt, curve_batch.cpp) and what they
// read. One algorithm (curve_batch_body.inc) is compiled once per instruction set, each in
// its own file with its own flags (CMakeLists.txt):
//   curve_batch_sse2.cpp    4 lanes, the x86-64 baseline: runs on every processor
//   curve_batch_avx2.cpp    8 lanes, -mavx2 (no FMA)
//   curve_batch_avx512.cpp  16 lanes, -mavx512f
// and curve_batch_dispatch.cpp picks one at run time.
//
// Every result is the one the scalar code of curve_eval.cpp gives, bit for bit: the same
// float operations in the same order, lane by lane, with no fused multiply-add (all these
// files, like the rest, build with -ffp-contract=off). Division stays division.
//
// This header holds plain data and declarations only, never an inline function or a
// template: a wide file that emitted its own copy of an inline function shared with the
// rest of the module could have that copy chosen by the linker for every caller, and
// processors without the wide instructions would fault.
#pragma once

#include <cstddef>

namespace curve_batch {

/// What the classifying kernel reads; resolved once per call by the driver.
struct LookupParams {
    float xlo, xhi; // the owner's x range, read once per call as ValueAt reads it
    int holdEnds;   // end behaviour 1: outside the range the end value holds
    // Beyond x high: holdEnds ? rightHold : rightSlope * (x - rightX0) + rightY0;
    // below x low the same with left. Only used when the curve has two or more points.
    float rightHold, rightSlope, rightX0, rightY0;
    float leftHold, leftSlope, leftX0, leftY0;
    // The lookup table (size + 1 entries), or null: then every x inside the range goes
    // to the exact solve. An x inside whose index position f = (x - xlo) * indexScale
    // is not in (-1, sizeAsFloat) goes there too.
    const float* table;
    int tableSize; // intervals: the table holds tableSize + 1 entries
    float indexScale, step, sizeAsFloat;
};

/// The segments of a curve's cache state for the exact solve, structure of arrays.
struct SegmentTable {
    int points;        // positions in px: two or more
    int ordered;       // px never decreases (and holds no NaN): binary search is exact
    const float* px;   // the points' x positions, `points` of them
    const float* coef; // 8 arrays of points - 1 floats each, at coef + j * (points - 1):
                       // x0 x1 x2 x3 y0 y1 y2 y3 of each segment (as segmentOf gives them)
};

/// One instruction set's kernels.
struct KernelSet {
    const char* name; // "sse2", "avx2", "avx512"
    int lanes;        // floats per vector
    /// Evaluates n values read at xs + i * xStride bytes (outside the range, and inside
    /// from the table) into ys + i * yStride bytes, touching no other byte. Values that
    /// need the exact solve get a meaningless value there; their block index and x are
    /// appended to pendIdx / pendX (room for n), and their number is returned.
    int (*classify)(const LookupParams& p, const char* xs, std::ptrdiff_t xStride, char* ys,
                    std::ptrdiff_t yStride, int n, int* pendIdx, float* pendX);
    /// ys[i] = the exact value at xs[i] for n contiguous x inside the range: the segment
    /// holding it solved by the 20 halvings, 0 when no segment holds it. Returns how many
    /// found a segment.
    int (*exact)(const SegmentTable& s, const float* xs, float* ys, int n);
};

extern const KernelSet kSse2Kernels;
extern const KernelSet kAvx2Kernels;
extern const KernelSet kAvx512Kernels;

} // namespace curve_batch
