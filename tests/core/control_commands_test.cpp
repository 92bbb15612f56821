// The editor's whole-curve commands: mirror, refit, delete selected points, display
// toggle, reset, generate path and the change notice, each as one undo step.
#include "whole_curve_support.h"

#include "control/control_commands.h"
#include "host/core_interface.h"
#include "host/spline_shape.h"

using namespace wholetest;

namespace {

void showOnly(CurveControl& c, std::initializer_list<int> bits) {
    BitArray b(c.GetCurveCount());
    for (int i : bits)
        b.Set(i);
    c.SetShownCurves(b);
}

/// Distinct, asymmetric points for the first three curves (as many as the control has).
void threeCurves(TestControl& ctl) {
    const std::vector<CurveKnot> points[3] = {
        {Knot(0.0f, 0.0f, KNOT_ENDPOINT | KNOT_TYPE_CORNER),
         Knot(0.25f, 0.5f, KNOT_TYPE_BEZIER_SMOOTH, Point2(-0.125f, 0.0f), Point2(0.125f, 0.25f)),
         Knot(1.0f, 1.0f, KNOT_ENDPOINT | KNOT_TYPE_CORNER)},
        {Knot(0.0f, 0.25f, KNOT_ENDPOINT | KNOT_TYPE_CORNER),
         Knot(1.0f, 0.75f, KNOT_ENDPOINT | KNOT_TYPE_CORNER)},
        {Knot(0.0f, 1.0f, KNOT_ENDPOINT | KNOT_TYPE_CORNER),
         Knot(0.5f, 0.0f, KNOT_SELECTED | KNOT_TYPE_CORNER), Knot(0.75f, 0.5f),
         Knot(1.0f, 0.5f, KNOT_ENDPOINT | KNOT_TYPE_CORNER)}};
    for (int i = 0; i < 3 && i < ctl->GetCurveCount(); ++i)
        SetPoints(ctl.curve(i), points[i]);
}

bool sameCurve(const CurveState& a, const CurveState& b) {
    return a.knots.size() == b.knots.size() &&
           (a.knots.empty() ||
            std::memcmp(a.knots.data(), b.knots.data(), a.knots.size() * sizeof(CurveKnot)) == 0);
}

/// Rounds of the property tests. Under Wine every warning is a real message box that
/// takes about two seconds to come up and be answered; the dialog itself is checked
/// above, so the Windows runs take a smaller sample of the same sequence.
#ifdef _WIN32
constexpr int kPropertyRounds = 10;
#else
constexpr int kPropertyRounds = 150;
#endif

/// A scene stand-in: keeps a generated path by referencing it.
class PathKeeper : public ReferenceMaker {
public:
    ~PathKeeper() override { DeleteAllRefsFromMe(); }
    int NumRefs() override { return 1; }
    RefTargetHandle GetReference(int) override { return path_; }
    SplineShape* Path() const { return static_cast<SplineShape*>(path_); }

protected:
    void SetReference(int, RefTargetHandle t) override { path_ = t; }

private:
    RefTargetHandle path_ = nullptr;
};

} // namespace

// ---------------------------------------------------------------------------------------
// Mirror and refit

TEST_CASE("mirror of curves without animated points asks nothing") {
    CleanHold hold;
    TestControl ctl(3);
    threeCurves(ctl);
    showOnly(*ctl, {0, 1, 2});
    AnswerQuestions answers(false);
    CHECK(RunControlCommand(*ctl, CC_CMD_MIRROR_X));
    CHECK(answers.Last().asked == 0);
    CHECK(ctl.curve(1).Knots()[0].pos == Point2(0.0f, 0.75f)); // mirrored
    CHECK(theHold.UndoName(0) == "IDS_TH_MIRROR");
}

TEST_CASE("with curves 0 and 2 displayed and 1 hidden, mirror changes 0 and 2 as one step") {
    CleanHold hold;
    TestControl ctl(3);
    threeCurves(ctl);
    showOnly(*ctl, {0, 2});
    const ControlState before = Snapshot(*ctl);
    for (int id : {CC_CMD_MIRROR_X, CC_CMD_MIRROR_Y}) {
        CAPTURE(id);
        REQUIRE(RunControlCommand(*ctl, id));
        const ControlState after = Snapshot(*ctl);
        CHECK_FALSE(sameCurve(after.curves[0], before.curves[0]));
        CHECK(sameCurve(after.curves[1], before.curves[1]));
        CHECK_FALSE(sameCurve(after.curves[2], before.curves[2]));
        CHECK(theHold.NumUndo() == 1);
        CHECK(theHold.UndoName(0) == "IDS_TH_MIRROR");
        REQUIRE(theHold.Undo());
        CHECK(SameState(Snapshot(*ctl), before));
        REQUIRE(theHold.Redo());
        CHECK(SameState(Snapshot(*ctl), after));
        REQUIRE(theHold.Undo());
        theHold.Reset();
    }
}

