// FailingLoad: an ILoad that passes every call to another one, except that its n-th
// reading call fails. Loaders are run once for every n, so that every read of a sample
// file is the one that fails once: each must end the load with an error, never a crash or
// a leak.
#pragma once

#include "host/iosave.h"

namespace testsupport {

class FailingLoad : public ILoad {
public:
    /// Call number `failAt` (counted from 1 over OpenChunk, Read and ReadCStringChunk)
    /// answers IO_ERROR without reaching `inner`; 0 never fails.
    FailingLoad(ILoad& inner, int failAt) : inner_(inner), failAt_(failAt) {}

    /// Reading calls made so far, the failed one included.
    int Calls() const { return calls_; }
    /// Whether the failure was injected.
    bool Failed() const { return failAt_ > 0 && calls_ >= failAt_; }

    IOResult OpenChunk() override { return fails() ? IO_ERROR : inner_.OpenChunk(); }
    USHORT CurChunkID() override { return inner_.CurChunkID(); }
    IOResult CloseChunk() override { return inner_.CloseChunk(); }
    IOResult Read(void* buf, ULONG nbytes, ULONG* nread) override {
        if (fails()) {
            if (nread)
                *nread = 0;
            return IO_ERROR;
        }
        return inner_.Read(buf, nbytes, nread);
    }
    IOResult ReadCStringChunk(char** buf) override {
        return fails() ? IO_ERROR : inner_.ReadCStringChunk(buf);
    }
    void RegisterPostLoadCallback(PostLoadCallback* cb) override {
        inner_.RegisterPostLoadCallback(cb);
    }
    void SetObsolete() override { inner_.SetObsolete(); }
    void RecordBackpatch(int refID, void** patchThis) override {
        inner_.RecordBackpatch(refID, patchThis);
    }
    ULONG ChunkBytesLeft() override { return inner_.ChunkBytesLeft(); }
    ULONG StreamBytesLeft() override { return inner_.StreamBytesLeft(); }

private:
    bool fails() { return ++calls_ == failAt_; }

    ILoad& inner_;
    int failAt_;    // the call that fails; 0 for none
    int calls_ = 0; // reading calls so far
};

} // namespace testsupport
