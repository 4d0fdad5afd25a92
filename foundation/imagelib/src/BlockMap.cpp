#include "imagelib/src/BlockMap.h"

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

template <class Pixel> Pixel load(const unsigned char* from)
{
    Pixel pixel;
    std::memcpy(&pixel, from, sizeof(pixel));
    return pixel;
}
} // namespace

BlockMap::BlockMap(const unsigned char* data, std::size_t row_bytes, int width, int height,
                   int bits)
    : width(width), height(height), across(count_blocks(width)),
      marks(static_cast<std::size_t>(across) * static_cast<std::size_t>(count_blocks(height)), 0)
{
    if (bits == 8)
        look_at<std::uint8_t>(data, row_bytes);
    else
        look_at<std::uint16_t>(data, row_bytes);
}

template <class Sample> void BlockMap::look_at(const unsigned char* data, std::size_t row_bytes)
{
    using P = Pixel<Sample>;
    for (int y = 0; y < height; ++y, data += row_bytes) {
        unsigned char* mark = marks.data() + static_cast<std::ptrdiff_t>(y / BLOCK) * across;
        for (int x = 0; x < width; x += BLOCK, ++mark) {
            const int count = std::min(BLOCK, width - x);
            const unsigned char* from = data + static_cast<std::size_t>(x) * sizeof(P);
            P any = 0;
            P all = ALPHA<Sample>;
            for (int i = 0; i < count; ++i) {
                const P pixel = load<P>(from + static_cast<std::size_t>(i) * sizeof(P));
                any |= pixel;
                all &= pixel;
            }
            *mark = static_cast<unsigned char>(*mark | (any != 0 ? SEEN : 0) |
                                               (all != ALPHA<Sample> ? TRANSLUCENT : 0));
        }
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