TEST_CASE("the mirror directions: 403 reverses x, 404 reverses y") {
    CleanHold hold;
    TestControl ctl(1);
    showOnly(*ctl, {0});
    SetPoints(ctl.curve(0), {Knot(0.0f, 0.0f), Knot(0.25f, 1.0f), Knot(1.0f, 0.5f)});
    RunControlCommand(*ctl, CC_CMD_MIRROR_X);
    CHECK(ctl.curve(0).Knots()[1].pos == Point2(0.75f, 1.0f));
    RunControlCommand(*ctl, CC_CMD_MIRROR_Y);
    CHECK(ctl.curve(0).Knots()[1].pos == Point2(0.75f, 0.0f));
    CHECK(ctl.curve(0).Knots()[0].pos == Point2(0.0f, 0.5f));
}

TEST_CASE("an animated displayed curve makes mirror and refit ask first") {
    CleanHold hold;
    TestControl ctl(2);
    threeCurves(ctl);
    showOnly(*ctl, {0, 1});
    Control* ctrl = Animate(ctl.curve(1), 0);
    FakeEditor editor(*ctl);

    struct Case {
        int id;
        const char* text;
    };
    for (Case c : {Case{CC_CMD_MIRROR_X, "40329"}, Case{CC_CMD_MIRROR_Y, "40329"},
                   Case{CC_CMD_REFIT_CCW, "40318"}, Case{CC_CMD_REFIT_CW, "40318"}}) {
        CAPTURE(c.id);
        // No keeps everything.
        const ControlState before = Snapshot(*ctl);
        {
            AnswerQuestions answers(false);
            CHECK(RunControlCommand(*ctl, c.id));
            REQUIRE(answers.Last().asked == 1);
            CHECK(answers.Last().caption == "IDS_TH_FIT_CurveCtlWindow");
            CHECK(answers.Last().text == c.text);
            CHECK(answers.Last().owner == ctl->GetEditorWindow());
        }
        CHECK(SameState(Snapshot(*ctl), before));
        CHECK(ctl.curve(1).Controller(0) == ctrl);
        CHECK(theHold.NumUndo() == 0);
        CHECK(editor.calls.empty());
        // Yes goes on and drops the controllers; undo brings them back.
        {
            AnswerQuestions answers(true);
            CHECK(RunControlCommand(*ctl, c.id));
            CHECK(answers.Last().asked == 1);
        }
        CHECK_FALSE(ctl.curve(1).IsAnimated());
        CHECK(theHold.NumUndo() == 1);
        REQUIRE(theHold.Undo());
        CHECK(SameState(Snapshot(*ctl), before));
        theHold.Reset();
        editor.calls.clear();
    }
}

TEST_CASE("an animated curve that is hidden does not make the commands ask") {
    CleanHold hold;
    TestControl ctl(2);
    showOnly(*ctl, {0});
    Control* ctrl = Animate(ctl.curve(1), 0);
    AnswerQuestions answers(false);
    RunControlCommand(*ctl, CC_CMD_MIRROR_Y);
    RunControlCommand(*ctl, CC_CMD_REFIT_CW);
    CHECK(answers.Last().asked == 0);
    CHECK(ctl.curve(1).Controller(0) == ctrl); // hidden: untouched
    CHECK(theHold.NumUndo() == 2);
}

