#include "compositor/affine/lib/hdr/CNodeRotate.h"
#include "compositor/imagelib/lib/hdr/CNodeScreen.h"
#include "compositor/imagelib/lib/hdr/CNodeScreenOp.h"
#include "compositor/imagelib/lib/test/ImageGraph.h"
#include "compositor/imagelib/lib/test/Pixels.h"
#include "xsheet/colour/hdr/ColourKeyCell.h"
#include "xsheet/colour/hdr/ColourSubColumn.h"

#include <gtest/gtest.h>

namespace {

CNodeScreen* make_card(const KIVColour& colour)
{
    auto* card = new CNodeScreen;
    KeyCell* key = card->inq_colour_subcolumn()->make_key(1);
    static_cast<ColourCellData*>(key->inq_data())->set_colour(colour);
    return card;
}

/// A card of half a colour that counts its drawings.
class GlassCard : public CNodeScreen {
public:
    KIVColour inq_colour(int) const override { return {1.0, 0.0, 0.0, 0.5}; }
    gsl::owner<CNodeOp*> new_nodeop(int) override { return new Op(this); }

    int n_drawn = 0;

private:
    class Op : public CNodeScreenOp {
    public:
        explicit Op(GlassCard* card) : CNodeScreenOp(card), card(card) {}
        void generate_data(AbortPanel* abort) override
        {
            card->n_drawn +=
                CDataImage::from(inq_node_data())->inq_image_ibbox_v().inq_is_empty() ? 0 : 1;
            CNodeScreenOp::generate_data(abort);
        }

    private:
        GlassCard* card;
    };
};

} // namespace

TEST(CNodeScreen, fills_all_that_is_asked_for_but_a_grey_render)
{
    ImageGraph graph;
    auto* turn = graph.add(new CNodeRotate);
    graph.connect(turn, graph.output);
    graph.connect(graph.add(make_card(KIVColour(0.0, 1.0, 0.0))), turn);
    EXPECT_EQ(find_picture(graph.render(3, 2).get()), Picture(2, "GGG"));
    graph.bits = 16;
    EXPECT_EQ(graph.render(3, 2)->inq_type(), PT_RGBA_16);
    graph.is_colour = false;
    EXPECT_EQ(graph.render(3, 2), nullptr);
}

TEST(CNodeScreen, hides_what_lies_below_even_if_it_is_translucent)
{
    ImageGraph graph;
    auto* upper = graph.add(new GlassCard);
    auto* lower = graph.add(new GlassCard);
    graph.connect(upper, graph.output);
    graph.connect(lower, graph.output);
    graph.connect(graph.add(make_card(KIVColour(1.0))), graph.output);
    const std::unique_ptr<KIVPixmap> frame = graph.render(2, 2);
    EXPECT_EQ(upper->n_drawn, 1);
    EXPECT_EQ(lower->n_drawn, 0);
    ASSERT_TRUE(frame);
    EXPECT_NEAR(frame->inq_row(1)[4], 128, 1);
    EXPECT_NEAR(frame->inq_row(1)[7], 128, 1);
}
