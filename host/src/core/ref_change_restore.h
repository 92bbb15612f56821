// The undo record of one reference change, put by ReplaceReference while holding.
#pragma once

#include "host/animatable.h"
#include "host/hold.h"

class RefChangeRestore : public RestoreObj {
public:
    /// `deleteOld` is ReplaceReference's: whether `before` may be deleted once nothing
    /// references it (redo drops it again the same way).
    RefChangeRestore(ReferenceMaker* maker, int which, RefTargetHandle before,
                     RefTargetHandle after, BOOL deleteOld = TRUE);
    ~RefChangeRestore() override;

    void Restore(int isUndo) override;
    void Redo() override;
    CStr Description() override { return CStr("Reference change"); }

    /// The maker went away: the record has nothing left to change.
    void Forget(void* maker) {
        if (maker_ == maker)
            maker_ = nullptr;
    }

private:
    void install(RefTargetHandle from, RefTargetHandle to);
    void release(RefTargetHandle from, bool mayDelete);

    ReferenceMaker* maker_;  // the maker whose reference changed; null once it is gone
    int which_;              // reference index
    RefTargetHandle before_; // pinned: target before the change (may be null)
    RefTargetHandle after_;  // pinned: target after the change (may be null)
    BOOL deleteOld_;         // `before_` is deleted when redo leaves it unreferenced
};
