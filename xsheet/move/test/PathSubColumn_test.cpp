#include "curveslib/hdr/Fairing.h"
#include "curveslib/hdr/SquidgeSet.h"
#include "xsheet/move/hdr/PathKeyCell.h"
#include "xsheet/move/hdr/PathNumericColumnPolicy.h"
#include "xsheet/move/hdr/PathSubColumn.h"
#include "xsheet/numeric/test/numeric_keys.h"

#include <cmath>

namespace {
/// A path column whose curve is a square of a side of 100, with a bead for each key.
struct Path {
    explicit Path(bool closed)
    {
        auto* set = new SquidgeSet;
        square = set->add_squidge(new Squidge(closed));
        for (const Vector2& corner :
             {Vector2(0, 0), Vector2(100, 0), Vector2(100, 100), Vector2(0, 100)})
            square->add_knot(corner, Vector2(), Vector2());
        for (unsigned long label = 1; label <= 4; ++label)
            square->add_bead({square->inq_knots()[label - 1].get(), 0.0}, label);
        other = set->add_squidge(new Squidge(false));
        other->add_knot({500.0, 500.0}, Vector2(), Vector2());
        other->add_bead({other->inq_first_knot(), 0.0}, 5);
        column.inq_path_policy()->set_squidges(set);
    }

    PathKeyCell* key_on_bead(int frame, unsigned long label)
    {
        auto* key = static_cast<PathKeyCell*>(column.create_new_key());
        key->set_data(key->create_data());
        key->set_bead_label(label);
        column.insert_key(key, frame);
        key->key_changed();
        column.inq_path_policy()->added_key(key);
        return key;
    }

    PathSubColumn column;
    Squidge* square;
    Squidge* other;
};

void expect_at(PathSubColumn& column, int frame, double x, double y)
{
    EXPECT_NEAR(column.inq_element(0, frame), x, 1e-6) << frame;
    EXPECT_NEAR(column.inq_element(1, frame), y, 1e-6) << frame;
}
} // namespace

TEST(PathSubColumn, goes_the_short_way_round_a_closed_curve)
{
    Path path(true);
    path.key_on_bead(1, 1);
    PathKeyCell* last = path.key_on_bead(3, 4);
    expect_at(path.column, 2, 0.0, 50.0);
    EXPECT_NEAR(last->inq_distance_along_path(), 100.0, 1e-6);
    EXPECT_NEAR(last->inq_path_length(), 400.0, 1e-6);
    path.key_on_bead(5, 3);
    path.key_on_bead(7, 2);
    double min = 0.0;
    double max = 0.0;
    path.column.calc_min_and_max_values(&min, &max);
    EXPECT_NEAR(min, 0.0, 1e-6);
    EXPECT_NEAR(max, 400.0, 1e-6);
    const std::unique_ptr<Fairing> fairing(path.column.extract_column_fairing());
    ASSERT_EQ(fairing->inq_control_point_count(), 4);
    EXPECT_NEAR(fairing->inq_control_point(2)->point.height, 200.0 / 300.0, 1e-6);
}

TEST(PathSubColumn, holds_where_there_is_no_road)
{
    Path path(false);
    PathKeyCell* first = path.key_on_bead(1, 2);
    path.key_on_bead(5, 5);
    EXPECT_TRUE(first->diff_path_as_next_key());
    expect_at(path.column, 4, 100.0, 0.0);
    expect_at(path.column, 5, 500.0, 500.0);

    PathKeyCell* lost = path.key_on_bead(9, 99);
    expect_at(path.column, 9, 0.0, 0.0);
    expect_at(path.column, 8, 500.0, 500.0);
    EXPECT_EQ(lost->inq_distance_along_path(), 0.0);
}

TEST(PathSubColumn, moves_a_bead_with_its_key)
{
    Path path(false);
    PathKeyCell* key = path.key_on_bead(1, 1);
    key->set_distance_along_path(230.0);
    expect_at(path.column, 1, 70.0, 100.0);
    EXPECT_NEAR(key->inq_distance_along_path(), 230.0, 1e-6);
    double min = 0.0;
    double max = 0.0;
    path.column.calc_min_and_max_values(&min, &max);
    EXPECT_NEAR(min, 230.0, 1e-6);
    EXPECT_NEAR(max, 300.0, 1e-6);
}

TEST(PathSubColumn, forgets_keys_beyond_a_new_end)
{
    Path path(false);
    PathKeyCell* kept = path.key_on_bead(5, 1);
    path.key_on_bead(20, 2);
    path.column.set_length(10);
    EXPECT_EQ(path.column.inq_path_policy()->get_key_with_label(1), kept);
    EXPECT_EQ(path.column.inq_path_policy()->get_key_with_label(2), nullptr);
}
