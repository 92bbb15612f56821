// make_scene_samples: writes small files saved by the real savers: a curve's own chunks,
// a control's own chunks, and whole scenes. They seed the loader fuzzers
// (fuzz/corpus/<fuzzer>/) and serve as examples for scene_dump.
//
//   make_scene_samples DIR     writes DIR/fuzz_curve_load/*, DIR/fuzz_control_load/*,
//                              DIR/fuzz_scene_read/*
#include "control/curve_control.h"
#include "curve/curve.h"
#include "host/chunk_values.h"
#include "host/controller.h"
#include "host/scene.h"
#include "plugin/class_descs.h"

#include <cstdio>
#include <string>
#include <vector>

#if defined(_WIN32)
#include <direct.h>
#define MAKE_DIR(p) _mkdir(p)
#else
#include <sys/stat.h>
#define MAKE_DIR(p) mkdir(p, 0755)
#endif

namespace {

bool failed = false;

void write(const std::string& path, const ChunkSave& out) {
    if (out.WriteFile(path.c_str()) != IO_OK) {
        std::fprintf(stderr, "make_scene_samples: cannot write %s\n", path.c_str());
        failed = true;
        return;
    }
    std::printf("%s (%llu bytes)\n", path.c_str(), static_cast<unsigned long long>(out.Size()));
}

void writeObject(const std::string& path, ReferenceMaker* object,
                 ChunkSave::RefIDSource ids = nullptr) {
    ChunkSave out;
    out.SetRefIDSource(ids, nullptr);
    object->Save(&out);
    write(path, out);
}

void writeScene(const std::string& path, std::vector<ReferenceTarget*> roots) {
    ChunkSave out;
    if (SaveScene(roots.data(), int(roots.size()), out) != IO_OK)
        failed = true;
    write(path, out);
}

void sampleCurve(Curve& c) {
    c.SetPointCount(3);
    CurveKnot* k = c.Knots();
    k[0] = CurveKnot(Point2(0.0f, 0.25f), Point2(), Point2(0.125f, 0.0f), 0x102);
    k[1] = CurveKnot(Point2(0.5f, 0.75f), Point2(-0.125f, -0.0625f), Point2(0.25f, 0.125f), 0x19);
    k[2] = CurveKnot(Point2(1.0f, 0.5f), Point2(-0.25f, 0.0f), Point2(), 0x302);
    c.InvalidateCache();
    c.SetPen(RGB(200, 30, 30), 2, 0);
    c.SetEndBehaviour(CURVE_END_HOLD);
}

/// A control with three curves; curve 1 has an animated point with two keys.
CurveControl* sampleControl() {
    auto* control = static_cast<CurveControl*>(
        static_cast<Animatable*>(GetCurveControlClassDesc()->Create(FALSE)));
    control->SetCurveCount(3, FALSE);
    control->SetXRange(-1.0f, 2.0f, FALSE);
    control->SetTitle("Falloff");
    control->SetZoomState(1.5f, 0.5f);
    control->SetControlFlags(0x1FF);
    Curve* c = control->GetCurveObject(1);
    sampleCurve(*c);
    Control* ctrl = NewDefaultPoint3Controller();
    c->ReplaceReference(1, ctrl);
    AnimateOn();
    Point3 a(0.5f, 0.25f, 0.0f), b(0.5f, 0.75f, 0.0f);
    ctrl->SetValue(0, &a);
    ctrl->SetValue(160, &b);
    AnimateOff();
    return control;
}

/// The older point layout of a curve: count, then every point in one chunk 0x1010.
void writeOlderLayout(const std::string& path) {
    ChunkSave out;
    out.BeginChunk(0x1000);
    WriteLE32(&out, int32_t(2));
    out.EndChunk();
    out.BeginChunk(0x1010);
    const float points[2][6] = {{0, 0, 0, 0, 0.25f, 0.5f}, {1, 1, 0.75f, 0.5f, 1, 1}};
    const uint32_t flags[2] = {0x101, 0x102};
    for (int i = 0; i < 2; ++i) {
        for (float v : points[i])
            WriteLE32(&out, v);
        WriteLE32(&out, flags[i]);
    }
    out.EndChunk();
    out.BeginChunk(0x1020);
    WriteLE32(&out, uint32_t(0));
    out.EndChunk();
    write(path, out);
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: make_scene_samples DIR\n");
        return 2;
    }
    const std::string dir = argv[1];
    const std::string curves = dir + "/fuzz_curve_load", controls = dir + "/fuzz_control_load",
                      scenes = dir + "/fuzz_scene_read";
    MAKE_DIR(dir.c_str());
    MAKE_DIR(curves.c_str());
    MAKE_DIR(controls.c_str());
    MAKE_DIR(scenes.c_str());

    {
        Curve empty(nullptr, 0);
        writeObject(curves + "/empty.chunks", &empty);
        Curve three(nullptr, 0);
        sampleCurve(three);
        writeObject(curves + "/three_points.chunks", &three);
        three.SetCurveFlags(0x1);
        three.SetAnimatable(FALSE);
        writeObject(curves + "/cyclic.chunks", &three);
        writeOlderLayout(curves + "/older_layout.chunks");
    }
    {
        CurveControl fresh;
        writeObject(controls + "/new.chunks", &fresh);
        // More curves than its own chunks have bytes for: the curves are references, which
        // a control's own chunks never hold, and it loads its count all the same.
        CurveControl many;
        many.SetCurveCount(40, FALSE);
        writeObject(controls + "/many_curves.chunks", &many);
        // Every extension on: the extension chunk and its sub-chunks.
        CurveControl extended;
        extended.Extensions().SetExtendedFlags(CCX_ALL);
        extended.Extensions().SetSnapEnabled(TRUE);
        extended.Extensions().SetOnionSkin(4, 160);
        writeObject(controls + "/extended.chunks", &extended);
        CurveControl* sample = sampleControl();
        sample->RegisterClientObject(sample); // saved under id 0 below
        writeObject(controls + "/sample.chunks", sample, [](void*, void*) { return 0; });
        sample->RegisterClientObject(nullptr);

        writeScene(scenes + "/one_control.scene", {sample});
        CurveControl* second = sampleControl();
        second->SetCurveCount(1, FALSE);
        writeScene(scenes + "/two_controls.scene", {sample, second});
        writeScene(scenes + "/empty.scene", {});
        sample->MaybeAutoDelete();
        second->MaybeAutoDelete();
    }
    return failed ? 1 : 0;
}
