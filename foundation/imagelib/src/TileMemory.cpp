#include "imagelib/src/TileMemory.h"

#include <new>
#include <sys/mman.h>

/// The number of pieces that a process may have from the system is limited.
bool TileMemory::is_of_system() const
{
    constexpr std::size_t LEAST_BYTES = 1 << 16;
    return bytes >= LEAST_BYTES;
}

TileMemory::TileMemory(std::size_t bytes) : bytes(bytes)
{
    if (!is_of_system()) {
        data = static_cast<unsigned char*>(::operator new(bytes, std::nothrow));
        return;
    }
    void* memory =
        ::mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    data = memory == MAP_FAILED ? nullptr : static_cast<unsigned char*>(memory);
}

TileMemory::~TileMemory()
{
    if (!is_of_system())
        ::operator delete(data);
    else if (data)
        ::munmap(data, bytes);
}
