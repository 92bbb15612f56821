// Thread-end notice for the evaluation cache's reader slots (Windows): a fiber-local
// storage index whose callback gives the slot number back as the thread ends. The value
// stored is the number plus one, since the callback also runs for threads that stored
// nothing (with a null value).
#include "curve/curve_eval_cache.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <cstdint>

namespace curve_eval {

namespace {

void NTAPI releaseAtExit(void* value) {
    if (value)
        ReleaseReaderSlot(int(reinterpret_cast<std::intptr_t>(value)) - 1);
}

/// The index, made once; FLS_OUT_OF_INDEXES when the system had none left.
DWORD slotIndex() {
    static const DWORD index = FlsAlloc(releaseAtExit);
    return index;
}

} // namespace

bool ReleaseReaderSlotAtThreadExit(int n) {
    const DWORD index = slotIndex();
    if (index == FLS_OUT_OF_INDEXES)
        return false;
    return FlsSetValue(index, reinterpret_cast<void*>(std::intptr_t(n) + 1)) != FALSE;
}

} // namespace curve_eval
