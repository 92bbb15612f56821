// The undo hold (theHold).
//
// A user action is one hold: Begin, any number of Put while the action changes things,
// then Accept(name) to push one named step onto the undo stack, Cancel to roll the
// changes back, or End to keep the changes without an undo step. Every record gets its
// EndHold notice when its hold ends, however it ends. Drags wrap an inner hold in
// SuperBegin/SuperAccept and call Restore before each step to return to the press state.
#pragma once

#include "host/cstr.h"
#include "host/export.h"
#include "host/heap.h"

/// One undoable change. The hold owns records from Put on and deletes them when they are
/// discarded.
class HOST_API RestoreObj : public VokHeapOperators {
public:
    virtual ~RestoreObj() = default;
    /// Puts back the state before the change. `isUndo` is non-zero for a real undo and 0
    /// when the hold rolls back (Restore, Cancel, SuperCancel).
    virtual void Restore(int isUndo) = 0;
    /// Puts back the state after the change.
    virtual void Redo() = 0;
    virtual int Size() { return 1; }
    /// The hold that holds this record has ended.
    virtual void EndHold() {}
    virtual CStr Description() { return CStr("---"); }
};

class HOST_API Hold {
public:
    Hold();
    ~Hold();
    Hold(const Hold&) = delete;
    Hold& operator=(const Hold&) = delete;

    /// Opens a hold; holds nest, and only the outermost one ends the step.
    void Begin();
    /// Adds a record to the open hold. Without an open hold, or while suspended or
    /// restoring, the record is deleted at once. A null record is ignored.
    void Put(RestoreObj* rec);
    /// Ends the hold and pushes its records as one undo step named `name` (null: an
    /// unnamed step). A hold without records adds no step.
    void Accept(const char* name);
    /// Ends the hold, rolling its changes back.
    void Cancel();
    /// Ends the hold, keeping the changes but discarding the records.
    void End();
    /// Rolls back the open hold's changes and keeps its records (drag steps).
    void Restore();

    /// True while a hold is open, not suspended and not restoring.
    int Holding() const;
    int Restoring() const { return restoring_; }
    void Suspend() { ++suspended_; }
    void Resume() {
        if (suspended_ > 0)
            --suspended_;
    }
    int IsSuspended() const { return suspended_ > 0; }

    /// Groups the steps accepted inside it into one step.
    void SuperBegin();
    void SuperAccept(const char* name);
    void SuperCancel();

    /// The host's Undo and Redo commands: whole named steps, records restored last to
    /// first on undo (with isUndo = 1) and redone first to last.
    bool Undo();
    bool Redo();
    int NumUndo() const;
    int NumRedo() const;
    /// Name of undo step i, 0 being the newest; empty when out of range.
    CStr UndoName(int i) const;
    CStr RedoName(int i) const;
    /// Discards every step (a new scene).
    void Reset();

    /// Reference records of a maker that is going away become no-ops.
    void ForgetMaker(void* maker);

private:
    struct Impl;
    Impl* impl_;    // owned: open records and the two stacks
    int suspended_; // Suspend calls not yet resumed
    int restoring_; // non-zero while records are being restored or redone
};

HOST_API extern Hold theHold;
