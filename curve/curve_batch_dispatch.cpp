// Choosing the batch kernels at run time (curve_batch.h). The processor is asked once, by
// the compiler's own check (__builtin_cpu_supports), which also requires the operating
// system to save the wide registers across thread switches (XGETBV), so an AVX-512
// processor under a system that does not is treated as the path below.
#include "curve/curve_batch.h"

#include <atomic>
#include <cstdlib>
#include <cstring>

namespace curve_batch {
namespace {

const KernelSet* const kKernels[kPathCount] = {&kSse2Kernels, &kAvx2Kernels, &kAvx512Kernels};
const char* const kNames[kPathCount] = {"sse2", "avx2", "avx512"};

constexpr int kUnchosen = -1;
std::atomic<int> gActive{kUnchosen}; // the Path in force, or kUnchosen before the first call

Path Narrowest(Path a, Path b) { return int(a) < int(b) ? a : b; }

Path FromEnvironment() {
    Path p = WidestPath();
    if (const char* s = std::getenv("CURVECTL_BATCH_PATH")) {
        Path wanted;
        if (PathFromName(s, wanted))
            p = Narrowest(wanted, p);
    }
    return p;
}

} // namespace

Path WidestPath() {
#if defined(__x86_64__) || defined(__i386__)
    static const Path widest = [] {
        __builtin_cpu_init();
        if (__builtin_cpu_supports("avx512f"))
            return Path::Avx512;
        if (__builtin_cpu_supports("avx2"))
            return Path::Avx2;
        return Path::Sse2;
    }();
    return widest;
#else
    return Path::Sse2;
#endif
}

Path ActivePath() {
    int p = gActive.load(std::memory_order_relaxed);
    if (p == kUnchosen) {
        // Two first calls at once both read the same environment: either store is right.
        p = int(FromEnvironment());
        int expected = kUnchosen;
        if (!gActive.compare_exchange_strong(expected, p, std::memory_order_relaxed))
            p = expected;
    }
    return Path(p);
}

Path ForceBatchPath(Path wanted) {
    const Path p = Narrowest(wanted, WidestPath());
    gActive.store(int(p), std::memory_order_relaxed);
    return p;
}

void ReleaseBatchPath() { gActive.store(int(FromEnvironment()), std::memory_order_relaxed); }

const char* PathName(Path p) { return kNames[int(p)]; }

bool PathFromName(const char* name, Path& p) {
    for (int i = 0; i < kPathCount; ++i) {
        if (name && std::strcmp(name, kNames[i]) == 0) {
            p = Path(i);
            return true;
        }
    }
    return false;
}

const KernelSet& ActiveKernels() { return *kKernels[int(ActivePath())]; }

} // namespace curve_batch
