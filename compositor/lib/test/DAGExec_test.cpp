#include "compositor/lib/hdr/DAGExec.h"
#include "compositor/lib/hdr/DAGExecError.h"
#include "compositor/lib/hdr/DAGExecReporter.h"
#include "compositor/lib/hdr/DAGOpBase.h"
#include "compositor/lib/hdr/DAGOpNode.h"
#include "compositor/lib/test/SketchGraph.h"

#include <gtest/gtest.h>
#include <random>

namespace {
/// What a check tells, and whether it goes on then.
class Listener : public DAGExecReporter {
public:
    explicit Listener(bool goes_on = false) : goes_on(goes_on) {}

    bool signal_exception(gsl::owner<KIVError*> given) override
    {
        const std::unique_ptr<KIVError> error(given);
        heard += error->inq_description().str() + "\n";
        return goes_on;
    }

    std::string heard;

private:
    bool goes_on;
};

constexpr const char* NO_TYPE = "Incompatiable Types\n";
constexpr const char* NOT_MULTIPLE = "Multiple Connections not allowed\n";
constexpr const char* CYCLE = "No Loops allowed in the DAG\n";

/// Both forms of a check are tried: over the flat form, and over mirrored nodes.
class TypeCheck : public testing::TestWithParam<bool>, public SketchGraph {
protected:
    /// "" for a check that passes, or what its reporter hears.
    std::string check(bool goes_on = false)
    {
        Listener listener(goes_on);
        DAGExec exec(&graph, "type_checker", new DAGOpBottomUpDefault);
        exec.set_reporter(&listener);
        if (GetParam())
            exec.inq_graph()->inq_nodes_list();
        exec.init();
        exec.set_store_result(true);
        const bool has_passed = exec.execute();
        EXPECT_EQ(has_passed, listener.heard.empty() || listener.heard == CYCLE || goes_on);
        return listener.heard;
    }
};

constexpr const char* CONCRETE = "901 902 903 904";
} // namespace

INSTANTIATE_TEST_SUITE_P(Flat, TypeCheck, testing::Values(false));
INSTANTIATE_TEST_SUITE_P(Mirrored, TypeCheck, testing::Values(true));

TEST_P(TypeCheck, composites_by_conversion_what_has_no_type_in_common)
{
    SketchNode* pictures = add("pictures", 1, PICTURE);
    connect(add("a", 0, PICTURE), pictures);
    connect(add("b", 0, SHAPE), pictures);
    EXPECT_EQ(check(), "");

    SketchNode* masks = add("masks", 1, MASK);
    connect(add("c", 0, MASK), masks);
    connect(add("d", 0, SHAPE), masks);
    EXPECT_EQ(check(), NOT_MULTIPLE) << "a mask in common, but masks can't be composited";
    connect(add("e", 0, NOTE), masks);
    EXPECT_EQ(check(), NO_TYPE);
}

TEST_P(TypeCheck, goes_on_after_an_error_if_the_reporter_says_so)
{
    SketchNode* mask = add("mask", 1, MASK);
    connect(add("picture", 0, PICTURE), mask);
    SketchNode* behind = add_universal("behind", 1);
    connect(mask, behind);
    SketchNode* shown = add("shown", 1, NOTE);
    connect(add("loose", 0, MASK), shown);
    EXPECT_EQ(check(true), "Incompatiable Types\nIncompatiable Types\n");
    EXPECT_NE(behind->inq_checked().find(CONCRETE), std::string::npos)
        << "what failed constrains nothing";
}

TEST_P(TypeCheck, tells_only_a_reporter_of_a_cycle)
{
    SketchNode* first = add_universal("first", 1);
    SketchNode* second = add_universal("second", 1);
    connect(first, second);
    connect(second, first);
    Listener listener;
    DAGExec exec(&graph, "type_checker", new DAGOpBottomUpDefault);
    if (GetParam())
        exec.inq_graph()->inq_nodes_list();
    exec.init();
    EXPECT_TRUE(exec.execute());
    exec.set_reporter(&listener);
    exec.init();
    EXPECT_EQ(listener.heard, CYCLE);
    EXPECT_TRUE(exec.execute());
    EXPECT_EQ(first->inq_checked(), "none");
    EXPECT_EQ(exec.inq_graph()->inq_nodes_list()->at_index(0),
              exec.inq_graph()->find_mirror_of(first));
}

