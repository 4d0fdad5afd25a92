#include "kivlib/hdr/IntArray.h"
#include "tests/support/OldRecord.h"
#include "tests/support/RecordingWatcher.h"
#include "xsheet/column/hdr/SubColumn.h"

#include <gtest/gtest.h>

namespace {
constexpr int LENGTH = 100;

class SubColumns : public testing::Test {
protected:
    class InAScene : public SubColumn {
    public:
        int inq_scene_length() const override { return LENGTH; }
    };

    void make_keys(const std::vector<int>& frames)
    {
        for (const int frame : frames) {
            KeyCell* key = column.make_key(frame);
            key->set_mode(IM_HOLD);
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

    InAScene column;
};
} // namespace

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
