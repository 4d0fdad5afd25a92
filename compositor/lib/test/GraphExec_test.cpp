#include "compositor/lib/hdr/CNodeOp.h"
#include "compositor/lib/hdr/CNodeStatus.h"
#include "compositor/lib/hdr/GraphExec.h"
#include "compositor/lib/hdr/GraphExecReporter.h"
#include "compositor/lib/test/SketchGraph.h"
#include "tests/support/Captured.h"

#include <gtest/gtest.h>

namespace {
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
    GraphExecTest()
    {
        new_op = [](CNode* node) { return new CNodeOp(node); };
    }

    static void run(GraphExec& exec)
    {
        exec.setup_data();
        exec.generate_data(nullptr);
    }
};
} // namespace

TEST_F(GraphExecTest, has_no_ops_for_a_graph_with_a_cycle)
{
    std::vector<SketchNode*> ring;
    for (int i = 0; i < 40; ++i)
        ring.push_back(add("ring", 1));
    for (std::size_t i = 0; i < ring.size(); ++i)
        for (int twice = 0; twice < 2; ++twice) // so that the paths double with each node
            connect(ring[i], ring[(i + 1) % ring.size()]);
    GraphExec exec(PICTURE, ring[0], 0);
    run(exec);
    EXPECT_EQ(exec.inq_root_data(), nullptr);
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
