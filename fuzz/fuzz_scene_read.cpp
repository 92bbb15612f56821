// libFuzzer target: the scene reader on arbitrary bytes, with the module's classes and the
// host's controller class known; evaluation of every curve of every loaded control; then
// the round trip: the loaded scene, saved and loaded again, is the same scene.
#include "fuzz_support.h"

#include <cstdint>

using namespace fuzzsupport;

namespace {

Bytes saveScene(SceneRoots& roots) {
    std::vector<ReferenceTarget*> list;
    for (int i = 0; i < roots.Count(); ++i)
        list.push_back(roots.Get(i));
    ChunkSave out;
    Expect(SaveScene(list.data(), int(list.size()), out) == IO_OK, "a loaded scene saves");
    return Bytes(out.Data(), out.Data() + out.Size());
}

void evaluate(SceneRoots& roots) {
    for (int i = 0; i < roots.Count(); ++i) {
        auto* control = dynamic_cast<CurveControl*>(roots.Get(i));
        if (!control)
            continue;
        const Point2 xr = control->GetXRange();
        for (int c = 0; c < control->GetCurveCount(); ++c) {
            ICurve* curve = control->GetCurve(c);
            Expect(curve != nullptr, "every slot below the count has a curve");
            for (int s = 0; s <= 4; ++s) {
                Interval valid = FOREVER;
                (void)curve->ValueAt(s * 40, xr.x + (xr.y - xr.x) * float(s) / 4.0f, valid, s & 1);
            }
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    InitOnce();
    SceneRoots roots;
    ChunkLoad in(data, size);
    const IOResult r = LoadScene(in, roots);
    Expect(r == IO_OK || r == IO_ERROR, "LoadScene answers OK or a read error");
    if (r != IO_OK) {
        Expect(roots.Count() == 0, "a failed load hands over nothing");
        return 0;
    }
    evaluate(roots);

    const Bytes saved = saveScene(roots);
    SceneRoots again;
    ChunkLoad reload(saved.data(), saved.size());
    Expect(LoadScene(reload, again) == IO_OK, "a saved scene loads");
    Expect(again.Count() == roots.Count(), "the same roots");
    for (int i = 0; i < roots.Count(); ++i)
        ExpectSameObject(roots.Get(i), again.Get(i));
    return 0;
}
