#include "kivlib/hdr/Matrix.h"

void Matrix22::set_scale(const Vector2& scale)
{
    set_diagonal(0.0);
    (*this)(0, 0) = scale.x();
    (*this)(1, 1) = scale.y();
}

Matrix33::Matrix33(const Matrix22& linear, const Vector2& translation)
{
    for (int row = 0; row < 2; ++row) {
        for (int column = 0; column < 2; ++column)
            (*this)(row, column) = linear(row, column);
        (*this)(row, 2) = translation.elem(row);
    }
}

void Matrix33::set_rotation(double angle, const Vector2& centre)
{
    const double c = std::cos(angle);
    const double s = std::sin(angle);
    set_diagonal(1.0);
    (*this)(0, 0) = c;
    (*this)(0, 1) = -s;
    (*this)(1, 0) = s;
    (*this)(1, 1) = c;
    const Vector2 moved = centre - centre.rotate(angle);
    (*this)(0, 2) = moved.x();
    (*this)(1, 2) = moved.y();
}

void Matrix33::set_scale(const Vector2& scale)
{
    set_scale(Vector3(scale.x(), scale.y(), 1.0));
}

void Matrix33::set_scale(const Vector3& scale)
{
    set_diagonal(0.0);
    for (int i = 0; i < 3; ++i)
        (*this)(i, i) = scale.elem(i);
}

void Matrix33::set_translation(const Vector2& translation)
{
    set_diagonal(1.0);
    (*this)(0, 2) = translation.x();
    (*this)(1, 2) = translation.y();
}

Matrix33 operator*(const Matrix33& a, const Matrix33& b)
{
    Matrix33 product;
    BaseMatrix<3>::multiply(a, b, product);
    return product;
}

Vector2 operator*(const Matrix33& m, const Vector2& p)
{
    const double w = m(2, 0) * p.x() + m(2, 1) * p.y() + m(2, 2);
    const double scale = w == 1.0 || w == 0.0 ? 1.0 : 1.0 / w;
    return {(m(0, 0) * p.x() + m(0, 1) * p.y() + m(0, 2)) * scale,
            (m(1, 0) * p.x() + m(1, 1) * p.y() + m(1, 2)) * scale};
}

Matrix33 unit_square_to_points(const Vector2& origin, const Vector2& x_end, const Vector2& y_end)
{
    Matrix33 m;
    for (int row = 0; row < 2; ++row) {
        m(row, 0) = x_end.elem(row) - origin.elem(row);
        m(row, 1) = y_end.elem(row) - origin.elem(row);
        m(row, 2) = origin.elem(row);
    }
    return m;
}

Matrix33 points_to_unit_square(const Vector2& origin, const Vector2& x_end, const Vector2& y_end)
{
    const Vector2 x = x_end - origin;
    const Vector2 y = y_end - origin;
    const double area = x.x() * y.y() - x.y() * y.x();
    const double scale = area == 0.0 ? 0.0 : 1.0 / area;
    Matrix33 m;
    m(0, 0) = y.y() * scale;
    m(0, 1) = -y.x() * scale;
    m(1, 0) = -x.y() * scale;
    m(1, 1) = x.x() * scale;
    for (int row = 0; row < 2; ++row)
        m(row, 2) = -(m(row, 0) * origin.x() + m(row, 1) * origin.y());
    return m;
}

Matrix44::Matrix44(const Matrix33& plane)
{
    constexpr int PLACE[3] = {0, 1, 3};
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 3; ++column)
            (*this)(PLACE[row], PLACE[column]) = plane(row, column);
}

void Matrix44::set_scale(const Vector3& scale)
{
    set_diagonal(1.0);
    for (int i = 0; i < 3; ++i)
        (*this)(i, i) = scale.elem(i);
}

void Matrix44::set_translation(const Vector3& translation)
{
    set_diagonal(1.0);
    for (int i = 0; i < 3; ++i)
        (*this)(i, 3) = translation.elem(i);
}

namespace {
/// The row from `column` downwards with the largest element there.
int find_pivot(const Matrix44& m, int column)
{
    int best = column;
    for (int row = column + 1; row < 4; ++row)
        if (std::abs(m(row, column)) > std::abs(m(best, column)))
            best = row;
    return best;
}

void swap_rows(Matrix44& m, int a, int b)
{
    for (int column = 0; column < 4; ++column)
        std::swap(m(a, column), m(b, column));
}

void scale_row(Matrix44& m, int row, double factor)
{
    for (int column = 0; column < 4; ++column)
        m(row, column) *= factor;
}

void subtract_row(Matrix44& m, int from, int row, double factor)
{
    for (int column = 0; column < 4; ++column)
        m(from, column) -= factor * m(row, column);
}
} // namespace

// Gauss and Jordan, with partial pivoting.
bool Matrix44::invert()
{
    Matrix44 left = *this;
    Matrix44 inverse;
    for (int column = 0; column < 4; ++column) {
        const int pivot = find_pivot(left, column);
        if (left(pivot, column) == 0.0 || !std::isfinite(1.0 / left(pivot, column)))
            return false;
        swap_rows(left, column, pivot);
        swap_rows(inverse, column, pivot);
        const double factor = 1.0 / left(column, column);
        scale_row(left, column, factor);
        scale_row(inverse, column, factor);
        for (int row = 0; row < 4; ++row) {
            if (row == column)
                continue;
            const double multiple = left(row, column);
            subtract_row(left, row, column, multiple);
            subtract_row(inverse, row, column, multiple);
        }
    }
    *this = inverse;
    return true;
}

Matrix44 operator*(const Matrix44& a, const Matrix44& b)
{
    Matrix44 product;
    BaseMatrix<4>::multiply(a, b, product);
    return product;
}

Vector2 operator*(const Matrix44& m, const Vector2& p)
{
    const double w = m(3, 0) * p.x() + m(3, 1) * p.y() + m(3, 3);
    const double scale = w == 1.0 || w == 0.0 ? 1.0 : 1.0 / w;
    return {(m(0, 0) * p.x() + m(0, 1) * p.y() + m(0, 3)) * scale,
            (m(1, 0) * p.x() + m(1, 1) * p.y() + m(1, 3)) * scale};
}

KIVRectangle operator*(const Matrix44& m, const KIVRectangle& r)
{
    const Vector2 corners[] = {m * r.get_bottom_left(), m * r.get_bottom_right(),
                               m * r.get_top_right(), m * r.get_top_left()};
    return {4, corners};
}
