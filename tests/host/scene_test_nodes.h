// Test nodes for the scene writer and reader tests: a reference target class registered
// with the class directory whose Load can be told to misbehave, so that the reader's own
// guards are what the tests exercise; and the fixture that checks no node outlives a test.
#pragma once

#include "host/chunk_values.h"
#include "host/class_desc.h"
#include "host/hold.h"
#include "host/scene.h"

#include <doctest/doctest.h>

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace scenetest {

using Bytes = std::vector<unsigned char>;

inline const Class_ID kNodeClass(0x5CE0E001, 0x00000001);
inline const Class_ID kAlienClass(0x5CE0E001, 0x000000AA);  // never registered
inline const Class_ID kBrokenClass(0x5CE0E001, 0x000000BB); // its descriptor makes nothing

inline int nodesAlive = 0;                // Node objects in existence
inline std::vector<std::string> postLoad; // what the nodes' post-load callbacks did, in order

/// What a node's Load or Save does beyond its job.
enum Behaviour : int32_t {
    kNormal = 0,
    kCloseTooMany = 1, // closes its data chunk (the reader must refuse)
    kLeaveOpen = 2,    // returns with a chunk of its own still open
    kFailLoad = 3,     // returns IO_ERROR after reading everything
    kThrowInLoad = 4,  // throws from Load
    kEndTooMany = 5,   // Save ends one chunk more than it began
};

class Node : public ReferenceTarget {
public:
    explicit Node(int slots = 0, int v = 0) : refs_(slots, nullptr), value(v) { ++nodesAlive; }
    ~Node() override {
        DeleteAllRefsFromMe();
        --nodesAlive;
    }

    Class_ID ClassID() override { return kNodeClass; }
    SClass_ID SuperClassID() override { return REF_TARGET_CLASS_ID; }
    int NumRefs() override { return int(refs_.size()); }
    RefTargetHandle GetReference(int i) override {
        return (i >= 0 && i < NumRefs()) ? refs_[i] : nullptr;
    }

    IOResult Save(ISave* isave) override {
        isave->BeginChunk(0x0001);
        WriteLE32(isave, int32_t(value));
        WriteLE32(isave, int32_t(refs_.size()));
        WriteLE32(isave, int32_t(behaviour));
        WriteLE32(isave, int32_t(callbackPriority));
        isave->EndChunk();
        const int partnerId = partner ? isave->GetRefID(partner) : -1;
        if (partnerId >= 0) {
            isave->BeginChunk(0x0002);
            WriteLE32(isave, int32_t(partnerId));
            isave->EndChunk();
        }
        if (behaviour == kEndTooMany)
            isave->EndChunk();
        return IO_OK;
    }

    IOResult Load(ILoad* iload) override;

    std::vector<RefTargetHandle> refs_; // reference slots
    int value;                          // saved
    int behaviour = kNormal;            // saved; acted on by the loaded copy
    int callbackPriority = -1;          // saved; >= 0 registers a logging callback
    Node* partner = nullptr;            // saved by id, patched on load; not a reference

protected:
    void SetReference(int i, RefTargetHandle target) override {
        if (i >= 0 && i < NumRefs())
            refs_[i] = target;
    }
};

class NodeCallback : public PostLoadCallback {
public:
    NodeCallback(Node* node, int priority) : node_(node), priority_(priority) {}
    void proc(ILoad*) override {
        postLoad.push_back(std::to_string(node_->value));
        delete this;
    }
    int Priority() override { return priority_; }

private:
    Node* node_;
    int priority_;
};

inline IOResult Node::Load(ILoad* iload) {
    IOResult r;
    while ((r = iload->OpenChunk()) == IO_OK) {
        if (iload->CurChunkID() == 0x0001) {
            int32_t v = 0, slots = 0, b = 0, p = 0;
            if ((r = ReadLE32(iload, v)) == IO_OK && (r = ReadLE32(iload, slots)) == IO_OK &&
                (r = ReadLE32(iload, b)) == IO_OK && (r = ReadLE32(iload, p)) == IO_OK) {
                if (slots < 0 || slots > 64)
                    return IO_ERROR;
                value = v;
                refs_.assign(slots, nullptr);
                behaviour = b;
                callbackPriority = p;
            }
            if (behaviour == kLeaveOpen)
                return IO_OK;
        } else if (iload->CurChunkID() == 0x0002) {
            int32_t id = -1;
            if ((r = ReadLE32(iload, id)) == IO_OK)
                iload->RecordBackpatch(id, reinterpret_cast<void**>(&partner));
        }
        if (r != IO_OK)
            return r;
        if ((r = iload->CloseChunk()) != IO_OK)
            return r;
    }
    if (r != IO_END)
        return r;
    if (callbackPriority >= 0)
        iload->RegisterPostLoadCallback(new NodeCallback(this, callbackPriority));
    if (behaviour == kCloseTooMany && iload->CloseChunk() == IO_OK)
        return IO_ERROR; // the reader let it walk out of its data
    if (behaviour == kFailLoad)
        return IO_ERROR;
    if (behaviour == kThrowInLoad)
        throw std::runtime_error("node load");
    return IO_OK;
}

/// A node of a class no module knows.
class AlienNode : public Node {
public:
    using Node::Node;
    Class_ID ClassID() override { return kAlienClass; }
};

/// A node whose class is known but cannot be made.
class BrokenNode : public Node {
public:
    using Node::Node;
    Class_ID ClassID() override { return kBrokenClass; }
};

class NodeDesc : public ClassDesc {
public:
    int IsPublic() override { return 0; }
    void* Create(BOOL) override { return static_cast<Animatable*>(new Node); }
    const char* ClassName() override { return "Test Node"; }
    SClass_ID SuperClassID() override { return REF_TARGET_CLASS_ID; }
    Class_ID ClassID() override { return kNodeClass; }
    const char* Category() override { return ""; }
};

class BrokenDesc : public NodeDesc {
public:
    void* Create(BOOL) override { return nullptr; }
    Class_ID ClassID() override { return kBrokenClass; }
};

inline NodeDesc nodeDesc;
inline BrokenDesc brokenDesc;

/// Registers the test classes; checks that each test leaves no node behind and the hold
/// clean.
struct SceneFixture {
    SceneFixture() {
        ClassDirectory::Get().AddClass(&nodeDesc);
        ClassDirectory::Get().AddClass(&brokenDesc);
        postLoad.clear();
        baseline = nodesAlive;
    }
    ~SceneFixture() {
        CHECK_MESSAGE(nodesAlive == baseline, "every node the test made is gone");
        while (theHold.IsSuspended())
            theHold.Resume();
        theHold.End();
        theHold.Reset();
    }
    int baseline;
};

inline Bytes save(std::vector<ReferenceTarget*> roots, SceneReport* report = nullptr) {
    ChunkSave out;
    const IOResult r = SaveScene(roots.data(), int(roots.size()), out, report);
    REQUIRE(r == IO_OK);
    return Bytes(out.Data(), out.Data() + out.Size());
}

inline IOResult load(const Bytes& b, SceneRoots& roots, SceneReport* report = nullptr) {
    ChunkLoad in(b.data(), b.size());
    return LoadScene(in, roots, report);
}

inline Node* nodeOf(ReferenceTarget* t) { return dynamic_cast<Node*>(t); }

/// Releases a hand-made graph: a root held by nothing is deleted with what it holds.
inline void release(ReferenceTarget* root) { root->MaybeAutoDelete(); }

/// root(1) -> [a(10), null, b(20)]; a -> [c(30)]; b -> [c, null]; c -> [].
inline Node* sharedGraph() {
    auto* root = new Node(3, 1);
    auto* a = new Node(1, 10);
    auto* b = new Node(2, 20);
    auto* c = new Node(0, 30);
    root->ReplaceReference(0, a);
    root->ReplaceReference(2, b);
    a->ReplaceReference(0, c);
    b->ReplaceReference(0, c);
    return root;
}

} // namespace scenetest
