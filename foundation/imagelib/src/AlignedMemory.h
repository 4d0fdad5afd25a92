#pragma once

#include <cstddef>
#include <new>

/// Memory for pixels, which begins with a line of the processor's cache. The heap's own aligned
/// blocks are not used: it cuts them out of larger ones and keeps the cuttings apart, so that the
/// holes that one frame leaves don't fit the next, and the heap grows from frame to frame.
constexpr std::size_t PIXEL_ALIGNMENT = 64;

void* new_aligned(std::size_t bytes);

/// Null without memory.
void* new_aligned(std::size_t bytes, const std::nothrow_t& nothrow);
void delete_aligned(void* memory);

/// A base of structures that are aligned so.
struct InAlignedMemory {
    static void* operator new(std::size_t bytes, std::align_val_t) { return new_aligned(bytes); }
    static void operator delete(void* memory, std::align_val_t) { delete_aligned(memory); }
};
