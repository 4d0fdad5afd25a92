#include "imagelib/hdr/KIVPixmap.h"

#include "imagelib/src/AlignedMemory.h"
#include "imagelib/src/BlockMap.h"
#include "imagelib/src/DrawList.h"
#include "imagelib/src/Fill.h"
#include "imagelib/src/PixmapDrawing.h"
#include "imagelib/src/composite.h"
#include "imagelib/src/samples.h"
#include "kivlib/hdr/KIVColour.h"
#include "kivlib/hdr/KIVRectangle.h"
#include "kivlib/hdr/units.h"

namespace {
/// Places in a pixmap are worked out in 32 bits.
constexpr std::size_t MOST_BYTES = std::numeric_limits<std::int32_t>::max();

std::size_t round_up_to_alignment(std::size_t bytes)
{
    return (bytes + PIXEL_ALIGNMENT - 1) / PIXEL_ALIGNMENT * PIXEL_ALIGNMENT;
}
} // namespace

void KIVPixmap::allocate(int wanted_width, int wanted_height)
{
    width = 0;
    height = 0;
    row_bytes = 0;
    pixels.reset();
    if (wanted_width <= 0 || wanted_height <= 0)
        return;
    const std::size_t row = round_up_to_alignment(static_cast<std::size_t>(wanted_width) *
                                                  static_cast<std::size_t>(inq_bytes_per_pixel()));
    const auto rows = static_cast<std::size_t>(wanted_height);
    if (row > MOST_BYTES / rows)
        return;
    void* memory = new_aligned(row * rows, std::nothrow);
    if (!memory)
        return;
    pixels.reset(static_cast<unsigned char*>(memory), delete_aligned);
    width = wanted_width;
    height = wanted_height;
    row_bytes = row;
}

KIVPixmap::KIVPixmap(int wanted_width, int wanted_height, PixType type, unsigned char* data,
                     bool take_data)
    : type(type)
{
    allocate(wanted_width, wanted_height);
    const std::size_t row = static_cast<std::size_t>(width * inq_bytes_per_pixel());
    for (int y = 0; data && y < height; ++y)
        std::memcpy(inq_row(y), data + static_cast<std::size_t>(y) * row, row);
    if (take_data)
        delete[] data;
}

KIVPixmap::KIVPixmap(int width, int height, int samples, int bits, unsigned char* data,
                     bool take_data)
    : KIVPixmap(width, height, make_pix_type(samples, bits), data, take_data)
{}

KIVPixmap::~KIVPixmap() = default;

KIVRectangle KIVPixmap::get_frame() const
{
    return {origin.x(), origin.y(), origin.x() + to_units(width, x_dpi),
            origin.y() + to_units(height, y_dpi)};
}

void KIVPixmap::set_dpi(double dpi, double pixel_aspect)
{
    x_dpi = dpi;
    y_dpi = dpi * pixel_aspect;
}

namespace {
template <class Sample> void put_colour(unsigned char* pixel, const KIVColour& colour, bool alpha)
{
    const auto level = [](double value) {
        const double most = samples::FULL<Sample>;
        return static_cast<Sample>(std::clamp(value, 0.0, 1.0) * most + 0.5);
    };
    const double cover = std::clamp(colour.inq_alpha(), 0.0, 1.0);
    const Sample values[4] = {level(colour.inq_red() * cover), level(colour.inq_green() * cover),
                              level(colour.inq_blue() * cover), level(alpha ? cover : 1.0)};
    std::memcpy(pixel, values, sizeof(values));
}
} // namespace

void KIVPixmap::set_colour(const KIVColour& colour)
{
    unsigned char pixel[8];
    if (inq_bits_per_sample() == 8)
        put_colour<std::uint8_t>(pixel, colour, inq_alpha());
    else
        put_colour<std::uint16_t>(pixel, colour, inq_alpha());
    begin_with(pixel);
}

void KIVPixmap::clear()
{
    const unsigned char pixel[8] = {};
    begin_with(pixel);
}

/// What was there, and what was to be drawn over it, is of no more interest.
void KIVPixmap::begin_with(const unsigned char* pixel_with_alpha)
{
    waiting.reset();
    blocks.reset();
    if (pixels.use_count() > 1)
        allocate(width, height);
    if (!pixels)
        return;
    const bool is_clear =
        std::all_of(pixel_with_alpha, pixel_with_alpha + 4 * inq_bits_per_sample() / 8,
                    [](int byte) { return byte == 0; });
    waiting = std::make_unique<DrawList>(is_clear ? DrawList::Beginning::CLEAR
                                                  : DrawList::Beginning::WITH_A_COLOUR);
    waiting->add(
        std::make_unique<Fill>(width, height, pixel_with_alpha, 4 * inq_bits_per_sample() / 8));
}

