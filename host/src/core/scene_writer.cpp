// The scene writer. Objects get their ids in a topological order of the reference graph
// (reverse post-order of a depth-first walk from the roots), so that every reference
// points from a smaller id to a larger one. The reader relies on that order: it refuses
// any other reference, which makes a loop of references impossible to load whatever a
// file says.
#include "host/chunk_values.h"
#include "host/scene.h"

#include <algorithm>
#include <unordered_map>
#include <vector>

namespace {

/// The objects of one save, by id.
struct ObjectTable {
    std::vector<ReferenceTarget*> byId;        // id -> object
    std::unordered_map<const void*, int> idOf; // object -> id

    int find(const void* target) const {
        auto it = idOf.find(target);
        return it == idOf.end() ? -1 : it->second;
    }
};

/// Walks the graph from the roots without recursion (a long chain of references must
/// not exhaust the stack) and numbers it in reverse post-order.
void collectObjects(ReferenceTarget* const* roots, int numRoots, ObjectTable& table) {
    struct Frame {
        ReferenceTarget* object;
        int nextRef; // next reference index to visit
    };
    std::unordered_map<const void*, bool> seen;
    std::vector<ReferenceTarget*> postOrder;
    std::vector<Frame> stack;
    for (int r = 0; r < numRoots; ++r) {
        ReferenceTarget* root = roots ? roots[r] : nullptr;
        if (!root || seen.count(root))
            continue;
        seen[root] = true;
        stack.push_back(Frame{root, 0});
        while (!stack.empty()) {
            Frame& f = stack.back();
            if (f.nextRef < f.object->NumRefs()) {
                ReferenceTarget* t = f.object->GetReference(f.nextRef++);
                if (t && !seen.count(t)) {
                    seen[t] = true;
                    stack.push_back(Frame{t, 0});
                }
                continue;
            }
            postOrder.push_back(f.object);
            stack.pop_back();
        }
    }
    table.byId.assign(postOrder.rbegin(), postOrder.rend());
    for (int id = 0; id < int(table.byId.size()); ++id)
        table.idOf[table.byId[id]] = id;
}

/// What an object's Save writes through: the scene's stream, with the object kept inside
/// its own data chunk. An EndChunk that would close the data chunk is refused, and
/// chunks the object leaves open are closed for it; both count as misuse.
class ObjectSave : public ISave {
public:
    ObjectSave(ChunkSave& out, const ObjectTable& table) : out_(out), table_(table) {}

    void BeginChunk(USHORT id) override {
        ++depth_;
        out_.BeginChunk(id);
    }
    void EndChunk() override {
        if (depth_ == 0) {
            misused_ = true;
            return;
        }
        --depth_;
        out_.EndChunk();
    }
    IOResult Write(const void* buf, ULONG nbytes, ULONG* nwrit) override {
        return out_.Write(buf, nbytes, nwrit);
    }
    IOResult WriteCString(const char* str) override { return out_.WriteCString(str); }
    int GetRefID(void* target) override { return table_.find(target); }

    /// Closes what the object left open; true when the object kept to its chunk.
    bool finish() {
        const bool tidy = depth_ == 0 && !misused_;
        for (; depth_ > 0; --depth_)
            out_.EndChunk();
        return tidy;
    }

private:
    ChunkSave& out_;
    const ObjectTable& table_;
    int depth_ = 0;        // chunks the object opened and has not closed
    bool misused_ = false; // it tried to close a chunk it did not open
};

void writeClass(ChunkSave& out, ReferenceTarget* object) {
    const Class_ID cid = object->ClassID();
    out.BeginChunk(SCENE_CHUNK_OBJECT_CLASS);
    WriteLE32(&out, uint32_t(object->SuperClassID()));
    WriteLE32(&out, cid.PartA());
    WriteLE32(&out, cid.PartB());
    out.EndChunk();
}

/// The object's own chunks; false when its Save failed or broke the chunk rules.
bool writeData(ChunkSave& out, const ObjectTable& table, ReferenceTarget* object, int id,
               SceneReport* report) {
    out.BeginChunk(SCENE_CHUNK_OBJECT_DATA);
    ObjectSave objectSave(out, table);
    IOResult r = IO_ERROR;
    try {
        r = object->Save(&objectSave);
    } catch (...) {
        // Nothing a plug-in throws may leave the host's save.
        if (report)
            report->Add("object %d: Save threw an exception", id);
    }
    const bool tidy = objectSave.finish();
    out.EndChunk();
    if (!tidy && report)
        report->Add("object %d: Save did not keep its chunks balanced", id);
    if (r != IO_OK && report)
        report->Add("object %d: Save failed", id);
    return r == IO_OK && tidy;
}

void writeRefs(ChunkSave& out, const ObjectTable& table, ReferenceTarget* object) {
    const int n = std::max(0, object->NumRefs());
    out.BeginChunk(SCENE_CHUNK_OBJECT_REFS);
    WriteLE32(&out, int32_t(n));
    for (int i = 0; i < n; ++i)
        WriteLE32(&out, int32_t(table.find(object->GetReference(i))));
    out.EndChunk();
}

} // namespace

IOResult SaveScene(ReferenceTarget* const* roots, int numRoots, ChunkSave& out,
                   SceneReport* report) {
    ObjectTable table;
    collectObjects(roots, numRoots, table);

    out.BeginChunk(SCENE_CHUNK_HEADER);
    WriteLE32(&out, SCENE_MAGIC);
    WriteLE32(&out, SCENE_FORMAT_VERSION);
    out.EndChunk();

    bool ok = true;
    out.BeginChunk(SCENE_CHUNK_OBJECTS);
    for (int id = 0; id < int(table.byId.size()); ++id) {
        ReferenceTarget* object = table.byId[id];
        out.BeginChunk(SCENE_CHUNK_OBJECT);
        writeClass(out, object);
        if (!writeData(out, table, object, id, report))
            ok = false;
        writeRefs(out, table, object);
        out.EndChunk();
    }
    out.EndChunk();

    out.BeginChunk(SCENE_CHUNK_ROOTS);
    std::vector<int> rootIds;
    for (int r = 0; r < numRoots; ++r) {
        const int id = (roots && roots[r]) ? table.find(roots[r]) : -1;
        if (id >= 0 && std::find(rootIds.begin(), rootIds.end(), id) == rootIds.end())
            rootIds.push_back(id);
    }
    WriteLE32(&out, int32_t(rootIds.size()));
    for (int id : rootIds)
        WriteLE32(&out, int32_t(id));
    out.EndChunk();

    if (out.Status() != IO_OK) {
        if (report)
            report->Add("the scene stream was misused");
        ok = false;
    }
    return ok ? IO_OK : IO_ERROR;
}

IOResult SaveSceneFile(const char* path, ReferenceTarget* const* roots, int numRoots,
                       SceneReport* report) {
    ChunkSave out;
    const IOResult r = SaveScene(roots, numRoots, out, report);
    if (r != IO_OK)
        return r;
    if (out.WriteFile(path) != IO_OK) {
        if (report)
            report->Add("cannot write %s", path ? path : "(null)");
        return IO_ERROR;
    }
    return IO_OK;
}
