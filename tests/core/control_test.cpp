// The curve control object without its window: defaults, the curve set and the client
// callbacks, undo of the curve set, validity, the reference face and CopyFrom.
// (Ranges, view state and the editor seam: control_range_view_test.cpp.)
#include "ref_keeper.h"
#include "test_support.h"

#include "control/curve_control.h"
#include "curve/curve.h"
#include "host/controller.h"
#include "host/hold.h"

#include <doctest/doctest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

using testsupport::CoreFixture;
using testsupport::FakeClient;
using testsupport::RefKeeper;

namespace {

/// A control held through a reference, as a client holds it.
struct ControlKeeper {
    ControlKeeper() : keep(new CurveControl) {}
    CurveControl& operator*() { return *keep.get<CurveControl>(); }
    CurveControl* operator->() { return keep.get<CurveControl>(); }
    RefKeeper keep;
};

CurveKnot knotAt(ICurve* c, int i, TimeValue t = 0) {
    Interval valid = FOREVER;
    return c->GetKnot(t, i, valid);
}

BitArray bits(int size, std::initializer_list<int> set) {
    BitArray b(size);
    for (int i : set)
        b.Set(i);
    return b;
}

/// Gives point i of `c` a controller keyed at each (time, position).
Control* animate(Curve& c, int i, std::initializer_list<std::pair<TimeValue, Point2>> keys) {
    Control* ctrl = NewDefaultPoint3Controller();
    REQUIRE(c.ReplaceReference(i, ctrl) == REF_SUCCEED);
    AnimateOn();
    for (const auto& [t, p] : keys) {
        Point3 v(p.x, p.y, 0.0f);
        ctrl->SetValue(t, &v, 1, CTRL_ABSOLUTE);
    }
    AnimateOff();
    return ctrl;
}

/// Makes curve i's middle point (index 1 of 3) sit at y = `y`, to tell curves apart.
void mark(CurveControl& cc, int i, float y) {
    Curve* c = cc.GetCurveObject(i);
    REQUIRE(c != nullptr);
    c->SetPointCount(3);
    c->Knots()[0] = CurveKnot(Point2(0.0f, 0.0f), Point2(), Point2(), 0x102);
    c->Knots()[1] = CurveKnot(Point2(0.5f, y), Point2(), Point2(), 0x2);
    c->Knots()[2] = CurveKnot(Point2(1.0f, 0.0f), Point2(), Point2(), 0x102);
    c->InvalidateCache();
}

float markOf(CurveControl& cc, int i) {
    ICurve* c = cc.GetCurve(i);
    REQUIRE(c != nullptr);
    REQUIRE(c->PointCount() == 3);
    return knotAt(c, 1).pos.y;
}

} // namespace

// ---------------------------------------------------------------------------------------
// Defaults

TEST_CASE_FIXTURE(CoreFixture, "a new control has the default settings") {
    ControlKeeper cc;
    CHECK(cc->GetCurveCount() == 0);
    CHECK(cc->GetCurve(0) == nullptr);
    CHECK(cc->GetXRange() == Point2(0.0f, 1.0f));
    CHECK(cc->GetYRange() == Point2(0.0f, 1.0f));
    CHECK(cc->GetControlFlags() == 0x3FFFFu);
    CHECK(cc->GetToolMode() == 0);
    CHECK(std::strcmp(cc->Title(), "Curve Control") == 0);
    BitArray shown = cc->GetShownCurves();
    CHECK(shown.GetSize() == 32);
    CHECK(shown.NumberSet() == 0);
    CHECK(cc->IsEditorOpen() == FALSE);
    CHECK(cc->GetEditorWindow() == nullptr);
    CHECK(cc->Editor() == nullptr);
    CHECK(cc->NotifyWindow() == nullptr);
    CHECK(cc->ParentWindow() == nullptr);
    CHECK(cc->InstanceIndex() == 0);
    CHECK(cc->ZoomFlyOff() == 0);
    CHECK(cc->ButtonImages() == nullptr);
    CHECK(cc->Client() == nullptr);
    WINDOWPLACEMENT wp{};
    CHECK_FALSE(cc->SavedPlacement(wp));
    CHECK(cc->GetValidity(0) == FOREVER);
    CHECK(cc->NumRefs() == 0);
    CHECK(cc->NumSubs() == 0);

    CStr name;
    cc->GetClassName(name);
    CHECK(name == "CurveControl");
    CHECK(cc->ClassID() == Class_ID(0x14585773, 0x483A7DCF));
    CHECK(cc->SuperClassID() == 0x100u);
}

