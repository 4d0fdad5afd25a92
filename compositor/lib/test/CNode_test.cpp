#include "compositor/lib/hdr/CNode.h"
#include "compositor/lib/hdr/DAGOpNode.h"
#include "compositor/lib/hdr/DAGOpTypeChecker.h"
#include "compositor/lib/hdr/cdata_tDArray.h"
#include "compositor/lib/test/SampleNodes.h"
#include "kivlib/hdr/BoundingBox.h"
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

class GenericLine : public SampleLine {
public:
    bool inq_is_generic() const override { return true; }
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

TEST(CNode, comes_back_with_its_channels_and_without_its_flags)
{
    const std::unique_ptr<SampleMix> mix(new_node<SampleMix>());
    mix->set_is_disabled(true);
    mix->toggle_collapse_state();
    mix->set_is_hidden(true);
    mix->set_is_selected(true);
    mix->set_position(Vector2(-1.5, 2.5));
    mix->set_dw_tag_pos(0.25);
    in(mix.get(), 1)->set_is_in_macro(true);
    const auto back = stored_and_read(*mix);
    ASSERT_TRUE(back);
    EXPECT_TRUE(back->inq_is_disabled());
    EXPECT_TRUE(back->inq_is_collapsed());
    EXPECT_TRUE(back->inq_hidden());
    EXPECT_FALSE(back->inq_is_selected());
    EXPECT_EQ(back->inq_position(), Vector2(-1.5, 2.5));
    EXPECT_EQ(back->inq_dw_tag_pos(), 0.25);
    EXPECT_EQ(back->inq_width(), 50.0);
    EXPECT_EQ(back->inq_height(), 24.0);
    EXPECT_TRUE(back->inq_is_in_macro());
    EXPECT_EQ(in(back.get(), 1)->inq_node(), back.get());
    EXPECT_TRUE(back->inq_inputs()->inq_is_input_channel_set());
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

TEST(CNode, knows_its_neighbours_once_for_each_connection)
{
    Diamond d;
    join(d.a, d.m, 1);
    EXPECT_EQ(names(d.m->inq_child_nodes()), "aba");
    EXPECT_EQ(names(d.m->inq_parent_nodes()), "no");
    EXPECT_EQ(d.m->inq_in_connections_list().count(), 3);
    EXPECT_EQ(d.r->inq_out_connections_list().count(), 0);
    const std::unique_ptr<KIVLinkedList> conns(d.r->inq_descendent_conns());
    EXPECT_EQ(conns->count(), 7);
    EXPECT_EQ(conns->at_index(0), out(d.n)->find_connection_at(0));
    EXPECT_EQ(conns->at_index(1), out(d.m)->find_connection_at(0));
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

TEST(CNode, leaves_its_descendents_to_classes_that_know_better)
{
    CNodeGraph graph(nullptr);
    auto* source = add<SampleSource>(graph, "s");
    auto* wall = add<SampleWall>(graph, "w");
    auto* line = add<SampleLine>(graph, "l");
    join(source, wall);
    join(wall, line);
    EXPECT_EQ(names(line->inq_descendents(true, true)), "w");
    EXPECT_EQ(names(wall->inq_descendents(true, true)), "");

    auto* beyond = add<SampleSource>(graph, "y");
    auto* x = add<SampleLine>(graph, "x");
    auto* c = add<SampleLine>(graph, "c");
    auto* root = add<SampleMix>(graph, "r");
    join(beyond, x);
    join(x, c);
    join(wall, root, 0);
    join(c, root, 1);
    wall->answer = x;
    EXPECT_EQ(names(root->inq_descendents(true, true)), "wxcy") << "what feeds x is not lost";
}

TEST(CNode, orders_what_feeds_it_and_stops_at_flags)
{
    const Diamond d;
    KIVLinkedList list(false);
    d.r->add_to_ordered_list(&list);
    EXPECT_EQ(names(list), "rnmabo");
    d.r->add_to_ordered_list(&list);
    EXPECT_EQ(list.count(), 6);
    d.r->set_in_list_flag(false);
    d.r->clear_in_list_flags(); // past those that bear no flag
    EXPECT_FALSE(d.a->inq_in_list_flag());
}

TEST(CNode, sees_a_cycle_and_leaves_the_flags_on_the_way_to_it)
{
    const Diamond d;
    EXPECT_TRUE(d.r->do_acyclic_check());
    EXPECT_FALSE(d.m->inq_acyclic_flag());
    d.b->set_acyclic_flag(true);
    EXPECT_FALSE(d.r->do_acyclic_check());
    EXPECT_TRUE(d.r->inq_acyclic_flag());
    EXPECT_TRUE(d.n->inq_acyclic_flag());
    EXPECT_TRUE(d.m->inq_acyclic_flag());
    EXPECT_FALSE(d.o->inq_acyclic_flag());
}

TEST(CNode, propagates_inchoate_flags_to_what_feeds_it)
{
    const Diamond d;
    d.n->set_and_propogate_inchoate_flag();
    EXPECT_TRUE(d.n->inq_inchoate_flag() && d.m->inq_inchoate_flag() && d.a->inq_inchoate_flag());
    EXPECT_FALSE(d.o->inq_inchoate_flag() || d.r->inq_inchoate_flag());

    BoundingBox box;
    d.a->set_position(Vector2(1000.0, 0.0));
    d.n->update_and_propogate_inchoate_flag(&box); // complete, and so is what reads it
    EXPECT_FALSE(d.n->inq_inchoate_flag() || d.m->inq_inchoate_flag() || d.b->inq_inchoate_flag());
    EXPECT_EQ(box.inq_rectangle().inq_right(), 1025.0);

    d.r->update_and_propogate_inchoate_flag(&box); // its output leads nowhere
    EXPECT_TRUE(d.r->inq_inchoate_flag() && d.o->inq_inchoate_flag() && d.a->inq_inchoate_flag());
}

TEST(CNode, takes_several_inputs_only_where_their_type_can_be_united)
{
    CNodeGraph graph(nullptr);
    auto* source = add<SampleSource>(graph);
    auto* line = add<SampleLine>(graph);
    auto* sound = add<SampleSoundLine>(graph);
    EXPECT_TRUE(sound->inq_can_connect_multiple_inputs(0));
    join(source, sound);
    join(source, line);
    EXPECT_FALSE(sound->inq_can_connect_multiple_inputs(0));
    EXPECT_TRUE(line->inq_can_connect_multiple_inputs(0));
    EXPECT_FALSE(line->inq_can_connect_multiple_inputs(1));
    EXPECT_FALSE(source->inq_can_connect_multiple_inputs(0));
}

TEST(CNode, has_bounds_that_hold_the_visible_strips)
{
    const std::unique_ptr<SampleMix> mix(new_node<SampleMix>());
    EXPECT_EQ(mix->inq_bounds(), KIVRectangle(-25.0, -20.0, 25.0, 20.0));
    mix->toggle_collapse_state();
    EXPECT_EQ(mix->inq_n_vis_input_channels(), 0);
    EXPECT_EQ(mix->inq_bounds(), KIVRectangle(-25.0, -12.0, 25.0, 20.0));
    mix->show_output_channel(false);
    EXPECT_EQ(mix->inq_bounds(), mix->inq_border_rect());
    mix->toggle_collapse_state();
    mix->show_output_channel(true);
    mix->reset_width(60.0); // its channels need 100 less the border
    EXPECT_EQ(mix->inq_width(), 98.0);
    mix->reset_width(200.0);
    EXPECT_EQ(mix->inq_width(), 198.0);
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
    SampleNode* source = add<SampleSource>(graph);
    join(source, first);
    EXPECT_EQ(CNode::inq_source_node_names(last, nullptr), source);
}

TEST(CNode, gives_the_type_check_the_operator_of_its_kind)
{
    const std::unique_ptr<SampleLine> line(new_node<SampleLine>());
    const std::unique_ptr<SampleAnything> anything(new_node<SampleAnything>());
    const std::unique_ptr<DAGOpBottomUp> of_line(line->inq_bu_dag_op("type_checker", nullptr));
    const std::unique_ptr<DAGOpBottomUp> of_any(anything->inq_bu_dag_op("type_checker", nullptr));
    EXPECT_TRUE(dynamic_cast<DAGOpDefaultTypeChecker*>(of_line.get()));
    EXPECT_TRUE(dynamic_cast<DAGOpUniversalTypeChecker*>(of_any.get()));
    EXPECT_EQ(line->inq_bu_dag_op("another", nullptr), nullptr);

    GenericLine generic;
    DAGOpNode mirror(nullptr, &generic);
    const std::unique_ptr<DAGOpBottomUp> given(generic.inq_bu_dag_op("type_checker", &mirror));
    const auto* of_generic = dynamic_cast<DAGOpUniversalTypeChecker*>(given.get());
    ASSERT_TRUE(of_generic);
    const std::unique_ptr<cdata_tDArray> own_types(of_generic->inq_all_types());
    EXPECT_TRUE(own_types->empty()) << "its class has no generic operations";
    EXPECT_EQ(line->inq_td_dag_op("type_checker", nullptr), nullptr);
}
