// The curve data model: defaults, resizing, end behaviour, lookup size, point records,
// point controllers, the host-facing face, copying and cloning, animating selected
// points, and the undo of a resize.
#include "ref_keeper.h"
#include "test_support.h"

#include "control/curve_control.h"
#include "curve/curve.h"
#include "host/controller.h"
#include "host/hold.h"

#include <doctest/doctest.h>

#include <cstring>

using testsupport::CoreFixture;
using testsupport::RefKeeper;

namespace {

/// A curve without owner, made as the class descriptor makes one.
Curve* newCurve() { return new Curve(nullptr, 0); }

bool isZeroKnot(const CurveKnot& k) {
    return k.pos == Point2() && k.inTan == Point2() && k.outTan == Point2() && k.flags == 0;
}

CurveKnot knotAt(Curve& c, int i, TimeValue t = 0) {
    Interval valid = FOREVER;
    return c.GetKnot(t, i, valid);
}

/// Writes point i whole, as the undo records do (no constraints, no messages).
void putKnot(Curve& c, int i, const CurveKnot& k) {
    REQUIRE(c.Knots() != nullptr);
    c.Knots()[i] = k;
    c.InvalidateCache();
}

/// Gives point i a controller keyed at each (time, position).
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

/// Evaluation counter steps of one EnsureCache: 1 when the cache held, 2 after a rebuild.
long ensureCost(Curve& c, TimeValue t) {
    const long before = c.LookupCount();
    c.EnsureCache(t);
    return c.LookupCount() - before;
}

} // namespace

// ---------------------------------------------------------------------------------------
// Defaults and resizing

TEST_CASE_FIXTURE(CoreFixture, "a new curve has no points and the default settings") {
    RefKeeper keep(newCurve());
    Curve& c = *keep.get<Curve>();
    CHECK(c.PointCount() == 0);
    CHECK(c.GetLookupSize() == 1000);
    CHECK(c.IsAnimatable() == TRUE);
    CHECK(c.IsAnimated() == FALSE);
    CHECK(c.NumRefs() == 0);
    CHECK(c.NumSubs() == 0);
    CHECK(c.Owner() == nullptr);
    CHECK(c.Tag() == 0);
    CHECK(c.FittedWidth() == 1.0f);
    CHECK(c.CurveFlags() == 0u);
    CHECK(c.GetEndBehaviour() == 0);
    CHECK(c.GetSelection().GetSize() == 0);
    CHECK(c.NotifySuspended() == 0);
    CHECK(c.OpenPosRecord() == nullptr);

    COLORREF colour = 1;
    int width = 1, style = 1;
    c.GetPen(colour, width, style);
    CHECK(colour == 0x000000u);
    CHECK(width == 0);
    CHECK(style == 0);
    c.GetDisabledPen(colour, width, style);
    CHECK(colour == 0xC0C0C0u);
    CHECK(width == 0);
    CHECK(style == 0);

    // The tag is kept as given.
    RefKeeper tagged(new Curve(nullptr, 7));
    CHECK(tagged.get<Curve>()->Tag() == 7);
}

TEST_CASE_FIXTURE(CoreFixture, "SetPointCount(1) makes one corner end point at (0, 0)") {
    RefKeeper keep(newCurve());
    Curve& c = *keep.get<Curve>();
    c.SetPointCount(1);
    REQUIRE(c.PointCount() == 1);
    CurveKnot k = knotAt(c, 0);
    CHECK(k.pos == Point2(0.0f, 0.0f));
    CHECK(k.inTan == Point2());
    CHECK(k.outTan == Point2());
    CHECK(k.flags == 0x102u);
    CHECK(c.NumRefs() == 1);
    CHECK(c.IsPointAnimated(0) == FALSE);
}

TEST_CASE_FIXTURE(CoreFixture, "SetPointCount(3) marks only the first and last point") {
    RefKeeper keep(newCurve());
    Curve& c = *keep.get<Curve>();
    c.SetPointCount(3);
    REQUIRE(c.PointCount() == 3);
    CHECK(knotAt(c, 0).flags == 0x102u);
    CHECK(knotAt(c, 1).flags == 0u);
    CHECK(knotAt(c, 2).flags == 0x102u);
    for (int i = 0; i < 3; ++i) {
        CHECK(knotAt(c, i).pos == Point2());
        CHECK(knotAt(c, i).inTan == Point2());
        CHECK(knotAt(c, i).outTan == Point2());
    }
    CHECK(c.NumRefs() == 3);
    CHECK(c.NumSubs() == 3);
}

