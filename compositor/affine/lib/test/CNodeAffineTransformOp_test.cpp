#include "compositor/affine/lib/hdr/CNodeEWTranslate.h"
#include "compositor/affine/lib/hdr/CNodeScale.h"
#include "compositor/affine/lib/test/PlateGraph.h"
#include "compositor/affine/lib/test/keyed.h"

#include <gtest/gtest.h>

namespace {
constexpr double MOVE = 10.0;
constexpr double SCALE = 3.0;

/// The root, a move, a scale, and a source.
class CNodeAffineTransformOpChain : public testing::Test {
protected:
    CNodeAffineTransformOpChain()
    {
        set_first_key(move->inq_translate_subcolumn(), MOVE);
        set_first_key(scale->inq_scale_subcolumn(), SCALE);
    }

    /// Where the source's point (x, 0) comes to lie in the view, which doubles all.
    double inq_view_x(double x)
    {
        Matrix44 view;
        view.set_scale(Vector3(2.0, 2.0, 1.0));
        graph.evaluate(view);
        return (source->asked_transform * Vector2(x, 0.0)).x();
    }

    PlateGraph graph;
    CNodeEWTranslate* move = graph.add(new CNodeEWTranslate);
    CNodeScale* scale = graph.add(new CNodeScale, move);
    PlateNode* source = graph.add(new PlateNode(box(0, 0, 1, 1), false), scale);
};
} // namespace

TEST_F(CNodeAffineTransformOpChain, applies_the_node_nearest_the_source_first)
{
    EXPECT_EQ(inq_view_x(1.0), 2.0 * (MOVE + SCALE * 1.0));
    EXPECT_EQ(source->asked_box, box(0, 0, 1000, 1000)) << "in view space already";
}

TEST_F(CNodeAffineTransformOpChain, has_no_effect_where_a_node_is_disabled)
{
    scale->set_is_disabled(true);
    EXPECT_EQ(inq_view_x(1.0), 2.0 * (MOVE + 1.0));
}

TEST_F(CNodeAffineTransformOpChain, keeps_its_place_where_nothing_is_wanted)
{
    graph.inq_exec().set_is_restricted(true);
    source->inq_outputs()->inq_channel(0)->set_is_selected(true);
    EXPECT_EQ(inq_view_x(1.0), 2.0 * (MOVE + SCALE * 1.0));
}
