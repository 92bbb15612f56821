#include "host/animatable.h"

#include "host/hold.h"
#include "ref_change_restore.h"

#include <algorithm>
#include <unordered_map>
#include <vector>

// ---------------------------------------------------------------------------------------
// Animatable

Animatable::~Animatable() = default;
void* Animatable::GetInterface(ULONG) { return nullptr; }
void Animatable::DeleteThis() { delete this; }

// ---------------------------------------------------------------------------------------
// ReferenceMaker

// The targets a maker depends on, counted, so that a maker that goes away can detach
// from them even though its own GetReference is no longer callable from the base class.
struct ReferenceMaker::Links {
    std::vector<ReferenceTarget*> targets;
};

struct ReferenceTarget::Dependents {
    std::vector<ReferenceMaker*> makers;
};

ReferenceMaker::ReferenceMaker() : links_(new Links) {}

ReferenceMaker::~ReferenceMaker() {
    theHold.ForgetMaker(this);
    std::vector<ReferenceTarget*> targets;
    targets.swap(links_->targets);
    delete links_;
    links_ = nullptr;
    for (ReferenceTarget* t : targets) {
        t->removeDependent(this);
        t->MaybeAutoDelete();
    }
}

RefResult ReferenceMaker::ReplaceReference(int which, RefTargetHandle newTarget, BOOL deleteOld) {
    if (which < 0 || which >= NumRefs())
        return REF_FAIL;
    RefTargetHandle old = GetReference(which);
    if (old == newTarget)
        return REF_SUCCEED;
    if (theHold.Holding())
        theHold.Put(new RefChangeRestore(this, which, old, newTarget, deleteOld));
    if (newTarget)
        newTarget->addDependent(this);
    if (old)
        old->removeDependent(this);
    SetReference(which, newTarget);
    if (old && deleteOld)
        old->MaybeAutoDelete();
    return REF_SUCCEED;
}

RefResult ReferenceMaker::DeleteReference(int which) { return ReplaceReference(which, nullptr); }

RefResult ReferenceMaker::DeleteAllRefsFromMe() {
    for (int i = NumRefs() - 1; i >= 0; --i)
        DeleteReference(i);
    return REF_SUCCEED;
}

RefResult ReferenceMaker::NotifyRefChanged(const Interval&, RefTargetHandle, PartID&, RefMessage,
                                           BOOL) {
    return REF_SUCCEED;
}

// ---------------------------------------------------------------------------------------
// ReferenceTarget

ReferenceTarget::ReferenceTarget() : dependents_(new Dependents) {}

ReferenceTarget::~ReferenceTarget() {
    deleting_ = true;
    // Makers that still reference this target lose the reference, as if it were deleted.
    std::vector<ReferenceMaker*> makers;
    makers.swap(dependents_->makers);
    for (ReferenceMaker* m : makers) {
        auto& ts = m->links_->targets;
        auto it = std::find(ts.begin(), ts.end(), this);
        if (it != ts.end())
            ts.erase(it);
        for (int i = 0; i < m->NumRefs(); ++i)
            if (m->GetReference(i) == this)
                m->SetReference(i, nullptr);
    }
    delete dependents_;
    dependents_ = nullptr;
}

void ReferenceTarget::addDependent(ReferenceMaker* m) {
    orphaned_ = false;
    dependents_->makers.push_back(m);
    m->links_->targets.push_back(this);
}

void ReferenceTarget::removeDependent(ReferenceMaker* m) {
    if (!dependents_)
        return;
    auto& ms = dependents_->makers;
    auto it = std::find(ms.begin(), ms.end(), m);
    if (it == ms.end())
        return;
    ms.erase(it);
    if (m->links_) {
        auto& ts = m->links_->targets;
        auto jt = std::find(ts.begin(), ts.end(), this);
        if (jt != ts.end())
            ts.erase(jt);
    }
}

bool ReferenceTarget::hasDependent(ReferenceMaker* m) const {
    auto& ms = dependents_->makers;
    return std::find(ms.begin(), ms.end(), m) != ms.end();
}

int ReferenceTarget::NumDependents() const { return int(dependents_->makers.size()); }

ReferenceMaker* ReferenceTarget::GetDependent(int i) const {
    if (i < 0 || i >= NumDependents())
        return nullptr;
    return dependents_->makers[i];
}

void ReferenceTarget::MaybeAutoDelete() {
    if (deleting_ || NumDependents() > 0)
        return;
    if (pins_ > 0) {
        orphaned_ = true;
        return;
    }
    deleting_ = true;
    DeleteThis();
}