TEST_P(TypeCheck, takes_proposals_that_the_real_graph_does_not_see)
{
    SketchNode* shape = add("shape", 0, SHAPE);
    SketchNode* note = add("note", 0, NOTE);
    SketchNode* mask = add("mask", 1, MASK);
    CNodeConnection* real = connect(shape, mask);
    const auto passes = [&](auto propose) {
        DAGExec exec(&graph, "type_checker", new DAGOpBottomUpDefault);
        if (GetParam())
            exec.inq_graph()->inq_nodes_list();
        propose(*exec.inq_graph());
        exec.init();
        return exec.execute();
    };
    EXPECT_FALSE(passes([&](DAGOpGraph& g) { g.make_connection(note->output(), mask->input()); }));
    EXPECT_FALSE(passes([&](DAGOpGraph& g) {
        g.delete_connection(real);
        g.make_connection(note->output(), mask->input());
    }));
    EXPECT_TRUE(passes([&](DAGOpGraph& g) {
        g.make_connection(note->output(), mask->input());
        CNodeConnection proposed(note->output(), mask->input());
        g.delete_connection(&proposed);
    }));
    EXPECT_EQ(mask->input()->inq_connections_list()->count(), 1);
    EXPECT_EQ(note->output()->inq_connections_list()->count(), 0);
}

namespace {
/// Everything that a check leaves: its answer, the lists on the nodes, the sets at the channels.
std::string all_results(CNodeGraph& graph, bool mirrored)
{
    for (CNode* node : graph.inq_nodes_list()->of<CNode>())
        node->set_types(nullptr);
    DAGExec exec(&graph, "type_checker", new DAGOpBottomUpDefault);
    DAGOpGraph& mirror = *exec.inq_graph();
    if (mirrored)
        mirror.inq_nodes_list();
    exec.init();
    exec.set_store_result(true);
    std::string all = exec.execute() ? "passed" : "failed";
    for (const DAGOpNode* node : mirror.inq_nodes_list()->of<DAGOpNode>()) {
        all += "\n" + std::string(static_cast<SketchNode*>(node->inq_c_node())->inq_checked());
        for (const DAGOpChannelSet* set : {node->inq_inputs(), node->inq_outputs()})
            for (int i = 0; set && i < set->inq_n_channels(); ++i)
                all += "; " + text_of(static_cast<cdata_tDArray*>(set->inq_channel(i)->inq_data()));
        EXPECT_NE(node->inq_bu_op(), nullptr);
    }
    return all;
}

void draw_at_random(SketchGraph& sketch, std::mt19937& random)
{
    const auto below = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
    constexpr int types[] = {PICTURE, NOTE, SHAPE, SHAPE, MASK};
    std::vector<SketchNode*> nodes;
    for (int i = 0; i < 12; ++i) {
        const int n_inputs = i < 3 ? 0 : below(3);
        const int kind = below(4);
        if (kind == 0)
            nodes.push_back(sketch.add("any", n_inputs, types[below(5)]));
        else if (kind == 1)
            nodes.push_back(sketch.add_generic("some", n_inputs, {MASK, PICTURE, NOTE}));
        else
            nodes.push_back(sketch.add_universal("all", n_inputs));
        for (int input = 0; input < n_inputs; ++input)
            for (int n = below(3); n > 0 && i > 0; --n)
                sketch.connect(nodes[static_cast<std::size_t>(below(i))], nodes.back(), input);
    }
}
} // namespace

TEST(DAGExec, finds_the_same_over_the_flat_form_and_over_mirrored_nodes)
{
    std::mt19937 random(20);
    int n_passed = 0;
    for (int round = 0; round < 300; ++round) {
        SketchGraph sketch;
        draw_at_random(sketch, random);
        const std::string flat = all_results(sketch.graph, false);
        EXPECT_EQ(flat, all_results(sketch.graph, true)) << "in round " << round;
        n_passed += flat.starts_with("passed");
    }
    EXPECT_GT(n_passed, 20);
    EXPECT_LT(n_passed, 280);
}
