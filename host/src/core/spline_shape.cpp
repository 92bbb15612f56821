#include "host/spline_shape.h"

#include <algorithm>
#include <cmath>

namespace {

float distance(const Point3& a, const Point3& b) {
    const Point3 d = b - a;
    return std::sqrt(d.x * d.x + d.y * d.y + d.z * d.z);
}

Point3 unit(const Point3& d) {
    const float l = std::sqrt(d.x * d.x + d.y * d.y + d.z * d.z);
    return l == 0.0f ? Point3() : d * (1.0f / l);
}

} // namespace

// ---------------------------------------------------------------------------------------
// Spline3D

Spline3D::Spline3D() = default;
Spline3D::~Spline3D() = default;
Spline3D::Spline3D(const Spline3D& s) = default;
Spline3D& Spline3D::operator=(const Spline3D& s) = default;

int Spline3D::KnotCount() const { return int(knots_.size()); }

int Spline3D::AddKnot(const SplineKnot& k, int where) {
    if (where < 0 || where > KnotCount())
        where = KnotCount();
    knots_.insert(knots_.begin() + where, k);
    bezValid_ = false;
    return where;
}

BOOL Spline3D::DeleteKnot(int i) {
    if (i < 0 || i >= KnotCount())
        return FALSE;
    knots_.erase(knots_.begin() + i);
    bezValid_ = false;
    return TRUE;
}

SplineKnot Spline3D::GetKnot(int i) const {
    if (i < 0 || i >= KnotCount())
        return SplineKnot();
    return knots_[i];
}

BOOL Spline3D::SetKnot(int i, const SplineKnot& k) {
    if (i < 0 || i >= KnotCount())
        return FALSE;
    knots_[i] = k;
    bezValid_ = false;
    return TRUE;
}

BOOL Spline3D::Closed() const { return closed_; }

void Spline3D::SetClosed(BOOL closed) {
    closed_ = closed != FALSE;
    bezValid_ = false;
}

int Spline3D::Segments() const {
    const int n = KnotCount();
    if (n == 0)
        return 0;
    return closed_ ? n : n - 1;
}

void Spline3D::ComputeBezPoints() {
    const int n = KnotCount();
    for (int i = 0; i < n; ++i) {
        SplineKnot& k = knots_[i];
        const Point3 p = k.Knot();
        const bool hasPrev = closed_ || i > 0;
        const bool hasNext = closed_ || i < n - 1;
        const Point3 prev = hasPrev ? knots_[(i - 1 + n) % n].Knot() : p;
        const Point3 next = hasNext ? knots_[(i + 1) % n].Knot() : p;
        switch (k.Ktype()) {
        case KTYPE_AUTO: {
            // The tangent follows the chord through both neighbours; an end knot of an
            // open spline aims at its only neighbour.
            const Point3 dir = unit(next - prev);
            k.SetInVec(p - dir * (distance(prev, p) / 3.0f));
            k.SetOutVec(p + dir * (distance(p, next) / 3.0f));
            break;
        }
        case KTYPE_BEZIER:
        case KTYPE_BEZIER_CORNER:
            break;
        default: // KTYPE_CORNER and unknown types: no handles
            k.SetInVec(p);
            k.SetOutVec(p);
            break;
        }
    }
    // A straight segment has its control points on its ends.
    for (int seg = 0; seg < Segments(); ++seg) {
        SplineKnot& a = knots_[seg];
        if (a.Ltype() != LTYPE_LINE)
            continue;
        SplineKnot& b = knots_[(seg + 1) % n];
        a.SetOutVec(a.Knot());
        b.SetInVec(b.Knot());
    }
    bezPoints_.resize(std::size_t(n) * 3);
    for (int i = 0; i < n; ++i) {
        bezPoints_[3 * i] = knots_[i].InVec();
        bezPoints_[3 * i + 1] = knots_[i].Knot();
        bezPoints_[3 * i + 2] = knots_[i].OutVec();
    }
    bezValid_ = true;
}

BOOL Spline3D::BezPointsValid() const { return bezValid_; }

int Spline3D::BezPointCount() const { return int(bezPoints_.size()); }

Point3 Spline3D::GetBezPoint(int i) const {
    if (i < 0 || i >= BezPointCount())
        return Point3();
    return bezPoints_[i];
}

Point3 Spline3D::InterpBezier3D(int seg, float t) {
    if (seg < 0 || seg >= Segments())
        return Point3();
    if (!bezValid_)
        ComputeBezPoints();
    const int n = KnotCount();
    const Point3 p0 = bezPoints_[3 * seg + 1];
    const Point3 p1 = bezPoints_[3 * seg + 2];
    const Point3 p2 = bezPoints_[3 * ((seg + 1) % n)];
    const Point3 p3 = bezPoints_[3 * ((seg + 1) % n) + 1];
    const float s = 1.0f - t;
    return p0 * (s * s * s) + p1 * (3.0f * s * s * t) + p2 * (3.0f * s * t * t) + p3 * (t * t * t);
}

