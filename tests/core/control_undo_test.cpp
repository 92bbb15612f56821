// The control's undo records: the curve-set record, the display-mode record, the
// aspect-lock pair around refits and the drag-mark handler of the editing modes.
#include "whole_curve_support.h"

#include "control/control_commands.h"

using namespace wholetest;

namespace {

/// Shows exactly the curves in `bits` (the editor's copy too, when one is attached).
void showOnly(CurveControl& c, std::initializer_list<int> bits) {
    BitArray b(c.GetCurveCount());
    for (int i : bits)
        b.Set(i);
    c.SetShownCurves(b);
}

Control* animatedWithWorkFlag(Curve& c, int i) {
    Control* ctrl = Animate(c, i);
    ctrl->SetAFlag(A_WORK1);
    return ctrl;
}

} // namespace

// ---------------------------------------------------------------------------------------
// Aspect lock pair

TEST_CASE("the aspect-lock start record rescales on undo only, the end record on redo only") {
    CleanHold hold;
    TestControl ctl(1);
    FakeEditor editor(*ctl);
    theHold.Begin();
    theHold.Put(new AspectLockStartRestore(ctl.get()));
    theHold.Put(new AspectLockEndRestore(ctl.get()));
    theHold.Accept("pair");
    CHECK(editor.calls.empty()); // putting them does nothing

    REQUIRE(theHold.Undo());
    CHECK(editor.calls == std::vector<std::string>{"AspectRescale(0)", "InvalidateGraph"});
    editor.calls.clear();
    REQUIRE(theHold.Redo());
    CHECK(editor.calls == std::vector<std::string>{"AspectRescale(0)", "InvalidateGraph"});
}

TEST_CASE("a rescale that applied invalidates the ruler as well as the graph") {
    CleanHold hold;
    TestControl ctl(1);
    FakeEditor editor(*ctl);
    editor.aspectLocked = true;
    AspectLockStartRestore start(ctl.get(), 1);
    start.Restore(1);
    CHECK(editor.calls ==
          std::vector<std::string>{"AspectRescale(1)", "InvalidateRuler", "InvalidateGraph"});
    editor.calls.clear();
    start.Redo();
    AspectLockEndRestore end(ctl.get());
    end.Restore(1);
    CHECK(editor.calls.empty());
    end.Redo();
    CHECK(editor.calls ==
          std::vector<std::string>{"AspectRescale(0)", "InvalidateRuler", "InvalidateGraph"});
}

TEST_CASE("the aspect-lock records skip the window work without an editor") {
    CleanHold hold;
    TestControl ctl(1);
    AspectLockStartRestore start(ctl.get());
    AspectLockEndRestore end(ctl.get());
    start.Restore(1);
    end.Redo();
    // The base's description and size: these records report nothing of their own.
    CHECK(start.Description() == "---");
    CHECK(end.Description() == "---");
    CHECK(start.Size() == 1);
}

// ---------------------------------------------------------------------------------------
// CurveAFlagHandler

TEST_CASE("the drag handler marks the displayed curves and clears marks and work flags at the "
          "end of the hold") {
    CleanHold hold;
    TestControl ctl(3);
    Control* shownCtrl = animatedWithWorkFlag(ctl.curve(0), 1);
    Control* hiddenCtrl = animatedWithWorkFlag(ctl.curve(1), 0);
    showOnly(*ctl, {0, 2});

    auto run = [&](bool accept) {
        theHold.Begin();
        theHold.Put(new CurveAFlagHandler(ctl.get()));
        CHECK(ctl.curve(0).DragMark());
        CHECK_FALSE(ctl.curve(1).DragMark());
        CHECK(ctl.curve(2).DragMark());
        if (accept)
            theHold.Accept("Move Points");
        else
            theHold.Cancel();
        for (int i = 0; i < 3; ++i)
            CHECK_FALSE(ctl.curve(i).DragMark());
        CHECK_FALSE(shownCtrl->TestAFlag(A_WORK1));
        CHECK(hiddenCtrl->TestAFlag(A_WORK1)); // not displayed: not the drag's
    };
    SUBCASE("accepted") { run(true); }
    SUBCASE("cancelled") { run(false); }
}

TEST_CASE("the drag handler reads the editor's display bits while the editor is open") {
    CleanHold hold;
    TestControl ctl(2);
    showOnly(*ctl, {0});
    FakeEditor editor(*ctl);
    editor.display = BitArray(2);
    editor.display.Set(1); // the editor's copy decides
    theHold.Begin();
    theHold.Put(new CurveAFlagHandler(ctl.get()));
    CHECK_FALSE(ctl.curve(0).DragMark());
    CHECK(ctl.curve(1).DragMark());
    theHold.Accept("Move Points");
    CHECK_FALSE(ctl.curve(1).DragMark());
}

