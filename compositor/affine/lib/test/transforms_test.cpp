#include "compositor/affine/lib/hdr/CNodeEWTranslate.h"
#include "compositor/affine/lib/hdr/CNodeHorFlip.h"
#include "compositor/affine/lib/hdr/CNodeNSTranslate.h"
#include "compositor/affine/lib/hdr/CNodeRotate.h"
#include "compositor/affine/lib/hdr/CNodeScale.h"
#include "compositor/affine/lib/hdr/CNodeShearTransform.h"
#include "compositor/affine/lib/hdr/CNodeTransform.h"
#include "compositor/affine/lib/hdr/CNodeVerFlip.h"
#include "compositor/affine/lib/hdr/CNodeXScale.h"
#include "compositor/affine/lib/hdr/CNodeXYScale.h"
#include "compositor/affine/lib/hdr/CNodeYScale.h"
#include "compositor/affine/lib/hdr/CNodeZTranslate.h"
#include "compositor/affine/lib/test/OldNode.h"
#include "compositor/affine/lib/test/keyed.h"
#include "kivlib/hdr/Matrix.h"
#include "xsheet/move/hdr/MoveColumn.h"
#include "xsheet/numeric/hdr/NumericTSubColumn.h"
#include "xsheet/numeric/hdr/ScaleSubColumn.h"

#include <gtest/gtest.h>

namespace {
void set_transform(CNodeTransform& node, const Vector2& place, double angle, double scale,
                   const Vector2& centre)
{
    set_place(node.inq_pos_subcolumn(), place);
    set_first_key(node.inq_angle_subcolumn(), angle);
    set_first_key(node.inq_scale_subcolumn(), scale);
    set_first_key(node.inq_centre_subcolumn(), centre.x(), 0);
    set_first_key(node.inq_centre_subcolumn(), centre.y(), 1);
}

std::string columns_of_new(const char* class_name)
{
    auto* record = static_cast<CNodeDescriptor*>(ClassManager::inq_main()->find_cd_for(class_name));
    const std::unique_ptr<CNode> node(record->new_node(nullptr, nullptr));
    return columns_of(static_cast<const XSNode&>(*node));
}
} // namespace

TEST(CNodeAffineTransform, has_the_columns_of_its_class_under_their_labels)
{
    EXPECT_EQ(columns_of_new("CNodeTransform"), "6 Move, 3 Angle, 4 Scale, 5 Center");
    EXPECT_EQ(columns_of_new("CNodeCamera"), "5 Move, 3 Angle, 4 Size");
    EXPECT_EQ(columns_of_new("CNodeTranslate"), "2 Move");
    EXPECT_EQ(columns_of_new("CNodeNSTranslate"), "1 N/S");
    EXPECT_EQ(columns_of_new("CNodeEWTranslate"), "1 E/W");
    EXPECT_EQ(columns_of(CNodeZTranslate()), "1 Z");
    EXPECT_EQ(columns_of_new("CNodeRotate"), "1 Angle");
    EXPECT_EQ(columns_of_new("CNodeScale"), "1 Scale");
    EXPECT_EQ(columns_of_new("CNodeXYScale"), "1 X Scale, 2 Y Scale");
    EXPECT_EQ(columns_of_new("CNodeHorFlip"), "");
    EXPECT_EQ(columns_of_new("CNodeShearTransform"),
              "1 E/W, 2 N/S, 3 Angle, 4 X Scale, 5 Y Scale, 6 Shear");
}

TEST(CNodeAffineTransform, stays_neutral_where_a_file_holds_other_columns)
{
    const OldNode old("CNodeScale", 1, {labelled(1, new SubColumn)});
    EXPECT_EQ(old.as<CNodeScale>()->inq_scale_subcolumn(), nullptr);
    EXPECT_EQ(old.node->inq_node_transform(1), Matrix44());
}

TEST(CNodeTransform, moves_free_of_its_scale_and_angle)
{
    CNodeTransform node;
    EXPECT_EQ(node.inq_node_transform(1), Matrix44());

    set_transform(node, {3.0, 4.0}, 0.0, 1.0, {0.0, 0.0});
    expect_point(node.inq_node_transform(1) * Vector2(1.0, 1.0), 4.0, 5.0);

    set_transform(node, {0.0, 0.0}, 0.0, 2.0, {10.0, 0.0});
    expect_point(node.inq_node_transform(1) * Vector2(10.0, 0.0), 10.0, 0.0);
    expect_point(node.inq_node_transform(1) * Vector2(11.0, 1.0), 12.0, 2.0);

    set_transform(node, {5.0, 0.0}, 90.0, 2.0, {7.0, -3.0});
    expect_point(node.inq_node_transform(1) * Vector2(7.0, -3.0), 12.0, -3.0);
    expect_point(node.inq_node_transform(1) * Vector2(8.0, -3.0), 12.0, -1.0);
    EXPECT_EQ(node.inq_offset(1), Vector2(5.0, 0.0));
}

