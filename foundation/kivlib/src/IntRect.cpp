#include "kivlib/hdr/BoundingBox.h"
#include "kivlib/hdr/IntBBox.h"

namespace {
constexpr double FARTHEST = 1e9; // pixels; keeps sums and products of sides in range

/// What is no number, such as the place of something of an infinite size, counts as 0.
double in_range(double value)
{
    return std::isnan(value) ? 0.0 : std::clamp(value, -FARTHEST, FARTHEST);
}

long round_down(double value)
{
    return static_cast<long>(std::floor(in_range(value)));
}

long round_up(double value)
{
    return static_cast<long>(std::ceil(in_range(value)));
}
} // namespace

IntRect::IntRect(const IntVector2& bottom_left, long width, long height)
    : IntRect(bottom_left.y() + height, bottom_left.x(), bottom_left.y(), bottom_left.x() + width)
{}

void IntRect::add_border(const IntVector2& border)
{
    left -= border.x();
    right += border.x();
    bottom -= border.y();
    top += border.y();
}

void IntRect::set_intersection(const IntRect& other)
{
    left = std::max(left, other.left);
    bottom = std::max(bottom, other.bottom);
    right = std::max(left, std::min(right, other.right));
    top = std::max(bottom, std::min(top, other.top));
}

IntVector2 IntVector2::roundup(const Vector2& v)
{
    return {round_up(v.x()), round_up(v.y())};
}

IntRect IntRect::roundout(const KIVRectangle& r)
{
    return {round_up(r.inq_top()), round_down(r.inq_left()), round_down(r.inq_bottom()),
            round_up(r.inq_right())};
}

void IntBBox::add_border(const IntVector2& border)
{
    if (!is_empty)
        rectangle.add_border(border);
}

void IntBBox::set_intersection(const IntBBox& other)
{
    is_empty = is_empty || other.is_empty;
    if (is_empty)
        return;
    rectangle.set_intersection(other.rectangle);
    is_empty = rectangle.get_width() <= 0 || rectangle.get_height() <= 0;
}

void IntBBox::set_union(const IntBBox& other)
{
    *this = bb_union(*this, other);
}

bool IntBBox::operator==(const IntBBox& other) const
{
    return is_empty == other.is_empty && (is_empty || rectangle == other.rectangle);
}

IntBBox bb_union(const IntBBox& a, const IntBBox& b)
{
    if (a.inq_is_empty())
        return b;
    if (b.inq_is_empty())
        return a;
    const IntRect& r = a.inq_rectangle();
    const IntRect& s = b.inq_rectangle();
    return IntBBox(IntRect(std::max(r.inq_top(), s.inq_top()), std::min(r.inq_left(), s.inq_left()),
                           std::min(r.inq_bottom(), s.inq_bottom()),
                           std::max(r.inq_right(), s.inq_right())));
}

BoundingBox::BoundingBox(const IntRect& r)
    : is_empty(false),
      rectangle(static_cast<double>(r.inq_left()), static_cast<double>(r.inq_bottom()),
                static_cast<double>(r.inq_right()), static_cast<double>(r.inq_top()))
{}

void BoundingBox::set_union(const KIVRectangle& other)
{
    set_union(other.get_bottom_left());
    set_union(other.get_top_right());
}

void BoundingBox::set_union(const Vector2& point)
{
    const Vector2 corners[] = {point, rectangle.get_bottom_left(), rectangle.get_top_right()};
    rectangle = KIVRectangle(is_empty ? 1 : 3, corners);
    is_empty = false;
}