TEST_CASE_FIXTURE(CoreFixture, "GetZoomState and GetScrollState before any set write nothing") {
    ControlKeeper cc;
    float h = 3.5f, v = -2.0f;
    CHECK(cc->GetZoomState(&h, &v) == FALSE);
    CHECK(h == 3.5f);
    CHECK(v == -2.0f);
    CHECK(cc->GetZoomState(nullptr, nullptr) == FALSE);
    int sh = 11, sv = 12;
    CHECK(cc->GetScrollState(&sh, &sv) == FALSE);
    CHECK(sh == 11);
    CHECK(sv == 12);
    CHECK(cc->GetScrollState(nullptr, nullptr) == FALSE);
}

TEST_CASE_FIXTURE(CoreFixture, "zoom and scroll are stored as given while the editor is closed") {
    ControlKeeper cc;
    cc->SetZoomState(0.0f, 0.0f); // no clamping without an editor
    float h = -1.0f, v = -1.0f;
    CHECK(cc->GetZoomState(&h, &v) == TRUE);
    CHECK(h == 0.0f);
    CHECK(v == 0.0f);
    cc->SetZoomState(2.5f, 1e9f);
    CHECK(cc->GetZoomState(&h, nullptr) == TRUE); // either pointer may be null
    CHECK(h == 2.5f);
    CHECK(cc->GetZoomState(nullptr, &v) == TRUE);
    CHECK(v == 1e9f);
    // The scroll state is its own: still unset.
    CHECK(cc->GetScrollState(nullptr, nullptr) == FALSE);

    cc->SetScrollState(-40, 70);
    int sh = 0, sv = 0;
    CHECK(cc->GetScrollState(&sh, &sv) == TRUE);
    CHECK(sh == -40);
    CHECK(sv == 70);
}

TEST_CASE_FIXTURE(CoreFixture, "plain setters store what they are given") {
    ControlKeeper cc;
    cc->SetTitle("Falloff");
    CHECK(std::strcmp(cc->Title(), "Falloff") == 0);
    cc->SetControlFlags(0x12345678u);
    CHECK(cc->GetControlFlags() == 0x12345678u); // bits nobody reads are kept as stored
    cc->SetYRange(5.0f, -5.0f);                  // stored as given: no order check, no clamp
    CHECK(cc->GetYRange() == Point2(5.0f, -5.0f));
    HWND parent = reinterpret_cast<HWND>(std::uintptr_t(0x100));
    HWND notify = reinterpret_cast<HWND>(std::uintptr_t(0x200));
    cc->SetParentWindow(parent);
    cc->SetNotifyWindow(notify);
    CHECK(cc->ParentWindow() == parent);
    CHECK(cc->NotifyWindow() == notify);
    for (int mode : {0, 1, 2, 3, 4, 5, 9, -1}) {
        cc->SetToolMode(mode); // stored even when it names no mode
        CHECK(cc->GetToolMode() == mode);
    }
    cc->SetMarkerX(0.25f);
    CHECK(cc->MarkerX() == 0.25f);
    cc->SetMarkerX(0.25f);
    CHECK(cc->MarkerX() == 0.25f);
}

TEST_CASE_FIXTURE(CoreFixture, "an embedded editor without a parent window does not open") {
    ControlKeeper cc;
    cc->SetControlFlags(cc->GetControlFlags() & ~DWORD(CC_ASPOPUP));
    CHECK(cc->SetEditorOpen(TRUE) == FALSE);
    CHECK(cc->IsEditorOpen() == FALSE);
    CHECK(cc->GetEditorWindow() == nullptr);
    CHECK(cc->SetEditorOpen(FALSE) == FALSE); // closing a closed editor
}

