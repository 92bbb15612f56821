// The host's utility containers: CStr, Tab, the heap operators.
#include "host/cstr.h"
#include "host/heap.h"
#include "host/tab.h"

#include <doctest/doctest.h>

#include <climits>
#include <cstring>
#include <new>
#include <utility>

// ---------------------------------------------------------------------------------------
// CStr

TEST_CASE("CStr: an empty string is never a null pointer") {
    CStr s;
    REQUIRE(s.data() != nullptr);
    CHECK(std::strcmp(s.data(), "") == 0);
    CHECK(s.Length() == 0);
    CHECK(s.isNull());
    CHECK(s == "");
    CHECK(s == nullptr); // null compares as the empty text

    CStr fromNull(nullptr);
    CHECK(fromNull.Length() == 0);
    CHECK(std::strcmp(fromNull, "") == 0);
}

TEST_CASE("CStr: copies are deep and moves leave the source empty") {
    CStr a("Curve Control");
    CHECK(a.Length() == 13);
    CHECK_FALSE(a.isNull());

    CStr b(a);
    CHECK(b == a);
    CHECK(b.data() != a.data());
    b = "other";
    CHECK(a == "Curve Control");

    CStr c(std::move(b));
    CHECK(c == "other");
    CHECK(b.Length() == 0);
    CHECK(b == "");

    CStr d;
    d = std::move(c);
    CHECK(d == "other");
    CHECK(c.isNull());

    d = a;
    CHECK(d == "Curve Control");
    const CStr& same = d;
    d = same; // self-assignment keeps the text
    CHECK(d == "Curve Control");
    d = d.data(); // assigning its own buffer too
    CHECK(d == "Curve Control");
    d = d.data() + 6; // and a tail of it
    CHECK(d == "Control");

    d = static_cast<const char*>(nullptr);
    CHECK(d.isNull());
}

TEST_CASE("CStr: append, printf and comparison") {
    CStr s("Point");
    s += " ";
    s += "7";
    CHECK(s == "Point 7");
    CHECK(s.Length() == 7);
    s += "";
    s += nullptr;
    CHECK(s == "Point 7");
    s += s.data(); // appending itself reads before it frees
    CHECK(s == "Point 7Point 7");

    CStr f;
    f.printf("Curve %d", 12);
    CHECK(f == "Curve 12");
    CHECK(f.Length() == 8);
    f.printf("%s and %s", f.data(), "more"); // its own text as an argument
    CHECK(f == "Curve 12 and more");
    f.printf("%s", "");
    CHECK(f.Length() == 0);

    CHECK(CStr("abc") == CStr("abc"));
    CHECK(CStr("abc") != CStr("abd"));
    CHECK(CStr("abc") != "ab");
    CStr kept("conversion");
    CHECK(std::strcmp(static_cast<const char*>(kept), "conversion") == 0);
}

// ---------------------------------------------------------------------------------------
// Tab

TEST_CASE("Tab: SetCount zero-fills new items and keeps old ones") {
    Tab<int> t;
    CHECK(t.Count() == 0);
    t.SetCount(3);
    CHECK(t.Count() == 3);
    for (int i = 0; i < 3; ++i)
        CHECK(t[i] == 0);
    t[0] = 10;
    t[2] = 12;
    t.SetCount(100); // grows past the first capacity
    CHECK(t[0] == 10);
    CHECK(t[2] == 12);
    CHECK(t[99] == 0);
    t.SetCount(2);
    CHECK(t.Count() == 2);
    // Growing again zero-fills the items that were cut off.
    t.SetCount(3);
    CHECK(t[2] == 0);
    t.SetCount(-5);
    CHECK(t.Count() == 0);
}

