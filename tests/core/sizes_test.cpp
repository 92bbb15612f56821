// Sizes that cannot be honoured: counts above CURVECTL_MAX_COUNT are refused, and memory
// running out part way through (injected with the host heap's HostHeapFailAfter, every
// allocation in turn) never throws out of the module nor leaves a half-made curve set.
#include "control/curve_control.h"
#include "curve/curve.h"
#include "host/heap.h"
#include "host/hold.h"
#include "io_test_util.h"
#include "ref_keeper.h"
#include "test_support.h"

#include <doctest/doctest.h>

#include <climits>
#include <string>
#include <vector>

using testsupport::CoreFixture;
using testsupport::FakeClient;
using testsupport::RefKeeper;

namespace {

/// Turns injected failures off again however the test ends.
struct HeapFaults {
    explicit HeapFaults(long after) { HostHeapFailAfter(after); }
    ~HeapFaults() { HostHeapFailAfter(-1); }
    HeapFaults(const HeapFaults&) = delete;
    HeapFaults& operator=(const HeapFaults&) = delete;
};

/// Host heap allocations that `op` makes.
template <class Op> long allocationsOf(Op op) {
    const long before = HostHeapRequests();
    op();
    return HostHeapRequests() - before;
}

bool isNewCurve(ICurve* c, float xlo, float xhi) {
    if (!c || c->PointCount() != 2)
        return false;
    Interval valid = FOREVER;
    return c->GetKnot(0, 0, valid).pos == Point2(xlo, 0.0f) &&
           c->GetKnot(0, 1, valid).pos == Point2(xhi, 0.0f);
}

std::vector<std::string> newCalls(const FakeClient& client) {
    std::vector<std::string> calls;
    for (const std::string& c : client.calls)
        if (c.rfind("new ", 0) == 0)
            calls.push_back(c);
    return calls;
}

} // namespace

TEST_CASE_FIXTURE(CoreFixture, "SetCurveCount: a count above CURVECTL_MAX_COUNT is refused") {
    RefKeeper keep(new CurveControl);
    CurveControl& control = *keep.get<CurveControl>();
    FakeClient client;
    control.RegisterClientObject(&client);
    control.SetCurveCount(2, FALSE);
    client.calls.clear();
    const BitArray shown = control.GetShownCurves();

    for (int n : {INT_MAX, CURVECTL_MAX_COUNT + 1}) {
        CAPTURE(n);
        theHold.Begin();
        CHECK_NOTHROW(control.SetCurveCount(n, TRUE));
        theHold.Accept("Count");
        CHECK(control.GetCurveCount() == 2);
        CHECK(client.calls.empty());
        CHECK(control.GetShownCurves() == shown);
        CHECK(theHold.NumUndo() == 0); // no record: nothing changed
    }

    // The limit itself can be had, and given back.
    control.SetCurveCount(CURVECTL_MAX_COUNT, FALSE);
    CHECK(control.GetCurveCount() == CURVECTL_MAX_COUNT);
    CHECK(isNewCurve(control.GetCurve(CURVECTL_MAX_COUNT - 1), 0.0f, 1.0f));
    control.SetCurveCount(2, FALSE);
    CHECK(control.GetCurveCount() == 2);
    control.RegisterClientObject(nullptr);
}

TEST_CASE_FIXTURE(CoreFixture, "SetPointCount: a count above CURVECTL_MAX_COUNT is refused; a "
                               "full curve takes no more points") {
    CurveControl owner;
    Curve c(&owner, 0);
    c.SetPointCount(3);
    c.Knots()[1] = CurveKnot(Point2(0.5f, 0.5f), Point2(), Point2(), KNOT_CORNER);
    c.InvalidateCache();

    for (int n : {INT_MAX, CURVECTL_MAX_COUNT + 1}) {
        CAPTURE(n);
        theHold.Begin();
        CHECK_NOTHROW(c.SetPointCount(n)); // at once, not minutes of allocation
        theHold.Accept("Count");
        REQUIRE(c.PointCount() == 3);
        CHECK(c.Knots()[1].pos == Point2(0.5f, 0.5f));
        CHECK(theHold.NumUndo() == 0);
    }

    c.SetPointCount(CURVECTL_MAX_COUNT);
    REQUIRE(c.PointCount() == CURVECTL_MAX_COUNT);
    for (int i = 0; i < CURVECTL_MAX_COUNT; ++i)
        c.Knots()[i].pos = Point2(float(i) / float(CURVECTL_MAX_COUNT - 1), 0.0f);
    c.InvalidateCache();
    // Full: an insertion is refused, and a split changes no handle either.
    CHECK(c.InsertKnot(1, CurveKnot(Point2(0.0f, 1.0f), Point2(), Point2(), 0)) == -1);
    CHECK(c.InsertKnotAtX(0, 0, 0.5f / float(CURVECTL_MAX_COUNT - 1), 1) == 0);
    CHECK(c.PointCount() == CURVECTL_MAX_COUNT);
    CHECK(c.Knots()[0].outTan == Point2());
    // One fewer takes one more.
    c.DeleteKnot(5);
    CHECK(c.InsertKnot(5, CurveKnot(Point2(5.0f / float(CURVECTL_MAX_COUNT - 1), 0.0f), Point2(),
                                    Point2(), 0)) == 5);
    CHECK(c.PointCount() == CURVECTL_MAX_COUNT);
}

