#include "curveslib/hdr/Fairing.h"
#include "kivlib/hdr/IntArray.h"
#include "kivlib/hdr/KIVLinkedList.h"
#include "kivlib/hdr/SlotList.h"
#include "tests/support/OldRecord.h"
#include "tests/support/RecordingWatcher.h"
#include "xsheet/column/hdr/SubColumn.h"
#include "xsheet/column/hdr/XSheetFinderFlags.h"

#include <gtest/gtest.h>

namespace {
constexpr int LENGTH = 100;

class SubColumns : public testing::Test {
protected:
    class InAScene : public SubColumn {
    public:
        int inq_scene_length() const override { return LENGTH; }
    };

    void make_keys(const std::vector<int>& frames, InterpMode mode = IM_HOLD)
    {
        for (const int frame : frames) {
            KeyCell* key = column.make_key(frame);
            key->set_mode(mode);
            key->inq_data()->set_string(std::to_string(frame));
        }
    }

    KeyCell* key_at(int frame)
    {
        return static_cast<KeyCell*>(column.inq_key_cell_list()->find_cell(frame));
    }

    /// Each key's frame, its reach, and its text where that differs from the frame.
    std::string inq_keys() const
    {
        std::string keys;
        for (KeyCell* key = column.inq_first_key(); key; key = key->inq_next_key()) {
            const std::string frame = std::to_string(key->inq_number());
            const KIVString* text = key->inq_data()->inq_string();
            keys += frame + "+" + std::to_string(key->inq_interp_len());
            keys += text && text->str() != frame ? "(" + text->str() + ") " : " ";
        }
        return keys;
    }

    static SlotList slots(const std::vector<int>& frames)
    {
        SlotList list;
        for (const int frame : frames)
            list.add_slot(frame);
        return list;
    }

    InAScene column;
};
} // namespace

TEST_F(SubColumns, make_keys_inside_the_scene_where_there_is_none)
{
    make_keys({10});
    EXPECT_FALSE(column.can_make_key(0));
    EXPECT_FALSE(column.can_make_key(10));
    EXPECT_FALSE(column.can_make_key(LENGTH + 1));
    EXPECT_TRUE(column.can_make_key(1));
    EXPECT_TRUE(column.can_make_key(LENGTH));
    EXPECT_EQ(SubColumn().inq_scene_length(), 1000000);
}

TEST_F(SubColumns, say_what_stands_on_a_frame)
{
    make_keys({10, 20, 30}, IM_INBETWEEN);
    key_at(20)->set_mode(IM_HOLD);
    key_at(20)->set_target_interp_len(4);
    key_at(30)->set_mode(IM_STOP);
    for (const auto& [frame, type] : std::vector<std::pair<int, CellType>>{{9, CT_EMPTY},
                                                                           {10, CT_KEY},
                                                                           {11, CT_INBETWEEN},
                                                                           {24, CT_HOLD},
                                                                           {25, CT_EMPTY},
                                                                           {30, CT_KEY},
                                                                           {31, CT_EMPTY}})
        EXPECT_EQ(column.inq_celltype(frame), type) << frame;
    EXPECT_EQ(column.inq_cell(9), nullptr);
    EXPECT_EQ(column.inq_cell(24), key_at(20));
    EXPECT_EQ(column.inq_cell(25), nullptr);
    EXPECT_EQ(column.inq_key_pos_at_row(25), 2);
    EXPECT_EQ(column.inq_key_pos_at_row(9), -1);
}

TEST_F(SubColumns, give_a_new_key_the_value_of_its_frame_without_the_ring)
{
    KeyCell* alone = column.make_key(10);
    EXPECT_EQ(alone->inq_data()->inq_string(), nullptr);
    EXPECT_EQ(alone->inq_mode(), IM_HOLD);
    alone->inq_data()->set_string("held");
    alone->ring_unring();
    const KeyCell* key = column.make_key(15);
    EXPECT_EQ(inq_keys(), "10+4(held) 15+85(held) ");
    EXPECT_FALSE(key_at(15)->inq_data()->inq_cell_ringed());
    EXPECT_TRUE(alone->inq_data()->inq_cell_ringed());
    EXPECT_EQ(key->inq_label(), 2U);
    EXPECT_EQ(column.make_key(5)->inq_data()->inq_string(), nullptr); // nothing stood there
}

