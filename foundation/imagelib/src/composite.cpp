#include "imagelib/src/composite.h"

#include "imagelib/hdr/KIVPixmap.h"
#include "imagelib/src/DrawList.h"
#include "imagelib/src/Painter.h"
#include "imagelib/src/PixmapDrawing.h"
#include "imagelib/src/UnscaledLayer.h"
#include "imagelib/src/reduce.h"

#include <new>

namespace {
constexpr double SMALLEST_AREA = 1e-9; // pixels; a thinner image can't be placed

/// Of a pixel, that an image must cover for it to count. Rounding stays below.
constexpr double SMALLEST_PART = 1e-6;

/// Images that come to be smaller than half are halved first. The share below leaves room for a
/// wanted size that was rounded to whole pixels.
constexpr double HALVE_BELOW = 0.49 - 1e-9;

/// How far from whole pixels an image may lie and still be drawn without resampling.
constexpr double WHOLE_PIXEL = 1.0 / 1024;

PixmapDrawing::Time inq_time(const KIVPixmap& source)
{
    return source.inq_is_fixed() ? PixmapDrawing::Time::LATER : PixmapDrawing::Time::NOW;
}

/// The least box of whole pixels around the four corners, inside the target. What a resampled edge
/// would spill beyond it is cut off, as it is in a pixmap of just that box.
void find_box(const KIVPixmap& target, const Sides& sides, const KIVPixmap& source, Place top_left,
              Interval& columns, Interval& lines)
{
    const Place across = {sides.across.x * source.inq_width(), sides.across.y * source.inq_width()};
    const Place down = {sides.down.x * source.inq_height(), sides.down.y * source.inq_height()};
    const auto box = [](double at, double one, double other, int size) {
        const double low = at + std::min(one, 0.0) + std::min(other, 0.0);
        const double high = at + std::max(one, 0.0) + std::max(other, 0.0);
        Interval interval = {to_int(std::floor(low + SMALLEST_PART)),
                             to_int(std::ceil(high - SMALLEST_PART))};
        interval.cut({0, size});
        return interval;
    };
    columns = box(top_left.x, across.x, down.x, target.inq_width());
    lines = box(top_left.y, across.y, down.y, target.inq_height());
}

bool is_unscaled(const KIVPixmap& source, const Sides& sides, Place top_left, bool filtered)
{
    const double width = source.inq_width();
    const double height = source.inq_height();
    const bool is_unit = std::abs(sides.across.x - 1.0) * width < WHOLE_PIXEL &&
                         std::abs(sides.across.y) * width < WHOLE_PIXEL &&
                         std::abs(sides.down.x) * height < WHOLE_PIXEL &&
                         std::abs(sides.down.y - 1.0) * height < WHOLE_PIXEL;
    const bool is_whole = std::abs(top_left.x - std::round(top_left.x)) < WHOLE_PIXEL &&
                          std::abs(top_left.y - std::round(top_left.y)) < WHOLE_PIXEL;
    return is_unit && (is_whole || !filtered);
}

/// The place of the pixel whose centre a target pixel's centre falls into. Rounding does not choose
/// between two.
long nearest_place(double at)
{
    constexpr double TIE = 5e-7;
    return std::lround(std::ceil(at - 0.5 - TIE));
}

bool is_placeable(Place place)
{
    return std::abs(place.x) < FARTHEST && std::abs(place.y) < FARTHEST; // false for a NaN
}

template <class Sample>
void paint(KIVPixmap& target, const KIVPixmap& source, const Sides& sides, Place top_left,
           const DrawOptions& options)
{
    Interval columns;
    Interval lines;
    find_box(target, sides, source, top_left, columns, lines);
    if (columns.size() == 0 || lines.size() == 0)
        return;
    auto painter = std::make_unique<Painter<Sample>>(PixmapDrawing::inq_pixels(source),
                                                     make_mapping(source, sides, top_left), options,
                                                     columns, lines);
    PixmapDrawing::draw(target, std::move(painter), inq_time(source));
}

/// `source` with alpha and at the target's depth: itself, or a copy in `made`.
const KIVPixmap& bring_to_depth(const KIVPixmap& source, const KIVPixmap& target,
                                std::unique_ptr<KIVPixmap>& made)
{
    const PixType type = make_pix_type(4, target.inq_bits_per_sample());
    if (source.inq_type() == type)
        return source;
    made =
        std::make_unique<KIVPixmap>(source.inq_width(), source.inq_height(), type, nullptr, false);
    if (made->inq_is_empty())
        throw std::bad_alloc();
    made->copy(&source, IntVector2(0, 0));
    return *made;
}

/// A copy at half the size, in place of the last one in `made`, which may be what is halved.
const KIVPixmap& halve(const KIVPixmap& image, bool halve_width, bool halve_height,
                       std::unique_ptr<KIVPixmap>& made)
{
    made = make_reduced(image, halve_width, halve_height);
    if (!made)
        throw std::bad_alloc();
    return *made;
}
} // namespace

