#include "curveslib/hdr/Fairing.h"
#include "tests/support/OldRecord.h"
#include "xsheet/cell/hdr/KeyCell.h"
#include "xsheet/column/hdr/SubColumn.h"

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
    }

    SceneOfOneColumn column;
    KeyCell* first;
    KeyCell* second;
};
} // namespace

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