TEST_F(SubColumns, cut_the_easing_at_a_new_key_between_two)
{
    make_keys({10, 20}, IM_INBETWEEN);
    const BaseCell* cell = column.inq_cell(12);
    EXPECT_TRUE(cell->is_an_inbetween());
    KeyCell* key = column.make_key(14);
    EXPECT_EQ(key->inq_mode(), IM_INBETWEEN);
    EXPECT_EQ(key->inq_fairing()->number_between, 5);
    EXPECT_EQ(key_at(10)->inq_fairing()->number_between, 3);
    EXPECT_EQ(key_at(10)->find_inbetween(2), nullptr);
    EXPECT_EQ(inq_keys(), "10+3 14+5 20+80 ");
}

TEST_F(SubColumns, tell_of_a_new_and_of_a_removed_key)
{
    make_keys({10, 20});
    RecordingWatcher watcher(column);
    column.make_key(15);
    EXPECT_EQ(watcher.take(), "16-19 15-19 11-14 16-19 15-15");
    const std::unique_ptr<KeyCell> removed(column.remove_key(key_at(15)));
    EXPECT_EQ(watcher.take(), "16-19 11-14 15-19 15-15");
    EXPECT_EQ(removed->inq_sub_column(), &column);
    EXPECT_EQ(inq_keys(), "10+9 20+80 ");
}

TEST_F(SubColumns, paste_keys_and_leave_out_those_without_room)
{
    make_keys({22});
    KeyCell* pasted[] = {new KeyCell(nullptr, 1, 0), new KeyCell(nullptr, 3, 0),
                         new KeyCell(nullptr, 5, 8)};
    for (KeyCell* key : pasted)
        key->set_data(key->create_data());
    EXPECT_TRUE(column.insert_keys(20, pasted, 3));
    const std::unique_ptr<KeyCell> left_out(pasted[1]);
    EXPECT_EQ(inq_keys(), "20+1 22+1 24+76 ");
    EXPECT_EQ(pasted[0]->inq_label(), 2U);
    EXPECT_EQ(pasted[2]->inq_label(), 8U);
    EXPECT_EQ(left_out->inq_sub_column(), nullptr);
}

TEST_F(SubColumns, push_an_occupant_towards_the_place_that_is_left)
{
    make_keys({10, 11, 12, 20});
    RecordingWatcher watcher(column);
    column.move_key_to(key_at(20), 10);
    EXPECT_EQ(inq_keys(), "10+0(20) 11+0(10) 12+0(11) 13+87(12) ");
    EXPECT_TRUE(watcher.inq_frame_changed(20));
    column.move_key_to(key_at(10), 13);
    EXPECT_EQ(inq_keys(), "10+0 11+0 12+0 13+87(20) ");
    column.move_key_to(key_at(11), 50);
    EXPECT_EQ(inq_keys(), "10+1 12+0 13+36(20) 50+50(11) ");
}

TEST_F(SubColumns, move_a_selection_without_keys_running_over_each_other)
{
    make_keys({10, 11, 30});
    SlotList moved = slots({10, 11});
    EXPECT_TRUE(column.can_move_key_cells_by(moved, 1));
    EXPECT_FALSE(column.can_move_key_cells_by(moved, 19));
    EXPECT_FALSE(column.can_move_key_cells_by(moved, -10));
    EXPECT_FALSE(column.can_move_key_cells_by(moved, 90));
    column.move_key_cells_by(moved, 1);
    EXPECT_EQ(inq_keys(), "11+0(10) 12+17(11) 30+70 ");
    moved = slots({11, 12});
    column.move_key_cells_by(moved, -5);
    EXPECT_EQ(inq_keys(), "6+0(10) 7+22(11) 30+70 ");
}

TEST_F(SubColumns, move_many_keys_at_once)
{
    make_keys({10, 20, 30});
    IntArray from, to;
    for (const int frame : {10, 20, 25})
        from.add(frame);
    for (const int frame : {20, 10, 26})
        to.add(frame);
    RecordingWatcher watcher(column);
    column.move_keys_to_slots(&from, &to);
    EXPECT_EQ(inq_keys(), "10+9(20) 20+9(10) 30+70 ");
    for (const int frame : {10, 20})
        EXPECT_TRUE(watcher.inq_frame_changed(frame));
    IntArray away, there;
    away.add(20);
    there.add(40);
    column.move_keys_to_slots(&away, &there);
    EXPECT_EQ(inq_keys(), "10+19(20) 30+9 40+60(10) ");
}

