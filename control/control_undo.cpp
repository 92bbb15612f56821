#include "control/control_undo.h"

#include <algorithm>

ControlRestoreBase::ControlRestoreBase(CurveControl* control) : control_(control) {
    control_->HoldPin();
}
ControlRestoreBase::~ControlRestoreBase() { control_->HoldUnpin(); }

// ---------------------------------------------------------------------------------------
// DeleteCurveRestore
//
// Both sets hold the control's own curve objects: the undo set those of before the change
// (captured, pinned, by the change itself), the redo set those of after it. Installing a
// set makes its curves the control's references again.

// Everything that allocates comes before the first pin, so that a failure pins nothing.
DeleteCurveRestore::Set DeleteCurveRestore::Capture(CurveControl& c) {
    Set set;
    const int n = c.GetCurveCount();
    set.curves.reserve(std::size_t(n));
    set.texts.reserve(std::size_t(n));
    for (int i = 0; i < n; ++i)
        set.texts.emplace_back(c.CurveButtonText(i));
    set.display = c.GetShownCurves();
    for (int i = 0; i < n; ++i) {
        Curve* curve = c.GetCurveObject(i);
        set.curves.push_back(curve);
        if (curve)
            curve->HoldPin();
    }
    return set;
}

void DeleteCurveRestore::Release(Set& set) {
    for (Curve* c : set.curves)
        if (c)
            c->HoldUnpin();
    set.curves.clear();
}

DeleteCurveRestore::DeleteCurveRestore(CurveControl* control, Set before)
    : ControlRestoreBase(control), undo_(std::move(before)), redo_(Capture(*control)) {}

DeleteCurveRestore::DeleteCurveRestore(CurveControl* control, Set before, Set after) noexcept
    : ControlRestoreBase(control), undo_(std::move(before)), redo_(std::move(after)) {}

DeleteCurveRestore::~DeleteCurveRestore() {
    Release(undo_);
    Release(redo_);
}

// Undo and redo run for the host: nothing may be thrown back to it. Should memory run out,
// the set comes back as far as it can (a table that cannot grow holds fewer curves, a text
// that cannot be made is left out).
void DeleteCurveRestore::install(const Set& set) {
    try {
        installSet(set);
    } catch (...) {
    }
}

void DeleteCurveRestore::installSet(const Set& set) {
    CurveControl& c = *control_;
    // The old curves lose their references; records (this one included) keep them alive.
    for (int i = c.GetCurveCount() - 1; i >= 0; --i)
        c.DeleteReference(i);
    int n = int(set.curves.size());
    if (!c.curves_.SetCount(n))
        n = c.curves_.Count();
    for (int i = 0; i < n; ++i)
        c.curves_[i] = nullptr;
    for (int i = 0; i < n; ++i) {
        if (!set.curves[i])
            continue;
        set.curves[i]->SetOwner(&c);
        c.ReplaceReference(i, set.curves[i]);
    }
    restored_ = 1;
    c.clearButtonTexts();
    for (const CStr& t : set.texts)
        c.appendButtonText(t.data());
    if (c.IsEditorOpen())
        c.Editor()->RebuildCurveButtons();
    c.SetShownCurves(set.display);
}

void DeleteCurveRestore::Restore(int) { install(undo_); }
void DeleteCurveRestore::Redo() { install(redo_); }

// ---------------------------------------------------------------------------------------
// DeformDispModeRestore

DeformDispModeRestore::DeformDispModeRestore(CurveControl* control, const BitArray& before,
                                             const BitArray& after)
    : ControlRestoreBase(control), undo_(before), redo_(after) {}

void DeformDispModeRestore::Restore(int) {
    control_->SetShownCurves(undo_);
    control_->Redraw();
}

void DeformDispModeRestore::Redo() {
    control_->SetShownCurves(redo_);
    control_->Redraw();
}

// ---------------------------------------------------------------------------------------
// Aspect lock pair

void RunAspectRescale(CurveControl& control, int direction) {
    if (!control.IsEditorOpen())
        return;
    IEditorView* editor = control.Editor();
    if (editor->AspectRescale(direction))
        editor->InvalidateRuler();
    editor->InvalidateGraph();
}

void AspectLockStartRestore::Restore(int) { RunAspectRescale(*control_, direction_); }
void AspectLockEndRestore::Redo() { RunAspectRescale(*control_, direction_); }

// ---------------------------------------------------------------------------------------
// CurveAFlagHandler

CurveAFlagHandler::CurveAFlagHandler(CurveControl* control) : ControlRestoreBase(control) {
    const BitArray shown = control->DisplayedCurves();
    for (int i = 0; i < control->GetCurveCount(); ++i) {
        Curve* c = control->GetCurveObject(i);
        if (!c || !shown[i])
            continue;
        c->SetDragMark(true);
        c->HoldPin();
        marked_.push_back(c);
    }
}

CurveAFlagHandler::~CurveAFlagHandler() {
    // After EndHold the marks may belong to a later drag: only a record that never saw
    // its hold end takes its own marks away.
    if (!ended_)
        clearMarks();
    for (Curve* c : marked_)
        c->HoldUnpin();
}

void CurveAFlagHandler::EndHold() {
    ended_ = true;
    clearMarks();
}

void CurveAFlagHandler::clearMarks() {
    const BitArray shown = control_->DisplayedCurves();
    for (int i = 0; i < control_->GetCurveCount(); ++i) {
        Curve* c = control_->GetCurveObject(i);
        if (!c || !shown[i])
            continue;
        for (int j = 0; j < c->PointCount(); ++j)
            if (ReferenceTarget* ctrl = c->Controller(j))
                ctrl->ClearAFlag(A_WORK1);
        c->SetDragMark(false);
    }
    for (Curve* c : marked_)
        c->SetDragMark(false);
}
