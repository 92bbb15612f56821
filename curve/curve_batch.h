// The code paths of batch evaluation (ICurveBatch::ValuesAt) and how one is chosen.
//
// The widest path the processor and its operating system support runs, chosen at the first
// batch call: AVX-512, else AVX2, else SSE2 (which every x86-64 processor has). The
// environment variable CURVECTL_BATCH_PATH (sse2, avx2 or avx512), read at that moment,
// asks for a narrower path; ForceBatchPath does the same for tests and benchmarks. A path
// the processor lacks is never taken: asking for it gives the widest path it has below.
// Every path gives the same bits (curve_batch_kernels.h).
#pragma once

#include "curve/curve_batch_kernels.h"

namespace curve_batch {

enum class Path { Sse2 = 0, Avx2 = 1, Avx512 = 2 };
constexpr int kPathCount = 3;

/// The widest path this processor can run.
Path WidestPath();
/// The path batch calls take now.
Path ActivePath();
/// Makes batch calls take `wanted`, or the widest path below it that the processor has;
/// returns the path now in force. Safe from any thread; calls running meanwhile finish on
/// the path they started with.
Path ForceBatchPath(Path wanted);
/// Undoes ForceBatchPath: back to the environment variable's choice, or the widest path.
void ReleaseBatchPath();
/// "sse2", "avx2" or "avx512".
const char* PathName(Path p);
/// The path named `name` ("sse2", "avx2", "avx512"); false for any other text.
bool PathFromName(const char* name, Path& p);
/// The kernels of the path in force.
const KernelSet& ActiveKernels();

} // namespace curve_batch
