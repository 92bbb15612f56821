// The scene reader against files the writer never writes: hand-made scenes that break its
// rules, every truncation and many corruptions of a real scene, and a read failure at
// every read. Whatever the file, the reader answers a result, hands over either a
// complete scene or nothing, and leaves no object behind.
#include "host/controller.h"
#include "scene_test_nodes.h"
#include "support/failing_load.h"

#include <functional>
#include <random>

using namespace scenetest;

namespace {

/// Writes scene files by hand.
class SceneBuilder {
public:
    explicit SceneBuilder(uint32_t magic = SCENE_MAGIC, uint32_t version = SCENE_FORMAT_VERSION) {
        out.BeginChunk(SCENE_CHUNK_HEADER);
        WriteLE32(&out, magic);
        WriteLE32(&out, version);
        out.EndChunk();
        out.BeginChunk(SCENE_CHUNK_OBJECTS);
    }
    /// A test node with `value`, `slots` reference slots (default: one per id) and the
    /// saved reference ids `refs`.
    void node(int value, std::vector<int> refs, int slots = -1, Class_ID cid = kNodeClass) {
        raw([&](ChunkSave& s) {
            classChunk(s, cid);
            dataChunk(s, value, slots < 0 ? int(refs.size()) : slots);
            refsChunk(s, refs);
        });
    }
    /// An object chunk whose contents `fill` writes.
    void raw(const std::function<void(ChunkSave&)>& fill) {
        out.BeginChunk(SCENE_CHUNK_OBJECT);
        fill(out);
        out.EndChunk();
    }
    Bytes finish(std::vector<int> roots, bool writeRoots = true) {
        out.EndChunk();
        if (writeRoots) {
            out.BeginChunk(SCENE_CHUNK_ROOTS);
            WriteLE32(&out, int32_t(roots.size()));
            for (int r : roots)
                WriteLE32(&out, int32_t(r));
            out.EndChunk();
        }
        REQUIRE(out.Status() == IO_OK);
        return Bytes(out.Data(), out.Data() + out.Size());
    }

    static void classChunk(ChunkSave& s, Class_ID cid) {
        s.BeginChunk(SCENE_CHUNK_OBJECT_CLASS);
        WriteLE32(&s, uint32_t(REF_TARGET_CLASS_ID));
        WriteLE32(&s, cid.PartA());
        WriteLE32(&s, cid.PartB());
        s.EndChunk();
    }
    static void dataChunk(ChunkSave& s, int value, int slots) {
        s.BeginChunk(SCENE_CHUNK_OBJECT_DATA);
        s.BeginChunk(0x0001);
        WriteLE32(&s, int32_t(value));
        WriteLE32(&s, int32_t(slots));
        WriteLE32(&s, int32_t(kNormal));
        WriteLE32(&s, int32_t(-1));
        s.EndChunk();
        s.EndChunk();
    }
    /// `count` overrides the count written before the ids.
    static void refsChunk(ChunkSave& s, const std::vector<int>& refs, int64_t count = -2) {
        s.BeginChunk(SCENE_CHUNK_OBJECT_REFS);
        WriteLE32(&s, int32_t(count == -2 ? int64_t(refs.size()) : count));
        for (int r : refs)
            WriteLE32(&s, int32_t(r));
        s.EndChunk();
    }

    ChunkSave out;
};

/// The invariant of every load: a result, and either roots or no objects at all.
IOResult loadChecked(const Bytes& b, int baseline) {
    SceneRoots roots;
    ChunkLoad in(b.data(), b.size());
    const IOResult r = LoadScene(in, roots);
    if (r != IO_OK) {
        CHECK(roots.Count() == 0);
        CHECK(nodesAlive == baseline);
    }
    return r;
}

/// A scene with every feature: shared and null references, a controller with keys, a
/// patched pointer, post-load callbacks.
Bytes sampleScene() {
    Node* root = sharedGraph();
    auto* a = nodeOf(root->GetReference(0));
    auto* b = nodeOf(root->GetReference(2));
    a->partner = b;
    a->callbackPriority = 3;
    root->callbackPriority = 0;
    auto* holder = new Node(1, 40);
    Control* ctrl = NewDefaultPoint3Controller();
    holder->ReplaceReference(0, ctrl);
    AnimateOn();
    Point3 v(1.0f, 2.0f, 3.0f);
    ctrl->SetValue(10, &v);
    AnimateOff();
    b->ReplaceReference(1, holder);
    const Bytes bytes = save({root});
    release(root);
    return bytes;
}

} // namespace

