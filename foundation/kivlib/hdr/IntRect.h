#pragma once

#include "kivlib/hdr/IntVector2.h"

class KIVRectangle;

/// A rectangle of whole pixels; y runs upwards, so `top` is not below `bottom`.
class IntRect {
public:
    /// All zeros.
    IntRect() = default;
    IntRect(long top, long left, long bottom, long right)
        : top(top), left(left), bottom(bottom), right(right)
    {}
    IntRect(const IntVector2& bottom_left, long width, long height);

    long inq_top() const { return top; }
    long inq_left() const { return left; }
    long inq_bottom() const { return bottom; }
    long inq_right() const { return right; }
    long get_width() const { return right - left; }
    long get_height() const { return top - bottom; }

    IntVector2 get_top_left() const { return {left, top}; }
    IntVector2 get_top_right() const { return {right, top}; }
    IntVector2 get_bottom_left() const { return {left, bottom}; }

    /// Moves the sides outwards: those at left and right by `border.x()`, the others by its y.
    void add_border(const IntVector2& border);

    /// What both cover. Rectangles that do not overlap leave one without width or height.
    void set_intersection(const IntRect& other);

    /// The smallest around `rectangle`. Sides beyond what a pixmap can have are cut to it.
    static IntRect roundout(const KIVRectangle& rectangle);

    bool operator==(const IntRect&) const = default;

private:
    long top = 0;
    long left = 0;
    long bottom = 0;
    long right = 0;
};
