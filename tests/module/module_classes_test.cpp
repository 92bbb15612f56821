// The two class descriptors, slot by slot, and the objects they create, used through the
// client interfaces only (ICurveCtl, ICurve), as a client plug-in would.
#include "module/module_support.h"

#include "host/hold.h"

#include <doctest/doctest.h>

#include <cstring>

using moduletest::As;
using moduletest::Plugin;

namespace {

/// Every descriptor row checked at once. `slot` names what the host reads.
struct DescriptorRow {
    int isPublic;
    const char* className;
    SClass_ID superClass;
    Class_ID classId;
};

void checkDescriptor(ClassDesc* d, const DescriptorRow& row) {
    REQUIRE(d != nullptr);
    CHECK(d->IsPublic() == row.isPublic);
    REQUIRE(d->ClassName() != nullptr);
    CHECK(std::strcmp(d->ClassName(), row.className) == 0);
    CHECK(d->SuperClassID() == row.superClass);
    CHECK(d->ClassID() == row.classId);
    REQUIRE(d->Category() != nullptr);
    CHECK(std::strcmp(d->Category(), "") == 0);
    CHECK(d->BeginCreate(nullptr) == 0); // slots 3 and 4 keep the host default
    CHECK(d->EndCreate(nullptr) == 0);
    CHECK(d->OkToCreate(nullptr) == 1); // slot 9
}

/// Deletes what a descriptor made, the way the host does.
void release(ReferenceTarget* t) {
    if (t)
        t->DeleteThis();
}

/// The defaults of a curve that SetCurveCount made: flat at y 0 across the x range.
void checkNewControlCurve(ICurve* c, float low, float high) {
    REQUIRE(c != nullptr);
    REQUIRE(c->PointCount() == 2);
    Interval valid = FOREVER;
    CurveKnot k0 = c->GetKnot(0, 0, valid);
    CurveKnot k1 = c->GetKnot(0, 1, valid);
    CHECK(k0.pos == Point2(low, 0.0f));
    CHECK(k1.pos == Point2(high, 0.0f));
    CHECK(k0.flags == 0x102u);
    CHECK(k1.flags == 0x102u);
    CHECK(k0.inTan == Point2());
    CHECK(k0.outTan == Point2());
    CHECK(k1.inTan == Point2());
    CHECK(k1.outTan == Point2());

    COLORREF colour = 1;
    int width = 1, style = 1;
    c->GetPen(colour, width, style);
    CHECK(colour == 0x000000u);
    CHECK(width == 0);
    CHECK(style == 0);
    c->GetDisabledPen(colour, width, style);
    CHECK(colour == 0xC0C0C0u);
    CHECK(width == 0);
    CHECK(style == 0);

    CHECK(c->GetEndBehaviour() == 0);
    CHECK(c->GetLookupSize() == 1000);
    CHECK(c->IsAnimatable() == TRUE);
    CHECK(c->IsPointAnimated(0) == FALSE);
    CHECK(c->IsPointAnimated(1) == FALSE);
    CHECK(c->GetSelection().GetSize() == 2);
    CHECK(c->GetSelection().NumberSet() == 0);
}

} // namespace

TEST_CASE("the CurveControl descriptor, slot by slot") {
    checkDescriptor(Plugin().LibClassDesc(0),
                    DescriptorRow{1, "CurveControl", 0x100, Class_ID(0x14585773, 0x483A7DCF)});
}

TEST_CASE("the Curve descriptor, slot by slot") {
    checkDescriptor(Plugin().LibClassDesc(1),
                    DescriptorRow{0, "", 0x100, Class_ID(0x5F2D3A0A, 0x4BE75269)});
}

TEST_CASE("the Curve descriptor creates a curve without points or owner") {
    theHold.Reset();
    ClassDesc* d = Plugin().LibClassDesc(1);
    void* made = d->Create(FALSE);
    REQUIRE(made != nullptr);
    auto* target = As<ReferenceTarget>(made);
    auto* curve = static_cast<ICurve*>(target->GetInterface(I_CURVE_INTERFACE));
    REQUIRE(curve != nullptr);
    CHECK(target->GetInterface(I_CURVE_INTERFACE_ALT) == curve);
    CHECK(target->GetInterface(CURVE_CLIENT_INTERFACE_ID) == nullptr);

    CStr name;
    target->GetClassName(name);
    CHECK(name == "Curve");
    CHECK(target->ClassID() == d->ClassID());
    CHECK(target->SuperClassID() == d->SuperClassID());

    CHECK(curve->PointCount() == 0);
    CHECK(curve->GetLookupSize() == 1000);
    CHECK(curve->IsAnimatable() == TRUE);
    CHECK(target->NumRefs() == 0);
    COLORREF colour = 1;
    int width = 1, style = 1;
    curve->GetPen(colour, width, style);
    CHECK(colour == 0u);
    curve->GetDisabledPen(colour, width, style);
    CHECK(colour == 0xC0C0C0u);

    // Loading a scene also goes through Create, with the loading flag.
    void* loading = d->Create(TRUE);
    REQUIRE(loading != nullptr);
    CHECK(loading != made);
    release(As<ReferenceTarget>(loading));
    release(target);
}