TEST_CASE_FIXTURE(CoreFixture, "SetPointCount discards the old points even at the same count") {
    RefKeeper keep(newCurve());
    Curve& c = *keep.get<Curve>();
    c.SetPointCount(3);
    putKnot(c, 1, CurveKnot(Point2(0.5f, 0.5f), Point2(-0.1f, 0.0f), Point2(0.1f, 0.0f), 0x11));
    c.SetFittedWidth(4.0f);
    c.SetPointCount(3);
    CHECK(isZeroKnot(knotAt(c, 1)));
    CHECK(c.FittedWidth() == 1.0f);

    c.SetPointCount(0);
    CHECK(c.PointCount() == 0);
    CHECK(c.NumRefs() == 0);
    c.SetPointCount(-4); // counts as none
    CHECK(c.PointCount() == 0);
}

TEST_CASE_FIXTURE(CoreFixture, "end behaviour: 0 and 1 set their bits, other values nothing") {
    RefKeeper keep(newCurve());
    Curve& c = *keep.get<Curve>();
    c.SetPointCount(2);

    c.SetEndBehaviour(1);
    CHECK(c.GetEndBehaviour() == 1);
    CHECK(c.CurveFlags() == 0x4u);
    c.SetEndBehaviour(0);
    CHECK(c.GetEndBehaviour() == 0);
    CHECK(c.CurveFlags() == 0x2u);

    // The cyclic bit is left alone by both modes.
    c.SetCurveFlags(0x1 | 0x2);
    c.SetEndBehaviour(1);
    CHECK(c.CurveFlags() == (0x1u | 0x4u));

    for (int mode : {7, 2, -1, 0x7FFFFFFF}) {
        const DWORD before = c.CurveFlags();
        c.SetEndBehaviour(mode);
        CHECK(c.CurveFlags() == before);
        CHECK(c.GetEndBehaviour() == 1);
    }

    // A resize resets the end behaviour (and the cyclic bit): it reads 0 again.
    c.SetPointCount(4);
    CHECK(c.GetEndBehaviour() == 0);
    CHECK(c.CurveFlags() == 0u);
}

TEST_CASE_FIXTURE(CoreFixture, "SetLookupSize: the same size keeps the cache, a new one drops it") {
    RefKeeper keep(newCurve());
    Curve& c = *keep.get<Curve>();
    c.SetPointCount(2);
    putKnot(c, 1, CurveKnot(Point2(1.0f, 1.0f), Point2(), Point2(), 0x102));

    c.EnsureCache(0);
    CHECK(ensureCost(c, 0) == 1); // built: one test, no rebuild

    c.SetLookupSize(1000); // the size it has
    CHECK(c.GetLookupSize() == 1000);
    CHECK(ensureCost(c, 0) == 1);

    c.SetLookupSize(10);
    CHECK(c.GetLookupSize() == 10);
    CHECK(ensureCost(c, 0) == 2); // emptied: tested, then rebuilt

    // The smaller table still answers the straight line from (0, 0) to (1, 1).
    Interval valid = FOREVER;
    CHECK(c.ValueAt(0, 0.5f, valid, TRUE) == doctest::Approx(0.5f).epsilon(1e-4));
}

TEST_CASE_FIXTURE(CoreFixture, "GetKnot out of range gives an all-zero record") {
    RefKeeper keep(newCurve());
    Curve& c = *keep.get<Curve>();
    CHECK(isZeroKnot(knotAt(c, 0))); // no points at all
    c.SetPointCount(3);
    putKnot(c, 0, CurveKnot(Point2(0.1f, 0.2f), Point2(), Point2(0.1f, 0.0f), 0x103));
    putKnot(c, 2, CurveKnot(Point2(0.9f, 0.2f), Point2(-0.1f, 0.0f), Point2(), 0x103));
    Interval valid(10, 20);
    CHECK(isZeroKnot(c.GetKnot(0, -1, valid)));
    CHECK(isZeroKnot(c.GetKnot(0, 3, valid)));
    CHECK(isZeroKnot(c.GetKnot(0, 1000, valid)));
    CHECK(valid == Interval(10, 20)); // untouched
    CHECK(knotAt(c, 2).pos == Point2(0.9f, 0.2f));
}

