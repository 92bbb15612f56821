// libFuzzer target: CurveControl::Load on arbitrary bytes (a control's own chunk stream) and
// its post-load step; then the round trip of what it loaded through a scene (a control's
// curves are its references, which its own chunks do not hold).
#include "fuzz_support.h"

#include <cstdint>

using namespace fuzzsupport;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    InitOnce();
    SceneRoots held; // deletes the control at the end
    auto* control = static_cast<CurveControl*>(
        static_cast<Animatable*>(GetCurveControlClassDesc()->Create(TRUE)));
    held.Add(control);
    ChunkLoad in(data, size);
    const IOResult r = control->Load(&in);
    in.ResolveBackpatches(nullptr, nullptr); // no other object exists
    in.RunPostLoadCallbacks();
    Expect(r == IO_OK || r == IO_ERROR, "Load answers OK or a read error");
    for (int i = 0; i < control->GetCurveCount(); ++i)
        Expect(control->GetCurve(i) != nullptr, "every slot below the count has a curve");
    float h, v;
    int hs, vs;
    control->GetZoomState(&h, &v);
    control->GetScrollState(&hs, &vs);

    const Bytes saved = SaveSceneOf(control);
    SceneRoots again;
    ChunkLoad reload(saved.data(), saved.size());
    Expect(LoadScene(reload, again) == IO_OK, "a saved control loads");
    Expect(again.Count() == 1, "one root");
    ExpectSameObject(control, again.Get(0));
    return 0;
}
