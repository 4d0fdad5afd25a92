#include "compositor/lib/hdr/DAGExec.h"
#include "compositor/lib/hdr/DAGOpBase.h"
#include "compositor/lib/test/SketchGraph.h"

#include <gtest/gtest.h>
#include <random>

namespace {
enum OtherType { UNITED = 2000, SINGLE = 2001 };

void register_other_types()
{
    if (CDataDescriptor::find_desc_for(UNITED))
        return;
    new CDataDescriptor("SketchUnited", "United", UNITED, nullptr, true, nullptr, true);
    new CDataDescriptor("SketchSingle", "Single", SINGLE, nullptr, false, nullptr, true);
}

/// How types are checked and flags set: by the edits themselves, or over the whole graph after
/// each, the types by the operators of a pass, node by node.
enum class Way { KEPT, WHOLE };

/// A graph that is drawn and edited at random, alike with the same seed.
class RandomEdits {
public:
    RandomEdits(unsigned seed, Way way) : random(seed), way(way)
    {
        register_other_types();
        if (way == Way::WHOLE)
            sketch.graph.set_type_checker_disabled();
        for (int i = 0; i < 12; ++i)
            add_node(i < 3 ? 0 : 1 + below(2));
    }

    /// The answer, the lists on the nodes and their flags.
    std::string edit()
    {
        std::string all = choose_and_edit() ? "passed" : "failed";
        for (const SketchNode* node : nodes)
            all += "\n" + node->inq_checked() + (node->inq_inchoate_flag() ? " inchoate" : "");
        return all;
    }

private:
    struct Ends {
        SketchNode* from;
        SketchNode* to;
        int input;
    };

    int below(int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); }

    void add_node(int n_inputs)
    {
        constexpr int types[] = {PICTURE, NOTE, SHAPE, SHAPE, MASK, UNITED, SINGLE};
        const int kind = below(4);
        const int type = types[below(7)];
        if (kind == 0)
            nodes.push_back(sketch.add("any", n_inputs, type));
        else if (kind == 1)
            nodes.push_back(sketch.add_generic("some", n_inputs, {MASK, PICTURE, SINGLE}));
        else
            nodes.push_back(sketch.add_universal("all", n_inputs));
        nodes.back()->needs_nothing = below(2) == 0;
    }

    /// Seldom against an order that the nodes have besides their own, so that few graphs have a
    /// circle.
    Ends draw_ends()
    {
        const auto rank = [](int node) { return node * 37 % 101; };
        for (;;) {
            const int n = static_cast<int>(nodes.size());
            const int from = below(n);
            const int to = below(n);
            SketchNode* reader = nodes[static_cast<std::size_t>(to)];
            const int n_inputs = reader->inq_n_input_channels();
            if (n_inputs > 0 && (rank(from) < rank(to) || below(100) == 0))
                return {nodes[static_cast<std::size_t>(from)], reader, below(n_inputs)};
        }
    }

    bool choose_and_edit()
    {
        const int choice = below(40);
        const Ends ends = draw_ends();
        if (choice < 20)
            return make(ends);
        if (choice < 31)
            return remove(*ends.to->input(ends.input));
        if (choice < 34)
            return ask(ends);
        if (choice < 36)
            add_node(1);
        else if (choice == 36)
            sketch.connect(ends.from, ends.to, ends.input); // without the graph's knowledge
        else if (choice == 37)
            ends.to->set_types(nullptr);
        else if (choice == 38)
            ends.to->is_universal = !ends.to->is_universal;
        else
            ends.to->inq_inputs()->set_n_channels(3);
        return way == Way::KEPT ? sketch.graph.set_type_checker_enabled() : check();
    }

    bool check(const Ends* proposed = nullptr, bool store = true)
    {
        DAGExec exec(&sketch.graph, "type_checker", new DAGOpBottomUpDefault);
        if (proposed)
            exec.inq_graph()->make_connection(proposed->from->output(),
                                              proposed->to->input(proposed->input));
        exec.init();
        exec.set_store_result(store);
        return exec.execute();
    }

    bool make(const Ends& ends)
    {
        if (way == Way::WHOLE && !check(&ends))
            return false;
        const bool is_made =
            sketch.graph.make_connection(ends.from->output(), ends.to->input(ends.input), false);
        if (way == Way::WHOLE)
            sketch.graph.update_inchoate_flags();
        return is_made;
    }

    bool remove(const CNodeChannel& input)
    {
        if (input.inq_connections_list()->inq_is_empty())
            return true;
        sketch.graph.delete_connection(input.find_connection_at(0), false);
        if (way == Way::WHOLE)
            check(); // whose answer nobody hears
        return true;
    }

    bool ask(const Ends& ends)
    {
        if (way == Way::WHOLE)
            return check(&ends, false);
        return sketch.graph.inq_can_connect_data_types(ends.from->output(),
                                                       ends.to->input(ends.input));
    }

    std::mt19937 random;
    Way way;
    SketchGraph sketch;
    std::vector<SketchNode*> nodes;
};

std::vector<std::string> results(unsigned seed, Way way)
{
    constexpr int EDITS = 60;
    RandomEdits edits(seed, way);
    std::vector<std::string> all;
    for (int edit = 0; edit < EDITS; ++edit)
        all.push_back(edits.edit());
    return all;
}
} // namespace

TEST(CNodeGraph, keeps_types_and_flags_as_checks_of_the_whole_graph_find_them)
{
    std::size_t n_edits = 0;
    std::size_t n_refused = 0;
    for (unsigned seed = 0; seed < 200; ++seed) {
        const std::vector<std::string> kept = results(seed, Way::KEPT);
        const std::vector<std::string> whole = results(seed, Way::WHOLE);
        for (std::size_t i = 0; i < kept.size(); ++i)
            ASSERT_EQ(kept[i], whole[i]) << "after edit " << i << " with seed " << seed;
        n_edits += kept.size();
        for (const std::string& result : kept)
            n_refused += result.starts_with("failed");
    }
    EXPECT_GT(n_refused, n_edits / 10);
    EXPECT_LT(n_refused, n_edits * 9 / 10);
}
