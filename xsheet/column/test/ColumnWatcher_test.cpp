#include "xsheet/column/hdr/ColumnWatcher.h"
#include "xsheet/column/hdr/XSheet.h"
#include "xsheet/column/hdr/XSheetWatcher.h"

#include <gtest/gtest.h>

namespace {
constexpr unsigned long LABEL = 700;

class ColumnWatchers : public testing::Test {
protected:
    ColumnWatchers()
    {
        sheet.add_column(column, nullptr);
        column->add_sub_column(sub_column, nullptr);
    }

    XSheet sheet{nullptr};
    Column* column = new Column;
    SubColumn* sub_column = new SubColumn;
};
} // namespace

TEST_F(ColumnWatchers, follow_what_is_added_and_removed)
{
    XSheetWatcher watcher(&sheet, LABEL);
    sheet.add_watcher(&watcher);
    watcher.setup_watch_columns();
    EXPECT_EQ(sub_column->inq_watcher(LABEL), nullptr); // columns alone
    watcher.setup_watch_sub_columns();

    auto* late = new Column;
    late->add_sub_column(new SubColumn, nullptr);
    sheet.add_column(late, nullptr);
    ASSERT_TRUE(late->inq_watcher(LABEL));
    EXPECT_TRUE(late->find_sub_column(1)->inq_watcher(LABEL));
    auto* later = new SubColumn;
    late->add_sub_column(later, nullptr);
    EXPECT_TRUE(later->inq_watcher(LABEL));

    watcher.frames_all_changed();
    watcher.SubColumnWatcher::clear_frame_range(1, 100);
    const std::unique_ptr<Column> removed(sheet.remove_column(late));
    EXPECT_EQ(removed.get(), late);
    EXPECT_TRUE(watcher.inq_frame_changed(50));
    EXPECT_EQ(removed->inq_watcher(LABEL), nullptr);
    EXPECT_EQ(later->inq_watcher(LABEL), nullptr);
}

TEST_F(ColumnWatchers, may_go_before_or_after_the_sheet)
{
    auto watcher = std::make_unique<XSheetWatcher>(&sheet, LABEL);
    sheet.add_watcher(watcher.get());
    watcher->setup_watch_sub_columns();
    watcher.reset();
    EXPECT_EQ(sub_column->inq_watcher(LABEL), nullptr);

    auto other = std::make_unique<XSheet>(nullptr);
    other->add_column(new Column, nullptr);
    XSheetWatcher late(other.get(), LABEL);
    other->add_watcher(&late);
    late.setup_watch_sub_columns();
    other.reset();
    EXPECT_EQ(late.inq_sub_column(), nullptr);
    late.clear_watch_sub_columns();
}
