#include "curveslib/hdr/Fairing.h"
#include "kivlib/hdr/KIVDefaults.h"
#include "tests/support/Captured.h"
#include "xsheet/column/hdr/XSheet.h"
#include "xsheet/column/hdr/XSheetFinderFlags.h"
#include "xsheet/node/hdr/SubColPrefs.h"
#include "xsheet/numeric/hdr/AngleSubColumn.h"
#include "xsheet/numeric/hdr/NumericSubColumn.h"
#include "xsheet/numeric/hdr/NumericTSubColumn.h"
#include "xsheet/numeric/hdr/NumericXYSubColumn.h"
#include "xsheet/numeric/hdr/ScaleSubColumn.h"
#include "xsheet/numeric/hdr/WidthSubColumn.h"
#include "xsheet/numeric/test/numeric_keys.h"

namespace {
class HalfFrame {
public:
    HalfFrame() { Fairing::set_half_frame(true); }
    ~HalfFrame() { Fairing::set_half_frame(false); }
};

std::vector<double> elements_of(const Vector& value)
{
    return {value.inq_elements().begin(), value.inq_elements().end()};
}
} // namespace

TEST(NumericSubColumn, blends_from_key_to_key_and_is_blank_before_the_first)
{
    NumericSubColumn column(1);
    column.set_default_values(Vector(1, 7.0));
    key_at(column, 10, {100.0});
    key_at(column, 14, {200.0});
    EXPECT_EQ(column.inq_element(0, 5), 7.0);
    EXPECT_EQ(column.inq_element(0, 10), 100.0);
    EXPECT_EQ(column.inq_element(0, 12), 150.0);
    EXPECT_EQ(column.inq_element(0, 14), 200.0);
    EXPECT_EQ(column.inq_element(0, 999), 200.0) << "the last key holds";
    EXPECT_EQ(elements_of(column.inq_value(11)), std::vector{125.0});
}

TEST(NumericSubColumn, reads_the_blank_value_under_a_stop_and_from_a_key_without_data)
{
    NumericSubColumn column(2);
    column.set_default_values(Vector(Vector2(3.0, 4.0)));
    key_at(column, 1, {1.0, 2.0})->set_mode(IM_STOP);
    EXPECT_EQ(elements_of(column.inq_value(2)), (std::vector{3.0, 4.0}));
    column.insert_key(column.create_new_key(), 5);
    EXPECT_EQ(elements_of(column.inq_value(5)), (std::vector{3.0, 4.0}));
    EXPECT_EQ(column.inq_element(1, 5), 4.0);
}

TEST(NumericSubColumn, drops_the_values_on_both_sides_of_an_edited_key)
{
    NumericSubColumn column(1);
    key_at(column, 1, {0.0});
    NumericKeyCell* middle = key_at(column, 11, {10.0});
    key_at(column, 21, {20.0});
    EXPECT_EQ(column.inq_element(0, 6), 5.0);
    EXPECT_EQ(column.inq_element(0, 16), 15.0);
    data_of(middle)->set_element(0, 30.0);
    EXPECT_EQ(column.inq_element(0, 6), 15.0);
    EXPECT_EQ(column.inq_element(0, 16), 25.0);
}

TEST(NumericSubColumn, keeps_as_many_elements_as_its_order_says)
{
    for (const int order : {1, 2, 3, 4, 6}) {
        NumericSubColumn column(order);
        NumericKeyCell* from = key_at(column, 1, {});
        NumericKeyCell* to = key_at(column, 3, {});
        for (int i = 0; i < order; ++i) {
            data_of(from)->set_element(i, i);
            data_of(to)->set_element(i, 10.0 * i);
        }
        const Vector middle = column.inq_value(2);
        ASSERT_EQ(middle.size(), order);
        for (int i = 0; i < order; ++i)
            EXPECT_EQ(middle.elem(i), 5.5 * i) << order;
        EXPECT_EQ(data_of(column.inq_cell(2))->inq_order(), order);
    }
}

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

TEST(NumericSubColumn, reads_the_keys_own_frame_as_an_inbetween_in_half_frame_working)
{
    NumericSubColumn column(1);
    key_at(column, 1, {0.0});
    key_at(column, 5, {8.0})->set_mode(IM_HOLD);
    const HalfFrame half_frame;
    EXPECT_TRUE(column.inq_cell(1)->is_an_inbetween());
    EXPECT_TRUE(column.inq_cell(5)->is_a_key());
    EXPECT_EQ(column.inq_element(0, 1), 8.0 * column.inq_first_key()->inq_ifactor(0));
}

