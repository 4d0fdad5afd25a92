#pragma once

#include "kivlib/hdr/Owned.h"

#include <cstddef>
#include <cstdint>
#include <new>

class ClassDescriptor;
class KIVIStream;
class KIVObject;
class KIVOStream;

using KIVReadFunction = KIVObject* (*)(KIVIStream&);

/// Root of every stored class.
class KIVObject {
public:
    KIVObject() = default;

    /// Reads what `storer` wrote: nothing but the object's place in the stream's load table.
    explicit KIVObject(KIVIStream& stream);

    KIVObject(const KIVObject&) noexcept {}
    KIVObject& operator=(const KIVObject&) noexcept { return *this; }

    /// Writes the object's own data. Every override calls the base's first.
    virtual void storer(KIVOStream& stream);
    virtual ClassDescriptor* inq_class_descriptor() const;
    virtual const char* class_name() const;
    virtual ~KIVObject() = default;

    static void* operator new(std::size_t size);
    static void* operator new(std::size_t size, const std::nothrow_t&) noexcept;
    static void* operator new(std::size_t, void* place) noexcept { return place; }

    /// For classes without a record that hold what wants more room between its addresses.
    static void* operator new(std::size_t size, std::align_val_t alignment);

    /// `new (stream) Class(stream)`: where the stream wants the object whose header was just read,
    /// since others may refer to the place already. Null if there is no memory.
    static void* operator new(std::size_t size, KIVIStream& stream) noexcept;
    static void operator delete(void* memory) noexcept;
    static void operator delete(void* memory, std::align_val_t alignment) noexcept;
    static void operator delete(void* memory, const std::nothrow_t&) noexcept;

    /// After a constructor that threw: the stream forgets the object.
    static void operator delete(void* memory, KIVIStream& stream) noexcept;

    /// Whether a second insertion in one stream is a reference to the first.
    virtual bool reference_from_stream() const;
    virtual unsigned long hash() const;
    virtual bool is_same_as(KIVObject* other);
    virtual void dump_on(KIVOStream& stream) const;

    /// A copy, or null for a class that has none.
    virtual gsl::owner<KIVObject*> clone() const;
    virtual void update();

    /// Whether the object's class, or one up its chain of base names, is called `name`.
    bool is_kind_of(const char* name) const;

private:
    friend class LoadTable;
    friend class StoreTable;

    // The object's number in the stream that met it last: the stream's own mark, not part of the
    // object's value, and not copied.
    mutable std::uint32_t stream_epoch = 0;
    mutable std::uint32_t stream_number = 0;
};
