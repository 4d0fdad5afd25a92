#pragma once

#include "imagelib/src/composite.h"

#include <algorithm>
#include <cmath>

class KIVPixmap;

constexpr double FARTHEST = 1e9; // pixels from the target

struct Interval {
    int begin;
    int end;

    void cut(const Interval& other)
    {
        begin = std::max(begin, other.begin);
        end = std::max(begin, std::min(end, other.end));
    }
    int size() const { return end - begin; }
};

int to_int(double value);

/// The whole numbers x with from <= start + x * step <= to.
Interval find_inside(double start, double step, double from, double to);

/// The way from the target's pixels back to the source's, and how its edges lie in the target.
struct Mapping {
    double u_0; // at the target's pixel (0, 0)
    double v_0;
    double u_x; // to the next pixel of a row
    double v_x;
    double u_y; // to the next row
    double v_y;
    double width; // of the source
    double height;
    double u_length; // source pixels across its columns to one pixel of the target
    double v_length;

    double u_at(double x, double y) const { return u_0 + u_x * x + u_y * y; }
    double v_at(double x, double y) const { return v_0 + v_x * x + v_y * y; }
};

/// The two sides of a source, as they come to lie, for one of its pixels.
struct Sides {
    Place across;
    Place down;

    double area() const { return across.x * down.y - across.y * down.x; }
    double x_scale() const { return std::hypot(across.x, across.y); }
    double y_scale() const { return std::hypot(down.x, down.y); }
};

/// What the corners make of one pixel of the source.
Sides make_sides(const KIVPixmap& source, Place top_left, Place top_right, Place bottom_left);

Mapping make_mapping(const KIVPixmap& source, const Sides& sides, Place top_left);