TEST_CASE("refit turns the displayed curves as one step between the aspect-lock records") {
    CleanHold hold;
    TestControl ctl(3);
    threeCurves(ctl);
    showOnly(*ctl, {1, 2});
    FakeEditor editor(*ctl);
    editor.aspectLocked = true;
    const ControlState before = Snapshot(*ctl);

    REQUIRE(RunControlCommand(*ctl, CC_CMD_REFIT_CCW));
    const ControlState after = Snapshot(*ctl);
    CHECK(sameCurve(after.curves[0], before.curves[0]));
    // Curve 1 runs (0, 0.25) -> (1, 0.75); turned counter-clockwise its first point has
    // the highest x, so it lands at exactly 100 and the other at exactly 0.
    CHECK(ctl.curve(1).Knots()[0].pos.x == 100.0f);
    CHECK(ctl.curve(1).Knots()[1].pos.x == 0.0f);
    CHECK(theHold.NumUndo() == 1);
    CHECK(theHold.UndoName(0) == "IDS_TH_ROTATE");
    // The command's own repaint: rescale when locked, then the ruler and the graph.
    CHECK(editor.calls ==
          std::vector<std::string>{"AspectRescale(0)", "RedrawRuler", "RedrawGraph"});

    editor.calls.clear();
    REQUIRE(theHold.Undo());
    CHECK(SameState(Snapshot(*ctl), before));
    // Undo runs the start record last: the rescale follows the restored curves.
    REQUIRE(editor.Count("AspectRescale(0)") == 1);
    CHECK(editor.calls.back() == "InvalidateGraph");

    editor.calls.clear();
    REQUIRE(theHold.Redo());
    CHECK(SameState(Snapshot(*ctl), after));
    CHECK(editor.Count("AspectRescale(0)") == 1);
    CHECK(editor.calls.back() == "InvalidateGraph");
}

TEST_CASE("outside the locked zoom mode a refit only repaints the graph") {
    CleanHold hold;
    TestControl ctl(1);
    showOnly(*ctl, {0});
    FakeEditor editor(*ctl);
    RunControlCommand(*ctl, CC_CMD_REFIT_CW);
    CHECK(editor.calls == std::vector<std::string>{"AspectRescale(0)", "RedrawGraph"});
    editor.calls.clear();
    RunControlCommand(*ctl, CC_CMD_MIRROR_X);
    CHECK(editor.calls == std::vector<std::string>{"RedrawGraph"});
}

TEST_CASE("mirror and refit tell the control's dependents, over all time and all parts") {
    CleanHold hold;
    TestControl ctl(1);
    showOnly(*ctl, {0});
    Watcher watcher(ctl.get());
    for (int id : {CC_CMD_MIRROR_X, CC_CMD_REFIT_CCW}) {
        CAPTURE(id);
        watcher.notices.clear();
        RunControlCommand(*ctl, id);
        REQUIRE_FALSE(watcher.notices.empty());
        const Watcher::Notice& last = watcher.notices.back();
        CHECK(last.interval == FOREVER);
        CHECK(last.part == PART_ALL);
        CHECK(last.message == REFMSG_CHANGE);
    }
}

TEST_CASE("commands on a control without curves open and close their hold") {
    CleanHold hold;
    TestControl ctl(0);
    for (int id : {CC_CMD_MIRROR_X, CC_CMD_MIRROR_Y}) {
        CAPTURE(id);
        CHECK(RunControlCommand(*ctl, id));
        CHECK_FALSE(theHold.Holding());
        CHECK(theHold.NumUndo() == 0); // an empty hold makes no step
    }
    // A refit still brackets its (no) curve changes with the aspect-lock records, so its
    // step exists and only rescales the view.
    FakeEditor editor(*ctl);
    CHECK(RunControlCommand(*ctl, CC_CMD_REFIT_CCW));
    CHECK_FALSE(theHold.Holding());
    REQUIRE(theHold.NumUndo() == 1);
    CHECK(theHold.UndoName(0) == "IDS_TH_ROTATE");
    editor.calls.clear();
    REQUIRE(theHold.Undo());
    CHECK(editor.calls == std::vector<std::string>{"AspectRescale(0)", "InvalidateGraph"});

    CHECK_FALSE(DeleteSelectedPoints(*ctl));
    CHECK_FALSE(theHold.Holding());
    CHECK(theHold.NumUndo() == 0);
}

TEST_CASE("with the editor closed, the shown-curves bits say which curves are displayed") {
    CleanHold hold;
    TestControl ctl(2);
    threeCurves(ctl);
    showOnly(*ctl, {1});
    const ControlState before = Snapshot(*ctl);
    RunControlCommand(*ctl, CC_CMD_MIRROR_Y);
    const ControlState after = Snapshot(*ctl);
    CHECK(sameCurve(after.curves[0], before.curves[0]));
    CHECK_FALSE(sameCurve(after.curves[1], before.curves[1]));
}

