// The curve control's x range (with and without rescaling the points) and its view state
// as the open editor sees it. The editor is a recording stand-in attached through the
// control's editor seam, so these run without a window system.
#include "ref_keeper.h"
#include "test_support.h"

#include "control/curve_control.h"
#include "control/editor_link.h"
#include "curve/curve.h"
#include "host/chunk_values.h"
#include "host/controller.h"
#include "host/core_interface.h"
#include "host/hold.h"
#include "host/scene.h"

#include <doctest/doctest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <set>
#include <string>
#include <vector>

using testsupport::CoreFixture;
using testsupport::MessageRecorder;
using testsupport::RefKeeper;

namespace {

CurveKnot knotAt(ICurve* c, int i, TimeValue t = 0) {
    Interval valid = FOREVER;
    return c->GetKnot(t, i, valid);
}

/// A control with one curve of the given points, held through a reference.
struct OneCurve {
    explicit OneCurve(const std::vector<CurveKnot>& knots) : keep(new CurveControl) {
        control().SetCurveCount(1, FALSE);
        Curve& c = curve();
        c.SetPointCount(int(knots.size()));
        for (int i = 0; i < int(knots.size()); ++i)
            c.Knots()[i] = knots[i];
        c.InvalidateCache();
    }
    CurveControl& control() { return *keep.get<CurveControl>(); }
    Curve& curve() { return *control().GetCurveObject(0); }
    RefKeeper keep;
};

/// The open editor as the control sees it, recording every request.
class RecordingEditor : public IEditorView {
public:
    explicit RecordingEditor(CurveControl& control) : control_(control) {
        control_.AttachEditor(Handle(), this);
    }
    ~RecordingEditor() override { control_.DetachEditor(); }

    HWND Handle() override { return reinterpret_cast<HWND>(std::uintptr_t(0xE0E0)); }
    void RedrawGraph() override { ++redraws; }
    void InvalidateGraph() override { ++invalidations; }
    void CaptureView(float& h, float& v, int& hs, int& vs) override {
        h = viewZoom.x;
        v = viewZoom.y;
        hs = viewScroll.x;
        vs = viewScroll.y;
    }
    void SetZoom(float h, float v) override { zoomGiven.push_back(Point2(h, v)); }
    void SetScroll(int h, int v) override { scrollGiven.push_back(IPoint2(h, v)); }
    void SetCaption(const char* title) override { caption = title ? title : "(null)"; }
    void SelectEditMode(int mode, int flyOff) override {
        selected.push_back(IPoint2(mode, flyOff));
    }
    void GetEditMode(int& mode, int& flyOff) override {
        mode = editMode;
        flyOff = editFlyOff;
    }
    void SetDisplayMode(const BitArray& bits) override { display = bits; }
    BitArray DisplayMode() override { return display; }
    void RebuildCurveButtons() override { ++rebuilds; }
    void SendCommand(int id) override { commands.push_back(id); }
    bool AspectRescale(int) override { return false; }
    void InvalidateRuler() override {}
    void RedrawRuler() override {}

    int redraws = 0;
    int invalidations = 0;
    int rebuilds = 0;
    Point2 viewZoom{1.0f, 1.0f}; // what CaptureView reports
    IPoint2 viewScroll{0, 0};
    std::vector<Point2> zoomGiven;
    std::vector<IPoint2> scrollGiven;
    std::string caption;
    std::vector<IPoint2> selected; // (mode, fly-off) of each SelectEditMode
    int editMode = 400;            // what GetEditMode reports
    int editFlyOff = 0;
    BitArray display;
    std::vector<int> commands;

private:
    CurveControl& control_;
};

} // namespace

// ---------------------------------------------------------------------------------------
// SetXRange

