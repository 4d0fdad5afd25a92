#include "compositor/affine/lib/hdr/CNodeCamera.h"
#include "compositor/affine/lib/hdr/CNodeCameraSize.h"
#include "compositor/affine/lib/hdr/CNodeEWTranslate.h"
#include "compositor/affine/lib/hdr/CNodeNSTranslate.h"
#include "compositor/affine/lib/hdr/CNodeScale.h"
#include "compositor/affine/lib/hdr/CNodeShearTransform.h"
#include "compositor/affine/lib/hdr/CNodeTransform.h"
#include "compositor/affine/lib/hdr/CNodeZTranslate.h"
#include "compositor/affine/lib/test/OldNode.h"
#include "compositor/affine/lib/test/keyed.h"
#include "kivlib/hdr/Matrix.h"
#include "xsheet/move/hdr/MoveColumn.h"
#include "xsheet/numeric/hdr/NumericTSubColumn.h"
#include "xsheet/numeric/hdr/ScaleSubColumn.h"

#include <gtest/gtest.h>

namespace {
std::string columns_of_new(const char* class_name)
{
    const std::unique_ptr<CNodeAffineTransform> node(new_affine_node(class_name));
    return columns_of(*node);
}
} // namespace

TEST(CNodeAffineTransform, has_the_columns_of_its_class_under_their_labels)
{
    EXPECT_EQ(columns_of_new("CNodeTransform"), "6 Move, 3 Angle, 4 Scale, 5 Center");
    EXPECT_EQ(columns_of_new("CNodeCamera"), "5 Move, 3 Angle, 4 Size");
    EXPECT_EQ(columns_of_new("CNodeTranslate"), "2 Move");
    EXPECT_EQ(columns_of_new("CNodeNSTranslate"), "1 N/S");
    EXPECT_EQ(columns_of_new("CNodeEWTranslate"), "1 E/W");
    EXPECT_EQ(columns_of_new("CNodeZTranslate"), "1 Z");
    EXPECT_EQ(columns_of_new("CNodeRotate"), "1 Angle");
    EXPECT_EQ(columns_of_new("CNodeScale"), "1 Scale");
    EXPECT_EQ(columns_of_new("CNodeXYScale"), "1 X Scale, 2 Y Scale");
    EXPECT_EQ(columns_of_new("CNodeHorFlip"), "");
    EXPECT_EQ(columns_of_new("CNodeCameraTranslate"), "1 E/W - N/S");
    EXPECT_EQ(columns_of_new("CNodeShearTransform"),
              "1 E/W, 2 N/S, 3 Angle, 4 X Scale, 5 Y Scale, 6 Shear");
}

TEST(CNodeAffineTransform, stays_neutral_where_a_file_holds_other_columns)
{
    const OldNode old("CNodeScale", 1, {labelled(1, new SubColumn)});
    EXPECT_EQ(old.as<CNodeScale>()->inq_scale_subcolumn(), nullptr);
    EXPECT_EQ(old.node->inq_node_transform(1), Matrix44());
}

TEST(CNodeAffineTransform, has_columns_of_the_kind_and_unit_of_its_class)
{
    EXPECT_TRUE(CNodeNSTranslate().inq_translate_subcolumn()->is_y_column(0));
    EXPECT_EQ(CNodeEWTranslate().inq_translate_subcolumn()->inq_type(), 3) << "not of the X kind";
    EXPECT_EQ(CNodeZTranslate().inq_translate_subcolumn()->inq_unit_type(), KIV_UNIT_DEPTH);
    EXPECT_EQ(CNodeCameraSize().inq_width_subcolumn()->inq_unit_type(), KIV_UNIT_FIELD_WIDTH);
    EXPECT_EQ(CNodeCamera().inq_width_subcolumn()->inq_unit_type(), KIV_UNIT_FIELD_WIDTH);
}

TEST(CNodeShearTransform, alone_may_mirror_by_its_scale)
{
    CNodeScale both;
    set_first_key(both.inq_scale_subcolumn(), -4.0);
    EXPECT_EQ(both.inq_scale(1), 1e-9);

    const OldNode old("CNodeShearTransform", 0,
                      {labelled(4, new ScaleSubColumn), labelled(5, new ScaleSubColumn)});
    auto* node = old.as<CNodeShearTransform>();
    set_first_key(node->inq_scale_y_subcolumn(), -3.0);
    EXPECT_EQ(node->inq_scale(1), Vector2(1.0, -3.0));
    EXPECT_EQ(node->inq_z_angle(1), 0.0);
}

TEST(OldTransforms, leave_their_unused_numbers_behind)
{
    const std::pair<const char*, int> numbers[] = {
        {"CNodeTranslate", 1},      {"CNodeNSTranslate", 1}, {"CNodeEWTranslate", 1},
        {"CNodeRotate", 1},         {"CNodeScale", 1},       {"CNodeXYScale", 1},
        {"CNodeTransform", 0},      {"CNodeXScale", 0},      {"CNodeHorFlip", 0},
        {"CNodeShearTransform", 0}, {"CNodeCamera", 4},      {"CNodeCameraTranslate", 1},
        {"CNodeCameraRotate", 1},   {"CNodeCameraSize", 1}};
    for (const auto& [class_name, n] : numbers) {
        EXPECT_TRUE(reads_with_numbers(class_name, 94, n)) << class_name;
        EXPECT_FALSE(n > 0 && reads_with_numbers(class_name, 94, n - 1)) << class_name;
        EXPECT_TRUE(reads_with_numbers(class_name, 95, 0)) << class_name;
    }
}

TEST(OldTransforms, gather_their_position_in_a_move_column)
{
    const auto plain = [] { return labelled(1, keyed<NumericSubColumn>(3.0)); };
    const OldNode both(
        "CNodeTransform", 0,
        {plain(), labelled(2, keyed<NumericSubColumn>(4.0)), labelled(4, new ScaleSubColumn)});
    EXPECT_EQ(columns_of(*both.node), "4 , 6 Move");
    EXPECT_EQ(both.as<CNodeTransform>()->inq_pos_subcolumn()->inq_mode(), MoveColumn::XYCOL_MODE);
    EXPECT_EQ(columns_of(*OldNode("CNodeCamera", 4, {plain()}).node), "5 Move");

    const OldNode one("CNodeTranslate", 1, {labelled(1, new NumericTSubColumn)});
    EXPECT_EQ(columns_of(*one.node), "2 Move");
    EXPECT_EQ(one.as<CNodeTranslate>()->inq_pos_subcolumn()->inq_mode(), MoveColumn::TCOL_MODE);

    const OldNode none("CNodeTransform", 0, {labelled(2, keyed<NumericSubColumn>(4.0))});
    EXPECT_EQ(columns_of(*none.node), "2 , 6 Move");
    EXPECT_EQ(none.as<CNodeTransform>()->inq_translation(1), Vector2(0.0, 0.0));
}

TEST(OldTransforms, are_left_alone_where_the_first_column_is_the_live_one)
{
    const OldNode north("CNodeNSTranslate", 1, {labelled(1, keyed<NumericSubColumn>(3.0))});
    EXPECT_EQ(columns_of(*north.node), "1 ");
    EXPECT_EQ(north.as<CNodeNSTranslate>()->inq_translation(1), Vector2(0.0, 3.0));

    const OldNode today("CNodeTranslate", 1,
                        {labelled(2, new MoveColumn), labelled(1, new NumericSubColumn)});
    EXPECT_EQ(columns_of(*today.node), "2 , 1 ") << "the move column is there already";
}