TEST_CASE("with the editor open, its copy of the display bits decides") {
    CleanHold hold;
    TestControl ctl(2);
    threeCurves(ctl);
    showOnly(*ctl, {1});
    FakeEditor editor(*ctl);
    editor.display = BitArray(2);
    editor.display.Set(0);
    const ControlState before = Snapshot(*ctl);
    RunControlCommand(*ctl, CC_CMD_MIRROR_Y);
    const ControlState after = Snapshot(*ctl);
    CHECK_FALSE(sameCurve(after.curves[0], before.curves[0]));
    CHECK(sameCurve(after.curves[1], before.curves[1]));
}

// ---------------------------------------------------------------------------------------
// Delete selected points

TEST_CASE("delete with nothing selected leaves no undo step") {
    CleanHold hold;
    TestControl ctl(2);
    showOnly(*ctl, {0, 1});
    FakeEditor editor(*ctl);
    Watcher watcher(ctl.get());
    CHECK(RunControlCommand(*ctl, CC_CMD_DELETE_POINTS));
    CHECK(theHold.NumUndo() == 0);
    CHECK_FALSE(theHold.Holding());
    CHECK(editor.calls.empty());
    CHECK(watcher.notices.empty());
}

TEST_CASE("delete removes the selected points of the displayed curves as one step") {
    CleanHold hold;
    TestControl ctl(3);
    threeCurves(ctl);
    testsupport::MessageRecorder recorder;
    ctl->SetNotifyWindow(recorder.window());
    // Curve 2 has point 1 selected; select point 1 of curve 0 as well, and of hidden 1 none.
    ctl.curve(0).Knots()[1].flags |= KNOT_SELECTED;
    ctl.curve(1).Knots()[0].flags |= KNOT_SELECTED; // an end point: never deleted
    ctl.curve(2).Knots()[2].flags |= KNOT_SELECTED;
    showOnly(*ctl, {0, 2});
    FakeEditor editor(*ctl);
    Watcher watcher(ctl.get());
    const ControlState before = Snapshot(*ctl);

    CHECK(DeleteSelectedPoints(*ctl));
    CHECK(ctl.curve(0).PointCount() == 2);
    CHECK(ctl.curve(1).PointCount() == 2);
    CHECK(ctl.curve(2).PointCount() == 2);
    CHECK(theHold.NumUndo() == 1);
    CHECK(theHold.UndoName(0) == "Delete Point");
    CHECK(recorder.Count(CURVE_MSG_POINT_DELETED) == 3);
    CHECK(editor.Count("RedrawGraph") == 1);
    REQUIRE_FALSE(watcher.notices.empty());
    CHECK(watcher.notices.back().part == PART_ALL);
    CHECK(watcher.notices.back().interval == FOREVER);

    const ControlState after = Snapshot(*ctl);
    REQUIRE(theHold.Undo());
    CHECK(SameState(Snapshot(*ctl), before));
    REQUIRE(theHold.Redo());
    CHECK(SameState(Snapshot(*ctl), after));
}

// ---------------------------------------------------------------------------------------
// Display toggle

TEST_CASE("a display toggle is one undo step, with the editor open or closed") {
    CleanHold hold;
    TestControl ctl(3);
    showOnly(*ctl, {0, 1, 2});
    SUBCASE("editor open") {
        FakeEditor editor(*ctl);
        CHECK(RunControlCommand(*ctl, CC_CMD_TOGGLE_CURVE_FIRST + 1));
        CHECK(editor.display[1] == 0);
    }
    SUBCASE("editor closed") { CHECK(RunControlCommand(*ctl, CC_CMD_TOGGLE_CURVE_FIRST + 1)); }
    CHECK(ctl->GetShownCurves()[1] == 0);
    CHECK(ctl->GetShownCurves()[0] == 1);
    CHECK(theHold.NumUndo() == 1);
    CHECK(theHold.UndoName(0) == "Display Curve Toggle");
    REQUIRE(theHold.Undo());
    CHECK(ctl->GetShownCurves()[1] == 1);
    REQUIRE(theHold.Redo());
    CHECK(ctl->GetShownCurves()[1] == 0);
    CHECK(theHold.NumUndo() == 1);
    CHECK(theHold.NumRedo() == 0);
}

TEST_CASE("a display toggle with flag 0x100000 set does nothing") {
    CleanHold hold;
    TestControl ctl(2);
    showOnly(*ctl, {0, 1});
    ctl->SetControlFlags(ctl->GetControlFlags() | CC_NOFILTERBUTTONS);
    const BitArray before = ctl->GetShownCurves();
    CHECK(RunControlCommand(*ctl, CC_CMD_TOGGLE_CURVE_FIRST));
    CHECK(RunControlCommand(*ctl, CC_CMD_TOGGLE_CURVE_LAST));
    CHECK(ctl->GetShownCurves() == before);
    CHECK(theHold.NumUndo() == 0);
}