TEST_CASE_FIXTURE(CoreFixture, "SetXRange with rescale maps every point into the new range") {
    // A corner end, a smooth point with handles, a Bezier-corner point, a corner end.
    OneCurve s({CurveKnot(Point2(0.0f, 0.1f), Point2(), Point2(0.05f, 0.0f), 0x102),
                CurveKnot(Point2(0.25f, 0.4f), Point2(-0.05f, 0.02f), Point2(0.1f, -0.02f), 0x1),
                CurveKnot(Point2(0.5f, 0.9f), Point2(-0.1f, 0.0f), Point2(0.2f, 0.1f), 0x3),
                CurveKnot(Point2(1.0f, 0.3f), Point2(-0.05f, 0.0f), Point2(), 0x102)});
    MessageRecorder recorder;
    s.control().SetNotifyWindow(recorder.window());

    // (0, 1) -> (0, 2): the map is x' = 2x here.
    s.control().SetXRange(0.0f, 2.0f, TRUE);
    CHECK(s.control().GetXRange() == Point2(0.0f, 2.0f));
    Curve& c = s.curve();
    CHECK(knotAt(&c, 0).pos == Point2(0.0f, 0.1f));
    CHECK(knotAt(&c, 1).pos == Point2(0.5f, 0.4f));
    CHECK(knotAt(&c, 2).pos == Point2(1.0f, 0.9f));
    CHECK(knotAt(&c, 3).pos == Point2(2.0f, 0.3f));
    // Handles of points that are not plain corners follow in x; y stays.
    CHECK(knotAt(&c, 1).inTan.x == doctest::Approx(-0.1f));
    CHECK(knotAt(&c, 1).inTan.y == 0.02f);
    CHECK(knotAt(&c, 1).outTan.x == doctest::Approx(0.2f));
    CHECK(knotAt(&c, 1).outTan.y == -0.02f);
    CHECK(knotAt(&c, 2).inTan.x == doctest::Approx(-0.2f));
    CHECK(knotAt(&c, 2).outTan.x == doctest::Approx(0.4f));
    // Corner points (type 2) keep their handles as they were.
    CHECK(knotAt(&c, 0).outTan == Point2(0.05f, 0.0f));
    CHECK(knotAt(&c, 3).inTan == Point2(-0.05f, 0.0f));
    // Flags are untouched.
    CHECK(knotAt(&c, 1).flags == 0x1u);
    CHECK(knotAt(&c, 3).flags == 0x102u);

    // Each point was set through the position setter: one message per point.
    std::set<WPARAM> changed;
    for (const auto& m : recorder.messages)
        if (m.msg == CURVE_MSG_POINT_CHANGED)
            changed.insert(m.wParam);
    CHECK(changed == std::set<WPARAM>{0, 1, 2, 3});

    // Evaluation sees the new range: the end point sits at the new high end.
    CHECK(c.CachedPosition(0, 3) == Point2(2.0f, 0.3f));
}

TEST_CASE_FIXTURE(CoreFixture, "SetXRange maps both ends of the old range onto the new one") {
    // (0, 1) -> (-10, 10): x' = ((low - (oldLow - x) s) + (high - (oldHigh - x) s)) / 2
    // with s = 20, which is -10 + 20x for these values (worked by hand).
    OneCurve s({CurveKnot(Point2(0.0f, 0.0f), Point2(), Point2(), 0x102),
                CurveKnot(Point2(0.25f, 0.5f), Point2(), Point2(), 0x2),
                CurveKnot(Point2(1.0f, 1.0f), Point2(), Point2(), 0x102)});
    s.control().SetXRange(-10.0f, 10.0f, TRUE);
    CHECK(knotAt(&s.curve(), 0).pos == Point2(-10.0f, 0.0f));
    CHECK(knotAt(&s.curve(), 1).pos == Point2(-5.0f, 0.5f));
    CHECK(knotAt(&s.curve(), 2).pos == Point2(10.0f, 1.0f));

    // And back: the points return to where they were.
    s.control().SetXRange(0.0f, 1.0f, TRUE);
    CHECK(knotAt(&s.curve(), 1).pos.x == doctest::Approx(0.25f));
    CHECK(knotAt(&s.curve(), 2).pos.x == doctest::Approx(1.0f));
    CHECK(knotAt(&s.curve(), 2).pos.y == 1.0f);
}

