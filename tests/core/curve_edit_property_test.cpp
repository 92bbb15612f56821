// Property tests: random curves and random sequences of constrained edits, fixed seeds.
//
// After every edit:
//   - the resolved positions are in x order;
//   - the first and last points sit at the ends of the x range (unless free in x);
//   - every handle lies between its point and the neighbouring point on its side, in x;
//   - under CC_CONSTRAIN_Y every position and handle lies inside the y range.
// And over the whole sequence (one undo step per edit):
//   - undoing every step gives back the starting table exactly (bit for bit);
//   - redoing every step gives back the final table exactly.
//
// The edits are those the editor makes, with the clamping it applies: point and selection
// moves through the move ranges, handle drags through the handle ranges, scaling with a
// factor that keeps the selection inside the y range, splits inside a segment, deletion
// of the selection, type changes, SetKnot with checks, the numeric entry setters and
// selection changes.
#include "core/curve_edit_fixture.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <random>
#include <string>

using namespace edit_test;

namespace {

// Slack for the float rounding of positions built from sums and products (handles are
// stored relative to their point, so an absolute handle is a sum of two floats).
constexpr float kSlack = 2e-6f;
// Slack of the y range. A tangent whose change is 0.0001 or less is not stored, so when
// scaling moves a point, a very short handle moves with the point instead of scaling with
// it and may end up to 0.0001 outside the range (twice that after a second scale).
constexpr float kYSlack = 2e-4f;

class Random {
public:
    explicit Random(unsigned seed) : gen_(seed) {}
    float Uniform(float lo, float hi) {
        return std::uniform_real_distribution<float>(lo, hi)(gen_);
    }
    int Int(int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(gen_); }
    bool Chance(double p) { return std::bernoulli_distribution(p)(gen_); }

private:
    std::mt19937 gen_;
};

/// A valid curve: x strictly increasing from 0 to 1, y inside [0.05, 0.95], handles
/// inside their segments and inside the y range, end points never Bezier-Smooth.
std::vector<CurveKnot> randomCurve(Random& r) {
    const int n = r.Int(2, 7);
    std::vector<float> xs{0.0f, 1.0f};
    for (int i = 2; i < n; ++i)
        xs.push_back(r.Uniform(0.05f, 0.95f));
    std::sort(xs.begin(), xs.end());
    std::vector<CurveKnot> k;
    for (int i = 0; i < n; ++i) {
        const bool end = i == 0 || i == n - 1;
        uint32_t type = uint32_t(r.Int(1, 3));
        if (end && type == KNOT_TYPE_BEZIER_SMOOTH)
            type = KNOT_TYPE_CORNER;
        k.push_back(Knot(xs[std::size_t(i)], r.Uniform(0.05f, 0.95f), type));
        if (end && r.Chance(0.15))
            k.back().flags |= KNOT_FREE_END_X;
    }
    for (int i = 0; i < n; ++i) {
        CurveKnot& p = k[std::size_t(i)];
        if ((p.flags & KNOT_TYPE_MASK) == KNOT_TYPE_CORNER)
            continue;
        auto handle = [&](float dxLimit) {
            Point2 h(dxLimit * r.Uniform(0.0f, 0.9f), r.Uniform(-0.04f, 0.04f));
            h.y = std::clamp(p.pos.y + h.y, 0.0f, 1.0f) - p.pos.y;
            return h;
        };
        if (i > 0)
            p.inTan = handle(k[std::size_t(i - 1)].pos.x - p.pos.x);
        if (i < n - 1)
            p.outTan = handle(k[std::size_t(i + 1)].pos.x - p.pos.x);
        if ((p.flags & KNOT_TYPE_MASK) == KNOT_TYPE_BEZIER_SMOOTH && i > 0 && i < n - 1) {
            // Collinear: the in-handle along the out-handle's line, shortened into its segment.
            const float len = Length(p.inTan);
            const Point2 d = Normalize(p.outTan);
            if (d.x > 0.0f) {
                float l = std::min(len, (p.pos.x - k[std::size_t(i - 1)].pos.x) * 0.9f / d.x);
                if (d.y != 0.0f) {
                    const float room = d.y > 0.0f ? p.pos.y : 1.0f - p.pos.y;
                    l = std::min(l, room / std::fabs(d.y));
                }
                p.inTan = d * -l;
            }
        }
    }
    return k;
}

void checkInvariants(Curve& c, bool confined) {
    const int n = c.PointCount();
    for (int i = 0; i < n; ++i) {
        CAPTURE(i);
        const Point2 p = c.CachedPosition(kNow, i);
        const Point2 in = c.CachedInHandle(kNow, i), out = c.CachedOutHandle(kNow, i);
        if (i + 1 < n)
            CHECK(p.x <= c.CachedPosition(kNow, i + 1).x);
        if (i > 0) {
            CHECK(in.x >= c.CachedPosition(kNow, i - 1).x - kSlack);
            CHECK(in.x <= p.x + kSlack);
        }
        if (i + 1 < n) {
            CHECK(out.x >= p.x - kSlack);
            CHECK(out.x <= c.CachedPosition(kNow, i + 1).x + kSlack);
        }
        if (confined) {
            for (const Point2& q : {p, in, out}) {
                CHECK(q.y >= -kYSlack);
                CHECK(q.y <= 1.0f + kYSlack);
            }
        }
    }
    // The same for the stored table (no point is animated here): the edits must keep it
    // valid by themselves, not rely on the evaluation cache pushing points back in order.
    const CurveKnot* k = c.Knots();
    for (int i = 0; i < n; ++i) {
        CAPTURE(i);
        const Point2 p = k[i].pos, in = p + k[i].inTan, out = p + k[i].outTan;
        if (i + 1 < n)
            CHECK(p.x <= k[i + 1].pos.x + kSlack);
        if (i > 0) {
            CHECK(in.x >= k[i - 1].pos.x - kSlack);
            CHECK(in.x <= p.x + kSlack);
        }
        if (i + 1 < n) {
            CHECK(out.x >= p.x - kSlack);
            CHECK(out.x <= k[i + 1].pos.x + kSlack);
        }
    }
    if (n > 0) {
        if (!(c.Knots()[0].flags & KNOT_FREE_END_X))
            CHECK(c.CachedPosition(kNow, 0).x == 0.0f);
        if (!(c.Knots()[n - 1].flags & KNOT_FREE_END_X))
            CHECK(c.CachedPosition(kNow, n - 1).x == 1.0f);
    }
}

void randomSelection(Random& r, Curve& c) {
    BitArray sel(c.PointCount());
    for (int i = 0; i < c.PointCount(); ++i)
        if (r.Chance(0.4))
            sel.Set(i);
    c.SetSelectionEx(sel, 4, TRUE);
}

// Moves the selection as the move mode does: one (dx, dy) for all, inside the ranges of
// the whole selection; end points keep their x.
void moveSelection(Random& r, Curve& c, bool confined) {
    float lo, hi, ylo, yhi;
    c.GetMoveRange(kNow, -1, lo, hi);
    c.GetMoveYRange(kNow, -1, ylo, yhi);
    float dx = std::clamp(r.Uniform(-0.3f, 0.3f), lo, hi);
    float dy = r.Uniform(-0.3f, 0.3f);
    if (confined)
        dy = std::clamp(dy, ylo, yhi);
    if (lo > hi)
        dx = 0.0f;
    // All positions are read before the first one changes: a half-moved selection may
    // overlap its own members, and the evaluation cache would push them apart.
    const int n = c.PointCount();
    std::vector<Point2> from;
    for (int i = 0; i < n; ++i)
        from.push_back(c.CachedPosition(kNow, i));
    for (int i = 0; i < n; ++i) {
        if (!(c.Knots()[i].flags & KNOT_SELECTED))
            continue;
        const bool pinned = (i == 0 || i == n - 1) && !(c.Knots()[i].flags & KNOT_FREE_END_X);
        const Point2 p = from[std::size_t(i)];
        c.SetKnotPosition(kNow, i, Point2(pinned ? p.x : p.x + dx, p.y + dy));
    }
}

void dragHandle(Random& r, Curve& c, int i, int selector, bool confined) {
    float lo, hi, ylo, yhi;
    c.GetHandleXRange(kNow, i, selector, lo, hi);
    c.GetHandleYRange(kNow, i, selector, ylo, yhi);
    const float dx = std::clamp(r.Uniform(-0.3f, 0.3f), lo, std::max(lo, hi));
    float dy = r.Uniform(-0.3f, 0.3f);
    if (confined)
        dy = std::clamp(dy, ylo, std::max(ylo, yhi));
    c.DragHandle(kNow, i, selector, dx, dy);
}

void dragRandomHandle(Random& r, Curve& c, bool confined) {
    const int i = r.Int(0, c.PointCount() - 1);
    dragHandle(r, c, i, (r.Chance(0.5) ? 0x100 : 0x200) | (r.Chance(0.3) ? 0x2 : 0), confined);
}

// A factor that keeps every selected position and handle inside [0, 1] when scaling
// about 0 (all y are >= 0 there).
void scaleSelection(Random& r, Curve& c, bool confined) {
    float factor = r.Uniform(0.2f, 2.0f);
    if (confined) {
        float top = 0.0f;
        for (int i = 0; i < c.PointCount(); ++i) {
            if (!(c.Knots()[i].flags & KNOT_SELECTED))
                continue;
            top = std::max({top, c.CachedPosition(kNow, i).y, c.CachedInHandle(kNow, i).y,
                            c.CachedOutHandle(kNow, i).y});
        }
        if (top > 0.0f)
            factor = std::min(factor, 1.0f / top);
    }
    c.ScaleSelectedY(kNow, 0.0f, factor, FALSE);
}

void splitRandomSegment(Random& r, Curve& c) {
    if (c.PointCount() < 2 || c.PointCount() > 12)
        return;
    const int i = r.Int(0, c.PointCount() - 2);
    const float a = c.CachedPosition(kNow, i).x, b = c.CachedPosition(kNow, i + 1).x;
    if (b - a < 1e-3f)
        return;
    c.InsertKnotAtX(kNow, i, a + (b - a) * r.Uniform(0.1f, 0.9f), r.Int(0, 1));
}

void setRandomKnot(Random& r, Curve& c) {
    const int i = r.Int(0, c.PointCount() - 1);
    CurveKnot k = c.Knots()[i];
    k.pos = c.CachedPosition(kNow, i) + Point2(r.Uniform(-0.2f, 0.2f), r.Uniform(-0.2f, 0.2f));
    k.inTan = k.inTan + Point2(r.Uniform(-0.1f, 0.1f), r.Uniform(-0.1f, 0.1f));
    k.outTan = k.outTan + Point2(r.Uniform(-0.1f, 0.1f), r.Uniform(-0.1f, 0.1f));
    if (r.Chance(0.3))
        k.flags ^= KNOT_SELECTED;
    c.SetKnot(kNow, i, k, TRUE, TRUE);
}

/// One edit as one undo step. Returns its name (for failure messages).
const char* randomEdit(Random& r, Curve& c, bool confined) {
    theHold.Begin();
    const char* name = "";
    switch (r.Int(0, 10)) {
    case 0: {
        name = "move point";
        const int i = r.Int(0, c.PointCount() - 1);
        Point2 p =
            c.CachedPosition(kNow, i) + Point2(r.Uniform(-0.4f, 0.4f), r.Uniform(-0.4f, 0.4f));
        c.ClampKnotPosition(kNow, i, p);
        c.SetKnotPosition(kNow, i, p);
        break;
    }
    case 1:
        name = "move selection";
        moveSelection(r, c, confined);
        break;
    case 2:
        name = "drag handle";
        dragRandomHandle(r, c, confined);
        break;
    case 3: {
        name = "set handle";
        const int i = r.Int(0, c.PointCount() - 1);
        c.SetHandleConstrained(kNow, i, r.Chance(0.5) ? 0x100 : 0x200,
                               Point2(r.Uniform(-0.5f, 0.5f), r.Uniform(-0.5f, 0.5f)));
        break;
    }
    case 4:
        name = "scale";
        scaleSelection(r, c, confined);
        break;
    case 5:
        name = "insert";
        splitRandomSegment(r, c);
        break;
    case 6:
        name = "delete";
        c.DeleteSelectedKnots();
        break;
    case 7: {
        name = "type";
        const int i = r.Int(0, c.PointCount() - 1);
        c.ChangeKnotType(kNow, i, r.Int(1, 3));
        break;
    }
    case 8:
        name = "set knot";
        setRandomKnot(r, c);
        break;
    case 9:
        name = r.Chance(0.5) ? "set x" : "set y";
        if (name[4] == 'x')
            c.SetSelectedX(kNow, r.Uniform(0.0f, 1.0f));
        else
            c.SetSelectedY(kNow, r.Uniform(-0.2f, 1.2f));
        break;
    default:
        name = "select";
        randomSelection(r, c);
        break;
    }
    theHold.Accept(name);
    return name;
}

void runSequences(bool confined, unsigned seed) {
    Random r(seed);
    for (int curveNo = 0; curveNo < 60; ++curveNo) {
        CAPTURE(curveNo);
        FixtureOptions o;
        if (!confined)
            o.controlFlags = CC_DEFAULT_FLAGS & ~DWORD(CC_CONSTRAIN_Y);
        CurveFixture f(randomCurve(r), o);
        Curve& c = f.curve();
        randomSelection(r, c);
        theHold.Reset();
        checkInvariants(c, confined);
        const TableState start = Snapshot(c);

        for (int step = 0; step < 40; ++step) {
            const std::string name = randomEdit(r, c, confined);
            CAPTURE(step);
            CAPTURE(name);
            checkInvariants(c, confined);
        }
        const TableState end = Snapshot(c);

        while (theHold.Undo()) {
        }
        CHECK(Snapshot(c) == start);
        checkInvariants(c, confined);
        while (theHold.Redo()) {
        }
        CHECK(Snapshot(c) == end);
        checkInvariants(c, confined);
    }
}

} // namespace