TEST_F(SubColumns, renumber_keys_with_the_lengths_of_old)
{
    make_keys({10, 20, 30});
    IntArray from, to;
    from.add(20);
    from.add(30);
    to.add(40);
    to.add(50);
    column.move_key_cells(&from, &to);
    EXPECT_EQ(inq_keys(), "10+9 40+-1(20) 50+50(30) ");
}

TEST_F(SubColumns, know_neighbours_in_the_order_of_keys)
{
    make_keys({10, 20, 30, 40});
    KIVLinkedList run;
    SlotList chosen = slots({20, 30});
    EXPECT_TRUE(column.inq_if_keys_are_contiguous(chosen, &run));
    EXPECT_EQ(run.count(), 2);
    EXPECT_EQ(run.at_index(0), key_at(20));
    for (const auto& frames : std::vector<std::vector<int>>{{}, {10, 30}, {5}, {20, 21}}) {
        chosen = slots(frames);
        EXPECT_FALSE(column.inq_if_keys_are_contiguous(chosen, nullptr));
    }
}

TEST_F(SubColumns, measure_free_space)
{
    EXPECT_EQ(column.inq_space_at(91), 10);
    EXPECT_TRUE(column.can_make_space_at(91, 10, 0));
    EXPECT_FALSE(column.can_make_space_at(91, 11, 0));
    make_keys({10, 20});
    EXPECT_EQ(column.inq_space_at(4), 6);
    EXPECT_EQ(column.inq_space_at(10), 0);
    EXPECT_EQ(column.inq_space_at(11), 9);
    EXPECT_EQ(column.inq_space_at(21), 80);
    EXPECT_TRUE(column.can_make_space_at(15, 999, 80));
    EXPECT_FALSE(column.can_make_space_at(5, 0, 81)); // in front of all, the last key counts
    EXPECT_EQ(column.inq_last_key_position(), 20);
}

TEST_F(SubColumns, lose_the_keys_beyond_a_new_length)
{
    make_keys({10, 20, 30});
    RecordingWatcher watcher(column);
    EXPECT_FALSE(column.can_set_length(29));
    EXPECT_TRUE(column.can_set_length(30));
    column.set_length(15);
    EXPECT_EQ(inq_keys(), "10+90 ");
    EXPECT_EQ(watcher.take(), "20-100"); // the reach of the key that is last now
}

TEST_F(SubColumns, widen_a_range_of_keys)
{
    int low = 7, high = 8;
    column.inq_key_range(&low, &high);
    EXPECT_EQ(low, 7);
    make_keys({3, 30});
    column.inq_key_range(&low, &high);
    EXPECT_EQ(low, 3);
    EXPECT_EQ(high, 30);
    EXPECT_TRUE(column.inq_summary() == "...");
}

TEST_F(SubColumns, compare_what_two_frames_show)
{
    make_keys({10});
    EXPECT_TRUE(column.is_frame_the_same(1, 2));
    EXPECT_FALSE(column.is_frame_the_same(2, 10));
    EXPECT_TRUE(column.is_frame_the_same(10, 50));
    key_at(10)->set_mode(IM_INBETWEEN);
    make_keys({20});
    EXPECT_FALSE(column.is_frame_the_same(11, 12));
}

TEST_F(SubColumns, search_text_from_a_frame_in_either_direction)
{
    using Flags = XSheetFinderFlags;
    make_keys({10, 20, 30});
    EXPECT_EQ(column.find("0", 11, Flags::FlagForwards), 20);
    EXPECT_EQ(column.find("0", 5, Flags::FlagForwards), 10);
    EXPECT_EQ(column.find("0", 19, 0), 10);
    EXPECT_EQ(column.find("0", 5, 0), 0);
    column.init_after_construction();
    column.set_header_text("Scale");
    EXPECT_EQ(column.find("scale", 1, Flags::FlagHeaderMode), -1);
    EXPECT_EQ(column.find("10", 1, Flags::FlagHeaderMode), 0);
    column.set_collapsed();
    EXPECT_EQ(column.find("0", 11, Flags::FlagForwards), 0);
    EXPECT_EQ(column.find("0", 11, Flags::FlagForwards | Flags::FlagSearchColapsed), 20);
}