TEST_CASE_FIXTURE(CoreFixture, "SetXRange rescales an animated point at each of its keys") {
    OneCurve s({CurveKnot(Point2(0.0f, 0.0f), Point2(), Point2(), 0x102),
                CurveKnot(Point2(0.5f, 0.5f), Point2(), Point2(), 0x2),
                CurveKnot(Point2(1.0f, 1.0f), Point2(), Point2(), 0x102)});
    Curve& c = s.curve();
    Control* ctrl = NewDefaultPoint3Controller();
    REQUIRE(c.ReplaceReference(1, ctrl) == REF_SUCCEED);
    AnimateOn();
    const TimeValue times[] = {0, 40, 100};
    const Point2 values[] = {Point2(0.25f, 0.1f), Point2(0.5f, 0.6f), Point2(0.75f, 0.2f)};
    for (int k = 0; k < 3; ++k) {
        Point3 v(values[k].x, values[k].y, 0.0f);
        ctrl->SetValue(times[k], &v, 1, CTRL_ABSOLUTE);
    }
    GetCOREInterface()->SetTime(70); // between keys: no key may be made there

    s.control().SetXRange(0.0f, 4.0f, TRUE); // x' = 4x
    CHECK(Animating() == TRUE);              // animate mode is back as it was
    CHECK(ctrl->NumKeys() == 3);
    for (int k = 0; k < 3; ++k) {
        CHECK(ctrl->GetKeyTime(k) == times[k]);
        CHECK(knotAt(&c, 1, times[k]).pos == Point2(values[k].x * 4.0f, values[k].y));
    }
    CHECK(knotAt(&c, 0).pos == Point2(0.0f, 0.0f));
    CHECK(knotAt(&c, 2).pos == Point2(4.0f, 1.0f));
}

TEST_CASE_FIXTURE(CoreFixture, "SetXRange rescales an animated point without keys at the "
                               "current time") {
    OneCurve s({CurveKnot(Point2(0.0f, 0.0f), Point2(), Point2(), 0x102),
                CurveKnot(Point2(0.5f, 0.5f), Point2(), Point2(), 0x2),
                CurveKnot(Point2(1.0f, 1.0f), Point2(), Point2(), 0x102)});
    Control* ctrl = NewDefaultPoint3Controller();
    REQUIRE(s.curve().ReplaceReference(1, ctrl) == REF_SUCCEED);
    Point3 v(0.3f, 0.7f, 0.0f);
    ctrl->SetValue(0, &v, 1, CTRL_ABSOLUTE); // a constant: no keys
    GetCOREInterface()->SetTime(25);
    s.control().SetXRange(0.0f, 2.0f, TRUE);
    CHECK(ctrl->NumKeys() == 0);
    CHECK(knotAt(&s.curve(), 1, 999).pos == Point2(0.6f, 0.7f));
}

TEST_CASE_FIXTURE(CoreFixture, "SetXRange without rescale leaves the points") {
    OneCurve s({CurveKnot(Point2(0.0f, 0.0f), Point2(), Point2(), 0x102),
                CurveKnot(Point2(0.5f, 0.5f), Point2(-0.1f, 0.0f), Point2(0.1f, 0.0f), 0x1),
                CurveKnot(Point2(1.0f, 1.0f), Point2(), Point2(), 0x102)});
    MessageRecorder recorder;
    s.control().SetNotifyWindow(recorder.window());
    s.control().SetXRange(-3.0f, 3.0f, FALSE);
    CHECK(s.control().GetXRange() == Point2(-3.0f, 3.0f));
    CHECK(s.curve().Knots()[1].pos == Point2(0.5f, 0.5f));
    CHECK(s.curve().Knots()[1].outTan == Point2(0.1f, 0.0f));
    CHECK(s.curve().Knots()[2].pos == Point2(1.0f, 1.0f));
    CHECK(recorder.messages.empty());
}

TEST_CASE_FIXTURE(CoreFixture, "SetXRange with low above high is ignored") {
    OneCurve s({CurveKnot(Point2(0.0f, 0.0f), Point2(), Point2(), 0x102),
                CurveKnot(Point2(1.0f, 1.0f), Point2(), Point2(), 0x102)});
    MessageRecorder recorder;
    s.control().SetNotifyWindow(recorder.window());
    RecordingEditor editor(s.control());
    s.control().SetXRange(2.0f, 1.0f, TRUE);
    CHECK(s.control().GetXRange() == Point2(0.0f, 1.0f));
    CHECK(s.curve().Knots()[1].pos == Point2(1.0f, 1.0f));
    CHECK(recorder.messages.empty());
    CHECK(editor.redraws == 0);

    s.control().SetXRange(0.0f, 2.0f, FALSE); // a real change redraws the open editor
    CHECK(editor.redraws == 1);
}

