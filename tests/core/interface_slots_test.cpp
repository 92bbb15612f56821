// The slot order of the client interfaces, read from the compiler itself: under the
// Itanium C++ ABI (gcc and clang on Linux, MinGW-w64 on Windows alike) a pointer to a
// virtual member function holds 1 + the byte offset of its slot in the first word and the
// this-adjustment in the second. ICurve's 21 and ICurveCtl's 32 operations must follow the
// host's own virtual operations directly, in their documented order, with nothing before
// or between them; the client callback interface holds its four operations in slots 0 to 3
// and nothing else.
#include "curvectl/icurvectl.h"
#include "curvectl/icurvectl_ex.h"

#include <doctest/doctest.h>

#include <cstdint>
#include <cstring>
#include <type_traits>

namespace {

/// The vtable slot of a virtual member function, or -1 when `pm` is not virtual or needs
/// a this-adjustment (the operation would live in another table).
template <class M> long slotOf(M pm) {
    static_assert(std::is_member_function_pointer<M>::value, "a member function");
    static_assert(sizeof(M) == 2 * sizeof(std::uintptr_t), "Itanium layout: pointer, adjustment");
    std::uintptr_t words[2];
    std::memcpy(words, &pm, sizeof words);
    if ((words[0] & 1u) == 0 || words[1] != 0)
        return -1;
    return long((words[0] - 1) / sizeof(void*));
}

/// The first virtual declared after everything ReferenceTarget has: its slot is the number
/// of slots the host's classes take.
struct AfterHost : public ReferenceTarget {
    virtual void First() {}
};

} // namespace

TEST_CASE("slot reading: a probe finds the slots of a known layout") {
    struct Probe {
        virtual void A() {}
        virtual void B() {}
        virtual ~Probe() = default; // two slots under this ABI
        virtual void C() {}
    };
    CHECK(slotOf(&Probe::A) == 0);
    CHECK(slotOf(&Probe::B) == 1);
    CHECK(slotOf(&Probe::C) == 4);
}

TEST_CASE("ICurve: its 21 operations follow the host's slots directly, in order") {
    const long base = slotOf(&AfterHost::First);
    REQUIRE(base > 0);
    const long slots[] = {
        slotOf(&ICurve::SetPen),          slotOf(&ICurve::GetPen),
        slotOf(&ICurve::SetDisabledPen),  slotOf(&ICurve::GetDisabledPen),
        slotOf(&ICurve::ValueAt),         slotOf(&ICurve::SetAnimatable),
        slotOf(&ICurve::IsAnimatable),    slotOf(&ICurve::IsPointAnimated),
        slotOf(&ICurve::PointCount),      slotOf(&ICurve::SetPointCount),
        slotOf(&ICurve::GetSelection),    slotOf(&ICurve::SetSelection),
        slotOf(&ICurve::SetKnot),         slotOf(&ICurve::GetKnot),
        slotOf(&ICurve::SetEndBehaviour), slotOf(&ICurve::GetEndBehaviour),
        slotOf(&ICurve::InsertKnotEx),    slotOf(&ICurve::InsertKnot),
        slotOf(&ICurve::DeleteKnot),      slotOf(&ICurve::SetLookupSize),
        slotOf(&ICurve::GetLookupSize),
    };
    static_assert(sizeof(slots) / sizeof(slots[0]) == 21, "the 21 operations of ICurve");
    for (long k = 0; k < 21; ++k) {
        CAPTURE(k);
        CHECK(slots[k] == base + k);
    }
}

