#include "imagelib/src/SystemMemory.h"

#include <algorithm>
#include <cstdint>
#include <sys/mman.h>
#include <sys/resource.h>

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
bool has_limited_memory()
{
    const auto is_limited = [](auto what) {
        rlimit limit{};
        return ::getrlimit(what, &limit) != 0 || limit.rlim_cur != RLIM_INFINITY;
    };
    return is_limited(RLIMIT_AS) || is_limited(RLIMIT_DATA);
}
} // namespace

// It outlives every pixmap.
SystemMemory& inq_system_memory()
{
    static auto* memory = new SystemMemory;
    return *memory;
}

IdleBlocks::Block IdleBlocks::take(std::size_t bytes)
{
    Block* best = nullptr;
    for (Block* block = blocks.data(); block != blocks.data() + count; ++block)
        if (will_do(block->bytes, bytes) && (!best || block->bytes < best->bytes))
            best = block;
    if (!best)
        return {};
    const Block taken = *best;
    remove(best);
    return taken;
}

void IdleBlocks::put(const Block& block)
{
    if (block.bytes > most_bytes) {
        ::munmap(block.memory, block.bytes);
        return;
    }
    while (count == most_blocks || sum + block.bytes > most_bytes)
        drop_oldest();
    blocks[count++] = block;
    sum += block.bytes;
}

void IdleBlocks::remove(Block* block)
{
    sum -= block->bytes;
    std::move(block + 1, blocks.data() + count, block);
    --count;
}

void IdleBlocks::drop_oldest()
{
    ::munmap(blocks[0].memory, blocks[0].bytes);
    remove(blocks.data());
}

void IdleBlocks::drop_all()
{
    while (count > 0)
        drop_oldest();
}

void* SystemMemory::take(std::size_t& bytes)
{
    constexpr std::size_t MOST_BYTES = SIZE_MAX / 2;
    if (bytes > MOST_BYTES)
        return nullptr;
    bytes = round_up(bytes, STEP);
    if (const IdleBlocks::Block block = blocks_like(bytes).take(bytes); block.memory) {
        bytes = block.bytes;
        return block.memory;
    }
    if (void* const memory = map_as_fits(bytes))
        return memory;
    small.drop_all();
    large.drop_all();
    return map_as_fits(bytes);
}

void SystemMemory::give_back(void* block, std::size_t bytes)
{
    static const bool keeps_none = has_limited_memory();
    if (keeps_none)
        ::munmap(block, bytes);
    else
        blocks_like(bytes).put({block, bytes});
}