TEST_F(SubColumns, copy_keys_and_header_without_their_surroundings)
{
    column.init_after_construction();
    column.set_header_text("Move");
    column.set_label(4);
    make_keys({10, 20});
    const RecordingWatcher watcher(column);
    const std::unique_ptr<SubColumn> copy(column.duplicate());
    EXPECT_TRUE(*copy->inq_header_text() == "Move");
    EXPECT_EQ(copy->inq_label(), 4U);
    EXPECT_EQ(copy->inq_first_key()->inq_sub_column(), copy.get());
    EXPECT_EQ(copy->inq_watcher(watcher.inq_label()), nullptr);
    EXPECT_EQ(copy->make_key(30)->inq_label(), 3U);
    EXPECT_EQ(column.inq_last_key_position(), 20);
}

TEST_F(SubColumns, come_back_from_a_stream_with_keys_that_know_them)
{
    column.init_after_construction();
    column.set_header_text("Move");
    column.set_label(4);
    column.set_collapsed();
    make_keys({10, 20}, IM_INBETWEEN);
    const auto back = stored_and_read<SubColumn>(column);
    ASSERT_TRUE(back);
    EXPECT_TRUE(*back->inq_header_text() == "Move");
    EXPECT_EQ(back->inq_last_key()->inq_sub_column(), back.get());
    EXPECT_EQ(back->inq_first_key()->inq_interp_len(), 9);
    EXPECT_EQ(back->inq_label(), 4U);
    EXPECT_FALSE(back->inq_needs_saving());
    EXPECT_TRUE(back->compare_display_flags(SubColumn::COLLAPSED));
    EXPECT_FALSE(back->load_finished_with_abort());
    EXPECT_FALSE(back->compare_display_flags(SubColumn::COLLAPSED));
    EXPECT_EQ(back->make_key(30)->inq_label(), 3U);
}

TEST_F(SubColumns, refuse_to_be_read_with_cells_among_their_keys)
{
    OldRecord old("SubColumn", 1);
    old << 1;
    old.nested("BaseCell", 1, [](OldRecord& r) { r << 1L << 5 << 1; });
    old << 0;
    old.insert_with_class_hdr(nullptr);
    old << 0L << 1L << 0;
    EXPECT_EQ(old.read<SubColumn>(), nullptr);

    SubColumn column;
    column.add_misc_cell(new KeyCell(nullptr, -3, 1));
    EXPECT_EQ(stored_and_read(column), nullptr);
}

TEST(SubColumnWatcher, gathers_frames_until_they_are_cleared)
{
    SubColumn column;
    RecordingWatcher watcher(column);
    column.tell_watchers_frame_changed(3);
    column.tell_watchers_frame_range_changed(10, 20);
    watcher.clear_frame_range(12, 15);
    EXPECT_FALSE(watcher.inq_frame_changed(13));
    watcher.take();
    SlotList more;
    more.add_slot(30);
    watcher.frames_changed(more); // tells all that is gathered
    EXPECT_EQ(watcher.take(), "3-3 10-11 16-20 30-30");
    watcher.clear_frames(watcher.inq_changed_frames());
    EXPECT_TRUE(watcher.inq_changed_frames().inq_is_empty());
    column.tell_watchers_all_frames_changed();
    EXPECT_EQ(watcher.take(), "1-1000000");
    watcher.clear_all_frames();
    EXPECT_TRUE(watcher.inq_changed_frames().inq_is_empty());
}

TEST(SubColumnWatcher, outlives_its_sub_column_and_leaves_it_when_it_goes_first)
{
    auto column = std::make_unique<SubColumn>();
    RecordingWatcher watcher(*column);
    EXPECT_EQ(column->inq_watcher(watcher.inq_label()), &watcher);
    unsigned long label = 0;
    {
        const RecordingWatcher second(*column);
        label = second.inq_label();
        EXPECT_EQ(label, watcher.inq_label() + 1);
    }
    EXPECT_EQ(column->inq_watcher(label), nullptr);
    column.reset();
    EXPECT_EQ(watcher.take(), " closing");
    watcher.frames_all_changed(); // of no sub-column
    EXPECT_EQ(watcher.take(), "1-1");
}