namespace {
bool sameKnots(Curve& c, const std::vector<CurveKnot>& want) {
    if (c.PointCount() != int(want.size()))
        return false;
    for (int i = 0; i < c.PointCount(); ++i) {
        const CurveKnot& k = c.Knots()[i];
        if (std::memcmp(&k, &want[size_t(i)], sizeof(CurveKnot)) != 0)
            return false;
    }
    return true;
}

std::vector<CurveKnot> knotsOf(Curve& c) {
    return std::vector<CurveKnot>(c.Knots(), c.Knots() + c.PointCount());
}
} // namespace

TEST_CASE_FIXTURE(CoreFixture, "SetXRange without width or with an end that is not finite is "
                               "ignored") {
    OneCurve s({CurveKnot(Point2(0.0f, 0.0f), Point2(), Point2(0.1f, 0.0f), 0x103),
                CurveKnot(Point2(0.5f, 0.5f), Point2(-0.1f, 0.0f), Point2(0.1f, 0.0f), 0x1),
                CurveKnot(Point2(1.0f, 1.0f), Point2(-0.1f, 0.0f), Point2(), 0x103)});
    const std::vector<CurveKnot> before = knotsOf(s.curve());
    MessageRecorder recorder;
    s.control().SetNotifyWindow(recorder.window());
    RecordingEditor editor(s.control());
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float inf = std::numeric_limits<float>::infinity();

    SUBCASE("a range without width, then a rescale from it") {
        s.control().SetXRange(1.0f, 1.0f, TRUE);
        CHECK(s.control().GetXRange() == Point2(0.0f, 1.0f));
        CHECK(sameKnots(s.curve(), before));
        CHECK(recorder.messages.empty());
        CHECK(editor.redraws == 0);
        s.control().SetXRange(0.0f, 1.0f, TRUE); // maps (0, 1) onto itself
        CHECK(s.control().GetXRange() == Point2(0.0f, 1.0f));
        for (int i = 0; i < 3; ++i) {
            const CurveKnot& k = s.curve().Knots()[i];
            CHECK(k.pos.x == doctest::Approx(before[size_t(i)].pos.x));
            CHECK(k.pos.y == before[size_t(i)].pos.y);
            CHECK(k.outTan.x == doctest::Approx(before[size_t(i)].outTan.x));
        }
    }
    SUBCASE("not-a-number and infinite ends") {
        const Point2 bad[] = {{nan, 1.0f}, {0.0f, nan}, {nan, nan}, {-inf, 1.0f},
                              {0.0f, inf}, {-inf, inf}, {inf, inf}};
        for (const Point2& r : bad) {
            CAPTURE(r.x);
            CAPTURE(r.y);
            s.control().SetXRange(r.x, r.y, TRUE);
            CHECK(s.control().GetXRange() == Point2(0.0f, 1.0f));
            CHECK(sameKnots(s.curve(), before));
        }
        CHECK(recorder.messages.empty());
        CHECK(editor.redraws == 0);
    }
    for (int i = 0; i < 3; ++i) {
        const Point2 p = s.curve().CachedPosition(0, i);
        CHECK(std::isfinite(p.x));
        CHECK(std::isfinite(p.y));
    }
}

TEST_CASE_FIXTURE(CoreFixture, "SetXRange from a file's range without width leaves the points") {
    OneCurve s({CurveKnot(Point2(0.0f, 0.0f), Point2(), Point2(0.25f, 0.0f), 0x103),
                CurveKnot(Point2(1.0f, 1.0f), Point2(-0.25f, 0.0f), Point2(), 0x103)});
    testsupport::LoadRanges(s.control(), 1.0f, 1.0f);
    REQUIRE(s.control().GetXRange() == Point2(1.0f, 1.0f));
    const std::vector<CurveKnot> before = knotsOf(s.curve());
    s.control().SetXRange(0.0f, 2.0f, TRUE); // nothing to map from
    CHECK(s.control().GetXRange() == Point2(0.0f, 2.0f));
    CHECK(sameKnots(s.curve(), before));
}

