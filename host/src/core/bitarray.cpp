#include "host/bitarray.h"

#include "host/chunk_values.h"
#include "host/heap.h"
#include "host/iosave.h"

#include <cstddef>
#include <cstring>
#include <utility>

namespace {
/// n cleared words (n > 0), or null when the heap has no room.
uint32_t* allocWords(int n) {
    auto* w = static_cast<uint32_t*>(HostAlloc(sizeof(uint32_t) * std::size_t(n)));
    if (w)
        std::memset(w, 0, sizeof(uint32_t) * std::size_t(n));
    return w;
}
int popcount(uint32_t v) {
    int n = 0;
    for (; v; v &= v - 1)
        ++n;
    return n;
}
} // namespace

BitArray::BitArray() : bits_(nullptr), numBits_(0) {}
BitArray::BitArray(int n) : bits_(nullptr), numBits_(0) { SetSize(n); }
BitArray::BitArray(const BitArray& b) : bits_(nullptr), numBits_(0) { *this = b; }
BitArray::BitArray(BitArray&& b) noexcept : bits_(b.bits_), numBits_(b.numBits_) {
    b.bits_ = nullptr;
    b.numBits_ = 0;
}
BitArray::~BitArray() { HostFree(bits_); }

// A copy the heap cannot hold leaves this array as it was.
BitArray& BitArray::operator=(const BitArray& b) {
    if (this == &b)
        return *this;
    uint32_t* w = nullptr;
    if (b.words() > 0) {
        w = allocWords(b.words());
        if (!w)
            return *this;
        std::memcpy(w, b.bits_, sizeof(uint32_t) * std::size_t(b.words()));
    }
    HostFree(bits_);
    bits_ = w;
    numBits_ = b.numBits_;
    return *this;
}
BitArray& BitArray::operator=(BitArray&& b) noexcept {
    if (this != &b) {
        HostFree(bits_);
        bits_ = b.bits_;
        numBits_ = b.numBits_;
        b.bits_ = nullptr;
        b.numBits_ = 0;
    }
    return *this;
}

bool BitArray::SetSize(int n, int save) {
    if (n < 0)
        n = 0;
    uint32_t* w = nullptr;
    if (n > 0) {
        w = allocWords(wordsFor(n));
        if (!w)
            return false;
    }
    if (save && w) {
        const int keep = n < numBits_ ? n : numBits_;
        // Whole words first, then the bits of a last partial word.
        const int whole = keep / 32;
        if (whole > 0)
            std::memcpy(w, bits_, sizeof(uint32_t) * std::size_t(whole));
        for (int i = whole * 32; i < keep; ++i)
            if ((*this)[i])
                w[i / 32] |= 1u << (i % 32);
    }
    HostFree(bits_);
    bits_ = w;
    numBits_ = n;
    return true;
}

void BitArray::Set(int i) {
    if (i >= 0 && i < numBits_)
        bits_[i / 32] |= 1u << (i % 32);
}
void BitArray::Clear(int i) {
    if (i >= 0 && i < numBits_)
        bits_[i / 32] &= ~(1u << (i % 32));
}
void BitArray::SetAll() {
    for (int i = 0; i < numBits_; ++i)
        Set(i);
}
void BitArray::ClearAll() {
    if (bits_)
        std::memset(bits_, 0, sizeof(uint32_t) * words());
}
int BitArray::operator[](int i) const {
    if (i < 0 || i >= numBits_)
        return 0;
    return (bits_[i / 32] >> (i % 32)) & 1u;
}
int BitArray::NumberSet() const {
    int n = 0;
    for (int w = 0; w < words(); ++w)
        n += popcount(bits_[w]);
    return n;
}
bool BitArray::operator==(const BitArray& b) const {
    if (numBits_ != b.numBits_)
        return false;
    for (int i = 0; i < numBits_; ++i)
        if ((*this)[i] != b[i])
            return false;
    return true;
}

// Saved form (see docs/scene-format.md): the bit count as a 32-bit int, then
// (count + 31) / 32 words of 32 bits, bit i in bit (i % 32) of word i / 32, all
// little-endian.
int BitArray::Save(ISave* isave) const {
    IOResult r = WriteLE32(isave, int32_t(numBits_));
    for (int w = 0; r == IO_OK && w < words(); ++w)
        r = WriteLE32(isave, bits_[w]);
    return r;
}

int BitArray::Load(ILoad* iload) {
    int32_t n = 0;
    IOResult r = ReadLE32(iload, n);
    if (r != IO_OK)
        return r;
    // The count comes from a file: a negative one is damage, and the words it needs must
    // be in the chunk before anything is allocated for them. A stream that cannot tell
    // its size still gets the fixed bound.
    if (n < 0 || n > (1 << 24))
        return IO_ERROR;
    const ULONG left = iload->ChunkBytesLeft();
    const ULONG need = ULONG(wordsFor(n)) * 4u;
    if (left != ILOAD_SIZE_UNKNOWN && need > left)
        return IO_ERROR;
    BitArray loaded;
    if (!loaded.SetSize(n))
        return IO_ERROR; // no room for what the file describes
    for (int w = 0; w < loaded.words(); ++w) {
        r = ReadLE32(iload, loaded.bits_[w]);
        if (r != IO_OK)
            return r;
    }
    // Bits past the count would compare unequal later; keep the tail word clean.
    if (n % 32 && loaded.bits_)
        loaded.bits_[loaded.words() - 1] &= (1u << (n % 32)) - 1u;
    *this = std::move(loaded);
    return IO_OK;
}
