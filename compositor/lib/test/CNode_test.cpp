#include "compositor/lib/hdr/CNode.h"
#include "compositor/lib/hdr/cdata_tDArray.h"
#include "compositor/lib/test/SampleNodes.h"
#include "tests/support/OldRecord.h"

#include <gtest/gtest.h>

using namespace sample;

namespace {
/// a and b feed m, m feeds both n and o, those feed the root r.
struct Diamond {
    Diamond()
    {
        join(a, m, 0);
        join(b, m, 1);
        join(m, n);
        join(m, o);
        join(n, r, 0);
        join(o, r, 1);
        graph.set_root_node(r);
    }
    CNodeGraph graph{nullptr};
    SampleNode* a = add<SampleSource>(graph, "a");
    SampleNode* b = add<SampleSource>(graph, "b");
    SampleNode* m = add<SampleMix>(graph, "m");
    SampleNode* n = add<SampleLine>(graph, "n");
    SampleNode* o = add<SampleLine>(graph, "o");
    SampleNode* r = add<SampleMix>(graph, "r");
};

/// The fields of a node's record of some release, behind its class header.
std::unique_ptr<SampleSource> read_old(int version, const std::function<void(OldRecord&)>& tell)
{
    OldRecord old("SampleSource", version);
    tell(old);
    return old.read<SampleSource>();
}

void put_nulls(OldRecord& r, int n)
{
    for (; n > 0; --n)
        r.insert_with_class_hdr(nullptr);
}

/// A group that gives an answer of its own: what another node says, or nothing.
class StandIn : public SampleLine {
public:
    CNode* inq_effective_node() override { return asked ? asked->inq_effective_node() : nullptr; }

    CNode* asked = nullptr;
};
} // namespace

TEST(CNode, has_a_label_of_its_own_also_as_a_copy)
{
    const std::unique_ptr<SampleMix> mix(new_node<SampleMix>());
    mix->set_is_selected(true);
    mix->set_is_disabled(true);
    mix->set_position(Vector2(3.0, 4.0));
    mix->add_to_group(mix.get());
    mix->add_to_macro(mix.get());
    mix->set_types(new cdata_tDArray(1));
    const std::unique_ptr<SampleMix> copy(static_cast<SampleMix*>(mix->clone()));
    EXPECT_EQ(copy->inq_label(), mix->inq_label() + 1);
    EXPECT_EQ(copy->inq_n_input_channels(), 2);
    EXPECT_EQ(in(copy.get())->inq_node(), copy.get());
    EXPECT_TRUE(copy->inq_is_selected());
    EXPECT_EQ(copy->inq_position(), Vector2(3.0, 4.0));
    EXPECT_EQ(copy->inq_macro(), mix.get());
    EXPECT_EQ(copy->inq_group(), nullptr);
    EXPECT_EQ(copy->inq_types(), nullptr);
    EXPECT_FALSE(copy->inq_is_disabled());
    EXPECT_EQ(stored_and_read(*mix)->inq_label(), mix->inq_label() + 2);
}

TEST(CNode, reads_the_records_of_old_releases)
{
    const auto oldest = read_old(91, [](OldRecord& r) {
        r << 1;          // disabled, to be ignored
        put_nulls(r, 3); // graph, inputs, outputs
        r << 1.0 << 2.0 << 0.5;
    });
    ASSERT_TRUE(oldest);
    EXPECT_FALSE(oldest->inq_is_disabled());
    EXPECT_EQ(oldest->inq_width(), -1.0);
    EXPECT_EQ(oldest->inq_position(), Vector2(1.0, 2.0));
    EXPECT_EQ(oldest->inq_dw_tag_pos(), 0.5);

    const auto folding = [](OldRecord& r) {
        r << 1;
        put_nulls(r, 2);
        r << 1.0 << 2.0 << 1 << 1;
        put_nulls(r, 1); // group; no macro
    };
    EXPECT_FALSE(read_old(135, [&](OldRecord& r) { folding(r), r << 0.5; })->inq_is_disabled());
    const auto later = read_old(136, [&](OldRecord& r) { folding(r), r << 0.5; });
    EXPECT_TRUE(later->inq_is_disabled());
    EXPECT_TRUE(later->inq_hidden());
    EXPECT_TRUE(later->inq_is_collapsed());
    EXPECT_EQ(later->inq_macro(), nullptr);
    EXPECT_EQ(later->inq_dw_tag_pos(), 0.5);
}