TEST_CASE_FIXTURE(CoreFixture, "GetKnot of an animated point reads the controller at t") {
    RefKeeper keep(newCurve());
    Curve& c = *keep.get<Curve>();
    c.SetPointCount(3);
    putKnot(c, 1, CurveKnot(Point2(0.5f, 0.5f), Point2(-0.1f, 0.0f), Point2(0.2f, 0.0f), 0x1));
    animate(c, 1, {{0, Point2(0.25f, 0.0f)}, {100, Point2(0.75f, 1.0f)}});

    CHECK(c.IsPointAnimated(1) == TRUE);
    CHECK(c.IsAnimated() == TRUE);
    Interval valid = FOREVER;
    CurveKnot k = c.GetKnot(50, 1, valid);
    CHECK(k.pos == Point2(0.5f, 0.5f));    // halfway between the keys
    CHECK(k.inTan == Point2(-0.1f, 0.0f)); // tangents and flags from the table
    CHECK(k.outTan == Point2(0.2f, 0.0f));
    CHECK(k.flags == 0x1u);
    CHECK(valid == Interval(50, 50)); // narrowed by the controller

    valid = FOREVER;
    CHECK(c.GetKnot(200, 1, valid).pos == Point2(0.75f, 1.0f));
    CHECK(valid == Interval(100, TIME_PosInfinity));

    // Points without a controller leave the validity alone.
    valid = FOREVER;
    c.GetKnot(50, 0, valid);
    CHECK(valid == FOREVER);
}

TEST_CASE_FIXTURE(CoreFixture, "IsPointAnimated is FALSE at and beyond the count, and below 0") {
    RefKeeper keep(newCurve());
    Curve& c = *keep.get<Curve>();
    c.SetPointCount(2);
    animate(c, 1, {{0, Point2(1.0f, 0.0f)}});
    CHECK(c.IsPointAnimated(1) == TRUE);
    CHECK(c.IsPointAnimated(2) == FALSE);
    CHECK(c.IsPointAnimated(99) == FALSE);
    CHECK(c.IsPointAnimated(-1) == FALSE);
}

TEST_CASE_FIXTURE(CoreFixture, "SetAnimatable(FALSE) drops every controller") {
    RefKeeper keep(newCurve());
    Curve& c = *keep.get<Curve>();
    c.SetPointCount(3);
    Control* a = animate(c, 0, {{0, Point2(0.0f, 0.0f)}});
    Control* b = animate(c, 2, {{0, Point2(1.0f, 0.0f)}, {50, Point2(1.0f, 1.0f)}});
    // Other holders of the controllers see the curve let go of them.
    RefKeeper watchA(a), watchB(b);
    CHECK(a->NumDependents() == 2);

    c.SetAnimatable(FALSE);
    CHECK(c.IsAnimatable() == FALSE);
    CHECK(c.IsAnimated() == FALSE);
    for (int i = 0; i < 3; ++i) {
        CHECK(c.IsPointAnimated(i) == FALSE);
        CHECK(c.GetReference(i) == nullptr);
        CHECK(c.SubAnim(i) == nullptr);
    }
    CHECK(a->NumDependents() == 1);
    CHECK(b->NumDependents() == 1);
    CHECK(c.PointCount() == 3); // the points stay

    // Not animatable: selected points get no controllers even in animate mode.
    BitArray all(3);
    all.SetAll();
    c.SetSelectionEx(all, 4, FALSE);
    AnimateOn();
    CHECK(c.AnimateSelectedKnots(TRUE, nullptr) == FALSE);
    CHECK(c.IsAnimated() == FALSE);

    c.SetAnimatable(TRUE);
    CHECK(c.IsAnimatable() == TRUE);
}

// ---------------------------------------------------------------------------------------
// Host-facing face

TEST_CASE_FIXTURE(CoreFixture, "a curve answers its two interface ids and its class") {
    RefKeeper keep(newCurve());
    Curve& c = *keep.get<Curve>();
    CHECK(c.GetInterface(0x66B073EA) == static_cast<ICurve*>(&c));
    CHECK(c.GetInterface(0x02F96F73) == static_cast<ICurve*>(&c));
    CHECK(c.GetInterface(0x2474334A) == nullptr);
    CHECK(c.GetInterface(0) == nullptr);

    CStr name;
    c.GetClassName(name);
    CHECK(name == "Curve");
    CHECK(c.ClassID() == Class_ID(0x5F2D3A0A, 0x4BE75269));
    CHECK(c.SuperClassID() == 0x100u);
}

