// libFuzzer target: CurveControl::Load on arbitrary bytes (a control's own chunk stream),
// its post-load step, then the round trip of what it loaded through a scene.
#include "control/curve_control.h"
#include "fuzz_support.h"

#include <cstdint>

using namespace fuzzsupport;

namespace {
/// Loads `bytes` into a new control as the host does for one object.
CurveControl* load(const uint8_t* data, size_t size, IOResult& r) {
    auto* control = static_cast<CurveControl*>(
        static_cast<Animatable*>(GetCurveControlClassDesc()->Create(TRUE)));
    ChunkLoad in(data, size);
    r = control->Load(&in);
    in.ResolveBackpatches(nullptr, nullptr); // no other object exists
    in.RunPostLoadCallbacks();
    return control;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    InitOnce();
    IOResult r = IO_ERROR;
    CurveControl* control = load(data, size, r);
    Expect(r == IO_OK || r == IO_ERROR, "Load answers OK or a read error");
    for (int i = 0; i < control->GetCurveCount(); ++i)
        Expect(control->GetCurve(i) != nullptr, "every slot below the count has a curve");
    float h, v;
    int hs, vs;
    control->GetZoomState(&h, &v);
    control->GetScrollState(&hs, &vs);

    // A control's curves are its references: its own chunks alone do not hold them. So the
    // round trip goes through a scene, as every saved control does.
    const Bytes first = SaveSceneOf(control);
    control->MaybeAutoDelete();
    SceneRoots again;
    ChunkLoad reload(first.data(), first.size());
    Expect(LoadScene(reload, again) == IO_OK, "a saved control loads");
    Expect(again.Count() == 1 && SaveSceneOf(again.Get(0)) == first,
           "save, load, save gives the same bytes");
    return 0;
}
