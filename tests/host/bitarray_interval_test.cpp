// BitArray and Interval / TimeValue.
#include "host/bitarray.h"
#include "host/heap.h"
#include "host/interval.h"
#include "host/iosave.h"

#include <doctest/doctest.h>

#include <climits>
#include <cstring>
#include <utility>
#include <vector>

// ---------------------------------------------------------------------------------------
// BitArray

TEST_CASE("BitArray: set, clear and count") {
    BitArray b(40); // spans two words
    CHECK(b.GetSize() == 40);
    CHECK(b.NumberSet() == 0);
    CHECK(b.IsEmpty());
    b.Set(0);
    b.Set(31);
    b.Set(32);
    b.Set(39);
    CHECK(b.NumberSet() == 4);
    CHECK(b[0] == 1);
    CHECK(b[31] == 1);
    CHECK(b[32] == 1);
    CHECK(b[1] == 0);
    b.Clear(31);
    CHECK(b[31] == 0);
    CHECK(b.NumberSet() == 3);
    b.Set(5, 1);
    b.Set(0, 0);
    CHECK(b[5] == 1);
    CHECK(b[0] == 0);

    b.SetAll();
    CHECK(b.NumberSet() == 40); // only the 40 bits, not the whole second word
    b.ClearAll();
    CHECK(b.NumberSet() == 0);
    CHECK(b.GetSize() == 40);
}

TEST_CASE("BitArray: out-of-range reads give 0 and writes change nothing") {
    BitArray b(3);
    b.SetAll();
    CHECK(b[-1] == 0);
    CHECK(b[3] == 0);
    CHECK(b[1000] == 0);
    b.Set(3);
    b.Set(-1);
    b.Clear(-1);
    b.Clear(99);
    CHECK(b.NumberSet() == 3);
    CHECK(b.GetSize() == 3);

    BitArray empty;
    CHECK(empty.GetSize() == 0);
    CHECK(empty[0] == 0);
    CHECK(empty.NumberSet() == 0);
    empty.SetAll();
    empty.ClearAll();
    CHECK(empty.NumberSet() == 0);
}

TEST_CASE("BitArray: SetSize with save 1 keeps bits, with save 0 clears them") {
    BitArray b(10);
    b.Set(1);
    b.Set(9);

    SUBCASE("growing with save 1 keeps the old bits, new bits clear") {
        b.SetSize(70, 1);
        CHECK(b.GetSize() == 70);
        CHECK(b[1] == 1);
        CHECK(b[9] == 1);
        CHECK(b.NumberSet() == 2);
    }
    SUBCASE("shrinking with save 1 keeps the bits below the new size") {
        b.SetSize(5, 1);
        CHECK(b.GetSize() == 5);
        CHECK(b[1] == 1);
        CHECK(b.NumberSet() == 1);
        // Bit 9 was cut off: growing again does not bring it back.
        b.SetSize(10, 1);
        CHECK(b[9] == 0);
    }
    SUBCASE("save 0 clears every bit, growing or not") {
        b.SetSize(32, 0);
        CHECK(b.GetSize() == 32);
        CHECK(b.NumberSet() == 0);
    }
    SUBCASE("the default is save 0") {
        b.SetSize(10);
        CHECK(b.NumberSet() == 0);
    }
    SUBCASE("a negative size counts as 0") {
        b.SetSize(-4, 1);
        CHECK(b.GetSize() == 0);
        CHECK(b.NumberSet() == 0);
    }
}

TEST_CASE("BitArray: copies are deep; moves leave the source empty; equality") {
    BitArray a(33);
    a.Set(32);
    BitArray b(a);
    CHECK(b == a);
    b.Clear(32);
    CHECK(a[32] == 1);
    CHECK(b != a);

    BitArray c;
    c = a;
    CHECK(c == a);
    const BitArray& same = c;
    c = same;
    CHECK(c[32] == 1);

    BitArray d(std::move(c));
    CHECK(d[32] == 1);
    CHECK(c.GetSize() == 0);
    BitArray e;
    e = std::move(d);
    CHECK(e[32] == 1);
    CHECK(d.GetSize() == 0);

    // Same bits but different sizes are different arrays.
    BitArray small(3), large(4);
    CHECK(small != large);
    CHECK(BitArray(0) == BitArray());
}

namespace {

/// An in-memory stream: one flat byte buffer, no chunk structure (BitArray writes and
/// reads plain bytes inside a chunk its caller opened).
class MemorySave : public ISave {
public:
    void BeginChunk(USHORT) override {}
    void EndChunk() override {}
    IOResult Write(const void* buf, ULONG n, ULONG* written) override {
        const auto* p = static_cast<const unsigned char*>(buf);
        bytes.insert(bytes.end(), p, p + n);
        if (written)
            *written = n;
        return IO_OK;
    }
    IOResult WriteCString(const char* s) override {
        return Write(s, ULONG(std::strlen(s) + 1), nullptr);
    }
    int GetRefID(void*) override { return -1; }

