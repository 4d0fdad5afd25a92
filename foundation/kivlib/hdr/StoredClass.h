#pragma once

#include "kivlib/hdr/ClassDescriptor.h"
#include "kivlib/hdr/ClassManager.h"
#include "kivlib/hdr/KIVIStream.h"
#include "kivlib/hdr/Owned.h"

#include <type_traits>

// The members that every stored class has, written once. KIV_STORED(Class, Base) stands first in
// the class body and KIV_STORED_CLASS(Class, version) once in the source file. An abstract class
// takes KIV_STORED_ABSTRACT: it has a record and no reader.

namespace stored {

template <class Class>
inline constexpr StoredType type_of{&typeid(Class), &type_of<typename Class::Base>, sizeof(Class),
                                    Class::inq_class_descriptor_s};
template <>
inline constexpr StoredType type_of<KIVObject>{&typeid(KIVObject), nullptr, sizeof(KIVObject),
                                               []() -> ClassDescriptor* { return nullptr; }};

/// The next object of the stream; null for a null, and with an error for an object of another
/// class. The object may still be under construction, so its own type is not asked.
template <class Class> Class* read_as(KIVIStream& stream)
{
    KIVObject* object = stream.read_object(Class::inq_class_descriptor_s());
    return static_cast<Class*>(static_cast<void*>(object)); // single inheritance: one address
}

/// Enters the class with the class manager. A record already there under its name wins.
template <class Class> bool enter(int version, const char* base_name = Class::inq_base_name_s())
{
    static_assert(std::is_same_v<typename Class::Self, Class>, "KIV_STORED names another class");
    static_assert(std::is_base_of_v<typename Class::Base, Class>);
    static_assert(alignof(Class) <= __STDCPP_DEFAULT_NEW_ALIGNMENT__, "streams give no more");
    ClassManager* manager = ClassManager::inq_main();
    auto* descriptor = new ClassDescriptor(Class::inq_class_name_s(), base_name,
                                           Class::inq_read_constructor(), version, nullptr);
    descriptor->set_stored_type(&type_of<Class>);
    manager->enter(descriptor);
    Class::set_class_descriptor_s(manager->find_cd_for(Class::inq_class_name_s()));
    return true;
}

} // namespace stored

// clang-format off
#define KIV_STORED_MEMBERS(Class, BaseClass)                                                       \
public:                                                                                            \
    using Self = Class;                                                                            \
    using Base = BaseClass;                                                                        \
    static constexpr const char* inq_class_name_s() { return #Class; }                             \
    static constexpr const char* inq_base_name_s() { return #BaseClass; }                          \
    static constexpr KIVReadFunction inq_read_constructor() { return reader; }                     \
    static Class* read_from(KIVIStream& stream) { return stored::read_as<Class>(stream); }         \
    static ClassDescriptor* inq_class_descriptor_s() { return our_descriptor; }                    \
    static void set_class_descriptor_s(ClassDescriptor* d) { our_descriptor = d; }                 \
    ClassDescriptor* inq_class_descriptor() const override { return our_descriptor; }              \
    const char* class_name() const override { return #Class; }                                     \
                                                                                                   \
private:                                                                                           \
    inline static ClassDescriptor* our_descriptor = nullptr

#define KIV_STORED(Class, BaseClass)                                                               \
private:                                                                                           \
    static gsl::owner<Class*> reader_inline(KIVIStream& stream) { return new (stream) Class(stream); } \
    static KIVObject* reader(KIVIStream& stream) { return reader_inline(stream); }                 \
    KIV_STORED_MEMBERS(Class, BaseClass)

#define KIV_STORED_ABSTRACT(Class, BaseClass)                                                      \
private:                                                                                           \
    static constexpr KIVReadFunction reader = nullptr;                                             \
    KIV_STORED_MEMBERS(Class, BaseClass)
// clang-format on

/// In the source file: enters the class when the library is loaded. A third argument is the base
/// name of the record where it is not the C++ base.
#define KIV_STORED_CLASS(Class, ...)                                                               \
    [[maybe_unused]] static const bool Class##_is_entered = stored::enter<Class>(__VA_ARGS__)
