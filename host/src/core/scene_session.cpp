#include "scene_session.h"

#include <algorithm>

void LoadSession::Register(PostLoadCallback* cb) {
    if (cb)
        callbacks_.push_back(cb);
}

void LoadSession::RecordBackpatch(int refID, void** patchThis) {
    if (patchThis)
        patches_.push_back(Patch{refID, patchThis});
}

void LoadSession::ResolveBackpatches(Resolver resolve, void* context) {
    std::vector<Patch> patches;
    patches.swap(patches_);
    for (const Patch& p : patches)
        *p.patchThis = resolve ? resolve(p.refID, context) : nullptr;
}

void LoadSession::RunPostLoadCallbacks(ILoad* iload) {
    while (!callbacks_.empty()) {
        std::vector<PostLoadCallback*> round;
        round.swap(callbacks_);
        std::stable_sort(round.begin(), round.end(), [](PostLoadCallback* a, PostLoadCallback* b) {
            return a->Priority() < b->Priority();
        });
        for (PostLoadCallback* cb : round)
            cb->proc(iload);
    }
}

void LoadSession::Discard() {
    std::vector<PostLoadCallback*> pending;
    pending.swap(callbacks_);
    for (PostLoadCallback* cb : pending)
        delete cb;
    patches_.clear();
}
