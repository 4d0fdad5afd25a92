#include "imagelib/src/AlignedMemory.h"

#include "imagelib/src/SystemMemory.h"

#include <cstdint>

namespace {
#ifdef __SANITIZE_ADDRESS__ // which watches the borders of what is on the heap
constexpr std::size_t LEAST_FROM_SYSTEM = SIZE_MAX;
#else
/// A process may have a limited number of pieces from the system.
constexpr std::size_t LEAST_FROM_SYSTEM = 1 << 16;
#endif

/// Stands right before the memory that is given out.
struct Head {
    void* block;
    std::size_t system_bytes; // 0 for a block of the heap
};

void* give_out(const Head& head)
{
    static_assert(__STDCPP_DEFAULT_NEW_ALIGNMENT__ >= sizeof(Head));
    if (!head.block)
        return nullptr;
    const std::size_t beyond = reinterpret_cast<std::uintptr_t>(head.block) % PIXEL_ALIGNMENT;
    void* const place = static_cast<unsigned char*>(head.block) + (PIXEL_ALIGNMENT - beyond);
    static_cast<Head*>(place)[-1] = head;
    return place;
}
} // namespace

void* new_aligned(std::size_t bytes)
{
    void* const memory = new_aligned(bytes, std::nothrow);
    if (!memory)
        throw std::bad_alloc();
    return memory;
}

void* new_aligned(std::size_t bytes, const std::nothrow_t& nothrow)
{
    std::size_t size = bytes + PIXEL_ALIGNMENT;
    if (size < LEAST_FROM_SYSTEM)
        return give_out({::operator new(size, nothrow), 0});
    void* const block = inq_system_memory().take(size);
    return give_out({block, size});
}

void delete_aligned(void* memory)
{
    if (!memory)
        return;
    const Head head = static_cast<Head*>(memory)[-1];
    if (head.system_bytes == 0)
        ::operator delete(head.block);
    else
        inq_system_memory().give_back(head.block, head.system_bytes);
}
