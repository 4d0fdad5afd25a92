#include "compositor/lib/hdr/ChannelDataType.h"
#include "compositor/lib/hdr/typeid.h"
#include "tests/support/Captured.h"
#include "tests/support/OldRecord.h"

#include <gtest/gtest.h>

namespace {
constexpr int FROM = 7101;
constexpr int TO = 7102;
constexpr int LATER = 7103;
} // namespace

TEST(typeid_registry, numbers_names_and_warns_of_a_second_use)
{
    const int first = register_type("typeid_test first");
    EXPECT_EQ(register_type("typeid_test second"), first + 1);
    const KIVString& name = inq_type_name(first);
    const Captured captured;
    EXPECT_EQ(register_type("typeid_test first"), first);
    EXPECT_NE(
        captured.inq_errors().find("Warning: cdata type 'typeid_test first'already registered.\n"),
        std::string::npos);
    EXPECT_NE(captured.inq_errors().find("compositor/lib/src/typeid"), std::string::npos);
    EXPECT_EQ(&inq_type_name(first), &name);
    EXPECT_EQ(inq_type_name(-1), "Unknown");
    EXPECT_EQ(inq_type_name(first + 2), "Unknown");
}

TEST(ChannelDataType, accepts_by_its_list_and_never_for_a_channel)
{
    const int both[] = {FROM, TO};
    const ChannelDataType one(FROM);
    const ChannelDataType other(LATER);
    const ChannelDataType many(2, both);
    CNodeChannel* channel = nullptr;
    const ChannelDataType listless(channel);
    EXPECT_TRUE(many.inq_can_accept(one));
    EXPECT_FALSE(many.inq_can_accept(other));
    EXPECT_TRUE(one.inq_can_accept(many));
    EXPECT_FALSE(other.inq_can_accept(many));
    EXPECT_FALSE(listless.inq_can_accept(one));

    const auto back = stored_and_read(many);
    ASSERT_TRUE(back);
    EXPECT_EQ(back->inq_current_type(), -1);
    EXPECT_EQ(back->inq_n_types(), 2);
    EXPECT_TRUE(back->inq_is_allowable_type(TO));
}
