#pragma once

#include <cstddef>

class ObjectBlocks;

/// Memory of the ops, arrays, data and convertors of an evaluation. What is made while its tree of
/// ops is built lies side by side in blocks of the evaluation; all else is ordinary memory. Either
/// is given back by `release`.
class OpMemory {
public:
    /// The calling thread makes its objects in `blocks` until this ends.
    class Use {
    public:
        explicit Use(ObjectBlocks& blocks);
        Use(const Use&) = delete;
        Use& operator=(const Use&) = delete;
        ~Use();

    private:
        ObjectBlocks* outer; // null or not owned
    };

    static void* allocate(std::size_t size);
    static void release(void* memory) noexcept;
};

/// For the containers in these objects.
template <class Element> struct OpAllocator {
    using value_type = Element;

    OpAllocator() = default;
    template <class Other> OpAllocator(const OpAllocator<Other>&) {}

    Element* allocate(std::size_t n)
    {
        return static_cast<Element*>(OpMemory::allocate(n * sizeof(Element)));
    }
    void deallocate(Element* elements, std::size_t) noexcept { OpMemory::release(elements); }

    bool operator==(const OpAllocator&) const = default;
};
