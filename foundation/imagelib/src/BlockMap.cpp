#include "imagelib/src/BlockMap.h"

#include "imagelib/src/kernels.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>

namespace {
template <class Sample>
using Pixel = std::conditional_t<sizeof(Sample) == 1, std::uint32_t, std::uint64_t>;

template <class Sample>
constexpr Pixel<Sample> ALPHA =
    Pixel<Sample>{std::numeric_limits<Sample>::max()} << (3 * 8 * sizeof(Sample));

int count_blocks(int size)
{
    return (size + BLOCK - 1) / BLOCK;
}

template <class Pixel> void add_pixel(CommonBits& common, const unsigned char* from)
{
    Pixel pixel;
    std::memcpy(&pixel, from, sizeof(pixel));
    common.any |= pixel;
    common.all &= sizeof(pixel) == 8 ? pixel : std::uint64_t{pixel} << 32 | pixel;
}

/// Of a block that is cut off by the picture's edge.
template <class Pixel>
CommonBits look_at_part(const unsigned char* from, std::size_t row_bytes, int columns, int rows)
{
    CommonBits common;
    for (int y = 0; y < rows; ++y, from += row_bytes)
        for (int x = 0; x < columns; ++x)
            add_pixel<Pixel>(common, from + static_cast<std::size_t>(x) * sizeof(Pixel));
    return common;
}
} // namespace

BlockMap::BlockMap(int width, int height)
    : width(width), height(height), across(count_blocks(width)),
      marks(static_cast<std::size_t>(across) * static_cast<std::size_t>(count_blocks(height)), 0)
{}

void BlockMap::look_at_rows(const unsigned char* data, std::size_t row_bytes, int bits, int rows)
{
    for (; next_line < height && std::min(next_line + BLOCK, height) <= rows; next_line += BLOCK)
        if (bits == 8)
            look_at_line<std::uint8_t>(data, row_bytes);
        else
            look_at_line<std::uint16_t>(data, row_bytes);
}

/// The blocks from row `next_line` on.
template <class Sample>
void BlockMap::look_at_line(const unsigned char* data, std::size_t row_bytes)
{
    using P = Pixel<Sample>;
    constexpr std::uint64_t OPAQUE =
        sizeof(P) == 8 ? ALPHA<Sample> : std::uint64_t{ALPHA<Sample>} << 32 | ALPHA<Sample>;
    const int rows = std::min(BLOCK, height - next_line);
    const unsigned char* from = data + static_cast<std::size_t>(next_line) * row_bytes;
    unsigned char* mark = marks.data() + static_cast<std::ptrdiff_t>(next_line / BLOCK) * across;
    for (int x = 0; x < width; x += BLOCK, from += BLOCK * sizeof(P)) {
        const int columns = std::min(BLOCK, width - x);
        const CommonBits common = columns == BLOCK && rows == BLOCK
                                      ? inq_kernels<Sample>().look_at_block(from, row_bytes)
                                      : look_at_part<P>(from, row_bytes, columns, rows);
        *mark++ = static_cast<unsigned char>((common.any != 0 ? SEEN : 0) |
                                             ((common.all & OPAQUE) != OPAQUE ? TRANSLUCENT : 0));
    }
}

BlockMap::Content BlockMap::inq_content(Interval columns, Interval lines) const
{
    columns.cut({0, width});
    lines.cut({0, height});
    if (columns.size() <= 0 || lines.size() <= 0)
        return {true, false};
    unsigned found = 0;
    for (int y = lines.begin / BLOCK; y <= (lines.end - 1) / BLOCK; ++y)
        for (int x = columns.begin / BLOCK; x <= (columns.end - 1) / BLOCK; ++x)
            found |= marks[static_cast<std::size_t>(y * across + x)];
    return {(found & SEEN) == 0, (found & TRANSLUCENT) == 0};
}
