// Helpers of the persistence tests: saving an object's own chunks into bytes and loading
// them back the way the host does (load, patch pointers, post-load callbacks), reading a
// chunk stream back as a list, and writing chunk streams by hand.
#pragma once

#include "host/animatable.h"
#include "host/chunk_values.h"
#include "host/scene.h"

#include <doctest/doctest.h>

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

namespace iotest {

using Bytes = std::vector<unsigned char>;

/// The chunks `obj->Save` writes. `refIDs` answers GetRefID (null: every target is -1).
inline Bytes SaveOf(ReferenceMaker* obj, ChunkSave::RefIDSource refIDs = nullptr,
                    void* context = nullptr) {
    ChunkSave out;
    out.SetRefIDSource(refIDs, context);
    REQUIRE(obj->Save(&out) == IO_OK);
    REQUIRE(out.Status() == IO_OK);
    return Bytes(out.Data(), out.Data() + out.Size());
}

/// Loads `bytes` into `obj` as the host loads one object: Load, then the pointer patches
/// (to `patchTo`, or null), then the post-load callbacks. Answers Load's result.
inline IOResult LoadInto(ReferenceMaker* obj, const Bytes& bytes, void* patchTo = nullptr,
                         bool* obsolete = nullptr) {
    ChunkLoad in(bytes.data(), bytes.size());
    const IOResult r = obj->Load(&in);
    in.ResolveBackpatches([](int, void* ctx) { return ctx; }, patchTo);
    in.RunPostLoadCallbacks();
    if (obsolete)
        *obsolete = in.Obsolete();
    return r;
}

/// One chunk of a stream as read back.
struct Chunk {
    unsigned id;
    bool holdsChunks;
    Bytes payload; // the raw payload (for a chunk of chunks: its chunks)
};

/// The chunks at the top level of `bytes` (the stream must be well formed).
inline std::vector<Chunk> ChunksOf(const Bytes& bytes) {
    std::vector<Chunk> list;
    ChunkLoad in(bytes.data(), bytes.size());
    while (in.OpenChunk() == IO_OK) {
        const std::size_t start = in.CurChunkOffset() + CHUNK_HEADER_SIZE;
        list.push_back(
            Chunk{in.CurChunkID(), in.CurChunkHoldsChunks(),
                  Bytes(bytes.begin() + start, bytes.begin() + start + in.CurChunkSize())});
        in.CloseChunk();
    }
    REQUIRE(in.Status() == IO_OK);
    return list;
}

inline std::vector<unsigned> IdsOf(const std::vector<Chunk>& chunks) {
    std::vector<unsigned> ids;
    for (const Chunk& c : chunks)
        ids.push_back(c.id);
    return ids;
}

/// The 32-bit values of a payload, from byte `offset` on.
template <class T> T FieldAt(const Bytes& payload, std::size_t offset) {
    REQUIRE(offset + 4 <= payload.size());
    return UnpackLE32<T>(payload.data() + offset);
}

/// Little-endian bytes of 32-bit values.
template <class... T> Bytes LE(T... values) {
    Bytes b;
    b.reserve(4 * sizeof...(values));
    (
        [&b](auto v) {
            unsigned char p[4];
            PackLE32(p, v);
            for (unsigned char c : p)
                b.push_back(c);
        }(values),
        ...);
    return b;
}

inline Bytes Cat(std::initializer_list<Bytes> parts) {
    Bytes b;
    for (const Bytes& p : parts)
        b.insert(b.end(), p.begin(), p.end());
    return b;
}

/// A chunk with a raw payload; `holdsChunks` sets the size word's top bit.
inline Bytes MakeChunk(unsigned id, const Bytes& payload, bool holdsChunks = false) {
    Bytes b = {static_cast<unsigned char>(id), static_cast<unsigned char>(id >> 8)};
    uint32_t word = uint32_t(payload.size() + CHUNK_HEADER_SIZE);
    if (holdsChunks && !payload.empty())
        word |= CHUNK_HOLDS_CHUNKS;
    const Bytes size = LE(word);
    b.insert(b.end(), size.begin(), size.end());
    b.insert(b.end(), payload.begin(), payload.end());
    return b;
}

/// A chunk that holds the given chunks.
inline Bytes MakeContainer(unsigned id, std::initializer_list<Bytes> children) {
    return MakeChunk(id, Cat(children), true);
}

/// The stream of `chunks` in the given order.
inline Bytes Join(const std::vector<Chunk>& chunks) {
    Bytes b;
    for (const Chunk& c : chunks) {
        const Bytes one = MakeChunk(c.id, c.payload, c.holdsChunks);
        b.insert(b.end(), one.begin(), one.end());
    }
    return b;
}

} // namespace iotest
