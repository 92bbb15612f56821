// ScaleSelectedY reads each point as the cache has it after the edits of the points before
// it. It follows those edits without rebuilding the cache after each one; these tests hold
// it to the straightforward loop that reads every point through the cache, bit for bit:
// the point table, the controllers' values, the client messages and the undo step.
#include "core/curve_edit_fixture.h"
#include "core/test_support.h"
#include "curvectl/messages.h"

#include <doctest/doctest.h>

#include <cmath>
#include <cstring>
#include <random>

using namespace edit_test;
using testsupport::ClientMessage;
using testsupport::MessageRecorder;

namespace {

/// The loop as written without the follower: every read through the cache, the in-handle
/// set before the out-handle.
void referenceScale(Curve& c, TimeValue t, float origin, float factor, BOOL skipAnimated) {
    auto scaled = [&](Point2 p) {
        p.y = (p.y - origin) * factor + origin;
        return p;
    };
    for (int i = 0; i < c.PointCount(); ++i) {
        if (!(c.Knots()[i].flags & KNOT_SELECTED))
            continue;
        if (skipAnimated && c.Controller(i))
            continue;
        const Point2 in = scaled(c.CachedInHandle(t, i));
        const Point2 out = scaled(c.CachedOutHandle(t, i));
        c.SetKnotPosition(t, i, scaled(c.CachedPosition(t, i)));
        const int inChanged = c.SetInHandle(t, i, in, FALSE, FALSE);
        const int outChanged = c.SetOutHandle(t, i, out, TRUE, FALSE);
        c.SendClientMessage(CURVE_MSG_TANGENT_CHANGED,
                            WPARAM(((inChanged | outChanged) << 16) | i));
    }
}

/// One side of the comparison: a curve of its own with a recording notify window.
struct Side {
    CurveFixture f;
    MessageRecorder recorder;
    Side(const std::vector<CurveKnot>& knots, FixtureOptions o) : f(knots, o) {
        f.control().SetNotifyWindow(recorder.window());
    }
};

/// The point table bit for bit, and each controller's value at kNow (each side has
/// controllers of its own).
struct Table {
    std::vector<CurveKnot> knots;
    std::vector<Point3> values; // (NaN, NaN, NaN) for a point without controller
    bool operator==(const Table& o) const {
        return knots.size() == o.knots.size() && values.size() == o.values.size() &&
               (knots.empty() ||
                (std::memcmp(knots.data(), o.knots.data(), knots.size() * sizeof(CurveKnot)) == 0 &&
                 std::memcmp(values.data(), o.values.data(), values.size() * sizeof(Point3)) == 0));
    }
};

Table tableOf(Curve& c) {
    Table t;
    for (int i = 0; i < c.PointCount(); ++i) {
        t.knots.push_back(c.Knots()[i]);
        Point3 v(NAN, NAN, NAN);
        if (auto* ctrl = dynamic_cast<Control*>(c.Controller(i))) {
            Interval valid = FOREVER;
            ctrl->GetValue(kNow, &v, valid, CTRL_ABSOLUTE);
        }
        t.values.push_back(v);
    }
    return t;
}

struct Outcome {
    Table table;
    std::vector<Point2> resolved; // what the cache answers afterwards
    std::vector<ClientMessage> messages;
    Table undone; // after undoing the step
};

template <class Scale> Outcome run(Side& s, Scale scale) {
    Curve& c = s.f.curve();
    theHold.Begin();
    scale(c);
    theHold.Accept("Scale Point");
    Outcome o;
    o.table = tableOf(c);
    for (int i = 0; i < c.PointCount(); ++i) {
        o.resolved.push_back(c.CachedPosition(kNow, i));
        o.resolved.push_back(c.CachedInHandle(kNow, i));
        o.resolved.push_back(c.CachedOutHandle(kNow, i));
    }
    o.messages = s.recorder.messages;
    theHold.Undo();
    o.undone = tableOf(c);
    return o;
}

bool samePoints(const std::vector<Point2>& a, const std::vector<Point2>& b) {
    return a.size() == b.size() &&
           (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(Point2)) == 0);
}

