// The scene reader.
//
// Reading goes in phases, so that no object is touched before it is complete and none is
// lost or freed twice when a file is damaged:
//   1. parse: every object is created by its class and loaded from its own data chunk;
//      its saved reference ids are kept aside. A keeper (a reference maker of the reader)
//      holds each object from its creation on.
//   2. references: each saved reference is restored with ReplaceReference, so the
//      dependency bookkeeping is the reference system's own. Only references from a
//      smaller id to a larger one are restored (the writer numbers objects that way), so
//      no file can make a loop of references.
//   3. pointer patches, then the post-load callbacks, lowest priority first.
//   4. the roots go to the caller's SceneRoots; then the keeper lets go, which deletes
//      exactly the objects that nothing holds (a damaged file can leave some).
// A failure in phase 1 discards the callbacks unrun and lets the keeper go: every object
// made so far is deleted and the caller gets no roots.
//
// Every read goes through ILoad and is bounded by the chunk it is in; an object's Load
// gets a stream that cannot leave the object's data chunk. theHold is suspended
// throughout: loading is not an edit.
#include "host/chunk_values.h"
#include "host/class_desc.h"
#include "host/hold.h"
#include "host/scene.h"
#include "scene_session.h"

#include <algorithm>
#include <vector>

namespace {

/// Holds every object of the load as a reference (slot i is object i, null for an object
/// that could not be made).
class ObjectKeeper : public ReferenceMaker {
public:
    void set(int id, ReferenceTarget* object) {
        if (id >= int(slots_.size()))
            slots_.resize(id + 1, nullptr);
        ReplaceReference(id, object, FALSE);
    }
    ReferenceTarget* get(int id) const {
        return (id >= 0 && id < int(slots_.size())) ? slots_[id] : nullptr;
    }
    /// Lets go of every object; those that nothing else holds are deleted.
    void releaseAll() {
        for (int i = 0; i < int(slots_.size()); ++i)
            DeleteReference(i);
        slots_.clear();
    }

    int NumRefs() override { return int(slots_.size()); }
    RefTargetHandle GetReference(int i) override { return get(i); }

protected:
    void SetReference(int i, RefTargetHandle target) override {
        if (i >= 0 && i < int(slots_.size()))
            slots_[i] = target;
    }

private:
    std::vector<ReferenceTarget*> slots_; // object i, or null
};

/// The stream an object's Load reads through: the scene's stream confined to the object's
/// data chunk (closing that chunk is refused; chunks the object leaves open are closed
/// for it), with the post-load requests going to the reader's session.
class ObjectLoad : public ILoad {
public:
    ObjectLoad(ILoad& in, LoadSession& session) : in_(in), session_(session) {}

    IOResult OpenChunk() override {
        const IOResult r = in_.OpenChunk();
        if (r == IO_OK)
            ++depth_;
        return r;
    }
    USHORT CurChunkID() override { return in_.CurChunkID(); }
    IOResult CloseChunk() override {
        if (depth_ == 0) {
            misused_ = true;
            return IO_ERROR;
        }
        --depth_;
        return in_.CloseChunk();
    }
    IOResult Read(void* buf, ULONG nbytes, ULONG* nread) override {
        return in_.Read(buf, nbytes, nread);
    }
    IOResult ReadCStringChunk(char** buf) override { return in_.ReadCStringChunk(buf); }
    void RegisterPostLoadCallback(PostLoadCallback* cb) override { session_.Register(cb); }
    void SetObsolete() override { session_.SetObsolete(); }
    void RecordBackpatch(int refID, void** patchThis) override {
        session_.RecordBackpatch(refID, patchThis);
    }
    ULONG ChunkBytesLeft() override { return in_.ChunkBytesLeft(); }
    ULONG StreamBytesLeft() override { return in_.StreamBytesLeft(); }

    /// Closes the chunks the object left open. True when it kept to its own chunks.
    bool finish() {
        const bool tidy = depth_ == 0 && !misused_;
        for (; depth_ > 0; --depth_)
            in_.CloseChunk();
        return tidy;
    }

private:
    ILoad& in_;
    LoadSession& session_;
    int depth_ = 0;        // chunks the object opened and has not closed
    bool misused_ = false; // it tried to close a chunk it did not open
};

/// theHold suspended for the lifetime of the guard.
struct HoldSuspension {
    HoldSuspension() { theHold.Suspend(); }
    ~HoldSuspension() { theHold.Resume(); }
};

class SceneReader {
public:
    SceneReader(ILoad& in, SceneReport* report) : in_(in), report_(report) {}

