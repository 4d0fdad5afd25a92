#include "compositor/lib/hdr/CNodeOpArraySet.h"

#include "compositor/lib/hdr/CData.h"
#include "compositor/lib/hdr/CNodeOpArray.h"

CNodeOpArraySet::CNodeOpArraySet(CNodeOp* node, int n_channels)
    : n_channels(std::max(n_channels, 0)), arrays(static_cast<std::size_t>(this->n_channels)),
      node(node)
{}

CNodeOpArraySet::~CNodeOpArraySet() = default;

CNodeOpArray* CNodeOpArraySet::inq_nodeop_array(int i) const
{
    return 0 <= i && i < n_channels ? arrays[static_cast<std::size_t>(i)].get() : nullptr;
}

void CNodeOpArraySet::set_nodeop_array(int i, gsl::owner<CNodeOpArray*> array)
{
    std::unique_ptr<CNodeOpArray> taken(array);
    if (taken)
        taken->set_parent(this);
    if (0 <= i && i < n_channels)
        arrays[static_cast<std::size_t>(i)] = std::move(taken);
}

int CNodeOpArraySet::inq_n_connections(int channel) const
{
    const CNodeOpArray* array = inq_nodeop_array(channel);
    return array ? array->inq_n_connections() : 0;
}

CData* CNodeOpArraySet::inq_data(int channel, int connection) const
{
    const CNodeOpArray* array = inq_nodeop_array(channel);
    return array ? array->inq_data(connection) : nullptr;
}

void CNodeOpArraySet::copy_request_data_from(CData* data)
{
    for (const auto& array : arrays)
        if (CData* input = array ? array->inq_data() : nullptr)
            input->copy_request_data_from(data);
}

void CNodeOpArraySet::update_request_data()
{
    for (const auto& array : arrays)
        if (array)
            array->update_request_data();
}

void CNodeOpArraySet::auto_union_immediate_data(AbortPanel* abort)
{
    for (const auto& array : arrays)
        if (array)
            array->auto_union_immediate_data(abort);
}

void CNodeOpArraySet::auto_union_generated_data(AbortPanel* abort)
{
    for (const auto& array : arrays)
        if (array)
            array->auto_union_generated_data(abort);
}

void CNodeOpArraySet::auto_union_change_data()
{
    for (const auto& array : arrays)
        if (array)
            array->auto_union_change_data();
}

void CNodeOpArraySet::reset_union_data()
{
    for (const auto& array : arrays)
        if (array)
            array->reset_union_data();
}
