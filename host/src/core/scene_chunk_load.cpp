// ChunkLoad: the chunk reader. It keeps its own copy of the bytes and, for every open
// chunk, the range the chunk occupies. Each header is checked against the range of the
// chunk that holds it before anything is opened, so no size word in a file, however
// damaged, can move a read outside the buffer or outside the chunk it belongs to.
#include "host/chunk_values.h"
#include "host/scene.h"
#include "scene_session.h"

#include <cstdio>
#include <cstring>
#include <vector>

namespace {
/// A guard for damaged files whose every chunk holds one more chunk: the stack of open
/// chunks is a vector, but callers that walk the tree recursively (tools) must stay
/// shallow. The host's own scenes nest five deep.
constexpr int kMaxDepth = 256;
} // namespace

struct ChunkLoad::Impl {
    struct Level {
        std::size_t header; // offset of the chunk's header
        std::size_t end;    // one past the chunk's last byte
        std::size_t pos;    // next byte to read, or next header to open
        USHORT id;          // chunk id
        bool holdsChunks;   // the size word's chunk-of-chunks bit
    };
    std::vector<unsigned char> bytes; // the whole stream (owned copy)
    std::vector<Level> open;          // open chunks, innermost last
    std::size_t topPos = 0;           // next header at the top level
    bool damaged = false;             // some call met damaged or misused data
    LoadSession session;              // callbacks, patches, older-layout notice

    /// The range the next OpenChunk or Read works in.
    std::size_t curPos() const { return open.empty() ? topPos : open.back().pos; }
    std::size_t curEnd() const { return open.empty() ? bytes.size() : open.back().end; }
    IOResult fail() {
        damaged = true;
        return IO_ERROR;
    }
    /// The innermost chunk, if it is one that Read may take bytes from: a chunk of
    /// chunks has none, except when it is empty (an object that wrote nothing).
    Level* dataChunk() {
        if (open.empty())
            return nullptr;
        Level& l = open.back();
        if (l.holdsChunks && l.end > l.header + CHUNK_HEADER_SIZE)
            return nullptr;
        return &l;
    }
};

ChunkLoad::ChunkLoad() : impl_(new Impl) {}
ChunkLoad::ChunkLoad(const void* data, std::size_t size) : impl_(new Impl) { SetBytes(data, size); }
ChunkLoad::~ChunkLoad() { delete impl_; }

IOResult ChunkLoad::SetBytes(const void* data, std::size_t size) {
    impl_->open.clear();
    impl_->topPos = 0;
    impl_->damaged = false;
    impl_->bytes.clear();
    // Offsets and sizes handed out through ULONG must fit in 31 bits.
    if (size > CHUNK_SIZE_MASK || (size && !data))
        return impl_->fail();
    const auto* p = static_cast<const unsigned char*>(data);
    impl_->bytes.assign(p, p + size);
    return IO_OK;
}

IOResult ChunkLoad::ReadFile(const char* path) {
    SetBytes(nullptr, 0);
    if (!path)
        return impl_->fail();
    std::FILE* f = std::fopen(path, "rb");
    if (!f)
        return impl_->fail();
    std::vector<unsigned char> data;
    unsigned char block[65536];
    bool ok = true;
    for (;;) {
        const std::size_t n = std::fread(block, 1, sizeof(block), f);
        data.insert(data.end(), block, block + n);
        if (data.size() > CHUNK_SIZE_MASK)
            ok = false;
        if (n < sizeof(block) || !ok)
            break;
    }
    if (std::ferror(f))
        ok = false;
    std::fclose(f);
    if (!ok)
        return impl_->fail();
    return SetBytes(data.data(), data.size());
}

