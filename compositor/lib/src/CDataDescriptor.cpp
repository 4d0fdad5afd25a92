#include "compositor/lib/hdr/CDataDescriptor.h"

#include "compositor/lib/hdr/CData.h"
#include "compositor/lib/hdr/CNodeRepository.h"
#include "compositor/lib/hdr/DAGOpTypeCompositor.h"
#include "compositor/lib/hdr/DataType.h"
#include "compositor/lib/src/GraphChanges.h"

namespace {
KIVLinkedList* data_types = nullptr;

template <class Fits> CDataDescriptor* find_data_type(Fits fits)
{
    if (data_types)
        for (CDataDescriptor* descriptor : data_types->of<CDataDescriptor>())
            if (fits(*descriptor))
                return descriptor;
    return nullptr;
}

std::span<const int> listed(const int* types)
{
    std::size_t count = 0;
    while (types && types[count] != NO_DATA_TYPE)
        ++count;
    return {types, count};
}
} // namespace

CDataDescriptor::CDataDescriptor(const char* class_name, const char* user_type_name, int type,
                                 NewDataFunction new_data_fn, bool can_union,
                                 const int* conversions, bool can_order)
    : data_class_name(class_name), user_type_name(user_type_name), type(type),
      new_data_fn(new_data_fn), can_union(can_union), can_order(can_order), conversions(conversions)
{
    if (!data_types)
        data_types = new KIVLinkedList(false);
    data_types->add(this);
    ++GraphChanges::our_count;
    CNodeRepository::inq_repository()->add_data_descriptor(this);
}

const KIVLinkedList* CDataDescriptor::inq_data_types_list()
{
    return data_types;
}

CDataDescriptor* CDataDescriptor::find_desc_for(const char* class_name)
{
    const std::string_view name(class_name ? class_name : "");
    return find_data_type([&](const CDataDescriptor& d) { return name == d.data_class_name; });
}

CDataDescriptor* CDataDescriptor::find_desc_for(int type)
{
    return find_data_type([&](const CDataDescriptor& d) { return type == d.type; });
}

gsl::owner<CData*> CDataDescriptor::new_data(int type)
{
    const CDataDescriptor* descriptor = find_desc_for(type);
    return descriptor ? descriptor->new_data() : nullptr;
}

bool CDataDescriptor::inq_can_convert_to(int wanted) const
{
    return std::ranges::count(listed(conversions), wanted) > 0;
}

void CDataDescriptor::add_conversion_from(int to_type)
{
    const std::span<const int> known = listed(conversions);
    grown_lists.push_back(std::make_unique<int[]>(known.size() + 2));
    int* grown = grown_lists.back().get();
    *std::ranges::copy(known, grown).out = to_type; // NO_DATA_TYPE is behind it
    conversions = grown;
    ++GraphChanges::our_count;
}

gsl::owner<DAGOpChannelOut*> CDataDescriptor::inq_td_dag_op(const KIVString&, DAGOpChannel*)
{
    return nullptr;
}

gsl::owner<DAGOpChannelIn*> CDataDescriptor::inq_bu_dag_op(const KIVString& name,
                                                           DAGOpChannel* channel)
{
    return name == "type_checker" ? new DAGOpTypeCompositor(channel) : nullptr;
}
