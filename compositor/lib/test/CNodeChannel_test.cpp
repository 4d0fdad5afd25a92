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
