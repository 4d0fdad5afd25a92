#include "compositor/lib/test/SampleNodes.h"
#include "tests/support/OldRecord.h"

#include <gtest/gtest.h>

using namespace sample;

namespace {
/// A connection with one more field behind its own.
class MarkedConnection : public CNodeConnection {
    KIV_STORED(MarkedConnection, CNodeConnection);

public:
    explicit MarkedConnection(KIVIStream& stream) : CNodeConnection(stream) { stream >> mark; }

    int mark = 0;
};
KIV_STORED_CLASS(MarkedConnection, -1);
} // namespace

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

TEST(CNodeChannel, lies_on_a_strip_where_its_connections_are_met)
{
    CNodeGraph graph(nullptr);
    auto* mix = add<SampleMix>(graph);
    mix->set_position({100.0, 0.0});
    mix->inq_inputs()->set_width(60.0);
    for (int i = 0; i < 3; ++i)
        join(add<SampleSource>(graph), mix, 1);
    const CNodeChannel& second = *in(mix, 1);
    EXPECT_EQ(second.inq_connection_location(1, false), Vector2(15.0, -20.0));
    EXPECT_EQ(second.inq_connection_location(second.find_connection_at(2)), Vector2(25.0, -20.0));
    const std::pair<int, double> gaps[] = {{0, 2.5}, {1, 10.0}, {3, 27.5}};
    for (const auto& [index, x] : gaps)
        EXPECT_EQ(second.inq_connection_location(index, true), Vector2(x, -20.0)) << index;
    const std::pair<double, int> drops[] = {{-40.0, 0}, {0.0, 0}, {4.0, 0}, {6.0, 1}, {29.0, 3}};
    for (const auto& [x, index] : drops)
        EXPECT_EQ(second.find_new_con_index({x, 0.0}), index) << x;
    EXPECT_EQ(out(mix)->inq_connection_location(0, false), Vector2(0.0, 20.0));
    EXPECT_EQ(second.inq_connection_location(nullptr), Vector2());
    EXPECT_FALSE(mix->inq_can_connect_multiple_inputs(2));
    EXPECT_TRUE(mix->inq_can_connect_multiple_inputs(1));

    const CNodeChannelSet& inputs = *mix->inq_inputs();
    EXPECT_EQ(inputs.find_channel_at({1.0, -15.0}), &second);
    EXPECT_EQ(inputs.find_channel_at({1.0, -11.0}), nullptr);
    EXPECT_EQ(inputs.find_channel_near({1.0, -11.0}, 2.0), in(mix, 0));
    EXPECT_EQ(mix->inq_nearest_input_channel({100.0, 0.0}), 0);
    EXPECT_EQ(mix->inq_nearest_input_channel({101.0, 0.0}), 1);
    mix->reset_height(30.0);
    EXPECT_EQ(second.inq_border_rect().inq_top(), -13.0);
    EXPECT_EQ(mix->inq_bounds().inq_bottom(), -22.0);
    mix->toggle_collapse_state();
    EXPECT_EQ(mix->inq_bounds().inq_bottom(), -14.0);
    mix->reset_width(200.0);
    EXPECT_EQ(mix->inq_width(), 198.0);
    mix->reset_width(10.0);
    EXPECT_EQ(mix->inq_width(), out(mix)->inq_width() - 2.0);
}
