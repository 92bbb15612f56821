// RefKeeper: holds one reference target for a test, as a host object would, and records
// the notices the target sends its dependents.
//
// Holding through a reference (rather than deleting at the end of the test) lets the host
// decide when the target goes: at once when the keeper lets go, or, when undo records
// still pin it, once the hold discards them.
#pragma once

#include "host/animatable.h"

#include <vector>

namespace testsupport {

class RefKeeper : public ReferenceMaker {
public:
    struct Notice {
        Interval interval;
        PartID part;
        RefMessage message;
    };

    explicit RefKeeper(ReferenceTarget* target = nullptr) {
        if (target)
            ReplaceReference(0, target);
    }
    ~RefKeeper() override { DeleteAllRefsFromMe(); }

    template <class T> T* get() const { return static_cast<T*>(target_); }

    int NumRefs() override { return 1; }
    RefTargetHandle GetReference(int i) override { return i == 0 ? target_ : nullptr; }
    RefResult NotifyRefChanged(const Interval& changeInt, RefTargetHandle, PartID& partID,
                               RefMessage message, BOOL) override {
        notices.push_back(Notice{changeInt, partID, message});
        return REF_SUCCEED;
    }

    std::vector<Notice> notices; // every notice of the target, oldest first

protected:
    void SetReference(int i, RefTargetHandle target) override {
        if (i == 0)
            target_ = target;
    }

private:
    RefTargetHandle target_ = nullptr; // the kept target (reference 0)
};

} // namespace testsupport
