// Scenes of the module's own classes: a client object that holds a curve control whose
// curves have animated points. What the reader restores (owners, the client object by id,
// controllers), and what it does when a class is missing, when the file names the wrong
// object as a curve, when any read fails, and when the bytes are damaged.
#include "scene_test_util.h"
#include "support/failing_load.h"
#include "test_support.h"

#include <doctest/doctest.h>

#include <random>

using namespace scenetest;
using iotest::Bytes;

namespace {

struct SceneFixture : testsupport::CoreFixture {
    SceneFixture() { RegisterModuleClasses(); }
};

/// client -> control (3 curves; curve 1 has an animated point with two keys);
/// the control names the client as its client object.
SceneClient* sampleClient() {
    auto* client = new SceneClient;
    auto* control = static_cast<CurveControl*>(
        static_cast<Animatable*>(GetCurveControlClassDesc()->Create(FALSE)));
    client->ReplaceReference(0, control);
    control->RegisterClientObject(client);
    control->SetCurveCount(3, FALSE);
    control->SetTitle("Sample");
    Curve* c = control->GetCurveObject(1);
    c->SetPointCount(3);
    c->Knots()[0] = CurveKnot(Point2(0.0f, 0.0f), Point2(), Point2(0.25f, 0.25f), 0x101);
    c->Knots()[1] = CurveKnot(Point2(0.5f, 0.5f), Point2(-0.125f, 0), Point2(0.125f, 0), 0x1);
    c->Knots()[2] = CurveKnot(Point2(1.0f, 1.0f), Point2(-0.25f, 0), Point2(), 0x102);
    c->InvalidateCache();
    Control* ctrl = NewDefaultPoint3Controller();
    c->ReplaceReference(1, ctrl);
    AnimateOn();
    Point3 a(0.5f, 0.25f, 0.0f), b(0.5f, 0.75f, 0.0f);
    ctrl->SetValue(0, &a);
    ctrl->SetValue(100, &b);
    AnimateOff();
    return client;
}

Bytes sampleScene() {
    SceneClient* client = sampleClient();
    const Bytes bytes = SaveSceneBytes({client});
    client->MaybeAutoDelete();
    return bytes;
}

const Class_ID kControlClass = CURVE_CONTROL_CLASS_ID;
const Class_ID kCurveClass = CURVE_CLASS_ID;

} // namespace

TEST_CASE_FIXTURE(SceneFixture, "Module scene: owners, client object and controllers come back") {
    const Bytes bytes = sampleScene();
    SceneRoots roots;
    SceneReport report;
    REQUIRE(LoadSceneBytes(bytes, roots, &report) == IO_OK);
    CHECK(report.Count() == 0);
    auto* client = dynamic_cast<SceneClient*>(roots.Get(0));
    REQUIRE(client);
    CurveControl* control = client->Control();
    REQUIRE(control);
    CHECK(control->Client() == static_cast<ICurveCtlClient*>(client));
    CHECK(std::string(control->Title()) == "Sample");
    REQUIRE(control->GetCurveCount() == 3);
    for (int i = 0; i < 3; ++i) {
        REQUIRE(control->GetCurveObject(i));
        CHECK(control->GetCurveObject(i)->Owner() == control);
    }
    Curve* c = control->GetCurveObject(1);
    CHECK(c->IsPointAnimated(1));
    CHECK_FALSE(c->IsPointAnimated(0));
    Interval valid = FOREVER;
    CHECK(c->GetKnot(50, 1, valid).pos == Point2(0.5f, 0.5f)); // halfway between the keys
    CHECK(SaveSceneBytes({client}) == bytes);
}

