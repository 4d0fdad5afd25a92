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

TEST(BaseCellList, keeps_its_cells_in_order_and_a_late_equal_behind)
{
    BaseCellList list;
    auto* late = new BaseCell(5, 2);
    list.add_cell(new BaseCell(5, 1));
    list.add_cell(new BaseCell(9, 4));
    list.add_cell(new BaseCell(2, 3));
    list.find_cell(5);
    list.add_cell(late);
    EXPECT_EQ(order_of(list), "2/3 5/1 5/2 9/4 ");
    list.add_cell_at(new BaseCell(0, 7), 5);
    EXPECT_EQ(order_of(list), "2/3 5/1 5/2 5/7 9/4 ");
    EXPECT_EQ(list.inq_key_order(late), 3);

    const std::unique_ptr<BaseCell> removed(list.remove_cell(late));
    EXPECT_EQ(removed->inq_next(), nullptr);
    EXPECT_EQ(removed->inq_prev(), nullptr);
    EXPECT_EQ(order_of(list), "2/3 5/1 5/7 9/4 ");
    EXPECT_EQ(list.inq_key_order(late), -1);
    EXPECT_EQ(list.remove_cell(late), late); // it was not there
    for (const BaseCell* cell = list.inq_last_cell(); cell->inq_prev(); cell = cell->inq_prev())
        EXPECT_EQ(cell->inq_prev()->inq_next(), cell);
}

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
