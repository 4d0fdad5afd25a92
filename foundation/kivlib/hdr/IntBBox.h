#pragma once

#include "kivlib/hdr/IntRect.h"

/// A rectangle of pixels, or nothing.
class IntBBox {
public:
    /// Nothing.
    IntBBox() = default;
    explicit IntBBox(const IntRect& rectangle) : is_empty(false), rectangle(rectangle) {}

    bool inq_is_empty() const { return is_empty; }
    const IntRect& inq_rectangle() const { return rectangle; }

    void add_border(const IntVector2& border);

    /// Empty when nothing is left.
    void set_intersection(const IntBBox& other);
    void set_union(const IntBBox& other);

    /// Two empty boxes are equal whatever their rectangles were.
    bool operator==(const IntBBox& other) const;

private:
    bool is_empty = true;
    IntRect rectangle;
};

/// The smallest box around both.
IntBBox bb_union(const IntBBox& a, const IntBBox& b);
