#include "curve/curve_undo.h"

#include <algorithm>

// Undo and redo of these records run with the hold restoring, so nothing they do puts
// further records. Indices are checked against the current table: the hold's order makes
// them valid, and a check costs nothing next to a write outside the table.

CurveRestoreBase::CurveRestoreBase(Curve* curve) : curve_(curve) { curve_->HoldPin(); }
CurveRestoreBase::~CurveRestoreBase() { curve_->HoldUnpin(); }

// ---------------------------------------------------------------------------------------

DeformInsertRestore::DeformInsertRestore(Curve* curve, int index, const CurveKnot& knot)
    : CurveRestoreBase(curve), index_(index), knot_(knot) {}

void DeformInsertRestore::Restore(int isUndo) {
    curve_->DeleteKnotEx(index_, TRUE);
    curve_->Refresh(isUndo != 0);
}

void DeformInsertRestore::Redo() {
    curve_->InsertKnotEx(index_, knot_, TRUE);
    curve_->Refresh();
}

// ---------------------------------------------------------------------------------------

namespace {
void pinAll(const std::vector<ReferenceTarget*>& v) {
    for (ReferenceTarget* t : v)
        if (t)
            t->HoldPin();
}
void unpinAll(const std::vector<ReferenceTarget*>& v) {
    for (ReferenceTarget* t : v)
        if (t)
            t->HoldUnpin();
}
} // namespace

DeformDeleteRestore::DeformDeleteRestore(Curve* curve, int beforeCount,
                                         const CurveKnot* beforeKnots,
                                         ReferenceTarget* const* beforeControllers)
    : CurveRestoreBase(curve) {
    if (beforeCount > 0 && beforeKnots) {
        before_.knots.assign(beforeKnots, beforeKnots + beforeCount);
        before_.controllers.assign(beforeCount, nullptr);
        if (beforeControllers)
            std::copy(beforeControllers, beforeControllers + beforeCount,
                      before_.controllers.begin());
    }
    const int n = curve->PointCount();
    if (n > 0 && curve->Knots()) {
        after_.knots.assign(curve->Knots(), curve->Knots() + n);
        for (int i = 0; i < n; ++i)
            after_.controllers.push_back(curve->Controller(i));
    }
    pinAll(before_.controllers);
    pinAll(after_.controllers);
}

DeformDeleteRestore::~DeformDeleteRestore() {
    unpinAll(before_.controllers);
    unpinAll(after_.controllers);
}

// Controller pointers go back as they are: no reference is added or deleted here (the
// reference changes of the deletion have records of their own).
void DeformDeleteRestore::install(const Table& t) {
    curve_->InstallTable(int(t.knots.size()), t.knots.data(), t.controllers.data());
}

void DeformDeleteRestore::Restore(int isUndo) {
    install(before_);
    curve_->Refresh(isUndo != 0);
}

void DeformDeleteRestore::Redo() {
    install(after_);
    curve_->Refresh();
}

// ---------------------------------------------------------------------------------------

DefFitRangeRestore::DefFitRangeRestore(Curve* curve, int tag, float before, float after)
    : CurveRestoreBase(curve), tag_(tag), before_(before), after_(after) {}

// No refresh: the positions the fit changed come back through the point records of the
// same hold.
void DefFitRangeRestore::Restore(int) { curve_->SetFittedWidth(before_); }
void DefFitRangeRestore::Redo() { curve_->SetFittedWidth(after_); }

// ---------------------------------------------------------------------------------------

DeformPtChange::DeformPtChange(Curve* curve, int index, const CurveKnot& before,
                               const CurveKnot& after)
    : CurveRestoreBase(curve), index_(index), before_(before), after_(after) {}

void DeformPtChange::Restore(int) {
    store(before_);
    curve_->Refresh();
}

void DeformPtChange::Redo() {
    store(after_);
    curve_->Refresh();
}

void DeformPtChange::store(const CurveKnot& k) {
    auto lock = curve_->LockPointTable();
    if (index_ >= 0 && index_ < curve_->PointCount() && curve_->Knots())
        curve_->Knots()[index_] = k;
}

// ---------------------------------------------------------------------------------------

