// Curve: construction, copying, resizing, destruction, the face the host sees, and the
// simple ICurve operations. Evaluation, editing, undo records, persistence and the
// whole-curve operations have files of their own (see curve.h).
#include "curve/curve.h"

#include "control/curve_control.h"
#include "curve/curve_undo.h"
#include "curvectl/icurvectl.h"
#include "host/controller.h"
#include "host/core_interface.h"
#include "host/hold.h"
#include "platform/res_string.h"

#include <cstdlib>
#include <cstring>

// The lookup table and the segment cache live in the evaluation cache (curve_eval.cpp),
// which allocates them when first needed and frees them with the curve.
Curve::Curve(CurveControl* owner, int tag) : owner_(owner), tag_(tag) {}

Curve::~Curve() {
    DeleteAllRefsFromMe();
    freeTables();
    InvalidateCache();
}

void Curve::freeTables() {
    std::free(controllers_);
    controllers_ = nullptr;
    std::free(points_);
    points_ = nullptr;
    count_ = 0;
}

void Curve::Resize(int n) {
    auto tableLock = LockPointTable(); // a rebuild on another thread must not see this
    // Later position changes of the same hold belong to the new table, not to a record made
    // for the old one.
    openPosRecord_ = nullptr;
    DeleteAllRefsFromMe();
    freeTables();
    InvalidateCache();
    fittedWidth_ = 1.0f;
    curveFlags_ = 0; // also resets the end behaviour and the cyclic bit, on purpose
    if (n < 0)
        n = 0;
    count_ = n;
    if (n > 0) {
        // A failed allocation leaves null tables with the count set; every reader of the
        // tables tests for null.
        points_ = static_cast<CurveKnot*>(std::calloc(std::size_t(n), sizeof(CurveKnot)));
        controllers_ =
            static_cast<ReferenceTarget**>(std::calloc(std::size_t(n), sizeof(ReferenceTarget*)));
        if (points_) {
            points_[0].flags |= KNOT_ENDPOINT | KNOT_CORNER;
            points_[n - 1].flags |= KNOT_ENDPOINT | KNOT_CORNER;
        }
    }
}

void Curve::Copy(const Curve& src) {
    auto tableLock = LockPointTable(); // a rebuild on another thread must not see this
    InvalidateCache();
    Resize(src.count_);
    if (points_ && src.points_)
        std::memcpy(points_, src.points_, sizeof(CurveKnot) * count_);
    RemapDir& remap = NewRemapDir();
    for (int i = 0; i < count_; ++i) {
        ReferenceTarget* ctrl = src.Controller(i);
        if (ctrl)
            ReplaceReference(i, remap.CloneRef(ctrl), TRUE);
        else
            DeleteReference(i);
    }
    remap.Backpatch();
    remap.DeleteThis();
    penColour_ = src.penColour_;
    disabledPenColour_ = src.disabledPenColour_;
    penWidth_ = src.penWidth_;
    disabledPenWidth_ = src.disabledPenWidth_;
    penStyle_ = src.penStyle_;
    disabledPenStyle_ = src.disabledPenStyle_;
    lookupSize_ = src.lookupSize_;
    resetLookupMemory(); // a fresh table, not valid
    fittedWidth_ = src.fittedWidth_;
    curveFlags_ = src.curveFlags_;
    owner_ = src.owner_;
    animatable_ = src.animatable_;
    InvalidateCache(); // whatever was evaluated while the copy was half done goes
}

// ---------------------------------------------------------------------------------------
// Host-facing face

Class_ID Curve::ClassID() { return CURVE_CLASS_ID; }
SClass_ID Curve::SuperClassID() { return CURVE_CONTROL_SUPER_CLASS_ID; }

void* Curve::GetInterface(ULONG id) {
    if (id == I_CURVE_INTERFACE || id == I_CURVE_INTERFACE_ALT)
        return this;
    if (id == I_CURVE_BATCH_INTERFACE)
        return static_cast<ICurveBatch*>(this);
    return ICurve::GetInterface(id);
}

CStr Curve::SubAnimName(int i) {
    CStr name;
    if (const char* fmt = GetResString(IDS_POINT_NAME))
        name.printf(fmt, i + 1);
    return name;
}

