// The reference system: references and dependents, notices, automatic deletion of
// orphaned targets, pins held by undo records, cloning through a remap directory.
#include "host_test_objects.h"

#include "host/animatable.h"
#include "host/hold.h"

#include <doctest/doctest.h>

using hosttest::DeathCounter;
using hosttest::Holder;
using hosttest::Leaf;

TEST_CASE("ReplaceReference links maker and target both ways") {
    hosttest::ResetHold();
    DeathCounter deaths;
    auto* maker = new Holder(2);
    auto* a = new Leaf(&deaths);
    auto* b = new Leaf(&deaths);

    CHECK(maker->ReplaceReference(0, a) == REF_SUCCEED);
    CHECK(maker->GetReference(0) == a);
    CHECK(a->NumDependents() == 1);
    CHECK(a->GetDependent(0) == maker);
    CHECK(a->GetDependent(1) == nullptr);
    CHECK(a->GetDependent(-1) == nullptr);

    // Replacing with the same target is a no-op.
    CHECK(maker->ReplaceReference(0, a) == REF_SUCCEED);
    CHECK(a->NumDependents() == 1);

    // A slot outside the maker's references fails and changes nothing.
    CHECK(maker->ReplaceReference(2, b) == REF_FAIL);
    CHECK(maker->ReplaceReference(-1, b) == REF_FAIL);
    CHECK(b->NumDependents() == 0);

    // One target may fill two slots: it counts the maker twice.
    maker->ReplaceReference(1, a);
    CHECK(a->NumDependents() == 2);
    maker->DeleteReference(1);
    CHECK(a->NumDependents() == 1);
    CHECK(deaths.deaths == 0); // still referenced by slot 0

    // Replacing a's only reference deletes it.
    maker->ReplaceReference(0, b);
    CHECK(deaths.deaths == 1);
    CHECK(maker->GetReference(0) == b);
    CHECK(b->NumDependents() == 1);

    maker->DeleteThis();
    CHECK(deaths.deaths == 2); // b went with its last maker
}

TEST_CASE("ReplaceReference without deleteOld keeps the orphaned target") {
    hosttest::ResetHold();
    DeathCounter deaths;
    Holder maker(1);
    auto* a = new Leaf(&deaths);
    maker.ReplaceReference(0, a);
    maker.ReplaceReference(0, nullptr, FALSE);
    CHECK(deaths.deaths == 0);
    CHECK(a->NumDependents() == 0);
    a->MaybeAutoDelete(); // the caller disposes of it
    CHECK(deaths.deaths == 1);
}

TEST_CASE("DeleteReference and DeleteAllRefsFromMe") {
    hosttest::ResetHold();
    DeathCounter deaths;
    Holder maker(3);
    for (int i = 0; i < 3; ++i)
        maker.ReplaceReference(i, new Leaf(&deaths, i));
    CHECK(maker.DeleteReference(1) == REF_SUCCEED);
    CHECK(maker.GetReference(1) == nullptr);
    CHECK(deaths.deaths == 1);
    CHECK(maker.DeleteReference(7) == REF_FAIL);
    maker.DeleteAllRefsFromMe();
    CHECK(deaths.deaths == 3);
    for (int i = 0; i < 3; ++i)
        CHECK(maker.GetReference(i) == nullptr);
}

TEST_CASE("A shared target lives until its last maker lets go") {
    hosttest::ResetHold();
    DeathCounter deaths;
    auto* shared = new Leaf(&deaths);
    auto* m1 = new Holder(1);
    auto* m2 = new Holder(1);
    m1->ReplaceReference(0, shared);
    m2->ReplaceReference(0, shared);
    CHECK(shared->NumDependents() == 2);
    m1->DeleteThis();
    CHECK(deaths.deaths == 0);
    CHECK(shared->NumDependents() == 1);
    m2->DeleteThis();
    CHECK(deaths.deaths == 1);
}

TEST_CASE("Deleting a referenced target clears the makers' slots") {
    hosttest::ResetHold();
    Holder maker(2);
    auto* a = new Leaf;
    maker.ReplaceReference(0, a);
    maker.ReplaceReference(1, a);
    a->DeleteThis();
    CHECK(maker.GetReference(0) == nullptr);
    CHECK(maker.GetReference(1) == nullptr);
    // The maker can take new references afterwards.
    maker.ReplaceReference(0, new Leaf);
    CHECK(maker.GetReference(0) != nullptr);
}