TEST(CNodeTranslate, moves_along_the_axes_of_its_class)
{
    CNodeTranslate node;
    set_place(node.inq_pos_subcolumn(), {2.0, 3.0});
    EXPECT_EQ(node.inq_node_transform(1) * Vector2(1.0, 1.0), Vector2(3.0, 4.0));
    EXPECT_EQ(node.inq_node_transform(1)(2, 3), 1.0);

    CNodeNSTranslate north;
    set_first_key(north.inq_translate_subcolumn(), 3.0);
    EXPECT_EQ(north.inq_node_transform(1) * Vector2(1.0, 1.0), Vector2(1.0, 4.0));
    EXPECT_EQ(north.inq_offset(1), Vector2(0.0, 3.0));
    EXPECT_TRUE(north.inq_translate_subcolumn()->is_y_column(0));

    CNodeEWTranslate east;
    set_first_key(east.inq_translate_subcolumn(), 2.0);
    EXPECT_EQ(east.inq_node_transform(1) * Vector2(1.0, 1.0), Vector2(3.0, 1.0));
    EXPECT_EQ(east.inq_translate_subcolumn()->inq_type(), 3) << "not of the X kind";

    CNodeZTranslate depth;
    set_first_key(depth.inq_translate_subcolumn(), 9.0);
    EXPECT_EQ(depth.inq_node_transform(1), Matrix44());
    EXPECT_EQ(depth.inq_translate_subcolumn()->inq_unit_type(), KIV_UNIT_DEPTH);
}

TEST(CNodeScale, scales_and_flips_along_the_axes_of_its_class)
{
    const Vector2 point(1.0, 1.0);
    CNodeScale both;
    set_first_key(both.inq_scale_subcolumn(), 4.0);
    EXPECT_EQ(both.inq_node_transform(1) * point, Vector2(4.0, 4.0));
    CNodeXScale across;
    set_first_key(across.inq_scale_subcolumn(), 4.0);
    EXPECT_EQ(across.inq_node_transform(1) * point, Vector2(4.0, 1.0));
    CNodeYScale up;
    set_first_key(up.inq_scale_subcolumn(), 4.0);
    EXPECT_EQ(up.inq_node_transform(1) * point, Vector2(1.0, 4.0));
    CNodeXYScale each;
    set_first_key(each.inq_x_scale_subcolumn(), 4.0);
    set_first_key(each.inq_y_scale_subcolumn(), 5.0);
    EXPECT_EQ(each.inq_node_transform(1) * point, Vector2(4.0, 5.0));
    EXPECT_EQ(CNodeHorFlip().inq_node_transform(1) * point, Vector2(-1.0, 1.0));
    EXPECT_EQ(CNodeVerFlip().inq_node_transform(1) * point, Vector2(1.0, -1.0));

    set_first_key(both.inq_scale_subcolumn(), -4.0);
    EXPECT_EQ(both.inq_scale(1), 1e-9) << "only a shear node mirrors";
}

TEST(CNodeShearTransform, turns_scales_shears_and_moves_in_that_order)
{
    CNodeShearTransform node;
    set_first_key(node.inq_shear_subcolumn(), 45.0);
    EXPECT_NEAR(node.inq_node_transform(1)(0, 1), -1.0, 1e-12);

    set_first_key(node.inq_z_angle_subcolumn(), 90.0);
    set_first_key(node.inq_scale_x_subcolumn(), 2.0);
    set_first_key(node.inq_scale_y_subcolumn(), -3.0);
    set_first_key(node.inq_x_translate_subcolumn(), 10.0);
    set_first_key(node.inq_y_translate_subcolumn(), 20.0);
    // (1, 0) turned is (0, 1), scaled (0, -3), sheared (3, -3).
    expect_point(node.inq_node_transform(1) * Vector2(1.0, 0.0), 13.0, 17.0);
    EXPECT_EQ(node.inq_z_angle(1), 90.0) << "in degrees";
}

TEST(CNodeShearTransform, may_mirror_when_it_comes_out_of_a_file_too)
{
    const OldNode old("CNodeShearTransform", 0,
                      {labelled(4, new ScaleSubColumn), labelled(5, new ScaleSubColumn)});
    auto* node = old.as<CNodeShearTransform>();
    set_first_key(node->inq_scale_y_subcolumn(), -3.0);
    EXPECT_EQ(node->inq_scale(1), Vector2(1.0, -3.0));
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
    const OldNode both("CNodeTransform", 0,
                       {labelled(1, keyed<NumericSubColumn>(3.0)),
                        labelled(2, keyed<NumericSubColumn>(4.0)),
                        labelled(4, keyed<ScaleSubColumn>(2.0))});
    EXPECT_EQ(columns_of(*both.node), "4 , 6 Move");
    EXPECT_EQ(both.as<CNodeTransform>()->inq_translation(1), Vector2(3.0, 4.0));
    EXPECT_EQ(both.as<CNodeTransform>()->inq_scale(1), 2.0);

    auto* place = keyed<NumericTSubColumn>(3.0);
    set_first_key(place, 4.0, 1);
    const OldNode one("CNodeTranslate", 1, {labelled(1, place)});
    EXPECT_EQ(columns_of(*one.node), "2 Move");
    EXPECT_EQ(one.as<CNodeTranslate>()->inq_translation(1), Vector2(3.0, 4.0));
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
