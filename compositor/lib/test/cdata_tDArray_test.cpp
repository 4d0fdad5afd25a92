#include "compositor/lib/hdr/cdata_tDArray.h"
#include "kivlib/hdr/ConsoleOStream.h"
#include "tests/support/OldRecord.h"

#include <gtest/gtest.h>

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
