// Host geometry: Point2, Point3, IPoint2, Box2 and Matrix3.
//
// Points are plain value types (two or three 32-bit floats, or two 32-bit ints) whose
// layout is part of saved files and undo records, so they carry no other data.
#pragma once

#include "host/export.h"
#include "host/win_types.h"

#include <cmath>
#include <utility>

class Point2 {
public:
    float x, y;

    constexpr Point2() : x(0.0f), y(0.0f) {}
    constexpr Point2(float ax, float ay) : x(ax), y(ay) {}
    constexpr Point2(double ax, double ay) : x(float(ax)), y(float(ay)) {}

    Point2 operator+(const Point2& p) const { return Point2(x + p.x, y + p.y); }
    Point2 operator-(const Point2& p) const { return Point2(x - p.x, y - p.y); }
    Point2 operator-() const { return Point2(-x, -y); }
    Point2 operator*(float f) const { return Point2(x * f, y * f); }
    Point2 operator/(float f) const { return Point2(x / f, y / f); }
    Point2& operator+=(const Point2& p) {
        x += p.x;
        y += p.y;
        return *this;
    }
    Point2& operator-=(const Point2& p) {
        x -= p.x;
        y -= p.y;
        return *this;
    }
    Point2& operator*=(float f) {
        x *= f;
        y *= f;
        return *this;
    }
    bool operator==(const Point2& p) const { return x == p.x && y == p.y; }
    bool operator!=(const Point2& p) const { return !(*this == p); }

    float& operator[](int i) { return i == 0 ? x : y; }
    float operator[](int i) const { return i == 0 ? x : y; }
};
static_assert(sizeof(Point2) == 8, "Point2 is two packed floats");

inline Point2 operator*(float f, const Point2& p) { return p * f; }
/// Euclidean length, computed in single precision as the host does.
inline float Length(const Point2& p) { return std::sqrt(p.x * p.x + p.y * p.y); }
inline Point2 Normalize(const Point2& p) {
    float l = Length(p);
    return l == 0.0f ? Point2() : p / l;
}

class Point3 {
public:
    float x, y, z;

    constexpr Point3() : x(0.0f), y(0.0f), z(0.0f) {}
    constexpr Point3(float ax, float ay, float az) : x(ax), y(ay), z(az) {}
    constexpr Point3(double ax, double ay, double az) : x(float(ax)), y(float(ay)), z(float(az)) {}

    Point3 operator+(const Point3& p) const { return Point3(x + p.x, y + p.y, z + p.z); }
    Point3 operator-(const Point3& p) const { return Point3(x - p.x, y - p.y, z - p.z); }
    Point3 operator*(float f) const { return Point3(x * f, y * f, z * f); }
    bool operator==(const Point3& p) const { return x == p.x && y == p.y && z == p.z; }
    bool operator!=(const Point3& p) const { return !(*this == p); }
    float& operator[](int i) { return i == 0 ? x : (i == 1 ? y : z); }
    float operator[](int i) const { return i == 0 ? x : (i == 1 ? y : z); }
};
static_assert(sizeof(Point3) == 12, "Point3 is three packed floats");

class IPoint2 {
public:
    int x, y;

    constexpr IPoint2() : x(0), y(0) {}
    constexpr IPoint2(int ax, int ay) : x(ax), y(ay) {}
    IPoint2 operator+(const IPoint2& p) const { return IPoint2(x + p.x, y + p.y); }
    IPoint2 operator-(const IPoint2& p) const { return IPoint2(x - p.x, y - p.y); }
    bool operator==(const IPoint2& p) const { return x == p.x && y == p.y; }
    bool operator!=(const IPoint2& p) const { return !(*this == p); }
};

/// Integer rectangle, edges inclusive: a point on any edge is contained.
class Box2 : public RECT {
public:
    Box2() { left = top = right = bottom = 0; }
    Box2(const IPoint2& a, const IPoint2& b) {
        left = a.x;
        top = a.y;
        right = b.x;
        bottom = b.y;
    }
    Box2(int l, int t, int r, int b) {
        left = l;
        top = t;
        right = r;
        bottom = b;
    }

    /// Swaps edges so that left <= right and top <= bottom.
    void Rectify() {
        if (left > right)
            std::swap(left, right);
        if (top > bottom)
            std::swap(top, bottom);
    }
    bool IsEmpty() const { return left > right || top > bottom; }
    bool Contains(const IPoint2& p) const {
        return p.x >= left && p.x <= right && p.y >= top && p.y <= bottom;
    }
    int w() const { return right - left + 1; }
    int h() const { return bottom - top + 1; }
    /// Grows the box by d pixels on every side.
    void Inflate(int d) {
        left -= d;
        top -= d;
        right += d;
        bottom += d;
    }
};

/// An affine transform of row vectors: p' = p * M, four rows of three floats, the last
/// row being the translation.
class HOST_API Matrix3 {
public:
    Matrix3() { IdentityMatrix(); }

    void IdentityMatrix();
    /// Post-multiplies by a rotation about z by `angle` radians (counter-clockwise seen
    /// from +z, so +pi/2 turns the x axis into the y axis).
    void RotateZ(float angle);
    void SetTrans(const Point3& t) { m_[3][0] = t.x, m_[3][1] = t.y, m_[3][2] = t.z; }
    Point3 GetRow(int i) const { return Point3(m_[i][0], m_[i][1], m_[i][2]); }
    void SetRow(int i, const Point3& p) { m_[i][0] = p.x, m_[i][1] = p.y, m_[i][2] = p.z; }

    Point3 PointTransform(const Point3& p) const;
    Point3 VectorTransform(const Point3& p) const;
    Matrix3 operator*(const Matrix3& b) const;

private:
    float m_[4][3]; // rows: x axis, y axis, z axis, translation
};

/// Transforms a point (translation included) as a row vector.
inline Point3 operator*(const Point3& p, const Matrix3& m) { return m.PointTransform(p); }
