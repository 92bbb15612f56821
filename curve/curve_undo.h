// The undo records of a curve. Each is put on theHold by the operation that changes the
// curve (only while the hold is holding) and is owned by the hold from then on.
//
// Every record keeps a plain pointer to its curve and pins it (ReferenceTarget::HoldPin)
// for as long as it lives, so that a curve removed from its control stays alive while an
// undo step may still need it; records that keep point controllers pin those too.
#pragma once

#include "curve/curve.h"
#include "host/bitarray.h"
#include "host/hold.h"

#include <vector>

/// Base of the curve records: the curve pointer and its pin.
class CurveRestoreBase : public RestoreObj {
public:
    explicit CurveRestoreBase(Curve* curve);
    ~CurveRestoreBase() override;
    int Size() override { return 24; }

protected:
    Curve* curve_; // the changed curve, pinned
};

/// A point inserted at `index`.
class DeformInsertRestore : public CurveRestoreBase {
public:
    DeformInsertRestore(Curve* curve, int index, const CurveKnot& knot);
    void Restore(int isUndo) override;
    void Redo() override;
    CStr Description() override { return CStr("Deform insert restore"); }

private:
    int index_;      // where the point was inserted
    CurveKnot knot_; // the inserted point
};

/// A whole point table before and after a deletion.
class DeformDeleteRestore : public CurveRestoreBase {
public:
    /// `before*` is the table before the deletion; the after table is read from the curve.
    DeformDeleteRestore(Curve* curve, int beforeCount, const CurveKnot* beforeKnots,
                        ReferenceTarget* const* beforeControllers);
    ~DeformDeleteRestore() override;
    void Restore(int isUndo) override;
    void Redo() override;
    CStr Description() override { return CStr("Deform delete restore"); }

    struct Table {
        std::vector<CurveKnot> knots;              // copies of the point records
        std::vector<ReferenceTarget*> controllers; // pinned controller pointers
    };

private:
    void install(const Table& t);

    Table before_; // the table before the deletion
    Table after_;  // the table after it
};

/// The fitted width before and after a fit.
class DefFitRangeRestore : public CurveRestoreBase {
public:
    DefFitRangeRestore(Curve* curve, int tag, float before, float after);
    void Restore(int isUndo) override;
    void Redo() override;
    CStr Description() override { return CStr("Deform fit range restore"); }

private:
    [[maybe_unused]] int tag_; // passed by the fit operation
    float before_;             // fitted width before
    float after_;              // fitted width after
};

/// One point stored whole (position, tangents, flags).
class DeformPtChange : public CurveRestoreBase {
public:
    DeformPtChange(Curve* curve, int index, const CurveKnot& before, const CurveKnot& after);
    void Restore(int isUndo) override;
    void Redo() override;
    CStr Description() override { return CStr("Deform curve Pt restore"); }

private:
    void store(const CurveKnot& k);

    int index_;
    CurveKnot before_, after_;
};

/// The positions and tangents of every point, gathered over one hold: the first change
/// of the hold makes it, later changes write their new values into its after arrays.
class DeformPtPosChange : public CurveRestoreBase {
public:
    /// Becomes the curve's open position record and snapshots every point.
    explicit DeformPtPosChange(Curve* curve);
    ~DeformPtPosChange() override;
    void Restore(int isUndo) override;
    void Redo() override;
    void EndHold() override;
    CStr Description() override { return CStr("Deform curve Pt Pos restore"); }

    /// Records the new values of point i (ignored for an index the record does not cover).
    void SetAfterPos(int i, const Point2& p);
    void SetAfterInTan(int i, const Point2& p);
    void SetAfterOutTan(int i, const Point2& p);

private:
    void apply(const std::vector<Point2>& pos, const std::vector<Point2>& in,
               const std::vector<Point2>& out);

    int count_; // point count at creation
    std::vector<Point2> beforePos_, beforeIn_, beforeOut_;
    std::vector<Point2> afterPos_, afterIn_, afterOut_;
};

/// The selection before and after a change. Selection does not change the shape: no
/// cache change, no notification, only a redraw.
class DeformSelectRestore : public CurveRestoreBase {
public:
    DeformSelectRestore(Curve* curve, const BitArray& before, const BitArray& after);
    void Restore(int isUndo) override;
    void Redo() override;
    CStr Description() override { return CStr("Deform curve Select restore"); }

private:
    void apply(const BitArray& sel);

    BitArray before_, after_;
};

/// Whole curve states before and after (SetPointCount). Copies clone point controllers.
class DeformCopyCurveRestore : public CurveRestoreBase {
public:
    /// Copies `curve` into the before state, then copies `newState` into `curve`.
    DeformCopyCurveRestore(Curve* curve, Curve* newState);
    void Restore(int isUndo) override;
    void Redo() override;
    CStr Description() override { return CStr("Deform copy curve restore"); }

private:
    Curve before_;                // the state before
    Curve after_;                 // the state undo replaced, for redo
    [[maybe_unused]] int unused_; // kept 0
};