TEST_CASE("the toggle ids run from 500 to 599") {
    CleanHold hold;
    TestControl ctl(1);
    showOnly(*ctl, {});
    CHECK(RunControlCommand(*ctl, 500));
    CHECK(ctl->GetShownCurves()[0] == 1);
    CHECK(RunControlCommand(*ctl, 599));
    CHECK(ctl->GetShownCurves()[99] == 1);
    CHECK_FALSE(RunControlCommand(*ctl, 600));
    CHECK_FALSE(RunControlCommand(*ctl, 499));
}

// ---------------------------------------------------------------------------------------
// Reset, change notice, unknown ids

TEST_CASE("reset asks the client to reset each displayed curve, as one step") {
    CleanHold hold;
    TestControl ctl(3);
    threeCurves(ctl);
    showOnly(*ctl, {0, 2});
    auto* client = new testsupport::FakeClient;
    client->onReset = [&](int i, ICurveCtl*) { ctl.curve(i).SetPointCount(2); };
    ctl->RegisterClientObject(client);
    const ControlState before = Snapshot(*ctl);
    CHECK(RunControlCommand(*ctl, CC_CMD_RESET_CURVES));
    CHECK(client->calls == std::vector<std::string>{"reset 0", "reset 2"});
    CHECK(theHold.NumUndo() == 1);
    CHECK(theHold.UndoName(0) == "Reset Curve");
    REQUIRE(theHold.Undo());
    CHECK(sameCurve(Snapshot(*ctl).curves[0], before.curves[0]));
    CHECK(sameCurve(Snapshot(*ctl).curves[2], before.curves[2]));
    client->MaybeAutoDelete();
}

TEST_CASE("690 tells the control's dependents that it changed over all time") {
    CleanHold hold;
    TestControl ctl(1);
    Watcher watcher(ctl.get());
    CHECK(RunControlCommand(*ctl, CC_CMD_NOTIFY_CHANGED));
    REQUIRE(watcher.notices.size() == 1);
    CHECK(watcher.notices[0].interval == FOREVER);
    CHECK(watcher.notices[0].part == PART_ALL);
    CHECK(watcher.notices[0].message == REFMSG_CHANGE);
    CHECK(theHold.NumUndo() == 0);
}

TEST_CASE("ids that are not whole-curve commands are not handled") {
    CleanHold hold;
    TestControl ctl(1);
    for (int id : {0, 400, 401, 402, 405, 408, 1035, 670, -1})
        CHECK_FALSE(RunControlCommand(*ctl, id));
    CHECK(theHold.NumUndo() == 0);
}

// ---------------------------------------------------------------------------------------
// Generate path

TEST_CASE("generate path makes a unit line shape inside the hold") {
    CleanHold hold;
    TestControl ctl(1);
    const int redraws = GetCOREInterface()->RedrawRequests();
    int received = 0;
    RunControlCommand(*ctl, CC_CMD_GENERATE_PATH, [&](SplineShape& path) {
        ++received;
        CHECK(theHold.Holding());
        BezierShape& shape = path.shape;
        REQUIRE(shape.SplineCount() == 1);
        Spline3D* sp = shape.GetSpline(0);
        REQUIRE(sp->KnotCount() == 2);
        for (int i = 0; i < 2; ++i) {
            const SplineKnot k = sp->GetKnot(i);
            const Point3 at(float(i), 0.0f, 0.0f);
            CHECK(k.Ktype() == 1);
            CHECK(k.Ltype() == 0);
            CHECK(k.Knot() == at);
            CHECK(k.InVec() == at);
            CHECK(k.OutVec() == at);
        }
        CHECK(sp->BezPointsValid());
        CHECK(sp->BezPointCount() == 6);
        CHECK(shape.VertSel(0).GetSize() == 6);
        CHECK(shape.SegSel(0).GetSize() == 1);
        CHECK(shape.PolySel().GetSize() == 1);
        CHECK_FALSE(path.GeomCacheValid());
        CHECK(path.SuperClassID() == SHAPE_CLASS_ID);
    });
    CHECK(received == 1);
    CHECK(GetCOREInterface()->RedrawRequests() == redraws + 1);
    // Nothing kept the shape: it is gone again, and the hold has nothing to undo.
    CHECK(theHold.NumUndo() == 0);
}

