#include "control/control_undo.h"

ControlRestoreBase::ControlRestoreBase(CurveControl* control) : control_(control) {
    control_->HoldPin();
}
ControlRestoreBase::~ControlRestoreBase() { control_->HoldUnpin(); }

// ---------------------------------------------------------------------------------------
// DeleteCurveRestore
//
// The redo set holds the control's own curves after the change and the undo set the
// snapshot's copies from before it; the record pins both, and installing a set makes its
// curves the control's references again.

namespace {
DeleteCurveRestore::Set takeSet(CurveControl& c) {
    DeleteCurveRestore::Set set;
    for (int i = 0; i < c.GetCurveCount(); ++i) {
        Curve* curve = c.GetCurveObject(i);
        set.curves.push_back(curve);
        if (curve) curve->HoldPin();
        set.texts.emplace_back(c.CurveButtonText(i));
    }
    set.display = c.GetShownCurves();
    return set;
}
void unpinSet(DeleteCurveRestore::Set& set) {
    for (Curve* c : set.curves)
        if (c) c->HoldUnpin();
    set.curves.clear();
}
}  // namespace

DeleteCurveRestore::DeleteCurveRestore(CurveControl* control, CurveControl* before, int)
    : ControlRestoreBase(control) {
    redo_ = takeSet(*control);
    undo_ = takeSet(*before);
}

DeleteCurveRestore::~DeleteCurveRestore() {
    unpinSet(undo_);
    unpinSet(redo_);
}

void DeleteCurveRestore::install(const Set& set) {
    CurveControl& c = *control_;
    // The old curves lose their references; records (this one included) keep them alive.
    for (int i = c.GetCurveCount() - 1; i >= 0; --i) c.DeleteReference(i);
    const int n = int(set.curves.size());
    c.curves_.SetCount(n);
    for (int i = 0; i < n; ++i) c.curves_[i] = nullptr;
    for (int i = 0; i < n; ++i) {
        if (!set.curves[i]) continue;
        set.curves[i]->SetOwner(&c);
        c.ReplaceReference(i, set.curves[i]);
    }
    restored_ = 1;
    c.clearButtonTexts();
    for (const CStr& t : set.texts) c.appendButtonText(t.data());
    if (c.IsEditorOpen()) c.Editor()->RebuildCurveButtons();
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