TEST_CASE_FIXTURE(CoreFixture, "SetXRange with rescale: undo and redo give back both states "
                               "exactly, tangents included") {
    // (0, 1) -> (0, 2) in one hold: every tangent x of 0.1 becomes 0.2.
    OneCurve s({CurveKnot(Point2(0.0f, 0.0f), Point2(), Point2(0.1f, 0.05f), 0x103),
                CurveKnot(Point2(0.5f, 0.5f), Point2(-0.1f, 0.0f), Point2(0.1f, 0.0f), 0x1),
                CurveKnot(Point2(1.0f, 1.0f), Point2(-0.1f, -0.05f), Point2(), 0x103)});
    Curve& c = s.curve();
    const std::vector<CurveKnot> before = knotsOf(c);
    theHold.Begin();
    s.control().SetXRange(0.0f, 2.0f, TRUE);
    theHold.Accept("Range");
    const std::vector<CurveKnot> after = knotsOf(c);
    CHECK(after[0].outTan.x == doctest::Approx(0.2f));
    CHECK(after[1].inTan.x == doctest::Approx(-0.2f));
    CHECK(after[1].outTan.x == doctest::Approx(0.2f));
    CHECK(after[2].inTan.x == doctest::Approx(-0.2f));
    CHECK(after[2].pos.x == 2.0f);
    REQUIRE(theHold.NumUndo() == 1);

    REQUIRE(theHold.Undo());
    CHECK(sameKnots(c, before));
    CHECK(c.Knots()[0].outTan.x == 0.1f);
    CHECK(c.CachedOutHandle(0, 0) == Point2(0.0f + 0.1f, 0.0f + 0.05f));
    REQUIRE(theHold.Redo());
    CHECK(sameKnots(c, after));
    CHECK(c.Knots()[1].inTan.x == after[1].inTan.x);
    CHECK(c.Knots()[2].inTan.x == after[2].inTan.x);
    REQUIRE(theHold.Undo());
    CHECK(sameKnots(c, before));
    theHold.Reset();
}

TEST_CASE_FIXTURE(CoreFixture, "SetXRange with rescale: a client reading the curve from its "
                               "message handler sees the point whole") {
    OneCurve s({CurveKnot(Point2(0.0f, 0.0f), Point2(), Point2(0.1f, 0.0f), 0x103),
                CurveKnot(Point2(1.0f, 1.0f), Point2(-0.1f, 0.0f), Point2(), 0x103)});
    MessageRecorder recorder;
    s.control().SetNotifyWindow(recorder.window());
    std::vector<CurveKnot> seen;
    recorder.onMessage = [&](const testsupport::ClientMessage& m) {
        if (m.msg == CURVE_MSG_POINT_CHANGED)
            seen.push_back(s.curve().Knots()[m.wParam & 0xFFFF]);
    };
    s.control().SetXRange(0.0f, 2.0f, TRUE);
    REQUIRE(seen.size() == 2);
    CHECK(seen[0].pos.x == 0.0f);
    CHECK(seen[0].outTan.x == doctest::Approx(0.2f));
    CHECK(seen[1].pos.x == 2.0f);
    CHECK(seen[1].inTan.x == doctest::Approx(-0.2f));
}

// ---------------------------------------------------------------------------------------
// The open editor

TEST_CASE_FIXTURE(CoreFixture, "SetMarkerX redraws only for a new value") {
    OneCurve s({CurveKnot(Point2(0.0f, 0.0f), Point2(), Point2(), 0x102),
                CurveKnot(Point2(1.0f, 1.0f), Point2(), Point2(), 0x102)});
    RecordingEditor editor(s.control());
    CHECK(s.control().IsEditorOpen() == TRUE);
    s.control().SetMarkerX(0.5f);
    CHECK(editor.redraws == 1);
    s.control().SetMarkerX(0.5f); // the value already stored
    CHECK(editor.redraws == 1);
    CHECK(s.control().MarkerX() == 0.5f);
    s.control().SetMarkerX(0.25f);
    CHECK(editor.redraws == 2);

    // With drawing disabled the value is stored and nothing is drawn.
    s.control().EnableRedraw(FALSE);
    s.control().SetMarkerX(0.75f);
    CHECK(s.control().MarkerX() == 0.75f);
    CHECK(editor.redraws == 2);
    s.control().Redraw();
    CHECK(editor.redraws == 2);
    s.control().EnableRedraw(TRUE);
    s.control().Redraw();
    CHECK(editor.redraws == 3);
}

