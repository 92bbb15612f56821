// Lookup sizes a client may pass that no table could sensibly hold.
#include "curve_edit_fixture.h"
#include "test_support.h"

#include "doctest/doctest.h"

#include <climits>

using namespace edit_test;
using testsupport::CoreFixture;

TEST_CASE_FIXTURE(CoreFixture, "a huge lookup size evaluates exactly instead of building a table") {
    CurveFixture f({Knot(0.0f, 0.0f), Knot(0.5f, 0.25f), Knot(1.0f, 1.0f)});
    Curve& c = f.curve();
    c.SetLookupSize(INT_MAX);
    CHECK(c.GetLookupSize() == INT_MAX);
    for (float x : {0.1f, 0.3f, 0.5f, 0.77f}) {
        Interval v1 = FOREVER, v2 = FOREVER;
        const float exact = c.ValueAt(kNow, x, v1, FALSE);
        CHECK(c.ValueAt(kNow, x, v2, TRUE) == exact);
    }
}
