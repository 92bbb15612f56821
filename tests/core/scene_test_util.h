// Helpers of the scene tests that use the module's classes: registering them as a host
// does (through LibClassDesc), a client object class that a scene can save, and a scene
// file taken apart into its objects so that a test can damage it on purpose.
#pragma once

#include "control/curve_control.h"
#include "host/class_desc.h"
#include "host/controller.h"
#include "host/scene.h"
#include "io_test_util.h"
#include "plugin/class_descs.h"

#include <doctest/doctest.h>

#include <vector>

namespace scenetest {

using iotest::Bytes;

/// A client plug-in's object: it holds its control as reference 0 and answers the client
/// callback interface (without doing anything).
class SceneClient : public ReferenceTarget, public ICurveCtlClient {
public:
    static constexpr uint32_t kClassA = 0x5CE0C11E, kClassB = 0x00000001;

    ~SceneClient() override { DeleteAllRefsFromMe(); }
    Class_ID ClassID() override { return Class_ID(kClassA, kClassB); }
    SClass_ID SuperClassID() override { return REF_TARGET_CLASS_ID; }
    void* GetInterface(ULONG id) override {
        if (id == CURVE_CLIENT_INTERFACE_ID)
            return static_cast<ICurveCtlClient*>(this);
        return ReferenceTarget::GetInterface(id);
    }
    int NumRefs() override { return 1; }
    RefTargetHandle GetReference(int i) override { return i == 0 ? control_ : nullptr; }
    CurveControl* Control() const { return dynamic_cast<CurveControl*>(control_); }

    BOOL GetCurveButtonImages(HIMAGELIST*, ICurveCtl*) override { return FALSE; }
    BOOL GetCurveButtonText(int, CStr&, ICurveCtl*) override { return FALSE; }
    void ResetCurve(int, ICurveCtl*) override {}
    void NewCurveCreated(int, ICurveCtl*) override {}

protected:
    void SetReference(int i, RefTargetHandle target) override {
        if (i == 0)
            control_ = target;
    }

private:
    RefTargetHandle control_ = nullptr; // reference 0
};

class SceneClientDesc : public ClassDesc {
public:
    int IsPublic() override { return 0; }
    void* Create(BOOL) override { return static_cast<Animatable*>(new SceneClient); }
    const char* ClassName() override { return "Scene Client"; }
    SClass_ID SuperClassID() override { return REF_TARGET_CLASS_ID; }
    Class_ID ClassID() override { return Class_ID(SceneClient::kClassA, SceneClient::kClassB); }
    const char* Category() override { return ""; }
};

/// Registers the module's classes through its exports, and the test client's class.
inline void RegisterModuleClasses() {
    static SceneClientDesc clientDesc;
    for (int i = 0; i < LibNumberClasses(); ++i)
        ClassDirectory::Get().AddClass(LibClassDesc(i));
    ClassDirectory::Get().AddClass(&clientDesc);
}

inline Bytes SaveSceneBytes(std::vector<ReferenceTarget*> roots) {
    ChunkSave out;
    SceneReport report;
    const IOResult r = SaveScene(roots.data(), int(roots.size()), out, &report);
    CAPTURE(report.Message(0));
    REQUIRE(r == IO_OK);
    return Bytes(out.Data(), out.Data() + out.Size());
}

inline IOResult LoadSceneBytes(const Bytes& b, SceneRoots& roots, SceneReport* report = nullptr) {
    ChunkLoad in(b.data(), b.size());
    return LoadScene(in, roots, report);
}

/// A scene file taken apart: each object's class, own chunks and reference ids, and the
/// roots. Write() puts it back together in the writer's layout.
struct SceneParts {
    struct Object {
        uint32_t superClass = 0;
        Class_ID cid;
        Bytes data;            // the object's own chunks
        std::vector<int> refs; // reference ids by index
    };
    std::vector<Object> objects;
    std::vector<int> roots;

    static SceneParts Parse(const Bytes& b) {
        SceneParts parts;
        ChunkLoad in(b.data(), b.size());
        while (in.OpenChunk() == IO_OK) {
            if (in.CurChunkID() == SCENE_CHUNK_OBJECTS) {
                while (in.OpenChunk() == IO_OK) {
                    parts.objects.push_back(parseObject(in, b));
                    in.CloseChunk();
                }
            } else if (in.CurChunkID() == SCENE_CHUNK_ROOTS) {
                parts.roots = readIds(in);
            }
            in.CloseChunk();
        }
        REQUIRE(in.Status() == IO_OK);
        return parts;
    }

    Bytes Write() const {
        using iotest::Cat;
        using iotest::LE;
        using iotest::MakeChunk;
        Bytes objectsPayload;
        for (const Object& o : objects) {
            const Bytes object =
                MakeChunk(SCENE_CHUNK_OBJECT,
                          Cat({MakeChunk(SCENE_CHUNK_OBJECT_CLASS,
                                         LE(o.superClass, o.cid.PartA(), o.cid.PartB())),
                               MakeChunk(SCENE_CHUNK_OBJECT_DATA, o.data, true),
                               MakeChunk(SCENE_CHUNK_OBJECT_REFS, ids(o.refs))}),
                          true);
            objectsPayload.insert(objectsPayload.end(), object.begin(), object.end());
        }
        return Cat({MakeChunk(SCENE_CHUNK_HEADER, LE(SCENE_MAGIC, SCENE_FORMAT_VERSION)),
                    MakeChunk(SCENE_CHUNK_OBJECTS, objectsPayload, true),
                    MakeChunk(SCENE_CHUNK_ROOTS, ids(roots))});
    }

    /// Index of the first object of class `cid`, or -1.
    int Find(const Class_ID& cid) const {
        for (int i = 0; i < int(objects.size()); ++i)
            if (objects[i].cid == cid)
                return i;
        return -1;
    }

private:
    static std::vector<int> readIds(ChunkLoad& in) {
        int32_t n = 0;
        REQUIRE(ReadLE32(&in, n) == IO_OK);
        std::vector<int> ids(n);
        for (int& id : ids)
            REQUIRE(ReadLE32(&in, id) == IO_OK);
        return ids;
    }

    static Object parseObject(ChunkLoad& in, const Bytes& b) {
        Object o;
        while (in.OpenChunk() == IO_OK) {
            switch (in.CurChunkID()) {
            case SCENE_CHUNK_OBJECT_CLASS: {
                uint32_t a = 0, c = 0;
                REQUIRE(ReadLE32(&in, o.superClass) == IO_OK);
                REQUIRE(ReadLE32(&in, a) == IO_OK);
                REQUIRE(ReadLE32(&in, c) == IO_OK);
                o.cid = Class_ID(a, c);
                break;
            }
            case SCENE_CHUNK_OBJECT_DATA: {
                const std::size_t start = in.CurChunkOffset() + CHUNK_HEADER_SIZE;
                o.data.assign(b.begin() + start, b.begin() + start + in.CurChunkSize());
                break;
            }
            case SCENE_CHUNK_OBJECT_REFS:
                o.refs = readIds(in);
                break;
            default:
                break;
            }
            in.CloseChunk();
        }
        return o;
    }

    /// A count and the ids, as the scene stores reference and root lists.
    static Bytes ids(const std::vector<int>& list) {
        Bytes b = iotest::LE(int32_t(list.size()));
        for (int r : list) {
            const Bytes one = iotest::LE(int32_t(r));
            b.insert(b.end(), one.begin(), one.end());
        }
        return b;
    }
};

} // namespace scenetest