TEST_CASE("NotifyDependents passes interval, target, part and message") {
    hosttest::ResetHold();
    Holder maker(1);
    auto* leaf = new Leaf;
    maker.ReplaceReference(0, leaf);

    CHECK(leaf->NotifyDependents(Interval(5, 10), 3, REFMSG_CHANGE) == REF_SUCCEED);
    REQUIRE(maker.notices.size() == 1);
    const hosttest::Notice& n = maker.notices[0];
    CHECK(n.interval == Interval(5, 10));
    CHECK(n.target == leaf);
    CHECK(n.part == 3);
    CHECK(n.message == REFMSG_CHANGE);
    CHECK(n.propagate == TRUE);

    // An explicit target is passed instead of the sender.
    auto* other = new Leaf;
    leaf->NotifyDependents(FOREVER, 0, REFMSG_SUBANIM_STRUCTURE_CHANGED, NOTIFY_ALL, FALSE, other);
    REQUIRE(maker.notices.size() == 2);
    CHECK(maker.notices[1].target == other);
    CHECK(maker.notices[1].message == REFMSG_SUBANIM_STRUCTURE_CHANGED);
    CHECK(maker.notices[1].propagate == FALSE);
    other->MaybeAutoDelete();
}

TEST_CASE("NotifyDependents travels up the graph unless stopped") {
    hosttest::ResetHold();
    // leaf <- middle <- top: middle is a target with its own dependent.
    Holder top(1);
    auto* middle = new Holder(1);
    auto* leaf = new Leaf;
    top.ReplaceReference(0, middle);
    middle->ReplaceReference(0, leaf);

    SUBCASE("propagates with the sender of each level as target") {
        leaf->NotifyDependents(FOREVER, 1, REFMSG_CHANGE);
        REQUIRE(middle->notices.size() == 1);
        REQUIRE(top.notices.size() == 1);
        CHECK(top.notices[0].target == middle);
        CHECK(top.notices[0].part == 1);
    }
    SUBCASE("a maker may change the part for the next level") {
        middle->rewritePart = true;
        middle->partOut = 9;
        leaf->NotifyDependents(FOREVER, 1, REFMSG_CHANGE);
        REQUIRE(top.notices.size() == 1);
        CHECK(top.notices[0].part == 9);
    }
    SUBCASE("propagate FALSE stops after the first level") {
        leaf->NotifyDependents(FOREVER, 1, REFMSG_CHANGE, NOTIFY_ALL, FALSE);
        CHECK(middle->notices.size() == 1);
        CHECK(top.notices.empty());
    }
    SUBCASE("REF_STOP stops the notice at that maker") {
        middle->answer = REF_STOP;
        leaf->NotifyDependents(FOREVER, 1, REFMSG_CHANGE);
        CHECK(middle->notices.size() == 1);
        CHECK(top.notices.empty());
    }
}

TEST_CASE("NotifyDependents filters by super class unless NOTIFY_ALL") {
    hosttest::ResetHold();
    Holder shapes(1, SHAPE_CLASS_ID);
    Holder others(1, REF_TARGET_CLASS_ID);
    auto* leaf = new Leaf;
    shapes.ReplaceReference(0, leaf);
    others.ReplaceReference(0, leaf);

    leaf->NotifyDependents(FOREVER, 0, REFMSG_CHANGE, SHAPE_CLASS_ID);
    CHECK(shapes.notices.size() == 1);
    CHECK(others.notices.empty());

    leaf->NotifyDependents(FOREVER, 0, REFMSG_CHANGE, NOTIFY_ALL);
    CHECK(shapes.notices.size() == 2);
    CHECK(others.notices.size() == 1);

    leaf->NotifyDependents(FOREVER, 0, REFMSG_CHANGE); // the default lets everyone through
    CHECK(others.notices.size() == 2);
    others.DeleteReference(0);
}

