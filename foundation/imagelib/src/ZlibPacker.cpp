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

struct ZlibPacker::Vectors {
    isal_zstream stream = {}; // its own preparation forgets the length of the window
    unsigned char work[ISAL_DEF_LVL1_DEFAULT];

    std::size_t pack(const void* from, std::size_t count, void* to, std::size_t room)
    {
        isal_deflate_stateless_init(&stream);
        stream.level = FASTEST_LEVEL;
        stream.level_buf = work;
        stream.level_buf_size = sizeof(work);
        stream.gzip_flag = IGZIP_ZLIB;
        stream.end_of_stream = 1;
        stream.next_in = static_cast<std::uint8_t*>(const_cast<void*>(from)); // is only read
        stream.avail_in = static_cast<std::uint32_t>(count);
        stream.next_out = static_cast<std::uint8_t*>(to);
        stream.avail_out = static_cast<std::uint32_t>(room);
        return isal_deflate_stateless(&stream) == COMP_OK ? stream.total_out : 0;
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