TEST_CASE_FIXTURE(CoreFixture, "sub-animatables are the point controllers, named from 1") {
    RefKeeper keep(newCurve());
    Curve& c = *keep.get<Curve>();
    c.SetPointCount(12);
    CHECK(c.SubAnimName(0) == "Point 1");
    CHECK(c.SubAnimName(11) == "Point 12");
    Control* ctrl = animate(c, 4, {{0, Point2()}});
    CHECK(c.SubAnim(4) == ctrl);
    CHECK(c.GetReference(4) == ctrl);
    CHECK(c.SubAnim(3) == nullptr);
    CHECK(c.GetReference(12) == nullptr);
    CHECK(c.GetReference(-1) == nullptr);
    CHECK(c.RemapRefOnLoad(5) == 5);
}

TEST_CASE_FIXTURE(CoreFixture, "a change message of a controller drops the cache; others do not") {
    RefKeeper keep(newCurve());
    Curve& c = *keep.get<Curve>();
    c.SetPointCount(2);
    Control* ctrl = animate(c, 1, {{0, Point2(1.0f, 0.0f)}});
    c.EnsureCache(0);
    REQUIRE(ensureCost(c, 0) == 1);

    PartID part = 0;
    CHECK(c.NotifyRefChanged(FOREVER, ctrl, part, REFMSG_SUBANIM_STRUCTURE_CHANGED, TRUE) ==
          REF_SUCCEED);
    CHECK(ensureCost(c, 0) == 1); // ignored

    Point3 v(1.0f, 0.5f, 0.0f);
    ctrl->SetValue(0, &v, 1, CTRL_ABSOLUTE); // notifies REFMSG_CHANGE
    CHECK(ensureCost(c, 0) == 2);
    CHECK(c.CachedPosition(0, 1) == Point2(1.0f, 0.5f));
}

// ---------------------------------------------------------------------------------------
// Copy and clone

namespace {
/// A curve with every copied field away from its default, and point 1 animated.
Curve* richCurve(CurveControl* owner) {
    Curve* c = new Curve(owner, 3);
    c->SetPointCount(3);
    c->Knots()[0] = CurveKnot(Point2(0.0f, 0.1f), Point2(), Point2(0.2f, 0.0f), 0x103);
    c->Knots()[1] = CurveKnot(Point2(0.4f, 0.6f), Point2(-0.1f, 0.0f), Point2(0.1f, 0.1f), 0x11);
    c->Knots()[2] = CurveKnot(Point2(1.0f, 0.3f), Point2(-0.2f, 0.0f), Point2(), 0x103);
    c->InvalidateCache();
    c->SetPen(RGB(1, 2, 3), 2, 1);
    c->SetDisabledPen(RGB(4, 5, 6), 3, 2);
    c->SetLookupSize(64);
    c->SetFittedWidth(2.5f);
    c->SetEndBehaviour(1);
    c->SetNotifySuspended(1);
    return c;
}
} // namespace

TEST_CASE_FIXTURE(CoreFixture, "Copy copies points, settings and owner, and clones controllers") {
    RefKeeper ownerKeep(new CurveControl);
    auto* owner = ownerKeep.get<CurveControl>();
    RefKeeper srcKeep(richCurve(owner));
    Curve& src = *srcKeep.get<Curve>();
    Control* srcCtrl = animate(src, 1, {{0, Point2(0.4f, 0.6f)}, {100, Point2(0.5f, 0.9f)}});

    RefKeeper dstKeep(new Curve(nullptr, 9));
    Curve& dst = *dstKeep.get<Curve>();
    dst.Copy(src);

    REQUIRE(dst.PointCount() == 3);
    for (int i = 0; i < 3; ++i) {
        CHECK(std::memcmp(&dst.Knots()[i], &src.Knots()[i], sizeof(CurveKnot)) == 0);
    }
    COLORREF colour = 0;
    int width = 0, style = 0;
    dst.GetPen(colour, width, style);
    CHECK(colour == RGB(1, 2, 3));
    CHECK(width == 2);
    CHECK(style == 1);
    dst.GetDisabledPen(colour, width, style);
    CHECK(colour == RGB(4, 5, 6));
    CHECK(width == 3);
    CHECK(style == 2);
    CHECK(dst.GetLookupSize() == 64);
    CHECK(dst.FittedWidth() == 2.5f);
    CHECK(dst.CurveFlags() == src.CurveFlags());
    CHECK(dst.GetEndBehaviour() == 1);
    CHECK(dst.Owner() == owner);
    CHECK(dst.IsAnimatable() == TRUE);
    // Not copied: the tag and the notification suspension.
    CHECK(dst.Tag() == 9);
    CHECK(dst.NotifySuspended() == 0);

    // The controller is a clone: same keys, its own object.
    auto* dstCtrl = dynamic_cast<Control*>(dst.Controller(1));
    REQUIRE(dstCtrl != nullptr);
    CHECK(dstCtrl != srcCtrl);
    CHECK(dst.Controller(0) == nullptr);
    CHECK(dstCtrl->NumKeys() == 2);
    CHECK(knotAt(dst, 1, 100).pos == Point2(0.5f, 0.9f));
    Point3 moved(0.45f, 0.1f, 0.0f);
    dstCtrl->SetValue(100, &moved, 1, CTRL_ABSOLUTE);
    CHECK(knotAt(src, 1, 100).pos == Point2(0.5f, 0.9f));
    CHECK(srcCtrl->NumDependents() == 1);
    CHECK(dstCtrl->NumDependents() == 1);

    // Copying a curve without controllers over one with them drops them.
    RefKeeper plainKeep(newCurve());
    plainKeep.get<Curve>()->SetPointCount(3);
    dst.Copy(*plainKeep.get<Curve>());
    CHECK(dst.IsAnimated() == FALSE);
    CHECK(dst.Owner() == nullptr);
    CHECK(dst.GetLookupSize() == 1000);
}

