#include "kivlib/hdr/stack_left.h"

#include <pthread.h>

namespace {
constexpr std::uintptr_t RESERVE = 512 * 1024; // for what runs below the deepest nesting

std::uintptr_t find_lowest_address()
{
    pthread_attr_t attributes;
    if (pthread_getattr_np(pthread_self(), &attributes) != 0)
        return 0;
    void* lowest = nullptr;
    std::size_t size = 0;
    pthread_attr_getstack(&attributes, &lowest, &size);
    pthread_attr_destroy(&attributes);
    return reinterpret_cast<std::uintptr_t>(lowest);
}
} // namespace

std::uintptr_t inq_stack_floor()
{
    thread_local const std::uintptr_t floor = find_lowest_address() + RESERVE;
    return floor;
}