// ---------------------------------------------------------------------------------------
// The curve set

TEST_CASE_FIXTURE(CoreFixture, "SetCurveCount grows with flat curves across the x range") {
    ControlKeeper cc;
    cc->SetXRange(-2.0f, 3.0f, FALSE);
    cc->SetCurveCount(3, FALSE);
    REQUIRE(cc->GetCurveCount() == 3);
    CHECK(cc->NumRefs() == 3);
    for (int i = 0; i < 3; ++i) {
        Curve* c = cc->GetCurveObject(i);
        REQUIRE(c != nullptr);
        CHECK(cc->GetReference(i) == c);
        CHECK(cc->SubAnim(i) == c);
        CHECK(c->Owner() == &*cc);
        REQUIRE(c->PointCount() == 2);
        CHECK(knotAt(c, 0).pos == Point2(-2.0f, 0.0f));
        CHECK(knotAt(c, 1).pos == Point2(3.0f, 0.0f));
        CHECK(knotAt(c, 0).flags == 0x102u);
        CHECK(knotAt(c, 1).flags == 0x102u);
        CHECK(knotAt(c, 0).outTan == Point2());
        COLORREF colour = 1;
        int width = 1, style = 1;
        c->GetPen(colour, width, style);
        CHECK(colour == 0u);
        CHECK(width == 0);
        CHECK(style == 0);
        c->GetDisabledPen(colour, width, style);
        CHECK(colour == 0xC0C0C0u);
        CHECK(std::strcmp(cc->CurveButtonText(i), "Visibility On/Off Toggle") == 0);
    }
    CHECK(cc->GetCurve(0) != cc->GetCurve(1));
    CHECK(std::strcmp(cc->CurveButtonText(3), "") == 0); // out of range: empty
    CHECK(std::strcmp(cc->CurveButtonText(-1), "") == 0);
    // The display bits stay as they were (32 clear): the client chooses what is shown.
    CHECK(cc->GetShownCurves().GetSize() == 32);
    CHECK(cc->GetShownCurves().NumberSet() == 0);
}

TEST_CASE_FIXTURE(CoreFixture, "SetCurveCount keeps existing curves when growing and shrinking") {
    ControlKeeper cc;
    cc->SetCurveCount(2, FALSE);
    Curve* first = cc->GetCurveObject(0);
    Curve* second = cc->GetCurveObject(1);
    mark(*cc, 1, 0.75f);
    cc->SetCurveCount(4, FALSE);
    REQUIRE(cc->GetCurveCount() == 4);
    CHECK(cc->GetCurveObject(0) == first);
    CHECK(cc->GetCurveObject(1) == second);
    CHECK(markOf(*cc, 1) == 0.75f);

    RefKeeper watchSecond(second);
    cc->SetCurveCount(1, FALSE);
    REQUIRE(cc->GetCurveCount() == 1);
    CHECK(cc->NumRefs() == 1);
    CHECK(cc->GetCurveObject(0) == first);
    CHECK(cc->GetCurve(1) == nullptr);
    CHECK(second->NumDependents() == 1); // only the watcher: the control let go
}

TEST_CASE_FIXTURE(CoreFixture, "a negative count empties the control") {
    ControlKeeper cc;
    cc->SetCurveCount(3, FALSE);
    cc->SetCurveCount(-1, FALSE);
    CHECK(cc->GetCurveCount() == 0);
    CHECK(cc->NumRefs() == 0);
    CHECK(cc->GetCurve(0) == nullptr);
    CHECK(std::strcmp(cc->CurveButtonText(0), "") == 0);
    cc->SetCurveCount(-7, TRUE); // already empty
    CHECK(cc->GetCurveCount() == 0);
}

