#include "imagelib/src/layers.h"

#include "imagelib/src/Painter.h"

namespace {
constexpr int ALPHA = 3;

/// Premultiplied pixels of a type with alpha.
void put_over(unsigned char* target, const unsigned char* source, PixType type, int pixels)
{
    if (type == PT_RGBA_8)
        return inq_kernels<std::uint8_t>().over(target, source, pixels);
    inq_kernels<std::uint16_t>().over(reinterpret_cast<std::uint16_t*>(target),
                                      reinterpret_cast<const std::uint16_t*>(source), pixels);
}
} // namespace

void Layer::go_onto(const Tile& area, int x, int y)
{
    columns = {columns.begin + x, columns.end + x};
    columns.cut(area.columns);
    lines = {lines.begin + y, lines.end + y};
    lines.cut(area.lines);
    move(x, y);
}

Fill::Fill(int width, int height, const unsigned char* pixel, int bytes_per_pixel)
    : Layer({0, width}, {0, height}), bytes_per_pixel(bytes_per_pixel)
{
    for (int i = 0; i < TILE_WIDTH; ++i)
        std::memcpy(row + i * bytes_per_pixel, pixel, static_cast<std::size_t>(bytes_per_pixel));
}

void Fill::move(int, int)
{
    const int alpha_bytes = bytes_per_pixel / 4;
    const unsigned char* alpha = row + ALPHA * alpha_bytes;
    replaces = std::all_of(alpha, alpha + alpha_bytes, [](int byte) { return byte == 0xFF; });
    if (std::all_of(row, row + bytes_per_pixel, [](int byte) { return byte == 0; }))
        columns = {0, 0};
}

Layer::Effect Fill::look_at(const Tile& tile)
{
    Effect effect;
    for_each_block(tile, inq_blocks(tile), [&](const Tile& block, Blocks bit) {
        effect.drawn |= meets(block) ? bit : 0;
        effect.replaced |= replaces && is_around(block) ? bit : 0;
    });
    return effect;
}

void Fill::draw(const Canvas& canvas, const Tile& tile, Blocks chosen, Scratch& /*scratch*/)
{
    for_each_run(tile, chosen, [&](Tile run) {
        run.columns.cut(columns);
        run.lines.cut(lines);
        const int count = run.columns.size();
        for (int y = run.lines.begin; y < run.lines.end; ++y) {
            unsigned char* to = canvas.at(run.columns.begin, y);
            if (replaces)
                std::memcpy(to, row, static_cast<std::size_t>(count * bytes_per_pixel));
            else
                put_over(to, row, canvas.type, count);
        }
    });
}

namespace {
/// The part of a target's side that a picture of `size` at `at` covers.
Interval find_covered(long at, int size, const Interval& side)
{
    Interval covered = {to_int(static_cast<double>(at)), to_int(static_cast<double>(at) + size)};
    covered.cut(side);
    return covered;
}
} // namespace

UnscaledLayer::UnscaledLayer(const FixedPixels& source, PixType type, long x, long y,
                             unsigned share, const Tile& target)
    : Layer(find_covered(x, source.pixels.width, target.columns),
            find_covered(y, source.pixels.height, target.lines)),
      source(source), type(type), x(x), y(y), share(share)
{}

void UnscaledLayer::move(int columns_to_right, int lines_down)
{
    x += columns_to_right;
    y += lines_down;
}

Interval UnscaledLayer::columns_of(const Tile& part) const
{
    return {static_cast<int>(part.columns.begin - x), static_cast<int>(part.columns.end - x)};
}

Interval UnscaledLayer::lines_of(const Tile& part) const
{
    return {static_cast<int>(part.lines.begin - y), static_cast<int>(part.lines.end - y)};
}

const unsigned char* UnscaledLayer::at(int column, int line) const
{
    return source.pixels.data + (line - y) * std::ptrdiff_t{source.pixels.row_bytes} +
           (column - x) * inq_bytes_per_pixel(type);
}

Layer::Effect UnscaledLayer::look_at(const Tile& tile)
{
    Effect effect;
    for_each_block(tile, inq_blocks(tile), [&](const Tile& block, Blocks bit) {
        if (!meets(block))
            return;
        const BlockMap::Content content =
            source.blocks ? source.blocks->inq_content(columns_of(block), lines_of(block))
                          : BlockMap::Content{false, false};
        effect.drawn |= content.is_empty ? 0 : bit;
        const bool is_opaque = content.is_opaque && share == WHOLE_SHARE && is_around(block);
        effect.replaced |= is_opaque ? bit : 0;
    });
    return effect;
}

void UnscaledLayer::draw(const Canvas& canvas, const Tile& tile, Blocks chosen, Scratch& scratch)
{
    for_each_run(tile, chosen, [&](Tile run) {
        run.columns.cut(columns);
        run.lines.cut(lines);
        if (run.columns.size() == 0)
            return;
        const auto prefetch = [&](int line) {
            prefetch_span(canvas.at(run.columns.begin, line),
                          std::ptrdiff_t{run.columns.size()} * canvas.bytes_per_pixel);
            prefetch_span(at(run.columns.begin, line),
                          std::ptrdiff_t{run.columns.size()} * inq_bytes_per_pixel(type));
        };
        for_each_line(run.lines, prefetch, [&](int line) {
            if (canvas.type == PT_RGBA_8)
                draw_row<std::uint8_t>(canvas, run.columns, line, scratch);
            else
                draw_row<std::uint16_t>(canvas, run.columns, line, scratch);
        });
    });
}

template <class Sample>
void UnscaledLayer::draw_row(const Canvas& canvas, Interval run, int line, Scratch& scratch) const
{
    const unsigned char* row = at(run.begin, line);
    const auto* ready = reinterpret_cast<const Sample*>(row);
    if (type != canvas.type || share != WHOLE_SHARE) {
        Sample* strip = scratch.inq_strips<Sample>().strip;
        convert_pixels(strip, canvas.type, row, type, run.size());
        if (share != WHOLE_SHARE)
            dim(strip, run.size(), share);
        ready = strip;
    }
    inq_kernels<Sample>().over(reinterpret_cast<Sample*>(canvas.at(run.begin, line)), ready,
                               run.size());
}