TEST_CASE_FIXTURE(CoreFixture, "Copy of an unanimatable curve copies the flag") {
    RefKeeper srcKeep(newCurve());
    Curve& src = *srcKeep.get<Curve>();
    src.SetPointCount(2);
    src.SetAnimatable(FALSE);
    RefKeeper dstKeep(newCurve());
    dstKeep.get<Curve>()->Copy(src);
    CHECK(dstKeep.get<Curve>()->IsAnimatable() == FALSE);
}

TEST_CASE_FIXTURE(CoreFixture, "Clone makes an independent copy through the remap directory") {
    RefKeeper srcKeep(richCurve(nullptr));
    Curve& src = *srcKeep.get<Curve>();
    Control* srcCtrl = animate(src, 1, {{0, Point2(0.4f, 0.6f)}});

    RemapDir& remap = NewRemapDir();
    auto* clone = static_cast<Curve*>(remap.CloneRef(&src));
    REQUIRE(clone != nullptr);
    CHECK(remap.FindMapping(&src) == clone);
    remap.DeleteThis();
    RefKeeper cloneKeep(clone);

    CHECK(clone != &src);
    CHECK(clone->Tag() == 0);
    REQUIRE(clone->PointCount() == 3);
    CHECK(std::memcmp(clone->Knots(), src.Knots(), 3 * sizeof(CurveKnot)) == 0);
    CHECK(clone->GetLookupSize() == 64);
    REQUIRE(clone->Controller(1) != nullptr);
    CHECK(clone->Controller(1) != srcCtrl);
    CHECK(knotAt(*clone, 1).pos == Point2(0.4f, 0.6f));
}

// ---------------------------------------------------------------------------------------
// Animating selected points

namespace {
/// A control with one curve of three points at x 0, 0.5, 1 (y 0.2, 0.4, 0.6), and a
/// keeper of the control that records the notices it sends its dependents.
struct AnimateSetup {
    AnimateSetup() : keep(new CurveControl) {
        control()->SetCurveCount(1, FALSE);
        Curve& c = curve();
        c.SetPointCount(3);
        c.Knots()[0] = CurveKnot(Point2(0.0f, 0.2f), Point2(), Point2(), 0x102);
        c.Knots()[1] = CurveKnot(Point2(0.5f, 0.4f), Point2(), Point2(), 0x2);
        c.Knots()[2] = CurveKnot(Point2(1.0f, 0.6f), Point2(), Point2(), 0x102);
        c.InvalidateCache();
        keep.notices.clear();
    }
    CurveControl* control() { return keep.get<CurveControl>(); }
    Curve& curve() { return *control()->GetCurveObject(0); }
    void select(std::initializer_list<int> points) {
        BitArray sel(curve().PointCount());
        for (int i : points)
            sel.Set(i);
        curve().SetSelectionEx(sel, 4, FALSE);
    }
    int structureNotices() const {
        int n = 0;
        for (const auto& notice : keep.notices)
            n += notice.message == REFMSG_SUBANIM_STRUCTURE_CHANGED;
        return n;
    }
    RefKeeper keep;
};
} // namespace

