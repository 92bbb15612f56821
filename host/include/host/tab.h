// Tab<T>: the host's growable array of plain items (no constructors or destructors are
// run for the items). Its storage is allocated by the host library, so a Tab may be
// grown by one module and freed by another.
#pragma once

#include "host/export.h"

#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

/// Storage helpers used by every Tab instantiation: reallocation in the host heap. Null
/// when `count` items of `itemSize` bytes cannot be had (`p` is then left as it was).
HOST_API void* TabRealloc(void* p, int itemSize, int count);
HOST_API void TabFree(void* p);

/// A count the array cannot hold (more items than an int counts or the address space
/// has bytes for, or more than the heap can give) is refused: the operation answers so and
/// nothing changes. Nothing is thrown.
template <class T> class Tab {
    static_assert(std::is_trivially_copyable<T>::value, "Tab holds plain items only");

public:
    Tab() = default;
    /// A copy the heap cannot hold is empty.
    Tab(const Tab& t) { *this = t; }
    ~Tab() { TabFree(items_); }

    /// A copy the heap cannot hold leaves this Tab empty.
    Tab& operator=(const Tab& t) {
        if (this == &t)
            return *this;
        if (!SetCount(t.count_)) {
            count_ = 0;
            return *this;
        }
        if (count_ > 0)
            std::memcpy(static_cast<void*>(items_), t.items_, sizeof(T) * count_);
        return *this;
    }

    int Count() const { return count_; }
    /// Changes the count; new items are zero-filled. False (and no change) for a count the
    /// array cannot hold.
    bool SetCount(int n) {
        if (n < 0)
            n = 0;
        if (n > capacity_ && !grow(n))
            return false;
        if (n > count_)
            std::memset(static_cast<void*>(items_ + count_), 0, sizeof(T) * (n - count_));
        count_ = n;
        return true;
    }
    void ZeroCount() { count_ = 0; }
    /// As SetCount; Resize(0) also frees the storage.
    bool Resize(int n) {
        if (!SetCount(n))
            return false;
        if (n <= 0) {
            TabFree(items_);
            items_ = nullptr;
            capacity_ = 0;
        }
        return true;
    }
    void Shrink() {
        if (count_ == 0)
            Resize(0);
    }

    T& operator[](int i) { return items_[i]; }
    const T& operator[](int i) const { return items_[i]; }
    T* Addr(int i) { return items_ + i; }

    /// Appends n items from `items` (zeroed items when null); returns the index of the
    /// first, or -1 when the array cannot hold them (nothing changes). n <= 0 appends
    /// nothing and returns the count.
    int Append(int n, const T* items) {
        const int at = count_;
        if (n <= 0)
            return at;
        if (n > kMaxCount - count_ || !SetCount(count_ + n))
            return -1;
        if (items)
            std::memcpy(static_cast<void*>(items_ + at), items, sizeof(T) * n);
        return at;
    }
    /// Inserts n items at `at` (clamped to 0 .. count); returns `at`, or -1 when the array
    /// cannot hold them (nothing changes). n <= 0 inserts nothing.
    int Insert(int at, int n, const T* items) {
        if (at < 0)
            at = 0;
        if (at > count_)
            at = count_;
        if (n <= 0)
            return at;
        const int old = count_;
        if (n > kMaxCount - count_ || !SetCount(count_ + n))
            return -1;
        std::memmove(static_cast<void*>(items_ + at + n), items_ + at, sizeof(T) * (old - at));
        if (items)
            std::memcpy(static_cast<void*>(items_ + at), items, sizeof(T) * n);
        else
            std::memset(static_cast<void*>(items_ + at), 0, sizeof(T) * n);
        return at;
    }
    /// Removes n items from `start`; returns the new count.
    int Delete(int start, int n) {
        if (start < 0 || start >= count_ || n <= 0)
            return count_;
        if (n > count_ - start)
            n = count_ - start;
        std::memmove(static_cast<void*>(items_ + start), items_ + start + n,
                     sizeof(T) * (count_ - start - n));
        count_ -= n;
        return count_;
    }

private:
    /// The most items: an int counts them, and their bytes fit in a signed size.
    static constexpr int kMaxCount = sizeof(T) <= std::size_t(PTRDIFF_MAX) / std::size_t(INT_MAX)
                                         ? INT_MAX
                                         : int(std::size_t(PTRDIFF_MAX) / sizeof(T));

    /// Room for at least n items, doubling from 4 (capped at kMaxCount).
    bool grow(int n) {
        if (n > kMaxCount)
            return false;
        std::size_t cap = capacity_ < 4 ? 4 : std::size_t(capacity_);
        while (cap < std::size_t(n))
            cap *= 2;
        if (cap > std::size_t(kMaxCount))
            cap = std::size_t(kMaxCount);
        T* p = static_cast<T*>(TabRealloc(items_, int(sizeof(T)), int(cap)));
        if (!p)
            return false;
        items_ = p;
        capacity_ = int(cap);
        return true;
    }

    T* items_ = nullptr; // owned, host heap
    int count_ = 0;      // items in use
    int capacity_ = 0;   // items allocated
};