TEST_CASE_FIXTURE(CoreFixture, "SetCurveCount to the current count changes no curve") {
    ControlKeeper cc;
    FakeClient client;
    cc->RegisterClientObject(&client);
    cc->SetCurveCount(3, FALSE);
    mark(*cc, 2, 0.5f);
    cc->SetShownCurves(bits(3, {0, 2}));
    Curve* before[3] = {cc->GetCurveObject(0), cc->GetCurveObject(1), cc->GetCurveObject(2)};
    client.calls.clear();

    cc->SetCurveCount(3, FALSE);
    REQUIRE(cc->GetCurveCount() == 3);
    for (int i = 0; i < 3; ++i)
        CHECK(cc->GetCurveObject(i) == before[i]);
    CHECK(markOf(*cc, 2) == 0.5f);
    CHECK(client.calls.empty());
    BitArray shown = cc->GetShownCurves();
    CHECK(shown[0] == 1);
    CHECK(shown[1] == 0);
    CHECK(shown[2] == 1);
}

TEST_CASE_FIXTURE(CoreFixture, "SetCurveCount tells the client of each new curve, in order, "
                               "once all exist") {
    ControlKeeper cc;
    FakeClient client;
    cc->RegisterClientObject(&client);
    CHECK(client.NumDependents() == 0); // a registration is no reference
    CHECK(cc->Client() == static_cast<ICurveCtlClient*>(&client));

    std::vector<int> countsSeen;
    client.onNew = [&](int i, ICurveCtl* control) {
        countsSeen.push_back(control->GetCurveCount());
        CHECK(control->GetCurve(i) != nullptr);
    };
    cc->SetCurveCount(3, FALSE);
    CHECK(client.calls == std::vector<std::string>{"new 0", "new 1", "new 2"});
    CHECK(client.lastControl == &*cc);
    CHECK(countsSeen == std::vector<int>{3, 3, 3});

    client.calls.clear();
    cc->SetCurveCount(5, FALSE);
    CHECK(client.calls == std::vector<std::string>{"new 3", "new 4"});

    client.calls.clear();
    cc->SetCurveCount(2, FALSE); // shrinking makes no calls
    CHECK(client.calls.empty());
}

TEST_CASE_FIXTURE(CoreFixture, "a client may shape each new curve from NewCurveCreated") {
    ControlKeeper cc;
    FakeClient client;
    client.onNew = [](int i, ICurveCtl* control) {
        ICurve* c = control->GetCurve(i);
        Interval valid = FOREVER;
        CurveKnot end = c->GetKnot(0, 1, valid);
        end.pos.y = 1.0f;
        c->SetKnot(0, 1, end, FALSE, FALSE);
    };
    cc->RegisterClientObject(&client);
    cc->SetCurveCount(2, FALSE);
    CHECK(knotAt(cc->GetCurve(0), 1).pos == Point2(1.0f, 1.0f));
    CHECK(knotAt(cc->GetCurve(1), 1).pos == Point2(1.0f, 1.0f));
}

TEST_CASE_FIXTURE(CoreFixture, "button texts and images come from the client on request") {
    ControlKeeper cc;
    FakeClient client;
    client.texts = {"Red", "", "Blue"}; // no text for curve 1: it keeps the default
    HIMAGELIST images = reinterpret_cast<HIMAGELIST>(std::uintptr_t(0x77));
    client.images = images;
    cc->RegisterClientObject(&client);
    cc->SetCurveCount(3, FALSE);
    client.calls.clear();

    cc->RefreshCurveButtonTexts();
    CHECK(client.calls == std::vector<std::string>{"images", "text 0", "text 1", "text 2"});
    CHECK(std::strcmp(cc->CurveButtonText(0), "Red") == 0);
    CHECK(std::strcmp(cc->CurveButtonText(1), "Visibility On/Off Toggle") == 0);
    CHECK(std::strcmp(cc->CurveButtonText(2), "Blue") == 0);
    CHECK(cc->ButtonImages() == images);

    // Without a client nothing changes.
    cc->RegisterClientObject(nullptr);
    cc->RefreshCurveButtonTexts();
    CHECK(std::strcmp(cc->CurveButtonText(0), "Red") == 0);
}

