#include "tests/support/OldRecord.h"
#include "xsheet/column/hdr/Column.h"
#include "xsheet/column/hdr/XSheet.h"
#include "xsheet/column/hdr/XSheetFinderFlags.h"

#include <gtest/gtest.h>

namespace {
template <class Kind> Kind* add_to(Column& column, const KIVString& header)
{
    auto* member = new Kind;
    member->init_after_construction();
    member->set_header_text(header);
    column.add_sub_column(member, nullptr);
    return member;
}

void make_key(SubColumn* sub_column, int frame, const char* text)
{
    sub_column->make_key(frame)->inq_data()->set_string(text);
}

std::string headers_of(gsl::owner<KIVLinkedList*> given)
{
    const std::unique_ptr<KIVLinkedList> list(given);
    std::string headers;
    for (const SubColumn* sub_column : list->of<SubColumn>())
        headers += sub_column->inq_header_text()->str() + " ";
    return headers;
}

/// sheet: body (x, limbs (arm), y), floor (colour)
class Columns : public testing::Test {
protected:
    Columns()
    {
        body = add_to<Column>(sheet, "body");
        x = add_to<SubColumn>(*body, "x");
        limbs = add_to<Column>(*body, "limbs");
        arm = add_to<SubColumn>(*limbs, "arm");
        y = add_to<SubColumn>(*body, "y");
        floor = add_to<Column>(sheet, "floor");
        colour = add_to<SubColumn>(*floor, "colour");
    }

    XSheet sheet{nullptr};
    Column* body;
    Column* limbs;
    Column* floor;
    SubColumn* x;
    SubColumn* y;
    SubColumn* arm;
    SubColumn* colour;
};
} // namespace

TEST_F(Columns, label_their_members_and_never_give_a_label_twice)
{
    EXPECT_EQ(x->inq_label(), 1U);
    EXPECT_EQ(y->inq_label(), 3U);
    EXPECT_EQ(body->find_sub_column(3), y);
    const std::unique_ptr<SubColumn> removed(body->remove_sub_column(y));
    EXPECT_EQ(removed->inq_column(), nullptr);
    EXPECT_EQ(body->remove_sub_column(y), nullptr);
    EXPECT_EQ(add_to<SubColumn>(*body, "z")->inq_label(), 4U);
    EXPECT_EQ(body->find_sub_column(3), nullptr);
    body->add_sub_column(removed->duplicate(), x);
    EXPECT_EQ(headers_of(body->inq_shallow_sub_column_list()), "x y z ");
}

TEST_F(Columns, let_the_nearest_hit_win)
{
    using Flags = XSheetFinderFlags;
    make_key(x, 20, "jump");
    make_key(arm, 12, "jump");
    EXPECT_EQ(sheet.find("jump", 1, Flags::FlagForwards), 12);
    EXPECT_EQ(sheet.find("jump", 50, 0), 20);
    EXPECT_EQ(sheet.find("fall", 50, 0), 0);
    limbs->set_collapsed();
    EXPECT_EQ(sheet.find("jump", 1, Flags::FlagForwards), 20);
    EXPECT_EQ(sheet.find("jump", 1, Flags::FlagForwards | Flags::FlagSearchColapsed), 12);
    EXPECT_EQ(sheet.find("limbs", 1, Flags::FlagHeaderMode), 0);
    EXPECT_EQ(sheet.find("floor", 1, Flags::FlagHeaderMode), -1);
}

TEST_F(Columns, cut_a_new_member_to_the_length_of_the_sheet)
{
    sheet.set_length(10);
    auto* late = new SubColumn;
    make_key(late, 11, "");
    body->add_sub_column(late, nullptr);
    EXPECT_TRUE(late->is_empty());
}

TEST_F(Columns, give_the_range_of_their_keys)
{
    int low = -5, high = 500;
    sheet.inq_key_range(&low, &high);
    EXPECT_EQ(low, 1);
    EXPECT_EQ(high, 1);
    make_key(arm, 30, "");
    make_key(colour, 20, "");
    sheet.inq_key_range(&low, &high);
    EXPECT_EQ(low, 20);
    EXPECT_EQ(high, 30);
}

TEST_F(Columns, copy_all_members_and_leave_label_and_node)
{
    make_key(arm, 30, "reach");
    body->set_bg_colour(KIVColour(0.5));
    body->set_node(reinterpret_cast<XSNode*>(this)); // never looked into
    const std::unique_ptr<SubColumn> copied(body->duplicate());
    auto* copy = static_cast<Column*>(copied.get());
    EXPECT_EQ(headers_of(copy->inq_deep_sub_column_list()), "x limbs arm y ");
    EXPECT_EQ(copy->inq_label(), 0U);
    EXPECT_EQ(copy->inq_node(), nullptr);
    EXPECT_TRUE(*copy->inq_bg_colour() == KIVColour(0.5));
    EXPECT_NE(copy->inq_bg_colour(), body->inq_bg_colour());
    EXPECT_EQ(copy->inq_next_sub_col_label(), 4);
    EXPECT_EQ(copy->find("reach", 1, XSheetFinderFlags::FlagForwards), 30);
    EXPECT_EQ(copy->inq_sub_column_list()->count(), 3);
    EXPECT_EQ(copy->find_sub_column(1)->inq_column(), copy);
}

