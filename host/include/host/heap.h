// The host heap. Objects that the host may delete (reference targets, undo records,
// class descriptors, callbacks) are allocated through these operators so that allocation
// and release always happen in the host library's heap, whichever module does them.
#pragma once

#include "host/export.h"

#include <cstddef>
#include <new>

/// Null when the heap has no room (HostRealloc then leaves `p` as it was).
HOST_API void* HostAlloc(std::size_t size);
HOST_API void* HostRealloc(void* p, std::size_t size);
HOST_API void HostFree(void* p);

/// Fault injection, as a host's debug heap offers it for testing what runs inside it: after
/// `allocations` more allocations from this heap (HostAlloc, HostRealloc, the heap
/// operators) every further one fails, until this is called again. A negative number (the
/// state at start) lets every allocation through. Meant for one thread at a time.
HOST_API void HostHeapFailAfter(long allocations);
/// Allocation requests made of this heap so far (those that failed included), so that a
/// test can count what an operation allocates before it fails each allocation in turn.
HOST_API long HostHeapRequests();

class HOST_API VokHeapOperators {
public:
    static void* operator new(std::size_t size);
    static void* operator new(std::size_t size, const std::nothrow_t&) noexcept;
    static void* operator new[](std::size_t size);
    static void operator delete(void* p) noexcept;
    static void operator delete(void* p, const std::nothrow_t&) noexcept;
    static void operator delete[](void* p) noexcept;
};