BOOL Curve::IsAnimated() {
    for (int i = 0; i < count_; ++i)
        if (Controller(i))
            return TRUE;
    return FALSE;
}

ReferenceTarget* Curve::Controller(int i) const {
    if (i < 0 || i >= count_ || !controllers_)
        return nullptr;
    return controllers_[i];
}

RefTargetHandle Curve::GetReference(int i) { return Controller(i); }

// The host calls this for every reference change, its own undo of them included: a new
// controller changes the point's values, so the cache goes with it (under the table lock,
// as every change of the table).
void Curve::SetReference(int i, RefTargetHandle target) {
    auto lock = LockPointTable();
    if (i >= 0 && i < count_ && controllers_)
        controllers_[i] = target;
    InvalidateCache();
}

RefResult Curve::NotifyRefChanged(const Interval&, RefTargetHandle, PartID&, RefMessage message,
                                  BOOL) {
    if (message != REFMSG_CHANGE)
        return REF_SUCCEED;
    InvalidateCache();
    if (!notifySuspended_ && owner_) {
        owner_->NotifyDependents(FOREVER, PART_TOPO | PART_GEOM, REFMSG_CHANGE);
        owner_->Redraw();
    }
    return REF_SUCCEED;
}

// Nothing is thrown back to the host: a clone that memory runs out for is null.
RefTargetHandle Curve::Clone(RemapDir& remap) {
    Curve* c = nullptr;
    try {
        c = new Curve(nullptr, 0);
        c->Copy(*this);
        BaseClone(this, c, remap);
        return c;
    } catch (...) {
        if (c)
            c->DeleteThis();
        return nullptr;
    }
}

// ---------------------------------------------------------------------------------------
// Pens

void Curve::redrawOwnerIfOpen() {
    if (owner_ && owner_->IsEditorOpen())
        owner_->InvalidateGraph();
}

void Curve::SetPen(COLORREF colour, int width, int style) {
    penColour_ = colour;
    penWidth_ = width;
    penStyle_ = style;
    redrawOwnerIfOpen();
}

void Curve::GetPen(COLORREF& colour, int& width, int& style) {
    colour = penColour_;
    width = penWidth_;
    style = penStyle_;
}

void Curve::SetDisabledPen(COLORREF colour, int width, int style) {
    disabledPenColour_ = colour;
    disabledPenWidth_ = width;
    disabledPenStyle_ = style;
    redrawOwnerIfOpen();
}

void Curve::GetDisabledPen(COLORREF& colour, int& width, int& style) {
    colour = disabledPenColour_;
    width = disabledPenWidth_;
    style = disabledPenStyle_;
}

// ---------------------------------------------------------------------------------------
// Animation of points

void Curve::SetAnimatable(BOOL on) {
    animatable_ = on;
    if (on)
        return;
    for (int i = 0; i < count_; ++i)
        DeleteReference(i);
    redrawOwnerIfOpen();
}

// Negative indices are not tested: they fall through to the controller lookup, which
// answers null (FALSE) for them.
BOOL Curve::IsPointAnimated(int i) {
    if (i >= count_)
        return FALSE;
    return Controller(i) ? TRUE : FALSE;
}

BOOL Curve::AnimateSelectedKnots(BOOL create, BitArray* created) {
    if (count_ == 0)
        return FALSE;
    if (created) {
        created->SetSize(count_);
        created->ClearAll();
    }
    if (!animatable_ || !points_)
        return FALSE;
    bool made = false;
    for (int i = 0; i < count_; ++i) {
        if (!(points_[i].flags & KNOT_SELECTED) || Controller(i) || !create || !Animating())
            continue;
        Control* c = NewDefaultPoint3Controller();
        ReplaceReference(i, c, TRUE);
        Point3 v(points_[i].pos.x, points_[i].pos.y, 0.0f);
        c->SetValue(0, &v, 1, CTRL_ABSOLUTE);
        if (created)
            created->Set(i);
        made = true;
    }
    if (!made)
        return FALSE;
    if (owner_)
        owner_->NotifyDependents(FOREVER, 0, REFMSG_SUBANIM_STRUCTURE_CHANGED);
    return TRUE;
}

