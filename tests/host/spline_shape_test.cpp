// The host's spline shape object: knots, Bezier points, selection sets and the geometry
// cache. Expected values are worked by hand from the knot rules in host/spline_shape.h.
#include "doctest/doctest.h"

#include "host/spline_shape.h"

#include <cmath>

namespace {

Point3 P(float x, float y, float z = 0.0f) { return Point3(x, y, z); }

SplineKnot corner(float x, float y) {
    const Point3 p = P(x, y);
    return SplineKnot(KTYPE_CORNER, LTYPE_CURVE, p, p, p);
}

bool nearly(const Point3& a, const Point3& b, float eps = 1e-6f) {
    return std::fabs(a.x - b.x) <= eps && std::fabs(a.y - b.y) <= eps &&
           std::fabs(a.z - b.z) <= eps;
}

/// A shape object that nothing references goes away through the reference system.
struct ShapeHolder {
    SplineShape* shape = new SplineShape;
    ~ShapeHolder() { shape->MaybeAutoDelete(); }
};

} // namespace

TEST_CASE("a new spline has no knots and no segments") {
    BezierShape shape;
    Spline3D* sp = shape.NewSpline();
    REQUIRE(sp != nullptr);
    CHECK(shape.SplineCount() == 1);
    CHECK(sp->KnotCount() == 0);
    CHECK(sp->Segments() == 0);
    CHECK(sp->BezPointCount() == 0);
    CHECK(sp->InterpBezier3D(0, 0.5f) == Point3());
}

TEST_CASE("AddKnot appends by default and inserts before an index") {
    Spline3D sp;
    CHECK(sp.AddKnot(corner(0, 0)) == 0);
    CHECK(sp.AddKnot(corner(2, 0)) == 1);
    CHECK(sp.AddKnot(corner(1, 0), 1) == 1);
    CHECK(sp.AddKnot(corner(3, 0), 99) == 3);
    REQUIRE(sp.KnotCount() == 4);
    for (int i = 0; i < 4; ++i)
        CHECK(sp.GetKnot(i).Knot().x == float(i));
    CHECK(sp.Segments() == 3);
    sp.SetClosed(TRUE);
    CHECK(sp.Segments() == 4);
}

TEST_CASE("knot access out of range changes nothing") {
    Spline3D sp;
    sp.AddKnot(corner(5, 6));
    CHECK(sp.GetKnot(-1).Knot() == Point3());
    CHECK(sp.GetKnot(1).Knot() == Point3());
    CHECK_FALSE(sp.DeleteKnot(1));
    CHECK_FALSE(sp.SetKnot(-1, corner(1, 1)));
    CHECK(sp.KnotCount() == 1);
    CHECK(sp.DeleteKnot(0));
    CHECK(sp.KnotCount() == 0);
}

TEST_CASE("corner knots on a curve segment give a straight line") {
    Spline3D sp;
    // Vectors given away from the knot are dropped: a corner has no handles.
    sp.AddKnot(SplineKnot(KTYPE_CORNER, LTYPE_CURVE, P(0, 0, 0), P(-1, 5, 0), P(1, 5, 0)));
    sp.AddKnot(corner(1, 0));
    sp.ComputeBezPoints();
    REQUIRE(sp.BezPointCount() == 6);
    for (int i = 0; i < 3; ++i)
        CHECK(sp.GetBezPoint(i) == P(0, 0, 0));
    for (int i = 3; i < 6; ++i)
        CHECK(sp.GetBezPoint(i) == P(1, 0, 0));
    CHECK(nearly(sp.InterpBezier3D(0, 0.5f), P(0.5f, 0, 0)));
    CHECK(sp.GetKnot(0).OutVec() == P(0, 0, 0));
}

