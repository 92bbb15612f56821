// The Point3 controller across the whole time line: keys at the extreme times a loaded
// scene may hold (a fuzz finding: the time difference overflowed 32 bits).
#include "host/controller.h"
#include "host/hold.h"

#include "doctest/doctest.h"

TEST_CASE("a controller interpolates between keys at the two ends of the time line") {
    AnimateOn();
    Control* c = NewDefaultPoint3Controller();
    Point3 a(0.0f, 0.0f, 0.0f), b(2.0f, 4.0f, 0.0f);
    c->SetValue(TIME_NegInfinity, &a);
    c->SetValue(TIME_PosInfinity, &b);
    AnimateOff();
    REQUIRE(c->NumKeys() == 2);

    Interval valid = FOREVER;
    Point3 mid;
    c->GetValue(0, &mid, valid);
    // Time 0 lies just past the middle of the full range: u = 2^31 / (2^32 - 1).
    CHECK(mid.x == doctest::Approx(1.0));
    CHECK(mid.y == doctest::Approx(2.0));
    CHECK(valid == Interval(0, 0));

    Point3 nearStart;
    c->GetValue(TIME_NegInfinity + 1, &nearStart, valid);
    CHECK(nearStart.x >= 0.0f);
    CHECK(nearStart.x < 0.001f);
    c->DeleteThis();
}
