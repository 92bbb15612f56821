// The chunked streams (ChunkSave, ChunkLoad) and the scene writer and reader, with test
// classes of their own: their byte layout, their bounds against damaged data, and the
// object graph a scene restores.
#include "host/bitarray.h"
#include "host/chunk_values.h"
#include "host/class_desc.h"
#include "host/controller.h"
#include "host/hold.h"
#include "host/scene.h"
#include "support/failing_load.h"

#include <doctest/doctest.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace {

using Bytes = std::vector<unsigned char>;

Bytes bytesOf(const ChunkSave& s) { return Bytes(s.Data(), s.Data() + s.Size()); }

void put16(Bytes& b, unsigned v) {
    b.push_back(static_cast<unsigned char>(v));
    b.push_back(static_cast<unsigned char>(v >> 8));
}
void put32(Bytes& b, uint32_t v) {
    unsigned char p[4];
    PackLE32(p, v);
    b.insert(b.end(), p, p + 4);
}
/// A chunk header followed by nothing: the caller appends the payload.
void header(Bytes& b, unsigned id, uint32_t sizeWord) {
    put16(b, id);
    put32(b, sizeWord);
}

} // namespace

// ---------------------------------------------------------------------------------------
// Numbers

TEST_CASE("Chunk numbers are 32-bit little-endian whatever the type") {
    unsigned char b[4];
    PackLE32(b, int32_t(-2));
    CHECK(Bytes(b, b + 4) == Bytes{0xFE, 0xFF, 0xFF, 0xFF});
    PackLE32(b, 1.0f); // IEEE single 0x3F800000
    CHECK(Bytes(b, b + 4) == Bytes{0x00, 0x00, 0x80, 0x3F});
    PackLE32(b, uint32_t(0x12345678));
    CHECK(Bytes(b, b + 4) == Bytes{0x78, 0x56, 0x34, 0x12});
    CHECK(UnpackLE32<uint32_t>(b) == 0x12345678u);
    CHECK(UnpackLE32<float>(Bytes{0x00, 0x00, 0x80, 0x3F}.data()) == 1.0f);
}

// ---------------------------------------------------------------------------------------
// ChunkSave

TEST_CASE("ChunkSave: a data chunk is its id, its whole size and its bytes") {
    ChunkSave s;
    s.BeginChunk(0x1234);
    const unsigned char data[3] = {1, 2, 3};
    ULONG written = 0;
    CHECK(s.Write(data, 3, &written) == IO_OK);
    CHECK(written == 3);
    s.EndChunk();
    CHECK(s.Status() == IO_OK);
    // id 0x1234, size 9 (6 header + 3), no chunk-of-chunks bit.
    CHECK(bytesOf(s) == Bytes{0x34, 0x12, 0x09, 0x00, 0x00, 0x00, 1, 2, 3});
}

TEST_CASE("ChunkSave: a chunk that holds chunks has the top bit of its size word set") {
    ChunkSave s;
    s.BeginChunk(0x0001);
    s.BeginChunk(0x0002);
    WriteLE32(&s, uint32_t(0xA1B2C3D4));
    s.EndChunk();
    s.BeginChunk(0x0003); // empty
    s.EndChunk();
    s.EndChunk();
    CHECK(s.Status() == IO_OK);
    const Bytes expected = {0x01, 0x00, 0x16, 0x00, 0x00, 0x80,             // 22 | holds chunks
                            0x02, 0x00, 0x0A, 0x00, 0x00, 0x00,             // 10
                            0xD4, 0xC3, 0xB2, 0xA1, 0x03, 0x00, 0x06, 0x00, // empty: 6
                            0x00, 0x00};
    CHECK(bytesOf(s) == expected);
}