TEST_CASE_FIXTURE(CoreFixture, "AnimateSelectedKnots gives selected points controllers in "
                               "animate mode") {
    AnimateSetup s;
    Curve& c = s.curve();
    s.select({0, 1});
    AnimateOn();
    BitArray created(1);
    created.Set(0);
    CHECK(c.AnimateSelectedKnots(TRUE, &created) == TRUE);
    AnimateOff();

    CHECK(created.GetSize() == 3);
    CHECK(created[0] == 1);
    CHECK(created[1] == 1);
    CHECK(created[2] == 0);
    CHECK(c.IsPointAnimated(0) == TRUE);
    CHECK(c.IsPointAnimated(1) == TRUE);
    CHECK(c.IsPointAnimated(2) == FALSE);
    // Each controller starts at the point's position, (x, y, 0) at time 0.
    auto* ctrl = dynamic_cast<Control*>(c.Controller(1));
    REQUIRE(ctrl != nullptr);
    Interval valid = FOREVER;
    Point3 v;
    ctrl->GetValue(0, &v, valid, CTRL_ABSOLUTE);
    CHECK(v == Point3(0.5f, 0.4f, 0.0f));
    CHECK(knotAt(c, 0).pos == Point2(0.0f, 0.2f));

    // The owner told its dependents: forever, part 0, message 250.
    REQUIRE(s.structureNotices() == 1);
    for (const auto& n : s.keep.notices) {
        if (n.message != REFMSG_SUBANIM_STRUCTURE_CHANGED)
            continue;
        CHECK(n.message == 0xFAu);
        CHECK(n.part == 0u);
        CHECK(n.interval == FOREVER);
    }
}

TEST_CASE_FIXTURE(CoreFixture, "AnimateSelectedKnots skips points that already have a "
                               "controller") {
    AnimateSetup s;
    Curve& c = s.curve();
    Control* existing = animate(c, 1, {{0, Point2(0.5f, 0.4f)}});
    s.select({1, 2});
    AnimateOn();
    BitArray created;
    CHECK(c.AnimateSelectedKnots(TRUE, &created) == TRUE);
    CHECK(c.Controller(1) == existing);
    CHECK(created[1] == 0);
    CHECK(created[2] == 1);

    // Everything selected is animated now: nothing more to make.
    s.keep.notices.clear();
    CHECK(c.AnimateSelectedKnots(TRUE, &created) == FALSE);
    CHECK(created.GetSize() == 3);
    CHECK(created.NumberSet() == 0);
    CHECK(s.structureNotices() == 0);
}

TEST_CASE_FIXTURE(CoreFixture, "AnimateSelectedKnots makes nothing outside animate mode or "
                               "without create") {
    AnimateSetup s;
    Curve& c = s.curve();
    s.select({0, 1, 2});
    BitArray created;
    SUBCASE("animate mode off") { CHECK(c.AnimateSelectedKnots(TRUE, &created) == FALSE); }
    SUBCASE("animate mode suspended") {
        AnimateOn();
        SuspendAnimate();
        CHECK(c.AnimateSelectedKnots(TRUE, &created) == FALSE);
        ResumeAnimate();
    }
    SUBCASE("create FALSE") {
        AnimateOn();
        CHECK(c.AnimateSelectedKnots(FALSE, &created) == FALSE);
    }
    CHECK(c.IsAnimated() == FALSE);
    CHECK(created.GetSize() == 3); // sized and cleared all the same
    CHECK(created.NumberSet() == 0);
    CHECK(s.structureNotices() == 0);
}

TEST_CASE_FIXTURE(CoreFixture, "AnimateSelectedKnots on a curve without points leaves the "
                               "bits alone") {
    RefKeeper keep(newCurve());
    BitArray created(5);
    created.Set(2);
    AnimateOn();
    CHECK(keep.get<Curve>()->AnimateSelectedKnots(TRUE, &created) == FALSE);
    CHECK(created.GetSize() == 5);
    CHECK(created[2] == 1);
    // Nothing selected: nothing made, no owner needed.
    keep.get<Curve>()->SetPointCount(2);
    CHECK(keep.get<Curve>()->AnimateSelectedKnots(TRUE, &created) == FALSE);
    CHECK(created.GetSize() == 2);
    CHECK(keep.get<Curve>()->AnimateSelectedKnots(TRUE, nullptr) == FALSE);
}

// ---------------------------------------------------------------------------------------
// Undo of a resize

