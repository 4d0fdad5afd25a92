#include "compositor/lib/hdr/CNodeGraph.h"
#include "compositor/lib/hdr/CNodeGraphWatcher.h"
#include "compositor/lib/hdr/cdata_tDArray.h"
#include "compositor/lib/test/SampleNodes.h"
#include "kivlib/hdr/KIVDLLUsageList.h"
#include "tests/support/Captured.h"
#include "tests/support/OldRecord.h"

#include <gtest/gtest.h>

using namespace sample;

namespace {
class Watcher : public CNodeGraphWatcher {
public:
    using CNodeGraphWatcher::CNodeGraphWatcher;

    void connections_changed(bool connected_to_root) override
    {
        heard += connected_to_root ? "C" : "c";
    }
    void number_of_nodes_changed() override {}

    std::string heard;
};

std::vector<std::string> take_log()
{
    return std::exchange(log(), {});
}

std::string container_of(const CNodeGraph& graph)
{
    CharOStream out;
    out.insert_with_class_hdr(&graph);
    EXPECT_EQ(out.inq_error_state(), KIVStream::OKAY);
    return out.inq_container();
}

/// The record of a graph without connections that holds what `tell` writes into its list.
std::unique_ptr<CNodeGraph> read_told(int n, const std::function<void(OldRecord&)>& tell)
{
    OldRecord old("CNodeGraph", 92);
    old.nested("KIVLinkedList", 1, [&](OldRecord& r) {
        r << n;
        tell(r);
    });
    old.insert_with_class_hdr(nullptr);
    return old.read<CNodeGraph>();
}

/// A node without channels, as it stands in a file.
void put_node(OldRecord& r, const std::function<void(OldRecord&)>& put_group)
{
    r.nested("SampleSource", 146, [&](OldRecord& node) {
        node << 50.0 << 0;
        node.insert_with_class_hdr(nullptr);
        node.insert_with_class_hdr(nullptr);
        node << 0.0 << 0.0 << 0 << 0;
        put_group(node);
        node.insert_with_class_hdr(nullptr);
        node << 0.0;
    });
}

void put_null(OldRecord& r)
{
    r.insert_with_class_hdr(nullptr);
}

/// A node with one output channel, which lists what `put_connections` writes.
void put_source(OldRecord& r, int node_number, const std::function<void(OldRecord&)>& put_list)
{
    r.nested("SampleSource", 146, [&](OldRecord& node) {
        node << 50.0 << 0;
        node.insert_with_class_hdr(nullptr);
        node.nested("CNodeChannelSet", 1, [&](OldRecord& set) {
            set.put_seen(static_cast<std::uint32_t>(node_number));
            set << 1;
            set.nested("CNodeChannel", 144, [&](OldRecord& channel) {
                channel.nested("KIVLinkedList", 1, put_list);
                channel << 0;
            });
        });
        node << 0.0 << 0.0 << 0 << 0;
        node.insert_with_class_hdr(nullptr);
        node.insert_with_class_hdr(nullptr);
        node << 0.0;
    });
}
} // namespace

TEST(CNodeGraph, puts_connections_at_the_head_of_both_lists_and_tells_who_is_concerned)
{
    CNodeGraph graph(nullptr);
    auto* first = add<SampleSource>(graph);
    auto* second = add<SampleSource>(graph, "s");
    auto* mix = add<SampleMix>(graph, "m");
    auto* root = add<SampleLine>(graph, "r");
    graph.set_root_node(root);
    graph.make_connection(out(mix), in(root), false);
    graph.make_connection(out(first), in(mix), false);
    Watcher watcher(&graph);
    take_log();

    CNodeConnection* made = graph.make_connection(out(second), in(mix), true);
    EXPECT_EQ(in(mix)->find_connection_at(0), made);
    EXPECT_EQ(take_log(),
              (std::vector<std::string>{"m inputs", "s outputs", "m updated", "r updated"}));
    EXPECT_EQ(watcher.heard, "C");
    EXPECT_EQ(graph.find_connection_between(out(second), in(mix)), made);
    EXPECT_TRUE(graph.inq_is_connected(out(second), in(mix)));
    EXPECT_FALSE(graph.inq_is_connected(out(mix), in(mix)));
    EXPECT_TRUE(graph.inq_is_connected(out(second), in(mix, 1))); // which has none at all

    graph.make_connection(out(second), 0, in(mix, 1), 0, false);
    EXPECT_EQ(take_log(), (std::vector<std::string>{"m updated", "r updated"}));
    EXPECT_EQ(out(second)->inq_connections_list()->count(), 2);

    watcher.heard.clear();
    graph.delete_connection(made, true);
    EXPECT_EQ(take_log(),
              (std::vector<std::string>{"s outputs", "m inputs", "m updated", "r updated"}));
    EXPECT_EQ(watcher.heard, "");
    EXPECT_EQ(in(mix)->inq_connections_list()->count(), 1);
    graph.delete_connection(nullptr, true);
}

