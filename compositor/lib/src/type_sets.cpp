#include "compositor/lib/src/type_sets.h"

#include "compositor/lib/hdr/CDataDescriptor.h"
#include "compositor/lib/hdr/CNode.h"
#include "compositor/lib/hdr/CNodeDescriptor.h"
#include "compositor/lib/hdr/CNodeGenericOpDescriptor.h"
#include "kivlib/hdr/KIVLinkedList.h"

namespace {
constexpr int LAST_WILDCARD = 2;

template <class Keep> void keep_if(cdata_tDArray& types, Keep keep)
{
    int n = 0;
    for (int i = 0; i < types.size(); ++i)
        if (keep(types[i]))
            types[n++] = types[i];
    types.set_size(n);
}

bool inq_has(const cdata_tDArray& types, int type)
{
    for (int i = 0; i < types.size(); ++i)
        if (types[i] == type)
            return true;
    return false;
}

bool inq_can_union(int type)
{
    const CDataDescriptor* descriptor = CDataDescriptor::find_desc_for(type);
    return !descriptor || descriptor->inq_can_union_data();
}

bool inq_converts(int from, int to)
{
    const CDataDescriptor* descriptor = CDataDescriptor::find_desc_for(from);
    return descriptor && descriptor->inq_can_convert_to(to);
}
} // namespace

void intersect_types(cdata_tDArray& a, const cdata_tDArray& b)
{
    keep_if(a, [&](int type) { return inq_has(b, type); });
}

void keep_compositable_types(cdata_tDArray& types)
{
    keep_if(types, inq_can_union);
}

void expand_by_conversions(cdata_tDArray& types)
{
    for (int i = 0; i < types.size(); ++i) {
        const CDataDescriptor* descriptor = CDataDescriptor::find_desc_for(types[i]);
        const int* to = descriptor ? descriptor->inq_convertable_types() : nullptr;
        for (; to && *to != 0; ++to)
            types.insert_at(i + 1, *to);
    }
}

void remove_wildcards(cdata_tDArray& types)
{
    keep_if(types, [](int type) { return type < 1 || type > LAST_WILDCARD; });
}

bool inq_fits(const cdata_tDArray& offered, int type)
{
    if (inq_has(offered, type))
        return true;
    for (int i = 0; i < offered.size(); ++i)
        if (inq_converts(offered[i], type))
            return true;
    return false;
}

cdata_tDArray all_registered_types()
{
    cdata_tDArray types(0);
    if (const KIVLinkedList* descriptors = CDataDescriptor::inq_data_types_list())
        for (const auto* descriptor : descriptors->of<CDataDescriptor>())
            types.insert_tail(descriptor->inq_type());
    return types;
}

cdata_tDArray generic_types_of(const CNodeDescriptor* descriptor)
{
    cdata_tDArray types(0);
    const KIVLinkedList* generics = descriptor ? descriptor->inq_generic_descriptors() : nullptr;
    if (generics)
        for (const auto* generic : generics->of<CNodeGenericOpDescriptor>())
            types.insert_tail(generic->inq_data_type());
    return types;
}

void store_types(CNode& node, const cdata_tDArray& types)
{
    const cdata_tDArray* old = node.inq_types();
    if (!old || !old->is_equal_to(types))
        node.set_types(new cdata_tDArray(types));
}