TEST_CASE("ICurveCtl: its 32 operations follow the host's slots directly, in order") {
    const long base = slotOf(&AfterHost::First);
    REQUIRE(base > 0);
    const long slots[] = {
        slotOf(&ICurveCtl::IsEditorOpen),    slotOf(&ICurveCtl::SetEditorOpen),
        slotOf(&ICurveCtl::GetEditorWindow), slotOf(&ICurveCtl::SetCurveCount),
        slotOf(&ICurveCtl::GetCurveCount),   slotOf(&ICurveCtl::SetXRange),
        slotOf(&ICurveCtl::SetYRange),       slotOf(&ICurveCtl::GetXRange),
        slotOf(&ICurveCtl::GetYRange),       slotOf(&ICurveCtl::RegisterClientObject),
        slotOf(&ICurveCtl::GetZoomState),    slotOf(&ICurveCtl::SetZoomState),
        slotOf(&ICurveCtl::GetScrollState),  slotOf(&ICurveCtl::SetScrollState),
        slotOf(&ICurveCtl::ZoomExtents),     slotOf(&ICurveCtl::SetTitle),
        slotOf(&ICurveCtl::GetCurve),        slotOf(&ICurveCtl::SetShownCurves),
        slotOf(&ICurveCtl::GetShownCurves),  slotOf(&ICurveCtl::SetControlFlags),
        slotOf(&ICurveCtl::GetControlFlags), slotOf(&ICurveCtl::SetParentWindow),
        slotOf(&ICurveCtl::SetNotifyWindow), slotOf(&ICurveCtl::SetToolMode),
        slotOf(&ICurveCtl::GetToolMode),     slotOf(&ICurveCtl::Redraw),
        slotOf(&ICurveCtl::GetValidity),     slotOf(&ICurveCtl::Update),
        slotOf(&ICurveCtl::SetMarkerX),      slotOf(&ICurveCtl::EnableRedraw),
        slotOf(&ICurveCtl::DeleteCurve),     slotOf(&ICurveCtl::ResetSelectedCurves),
    };
    static_assert(sizeof(slots) / sizeof(slots[0]) == 32, "the 32 operations of ICurveCtl");
    for (long k = 0; k < 32; ++k) {
        CAPTURE(k);
        CHECK(slots[k] == base + k);
    }
}

TEST_CASE("ICurveCtlClient: four operations in slots 0 to 3, nothing else virtual") {
    CHECK(slotOf(&ICurveCtlClient::GetCurveButtonImages) == 0);
    CHECK(slotOf(&ICurveCtlClient::GetCurveButtonText) == 1);
    CHECK(slotOf(&ICurveCtlClient::ResetCurve) == 2);
    CHECK(slotOf(&ICurveCtlClient::NewCurveCreated) == 3);
    // No virtual destructor: deleting through the interface does not compile, and the
    // table ends after slot 3.
    CHECK_FALSE(std::has_virtual_destructor<ICurveCtlClient>::value);
    CHECK_FALSE(std::is_destructible<ICurveCtlClient>::value);
    struct Impl final : ICurveCtlClient {
        BOOL GetCurveButtonImages(HIMAGELIST*, ICurveCtl*) override { return FALSE; }
        BOOL GetCurveButtonText(int, CStr&, ICurveCtl*) override { return FALSE; }
        void ResetCurve(int, ICurveCtl*) override {}
        void NewCurveCreated(int, ICurveCtl*) override {}
        virtual void Extra() {}
    };
    CHECK(slotOf(&Impl::Extra) == 4);
    CHECK(sizeof(ICurveCtlClient) == sizeof(void*)); // the table pointer alone
}

// Later versions append operations to ICurveCtlEx; these six keep their slots for good.
TEST_CASE("ICurveCtlEx: its first six operations in slots 0 to 5, no virtual destructor") {
    CHECK(slotOf(&ICurveCtlEx::SetExtendedFlags) == 0);
    CHECK(slotOf(&ICurveCtlEx::GetExtendedFlags) == 1);
    CHECK(slotOf(&ICurveCtlEx::SetSnapEnabled) == 2);
    CHECK(slotOf(&ICurveCtlEx::GetSnapEnabled) == 3);
    CHECK(slotOf(&ICurveCtlEx::SetOnionSkin) == 4);
    CHECK(slotOf(&ICurveCtlEx::GetOnionSkin) == 5);
    CHECK_FALSE(std::has_virtual_destructor<ICurveCtlEx>::value);
    CHECK_FALSE(std::is_destructible<ICurveCtlEx>::value);
    CHECK(sizeof(ICurveCtlEx) == sizeof(void*)); // the table pointer alone
}
