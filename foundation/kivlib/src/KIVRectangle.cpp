#include "kivlib/hdr/KIVRectangle.h"

KIVRectangle::KIVRectangle(const Vector2& bottom_left, const Vector2& top_right)
    : KIVRectangle(bottom_left.x(), bottom_left.y(), top_right.x(), top_right.y())
{}

KIVRectangle::KIVRectangle(const Vector2& centre, double width, double height)
    : KIVRectangle(centre.x() - width / 2, centre.y() - height / 2, centre.x() + width / 2,
                   centre.y() + height / 2)
{}

KIVRectangle::KIVRectangle(double left, double bottom, double right, double top)
    : left(left), bottom(bottom), right(right), top(top)
{}

KIVRectangle::KIVRectangle(int count, const Vector2* points)
{
    if (count <= 0)
        return;
    *this = KIVRectangle(points[0], points[0]);
    for (int i = 1; i < count; ++i) {
        left = std::min(left, points[i].x());
        right = std::max(right, points[i].x());
        bottom = std::min(bottom, points[i].y());
        top = std::max(top, points[i].y());
    }
}

void KIVRectangle::add_border(double border)
{
    left -= border;
    bottom -= border;
    right += border;
    top += border;
}

void KIVRectangle::move_by(const Vector2& move)
{
    left += move.x();
    right += move.x();
    bottom += move.y();
    top += move.y();
}

bool KIVRectangle::is_inside(const Vector2& point) const
{
    return left <= point.x() && point.x() <= right && bottom <= point.y() && point.y() <= top;
}