TEST_CASE_FIXTURE(CoreFixture, "SetCurveCount: memory running out at any allocation throws "
                               "nothing and leaves the set whole") {
    // Grow 1 -> 4 undoably, failing each host allocation in turn: the set is either as
    // it was (no client notice, no record) or grown whole; undo and redo then work.
    const long total = allocationsOf([] {
        RefKeeper keep(new CurveControl);
        CurveControl& control = *keep.get<CurveControl>();
        control.SetCurveCount(1, FALSE);
        theHold.Begin();
        control.SetCurveCount(4, TRUE);
        theHold.Accept("Count");
        theHold.Reset();
    });
    REQUIRE(total > 0);
    int refused = 0, grown = 0;
    for (long n = 0; n <= total; ++n) {
        CAPTURE(n);
        RefKeeper keep(new CurveControl);
        CurveControl& control = *keep.get<CurveControl>();
        FakeClient client;
        control.RegisterClientObject(&client);
        control.SetCurveCount(1, FALSE);
        client.calls.clear();
        theHold.Begin();
        {
            HeapFaults faults(n);
            CHECK_NOTHROW(control.SetCurveCount(4, TRUE));
        }
        theHold.Accept("Count");
        const int count = control.GetCurveCount();
        for (int i = 0; i < count; ++i)
            CHECK(isNewCurve(control.GetCurve(i), 0.0f, 1.0f));
        if (count == 1) {
            ++refused;
            CHECK(newCalls(client).empty());
            CHECK(theHold.NumUndo() == 0);
        } else {
            ++grown;
            REQUIRE(count == 4);
            CHECK(newCalls(client) == std::vector<std::string>{"new 1", "new 2", "new 3"});
            if (theHold.NumUndo() == 1) { // the record could be made
                REQUIRE(theHold.Undo());
                CHECK(control.GetCurveCount() == 1);
                REQUIRE(theHold.Redo());
                CHECK(control.GetCurveCount() == 4);
            }
        }
        control.RegisterClientObject(nullptr);
        theHold.Reset();
    }
    CHECK(refused > 0);
    CHECK(grown > 0);
}

TEST_CASE_FIXTURE(CoreFixture, "SetPointCount: memory running out at any allocation throws "
                               "nothing") {
    const auto make = [](CurveControl& owner) {
        owner.SetCurveCount(1, FALSE);
        Curve* c = owner.GetCurveObject(0);
        c->Knots()[1].pos = Point2(1.0f, 0.75f);
        c->InvalidateCache();
        return c;
    };
    const long total = allocationsOf([&] {
        CurveControl owner;
        Curve* c = make(owner);
        theHold.Begin();
        c->SetPointCount(5);
        theHold.Accept("Count");
        theHold.Reset();
    });
    REQUIRE(total > 0);
    for (long n = 0; n <= total; ++n) {
        CAPTURE(n);
        RefKeeper keep(new CurveControl);
        Curve* c = make(*keep.get<CurveControl>());
        theHold.Begin();
        {
            HeapFaults faults(n);
            CHECK_NOTHROW(c->SetPointCount(5));
        }
        theHold.Accept("Count");
        const int count = c->PointCount();
        CHECK((count == 2 || count == 5));
        if (count == 2)
            CHECK(c->Knots()[1].pos == Point2(1.0f, 0.75f));
        else if (theHold.NumUndo() == 1) {
            REQUIRE(theHold.Undo());
            CHECK(c->PointCount() == 2);
        }
        theHold.Reset();
    }
}

TEST_CASE_FIXTURE(CoreFixture, "Load: memory running out at any allocation throws nothing") {
    CurveControl original;
    original.SetCurveCount(3, FALSE);
    original.GetCurveObject(1)->SetPointCount(4);
    const iotest::Bytes control = iotest::SaveOf(&original);
    const iotest::Bytes curve = iotest::SaveOf(original.GetCurveObject(1));
    for (long n = 0; n < 200; ++n) {
        CAPTURE(n);
        RefKeeper keepControl(new CurveControl);
        CurveControl& loaded = *keepControl.get<CurveControl>();
        Curve loadedCurve(nullptr, 0);
        IOResult rc = IO_OK, rv = IO_OK;
        {
            HeapFaults faults(n);
            CHECK_NOTHROW(rc = iotest::LoadInto(&loaded, control));
            CHECK_NOTHROW(rv = iotest::LoadInto(&loadedCurve, curve));
        }
        CHECK((rc == IO_OK || rc == IO_ERROR));
        CHECK((rv == IO_OK || rv == IO_ERROR));
        if (rc == IO_OK)
            CHECK(loaded.GetCurveCount() == 3);
        if (rv == IO_OK)
            CHECK(loadedCurve.PointCount() == 4);
    }
}

TEST_CASE_FIXTURE(CoreFixture, "Clone: memory running out at any allocation throws nothing") {
    CurveControl original;
    original.SetCurveCount(3, FALSE);
    original.GetCurveObject(2)->SetPointCount(4);
    const long total = allocationsOf([&] {
        RemapDir& remap = NewRemapDir();
        RefKeeper keep(remap.CloneRef(&original));
        remap.DeleteThis();
    });
    REQUIRE(total > 0);
    int made = 0;
    for (long n = 0; n <= total; ++n) {
        CAPTURE(n);
        RemapDir& remap = NewRemapDir();
        RefTargetHandle clone = nullptr;
        {
            HeapFaults faults(n);
            CHECK_NOTHROW(clone = remap.CloneRef(&original));
        }
        remap.DeleteThis();
        RefKeeper keep(clone);
        if (clone) {
            ++made;
            // A clone is whole or not there at all.
            auto* c = static_cast<CurveControl*>(clone);
            REQUIRE(c->GetCurveCount() == 3);
            CHECK(c->GetCurve(2)->PointCount() == 4);
        }
    }
    CHECK(made > 0);
}
