#pragma once

#include <cstddef>
#include <cstdint>
#include <new>
#include <utility>

/// Memory for the objects that one stream reads or one evaluation makes, side by side in the order
/// of making. A block goes back to the system with the last of its objects, in whatever order and
/// thread they go. The first objects, and all where the system has no room for blocks, are ordinary
/// memory.
class ObjectBlocks {
public:
    ObjectBlocks() = default;
    ObjectBlocks(const ObjectBlocks&) = delete;
    ObjectBlocks& operator=(const ObjectBlocks&) = delete;
    ~ObjectBlocks() { close_block(); }

    /// Null without memory.
    void* allocate(std::size_t size)
    {
        size = (size + ALIGNMENT - 1) / ALIGNMENT * ALIGNMENT;
        if (size > static_cast<std::size_t>(block_end - free_place))
            return allocate_elsewhere(size);
        ++objects_in_block;
        return std::exchange(free_place, free_place + size);
    }

    /// Takes back what any blocks gave out, or any other memory of the process.
    static void release(void* memory) noexcept;

private:
    static constexpr std::size_t ALIGNMENT = __STDCPP_DEFAULT_NEW_ALIGNMENT__;

    void* allocate_elsewhere(std::size_t size);
    bool open_block();
    void close_block();

    char* block = nullptr; // null before the first
    char* free_place = nullptr;
    char* block_end = nullptr;
    std::uint32_t objects_in_block = 0;
    bool has_no_room = false;      // the system gave no block; it is not asked for each object
    std::size_t bytes_outside = 0; // given out before the first block
};
