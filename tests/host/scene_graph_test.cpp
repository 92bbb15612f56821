// The scene writer and reader: the object graph they save and restore, and what the
// reader does with objects whose classes it does not know or whose loaders break the rules.
#include "host/controller.h"
#include "scene_test_nodes.h"

using namespace scenetest;

TEST_CASE_FIXTURE(SceneFixture, "Scene: a graph with shared and null references round-trips") {
    Node* original = sharedGraph();
    const Bytes first = save({original});
    release(original);
    CHECK(nodesAlive == baseline);

    SceneRoots roots;
    SceneReport report;
    REQUIRE(load(first, roots, &report) == IO_OK);
    CHECK(report.Count() == 0);
    REQUIRE(roots.Count() == 1);
    Node* root = nodeOf(roots.Get(0));
    REQUIRE(root);
    CHECK(root->value == 1);
    REQUIRE(root->NumRefs() == 3);
    Node* a = nodeOf(root->GetReference(0));
    Node* b = nodeOf(root->GetReference(2));
    REQUIRE(a);
    REQUIRE(b);
    CHECK(root->GetReference(1) == nullptr);
    CHECK(a->value == 10);
    CHECK(b->value == 20);
    CHECK(b->GetReference(1) == nullptr);
    Node* c = nodeOf(a->GetReference(0));
    REQUIRE(c);
    CHECK(b->GetReference(0) == c); // shared, not copied
    CHECK(c->value == 30);
    CHECK(c->NumDependents() == 2);
    CHECK(root->NumDependents() == 1); // the roots only
    CHECK(nodesAlive == baseline + 4);

    // The same graph saves to the same bytes.
    ReferenceTarget* loadedRoot = root;
    CHECK(save({loadedRoot}) == first);

    roots.Clear();
    CHECK(nodesAlive == baseline);
}

TEST_CASE_FIXTURE(SceneFixture, "Scene: the writer numbers objects so references point forward") {
    Node* original = sharedGraph();
    const Bytes bytes = save({original});
    release(original);
    // The first object saved is the root, whatever order the walk visited the others in.
    ChunkLoad in(bytes.data(), bytes.size());
    REQUIRE(in.OpenChunk() == IO_OK);
    CHECK(in.CurChunkID() == SCENE_CHUNK_HEADER);
    uint32_t magic = 0, version = 0;
    CHECK(ReadLE32(&in, magic) == IO_OK);
    CHECK(ReadLE32(&in, version) == IO_OK);
    CHECK(magic == SCENE_MAGIC);
    CHECK(version == SCENE_FORMAT_VERSION);
    in.CloseChunk();
    REQUIRE(in.OpenChunk() == IO_OK);
    CHECK(in.CurChunkID() == SCENE_CHUNK_OBJECTS);
    int id = 0;
    while (in.OpenChunk() == IO_OK) {
        CHECK(in.CurChunkID() == SCENE_CHUNK_OBJECT);
        while (in.OpenChunk() == IO_OK) {
            if (in.CurChunkID() == SCENE_CHUNK_OBJECT_REFS) {
                int32_t n = 0;
                REQUIRE(ReadLE32(&in, n) == IO_OK);
                for (int i = 0; i < n; ++i) {
                    int32_t to = 0;
                    REQUIRE(ReadLE32(&in, to) == IO_OK);
                    CHECK((to == -1 || to > id));
                }
            }
            in.CloseChunk();
        }
        in.CloseChunk();
        ++id;
    }
    CHECK(id == 4);
}

TEST_CASE_FIXTURE(SceneFixture, "Scene: loading records nothing on an open hold") {
    Node* original = sharedGraph();
    const Bytes bytes = save({original});
    release(original);
    theHold.Begin();
    SceneRoots roots;
    REQUIRE(load(bytes, roots) == IO_OK);
    theHold.Accept("load");
    CHECK(theHold.NumUndo() == 0);
    roots.Clear();
    CHECK(theHold.NumUndo() == 0);
}

