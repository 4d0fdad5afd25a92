#include "compositor/affine/lib/hdr/CNodeCamera.h"
#include "compositor/affine/lib/hdr/CNodeCameraRotate.h"
#include "compositor/affine/lib/hdr/CNodeCameraSize.h"
#include "compositor/affine/lib/hdr/CNodeCameraTranslate.h"
#include "compositor/affine/lib/test/OldNode.h"
#include "compositor/affine/lib/test/keyed.h"
#include "kivlib/hdr/Matrix.h"
#include "tests/support/Captured.h"

#include <cmath>
#include <gtest/gtest.h>

namespace {
/// Lets the width come down to 0, as an old file may have it.
void set_width(NumericSubColumn* column, double width)
{
    column->set_minimum_values(Vector(1, 0.0));
    set_first_key(column, width);
}
} // namespace

TEST(CNodeCamera, sees_the_world_the_other_way_round)
{
    CNodeCamera camera;
    EXPECT_TRUE(camera.inq_is_camera());
    EXPECT_TRUE(camera.inq_is_fielding());
    EXPECT_EQ(camera.inq_camera_width(1), 720.0);
    EXPECT_EQ(camera.inq_node_transform(1), Matrix44());

    set_place(camera.inq_pos_subcolumn(), {100.0, 0.0});
    expect_point(camera.inq_node_transform(1) * Vector2(100.0, 0.0), 0.0, 0.0);
    EXPECT_EQ(camera.inq_offset(1), Vector2(100.0, 0.0));

    set_first_key(camera.inq_width_subcolumn(), 360.0);
    EXPECT_EQ(camera.inq_camera_scale(1), 2.0);
    expect_point(camera.inq_node_transform(1) * Vector2(101.0, 0.0), 2.0, 0.0);

    set_first_key(camera.inq_angle_subcolumn(), 90.0);
    expect_point(camera.inq_node_transform(1) * Vector2(101.0, 0.0), 0.0, -2.0);
}

TEST(CNodeCamera, reports_a_width_of_nothing_each_time_and_takes_the_nominal_one)
{
    CNodeCamera camera;
    set_width(camera.inq_width_subcolumn(), 1e-10);
    const Captured captured;
    EXPECT_EQ(camera.inq_node_transform(1), Matrix44());
    const std::string once = captured.inq_errors();
    EXPECT_NE(once.find("compositor/affine/lib/src/CNodeCamera"), std::string::npos);
    EXPECT_NE(once.find("Minimum camera width reached.\n"), std::string::npos);
    camera.inq_camera_width(1);
    EXPECT_EQ(captured.inq_errors(), once + once);
}

TEST(CNodeCamera, gathers_the_position_of_old_files)
{
    const OldNode both(
        "CNodeCamera", 4,
        {labelled(1, keyed<NumericSubColumn>(3.0)), labelled(2, keyed<NumericSubColumn>(4.0))});
    EXPECT_EQ(columns_of(*both.node), "5 Move");
    EXPECT_EQ(both.as<CNodeCamera>()->inq_camera_position(1), Vector2(3.0, 4.0));
    EXPECT_EQ(both.as<CNodeCamera>()->inq_camera_width(1), 720.0) << "no column, no message";
}

TEST(CNodeCameraTranslate, moves_with_the_camera_once_it_was_loaded)
{
    CNodeCameraTranslate fresh;
    EXPECT_EQ(columns_of(fresh), "1 E/W - N/S");
    set_first_key(fresh.inq_translate_subcolumn(), 8.0);
    EXPECT_EQ(fresh.inq_node_transform(1) * Vector2(1.0, 1.0), Vector2(1.0, 1.0));

    auto* place = keyed(3.0, new NumericSubColumn(2));
    set_first_key(place, 4.0, 1);
    const OldNode old("CNodeCameraTranslate", 1, {labelled(1, place)});
    EXPECT_EQ(columns_of(*old.node), "2 Move");
    EXPECT_EQ(old.node->inq_node_transform(1) * Vector2(1.0, 1.0), Vector2(4.0, 5.0));
}

TEST(CNodeCameraSize, takes_every_width)
{
    CNodeCameraSize node;
    EXPECT_EQ(node.inq_width_subcolumn()->inq_unit_type(), KIV_UNIT_FIELD_WIDTH);
    set_first_key(node.inq_width_subcolumn(), 360.0);
    EXPECT_EQ(node.inq_node_transform(1) * Vector2(1.0, 2.0), Vector2(2.0, 4.0));

    const Captured captured;
    set_width(node.inq_width_subcolumn(), 0.0);
    EXPECT_TRUE(std::isinf(node.inq_node_transform(1)(0, 0)));
    EXPECT_TRUE(captured.inq_errors().empty());
}
