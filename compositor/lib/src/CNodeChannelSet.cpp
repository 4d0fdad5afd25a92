#include "compositor/lib/hdr/CNodeChannelSet.h"

#include "compositor/lib/hdr/CNode.h"
#include "compositor/lib/hdr/CNodeChannel.h"
#include "compositor/lib/hdr/CNodeConnection.h"
#include "compositor/lib/src/GraphChanges.h"
#include "kivlib/hdr/Record.h"

KIV_STORED_CLASS(CNodeChannelSet, -1);

namespace {
constexpr double NO_WIDTH = 1.0; // a set this narrow has no channels to lay out

/// A strip along the edge of the node: above it for outputs, below it for inputs.
KIVRectangle strip(double left, double right, double distance, bool is_input)
{
    const double outer = distance + CNode::inq_channel_height();
    return is_input ? KIVRectangle(left, -outer, right, -distance)
                    : KIVRectangle(left, distance, right, outer);
}

template <class Sides> double sum_of(const auto& channels, Sides width)
{
    double sum = 0.0;
    for (const auto& channel : channels)
        sum += (channel.get()->*width)();
    return sum;
}
} // namespace

CNodeChannelSet::CNodeChannelSet(CNode* node, int n_channels) : node(node)
{
    resize(n_channels);
}

CNodeChannelSet::~CNodeChannelSet()
{
    ++GraphChanges::our_count;
}

CNodeChannelSet::CNodeChannelSet(KIVIStream& stream) : KIVObject(stream)
{
    RecordReader r(stream);
    r.link(node);
    for (int left = stream.read_count(sizeof(short)); left > 0; --left) {
        std::unique_ptr<CNodeChannel> channel;
        r.owned(channel);
        if (!channel) {
            stream.set_error_state(KIVStream::BAD_DATA);
            return;
        }
        channel->set_channel_set(this);
        channel->holder = this;
        channel->index_in_holder = inq_n_channels();
        channels.push_back(std::move(channel));
    }
}

void CNodeChannelSet::storer(KIVOStream& stream)
{
    KIVObject::storer(stream);
    RecordWriter r(stream);
    r.link(node);
    r.value(inq_n_channels());
    for (const auto& channel : channels)
        r.owned(channel);
}

int CNodeChannelSet::find_channel_index(const CNodeChannel* channel) const
{
    for (int i = 0; i < inq_n_channels(); ++i)
        if (inq_channel(i) == channel)
            return i;
    return -1;
}

const std::vector<CNodeChannelSet::Feed>& CNodeChannelSet::inq_feeds() const
{
    if (feeds_at != GraphChanges::our_count)
        find_feeds();
    return feeds;
}

void CNodeChannelSet::find_feeds() const
{
    feeds.clear();
    for (int input = 0; input < inq_n_channels(); ++input)
        for (const auto* connection :
             inq_channel(input)->inq_connections_list()->of<CNodeConnection>()) {
            const CNodeChannel* output = connection ? connection->inq_output_channel() : nullptr;
            feeds.push_back({input, output ? output->find_channel_index() : 0,
                             output ? output->inq_node() : nullptr});
        }
    feeds_at = GraphChanges::our_count;
}

bool CNodeChannelSet::inq_is_input_channel_set() const
{
    return node && node->inq_inputs() == this;
}

bool CNodeChannelSet::inq_is_output_channel_set() const
{
    return node && node->inq_outputs() == this;
}

double CNodeChannelSet::inq_width() const
{
    return sum_of(channels, &CNodeChannel::inq_width);
}

double CNodeChannelSet::inq_min_width() const
{
    return sum_of(channels, &CNodeChannel::inq_min_width);
}

CNodeChannel* CNodeChannelSet::find_channel_at(const Vector2& point) const
{
    return find_channel_near(point, 0.0);
}

CNodeChannel* CNodeChannelSet::find_channel_near(const Vector2& point, double tolerance) const
{
    for (const auto& channel : channels) {
        KIVRectangle strip = channel->inq_border_rect();
        strip.add_border(tolerance);
        if (strip.is_inside(point))
            return channel.get();
    }
    return nullptr;
}

void CNodeChannelSet::set_width(double width)
{
    const double min_width = inq_min_width();
    if (min_width <= NO_WIDTH)
        return;
    const double scale = width / min_width;
    const double distance = node->inq_height() / 2;
    double left = -width / 2;
    for (const auto& channel : channels) {
        const bool is_last = channel == channels.back(); // rounding may leave no gap there
        const double right = is_last ? width / 2 : left + channel->inq_min_width() * scale;
        channel->set_border_rect(strip(left, right, distance, inq_is_input_channel_set()));
        left = right;
    }
}

void CNodeChannelSet::reset_position()
{
    const double distance = node->inq_height() / 2 - CNode::inq_border_thick();
    for (const auto& channel : channels) {
        const KIVRectangle& old = channel->inq_border_rect();
        channel->set_border_rect(
            strip(old.inq_left(), old.inq_right(), distance, inq_is_input_channel_set()));
    }
}

void CNodeChannelSet::set_n_channels(int n)
{
    resize(n);
    ++GraphChanges::our_count;
}

void CNodeChannelSet::resize(int n)
{
    channels.resize(static_cast<std::size_t>(std::max(n, 0)));
    for (int index = 0; index < inq_n_channels(); ++index) {
        if (inq_channel(index))
            continue;
        auto channel = std::make_unique<CNodeChannel>(this);
        channel->holder = this;
        channel->index_in_holder = index;
        channels[static_cast<std::size_t>(index)] = std::move(channel);
    }
}