TEST_CASE("Tab: Append, Insert and Delete") {
    Tab<int> t;
    const int abc[] = {1, 2, 3};
    CHECK(t.Append(3, abc) == 0);
    const int four = 4;
    CHECK(t.Append(1, &four) == 3);
    CHECK(t.Count() == 4);

    const int xy[] = {8, 9};
    CHECK(t.Insert(1, 2, xy) == 1); // 1 8 9 2 3 4
    REQUIRE(t.Count() == 6);
    const int expected[] = {1, 8, 9, 2, 3, 4};
    for (int i = 0; i < 6; ++i)
        CHECK(t[i] == expected[i]);

    // Out-of-range insert positions are clamped to the ends.
    const int first = 0, last = 5;
    CHECK(t.Insert(-3, 1, &first) == 0);
    CHECK(t.Insert(99, 1, &last) == 7);
    CHECK(t[0] == 0);
    CHECK(t[7] == 5);

    CHECK(t.Delete(1, 1) == 7); // 0 8 9 2 3 4 5
    CHECK(t[1] == 8);
    CHECK(t.Delete(5, 10) == 5); // n clamped to the end: 0 8 9 2 3
    CHECK(t[4] == 3);
    CHECK(t.Delete(-1, 1) == 5); // out of range: nothing
    CHECK(t.Delete(5, 1) == 5);
    CHECK(t.Delete(0, 0) == 5);

    // An insert or append without items makes zeroed room.
    t.Append(2, nullptr);
    CHECK(t.Count() == 7);
    CHECK(t[5] == 0);
    CHECK(t[6] == 0);

    // No items to insert or append changes nothing.
    CHECK(t.Insert(2, 0, nullptr) == 2);
    CHECK(t.Append(0, nullptr) == 7);
    CHECK(t.Count() == 7);
    CHECK(t.Insert(2, -3, nullptr) == 2);
    CHECK(t.Append(-3, nullptr) == 7);
    CHECK(t.Count() == 7);
}

TEST_CASE("Tab: copies are deep; Resize(0), ZeroCount and Shrink") {
    Tab<double> a;
    const double v[] = {1.5, 2.5};
    a.Append(2, v);
    Tab<double> b(a);
    b[0] = 9.0;
    CHECK(a[0] == 1.5);
    Tab<double> c;
    c = a;
    CHECK(c.Count() == 2);
    CHECK(c[1] == 2.5);
    const Tab<double>& sameTab = c;
    c = sameTab;
    CHECK(c.Count() == 2);
    CHECK(*c.Addr(1) == 2.5);

    c.ZeroCount();
    CHECK(c.Count() == 0);
    c.Shrink();
    CHECK(c.Count() == 0);
    a.Resize(0);
    CHECK(a.Count() == 0);
    a.Append(1, v); // usable again after its storage was freed
    CHECK(a[0] == 1.5);
}

TEST_CASE("Tab holds pointers, as the control's tables do") {
    Tab<CStr*> texts;
    for (int i = 0; i < 10; ++i) {
        CStr* s = new CStr;
        s->printf("text %d", i);
        texts.Append(1, &s);
    }
    CHECK(*texts[9] == "text 9");
    delete texts[4];
    texts.Delete(4, 1);
    CHECK(*texts[4] == "text 5");
    for (int i = 0; i < texts.Count(); ++i)
        delete texts[i];
    texts.Resize(0);
}

// ---------------------------------------------------------------------------------------
// Heap

namespace {
struct HeapObject : VokHeapOperators {
    int payload[8] = {};
};
} // namespace

TEST_CASE("Host heap: raw allocation and reallocation") {
    void* zero = HostAlloc(0); // a zero-size request still gives a distinct block
    CHECK(zero != nullptr);
    HostFree(zero);
    HostFree(nullptr);

    auto* p = static_cast<char*>(HostAlloc(4));
    REQUIRE(p != nullptr);
    std::memcpy(p, "abc", 4);
    p = static_cast<char*>(HostRealloc(p, 1000));
    REQUIRE(p != nullptr);
    CHECK(std::strcmp(p, "abc") == 0); // reallocation keeps the contents
    HostFree(p);

    auto* q = static_cast<int*>(TabRealloc(nullptr, sizeof(int), 3));
    q[2] = 7;
    q = static_cast<int*>(TabRealloc(q, sizeof(int), 300));
    CHECK(q[2] == 7);
    TabFree(q);
}

