// Undo records of the control as a whole. Each is put only while theHold is holding and
// keeps a plain pointer to its control, which it pins for its lifetime.
#pragma once

#include "control/curve_control.h"
#include "host/bitarray.h"
#include "host/hold.h"

#include <vector>

/// Releases an undo snapshot made with CopyFrom: its curves are dropped with the hold
/// suspended (so dropping records nothing) and the snapshot is deleted.
void releaseSnapshot(CurveControl* snapshot);

/// Base of the control records: the control pointer and its pin.
class ControlRestoreBase : public RestoreObj {
public:
    explicit ControlRestoreBase(CurveControl* control);
    ~ControlRestoreBase() override;

protected:
    CurveControl* control_;  // pinned
};

/// The curve set, button texts and display mode before and after a change of the set.
class DeleteCurveRestore : public ControlRestoreBase {
public:
    /// Made after the change, from the control and a snapshot taken before it.
    DeleteCurveRestore(CurveControl* control, CurveControl* before, int index = -1);
    ~DeleteCurveRestore() override;
    void Restore(int isUndo) override;
    void Redo() override;
    CStr Description() override { return CStr("Delete curve restore"); }

    struct Set {
        std::vector<Curve*> curves;  // pinned
        std::vector<CStr> texts;     // button texts
        BitArray display;            // display mode
    };

private:
    void install(const Set& set);

    int restored_ = 0;  // 1 once a set was installed
    Set undo_;          // the state before the change
    Set redo_;          // the state after it
};

/// The editor's display bits before and after a change.
class DeformDispModeRestore : public ControlRestoreBase {
public:
    DeformDispModeRestore(CurveControl* control, const BitArray& before, const BitArray& after);
    void Restore(int isUndo) override;
    void Redo() override;
    CStr Description() override { return CStr("Deform curve dispmode restore"); }

private:
    BitArray undo_, redo_;
};
