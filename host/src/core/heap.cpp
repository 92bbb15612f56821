#include "host/heap.h"
#include "host/tab.h"

#include <atomic>
#include <cstdint>
#include <cstdlib>

namespace {
// Allocations left before injected failures begin; negative: no failures.
std::atomic<long> gAllocationsLeft{-1};
// Requests so far, for HostHeapRequests.
std::atomic<long> gRequests{0};

bool allocationAllowed() {
    gRequests.fetch_add(1, std::memory_order_relaxed);
    const long left = gAllocationsLeft.load(std::memory_order_relaxed);
    if (left < 0) [[likely]]
        return true;
    if (left == 0)
        return false;
    gAllocationsLeft.store(left - 1, std::memory_order_relaxed);
    return true;
}
} // namespace

void HostHeapFailAfter(long allocations) {
    gAllocationsLeft.store(allocations < 0 ? -1 : allocations, std::memory_order_relaxed);
}

long HostHeapRequests() { return gRequests.load(std::memory_order_relaxed); }

void* HostAlloc(std::size_t size) {
    return allocationAllowed() ? std::malloc(size ? size : 1) : nullptr;
}
void* HostRealloc(void* p, std::size_t size) {
    return allocationAllowed() ? std::realloc(p, size ? size : 1) : nullptr;
}
void HostFree(void* p) { std::free(p); }

void* VokHeapOperators::operator new(std::size_t size) {
    void* p = HostAlloc(size);
    if (!p)
        throw std::bad_alloc();
    return p;
}
void* VokHeapOperators::operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return HostAlloc(size);
}
void* VokHeapOperators::operator new[](std::size_t size) {
    void* p = HostAlloc(size);
    if (!p)
        throw std::bad_alloc();
    return p;
}
void VokHeapOperators::operator delete(void* p) noexcept { HostFree(p); }
void VokHeapOperators::operator delete(void* p, const std::nothrow_t&) noexcept { HostFree(p); }
void VokHeapOperators::operator delete[](void* p) noexcept { HostFree(p); }

void* TabRealloc(void* p, int itemSize, int count) {
    if (itemSize <= 0 || count < 0 || std::size_t(count) > SIZE_MAX / std::size_t(itemSize))
        return nullptr;
    return HostRealloc(p, std::size_t(itemSize) * std::size_t(count));
}
void TabFree(void* p) { HostFree(p); }
