// Counts read from a scene file: the points a curve announces (curve_io.cpp) and the curves
// a control announces (control_io.cpp). Both loaders allocate for the count before the items
// arrive (a curve's points in later chunks, a control's curves as the host restores its
// references, which its own chunks never hold), so the count is bounded by itself, by the
// one fixed limit of how many points a curve and how many curves a control may hold: a
// valid file loads whatever follows its count (or nothing), and a hostile count allocates
// at most that many items.
#pragma once

#include "curvectl/icurve.h"
#include "host/chunk_values.h"

#include <cstdint>

/// Reads a count from the current chunk into `n`: IO_OK for 0 .. CURVECTL_MAX_COUNT,
/// IO_ERROR for any other count (`n` is left as it was), or the error of the read.
inline IOResult ReadFileCount(ILoad* iload, int& n) {
    int32_t count = 0;
    const IOResult r = ReadLE32(iload, count);
    if (r != IO_OK)
        return r;
    if (count < 0 || count > CURVECTL_MAX_COUNT)
        return IO_ERROR;
    n = count;
    return IO_OK;
}
