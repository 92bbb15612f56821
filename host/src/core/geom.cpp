#include "host/geom.h"

#include <cmath>

void Matrix3::IdentityMatrix() {
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 3; ++c)
            m_[r][c] = (r == c) ? 1.0f : 0.0f;
}

void Matrix3::RotateZ(float angle) {
    const float c = std::cos(angle);
    const float s = std::sin(angle);
    Matrix3 rot;
    rot.m_[0][0] = c;
    rot.m_[0][1] = s;
    rot.m_[1][0] = -s;
    rot.m_[1][1] = c;
    *this = *this * rot;
}

Point3 Matrix3::PointTransform(const Point3& p) const {
    return Point3(p.x * m_[0][0] + p.y * m_[1][0] + p.z * m_[2][0] + m_[3][0],
                  p.x * m_[0][1] + p.y * m_[1][1] + p.z * m_[2][1] + m_[3][1],
                  p.x * m_[0][2] + p.y * m_[1][2] + p.z * m_[2][2] + m_[3][2]);
}

Point3 Matrix3::VectorTransform(const Point3& p) const {
    return Point3(p.x * m_[0][0] + p.y * m_[1][0] + p.z * m_[2][0],
                  p.x * m_[0][1] + p.y * m_[1][1] + p.z * m_[2][1],
                  p.x * m_[0][2] + p.y * m_[1][2] + p.z * m_[2][2]);
}

Matrix3 Matrix3::operator*(const Matrix3& b) const {
    Matrix3 r;
    for (int i = 0; i < 4; ++i) {
        for (int j = 0; j < 3; ++j) {
            float v = m_[i][0] * b.m_[0][j] + m_[i][1] * b.m_[1][j] + m_[i][2] * b.m_[2][j];
            if (i == 3)
                v += b.m_[3][j];
            r.m_[i][j] = v;
        }
    }
    return r;
}
