// The reference evaluator: each function follows the numbered steps of the description.
#include "curve_eval_reference.h"

#include "control/curve_control.h"
#include "host/controller.h"

#include <algorithm>
#include <limits>

namespace evalref {

ReferenceEvaluator::ReferenceEvaluator(Curve& curve) : curve_(curve) { FreshLookupTable(); }

int ReferenceEvaluator::pointCount() const { return curve_.Knots() ? curve_.PointCount() : 0; }

void ReferenceEvaluator::ownerRanges(float& xlo, float& xhi, float& ylo, float& yhi,
                                     DWORD& flags) const {
    xlo = 0.0f, xhi = 1.0f, ylo = 0.0f, yhi = 1.0f, flags = 0;
    if (CurveControl* o = curve_.Owner()) {
        xlo = o->GetXRange().x;
        xhi = o->GetXRange().y;
        ylo = o->GetYRange().x;
        yhi = o->GetYRange().y;
        flags = o->GetControlFlags();
    }
}

void ReferenceEvaluator::InvalidateCache() {
    validity_.SetEmpty();
    seg_.clear();
}

void ReferenceEvaluator::FreshLookupTable() {
    const int size = curve_.GetLookupSize();
    table_.assign(size >= 0 ? std::size_t(size) + 1 : 1, 0.0f);
    lookupValid_ = false;
    InvalidateCache();
}

// EnsureCache: count, test, rebuild into a local interval, count again, store.
void ReferenceEvaluator::EnsureCache(TimeValue t) {
    ++counter_;
    if (validity_.InInterval(t))
        return;
    Interval local = FOREVER;
    Initialize(t, local);
    ++counter_;
    validity_ = local;
}

void ReferenceEvaluator::computeAllRooms() {
    float xlo, xhi, ylo, yhi;
    DWORD flags;
    ownerRanges(xlo, xhi, ylo, yhi, flags);
    const int n = pointCount();
    for (int i = 0; i < n; ++i) {
        rec(i, RIGHT) = 100000000.0f;
        rec(i, LEFT) = -100000000.0f;
        rec(i, UP) = 100000000.0f;
        rec(i, DOWN) = -100000000.0f;
    }
    for (int i = 1; i < n - 1; ++i) {
        const int p = i - 1, nx = i + 1;
        rec(i, LEFT) = std::max({rec(i, LEFT), rec(p, OX) - rec(i, PX), rec(p, PX) - rec(i, IX)});
        rec(i, RIGHT) =
            std::min({rec(i, RIGHT), rec(nx, IX) - rec(i, PX), rec(nx, PX) - rec(i, OX)});
        rec(i, UP) = std::min({rec(i, UP), yhi - rec(i, PY), yhi - rec(i, IY), yhi - rec(i, OY)});
        rec(i, DOWN) =
            std::max({rec(i, DOWN), ylo - rec(i, PY), ylo - rec(i, IY), ylo - rec(i, OY)});
    }
}

void ReferenceEvaluator::Initialize(TimeValue t, Interval& valid) {
    // 1.
    valid = FOREVER;
    const int n = pointCount();
    seg_.assign(std::size_t(n) * kFields, 0.0f);
    const CurveKnot* knots = curve_.Knots();
    // 2.
    for (int i = 0; i < n; ++i) {
        Point2 pos = knots[i].pos;
        if (auto* c = dynamic_cast<Control*>(curve_.Controller(i))) {
            Point3 v;
            c->GetValue(t, &v, valid, CTRL_ABSOLUTE);
            pos = Point2(v.x, v.y);
        }
        rec(i, PX) = pos.x;
        rec(i, PY) = pos.y;
        rec(i, IX) = pos.x + knots[i].inTan.x;
        rec(i, IY) = pos.y + knots[i].inTan.y;
        rec(i, OX) = pos.x + knots[i].outTan.x;
        rec(i, OY) = pos.y + knots[i].outTan.y;
    }
    float xlo, xhi, ylo, yhi;
    DWORD flags;
    ownerRanges(xlo, xhi, ylo, yhi, flags);
    // 3.
    if (!(curve_.CurveFlags() & 0x1) && n >= 1) {
        if (!(knots[0].flags & KNOT_FREE_END_X))
            rec(0, PX) = xlo;
        if (!(knots[n - 1].flags & KNOT_FREE_END_X))
            rec(n - 1, PX) = xhi;
    }
    // 4.
    computeAllRooms();
    // 5.
    for (int i = 0; i < n; ++i) {
        if (rec(i, LEFT) > 0) {
            const float d = rec(i, LEFT);
            rec(i, PX) += d;
            rec(i, IX) += d;
            rec(i, OX) += d;
        }
        if ((flags & 0x200) && rec(i, PY) < ylo) {
            const float d = ylo - rec(i, PY);
            rec(i, PY) = ylo;
            rec(i, IY) += d;
            rec(i, OY) += d;
        }
        computeAllRooms();
    }
    // 6.
    for (int i = n - 1; i >= 0; --i) {
        if (rec(i, RIGHT) < 0) {
            const float d = rec(i, RIGHT);
            rec(i, PX) += d;
            rec(i, IX) += d;
            rec(i, OX) += d;
        }
        if ((flags & 0x200) && rec(i, PY) > yhi) {
            const float d = yhi - rec(i, PY);
            rec(i, PY) = yhi;
            rec(i, IY) += d;
            rec(i, OY) += d;
        }
        computeAllRooms();
    }
    // 7.
    lookupValid_ = false;
}

Point2 ReferenceEvaluator::evalSegment(int i, float u) {
    const int j = (i + 1) % pointCount();
    const float v = 1.0f - u;
    const float p0x = rec(i, PX), p1x = rec(i, OX), p2x = rec(j, IX), p3x = rec(j, PX);
    const float p0y = rec(i, PY), p1y = rec(i, OY), p2y = rec(j, IY), p3y = rec(j, PY);
    return Point2(((p0x * v + 3.0f * u * p1x) * v + 3.0f * u * u * p2x) * v + u * u * u * p3x,
                  ((p0y * v + 3.0f * u * p1y) * v + 3.0f * u * u * p2y) * v + u * u * u * p3y);
}

Point2 ReferenceEvaluator::SegmentPoint(TimeValue t, int i, float u) {
    EnsureCache(t);
    if (i < 0 || i >= pointCount())
        return Point2(0.0f, 0.0f);
    return evalSegment(i, u);
}

float ReferenceEvaluator::SegmentValue(TimeValue t, int i, float x, int mode) {
    // 1.
    EnsureCache(t);
    if (pointCount() == 0 || i < 0 || i >= pointCount())
        return 0.0f;
    // 2.
    const Point2 at0 = evalSegment(i, 0.0f);
    if (at0.x == x)
        return mode == 1 ? 0.0f : at0.y;
    // 3.
    const Point2 at1 = evalSegment(i, 1.0f);
    if (at1.x == x)
        return mode == 1 ? 1.0f : at1.y;
    // 4.
    const bool rising = !(at0.x > at1.x);
    float low = 0.0f, high = 1.0f, u = 0.0f;
    Point2 last;
    for (int n = 0; n < 20; ++n) {
        u = (low + high) * 0.5f;
        last = evalSegment(i, u);
        if (last.x == x)
            break;
        if (rising) {
            if (last.x >= x)
                high = u;
            else
                low = u;
        } else {
            if (last.x >= x)
                low = u;
            else
                high = u;
        }
    }
    // 5.
    return mode == 1 ? u : last.y;
}

void ReferenceEvaluator::BuildLookup(TimeValue t) {
    float xlo, xhi, ylo, yhi;
    DWORD flags;
    ownerRanges(xlo, xhi, ylo, yhi, flags);
    const int size = curve_.GetLookupSize();
    // 1.
    step_ = (xhi - xlo) / float(size);
    indexScale_ = float(size - 1) / (xhi - xlo);
    // 2. and 3.
    if (size >= 0) {
        float x = xlo;
        for (int k = 0; k <= size; ++k) {
            const int n = pointCount();
            for (int i = 0; i < n - 1; ++i) {
                if (rec(i, PX) <= x && !(x > rec(i + 1, PX))) {
                    table_[k] = SegmentValue(t, i, x, 0);
                    break;
                }
            }
            x += step_;
        }
    }
    // 4.
    lookupValid_ = true;
}

float ReferenceEvaluator::ValueAt(TimeValue t, float x, Interval& valid, BOOL useLookup) {
    // 1.
    EnsureCache(t);
    valid &= validity_;
    // 2.
    const int n = pointCount();
    if (n == 0)
        return 0.0f;
    if (n == 1) {
        EnsureCache(t);
        return rec(0, PY);
    }
    float xlo, xhi, ylo, yhi;
    DWORD flags;
    ownerRanges(xlo, xhi, ylo, yhi, flags);
    const CurveKnot* knots = curve_.Knots();
    auto pureCorner = [](uint32_t f) { return (f & KNOT_CORNER) && !(f & KNOT_BEZIER); };
    // 3.
    if (x > xhi) {
        const int l = n - 1;
        float ax = rec(l, PX), ay = rec(l, PY), bx, by;
        if (!pureCorner(knots[l].flags)) {
            // L's cached in-handle: its position + inTan.
            bx = rec(l, PX) + knots[l].inTan.x;
            by = rec(l, PY) + knots[l].inTan.y;
            if (double(ax - bx) <= 0.0001) {
                bx = rec(n - 2, PX);
                by = rec(n - 2, PY);
            }
        } else {
            bx = rec(n - 2, PX);
            by = rec(n - 2, PY);
        }
        if (curve_.GetEndBehaviour() == 1)
            return ay;
        return (ay - by) / (ax - bx) * (x - bx) + by;
    }
    // 4.
    if (x < xlo) {
        float ax = rec(0, PX), ay = rec(0, PY);
        float bx = rec(0, PX) + knots[0].outTan.x, by = rec(0, PY) + knots[0].outTan.y;
        if (pureCorner(knots[0].flags) || double(bx - ax) <= 0.0001) {
            bx = rec(1, PX);
            by = rec(1, PY);
        }
        if (curve_.GetEndBehaviour() == 1)
            return ay;
        return (by - ay) / (bx - ax) * (x - ax) + ay;
    }
    // 5. (a lookup size below 1, or an index outside the table, answers exactly)
    const int size = curve_.GetLookupSize();
    if (useLookup && size >= 1) {
        if (!lookupValid_)
            BuildLookup(t);
        const float f = (x - xlo) * indexScale_;
        if (f > -1.0f && f < float(size)) {
            const int k = int(f);
            return table_[k] + (table_[k + 1] - table_[k]) * (x - k * step_) / step_;
        }
    }
    // 6.
    for (int i = 0; i <= n - 2; ++i)
        if (rec(i, PX) <= x && x <= rec(i + 1, PX))
            return SegmentValue(t, i, x, 0);
    return 0.0f;
}

Point2 ReferenceEvaluator::CachedPosition(TimeValue t, int i) {
    EnsureCache(t);
    if (i < 0 || i >= pointCount())
        return Point2(0.0f, 0.0f);
    return Point2(rec(i, PX), rec(i, PY));
}

Point2 ReferenceEvaluator::CachedInHandle(TimeValue t, int i) {
    EnsureCache(t);
    if (i < 0 || i >= pointCount())
        return Point2(0.0f, 0.0f);
    // Record i's position + inTan of point i (not the record's own handle, whose x a
    // pinned end point does not move).
    const CurveKnot& k = curve_.Knots()[i];
    return Point2(rec(i, PX) + k.inTan.x, rec(i, PY) + k.inTan.y);
}

Point2 ReferenceEvaluator::CachedOutHandle(TimeValue t, int i) {
    EnsureCache(t);
    if (i < 0 || i >= pointCount())
        return Point2(0.0f, 0.0f);
    const CurveKnot& k = curve_.Knots()[i];
    return Point2(rec(i, PX) + k.outTan.x, rec(i, PY) + k.outTan.y);
}

void ReferenceEvaluator::CachedRoom(TimeValue t, int i, float& right, float& left, float& up,
                                    float& down) {
    EnsureCache(t);
    const bool ok = i >= 0 && i < pointCount();
    right = ok ? rec(i, RIGHT) : 0.0f;
    left = ok ? rec(i, LEFT) : 0.0f;
    up = ok ? rec(i, UP) : 0.0f;
    down = ok ? rec(i, DOWN) : 0.0f;
}

Interval ReferenceEvaluator::CacheValidity(TimeValue t) {
    EnsureCache(t);
    return validity_;
}

void ReferenceEvaluator::GetValueBounds(TimeValue t, float& lo, float& hi) {
    EnsureCache(t);
    std::vector<float> ys;
    const int n = pointCount();
    for (int i = 0; i < n; ++i)
        ys.push_back(rec(i, PY));
    for (int i = 0; i < n - 1; ++i)
        for (int k = 1; k <= 10; ++k)
            ys.push_back(evalSegment(i, float(k) * 0.1f).y);
    lo = std::numeric_limits<float>::infinity();
    hi = -lo;
    for (float y : ys) {
        if (y != y)
            continue;
        lo = std::min(lo, y);
        hi = std::max(hi, y);
    }
    if (lo > hi)
        lo = hi = 0.0f;
}

} // namespace evalref
