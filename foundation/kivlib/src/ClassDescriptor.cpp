#include "kivlib/hdr/ClassDescriptor.h"

#include "kivlib/hdr/KIVOStream.h"
#include "kivlib/hdr/ModuleFolder.h"
#include "kivlib/hdr/Record.h"
#include "kivlib/hdr/StoredClass.h"
#include "kivlib/hdr/report_error.h"

namespace {
KIVObject* read_descriptor(KIVIStream& stream)
{
    return new (stream) ClassDescriptor(stream);
}

ClassDescriptor*& descriptor_of_descriptors()
{
    static ClassDescriptor* descriptor = [] {
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

ClassDescriptor::ClassDescriptor(KIVIStream& stream) : KIVObject(stream), is_from_stream(true)
{
    stream >> name >> base_name >> version;
    if (name.is_null())
        stream.set_error_state(KIVStream::BAD_DATA);
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

void ClassDescriptor::set_class_descriptor_s(ClassDescriptor* descriptor)
{
    descriptor_of_descriptors() = descriptor;
}

KIVReadFunction ClassDescriptor::inq_read_constructor()
{
    return read_descriptor;
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
    base_name = other->base_name;
    version = other->version;
    reader = other->reader;
    type = other->type;
    is_from_stream = other->is_from_stream;
}

void ClassDescriptor::did_load()
{
    ClassManager::inq_main()->enter(this);
}

bool ClassDescriptor::has_in_chain(std::string_view wanted) const
{
    if (wanted.empty() || name.str() == wanted)
        return !wanted.empty();
    constexpr int MOST_BASES = 1000; // base names that a file has made a ring of
    const ClassManager* manager = ClassManager::inq_main();
    const ClassDescriptor* d = this;
    for (int steps = 0; d && !d->base_name.is_null() && steps < MOST_BASES; ++steps) {
        if (d->base_name.str() == wanted)
            return true;
        d = manager->find_cd_for(d->base_name);
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
    KIVString fault;
    if (!ModuleFolder::load_class(name, fault) && !fault.is_null())
        report_here() << fault << "\n";
}
