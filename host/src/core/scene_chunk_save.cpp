// ChunkSave: the chunk writer. Chunk sizes are only known when a chunk ends, so each
// header is written with an empty size word and patched by EndChunk.
#include "host/chunk_values.h"
#include "host/scene.h"

#include <cstdio>
#include <cstring>
#include <vector>

struct ChunkSave::Impl {
    struct Open {
        std::size_t start; // offset of the chunk's header
        bool hasData;      // bytes were written into it
        bool hasChunks;    // chunks were opened inside it
    };
    std::vector<unsigned char> bytes; // everything written so far
    std::vector<Open> open;           // open chunks, innermost last
    bool misused = false;             // a call broke the chunk rules
    RefIDSource refIDs = nullptr;     // answers GetRefID; may be null
    void* refIDContext = nullptr;     // passed to refIDs
};

ChunkSave::ChunkSave() : impl_(new Impl) {}
ChunkSave::~ChunkSave() { delete impl_; }

void ChunkSave::BeginChunk(USHORT id) {
    if (!impl_->open.empty()) {
        Impl::Open& parent = impl_->open.back();
        // One chunk holds either bytes or chunks: the size word has room for one kind.
        if (parent.hasData)
            impl_->misused = true;
        parent.hasChunks = true;
    }
    unsigned char header[CHUNK_HEADER_SIZE] = {
        static_cast<unsigned char>(id), static_cast<unsigned char>(id >> 8), 0, 0, 0, 0};
    impl_->open.push_back(Impl::Open{impl_->bytes.size(), false, false});
    impl_->bytes.insert(impl_->bytes.end(), header, header + CHUNK_HEADER_SIZE);
}

void ChunkSave::EndChunk() {
    if (impl_->open.empty()) {
        impl_->misused = true;
        return;
    }
    const Impl::Open chunk = impl_->open.back();
    impl_->open.pop_back();
    const std::size_t size = impl_->bytes.size() - chunk.start;
    if (size > CHUNK_SIZE_MASK)
        impl_->misused = true; // cannot be described: 2 GiB or more
    uint32_t word = uint32_t(size) & CHUNK_SIZE_MASK;
    if (chunk.hasChunks)
        word |= CHUNK_HOLDS_CHUNKS;
    PackLE32(&impl_->bytes[chunk.start + 2], word);
}

IOResult ChunkSave::Write(const void* buf, ULONG nbytes, ULONG* nwrit) {
    if (nwrit)
        *nwrit = 0;
    if (impl_->open.empty() || impl_->open.back().hasChunks || (nbytes && !buf)) {
        impl_->misused = true;
        return IO_ERROR;
    }
    if (nbytes == 0)
        return IO_OK;
    const auto* p = static_cast<const unsigned char*>(buf);
    impl_->bytes.insert(impl_->bytes.end(), p, p + nbytes);
    impl_->open.back().hasData = true;
    if (nwrit)
        *nwrit = nbytes;
    return IO_OK;
}

IOResult ChunkSave::WriteCString(const char* str) {
    if (!str)
        str = "";
    return Write(str, ULONG(std::strlen(str) + 1), nullptr);
}

int ChunkSave::GetRefID(void* target) {
    return impl_->refIDs ? impl_->refIDs(target, impl_->refIDContext) : -1;
}

void ChunkSave::SetRefIDSource(RefIDSource source, void* context) {
    impl_->refIDs = source;
    impl_->refIDContext = context;
}

IOResult ChunkSave::Status() const {
    return (impl_->misused || !impl_->open.empty()) ? IO_ERROR : IO_OK;
}

const unsigned char* ChunkSave::Data() const { return impl_->bytes.data(); }
std::size_t ChunkSave::Size() const { return impl_->bytes.size(); }

IOResult ChunkSave::WriteFile(const char* path) const {
    if (Status() != IO_OK || !path)
        return IO_ERROR;
    std::FILE* f = std::fopen(path, "wb");
    if (!f)
        return IO_ERROR;
    const std::size_t n = impl_->bytes.size();
    bool ok = n == 0 || std::fwrite(impl_->bytes.data(), 1, n, f) == n;
    if (std::fclose(f) != 0)
        ok = false;
    return ok ? IO_OK : IO_ERROR;
}
