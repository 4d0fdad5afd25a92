#include "compositor/affine/lib/hdr/CDataRender.h"

#include <gtest/gtest.h>

namespace {
/// An image of which nothing is known but where it is.
class Plate : public CDataRender {
public:
    CDataDescriptor* inq_desc() const override { return nullptr; }
    int inq_type() const override { return 0; }
};

IntBBox box(long left, long bottom, long right, long top)
{
    return IntBBox(IntRect(top, left, bottom, right));
}

Plate plate(const IntBBox& covered, bool opaque)
{
    Plate p;
    p.set_immediate_data(covered, opaque);
    return p;
}

/// The box and the opacity of the second laid over the first.
Plate united(Plate below, Plate above)
{
    below.union_immediate_data_from(&above, nullptr);
    return below;
}
} // namespace

TEST(CDataRender, is_opaque_where_one_of_two_covers_all)
{
    const IntBBox small = box(2, 2, 4, 4);
    const IntBBox large = box(0, 0, 8, 8);
    EXPECT_TRUE(united(plate(large, true), plate(small, false)).inq_image_is_opaque());
    EXPECT_TRUE(united(plate(small, false), plate(large, true)).inq_image_is_opaque());
    EXPECT_FALSE(united(plate(large, false), plate(small, true)).inq_image_is_opaque());
    EXPECT_FALSE(united(plate(small, true), plate(large, false)).inq_image_is_opaque());

    const Plate halves = united(plate(box(0, 0, 4, 8), true), plate(box(4, 0, 8, 8), true));
    EXPECT_EQ(halves.inq_image_ibbox_v(), large);
    EXPECT_FALSE(halves.inq_image_is_opaque()) << "neither covers all";

    const Plate over_nothing = united(Plate(), plate(small, true));
    EXPECT_EQ(over_nothing.inq_image_ibbox_v(), small);
    EXPECT_TRUE(over_nothing.inq_image_is_opaque());
    EXPECT_TRUE(united(plate(small, true), Plate()).inq_image_is_opaque());
}