bool sameMessages(const std::vector<ClientMessage>& a, const std::vector<ClientMessage>& b) {
    if (a.size() != b.size())
        return false;
    for (size_t i = 0; i < a.size(); ++i)
        if (a[i].msg != b[i].msg || a[i].wParam != b[i].wParam)
            return false; // lParam names the sender: each side has its own
    return true;
}

/// Scales `knots` both ways (with `prepare` run on each side first) and checks that the
/// outcomes agree.
template <class Prepare>
void compare(const std::vector<CurveKnot>& knots, FixtureOptions o, float origin, float factor,
             BOOL skipAnimated, Prepare prepare) {
    Side fast(knots, o), plain(knots, o);
    prepare(fast);
    prepare(plain);
    const Outcome a =
        run(fast, [&](Curve& c) { c.ScaleSelectedY(kNow, origin, factor, skipAnimated); });
    const Outcome b =
        run(plain, [&](Curve& c) { referenceScale(c, kNow, origin, factor, skipAnimated); });
    CHECK(a.table == b.table);
    CHECK(samePoints(a.resolved, b.resolved));
    CHECK(sameMessages(a.messages, b.messages));
    CHECK(a.undone == b.undone);
}

void compare(const std::vector<CurveKnot>& knots, FixtureOptions o, float origin, float factor) {
    compare(knots, o, origin, factor, FALSE, [](Side&) {});
}

/// A curve of n points over x 0 .. 1: every other one Bezier with handles a third of the
/// way to its neighbours, y in [lo, hi], about two thirds selected.
std::vector<CurveKnot> wave(std::mt19937& rng, int n, float lo, float hi) {
    std::uniform_real_distribution<float> y(lo, hi);
    std::vector<CurveKnot> k;
    const float dx = 1.0f / float(n - 1);
    for (int i = 0; i < n; ++i) {
        const bool bezier = i % 2 == 1;
        const float h = bezier ? dx / 3.0f : 0.0f;
        uint32_t flags = bezier ? KNOT_TYPE_BEZIER_CORNER : KNOT_TYPE_CORNER;
        if (rng() % 3 != 0)
            flags |= KNOT_SELECTED;
        k.push_back(Knot(float(i) * dx, y(rng), flags, Point2(-h, 0.05f), Point2(h, -0.05f)));
    }
    return k;
}

} // namespace

TEST_CASE("scaling many points gives what reading each through the cache gives") {
    std::mt19937 rng(20261122);
    FixtureOptions o;
    o.yRange = Point2(-1.0f, 1.0f);
    for (int round = 0; round < 20; ++round) {
        CAPTURE(round);
        const std::vector<CurveKnot> k = wave(rng, 3 + round * 7, -0.4f, 0.4f);
        const float factor = std::uniform_real_distribution<float>(-2.0f, 2.0f)(rng);
        compare(k, o, 0.0f, factor);
        compare(k, o, 0.1f, factor); // about another origin
    }
}