TEST_CASE_FIXTURE(CoreFixture, "undo and redo of SetPointCount on a curve with animated "
                               "points") {
    RefKeeper keep(newCurve());
    Curve& c = *keep.get<Curve>();
    c.SetPointCount(3);
    putKnot(c, 0, CurveKnot(Point2(0.0f, 0.0f), Point2(), Point2(0.1f, 0.0f), 0x103));
    putKnot(c, 1, CurveKnot(Point2(0.5f, 0.5f), Point2(-0.1f, 0.0f), Point2(0.1f, 0.0f), 0x1));
    putKnot(c, 2, CurveKnot(Point2(1.0f, 1.0f), Point2(-0.1f, 0.0f), Point2(), 0x103));
    Control* original = animate(c, 1, {{0, Point2(0.3f, 0.2f)}, {100, Point2(0.7f, 0.8f)}});
    c.SetEndBehaviour(1);
    const CurveKnot before1 = c.Knots()[1];

    theHold.Begin();
    c.SetPointCount(5);
    theHold.Accept("resize");
    REQUIRE(theHold.NumUndo() == 1);
    CHECK(c.PointCount() == 5);
    CHECK(c.IsAnimated() == FALSE);
    CHECK(c.GetEndBehaviour() == 0);

    REQUIRE(theHold.Undo());
    REQUIRE(c.PointCount() == 3);
    CHECK(std::memcmp(&c.Knots()[1], &before1, sizeof(CurveKnot)) == 0);
    CHECK(c.GetEndBehaviour() == 1);
    REQUIRE(c.IsPointAnimated(1) == TRUE);
    CHECK(c.IsPointAnimated(0) == FALSE);
    auto* restored = dynamic_cast<Control*>(c.Controller(1));
    REQUIRE(restored != nullptr);
    CHECK(restored->NumKeys() == 2);
    CHECK(knotAt(c, 1, 0).pos == Point2(0.3f, 0.2f));
    CHECK(knotAt(c, 1, 100).pos == Point2(0.7f, 0.8f));
    // The curve's controller is its own: no record or other curve shares it.
    CHECK(restored->NumDependents() == 1);
    CHECK(restored->GetDependent(0) == &c);
    (void)original;

    REQUIRE(theHold.Redo());
    CHECK(c.PointCount() == 5);
    CHECK(c.IsAnimated() == FALSE);

    REQUIRE(theHold.Undo());
    REQUIRE(c.PointCount() == 3);
    REQUIRE(c.IsPointAnimated(1) == TRUE);
    CHECK(knotAt(c, 1, 100).pos == Point2(0.7f, 0.8f));
    CHECK(c.Controller(1)->NumDependents() == 1);

    // Editing the restored controller leaves what redo will bring back alone, and
    // undo again restores the edit's starting point.
    Point3 v(0.6f, 0.6f, 0.0f);
    static_cast<Control*>(c.Controller(1))->SetValue(100, &v, 1, CTRL_ABSOLUTE);
    CHECK(knotAt(c, 1, 100).pos == Point2(0.6f, 0.6f));
    REQUIRE(theHold.Redo());
    CHECK(c.PointCount() == 5);
}

TEST_CASE_FIXTURE(CoreFixture, "SetPointCount outside a hold records nothing") {
    RefKeeper keep(newCurve());
    Curve& c = *keep.get<Curve>();
    c.SetPointCount(3);
    animate(c, 1, {{0, Point2(0.5f, 0.5f)}});
    c.SetPointCount(2);
    CHECK(theHold.NumUndo() == 0);
    CHECK(c.PointCount() == 2);
    CHECK(c.IsAnimated() == FALSE);
}

TEST_CASE_FIXTURE(CoreFixture, "a cancelled SetPointCount puts the points back") {
    RefKeeper keep(newCurve());
    Curve& c = *keep.get<Curve>();
    c.SetPointCount(3);
    putKnot(c, 1, CurveKnot(Point2(0.5f, 0.25f), Point2(), Point2(), 0x2));
    theHold.Begin();
    c.SetPointCount(7);
    theHold.Cancel();
    REQUIRE(c.PointCount() == 3);
    CHECK(knotAt(c, 1).pos == Point2(0.5f, 0.25f));
    CHECK(theHold.NumUndo() == 0);
}