TEST_CASE("random constrained edits keep the curve a function, inside the y range") {
    runSequences(true, 20261121u);
}

TEST_CASE("random constrained edits keep the curve a function without y confinement") {
    runSequences(false, 7u);
}

TEST_CASE("random drags that restore before each step undo and redo exactly") {
    // The move mode's drag: one super hold, each step restores the press state and applies
    // the whole offset again, to the same handle or the same selection every time.
    Random r(99u);
    for (int curveNo = 0; curveNo < 40; ++curveNo) {
        CAPTURE(curveNo);
        CurveFixture f(randomCurve(r));
        Curve& c = f.curve();
        randomSelection(r, c);
        theHold.Reset();
        const TableState start = Snapshot(c);
        const bool handles = r.Chance(0.5);
        const int i = r.Int(0, c.PointCount() - 1);
        const int selector = (r.Chance(0.5) ? 0x100 : 0x200) | (r.Chance(0.5) ? 0x2 : 0);

        theHold.SuperBegin();
        theHold.Begin();
        for (int step = 0; step < 6; ++step) {
            theHold.Restore();
            // A rollback restores the table but, as for any rollback that is not an undo,
            // leaves the evaluation cache alone: the drag drops it before it reads again.
            c.InvalidateCache();
            CHECK(Snapshot(c) == start);
            if (handles)
                dragHandle(r, c, i, selector, true);
            else
                moveSelection(r, c, true);
        }
        theHold.Accept("Move Points");
        theHold.SuperAccept("Move Points");
        checkInvariants(c, true);
        const TableState end = Snapshot(c);
        if (theHold.NumUndo() == 0) { // nothing could move: no step, and no change
            CHECK(end == start);
            continue;
        }
        REQUIRE(theHold.Undo());
        CHECK(Snapshot(c) == start);
        REQUIRE(theHold.Redo());
        CHECK(Snapshot(c) == end);
    }
}