TEST_CASE_FIXTURE(SceneFixture, "Scene reader: references that break the rules are refused") {
    SceneBuilder sb;
    sb.node(0, {1, 0, 5, -7, 2}); // forward, self, past the end, below -1, forward
    sb.node(1, {});
    sb.node(2, {0, 3}, 1); // backward, and one more id than it has slots
    sb.node(3, {});
    const Bytes bytes = sb.finish({0, 9, -1, 0});

    SceneRoots roots;
    SceneReport report;
    ChunkLoad in(bytes.data(), bytes.size());
    REQUIRE(LoadScene(in, roots, &report) == IO_OK);
    CHECK(report.Contains("object 0: reference 1 to object 0 refused"));
    CHECK(report.Contains("object 0: reference 2 to object 5 refused"));
    CHECK(report.Contains("object 0: reference 3 to object -7 refused"));
    CHECK(report.Contains("object 2: reference 0 to object 0 refused"));
    CHECK(report.Contains("object 2: it has no reference 1"));
    CHECK(report.Contains("object 3 is not referenced; deleted"));
    CHECK(report.Contains("root 9 is not an object"));
    CHECK(report.Contains("root -1 is not an object"));
    REQUIRE(roots.Count() == 1);
    Node* root = nodeOf(roots.Get(0));
    REQUIRE(root);
    CHECK(nodeOf(root->GetReference(0))->value == 1);
    CHECK(root->GetReference(1) == nullptr);
    CHECK(root->GetReference(2) == nullptr);
    CHECK(root->GetReference(3) == nullptr);
    Node* two = nodeOf(root->GetReference(4));
    REQUIRE(two);
    CHECK(two->GetReference(0) == nullptr);
}

TEST_CASE_FIXTURE(SceneFixture, "Scene reader: misplaced, doubled and unknown chunks") {
    SceneBuilder sb;
    sb.raw([](ChunkSave& s) { // data before class: the data is ignored, the object kept
        SceneBuilder::dataChunk(s, 7, 0);
        SceneBuilder::classChunk(s, kNodeClass);
        SceneBuilder::refsChunk(s, {});
    });
    sb.raw([](ChunkSave& s) { // two of each: the first counts
        SceneBuilder::classChunk(s, kNodeClass);
        SceneBuilder::classChunk(s, kAlienClass);
        SceneBuilder::dataChunk(s, 8, 1);
        SceneBuilder::dataChunk(s, 9, 1);
        SceneBuilder::refsChunk(s, {-1});
        SceneBuilder::refsChunk(s, {0});
        s.BeginChunk(0x0099); // unknown: skipped
        WriteLE32(&s, 1);
        s.EndChunk();
    });
    sb.raw([](ChunkSave& s) { // no class at all: left out
        SceneBuilder::dataChunk(s, 10, 0);
    });
    sb.out.EndChunk();         // objects
    sb.out.BeginChunk(0x7777); // an unknown top-level chunk
    sb.out.EndChunk();
    sb.out.BeginChunk(SCENE_CHUNK_OBJECTS); // finish() closes it again
    const Bytes bytes = sb.finish({1, 0, 2});

    SceneRoots roots;
    SceneReport report;
    ChunkLoad in(bytes.data(), bytes.size());
    REQUIRE(LoadScene(in, roots, &report) == IO_OK);
    CHECK(report.Contains("object 0: data before its class ignored"));
    CHECK(report.Contains("object 1: second class chunk ignored"));
    CHECK(report.Contains("object 1: second data chunk ignored"));
    CHECK(report.Contains("object 1: second reference chunk ignored"));
    CHECK(report.Contains("root 2 is not an object"));
    REQUIRE(roots.Count() == 2);
    CHECK(nodeOf(roots.Get(0))->value == 8);
    CHECK(nodeOf(roots.Get(0))->GetReference(0) == nullptr);
    CHECK(nodeOf(roots.Get(1))->value == 0); // constructed, never loaded
}

