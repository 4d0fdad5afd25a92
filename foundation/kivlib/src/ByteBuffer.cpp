#include "kivlib/hdr/ByteBuffer.h"

#include <sys/mman.h>

// Large buffers are mapped on the borders of huge pages and grow without a copy. Huge pages are not
// asked for: where memory comes from a host piece by piece, a large file read into fresh ones took
// twice as long.

namespace {
constexpr std::size_t FIRST_BYTES = 4096;
constexpr std::size_t HUGE_PAGE = std::size_t{2} << 20;
constexpr std::size_t MAPPED_FROM = 2 * HUGE_PAGE;

constexpr std::size_t round_up(std::size_t n)
{
    return (n + HUGE_PAGE - 1) / HUGE_PAGE * HUGE_PAGE;
}

/// `size` bytes of addresses, or null. Both ends are borders of huge pages.
char* reserve_addresses(std::size_t size, int protection)
{
    void* wide = ::mmap(nullptr, size + HUGE_PAGE, protection, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (wide == MAP_FAILED)
        return nullptr;
    char* const start = static_cast<char*>(wide);
    const std::size_t past = reinterpret_cast<std::uintptr_t>(start) % HUGE_PAGE;
    const std::size_t before = past == 0 ? 0 : HUGE_PAGE - past;
    if (before > 0)
        ::munmap(start, before);
    ::munmap(start + before + size, HUGE_PAGE - before);
    return start + before;
}

char* map(std::size_t size)
{
    return reserve_addresses(size, PROT_READ | PROT_WRITE);
}

/// On failure `memory` stays as it is.
char* map_larger(char* memory, std::size_t old_size, std::size_t size)
{
    char* const place = reserve_addresses(size, PROT_NONE);
    if (!place)
        return nullptr;
    void* moved = ::mremap(memory, old_size, size, MREMAP_MAYMOVE | MREMAP_FIXED, place);
    if (moved != MAP_FAILED)
        return place;
    ::munmap(place, size);
    return nullptr;
}
} // namespace

ByteBuffer::~ByteBuffer()
{
    release();
}

void ByteBuffer::release()
{
    if (allocated >= MAPPED_FROM)
        ::munmap(bytes, allocated);
    else
        std::free(bytes);
}

bool ByteBuffer::grow(std::size_t wanted)
{
    std::size_t size = std::max({wanted, 2 * allocated, FIRST_BYTES});
    char* memory = nullptr;
    if (size < MAPPED_FROM) {
        memory = static_cast<char*>(std::realloc(bytes, size));
    } else if (wanted <= SIZE_MAX / 4) {
        size = round_up(size);
        memory = allocated >= MAPPED_FROM ? map_larger(bytes, allocated, size) : move_to(map(size));
    }
    failed = failed || !memory;
    if (!memory)
        return false;
    bytes = memory;
    allocated = size;
    return true;
}

char* ByteBuffer::move_to(char* memory)
{
    if (!memory)
        return nullptr;
    if (used > 0)
        std::memcpy(memory, bytes, used);
    std::free(bytes);
    return memory;
}
