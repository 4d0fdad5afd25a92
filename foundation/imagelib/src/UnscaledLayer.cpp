#include "imagelib/src/UnscaledLayer.h"

#include "imagelib/src/Painter.h"

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
