#include "curveslib/hdr/Fairing.h"
#include "tests/support/OldRecord.h"
#include "tests/support/RecordingWatcher.h"
#include "xsheet/cell/hdr/InbetweenCell.h"
#include "xsheet/cell/hdr/KeyCell.h"
#include "xsheet/column/hdr/XSheetFinderFlags.h"

#include <gtest/gtest.h>

namespace {
constexpr int LENGTH = 100;

class SceneOfOneColumn : public SubColumn {
public:
    int inq_scene_length() const override { return LENGTH; }
};

/// Keys on frames 10 and 20.
class KeyCells : public testing::Test {
protected:
    KeyCells()
    {
        first = column.make_key(10);
        second = column.make_key(20);
        first->set_mode(IM_INBETWEEN);
        watcher = std::make_unique<RecordingWatcher>(column);
    }

    SceneOfOneColumn column;
    KeyCell* first;
    KeyCell* second;
    std::unique_ptr<RecordingWatcher> watcher;
};

} // namespace

TEST_F(KeyCells, start_as_holds_of_no_length)
{
    const KeyCell key(nullptr, 4, 9);
    EXPECT_EQ(key.inq_mode(), IM_HOLD);
    EXPECT_EQ(key.inq_interp_len(), 0);
    EXPECT_EQ(key.inq_target_interp_len(), -1);
    EXPECT_EQ(key.inq_sample_rate(), 1);
    EXPECT_EQ(key.inq_ifactor(3), 0.0);
}

TEST_F(KeyCells, lead_to_the_next_key_or_hold_to_the_end)
{
    EXPECT_EQ(first->inq_interp_len(), 9);
    EXPECT_EQ(second->inq_interp_len(), LENGTH - 20);
    second->set_mode(IM_INBETWEEN);
    EXPECT_EQ(second->inq_mode(), IM_HOLD);
    EXPECT_EQ(second->inq_mode_actual(), IM_INBETWEEN);
    EXPECT_EQ(second->inq_cell(60), second);
    second->set_mode(IM_STOP);
    EXPECT_EQ(second->inq_interp_len(), 0);
    EXPECT_EQ(second->inq_cell(20), second);
    EXPECT_EQ(second->inq_cell(21), nullptr);
}

TEST_F(KeyCells, make_an_inbetween_once_for_each_frame_that_is_asked_for)
{
    EXPECT_EQ(first->find_inbetween(5), nullptr);
    auto* cell = static_cast<InbetweenCell*>(first->inq_cell(15));
    ASSERT_TRUE(cell && cell->is_an_inbetween());
    EXPECT_EQ(first->inq_cell(15), cell);
    EXPECT_EQ(first->find_inbetween(5), cell);
    EXPECT_EQ(cell->inq_number(), 5);
    EXPECT_EQ(cell->inq_frame_number(), 15);
    EXPECT_DOUBLE_EQ(cell->inq_ifactor(), 0.5);
    EXPECT_EQ(cell->inq_prev_key(), first);
    EXPECT_EQ(cell->inq_next_key(), second);
    EXPECT_EQ(cell->inq_data(), cell->inq_data());
    EXPECT_EQ(cell->inq_data()->inq_cell(), cell);
    EXPECT_EQ(first->inq_cell(20), nullptr);

    first->fairing_changed();
    EXPECT_EQ(first->find_inbetween(5), nullptr);
}

TEST_F(KeyCells, are_on_their_way_already_half_a_frame_late)
{
    Fairing::set_half_frame(true);
    const BaseCell* late = first->inq_cell(10);
    const BaseCell* held = second->inq_cell(20);
    Fairing::set_half_frame(false);
    EXPECT_TRUE(late->is_an_inbetween());
    EXPECT_EQ(held, second);
    EXPECT_EQ(first->inq_cell(10), first);
}

TEST_F(KeyCells, hold_no_longer_than_their_limit)
{
    first->set_mode(IM_HOLD);
    watcher->take();
    first->set_target_interp_len(3);
    EXPECT_EQ(first->inq_interp_len(), 3);
    EXPECT_EQ(first->inq_cell(14), nullptr);
    EXPECT_EQ(watcher->take(), "11-19 14-19");
    first->set_target_interp_len(9); // as far as it goes by itself
    EXPECT_EQ(first->inq_target_interp_len(), -1);
    EXPECT_EQ(first->inq_interp_len(), 9);
    EXPECT_EQ(watcher->take(), "11-13 14-19");
    first->set_target_interp_len(0);
    EXPECT_EQ(first->inq_mode(), IM_STOP);
    EXPECT_EQ(first->inq_target_interp_len(), -1);
}

TEST_F(KeyCells, tell_of_a_reach_that_shrinks_by_more_than_a_frame)
{
    first->set_mode(IM_HOLD);
    first->set_target_interp_len(5);
    watcher->take();
    first->set_target_interp_len(4);
    EXPECT_EQ(watcher->take(), "11-15"); // what was cleared; the frame that is left is not told
    first->set_target_interp_len(2);
    EXPECT_EQ(watcher->take(), "11-14 13-14");
}

TEST_F(KeyCells, tell_what_a_new_mode_changes)
{
    first->set_mode(IM_HOLD);
    EXPECT_EQ(watcher->take(), "11-19 11-19"); // the cells between go, then the frames change
    first->set_mode(IM_HOLD);
    EXPECT_EQ(watcher->take(), "");
    first->set_mode(IM_STOP);
    EXPECT_EQ(watcher->take(), "11-19 11-19");
}

