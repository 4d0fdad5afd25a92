#include "kivlib/hdr/ClassDescriptor.h"

#include "kivlib/hdr/Record.h"
#include "kivlib/hdr/StoredClass.h"
#include "kivlib/src/module_folder.h"

namespace {
KIVObject* read_descriptor(KIVIStream& stream)
{
    return new (stream) ClassDescriptor(stream);
}

ClassDescriptor* descriptor_of_descriptors()
{
    static auto* descriptor = [] {
        auto* d = new ClassDescriptor("ClassDescriptor", "KIVObject", read_descriptor, -1, nullptr);
        d->set_stored_type(&stored::type_of<ClassDescriptor>);
        return d;
    }();
    return descriptor;
}

const bool is_entered = (ClassManager::inq_main()->enter(descriptor_of_descriptors()), true);
} // namespace

ClassDescriptor::ClassDescriptor(const char* name, const char* base_name, KIVReadFunction reader,
                                 int version, ClassManager* manager)
    : name(name), base_name(base_name), reader(reader), version(version)
{
    if (manager)
        manager->enter(this);
}

ClassDescriptor::ClassDescriptor(KIVIStream& stream) : KIVObject(stream)
{
    stream >> name >> base_name >> version;
}

void ClassDescriptor::storer(KIVOStream& stream)
{
    KIVObject::storer(stream);
    stream << name << base_name << version;
}

ClassDescriptor* ClassDescriptor::inq_class_descriptor_s()
{
    return descriptor_of_descriptors();
}

ClassDescriptor* ClassDescriptor::read_from(KIVIStream& stream)
{
    return stored::read_as<ClassDescriptor>(stream);
}

void ClassDescriptor::set_stored_type(const StoredType* stored_type)
{
    type = stored_type;
    ClassDescriptor* present = ClassManager::inq_main()->find_cd_for(name);
    if (present && !present->type)
        present->type = stored_type;
}

void ClassDescriptor::setup_func_refs_from(const ClassDescriptor* other)
{
    reader = other->reader;
    type = other->type;
}

void ClassDescriptor::did_load()
{
    ClassManager::inq_main()->enter(this);
}

bool ClassDescriptor::is_subclass_of(const KIVString& wanted) const
{
    const ClassManager* manager = ClassManager::inq_main();
    int steps = 0;
    for (const ClassDescriptor* d = this; d; d = manager->find_cd_for(d->base_name)) {
        if (d->name == wanted || d->base_name == wanted)
            return true;
        if (++steps > 1000) // base names that a file has made a ring of
            return false;
    }
    return false;
}

int ClassDescriptor::inq_stored_version() const
{
    int newest = std::max(inq_version(), 1);
    for (const StoredType* t = type; t; t = t->base)
        if (const ClassDescriptor* record = t->record())
            newest = std::max(newest, record->inq_version());
    return newest;
}

void ClassDescriptor::load_dll() const
{
    load_module_of_class(name);
}
