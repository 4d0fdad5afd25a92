#include "compositor/lib/hdr/DAGExec.h"
#include "compositor/lib/hdr/DAGOpBase.h"
#include "compositor/lib/test/SketchGraph.h"

#include <gtest/gtest.h>
#include <random>

namespace {
/// So many that a set of all does not fit into a machine word.
void register_many_types()
{
    constexpr int FIRST = 2000;
    constexpr int COUNT = 70;
    if (CDataDescriptor::find_desc_for(FIRST))
        return;
    for (int type = FIRST; type < FIRST + COUNT; ++type)
        new CDataDescriptor("SketchOther", "Other", type, nullptr, type % 2 == 0, nullptr, true);
}

/// Two graphs that are drawn and edited alike: one by its own checked edits, and one whose types
/// the operators of a pass check node by node and whose flags are all set anew.
class Twins {
public:
    explicit Twins(unsigned seed) : random(seed)
    {
        register_many_types();
        model.graph.set_type_checker_disabled();
        for (int i = 0; i < 12; ++i)
            add_node(i < 3 ? 0 : 1 + below(2));
    }

    void edit()
    {
        const int choice = below(20);
        if (choice < 9)
            make();
        else if (choice < 13)
            remove();
        else if (choice < 15)
            ask();
        else if (choice == 15)
            slip_in();
        else if (choice == 16)
            add_node(1);
        else
            change_node(choice);
    }

    /// The last answer, the lists on the nodes and their flags.
    std::string kept_results() const { return results(kept_answer, kept_nodes); }
    std::string model_results() const { return results(model_answer, model_nodes); }
    bool inq_answer() const { return model_answer; }

private:
    using Nodes = std::vector<SketchNode*>;
    struct Ends {
        std::size_t from, to;
        int input;
    };

    int below(int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); }

    void add_node(int n_inputs)
    {
        constexpr int types[] = {PICTURE, NOTE, SHAPE, SHAPE, MASK, 2000, 2001};
        const int kind = below(4);
        const int type = types[below(7)];
        const bool needs_nothing = below(2) == 0;
        for (const auto& [sketch, nodes] :
             {std::pair(&kept, &kept_nodes), {&model, &model_nodes}}) {
            if (kind == 0)
                nodes->push_back(sketch->add("any", n_inputs, type));
            else if (kind == 1)
                nodes->push_back(sketch->add_generic("some", n_inputs, {MASK, PICTURE, 2001}));
            else
                nodes->push_back(sketch->add_universal("all", n_inputs));
            nodes->back()->needs_nothing = needs_nothing;
        }
    }

    /// Seldom against the order of the nodes, so that few graphs have a circle.
    Ends draw_ends()
    {
        const int n = static_cast<int>(kept_nodes.size());
        const int to = 3 + below(n - 3);
        const int from = below(40) == 0 ? below(n) : below(to);
        return {static_cast<std::size_t>(from), static_cast<std::size_t>(to),
                below(kept_nodes[static_cast<std::size_t>(to)]->inq_n_input_channels())};
    }

    bool check_model(const Ends* proposed, bool store = true)
    {
        DAGExec exec(&model.graph, "type_checker", new DAGOpBottomUpDefault);
        if (proposed)
            exec.inq_graph()->make_connection(model_nodes[proposed->from]->output(),
                                              model_nodes[proposed->to]->input(proposed->input));
        exec.init();
        exec.set_store_result(store);
        return exec.execute();
    }

    static CNodeConnection* connect(SketchGraph& sketch, const Nodes& nodes, const Ends& ends)
    {
        return sketch.graph.make_connection(nodes[ends.from]->output(),
                                            nodes[ends.to]->input(ends.input), false);
    }

    void make()
    {
        const Ends ends = draw_ends();
        model_answer = check_model(&ends);
        if (model_answer) {
            connect(model, model_nodes, ends);
            model.graph.update_inchoate_flags();
        }
        kept_answer = connect(kept, kept_nodes, ends) != nullptr;
    }

    void remove()
    {
        const Ends ends = draw_ends();
        const CNodeChannel& input = *kept_nodes[ends.to]->input(ends.input);
        if (input.inq_connections_list()->inq_is_empty())
            return;
        for (const auto& [sketch, nodes] : {std::pair(&kept, &kept_nodes), {&model, &model_nodes}})
            sketch->graph.delete_connection(
                (*nodes)[ends.to]->input(ends.input)->find_connection_at(0), false);
        check_model(nullptr);
    }

    void ask()
    {
        const Ends ends = draw_ends();
        model_answer = check_model(&ends, false);
        kept_answer = kept.graph.inq_can_connect_data_types(kept_nodes[ends.from]->output(),
                                                            kept_nodes[ends.to]->input(ends.input));
    }

    /// Without the graph's knowledge.
    void slip_in()
    {
        const Ends ends = draw_ends();
        kept.connect(kept_nodes[ends.from], kept_nodes[ends.to], ends.input);
        model.connect(model_nodes[ends.from], model_nodes[ends.to], ends.input);
    }

    void change_node(int choice)
    {
        const std::size_t which = static_cast<std::size_t>(below(12));
        for (SketchNode* node : {kept_nodes[which], model_nodes[which]})
            if (choice == 17)
                node->set_types(nullptr);
            else if (choice == 18)
                node->is_universal = !node->is_universal;
            else if (which > 2)
                node->inq_inputs()->set_n_channels(3);
        model_answer = check_model(nullptr);
        kept_answer = kept.graph.set_type_checker_enabled();
    }

    static std::string results(bool answer, const Nodes& nodes)
    {
        std::string all = answer ? "passed" : "failed";
        for (const SketchNode* node : nodes)
            all += "\n" + node->inq_checked() + (node->inq_inchoate_flag() ? " inchoate" : "");
        return all;
    }

    std::mt19937 random;
    SketchGraph kept;
    SketchGraph model;
    Nodes kept_nodes;
    Nodes model_nodes;
    bool kept_answer = true;
    bool model_answer = true;
};
} // namespace

TEST(CNodeGraph, keeps_types_and_flags_as_checks_of_the_whole_graph_find_them)
{
    int n_passed = 0;
    constexpr int ROUNDS = 60;
    constexpr int EDITS = 60;
    for (unsigned round = 0; round < ROUNDS; ++round) {
        Twins twins(round);
        for (int edit = 0; edit < EDITS; ++edit) {
            twins.edit();
            ASSERT_EQ(twins.kept_results(), twins.model_results())
                << "after edit " << edit << " of round " << round;
            n_passed += twins.inq_answer();
        }
    }
    EXPECT_GT(n_passed, ROUNDS * EDITS / 10);
    EXPECT_LT(n_passed, ROUNDS * EDITS * 9 / 10);
}