DeformPtPosChange::DeformPtPosChange(Curve* curve)
    : CurveRestoreBase(curve), count_(curve->PointCount()) {
    curve->SetOpenPosRecord(this);
    const CurveKnot* k = curve->Knots();
    if (!k)
        count_ = 0;
    for (int i = 0; i < count_; ++i) {
        beforePos_.push_back(k[i].pos);
        beforeIn_.push_back(k[i].inTan);
        beforeOut_.push_back(k[i].outTan);
    }
    afterPos_ = beforePos_;
    afterIn_ = beforeIn_;
    afterOut_ = beforeOut_;
}

DeformPtPosChange::~DeformPtPosChange() {
    // A record discarded without its hold ending (never by theHold) must not leave the
    // curve pointing at it.
    if (curve_->OpenPosRecord() == this)
        curve_->SetOpenPosRecord(nullptr);
}

void DeformPtPosChange::SetAfterPos(int i, const Point2& p) {
    if (i >= 0 && i < count_)
        afterPos_[i] = p;
}
void DeformPtPosChange::SetAfterInTan(int i, const Point2& p) {
    if (i >= 0 && i < count_)
        afterIn_[i] = p;
}
void DeformPtPosChange::SetAfterOutTan(int i, const Point2& p) {
    if (i >= 0 && i < count_)
        afterOut_[i] = p;
}

void DeformPtPosChange::apply(const std::vector<Point2>& pos, const std::vector<Point2>& in,
                              const std::vector<Point2>& out) {
    auto lock = curve_->LockPointTable();
    CurveKnot* k = curve_->Knots();
    const int n = std::min(count_, curve_->PointCount());
    for (int i = 0; k && i < n; ++i) {
        k[i].pos = pos[i];
        k[i].inTan = in[i];
        k[i].outTan = out[i];
    }
}

void DeformPtPosChange::Restore(int isUndo) {
    apply(beforePos_, beforeIn_, beforeOut_);
    // A roll-back (a drag step going back to the press state) starts the after state over:
    // the next step may move other points, and redo must not bring back this step's.
    if (!isUndo) {
        afterPos_ = beforePos_;
        afterIn_ = beforeIn_;
        afterOut_ = beforeOut_;
    }
    curve_->Refresh(isUndo != 0);
}

void DeformPtPosChange::Redo() {
    apply(afterPos_, afterIn_, afterOut_);
    curve_->Refresh();
}

void DeformPtPosChange::EndHold() {
    if (curve_->OpenPosRecord() == this)
        curve_->SetOpenPosRecord(nullptr);
}

// ---------------------------------------------------------------------------------------

DeformSelectRestore::DeformSelectRestore(Curve* curve, const BitArray& before,
                                         const BitArray& after)
    : CurveRestoreBase(curve), before_(before), after_(after) {}

void DeformSelectRestore::apply(const BitArray& sel) {
    {
        auto lock = curve_->LockPointTable();
        CurveKnot* k = curve_->Knots();
        for (int i = 0; k && i < curve_->PointCount(); ++i) {
            if (sel[i])
                k[i].flags |= KNOT_SELECTED;
            else
                k[i].flags &= ~KNOT_SELECTED;
        }
    }
    curve_->Refresh(false);
}

void DeformSelectRestore::Restore(int) { apply(before_); }
void DeformSelectRestore::Redo() { apply(after_); }

// ---------------------------------------------------------------------------------------

DeformCopyCurveRestore::DeformCopyCurveRestore(Curve* curve, Curve* newState)
    : CurveRestoreBase(curve), before_(nullptr, 0), after_(nullptr, 0), unused_(0) {
    before_.Copy(*curve);
    curve->Copy(*newState);
}

// Copies clone point controllers, which allocates; nothing is thrown back to the host, and
// a copy cut short by memory running out leaves what it copied so far.
void DeformCopyCurveRestore::Restore(int) {
    try {
        after_.Copy(*curve_);
        curve_->Copy(before_);
    } catch (...) {
    }
    curve_->Refresh();
}

void DeformCopyCurveRestore::Redo() {
    try {
        curve_->Copy(after_);
    } catch (...) {
    }
    curve_->Refresh();
}