TEST_CASE("ChunkSave: strings are written with their terminator") {
    ChunkSave s;
    s.BeginChunk(7);
    CHECK(s.WriteCString("ab") == IO_OK);
    CHECK(s.WriteCString(nullptr) == IO_OK); // an empty string
    s.EndChunk();
    const Bytes b = bytesOf(s);
    CHECK(Bytes(b.begin() + 6, b.end()) == Bytes{'a', 'b', 0, 0});
}

TEST_CASE("ChunkSave: misuse is refused and reported by Status") {
    SUBCASE("bytes outside every chunk") {
        ChunkSave s;
        const char c = 'x';
        CHECK(s.Write(&c, 1, nullptr) == IO_ERROR);
        CHECK(s.Size() == 0);
        CHECK(s.Status() == IO_ERROR);
    }
    SUBCASE("bytes into a chunk that holds chunks") {
        ChunkSave s;
        s.BeginChunk(1);
        s.BeginChunk(2);
        s.EndChunk();
        const char c = 'x';
        CHECK(s.Write(&c, 1, nullptr) == IO_ERROR);
        s.EndChunk();
        CHECK(s.Status() == IO_ERROR);
    }
    SUBCASE("a chunk inside a chunk that holds bytes") {
        ChunkSave s;
        s.BeginChunk(1);
        WriteLE32(&s, 5);
        s.BeginChunk(2);
        s.EndChunk();
        s.EndChunk();
        CHECK(s.Status() == IO_ERROR);
    }
    SUBCASE("an end without a begin") {
        ChunkSave s;
        s.EndChunk();
        CHECK(s.Status() == IO_ERROR);
    }
    SUBCASE("a chunk left open") {
        ChunkSave s;
        s.BeginChunk(1);
        CHECK(s.Status() == IO_ERROR);
        CHECK(s.WriteFile("never-written.scene") == IO_ERROR);
    }
}

TEST_CASE("ChunkSave: GetRefID asks the source it was given, -1 without one") {
    ChunkSave s;
    int target = 0;
    CHECK(s.GetRefID(&target) == -1);
    s.SetRefIDSource([](void* t, void* ctx) { return t == ctx ? 42 : -1; }, &target);
    CHECK(s.GetRefID(&target) == 42);
    CHECK(s.GetRefID(nullptr) == -1);
}

// ---------------------------------------------------------------------------------------
// ChunkLoad

namespace {
/// 0x0001 { 0x0002 "12345678", 0x0003 {} }, 0x0004 "ab\0cd\0"
Bytes sampleTree() {
    ChunkSave s;
    s.BeginChunk(1);
    s.BeginChunk(2);
    WriteLE32(&s, int32_t(0x04030201));
    WriteLE32(&s, int32_t(0x08070605));
    s.EndChunk();
    s.BeginChunk(3);
    s.EndChunk();
    s.EndChunk();
    s.BeginChunk(4);
    s.WriteCString("ab");
    s.WriteCString("cd");
    s.EndChunk();
    REQUIRE(s.Status() == IO_OK);
    return bytesOf(s);
}
} // namespace