TEST_CASE("Host heap operators allocate and free objects and arrays") {
    auto* o = new HeapObject;
    o->payload[7] = 3;
    CHECK(o->payload[7] == 3);
    delete o;

    auto* n = new (std::nothrow) HeapObject;
    REQUIRE(n != nullptr);
    CHECK(n->payload[0] == 0);
    delete n;

    auto* arr = new HeapObject[5];
    arr[4].payload[0] = 1;
    CHECK(arr[4].payload[0] == 1);
    delete[] arr;
}

// ---------------------------------------------------------------------------------------
// Sizes that cannot be honoured

namespace {
/// Makes every host heap allocation fail for the life of the object.
struct HeapExhausted {
    HeapExhausted() { HostHeapFailAfter(0); }
    ~HeapExhausted() { HostHeapFailAfter(-1); }
    HeapExhausted(const HeapExhausted&) = delete;
    HeapExhausted& operator=(const HeapExhausted&) = delete;
};
} // namespace

TEST_CASE("Host heap: injected failures begin after the given number of allocations") {
    const long before = HostHeapRequests();
    HostHeapFailAfter(2);
    void* a = HostAlloc(8);
    void* b = HostAlloc(8);
    void* c = HostAlloc(8);
    void* r = HostRealloc(a, 64);
    HostHeapFailAfter(-1);
    CHECK(a != nullptr);
    CHECK(b != nullptr);
    CHECK(c == nullptr);
    CHECK(r == nullptr); // the block stays as it was
    CHECK(HostHeapRequests() - before == 4);
    void* d = HostAlloc(8);
    CHECK(d != nullptr);
    HostFree(a);
    HostFree(b);
    HostFree(d);
    {
        HeapExhausted none;
        CHECK_THROWS_AS(new HeapObject, std::bad_alloc); // the operator new contract
        CHECK(new (std::nothrow) HeapObject == nullptr);
    }
    CHECK(TabRealloc(nullptr, 8, -1) == nullptr);
}

TEST_CASE("Tab: a count it cannot hold is refused and nothing changes") {
    Tab<int> t;
    const int abc[] = {1, 2, 3};
    REQUIRE(t.Append(3, abc) == 0);

    // More items than an int counts: refused before anything is allocated.
    CHECK(t.Append(INT_MAX, nullptr) == -1);
    CHECK(t.Insert(1, INT_MAX - 1, nullptr) == -1);
    CHECK(t.Count() == 3);

    // As many as an int counts, but more than the heap gives: refused, not overflowed.
    {
        HeapExhausted none;
        CHECK_NOTHROW(CHECK_FALSE(t.SetCount(INT_MAX)));
        CHECK_FALSE(t.SetCount(1000));
        CHECK_FALSE(t.Resize(5000));
        CHECK(t.Append(100, nullptr) == -1);
        CHECK(t.Insert(0, 100, nullptr) == -1);
        Tab<int> copy(t); // a copy the heap cannot hold is empty
        CHECK(copy.Count() == 0);
        Tab<int> other;
        other = t;
        CHECK(other.Count() == 0);
        // Within the room it has, it still works.
        CHECK(t.SetCount(4));
        CHECK(t.SetCount(3));
    }
    REQUIRE(t.Count() == 3);
    CHECK(t[0] == 1);
    CHECK(t[1] == 2);
    CHECK(t[2] == 3);
    CHECK(t.Delete(1, INT_MAX) == 1); // a huge delete count is clamped, without overflow
    CHECK(t.SetCount(1000));          // and the heap serves again
    CHECK(t[0] == 1);
    CHECK(t[999] == 0);
}

TEST_CASE("Tab: Insert without items makes zeroed room") {
    Tab<int> t;
    const int abc[] = {1, 2, 3};
    t.Append(3, abc);
    CHECK(t.Insert(1, 2, nullptr) == 1);
    REQUIRE(t.Count() == 5);
    const int expected[] = {1, 0, 0, 2, 3};
    for (int i = 0; i < 5; ++i)
        CHECK(t[i] == expected[i]);
}