TEST_F(KeyCells, change_mode_quietly_while_under_construction)
{
    KeyCell key(&column, -1, 3);
    key.set_just_saved();
    key.set_mode(IM_INBETWEEN);
    EXPECT_EQ(key.inq_mode_actual(), IM_INBETWEEN);
    EXPECT_NE(key.inq_fairing(), nullptr);
    EXPECT_FALSE(key.inq_needs_saving());
    EXPECT_EQ(watcher->take(), "");
}

TEST_F(KeyCells, know_the_step_nearest_to_half_of_the_way)
{
    EXPECT_TRUE(first->is_middle_inbetween(5));
    EXPECT_FALSE(first->is_middle_inbetween(4));
    first->set_sample_rate(2); // steps on 2, 4, 6, 8: 4 and 6 are as near, and the earlier wins
    EXPECT_TRUE(first->is_middle_inbetween(4));
    EXPECT_FALSE(first->is_middle_inbetween(6));
    EXPECT_FALSE(first->is_middle_inbetween(5));
    first->set_sample_rate(8); // one step alone
    EXPECT_TRUE(first->is_middle_inbetween(8));
    EXPECT_FALSE(first->is_middle_inbetween(0));
    first->set_sample_rate(0);
    EXPECT_FALSE(first->is_middle_inbetween(5));
}

TEST_F(KeyCells, drop_the_cells_around_when_the_rate_changes)
{
    second->set_mode(IM_INBETWEEN);
    column.make_key(30);
    first->inq_cell(15);
    second->inq_cell(25);
    second->set_sample_rate(2);
    EXPECT_EQ(first->find_inbetween(5), nullptr);
    EXPECT_EQ(second->find_inbetween(5), nullptr);
    EXPECT_EQ(second->inq_fairing()->inq_sample_rate(), 2);
}

TEST_F(KeyCells, take_over_how_another_key_interpolates)
{
    second->set_sample_rate(1);
    EXPECT_TRUE(second->copy_interp_data_from(first)); // the mode
    EXPECT_NE(second->inq_fairing(), nullptr);
    EXPECT_FALSE(second->copy_interp_data_from(first));
    first->inq_fairing()->create_empty_cps(2);
    EXPECT_TRUE(second->copy_interp_data_from(first));
    EXPECT_TRUE(second->inq_fairing()->is_same_shape(first->inq_fairing()));
    first->set_fairing(nullptr);
    EXPECT_FALSE(second->copy_interp_data_from(first));
    EXPECT_EQ(second->inq_fairing(), nullptr);
}

TEST_F(KeyCells, are_searched_from_a_frame_on)
{
    first->inq_data()->set_string("jump");
    EXPECT_EQ(first->find("jump", 10, XSheetFinderFlags::FlagForwards), 10);
    EXPECT_EQ(first->find("jump", 11, XSheetFinderFlags::FlagForwards), 0);
    EXPECT_EQ(first->find("jump", 11, 0), 10);
}

TEST_F(KeyCells, tell_of_edited_values)
{
    first->inq_cell(15);
    first->set_just_saved();
    second->inq_data()->data_changed();
    EXPECT_EQ(first->find_inbetween(5), nullptr);
    EXPECT_EQ(watcher->take(), "21-100 11-19 20-20");
    first->key_changed();
    EXPECT_EQ(watcher->take(), "10-10 11-19");
    first->inq_cell(15)->inq_data()->data_changed(); // what is made from keys tells nobody
    EXPECT_EQ(watcher->take(), "");
}

TEST_F(KeyCells, copy_their_easing_but_not_their_place)
{
    first->inq_fairing()->create_empty_cps(3);
    first->set_sample_rate(2);
    const std::unique_ptr<BaseCell> copied(first->duplicate());
    auto* copy = static_cast<KeyCell*>(copied.get());
    EXPECT_EQ(copy->inq_sub_column(), nullptr);
    EXPECT_NE(copy->inq_fairing(), first->inq_fairing());
    EXPECT_TRUE(copy->inq_fairing()->is_same_shape(first->inq_fairing()));
    EXPECT_EQ(copy->inq_fairing()->number_between, 9);
    EXPECT_EQ(copy->inq_sample_rate(), 2);
    EXPECT_EQ(copy->inq_mode_actual(), IM_INBETWEEN);
}

TEST(KeyCell, stores_its_fields_in_their_order)
{
    OldRecord old("KeyCell", 1);
    old << 3L << 10 << 0;
    old.insert_with_class_hdr(nullptr); // data
    old << 9 << 4 << 2 << 3;
    old.nested("Fairing", 1, [](OldRecord& r) { r << 9 << 1 << 0; });
    const auto key = old.read<KeyCell>();
    ASSERT_TRUE(key);
    EXPECT_EQ(key->inq_label(), 3U);
    EXPECT_EQ(key->inq_interp_len(), 9);
    EXPECT_EQ(key->inq_target_interp_len(), 4);
    EXPECT_EQ(key->inq_mode_actual(), IM_STOP);
    EXPECT_EQ(key->inq_sample_rate(), 3);
    EXPECT_EQ(key->inq_fairing()->inq_sample_rate(), 3); // the key's
    EXPECT_EQ(key->inq_sub_column(), nullptr);

    key->set_sample_rate(5);
    const auto back = stored_and_read(*key);
    ASSERT_TRUE(back);
    EXPECT_EQ(back->inq_target_interp_len(), 4);
    EXPECT_EQ(back->inq_fairing()->number_between, 9);
    EXPECT_EQ(back->inq_fairing()->inq_sample_rate(), 5);
}