TEST_CASE_FIXTURE(CoreFixture, "a client object without the callback interface is no client") {
    ControlKeeper cc;
    RefKeeper other(new CurveControl); // answers no client interface id
    cc->RegisterClientObject(other.get<CurveControl>());
    CHECK(cc->Client() == nullptr);
    cc->SetCurveCount(2, FALSE); // no callback to call: still grows
    CHECK(cc->GetCurveCount() == 2);
    cc->ResetSelectedCurves();
}

TEST_CASE_FIXTURE(CoreFixture, "ResetSelectedCurves resets the displayed curves as one step") {
    ControlKeeper cc;
    FakeClient client;
    cc->RegisterClientObject(&client);
    cc->SetCurveCount(3, FALSE);
    for (int i = 0; i < 3; ++i)
        mark(*cc, i, 0.1f * float(i + 1));
    cc->SetShownCurves(bits(3, {0, 2}));
    client.onReset = [](int i, ICurveCtl* control) {
        control->GetCurve(i)->SetPointCount(2); // undoable: the control's hold is open
    };
    client.calls.clear();

    cc->ResetSelectedCurves();
    CHECK(client.calls == std::vector<std::string>{"reset 0", "reset 2"});
    CHECK(cc->GetCurve(0)->PointCount() == 2);
    CHECK(cc->GetCurve(1)->PointCount() == 3);
    CHECK(cc->GetCurve(2)->PointCount() == 2);
    REQUIRE(theHold.NumUndo() == 1);
    CHECK(theHold.UndoName(0) == "Reset Curve");
    CHECK_FALSE(theHold.Holding());

    REQUIRE(theHold.Undo());
    CHECK(markOf(*cc, 0) == doctest::Approx(0.1f));
    CHECK(markOf(*cc, 2) == doctest::Approx(0.3f));
}

TEST_CASE_FIXTURE(CoreFixture, "ResetSelectedCurves with nothing to reset adds no step") {
    ControlKeeper cc;
    FakeClient client;
    cc->RegisterClientObject(&client);
    SUBCASE("no curves") {
        cc->ResetSelectedCurves();
        CHECK(client.calls.empty());
    }
    SUBCASE("no curve displayed") {
        cc->SetCurveCount(2, FALSE);
        client.calls.clear();
        cc->ResetSelectedCurves();
        CHECK(client.calls.empty());
    }
    CHECK(theHold.NumUndo() == 0);
    CHECK_FALSE(theHold.Holding());
}

// ---------------------------------------------------------------------------------------
// Display bits

TEST_CASE_FIXTURE(CoreFixture, "SetShownCurves grows a short array keeping its bits") {
    ControlKeeper cc;
    cc->SetCurveCount(4, FALSE);
    cc->SetShownCurves(bits(2, {1}));
    BitArray shown = cc->GetShownCurves();
    CHECK(shown.GetSize() == 4);
    CHECK(shown[1] == 1);
    CHECK(shown.NumberSet() == 1);

    cc->SetShownCurves(bits(40, {0, 39})); // longer arrays are kept as they are
    CHECK(cc->GetShownCurves().GetSize() == 40);
    CHECK(cc->GetShownCurves()[39] == 1);

    cc->ToggleCurveDisplay(1);
    CHECK(cc->GetShownCurves()[1] == 1);
    cc->ToggleCurveDisplay(0);
    CHECK(cc->GetShownCurves()[0] == 0);
}

// ---------------------------------------------------------------------------------------
// Undo of the curve set

namespace {
/// Three curves told apart by their middle points, with button texts A, B, C, all shown.
void threeCurves(CurveControl& cc, FakeClient& client) {
    client.texts = {"A", "B", "C"};
    cc.RegisterClientObject(&client);
    cc.SetCurveCount(3, FALSE);
    cc.RefreshCurveButtonTexts();
    for (int i = 0; i < 3; ++i)
        mark(cc, i, 0.25f * float(i + 1));
    cc.SetShownCurves(bits(3, {0, 1, 2}));
}

void checkThreeCurves(CurveControl& cc) {
    REQUIRE(cc.GetCurveCount() == 3);
    CHECK(cc.NumRefs() == 3);
    const char* texts[] = {"A", "B", "C"};
    for (int i = 0; i < 3; ++i) {
        CHECK(markOf(cc, i) == 0.25f * float(i + 1));
        CHECK(std::strcmp(cc.CurveButtonText(i), texts[i]) == 0);
        CHECK(cc.GetCurveObject(i)->Owner() == &cc);
    }
    BitArray shown = cc.GetShownCurves();
    CHECK(shown.GetSize() == 3);
    CHECK(shown.NumberSet() == 3);
}
} // namespace