TEST_CASE("auto knots get smooth vectors a third of the way to each neighbour") {
    Spline3D sp;
    for (Point3 p : {P(0, 0, 0), P(1, 1, 0), P(2, 0, 0)})
        sp.AddKnot(SplineKnot(KTYPE_AUTO, LTYPE_CURVE, p, p, p));
    sp.ComputeBezPoints();
    // Middle knot: chord (0,0) -> (2,0) gives direction (1, 0); both neighbours are
    // sqrt(2) away, so each vector is sqrt(2)/3 long.
    const float third = std::sqrt(2.0f) / 3.0f;
    CHECK(nearly(sp.GetKnot(1).InVec(), P(1.0f - third, 1, 0)));
    CHECK(nearly(sp.GetKnot(1).OutVec(), P(1.0f + third, 1, 0)));
    // First knot of an open spline: aims at its only neighbour, no in-handle.
    CHECK(nearly(sp.GetKnot(0).InVec(), P(0, 0, 0)));
    CHECK(nearly(sp.GetKnot(0).OutVec(), P(1.0f / 3.0f, 1.0f / 3.0f, 0)));
    // The curve passes through its knots.
    CHECK(nearly(sp.InterpBezier3D(0, 1.0f), P(1, 1, 0)));
    CHECK(nearly(sp.InterpBezier3D(1, 0.0f), P(1, 1, 0)));
}

TEST_CASE("a line segment pulls its inner control points onto its ends") {
    Spline3D sp;
    sp.AddKnot(SplineKnot(KTYPE_BEZIER, LTYPE_LINE, P(0, 0, 0), P(-1, 0, 0), P(0, 3, 0)));
    sp.AddKnot(SplineKnot(KTYPE_BEZIER, LTYPE_CURVE, P(2, 0, 0), P(2, 3, 0), P(3, 0, 0)));
    sp.ComputeBezPoints();
    CHECK(sp.GetKnot(0).InVec() == P(-1, 0, 0)); // not on the segment: kept
    CHECK(sp.GetKnot(0).OutVec() == P(0, 0, 0));
    CHECK(sp.GetKnot(1).InVec() == P(2, 0, 0));
    CHECK(sp.GetKnot(1).OutVec() == P(3, 0, 0));
    CHECK(nearly(sp.InterpBezier3D(0, 0.25f), P(0.3125f, 0, 0)));
}

TEST_CASE("a closed spline wraps its last segment to the first knot") {
    Spline3D sp;
    sp.AddKnot(corner(0, 0));
    sp.AddKnot(corner(1, 0));
    sp.AddKnot(corner(1, 1));
    sp.SetClosed(TRUE);
    sp.ComputeBezPoints();
    CHECK(nearly(sp.InterpBezier3D(2, 0.5f), P(0.5f, 0.5f, 0)));
    CHECK(sp.InterpBezier3D(3, 0.5f) == Point3());
}

TEST_CASE("Bezier points go stale on change and interpolation brings them up to date") {
    Spline3D sp;
    sp.AddKnot(corner(0, 0));
    sp.AddKnot(corner(1, 0));
    sp.ComputeBezPoints();
    CHECK(sp.BezPointsValid());
    sp.AddKnot(corner(2, 2));
    CHECK_FALSE(sp.BezPointsValid());
    CHECK(nearly(sp.InterpBezier3D(1, 0.5f), P(1.5f, 1, 0)));
    CHECK(sp.BezPointsValid());
    CHECK(sp.BezPointCount() == 9);
}

TEST_CASE("UpdateSels sizes the selection sets and keeps the bits that still exist") {
    BezierShape shape;
    Spline3D* sp = shape.NewSpline();
    sp->AddKnot(corner(0, 0));
    sp->AddKnot(corner(1, 0));
    shape.UpdateSels();
    CHECK(shape.VertSel(0).GetSize() == 6);
    CHECK(shape.SegSel(0).GetSize() == 1);
    CHECK(shape.PolySel().GetSize() == 1);
    shape.VertSel(0).Set(4);
    shape.SegSel(0).Set(0);
    shape.PolySel().Set(0);
    sp->AddKnot(corner(2, 0));
    shape.UpdateSels();
    CHECK(shape.VertSel(0).GetSize() == 9);
    CHECK(shape.VertSel(0)[4] == 1);
    CHECK(shape.VertSel(0).NumberSet() == 1);
    CHECK(shape.SegSel(0).GetSize() == 2);
    CHECK(shape.SegSel(0)[0] == 1);
    CHECK(shape.PolySel()[0] == 1);
    CHECK(shape.VertSel(1).GetSize() == 0);
    CHECK(shape.SegSel(-1).GetSize() == 0);
}