TEST(CNodeGraph, updates_each_reader_once_and_behind_all_that_it_reads)
{
    CNodeGraph graph(nullptr);
    auto* source = add<SampleLine>(graph, "s");
    auto* line = add<SampleLine>(graph, "l");
    auto* root = add<SampleMix>(graph, "r");
    auto* beyond = add<SampleLine>(graph, "b");
    join(source, root);
    join(source, line);
    join(line, root, 1);
    join(root, beyond);
    graph.set_root_node(root);
    take_log();
    graph.update_input_connections(source);
    EXPECT_EQ(take_log(), (std::vector<std::string>{"s updated", "l updated", "r updated"}));

    auto* other = add<SampleLine>(graph, "o");
    join(source, other);
    join(other, root);
    take_log();
    graph.update_input_connections(source);
    EXPECT_EQ(take_log(),
              (std::vector<std::string>{"s updated", "l updated", "o updated", "r updated"}))
        << "readers in list order";
    EXPECT_TRUE(graph.is_connected_to_root(source));
    EXPECT_FALSE(graph.is_connected_to_root(beyond));
}

TEST(CNodeGraph, loads_in_two_passes_unless_a_node_gives_up)
{
    CNodeGraph graph(nullptr);
    add<SampleAnything>(graph, "a");
    auto* second = add<SampleAnything>(graph, "b");
    take_log();
    EXPECT_FALSE(graph.load_finished_with_abort(nullptr, true));
    EXPECT_EQ(take_log(),
              (std::vector<std::string>{"a load", "b load", "a after load", "b after load",
                                        "a after load", "b after load"}));
    EXPECT_TRUE(second->inq_types());
    add<SampleLine>(graph, "c");
    second->aborts_load = true;
    take_log();
    EXPECT_TRUE(graph.load_finished_with_abort(nullptr, false));
    EXPECT_EQ(take_log(), (std::vector<std::string>{"a load", "b load"}));
}

TEST(CNodeGraph, reads_graphs_that_were_nodes_and_gives_their_nodes_a_width)
{
    OldRecord old("CNodeGraph", 91);
    old << 1;
    old.insert_with_class_hdr(nullptr);
    old.nested("CNodeChannelSet", 1, [](OldRecord& r) {
        put_null(r);
        r << 0;
    });
    put_null(old);
    old << 5.0 << 6.0;
    old.nested("KIVLinkedList", 1, [](OldRecord& list) {
        list << 1;
        list.nested("SampleMix", 91, [](OldRecord& node) {
            node << 0;
            node.put_seen(0); // its graph
            put_null(node);
            put_null(node);
            node << 1.0 << 2.0 << 0.0;
        });
    });
    put_null(old);
    const auto graph = old.read<CNodeGraph>();
    ASSERT_TRUE(graph);
    ASSERT_EQ(graph->inq_nodes_list()->count(), 1);
    graph->load_finished_with_abort(nullptr, false);
    EXPECT_EQ(static_cast<CNode*>(graph->inq_nodes_list()->at_index(0))->inq_width(), 50.0);
}

TEST(CNodeGraph, refuses_files_whose_parts_do_not_belong_together)
{
    EXPECT_TRUE(read_told(2, [](OldRecord& r) {
        put_node(r, put_null);
        put_node(r, [](OldRecord& group) { group.put_seen(2); });
    }));
    // the same node twice; no node; a group that is in no graph
    EXPECT_FALSE(read_told(2, [](OldRecord& r) {
        put_node(r, put_null);
        r.put_seen(2);
    }));
    EXPECT_FALSE(read_told(
        1, [](OldRecord& r) { r.nested("KIVLinkedList", 1, [](OldRecord& list) { list << 0; }); }));
    EXPECT_FALSE(read_told(
        1, [](OldRecord& r) { put_node(r, [](OldRecord& group) { put_node(group, put_null); }); }));
    // channels of another node; a list of no connections; a connection that is not mutual
    EXPECT_TRUE(read_told(1, [](OldRecord& r) { put_source(r, 2, [](OldRecord& l) { l << 0; }); }));
    EXPECT_FALSE(read_told(2, [](OldRecord& r) {
        put_node(r, put_null);
        put_source(r, 2, [](OldRecord& list) { list << 0; });
    }));
    EXPECT_FALSE(read_told(1, [](OldRecord& r) {
        put_source(r, 2, [](OldRecord& list) {
            list << 1;
            list.nested("ChannelDataType", 1, [](OldRecord& object) {
                object << 5;
                put_null(object);
                object << 0;
            });
        });
    }));
    EXPECT_FALSE(read_told(1, [](OldRecord& r) {
        put_source(r, 2, [](OldRecord& list) {
            list << 1;
            list.nested("CNodeConnection", 132, [](OldRecord& connection) {
                connection.put_seen(4); // the channel that lists it
                connection.put_seen(4); // and no input that lists it
            });
        });
    }));
}

