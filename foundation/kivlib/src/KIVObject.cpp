#include "kivlib/hdr/KIVObject.h"

#include "kivlib/hdr/KIVOStream.h"
#include "kivlib/hdr/ObjectBlocks.h"
#include "kivlib/hdr/StoredClass.h"

namespace {
ClassDescriptor* object_descriptor()
{
    static auto* descriptor = [] {
        auto* d = new ClassDescriptor("KIVObject", "", nullptr, -1, nullptr);
        d->set_stored_type(&stored::type_of<KIVObject>);
        return d;
    }();
    return descriptor;
}

const bool is_entered = (ClassManager::inq_main()->enter(object_descriptor()), true);
} // namespace

KIVObject::KIVObject(KIVIStream& stream)
{
    stream.add_to_load_table(this);
}

void* KIVObject::operator new(std::size_t size)
{
    return ::operator new(size);
}

void* KIVObject::operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return ::operator new(size, std::nothrow);
}

void* KIVObject::operator new(std::size_t size, std::align_val_t alignment)
{
    return ::operator new(size, alignment);
}

void* KIVObject::operator new(std::size_t size, KIVIStream& stream) noexcept
{
    return stream.storage_for_object(size);
}

void KIVObject::operator delete(void* memory) noexcept
{
    ObjectBlocks::release(memory);
}

void KIVObject::operator delete(void* memory, std::align_val_t alignment) noexcept
{
    ::operator delete(memory, alignment);
}

void KIVObject::operator delete(void* memory, const std::nothrow_t&) noexcept
{
    ::operator delete(memory);
}

void KIVObject::operator delete(void* memory, KIVIStream& stream) noexcept
{
    stream.forget_storage(memory);
    ObjectBlocks::release(memory);
}

void KIVObject::storer(KIVOStream&) {}

ClassDescriptor* KIVObject::inq_class_descriptor() const
{
    return object_descriptor();
}

const char* KIVObject::class_name() const
{
    return "KIVObject";
}

bool KIVObject::reference_from_stream() const
{
    return true;
}

unsigned long KIVObject::hash() const
{
    return std::hash<const KIVObject*>()(this);
}

bool KIVObject::is_same_as(KIVObject* other)
{
    return this == other;
}

void KIVObject::dump_on(KIVOStream& stream) const
{
    stream << class_name();
}

gsl::owner<KIVObject*> KIVObject::clone() const
{
    return nullptr;
}

void KIVObject::update() {}

bool KIVObject::is_kind_of(const char* name) const
{
    const ClassDescriptor* descriptor = inq_class_descriptor();
    return descriptor && descriptor->is_subclass_of(name);
}
