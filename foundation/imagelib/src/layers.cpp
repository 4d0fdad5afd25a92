#include "imagelib/src/layers.h"

#include "imagelib/src/DrawList.h"
#include "imagelib/src/Painter.h"

Fill::Fill(int width, int height, const unsigned char* pixel, int bytes_per_pixel)
    : Layer({0, width}, {0, height}), bytes_per_pixel(bytes_per_pixel)
{
    const int alpha_bytes = bytes_per_pixel / 4;
    for (int i = 0; i < TILE_WIDTH; ++i)
        std::memcpy(row + i * bytes_per_pixel, pixel, static_cast<std::size_t>(bytes_per_pixel));
    is_visible = std::any_of(row, row + bytes_per_pixel, [](int byte) { return byte != 0; });
    is_opaque = std::all_of(row + 3 * alpha_bytes, row + 4 * alpha_bytes,
                            [](int byte) { return byte == 0xFF; });
}

Layer::Effect Fill::look_at(const Tile& tile)
{
    Effect effect;
    for_each_block(tile, inq_blocks(tile), [&](const Tile& block, Blocks bit) {
        effect.drawn |= meets(block) ? bit : 0;
        effect.replaced |= is_around(block) ? bit : 0;
    });
    effect.visible = is_visible ? effect.drawn : 0;
    effect.opaque = is_opaque ? effect.replaced : 0;
    return effect;
}

void Fill::draw(const Canvas& canvas, const Tile& tile, Blocks chosen, Scratch& /*scratch*/)
{
    for_each_run(tile, chosen, [&](Tile run) {
        run.columns.cut(columns);
        run.lines.cut(lines);
        const auto bytes = static_cast<std::size_t>(run.columns.size() * bytes_per_pixel);
        for (int y = run.lines.begin; y < run.lines.end; ++y)
            std::memcpy(canvas.at(run.columns.begin, y), row, bytes);
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
        effect.opaque |= is_opaque ? bit : 0;
    });
    effect.visible = effect.drawn;
    effect.replaced = effect.opaque;
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

PictureLayer::PictureLayer(std::unique_ptr<DrawList> picture, PixType type, int width, int height,
                           int x, int y, Manner manner, const Tile& target)
    : Layer(find_covered(x, width, target.columns), find_covered(y, height, target.lines)),
      picture(std::move(picture)), type(type), x(x), y(y), manner(manner)
{}

PictureLayer::~PictureLayer() = default;

std::size_t PictureLayer::inq_depth() const
{
    return picture->inq_depth();
}

/// The tile as the picture counts its pixels; it may reach beyond the picture.
Tile PictureLayer::inside(const Tile& tile) const
{
    return {{tile.columns.begin - x, tile.columns.end - x},
            {tile.lines.begin - y, tile.lines.end - y}};
}

Layer::Effect PictureLayer::look_at(const Tile& tile)
{
    const Effect found = picture->look_at(inside(tile));
    Effect effect = {found.visible, found.opaque, found.visible, found.opaque, 0};
    for_each_block(tile, inq_blocks(tile), [&](const Tile& block, Blocks bit) {
        if (!meets(block))
            effect.drawn &= ~bit;
        else if (manner == Manner::REPLACE)
            effect.drawn |= bit;
        if (!is_around(block)) {
            effect.replaced &= ~bit;
            effect.opaque &= ~bit;
            effect.holed |= manner == Manner::REPLACE && meets(block) ? bit : 0;
        } else if (manner == Manner::REPLACE) {
            effect.replaced |= bit;
        }
    });
    return effect;
}

void PictureLayer::prefetch(const Tile& tile, Blocks chosen) const
{
    picture->prefetch_first(inside(tile), chosen);
}

void PictureLayer::draw(const Canvas& canvas, const Tile& tile, Blocks chosen, Scratch& scratch)
{
    const Canvas aside = picture->draw_aside(inside(tile), type, chosen, scratch);
    for_each_run(tile, chosen, [&](Tile run) {
        run.columns.cut(columns);
        run.lines.cut(lines);
        for (int line = run.lines.begin; line < run.lines.end; ++line) {
            const unsigned char* from = aside.at(run.columns.begin - x, line - y);
            unsigned char* to = canvas.at(run.columns.begin, line);
            const int count = run.columns.size();
            if (manner == Manner::REPLACE)
                std::memcpy(to, from, static_cast<std::size_t>(count * canvas.bytes_per_pixel));
            else
                put_over(to, from, canvas.type, count);
        }
    });
    scratch.give_back_canvas();
}