TEST(CNodeGraph, is_not_stored_with_a_connection_that_leaves_it)
{
    CNodeGraph graph(nullptr);
    const std::unique_ptr<SampleLine> stranger(new_node<SampleLine>());
    CNodeConnection* leaving = join(add<SampleSource>(graph), stranger.get());
    CharOStream stream;
    stream.insert_with_class_hdr(&graph);
    EXPECT_EQ(stream.inq_error_state(), KIVStream::BAD_DATA);
    graph.delete_connection(leaving, false);
    EXPECT_TRUE(stored_and_read(graph));
}

TEST(CNodeGraph, carries_long_chains_and_many_nodes)
{
    constexpr int CHAIN = 5000;
    constexpr int ALL = 50000;
    auto graph = std::make_unique<CNodeGraph>(nullptr);
    CNode* last = add<SampleSource>(*graph);
    const CNode* first = last;
    for (int i = 1; i < ALL; ++i) {
        CNode* next = add<SampleAnything>(*graph);
        if (i % CHAIN != 0)
            join(last, next);
        last->add_to_group(next);
        last = next;
        if (i == CHAIN - 1)
            graph->set_root_node(next);
    }
    ASSERT_TRUE(graph->set_type_checker_enabled());
    EXPECT_TRUE(graph->is_connected_to_root(first));
    graph->notify_connections_changed(true);
    graph->update_input_connections(graph->find_node(first->inq_label()));
    EXPECT_TRUE(graph->inq_can_connect_acyclic(out(graph->inq_root_node()), in(last)));

    const std::string container = container_of(*graph);
    graph.reset();
    CharIStream in(container);
    graph.reset(CNodeGraph::read_from(in));
    ASSERT_TRUE(graph);
    EXPECT_FALSE(graph->load_finished_with_abort(nullptr, false));
    const CNode* root = graph->inq_root_node();
    ASSERT_TRUE(root && root->inq_types());
    EXPECT_EQ(root->inq_types()->size(), 1);
    const std::unique_ptr<KIVLinkedList> ordered(graph->make_ordered_nodes_list());
    EXPECT_EQ(ordered->count(), CHAIN);
    const std::unique_ptr<KIVLinkedList> below(root->inq_descendents(true, true));
    EXPECT_EQ(below->count(), CHAIN - 1);
    ASSERT_EQ(graph->inq_nodes_list()->count(), ALL);
    int groups = 0;
    for (const CNode* node = *graph->inq_nodes_list()->of<CNode>().begin(); node->inq_group();
         node = node->inq_group())
        ++groups;
    EXPECT_EQ(groups, ALL - 1);
}

TEST(CNodeGraph, passes_over_nulls_and_refuses_what_is_no_output_and_input_of_nodes)
{
    CNodeGraph graph(nullptr);
    graph.add_node(nullptr);
    EXPECT_TRUE(graph.inq_nodes_list()->inq_is_empty());
    graph.inq_nodes_list()->add(nullptr);
    auto* line = add<SampleLine>(graph, "l");
    CNodeChannel stray(nullptr);
    EXPECT_EQ(graph.make_connection(&stray, in(line), true), nullptr);
    EXPECT_EQ(graph.make_connection(out(line), &stray, true), nullptr);
    EXPECT_FALSE(graph.inq_can_connect_acyclic(&stray, in(line)));
    auto* reader = add<SampleLine>(graph);
    EXPECT_EQ(graph.make_connection(in(line), out(reader), true), nullptr);
    EXPECT_FALSE(graph.inq_can_connect_acyclic(in(line), in(reader)));
    EXPECT_FALSE(graph.inq_can_connect_data_types(out(line), out(reader)));
    delete graph.remove_node(reader);
    EXPECT_EQ(graph.remove_node(nullptr), nullptr);
    EXPECT_EQ(graph.find_node(0), nullptr);
    EXPECT_FALSE(graph.is_connected_to_root(nullptr));
    EXPECT_EQ(names(graph.inq_nodes_with_no_out_puts()), "l");
    EXPECT_FALSE(graph.load_finished_with_abort(nullptr, false));
    EXPECT_TRUE(stored_and_read(graph));
}

