// libFuzzer target: Curve::Load on arbitrary bytes (a curve's own chunk stream), evaluation
// of what it loaded, then the round trip: saved and loaded again, it is the same curve.
#include "curve/curve.h"
#include "fuzz_support.h"

#include <cstdint>

using namespace fuzzsupport;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    InitOnce();
    CurveControl owner; // gives the curve its ranges for evaluation
    Curve curve(&owner, 0);
    ChunkLoad in(data, size);
    const IOResult r = curve.Load(&in);
    in.RunPostLoadCallbacks();
    Expect(r == IO_OK || r == IO_ERROR, "Load answers OK or a read error");
    Expect(curve.GetLookupSize() == 1000, "a loaded curve has the lookup size 1000");

    // Whatever loaded must evaluate.
    const Point2 xr = owner.GetXRange();
    for (int s = -1; s <= 5; ++s) {
        Interval valid = FOREVER;
        const float x = xr.x + (xr.y - xr.x) * float(s) / 4.0f;
        (void)curve.ValueAt(0, x, valid, s & 1);
    }

    const Bytes saved = SaveOf(&curve);
    Curve again(&owner, 0);
    ChunkLoad reload(saved.data(), saved.size());
    Expect(again.Load(&reload) == IO_OK, "a saved curve loads");
    reload.RunPostLoadCallbacks();
    ExpectSameCurve(curve, again);
    return 0;
}