TEST_CASE("ChunkLoad: walks the tree the writer made") {
    const Bytes b = sampleTree();
    ChunkLoad in(b.data(), b.size());
    CHECK(in.Depth() == 0);
    CHECK(in.StreamBytesLeft() == b.size());
    REQUIRE(in.OpenChunk() == IO_OK);
    CHECK(in.CurChunkID() == 1);
    CHECK(in.CurChunkHoldsChunks());
    CHECK(in.CurChunkSize() == 6 + 8 + 6);
    CHECK(in.CurChunkOffset() == 0);
    REQUIRE(in.OpenChunk() == IO_OK);
    CHECK(in.CurChunkID() == 2);
    CHECK_FALSE(in.CurChunkHoldsChunks());
    CHECK(in.ChunkBytesLeft() == 8);
    int32_t v = 0;
    CHECK(ReadLE32(&in, v) == IO_OK);
    CHECK(v == 0x04030201);
    CHECK(in.ChunkBytesLeft() == 4);
    CHECK(in.CloseChunk() == IO_OK); // the unread rest is skipped
    REQUIRE(in.OpenChunk() == IO_OK);
    CHECK(in.CurChunkID() == 3);
    CHECK(in.OpenChunk() == IO_END); // an empty chunk holds no chunks
    CHECK(in.Read(&v, 0, nullptr) == IO_OK);
    CHECK(in.Read(&v, 1, nullptr) == IO_ERROR);
    CHECK(in.CloseChunk() == IO_OK);
    CHECK(in.OpenChunk() == IO_END);
    CHECK(in.CloseChunk() == IO_OK);
    REQUIRE(in.OpenChunk() == IO_OK);
    CHECK(in.CurChunkID() == 4);
    char* s1 = nullptr;
    char* s2 = nullptr;
    CHECK(in.ReadCStringChunk(&s1) == IO_OK);
    CHECK(in.ReadCStringChunk(&s2) == IO_OK);
    CHECK(std::string(s1) == "ab");
    CHECK(std::string(s2) == "cd");
    CHECK(in.ReadCStringChunk(&s1) == IO_ERROR); // nothing left
    CHECK(in.CloseChunk() == IO_OK);
    CHECK(in.OpenChunk() == IO_END);
    CHECK(in.CurChunkID() == 0);
    CHECK(in.CloseChunk() == IO_ERROR); // nothing is open
    CHECK(in.Status() == IO_ERROR);
}

TEST_CASE("ChunkLoad: a short read copies nothing, says so, and leaves the position") {
    const Bytes b = sampleTree();
    ChunkLoad in(b.data(), b.size());
    REQUIRE(in.OpenChunk() == IO_OK);
    REQUIRE(in.OpenChunk() == IO_OK);
    unsigned char buf[12];
    std::memset(buf, 0xEE, sizeof(buf));
    ULONG got = 99;
    CHECK(in.Read(buf, 12, &got) == IO_ERROR);
    CHECK(got == 0);
    CHECK(buf[0] == 0xEE);
    CHECK(in.Read(buf, 8, &got) == IO_OK); // the 8 bytes are still there
    CHECK(got == 8);
    CHECK(buf[7] == 0x08);
}

TEST_CASE("ChunkLoad: bytes are not read from a chunk of chunks, nor chunks from data") {
    const Bytes b = sampleTree();
    ChunkLoad in(b.data(), b.size());
    int32_t v = 0;
    CHECK(in.Read(&v, 4, nullptr) == IO_ERROR); // top level
    REQUIRE(in.OpenChunk() == IO_OK);
    CHECK(in.Read(&v, 4, nullptr) == IO_ERROR); // holds chunks
    char* s = nullptr;
    CHECK(in.ReadCStringChunk(&s) == IO_ERROR);
    REQUIRE(in.OpenChunk() == IO_OK);
    CHECK(in.OpenChunk() == IO_ERROR); // holds 8 bytes of data
}

TEST_CASE("ChunkLoad: a string without a terminator in its chunk is an error") {
    Bytes b;
    header(b, 9, 6 + 3);
    b.insert(b.end(), {'a', 'b', 'c'});
    b.push_back(0); // a terminator after the chunk must not be found
    ChunkLoad in(b.data(), b.size());
    REQUIRE(in.OpenChunk() == IO_OK);
    char* s = reinterpret_cast<char*>(1);
    CHECK(in.ReadCStringChunk(&s) == IO_ERROR);
    CHECK(s == nullptr);
}

