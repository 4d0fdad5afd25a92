#include "compositor/imagelib/lib/hdr/CNodeScreen.h"
#include "compositor/imagelib/lib/test/ImageGraph.h"
#include "imagelib/hdr/KIVPixmap.h"
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

/// A card of half a colour.
class GlassCard : public CNodeScreen {
public:
    KIVColour inq_colour(int) const override { return {1.0, 0.0, 0.0, 0.5}; }
};

} // namespace

TEST(CNodeScreen, hides_what_lies_below_even_if_it_is_translucent)
{
    ImageGraph graph;
    graph.connect(graph.add(new GlassCard), graph.output);
    graph.connect(graph.add(make_card(KIVColour(1.0))), graph.output);
    const std::unique_ptr<KIVPixmap> frame = graph.render(2, 2);
    ASSERT_TRUE(frame);
    EXPECT_NEAR(frame->inq_row(1)[4], 128, 1);
    EXPECT_NEAR(frame->inq_row(1)[7], 128, 1);
}
