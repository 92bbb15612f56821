// The undo hold on its own: holds, super holds, drag restores, suspension, named steps,
// undo and redo, the EndHold notice and the deletion of discarded records.
#include "host_test_objects.h"

#include "host/hold.h"

#include <doctest/doctest.h>

#include <string>
#include <vector>

using hosttest::LoggedRecord;
using Log = std::vector<std::string>;

namespace {

/// Counts the entries of `log` that equal `entry`.
int count(const Log& log, const std::string& entry) {
    int n = 0;
    for (const std::string& e : log)
        n += (e == entry);
    return n;
}

/// A fresh hold whatever the last test left, and a log that outlives every record the
/// test leaves on the undo stack (the hold is reset before the log goes).
struct FreshHold {
    FreshHold() { hosttest::ResetHold(); }
    ~FreshHold() { hosttest::ResetHold(); }
    Log log;
};

} // namespace

TEST_CASE_FIXTURE(FreshHold, "Put outside a hold deletes the record at once") {
    CHECK_FALSE(theHold.Holding());
    theHold.Put(new LoggedRecord(&log, "a"));
    CHECK(log == Log{"~a"});
    theHold.Put(nullptr); // ignored
    CHECK(theHold.NumUndo() == 0);
}

TEST_CASE_FIXTURE(FreshHold, "Accept pushes one named step and sends EndHold to each record") {
    theHold.Begin();
    CHECK(theHold.Holding());
    theHold.Put(new LoggedRecord(&log, "a"));
    theHold.Put(new LoggedRecord(&log, "b"));
    theHold.Accept("Move Points");
    CHECK_FALSE(theHold.Holding());
    CHECK(log == Log{"Ea", "Eb"});
    CHECK(theHold.NumUndo() == 1);
    CHECK(theHold.UndoName(0) == "Move Points");
    CHECK(theHold.UndoName(1) == "");
    CHECK(theHold.UndoName(-1) == "");
    CHECK(theHold.NumRedo() == 0);
}

TEST_CASE_FIXTURE(FreshHold, "Accept of a hold without records adds no step") {
    theHold.Begin();
    theHold.Accept("nothing");
    CHECK(theHold.NumUndo() == 0);
    // Accept, Cancel and End without a hold are harmless.
    theHold.Accept("x");
    theHold.Cancel();
    theHold.End();
    theHold.Restore();
    CHECK(theHold.NumUndo() == 0);
}

TEST_CASE_FIXTURE(FreshHold, "Accept with a null name gives an unnamed step") {
    theHold.Begin();
    theHold.Put(new LoggedRecord(&log, "a"));
    theHold.Accept(nullptr);
    CHECK(theHold.NumUndo() == 1);
    CHECK(theHold.UndoName(0) == "");
}

TEST_CASE_FIXTURE(FreshHold, "Nested Begin: only the outermost Accept ends the step") {
    theHold.Begin();
    theHold.Put(new LoggedRecord(&log, "outer"));
    theHold.Begin();
    theHold.Put(new LoggedRecord(&log, "inner"));
    theHold.Accept("inner step");
    CHECK(theHold.Holding()); // the outer hold is still open
    CHECK(log.empty());       // no EndHold yet
    CHECK(theHold.NumUndo() == 0);
    theHold.Accept("outer step");
    CHECK(log == Log{"Eouter", "Einner"});
    CHECK(theHold.NumUndo() == 1);
    CHECK(theHold.UndoName(0) == "outer step");

    log.clear();
    REQUIRE(theHold.Undo());
    CHECK(log == Log{"Rinner:1", "Router:1"});
}

TEST_CASE_FIXTURE(FreshHold,
                  "Cancel rolls back last to first, ends the hold and deletes the records") {
    theHold.Begin();
    theHold.Put(new LoggedRecord(&log, "a"));
    theHold.Put(new LoggedRecord(&log, "b"));
    theHold.Cancel();
    CHECK(log == Log{"Rb:0", "Ra:0", "Ea", "Eb", "~a", "~b"});
    CHECK_FALSE(theHold.Holding());
    CHECK(theHold.NumUndo() == 0);
}

TEST_CASE_FIXTURE(FreshHold, "End keeps the changes and discards the records") {
    theHold.Begin();
    theHold.Put(new LoggedRecord(&log, "a"));
    theHold.Put(new LoggedRecord(&log, "b"));
    theHold.End();
    CHECK(log == Log{"Ea", "Eb", "~a", "~b"});
    CHECK(theHold.NumUndo() == 0);
    CHECK_FALSE(theHold.Holding());
}

TEST_CASE_FIXTURE(FreshHold, "Restore before each drag step rolls back and keeps the records") {
    theHold.SuperBegin();
    theHold.Begin();
    theHold.Put(new LoggedRecord(&log, "step1"));
    theHold.Restore(); // the next drag step starts from the press state
    CHECK(log == Log{"Rstep1:0"});
    CHECK(theHold.Holding()); // still open after the restore
    CHECK(theHold.Restoring() == 0);
    theHold.Put(new LoggedRecord(&log, "step2"));
    theHold.Restore();
    CHECK(log == Log{"Rstep1:0", "Rstep2:0", "Rstep1:0"});
    theHold.Accept("inner");
    theHold.SuperAccept("Move Points");
    CHECK(theHold.NumUndo() == 1);
    CHECK(theHold.UndoName(0) == "Move Points");
    CHECK(count(log, "Estep1") == 1);
    CHECK(count(log, "Estep2") == 1);
    CHECK(count(log, "~step1") == 0); // kept by the undo step
}

