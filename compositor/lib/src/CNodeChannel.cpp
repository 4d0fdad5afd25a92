#include "compositor/lib/hdr/CNodeChannel.h"

#include "compositor/lib/hdr/CDataDescriptor.h"
#include "compositor/lib/hdr/CNode.h"
#include "compositor/lib/hdr/CNodeConnection.h"
#include "compositor/lib/hdr/CNodeDescriptor.h"
#include "compositor/lib/hdr/ChannelDataType.h"
#include "compositor/lib/src/GraphChanges.h"
#include "kivlib/hdr/Record.h"
#include "kivlib/hdr/report_error.h"

KIV_STORED_CLASS(CNodeChannel, 144);

namespace {
constexpr FormatVersions HAS_DATA_TYPE = before(92);
constexpr FormatVersions HAS_IN_MACRO = since(144);
constexpr double NARROWEST_STRIP = 1e-06;

/// Looked for from both ends: in a wide graph that goes node by node it is near one of them.
KIVLinkOb* find_link(const KIVLinkedList& list, const KIVObject* object)
{
    KIVLinkOb* front = list.inq_first_link();
    KIVLinkOb* back = list.inq_last_link();
    for (int left = list.count(); left > 0; left -= 2) {
        if (front->value() == object)
            return front;
        if (back->value() == object)
            return back;
        front = front->inq_next();
        back = back->inq_prev();
    }
    return nullptr;
}
} // namespace

CNodeChannel::CNodeChannel(CNodeChannelSet* channel_set)
    : channel_set(channel_set), connections(std::make_unique<KIVLinkedList>(false))
{
    connections->count_changes_in(&GraphChanges::our_count);
}

CNodeChannel::~CNodeChannel() = default;

template <class Record> void CNodeChannel::record(Record& r)
{
    r.template dropped_owned<ChannelDataType>(HAS_DATA_TYPE);
    r.owned(connections);
    r.value(is_in_macro, HAS_IN_MACRO);
}

CNodeChannel::CNodeChannel(KIVIStream& stream) : KIVObject(stream)
{
    RecordReader r(stream);
    record(r);
    if (!connections)
        connections = std::make_unique<KIVLinkedList>(false);
    connections->count_changes_in(&GraphChanges::our_count);
}

void CNodeChannel::storer(KIVOStream& stream)
{
    KIVObject::storer(stream);
    RecordWriter r(stream);
    record(r);
}

void CNodeChannel::set_channel_set(CNodeChannelSet* set)
{
    channel_set = set;
    ++GraphChanges::our_count;
}

int CNodeChannel::find_channel_index() const
{
    return channel_set && channel_set == holder ? index_in_holder : -1;
}

int CNodeChannel::find_data_type() const
{
    const CNode* node = inq_node();
    const int index = find_channel_index();
    const CNodeDescriptor* descriptor = node && index >= 0 ? node->inq_desc() : nullptr;
    if (!descriptor)
        return 0;
    return channel_set->inq_is_input_channel_set() ? descriptor->inq_input_type(index)
                                                   : descriptor->inq_output_type(index);
}

bool CNodeChannel::inq_can_order_data() const
{
    const CDataDescriptor* data_type = CDataDescriptor::find_desc_for(find_data_type());
    return !data_type || data_type->inq_can_order_data();
}

CNodeConnection* CNodeChannel::find_connection_at(int index) const
{
    return static_cast<CNodeConnection*>(connections->at_index(index));
}

int CNodeChannel::find_index_of_connection(const CNodeConnection* connection) const
{
    return connections->find_index_of(connection);
}

double CNodeChannel::inq_min_width() const
{
    return CNode::inq_min_channel_width();
}

bool CNodeChannel::is_ordered_input() const
{
    return channel_set && channel_set->inq_is_input_channel_set() && inq_can_order_data();
}

/// How far apart the connections stand.
double CNodeChannel::inq_step() const
{
    return inq_width() / std::max(connections->count(), 1);
}

Vector2 CNodeChannel::inq_connection_location(const CNodeConnection* connection) const
{
    const int index = find_index_of_connection(connection);
    return index < 0 ? Vector2() : inq_connection_location(index, false);
}

Vector2 CNodeChannel::inq_connection_location(int index, bool between) const
{
    const double left = border_rect.inq_left();
    const double right = border_rect.inq_right();
    const double outer_edge =
        border_rect.inq_top() > 0.0 ? border_rect.inq_top() : border_rect.inq_bottom();
    if (!is_ordered_input())
        return {(left + right) / 2, outer_edge};
    const double step = inq_step();
    if (!between)
        return {left + (index + 0.5) * step, outer_edge};
    if (index <= 0)
        return {left + 0.25 * step, outer_edge};
    if (index >= connections->count())
        return {right - 0.25 * step, outer_edge};
    return {left + index * step, outer_edge};
}

int CNodeChannel::find_new_con_index(const Vector2& point) const
{
    const int count = connections->count();
    const bool is_output = channel_set && channel_set->inq_is_output_channel_set();
    if (is_output || inq_width() <= NARROWEST_STRIP || count == 0)
        return count;
    const double step = inq_step();
    const double index = std::floor((point.x() + step / 2 - border_rect.inq_left()) / step);
    return static_cast<int>(std::clamp(index, 0.0, static_cast<double>(count)));
}

void CNodeChannel::add_connection(CNodeConnection* connection, int index)
{
    if (index < 0)
        connections->add_first(connection);
    else
        attach_connection(connection, index);
}

void CNodeChannel::attach_connection(CNodeConnection* connection, int index)
{
    connections->add_at_index(index, connection);
}

void CNodeChannel::remove_connection(CNodeConnection* connection)
{
    if (KIVLinkOb* link = find_link(*connections, connection))
        delete connections->remove_link(link);
    else
        report_here() << "Program error.\n";
}