TEST_CASE("a drag handler in a drag's super hold clears the marks once the drag ends") {
    CleanHold hold;
    TestControl ctl(1);
    showOnly(*ctl, {0});
    theHold.SuperBegin();
    theHold.Begin();
    theHold.Put(new CurveAFlagHandler(ctl.get()));
    theHold.Restore(); // each drag step starts from the press state
    CHECK(ctl.curve(0).DragMark());
    theHold.Accept("Move Points");
    theHold.SuperAccept("Move Points");
    CHECK_FALSE(ctl.curve(0).DragMark());
}

TEST_CASE("the drag handler's undo and redo do nothing; later drags keep their marks") {
    CleanHold hold;
    TestControl ctl(1);
    showOnly(*ctl, {0});
    theHold.Begin();
    auto* handler = new CurveAFlagHandler(ctl.get());
    CHECK(handler->Description() == "Deform CurveAFlagHandler");
    theHold.Put(handler);
    theHold.Accept("Move Points");
    REQUIRE(theHold.NumUndo() == 1);
    ctl.curve(0).SetDragMark(true); // a new drag has begun
    REQUIRE(theHold.Undo());
    CHECK(ctl.curve(0).DragMark());
    REQUIRE(theHold.Redo());
    CHECK(ctl.curve(0).DragMark());
    theHold.Reset(); // the old record goes; the new drag's mark stays
    CHECK(ctl.curve(0).DragMark());
    ctl.curve(0).SetDragMark(false);
}

TEST_CASE("a drag handler put without a hold leaves no mark behind") {
    CleanHold hold;
    TestControl ctl(2);
    showOnly(*ctl, {0, 1});
    theHold.Put(new CurveAFlagHandler(ctl.get())); // not holding: discarded at once
    CHECK_FALSE(ctl.curve(0).DragMark());
    CHECK_FALSE(ctl.curve(1).DragMark());
}

// ---------------------------------------------------------------------------------------
// DeleteCurveRestore

TEST_CASE("undo of DeleteCurve with the editor open brings back the curve, its text, its "
          "button and the display mode") {
    CleanHold hold;
    TestControl ctl(3);
    auto* client = new testsupport::FakeClient;
    client->texts = {"Red", "Green", "Blue"};
    ctl->RegisterClientObject(client);
    ctl->RefreshCurveButtonTexts();
    SetPoints(ctl.curve(1), {Knot(0.0f, 0.25f), Knot(0.5f, 0.75f), Knot(1.0f, 0.5f)});
    showOnly(*ctl, {1, 2});
    FakeEditor editor(*ctl);
    const ControlState before = Snapshot(*ctl);

    theHold.Begin();
    ctl->DeleteCurve(1);
    theHold.Accept("Delete curve");
    REQUIRE(ctl->GetCurveCount() == 2);
    CHECK(std::string(ctl->CurveButtonText(1)) == "Blue");
    const ControlState after = Snapshot(*ctl);

    editor.calls.clear();
    REQUIRE(theHold.Undo());
    REQUIRE(ctl->GetCurveCount() == 3);
    CHECK(std::string(ctl->CurveButtonText(0)) == "Red");
    CHECK(std::string(ctl->CurveButtonText(1)) == "Green");
    CHECK(std::string(ctl->CurveButtonText(2)) == "Blue");
    CHECK(editor.Count("RebuildCurveButtons") == 1);
    CHECK(ctl->GetShownCurves() == before.shown);
    CHECK(editor.display[1] == 1);
    CHECK(editor.display[2] == 1);
    CHECK(editor.display[0] == 0);
    const ControlState undone = Snapshot(*ctl);
    REQUIRE(undone.curves.size() == 3);
    CHECK(undone.curves[1].knots.size() == 3);
    CHECK(std::memcmp(undone.curves[1].knots.data(), before.curves[1].knots.data(),
                      3 * sizeof(CurveKnot)) == 0);
    for (int i = 0; i < 3; ++i)
        CHECK(ctl.curve(i).Owner() == ctl.get());

    REQUIRE(theHold.Redo());
    CHECK(SameState(Snapshot(*ctl), after));
    CHECK(std::string(ctl->CurveButtonText(1)) == "Blue");
    client->MaybeAutoDelete();
}

TEST_CASE("undo walks back across a curve deletion to the edits before it") {
    CleanHold hold;
    TestControl ctl(3);
    const ControlState start = Snapshot(*ctl);
    // An edit of curve 0, then the deletion of curve 1, as two undo steps.
    theHold.Begin();
    ctl.curve(0).SetKnot(0, 1, Knot(1.0f, 0.5f, KNOT_ENDPOINT | KNOT_TYPE_CORNER), FALSE, FALSE);
    theHold.Accept("edit");
    theHold.Begin();
    ctl->DeleteCurve(1);
    theHold.Accept("delete");

    REQUIRE(theHold.Undo());
    REQUIRE(theHold.Undo());
    REQUIRE(ctl->GetCurveCount() == 3);
    CHECK(ctl.curve(0).Knots()[1].pos == start.curves[0].knots[1].pos);
    CHECK(ctl->GetCurveObject(0) == start.curves[0].object);
    CHECK(ctl->GetCurveObject(2) == start.curves[2].object);

    REQUIRE(theHold.Redo());
    REQUIRE(theHold.Redo());
    REQUIRE(ctl->GetCurveCount() == 2);
    CHECK(ctl.curve(0).Knots()[1].pos == Point2(1.0f, 0.5f));
}

