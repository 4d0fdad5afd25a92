#include "imagelib/src/PngRows.h"

#include <cstring>
#include <libdeflate.h>
#include <sys/mman.h>

namespace {
constexpr std::size_t SIGNATURE_BYTES = 8;
constexpr std::size_t AROUND_CHUNK = 12; // its length, its name, and a sum behind it

std::uint32_t get_32(const unsigned char* at)
{
    return std::uint32_t{at[0]} << 24 | std::uint32_t{at[1]} << 16 | std::uint32_t{at[2]} << 8 |
           std::uint32_t{at[3]};
}

/// A part of a PNG file.
class Chunk {
public:
    /// That begins the rest of a file. Without a name if there is none, or not all of it.
    explicit Chunk(Bytes rest)
    {
        if (rest.size() < AROUND_CHUNK || get_32(rest.data()) > rest.size() - AROUND_CHUNK)
            return;
        whole = rest.first(AROUND_CHUNK + get_32(rest.data()));
    }

    bool is_there() const { return !whole.empty(); }
    bool is(const char* name) const { return std::memcmp(whole.data() + 4, name, 4) == 0; }
    bool is_one_of_the_head() const { return is("IHDR") || is("PLTE"); }
    bool can_be_passed_over() const { return (whole[4] & 0x20) != 0; }
    std::size_t inq_bytes() const { return whole.size(); }
    Bytes inq_contents() const { return whole.subspan(8, whole.size() - AROUND_CHUNK); }
    bool has_its_sum() const
    {
        return libdeflate_crc32(0, whole.data() + 4, whole.size() - 8) ==
               get_32(whole.data() + whole.size() - 4);
    }

private:
    Bytes whole;
};

/// The packed pixels of a file, which may lie in several chunks. Empty unless all is sound to the
/// end.
std::vector<unsigned char> gather_pixels(Bytes file)
{
    std::vector<unsigned char> packed;
    bool has_ended = false; // the run of chunks with pixels
    for (Bytes rest = file.subspan(SIGNATURE_BYTES);;) {
        const Chunk chunk(rest);
        if (!chunk.is_there())
            return {};
        if (chunk.is("IEND"))
            return chunk.has_its_sum() ? packed : std::vector<unsigned char>();
        if (chunk.is("IDAT")) {
            if (has_ended || !chunk.has_its_sum())
                return {};
            const Bytes contents = chunk.inq_contents();
            packed.insert(packed.end(), contents.begin(), contents.end());
        } else if (!chunk.can_be_passed_over() && !(packed.empty() && chunk.is_one_of_the_head())) {
            return {};
        } else {
            has_ended = !packed.empty();
        }
        rest = rest.subspan(chunk.inq_bytes());
    }
}

/// The samples of a pixel of up to eight bytes, side by side.
using Pixel = std::int16_t __attribute__((vector_size(16)));
using PackedPixel = std::uint8_t __attribute__((vector_size(8)));
using Words = std::uint64_t __attribute__((vector_size(8)));
constexpr std::size_t BEYOND = sizeof(PackedPixel); // bytes that are read behind the last pixel

/// Reads some bytes of the next pixel, too: whole words are read quickly, and the samples beyond
/// mean nothing.
template <int BYTES> Pixel load(const unsigned char* from)
{
    std::conditional_t<(BYTES > 4), std::uint64_t, std::uint32_t> word = 0;
    std::memcpy(&word, from, sizeof word);
    return __builtin_convertvector(reinterpret_cast<PackedPixel>(Words{word}), Pixel);
}

template <int BYTES> void store(unsigned char* to, Pixel pixel)
{
    const auto packed = reinterpret_cast<Words>(__builtin_convertvector(pixel, PackedPixel));
    const std::uint64_t word = packed[0];
    std::memcpy(to, &word, BYTES);
}

Pixel absolute(Pixel v)
{
    const Pixel negative = v < 0;
    return (v ^ negative) - negative;
}

// What a filter expects of a pixel, from the ones on the left, above, and on the left above.

struct Left {
    static Pixel predict(Pixel left, Pixel /*above*/, Pixel /*corner*/) { return left; }
};
struct Average {
    static Pixel predict(Pixel left, Pixel above, Pixel /*corner*/) { return (left + above) >> 1; }
};
struct Nearest {
    static Pixel predict(Pixel left, Pixel above, Pixel corner)
    {
        const Pixel from_left = absolute(above - corner);
        const Pixel from_above = absolute(left - corner);
        const Pixel from_corner = absolute(left + above - corner - corner);
        const Pixel other = from_above <= from_corner ? above : corner;
        return (from_left <= from_above) & (from_left <= from_corner) ? left : other;
    }
};

template <class Filter, int BYTES>
void undo(unsigned char* row, const unsigned char* above, std::size_t bytes)
{
    Pixel left = {};
    Pixel corner = {};
    for (std::size_t i = 0; i < bytes; i += BYTES) {
        const Pixel over = load<BYTES>(above + i);
        left = (load<BYTES>(row + i) + Filter::predict(left, over, corner)) & 0xFF;
        store<BYTES>(row + i, left);
        corner = over;
    }
}

template <class Filter>
void undo(unsigned char* row, const unsigned char* above, std::size_t bytes,
          std::size_t pixel_bytes)
{
    switch (pixel_bytes) {
    case 1:
        return undo<Filter, 1>(row, above, bytes);
    case 2:
        return undo<Filter, 2>(row, above, bytes);
    case 3:
        return undo<Filter, 3>(row, above, bytes);
    case 4:
        return undo<Filter, 4>(row, above, bytes);
    case 6:
        return undo<Filter, 6>(row, above, bytes);
    default:
        return undo<Filter, 8>(row, above, bytes);
    }
}

/// Null without memory. Large pages, where the system has them, come in far less time than the many
/// small ones that it would need.
unsigned char* new_memory(std::size_t bytes)
{
    constexpr std::size_t LARGE_PAGE = std::size_t{2} << 20;
    const std::size_t whole = (bytes + LARGE_PAGE - 1) / LARGE_PAGE * LARGE_PAGE;
    const bool is_large = bytes >= LARGE_PAGE;
    void* memory = is_large ? std::aligned_alloc(LARGE_PAGE, whole) : std::malloc(bytes);
    if (is_large && memory)
        ::madvise(memory, whole, MADV_HUGEPAGE);
    return static_cast<unsigned char*>(memory);
}

enum FilterNumber { NONE, LEFT, ABOVE, AVERAGE, NEAREST, FILTER_COUNT };
} // namespace

