// Thread-end notice for the evaluation cache's reader slots (POSIX threads): a key whose
// destructor gives the slot number back. The value stored is the number plus one, since
// a key's destructor runs only for non-null values.
#include "curve/curve_eval_cache.h"

#include <pthread.h>

#include <cstdint>

namespace curve_eval {

namespace {

void releaseAtExit(void* value) {
    ReleaseReaderSlot(int(reinterpret_cast<std::intptr_t>(value)) - 1);
}

/// The key, made once; false when the system had none left.
bool slotKey(pthread_key_t& key) {
    static pthread_key_t k;
    static const bool made = pthread_key_create(&k, releaseAtExit) == 0;
    key = k;
    return made;
}

} // namespace

bool ReleaseReaderSlotAtThreadExit(int n) {
    pthread_key_t key;
    if (!slotKey(key))
        return false;
    return pthread_setspecific(key, reinterpret_cast<void*>(std::intptr_t(n) + 1)) == 0;
}

} // namespace curve_eval