// ---------------------------------------------------------------------------------------
// BezierShape

BezierShape::BezierShape() = default;

BezierShape::~BezierShape() { NewShape(); }

BezierShape::BezierShape(const BezierShape& s) { *this = s; }

BezierShape& BezierShape::operator=(const BezierShape& s) {
    if (this == &s)
        return *this;
    NewShape();
    for (const Spline3D* sp : s.splines_)
        splines_.push_back(new Spline3D(*sp));
    vertSel_ = s.vertSel_;
    segSel_ = s.segSel_;
    polySel_ = s.polySel_;
    return *this;
}

void BezierShape::NewShape() {
    for (Spline3D* sp : splines_)
        delete sp;
    splines_.clear();
    vertSel_.clear();
    segSel_.clear();
    polySel_.SetSize(0);
}

Spline3D* BezierShape::NewSpline() {
    splines_.push_back(new Spline3D);
    return splines_.back();
}

int BezierShape::SplineCount() const { return int(splines_.size()); }

Spline3D* BezierShape::GetSpline(int i) {
    return (i >= 0 && i < SplineCount()) ? splines_[i] : nullptr;
}

const Spline3D* BezierShape::GetSpline(int i) const {
    return (i >= 0 && i < SplineCount()) ? splines_[i] : nullptr;
}

BOOL BezierShape::DeleteSpline(int i) {
    if (i < 0 || i >= SplineCount())
        return FALSE;
    delete splines_[i];
    splines_.erase(splines_.begin() + i);
    // The selections of the later splines move down with them.
    if (i < int(vertSel_.size()))
        vertSel_.erase(vertSel_.begin() + i);
    if (i < int(segSel_.size()))
        segSel_.erase(segSel_.begin() + i);
    BitArray poly(SplineCount());
    for (int j = 0; j < SplineCount(); ++j)
        poly.Set(j, polySel_[j < i ? j : j + 1]);
    polySel_ = poly;
    return TRUE;
}

void BezierShape::UpdateSels() {
    const int n = SplineCount();
    vertSel_.resize(std::size_t(n));
    segSel_.resize(std::size_t(n));
    for (int i = 0; i < n; ++i) {
        vertSel_[i].SetSize(splines_[i]->KnotCount() * 3, 1);
        segSel_[i].SetSize(splines_[i]->Segments(), 1);
    }
    polySel_.SetSize(n, 1);
}

BitArray& BezierShape::VertSel(int spline) {
    if (spline < 0 || spline >= int(vertSel_.size())) {
        none_.SetSize(0);
        return none_;
    }
    return vertSel_[spline];
}

BitArray& BezierShape::SegSel(int spline) {
    if (spline < 0 || spline >= int(segSel_.size())) {
        none_.SetSize(0);
        return none_;
    }
    return segSel_[spline];
}

BitArray& BezierShape::PolySel() { return polySel_; }

void BezierShape::ComputeBezPoints() {
    for (Spline3D* sp : splines_)
        sp->ComputeBezPoints();
}

// ---------------------------------------------------------------------------------------
// SplineShape

SplineShape::SplineShape() = default;
SplineShape::~SplineShape() = default;

RefTargetHandle SplineShape::Clone(RemapDir& remap) {
    auto* copy = new SplineShape;
    copy->shape = shape;
    BaseClone(this, copy, remap);
    return copy;
}

void SplineShape::InvalidateGeomCache() { geomValid_ = false; }

BOOL SplineShape::GeomCacheValid() const { return geomValid_; }

BOOL SplineShape::GetBounds(Point3& lo, Point3& hi) {
    if (!geomValid_) {
        hasGeom_ = false;
        for (int s = 0; s < shape.SplineCount(); ++s) {
            Spline3D* sp = shape.GetSpline(s);
            if (!sp->BezPointsValid())
                sp->ComputeBezPoints();
            for (int i = 0; i < sp->BezPointCount(); ++i) {
                const Point3 p = sp->GetBezPoint(i);
                if (!hasGeom_) {
                    lo_ = hi_ = p;
                    hasGeom_ = true;
                    continue;
                }
                lo_ = Point3(std::min(lo_.x, p.x), std::min(lo_.y, p.y), std::min(lo_.z, p.z));
                hi_ = Point3(std::max(hi_.x, p.x), std::max(hi_.y, p.y), std::max(hi_.z, p.z));
            }
        }
        geomValid_ = true;
    }
    if (!hasGeom_)
        return FALSE;
    lo = lo_;
    hi = hi_;
    return TRUE;
}