TEST_CASE("ChunkLoad: damaged headers never open") {
    SUBCASE("a header cut short") {
        Bytes b = {0x01, 0x00, 0x06};
        ChunkLoad in(b.data(), b.size());
        CHECK(in.OpenChunk() == IO_ERROR);
    }
    SUBCASE("a size smaller than the header") {
        Bytes b;
        header(b, 1, 5);
        ChunkLoad in(b.data(), b.size());
        CHECK(in.OpenChunk() == IO_ERROR);
    }
    SUBCASE("a size of zero with the chunk bit") {
        Bytes b;
        header(b, 1, CHUNK_HOLDS_CHUNKS);
        ChunkLoad in(b.data(), b.size());
        CHECK(in.OpenChunk() == IO_ERROR);
    }
    SUBCASE("a size past the end of the stream") {
        Bytes b;
        header(b, 1, 6 + 100);
        put32(b, 7);
        ChunkLoad in(b.data(), b.size());
        CHECK(in.OpenChunk() == IO_ERROR);
        CHECK(in.Depth() == 0);
    }
    SUBCASE("the largest size word") {
        Bytes b;
        header(b, 1, 0xFFFFFFFFu);
        ChunkLoad in(b.data(), b.size());
        CHECK(in.OpenChunk() == IO_ERROR);
    }
    SUBCASE("a nested chunk that runs past its parent (nesting that never closes)") {
        Bytes b;
        header(b, 1, CHUNK_HOLDS_CHUNKS | (6 + 6 + 4));
        header(b, 2, 6 + 4 + 8); // 8 bytes more than the parent has left
        put32(b, 1);
        put32(b, 2); // inside the buffer, but after the parent's end
        put32(b, 3);
        ChunkLoad in(b.data(), b.size());
        REQUIRE(in.OpenChunk() == IO_OK);
        CHECK(in.OpenChunk() == IO_ERROR);
        CHECK(in.Depth() == 1);
    }
    SUBCASE("a trailing fragment after good chunks") {
        Bytes b;
        header(b, 1, 6);
        b.push_back(0x02);
        ChunkLoad in(b.data(), b.size());
        REQUIRE(in.OpenChunk() == IO_OK);
        CHECK(in.CloseChunk() == IO_OK);
        CHECK(in.OpenChunk() == IO_ERROR);
    }
}

TEST_CASE("ChunkLoad: nesting deeper than any scene is refused, not followed") {
    const int levels = 1000;
    Bytes b;
    for (int i = 0; i < levels; ++i)
        header(b, 1, CHUNK_HOLDS_CHUNKS | uint32_t(6 * (levels - i)));
    ChunkLoad in(b.data(), b.size());
    int opened = 0;
    while (in.OpenChunk() == IO_OK)
        ++opened;
    CHECK(opened == 256);
    CHECK(in.Status() == IO_ERROR);
}

TEST_CASE("ChunkLoad: the stream is a copy; files round-trip") {
    Bytes b = sampleTree();
    ChunkLoad in(b.data(), b.size());
    std::fill(b.begin(), b.end(), 0);
    REQUIRE(in.OpenChunk() == IO_OK);
    CHECK(in.CurChunkID() == 1);

    ChunkSave s;
    s.BeginChunk(0x77);
    s.WriteCString("file");
    s.EndChunk();
    const std::string path = "scene_stream_test.tmp";
    REQUIRE(s.WriteFile(path.c_str()) == IO_OK);
    ChunkLoad f;
    REQUIRE(f.ReadFile(path.c_str()) == IO_OK);
    REQUIRE(f.OpenChunk() == IO_OK);
    char* text = nullptr;
    CHECK(f.ReadCStringChunk(&text) == IO_OK);
    CHECK(std::string(text) == "file");
    std::remove(path.c_str());
    CHECK(f.ReadFile("no-such-file.scene") == IO_ERROR);
    CHECK(f.OpenChunk() == IO_END); // and the stream is empty
}

namespace {
struct CallbackLog {
    std::vector<std::string> lines;
    int deleted = 0;
};

class LoggingCallback : public PostLoadCallback {
public:
    LoggingCallback(CallbackLog* log, std::string name, int priority, ILoad* chain = nullptr)
        : log_(log), name_(std::move(name)), priority_(priority), chain_(chain) {}
    ~LoggingCallback() override { ++log_->deleted; }
    void proc(ILoad* iload) override {
        log_->lines.push_back(name_);
        if (chain_)
            iload->RegisterPostLoadCallback(new LoggingCallback(log_, name_ + "+", 0));
        delete this;
    }
    int Priority() override { return priority_; }

private:
    CallbackLog* log_;
    std::string name_;
    int priority_;
    ILoad* chain_; // non-null: registers one more callback when run
};
} // namespace

