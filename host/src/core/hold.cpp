#include "host/hold.h"

#include "ref_change_restore.h"

#include <vector>

Hold theHold;

namespace {

/// One named undo step: its records in the order they were put.
struct Step {
    CStr name;
    std::vector<RestoreObj*> records;
};

// Deleting a record may release the last pin of a target whose last reference is gone;
// the target's destructor then walks every list of the hold (ForgetMaker). So records
// leave their list before any of them is deleted, or that walk would meet freed records.
void deleteRecords(std::vector<RestoreObj*>& recs) {
    std::vector<RestoreObj*> doomed;
    doomed.swap(recs);
    for (RestoreObj* r : doomed)
        delete r;
}

void deleteSteps(std::vector<Step>& steps) {
    std::vector<Step> doomed;
    doomed.swap(steps);
    for (Step& s : doomed)
        deleteRecords(s.records);
}

} // namespace

struct Hold::Impl {
    int level = 0;                      // Begin calls not yet ended
    std::vector<RestoreObj*> open;      // records of the open hold
    int superLevel = 0;                 // SuperBegin calls not yet ended
    std::vector<RestoreObj*> superRecs; // records of steps accepted inside the super hold
    std::vector<Step> undo;             // newest last
    std::vector<Step> redo;             // newest last
};

Hold::Hold() : impl_(new Impl), suspended_(0), restoring_(0) {}

// The process is ending: records may point at objects that are already gone, so they are
// left alone (the memory goes with the process). Hosts that close a scene call Reset first.
Hold::~Hold() = default;

void Hold::Begin() { ++impl_->level; }

int Hold::Holding() const { return impl_->level > 0 && suspended_ == 0 && restoring_ == 0; }

void Hold::Put(RestoreObj* rec) {
    if (!rec)
        return;
    if (!Holding()) {
        delete rec;
        return;
    }
    impl_->open.push_back(rec);
}

namespace {
void restoreBackwards(std::vector<RestoreObj*>& recs, int isUndo) {
    for (auto it = recs.rbegin(); it != recs.rend(); ++it)
        (*it)->Restore(isUndo);
}
void endHold(std::vector<RestoreObj*>& recs) {
    for (RestoreObj* r : recs)
        r->EndHold();
}
} // namespace

void Hold::Accept(const char* name) {
    if (impl_->level == 0)
        return;
    if (--impl_->level > 0)
        return; // an inner hold: its records stay with the outer one
    std::vector<RestoreObj*> recs;
    recs.swap(impl_->open);
    endHold(recs);
    if (recs.empty())
        return;
    if (impl_->superLevel > 0) {
        impl_->superRecs.insert(impl_->superRecs.end(), recs.begin(), recs.end());
        return;
    }
    deleteSteps(impl_->redo);
    impl_->undo.push_back(Step{CStr(name), std::move(recs)});
}

void Hold::Cancel() {
    if (impl_->level == 0)
        return;
    impl_->level = 0;
    std::vector<RestoreObj*> recs;
    recs.swap(impl_->open);
    ++restoring_;
    restoreBackwards(recs, 0);
    --restoring_;
    endHold(recs);
    deleteRecords(recs);
}

void Hold::End() {
    if (impl_->level == 0)
        return;
    impl_->level = 0;
    std::vector<RestoreObj*> recs;
    recs.swap(impl_->open);
    endHold(recs);
    deleteRecords(recs);
}

void Hold::Restore() {
    if (impl_->level == 0)
        return;
    ++restoring_;
    restoreBackwards(impl_->open, 0);
    --restoring_;
}

void Hold::SuperBegin() { ++impl_->superLevel; }

void Hold::SuperAccept(const char* name) {
    if (impl_->superLevel == 0)
        return;
    if (--impl_->superLevel > 0)
        return;
    std::vector<RestoreObj*> recs;
    recs.swap(impl_->superRecs);
    if (recs.empty())
        return;
    deleteSteps(impl_->redo);
    impl_->undo.push_back(Step{CStr(name), std::move(recs)});
}

void Hold::SuperCancel() {
    if (impl_->superLevel == 0)
        return;
    if (--impl_->superLevel > 0)
        return;
    std::vector<RestoreObj*> recs;
    recs.swap(impl_->superRecs);
    ++restoring_;
    restoreBackwards(recs, 0);
    --restoring_;
    deleteRecords(recs);
}

bool Hold::Undo() {
    if (impl_->level > 0 || impl_->undo.empty())
        return false;
    Step step = std::move(impl_->undo.back());
    impl_->undo.pop_back();
    ++restoring_;
    restoreBackwards(step.records, 1);
    --restoring_;
    impl_->redo.push_back(std::move(step));
    return true;
}

bool Hold::Redo() {
    if (impl_->level > 0 || impl_->redo.empty())
        return false;
    Step step = std::move(impl_->redo.back());
    impl_->redo.pop_back();
    ++restoring_;
    for (RestoreObj* r : step.records)
        r->Redo();
    --restoring_;
    impl_->undo.push_back(std::move(step));
    return true;
}

int Hold::NumUndo() const { return int(impl_->undo.size()); }
int Hold::NumRedo() const { return int(impl_->redo.size()); }

CStr Hold::UndoName(int i) const {
    if (i < 0 || i >= NumUndo())
        return CStr();
    return impl_->undo[impl_->undo.size() - 1 - i].name;
}

CStr Hold::RedoName(int i) const {
    if (i < 0 || i >= NumRedo())
        return CStr();
    return impl_->redo[impl_->redo.size() - 1 - i].name;
}

void Hold::Reset() {
    deleteSteps(impl_->redo);
    deleteSteps(impl_->undo);
}

void Hold::ForgetMaker(void* maker) {
    auto forget = [maker](std::vector<RestoreObj*>& recs) {
        for (RestoreObj* r : recs)
            if (auto* rc = dynamic_cast<RefChangeRestore*>(r))
                rc->Forget(maker);
    };
    forget(impl_->open);
    forget(impl_->superRecs);
    for (Step& s : impl_->undo)
        forget(s.records);
    for (Step& s : impl_->redo)
        forget(s.records);
}