TEST_CASE("A cycle of references does not make a notice run forever") {
    hosttest::ResetHold();
    auto* a = new Holder(1);
    auto* b = new Holder(1);
    a->ReplaceReference(0, b);
    b->ReplaceReference(0, a);
    a->NotifyDependents(FOREVER, 0, REFMSG_CHANGE);
    CHECK(b->notices.size() >= 1);
    CHECK(b->notices.size() < 1000);
    // Break the cycle before deleting.
    b->ReplaceReference(0, nullptr, FALSE);
    a->DeleteThis();
}

TEST_CASE("A pinned target outlives its last reference until the last unpin") {
    hosttest::ResetHold();
    DeathCounter deaths;
    Holder maker(1);
    auto* leaf = new Leaf(&deaths);
    maker.ReplaceReference(0, leaf);
    leaf->HoldPin();
    leaf->HoldPin();
    maker.DeleteReference(0);
    CHECK(deaths.deaths == 0);
    leaf->HoldUnpin();
    CHECK(deaths.deaths == 0);
    leaf->HoldUnpin();
    CHECK(deaths.deaths == 1);
}

TEST_CASE("A pinned target that is referenced again is not deleted by the unpin") {
    hosttest::ResetHold();
    DeathCounter deaths;
    Holder maker(1);
    auto* leaf = new Leaf(&deaths);
    maker.ReplaceReference(0, leaf);
    leaf->HoldPin();
    maker.DeleteReference(0);
    maker.ReplaceReference(0, leaf);
    leaf->HoldUnpin();
    CHECK(deaths.deaths == 0);
    CHECK(maker.GetReference(0) == leaf);
}

TEST_CASE("A pinned target that never had a reference is not deleted by the unpin") {
    DeathCounter deaths;
    auto* leaf = new Leaf(&deaths);
    leaf->HoldPin();
    leaf->HoldUnpin();
    CHECK(deaths.deaths == 0);
    leaf->MaybeAutoDelete();
    CHECK(deaths.deaths == 1);
}

TEST_CASE("A reference dropped while holding stays alive until its record goes") {
    hosttest::ResetHold();
    DeathCounter deaths;
    Holder maker(1);
    auto* leaf = new Leaf(&deaths);
    maker.ReplaceReference(0, leaf);

    theHold.Begin();
    maker.DeleteReference(0);
    CHECK(deaths.deaths == 0); // the record pins it
    theHold.Accept("drop");
    CHECK(deaths.deaths == 0); // the undo step still holds it

    SUBCASE("undo brings it back") {
        REQUIRE(theHold.Undo());
        CHECK(maker.GetReference(0) == leaf);
        CHECK(leaf->NumDependents() == 1);
        REQUIRE(theHold.Redo());
        CHECK(maker.GetReference(0) == nullptr);
        CHECK(deaths.deaths == 0);
        theHold.Reset();
        CHECK(deaths.deaths == 1);
    }
    SUBCASE("discarding the step deletes it") {
        theHold.Reset();
        CHECK(deaths.deaths == 1);
    }
    SUBCASE("cancelling puts it back and keeps it") {
        theHold.Begin();
        maker.ReplaceReference(0, new Leaf(&deaths));
        theHold.Cancel();
        CHECK(maker.GetReference(0) == nullptr);
        CHECK(deaths.deaths == 1); // the new leaf went with the cancelled record
        theHold.Reset();
        CHECK(deaths.deaths == 2);
    }
}

TEST_CASE("A target made inside an undone step is deleted with the step") {
    hosttest::ResetHold();
    std::vector<std::string> log; // outlives the records
    DeathCounter deaths;
    Holder maker(1);
    theHold.Begin();
    maker.ReplaceReference(0, new Leaf(&deaths));
    theHold.Accept("make");
    REQUIRE(theHold.Undo());
    CHECK(maker.GetReference(0) == nullptr);
    CHECK(deaths.deaths == 0); // redo may still need it

    // A new step clears the redo stack: nothing refers to the leaf any more.
    theHold.Begin();
    theHold.Put(new hosttest::LoggedRecord(&log, "x"));
    theHold.Accept("other");
    CHECK(deaths.deaths == 1);
    hosttest::ResetHold();
}

