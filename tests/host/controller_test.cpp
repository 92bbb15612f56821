// The Point3 controller, animate mode, the core interface and the class directory.
#include "host_test_objects.h"

#include "host/class_desc.h"
#include "host/controller.h"
#include "host/core_interface.h"
#include "host/hold.h"

#include <doctest/doctest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace {

/// Animate mode off, no suspension, a fresh hold, before and after each test.
struct ControllerFixture {
    ControllerFixture() { reset(); }
    ~ControllerFixture() { reset(); }
    static void reset() {
        AnimateOff();
        // Unbalanced suspensions of a failed test must not leak into the next one.
        for (int i = 0; i < 16; ++i)
            ResumeAnimate();
        hosttest::ResetHold();
    }
};

Point3 valueAt(Control* c, TimeValue t, Interval* validOut = nullptr) {
    Interval valid = FOREVER;
    Point3 v;
    c->GetValue(t, &v, valid, CTRL_ABSOLUTE);
    if (validOut)
        *validOut = valid;
    return v;
}

void setValue(Control* c, TimeValue t, const Point3& p) {
    Point3 v = p;
    c->SetValue(t, &v, 1, CTRL_ABSOLUTE);
}

/// Owns one controller through a reference, as a curve point does.
struct OwnedController {
    OwnedController() : holder(1) {
        ctrl = NewDefaultPoint3Controller();
        holder.ReplaceReference(0, ctrl);
    }
    hosttest::Holder holder;
    Control* ctrl;
};

} // namespace

TEST_CASE_FIXTURE(ControllerFixture, "Animating follows animate mode and nested suspension") {
    CHECK(Animating() == FALSE);
    AnimateOn();
    CHECK(Animating() == TRUE);
    SuspendAnimate();
    CHECK(Animating() == FALSE);
    SuspendAnimate();
    ResumeAnimate();
    CHECK(Animating() == FALSE); // one suspension still open
    ResumeAnimate();
    CHECK(Animating() == TRUE);
    ResumeAnimate(); // an extra resume does not underflow
    SuspendAnimate();
    CHECK(Animating() == FALSE);
    ResumeAnimate();
    AnimateOff();
    CHECK(Animating() == FALSE);
}

TEST_CASE_FIXTURE(ControllerFixture, "A Point3 controller without keys holds one constant value") {
    OwnedController o;
    Control* c = o.ctrl;
    CHECK(c->SuperClassID() == CTRL_POINT3_CLASS_ID);
    CHECK(c->NumKeys() == 0);
    CHECK(c->IsAnimated() == FALSE);
    Interval valid;
    CHECK(valueAt(c, 0, &valid) == Point3());
    CHECK(valid == FOREVER);

    setValue(c, 50, Point3(1.0f, 2.0f, 3.0f));
    CHECK(c->NumKeys() == 0); // outside animate mode no key is made
    CHECK(valueAt(c, -1000) == Point3(1.0f, 2.0f, 3.0f));
    CHECK(valueAt(c, 1000, &valid) == Point3(1.0f, 2.0f, 3.0f));
    CHECK(valid == FOREVER);

    // Relative values add to the current one, both ways.
    Point3 d(1.0f, 1.0f, 1.0f);
    c->SetValue(0, &d, 1, CTRL_RELATIVE);
    CHECK(valueAt(c, 0) == Point3(2.0f, 3.0f, 4.0f));
    Interval ignored = FOREVER;
    Point3 acc(10.0f, 0.0f, 0.0f);
    c->GetValue(0, &acc, ignored, CTRL_RELATIVE);
    CHECK(acc == Point3(12.0f, 3.0f, 4.0f));
}

TEST_CASE_FIXTURE(ControllerFixture, "Animate mode creates keys and sets existing ones") {
    OwnedController o;
    Control* c = o.ctrl;
    AnimateOn();
    setValue(c, 100, Point3(10.0f, 0.0f, 0.0f));
    setValue(c, 0, Point3(0.0f, 0.0f, 0.0f));
    setValue(c, 200, Point3(20.0f, 40.0f, 0.0f));
    CHECK(c->NumKeys() == 3);
    CHECK(c->IsAnimated() == TRUE);
    // Keys are kept in time order whatever order they were made in.
    CHECK(c->GetKeyTime(0) == 0);
    CHECK(c->GetKeyTime(1) == 100);
    CHECK(c->GetKeyTime(2) == 200);
    CHECK(c->GetKeyTime(3) == 0); // out of range
    CHECK(c->GetKeyTime(-1) == 0);

    setValue(c, 100, Point3(15.0f, 0.0f, 0.0f)); // the key at 100 is set, not added
    CHECK(c->NumKeys() == 3);
    CHECK(valueAt(c, 100) == Point3(15.0f, 0.0f, 0.0f));
}