namespace {
/// A record that, when restored, tries to put a record of its own (as a setter called by
/// an undo would): the hold is restoring, so that record is dropped.
class ReentrantRecord : public LoggedRecord {
public:
    using LoggedRecord::LoggedRecord;
    void Restore(int isUndo) override {
        holdingSeen = theHold.Holding();
        restoringSeen = theHold.Restoring();
        theHold.Put(new LoggedRecord(log_, "nested"));
        LoggedRecord::Restore(isUndo);
    }
    int holdingSeen = -1;
    int restoringSeen = -1;
};
} // namespace

TEST_CASE_FIXTURE(FreshHold, "Records put while the hold restores are dropped") {
    theHold.Begin();
    auto* rec = new ReentrantRecord(&log, "r");
    theHold.Put(rec);
    theHold.Restore();
    CHECK(rec->holdingSeen == 0);
    CHECK(rec->restoringSeen != 0);
    CHECK(log == Log{"~nested", "Rr:0"});
    theHold.Accept("x");
    log.clear();
    REQUIRE(theHold.Undo());
    CHECK(log == Log{"~nested", "Rr:1"});
}

TEST_CASE_FIXTURE(FreshHold, "A super hold makes one step of the steps accepted inside it") {
    theHold.SuperBegin();
    for (const char* name : {"a", "b", "c"}) {
        theHold.Begin();
        theHold.Put(new LoggedRecord(&log, name));
        theHold.Accept(name);
        CHECK(theHold.NumUndo() == 0); // held back until the super hold ends
    }
    theHold.SuperAccept("drag");
    CHECK(theHold.NumUndo() == 1);
    CHECK(theHold.UndoName(0) == "drag");
    log.clear();
    REQUIRE(theHold.Undo());
    CHECK(log == Log{"Rc:1", "Rb:1", "Ra:1"});
    log.clear();
    REQUIRE(theHold.Redo());
    CHECK(log == Log{"Da", "Db", "Dc"});
}

TEST_CASE_FIXTURE(FreshHold, "Nested super holds end with the outermost") {
    theHold.SuperBegin();
    theHold.SuperBegin();
    theHold.Begin();
    theHold.Put(new LoggedRecord(&log, "a"));
    theHold.Accept("a");
    theHold.SuperAccept("inner");
    CHECK(theHold.NumUndo() == 0);
    theHold.SuperAccept("outer");
    CHECK(theHold.NumUndo() == 1);
    CHECK(theHold.UndoName(0) == "outer");
    theHold.SuperAccept("none open"); // harmless
    CHECK(theHold.NumUndo() == 1);
}

TEST_CASE_FIXTURE(FreshHold, "SuperCancel rolls back every accepted inner step and deletes it") {
    theHold.SuperBegin();
    theHold.Begin();
    theHold.Put(new LoggedRecord(&log, "a"));
    theHold.Accept("a");
    theHold.Begin();
    theHold.Put(new LoggedRecord(&log, "b"));
    theHold.Accept("b");
    log.clear();
    theHold.SuperCancel();
    CHECK(log == Log{"Rb:0", "Ra:0", "~a", "~b"});
    CHECK(theHold.NumUndo() == 0);
}

TEST_CASE_FIXTURE(FreshHold, "An empty super hold adds no step") {
    theHold.SuperBegin();
    theHold.Begin();
    theHold.Accept("empty");
    theHold.SuperAccept("drag");
    CHECK(theHold.NumUndo() == 0);
}

TEST_CASE_FIXTURE(FreshHold, "Suspend and Resume nest; records put while suspended are dropped") {
    theHold.Begin();
    theHold.Suspend();
    CHECK_FALSE(theHold.Holding());
    CHECK(theHold.IsSuspended());
    theHold.Suspend();
    theHold.Resume();
    CHECK_FALSE(theHold.Holding()); // one Suspend still open
    theHold.Put(new LoggedRecord(&log, "dropped"));
    CHECK(log == Log{"~dropped"});
    theHold.Resume();
    CHECK(theHold.Holding());
    CHECK_FALSE(theHold.IsSuspended());
    theHold.Resume(); // an extra Resume does not underflow
    theHold.Suspend();
    CHECK(theHold.IsSuspended());
    theHold.Resume();
    CHECK(theHold.Holding());
    theHold.Put(new LoggedRecord(&log, "kept"));
    theHold.Accept("x");
    CHECK(theHold.NumUndo() == 1);
}

