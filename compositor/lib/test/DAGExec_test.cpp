#include "compositor/lib/hdr/DAGExec.h"
#include "compositor/lib/hdr/DAGExecError.h"
#include "compositor/lib/hdr/DAGExecReporter.h"
#include "compositor/lib/hdr/DAGOpBase.h"
#include "compositor/lib/hdr/DAGOpNode.h"
#include "compositor/lib/test/SketchGraph.h"

#include <gtest/gtest.h>

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

class TypeCheck : public testing::Test, public SketchGraph {
protected:
    /// "" for a check that passes, or what its reporter hears.
    std::string check(bool goes_on = false)
    {
        Listener listener(goes_on);
        DAGExec exec(&graph, "type_checker", new DAGOpBottomUpDefault);
        exec.set_reporter(&listener);
        exec.init();
        exec.set_store_result(true);
        const bool has_passed = exec.execute();
        EXPECT_EQ(has_passed, listener.heard.empty() || listener.heard == CYCLE || goes_on);
        return listener.heard;
    }
};

constexpr const char* CONCRETE = "901 902 903 904";
} // namespace

TEST_F(TypeCheck, composites_by_conversion_what_has_no_type_in_common)
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

TEST_F(TypeCheck, goes_on_after_an_error_if_the_reporter_says_so)
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

TEST_F(TypeCheck, tells_only_a_reporter_of_a_cycle)
{
    SketchNode* first = add_universal("first", 1);
    SketchNode* second = add_universal("second", 1);
    connect(first, second);
    connect(second, first);
    Listener listener;
    DAGExec exec(&graph, "type_checker", new DAGOpBottomUpDefault);
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

TEST_F(TypeCheck, takes_proposals_that_the_real_graph_does_not_see)
{
    SketchNode* shape = add("shape", 0, SHAPE);
    SketchNode* note = add("note", 0, NOTE);
    SketchNode* mask = add("mask", 1, MASK);
    CNodeConnection* real = connect(shape, mask);
    const auto passes = [&](auto propose) {
        DAGExec exec(&graph, "type_checker", new DAGOpBottomUpDefault);
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
