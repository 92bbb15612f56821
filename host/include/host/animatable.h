// The host object model: Animatable, ReferenceMaker, ReferenceTarget, RemapDir.
//
// A ReferenceMaker holds numbered references to ReferenceTargets; every target knows
// the makers that depend on it and tells them about changes (NotifyDependents). A target
// that loses its last dependent is deleted, unless an undo record still needs it: while
// theHold is holding, every reference change is recorded and the targets involved stay
// alive until the record is discarded.
#pragma once

#include "host/cstr.h"
#include "host/export.h"
#include "host/heap.h"
#include "host/interval.h"
#include "host/iosave.h"
#include "host/win_types.h"

#include <cstdint>

typedef uint32_t SClass_ID;
typedef uint32_t PartID;
typedef uint32_t RefMessage;
typedef int RefResult;

class ReferenceTarget;
class ReferenceMaker;
class RemapDir;
typedef ReferenceTarget* RefTargetHandle;
typedef ReferenceMaker* RefMakerHandle;

#define REF_FAIL 0
#define REF_SUCCEED 1
#define REF_DONTCARE 2
#define REF_STOP 3

/// A change of the target's values.
#define REFMSG_CHANGE 0x00000050
/// Sub-animatables were added or removed.
#define REFMSG_SUBANIM_STRUCTURE_CHANGED 0x000000FA
/// The target is being deleted; sent by the target's destructor.
#define REFMSG_TARGET_DELETED 0x00000001

/// Parts of a target that a change touches (NotifyDependents): its topology, its geometry,
/// or everything.
#define PART_TOPO 0x00000001
#define PART_GEOM 0x00000002
#define PART_ALL 0xFFFFFFFF
/// Super class filter that lets every dependent through.
#define NOTIFY_ALL 0xFFFFFFF0

// Super class ids
#define CTRL_POINT3_CLASS_ID 0x00000900
#define REF_TARGET_CLASS_ID 0x00000100
#define SHAPE_CLASS_ID 0x00000040

/// Animatable flag bits (TestAFlag and friends). The work bits belong to whoever sets them
/// for the duration of one operation.
#define A_WORK1 0x00001000
#define A_WORK2 0x00002000
#define A_WORK3 0x00004000
#define A_WORK4 0x00008000

class Class_ID {
public:
    constexpr Class_ID() : a_(0xFFFFFFFF), b_(0xFFFFFFFF) {}
    constexpr Class_ID(uint32_t a, uint32_t b) : a_(a), b_(b) {}
    uint32_t PartA() const { return a_; }
    uint32_t PartB() const { return b_; }
    bool operator==(const Class_ID& o) const { return a_ == o.a_ && b_ == o.b_; }
    bool operator!=(const Class_ID& o) const { return !(*this == o); }

private:
    uint32_t a_, b_;
};

class HOST_API Animatable : public VokHeapOperators {
public:
    Animatable() = default;
    Animatable(const Animatable&) = delete;
    Animatable& operator=(const Animatable&) = delete;
    virtual ~Animatable();

    virtual void GetClassName(CStr& s) { s = ""; }
    virtual Class_ID ClassID() { return Class_ID(0, 0); }
    virtual SClass_ID SuperClassID() { return 0; }
    /// An interface of this object by 32-bit id; null when it has none.
    virtual void* GetInterface(ULONG id);
    virtual int NumSubs() { return 0; }
    virtual Animatable* SubAnim(int) { return nullptr; }
    virtual CStr SubAnimName(int) { return CStr(); }
    virtual BOOL IsAnimated() { return FALSE; }
    /// Deletes the object with the host heap.
    virtual void DeleteThis();

    void SetAFlag(DWORD mask) { aflag_ |= mask; }
    void ClearAFlag(DWORD mask) { aflag_ &= ~mask; }
    bool TestAFlag(DWORD mask) const { return (aflag_ & mask) != 0; }

private:
    DWORD aflag_ = 0; // animatable flag bits (A_...)
};