TEST_CASE_FIXTURE(FreshHold, "Undo and Redo walk several named steps") {
    for (const char* name : {"one", "two", "three"}) {
        theHold.Begin();
        theHold.Put(new LoggedRecord(&log, std::string(name) + "A"));
        theHold.Put(new LoggedRecord(&log, std::string(name) + "B"));
        theHold.Accept(name);
    }
    CHECK(theHold.NumUndo() == 3);
    CHECK(theHold.UndoName(0) == "three");
    CHECK(theHold.UndoName(2) == "one");
    log.clear();

    REQUIRE(theHold.Undo());
    CHECK(log == Log{"RthreeB:1", "RthreeA:1"});
    REQUIRE(theHold.Undo());
    CHECK(theHold.NumUndo() == 1);
    CHECK(theHold.NumRedo() == 2);
    CHECK(theHold.UndoName(0) == "one");
    CHECK(theHold.RedoName(0) == "two");
    CHECK(theHold.RedoName(1) == "three");
    CHECK(theHold.RedoName(2) == "");

    log.clear();
    REQUIRE(theHold.Redo());
    CHECK(log == Log{"DtwoA", "DtwoB"}); // first to last
    CHECK(theHold.UndoName(0) == "two");
    REQUIRE(theHold.Redo());
    REQUIRE_FALSE(theHold.Redo()); // nothing left to redo
    CHECK(theHold.NumUndo() == 3);

    // Undo everything, then one more is refused.
    REQUIRE(theHold.Undo());
    REQUIRE(theHold.Undo());
    REQUIRE(theHold.Undo());
    CHECK_FALSE(theHold.Undo());
    CHECK(theHold.NumRedo() == 3);
}

TEST_CASE_FIXTURE(FreshHold, "A new step discards the redo steps and deletes their records") {
    for (const char* name : {"a", "b"}) {
        theHold.Begin();
        theHold.Put(new LoggedRecord(&log, name));
        theHold.Accept(name);
    }
    REQUIRE(theHold.Undo());
    REQUIRE(theHold.Undo());
    log.clear();
    theHold.Begin();
    theHold.Put(new LoggedRecord(&log, "c"));
    theHold.Accept("c");
    CHECK(count(log, "~a") == 1);
    CHECK(count(log, "~b") == 1);
    CHECK(theHold.NumRedo() == 0);
    CHECK(theHold.NumUndo() == 1);
}

TEST_CASE_FIXTURE(FreshHold, "Undo and Redo are refused while a hold is open") {
    theHold.Begin();
    theHold.Put(new LoggedRecord(&log, "a"));
    theHold.Accept("a");
    theHold.Begin();
    CHECK_FALSE(theHold.Undo());
    theHold.End();
    REQUIRE(theHold.Undo());
    theHold.Begin();
    CHECK_FALSE(theHold.Redo());
    theHold.End();
    CHECK(theHold.Redo());
}

TEST_CASE_FIXTURE(FreshHold, "Reset deletes every record of both stacks") {
    for (const char* name : {"a", "b", "c"}) {
        theHold.Begin();
        theHold.Put(new LoggedRecord(&log, name));
        theHold.Accept(name);
    }
    REQUIRE(theHold.Undo());
    log.clear();
    theHold.Reset();
    CHECK(count(log, "~a") == 1);
    CHECK(count(log, "~b") == 1);
    CHECK(count(log, "~c") == 1);
    CHECK(log.size() == 3);
    CHECK(theHold.NumUndo() == 0);
    CHECK(theHold.NumRedo() == 0);
}

TEST_CASE_FIXTURE(FreshHold, "Reference changes are recorded, undone and redone") {
    hosttest::DeathCounter deaths;
    hosttest::Holder maker(2);
    auto* first = new hosttest::Leaf(&deaths, 1);
    auto* second = new hosttest::Leaf(&deaths, 2);
    maker.ReplaceReference(0, first); // not holding: no record

    theHold.Begin();
    maker.ReplaceReference(0, second);
    maker.ReplaceReference(1, first); // first is referenced again, from slot 1
    theHold.Accept("swap");
    CHECK(deaths.deaths == 0);

    REQUIRE(theHold.Undo());
    CHECK(maker.GetReference(0) == first);
    CHECK(maker.GetReference(1) == nullptr);
    CHECK(first->NumDependents() == 1);
    CHECK(second->NumDependents() == 0);

    REQUIRE(theHold.Redo());
    CHECK(maker.GetReference(0) == second);
    CHECK(maker.GetReference(1) == first);
    CHECK(first->NumDependents() == 1);
    CHECK(second->NumDependents() == 1);

    theHold.Reset();
    CHECK(deaths.deaths == 0); // both still referenced
}

TEST_CASE_FIXTURE(FreshHold, "A reference record of a maker that is gone does nothing") {
    hosttest::DeathCounter deaths;
    auto* maker = new hosttest::Holder(1);
    theHold.Begin();
    maker->ReplaceReference(0, new hosttest::Leaf(&deaths));
    theHold.Accept("make");
    maker->DeleteThis();
    // The leaf lost its maker but the record still pins it.
    CHECK(deaths.deaths == 0);
    REQUIRE(theHold.Undo()); // must not touch the deleted maker
    REQUIRE(theHold.Redo());
    theHold.Reset();
    CHECK(deaths.deaths == 1);
}