TEST_CASE_FIXTURE(SceneFixture, "Module scene: a saved editor view survives") {
    SceneClient* client = sampleClient();
    client->Control()->SetZoomState(3.0f, 0.5f);
    client->Control()->SetScrollState(11, -7);
    const Bytes bytes = SaveSceneBytes({client});
    client->MaybeAutoDelete();
    SceneRoots roots;
    REQUIRE(LoadSceneBytes(bytes, roots) == IO_OK);
    CurveControl* control = dynamic_cast<SceneClient*>(roots.Get(0))->Control();
    float h = 0, v = 0;
    int hs = 0, vs = 0;
    CHECK(control->GetZoomState(&h, &v) == TRUE);
    CHECK(control->GetScrollState(&hs, &vs) == TRUE);
    CHECK(h == 3.0f);
    CHECK(v == 0.5f);
    CHECK(hs == 11);
    CHECK(vs == -7);
}

TEST_CASE_FIXTURE(SceneFixture, "Module scene: without the controller class, points are still") {
    const Bytes bytes = sampleScene();
    ClassDirectory::Get().RemoveClass(GetPoint3ControllerClassDesc());
    SceneRoots roots;
    SceneReport report;
    const IOResult r = LoadSceneBytes(bytes, roots, &report);
    ClassDirectory::Get().AddClass(GetPoint3ControllerClassDesc());
    REQUIRE(r == IO_OK);
    CHECK(report.Contains("is not known"));
    Curve* c = dynamic_cast<SceneClient*>(roots.Get(0))->Control()->GetCurveObject(1);
    REQUIRE(c);
    CHECK(c->PointCount() == 3);
    CHECK_FALSE(c->IsPointAnimated(1));
    CHECK(c->Knots()[1].pos == Point2(0.5f, 0.5f));
}

TEST_CASE_FIXTURE(SceneFixture,
                  "Module scene: without the curve class, the control gets new curves") {
    const Bytes bytes = sampleScene();
    ClassDirectory::Get().RemoveClass(GetDefCurveClassDesc());
    SceneRoots roots;
    SceneReport report;
    const IOResult r = LoadSceneBytes(bytes, roots, &report);
    ClassDirectory::Get().AddClass(GetDefCurveClassDesc());
    REQUIRE(r == IO_OK);
    CHECK(report.Contains("is not known"));
    CHECK(report.Contains("not referenced; deleted")); // the orphaned controller
    CurveControl* control = dynamic_cast<SceneClient*>(roots.Get(0))->Control();
    REQUIRE(control->GetCurveCount() == 3);
    for (int i = 0; i < 3; ++i) {
        Curve* c = control->GetCurveObject(i);
        REQUIRE(c);
        CHECK(c->Owner() == control);
        CHECK(c->PointCount() == 2);
    }
}

TEST_CASE_FIXTURE(SceneFixture, "Module scene: a file that names another object as a curve") {
    SceneParts parts = SceneParts::Parse(sampleScene());
    const int control = parts.Find(kControlClass);
    int controller = -1;
    for (int i = 0; i < int(parts.objects.size()); ++i)
        if (parts.objects[i].superClass == CTRL_POINT3_CLASS_ID)
            controller = i;
    REQUIRE(control >= 0);
    REQUIRE(controller > control);
    parts.objects[control].refs[0] = controller; // a controller where curve 0 belongs
    SceneRoots roots;
    SceneReport report;
    REQUIRE(LoadSceneBytes(parts.Write(), roots, &report) == IO_OK);
    CHECK(report.Contains("not taken"));
    CurveControl* c = dynamic_cast<SceneClient*>(roots.Get(0))->Control();
    REQUIRE(c->GetCurveObject(0));
    CHECK(c->GetCurveObject(0)->PointCount() == 2); // a new curve, not the controller
    CHECK(c->GetCurveObject(1)->IsPointAnimated(1));
}

TEST_CASE_FIXTURE(SceneFixture, "Module scene: more curve slots than the file restores") {
    SceneParts parts = SceneParts::Parse(sampleScene());
    const int control = parts.Find(kControlClass);
    REQUIRE(control >= 0);
    parts.objects[control].refs.resize(1); // only curve 0 is named
    SceneRoots roots;
    REQUIRE(LoadSceneBytes(parts.Write(), roots) == IO_OK);
    CurveControl* c = dynamic_cast<SceneClient*>(roots.Get(0))->Control();
    REQUIRE(c->GetCurveCount() == 3);
    for (int i = 0; i < 3; ++i)
        REQUIRE(c->GetCurveObject(i));
    CHECK_FALSE(c->GetCurveObject(1)->IsAnimated()); // a new curve in slot 1
}