// ---------------------------------------------------------------------------------------
// Points

// A count above CURVECTL_MAX_COUNT, or a table the memory cannot hold, is refused: nothing
// changes and no record is put. Nothing is thrown to the caller: a record that cannot be
// made is not put (as a failed record allocation passes null to the hold) and the change
// still happens.
void Curve::SetPointCount(int n) {
    if (n > CURVECTL_MAX_COUNT)
        return;
    try {
        setPointCount(n);
    } catch (...) {
    }
}

void Curve::setPointCount(int n) {
    Curve temp(nullptr, 0);
    {
        const bool suspended = theHold.Holding();
        if (suspended)
            theHold.Suspend();
        struct Resume {
            bool on;
            ~Resume() {
                if (on)
                    theHold.Resume();
            }
        } resume{suspended};
        temp.Copy(*this);
        temp.Resize(n);
    }
    if (temp.count_ > 0 && !temp.points_)
        return; // no room for the table: refused
    if (theHold.Holding()) {
        try {
            theHold.Put(new DeformCopyCurveRestore(this, &temp));
        } catch (...) {
        }
    }
    Copy(temp);
}

BitArray Curve::GetSelection() {
    BitArray sel(count_);
    for (int i = 0; points_ && i < count_; ++i)
        if (points_[i].flags & KNOT_SELECTED)
            sel.Set(i);
    return sel;
}

void Curve::SetSelection(BitArray sel, int mode) { SetSelectionEx(sel, mode, TRUE); }

CurveKnot Curve::GetKnot(TimeValue t, int i, Interval& valid) {
    if (i < 0 || i >= count_ || !points_)
        return CurveKnot();
    CurveKnot k = points_[i];
    if (auto* ctrl = dynamic_cast<Control*>(Controller(i))) {
        Point3 v;
        ctrl->GetValue(t, &v, valid, CTRL_ABSOLUTE);
        k.pos = Point2(v.x, v.y);
    }
    return k;
}

void Curve::SetEndBehaviour(int mode) {
    if (mode == CURVE_END_LINEAR) {
        curveFlags_ = (curveFlags_ & ~0x4u) | 0x2u;
    } else if (mode == CURVE_END_HOLD) {
        curveFlags_ = (curveFlags_ & ~0x2u) | 0x4u;
    }
}

int Curve::GetEndBehaviour() { return (curveFlags_ & 0x4) ? CURVE_END_HOLD : CURVE_END_LINEAR; }

void Curve::SetLookupSize(int n) {
    if (n == lookupSize_)
        return;
    auto tableLock = LockPointTable();
    lookupSize_ = n;
    resetLookupMemory(); // a fresh table, not valid until the next build
    InvalidateCache();
}

// ---------------------------------------------------------------------------------------
// Shared with the undo records

void Curve::InstallTable(int count, const CurveKnot* knots, ReferenceTarget* const* controllers) {
    auto lock = LockPointTable();
    std::free(points_);
    std::free(controllers_);
    points_ = nullptr;
    controllers_ = nullptr;
    count_ = count < 0 ? 0 : count;
    if (count_ > 0) {
        points_ = static_cast<CurveKnot*>(std::calloc(std::size_t(count_), sizeof(CurveKnot)));
        controllers_ = static_cast<ReferenceTarget**>(
            std::calloc(std::size_t(count_), sizeof(ReferenceTarget*)));
        if (points_ && knots)
            std::memcpy(points_, knots, sizeof(CurveKnot) * count_);
        if (controllers_ && controllers)
            std::memcpy(static_cast<void*>(controllers_), controllers,
                        sizeof(ReferenceTarget*) * count_);
    }
}

void Curve::Refresh(bool full) {
    if (full) {
        InvalidateCache();
        if (!notifySuspended_ && owner_)
            owner_->NotifyDependents(FOREVER, PART_TOPO | PART_GEOM, REFMSG_CHANGE, NOTIFY_ALL,
                                     TRUE);
    }
    if (owner_)
        owner_->Redraw();
}

void Curve::SendClientMessage(UINT msg, WPARAM wParam) {
    if (owner_)
        owner_->SendClientMessage(msg, wParam, LPARAM(static_cast<ICurve*>(this)));
}