TEST(NumericSubColumn, tells_the_direction_and_the_differences_of_a_key)
{
    NumericSubColumn column(1);
    AngleSubColumn angles;
    for (NumericSubColumn* c : {&column, static_cast<NumericSubColumn*>(&angles)}) {
        key_at(*c, 1, {10.0});
        key_at(*c, 5, {2.0});
    }
    auto* first = static_cast<NumericKeyCell*>(column.inq_first_key());
    auto* last = static_cast<NumericKeyCell*>(column.inq_last_key());
    EXPECT_FALSE(first->is_increasing());
    EXPECT_TRUE(last->is_increasing());
    EXPECT_TRUE(angles.inq_first_key()->is_increasing());
    EXPECT_FALSE(angles.inq_last_key()->is_increasing());
    EXPECT_EQ(last->inq_difference_from_previous_key(0), -8.0);
    EXPECT_EQ(first->inq_difference_from_previous_key(0), 0.0);
    EXPECT_EQ(first->inq_difference_from_this_key(3, 0), -4.0);
    EXPECT_EQ(first->inq_difference_from_previous_frame(3, 0), -2.0);
    EXPECT_EQ(first->inq_difference_from_previous_frame(0, 0), 0.0);
    EXPECT_EQ(last->inq_difference_from_previous_frame(0), -2.0);
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

TEST(NumericSubColumn, sets_up_each_kind_with_its_units_limits_and_defaults)
{
    KIVDefaults::set_default("NumericPrecision", 4);
    KIVDefaults::set_default("ScalePrecision", 1);
    const ScaleSubColumn scale;
    const AngleSubColumn angle;
    KIVDefaults::clear_default("NumericPrecision");
    KIVDefaults::clear_default("ScalePrecision");
    WidthSubColumn width;

    EXPECT_EQ(scale.inq_unit_type(), KIV_UNIT_PERCENT);
    EXPECT_EQ(scale.inq_precision(), 1);
    EXPECT_EQ(scale.inq_blank_value(0), 1.0);
    EXPECT_EQ(scale.inq_minimum_values().elem(0), 0.000000001);
    EXPECT_EQ(angle.inq_unit_type(), KIV_UNIT_DEGREES);
    EXPECT_EQ(angle.inq_precision(), 4);
    EXPECT_EQ(width.inq_unit_type(), KIV_UNIT_FIELD_WIDTH);
    EXPECT_EQ(width.inq_precision(), 2);
    EXPECT_EQ(width.inq_element(0, 1), 720.0);
    width.set_blank_value(360.0);
    EXPECT_EQ(data_of(width.make_key(3))->inq_element(0), 360.0);
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

TEST(NumericSubColumn, gives_one_fairing_for_the_whole_column)
{
    NumericSubColumn column(1);
    key_at(column, 1, {10.0});
    EXPECT_EQ(column.extract_column_fairing(), nullptr);
    key_at(column, 6, {10.0});
    key_at(column, 11, {30.0});
    const std::unique_ptr<Fairing> fairing(column.extract_column_fairing());
    ASSERT_EQ(fairing->inq_control_point_count(), 3);
    const FairingCP* middle = fairing->inq_control_point(1);
    EXPECT_EQ(middle->point, (FairingCP::Place{0.5, 0.0}));
    EXPECT_EQ(middle->before, (FairingCP::Place{-0.05, 0.0}));
    EXPECT_EQ(middle->after, (FairingCP::Place{0.05, 0.1}));
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

TEST(NumericSubColumn, copies_its_keys_and_settings)
{
    WidthSubColumn column;
    column.set_blank_value(100.0);
    column.set_last_max(5.0);
    key_at(column, 3, {4.0});
    key_at(column, 5, {8.0});
    const std::unique_ptr<SubColumn> copy(column.duplicate());
    auto& width = static_cast<WidthSubColumn&>(*copy);
    EXPECT_EQ(width.inq_type(), 13);
    EXPECT_EQ(width.inq_element(0, 4), 6.0);
    EXPECT_EQ(width.inq_element(0, 1), 100.0);
    EXPECT_EQ(width.inq_last_max(), 0.0);
    EXPECT_EQ(width.inq_policy()->inq_sub_column(), &width);
}

TEST(NumericSubColumn, reports_an_element_that_is_not_there)
{
    NumericSubColumn column(2);
    key_at(column, 1, {5.0, 6.0});
    const Captured captured;
    EXPECT_EQ(column.inq_element(2, 1), 5.0);
    EXPECT_NE(captured.inq_errors().find("VECLIB [Vector::elem]: element index out of bounds\n"),
              std::string::npos);
}
