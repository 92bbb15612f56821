// The editor's command dispatch reaching the control (reset, mirror, notify, extents,
// the host's command mode), the view face the control uses (zoom, scroll, caption), the
// time-change callback, and the module's release of the shared resources.
#include "doctest/doctest.h"
#include "editor/editor_resources.h"
#include "host/core_interface.h"
#include "host/hold.h"
#include "tests/win/editor_test_support.h"

#include <climits>
#include <string>
#include <vector>

using namespace edtest;

namespace {
void command(CurveCtlWindow* editor, int id, int code = 0) {
    SendMessageA(editor->Handle(), WM_COMMAND, MAKEWPARAM(id, code), 0);
}

/// A client that names the curve buttons and counts resets.
class Client : public ReferenceTarget, public ICurveCtlClient {
public:
    void* GetInterface(ULONG id) override {
        return id == CURVE_CLIENT_INTERFACE_ID ? static_cast<ICurveCtlClient*>(this) : nullptr;
    }
    BOOL GetCurveButtonImages(HIMAGELIST*, ICurveCtl*) override { return FALSE; }
    BOOL GetCurveButtonText(int i, CStr& text, ICurveCtl*) override {
        text.printf("Channel %c", 'A' + i);
        return TRUE;
    }
    void ResetCurve(int i, ICurveCtl* c) override {
        resets.push_back(i);
        // A reset that changes the curve, so the hold has something to keep.
        Curve* curve = static_cast<CurveControl*>(c)->GetCurveObject(i);
        CurveKnot k = curve->Knots()[0];
        k.pos.y = 0.5f;
        curve->StoreKnot(0, k);
    }
    void NewCurveCreated(int, ICurveCtl*) override {}
    std::vector<int> resets;
};

float pointY(CurveControl& c, int curve, int i) {
    Interval valid = FOREVER;
    return c.GetCurveObject(curve)->GetKnot(0, i, valid).pos.y;
}
} // namespace

TEST_CASE_FIXTURE(EditorFixture, "toolbar commands reach the whole-curve commands") {
    ParentWindow parent(600, 400);
    auto control = MakeControl(3, kEmbedded, parent.get());
    // Curve 1 hidden: mirrors leave it alone.
    BitArray shown(3);
    shown.Set(0);
    shown.Set(2);
    control->SetShownCurves(shown);
    for (int c = 0; c < 3; ++c) {
        Curve* curve = control->GetCurveObject(c);
        CurveKnot k0 = curve->Knots()[0];
        k0.pos.y = 0.75f;
        curve->StoreKnot(0, k0);
    }
    theHold.Reset();
    REQUIRE(control->SetEditorOpen(TRUE));
    CurveCtlWindow* editor = EditorOf(*control);

    command(editor, 404); // mirror, direction 1
    CHECK(theHold.NumUndo() == 1);
    CHECK(theHold.UndoName(0) == "IDS_TH_MIRROR");
    CHECK(pointY(*control, 1, 0) == doctest::Approx(0.75f));
    CHECK(pointY(*control, 0, 0) != doctest::Approx(0.75f));
    CHECK(pointY(*control, 2, 0) != doctest::Approx(0.75f));

    Client client;
    control->RegisterClientObject(&client);
    command(editor, 660);
    CHECK(client.resets == std::vector<int>{0, 2});
    CHECK(theHold.NumUndo() == 2);
    CHECK(theHold.UndoName(0) == "Reset Curve");
    control->RegisterClientObject(nullptr);

    // Delete with nothing selected leaves no undo step.
    command(editor, 420);
    CHECK(theHold.NumUndo() == 2);
    control->SetEditorOpen(FALSE);
}

TEST_CASE_FIXTURE(EditorFixture, "the host's command mode as edit mode 670") {
    ParentWindow parent(600, 400);
    auto control = MakeControl(2, kEmbedded, parent.get());
    REQUIRE(control->SetEditorOpen(TRUE));
    CurveCtlWindow* editor = EditorOf(*control);
    Interface* core = GetCOREInterface();
    const int pops = core->CommandModePops();
    command(editor, 670);
    CHECK(editor->EditMode() == 670);
    CHECK(core->CommandModePops() == pops);
    command(editor, 670); // 670 again ends the host's command mode
    CHECK(core->CommandModePops() == pops + 1);
    CHECK(editor->EditMode() == 670);
    // Leaving 670 for another mode tells the host only when the flag word is 0.
    command(editor, 400);
    CHECK(core->CommandModePops() == pops + 1);
    command(editor, 670);
    control->SetControlFlags(0);
    command(editor, 401);
    CHECK(core->CommandModePops() == pops + 2);
    CHECK(editor->EditMode() == 401);
    // A view mode chosen from 670 leaves the host's mode as well.
    command(editor, 670);
    command(editor, 1030);
    CHECK(core->CommandModePops() == pops + 3);
    control->SetEditorOpen(FALSE);
}

