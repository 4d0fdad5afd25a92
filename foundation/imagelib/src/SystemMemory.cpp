#include "imagelib/src/SystemMemory.h"

#include <algorithm>
#include <cstdint>
#include <sys/mman.h>
#include <sys/resource.h>
#include <utility>

namespace {
constexpr std::size_t HUGE_PAGE = std::size_t{2} << 20;
constexpr std::size_t STEP = std::size_t{1} << 16; // all sizes are multiples of it

std::size_t round_up(std::size_t bytes, std::size_t step)
{
    return (bytes + step - 1) / step * step;
}

void* map(std::size_t bytes)
{
    void* memory =
        ::mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return memory == MAP_FAILED ? nullptr : memory;
}

/// In pages of 2 MB where the system has them, which it fills far more quickly than small ones.
void* map_in_huge_pages(std::size_t bytes)
{
    auto* const memory = static_cast<unsigned char*>(map(bytes + HUGE_PAGE));
    if (!memory)
        return map(bytes); // there is no room to align it
    const std::size_t beyond = reinterpret_cast<std::uintptr_t>(memory) % HUGE_PAGE;
    const std::size_t before = (HUGE_PAGE - beyond) % HUGE_PAGE;
    if (before > 0)
        ::munmap(memory, before);
    if (before < HUGE_PAGE)
        ::munmap(memory + before + bytes, HUGE_PAGE - before);
    ::madvise(memory + before, bytes / HUGE_PAGE * HUGE_PAGE, MADV_HUGEPAGE);
    return memory + before;
}

void* map_as_fits(std::size_t bytes)
{
    constexpr std::size_t LEAST_IN_HUGE_PAGES = 2 * HUGE_PAGE;
    return bytes < LEAST_IN_HUGE_PAGES ? map(bytes) : map_in_huge_pages(bytes);
}

/// Unless too much of it would lie idle.
bool will_do(std::size_t block_bytes, std::size_t bytes)
{
    constexpr std::size_t LEAST_SHARE = 8; // of what is wanted, that may be left over
    return block_bytes >= bytes && block_bytes - bytes <= bytes / LEAST_SHARE + STEP;
}

/// What is kept would be missing elsewhere: the heap can't ask for it.
bool has_limited_addresses()
{
    rlimit limit{};
    return ::getrlimit(RLIMIT_AS, &limit) != 0 || limit.rlim_cur != RLIM_INFINITY;
}
} // namespace

// It outlives every pixmap.
SystemMemory& inq_system_memory()
{
    static auto* memory = new SystemMemory;
    return *memory;
}

void* SystemMemory::take(std::size_t& bytes)
{
    constexpr std::size_t MOST_BYTES = SIZE_MAX / 2;
    if (void* const memory = take_kept(bytes))
        return memory;
    if (bytes > MOST_BYTES)
        return nullptr;
    bytes = round_up(bytes, STEP);
    if (void* const memory = map_as_fits(bytes))
        return memory;
    drop_all();
    return map_as_fits(bytes);
}

/// The smallest that will do.
void* SystemMemory::take_kept(std::size_t& bytes)
{
    Block* best = nullptr;
    for (Block* block = kept.data(); block != kept.data() + count; ++block)
        if (will_do(block->bytes, bytes) && (!best || block->bytes < best->bytes))
            best = block;
    if (!best)
        return take_largest(bytes);
    const Block taken = *best;
    remove(best);
    bytes = taken.bytes;
    return taken.memory;
}

void* SystemMemory::take_largest(std::size_t& bytes)
{
    if (!will_do(largest.bytes, bytes))
        return nullptr;
    bytes = largest.bytes;
    return std::exchange(largest, {}).memory;
}

void SystemMemory::give_back(void* block, std::size_t bytes)
{
    static const bool keeps_none = has_limited_addresses();
    if (keeps_none || !keep({block, bytes}))
        ::munmap(block, bytes);
}

bool SystemMemory::keep(const Block& block)
{
    constexpr std::size_t MOST_TOGETHER = std::size_t{64} << 20;
    constexpr std::size_t MOST_ALONE = std::size_t{256} << 20;
    if (block.bytes > MOST_ALONE)
        return false;
    if (block.bytes > MOST_TOGETHER) {
        drop_largest();
        largest = block;
        return true;
    }
    while (count == MOST_BLOCKS || kept_bytes + block.bytes > MOST_TOGETHER)
        drop_oldest();
    kept[count++] = block;
    kept_bytes += block.bytes;
    return true;
}

void SystemMemory::remove(Block* block)
{
    kept_bytes -= block->bytes;
    std::move(block + 1, kept.data() + count, block);
    --count;
}

void SystemMemory::drop_oldest()
{
    ::munmap(kept[0].memory, kept[0].bytes);
    remove(kept.data());
}

void SystemMemory::drop_largest()
{
    if (largest.memory)
        ::munmap(largest.memory, largest.bytes);
    largest = {};
}

void SystemMemory::drop_all()
{
    drop_largest();
    while (count > 0)
        drop_oldest();
}
