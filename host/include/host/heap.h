// The host heap. Objects that the host may delete (reference targets, undo records,
// class descriptors, callbacks) are allocated through these operators so that allocation
// and release always happen in the host library's heap, whichever module does them.
#pragma once

#include "host/export.h"

#include <cstddef>
#include <new>

HOST_API void* HostAlloc(std::size_t size);
HOST_API void* HostRealloc(void* p, std::size_t size);
HOST_API void HostFree(void* p);

class HOST_API VokHeapOperators {
public:
    static void* operator new(std::size_t size);
    static void* operator new(std::size_t size, const std::nothrow_t&) noexcept;
    static void* operator new[](std::size_t size);
    static void operator delete(void* p) noexcept;
    static void operator delete(void* p, const std::nothrow_t&) noexcept;
    static void operator delete[](void* p) noexcept;
};
