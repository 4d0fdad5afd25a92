#include "tests/support/OldRecord.h"
#include "xsheet/cell/hdr/ColumnHeaderCell.h"
#include "xsheet/cell/hdr/KeyCell.h"
#include "xsheet/column/hdr/XSheetFinderFlags.h"

#include <gtest/gtest.h>

namespace {
std::unique_ptr<BaseCell> cell_with(int number, const char* text)
{
    auto cell = std::make_unique<BaseCell>(number, 7);
    cell->set_data(cell->create_data());
    cell->inq_data()->set_string(text);
    return cell;
}
} // namespace

TEST(BaseCell, finds_text_by_case_and_extent)
{
    using Flags = XSheetFinderFlags;
    const auto cell = cell_with(12, "Walk left");
    EXPECT_EQ(cell->find("walk", 1, 0), 12);
    EXPECT_EQ(cell->find("walk", 1, Flags::FlagCaseSensitive), 0);
    EXPECT_EQ(cell->find("Walk", 1, Flags::FlagCaseSensitive), 12);
    EXPECT_EQ(cell->find("walk", 1, Flags::FlagExactMatch), 0);
    EXPECT_EQ(cell->find("walk LEFT", 1, Flags::FlagExactMatch), 12);
    EXPECT_EQ(cell->find("walk left", 1, Flags::FlagExactMatch | Flags::FlagCaseSensitive), 0);
    EXPECT_EQ(cell_with(0, "Walk")->find("walk", 1, 0), -1);
    EXPECT_EQ(BaseCell(4, 0).find("", 1, 0), 0);
}

TEST(BaseCell, reads_rings_from_version_118_on)
{
    for (const int version : {117, 118}) {
        OldRecord old("ColumnHeaderCell", 1);
        old << 4L << -6 << 0;
        old.nested("CellData", version, [&](OldRecord& r) {
            const KIVString text("old");
            r.insert_with_class_hdr(&text);
            r.put_seen(0);
            if (version >= 118)
                r << 1;
        });
        const auto cell = old.read<ColumnHeaderCell>();
        ASSERT_TRUE(cell);
        EXPECT_TRUE(*cell->inq_data()->inq_string() == "old");
        EXPECT_EQ(cell->inq_data()->inq_cell_ringed(), version >= 118);
    }
}

TEST(BaseCell, reads_without_data_that_is_kept_apart)
{
    OldRecord apart("BaseCell", 1);
    apart << 4L << 3 << 1;
    const auto cell = apart.read<BaseCell>();
    ASSERT_TRUE(cell);
    EXPECT_FALSE(cell->inq_data_exists());

    OldRecord beyond("BaseCell", 1);
    beyond << 4L << 2000000000 << 1;
    EXPECT_EQ(beyond.read<BaseCell>(), nullptr);
}