IOResult ChunkLoad::OpenChunk() {
    Impl& m = *impl_;
    if (!m.open.empty()) {
        const Impl::Level& cur = m.open.back();
        const bool empty = cur.end == cur.header + CHUNK_HEADER_SIZE;
        if (!cur.holdsChunks && !empty)
            return m.fail(); // a data chunk has no chunks
    }
    const std::size_t pos = m.curPos(), end = m.curEnd();
    if (pos == end)
        return IO_END;
    if (end - pos < CHUNK_HEADER_SIZE)
        return m.fail(); // a header cut short
    if (int(m.open.size()) >= kMaxDepth)
        return m.fail();
    const unsigned char* h = &m.bytes[pos];
    const USHORT id = USHORT(h[0] | (h[1] << 8));
    const uint32_t word = UnpackLE32<uint32_t>(h + 2);
    const std::size_t size = word & CHUNK_SIZE_MASK;
    // The chunk must hold its own header and end inside the chunk that holds it.
    if (size < CHUNK_HEADER_SIZE || size > end - pos)
        return m.fail();
    if (m.open.empty())
        m.topPos = pos + size;
    else
        m.open.back().pos = pos + size;
    m.open.push_back(Impl::Level{pos, pos + size, pos + CHUNK_HEADER_SIZE, id,
                                 (word & CHUNK_HOLDS_CHUNKS) != 0});
    return IO_OK;
}

USHORT ChunkLoad::CurChunkID() { return impl_->open.empty() ? 0 : impl_->open.back().id; }

IOResult ChunkLoad::CloseChunk() {
    if (impl_->open.empty())
        return impl_->fail();
    impl_->open.pop_back();
    return IO_OK;
}

IOResult ChunkLoad::Read(void* buf, ULONG nbytes, ULONG* nread) {
    if (nread)
        *nread = 0;
    Impl::Level* l = impl_->dataChunk();
    if (!l || (nbytes && !buf) || nbytes > l->end - l->pos)
        return impl_->fail();
    if (nbytes)
        std::memcpy(buf, &impl_->bytes[l->pos], nbytes);
    l->pos += nbytes;
    if (nread)
        *nread = nbytes;
    return IO_OK;
}

IOResult ChunkLoad::ReadCStringChunk(char** buf) {
    Impl::Level* l = impl_->dataChunk();
    if (!buf)
        return impl_->fail();
    *buf = nullptr;
    if (!l || l->pos == l->end)
        return impl_->fail();
    auto* start = reinterpret_cast<char*>(&impl_->bytes[l->pos]);
    const void* nul = std::memchr(start, 0, l->end - l->pos);
    if (!nul)
        return impl_->fail(); // no terminator before the chunk ends
    *buf = start;
    l->pos += static_cast<const char*>(nul) - start + 1;
    return IO_OK;
}

void ChunkLoad::RegisterPostLoadCallback(PostLoadCallback* cb) { impl_->session.Register(cb); }
void ChunkLoad::SetObsolete() { impl_->session.SetObsolete(); }
void ChunkLoad::RecordBackpatch(int refID, void** patchThis) {
    impl_->session.RecordBackpatch(refID, patchThis);
}

ULONG ChunkLoad::ChunkBytesLeft() { return ULONG(impl_->curEnd() - impl_->curPos()); }
ULONG ChunkLoad::StreamBytesLeft() { return ULONG(impl_->bytes.size() - impl_->curPos()); }

bool ChunkLoad::CurChunkHoldsChunks() const {
    return !impl_->open.empty() && impl_->open.back().holdsChunks;
}
ULONG ChunkLoad::CurChunkSize() const {
    if (impl_->open.empty())
        return 0;
    const Impl::Level& l = impl_->open.back();
    return ULONG(l.end - l.header - CHUNK_HEADER_SIZE);
}
std::size_t ChunkLoad::CurChunkOffset() const {
    return impl_->open.empty() ? 0 : impl_->open.back().header;
}
int ChunkLoad::Depth() const { return int(impl_->open.size()); }
IOResult ChunkLoad::Status() const { return impl_->damaged ? IO_ERROR : IO_OK; }
bool ChunkLoad::Obsolete() const { return impl_->session.Obsolete(); }

void ChunkLoad::ResolveBackpatches(BackpatchResolver resolve, void* context) {
    impl_->session.ResolveBackpatches(resolve, context);
}
void ChunkLoad::RunPostLoadCallbacks() { impl_->session.RunPostLoadCallbacks(this); }
