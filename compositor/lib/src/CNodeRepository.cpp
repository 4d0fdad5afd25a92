#include "compositor/lib/hdr/CNodeRepository.h"

#include "compositor/lib/hdr/CDataConvertor.h"
#include "compositor/lib/hdr/CDataDescriptor.h"
#include "compositor/lib/hdr/CNodeDescriptor.h"
#include "compositor/lib/hdr/CNodeGenericOpDescriptor.h"

CNodeRepository* CNodeRepository::the_repository = nullptr;

CNodeRepository* CNodeRepository::inq_repository()
{
    if (!the_repository)
        the_repository = new CNodeRepository;
    return the_repository;
}

CDataConvertorDescriptor* CNodeRepository::inq_convertor(int from_type, int to_type) const
{
    for (auto* convertor : convertors.of<CDataConvertorDescriptor>())
        if (convertor->inq_from_type() == from_type && convertor->inq_to_type() == to_type)
            return convertor;
    return nullptr;
}

void CNodeRepository::add_descriptor(CNodeDescriptor* descriptor)
{
    descriptors.add(descriptor);
    store_generics();
}

void CNodeRepository::remove_descriptor(const CNodeDescriptor* descriptor)
{
    descriptors.remove(descriptor);
    if (const KIVLinkedList* generics = descriptor->inq_generic_descriptors())
        for (auto* generic : generics->of<CNodeGenericOpDescriptor>())
            pending_generics.add(generic);
    store_generics();
}

void CNodeRepository::add_generic(CNodeGenericOpDescriptor* generic)
{
    pending_generics.add(generic);
    store_generics();
}

void CNodeRepository::remove_generic(const CNodeGenericOpDescriptor* generic)
{
    pending_generics.remove(generic);
    for (auto* descriptor : descriptors.of<CNodeDescriptor>())
        descriptor->remove_generic(generic);
}

void CNodeRepository::add_convertor(CDataConvertorDescriptor* convertor)
{
    convertors.add(convertor);
    if (auto* data_type = CDataDescriptor::find_desc_for(convertor->inq_from_type()))
        data_type->add_conversion_from(convertor->inq_to_type());
}

void CNodeRepository::add_data_descriptor(CDataDescriptor* descriptor)
{
    data_descriptors.add(descriptor);
}

void CNodeRepository::store_generics()
{
    for (auto* generic : pending_generics.of<CNodeGenericOpDescriptor>())
        if (store_generic(generic))
            pending_generics.remove(generic);
}

/// Whether any node class was waiting for it.
bool CNodeRepository::store_generic(CNodeGenericOpDescriptor* generic)
{
    bool has_match = false;
    for (auto* descriptor : descriptors.of<CNodeDescriptor>()) {
        if (!(descriptor->inq_name() == generic->inq_node_type()))
            continue;
        descriptor->add_generic(generic);
        has_match = true;
    }
    return has_match;
}
