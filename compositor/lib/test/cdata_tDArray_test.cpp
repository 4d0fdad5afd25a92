#include "compositor/lib/hdr/cdata_tDArray.h"
#include "kivlib/hdr/ConsoleOStream.h"
#include "tests/support/OldRecord.h"

#include <gtest/gtest.h>

namespace {
cdata_tDArray array_of(std::initializer_list<int> values)
{
    cdata_tDArray array;
    for (const int value : values)
        array.insert_tail(value);
    return array;
}
} // namespace

TEST(cdata_tDArray, inserts_and_removes_anywhere)
{
    cdata_tDArray array = array_of({1, 3});
    array.insert_at(1, 2);
    array.insert_at(0, array[2]); // one of its own, and the store grows
    array.insert_at(-1, 9);
    array.insert_at(std::numeric_limits<int>::max(), 9);
    array.remove_at(7);
    EXPECT_TRUE(array.is_equal_to(array_of({3, 1, 2, 3})));
    array.remove_at(0);
    EXPECT_TRUE(array.is_equal_to(array_of({1, 2, 3})));
    EXPECT_FALSE(array.is_equal_to(array_of({1, 2})));
    EXPECT_EQ(array.inq_data_ptr(3), nullptr);
    EXPECT_EQ(*array.inq_data_ptr(2), 3);

    cdata_tDArray far;
    far.insert_at(7, 5);
    EXPECT_EQ(far.size(), 8);
    EXPECT_EQ(far[7], 5);
}

TEST(cdata_tDArray, comes_back_with_its_room)
{
    cdata_tDArray array(10);
    array.set_size(0);
    array.insert_tail(4);
    const auto back = stored_and_read(array);
    ASSERT_TRUE(back);
    EXPECT_EQ(back->inq_allocated(), 10);
    EXPECT_TRUE(back->is_equal_to(array));

    StringOStream text;
    array.dump_on(text);
    EXPECT_EQ(text.inq_text().str(),
              "cdata_tDArray size = 1   allocated = 10\n{\nMember (0) 4 \n}\n");
}

TEST(cdata_tDArray, refuses_more_elements_than_room)
{
    OldRecord old("cdata_tDArray", 75);
    old << 1 << 2 << 7 << 8;
    EXPECT_EQ(old.read<cdata_tDArray>(), nullptr);
}
