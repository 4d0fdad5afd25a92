#include "compositor/affine/lib/hdr/CNodeEWTranslate.h"
#include "compositor/affine/lib/test/PlateGraph.h"

#include <gtest/gtest.h>

namespace {
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

TEST(CDataRender, spares_what_an_opaque_layer_hides)
{
    PlateGraph graph;
    auto* moved = graph.add(new CNodeEWTranslate);
    PlateNode* bottom = graph.add(new PlateNode(box(2, 2, 4, 4), true), moved);
    PlateNode* middle = graph.add(new PlateNode(box(0, 0, 8, 8), true));
    PlateNode* top = graph.add(new PlateNode(box(1, 1, 3, 3), false));
    const CDataRender& result = graph.evaluate();
    EXPECT_EQ(result.inq_image_ibbox_v(), box(0, 0, 8, 8));
    EXPECT_TRUE(result.inq_image_is_opaque());
    EXPECT_TRUE(bottom->asked_box.inq_is_empty());
    EXPECT_EQ(bottom->n_answers, 2) << "asked again, for nothing";
    EXPECT_TRUE(bottom->drawn_box.inq_is_empty());
    EXPECT_EQ(middle->drawn_box, box(0, 0, 8, 8));
    EXPECT_EQ(top->drawn_box, box(1, 1, 3, 3));
}

TEST(CDataRender, brings_nothing_back_when_a_later_layer_is_larger)
{
    PlateGraph graph;
    PlateNode* bottom = graph.add(new PlateNode(box(2, 2, 4, 4), false));
    PlateNode* cover = graph.add(new PlateNode(box(0, 0, 8, 8), true));
    PlateNode* aside = graph.add(new PlateNode(box(6, 6, 9, 9), true));
    EXPECT_FALSE(graph.evaluate().inq_image_is_opaque());
    EXPECT_TRUE(bottom->drawn_box.inq_is_empty());
    EXPECT_EQ(cover->drawn_box, box(0, 0, 8, 8));
    EXPECT_EQ(aside->drawn_box, box(6, 6, 9, 9));
}
