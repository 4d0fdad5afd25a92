#pragma once

#include "kivlib/hdr/KIVRectangle.h"

class IntRect;

/// A rectangle, or nothing.
class BoundingBox {
public:
    /// Nothing.
    BoundingBox() = default;
    explicit BoundingBox(const IntRect& rectangle);
    explicit BoundingBox(const KIVRectangle& rectangle) : is_empty(false), rectangle(rectangle) {}

    bool inq_is_empty() const { return is_empty; }
    const KIVRectangle& inq_rectangle() const { return rectangle; }

    void set_union(const KIVRectangle& other);
    void set_union(const Vector2& point);

private:
    bool is_empty = true;
    KIVRectangle rectangle;
};
