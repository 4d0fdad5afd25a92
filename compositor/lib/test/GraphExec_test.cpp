#include "compositor/lib/hdr/CNodeOp.h"
#include "compositor/lib/hdr/CNodeOpArray.h"
#include "compositor/lib/hdr/CNodeStatus.h"
#include "compositor/lib/hdr/GraphExec.h"
#include "compositor/lib/hdr/GraphExecReporter.h"
#include "compositor/lib/test/SketchData.h"
#include "compositor/lib/test/SketchGraph.h"
#include "tests/support/Captured.h"

#include <gtest/gtest.h>

namespace {
/// Draws its name around what its inputs have drawn.
class DrawingOp : public CNodeOp {
public:
    using CNodeOp::CNodeOp;

    void generate_data(AbortPanel*) override
    {
        std::string inner;
        for (int i = 0; i < inq_n_inputs(); ++i) {
            CData* input = inq_inputs(i)->inq_data();
            inner += (i > 0 ? "," : "") + (input ? SketchData::of(input)->generated : "-");
        }
        const std::string name = inq_node_name().str();
        SketchData::of(inq_node_data())->generated =
            inq_n_inputs() > 0 ? name + "(" + inner + ")" : name;
    }
};

/// Lets its inputs draw through.
class ThroughOp : public CNodeOp {
public:
    using CNodeOp::CNodeOp;

    bool inq_composite_through() override { return true; }
};

/// Notes what it could draw into.
class CompositingOp : public DrawingOp {
public:
    using DrawingOp::DrawingOp;

    bool inq_can_composite() override
    {
        ++n_asked;
        return true;
    }
    void generate_data(AbortPanel* abort) override
    {
        DrawingOp::generate_data(abort);
        target = inq_composite_output(PICTURE);
        of_other_type = inq_composite_output(MASK);
        EXPECT_EQ(inq_converted_composite_output(PICTURE), target);
        if (target == inq_node_data())
            target = nullptr;
    }

    inline static CData* target = nullptr; // null for its own data
    inline static CData* of_other_type = nullptr;
    inline static int n_asked = 0;
};

template <class Op> CNodeOp* new_op(CNode* node)
{
    return new Op(node);
}

class Ear : public GraphExecReporter {
public:
    explicit Ear(bool goes_on = true) : goes_on(goes_on) {}
    bool signal_exception(gsl::owner<KIVError*> error) override
    {
        report_status(error);
        return goes_on;
    }
    void report_status(gsl::owner<KIVError*> given) override
    {
        const std::unique_ptr<KIVError> status(given);
        heard += status->inq_description().str() + "\n";
    }

    std::string heard;

private:
    bool goes_on;
};

class GraphExecTest : public testing::Test, public SketchGraph {
protected:
    GraphExecTest() { new_op = ::new_op<DrawingOp>; }

    /// What the root's picture shows after a run.
    static std::string run(GraphExec& exec)
    {
        exec.setup_data();
        exec.generate_data(nullptr);
        return SketchData::of(exec.inq_root_data())->generated;
    }
    std::string run(CNode* root) const
    {
        GraphExec exec(PICTURE, root, 0);
        return run(exec);
    }
};
} // namespace

TEST_F(GraphExecTest, leaves_a_place_empty_whose_type_cannot_be_told)
{
    SketchNode* any = add_universal("any", 1);
    SketchNode* out = add("out", 2, PICTURE);
    connect(add("note", 0, NOTE), any);
    connect(add("a", 0), out, 0);
    connect(any, out, 1);
    any->set_types(new cdata_tDArray(0));
    EXPECT_EQ(run(out), "out(a,-)");
    GraphExec none(PICTURE, any, 0);
    none.set_needs_reorder(true);
    none.setup_data();
    none.generate_data(nullptr);
    EXPECT_EQ(none.inq_root_data(), nullptr);
}

TEST_F(GraphExecTest, has_no_ops_for_a_graph_with_a_cycle)
{
    std::vector<SketchNode*> ring;
    for (int i = 0; i < 40; ++i)
        ring.push_back(add("ring", 1));
    for (std::size_t i = 0; i < ring.size(); ++i)
        for (int twice = 0; twice < 2; ++twice) // so that the paths double with each node
            connect(ring[i], ring[(i + 1) % ring.size()]);
    GraphExec exec(PICTURE, ring[0], 0);
    exec.setup_data();
    exec.generate_data(nullptr);
    EXPECT_EQ(exec.inq_root_data(), nullptr);
}

TEST_F(GraphExecTest, offers_the_target_nearest_the_root_that_all_can_draw_into)
{
    new_op = ::new_op<ThroughOp>;
    SketchNode* out = add("out", 1);
    SketchNode* inner = add("inner", 1);
    SketchNode* beside = add("beside", 1);
    new_op = ::new_op<CompositingOp>;
    connect(add("a", 0), inner);
    connect(inner, out);
    connect(beside, out);
    GraphExec exec(PICTURE, out, 0);
    run(exec);
    EXPECT_EQ(CompositingOp::target, exec.inq_root_data());
    EXPECT_EQ(CompositingOp::of_other_type, nullptr);

    new_op = ::new_op<DrawingOp>;
    connect(add("b", 0), beside);
    GraphExec blocked(PICTURE, out, 0);
    run(blocked);
    EXPECT_NE(CompositingOp::target, nullptr);
    EXPECT_NE(CompositingOp::target, blocked.inq_root_data()) << "as far as inner";
    connect(add("c", 0), inner);
    GraphExec alone(PICTURE, out, 0);
    run(alone);
    EXPECT_EQ(CompositingOp::target, nullptr);
}

TEST_F(GraphExecTest, asks_each_layer_once_in_a_run_what_can_be_drawn_through)
{
    constexpr int n_layers = 30;
    new_op = ::new_op<ThroughOp>;
    SketchNode* out = add("out", 1);
    new_op = ::new_op<CompositingOp>;
    for (int i = 0; i < n_layers; ++i)
        connect(add("layer", 0), out);
    GraphExec exec(PICTURE, out, 0);
    CompositingOp::n_asked = 0;
    run(exec);
    EXPECT_EQ(CompositingOp::n_asked, n_layers);
    run(exec);
    EXPECT_EQ(CompositingOp::n_asked, 2 * n_layers);
}

TEST_F(GraphExecTest, gives_each_reporter_its_own_copy_of_status_and_errors)
{
    SketchNode* out = add("out", 1);
    connect(add("a", 0), out);
    GraphExec exec(PICTURE, out, 0);
    EXPECT_TRUE(exec.signal_exception(new CNodeStatus));
    Ear patient, strict(false);
    exec.register_reporter(&strict);
    exec.register_reporter(&patient);
    run(exec);
    EXPECT_EQ(patient.heard, "Initialising\nRendering a\nRendering out\n");
    EXPECT_EQ(strict.heard, patient.heard);
    EXPECT_FALSE(exec.signal_exception(new CNodeStatus("x")));
    EXPECT_EQ(patient.heard, "Initialising\nRendering a\nRendering out\nRendering x\n");
    exec.unregister_reporter(&strict);
    EXPECT_TRUE(exec.signal_exception(new CNodeStatus));
    exec.unregister_reporter(&patient);
    const std::string before = patient.heard;
    run(exec);
    EXPECT_EQ(patient.heard, before);

    const Captured said;
    GraphExecStatusReporter console;
    exec.register_reporter(&console);
    exec.report_status(new CNodeStatus("y"));
    EXPECT_EQ(said.inq_errors(), "Rendering y\n");
}
