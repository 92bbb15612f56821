#include "host/heap.h"
#include "host/tab.h"

#include <cstdlib>

void* HostAlloc(std::size_t size) { return std::malloc(size ? size : 1); }
void* HostRealloc(void* p, std::size_t size) { return std::realloc(p, size ? size : 1); }
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
    void* q = HostRealloc(p, std::size_t(itemSize) * std::size_t(count));
    if (!q)
        throw std::bad_alloc();
    return q;
}
void TabFree(void* p) { HostFree(p); }