TEST_CASE_FIXTURE(SceneFixture, "Scene reader: what is not a scene is an error") {
    const Bytes empty;
    CHECK(loadChecked(empty, baseline) == IO_ERROR);
    CHECK(loadChecked(SceneBuilder(0x12345678).finish({}), baseline) == IO_ERROR);
    SceneRoots roots;
    SceneReport report;
    const Bytes future = SceneBuilder(SCENE_MAGIC, 2).finish({});
    ChunkLoad in(future.data(), future.size());
    CHECK(LoadScene(in, roots, &report) == IO_ERROR);
    CHECK(report.Contains("version 2"));

    ChunkSave noHeader;
    noHeader.BeginChunk(SCENE_CHUNK_OBJECTS);
    noHeader.EndChunk();
    CHECK(loadChecked(Bytes(noHeader.Data(), noHeader.Data() + noHeader.Size()), baseline) ==
          IO_ERROR);
}

TEST_CASE_FIXTURE(SceneFixture, "Scene reader: id counts that do not fit their chunk") {
    for (int count : {-1, 3, 0x7FFFFFFF}) {
        CAPTURE(count);
        SceneBuilder sb;
        sb.node(1, {});
        sb.raw([count](ChunkSave& s) {
            SceneBuilder::classChunk(s, kNodeClass);
            SceneBuilder::dataChunk(s, 2, 3);
            SceneBuilder::refsChunk(s, {-1, -1}, count); // two ids follow
        });
        CHECK(loadChecked(sb.finish({0}), baseline) == IO_ERROR);
    }
    SceneBuilder sb;
    sb.node(1, {});
    sb.out.EndChunk();
    sb.out.BeginChunk(SCENE_CHUNK_ROOTS);
    WriteLE32(&sb.out, int32_t(1000)); // one root id follows
    WriteLE32(&sb.out, int32_t(0));
    sb.out.EndChunk();
    CHECK(sb.out.Status() == IO_OK);
    CHECK(loadChecked(Bytes(sb.out.Data(), sb.out.Data() + sb.out.Size()), baseline) == IO_ERROR);
}

TEST_CASE_FIXTURE(SceneFixture, "Scene reader: a read failure at every read of a scene") {
    const Bytes bytes = sampleScene();
    int failures = 0;
    for (int n = 1;; ++n) {
        CAPTURE(n);
        postLoad.clear();
        ChunkLoad inner(bytes.data(), bytes.size());
        testsupport::FailingLoad in(inner, n);
        SceneRoots roots;
        const IOResult r = LoadScene(in, roots);
        if (!in.Failed()) {
            // n is past the last read: the load is whole.
            CHECK(r == IO_OK);
            CHECK(roots.Count() == 1);
            CHECK(postLoad == std::vector<std::string>{"1", "10"});
            break;
        }
        ++failures;
        CHECK(r == IO_ERROR);
        CHECK(roots.Count() == 0);
        CHECK(nodesAlive == baseline);
        CHECK(postLoad.empty());
    }
    CHECK(failures > 40); // every read of the sample was made to fail once
}

TEST_CASE_FIXTURE(SceneFixture, "Scene reader: every truncation of a scene") {
    const Bytes bytes = sampleScene();
    int ok = 0;
    for (std::size_t len = 0; len < bytes.size(); ++len) {
        CAPTURE(len);
        if (loadChecked(Bytes(bytes.begin(), bytes.begin() + len), baseline) == IO_OK)
            ++ok;
    }
    // Only cuts between top-level chunks leave a whole (smaller) scene.
    CHECK(ok <= 2);
}

TEST_CASE_FIXTURE(SceneFixture, "Scene reader: corrupted bytes and flipped bits") {
    const Bytes bytes = sampleScene();
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        for (unsigned char v : {0x00, 0xFF, 0x80, 0x7F}) {
            Bytes b = bytes;
            b[i] = v;
            CAPTURE(i);
            loadChecked(b, baseline);
        }
    }
    std::mt19937 rng(20261121); // fixed seed: the same damage every run
    for (int round = 0; round < 2000; ++round) {
        Bytes b = bytes;
        const int flips = 1 + int(rng() % 4);
        for (int f = 0; f < flips; ++f) {
            const std::size_t bit = rng() % (b.size() * 8);
            b[bit / 8] ^= static_cast<unsigned char>(1u << (bit % 8));
        }
        CAPTURE(round);
        loadChecked(b, baseline);
    }
}