TEST_CASE_FIXTURE(ControllerFixture,
                  "Keyed values are linear between keys and narrow the validity") {
    OwnedController o;
    Control* c = o.ctrl;
    AnimateOn();
    setValue(c, 0, Point3(0.0f, 0.0f, 0.0f));
    setValue(c, 100, Point3(10.0f, 20.0f, 0.0f));
    AnimateOff();

    Interval valid;
    CHECK(valueAt(c, 50, &valid) == Point3(5.0f, 10.0f, 0.0f));
    CHECK(valid == Interval(50, 50)); // changes at every tick between keys

    CHECK(valueAt(c, -30, &valid) == Point3(0.0f, 0.0f, 0.0f));
    CHECK(valid == Interval(TIME_NegInfinity, 0)); // constant up to the first key
    CHECK(valueAt(c, 0, &valid) == Point3(0.0f, 0.0f, 0.0f));
    CHECK(valid == Interval(TIME_NegInfinity, 0));

    CHECK(valueAt(c, 500, &valid) == Point3(10.0f, 20.0f, 0.0f));
    CHECK(valid == Interval(100, TIME_PosInfinity)); // constant after the last key

    // The validity given in is narrowed, never widened.
    Interval narrow(-10, -5);
    Point3 v;
    c->GetValue(-7, &v, narrow, CTRL_ABSOLUTE);
    CHECK(narrow == Interval(-10, -5));
    Interval other(90, 300);
    c->GetValue(200, &v, other, CTRL_ABSOLUTE);
    CHECK(other == Interval(100, 300));
}

TEST_CASE_FIXTURE(ControllerFixture, "A single key holds its value at every time") {
    OwnedController o;
    AnimateOn();
    setValue(o.ctrl, 40, Point3(1.0f, 1.0f, 0.0f));
    AnimateOff();
    Interval valid;
    CHECK(valueAt(o.ctrl, -100, &valid) == Point3(1.0f, 1.0f, 0.0f));
    CHECK(valueAt(o.ctrl, 100) == Point3(1.0f, 1.0f, 0.0f));
}

TEST_CASE_FIXTURE(ControllerFixture,
                  "Outside animate mode a set at a key time edits that key only") {
    OwnedController o;
    Control* c = o.ctrl;
    AnimateOn();
    setValue(c, 0, Point3(0.0f, 0.0f, 0.0f));
    setValue(c, 100, Point3(10.0f, 10.0f, 0.0f));
    AnimateOff();

    setValue(c, 100, Point3(30.0f, 10.0f, 0.0f));
    CHECK(c->NumKeys() == 2);
    CHECK(valueAt(c, 100) == Point3(30.0f, 10.0f, 0.0f));
    CHECK(valueAt(c, 0) == Point3(0.0f, 0.0f, 0.0f)); // the other key is untouched
}

TEST_CASE_FIXTURE(ControllerFixture, "Outside animate mode a set between keys shifts every key") {
    OwnedController o;
    Control* c = o.ctrl;
    AnimateOn();
    setValue(c, 0, Point3(0.0f, 0.0f, 0.0f));
    setValue(c, 100, Point3(10.0f, 10.0f, 0.0f));
    AnimateOff();

    // At 50 the value is (5, 5, 0); setting (7, 5, 0) moves every key by (2, 0, 0).
    setValue(c, 50, Point3(7.0f, 5.0f, 0.0f));
    CHECK(c->NumKeys() == 2);
    CHECK(valueAt(c, 0) == Point3(2.0f, 0.0f, 0.0f));
    CHECK(valueAt(c, 100) == Point3(12.0f, 10.0f, 0.0f));
    CHECK(valueAt(c, 50) == Point3(7.0f, 5.0f, 0.0f));
}

TEST_CASE_FIXTURE(ControllerFixture, "A set tells the controller's dependents") {
    OwnedController o;
    setValue(o.ctrl, 0, Point3(1.0f, 0.0f, 0.0f));
    REQUIRE(o.holder.notices.size() == 1);
    CHECK(o.holder.notices[0].message == REFMSG_CHANGE);
    CHECK(o.holder.notices[0].target == o.ctrl);
}