    IOResult read(SceneRoots& roots) {
        HoldSuspension suspension;
        IOResult r = parse();
        if (r != IO_OK) {
            session_.Discard();
            keeper_.releaseAll();
            return r == IO_END ? IO_ERROR : r;
        }
        restoreReferences();
        session_.ResolveBackpatches(resolve, this);
        runPostLoadCallbacks();
        if (report_ && session_.Obsolete())
            report_->SetObsolete();
        handOverRoots(roots);
        keeper_.releaseAll();
        return IO_OK;
    }

private:
    struct Entry {
        std::vector<int> refs; // saved reference ids by index (-1: null)
        bool classRead = false;
        bool dataRead = false;
        bool refsRead = false;
    };

    template <class... Args> void note(const char* format, Args... args) {
        if (report_)
            report_->Add(format, args...);
    }

    // --- Phase 1 ---------------------------------------------------------------------

    IOResult parse() {
        IOResult r = in_.OpenChunk();
        if (r != IO_OK || in_.CurChunkID() != SCENE_CHUNK_HEADER) {
            note("not a scene file (no scene header)");
            return IO_ERROR;
        }
        uint32_t magic = 0, version = 0;
        r = ReadLE32(&in_, magic);
        if (r == IO_OK)
            r = ReadLE32(&in_, version);
        if (r != IO_OK || magic != SCENE_MAGIC) {
            note("not a scene file (bad scene header)");
            return IO_ERROR;
        }
        if (version != SCENE_FORMAT_VERSION) {
            note("scene format version %u is not known", unsigned(version));
            return IO_ERROR;
        }
        if ((r = in_.CloseChunk()) != IO_OK)
            return r;

        while ((r = in_.OpenChunk()) == IO_OK) {
            switch (in_.CurChunkID()) {
            case SCENE_CHUNK_OBJECTS:
                r = readObjects();
                break;
            case SCENE_CHUNK_ROOTS:
                r = readIds(rootIds_);
                break;
            default:
                break; // a newer writer's chunk: skipped
            }
            if (r != IO_OK)
                return r;
            if ((r = in_.CloseChunk()) != IO_OK)
                return r;
        }
        return r == IO_END ? IO_OK : r;
    }

    IOResult readObjects() {
        IOResult r;
        while ((r = in_.OpenChunk()) == IO_OK) {
            if (in_.CurChunkID() == SCENE_CHUNK_OBJECT) {
                entries_.emplace_back();
                r = readObject(int(entries_.size()) - 1);
                if (r != IO_OK)
                    return r;
            }
            if ((r = in_.CloseChunk()) != IO_OK)
                return r;
        }
        return r == IO_END ? IO_OK : r;
    }

    IOResult readObject(int id) {
        IOResult r;
        while ((r = in_.OpenChunk()) == IO_OK) {
            Entry& e = entries_[id];
            switch (in_.CurChunkID()) {
            case SCENE_CHUNK_OBJECT_CLASS:
                if (e.classRead)
                    note("object %d: second class chunk ignored", id);
                else
                    r = createObject(id);
                e.classRead = true;
                break;
            case SCENE_CHUNK_OBJECT_DATA:
                if (e.dataRead)
                    note("object %d: second data chunk ignored", id);
                else if (!e.classRead)
                    note("object %d: data before its class ignored", id);
                else if (keeper_.get(id))
                    r = loadObject(id);
                e.dataRead = true;
                break;
            case SCENE_CHUNK_OBJECT_REFS:
                if (e.refsRead)
                    note("object %d: second reference chunk ignored", id);
                else
                    r = readIds(e.refs);
                e.refsRead = true;
                break;
            default:
                break;
            }
            if (r != IO_OK)
                return r;
            if ((r = in_.CloseChunk()) != IO_OK)
                return r;
        }
        return r == IO_END ? IO_OK : r;
    }

    IOResult createObject(int id) {
        uint32_t sclass = 0, a = 0, b = 0;
        IOResult r = ReadLE32(&in_, sclass);
        if (r == IO_OK)
            r = ReadLE32(&in_, a);
        if (r == IO_OK)
            r = ReadLE32(&in_, b);
        if (r != IO_OK)
            return r;
        ClassDesc* cd = ClassDirectory::Get().FindClass(sclass, Class_ID(a, b));
        if (!cd) {
            note("object %d: class 0x%08X:0x%08X (super class 0x%08X) is not known; left out", id,
                 unsigned(a), unsigned(b), unsigned(sclass));
            return IO_OK;
        }
        void* made = nullptr;
        try {
            made = cd->Create(TRUE);
        } catch (...) {
            made = nullptr; // nothing a plug-in throws may leave the host's load
        }
        // A descriptor's Create answers its object as the Animatable it is.
        auto* target = dynamic_cast<ReferenceTarget*>(static_cast<Animatable*>(made));
        if (!target) {
            if (made)
                static_cast<Animatable*>(made)->DeleteThis();
            note("object %d: class 0x%08X:0x%08X could not be created; left out", id, unsigned(a),
                 unsigned(b));
            return IO_OK;
        }
        keeper_.set(id, target);
        return IO_OK;
    }