TEST_F(Columns, mark_everything_above_a_change_for_saving)
{
    make_key(arm, 5, "");
    sheet.set_just_saved();
    EXPECT_FALSE(sheet.inq_needs_saving());
    EXPECT_FALSE(arm->inq_first_key()->inq_needs_saving());
    arm->inq_first_key()->ring_unring();
    for (const SubColumn* changed :
         {arm, static_cast<SubColumn*>(limbs), static_cast<SubColumn*>(body),
          static_cast<SubColumn*>(&sheet)})
        EXPECT_TRUE(changed->inq_needs_saving());
    EXPECT_FALSE(x->inq_needs_saving());
}

TEST_F(Columns, come_back_from_a_stream_as_one_tree)
{
    make_key(arm, 30, "reach");
    limbs->set_collapsed();
    arm->set_collapsed();
    body->set_bg_colour(KIVColour(0.25));
    body->set_colour_type(3);
    sheet.set_length(70);
    const auto back = stored_and_read(sheet);
    ASSERT_TRUE(back);
    EXPECT_FALSE(back->load_finished_with_abort(nullptr));
    EXPECT_EQ(headers_of(back->inq_deep_sub_column_list()), "body x limbs arm y floor colour ");
    EXPECT_EQ(back->inq_scene_length(), 70);
    EXPECT_EQ(back->inq_header_lines(), 7);
    EXPECT_EQ(back->inq_next_sub_col_label(), 3);
    auto* body_back = static_cast<Column*>(back->find_sub_column(1));
    EXPECT_TRUE(*body_back->inq_bg_colour() == KIVColour(0.25));
    EXPECT_EQ(body_back->inq_colour_type(), 3);
    auto* limbs_back = static_cast<Column*>(body_back->find_sub_column(2));
    EXPECT_TRUE(limbs_back->compare_display_flags(SubColumn::COLLAPSED));
    EXPECT_FALSE(limbs_back->find_sub_column(1)->compare_display_flags(SubColumn::COLLAPSED));
    EXPECT_EQ(limbs_back->find_sub_column(1)->inq_scene_length(), 70);
    EXPECT_FALSE(back->inq_needs_saving());
}

TEST(Column, reads_what_old_versions_told_of_colour)
{
    for (const int version : {79, 80, 81}) {
        OldRecord old("Column", version);
        old << 0 << 0;
        old.insert_with_class_hdr(nullptr); // the column around it
        old << 5L << 1L << 0;
        old << 0 << 9L;
        const KIVColour grey(0.5);
        if (version >= 80)
            old.insert_with_class_hdr(&grey);
        if (version >= 81)
            old << 6;
        const auto column = old.read<Column>();
        ASSERT_TRUE(column) << version;
        EXPECT_EQ(column->inq_next_sub_col_label(), 9);
        EXPECT_EQ(column->inq_bg_colour() != nullptr, version >= 80);
        EXPECT_EQ(column->inq_colour_type(), version >= 81 ? 6 : -1);
    }
}

TEST(Column, refuses_to_hold_itself)
{
    OldRecord old("Column", 81);
    old << 0 << 0;
    old.insert_with_class_hdr(nullptr);
    old << 5L << 1L << 0 << 1;
    old.put_seen(0);
    old << 9L;
    old.insert_with_class_hdr(nullptr);
    old << 6;
    EXPECT_EQ(old.read<Column>(), nullptr);
}

TEST(Column, finds_a_member_by_its_label_however_many_there_are)
{
    constexpr unsigned MANY = 100;
    Column column;
    for (unsigned i = 0; i < MANY; ++i)
        column.add_sub_column(new SubColumn, nullptr);
    SubColumn* last = column.find_sub_column(MANY);
    ASSERT_NE(last, nullptr);
    EXPECT_EQ(last->inq_label(), MANY);
    const std::unique_ptr<SubColumn> removed(column.remove_sub_column(last));
    EXPECT_EQ(column.find_sub_column(MANY), nullptr);
    column.find_sub_column(7)->set_label(1000);
    EXPECT_EQ(column.find_sub_column(7), nullptr);
    EXPECT_NE(column.find_sub_column(1000), nullptr);
}
