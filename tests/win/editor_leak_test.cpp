// Opening and closing editors many times leaves nothing behind: no window, no GDI object
// made through the host's tracking wrappers, and no heap block of the module's code.
//
// Heap blocks are counted by replacing the global allocation functions of this test
// program, which holds the module's code (curvectl_core) linked in; so every block that
// the editor's own code allocates is counted, and freed blocks are counted out.
#include "doctest/doctest.h"
#include "host/gdi_tracking.h"
#include "tests/win/editor_test_support.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {
std::atomic<long> liveBlocks{0}; // blocks from operator new not yet deleted

void* countedAlloc(std::size_t n) {
    void* p = std::malloc(n ? n : 1);
    if (!p)
        throw std::bad_alloc();
    liveBlocks.fetch_add(1, std::memory_order_relaxed);
    return p;
}
void countedFree(void* p) noexcept {
    if (!p)
        return;
    liveBlocks.fetch_sub(1, std::memory_order_relaxed);
    std::free(p);
}
} // namespace

void* operator new(std::size_t n) { return countedAlloc(n); }
void* operator new[](std::size_t n) { return countedAlloc(n); }
void* operator new(std::size_t n, const std::nothrow_t&) noexcept {
    try {
        return countedAlloc(n);
    } catch (...) {
        return nullptr;
    }
}
void* operator new[](std::size_t n, const std::nothrow_t&) noexcept {
    return operator new(n, std::nothrow);
}
void operator delete(void* p) noexcept { countedFree(p); }
void operator delete[](void* p) noexcept { countedFree(p); }
void operator delete(void* p, std::size_t) noexcept { countedFree(p); }
void operator delete[](void* p, std::size_t) noexcept { countedFree(p); }

using namespace edtest;

namespace {

struct Counts {
    int windows;
    int gdi;
    long blocks;
};

Counts now() { return Counts{CountThreadWindows(), LiveGdiTotal(), liveBlocks.load()}; }

/// Opens and closes the editor of `control` `times` times and checks that each count is
/// back where it was after the first round (which loads the per-process resources).
void cycle(CurveControl& control, int times) {
    REQUIRE(control.SetEditorOpen(TRUE));
    control.SetEditorOpen(FALSE);
    const Counts before = now();
    int opened = 0;
    for (int i = 0; i < times; ++i) {
        opened += control.SetEditorOpen(TRUE) ? 1 : 0;
        control.SetEditorOpen(FALSE);
    }
    const Counts after = now();
    CHECK(opened == times);
    CHECK(after.windows == before.windows);
    CHECK(after.gdi == before.gdi);
    CHECK(after.blocks == before.blocks);
    CHECK_FALSE(control.IsEditorOpen());
}

constexpr DWORD kNoToolbars = ~DWORD(CC_SHOWTOOLBAR | CC_SHOWZOOMTOOLBAR);

} // namespace

TEST_CASE_FIXTURE(EditorFixture, "1000 embedded editors leave nothing behind") {
    ParentWindow parent(500, 350);
    auto control = MakeControl(3, kEmbedded & kNoToolbars, parent.get());
    cycle(*control, 1000);
}

TEST_CASE_FIXTURE(EditorFixture, "1000 floating editors leave nothing behind") {
    auto control = MakeControl(3, CC_DEFAULT_FLAGS & kNoToolbars, nullptr);
    cycle(*control, 1000);
}

TEST_CASE_FIXTURE(EditorFixture, "editors with both toolbars leave nothing behind") {
    // Two toolbars of host controls make an editor take about 0.1 s to open and close
    // under Wine: fewer rounds, every part present.
    ParentWindow parent(600, 350);
    auto embedded = MakeControl(4, kEmbedded, parent.get());
    cycle(*embedded, 25);
    auto floating = MakeControl(4, CC_DEFAULT_FLAGS, nullptr);
    cycle(*floating, 25);
}

TEST_CASE_FIXTURE(EditorFixture, "an editor deleted with its control leaves nothing behind") {
    ParentWindow parent(500, 350);
    {
        auto warm = MakeControl(2, kEmbedded, parent.get());
        REQUIRE(warm->SetEditorOpen(TRUE));
    }
    const Counts before = now();
    for (int i = 0; i < 20; ++i) {
        auto control = MakeControl(2, kEmbedded, parent.get());
        REQUIRE(control->SetEditorOpen(TRUE));
        // Deleting the control closes its editor.
    }
    const Counts after = now();
    CHECK(after.windows == before.windows);
    CHECK(after.gdi == before.gdi);
    CHECK(after.blocks == before.blocks);
}
