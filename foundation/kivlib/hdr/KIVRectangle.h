#pragma once

#include "kivlib/hdr/Vector.h"

/// A rectangle with its sides along the axes; y runs upwards.
class KIVRectangle {
public:
    /// All zeros.
    KIVRectangle() = default;
    KIVRectangle(const Vector2& bottom_left, const Vector2& top_right);
    KIVRectangle(const Vector2& centre, double width, double height);
    KIVRectangle(double left, double bottom, double right, double top);

    /// The smallest around `count` points; all zeros without points.
    KIVRectangle(int count, const Vector2* points);

    double inq_left() const { return left; }
    double inq_bottom() const { return bottom; }
    double inq_right() const { return right; }
    double inq_top() const { return top; }
    double inq_width() const { return right - left; }
    double inq_height() const { return top - bottom; }

    Vector2 get_bottom_left() const { return {left, bottom}; }
    Vector2 get_bottom_right() const { return {right, bottom}; }
    Vector2 get_top_left() const { return {left, top}; }
    Vector2 get_top_right() const { return {right, top}; }
    Vector2 get_centre() const { return {(left + right) / 2, (bottom + top) / 2}; }

    /// Moves every side outwards by `border`.
    void add_border(double border);
    void move_by(const Vector2& move);

    /// The sides belong to the rectangle.
    bool is_inside(const Vector2& point) const;

    bool operator==(const KIVRectangle&) const = default;

private:
    double left = 0.0;
    double bottom = 0.0;
    double right = 0.0;
    double top = 0.0;
};
