#include "imagelib/src/ZlibPacker.h"

#include <isa-l/igzip_lib.h>
#include <libdeflate.h>

namespace {
constexpr int FASTEST_LEVEL = 1;

/// isa-l is written for vectors of 32 bytes and more; its plain form is slower than libdeflate.
bool has_wide_vectors()
{
#ifdef __x86_64__
    static const bool has_them = __builtin_cpu_supports("avx2") != 0;
    return has_them;
#else
    return false;
#endif
}
} // namespace

/// The beginning of a block is packed by itself, up to a byte's end. The library's vector code
/// takes the hash of a block's third byte from the address of the stream; behind other bytes it
/// doesn't.
struct ZlibPacker::Vectors {
    isal_zstream stream = {}; // its own preparation forgets the length of the window
    unsigned char work[ISAL_DEF_LVL1_DEFAULT];

    std::size_t pack(const void* from, std::size_t count, void* to, std::size_t room)
    {
        constexpr std::size_t BEGINNING = 8; // short enough for the library's plain code
        isal_deflate_init(&stream);
        stream.level = FASTEST_LEVEL;
        stream.level_buf = work;
        stream.level_buf_size = sizeof(work);
        stream.gzip_flag = IGZIP_ZLIB;
        stream.next_in = static_cast<std::uint8_t*>(const_cast<void*>(from)); // is only read
        stream.next_out = static_cast<std::uint8_t*>(to);
        stream.avail_out = static_cast<std::uint32_t>(room);
        const std::size_t first = count > BEGINNING ? BEGINNING : 0;
        const bool is_packed = (first == 0 || feed(first, SYNC_FLUSH)) && feed(count - first, END);
        return is_packed && stream.internal_state.state == ZSTATE_END ? stream.total_out : 0;
    }

private:
    static constexpr std::uint16_t END = NO_FLUSH;

    bool feed(std::size_t count, std::uint16_t flush)
    {
        stream.avail_in = static_cast<std::uint32_t>(count);
        stream.flush = flush;
        stream.end_of_stream = flush == END;
        return isal_deflate(&stream) == COMP_OK && stream.avail_in == 0;
    }
};

struct ZlibPacker::Plain {
    libdeflate_compressor* compressor = libdeflate_alloc_compressor(FASTEST_LEVEL);

    Plain() = default;
    Plain(const Plain&) = delete;
    Plain& operator=(const Plain&) = delete;
    ~Plain() { libdeflate_free_compressor(compressor); }
};

ZlibPacker::ZlibPacker(Way way)
{
    if (way == FASTEST && has_wide_vectors())
        vectors.reset(new (std::nothrow) Vectors);
    if (!vectors)
        plain.reset(new (std::nothrow) Plain);
}

ZlibPacker::~ZlibPacker() = default;

/// A block of the format that isn't compressed has five bytes before at most 65,535.
std::size_t ZlibPacker::inq_most(std::size_t count)
{
    constexpr std::size_t ENDS = 1024;
    return std::max(libdeflate_zlib_compress_bound(nullptr, count), count + count / 1024 + ENDS);
}

std::size_t ZlibPacker::pack(const void* from, std::size_t count, void* to)
{
    if (count > LONGEST)
        return 0;
    if (vectors)
        return vectors->pack(from, count, to, inq_most(count));
    if (!plain || !plain->compressor)
        return 0;
    return libdeflate_zlib_compress(plain->compressor, from, count, to, inq_most(count));
}
