#include "compositor/imagelib/lib/hdr/CNodeRostrum.h"
#include "compositor/imagelib/lib/test/ImageGraph.h"
#include "tests/support/Captured.h"
#include "xsheet/column/hdr/ColumnWatcher.h"

#include <gtest/gtest.h>

namespace {

class RemovalCounter : public ColumnWatcher {
public:
    using ColumnWatcher::ColumnWatcher;
    void sub_column_removed(SubColumn*) override { ++n_removed; }

    int n_removed = 0;
};

/// A stream after it has read an old output node with so many numbers.
bool reads_whole(int version, int n_numbers)
{
    OldRecord old("CNodeRostrum", version);
    tell_old_node(old, version);
    for (int i = 0; i < n_numbers; ++i)
        old << 7;
    CharIStream stream(old.finish());
    const std::unique_ptr<CNodeRostrum> node(CNodeRostrum::read_from(stream));
    return node && !stream.inq_error_state();
}

} // namespace

TEST(CNodeRostrum, drops_the_columns_of_an_old_camera_with_one_warning)
{
    CNodeRostrum node;
    Column* column = node.inq_column();
    column->add_sub_column(new SubColumn, nullptr);
    column->add_sub_column(new SubColumn, nullptr);
    column->set_just_saved();
    RemovalCounter watcher(column, 9, nullptr);
    column->add_watcher(&watcher);

    Captured said;
    EXPECT_FALSE(node.load_finished_with_abort());
    EXPECT_EQ(said.inq_output(), "Warning: old style camera node, column data ignored.\n");
    EXPECT_TRUE(column->inq_sub_column_list()->inq_is_empty());
    EXPECT_TRUE(column->inq_needs_saving());
    EXPECT_EQ(watcher.n_removed, 2);

    column->set_just_saved();
    node.load_finished_with_abort();
    EXPECT_EQ(said.inq_output(), "Warning: old style camera node, column data ignored.\n");
    EXPECT_FALSE(column->inq_needs_saving());
    column->remove_watcher(&watcher);
}

TEST(CNodeRostrum, passes_over_the_camera_numbers_of_old_files)
{
    EXPECT_TRUE(reads_whole(86, 2));
    EXPECT_FALSE(reads_whole(86, 1));
    EXPECT_TRUE(reads_whole(87, 4));
    EXPECT_FALSE(reads_whole(87, 3));
    EXPECT_FALSE(reads_whole(93, 3));
    EXPECT_TRUE(reads_whole(94, 0));
}
