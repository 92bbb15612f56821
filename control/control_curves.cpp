// The curve set of a CurveControl: growing and shrinking it, deleting one curve, and
// copying a whole control (CopyFrom).
#include "control/control_undo.h"
#include "control/curve_control.h"
#include "host/hold.h"
#include "platform/res_string.h"

#include <memory>
#include <new>
#include <optional>
#include <utility>

namespace {

const char* defaultButtonText() {
    const char* t = GetResString(IDS_VISIBILITY_TOGGLE);
    return t ? t : "";
}

/// Puts the undo record of a change of the curve set, made from the set captured before
/// it, when the hold is holding; otherwise lets the captured curves go. A record the heap
/// cannot hold is not put (its captured curves go), as a failed record allocation passes
/// null to the hold: the change itself stands.
void putCurveSetRecord(CurveControl* control, std::optional<DeleteCurveRestore::Set>& before) {
    if (!before)
        return;
    if (!theHold.Holding()) {
        DeleteCurveRestore::Release(*before);
        return;
    }
    std::optional<DeleteCurveRestore::Set> after;
    try {
        after = DeleteCurveRestore::Capture(*control);
    } catch (...) {
        DeleteCurveRestore::Release(*before);
        return;
    }
    auto* record =
        new (std::nothrow) DeleteCurveRestore(control, std::move(*before), std::move(*after));
    if (!record) {
        DeleteCurveRestore::Release(*before);
        DeleteCurveRestore::Release(*after);
        return;
    }
    theHold.Put(record);
}

} // namespace

void CurveControl::clearButtonTexts() {
    for (int i = 0; i < curveButtonTexts_.Count(); ++i)
        delete curveButtonTexts_[i];
    curveButtonTexts_.Resize(0);
}

bool CurveControl::appendButtonText(const char* text) {
    std::unique_ptr<CStr> s(new CStr(text));
    CStr* owned = s.get();
    if (curveButtonTexts_.Append(1, &owned) < 0)
        return false;
    s.release(); // the table owns it now
    return true;
}

bool CurveControl::setCurveTableSize(int n) { return curves_.SetCount(n); }

void CurveControl::truncateCurveSet(int count) {
    for (int i = curves_.Count() - 1; i >= count; --i)
        DeleteReference(i);
    curves_.SetCount(count); // shrinking needs no memory
    for (int i = curveButtonTexts_.Count() - 1; i >= count; --i)
        delete curveButtonTexts_[i];
    curveButtonTexts_.SetCount(count);
}

// Each new curve is the control's reference from the moment it exists, so that a failure
// further on finds it where truncateCurveSet takes it away again.
bool CurveControl::growCurveSet(int count, int n) {
    if (!setCurveTableSize(n))
        return false;
    try {
        for (int i = count; i < n; ++i) {
            curves_[i] = nullptr;
            Curve* c = new Curve(this, 0);
            ReplaceReference(i, c);
            c->SetPointCount(2);
            CurveKnot* k = c->Knots();
            if (!k || c->PointCount() != 2)
                throw std::bad_alloc(); // the curve could not get its points
            k[0] =
                CurveKnot(Point2(xRange_.x, 0.0f), Point2(), Point2(), KNOT_ENDPOINT | KNOT_CORNER);
            k[1] =
                CurveKnot(Point2(xRange_.y, 0.0f), Point2(), Point2(), KNOT_ENDPOINT | KNOT_CORNER);
            c->InvalidateCache();
            c->SetPen(0, 0, 0);
            c->SetDisabledPen(0xC0C0C0, 0, 0);
            if (!appendButtonText(defaultButtonText()))
                throw std::bad_alloc();
        }
    } catch (...) {
        truncateCurveSet(count);
        return false;
    }
    return true;
}

void CurveControl::DropAllCurves() {
    for (int i = curves_.Count() - 1; i >= 0; --i) {
        // A curve that an undo record keeps alive must not point at a control that goes.
        if (curves_[i])
            curves_[i]->SetOwner(nullptr);
        DeleteReference(i);
    }
    curves_.Resize(0);
}

