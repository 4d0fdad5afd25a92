#include "compositor/lib/test/SampleNodes.h"
#include "tests/support/Captured.h"
#include "tests/support/OldRecord.h"

#include <gtest/gtest.h>

using namespace sample;

namespace {
/// A mixer with three ordered connections on its first input, whose strip runs from 0 to 30.
struct ThreeInOrder {
    ThreeInOrder()
    {
        for (auto& source : sources) {
            source.reset(new_node<SampleSource>());
            connections.emplace_back(join(source.get(), mix.get()));
        }
        in(mix.get())->set_border_rect(KIVRectangle(0.0, -20.0, 30.0, -12.0));
    }
    std::unique_ptr<SampleMix> mix{new_node<SampleMix>()};
    std::unique_ptr<SampleSource> sources[3];
    std::vector<std::unique_ptr<CNodeConnection>> connections;
};

/// A connection with one more field behind its own.
class MarkedConnection : public CNodeConnection {
    KIV_STORED(MarkedConnection, CNodeConnection);

public:
    explicit MarkedConnection(KIVIStream& stream) : CNodeConnection(stream) { stream >> mark; }

    int mark = 0;
};
KIV_STORED_CLASS(MarkedConnection, -1);
} // namespace

TEST(CNodeChannelSet, lays_its_strips_out_along_the_edge_of_the_node)
{
    const std::unique_ptr<SampleMix> mix(new_node<SampleMix>());
    CNodeChannelSet* inputs = mix->inq_inputs();
    inputs->set_n_channels(3);
    inputs->set_width(150.0);
    EXPECT_EQ(inputs->inq_channel(0)->inq_border_rect(), KIVRectangle(-75.0, -20.0, -25.0, -12.0));
    EXPECT_EQ(inputs->inq_channel(1)->inq_border_rect(), KIVRectangle(-25.0, -20.0, 25.0, -12.0));
    EXPECT_EQ(inputs->inq_channel(2)->inq_border_rect().inq_right(), 75.0);
    EXPECT_EQ(inputs->inq_width(), 150.0);
    EXPECT_EQ(inputs->inq_min_width(), 150.0);

    CNodeChannelSet* outputs = mix->inq_outputs();
    outputs->set_width(10.0);
    EXPECT_EQ(out(mix.get())->inq_border_rect(), KIVRectangle(-5.0, 12.0, 5.0, 20.0));
    mix->reset_height(42.0);
    EXPECT_EQ(out(mix.get())->inq_border_rect(), KIVRectangle(-5.0, 19.0, 5.0, 27.0));
    EXPECT_EQ(inputs->inq_channel(1)->inq_border_rect(), KIVRectangle(-25.0, -27.0, 25.0, -19.0));

    inputs->set_n_channels(0);
    inputs->set_width(100.0);
    EXPECT_EQ(inputs->inq_width(), 0.0);
}

TEST(CNodeChannel, carries_the_type_that_its_place_declares)
{
    const std::unique_ptr<SampleMix> mix(new_node<SampleMix>());
    EXPECT_EQ(in(mix.get(), 1)->find_data_type(), PAINT);
    EXPECT_EQ(out(mix.get())->find_data_type(), PAINT);
    const CNodeChannel stranger(mix->inq_inputs());
    EXPECT_EQ(stranger.find_channel_index(), -1);
    EXPECT_EQ(stranger.find_data_type(), 0);
    EXPECT_TRUE(stranger.inq_can_order_data());
    const std::unique_ptr<SampleSoundLine> sound(new_node<SampleSoundLine>());
    EXPECT_FALSE(in(sound.get())->inq_can_order_data());
}

