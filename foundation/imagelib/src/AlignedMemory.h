#pragma once

#include <cstddef>
#include <new>

/// Memory for pixels, which begins with a line of the processor's cache. Large blocks come from the
/// system and some of the last ones are kept to be taken again: fresh pages cost more than putting
/// a frame into them, and in the heap the holes that one frame or tile leaves don't fit the next.
/// Small blocks come from the heap, but not its own aligned ones: it cuts them out of larger ones
/// and keeps the cuttings apart, so that it grows from frame to frame.
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
