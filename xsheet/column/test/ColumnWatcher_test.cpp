#include "kivlib/hdr/ChangeRecorder.h"
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

class Deaf : public SubColumnWatcher {
public:
    using SubColumnWatcher::SubColumnWatcher;
    bool inq_tell_notifier() override { return false; }
    void range_changed_notifier(int, int) override { was_told = true; }

    bool was_told = false;
};
} // namespace

TEST_F(ColumnWatchers, pass_a_change_on_to_every_level_above)
{
    XSheetWatcher watcher(&sheet, LABEL);
    sheet.add_watcher(&watcher);
    watcher.setup_watch_sub_columns();
    SubColumnWatcher* of_column = column->inq_watcher(LABEL);
    SubColumnWatcher* of_member = sub_column->inq_watcher(LABEL);
    ASSERT_TRUE(of_column && of_member);
    watcher.clear_all_frames();
    sub_column->tell_watchers_frame_changed(7);
    for (SubColumnWatcher* level : {of_member, of_column, static_cast<SubColumnWatcher*>(&watcher)})
        EXPECT_TRUE(level->inq_frame_changed(7));
    of_member->clear_frame(7);
    EXPECT_FALSE(of_member->inq_frame_changed(7));
    EXPECT_TRUE(of_column->inq_frame_changed(7));
    watcher.clear_frame(7); // in the columns, and not here
    EXPECT_FALSE(of_column->inq_frame_changed(7));
    EXPECT_TRUE(watcher.inq_frame_changed(7));
}

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

TEST_F(ColumnWatchers, watch_members_only_when_asked_to)
{
    ColumnWatcher watcher(column, LABEL, nullptr);
    column->add_watcher(&watcher);
    EXPECT_EQ(watcher.sub_column_added(sub_column), nullptr);
    watcher.setup_watch_sub_columns();
    SubColumnWatcher* of_member = sub_column->inq_watcher(LABEL);
    ASSERT_TRUE(of_member);
    EXPECT_EQ(watcher.sub_column_added(sub_column), of_member);
    watcher.clear_watch_sub_columns();
    EXPECT_EQ(sub_column->inq_watcher(LABEL), nullptr);
}

TEST_F(ColumnWatchers, find_their_parent_by_label)
{
    ColumnWatcher parent(column, LABEL, nullptr);
    column->add_watcher(&parent);
    Deaf deaf(sub_column, LABEL, nullptr);
    EXPECT_EQ(deaf.inq_column_watcher(), &parent);
    deaf.frame_changed(9); // is not told itself, and passes it on
    EXPECT_FALSE(deaf.was_told);
    EXPECT_TRUE(deaf.inq_frame_changed(9));
    EXPECT_TRUE(parent.inq_frame_changed(9));
    const SubColumnWatcher child(nullptr, 0, &parent);
    EXPECT_EQ(child.inq_label(), LABEL);
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

TEST_F(ColumnWatchers, leave_changes_to_the_recorder_of_the_sheet)
{
    struct Change : ChangeEvt {
        void undo() override {}
        void redo() override {}
    };
    Change unrecorded;
    sheet.add_change_event(&unrecorded); // nobody takes it
    sheet.end_change("nothing");
    ChangeRecorder recorder;
    sheet.set_change_recorder(&recorder);
    sheet.add_change_event(new Change);
    sheet.end_change("move");
    EXPECT_TRUE(recorder.inq_undo_label() == "move");
}
