#include "compositor/imagelib/lib/hdr/CNodeNullTransform.h"
#include "compositor/imagelib/lib/hdr/CNodeScreen.h"
#include "compositor/imagelib/lib/hdr/CNodeUniversalMacro.h"
#include "compositor/imagelib/lib/hdr/CNodeUniversalReceiver.h"
#include "compositor/imagelib/lib/hdr/CNodeUniversalTransmitter.h"
#include "compositor/imagelib/lib/test/ImageGraph.h"

#include <gtest/gtest.h>

namespace {
std::string title(const XSNode& node)
{
    return node.inq_subcolumn()->inq_header_text()->str();
}

/// A card whose light goes to the output by way of a transmitter and its receiver.
struct Link : ImageGraph {
    Link()
    {
        connect(receiver, output);
        connect(transmitter, receiver);
    }
    CNodeScreen* card = add(new CNodeScreen);
    CNodeUniversalTransmitter* transmitter = add(new CNodeUniversalTransmitter);
    CNodeUniversalReceiver* receiver = add(new CNodeUniversalReceiver);
};
} // namespace

TEST(UniversalNodes, a_transmitter_and_its_receiver_bear_one_title)
{
    Link link;
    EXPECT_EQ(link.transmitter->inq_receiver(), link.receiver);
    EXPECT_EQ(link.receiver->inq_transmitter(), link.transmitter);
    EXPECT_EQ(title(*link.receiver), "");
    link.connect(link.card, link.transmitter);
    EXPECT_EQ(title(*link.transmitter), "Color Card");
    EXPECT_EQ(title(*link.receiver), "Color Card");

    link.transmitter->inq_subcolumn()->set_header_text("Sky");
    link.receiver->update_name();
    EXPECT_EQ(title(*link.receiver), "Sky");
    const CNodeUniversalTransmitter alone;
    EXPECT_EQ(alone.inq_receiver(), nullptr);
    CNodeUniversalReceiver().update_name();
}

TEST(UniversalNodes, the_line_of_a_link_is_hidden_and_no_walk_crosses_it)
{
    Link link;
    link.connect(link.card, link.transmitter);
    EXPECT_EQ(link.receiver->inq_n_vis_input_channels(), 0);
    EXPECT_FALSE(link.receiver->inq_can_connect_to_input_chans());
    for (CNode* end : {static_cast<CNode*>(link.transmitter), static_cast<CNode*>(link.receiver)}) {
        end->set_is_selected(true);
        EXPECT_EQ(link.receiver->inq_n_vis_input_channels(), 1);
        end->set_is_selected(false);
    }
    const std::unique_ptr<KIVLinkedList> below(link.output->inq_descendents(true, true));
    EXPECT_EQ(below->count(), 1);
}

TEST(UniversalNodes, a_macro_comes_back_with_the_nodes_of_its_graph)
{
    ImageGraph full;
    auto* macro = full.add(new CNodeUniversalMacro);
    EXPECT_TRUE(macro->inq_hidden());
    CNodeNullTransform stranger;
    for (CNode* node : {static_cast<CNode*>(&stranger), static_cast<CNode*>(full.output),
                        static_cast<CNode*>(full.output)})
        macro->add_node(node);
    const auto back = stored_and_read(full.graph);
    EXPECT_EQ(macro->inq_constituent_nodes()->count(), 2);
    ASSERT_TRUE(back);
    const auto* nodes = back->inq_nodes_list();
    const auto* read = static_cast<CNodeUniversalMacro*>(nodes->at_index(1));
    ASSERT_EQ(read->inq_constituent_nodes()->count(), 1);
    EXPECT_EQ(read->inq_constituent_nodes()->at_index(0), nodes->at_index(0));
}

TEST(UniversalNodes, macros_in_macros_need_no_stack)
{
    constexpr int DEPTH = 50000;
    auto graph = std::make_unique<CNodeGraph>(nullptr);
    CNodeUniversalMacro* outer = nullptr;
    for (int i = 0; i < DEPTH; ++i) {
        auto* macro = new CNodeUniversalMacro;
        if (outer)
            outer->add_node(macro);
        graph->add_node(macro);
        outer = macro;
    }
    const auto back = stored_and_read(*graph);
    ASSERT_TRUE(back);
    int depth = 0;
    const KIVObject* macro = back->inq_nodes_list()->at_index(0);
    for (; macro; ++depth)
        macro =
            static_cast<const CNodeUniversalMacro*>(macro)->inq_constituent_nodes()->at_index(0);
    EXPECT_EQ(depth, DEPTH);
}