bool composite_placed(KIVPixmap& target, const KIVPixmap& source, Place top_left, Place top_right,
                      Place bottom_left, const DrawOptions& options)
{
    if (source.inq_is_empty() || target.inq_is_empty() || !is_placeable(top_left) ||
        !is_placeable(top_right) || !is_placeable(bottom_left))
        return false;
    Sides sides = make_sides(source, top_left, top_right, bottom_left);
    if (std::abs(sides.area()) * source.inq_width() * source.inq_height() < SMALLEST_AREA)
        return false;
    if (is_unscaled(source, sides, top_left, options.filtered)) {
        composite_unscaled(target, source, nearest_place(top_left.x), nearest_place(top_left.y),
                           options);
        return true;
    }
    std::unique_ptr<KIVPixmap> made;
    const KIVPixmap* image = &bring_to_depth(source, target, made);
    while (options.filtered) { // until the image is at least half its size there
        const bool halve_width = sides.x_scale() < HALVE_BELOW && image->inq_width() > 1;
        const bool halve_height = sides.y_scale() < HALVE_BELOW && image->inq_height() > 1;
        if (!halve_width && !halve_height)
            break;
        image = &halve(*image, halve_width, halve_height, made);
        sides = make_sides(*image, top_left, top_right, bottom_left);
    }
    if (made)
        made->fix_pixels(); // so that its drawing can wait
    if (target.inq_bits_per_sample() == 8)
        paint<std::uint8_t>(target, *image, sides, top_left, options);
    else
        paint<std::uint16_t>(target, *image, sides, top_left, options);
    return true;
}

void composite_unscaled(KIVPixmap& target, const KIVPixmap& source, long x, long y,
                        const DrawOptions& options)
{
    if (source.inq_is_empty() || target.inq_is_empty())
        return;
    auto layer =
        std::make_unique<UnscaledLayer>(PixmapDrawing::inq_pixels(source), source.inq_type(), x, y,
                                        to_share(options.opacity), PixmapDrawing::inq_area(target));
    PixmapDrawing::draw(target, std::move(layer), inq_time(source));
}

namespace {
/// A row of the target sees the source as if the quadrilateral's sides ran on as they do there.
Mapping make_row_mapping(const KIVPixmap& source, const KIVPixmap& target, const Place corners[4],
                         int y)
{
    const double share = (y + 0.5) / target.inq_height();
    const auto along = [&](Place a, Place b) {
        return Place{a.x + (b.x - a.x) * share, a.y + (b.y - a.y) * share};
    };
    const Place left = along(corners[0], corners[3]);
    const Place right = along(corners[1], corners[2]);
    const Place middle = {0.5 * (corners[3].x + corners[2].x - corners[0].x - corners[1].x),
                          0.5 * (corners[3].y + corners[2].y - corners[0].y - corners[1].y)};
    Mapping m = {};
    m.u_x = (right.x - left.x) / target.inq_width();
    m.v_x = (right.y - left.y) / target.inq_width();
    m.u_y = middle.x / target.inq_height();
    m.v_y = middle.y / target.inq_height();
    m.u_0 = left.x + 0.5 * m.u_x - m.u_y * y;
    m.v_0 = left.y + 0.5 * m.v_x - m.v_y * y;
    m.width = source.inq_width();
    m.height = source.inq_height();
    m.u_length = std::hypot(m.u_x, m.u_y);
    m.v_length = std::hypot(m.v_x, m.v_y);
    return m;
}

template <class Sample>
void resample(KIVPixmap& target, const KIVPixmap& source, const Place corners[4])
{
    const Canvas canvas = PixmapDrawing::inq_canvas(target);
    const FixedPixels pixels = PixmapDrawing::inq_pixels(source);
    const Interval columns = {0, target.inq_width()};
    Scratch scratch;
    for (int y = 0; y < target.inq_height(); ++y) {
        const Mapping mapping = make_row_mapping(source, target, corners, y);
        const Interval row = {y, y + 1};
        if (mapping.u_length != 0.0 && mapping.v_length != 0.0)
            Painter<Sample>(pixels, mapping, {true}, columns, row)
                .paint(canvas, {columns, row}, scratch);
    }
}
} // namespace

bool resample_quadrilateral(KIVPixmap& target, const KIVPixmap& source, const Place corners[4])
{
    if (!target.inq_data() || !source.inq_data() ||
        !std::all_of(corners, corners + 4, is_placeable))
        return false;
    std::unique_ptr<KIVPixmap> made;
    const KIVPixmap* image = &bring_to_depth(source, target, made);
    Place at[4] = {corners[0], corners[1], corners[2], corners[3]};
    for (;;) {
        const Mapping middle = make_row_mapping(*image, target, at, target.inq_height() / 2);
        const bool halve_width = middle.u_length * HALVE_BELOW > 1.0 && image->inq_width() > 1;
        const bool halve_height = middle.v_length * HALVE_BELOW > 1.0 && image->inq_height() > 1;
        if (!halve_width && !halve_height)
            break;
        image = &halve(*image, halve_width, halve_height, made);
        for (Place& place : at)
            place = {place.x * made->inq_width() / middle.width,
                     place.y * made->inq_height() / middle.height};
    }
    if (target.inq_bits_per_sample() == 8)
        resample<std::uint8_t>(target, *image, at);
    else
        resample<std::uint16_t>(target, *image, at);
    return true;
}
