#include "xsheet/column/hdr/XSheetFinderFlags.h"
#include "xsheet/node/hdr/SubColPrefs.h"
#include "xsheet/numeric/hdr/AngleSubColumn.h"
#include "xsheet/numeric/hdr/NumericSubColumn.h"
#include "xsheet/numeric/hdr/NumericTSubColumn.h"
#include "xsheet/numeric/hdr/NumericXYSubColumn.h"
#include "xsheet/numeric/test/numeric_keys.h"

namespace {
std::vector<double> elements_of(const Vector& value)
{
    return {value.inq_elements().begin(), value.inq_elements().end()};
}
} // namespace

TEST(NumericSubColumn, clamps_keys_and_never_what_lies_between)
{
    NumericSubColumn column(2);
    column.set_minimum_values(Vector(2, 0.0));
    column.set_maximum_values(Vector(2, 10.0));
    NumericKeyCell* key = key_at(column, 1, {-5.0, 15.0});
    EXPECT_EQ(elements_of(data_of(key)->inq_value()), (std::vector{0.0, 10.0}));
    data_of(key)->set_value(Vector(1, 4.0));
    EXPECT_EQ(elements_of(data_of(key)->inq_value()), (std::vector{4.0, 10.0}));

    key_at(column, 5, {5.0, 5.0});
    BaseCell* between = column.inq_cell(3);
    data_of(between)->set_element(0, 99.0);
    EXPECT_EQ(data_of(between)->inq_element(0), 99.0);
}

TEST(NumericSubColumn, starts_a_key_of_three_elements_from_the_last_default)
{
    const Vector defaults(Vector4(1.0, 2.0, 3.0, 4.0));
    NumericSubColumn three(3);
    three.set_default_values(Vector(Vector3(defaults)));
    EXPECT_EQ(elements_of(data_of(three.make_key(1))->inq_value()), (std::vector{3.0, 3.0, 3.0}));
    NumericSubColumn four(4);
    four.set_default_values(defaults);
    EXPECT_EQ(elements_of(data_of(four.make_key(1))->inq_value()),
              (std::vector{1.0, 2.0, 3.0, 4.0}));
}

TEST(NumericSubColumn, finds_the_frame_on_which_a_value_is_crossed)
{
    NumericSubColumn column(1);
    column.set_unit_type(KIV_UNIT_WORLD);
    key_at(column, 10, {0.0});
    key_at(column, 20, {100.0});
    const int forwards = XSheetFinderFlags::FlagForwards;
    const int exact = XSheetFinderFlags::FlagExactMatch;
    EXPECT_EQ(column.find("35", 1, forwards), 14);
    EXPECT_EQ(column.find("35", 18, 0), 13);
    EXPECT_EQ(column.find("35", 16, forwards), 0) << "passed already";
    EXPECT_EQ(column.find("35", 1, forwards | exact), 0);
    EXPECT_EQ(column.find("100", 1, forwards | exact), 20);
    EXPECT_EQ(column.find("200", 1, forwards), 0);
    EXPECT_EQ(column.find("many", 1, forwards), 0);
}

TEST(NumericSubColumn, finds_a_value_as_it_is_shown)
{
    NumericYSubColumn y;
    y.set_unit_type(KIV_UNIT_FIELDS);
    key_at(y, 5, {60.0})->set_mode(IM_HOLD);
    const int forwards = XSheetFinderFlags::FlagForwards;
    EXPECT_EQ(y.find("1", 1, forwards), 0);
    EXPECT_EQ(y.find("1.3714285714285714", 1, forwards), 5);
}

TEST(NumericSubColumn, takes_keys_of_its_own_kind_alone)
{
    NumericXSubColumn x;
    NumericYSubColumn y;
    AngleSubColumn angle;
    EXPECT_TRUE(y.can_insert_key_type(x.make_key(1)));
    EXPECT_FALSE(y.can_insert_key_type(angle.make_key(1)));
    EXPECT_TRUE(angle.can_insert_key_type(angle.make_key(2)));
}

TEST(NumericSubColumn, measures_the_keys_of_one_element)
{
    NumericSubColumn one(1);
    key_at(one, 1, {-3.0});
    key_at(one, 2, {-1.0});
    double min = 0.0;
    double max = 0.0;
    one.calc_min_and_max_values(&min, &max);
    EXPECT_EQ(min, -3.0);
    EXPECT_EQ(max, 0.0) << "never below 0";
    NumericTSubColumn two;
    key_at(two, 1, {5.0, 5.0});
    two.calc_min_and_max_values(&min, &max);
    EXPECT_EQ(min, 1000000.0);
    EXPECT_EQ(max, 0.0);
}

TEST(NumericSubColumn, shows_its_value_in_its_unit_and_takes_preferences)
{
    AngleSubColumn source;
    source.set_unit_type(KIV_UNIT_WORLD);
    source.set_precision(1);
    NumericSubColumn column(1);
    const std::unique_ptr<SubColPrefs> prefs(source.create_preferences_object());
    column.apply_preferences_object(nullptr);
    EXPECT_EQ(column.inq_unit_type(), KIV_UNIT_FIELDS);
    column.apply_preferences_object(prefs.get());
    key_at(column, 1, {2.25});
    EXPECT_EQ(column.inq_summary(), "2.2");
    key_at(column, 2, {3.0});
    EXPECT_EQ(column.inq_summary(), "...2.2");
}
