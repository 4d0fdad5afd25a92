#include "compositor/affine/lib/hdr/CNodeCamera.h"
#include "compositor/affine/lib/hdr/CNodeCameraSize.h"
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

TEST(CNodeCamera, reports_a_width_of_nothing_each_time_and_takes_the_nominal_one)
{
    CNodeCamera camera;
    EXPECT_TRUE(camera.inq_is_camera() && camera.inq_is_fielding());
    set_width(camera.inq_width_subcolumn(), 1e-10);
    const Captured captured;
    EXPECT_EQ(camera.inq_node_transform(1), Matrix44());
    const std::string once = captured.inq_errors();
    EXPECT_NE(once.find("compositor/affine/lib/src/CNodeCamera"), std::string::npos);
    EXPECT_NE(once.find("Minimum camera width reached.\n"), std::string::npos);
    camera.inq_camera_width(1);
    EXPECT_EQ(captured.inq_errors(), once + once);
}

TEST(CNodeCameraSize, takes_a_width_of_nothing)
{
    CNodeCameraSize node;
    const Captured captured;
    set_width(node.inq_width_subcolumn(), 0.0);
    EXPECT_TRUE(std::isinf(node.inq_node_transform(1)(0, 0)));
    EXPECT_TRUE(captured.inq_errors().empty());
}
