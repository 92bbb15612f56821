// Undo records of the control as a whole. Each is put only while theHold is holding and
// keeps a plain pointer to its control, which it pins for its lifetime.
#pragma once

#include "control/curve_control.h"
#include "host/bitarray.h"
#include "host/hold.h"

#include <vector>

/// Base of the control records: the control pointer and its pin.
class ControlRestoreBase : public RestoreObj {
public:
    explicit ControlRestoreBase(CurveControl* control);
    ~ControlRestoreBase() override;

protected:
    CurveControl* control_; // pinned
};

/// The curve set, button texts and display mode before and after a change of the set.
class DeleteCurveRestore : public ControlRestoreBase {
public:
    struct Set {
        std::vector<Curve*> curves; // pinned
        std::vector<CStr> texts;    // button texts
        BitArray display;           // display mode
    };

    /// The control's curve set as it stands, its curves pinned: taken before a change of
    /// the set, it keeps the curves the change removes alive for the record. Throws
    /// std::bad_alloc when memory runs out, and then pins nothing.
    static Set Capture(CurveControl& control);
    /// Unpins a captured set that no record took (curves no longer referenced go).
    static void Release(Set& set);

    /// Made after the change from the set captured before it; takes over its pins. The
    /// record holds the curve objects themselves, never copies: records of earlier undo
    /// steps point at those objects and must find them in the control after this undo.
    DeleteCurveRestore(CurveControl* control, Set before);
    /// From both sets, captured before and after the change; takes over both pins.
    /// Allocates nothing.
    DeleteCurveRestore(CurveControl* control, Set before, Set after) noexcept;
    ~DeleteCurveRestore() override;
    void Restore(int isUndo) override;
    void Redo() override;
    CStr Description() override { return CStr("Delete curve restore"); }

private:
    void install(const Set& set);
    void installSet(const Set& set);

    int restored_ = 0; // 1 once a set was installed
    Set undo_;         // the state before the change
    Set redo_;         // the state after it
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

/// The view's aspect-lock rescale step (`direction` as the editor's aspect coupling): if
/// the editor is open, its aspect rescale runs; the graph is invalidated, and the ruler
/// too when the rescale applied. Nothing without an open editor.
void RunAspectRescale(CurveControl& control, int direction);

/// Put first in a refit's hold: undo (which runs records last to first) rescales the view
/// after the curves are back.
class AspectLockStartRestore : public ControlRestoreBase {
public:
    explicit AspectLockStartRestore(CurveControl* control, int direction = 0)
        : ControlRestoreBase(control), direction_(direction) {}
    void Restore(int isUndo) override;
    void Redo() override {}

private:
    int direction_; // passed to the rescale step
};

/// Put last in a refit's hold: redo (first to last) rescales the view after the curves
/// changed again.
class AspectLockEndRestore : public ControlRestoreBase {
public:
    explicit AspectLockEndRestore(CurveControl* control, int direction = 0)
        : ControlRestoreBase(control), direction_(direction) {}
    void Restore(int) override {}
    void Redo() override;

private:
    int direction_; // passed to the rescale step
};

/// Put by the move and scale modes when a drag begins. It marks every displayed curve as
/// dragged (Curve::SetDragMark) and, when its hold ends, accepted or cancelled, clears the
/// marks and the A_WORK1 flag of every point controller of the displayed curves. Its undo
/// and redo do nothing: the record exists for that end-of-hold notice.
///
/// The display bits are the editor's (CurveControl::DisplayedCurves). The curves marked
/// here are also cleared at the end, so no mark outlives the hold even if the display
/// changed meanwhile; a record discarded without its hold ending (put while not holding)
/// clears its marks as it goes.
class CurveAFlagHandler : public ControlRestoreBase {
public:
    explicit CurveAFlagHandler(CurveControl* control);
    ~CurveAFlagHandler() override;
    void Restore(int) override {}
    void Redo() override {}
    void EndHold() override;
    CStr Description() override { return CStr("Deform CurveAFlagHandler"); }

private:
    void clearMarks();

    std::vector<Curve*> marked_; // the curves marked on construction, pinned
    bool ended_ = false;         // EndHold ran
};