TEST(CNodeGraph, bears_loops_half_connections_and_a_strange_root)
{
    CNodeGraph graph(nullptr);
    auto* line = add<SampleLine>(graph, "l");
    auto* anything = add<SampleAnything>(graph, "a");
    const std::unique_ptr<SampleLine> stranger(new_node<SampleLine>("s"));
    graph.set_root_node(stranger.get());
    auto* half = new CNodeConnection(out(line), nullptr);
    out(line)->add_connection(half, 0);
    in(line)->add_connection(new CNodeConnection(nullptr, in(line)), 0);
    EXPECT_TRUE(graph.set_type_checker_enabled());
    ASSERT_TRUE(anything->inq_types());
    CNodeConnection* loop = graph.make_connection(out(anything), in(anything), true);
    ASSERT_TRUE(loop);
    CNodeConnection* unchecked = graph.make_connection(out(line), in(anything), true);
    ASSERT_TRUE(unchecked);
    EXPECT_FALSE(graph.is_connected_to_root(anything));
    EXPECT_EQ(names(graph.make_ordered_nodes_list()), "s");
    graph.delete_connection(half, true);
    graph.delete_connection(loop, true);
    EXPECT_EQ(anything->inq_types()->size(), 1);
    graph.set_root_node(nullptr);
}

TEST(CNodeGraph, deletes_once_what_stands_twice_on_its_lists_and_passes_over_nulls)
{
    const Captured captured;
    {
        CNodeGraph graph(nullptr);
        auto* source = add<SampleSource>(graph);
        auto* line = add<SampleLine>(graph);
        CNodeConnection* twice = join(source, line);
        out(source)->add_connection(twice, 0);
        in(line)->add_connection(twice, 0);
        in(line)->add_connection(nullptr, 0);
        out(line)->add_connection(nullptr, 0);
        graph.set_type_checker_enabled();
        graph.update_input_connections(source);
    }
    EXPECT_NE(captured.inq_errors().find("(repeated value)"), std::string::npos);
}

TEST(CNodeGraph, forgets_nodes_that_were_deleted)
{
    CNodeGraph graph(nullptr);
    auto* root = add<SampleLine>(graph);
    auto* folded = add<SampleLine>(graph);
    graph.add_node(folded);
    EXPECT_EQ(graph.inq_nodes_list()->count(), 2);
    folded->add_to_group(root);
    graph.set_root_node(root);
    EXPECT_EQ(graph.remove_node(root), root);
    EXPECT_EQ(graph.inq_root_node(), nullptr);
    graph.add_node(root); // as an undo does
    EXPECT_EQ(graph.inq_root_node(), root);
    delete graph.remove_node(root);
    const auto read = stored_and_read(graph);
    ASSERT_TRUE(read);
    EXPECT_EQ(static_cast<CNode*>(read->inq_nodes_list()->at_index(0))->inq_group(), nullptr);
}

TEST(CNodeGraph, flags_no_node_for_those_of_other_graphs)
{
    const std::unique_ptr<SampleLine> stranger(new_node<SampleLine>());
    CNodeGraph graph(nullptr);
    auto* source = add<SampleSource>(graph);
    auto* line = add<SampleLine>(graph);
    stranger->set_inchoate_flag(true);
    join(source, stranger.get());
    CNodeConnection* made = graph.make_connection(out(source), in(line), false);
    EXPECT_TRUE(source->inq_inchoate_flag());
    graph.delete_connection(made, false);
    graph.make_connection(out(line), in(add<SampleAnything>(graph)), false);
    EXPECT_FALSE(source->inq_inchoate_flag());
}

TEST(CNodeGraph, gives_up_on_a_list_that_does_not_end)
{
    constexpr int TOO_MANY = 1'000'001;
    const Captured captured;
    {
        CNodeGraph graph(nullptr);
        auto* source = add<SampleSource>(graph);
        auto* mix = add<SampleMix>(graph);
        out(mix)->add_connection(new CNodeConnection(nullptr, nullptr), 0);
        graph.set_type_checker_disabled();
        for (int i = 0; i < TOO_MANY; ++i)
            graph.make_connection(out(source), in(mix), false);
    }
    const std::string errors = captured.inq_errors();
    EXPECT_NE(errors.find("Program error (timeout).\n"), std::string::npos) << errors;
    EXPECT_NE(errors.find("Program error (repeated value).\n"), std::string::npos) << errors;
    EXPECT_EQ(errors.find("compositor/lib/src/CNodeGraph, line "), 0U) << errors;
}