TEST_CASE("RemapDir clones each target once per directory") {
    hosttest::ResetHold();
    DeathCounter deaths;
    auto* shared = new Leaf(&deaths, 42);
    Holder original(2);
    original.ReplaceReference(0, shared);
    original.ReplaceReference(1, shared);

    RemapDir& remap = NewRemapDir();
    auto* copy = static_cast<Holder*>(remap.CloneRef(&original));
    remap.Backpatch();
    REQUIRE(copy != nullptr);
    REQUIRE(copy->GetReference(0) != nullptr);
    CHECK(copy->GetReference(0) != shared);
    CHECK(copy->GetReference(0) == copy->GetReference(1)); // still shared, cloned once
    CHECK(static_cast<Leaf*>(copy->GetReference(0))->value == 42);
    CHECK(remap.FindMapping(shared) == copy->GetReference(0));
    CHECK(remap.FindMapping(&original) == copy);
    CHECK(remap.CloneRef(&original) == copy); // asked again: the same clone
    CHECK(remap.CloneRef(nullptr) == nullptr);
    remap.DeleteThis();

    // A second directory makes new clones.
    RemapDir& again = NewRemapDir();
    RefTargetHandle second = again.CloneRef(shared);
    CHECK(second != copy->GetReference(0));
    again.DeleteThis();
    second->MaybeAutoDelete();

    copy->DeleteThis();
    CHECK(deaths.deaths == 2); // both clones; the original is still referenced
}

TEST_CASE("BaseClone records the pair unless one is already recorded") {
    Leaf from, to, later;
    RemapDir& remap = NewRemapDir();
    CHECK(remap.FindMapping(&from) == nullptr);
    from.BaseClone(&from, &to, remap);
    CHECK(remap.FindMapping(&from) == &to);
    from.BaseClone(&from, &later, remap);
    CHECK(remap.FindMapping(&from) == &to);
    from.BaseClone(nullptr, &later, remap); // nothing to record
    remap.DeleteThis();
}

TEST_CASE("Animatable defaults") {
    Leaf leaf;
    CStr name("x");
    leaf.GetClassName(name);
    CHECK(name == "");
    CHECK(leaf.ClassID() == Class_ID(0, 0));
    CHECK(leaf.GetInterface(0x1234) == nullptr);
    CHECK(leaf.NumSubs() == 0);
    CHECK(leaf.SubAnim(0) == nullptr);
    CHECK(leaf.SubAnimName(0) == "");
    CHECK(leaf.IsAnimated() == FALSE);
    CHECK(leaf.NumRefs() == 0);
    CHECK(leaf.GetReference(0) == nullptr);
    CHECK(leaf.RemapRefOnLoad(4) == 4);
    RemapDir& remap = NewRemapDir();
    CHECK(static_cast<ReferenceTarget&>(leaf).ReferenceTarget::Clone(remap) == nullptr);
    remap.DeleteThis();

    leaf.SetAFlag(A_WORK1 | A_WORK3);
    CHECK(leaf.TestAFlag(A_WORK1));
    CHECK(leaf.TestAFlag(A_WORK3));
    CHECK_FALSE(leaf.TestAFlag(A_WORK2));
    leaf.ClearAFlag(A_WORK1);
    CHECK_FALSE(leaf.TestAFlag(A_WORK1));

    CHECK(Class_ID() == Class_ID(0xFFFFFFFF, 0xFFFFFFFF));
    CHECK(Class_ID(1, 2) != Class_ID(1, 3));
    CHECK(Class_ID(1, 2).PartA() == 1);
    CHECK(Class_ID(1, 2).PartB() == 2);
}

TEST_CASE("Redo of a change made without deleteOld keeps the old target") {
    hosttest::ResetHold();
    DeathCounter deaths;
    Holder maker(1);
    auto* kept = new Leaf(&deaths);
    maker.ReplaceReference(0, kept);
    theHold.Begin();
    maker.ReplaceReference(0, nullptr, FALSE); // the caller keeps `kept`
    theHold.Accept("detach");
    REQUIRE(theHold.Undo());
    CHECK(maker.GetReference(0) == kept);
    REQUIRE(theHold.Redo());
    CHECK(maker.GetReference(0) == nullptr);
    theHold.Reset();
    CHECK(deaths.deaths == 0); // still the caller's
    kept->MaybeAutoDelete();
    CHECK(deaths.deaths == 1);
}
