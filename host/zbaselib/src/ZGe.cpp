// SPDX-License-Identifier: MIT
// Vectors, matrices for row vectors, and the split of a matrix into translation, rotation and scaling.
#include "zbaselib/ZGe.h"

#include <algorithm>
#include <cmath>

namespace {
constexpr double kRadiansPerDegree = 0.017453292519943295;
constexpr double kDegreesPerRadian = 57.29577951308232;
// Below this cosine of the Y angle, X and Z turn about the same axis and only their sum can be told.
constexpr double kGimbalLock = 1.6e-9;
constexpr double kNearGimbalLock = 0.05; ///< c below it: x and z hang together
// A pivot that has lost this much of its row is what rounding left of a zero.
constexpr double kPivotLoss = 1e-14;

ZgeVector3 Row(const ZgeMatrix& m, int row) { return {m(row, 0), m(row, 1), m(row, 2)}; }

void SetRow(ZgeMatrix& m, int row, const ZgeVector3& v)
{
    m(row, 0) = v.x;
    m(row, 1) = v.y;
    m(row, 2) = v.z;
}

/// Row lengths, all negated when the 3x3 part mirrors.
ZgeVector3 SignedRowLengths(const ZgeMatrix& m)
{
    const double sign = ZgeDeterminant3(m) < 0 ? -1.0 : 1.0;
    return {sign * ZgeLength(Row(m, 0)), sign * ZgeLength(Row(m, 1)), sign * ZgeLength(Row(m, 2))};
}

ZgeMatrix PureRotation(const ZgeMatrix& m, const ZgeVector3& scaling)
{
    const double lengths[3] = {scaling.x, scaling.y, scaling.z};
    ZgeMatrix rotation;
    for (int row = 0; row < 3; ++row)
        if (lengths[row] != 0)
            SetRow(rotation, row, {m(row, 0) / lengths[row], m(row, 1) / lengths[row], m(row, 2) / lengths[row]});
    return rotation;
}

template <size_t N> using Square = std::array<std::array<double, N>, N>;

/// Gauss-Jordan elimination with pivots chosen relative to the size of their rows, so that very uneven scaling does not
/// pass for singular. False when there is no inverse.
template <size_t N> bool Invert(Square<N> a, Square<N>& inverse)
{
    std::array<double, N> size;
    for (size_t row = 0; row < N; ++row) {
        size[row] = 0;
        for (size_t column = 0; column < N; ++column) {
            size[row] = std::max(size[row], std::abs(a[row][column]));
            inverse[row][column] = row == column ? 1.0 : 0.0;
        }
        if (!(size[row] > 0) || !std::isfinite(size[row]))
            return false;
    }
    for (size_t column = 0; column < N; ++column) {
        size_t pivot = column;
        for (size_t row = column + 1; row < N; ++row)
            if (std::abs(a[row][column]) / size[row] > std::abs(a[pivot][column]) / size[pivot])
                pivot = row;
        if (!(std::abs(a[pivot][column]) > kPivotLoss * size[pivot]))
            return false;
        std::swap(a[pivot], a[column]);
        std::swap(inverse[pivot], inverse[column]);
        std::swap(size[pivot], size[column]);
        const double divisor = a[column][column];
        for (size_t k = 0; k < N; ++k) {
            a[column][k] /= divisor;
            inverse[column][k] /= divisor;
        }
        for (size_t row = 0; row < N; ++row) {
            const double factor = a[row][column];
            if (row == column || factor == 0)
                continue;
            for (size_t k = 0; k < N; ++k) {
                a[row][k] -= factor * a[column][k];
                inverse[row][k] -= factor * inverse[column][k];
            }
        }
    }
    for (const auto& row : inverse)
        for (const double number : row)
            if (!std::isfinite(number))
                return false;
    return true;
}

bool IsAffine(const ZgeMatrix& m) { return m(0, 3) == 0 && m(1, 3) == 0 && m(2, 3) == 0 && m(3, 3) == 1; }

/// Rotation and translation apart: a far translation then costs the rotation no digits.
bool InvertAffine(const ZgeMatrix& m, ZgeMatrix& inverse)
{
    Square<3> linear{}, linearInverse{};
    for (size_t row = 0; row < 3; ++row)
        for (size_t column = 0; column < 3; ++column)
            linear[row][column] = m.m[row][column];
    if (!Invert<3>(linear, linearInverse))
        return false;
    inverse = ZgeMatrix();
    for (size_t row = 0; row < 3; ++row)
        for (size_t column = 0; column < 3; ++column)
            inverse.m[row][column] = linearInverse[row][column];
    const ZgeVector3 back = ZgeTransformDirection({m(3, 0), m(3, 1), m(3, 2)}, inverse);
    SetRow(inverse, 3, back * -1.0);
    return true;
}
} // namespace