TEST_CASE_FIXTURE(CoreFixture, "undo and redo of a shrinking SetCurveCount") {
    ControlKeeper cc;
    FakeClient client;
    threeCurves(*cc, client);
    Curve* kept = cc->GetCurveObject(0);

    theHold.Begin();
    cc->SetCurveCount(1, TRUE);
    theHold.Accept("shrink");
    REQUIRE(theHold.NumUndo() == 1);
    REQUIRE(cc->GetCurveCount() == 1);

    REQUIRE(theHold.Undo());
    checkThreeCurves(*cc);

    REQUIRE(theHold.Redo());
    REQUIRE(cc->GetCurveCount() == 1);
    CHECK(cc->GetCurveObject(0) == kept); // redo brings back the control's own curve
    CHECK(markOf(*cc, 0) == 0.25f);

    REQUIRE(theHold.Undo());
    checkThreeCurves(*cc);
}

TEST_CASE_FIXTURE(CoreFixture, "undo and redo of a growing SetCurveCount") {
    ControlKeeper cc;
    FakeClient client;
    threeCurves(*cc, client);
    theHold.Begin();
    cc->SetCurveCount(5, TRUE);
    theHold.Accept("grow");
    REQUIRE(cc->GetCurveCount() == 5);
    CHECK(std::strcmp(cc->CurveButtonText(4), "Visibility On/Off Toggle") == 0);

    REQUIRE(theHold.Undo());
    checkThreeCurves(*cc);
    REQUIRE(theHold.Redo());
    REQUIRE(cc->GetCurveCount() == 5);
    CHECK(markOf(*cc, 2) == 0.75f);
    CHECK(cc->GetCurve(4)->PointCount() == 2);
}

TEST_CASE_FIXTURE(CoreFixture, "SetCurveCount records nothing when not undoable or not "
                               "holding") {
    ControlKeeper cc;
    theHold.Begin();
    cc->SetCurveCount(2, FALSE);
    theHold.Accept("not undoable");
    CHECK(theHold.NumUndo() == 0);
    cc->SetCurveCount(4, TRUE); // no hold open
    CHECK(cc->GetCurveCount() == 4);
    CHECK(theHold.NumUndo() == 0);
}

TEST_CASE_FIXTURE(CoreFixture, "undo and redo of DeleteCurve") {
    ControlKeeper cc;
    FakeClient client;
    threeCurves(*cc, client);
    Curve* first = cc->GetCurveObject(0);
    Curve* last = cc->GetCurveObject(2);

    theHold.Begin();
    cc->DeleteCurve(1);
    theHold.Accept("delete");
    REQUIRE(cc->GetCurveCount() == 2);
    CHECK(cc->GetCurveObject(0) == first);
    CHECK(cc->GetCurveObject(1) == last);
    CHECK(std::strcmp(cc->CurveButtonText(0), "A") == 0);
    CHECK(std::strcmp(cc->CurveButtonText(1), "C") == 0);
    // The display bits are cut one bit short; they do not move down with the curves.
    CHECK(cc->GetShownCurves().GetSize() == 2);

    REQUIRE(theHold.Undo());
    checkThreeCurves(*cc);

    REQUIRE(theHold.Redo());
    REQUIRE(cc->GetCurveCount() == 2);
    CHECK(cc->GetCurveObject(0) == first);
    CHECK(cc->GetCurveObject(1) == last);
    CHECK(std::strcmp(cc->CurveButtonText(1), "C") == 0);
}