TEST_CASE_FIXTURE(SceneFixture, "Module scene: a curve's data in the old layout marks the load") {
    SceneParts parts = SceneParts::Parse(sampleScene());
    const int control = parts.Find(kControlClass);
    REQUIRE(control >= 0);
    const int curve = parts.objects[control].refs[0]; // curve 0
    REQUIRE(parts.objects[curve].cid == kCurveClass);
    using namespace iotest;
    parts.objects[curve].data =
        Cat({MakeChunk(0x1000, LE(int32_t(2))),
             MakeChunk(0x1010, LE(0.0f, 0.0f, 0.0f, 0.0f, 0.0f, 0.0f, 0x102u, 1.0f, 1.0f, 1.0f,
                                  1.0f, 1.0f, 1.0f, 0x102u)),
             MakeChunk(0x1020, LE(0u))});
    SceneRoots roots;
    SceneReport report;
    REQUIRE(LoadSceneBytes(parts.Write(), roots, &report) == IO_OK);
    CHECK(report.Obsolete());
    CurveControl* c = dynamic_cast<SceneClient*>(roots.Get(0))->Control();
    REQUIRE(c->GetCurveObject(0));
    CHECK(c->GetCurveObject(0)->PointCount() == 2);
    CHECK(c->GetCurveObject(0)->Knots()[1].pos == Point2(1.0f, 1.0f));
}

TEST_CASE_FIXTURE(SceneFixture, "Module scene: a read failure at every read") {
    const Bytes bytes = sampleScene();
    int failures = 0;
    for (int n = 1;; ++n) {
        CAPTURE(n);
        ChunkLoad inner(bytes.data(), bytes.size());
        testsupport::FailingLoad in(inner, n);
        SceneRoots roots;
        SceneReport report;
        const IOResult r = LoadScene(in, roots, &report);
        if (!in.Failed()) {
            CHECK(r == IO_OK);
            REQUIRE(roots.Count() == 1);
            CHECK(dynamic_cast<SceneClient*>(roots.Get(0))->Control()->GetCurveCount() == 3);
            break;
        }
        ++failures;
        CHECK(r == IO_ERROR);
        CHECK(roots.Count() == 0);
    }
    CHECK(failures > 100);
}

TEST_CASE_FIXTURE(SceneFixture, "Module scene: every truncation and many corruptions") {
    const Bytes bytes = sampleScene();
    for (std::size_t len = 0; len < bytes.size(); len += 1) {
        SceneRoots roots;
        const IOResult r = LoadSceneBytes(Bytes(bytes.begin(), bytes.begin() + len), roots);
        CHECK((r == IO_OK || r == IO_ERROR));
        if (r != IO_OK)
            CHECK(roots.Count() == 0);
    }
    std::mt19937 rng(4242); // fixed seed: the same damage every run
    for (int round = 0; round < 3000; ++round) {
        Bytes b = bytes;
        const std::size_t at = rng() % b.size();
        if (round % 2)
            b[at] ^= static_cast<unsigned char>(1u << (rng() % 8));
        else
            b[at] = static_cast<unsigned char>(rng());
        SceneRoots roots;
        const IOResult r = LoadSceneBytes(b, roots);
        CHECK((r == IO_OK || r == IO_ERROR));
        // Whatever loaded must evaluate: every control's curves exist and answer.
        for (int i = 0; i < roots.Count(); ++i) {
            auto* client = dynamic_cast<SceneClient*>(roots.Get(i));
            CurveControl* c = client ? client->Control() : nullptr;
            for (int k = 0; c && k < c->GetCurveCount(); ++k) {
                REQUIRE(c->GetCurve(k));
                Interval valid = FOREVER;
                (void)c->GetCurve(k)->ValueAt(50, 0.5f, valid, TRUE);
            }
        }
    }
}
