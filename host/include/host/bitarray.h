// BitArray: a resizable array of bits. Copies are deep.
#pragma once

#include "host/export.h"

#include <cstdint>

class ILoad;
class ISave;

class HOST_API BitArray {
public:
    BitArray();
    explicit BitArray(int n);
    BitArray(const BitArray& b);
    BitArray(BitArray&& b) noexcept;
    ~BitArray();
    BitArray& operator=(const BitArray& b);
    BitArray& operator=(BitArray&& b) noexcept;

    int GetSize() const { return numBits_; }
    /// Resizes to n bits. With `save` = 1 the bits below min(old, n) keep their values
    /// and new bits are clear; with `save` = 0 every bit is cleared. (The host clears
    /// rather than leaving stale bits, so a grown array never shows bits that nobody set.)
    void SetSize(int n, int save = 0);

    void Set(int i);
    void Clear(int i);
    void Set(int i, int b) { b ? Set(i) : Clear(i); }
    void SetAll();
    void ClearAll();
    /// Bit i; 0 for an index outside the array.
    int operator[](int i) const;
    int NumberSet() const;
    bool IsEmpty() const { return NumberSet() == 0; }

    bool operator==(const BitArray& b) const;
    bool operator!=(const BitArray& b) const { return !(*this == b); }

    /// The saved form: the bit count and then the words (see the scene format notes).
    int Save(ISave* isave) const;
    int Load(ILoad* iload);

private:
    int words() const { return (numBits_ + 31) / 32; }

    uint32_t* bits_; // owned, host heap; bit i is bit (i % 32) of word i / 32
    int numBits_;    // number of bits
};
