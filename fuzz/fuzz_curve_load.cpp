// libFuzzer target: Curve::Load on arbitrary bytes (a curve's own chunk stream), then the
// round trip of what it loaded, then evaluation of the loaded curve.
#include "control/curve_control.h"
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

    const Bytes first = SaveOf(&curve);
    Curve again(&owner, 0);
    ChunkLoad reload(first.data(), first.size());
    Expect(again.Load(&reload) == IO_OK, "a saved curve loads");
    reload.RunPostLoadCallbacks();
    Expect(SaveOf(&again) == first, "save, load, save gives the same bytes");

    // Whatever loaded must evaluate.
    const Point2 xr = owner.GetXRange();
    for (int s = -1; s <= 5; ++s) {
        Interval valid = FOREVER;
        const float x = xr.x + (xr.y - xr.x) * float(s) / 4.0f;
        (void)curve.ValueAt(0, x, valid, s & 1);
    }
    return 0;
}