ZgeVector3 operator+(const ZgeVector3& a, const ZgeVector3& b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
ZgeVector3 operator-(const ZgeVector3& a, const ZgeVector3& b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
ZgeVector3 operator*(const ZgeVector3& a, double s) { return {a.x * s, a.y * s, a.z * s}; }
double ZgeDot(const ZgeVector3& a, const ZgeVector3& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }

ZgeVector3 ZgeCross(const ZgeVector3& a, const ZgeVector3& b)
{
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

double ZgeLength(const ZgeVector3& a) { return std::hypot(a.x, a.y, a.z); }

ZgeVector3 ZgeNormalised(const ZgeVector3& a)
{
    const double length = ZgeLength(a);
    return length > 0 ? ZgeVector3{a.x / length, a.y / length, a.z / length} : a;
}

ZgeMatrix operator*(const ZgeMatrix& a, const ZgeMatrix& b)
{
    ZgeMatrix product;
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 4; ++column)
            product(row, column) = a(row, 0) * b(0, column) + a(row, 1) * b(1, column) + a(row, 2) * b(2, column) +
                                   a(row, 3) * b(3, column);
    return product;
}

ZgeVector4 operator*(const ZgeVector4& v, const ZgeMatrix& m)
{
    const auto column = [&v, &m](int c) { return v.x * m(0, c) + v.y * m(1, c) + v.z * m(2, c) + v.w * m(3, c); };
    return {column(0), column(1), column(2), column(3)};
}

ZgeVector3 ZgeTransformPoint(const ZgeVector3& p, const ZgeMatrix& m)
{
    return ZgeTransformDirection(p, m) + Row(m, 3);
}

ZgeVector3 ZgeTransformDirection(const ZgeVector3& d, const ZgeMatrix& m)
{
    const auto column = [&d, &m](int c) { return d.x * m(0, c) + d.y * m(1, c) + d.z * m(2, c); };
    return {column(0), column(1), column(2)};
}

double ZgeDeterminant3(const ZgeMatrix& m)
{
    return (m(1, 2) * m(0, 1) - m(1, 1) * m(0, 2)) * m(2, 0) + (m(1, 0) * m(0, 2) - m(1, 2) * m(0, 0)) * m(2, 1) +
           (m(1, 1) * m(0, 0) - m(1, 0) * m(0, 1)) * m(2, 2);
}

ZgeMatrix ZgeInverse(const ZgeMatrix& m, bool* singular)
{
    ZgeMatrix inverse;
    const bool found = IsAffine(m) ? InvertAffine(m, inverse) : Invert<4>(m.m, inverse.m);
    if (singular != nullptr)
        *singular = !found;
    return found ? inverse : ZgeMatrix();
}

ZgeMatrix ZgeTranslation(const ZgeVector3& t)
{
    ZgeMatrix m;
    SetRow(m, 3, t);
    return m;
}

ZgeMatrix ZgeScaling(const ZgeVector3& s)
{
    ZgeMatrix m;
    m(0, 0) = s.x;
    m(1, 1) = s.y;
    m(2, 2) = s.z;
    return m;
}

ZgeMatrix ZgeRotationFromEuler(const ZgeVector3& degrees)
{
    const double cx = std::cos(degrees.x * kRadiansPerDegree), sx = std::sin(degrees.x * kRadiansPerDegree);
    const double cy = std::cos(degrees.y * kRadiansPerDegree), sy = std::sin(degrees.y * kRadiansPerDegree);
    const double cz = std::cos(degrees.z * kRadiansPerDegree), sz = std::sin(degrees.z * kRadiansPerDegree);
    ZgeMatrix m;
    SetRow(m, 0, {cz * cy, sz * cy, -sy});
    SetRow(m, 1, {sy * sx * cz - sz * cx, sy * sx * sz + cz * cx, cy * sx});
    SetRow(m, 2, {sy * cx * cz + sz * sx, sy * cx * sz - cz * sx, cy * cx});
    return m;
}

ZgeMatrix ZgeRotationFromQuaternion(double x, double y, double z, double w)
{
    const double length = std::hypot(std::hypot(x, y), std::hypot(z, w));
    if (!(length > 0))
        return {};
    x /= length;
    y /= length;
    z /= length;
    w /= length;
    ZgeMatrix m;
    SetRow(m, 0, {1 - 2 * (y * y + z * z), 2 * (x * y + w * z), 2 * (x * z - w * y)});
    SetRow(m, 1, {2 * (x * y - w * z), 1 - 2 * (x * x + z * z), 2 * (y * z + w * x)});
    SetRow(m, 2, {2 * (x * z + w * y), 2 * (y * z - w * x), 1 - 2 * (x * x + y * y)});
    return m;
}

ZgeMatrix ZgeCompose(const ZgeTRS& trs)
{
    ZgeMatrix m = ZgeRotationFromEuler(trs.rotation);
    SetRow(m, 0, Row(m, 0) * trs.scaling.x);
    SetRow(m, 1, Row(m, 1) * trs.scaling.y);
    SetRow(m, 2, Row(m, 2) * trs.scaling.z);
    SetRow(m, 3, {trs.translation.x, trs.translation.y, trs.translation.z});
    return m;
}

namespace {
/// Are the rows, which have length one, at right angles within what a matrix of single precision keeps?
bool IsRotationInSinglePrecision(const ZgeMatrix& r)
{
    constexpr double kSquare = 1e-5;
    return std::abs(ZgeDot(Row(r, 0), Row(r, 1))) < kSquare && std::abs(ZgeDot(Row(r, 1), Row(r, 2))) < kSquare &&
           std::abs(ZgeDot(Row(r, 2), Row(r, 0))) < kSquare;
}
} // namespace

ZgeTRS ZgeDecompose(const ZgeMatrix& m)
{
    ZgeTRS trs;
    trs.translation = {m(3, 0), m(3, 1), m(3, 2), 1};
    trs.scaling = SignedRowLengths(m);
    const ZgeMatrix r = PureRotation(m, trs.scaling);
    const double c = std::sqrt(r(0, 0) * r(0, 0) + r(0, 1) * r(0, 1));
    ZgeVector3 radians;
    radians.y = std::atan2(-r(0, 2), c);
    if (c > kGimbalLock) {
        radians.x = std::atan2(r(1, 2), r(2, 2));
        radians.z = std::atan2(r(0, 1), r(0, 0));
        // The two come from different rows. Near the lock, rows that are at right angles only as far as a file's single
        // precision goes would tell them apart: x is then taken from what is left when z is turned back.
        if (c < kNearGimbalLock && IsRotationInSinglePrecision(r)) {
            const double cz = std::cos(radians.z), sz = std::sin(radians.z);
            radians.x = std::atan2(sz * r(2, 0) - cz * r(2, 1), cz * r(1, 1) - sz * r(1, 0));
        }
    } else {
        radians.x = std::atan2(-r(2, 1), r(1, 1));
    }
    trs.rotation = radians * kDegreesPerRadian;
    return trs;
}

ZgeMatrix ZgeSetRM(const ZgeMatrix& m) { return PureRotation(m, SignedRowLengths(m)); }

bool ZgeBox::IsEmpty() const { return minimum.x > maximum.x || minimum.y > maximum.y || minimum.z > maximum.z; }

void ZgeBox::Widen(const ZgeVector3& p)
{
    minimum = {std::min(minimum.x, p.x), std::min(minimum.y, p.y), std::min(minimum.z, p.z)};
    maximum = {std::max(maximum.x, p.x), std::max(maximum.y, p.y), std::max(maximum.z, p.z)};
}

void ZgeBox::Widen(const ZgeBox& box)
{
    if (box.IsEmpty())
        return;
    Widen(box.minimum);
    Widen(box.maximum);
}

ZgeVector3 ZgeBox::Centre() const { return IsEmpty() ? ZgeVector3() : minimum * 0.5 + maximum * 0.5; }
double ZgeBox::Diagonal() const { return IsEmpty() ? 0 : ZgeLength(maximum - minimum); }