bool PngRows::unpack(Bytes file)
{
    constexpr std::size_t MOST_BYTES = std::size_t{64} << 20; // more would be felt in memory
    return (row_bytes + 1) * height <= MOST_BYTES && inflate(gather_pixels(file)) &&
           has_known_filters();
}

/// A row of zeros stands above the first one.
bool PngRows::inflate(Bytes packed)
{
    const std::size_t bytes = (row_bytes + 1) * height;
    rows.reset(new_memory(row_bytes + 1 + bytes + BEYOND));
    if (!rows)
        return false;
    std::memset(rows.get(), 0, row_bytes + 1);
    std::memset(rows.get() + row_bytes + 1 + bytes, 0, BEYOND);
    const std::unique_ptr<libdeflate_decompressor, decltype(&libdeflate_free_decompressor)>
        inflater(libdeflate_alloc_decompressor(), libdeflate_free_decompressor);
    std::size_t found = 0;
    return inflater && !packed.empty() &&
           libdeflate_zlib_decompress(inflater.get(), packed.data(), packed.size(),
                                      rows.get() + row_bytes + 1, bytes,
                                      &found) == LIBDEFLATE_SUCCESS &&
           found == bytes;
}

bool PngRows::has_known_filters() const
{
    for (std::size_t y = 1; y <= height; ++y)
        if (rows.get()[y * (row_bytes + 1)] >= FILTER_COUNT)
            return false;
    return true;
}

const unsigned char* PngRows::next_row()
{
    unsigned char* const above = rows.get() + next++ * (row_bytes + 1) + 1;
    unsigned char* const row = above + row_bytes + 1;
    switch (row[-1]) {
    case LEFT:
        undo<Left>(row, above, row_bytes, pixel_bytes);
        break;
    case ABOVE:
        for (std::size_t i = 0; i < row_bytes; ++i)
            row[i] = static_cast<unsigned char>(row[i] + above[i]);
        break;
    case AVERAGE:
        undo<Average>(row, above, row_bytes, pixel_bytes);
        break;
    case NEAREST:
        undo<Nearest>(row, above, row_bytes, pixel_bytes);
        break;
    default:
        break;
    }
    return row;
}
