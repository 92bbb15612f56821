// Spline shapes: the host's editable Bezier splines.
//
// A SplineShape object holds one BezierShape; a BezierShape is a list of Spline3D; a
// Spline3D is a list of SplineKnot. A knot carries its point and two vectors (the absolute
// positions of its in- and out-handles) plus a knot type, which says how the vectors are
// derived, and a line type, which says whether the segment leaving the knot is curved or
// straight. ComputeBezPoints turns the knots into the three Bezier control points per knot
// that interpolation uses; after editing knots, call ComputeBezPoints, UpdateSels and
// SplineShape::InvalidateGeomCache, in that order, as the host's own shape tools do.
#pragma once

#include "host/animatable.h"
#include "host/bitarray.h"
#include "host/export.h"
#include "host/geom.h"

#include <vector>

/// Class id of the host's editable spline object (super class SHAPE_CLASS_ID).
#define SPLINE_SHAPE_CLASS_ID Class_ID(0x0000000A, 0)

/// @name Knot types (SplineKnot::Ktype)
/// @{
#define KTYPE_AUTO 0          // smooth vectors derived from the neighbours
#define KTYPE_CORNER 1        // no vectors: both sit on the knot point
#define KTYPE_BEZIER 2        // vectors as given, kept in line by editing tools
#define KTYPE_BEZIER_CORNER 3 // vectors as given, independent
/// @}

/// @name Line types (SplineKnot::Ltype): the segment that leaves the knot
/// @{
#define LTYPE_CURVE 0
#define LTYPE_LINE 1
/// @}

/// One knot: a point with absolute in- and out-vectors, a knot type and a line type.
class SplineKnot {
public:
    SplineKnot() = default;
    SplineKnot(int ktype, int ltype, const Point3& p, const Point3& in, const Point3& out)
        : ktype_(ktype), ltype_(ltype), point_(p), inVec_(in), outVec_(out) {}

    int Ktype() const { return ktype_; }
    void SetKtype(int t) { ktype_ = t; }
    int Ltype() const { return ltype_; }
    void SetLtype(int t) { ltype_ = t; }
    Point3 Knot() const { return point_; }
    void SetKnot(const Point3& p) { point_ = p; }
    Point3 InVec() const { return inVec_; }
    void SetInVec(const Point3& p) { inVec_ = p; }
    Point3 OutVec() const { return outVec_; }
    void SetOutVec(const Point3& p) { outVec_ = p; }

private:
    int ktype_ = KTYPE_CORNER; // KTYPE_...
    int ltype_ = LTYPE_CURVE;  // LTYPE_... of the segment leaving this knot
    Point3 point_;             // the knot itself
    Point3 inVec_;             // absolute position of the in-handle
    Point3 outVec_;            // absolute position of the out-handle
};

/// One spline: knots in order, open or closed. Segment i runs from knot i to knot i + 1
/// (to knot 0 for the last segment of a closed spline).
class HOST_API Spline3D {
public:
    Spline3D();
    ~Spline3D();
    Spline3D(const Spline3D& s);
    Spline3D& operator=(const Spline3D& s);

    int KnotCount() const;
    /// Inserts a knot before index `where` (-1 or past the end: appends). Returns its
    /// index. The Bezier points are stale until the next ComputeBezPoints.
    int AddKnot(const SplineKnot& k, int where = -1);
    /// FALSE for an index out of range.
    BOOL DeleteKnot(int i);
    /// Knot i; a default knot for an index out of range.
    SplineKnot GetKnot(int i) const;
    /// FALSE (and no change) for an index out of range.
    BOOL SetKnot(int i, const SplineKnot& k);

    BOOL Closed() const;
    void SetClosed(BOOL closed);
    /// KnotCount() - 1 for an open spline (0 without knots), KnotCount() when closed.
    int Segments() const;

    /// Derives the Bezier control points from the knots: corner knots put both vectors
    /// on the knot, auto knots get smooth vectors a third of the way to each neighbour
    /// (along the line from the previous to the next knot), Bezier knots keep theirs;
    /// then a straight (LTYPE_LINE) segment pulls its two inner control points onto its
    /// ends. The derived vectors are written back into the knots.
    void ComputeBezPoints();
    /// Whether the Bezier points match the knots (no change since ComputeBezPoints).
    BOOL BezPointsValid() const;
    /// Three per knot: in-vector, knot, out-vector. Empty until ComputeBezPoints.
    int BezPointCount() const;
    Point3 GetBezPoint(int i) const;
    /// The point of segment `seg` at parameter t in [0, 1], computing the Bezier points
    /// first when they are stale; (0, 0, 0) for a segment out of range.
    Point3 InterpBezier3D(int seg, float t);

private:
    std::vector<SplineKnot> knots_; // in spline order
    std::vector<Point3> bezPoints_; // 3 per knot once computed
    bool closed_ = false;           // the last segment returns to knot 0
    bool bezValid_ = false;         // bezPoints_ matches knots_
};

/// A set of splines with the selection sets the host's shape tools edit: per spline one
/// bit per Bezier point (vertex selection) and one per segment, and one bit per spline.
class HOST_API BezierShape {
public:
    BezierShape();
    ~BezierShape();
    BezierShape(const BezierShape& s);
    BezierShape& operator=(const BezierShape& s);

    /// Drops every spline and clears the selection sets: an empty shape.
    void NewShape();
    /// Appends an empty open spline and returns it; the shape owns it.
    Spline3D* NewSpline();
    int SplineCount() const;
    /// Spline i, or null for an index out of range.
    Spline3D* GetSpline(int i);
    const Spline3D* GetSpline(int i) const;
    /// Deletes spline i; FALSE for an index out of range.
    BOOL DeleteSpline(int i);

    /// Sizes the selection sets to the splines as they are now, keeping the bits of
    /// splines, points and segments that still exist.
    void UpdateSels();
    /// Vertex (3 bits per knot) and segment selection of spline i, spline selection.
    /// Out-of-range indices give an empty array.
    BitArray& VertSel(int spline);
    BitArray& SegSel(int spline);
    BitArray& PolySel();

    /// Computes the Bezier points of every spline.
    void ComputeBezPoints();

private:
    std::vector<Spline3D*> splines_; // owned
    std::vector<BitArray> vertSel_;  // per spline: 3 bits per knot
    std::vector<BitArray> segSel_;   // per spline: one bit per segment
    BitArray polySel_;               // one bit per spline
    BitArray none_;                  // answer for out-of-range selection queries
};

/// The host's editable spline object.
class HOST_API SplineShape : public ReferenceTarget {
public:
    SplineShape();
    ~SplineShape() override;

    void GetClassName(CStr& s) override { s = "SplineShape"; }
    Class_ID ClassID() override { return SPLINE_SHAPE_CLASS_ID; }
    SClass_ID SuperClassID() override { return SHAPE_CLASS_ID; }
    RefTargetHandle Clone(RemapDir& remap) override;

    /// Drops what the object derived from its shape (its bounds); the next query derives
    /// it again. Call after every change of `shape`.
    void InvalidateGeomCache();
    BOOL GeomCacheValid() const;
    /// Bounds of every Bezier point of every spline (handles included); FALSE for a
    /// shape without knots. Derived once per InvalidateGeomCache.
    BOOL GetBounds(Point3& lo, Point3& hi);

    BezierShape shape; // the splines

private:
    bool geomValid_ = false; // lo_/hi_/hasGeom_ were derived from the current shape
    bool hasGeom_ = false;   // the shape had at least one Bezier point
    Point3 lo_, hi_;         // cached bounds
};