TEST_CASE("ChunkLoad: post-load callbacks run by priority, then those they register") {
    CallbackLog log;
    {
        ChunkLoad in;
        in.RegisterPostLoadCallback(new LoggingCallback(&log, "a5", 5));
        in.RegisterPostLoadCallback(new LoggingCallback(&log, "b0", 0, &in));
        in.RegisterPostLoadCallback(new LoggingCallback(&log, "c10", 10));
        in.RegisterPostLoadCallback(new LoggingCallback(&log, "d5", 5));
        in.RegisterPostLoadCallback(nullptr);
        in.RunPostLoadCallbacks();
        CHECK(log.lines == std::vector<std::string>{"b0", "a5", "d5", "c10", "b0+"});
        CHECK(log.deleted == 5);
    }
    CHECK(log.deleted == 5);
}

TEST_CASE("ChunkLoad: callbacks of an abandoned load are deleted without running") {
    CallbackLog log;
    {
        ChunkLoad in;
        in.RegisterPostLoadCallback(new LoggingCallback(&log, "x", 5));
    }
    CHECK(log.lines.empty());
    CHECK(log.deleted == 1);
}

TEST_CASE("ChunkLoad: backpatches and the older-layout notice") {
    ChunkLoad in;
    int a = 1, b = 2;
    void* p = nullptr;
    void* q = &a;
    in.RecordBackpatch(3, &p);
    in.RecordBackpatch(4, &q);
    in.ResolveBackpatches([](int id, void* ctx) -> void* { return id == 3 ? ctx : nullptr; }, &b);
    CHECK(p == &b);
    CHECK(q == nullptr); // an id nothing answers patches to null
    CHECK_FALSE(in.Obsolete());
    in.SetObsolete();
    CHECK(in.Obsolete());
}

// ---------------------------------------------------------------------------------------
// BitArray's saved form through the streams

TEST_CASE("BitArray: its saved form round-trips through a chunk") {
    BitArray bits(70);
    bits.Set(0);
    bits.Set(31);
    bits.Set(32);
    bits.Set(69);
    ChunkSave s;
    s.BeginChunk(0x03F2);
    CHECK(bits.Save(&s) == IO_OK);
    s.EndChunk();
    const Bytes b = bytesOf(s);
    // count 70, then three words.
    REQUIRE(b.size() == 6 + 4 + 12);
    CHECK(UnpackLE32<int32_t>(&b[6]) == 70);
    CHECK(UnpackLE32<uint32_t>(&b[10]) == 0x80000001u);
    CHECK(UnpackLE32<uint32_t>(&b[14]) == 0x00000001u);
    CHECK(UnpackLE32<uint32_t>(&b[18]) == 0x00000020u);
    ChunkLoad in(b.data(), b.size());
    REQUIRE(in.OpenChunk() == IO_OK);
    BitArray loaded;
    CHECK(loaded.Load(&in) == IO_OK);
    CHECK(loaded == bits);
}

TEST_CASE("BitArray: a count its chunk cannot hold fails before allocating") {
    Bytes b;
    header(b, 1, 6 + 4 + 4);
    put32(b, 1u << 24); // 16 M bits would need 2 MB of words; the chunk has 4 bytes
    put32(b, 0xFFFFFFFFu);
    ChunkLoad in(b.data(), b.size());
    REQUIRE(in.OpenChunk() == IO_OK);
    BitArray keep(3);
    keep.Set(2);
    CHECK(keep.Load(&in) == IO_ERROR);
    CHECK(keep.GetSize() == 3);
    CHECK(keep[2] == 1);
}