TEST_CASE_FIXTURE(CoreFixture, "DeleteCurve of an index out of range changes nothing") {
    ControlKeeper cc;
    cc->SetCurveCount(2, FALSE);
    theHold.Begin();
    cc->DeleteCurve(2);
    cc->DeleteCurve(-1);
    cc->DeleteCurve(1000);
    theHold.Accept("nothing");
    CHECK(cc->GetCurveCount() == 2);
    CHECK(theHold.NumUndo() == 0);
    cc->DeleteCurve(0); // outside a hold: done, not recorded
    CHECK(cc->GetCurveCount() == 1);
    CHECK(theHold.NumUndo() == 0);
}

// ---------------------------------------------------------------------------------------
// Validity

TEST_CASE_FIXTURE(CoreFixture, "GetValidity and Update follow the animated points of every "
                               "curve") {
    ControlKeeper cc;
    cc->SetCurveCount(3, FALSE);
    mark(*cc, 0, 0.5f);
    mark(*cc, 1, 0.5f);
    animate(*cc->GetCurveObject(0), 1, {{0, Point2(0.5f, 0.0f)}, {100, Point2(0.5f, 1.0f)}});
    CHECK(cc->GetValidity(-50) == Interval(TIME_NegInfinity, 0));
    CHECK(cc->GetValidity(50) == Interval(50, 50));
    CHECK(cc->GetValidity(150) == Interval(100, TIME_PosInfinity));

    animate(*cc->GetCurveObject(1), 1, {{0, Point2(0.5f, 0.0f)}, {200, Point2(0.5f, 1.0f)}});
    CHECK(cc->GetValidity(150) == Interval(150, 150)); // the second curve still moves
    CHECK(cc->GetValidity(250) == Interval(200, TIME_PosInfinity));

    Interval valid(120, 300);
    cc->Update(250, valid);
    CHECK(valid == Interval(200, 300));
    valid = FOREVER;
    cc->Update(-10, valid);
    CHECK(valid == Interval(TIME_NegInfinity, 0));
    valid = Interval(500, 600);
    cc->Update(50, valid);
    CHECK(valid.Empty());
}

// ---------------------------------------------------------------------------------------
// Reference face, clone and CopyFrom

TEST_CASE_FIXTURE(CoreFixture, "the control's references and sub-animatables are its curves") {
    ControlKeeper cc;
    cc->SetCurveCount(10, FALSE);
    CHECK(cc->NumRefs() == 10);
    CHECK(cc->NumSubs() == 10);
    CHECK(cc->GetReference(-1) == nullptr);
    CHECK(cc->GetReference(10) == nullptr);
    CHECK(cc->SubAnimName(0) == "Curve 1");
    CHECK(cc->SubAnimName(9) == "Curve 10");
    for (int i = 0; i < 10; ++i)
        CHECK(cc->GetCurveObject(i)->NumDependents() == 1);

    // Replacing a reference makes the control the new curve's owner.
    Curve* replacement = new Curve(nullptr, 0);
    REQUIRE(cc->ReplaceReference(3, replacement) == REF_SUCCEED);
    CHECK(cc->GetCurveObject(3) == replacement);
    CHECK(replacement->Owner() == &*cc);
}

namespace {
/// Sets every field that CopyFrom copies away from its default.
void configure(CurveControl& cc) {
    cc.SetCurveCount(2, FALSE);
    mark(cc, 1, 0.625f);
    cc.SetShownCurves(bits(2, {1}));
    cc.SetZoomFlyOff(2);
    cc.SetInstanceIndex(4);
    cc.SetZoomState(1.5f, 2.5f);
    cc.SetScrollState(30, 40);
    WINDOWPLACEMENT wp{};
    wp.rcNormalPosition.left = 11;
    wp.rcNormalPosition.bottom = 222;
    cc.StorePlacement(wp);
    cc.SetXRange(-1.0f, 2.0f, FALSE);
    cc.SetYRange(-3.0f, 4.0f);
    cc.SetTitle("Copied");
    cc.SetControlFlags(0x1234u);
    cc.SetToolMode(5);
}
} // namespace