    std::vector<unsigned char> bytes;
};

class MemoryLoad : public ILoad {
public:
    explicit MemoryLoad(std::vector<unsigned char> b) : bytes(std::move(b)) {}
    IOResult OpenChunk() override { return IO_END; }
    USHORT CurChunkID() override { return 0; }
    IOResult CloseChunk() override { return IO_OK; }
    IOResult Read(void* buf, ULONG n, ULONG* read) override {
        if (pos + n > bytes.size()) {
            if (read)
                *read = 0;
            return IO_ERROR;
        }
        std::memcpy(buf, bytes.data() + pos, n);
        pos += n;
        if (read)
            *read = n;
        return IO_OK;
    }
    IOResult ReadCStringChunk(char**) override { return IO_ERROR; }
    void RegisterPostLoadCallback(PostLoadCallback* cb) override { delete cb; }
    void SetObsolete() override {}
    void RecordBackpatch(int, void**) override {}

    std::vector<unsigned char> bytes;
    std::size_t pos = 0;
};

} // namespace

TEST_CASE("BitArray: saved as the bit count and then whole words") {
    BitArray b(40);
    b.Set(0);
    b.Set(33);
    MemorySave out;
    CHECK(b.Save(&out) == IO_OK);
    // 4 bytes of count, then two 32-bit words.
    REQUIRE(out.bytes.size() == 12);
    int32_t n = 0;
    uint32_t w0 = 0, w1 = 0;
    std::memcpy(&n, out.bytes.data(), 4);
    std::memcpy(&w0, out.bytes.data() + 4, 4);
    std::memcpy(&w1, out.bytes.data() + 8, 4);
    CHECK(n == 40);
    CHECK(w0 == 0x1u);
    CHECK(w1 == 0x2u);

    MemoryLoad in(out.bytes);
    BitArray loaded;
    CHECK(loaded.Load(&in) == IO_OK);
    CHECK(loaded == b);
}

TEST_CASE("BitArray: damaged saved data fails without changing the array") {
    BitArray keep(2);
    keep.Set(1);

    SUBCASE("negative count") {
        std::vector<unsigned char> bytes(4);
        int32_t n = -1;
        std::memcpy(bytes.data(), &n, 4);
        MemoryLoad in(bytes);
        CHECK(keep.Load(&in) == IO_ERROR);
    }
    SUBCASE("count larger than the words that follow") {
        std::vector<unsigned char> bytes(8);
        int32_t n = 64; // needs two words, only one follows
        std::memcpy(bytes.data(), &n, 4);
        MemoryLoad in(bytes);
        CHECK(keep.Load(&in) != IO_OK);
    }
    SUBCASE("no count at all") {
        MemoryLoad in({});
        CHECK(keep.Load(&in) != IO_OK);
    }
    CHECK(keep.GetSize() == 2);
    CHECK(keep[1] == 1);
}

TEST_CASE("BitArray: stray bits past the count in a saved word are dropped") {
    std::vector<unsigned char> bytes(8);
    int32_t n = 3;
    uint32_t w = 0xFFFFFFFFu;
    std::memcpy(bytes.data(), &n, 4);
    std::memcpy(bytes.data() + 4, &w, 4);
    MemoryLoad in(bytes);
    BitArray b;
    REQUIRE(b.Load(&in) == IO_OK);
    CHECK(b.NumberSet() == 3);
    BitArray all(3);
    all.SetAll();
    CHECK(b == all);
}

// ---------------------------------------------------------------------------------------
// Interval and TimeValue

TEST_CASE("Interval: FOREVER holds every time") {
    Interval f = FOREVER;
    CHECK(f.Start() == TIME_NegInfinity);
    CHECK(f.End() == TIME_PosInfinity);
    CHECK(f.IsInfinite());
    CHECK_FALSE(f.Empty());
    CHECK(f.InInterval(0));
    CHECK(f.InInterval(TIME_PosInfinity));
    CHECK(f.InInterval(TIME_NegInfinity));
    CHECK(f.InInterval(Interval(-5, 5)));
}

TEST_CASE("Interval: NEVER and the default interval are empty and contain nothing") {
    Interval never = NEVER;
    Interval def;
    CHECK(never.Start() == TimeValue(0x80000000));
    CHECK(never.End() == TimeValue(0x80000000));
    CHECK(def == never);
    CHECK(never.Empty());
    CHECK_FALSE(never.IsInfinite());
    CHECK_FALSE(never.InInterval(0));
    // Not even the time both ends sit on.
    CHECK_FALSE(never.InInterval(TIME_NegInfinity));
    CHECK_FALSE(never.InInterval(Interval(0, 0)));
    // And an empty interval lies in no interval.
    CHECK_FALSE(Interval(FOREVER).InInterval(never));

    Interval i(3, 9);
    i.SetEmpty();
    CHECK(i.Empty());
    i.SetInfinite();
    CHECK(i == FOREVER);
}