TEST_CASE_FIXTURE(ControllerFixture, "A set is undone and redone as one record") {
    OwnedController o;
    Control* c = o.ctrl;
    AnimateOn();
    setValue(c, 0, Point3(1.0f, 0.0f, 0.0f));

    theHold.Begin();
    setValue(c, 0, Point3(2.0f, 0.0f, 0.0f));  // edits the key
    setValue(c, 80, Point3(5.0f, 0.0f, 0.0f)); // adds one
    theHold.Accept("keys");
    AnimateOff();
    CHECK(c->NumKeys() == 2);

    o.holder.notices.clear();
    REQUIRE(theHold.Undo());
    CHECK(c->NumKeys() == 1);
    CHECK(valueAt(c, 0) == Point3(1.0f, 0.0f, 0.0f));
    CHECK_FALSE(o.holder.notices.empty()); // undo tells the dependents too

    REQUIRE(theHold.Redo());
    CHECK(c->NumKeys() == 2);
    CHECK(valueAt(c, 0) == Point3(2.0f, 0.0f, 0.0f));
    CHECK(valueAt(c, 80) == Point3(5.0f, 0.0f, 0.0f));

    SUBCASE("cancel rolls a set back") {
        theHold.Begin();
        setValue(c, 0, Point3(9.0f, 9.0f, 9.0f));
        theHold.Cancel();
        CHECK(valueAt(c, 0) == Point3(2.0f, 0.0f, 0.0f));
    }
}

TEST_CASE_FIXTURE(ControllerFixture, "A cloned controller has its own keys") {
    OwnedController o;
    AnimateOn();
    setValue(o.ctrl, 0, Point3(1.0f, 0.0f, 0.0f));
    setValue(o.ctrl, 10, Point3(2.0f, 0.0f, 0.0f));
    RemapDir& remap = NewRemapDir();
    auto* copy = static_cast<Control*>(remap.CloneRef(o.ctrl));
    remap.DeleteThis();
    REQUIRE(copy != nullptr);
    CHECK(copy != o.ctrl);
    CHECK(copy->NumKeys() == 2);
    setValue(copy, 10, Point3(7.0f, 0.0f, 0.0f));
    CHECK(valueAt(o.ctrl, 10) == Point3(2.0f, 0.0f, 0.0f));
    copy->MaybeAutoDelete();
}

// ---------------------------------------------------------------------------------------
// Core interface

namespace {
struct TimeRecorder : TimeChangeCallback {
    std::vector<TimeValue> times;
    Interface* unregisterFrom = nullptr; // unregisters itself on the first call
    void TimeChanged(TimeValue t) override {
        times.push_back(t);
        if (unregisterFrom)
            unregisterFrom->UnRegisterTimeChangeCallback(this);
    }
};
} // namespace

TEST_CASE("GetCOREInterface: one interface, its time and the time-change callbacks") {
    Interface* ip = GetCOREInterface();
    REQUIRE(ip != nullptr);
    CHECK(GetCOREInterface() == ip);
    ip->SetTime(0);
    CHECK(ip->GetTime() == 0);

    TimeRecorder a, b;
    ip->RegisterTimeChangeCallback(&a);
    ip->RegisterTimeChangeCallback(&a); // registered once only
    ip->RegisterTimeChangeCallback(&b);
    ip->RegisterTimeChangeCallback(nullptr);
    ip->SetTime(160);
    CHECK(ip->GetTime() == 160);
    CHECK(a.times == std::vector<TimeValue>{160});
    CHECK(b.times == std::vector<TimeValue>{160});

    ip->SetTime(160); // no change, no calls
    CHECK(a.times.size() == 1);

    ip->UnRegisterTimeChangeCallback(&b);
    ip->SetTime(320, FALSE);
    CHECK(a.times == std::vector<TimeValue>{160, 320});
    CHECK(b.times.size() == 1);

    // A callback may unregister itself while it is being called.
    a.unregisterFrom = ip;
    ip->SetTime(480);
    ip->SetTime(0);
    CHECK(a.times == std::vector<TimeValue>{160, 320, 480});
    CHECK(ip->GetTime() == 0);
}

TEST_CASE("GetCOREInterface: main window, redraw and command-mode requests") {
    Interface* ip = GetCOREInterface();
    HWND before = ip->GetMAXHWnd();
    HWND fake = reinterpret_cast<HWND>(static_cast<uintptr_t>(0x1234));
    ip->SetMAXHWnd(fake);
    CHECK(ip->GetMAXHWnd() == fake);
    ip->SetMAXHWnd(before);

    const int redraws = ip->RedrawRequests();
    ip->RedrawViews(ip->GetTime());
    ip->RedrawViews(10);
    CHECK(ip->RedrawRequests() == redraws + 2);

    const int pops = ip->CommandModePops();
    ip->PopCommandMode();
    CHECK(ip->CommandModePops() == pops + 1);
}