TEST_CASE("a curve without owner sends no client messages; the control's curves do") {
    theHold.Reset();
    moduletest::NotifyWindow notify;
    auto* control = As<ICurveCtl>(Plugin().LibClassDesc(0)->Create(FALSE));
    REQUIRE(control != nullptr);
    control->SetNotifyWindow(notify.hwnd());
    control->SetCurveCount(1, FALSE);

    auto* orphan = As<ICurve>(Plugin().LibClassDesc(1)->Create(FALSE));
    REQUIRE(orphan != nullptr);
    orphan->SetPointCount(3);
    BitArray all(3);
    all.SetAll();
    orphan->SetSelection(all, 4);
    Interval valid = FOREVER;
    CurveKnot k = orphan->GetKnot(0, 1, valid);
    k.pos = Point2(0.5f, 0.25f);
    orphan->SetKnot(0, 1, k, FALSE, TRUE);
    CHECK(notify.messages.empty());
    // The operations still did their work.
    CHECK(orphan->GetSelection().NumberSet() == 3);
    CHECK(orphan->GetKnot(0, 1, valid).pos == Point2(0.5f, 0.25f));

    // The same operations on the control's curve reach the notify window.
    ICurve* owned = control->GetCurve(0);
    REQUIRE(owned != nullptr);
    BitArray first(2);
    first.Set(0);
    owned->SetSelection(first, 4);
    REQUIRE(notify.messages.size() == 1);
    CHECK(notify.messages[0].msg == CURVE_MSG_SELECTION);
    CHECK(notify.messages[0].wParam == 1); // points selected afterwards
    CHECK(notify.messages[0].lParam == reinterpret_cast<LPARAM>(owned));

    CurveKnot end = owned->GetKnot(0, 1, valid);
    owned->SetKnot(0, 1, end, FALSE, TRUE); // unchanged, still reported
    REQUIRE(notify.messages.size() >= 2);
    CHECK(notify.messages[1].msg == CURVE_MSG_POINT_CHANGED);
    CHECK(notify.messages[1].wParam == 1);
    CHECK(notify.messages[1].lParam == reinterpret_cast<LPARAM>(owned));

    release(orphan);
    release(control);
    theHold.Reset();
}