TEST_CASE_FIXTURE(SceneFixture, "Scene: the built-in Point3 controller is re-created with keys") {
    CHECK(ClassDirectory::Get().FindClass(CTRL_POINT3_CLASS_ID, POINT3_KEY_CONTROL_CLASS_ID) ==
          GetPoint3ControllerClassDesc());
    auto* holder = new Node(1, 5);
    Control* ctrl = NewDefaultPoint3Controller();
    holder->ReplaceReference(0, ctrl);
    AnimateOn();
    Point3 v0(1.0f, 2.0f, 3.0f), v1(4.0f, 5.0f, 6.0f);
    ctrl->SetValue(0, &v0);
    ctrl->SetValue(160, &v1);
    AnimateOff();
    const Bytes bytes = save({holder});
    release(holder);

    SceneRoots roots;
    REQUIRE(load(bytes, roots) == IO_OK);
    Node* loaded = nodeOf(roots.Get(0));
    REQUIRE(loaded);
    auto* c = dynamic_cast<Control*>(loaded->GetReference(0));
    REQUIRE(c);
    CHECK(c->NumKeys() == 2);
    CHECK(c->GetKeyTime(1) == 160);
    Interval valid = FOREVER;
    Point3 mid;
    c->GetValue(80, &mid, valid);
    CHECK(mid == Point3(2.5f, 3.5f, 4.5f));
}

TEST_CASE_FIXTURE(SceneFixture,
                  "Scene: an unknown class is left out and reported, the rest loads") {
    auto* root = new Node(2, 1);
    auto* alien = new AlienNode(1, 2);
    auto* kept = new Node(0, 3);
    auto* onlyAlienHolds = new Node(0, 4);
    root->ReplaceReference(0, alien);
    root->ReplaceReference(1, kept);
    alien->ReplaceReference(0, onlyAlienHolds);
    const Bytes bytes = save({root});
    release(root);

    SceneRoots roots;
    SceneReport report;
    REQUIRE(load(bytes, roots, &report) == IO_OK);
    CHECK(report.Contains("is not known"));
    CHECK(report.Contains("not referenced; deleted")); // what only the alien held
    Node* loaded = nodeOf(roots.Get(0));
    REQUIRE(loaded);
    CHECK(loaded->GetReference(0) == nullptr);
    REQUIRE(nodeOf(loaded->GetReference(1)));
    CHECK(nodeOf(loaded->GetReference(1))->value == 3);
    CHECK(nodesAlive == baseline + 2);
}

TEST_CASE_FIXTURE(SceneFixture, "Scene: a class whose descriptor makes nothing is reported") {
    auto* root = new Node(1, 1);
    root->ReplaceReference(0, new BrokenNode(0, 2));
    const Bytes bytes = save({root});
    release(root);
    SceneRoots roots;
    SceneReport report;
    REQUIRE(load(bytes, roots, &report) == IO_OK);
    CHECK(report.Contains("could not be created"));
    REQUIRE(nodeOf(roots.Get(0)));
    CHECK(roots.Get(0)->GetReference(0) == nullptr);
}

TEST_CASE_FIXTURE(SceneFixture, "Scene: a reference loop is saved but never restored as a loop") {
    auto* a = new Node(1, 1);
    auto* b = new Node(1, 2);
    a->ReplaceReference(0, b);
    b->ReplaceReference(0, a); // the host never builds this; a file may still say it
    const Bytes bytes = save({a});
    b->DeleteReference(0); // breaks the loop: a, held by nothing, goes, and b with it
    CHECK(nodesAlive == baseline);

    SceneRoots roots;
    SceneReport report;
    REQUIRE(load(bytes, roots, &report) == IO_OK);
    CHECK(report.Contains("refused"));
    Node* la = nodeOf(roots.Get(0));
    REQUIRE(la);
    Node* lb = nodeOf(la->GetReference(0));
    REQUIRE(lb);
    CHECK(lb->GetReference(0) == nullptr);
}

TEST_CASE_FIXTURE(SceneFixture, "Scene: pointers are patched to the objects saved under ids") {
    auto* root = new Node(2, 1);
    auto* a = new Node(0, 2);
    auto* b = new Node(0, 3);
    Node outsider(0, 9); // not part of the scene: its id is -1, nothing is saved
    root->ReplaceReference(0, a);
    root->ReplaceReference(1, b);
    a->partner = b;
    b->partner = &outsider;
    const Bytes bytes = save({root});
    release(root);

    SceneRoots roots;
    REQUIRE(load(bytes, roots) == IO_OK);
    Node* lr = nodeOf(roots.Get(0));
    REQUIRE(lr);
    Node* la = nodeOf(lr->GetReference(0));
    Node* lb = nodeOf(lr->GetReference(1));
    REQUIRE(la);
    REQUIRE(lb);
    CHECK(la->partner == lb);
    CHECK(lb->partner == nullptr);
}

