// Host geometry: Point2, Point3, IPoint2, Box2, Matrix3.
#include "host/geom.h"

#include <doctest/doctest.h>

#include <cmath>

TEST_CASE("Point2 is two packed floats with value arithmetic") {
    Point2 zero;
    CHECK(zero.x == 0.0f);
    CHECK(zero.y == 0.0f);

    Point2 a(1.0f, 2.0f), b(0.5, -4.0); // the double constructor narrows to float
    CHECK(a + b == Point2(1.5f, -2.0f));
    CHECK(a - b == Point2(0.5f, 6.0f));
    CHECK(-a == Point2(-1.0f, -2.0f));
    CHECK(a * 2.0f == Point2(2.0f, 4.0f));
    CHECK(2.0f * a == Point2(2.0f, 4.0f));
    CHECK(a / 2.0f == Point2(0.5f, 1.0f));
    CHECK(a != b);

    Point2 c = a;
    c += b;
    CHECK(c == Point2(1.5f, -2.0f));
    c -= b;
    CHECK(c == a);
    c *= 3.0f;
    CHECK(c == Point2(3.0f, 6.0f));

    c[0] = 7.0f;
    c[1] = 8.0f;
    CHECK(c.x == 7.0f);
    CHECK(c.y == 8.0f);
    const Point2 cc = c;
    CHECK(cc[0] == 7.0f);
    CHECK(cc[1] == 8.0f);
}

TEST_CASE("Point2 length and normalisation") {
    CHECK(Length(Point2(3.0f, 4.0f)) == 5.0f); // 3-4-5 triangle
    Point2 n = Normalize(Point2(0.0f, -2.0f));
    CHECK(n == Point2(0.0f, -1.0f));
    // A zero vector has no direction: it stays zero rather than becoming NaN.
    CHECK(Normalize(Point2()) == Point2());
}

TEST_CASE("Point3 and IPoint2 arithmetic") {
    Point3 p(1.0f, 2.0f, 3.0f), q(0.5, 0.5, 0.5);
    CHECK(p + q == Point3(1.5f, 2.5f, 3.5f));
    CHECK(p - q == Point3(0.5f, 1.5f, 2.5f));
    CHECK(p * 2.0f == Point3(2.0f, 4.0f, 6.0f));
    CHECK(p[2] == 3.0f);
    p[2] = 9.0f;
    CHECK(p.z == 9.0f);
    CHECK(Point3() == Point3(0.0f, 0.0f, 0.0f));

    IPoint2 i(3, 4), j(1, -1);
    CHECK(i + j == IPoint2(4, 3));
    CHECK(i - j == IPoint2(2, 5));
    CHECK(i != j);
    CHECK(IPoint2() == IPoint2(0, 0));
}

TEST_CASE("Box2 contains the points on its edges") {
    Box2 b(10, 20, 30, 40);
    CHECK(b.Contains(IPoint2(10, 20))); // top-left corner
    CHECK(b.Contains(IPoint2(30, 40))); // bottom-right corner
    CHECK(b.Contains(IPoint2(10, 40)));
    CHECK(b.Contains(IPoint2(30, 20)));
    CHECK(b.Contains(IPoint2(20, 30)));
    CHECK_FALSE(b.Contains(IPoint2(9, 30)));
    CHECK_FALSE(b.Contains(IPoint2(31, 30)));
    CHECK_FALSE(b.Contains(IPoint2(20, 19)));
    CHECK_FALSE(b.Contains(IPoint2(20, 41)));
    CHECK(b.w() == 21); // edges inclusive
    CHECK(b.h() == 21);
    CHECK_FALSE(b.IsEmpty());

    Box2 one(IPoint2(5, 5), IPoint2(5, 5));
    CHECK(one.Contains(IPoint2(5, 5)));
    CHECK(one.w() == 1);

    b.Inflate(2);
    CHECK(b.left == 8);
    CHECK(b.top == 18);
    CHECK(b.right == 32);
    CHECK(b.bottom == 42);

    CHECK(Box2().Contains(IPoint2(0, 0)));
}

TEST_CASE("Box2 Rectify orders a box dragged up and left") {
    Box2 b(IPoint2(30, 40), IPoint2(10, 20));
    CHECK(b.IsEmpty());
    CHECK_FALSE(b.Contains(IPoint2(20, 30)));
    b.Rectify();
    CHECK(b.left == 10);
    CHECK(b.top == 20);
    CHECK(b.right == 30);
    CHECK(b.bottom == 40);
    CHECK(b.Contains(IPoint2(20, 30)));

    // Only the inverted pair is swapped.
    Box2 c(1, 9, 5, 2);
    c.Rectify();
    CHECK(c.left == 1);
    CHECK(c.right == 5);
    CHECK(c.top == 2);
    CHECK(c.bottom == 9);
}