TEST_CASE("a CurveControl from its descriptor, configured and read back as a client would") {
    theHold.Reset();
    ClassDesc* d = Plugin().LibClassDesc(0);
    auto* control = As<ICurveCtl>(d->Create(FALSE));
    REQUIRE(control != nullptr);
    CStr name;
    control->GetClassName(name);
    CHECK(name == "CurveControl");
    CHECK(control->ClassID() == d->ClassID());
    CHECK(control->SuperClassID() == 0x100u);

    SUBCASE("defaults") {
        CHECK(control->GetCurveCount() == 0);
        CHECK(control->GetCurve(0) == nullptr);
        CHECK(control->GetXRange() == Point2(0.0f, 1.0f));
        CHECK(control->GetYRange() == Point2(0.0f, 1.0f));
        CHECK(control->GetControlFlags() == 0x3FFFFu);
        CHECK(control->GetToolMode() == 0);
        CHECK(control->IsEditorOpen() == FALSE);
        CHECK(control->GetEditorWindow() == nullptr);
        float h = 7.0f, v = 7.0f;
        CHECK(control->GetZoomState(&h, &v) == FALSE);
        CHECK(h == 7.0f);
        CHECK(v == 7.0f);
        int sh = 7, sv = 7;
        CHECK(control->GetScrollState(&sh, &sv) == FALSE);
        CHECK(sh == 7);
        CHECK(sv == 7);
        BitArray shown = control->GetShownCurves();
        CHECK(shown.GetSize() == 32);
        CHECK(shown.NumberSet() == 0);
        CHECK(control->GetValidity(0) == FOREVER);
    }

    SUBCASE("curves, ranges and flags") {
        control->SetCurveCount(3, FALSE);
        REQUIRE(control->GetCurveCount() == 3);
        CHECK(control->GetCurve(3) == nullptr);
        CHECK(control->GetCurve(-1) == nullptr);
        CHECK(control->GetCurve(0) != control->GetCurve(1));
        for (int i = 0; i < 3; ++i)
            checkNewControlCurve(control->GetCurve(i), 0.0f, 1.0f);
        // The display bits are not turned on for the client: it chooses what is shown.
        CHECK(control->GetShownCurves().NumberSet() == 0);

        control->SetXRange(-10.0f, 10.0f, TRUE);
        CHECK(control->GetXRange() == Point2(-10.0f, 10.0f));
        Interval valid = FOREVER;
        CHECK(control->GetCurve(2)->GetKnot(0, 0, valid).pos == Point2(-10.0f, 0.0f));
        CHECK(control->GetCurve(2)->GetKnot(0, 1, valid).pos == Point2(10.0f, 0.0f));
        control->SetXRange(5.0f, -5.0f, TRUE); // low > high: ignored
        CHECK(control->GetXRange() == Point2(-10.0f, 10.0f));

        control->SetYRange(-1.0f, 2.0f);
        CHECK(control->GetYRange() == Point2(-1.0f, 2.0f));

        control->SetControlFlags(CC_DRAWBG | CC_SHOW_CURRENTXVAL);
        CHECK(control->GetControlFlags() == (CC_DRAWBG | CC_SHOW_CURRENTXVAL));

        BitArray shown(2); // shorter than the curve set: grown, bits kept
        shown.Set(0);
        shown.Set(1);
        control->SetShownCurves(shown);
        BitArray back = control->GetShownCurves();
        CHECK(back.GetSize() == 3);
        CHECK(back[0] == 1);
        CHECK(back[1] == 1);
        CHECK(back[2] == 0);

        control->SetToolMode(CC_TOOL_SCALE);
        CHECK(control->GetToolMode() == CC_TOOL_SCALE);

        control->SetCurveCount(1, FALSE);
        CHECK(control->GetCurveCount() == 1);
        control->SetCurveCount(-2, FALSE);
        CHECK(control->GetCurveCount() == 0);
    }

    SUBCASE("each curve's own settings") {
        control->SetCurveCount(2, FALSE);
        ICurve* c = control->GetCurve(1);
        REQUIRE(c != nullptr);
        c->SetPen(RGB(255, 0, 0), 2, 1);
        c->SetDisabledPen(RGB(0, 0, 255), 3, 2);
        COLORREF colour = 0;
        int width = 0, style = 0;
        c->GetPen(colour, width, style);
        CHECK(colour == RGB(255, 0, 0));
        CHECK(width == 2);
        CHECK(style == 1);
        c->GetDisabledPen(colour, width, style);
        CHECK(colour == RGB(0, 0, 255));
        CHECK(width == 3);
        CHECK(style == 2);

        c->SetEndBehaviour(1);
        CHECK(c->GetEndBehaviour() == 1);
        c->SetEndBehaviour(5); // not a mode: unchanged
        CHECK(c->GetEndBehaviour() == 1);
        c->SetLookupSize(250);
        CHECK(c->GetLookupSize() == 250);

        c->SetPointCount(3);
        Interval valid = FOREVER;
        CurveKnot mid(Point2(0.5f, 0.75f), Point2(-0.1f, 0.0f), Point2(0.1f, 0.0f), 0x1);
        c->SetKnot(0, 1, mid, FALSE, FALSE);
        CurveKnot back = c->GetKnot(0, 1, valid);
        CHECK(back.pos == Point2(0.5f, 0.75f));
        CHECK((back.flags & 3u) == 1u);
        CHECK(c->GetEndBehaviour() == 0); // the resize reset it

        // The other curve kept its defaults.
        checkNewControlCurve(control->GetCurve(0), 0.0f, 1.0f);
    }

    SUBCASE("title, through the floating editor's caption") {
        control->SetTitle("Falloff");
        control->SetControlFlags(control->GetControlFlags() | CC_ASPOPUP);
        REQUIRE(control->SetEditorOpen(TRUE) == TRUE);
        CHECK(control->IsEditorOpen() == TRUE);
        HWND frame = control->GetEditorWindow();
        REQUIRE(frame != nullptr);
        char caption[64] = {};
        GetWindowTextA(frame, caption, int(sizeof(caption)));
        CHECK(std::strcmp(caption, "Falloff") == 0);
        CHECK(control->SetEditorOpen(TRUE) == TRUE); // already open: the same window
        CHECK(control->GetEditorWindow() == frame);
        CHECK(control->SetEditorOpen(FALSE) == FALSE);
        CHECK(control->IsEditorOpen() == FALSE);
        CHECK(control->GetEditorWindow() == nullptr);
        CHECK_FALSE(IsWindow(frame));
    }

    release(control);
    theHold.Reset();
}
