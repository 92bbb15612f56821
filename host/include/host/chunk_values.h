// Numbers in chunk payloads. Every number in a scene file is a 32-bit value stored
// little-endian (ints two's complement, floats IEEE 754 single), whatever the machine; these
// helpers keep that byte order explicit instead of writing memory images.
#pragma once

#include "host/iosave.h"

#include <cstdint>
#include <cstring>
#include <type_traits>

/// The value's four bytes, least significant first, at `p`.
template <class T> inline void PackLE32(unsigned char* p, T value) {
    static_assert(sizeof(T) == 4 && std::is_trivially_copyable<T>::value,
                  "chunk payload numbers are 32-bit");
    uint32_t bits;
    std::memcpy(&bits, &value, 4);
    p[0] = static_cast<unsigned char>(bits);
    p[1] = static_cast<unsigned char>(bits >> 8);
    p[2] = static_cast<unsigned char>(bits >> 16);
    p[3] = static_cast<unsigned char>(bits >> 24);
}

/// The value stored at `p` by PackLE32.
template <class T> inline T UnpackLE32(const unsigned char* p) {
    static_assert(sizeof(T) == 4 && std::is_trivially_copyable<T>::value,
                  "chunk payload numbers are 32-bit");
    const uint32_t bits =
        uint32_t(p[0]) | (uint32_t(p[1]) << 8) | (uint32_t(p[2]) << 16) | (uint32_t(p[3]) << 24);
    T value;
    std::memcpy(&value, &bits, 4);
    return value;
}

/// Writes one 32-bit value into the current chunk.
template <class T> inline IOResult WriteLE32(ISave* isave, T value) {
    unsigned char bytes[4];
    PackLE32(bytes, value);
    return isave->Write(bytes, 4, nullptr);
}

/// Reads the chunks of the current level in turn: `read(id)` reads the chunk just opened
/// and returns its result (a chunk it does not know it leaves alone: closing skips what is
/// left of it). The first error, of a read or a close, ends the level and is returned;
/// IO_OK when the whole level was read.
template <class Read> IOResult ReadChunks(ILoad* iload, Read read) {
    IOResult res;
    while ((res = iload->OpenChunk()) == IO_OK) {
        res = read(iload->CurChunkID());
        const IOResult closed = iload->CloseChunk();
        if (res == IO_OK)
            res = closed;
        if (res != IO_OK)
            return res;
    }
    // IO_END is the end of the chunks; anything else is a header that did not fit.
    return res == IO_END ? IO_OK : res;
}

/// Reads one 32-bit value; on failure `value` is left as it was.
template <class T> inline IOResult ReadLE32(ILoad* iload, T& value) {
    unsigned char bytes[4];
    ULONG got = 0;
    const IOResult r = iload->Read(bytes, 4, &got);
    if (r != IO_OK)
        return r;
    value = UnpackLE32<T>(bytes);
    return IO_OK;
}