    IOResult loadObject(int id) {
        ObjectLoad objectLoad(in_, session_);
        IOResult r = IO_ERROR;
        try {
            r = keeper_.get(id)->Load(&objectLoad);
        } catch (...) {
            note("object %d: Load threw an exception", id);
            r = IO_ERROR;
        }
        if (!objectLoad.finish())
            note("object %d: Load did not keep its chunks balanced", id);
        if (r != IO_OK) {
            note("object %d: Load failed", id);
            return IO_ERROR;
        }
        return IO_OK;
    }

    /// A count and that many 32-bit ids; the count must fit in the chunk.
    IOResult readIds(std::vector<int>& ids) {
        int32_t n = 0;
        IOResult r = ReadLE32(&in_, n);
        if (r != IO_OK)
            return r;
        const ULONG left = in_.ChunkBytesLeft();
        if (n < 0 || (left != ILOAD_SIZE_UNKNOWN && ULONG(n) > left / 4)) {
            note("a count of %d ids does not fit its chunk", int(n));
            return IO_ERROR;
        }
        ids.clear();
        for (int32_t i = 0; i < n; ++i) {
            int32_t id = -1;
            if ((r = ReadLE32(&in_, id)) != IO_OK)
                return r;
            ids.push_back(id);
        }
        return IO_OK;
    }

    // --- Phases 2 to 4 -------------------------------------------------------------

    void restoreReferences() {
        const int n = int(entries_.size());
        for (int id = 0; id < n; ++id) {
            ReferenceTarget* maker = keeper_.get(id);
            if (!maker)
                continue;
            const std::vector<int>& refs = entries_[id].refs;
            for (int i = 0; i < int(refs.size()); ++i) {
                const int to = refs[i];
                if (to == -1)
                    continue;
                if (to <= id || to >= n) {
                    note("object %d: reference %d to object %d refused", id, i, to);
                    continue;
                }
                ReferenceTarget* target = keeper_.get(to);
                if (!target)
                    continue; // left out, and reported as such
                const int slot = maker->RemapRefOnLoad(i);
                if (slot < 0 || slot >= maker->NumRefs()) {
                    note("object %d: it has no reference %d", id, slot);
                    continue;
                }
                maker->ReplaceReference(slot, target, TRUE);
                if (maker->GetReference(slot) != target)
                    note("object %d: reference %d to object %d not taken", id, slot, to);
            }
        }
    }

    static void* resolve(int refID, void* context) {
        auto* self = static_cast<SceneReader*>(context);
        return self->keeper_.get(refID);
    }

    void runPostLoadCallbacks() {
        ObjectLoad callbackLoad(in_, session_);
        try {
            session_.RunPostLoadCallbacks(&callbackLoad);
        } catch (...) {
            note("a post-load callback threw an exception");
        }
    }

    void handOverRoots(SceneRoots& roots) {
        std::vector<int> handed;
        for (int id : rootIds_) {
            ReferenceTarget* root = keeper_.get(id);
            if (!root) {
                note("root %d is not an object of this scene", id);
                continue;
            }
            if (std::find(handed.begin(), handed.end(), id) != handed.end())
                continue;
            roots.Add(root);
            handed.push_back(id);
        }
        for (int id = 0; id < int(entries_.size()); ++id) {
            ReferenceTarget* o = keeper_.get(id);
            if (o && o->NumDependents() == 1 &&
                std::find(handed.begin(), handed.end(), id) == handed.end())
                note("object %d is not referenced; deleted", id);
        }
    }

    ILoad& in_;
    SceneReport* report_;        // may be null
    ObjectKeeper keeper_;        // every object made, until the scene is complete
    LoadSession session_;        // destroyed before the keeper lets go of the objects
    std::vector<Entry> entries_; // per object id
    std::vector<int> rootIds_;   // saved root ids
};

} // namespace

IOResult LoadScene(ILoad& in, SceneRoots& roots, SceneReport* report) {
    SceneReader reader(in, report);
    return reader.read(roots);
}

IOResult LoadSceneFile(const char* path, SceneRoots& roots, SceneReport* report) {
    ChunkLoad in;
    if (in.ReadFile(path) != IO_OK) {
        if (report)
            report->Add("cannot read %s", path ? path : "(null)");
        return IO_ERROR;
    }
    return LoadScene(in, roots, report);
}