TEST_CASE_FIXTURE(SceneFixture, "Scene: post-load callbacks run after every reference is back") {
    auto* root = new Node(3, 100);
    for (int i = 0; i < 3; ++i) {
        auto* n = new Node(0, i);
        n->callbackPriority = 7 - 3 * i; // 7, 4, 1
        root->ReplaceReference(i, n);
    }
    root->callbackPriority = 4;
    const Bytes bytes = save({root});
    release(root);
    SceneRoots roots;
    REQUIRE(load(bytes, roots) == IO_OK);
    // Lowest priority first; equal priorities in load order (the root loads first).
    CHECK(postLoad == std::vector<std::string>{"2", "100", "1", "0"});
}

TEST_CASE_FIXTURE(SceneFixture, "Scene: several roots, each handed over once") {
    auto* a = new Node(1, 1);
    auto* b = new Node(0, 2);
    a->ReplaceReference(0, b);
    std::vector<ReferenceTarget*> list = {a, b, nullptr, a};
    const Bytes bytes = save(list);
    release(a);
    SceneRoots roots;
    REQUIRE(load(bytes, roots) == IO_OK);
    REQUIRE(roots.Count() == 2);
    CHECK(roots.Get(0)->GetReference(0) == roots.Get(1));
    CHECK(roots.Get(1)->NumDependents() == 2);
    CHECK(roots.Get(5) == nullptr);
}

// ---------------------------------------------------------------------------------------
// Objects that break the rules

TEST_CASE_FIXTURE(SceneFixture, "Scene: an object's Load cannot leave its own data") {
    for (int behaviour : {kCloseTooMany, kLeaveOpen}) {
        CAPTURE(behaviour);
        auto* root = new Node(2, 1);
        auto* bad = new Node(0, 2);
        bad->behaviour = behaviour;
        root->ReplaceReference(0, bad);
        root->ReplaceReference(1, new Node(0, 3));
        const Bytes bytes = save({root});
        release(root);
        SceneRoots roots;
        SceneReport report;
        // Refused or closed for it, the object never moved the reader: the node after it
        // still loads from the right place.
        REQUIRE(load(bytes, roots, &report) == IO_OK);
        CHECK(report.Contains("did not keep its chunks balanced"));
        Node* lr = nodeOf(roots.Get(0));
        REQUIRE(lr);
        REQUIRE(nodeOf(lr->GetReference(0)));
        REQUIRE(nodeOf(lr->GetReference(1)));
        CHECK(nodeOf(lr->GetReference(1))->value == 3);
    }
}

TEST_CASE_FIXTURE(SceneFixture, "Scene: a failing or throwing Load ends the load and frees all") {
    for (int behaviour : {kFailLoad, kThrowInLoad}) {
        CAPTURE(behaviour);
        postLoad.clear();
        auto* root = new Node(2, 1);
        root->callbackPriority = 0;
        auto* bad = new Node(0, 2);
        bad->behaviour = behaviour;
        root->ReplaceReference(0, new Node(0, 3));
        root->ReplaceReference(1, bad);
        const Bytes bytes = save({root});
        release(root);
        SceneRoots roots;
        SceneReport report;
        CHECK(load(bytes, roots, &report) == IO_ERROR);
        CHECK(report.Contains("Load failed"));
        CHECK(roots.Count() == 0);
        CHECK(nodesAlive == baseline);
        CHECK(postLoad.empty()); // the root's callback was dropped, not run
    }
}

TEST_CASE_FIXTURE(SceneFixture, "Scene: a Save that breaks the chunk rules fails the save") {
    auto* root = new Node(0, 1);
    root->behaviour = kEndTooMany;
    ChunkSave out;
    SceneReport report;
    ReferenceTarget* list[] = {root};
    CHECK(SaveScene(list, 1, out, &report) == IO_ERROR);
    CHECK(report.Contains("balanced"));
    // The writer closed the chunks for it: the stream itself is still well formed.
    CHECK(out.Status() == IO_OK);
    release(root);
}