TEST_CASE_FIXTURE(CoreFixture, "the open editor receives clamped zoom values; the control "
                               "keeps them as given") {
    OneCurve s({});
    RecordingEditor editor(s.control());
    s.control().SetZoomState(0.0f, 0.0f);
    REQUIRE(editor.zoomGiven.size() == 1);
    CHECK(editor.zoomGiven[0].x == 0.00002f);
    CHECK(editor.zoomGiven[0].y == 0.0000001f);
    CHECK(editor.redraws == 1);

    s.control().SetZoomState(5e6f, 5e8f);
    REQUIRE(editor.zoomGiven.size() == 2);
    CHECK(editor.zoomGiven[1].x == 1000000.0f);
    CHECK(editor.zoomGiven[1].y == 100000000.0f);

    s.control().SetZoomState(3.0f, 4.0f);
    CHECK(editor.zoomGiven[2] == Point2(3.0f, 4.0f));

    // While open, GetZoomState first takes the editor's current view.
    editor.viewZoom = Point2(7.0f, 8.0f);
    editor.viewScroll = IPoint2(-5, 6);
    float h = 0.0f, v = 0.0f;
    CHECK(s.control().GetZoomState(&h, &v) == TRUE);
    CHECK(h == 7.0f);
    CHECK(v == 8.0f);
    int sh = 0, sv = 0;
    CHECK(s.control().GetScrollState(&sh, &sv) == TRUE);
    CHECK(sh == -5);
    CHECK(sv == 6);
}

TEST_CASE_FIXTURE(CoreFixture, "an open editor's view is captured even before any set") {
    OneCurve s({});
    RecordingEditor editor(s.control());
    editor.viewZoom = Point2(2.0f, 3.0f);
    editor.viewScroll = IPoint2(10, 20);
    int sh = 0, sv = 0;
    CHECK(s.control().GetScrollState(&sh, &sv) == TRUE);
    CHECK(sh == 10);
    CHECK(sv == 20);
    float h = 0.0f;
    CHECK(s.control().GetZoomState(&h, nullptr) == TRUE);
    CHECK(h == 2.0f);
}

TEST_CASE_FIXTURE(CoreFixture, "SetScrollState and ZoomExtents reach the open editor") {
    OneCurve s({});
    s.control().ZoomExtents(); // closed: nothing to send to
    RecordingEditor editor(s.control());
    s.control().SetScrollState(12, -34);
    REQUIRE(editor.scrollGiven.size() == 1);
    CHECK(editor.scrollGiven[0] == IPoint2(12, -34));
    CHECK(editor.redraws == 1);
    s.control().ZoomExtents();
    CHECK(editor.commands == std::vector<int>{1035});
}

TEST_CASE_FIXTURE(CoreFixture, "SetToolMode selects the editor mode of each tool") {
    OneCurve s({});
    RecordingEditor editor(s.control());
    for (int mode = 0; mode <= 6; ++mode)
        s.control().SetToolMode(mode);
    // Moves with their fly-off, scale, inserts with theirs; other numbers select move and
    // leave the fly-off (-1) as it is.
    const std::vector<IPoint2> expected = {IPoint2(400, 0),  IPoint2(400, 1), IPoint2(400, 2),
                                           IPoint2(401, -1), IPoint2(402, 0), IPoint2(402, 1),
                                           IPoint2(400, -1)};
    CHECK(editor.selected == expected);
}

TEST_CASE_FIXTURE(CoreFixture, "GetToolMode derives the tool from the open editor's mode") {
    OneCurve s({});
    RecordingEditor editor(s.control());
    struct Case {
        int mode, flyOff, tool;
    };
    for (const Case& k : {Case{400, 0, 0}, Case{400, 1, 1}, Case{400, 2, 2}, Case{401, 0, 3},
                          Case{401, 5, 3}, Case{402, 0, 4}, Case{402, 1, 5}}) {
        editor.editMode = k.mode;
        editor.editFlyOff = k.flyOff;
        CHECK_MESSAGE(s.control().GetToolMode() == k.tool, k.mode << "/" << k.flyOff);
    }
    // A mode the table does not name leaves the last tool.
    editor.editMode = 999;
    CHECK(s.control().GetToolMode() == 5);
}

TEST_CASE_FIXTURE(CoreFixture, "flags and display bits repaint the open editor") {
    OneCurve s({});
    s.control().SetCurveCount(3, FALSE);
    RecordingEditor editor(s.control());
    s.control().SetControlFlags(0x3FFFF | CC_SHOW_CURRENTXVAL);
    CHECK(editor.redraws == 1);
    CHECK(editor.rebuilds == 0); // the toolbars are not rebuilt

    s.control().SetTitle("Title");
    CHECK(editor.caption.empty()); // an open window keeps its caption...
    BitArray shown(3);
    shown.Set(2);
    s.control().SetShownCurves(shown);
    CHECK(editor.caption == "Title"); // ...until the next SetShownCurves
    CHECK(editor.display == shown);
    CHECK(editor.redraws == 2);
}

