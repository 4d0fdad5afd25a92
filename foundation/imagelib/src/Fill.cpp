#include "imagelib/src/Fill.h"

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
