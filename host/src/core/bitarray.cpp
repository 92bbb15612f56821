#include "host/bitarray.h"

#include "host/chunk_values.h"
#include "host/heap.h"
#include "host/iosave.h"

#include <cstring>
#include <new>
#include <utility>

namespace {
uint32_t* allocWords(int n) {
    if (n <= 0)
        return nullptr;
    auto* w = static_cast<uint32_t*>(HostAlloc(sizeof(uint32_t) * n));
    if (!w)
        throw std::bad_alloc();
    std::memset(w, 0, sizeof(uint32_t) * n);
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

BitArray& BitArray::operator=(const BitArray& b) {
    if (this == &b)
        return *this;
    uint32_t* w = allocWords(b.words());
    if (w)
        std::memcpy(w, b.bits_, sizeof(uint32_t) * b.words());
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

void BitArray::SetSize(int n, int save) {
    if (n < 0)
        n = 0;
    uint32_t* w = allocWords((n + 31) / 32);
    if (save && w) {
        int keep = n < numBits_ ? n : numBits_;
        for (int i = 0; i < keep; ++i)
            if ((*this)[i])
                w[i / 32] |= 1u << (i % 32);
    }
    HostFree(bits_);
    bits_ = w;
    numBits_ = n;
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
    const ULONG need = ULONG((n + 31) / 32) * 4u;
    if (left != ILOAD_SIZE_UNKNOWN && need > left)
        return IO_ERROR;
    BitArray loaded(n);
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