TEST_CASE_FIXTURE(CoreFixture, "shrinking to one curve with the editor open shows curve 0") {
    OneCurve s({});
    s.control().SetCurveCount(3, FALSE);
    BitArray shown(3);
    shown.Set(2);
    s.control().SetShownCurves(shown);
    RecordingEditor editor(s.control());

    s.control().SetCurveCount(1, FALSE);
    REQUIRE(s.control().GetCurveCount() == 1);
    CHECK(s.control().GetShownCurves()[0] == 1);
    CHECK(editor.display[0] == 1);    // handed to the editor too
    CHECK(editor.rebuilds >= 1);      // the buttons follow (a single curve has none)
    CHECK(editor.invalidations >= 1); // and the graph is invalidated
}

TEST_CASE_FIXTURE(CoreFixture, "shrinking to one curve with the editor closed leaves the bits") {
    OneCurve s({});
    s.control().SetCurveCount(3, FALSE);
    BitArray shown(3);
    shown.Set(2);
    s.control().SetShownCurves(shown);
    s.control().SetCurveCount(1, FALSE);
    CHECK(s.control().GetShownCurves()[0] == 0);
}

TEST_CASE_FIXTURE(CoreFixture, "a curve's pens and animatable flag repaint the open editor") {
    OneCurve s({CurveKnot(Point2(0.0f, 0.0f), Point2(), Point2(), 0x102),
                CurveKnot(Point2(1.0f, 1.0f), Point2(), Point2(), 0x102)});
    Curve& c = s.curve();
    c.SetPen(RGB(9, 9, 9), 1, 0); // closed: nothing to repaint
    RecordingEditor editor(s.control());
    c.SetPen(RGB(1, 2, 3), 2, 0);
    CHECK(editor.invalidations == 1);
    c.SetDisabledPen(RGB(4, 5, 6), 1, 2);
    CHECK(editor.invalidations == 2);
    c.SetAnimatable(FALSE);
    CHECK(editor.invalidations == 3);
    c.SetAnimatable(TRUE); // turning it on drops nothing: no repaint
    CHECK(editor.invalidations == 3);
}

TEST_CASE_FIXTURE(CoreFixture, "a controller change reaches the control's dependents and "
                               "redraws") {
    OneCurve s({CurveKnot(Point2(0.0f, 0.0f), Point2(), Point2(), 0x102),
                CurveKnot(Point2(0.5f, 0.5f), Point2(), Point2(), 0x2),
                CurveKnot(Point2(1.0f, 1.0f), Point2(), Point2(), 0x102)});
    Curve& c = s.curve();
    Control* ctrl = NewDefaultPoint3Controller();
    REQUIRE(c.ReplaceReference(1, ctrl) == REF_SUCCEED);
    RecordingEditor editor(s.control());
    s.keep.notices.clear();

    // The curve makes its owner tell the owner's dependents: forever, part 3, message 80.
    // (The host also passes the controller's own notice up through the curve and the
    // control; that one carries the controller's part.)
    auto curveNotices = [&] {
        int n = 0;
        for (const auto& notice : s.keep.notices) {
            if (notice.part != 3u)
                continue;
            CHECK(notice.message == REFMSG_CHANGE);
            CHECK(notice.interval == FOREVER);
            ++n;
        }
        return n;
    };
    Point3 v(0.5f, 0.25f, 0.0f);
    ctrl->SetValue(0, &v, 1, CTRL_ABSOLUTE);
    CHECK(curveNotices() == 1);
    CHECK(editor.redraws == 1);
    CHECK(c.CachedPosition(0, 1) == Point2(0.5f, 0.25f));

    // With notification suspended the cache still follows, but the curve tells nobody.
    c.SetNotifySuspended(1);
    v = Point3(0.5f, 0.75f, 0.0f);
    ctrl->SetValue(0, &v, 1, CTRL_ABSOLUTE);
    CHECK(curveNotices() == 1);
    CHECK(editor.redraws == 1);
    CHECK(c.CachedPosition(0, 1) == Point2(0.5f, 0.75f));
    c.SetNotifySuspended(0);
}