TEST_CASE("scaling points the cache moves: out of order, handles past a neighbour") {
    FixtureOptions o;
    o.yRange = Point2(-1.0f, 1.0f);
    const uint32_t sel = KNOT_SELECTED;
    SUBCASE("a point left of its neighbour") {
        compare(
            {Knot(0, 0, sel), Knot(0.5f, 0.2f, sel), Knot(0.4f, -0.3f, sel), Knot(1, 0.1f, sel)}, o,
            0.0f, 1.5f);
    }
    SUBCASE("a handle past the next point") {
        compare(
            {Knot(0, 0, sel),
             Knot(0.3f, 0.2f, KNOT_TYPE_BEZIER_CORNER | sel, Point2(-0.1f, 0), Point2(0.35f, 0)),
             Knot(0.5f, -0.3f, sel), Knot(1, 0.1f, sel)},
            o, 0.0f, 0.5f);
    }
    SUBCASE("a handle exactly on its neighbour") {
        compare({Knot(0, 0, sel),
                 Knot(0.25f, 0.2f, KNOT_TYPE_BEZIER_CORNER | sel, Point2(-0.25f, 0.1f),
                      Point2(0.25f, 0)),
                 Knot(0.5f, -0.3f, KNOT_TYPE_BEZIER_CORNER | sel, Point2(-0.25f, 0),
                      Point2(0.5f, 0.3f)),
                 Knot(1, 0.1f, sel)},
                o, 0.0f, -1.25f);
    }
    SUBCASE("free end points, a cyclic curve") {
        std::vector<CurveKnot> k = {Knot(0.1f, 0, sel | KNOT_FREE_END_X), Knot(0.5f, 0.2f, sel),
                                    Knot(0.9f, -0.3f, sel | KNOT_FREE_END_X)};
        compare(k, o, 0.0f, 2.0f);
        FixtureOptions cyclic = o;
        cyclic.cyclic = true;
        compare(k, cyclic, 0.0f, 2.0f);
    }
}

TEST_CASE("scaling points out of the enforced y range part way through the selection") {
    // The y range is enforced: points scaled past it are placed back by the cache, which
    // happens half way through the loop.
    std::mt19937 rng(7);
    FixtureOptions o;
    o.controlFlags = CC_DEFAULT_FLAGS | CC_CONSTRAIN_Y;
    o.yRange = Point2(-1.0f, 1.0f);
    std::vector<CurveKnot> k = wave(rng, 40, -0.3f, 0.3f);
    k[25].pos.y = 0.7f;
    k[25].flags |= KNOT_SELECTED;
    compare(k, o, 0.0f, 1.6f);
    compare(k, o, 0.0f, -1.6f);
}

TEST_CASE("scaling animated points: their controllers take the positions") {
    std::mt19937 rng(11);
    FixtureOptions o;
    o.yRange = Point2(-1.0f, 1.0f);
    const std::vector<CurveKnot> k = wave(rng, 30, -0.4f, 0.4f);
    const auto animate = [](Side& s) {
        for (int i : {3, 4, 17})
            s.f.Animate(i);
    };
    compare(k, o, 0.0f, 1.3f, FALSE, animate);
    compare(k, o, 0.0f, 1.3f, TRUE, animate);
}

TEST_CASE("scaling while the client changes the curve from its message handler") {
    std::mt19937 rng(5);
    FixtureOptions o;
    o.yRange = Point2(-1.0f, 1.0f);
    std::vector<CurveKnot> k = wave(rng, 30, -0.4f, 0.4f);
    // The handlers act on the messages of points 10 and 12; the points they change are
    // read later.
    for (int i : {10, 12, 20, 21, 22})
        k[size_t(i)].flags |= KNOT_SELECTED;
    SUBCASE("moves a later point") {
        compare(k, o, 0.0f, 1.5f, FALSE, [](Side& s) {
            Curve* c = &s.f.curve();
            s.recorder.onMessage = [c](const ClientMessage& m) {
                if (m.msg == CURVE_MSG_POINT_CHANGED && (m.wParam & 0xFFFF) == 10) {
                    c->Knots()[20].pos.y += 0.25f;
                    c->Knots()[21].outTan.x = 0.5f; // past its neighbour: the cache moves it
                    c->InvalidateCache();
                }
            };
        });
    }
    SUBCASE("narrows the y range") {
        compare(k, o, 0.0f, 1.5f, FALSE, [](Side& s) {
            CurveControl* control = &s.f.control();
            s.recorder.onMessage = [control](const ClientMessage& m) {
                if (m.msg == CURVE_MSG_TANGENT_CHANGED && (m.wParam & 0xFFFF) == 12) {
                    control->SetControlFlags(control->GetControlFlags() | CC_CONSTRAIN_Y);
                    control->SetYRange(-0.2f, 0.2f);
                }
            };
        });
    }
}