/// Whoever still has to draw the old pixels keeps them.
void KIVPixmap::prepare_change()
{
    blocks.reset();
    if (pixels.use_count() < 2)
        return;
    const std::shared_ptr<unsigned char> old = pixels;
    allocate(width, height);
    if (!pixels)
        waiting.reset();
    else if (!waiting || !waiting->is_complete())
        std::memcpy(pixels.get(), old.get(), inq_bytes());
}

void KIVPixmap::fix_pixels()
{
    draw_what_waits();
    if (!pixels || !inq_alpha())
        return;
    const auto map = std::make_shared<BlockMap>(width, height);
    map->look_at_rows(pixels.get(), row_bytes, inq_bits_per_sample(), height);
    fix_pixels(map);
}

void KIVPixmap::fix_pixels(std::shared_ptr<const BlockMap> known_blocks)
{
    blocks = std::move(known_blocks);
}

bool KIVPixmap::finish_drawing(AbortPanel* abort) const
{
    const std::unique_ptr<DrawList> list = std::move(waiting);
    return !list ||
           list->play({pixels.get(), row_bytes, type, inq_bytes_per_pixel()}, width, height, abort);
}

namespace {
/// The part of a source that falls into a target, along one side.
struct Overlap {
    long to;
    long from;
    long size;

    Overlap(long at, long source_size, long target_size)
        : to(std::clamp(at, 0L, target_size)), from(to - at),
          size(std::min(source_size - from, target_size - to))
    {}
};
} // namespace

void KIVPixmap::copy(const KIVPixmap* source, const IntVector2& pos)
{
    prepare_change();
    const Overlap columns(pos.x(), source->width, width);
    const Overlap lines(pos.y(), source->height, height);
    if (columns.size <= 0)
        return;
    for (long y = 0; y < lines.size; ++y) {
        unsigned char* to =
            inq_row(static_cast<int>(lines.to + y)) + columns.to * inq_bytes_per_pixel();
        const unsigned char* from = source->inq_row(static_cast<int>(lines.from + y)) +
                                    columns.from * source->inq_bytes_per_pixel();
        convert_pixels(to, type, from, source->type, static_cast<int>(columns.size));
    }
}

void KIVPixmap::composite(const KIVPixmap* source, const IntVector2& pos)
{
    composite_unscaled(*this, *source, pos.x(), pos.y(), {false});
}

void KIVPixmap::copy_and_delete(gsl::owner<KIVPixmap*> source, const IntVector2& pos)
{
    if (PixmapDrawing::is_clear(*this))
        return composite_and_delete(source, pos);
    const std::unique_ptr<KIVPixmap> taken(source);
    copy(source, pos);
}

void KIVPixmap::composite_and_delete(gsl::owner<KIVPixmap*> source, const IntVector2& pos)
{
    constexpr long FAR = std::numeric_limits<int>::max() / 2;
    const std::unique_ptr<KIVPixmap> taken(source);
    if (source->inq_alpha() && source->inq_bits_per_sample() == inq_bits_per_sample() &&
        std::abs(pos.x()) < FAR && std::abs(pos.y()) < FAR)
        PixmapDrawing::hand_over(*this, *source, static_cast<int>(pos.x()),
                                 static_cast<int>(pos.y()));
    else
        composite(source, pos);
}

bool KIVPixmap::convert(int samples, int bits)
{
    const PixType wanted = make_pix_type(samples, bits);
    if (wanted == type)
        return true;
    KIVPixmap converted(width, height, wanted, nullptr, false);
    if (pixels && !converted.pixels)
        return false;
    converted.copy(this, IntVector2(0, 0));
    type = wanted;
    row_bytes = converted.row_bytes;
    pixels = std::move(converted.pixels);
    blocks.reset();
    return true;
}

gsl::owner<KIVPixmap*> KIVPixmap::new_get_resampled(const Vector2& top_left,
                                                    const Vector2& top_right,
                                                    const Vector2& bottom_right,
                                                    const Vector2& bottom_left, int new_width,
                                                    int new_height) const
{
    std::unique_ptr<KIVPixmap> resampled(new (std::nothrow) KIVPixmap(
        new_width, new_height, 4, inq_bits_per_sample(), nullptr, false));
    if (!resampled)
        return nullptr;
    const auto from_top = [&](const Vector2& point) {
        return Place{point.x(), height - point.y()};
    };
    const Place corners[4] = {from_top(top_left), from_top(top_right), from_top(bottom_right),
                              from_top(bottom_left)};
    resampled->clear();
    resample_quadrilateral(*resampled, *this, corners);
    return resampled.release();
}
