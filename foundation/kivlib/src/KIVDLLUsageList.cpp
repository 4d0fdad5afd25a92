#include "kivlib/hdr/KIVDLLUsageList.h"

#include "kivlib/hdr/Record.h"

KIV_STORED_CLASS(KIVDLLUsageList, -1);

namespace {
/// The class manager's descriptor of the name: the one there already, or the one that came in.
ClassDescriptor* settle(std::unique_ptr<ClassDescriptor> descriptor, KIVIStream& stream)
{
    if (ClassDescriptor* present = ClassManager::inq_main()->find_cd_for(descriptor->inq_name())) {
        stream.forget(descriptor.get());
        return present;
    }
    descriptor->did_load();
    return descriptor.release();
}
} // namespace

KIVDLLUsageList::KIVDLLUsageList(KIVIStream& stream) : KIVObject(stream)
{
    RecordReader reader_of_fields(stream);
    for (int left = stream.read_count(sizeof(short)); left > 0; --left) {
        std::unique_ptr<ClassDescriptor> descriptor;
        reader_of_fields.owned(descriptor);
        if (descriptor && !stream.inq_error_state())
            descriptors.push_back(settle(std::move(descriptor), stream));
    }
}

void KIVDLLUsageList::storer(KIVOStream& stream)
{
    KIVObject::storer(stream);
    stream << static_cast<int>(descriptors.size());
    for (const ClassDescriptor* descriptor : descriptors)
        stream.insert_with_class_hdr(descriptor);
}

void KIVDLLUsageList::record_object_usage(const KIVObject* object)
{
    ClassDescriptor* descriptor = object->inq_class_descriptor();
    if (descriptor && std::ranges::find(descriptors, descriptor) == descriptors.end())
        descriptors.push_back(descriptor);
}