TEST_CASE("deleting a spline moves the later selections down") {
    BezierShape shape;
    for (int s = 0; s < 3; ++s) {
        Spline3D* sp = shape.NewSpline();
        for (int k = 0; k <= s; ++k)
            sp->AddKnot(corner(float(k), 0));
    }
    shape.UpdateSels();
    shape.PolySel().Set(2);
    CHECK(shape.DeleteSpline(0));
    CHECK_FALSE(shape.DeleteSpline(5));
    CHECK(shape.SplineCount() == 2);
    CHECK(shape.GetSpline(0)->KnotCount() == 2);
    CHECK(shape.VertSel(1).GetSize() == 9);
    CHECK(shape.PolySel().GetSize() == 2);
    CHECK(shape.PolySel()[1] == 1);
    CHECK(shape.PolySel()[0] == 0);
    CHECK(shape.GetSpline(2) == nullptr);
}

TEST_CASE("NewShape empties the shape") {
    BezierShape shape;
    shape.NewSpline()->AddKnot(corner(0, 0));
    shape.UpdateSels();
    shape.NewShape();
    CHECK(shape.SplineCount() == 0);
    CHECK(shape.PolySel().GetSize() == 0);
    CHECK(shape.VertSel(0).GetSize() == 0);
}

TEST_CASE("a spline shape object names its class and keeps derived bounds until invalidated") {
    ShapeHolder h;
    SplineShape& obj = *h.shape;
    CStr name;
    obj.GetClassName(name);
    CHECK(name == "SplineShape");
    CHECK(obj.SuperClassID() == SHAPE_CLASS_ID);
    CHECK(obj.ClassID() == SPLINE_SHAPE_CLASS_ID);

    Point3 lo, hi;
    CHECK_FALSE(obj.GetBounds(lo, hi)); // no knots
    Spline3D* sp = obj.shape.NewSpline();
    sp->AddKnot(SplineKnot(KTYPE_BEZIER_CORNER, LTYPE_CURVE, P(0, 0, 0), P(-1, 0, 0), P(0, 2, 0)));
    sp->AddKnot(corner(3, 1));
    // Still the answer of the empty shape: the cache holds until invalidated.
    CHECK(obj.GeomCacheValid());
    CHECK_FALSE(obj.GetBounds(lo, hi));
    obj.InvalidateGeomCache();
    CHECK_FALSE(obj.GeomCacheValid());
    REQUIRE(obj.GetBounds(lo, hi));
    CHECK(lo == P(-1, 0, 0)); // handles count
    CHECK(hi == P(3, 2, 0));
    CHECK(obj.GeomCacheValid());
}

TEST_CASE("a cloned spline shape is an independent copy") {
    ShapeHolder h;
    h.shape->shape.NewSpline()->AddKnot(corner(1, 2));
    RemapDir& remap = NewRemapDir();
    auto* copy = static_cast<SplineShape*>(remap.CloneRef(h.shape));
    remap.DeleteThis();
    REQUIRE(copy != nullptr);
    REQUIRE(copy->shape.SplineCount() == 1);
    CHECK(copy->shape.GetSpline(0)->GetKnot(0).Knot() == P(1, 2, 0));
    h.shape->shape.GetSpline(0)->AddKnot(corner(4, 4));
    CHECK(copy->shape.GetSpline(0)->KnotCount() == 1);
    copy->MaybeAutoDelete();
}
