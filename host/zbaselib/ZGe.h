// SPDX-License-Identifier: MIT
// Geometry values: vectors, 4x4 matrices, boxes, and the split of a matrix into translation, rotation and scaling.
// Matrices are 4x4 doubles for row vectors: a point p maps to p * M, the translation stands in the fourth row, and
// "A * B" applies A first. Rotations are Euler angles in degrees about X, then Y, then Z.
#pragma once

#include <array>
#include <cstddef>

struct ZgeVector3
{
    double x = 0, y = 0, z = 0;
    friend bool operator==(const ZgeVector3&, const ZgeVector3&) = default;
};

ZgeVector3 operator+(const ZgeVector3& a, const ZgeVector3& b);
ZgeVector3 operator-(const ZgeVector3& a, const ZgeVector3& b);
ZgeVector3 operator*(const ZgeVector3& a, double s);
double ZgeDot(const ZgeVector3& a, const ZgeVector3& b);
ZgeVector3 ZgeCross(const ZgeVector3& a, const ZgeVector3& b);
double ZgeLength(const ZgeVector3& a);
/// The vector at length one; a zero vector stays zero.
ZgeVector3 ZgeNormalised(const ZgeVector3& a);

struct ZgeVector4
{
    double x = 0, y = 0, z = 0, w = 0;
    friend bool operator==(const ZgeVector4&, const ZgeVector4&) = default;
};

/// 4x4 matrix for row vectors, m[row][column]; default the identity.
struct ZgeMatrix
{
    std::array<std::array<double, 4>, 4> m{{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}}};

    double* Data() { return m[0].data(); }
    const double* Data() const { return m[0].data(); }
    double& operator()(int row, int column) { return m[static_cast<size_t>(row)][static_cast<size_t>(column)]; }
    double operator()(int row, int column) const { return m[static_cast<size_t>(row)][static_cast<size_t>(column)]; }
    friend bool operator==(const ZgeMatrix&, const ZgeMatrix&) = default;
};

/// a applied first, then b (row-vector product).
ZgeMatrix operator*(const ZgeMatrix& a, const ZgeMatrix& b);
ZgeVector4 operator*(const ZgeVector4& v, const ZgeMatrix& m);
/// A point (w = 1) through an affine matrix.
ZgeVector3 ZgeTransformPoint(const ZgeVector3& p, const ZgeMatrix& m);
/// A direction (w = 0) through the 3x3 part.
ZgeVector3 ZgeTransformDirection(const ZgeVector3& d, const ZgeMatrix& m);
double ZgeDeterminant3(const ZgeMatrix& m);
/// The inverse, or the identity with `*singular` set when there is none.
ZgeMatrix ZgeInverse(const ZgeMatrix& m, bool* singular = nullptr);

ZgeMatrix ZgeTranslation(const ZgeVector3& t);
ZgeMatrix ZgeScaling(const ZgeVector3& s);
/// Rows: (cz*cy, sz*cy, -sy), (sy*sx*cz - sz*cx, sy*sx*sz + cz*cx, cy*sx), (sy*cx*cz + sz*sx, sy*cx*sz - cz*sx, cy*cx).
ZgeMatrix ZgeRotationFromEuler(const ZgeVector3& degrees);
/// Unit quaternion (x, y, z, w), normalised first; a zero quaternion is the identity.
ZgeMatrix ZgeRotationFromQuaternion(double x, double y, double z, double w);

/// Translation, rotation (degrees about X, Y, Z) and scaling: scaled first, then rotated, then translated.
struct ZgeTRS
{
    ZgeVector4 translation{0, 0, 0, 1};
    ZgeVector3 rotation{0, 0, 0};
    ZgeVector3 scaling{1, 1, 1};
    friend bool operator==(const ZgeTRS&, const ZgeTRS&) = default;
};

ZgeMatrix ZgeCompose(const ZgeTRS& trs);
/// The nearest translation, rotation and scaling of an affine matrix. Scaling is the lengths of the three rows, all
/// negated when the 3x3 determinant is negative; a shear is dropped. Exact for matrices without shear.
ZgeTRS ZgeDecompose(const ZgeMatrix& m);

/// The pure rotation of an affine matrix: each row of its 3x3 part divided by its signed length (ZgeDecompose's rule);
/// translation zero. A row of length zero becomes the matching unit row.
ZgeMatrix ZgeSetRM(const ZgeMatrix& m);

/// An axis-aligned box. The default is empty: minimum above maximum in each axis.
struct ZgeBox
{
    ZgeVector3 minimum{1.7976931348623157e308, 1.7976931348623157e308, 1.7976931348623157e308};
    ZgeVector3 maximum{-1.7976931348623157e308, -1.7976931348623157e308, -1.7976931348623157e308};

    bool IsEmpty() const;
    void Widen(const ZgeVector3& p);
    void Widen(const ZgeBox& box);
    ZgeVector3 Centre() const;
    double Diagonal() const;
};