TEST(CNodeChannel, puts_connections_at_the_head_or_at_an_index)
{
    CNodeChannel channel(nullptr);
    CNodeConnection a(nullptr, nullptr);
    CNodeConnection b(nullptr, nullptr);
    CNodeConnection c(nullptr, nullptr);
    channel.add_connection(&a, -1);
    channel.add_connection(&b, -1);
    channel.add_connection(&c, 1);
    EXPECT_EQ(channel.find_index_of_connection(&b), 0);
    EXPECT_EQ(channel.find_index_of_connection(&c), 1);
    EXPECT_EQ(channel.find_connection_at(2), &a);
    EXPECT_EQ(channel.find_connection_at(3), nullptr);
    channel.remove_connection(&c);
    const Captured captured;
    channel.remove_connection(&c);
    EXPECT_NE(captured.inq_errors().find("compositor/lib/src/CNodeChannel"), std::string::npos);
    EXPECT_NE(captured.inq_errors().find("Program error.\n"), std::string::npos);
    EXPECT_EQ(channel.inq_connections_list()->count(), 2);
}

TEST(CNodeChannel, spreads_ordered_connections_along_its_outer_edge)
{
    const ThreeInOrder order;
    const CNodeChannel* channel = in(order.mix.get());
    EXPECT_EQ(channel->inq_connection_location(order.connections[1].get()), Vector2(15.0, -20.0));
    EXPECT_EQ(channel->inq_connection_location(1, true), Vector2(10.0, -20.0));
    EXPECT_EQ(channel->inq_connection_location(0, true), Vector2(2.5, -20.0));
    EXPECT_EQ(channel->inq_connection_location(3, true), Vector2(27.5, -20.0));
    const CNodeConnection stranger(nullptr, nullptr);
    EXPECT_EQ(channel->inq_connection_location(&stranger), Vector2());

    const CNode* source = order.sources[0].get();
    EXPECT_EQ(out(source)->inq_connection_location(order.connections[0].get()), Vector2(0.0, 20.0));
}

TEST(CNodeChannel, finds_the_place_in_the_order_for_a_dropped_connection)
{
    const ThreeInOrder order;
    const CNodeChannel* channel = in(order.mix.get());
    EXPECT_EQ(channel->find_new_con_index(Vector2(0.0, 0.0)), 0);
    EXPECT_EQ(channel->find_new_con_index(Vector2(-100.0, 0.0)), 0);
    EXPECT_EQ(channel->find_new_con_index(Vector2(6.0, 0.0)), 1);
    EXPECT_EQ(channel->find_new_con_index(Vector2(29.0, 0.0)), 3);
    EXPECT_EQ(channel->find_new_con_index(Vector2(1e300, 0.0)), 3);
    EXPECT_EQ(in(order.mix.get(), 1)->find_new_con_index(Vector2()), 0);
    EXPECT_EQ(out(order.sources[0].get())->find_new_con_index(Vector2(-100.0, 0.0)), 1);
}

TEST(CNodeChannel, reads_old_records)
{
    OldRecord oldest("CNodeChannel", 91);
    oldest.nested("ChannelDataType", 1, [](OldRecord& r) {
        r << 5;
        r.insert_with_class_hdr(nullptr);
        r << 1 << 5;
    });
    oldest.nested("KIVLinkedList", 1, [](OldRecord& r) { r << 0; });
    const auto channel = oldest.read<CNodeChannel>();
    ASSERT_TRUE(channel);
    EXPECT_TRUE(channel->inq_connections_list()->inq_is_empty());

    OldRecord before_macros("CNodeChannel", 143);
    before_macros.nested("KIVLinkedList", 1, [](OldRecord& r) { r << 0; });
    const auto later = before_macros.read<CNodeChannel>();
    ASSERT_TRUE(later);
    EXPECT_FALSE(later->inq_is_in_macro());
    later->set_is_in_macro(true);
    EXPECT_TRUE(stored_and_read(*later)->inq_is_in_macro());
}

TEST(CNodeConnection, drops_the_number_of_middle_versions)
{
    for (const int version : {101, 102, 131, 132}) {
        OldRecord old("MarkedConnection", version);
        old.insert_with_class_hdr(nullptr);
        old.insert_with_class_hdr(nullptr);
        if (102 <= version && version <= 131)
            old << 99;
        old << 7;
        const auto connection = old.read<MarkedConnection>();
        ASSERT_TRUE(connection) << version;
        EXPECT_EQ(connection->mark, 7) << version;
    }
}