TEST_CASE("a generated path that is kept can be undone and redone") {
    CleanHold hold;
    TestControl ctl(1);
    PathKeeper scene;
    GeneratePath([&](SplineShape& path) { scene.ReplaceReference(0, &path); });
    REQUIRE(scene.Path() != nullptr);
    CHECK(theHold.NumUndo() == 1);
    CHECK(theHold.UndoName(0) == "IDS_TH_GENPATH");
    SplineShape* path = scene.Path();
    REQUIRE(theHold.Undo());
    CHECK(scene.Path() == nullptr);
    REQUIRE(theHold.Redo());
    CHECK(scene.Path() == path);
    CHECK(path->shape.GetSpline(0)->KnotCount() == 2);
}

// ---------------------------------------------------------------------------------------
// Properties

TEST_CASE("property: undo after any command restores the curves exactly, redo repeats it") {
    CleanHold hold;
    RandomCurves rnd(4242u);
    TestControl ctl(4);
    AnswerQuestions answers(true);
    const int commands[] = {CC_CMD_MIRROR_X,
                            CC_CMD_MIRROR_Y,
                            CC_CMD_REFIT_CCW,
                            CC_CMD_REFIT_CW,
                            CC_CMD_DELETE_POINTS,
                            CC_CMD_TOGGLE_CURVE_FIRST,
                            CC_CMD_TOGGLE_CURVE_FIRST + 3};
    int steps = 0; // rounds that made an undo step
    for (int round = 0; round < kPropertyRounds; ++round) {
        CAPTURE(round);
        for (int i = 0; i < 4; ++i) {
            SetPoints(ctl.curve(i), rnd.Points(1.0f));
            if (rnd.Int(0, 2) == 0)
                Animate(ctl.curve(i), rnd.Int(0, ctl.curve(i).PointCount() - 1));
        }
        BitArray shown(4);
        for (int i = 0; i < 4; ++i)
            shown.Set(i, rnd.Int(0, 1));
        ctl->SetShownCurves(shown);
        theHold.Reset();

        const int id = commands[rnd.Int(0, int(sizeof(commands) / sizeof(int)) - 1)];
        CAPTURE(id);
        const ControlState before = Snapshot(*ctl);
        RunControlCommand(*ctl, id);
        const ControlState after = Snapshot(*ctl);
        if (theHold.NumUndo() == 0) {
            // A delete without a selected interior point, or a command with no displayed
            // curve to act on: nothing changed and there is nothing to undo.
            CHECK(SameState(after, before));
            continue;
        }
        ++steps;
        REQUIRE(theHold.NumUndo() == 1);
        REQUIRE(theHold.Undo());
        REQUIRE(SameState(Snapshot(*ctl), before));
        REQUIRE(theHold.Redo());
        REQUIRE(SameState(Snapshot(*ctl), after));
    }
    CHECK(steps > kPropertyRounds * 2 / 3);
}

TEST_CASE("property: mirror and refit leave no point controller on a displayed curve") {
    CleanHold hold;
    RandomCurves rnd(31337u);
    TestControl ctl(3);
    AnswerQuestions answers(true);
    for (int round = 0; round < kPropertyRounds; ++round) {
        CAPTURE(round);
        BitArray shown(3);
        for (int i = 0; i < 3; ++i) {
            SetPoints(ctl.curve(i), rnd.Points(1.0f));
            const int animated = rnd.Int(0, ctl.curve(i).PointCount());
            for (int j = 0; j < animated; ++j)
                Animate(ctl.curve(i), rnd.Int(0, ctl.curve(i).PointCount() - 1));
            shown.Set(i, rnd.Int(0, 1));
        }
        ctl->SetShownCurves(shown);
        std::vector<bool> wasAnimated;
        for (int i = 0; i < 3; ++i)
            wasAnimated.push_back(ctl.curve(i).IsAnimated() != FALSE);
        const int id = rnd.Int(0, 1) ? (rnd.Int(0, 1) ? CC_CMD_MIRROR_X : CC_CMD_MIRROR_Y)
                                     : (rnd.Int(0, 1) ? CC_CMD_REFIT_CCW : CC_CMD_REFIT_CW);
        RunControlCommand(*ctl, id);
        for (int i = 0; i < 3; ++i) {
            CAPTURE(i);
            if (shown[i])
                CHECK_FALSE(AnyController(ctl.curve(i)));
            else
                CHECK((ctl.curve(i).IsAnimated() != FALSE) == wasAnimated[i]);
        }
        theHold.Reset();
    }
}
