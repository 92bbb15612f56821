// BitArray: a resizable array of bits. Copies are deep. A size the heap cannot give is
// refused (SetSize answers false and the array stays as it was; a new array or a copy
// that cannot be had is empty): nothing is thrown.
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
    /// Resizes to n bits (n < 0 counts as 0). With `save` = 1 the bits below min(old, n)
    /// keep their values and new bits are clear; with `save` = 0 every bit is cleared. (The
    /// host clears rather than leaving stale bits, so a grown array never shows bits that
    /// nobody set.) False, and nothing changes, when the heap cannot give n bits.
    bool SetSize(int n, int save = 0);

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
    int words() const { return wordsFor(numBits_); }
    /// Words of n bits (n >= 0), without overflow for any int.
    static int wordsFor(int n) { return int((unsigned(n) + 31u) / 32u); }

    uint32_t* bits_; // owned, host heap; bit i is bit (i % 32) of word i / 32
    int numBits_;    // number of bits
};