TEST_CASE_FIXTURE(EditorFixture, "zoom, scroll and caption through the control") {
    ParentWindow parent(600, 400);
    auto control = MakeControl(2, kEmbedded, parent.get());
    REQUIRE(control->SetEditorOpen(TRUE));
    CurveCtlWindow* editor = EditorOf(*control);
    float h = 0, v = 0;
    REQUIRE(control->GetZoomState(&h, &v));
    CHECK(h == doctest::Approx(0.138f));
    CHECK(v == doctest::Approx(0.003f));

    control->SetZoomState(0.0f, 0.0f);
    CHECK(editor->Scale().xs == 0.00002f);
    CHECK(editor->Scale().ys == 0.0000001f);
    control->SetZoomState(50.0f, 80.0f);
    CHECK(editor->Scale().xs == 50.0f);
    CHECK(editor->Scale().ys == 80.0f);

    SetScrollRange(editor->HorizontalBar(), SB_CTL, -100, 100, FALSE);
    SetScrollRange(editor->VerticalBar(), SB_CTL, -100, 100, FALSE);
    control->SetScrollState(12, -7);
    int hs = 0, vs = 0;
    REQUIRE(control->GetScrollState(&hs, &vs));
    CHECK(hs == 12);
    CHECK(vs == -7);
    CHECK(editor->HorizontalOffset() == 2 * 12 - 7);

    control->SetTitle("Ramp");
    control->SetShownCurves(control->GetShownCurves());
    CHECK(WindowText(control->GetEditorWindow()) == "Ramp");
    control->SetEditorOpen(FALSE);
}

TEST_CASE_FIXTURE(EditorFixture, "zoom extents fits the x range into the strip") {
    ParentWindow parent(600, 400);
    auto control = MakeControl(1, kEmbedded, parent.get());
    control->SetXRange(0.0f, 10.0f, FALSE);
    REQUIRE(control->SetEditorOpen(TRUE));
    CurveCtlWindow* editor = EditorOf(*control);
    control->ZoomExtents();
    RECT strip{};
    GetClientRect(editor->Strip()->Handle(), &strip);
    CHECK(editor->Scale().xs == doctest::Approx(float(strip.right - 34) / (10.0 * 1.1)));
    // Flat curves: the y scale is the usable height plus one.
    const RECT usable = editor->UsableArea();
    CHECK(editor->Scale().ys == doctest::Approx(float(usable.bottom - usable.top + 1)));
    control->SetEditorOpen(FALSE);
}

TEST_CASE_FIXTURE(EditorFixture, "a time change repaints the graph") {
    ParentWindow parent(600, 400);
    auto control = MakeControl(2, kEmbedded, parent.get());
    REQUIRE(control->SetEditorOpen(TRUE));
    CurveCtlWindow* editor = EditorOf(*control);
    UpdateWindow(editor->Graph().Handle());
    editor->Cache().graphValid = 1;
    editor->Cache().lastCursor = POINT{1, 2};

    GetCOREInterface()->SetTime(160, TRUE);
    CHECK(editor->Cache().graphValid == 0);
    CHECK(editor->Cache().lastCursor.x == INT_MIN);
    RECT dirty{};
    CHECK(GetUpdateRect(editor->Graph().Handle(), &dirty, FALSE));
    control->SetEditorOpen(FALSE);
    // A closed editor no longer listens (its callback is gone with it).
    GetCOREInterface()->SetTime(0, TRUE);
}

TEST_CASE_FIXTURE(EditorFixture, "the entry fields follow the selection") {
    ParentWindow parent(600, 400);
    auto control = MakeControl(2, kEmbedded, parent.get());
    REQUIRE(control->SetEditorOpen(TRUE));
    CurveCtlWindow* editor = EditorOf(*control);
    Curve* curve = control->GetCurveObject(0);
    auto fieldText = [&](ICustEdit* e) {
        char buf[32] = {};
        e->GetText(buf, 32);
        return std::string(buf);
    };
    UpdateWindow(editor->Graph().Handle());
    CHECK(fieldText(editor->Toolbars().xEntry.get()).empty());
    CHECK_FALSE(editor->Toolbars().xEntry->IsEnabled());

    BitArray sel(curve->PointCount());
    sel.Set(1);
    curve->SetSelection(sel, 1);
    control->Redraw(); // as the modes do after a selection; the paint refreshes the fields
    CHECK(fieldText(editor->Toolbars().xEntry.get()) == "1");
    CHECK(fieldText(editor->Toolbars().yEntry.get()) == "0");
    CHECK(editor->Toolbars().xEntry->IsEnabled());

    // Points of two curves at different x: no x to show, the shared y stays.
    BitArray first(2);
    first.Set(0);
    control->GetCurveObject(1)->SetSelection(first, 1);
    control->Redraw();
    CHECK(fieldText(editor->Toolbars().xEntry.get()).empty());
    CHECK_FALSE(editor->Toolbars().xEntry->IsEnabled());
    CHECK(fieldText(editor->Toolbars().yEntry.get()) == "0");
    control->SetEditorOpen(FALSE);
}

TEST_CASE_FIXTURE(EditorFixture, "curve buttons take their tooltips from the client") {
    ParentWindow parent(600, 400);
    Client client;
    auto control = MakeControl(3, kEmbedded, parent.get());
    control->RegisterClientObject(&client);
    REQUIRE(control->SetEditorOpen(TRUE));
    CurveCtlWindow* editor = EditorOf(*control);
    char buf[64] = {};
    editor->Toolbars().curveButtons[2]->GetTooltip(buf, 64);
    CHECK(std::string(buf) == "Channel C");
    control->SetEditorOpen(FALSE);
    control->RegisterClientObject(nullptr);
}

TEST_CASE_FIXTURE(EditorFixture,
                  "the module releases the shared resources and can load them again") {
    LoadEditorResources();
    REQUIRE(SharedEditorResources().editImages);
    ReleaseEditorResources();
    CHECK(SharedEditorResources().editImages == nullptr);
    CHECK(SharedEditorResources().curveImages == nullptr);
    CHECK(SharedEditorResources().viewImages == nullptr);
    CHECK(SharedEditorResources().pointMenu == nullptr);
    ReleaseEditorResources(); // twice is harmless
    const EditorResources& again = LoadEditorResources();
    CHECK(again.editImages);
    CHECK(again.pointMenu);
}
