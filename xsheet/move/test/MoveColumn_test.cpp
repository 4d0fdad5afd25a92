#include "curveslib/hdr/SquidgeSet.h"
#include "tests/support/OldRecord.h"
#include "xsheet/move/hdr/MoveColumn.h"
#include "xsheet/move/hdr/PathKeyCell.h"
#include "xsheet/move/hdr/PathNumericColumnPolicy.h"
#include "xsheet/move/hdr/PathSubColumn.h"
#include "xsheet/node/hdr/MoveSubColPrefs.h"
#include "xsheet/numeric/hdr/NumericTSubColumn.h"
#include "xsheet/numeric/hdr/NumericXYSubColumn.h"
#include "xsheet/numeric/test/numeric_keys.h"

namespace {
class PrimedMove : public MoveColumn {
public:
    PrimedMove() { init_after_construction(); }
    using MoveColumn::prime_column;

    NumericSubColumn* member(int index)
    {
        return static_cast<NumericSubColumn*>(inq_sub_column_list()->at_index(index));
    }
};
} // namespace

TEST(MoveColumn, starts_with_x_and_y)
{
    PrimedMove move;
    ASSERT_EQ(move.inq_sub_column_list()->count(), 2);
    EXPECT_EQ(*move.member(0)->inq_header_text(), "E/W");
    EXPECT_EQ(*move.member(1)->inq_header_text(), "N/S");
    EXPECT_EQ(move.inq_mode(), MoveColumn::XYCOL_MODE);
    EXPECT_EQ(move.inq_translation(1), Vector2());
    key_at(*move.member(0), 1, {10.0});
    key_at(*move.member(0), 3, {20.0});
    key_at(*move.member(1), 1, {-4.0});
    EXPECT_EQ(move.inq_translation(2), Vector2(15.0, -4.0));
    EXPECT_EQ(move.inq_path_column(), nullptr);
    EXPECT_FALSE(move.can_remove());
}

TEST(MoveColumn, takes_over_the_columns_of_an_old_node)
{
    PrimedMove two;
    auto* x = new NumericXSubColumn;
    auto* y = new NumericYSubColumn;
    key_at(*x, 1, {3.0});
    key_at(*y, 1, {4.0});
    two.convert_old_file(x, y);
    EXPECT_EQ(two.inq_translation(1), Vector2(3.0, 4.0));
    EXPECT_EQ(two.member(1), y);

    PrimedMove one;
    auto* t = new NumericTSubColumn;
    key_at(*t, 1, {5.0, 6.0});
    one.convert_old_file(t, nullptr);
    EXPECT_EQ(one.inq_mode(), MoveColumn::TCOL_MODE);
    EXPECT_EQ(one.inq_translation(1), Vector2(5.0, 6.0));

    PrimedMove path;
    auto* old_path = new PathSubColumn;
    auto* set = new SquidgeSet;
    Squidge* line = set->add_squidge(new Squidge(false));
    line->add_knot({7.0, 8.0}, Vector2(), Vector2());
    line->add_bead({line->inq_first_knot(), 0.0}, 5);
    old_path->inq_path_policy()->set_squidges(set);
    auto* key = static_cast<PathKeyCell*>(old_path->create_new_key());
    key->set_data(key->create_data());
    key->set_bead_label(5);
    old_path->insert_key(key, 1);
    key->key_changed();
    path.convert_old_file(old_path, nullptr);
    EXPECT_EQ(path.inq_mode(), MoveColumn::PATH_MODE);
    ASSERT_TRUE(path.inq_path_column());
    EXPECT_NE(path.inq_path_column(), old_path);
    EXPECT_EQ(path.inq_translation(1), Vector2(7.0, 8.0));
    auto* taken = static_cast<PathKeyCell*>(path.inq_path_column()->inq_first_key());
    const Vector place = path.inq_path_column()->inq_path_policy()->update_key_value(taken);
    EXPECT_EQ(Vector2(place), Vector2(7.0, 8.0)) << "with its curve";
}

TEST(MoveColumn, gives_its_mode_and_units_to_another_by_preferences)
{
    PrimedMove source;
    source.prime_column(MoveColumn::TCOL_MODE);
    source.member(0)->set_precision(5);
    const std::unique_ptr<SubColPrefs> prefs(source.create_preferences_object());
    const auto read = stored_and_read(static_cast<MoveSubColPrefs&>(*prefs));
    PrimedMove move;
    move.apply_preferences_object(read.get());
    EXPECT_EQ(move.inq_mode(), MoveColumn::TCOL_MODE);
    EXPECT_EQ(move.member(0)->inq_precision(), 5);
}
