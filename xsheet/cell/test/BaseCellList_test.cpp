#include "tests/support/OldRecord.h"
#include "xsheet/cell/hdr/BaseCellList.h"
#include "xsheet/cell/hdr/ColumnHeaderCell.h"

#include <gtest/gtest.h>

namespace {
std::string order_of(const BaseCellList& list)
{
    std::string order;
    for (const BaseCell* cell = list.inq_first_cell(); cell; cell = cell->inq_next())
        order += std::to_string(cell->inq_number()) + "/" + std::to_string(cell->inq_label()) + " ";
    return order;
}
} // namespace

TEST(BaseCellList, comes_back_with_the_classes_of_its_cells)
{
    BaseCellList list;
    list.add_cell(new ColumnHeaderCell(-1, 3));
    list.add_cell(new BaseCell(0, 4));
    const auto back = stored_and_read(list);
    ASSERT_EQ(order_of(*back), "-1/3 0/4 ");
    EXPECT_STREQ(back->inq_first_cell()->class_name(), "ColumnHeaderCell");

    OldRecord twice("BaseCellList", 1);
    twice << 2;
    twice.nested("BaseCell", 1, [](OldRecord& r) {
        r << 1L << 5 << 0;
        r.insert_with_class_hdr(nullptr);
    });
    twice.put_seen(1);
    EXPECT_EQ(twice.read<BaseCellList>(), nullptr);
}