void CurveControl::CopyFrom(CurveControl& other) {
    legacyInt_ = other.legacyInt_;
    shownCurves_ = other.shownCurves_;
    zoomFlyOff_ = other.zoomFlyOff_;
    instanceIndex_ = other.instanceIndex_;
    hZoom_ = other.hZoom_;
    vZoom_ = other.vZoom_;
    zoomSet_ = other.zoomSet_;
    hScroll_ = other.hScroll_;
    vScroll_ = other.vScroll_;
    scrollSet_ = other.scrollSet_;
    placement_ = other.placement_;
    placementSaved_ = other.placementSaved_;
    xRange_ = other.xRange_;
    yRange_ = other.yRange_;
    title_ = other.title_;
    flags_ = other.flags_;
    toolMode_ = other.toolMode_;
    ext_.CopyFrom(other.ext_);
    hWnd_ = nullptr;
    editorWindow_ = nullptr;
    SetCurveCount(other.GetCurveCount(), FALSE);
    if (GetCurveCount() != other.GetCurveCount())
        throw std::bad_alloc(); // refused for want of memory: no copy to give
    for (int i = 0; i < other.GetCurveCount(); ++i) {
        Curve* mine = GetCurveObject(i);
        Curve* theirs = other.GetCurveObject(i);
        if (mine && theirs) {
            mine->Copy(*theirs);
            mine->SetOwner(this);
        }
        if (i < curveButtonTexts_.Count() && curveButtonTexts_[i])
            *curveButtonTexts_[i] = other.CurveButtonText(i);
    }
}

// A count above CURVECTL_MAX_COUNT is refused, and so is a growth the heap cannot hold
// (the curves made for it go again): nothing changes and no record is put. Nothing is
// thrown to the caller: should memory run out after the set has grown (the editor's
// buttons, the display bits), the grown set stands.
void CurveControl::SetCurveCount(int n, BOOL undoable) {
    if (n > CURVECTL_MAX_COUNT)
        return;
    if (n < 0)
        n = 0;
    // The set as it stands, curves pinned, so that the curves a shrink drops survive for
    // the undo record (which keeps the objects themselves, not copies).
    std::optional<DeleteCurveRestore::Set> before;
    if (undoable) {
        try {
            before = DeleteCurveRestore::Capture(*this);
        } catch (...) {
            return; // nothing was pinned, nothing changed
        }
    }
    const bool suspended = theHold.Holding();
    if (suspended)
        theHold.Suspend();
    bool changed = true;
    try {
        changed = changeCurveCount(n);
    } catch (...) {
        // Past the growth itself: the set stands as it is.
    }
    if (suspended)
        theHold.Resume();
    if (changed)
        putCurveSetRecord(this, before);
    else if (before)
        DeleteCurveRestore::Release(*before);
}

bool CurveControl::changeCurveCount(int n) {
    // The working copy is resized without keeping bits (the host clears them): the copy
    // handed to SetShownCurves at the end is the resized one.
    BitArray display = shownCurves_;
    if (display.GetSize() < n)
        display.SetSize(n, 0);

    const int count = GetCurveCount();
    if (n > count) {
        if (!growCurveSet(count, n))
            return false;
        if (shownCurves_.GetSize() < n)
            shownCurves_.SetSize(n, 1);
        if (ICurveCtlClient* client = Client())
            for (int i = count; i < n; ++i)
                client->NewCurveCreated(i, this);
        if (IsEditorOpen())
            editorWindow_->RebuildCurveButtons();
        SetShownCurves(display);
    } else if (n < count) {
        for (int i = count - 1; i >= n; --i) {
            DeleteReference(i);
            curves_.Delete(i, 1);
            if (i < curveButtonTexts_.Count()) {
                delete curveButtonTexts_[i];
                curveButtonTexts_.Delete(i, 1);
            }
        }
        if (IsEditorOpen()) {
            // A single curve needs no display toggle: it is shown.
            if (GetCurveCount() == 1) {
                display.Set(0);
                SetShownCurves(display);
            }
            editorWindow_->RebuildCurveButtons();
        }
    }

    if (IsEditorOpen())
        editorWindow_->InvalidateGraph();
    return true;
}

void CurveControl::DeleteCurve(int i) {
    // Entry i decides the undo capture before the range test: callers pass valid indices.
    std::optional<DeleteCurveRestore::Set> before;
    if (GetCurve(i))
        before = DeleteCurveRestore::Capture(*this);
    const bool suspended = theHold.Holding();
    if (suspended)
        theHold.Suspend();
    if (i >= 0 && i < GetCurveCount()) {
        DeleteReference(i);
        curves_.Delete(i, 1);
        if (i < curveButtonTexts_.Count()) {
            delete curveButtonTexts_[i];
            curveButtonTexts_.Delete(i, 1);
        }
        // The display copy is cut one bit short (bits keep their indices; they do not
        // move down with the curves after i).
        BitArray display = shownCurves_;
        display.SetSize(display.GetSize() > 0 ? display.GetSize() - 1 : 0, 1);
        if (IsEditorOpen()) {
            if (GetCurveCount() == 1)
                display.Set(0);
            editorWindow_->RebuildCurveButtons();
        }
        SetShownCurves(display);
        if (IsEditorOpen())
            editorWindow_->InvalidateGraph();
    }
    if (suspended)
        theHold.Resume();
    putCurveSetRecord(this, before);
}
