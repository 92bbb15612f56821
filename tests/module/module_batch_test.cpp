// The batch interface of a curve, reached as a client reaches it: a control from the
// module's descriptor, a curve from the control, ICurveBatch from the curve's interface
// query. Its values are ValueAt's, bit for bit, across the module boundary.
#include "module/module_support.h"

#include "curvectl/icurve_batch.h"
#include "host/hold.h"

#include <doctest/doctest.h>

#include <cstdint>
#include <cstring>
#include <vector>

using moduletest::As;
using moduletest::Plugin;

namespace {

uint32_t Bits(float f) {
    uint32_t u;
    std::memcpy(&u, &f, sizeof u);
    return u;
}

} // namespace

TEST_CASE("a client evaluates a row of values through the batch interface of a curve") {
    theHold.Reset();
    auto* control = As<ICurveCtl>(Plugin().LibClassDesc(0)->Create(FALSE));
    REQUIRE(control != nullptr);
    control->SetCurveCount(1, FALSE);
    ICurve* curve = control->GetCurve(0);
    REQUIRE(curve != nullptr);
    curve->InsertKnot(1, CurveKnot(Point2(0.4f, 0.9f), Point2(-0.1f, 0.0f), Point2(0.1f, 0.0f),
                                   KNOT_TYPE_BEZIER_SMOOTH));

    auto* batch = static_cast<ICurveBatch*>(curve->GetInterface(I_CURVE_BATCH_INTERFACE));
    REQUIRE(batch != nullptr);
    // An RGB row, of which the middle channel is evaluated into a plane.
    const int width = 333;
    std::vector<float> rgb(static_cast<std::size_t>(width) * 3),
        plane(static_cast<std::size_t>(width));
    for (int x = 0; x < width; ++x)
        rgb[std::size_t(3 * x + 1)] = -0.2f + 1.4f * float(x) / float(width - 1);
    for (BOOL lookup : {TRUE, FALSE}) {
        Interval valid = FOREVER;
        REQUIRE(batch->ValuesAtStrided(0, rgb.data() + 1, 12, plane.data(), 4, width, valid,
                                       lookup) == width);
        for (int x = 0; x < width; ++x) {
            Interval v = FOREVER;
            const float want = curve->ValueAt(0, rgb[std::size_t(3 * x + 1)], v, lookup);
            CHECK(Bits(plane[std::size_t(x)]) == Bits(want));
        }
    }
    Interval valid = FOREVER;
    CHECK(batch->ValuesAt(0, rgb.data(), plane.data(), -1, valid) == CURVE_BATCH_BAD_COUNT);
    CHECK(batch->SetLookupTolerance(0.0f) == CURVE_LOOKUP_BAD_TOLERANCE);
    const int size = batch->SetLookupTolerance(0.001f);
    CHECK(size >= 1);
    CHECK(curve->GetLookupSize() == size);
    CHECK(batch->GetLookupError() <= 0.001f);
    control->DeleteThis();
    theHold.Reset();
}
