// Fixture of the point-editing tests: a CurveControl holding one curve built from a list
// of points, and small helpers to compare point tables.
//
// The control is new for every test, with the x range 0 .. 1 and the y range 0 .. 1
// unless a test asks otherwise, and with the default flag word (which confines points and
// handles to the y range, CC_CONSTRAIN_Y). It has no notify window unless a test sets one.
#pragma once

#include "control/curve_control.h"
#include "curve/curve.h"
#include "host/controller.h"
#include "host/hold.h"

#include <cstring>
#include <vector>

namespace edit_test {

constexpr TimeValue kNow = 0;

/// A point record; `flags` gives the type and any other bits.
inline CurveKnot Knot(float x, float y, uint32_t flags = KNOT_TYPE_CORNER, Point2 in = {},
                      Point2 out = {}) {
    return CurveKnot(Point2(x, y), in, out, flags);
}

struct FixtureOptions {
    DWORD controlFlags = CC_DEFAULT_FLAGS;
    Point2 xRange{0.0f, 1.0f};
    Point2 yRange{0.0f, 1.0f};
    bool markEnds = true; // add KNOT_ENDPOINT to the first and last point
    bool cyclic = false;  // set curve flag 0x1
};

/// One control, one curve. Ends every hold on the way out and discards the undo history,
/// so that no record outlives the curve it points at.
class CurveFixture {
public:
    explicit CurveFixture(const std::vector<CurveKnot>& knots, FixtureOptions o = {}) {
        theHold.Reset();
        control_ = new CurveControl;
        control_->SetControlFlags(o.controlFlags);
        control_->SetXRange(o.xRange.x, o.xRange.y, FALSE);
        control_->SetYRange(o.yRange.x, o.yRange.y);
        control_->SetCurveCount(1, FALSE);
        curve_ = control_->GetCurveObject(0);
        Load(knots, o.markEnds);
        if (o.cyclic)
            curve_->SetCurveFlags(curve_->CurveFlags() | 0x1);
    }
    ~CurveFixture() {
        theHold.Cancel();
        theHold.SuperCancel();
        theHold.Reset();
        control_->DeleteThis();
    }
    CurveFixture(const CurveFixture&) = delete;
    CurveFixture& operator=(const CurveFixture&) = delete;

    Curve& curve() { return *curve_; }
    CurveControl& control() { return *control_; }

    /// Replaces the curve's points (no undo record, no message).
    void Load(const std::vector<CurveKnot>& knots, bool markEnds = true) {
        const DWORD flags = curve_->CurveFlags();
        curve_->SetPointCount(int(knots.size()));
        curve_->SetCurveFlags(flags);
        CurveKnot* k = curve_->Knots();
        for (std::size_t i = 0; i < knots.size(); ++i) {
            k[i] = knots[i];
            if (markEnds && (i == 0 || i + 1 == knots.size()))
                k[i].flags |= KNOT_ENDPOINT;
        }
        curve_->InvalidateCache();
    }

    /// Gives point i a controller whose constant value is the point's position.
    Control* Animate(int i) {
        Control* c = NewDefaultPoint3Controller();
        curve_->ReplaceReference(i, c, TRUE);
        Point3 v(curve_->Knots()[i].pos.x, curve_->Knots()[i].pos.y, 0.0f);
        c->SetValue(kNow, &v, 1, CTRL_ABSOLUTE);
        return c;
    }

private:
    CurveControl* control_; // deleted by the fixture
    Curve* curve_;          // reference 0 of control_
};

/// The curve's point table and controllers, compared bit for bit.
struct TableState {
    std::vector<CurveKnot> knots;
    std::vector<ReferenceTarget*> controllers;

    bool operator==(const TableState& o) const {
        return knots.size() == o.knots.size() && controllers == o.controllers &&
               (knots.empty() ||
                std::memcmp(knots.data(), o.knots.data(), knots.size() * sizeof(CurveKnot)) == 0);
    }
};

inline TableState Snapshot(Curve& c) {
    TableState s;
    for (int i = 0; i < c.PointCount(); ++i) {
        s.knots.push_back(c.Knots()[i]);
        s.controllers.push_back(c.Controller(i));
    }
    return s;
}

/// The selection as a list of indices.
inline std::vector<int> Selected(Curve& c) {
    std::vector<int> v;
    for (int i = 0; i < c.PointCount(); ++i)
        if (c.Knots()[i].flags & KNOT_SELECTED)
            v.push_back(i);
    return v;
}

inline void Select(Curve& c, std::initializer_list<int> points) {
    for (int i = 0; i < c.PointCount(); ++i)
        c.Knots()[i].flags &= ~uint32_t(KNOT_SELECTED);
    for (int i : points)
        c.Knots()[i].flags |= KNOT_SELECTED;
}

} // namespace edit_test
