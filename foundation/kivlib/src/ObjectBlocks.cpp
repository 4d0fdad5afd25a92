#include "kivlib/hdr/ObjectBlocks.h"

#include <atomic>
#include <sys/mman.h>
#include <sys/resource.h>

// All blocks of the process lie in one range of addresses, so an address tells whether it is in a
// block, and which.

namespace {
#ifdef __SANITIZE_ADDRESS__
constexpr bool HAS_BLOCKS = false; // the sanitizer watches the objects one by one
#else
constexpr bool HAS_BLOCKS = true;
#endif
constexpr std::size_t BLOCK = std::size_t{2} << 20;
constexpr std::size_t MOST_BLOCKS = std::size_t{1} << 15;
constexpr std::size_t RANGE = BLOCK * MOST_BLOCKS;
constexpr std::size_t BYTES_BEFORE_BLOCKS = 128 * 1024; // small files need none
constexpr std::size_t LARGE_OBJECT = 4096;
constexpr std::uint32_t OPEN = 1U << 31; // added to the count of a block that still fills

struct BlockHead {
    std::atomic<std::uint32_t> count; // of the objects in it
};
constexpr std::size_t HEAD = 64; // a cache line
static_assert(sizeof(BlockHead) <= HEAD);

std::atomic<char*> range{nullptr};
std::atomic<bool> is_taken[MOST_BLOCKS];
std::atomic<std::size_t> search_from{0}; // mostly the first free; a guess where threads meet

/// The range would take what is meant for memory.
bool has_limited_addresses()
{
    rlimit limit{};
    return ::getrlimit(RLIMIT_AS, &limit) != 0 || limit.rlim_cur != RLIM_INFINITY;
}

/// Addresses without memory; null if the system has none to give.
char* reserve_range()
{
    if (has_limited_addresses())
        return nullptr;
    constexpr int FLAGS = MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE;
    void* const wide = ::mmap(nullptr, RANGE + BLOCK, PROT_NONE, FLAGS, -1, 0);
    if (wide == MAP_FAILED)
        return nullptr;
    ::madvise(wide, RANGE + BLOCK, MADV_HUGEPAGE); // a page a block, where the system has such
    const std::size_t past = reinterpret_cast<std::uintptr_t>(wide) % BLOCK;
    char* const start = static_cast<char*>(wide) + (past == 0 ? 0 : BLOCK - past);
    char* earlier = nullptr;
    if (range.compare_exchange_strong(earlier, start))
        return start;
    ::munmap(wide, RANGE + BLOCK);
    return earlier;
}

char* inq_range()
{
    char* const start = range.load(std::memory_order_acquire);
    return start ? start : reserve_range();
}

char* take_block()
{
    char* const start = inq_range();
    if (!start)
        return nullptr;
    const std::size_t from = search_from;
    for (std::size_t n = 0; n < MOST_BLOCKS; ++n) {
        const std::size_t index = (from + n) % MOST_BLOCKS;
        if (is_taken[index] || is_taken[index].exchange(true))
            continue;
        search_from = (index + 1) % MOST_BLOCKS;
        char* const block = start + index * BLOCK;
        if (::mprotect(block, BLOCK, PROT_READ | PROT_WRITE) == 0)
            return block;
        is_taken[index] = false;
        return nullptr;
    }
    return nullptr;
}

/// The memory stays at hand for the next file until the system wants it.
void give_back(char* block)
{
    if (::madvise(block, BLOCK, MADV_FREE) != 0) // for an old kernel
        ::madvise(block, BLOCK, MADV_DONTNEED);
    const std::size_t index = static_cast<std::size_t>(block - range) / BLOCK;
    is_taken[index] = false;
    if (index < search_from)
        search_from = index;
}

/// Takes `n` off the block's count, and the block itself with the last of it.
void take_off(char* block, std::uint32_t n)
{
    auto& count = reinterpret_cast<BlockHead*>(block)->count;
    if (count.fetch_sub(n, std::memory_order_acq_rel) == n)
        give_back(block);
}

/// The block that `memory` lies in, or null.
char* find_block(void* memory)
{
    char* const start = range.load(std::memory_order_relaxed);
    const auto offset =
        reinterpret_cast<std::uintptr_t>(memory) - reinterpret_cast<std::uintptr_t>(start);
    return start && offset < RANGE ? start + offset / BLOCK * BLOCK : nullptr;
}
} // namespace

void* ObjectBlocks::allocate_elsewhere(std::size_t size)
{
    const bool is_early = !block && bytes_outside + size <= BYTES_BEFORE_BLOCKS;
    if (!is_early && size <= LARGE_OBJECT && !has_no_room && open_block())
        return allocate(size);
    bytes_outside += size;
    return ::operator new(size, std::nothrow);
}

bool ObjectBlocks::open_block()
{
    char* const fresh = HAS_BLOCKS ? take_block() : nullptr;
    has_no_room = !fresh;
    if (has_no_room)
        return false;
    close_block();
    new (fresh) BlockHead{OPEN};
    block = fresh;
    free_place = fresh + HEAD;
    block_end = fresh + BLOCK;
    objects_in_block = 0;
    return true;
}

void ObjectBlocks::close_block()
{
    if (block)
        take_off(block, OPEN - objects_in_block);
}

void ObjectBlocks::release(void* memory) noexcept
{
    if (char* const held_in = find_block(memory))
        take_off(held_in, 1);
    else
        ::operator delete(memory);
}