namespace {
// cos(1.5707964f) is about -4.4e-8, not 0: compare within a few float steps.
void checkNear(const Point3& a, const Point3& b, float tolerance = 1e-6f) {
    CHECK(std::fabs(a.x - b.x) < tolerance);
    CHECK(std::fabs(a.y - b.y) < tolerance);
    CHECK(std::fabs(a.z - b.z) < tolerance);
}
} // namespace

TEST_CASE("Matrix3 starts as the identity") {
    Matrix3 m;
    CHECK(m.GetRow(0) == Point3(1.0f, 0.0f, 0.0f));
    CHECK(m.GetRow(1) == Point3(0.0f, 1.0f, 0.0f));
    CHECK(m.GetRow(2) == Point3(0.0f, 0.0f, 1.0f));
    CHECK(m.GetRow(3) == Point3(0.0f, 0.0f, 0.0f));
    CHECK(m.PointTransform(Point3(1.5f, -2.0f, 3.0f)) == Point3(1.5f, -2.0f, 3.0f));

    m.SetRow(0, Point3(2.0f, 0.0f, 0.0f));
    m.IdentityMatrix();
    CHECK(m.GetRow(0) == Point3(1.0f, 0.0f, 0.0f));
}

TEST_CASE("Matrix3 RotateZ by a quarter turn either way") {
    // 1.5707964 is pi/2 rounded to float, the angle the curve rotate command uses.
    Matrix3 ccw;
    ccw.RotateZ(1.5707964f);
    checkNear(ccw.PointTransform(Point3(1.0f, 0.0f, 0.0f)), Point3(0.0f, 1.0f, 0.0f));
    checkNear(ccw.PointTransform(Point3(0.0f, 1.0f, 0.0f)), Point3(-1.0f, 0.0f, 0.0f));
    checkNear(ccw.PointTransform(Point3(2.0f, 3.0f, 5.0f)), Point3(-3.0f, 2.0f, 5.0f));

    Matrix3 cw;
    cw.RotateZ(-1.5707964f);
    checkNear(cw.PointTransform(Point3(1.0f, 0.0f, 0.0f)), Point3(0.0f, -1.0f, 0.0f));
    checkNear(cw.PointTransform(Point3(2.0f, 3.0f, 5.0f)), Point3(3.0f, -2.0f, 5.0f));

    // A turn and its opposite cancel.
    Matrix3 both;
    both.RotateZ(1.5707964f);
    both.RotateZ(-1.5707964f);
    checkNear(both.PointTransform(Point3(2.0f, 3.0f, 5.0f)), Point3(2.0f, 3.0f, 5.0f));
}

TEST_CASE("Matrix3 transforms points with translation and vectors without") {
    Matrix3 m;
    m.SetTrans(Point3(10.0f, 20.0f, 30.0f));
    CHECK(m.PointTransform(Point3(1.0f, 2.0f, 3.0f)) == Point3(11.0f, 22.0f, 33.0f));
    CHECK(Point3(1.0f, 2.0f, 3.0f) * m == Point3(11.0f, 22.0f, 33.0f));
    CHECK(m.VectorTransform(Point3(1.0f, 2.0f, 3.0f)) == Point3(1.0f, 2.0f, 3.0f));

    // RotateZ post-multiplies: the translation is applied first, then the turn.
    m.RotateZ(1.5707964f);
    // (values near 20 are one float step apart every 2e-6)
    checkNear(m.PointTransform(Point3(0.0f, 0.0f, 0.0f)), Point3(-20.0f, 10.0f, 30.0f), 1e-5f);
}

TEST_CASE("Matrix3 product applies the left matrix first") {
    Matrix3 shift;
    shift.SetTrans(Point3(1.0f, 0.0f, 0.0f));
    Matrix3 turn;
    turn.RotateZ(1.5707964f);
    // (p * shift) * turn: (0,0,0) -> (1,0,0) -> (0,1,0)
    checkNear((shift * turn).PointTransform(Point3()), Point3(0.0f, 1.0f, 0.0f));
    // (p * turn) * shift: (0,0,0) -> (0,0,0) -> (1,0,0)
    checkNear((turn * shift).PointTransform(Point3()), Point3(1.0f, 0.0f, 0.0f));
}