TEST_CASE("Interval: closed containment") {
    Interval i(10, 20);
    CHECK(i.InInterval(10));
    CHECK(i.InInterval(20));
    CHECK(i.InInterval(15));
    CHECK_FALSE(i.InInterval(9));
    CHECK_FALSE(i.InInterval(21));
    CHECK(i.InInterval(Interval(10, 20)));
    CHECK(i.InInterval(Interval(12, 13)));
    CHECK_FALSE(i.InInterval(Interval(5, 15)));
    CHECK_FALSE(i.InInterval(Interval(15, 25)));

    Interval inst;
    inst.SetInstant(7);
    CHECK(inst.Start() == 7);
    CHECK(inst.End() == 7);
    CHECK(inst.InInterval(7));
    CHECK_FALSE(inst.InInterval(8));
    CHECK_FALSE(inst.Empty());

    inst.SetStart(1);
    inst.SetEnd(2);
    CHECK(inst == Interval(1, 2));
    inst.Set(4, 6);
    CHECK(inst == Interval(4, 6));
    CHECK(inst != Interval(4, 7));
}

TEST_CASE("Interval: intersection") {
    CHECK((Interval(0, 10) & Interval(5, 20)) == Interval(5, 10));
    CHECK((Interval(0, 10) & Interval(10, 20)) == Interval(10, 10)); // touching ends
    CHECK((Interval(0, 10) & Interval(11, 20)).Empty());             // disjoint
    CHECK((Interval(0, 10) & NEVER).Empty());
    CHECK((NEVER & Interval(0, 10)).Empty());
    CHECK((Interval(FOREVER) & Interval(3, 4)) == Interval(3, 4));

    Interval v = FOREVER;
    v &= Interval(-100, 100);
    v &= Interval(50, 200);
    CHECK(v == Interval(50, 100));
    v &= Interval(101, 102);
    CHECK(v.Empty());
    // Once empty, nothing makes it non-empty by intersection.
    v &= FOREVER;
    CHECK(v.Empty());
}

TEST_CASE("Interval: an interval ending at the smallest time is not empty") {
    // Only both ends at 0x80000000 mean empty; [min, min + 1] is an ordinary range.
    Interval low(TIME_NegInfinity, TIME_NegInfinity + 1);
    CHECK_FALSE(low.Empty());
    CHECK(low.InInterval(TIME_NegInfinity));
    CHECK(low.InInterval(TIME_NegInfinity + 1));
}

// ---------------------------------------------------------------------------------------
// Sizes that cannot be honoured

TEST_CASE("BitArray: a size the heap cannot give is refused and nothing changes") {
    BitArray a(40);
    a.Set(3);
    a.Set(39);
    HostHeapFailAfter(0); // every allocation fails from here
    // The largest size: its word count does not overflow, the heap just has no room.
    CHECK_NOTHROW(CHECK_FALSE(a.SetSize(INT_MAX, 1)));
    CHECK_FALSE(a.SetSize(1000, 1));
    CHECK_FALSE(a.SetSize(1000, 0));
    CHECK(a.GetSize() == 40);
    CHECK(a[3] == 1);
    CHECK(a[39] == 1);
    CHECK(a.NumberSet() == 2);
    a.Set(2000); // outside: no write
    CHECK(a[2000] == 0);

    BitArray copy(a); // a copy that cannot be had is empty
    CHECK(copy.GetSize() == 0);
    BitArray other(8);
    CHECK(other.GetSize() == 0);
    HostHeapFailAfter(-1);
    BitArray target(5);
    target.Set(1);
    HostHeapFailAfter(0);
    target = a; // an assignment that cannot be had leaves the target as it was
    CHECK(target.GetSize() == 5);
    CHECK(target[1] == 1);
    CHECK(a.SetSize(0)); // no memory needed
    CHECK(a.GetSize() == 0);
    HostHeapFailAfter(-1);

    CHECK(a.SetSize(70, 1));
    CHECK(a.GetSize() == 70);
    CHECK(a.NumberSet() == 0);
}

TEST_CASE("BitArray: growing keeps the bits of whole and partial words") {
    BitArray a(70);
    for (int i : {0, 31, 32, 63, 64, 69})
        a.Set(i);
    REQUIRE(a.SetSize(100, 1));
    CHECK(a.NumberSet() == 6);
    for (int i : {0, 31, 32, 63, 64, 69})
        CHECK(a[i] == 1);
    REQUIRE(a.SetSize(64, 1));
    CHECK(a.NumberSet() == 4);
    REQUIRE(a.SetSize(65, 1));
    CHECK(a[64] == 0);
}
