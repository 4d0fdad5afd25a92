#include "compositor/lib/hdr/ChannelDataType.h"

#include "compositor/lib/hdr/CNodeChannel.h"
#include "kivlib/hdr/Record.h"

KIV_STORED_CLASS(ChannelDataType, -1);

namespace {
constexpr int NO_SINGLE_TYPE = -1;
}

ChannelDataType::ChannelDataType(int type) : current_type(type), types{type} {}

ChannelDataType::ChannelDataType(int n_types, const int* types)
    : current_type(NO_SINGLE_TYPE), types(types, types + std::max(n_types, 0))
{}

ChannelDataType::ChannelDataType(KIVIStream& stream) : KIVObject(stream)
{
    RecordReader r(stream);
    r.value(current_type);
    r.link(channel);
    if (channel)
        return;
    types.resize(static_cast<std::size_t>(stream.read_count(sizeof(int))));
    for (int& type : types)
        r.value(type);
}

void ChannelDataType::storer(KIVOStream& stream)
{
    KIVObject::storer(stream);
    RecordWriter r(stream);
    r.value(current_type);
    r.link(channel);
    if (channel)
        return;
    r.value(inq_n_types());
    for (const int type : types)
        r.value(type);
}

bool ChannelDataType::inq_is_allowable_type(int type) const
{
    return !channel && std::ranges::count(types, type) > 0;
}

bool ChannelDataType::inq_can_accept(const ChannelDataType& other) const
{
    if (other.current_type != NO_SINGLE_TYPE)
        return inq_is_allowable_type(other.current_type);
    return std::ranges::any_of(types, [&](int type) { return other.inq_is_allowable_type(type); });
}
