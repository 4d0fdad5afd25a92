#include "compositor/lib/hdr/OpMemory.h"

#include "kivlib/hdr/ObjectBlocks.h"

namespace {
thread_local ObjectBlocks* blocks_in_use = nullptr; // not owned
}

OpMemory::Use::Use(ObjectBlocks& blocks) : outer(std::exchange(blocks_in_use, &blocks)) {}

OpMemory::Use::~Use()
{
    blocks_in_use = outer;
}

void* OpMemory::allocate(std::size_t size)
{
    void* const memory = blocks_in_use ? blocks_in_use->allocate(size) : nullptr;
    return memory ? memory : ::operator new(size);
}

void OpMemory::release(void* memory) noexcept
{
    ObjectBlocks::release(memory);
}
