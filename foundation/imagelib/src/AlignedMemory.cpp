#include "imagelib/src/AlignedMemory.h"

#include <cstdint>

namespace {
/// Right before the aligned place stands where the block begins.
void* align(void* block)
{
    static_assert(__STDCPP_DEFAULT_NEW_ALIGNMENT__ >= sizeof(void*));
    if (!block)
        return nullptr;
    const std::size_t beyond = reinterpret_cast<std::uintptr_t>(block) % PIXEL_ALIGNMENT;
    void* const place = static_cast<unsigned char*>(block) + (PIXEL_ALIGNMENT - beyond);
    static_cast<void**>(place)[-1] = block;
    return place;
}
} // namespace

void* new_aligned(std::size_t bytes)
{
    return align(::operator new(bytes + PIXEL_ALIGNMENT));
}

void* new_aligned(std::size_t bytes, const std::nothrow_t& nothrow)
{
    return align(::operator new(bytes + PIXEL_ALIGNMENT, nothrow));
}

void delete_aligned(void* memory)
{
    if (memory)
        ::operator delete(static_cast<void**>(memory)[-1]);
}