// ---------------------------------------------------------------------------------------
// Class directory

namespace {
class TestDesc : public ClassDesc {
public:
    TestDesc(SClass_ID sclass, Class_ID cid) : sclass_(sclass), cid_(cid) {}
    int IsPublic() override { return 1; }
    void* Create(BOOL = FALSE) override { return new hosttest::Leaf; }
    const char* ClassName() override { return "Test"; }
    SClass_ID SuperClassID() override { return sclass_; }
    Class_ID ClassID() override { return cid_; }
    const char* Category() override { return "Tests"; }

private:
    SClass_ID sclass_;
    Class_ID cid_;
};
} // namespace

TEST_CASE("ClassDirectory: AddClass, FindClass, RemoveClass") {
    ClassDirectory& dir = ClassDirectory::Get();
    CHECK(&ClassDirectory::Get() == &dir);
    const int before = dir.Count();

    TestDesc a(REF_TARGET_CLASS_ID, Class_ID(0x100, 0x200));
    TestDesc b(SHAPE_CLASS_ID, Class_ID(0x100, 0x200)); // same id, other super class
    dir.AddClass(&a);
    dir.AddClass(&a); // added once only
    dir.AddClass(&b);
    dir.AddClass(nullptr);
    CHECK(dir.Count() == before + 2);
    CHECK(dir.ClassAt(before) == &a);
    CHECK(dir.ClassAt(before + 1) == &b);
    CHECK(dir.ClassAt(before + 2) == nullptr);
    CHECK(dir.ClassAt(-1) == nullptr);

    CHECK(dir.FindClass(REF_TARGET_CLASS_ID, Class_ID(0x100, 0x200)) == &a);
    CHECK(dir.FindClass(SHAPE_CLASS_ID, Class_ID(0x100, 0x200)) == &b);
    CHECK(dir.FindClass(REF_TARGET_CLASS_ID, Class_ID(0x100, 0x201)) == nullptr);
    CHECK(dir.FindClass(CTRL_POINT3_CLASS_ID, Class_ID(0x100, 0x200)) == nullptr);

    dir.RemoveClass(&a);
    CHECK(dir.FindClass(REF_TARGET_CLASS_ID, Class_ID(0x100, 0x200)) == nullptr);
    dir.RemoveClass(&b);
    CHECK(dir.Count() == before);
}

TEST_CASE("ClassDirectory: modules that cannot be loaded are refused") {
    ClassDirectory& dir = ClassDirectory::Get();
    const int plugins = dir.NumPlugins();
    CHECK(dir.LoadPlugin(nullptr) == -1);
    CHECK(dir.LoadPlugin("no-such-module-anywhere.dlx") == -1);
    CHECK(dir.NumPlugins() == plugins);
    CHECK(dir.PluginDescription(plugins) == nullptr);
    CHECK(dir.PluginDescription(-1) == nullptr);
}

TEST_CASE("ClassDesc: interfaces published by name; defaults of the optional slots") {
    TestDesc d(REF_TARGET_CLASS_ID, Class_ID(1, 2));
    int first = 0, second = 0;
    CHECK(d.GetInterface("first") == nullptr);
    d.AddInterface("first", &first);
    d.AddInterface("second", &second);
    d.AddInterface(nullptr, &first); // ignored
    CHECK(d.GetInterface("first") == &first);
    CHECK(d.GetInterface("second") == &second);
    CHECK(d.GetInterface("third") == nullptr);
    CHECK(d.GetInterface(nullptr) == nullptr);

    // A name longer than the table's slot is kept truncated, not written past it.
    std::string longName(100, 'n');
    d.AddInterface(longName.c_str(), &second);
    CHECK(d.GetInterface(longName.substr(0, 63).c_str()) == &second);

    CHECK(d.BeginCreate(nullptr) == 0);
    CHECK(d.EndCreate(nullptr) == 0);
    CHECK(d.OkToCreate(nullptr) == 1);
    CHECK(d.GetRsrcString(1) == nullptr);

    auto* made = static_cast<hosttest::Leaf*>(d.Create());
    REQUIRE(made != nullptr);
    made->MaybeAutoDelete();

    // Descriptors are host-heap objects the host may delete.
    ClassDesc* heapDesc = new TestDesc(REF_TARGET_CLASS_ID, Class_ID(3, 4));
    heapDesc->AddInterface("x", &first);
    delete heapDesc;
}
