// Post-load state of one load: the callbacks to run, the pointers to patch once every
// object exists, and the older-layout notice. Shared by ChunkLoad (one object loaded on
// its own) and the scene reader (a whole scene).
#pragma once

#include "host/iosave.h"

#include <vector>

class LoadSession {
public:
    LoadSession() = default;
    /// Callbacks that never ran are deleted without being called.
    ~LoadSession() { Discard(); }
    LoadSession(const LoadSession&) = delete;
    LoadSession& operator=(const LoadSession&) = delete;

    /// Takes ownership of `cb` until it runs (a null callback is ignored).
    void Register(PostLoadCallback* cb);
    void RecordBackpatch(int refID, void** patchThis);
    void SetObsolete() { obsolete_ = true; }
    bool Obsolete() const { return obsolete_; }

    typedef void* (*Resolver)(int refID, void* context);
    /// Sets every recorded pointer to `resolve(refID, context)` (null without a resolver)
    /// and forgets them.
    void ResolveBackpatches(Resolver resolve, void* context);
    /// Runs the callbacks, lowest priority first and in registration order among equals;
    /// callbacks registered meanwhile run in a later round. Each proc deletes its callback.
    void RunPostLoadCallbacks(ILoad* iload);
    /// Deletes pending callbacks unrun and forgets pending patches (an abandoned load:
    /// the objects the patches point into may already be gone).
    void Discard();

private:
    struct Patch {
        int refID;        // id of the object to store
        void** patchThis; // where to store it; inside an object of this load
    };
    std::vector<PostLoadCallback*> callbacks_; // owned until each one's proc runs
    std::vector<Patch> patches_;
    bool obsolete_ = false; // a loader read an older layout
};