TEST_CASE_FIXTURE(CoreFixture, "CopyFrom copies the settings and independent copies of the "
                               "curves") {
    ControlKeeper src, dst;
    FakeClient client;
    client.texts = {"one", "two"};
    configure(*src);
    src->RegisterClientObject(&client);
    src->RefreshCurveButtonTexts();
    src->SetNotifyWindow(reinterpret_cast<HWND>(std::uintptr_t(0x99)));
    src->SetMarkerX(0.75f);
    animate(*src->GetCurveObject(1), 1, {{0, Point2(0.5f, 0.625f)}});

    dst->CopyFrom(*src);
    REQUIRE(dst->GetCurveCount() == 2);
    BitArray shown = dst->GetShownCurves();
    CHECK(shown.GetSize() == 2);
    CHECK(shown[1] == 1);
    CHECK(shown[0] == 0);
    CHECK(dst->ZoomFlyOff() == 2);
    CHECK(dst->InstanceIndex() == 4);
    float h = 0.0f, v = 0.0f;
    CHECK(dst->GetZoomState(&h, &v) == TRUE);
    CHECK(h == 1.5f);
    CHECK(v == 2.5f);
    int sh = 0, sv = 0;
    CHECK(dst->GetScrollState(&sh, &sv) == TRUE);
    CHECK(sh == 30);
    CHECK(sv == 40);
    WINDOWPLACEMENT wp{};
    REQUIRE(dst->SavedPlacement(wp));
    CHECK(wp.rcNormalPosition.left == 11);
    CHECK(wp.rcNormalPosition.bottom == 222);
    CHECK(dst->GetXRange() == Point2(-1.0f, 2.0f));
    CHECK(dst->GetYRange() == Point2(-3.0f, 4.0f));
    CHECK(std::strcmp(dst->Title(), "Copied") == 0);
    CHECK(dst->GetControlFlags() == 0x1234u);
    CHECK(dst->GetToolMode() == 5);
    CHECK(std::strcmp(dst->CurveButtonText(0), "one") == 0);
    CHECK(std::strcmp(dst->CurveButtonText(1), "two") == 0);
    CHECK(dst->IsEditorOpen() == FALSE);
    CHECK(dst->GetEditorWindow() == nullptr);
    // The client wiring is not part of the copy.
    CHECK(dst->NotifyWindow() == nullptr);
    CHECK(dst->Client() == nullptr);

    // The curves are copies owned by the new control, controllers cloned.
    for (int i = 0; i < 2; ++i) {
        CHECK(dst->GetCurveObject(i) != src->GetCurveObject(i));
        CHECK(dst->GetCurveObject(i)->Owner() == &*dst);
    }
    CHECK(markOf(*dst, 1) == 0.625f);
    REQUIRE(dst->GetCurveObject(1)->Controller(1) != nullptr);
    CHECK(dst->GetCurveObject(1)->Controller(1) != src->GetCurveObject(1)->Controller(1));
    mark(*dst, 1, 0.125f);
    CHECK(markOf(*src, 1) == 0.625f);
}

TEST_CASE_FIXTURE(CoreFixture, "CopyFrom a control with fewer curves shrinks the copy") {
    ControlKeeper src, dst;
    src->SetCurveCount(1, FALSE);
    dst->SetCurveCount(4, FALSE);
    dst->CopyFrom(*src);
    CHECK(dst->GetCurveCount() == 1);
    CHECK(dst->NumRefs() == 1);
}

TEST_CASE_FIXTURE(CoreFixture, "Clone makes a control with its own curves") {
    ControlKeeper src;
    configure(*src);
    RemapDir& remap = NewRemapDir();
    auto* clone = static_cast<CurveControl*>(remap.CloneRef(src.keep.get<CurveControl>()));
    remap.DeleteThis();
    REQUIRE(clone != nullptr);
    RefKeeper keepClone(clone);
    CHECK(clone != &*src);
    REQUIRE(clone->GetCurveCount() == 2);
    CHECK(clone->GetCurveObject(1) != src->GetCurveObject(1));
    CHECK(markOf(*clone, 1) == 0.625f);
    CHECK(std::strcmp(clone->Title(), "Copied") == 0);
}