class HOST_API ReferenceMaker : public Animatable {
public:
    ReferenceMaker();
    ~ReferenceMaker() override;

    virtual int NumRefs() { return 0; }
    virtual RefTargetHandle GetReference(int) { return nullptr; }

    /// Makes `newTarget` reference `which`, recording the change while theHold is
    /// holding. With `deleteOld` the old target is deleted once nothing depends on it.
    RefResult ReplaceReference(int which, RefTargetHandle newTarget, BOOL deleteOld = TRUE);
    /// ReplaceReference(which, null).
    RefResult DeleteReference(int which);
    /// Drops every reference, last to first.
    RefResult DeleteAllRefsFromMe();

    /// Called when a referenced target changed.
    virtual RefResult NotifyRefChanged(const Interval& changeInt, RefTargetHandle hTarget,
                                       PartID& partID, RefMessage message, BOOL propagate);

    virtual IOResult Save(ISave*) { return IO_OK; }
    virtual IOResult Load(ILoad*) { return IO_OK; }
    virtual int RemapRefOnLoad(int iref) { return iref; }

protected:
    friend class ReferenceTarget;
    friend class RefChangeRestore;
    /// Stores `target` as reference i. Only the reference system calls it.
    virtual void SetReference(int, RefTargetHandle) {}

private:
    struct Links;
    Links* links_; // owned: the targets this maker depends on (for clean-up)
};

class HOST_API ReferenceTarget : public ReferenceMaker {
public:
    ReferenceTarget();
    ~ReferenceTarget() override;

    /// Tells every dependent (filtered by super class unless NOTIFY_ALL) about a change,
    /// and, with `propagate`, their dependents in turn.
    RefResult NotifyDependents(const Interval& changeInt, PartID partID, RefMessage message,
                               SClass_ID sclass = NOTIFY_ALL, BOOL propagate = TRUE,
                               RefTargetHandle hTarget = nullptr);

    /// A copy of this target; referenced targets are cloned through `remap`.
    virtual RefTargetHandle Clone(RemapDir& remap);
    /// The common step of every Clone: records the pair in the directory.
    void BaseClone(ReferenceTarget* from, ReferenceTarget* to, RemapDir& remap);

    int NumDependents() const;
    ReferenceMaker* GetDependent(int i) const;

    /// Deletes the target when nothing depends on it and no undo record holds it.
    void MaybeAutoDelete();

    /// An undo record that keeps a plain pointer to this target pins it for its lifetime,
    /// so the target outlives every record that may still restore it. A target whose last
    /// reference went away while it was pinned is deleted by the last unpin.
    void HoldPin() { ++pins_; }
    void HoldUnpin();

private:
    friend class ReferenceMaker;
    friend class RefChangeRestore;
    void addDependent(ReferenceMaker* m);
    void removeDependent(ReferenceMaker* m);
    bool hasDependent(ReferenceMaker* m) const;

    struct Dependents;
    Dependents* dependents_; // owned: makers that reference this target
    int pins_ = 0;           // undo records that keep this target alive
    bool deleting_ = false;  // set while the target deletes itself
    bool orphaned_ = false;  // lost its last reference while pinned: delete when unpinned
};

/// Clones each target at most once per directory, so shared targets stay shared.
class HOST_API RemapDir : public VokHeapOperators {
public:
    virtual ~RemapDir() = default;
    /// The clone of `target` in this directory, made on first request.
    virtual RefTargetHandle CloneRef(RefTargetHandle target) = 0;
    virtual RefTargetHandle FindMapping(RefTargetHandle from) = 0;
    virtual void AddEntry(RefTargetHandle from, RefTargetHandle to) = 0;
    /// Ends the directory's use (nothing is pending after it).
    virtual void Backpatch() {}
    virtual void DeleteThis() { delete this; }
};

HOST_API RemapDir& NewRemapDir();
