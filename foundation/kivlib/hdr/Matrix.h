#pragma once

#include "kivlib/hdr/KIVRectangle.h"
#include "kivlib/hdr/Vector.h"

#include <array>

// Matrices act on column vectors: `A * B` applies `B` first. Elements stand row after row. Every
// `set_` replaces the whole matrix.

template <int N> class BaseMatrix {
public:
    double operator()(int row, int column) const { return elements[index(row, column)]; }
    double& operator()(int row, int column) { return elements[index(row, column)]; }

    bool operator==(const BaseMatrix&) const = default;

protected:
    BaseMatrix() { set_diagonal(1.0); }

    void set_diagonal(double value)
    {
        elements.fill(0.0);
        for (int i = 0; i < N; ++i)
            (*this)(i, i) = value;
    }

    static void multiply(const BaseMatrix& a, const BaseMatrix& b, BaseMatrix& product)
    {
        for (int row = 0; row < N; ++row)
            for (int column = 0; column < N; ++column) {
                double sum = 0.0;
                for (int k = 0; k < N; ++k)
                    sum += a(row, k) * b(k, column);
                product(row, column) = sum;
            }
    }

private:
    static constexpr std::size_t index(int row, int column)
    {
        return static_cast<std::size_t>(row * N + column);
    }

    std::array<double, static_cast<std::size_t>(N* N)> elements;
};

class Matrix22 : public BaseMatrix<2> {
public:
    void set_scale(const Vector2& scale);
};

/// A map of the plane, in homogeneous coordinates.
class Matrix33 : public BaseMatrix<3> {
public:
    Matrix33() = default;

    /// `linear` first, then a move by `translation`.
    Matrix33(const Matrix22& linear, const Vector2& translation);

    /// Counter-clockwise by `angle` radians about `centre`.
    void set_rotation(double angle, const Vector2& centre);
    void set_scale(const Vector2& scale);
    void set_scale(const Vector3& scale);
    void set_translation(const Vector2& translation);

    friend Matrix33 operator*(const Matrix33& a, const Matrix33& b);
};

Vector2 operator*(const Matrix33& m, const Vector2& point);

/// The map that takes `origin` to (0, 0), `x_end` to (1, 0) and `y_end` to (0, 1). Points on one
/// line have no such map: the result then takes everything to (0, 0).
Matrix33 points_to_unit_square(const Vector2& origin, const Vector2& x_end, const Vector2& y_end);

/// The map back.
Matrix33 unit_square_to_points(const Vector2& origin, const Vector2& x_end, const Vector2& y_end);

/// A map of space, in homogeneous coordinates.
class Matrix44 : public BaseMatrix<4> {
public:
    Matrix44() = default;

    /// The map of the plane, which leaves z as it is.
    explicit Matrix44(const Matrix33& plane);

    void set_identity() { set_diagonal(1.0); }
    void set_scale(const Vector3& scale);
    void set_translation(const Vector3& translation);

    /// False, and no change, if the matrix is singular.
    bool invert();

    friend Matrix44 operator*(const Matrix44& a, const Matrix44& b);
};

/// The point (x, y, 0) mapped.
Vector2 operator*(const Matrix44& m, const Vector2& point);

/// The smallest rectangle around the mapped corners.
KIVRectangle operator*(const Matrix44& m, const KIVRectangle& rectangle);
