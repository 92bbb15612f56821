// Small reference objects for the host library's tests: a target that counts its own
// deletions, a maker with a fixed number of reference slots (itself a target, so notices
// can travel through it), and an undo record that logs what the hold does with it.
#pragma once

#include "host/animatable.h"
#include "host/hold.h"

#include <string>
#include <vector>

namespace hosttest {

/// Counts the deletions of the objects that point at it.
struct DeathCounter {
    int deaths = 0;
};

/// A leaf target. Its clone copies `value` and shares the death counter.
class Leaf : public ReferenceTarget {
public:
    explicit Leaf(DeathCounter* deaths = nullptr, int v = 0) : deaths_(deaths), value(v) {}
    ~Leaf() override {
        if (deaths_)
            ++deaths_->deaths;
    }
    SClass_ID SuperClassID() override { return 0x0777; }
    RefTargetHandle Clone(RemapDir& remap) override {
        auto* c = new Leaf(deaths_, value);
        BaseClone(this, c, remap);
        return c;
    }

    DeathCounter* deaths_; // not owned; may be null
    int value;             // copied by Clone
};

/// One notice as a maker received it.
struct Notice {
    Interval interval;
    RefTargetHandle target;
    PartID part;
    RefMessage message;
    BOOL propagate;
};

/// A maker with `N` reference slots that records every notice it gets. It is a target
/// too, so notices propagate through it to its own dependents.
class Holder : public ReferenceTarget {
public:
    explicit Holder(int slots = 2, SClass_ID sclass = REF_TARGET_CLASS_ID,
                    DeathCounter* deaths = nullptr)
        : refs_(slots, nullptr), sclass_(sclass), deaths_(deaths) {}
    ~Holder() override {
        DeleteAllRefsFromMe();
        if (deaths_)
            ++deaths_->deaths;
    }

    SClass_ID SuperClassID() override { return sclass_; }
    int NumRefs() override { return int(refs_.size()); }
    RefTargetHandle GetReference(int i) override {
        return (i >= 0 && i < NumRefs()) ? refs_[i] : nullptr;
    }
    RefResult NotifyRefChanged(const Interval& changeInt, RefTargetHandle hTarget, PartID& partID,
                               RefMessage message, BOOL propagate) override {
        notices.push_back(Notice{changeInt, hTarget, partID, message, propagate});
        if (rewritePart)
            partID = partOut;
        return answer;
    }
    RefTargetHandle Clone(RemapDir& remap) override {
        auto* c = new Holder(NumRefs(), sclass_, deaths_);
        for (int i = 0; i < NumRefs(); ++i)
            if (refs_[i])
                c->ReplaceReference(i, remap.CloneRef(refs_[i]));
        BaseClone(this, c, remap);
        return c;
    }

    std::vector<Notice> notices;    // every notice received, oldest first
    RefResult answer = REF_SUCCEED; // what NotifyRefChanged answers
    bool rewritePart = false;       // whether NotifyRefChanged changes the part...
    PartID partOut = 0;             // ...to this value, for its own dependents

protected:
    void SetReference(int i, RefTargetHandle target) override {
        if (i >= 0 && i < NumRefs())
            refs_[i] = target;
    }

private:
    std::vector<RefTargetHandle> refs_; // reference slots
    SClass_ID sclass_;
    DeathCounter* deaths_; // not owned; may be null
};

/// An undo record that writes what happens to it into a shared log:
/// "R<name>:<isUndo>" for Restore, "D<name>" for Redo, "E<name>" for EndHold and
/// "~<name>" for its deletion.
class LoggedRecord : public RestoreObj {
public:
    LoggedRecord(std::vector<std::string>* log, std::string name)
        : log_(log), name_(std::move(name)) {}
    ~LoggedRecord() override { log_->push_back("~" + name_); }
    void Restore(int isUndo) override {
        log_->push_back("R" + name_ + ":" + std::to_string(isUndo));
    }
    void Redo() override { log_->push_back("D" + name_); }
    void EndHold() override { log_->push_back("E" + name_); }
    CStr Description() override { return CStr(name_.c_str()); }

protected:
    std::vector<std::string>* log_; // not owned; outlives the record

private:
    std::string name_;
};

/// Leaves the hold as a fresh process has it: no open hold, nothing suspended, no steps.
inline void ResetHold() {
    while (theHold.IsSuspended())
        theHold.Resume();
    theHold.End();
    theHold.SuperCancel();
    theHold.Reset();
}

} // namespace hosttest
