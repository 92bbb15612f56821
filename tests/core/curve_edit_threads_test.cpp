// Editing while other threads evaluate: every edit changes the point table under the
// curve's table lock, so evaluation threads see either the old or the new table, never a
// half-changed one (ThreadSanitizer checks the same run for data races).
#include "core/curve_edit_fixture.h"

#include <doctest/doctest.h>

#include <atomic>
#include <thread>

using namespace edit_test;

TEST_CASE("edits on the UI thread while three threads evaluate the curve") {
    CurveFixture f(
        {Knot(0.0f, 0.1f),
         Knot(0.2f, 0.3f, KNOT_TYPE_BEZIER_SMOOTH, Point2(-0.05f, 0.0f), Point2(0.05f, 0.0f)),
         Knot(0.5f, 0.6f), Knot(0.8f, 0.4f), Knot(1.0f, 0.9f)});
    Curve& c = f.curve();
    // Point 3 moves between two keys, so the cache holds for one time only and the
    // evaluating threads, each asking at ever new times, rebuild it (reading the point
    // table) all the time.
    Control* ctrl = f.Animate(3);
    AnimateOn();
    Point3 a(0.8f, 0.4f, 0.0f), b(0.85f, 0.6f, 0.0f);
    ctrl->SetValue(0, &a, 1, CTRL_ABSOLUTE);
    ctrl->SetValue(1000, &b, 1, CTRL_ABSOLUTE);
    AnimateOff();

    std::atomic<bool> stop{false};
    std::atomic<long> bad{0};
    std::atomic<int> running{0};
    auto evaluate = [&](bool lookup) {
        running.fetch_add(1);
        for (long n = 0; !stop.load(std::memory_order_relaxed); ++n) {
            Interval valid = FOREVER;
            const float y = c.ValueAt(TimeValue(n % 1000), float(n % 101) / 100.0f, valid,
                                      lookup ? TRUE : FALSE);
            // The curve stays well inside -1 .. 2 whatever the edits do; a torn read of a
            // half-changed table would show as garbage or not-a-number.
            if (!(y >= -1.0f && y <= 2.0f))
                bad.fetch_add(1);
        }
    };
    // A third thread asks for whole rows at once (ICurveBatch), with and without the table.
    auto evaluateRows = [&] {
        auto* batch = static_cast<ICurveBatch*>(c.GetInterface(I_CURVE_BATCH_INTERFACE));
        float xs[101], ys[101];
        for (int k = 0; k <= 100; ++k)
            xs[k] = float(k) / 100.0f;
        running.fetch_add(1);
        for (long n = 0; !stop.load(std::memory_order_relaxed); ++n) {
            Interval valid = FOREVER;
            batch->ValuesAt(TimeValue(n % 1000), xs, ys, 101, valid, n % 2 ? TRUE : FALSE);
            for (float y : ys)
                if (!(y >= -1.0f && y <= 2.0f))
                    bad.fetch_add(1);
        }
    };
    std::thread exact(evaluate, false), table(evaluate, true), rows(evaluateRows);
    while (running.load() < 3)
        std::this_thread::yield(); // all evaluate before any edit

    for (int round = 0; round < 1500; ++round) {
        const float s = float(round % 10) / 10.0f;
        c.SetKnotPosition(kNow, 2, Point2(0.45f + 0.1f * s, 0.2f + 0.6f * s));
        c.SetKnotPosition(kNow, 3, Point2(0.75f + 0.1f * s, 0.8f - 0.6f * s)); // animated
        c.DragHandle(kNow, 1, 0x200, 0.01f * (s - 0.5f), 0.02f * (s - 0.5f));
        c.SetSelectionEx(BitArray(), 4, FALSE);
        c.InsertKnotAtX(kNow, 0, 0.1f, round % 2); // selects the new point
        c.ScaleSelectedY(kNow, 0.0f, 1.0f + 0.01f * s, FALSE);
        c.ChangeKnotType(kNow, 1, KNOT_TYPE_BEZIER_CORNER);
        c.ChangeKnotType(kNow, 1, KNOT_TYPE_BEZIER_SMOOTH);
        Interval valid = FOREVER;
        c.SetKnot(kNow, 2, c.GetKnot(kNow, 2, valid), TRUE, FALSE);
        c.DeleteSelectedKnots();
        c.InsertKnot(4, Knot(0.9f, 0.5f));
        c.DeleteKnot(4);
    }
    stop = true;
    exact.join();
    table.join();
    rows.join();
    CHECK(bad.load() == 0);
    CHECK(c.PointCount() == 5);
}
