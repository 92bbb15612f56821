// Tab<T>: the host's growable array of plain items (no constructors or destructors are
// run for the items). Its storage is allocated by the host library, so a Tab may be
// grown by one module and freed by another.
#pragma once

#include "host/export.h"

#include <cstring>
#include <type_traits>

/// Storage helpers used by every Tab instantiation: reallocation in the host heap.
HOST_API void* TabRealloc(void* p, int itemSize, int count);
HOST_API void TabFree(void* p);

template <class T> class Tab {
    static_assert(std::is_trivially_copyable<T>::value, "Tab holds plain items only");

public:
    Tab() = default;
    Tab(const Tab& t) { *this = t; }
    ~Tab() { TabFree(items_); }

    Tab& operator=(const Tab& t) {
        if (this == &t)
            return *this;
        SetCount(t.count_);
        if (count_ > 0)
            std::memcpy(static_cast<void*>(items_), t.items_, sizeof(T) * count_);
        return *this;
    }

    int Count() const { return count_; }
    /// Changes the count; new items are zero-filled.
    void SetCount(int n) {
        if (n < 0)
            n = 0;
        if (n > capacity_)
            grow(n);
        if (n > count_)
            std::memset(static_cast<void*>(items_ + count_), 0, sizeof(T) * (n - count_));
        count_ = n;
    }
    void ZeroCount() { count_ = 0; }
    /// Frees the storage.
    void Resize(int n) {
        SetCount(n);
        if (n == 0) {
            TabFree(items_);
            items_ = nullptr;
            capacity_ = 0;
        }
    }
    void Shrink() {
        if (count_ == 0)
            Resize(0);
    }

    T& operator[](int i) { return items_[i]; }
    const T& operator[](int i) const { return items_[i]; }
    T* Addr(int i) { return items_ + i; }

    /// Appends n items from `items`; returns the index of the first. n <= 0 appends
    /// nothing.
    int Append(int n, const T* items) {
        int at = count_;
        if (n <= 0)
            return at;
        SetCount(count_ + n);
        if (n > 0 && items)
            std::memcpy(static_cast<void*>(items_ + at), items, sizeof(T) * n);
        return at;
    }
    /// Inserts n items at `at` (clamped to 0 .. count); returns `at`. n <= 0 inserts
    /// nothing.
    int Insert(int at, int n, const T* items) {
        if (at < 0)
            at = 0;
        if (at > count_)
            at = count_;
        if (n <= 0)
            return at;
        int old = count_;
        SetCount(count_ + n);
        std::memmove(static_cast<void*>(items_ + at + n), items_ + at, sizeof(T) * (old - at));
        if (items)
            std::memcpy(static_cast<void*>(items_ + at), items, sizeof(T) * n);
        return at;
    }
    /// Removes n items from `start`; returns the new count.
    int Delete(int start, int n) {
        if (start < 0 || start >= count_ || n <= 0)
            return count_;
        if (start + n > count_)
            n = count_ - start;
        std::memmove(static_cast<void*>(items_ + start), items_ + start + n,
                     sizeof(T) * (count_ - start - n));
        count_ -= n;
        return count_;
    }

private:
    void grow(int n) {
        int cap = capacity_ < 4 ? 4 : capacity_;
        while (cap < n)
            cap *= 2;
        items_ = static_cast<T*>(TabRealloc(items_, sizeof(T), cap));
        capacity_ = cap;
    }

    T* items_ = nullptr; // owned, host heap
    int count_ = 0;      // items in use
    int capacity_ = 0;   // items allocated
};
