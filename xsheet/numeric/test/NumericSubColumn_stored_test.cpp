#include "tests/support/OldRecord.h"
#include "xsheet/numeric/hdr/NumericTSubColumn.h"
#include "xsheet/numeric/hdr/NumericXYSubColumn.h"
#include "xsheet/numeric/hdr/ScaleSubColumn.h"
#include "xsheet/numeric/hdr/WidthSubColumn.h"
#include "xsheet/numeric/test/numeric_keys.h"
#include "xsheet/ratio/hdr/RatioColumnData.h"
#include "xsheet/ratio/hdr/RatioKeyCellData.h"

namespace {
constexpr int TODAY = 127;

void tell_vector(CharOStream& out, int size, double value)
{
    out << size;
    for (int i = 0; i < size; ++i)
        out << value;
}

/// A sub-column without keys.
void tell_sub_column(CharOStream& out)
{
    out << 0 << 0;
    out.insert_with_class_hdr(nullptr);
    out << 1L << 1L << 0;
}

/// Up to and with the unit type.
void tell_limits(CharOStream& out, int vector_size, int order)
{
    tell_sub_column(out);
    tell_vector(out, vector_size, -9.0);
    tell_vector(out, vector_size, 9.0);
    out << order << 3 << static_cast<int>(KIV_UNIT_INCHES);
}

/// A numeric sub-column of one element as a release wrote it.
void tell_column(CharOStream& out, int version)
{
    tell_limits(out, 1, 1);
    if (version >= 82 && version <= 126) {
        out << 0;
        out.insert_with_class_hdr(nullptr);
    }
    if (version >= 108)
        tell_vector(out, 1, 0.5);
    if (version >= 110)
        out.insert_with_class_hdr(nullptr);
    if (version >= 110 && version <= 116) {
        out << 1;
        out.insert_with_class_hdr(nullptr);
    }
}

template <class Column> std::unique_ptr<Column> read_column(const char* name, int version)
{
    OldRecord record(name, version);
    tell_column(record, version);
    return record.read<Column>();
}
} // namespace

TEST(NumericSubColumn, reads_every_old_form)
{
    for (const int version : {81, 82, 107, 108, 109, 110, 116, 117, 126, 127}) {
        const auto column = read_column<NumericSubColumn>("NumericSubColumn", version);
        ASSERT_TRUE(column) << version;
        EXPECT_EQ(column->inq_minimum_values().elem(0), -9.0);
        EXPECT_EQ(column->inq_precision(), 3);
        EXPECT_EQ(column->inq_unit_type(), KIV_UNIT_INCHES);
        EXPECT_EQ(column->inq_element(0, 1), version < 108 ? 0.0 : 0.5) << version;
        EXPECT_TRUE(column->inq_policy()) << version;
    }
}

TEST(NumericSubColumn, reads_old_forms_of_its_heirs)
{
    for (const int version : {112, 113}) {
        OldRecord record("NumericYSubColumn", version);
        tell_column(record, version);
        if (version == 113)
            record.insert_with_class_hdr(nullptr);
        EXPECT_TRUE(record.read<NumericYSubColumn>()) << version;
    }
    for (const int version : {115, 116}) {
        const auto scale = read_column<ScaleSubColumn>("ScaleSubColumn", version);
        ASSERT_TRUE(scale);
        EXPECT_EQ(scale->inq_blank_value(0), version == 115 ? 1.0 : 0.5);
        EXPECT_EQ(scale->inq_minimum_values().elem(0), 0.000000001);
    }
    OldRecord record("WidthSubColumn", TODAY);
    tell_column(record, TODAY);
    record << 300.0;
    const auto width = record.read<WidthSubColumn>();
    ASSERT_TRUE(width);
    EXPECT_EQ(width->inq_element(0, 1), 300.0);
    EXPECT_EQ(width->inq_minimum_values().elem(0), 0.000000001);
}

TEST(NumericSubColumn, reads_a_key_before_and_with_ratio_data)
{
    for (const int version : {124, 125}) {
        OldRecord record("NumericKeyCell", version);
        record << 4L << 12 << 0;
        record.nested("Numeric1CellData", 118, [](CharOStream& out) {
            out.insert_with_class_hdr(nullptr);
            out.insert_with_class_hdr(nullptr);
            out << 1 << 2.5;
        });
        record << 0 << -1 << 0 << 1;
        record.insert_with_class_hdr(nullptr);
        if (version == 125)
            record.insert_with_class_hdr(nullptr);
        const auto key = record.read<NumericKeyCell>();
        ASSERT_TRUE(key) << version;
        EXPECT_EQ(key->inq_number(), 12);
        EXPECT_EQ(key->inq_own_element(0), 2.5);
        EXPECT_TRUE(key->inq_data()->inq_cell_ringed());
        EXPECT_FALSE(key->inq_is_ratioed());
    }
}

TEST(NumericSubColumn, refuses_a_key_that_is_not_numeric)
{
    NumericSubColumn column(1);
    column.insert_key(new KeyCell(nullptr, 3, 1), 3);
    EXPECT_TRUE(column.load_finished_with_abort());
}

TEST(NumericSubColumn, turns_an_old_ratioed_column_into_a_ratioed_key)
{
    NumericSubColumn source(1);
    key_at(source, 1, {10.0});
    key_at(source, 11, {20.0});
    OldRecord record("NumericSubColumn", 100);
    tell_limits(record, 1, 1);
    record << 1;
    record.nested("RatioColumnData", 119, [&](CharOStream& out) {
        out << 1.0 << 0.25;
        out.insert_with_class_hdr(&source);
        out.insert_with_class_hdr(nullptr);
    });
    const auto column = record.read<NumericSubColumn>();
    ASSERT_TRUE(column);
    column->convert_ratio_column_to_key_based();
    auto* key = static_cast<NumericKeyCell*>(column->inq_first_key());
    ASSERT_TRUE(key && key->inq_is_ratioed());
    NumericSubColumn* read_source = key->inq_ratio_data()->inq_source_column();
    EXPECT_EQ(column->inq_element(0, 1), 3.5);
    EXPECT_EQ(column->inq_element(0, 6), 4.75);
    key->set_is_ratioed(false);
    delete read_source;
}