TEST_CASE("undo walks back across a shrinking SetCurveCount to the edits before it") {
    CleanHold hold;
    TestControl ctl(3);
    const ControlState start = Snapshot(*ctl);
    theHold.Begin();
    ctl.curve(1).SetKnot(0, 0, Knot(0.0f, 0.75f, KNOT_ENDPOINT | KNOT_TYPE_CORNER), FALSE, FALSE);
    theHold.Accept("edit");
    theHold.Begin();
    ctl->SetCurveCount(2);
    theHold.Accept("count");
    REQUIRE(theHold.Undo());
    REQUIRE(theHold.Undo());
    REQUIRE(ctl->GetCurveCount() == 3);
    const ControlState undone = Snapshot(*ctl);
    CHECK(undone.curves[1].object == start.curves[1].object);
    CHECK(std::memcmp(undone.curves[1].knots.data(), start.curves[1].knots.data(),
                      start.curves[1].knots.size() * sizeof(CurveKnot)) == 0);
    CHECK(undone.curves[2].object == start.curves[2].object); // the removed curve itself
}

TEST_CASE("undo walks back across DeleteCurve to the edits of the deleted curve") {
    CleanHold hold;
    TestControl ctl(3);
    const ControlState start = Snapshot(*ctl);
    theHold.Begin();
    ctl.curve(2).SetKnot(0, 1, Knot(1.0f, 0.5f, KNOT_ENDPOINT | KNOT_TYPE_CORNER), FALSE, FALSE);
    theHold.Accept("edit");
    theHold.Begin();
    ctl->DeleteCurve(2);
    theHold.Accept("delete");
    REQUIRE(ctl->GetCurveCount() == 2);
    REQUIRE(theHold.Undo());
    REQUIRE(ctl->GetCurveCount() == 3);
    CHECK(ctl->GetCurve(2) == start.curves[2].object);
    REQUIRE(theHold.Undo());
    const ControlState undone = Snapshot(*ctl);
    CHECK(std::memcmp(undone.curves[2].knots.data(), start.curves[2].knots.data(),
                      start.curves[2].knots.size() * sizeof(CurveKnot)) == 0);
    REQUIRE(theHold.Redo());
    REQUIRE(theHold.Redo());
    CHECK(ctl->GetCurveCount() == 2);
}

TEST_CASE("the curve-set record describes itself") {
    CleanHold hold;
    TestControl ctl(2);
    TestControl before(3);
    DeleteCurveRestore rec(ctl.get(), DeleteCurveRestore::Capture(*before));
    CHECK(rec.Description() == "Delete curve restore");
}

// ---------------------------------------------------------------------------------------
// DeformDispModeRestore

TEST_CASE("undo then redo of a display toggle leaves exactly one undo step per toggle") {
    CleanHold hold;
    TestControl ctl(3);
    showOnly(*ctl, {0, 1, 2});
    FakeEditor editor(*ctl);
    for (int curve : {0, 2}) {
        theHold.Begin();
        ctl->ToggleCurveDisplay(curve);
        theHold.Accept("Display Curve Toggle");
    }
    CHECK(theHold.NumUndo() == 2);
    CHECK(editor.display[0] == 0);
    CHECK(editor.display[2] == 0);

    editor.calls.clear();
    REQUIRE(theHold.Undo());
    CHECK(ctl->GetShownCurves()[2] == 1);
    CHECK(editor.display[2] == 1);
    CHECK(editor.Count("RedrawGraph") >= 1);
    REQUIRE(theHold.Undo());
    CHECK(ctl->GetShownCurves()[0] == 1);
    CHECK(theHold.NumUndo() == 0);
    CHECK(theHold.NumRedo() == 2);
    REQUIRE(theHold.Redo());
    REQUIRE(theHold.Redo());
    CHECK(theHold.NumUndo() == 2);
    CHECK(theHold.NumRedo() == 0);
    CHECK(ctl->GetShownCurves()[0] == 0);
    CHECK(ctl->GetShownCurves()[2] == 0);
    CHECK(editor.display[1] == 1);
}

TEST_CASE("the display-mode record describes itself") {
    CleanHold hold;
    TestControl ctl(1);
    DeformDispModeRestore rec(ctl.get(), BitArray(1), BitArray(1));
    CHECK(rec.Description() == "Deform curve dispmode restore");
}
