#include "imagelib/src/Mapping.h"

#include "imagelib/hdr/KIVPixmap.h"

int to_int(double value)
{
    return static_cast<int>(std::clamp(value, -FARTHEST, FARTHEST));
}

Interval find_inside(double start, double step, double from, double to)
{
    if (from > to)
        return {0, 0};
    if (std::abs(step) < 1e-12)
        return start >= from && start <= to ? Interval{to_int(-FARTHEST), to_int(FARTHEST)}
                                            : Interval{0, 0};
    const double a = (from - start) / step;
    const double b = (to - start) / step;
    return {to_int(std::ceil(std::min(a, b))), to_int(std::floor(std::max(a, b))) + 1};
}

Sides make_sides(const KIVPixmap& source, Place top_left, Place top_right, Place bottom_left)
{
    const double width = source.inq_width();
    const double height = source.inq_height();
    return {{(top_right.x - top_left.x) / width, (top_right.y - top_left.y) / width},
            {(bottom_left.x - top_left.x) / height, (bottom_left.y - top_left.y) / height}};
}

Mapping make_mapping(const KIVPixmap& source, const Sides& sides, Place top_left)
{
    const double area = sides.area();
    Mapping m = {};
    m.u_x = sides.down.y / area;
    m.u_y = -sides.down.x / area;
    m.v_x = -sides.across.y / area;
    m.v_y = sides.across.x / area;
    const Place centre = {0.5 - top_left.x, 0.5 - top_left.y}; // of pixel (0, 0)
    m.u_0 = m.u_x * centre.x + m.u_y * centre.y;
    m.v_0 = m.v_x * centre.x + m.v_y * centre.y;
    m.width = source.inq_width();
    m.height = source.inq_height();
    m.u_length = std::hypot(m.u_x, m.u_y);
    m.v_length = std::hypot(m.v_x, m.v_y);
    return m;
}