TEST(CNode, may_be_told_that_an_old_stream_holds_no_tag_positions)
{
    const auto without_tag = [](OldRecord& r) {
        r << 0;
        put_nulls(r, 2);
        r << 1.0 << 2.0 << 0 << 0;
        put_nulls(r, 1);
    };
    CNode::read_tags_pos_info = false;
    const auto old = read_old(138, without_tag);
    const auto later = read_old(139, [&](OldRecord& r) { without_tag(r), r << 0.75; });
    CNode::read_tags_pos_info = true;
    ASSERT_TRUE(old && later);
    EXPECT_EQ(old->inq_dw_tag_pos(), 0.0);
    EXPECT_EQ(later->inq_dw_tag_pos(), 0.75);
    EXPECT_EQ(read_old(138, without_tag), nullptr);
}

TEST(CNode, finds_its_descendents_depth_first)
{
    const Diamond d;
    EXPECT_EQ(names(d.r->inq_descendents(false, false)), "nmabo");
    d.m->set_is_hidden(true);
    EXPECT_EQ(names(d.r->inq_descendents(false, false)), "no");
    EXPECT_EQ(names(d.r->inq_descendents(true, false)), "nmabo");
    d.m->set_is_hidden(false);
    d.m->toggle_collapse_state();
    EXPECT_EQ(names(d.r->inq_descendents(false, false)), "nmo");
    EXPECT_EQ(names(d.r->inq_descendents(false, true)), "nmabo");
}

TEST(CNode, keeps_its_place_relative_to_its_group_while_folded)
{
    const std::unique_ptr<SampleLine> node(new_node<SampleLine>());
    const std::unique_ptr<SampleLine> group(new_node<SampleLine>());
    group->set_position(Vector2(10.0, 20.0));
    node->set_position(Vector2(11.0, 22.0));
    node->add_to_group(group.get());
    EXPECT_EQ(node->inq_effective_node(), node.get());
    node->set_is_hidden(true);
    EXPECT_EQ(node->inq_position(), Vector2(1.0, 2.0));
    EXPECT_EQ(node->inq_effective_node(), group.get());
    node->set_is_hidden(false);
    EXPECT_EQ(node->inq_position(), Vector2(11.0, 22.0));
    group->add_to_group(node.get());
    group->set_is_hidden(true);
    node->set_is_hidden(true);
    EXPECT_EQ(node->inq_effective_node(), node.get()); // groups that hold one another
    EXPECT_EQ(group->inq_effective_node(), group.get());
    StandIn stand_in;
    group->add_to_group(&stand_in);
    EXPECT_EQ(node->inq_effective_node(), nullptr);
    stand_in.asked = node.get();
    EXPECT_EQ(group->inq_effective_node(), node.get());
}

TEST(CNode, names_its_sources_from_the_last_input_on)
{
    Diamond d;
    d.r->inq_inputs()->inq_channel(1)->set_is_selected(true);
    EXPECT_EQ(d.m->inq_source_node_names(), "b, a");
    EXPECT_EQ(d.r->inq_source_node_names(), "b, a, b, a"); // by both ways
    KIVString names("x");
    EXPECT_EQ(CNode::inq_source_node_names(d.m, &names), d.b);
    EXPECT_EQ(names, "x, b, a");
    EXPECT_EQ(CNode::inq_source_node_channel_names(in(d.m, 0), nullptr), d.a);
    EXPECT_EQ(CNode::inq_source_node_names(nullptr, &names), nullptr);
    const std::unique_ptr<CNodeConnection> loose(new CNodeConnection(nullptr, in(d.m, 1)));
    in(d.m, 1)->add_connection(loose.get(), 1); // met first
    EXPECT_EQ(CNode::inq_source_node_channel_names(in(d.m, 1), nullptr), d.b);
    EXPECT_EQ(CNode::inq_source_node_channel_names(nullptr, nullptr), nullptr);
    in(d.m, 1)->remove_connection(loose.get());
    join(d.r, d.m, 1); // a cycle leads to no source
    EXPECT_EQ(d.m->inq_source_node_names(), "b, a");
    EXPECT_TRUE(d.r->inq_any_channel_selected());
}

TEST(CNode, finds_a_source_at_the_end_of_very_many_ways)
{
    CNodeGraph graph(nullptr);
    SampleNode* first = add<SampleMix>(graph);
    SampleNode* last = first;
    for (int i = 0; i < 60; ++i) {
        SampleNode* next = add<SampleMix>(graph);
        join(last, next, 0);
        join(last, next, 1);
        last = next;
    }
    EXPECT_EQ(CNode::inq_source_node_names(last, nullptr), nullptr);
    SampleNode* source = add<SampleSource>(graph, "s");
    join(source, first);
    EXPECT_EQ(CNode::inq_source_node_names(last, nullptr), source);
    EXPECT_TRUE(last->inq_source_node_names().str().starts_with("s, s, "));
}