TEST_CASE_FIXTURE(CoreFixture, "AnimateSelectedKnots works on a curve without owner") {
    RefKeeper keep(newCurve());
    Curve& c = *keep.get<Curve>();
    c.SetPointCount(2);
    putKnot(c, 1, CurveKnot(Point2(1.0f, 0.5f), Point2(), Point2(), 0x102));
    BitArray sel(2);
    sel.Set(1);
    c.SetSelectionEx(sel, 4, FALSE);
    AnimateOn();
    CHECK(c.AnimateSelectedKnots(TRUE, nullptr) == TRUE);
    CHECK(c.IsPointAnimated(1) == TRUE);
    CHECK(knotAt(c, 1).pos == Point2(1.0f, 0.5f));
}

TEST_CASE_FIXTURE(CoreFixture, "controllers made by AnimateSelectedKnots in a hold are undone "
                               "and redone") {
    AnimateSetup s;
    Curve& c = s.curve();
    s.select({1});
    AnimateOn();
    theHold.Begin();
    REQUIRE(c.AnimateSelectedKnots(TRUE, nullptr) == TRUE);
    Control* made = static_cast<Control*>(c.Controller(1));
    Point3 v(0.5f, 0.8f, 0.0f);
    made->SetValue(0, &v, 1, CTRL_ABSOLUTE); // the drag that follows, in the same hold
    theHold.Accept("Move Points");
    AnimateOff();
    REQUIRE(theHold.NumUndo() == 1);

    REQUIRE(theHold.Undo());
    CHECK(c.IsPointAnimated(1) == FALSE);
    CHECK(knotAt(c, 1).pos == Point2(0.5f, 0.4f));
    CHECK(made->NumDependents() == 0); // kept only by the undo step, for redo

    REQUIRE(theHold.Redo());
    REQUIRE(c.Controller(1) == made);
    CHECK(made->NumDependents() == 1);
    CHECK(knotAt(c, 1).pos == Point2(0.5f, 0.8f));

    // Undo, then a new step: the controller has no future and goes with the records.
    REQUIRE(theHold.Undo());
    theHold.Begin();
    c.SetPointCount(3);
    theHold.Accept("other");
    CHECK(theHold.NumRedo() == 0);
    CHECK(c.IsAnimated() == FALSE);
}

TEST_CASE_FIXTURE(CoreFixture, "a cancelled SetPointCount on an animated curve puts the "
                               "controllers back") {
    RefKeeper keep(newCurve());
    Curve& c = *keep.get<Curve>();
    c.SetPointCount(3);
    animate(c, 0, {{0, Point2(0.0f, 0.5f)}});
    animate(c, 2, {{0, Point2(1.0f, 0.1f)}, {60, Point2(1.0f, 0.9f)}});

    theHold.Begin();
    c.SetPointCount(2);
    c.SetPointCount(4); // two resizes in one hold
    theHold.Cancel();

    REQUIRE(c.PointCount() == 3);
    REQUIRE(c.IsPointAnimated(0) == TRUE);
    REQUIRE(c.IsPointAnimated(2) == TRUE);
    CHECK(c.IsPointAnimated(1) == FALSE);
    CHECK(knotAt(c, 0).pos == Point2(0.0f, 0.5f));
    CHECK(knotAt(c, 2, 60).pos == Point2(1.0f, 0.9f));
    CHECK(c.Controller(0)->NumDependents() == 1);
    CHECK(c.Controller(2)->NumDependents() == 1);
    CHECK(theHold.NumUndo() == 0);
}

TEST_CASE_FIXTURE(CoreFixture, "several resizes in one step undo to the first state and redo "
                               "to the last") {
    RefKeeper keep(newCurve());
    Curve& c = *keep.get<Curve>();
    c.SetPointCount(3);
    animate(c, 1, {{0, Point2(0.5f, 0.5f)}, {10, Point2(0.5f, 0.6f)}});

    theHold.Begin();
    c.SetPointCount(5);
    putKnot(c, 2, CurveKnot(Point2(0.5f, 0.25f), Point2(), Point2(), 0x2));
    c.SetPointCount(6);
    theHold.Accept("resizes");

    REQUIRE(theHold.Undo());
    REQUIRE(c.PointCount() == 3);
    CHECK(knotAt(c, 1, 10).pos == Point2(0.5f, 0.6f));
    REQUIRE(theHold.Redo());
    CHECK(c.PointCount() == 6);
    CHECK(c.IsAnimated() == FALSE);
    REQUIRE(theHold.Undo());
    CHECK(c.PointCount() == 3);
    REQUIRE(c.IsPointAnimated(1) == TRUE);
    CHECK(c.Controller(1)->NumDependents() == 1);
}