void ReferenceTarget::HoldUnpin() {
    if (--pins_ > 0 || !orphaned_)
        return;
    orphaned_ = false;
    MaybeAutoDelete();
}

RefResult ReferenceTarget::NotifyDependents(const Interval& changeInt, PartID partID,
                                            RefMessage message, SClass_ID sclass, BOOL propagate,
                                            RefTargetHandle hTarget) {
    // A notice travels up the dependency graph; a depth bound keeps a cyclic graph (which
    // the host never builds on purpose) from recursing without end.
    static thread_local int depth = 0;
    if (depth > 64)
        return REF_SUCCEED;
    ++depth;
    std::vector<ReferenceMaker*> makers = dependents_->makers; // may change while we call
    for (ReferenceMaker* m : makers) {
        if (sclass != NOTIFY_ALL && m->SuperClassID() != sclass)
            continue;
        PartID part = partID;
        RefResult r =
            m->NotifyRefChanged(changeInt, hTarget ? hTarget : this, part, message, propagate);
        if (r == REF_STOP || !propagate)
            continue;
        if (auto* t = dynamic_cast<ReferenceTarget*>(m))
            t->NotifyDependents(changeInt, part, message, sclass, propagate, nullptr);
    }
    --depth;
    return REF_SUCCEED;
}

RefTargetHandle ReferenceTarget::Clone(RemapDir&) { return nullptr; }

void ReferenceTarget::BaseClone(ReferenceTarget* from, ReferenceTarget* to, RemapDir& remap) {
    if (from && to && !remap.FindMapping(from))
        remap.AddEntry(from, to);
}

// ---------------------------------------------------------------------------------------
// RefChangeRestore

RefChangeRestore::RefChangeRestore(ReferenceMaker* maker, int which, RefTargetHandle before,
                                   RefTargetHandle after, BOOL deleteOld)
    : maker_(maker), which_(which), before_(before), after_(after), deleteOld_(deleteOld) {
    if (before_)
        before_->HoldPin();
    if (after_)
        after_->HoldPin();
}

RefChangeRestore::~RefChangeRestore() {
    if (before_)
        before_->HoldUnpin();
    if (after_)
        after_->HoldUnpin();
}

// Other records of the same step may already have put the maker's table back (a curve's
// delete record reinstalls its controller pointers without reference bookkeeping, and a
// copy record installs fresh clones). So the change is applied only from the state this
// record expects; when the reference already holds the wanted target, only the dependency
// bookkeeping is brought in line; any other state belongs to a later record and is left.
void RefChangeRestore::install(RefTargetHandle from, RefTargetHandle to) {
    if (!maker_ || which_ >= maker_->NumRefs())
        return;
    RefTargetHandle cur = maker_->GetReference(which_);
    const bool mayDelete = (from == after_) || deleteOld_;
    if (cur == to) {
        if (to && !to->hasDependent(maker_))
            to->addDependent(maker_);
        if (from && from != to)
            release(from, mayDelete);
        return;
    }
    if (cur != from)
        return;
    if (to)
        to->addDependent(maker_);
    maker_->SetReference(which_, to);
    if (from)
        release(from, mayDelete);
}

// A target that loses its last reference here must go once no record needs it any more,
// as it would have after the original change: this record pins it, so MaybeAutoDelete
// only marks it orphaned and the last unpin deletes it. Without the mark, a target made
// by an undone step (or dropped again by a redo) would outlive every record and leak.
void RefChangeRestore::release(RefTargetHandle from, bool mayDelete) {
    from->removeDependent(maker_);
    if (mayDelete)
        from->MaybeAutoDelete();
}

void RefChangeRestore::Restore(int) { install(after_, before_); }
void RefChangeRestore::Redo() { install(before_, after_); }

// ---------------------------------------------------------------------------------------
// RemapDir

namespace {
class DefaultRemapDir : public RemapDir {
public:
    RefTargetHandle CloneRef(RefTargetHandle target) override {
        if (!target)
            return nullptr;
        if (RefTargetHandle found = FindMapping(target))
            return found;
        RefTargetHandle clone = target->Clone(*this);
        if (clone)
            AddEntry(target, clone);
        return clone;
    }
    RefTargetHandle FindMapping(RefTargetHandle from) override {
        auto it = map_.find(from);
        return it == map_.end() ? nullptr : it->second;
    }
    void AddEntry(RefTargetHandle from, RefTargetHandle to) override { map_[from] = to; }

private:
    std::unordered_map<RefTargetHandle, RefTargetHandle> map_; // original -> clone
};
} // namespace

RemapDir& NewRemapDir() { return *new DefaultRemapDir; }
