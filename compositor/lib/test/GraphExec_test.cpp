#include "compositor/lib/hdr/CDataConvertor.h"
#include "compositor/lib/hdr/CNodeOp.h"
#include "compositor/lib/hdr/CNodeOpArray.h"
#include "compositor/lib/hdr/CNodeOpArraySet.h"
#include "compositor/lib/hdr/CNodeStatus.h"
#include "compositor/lib/hdr/GraphExec.h"
#include "compositor/lib/hdr/GraphExecReporter.h"
#include "compositor/lib/test/SketchData.h"
#include "compositor/lib/test/SketchGraph.h"
#include "kivlib/hdr/AbortPanel.h"
#include "kivlib/hdr/IntArray.h"
#include "tests/support/Captured.h"

#include <gtest/gtest.h>

namespace {
std::string events; // what the ops of a test did, in order

/// Draws its name around what its inputs have drawn.
class DrawingOp : public CNodeOp {
public:
    using CNodeOp::CNodeOp;

    void copy_node_info(CNode*) override { events += "info " + name() + "\n"; }
    void init_data(AbortPanel*) override
    {
        events += "init " + name() + "\n";
        own()->immediate = around(&SketchData::immediate);
    }
    void generate_data(AbortPanel*) override
    {
        events += "draw " + name() + "\n";
        own()->generated = around(&SketchData::generated);
    }

protected:
    std::string name() const { return inq_node_name().str(); }
    SketchData* own() const { return SketchData::of(inq_node_data()); }

private:
    std::string around(std::string SketchData::*member) const
    {
        std::string inner;
        for (int i = 0; i < inq_n_inputs(); ++i) {
            CData* input = inq_inputs(i)->inq_data();
            inner += (i > 0 ? "," : "") + (input ? SketchData::of(input)->*member : "-");
        }
        if (inq_n_inputs() > 0)
            return name() + "(" + inner + ")";
        return name() + (own()->request.empty() ? "" : "@" + own()->request);
    }
};

/// Turns the order of its first input's connections round, once it has seen them.
class TurningOp : public DrawingOp {
public:
    using DrawingOp::DrawingOp;

    void init_data(AbortPanel* abort) override
    {
        DrawingOp::init_data(abort);
        IntArray turned;
        for (int i = inq_inputs(0)->inq_n_nodes() - 1; i >= 0; --i)
            turned.add(i);
        inq_inputs(0)->reorder(&turned, false);
    }
};

/// Finds that it wants its inputs at another size.
class AskingOp : public DrawingOp {
public:
    using DrawingOp::DrawingOp;

    void init_data(AbortPanel* abort) override
    {
        own()->request = "large";
        changed_request(abort);
        DrawingOp::init_data(abort);
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

constexpr int WORDS = 911;
class WordsToPicture : public CDataConvertor {
public:
    using CDataConvertor::CDataConvertor;

    void convert_request(CData* words, CData* picture) override
    {
        SketchData::of(words)->request = "words for " + SketchData::of(picture)->request;
    }
    void convert_immediate(CData*, CData*) override {}
    void convert_generated(CData* words, CData* picture, AbortPanel*) override
    {
        SketchData::of(picture)->generated = "[" + SketchData::of(words)->generated + "]";
    }
    void convert_change(CData*, CData*) override {}
};
class WordsToPictureDescriptor : public CDataConvertorDescriptor {
public:
    using CDataConvertorDescriptor::CDataConvertorDescriptor;
    gsl::owner<CDataConvertor*> new_convertor(CNodeOp* owner) override
    {
        return new WordsToPicture(owner);
    }
};
void register_words()
{
    if (CDataDescriptor::find_desc_for(WORDS))
        return;
    new CDataDescriptor("SketchWords", "Words", WORDS, SketchData::new_data<WORDS>, false, nullptr,
                        false);
    new WordsToPictureDescriptor(WORDS, PICTURE);
}

template <class Op> CNodeOp* new_op(CNode* node)
{
    return new Op(node);
}

class CountingPanel : public AbortPanel {
public:
    explicit CountingPanel(int patience) : patience(patience) {}
    bool inq_abort() override { return patience-- <= 0; }

private:
    int patience;
};

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
        events.clear();
        new_op = ::new_op<DrawingOp>;
    }

    /// What the root's picture shows after a run.
    static std::string run(GraphExec& exec, AbortPanel* panel = nullptr)
    {
        events.clear();
        exec.setup_data();
        exec.generate_data(panel);
        return root(exec)->generated;
    }
    std::string run(CNode* root) const
    {
        GraphExec exec(PICTURE, root, 0);
        return run(exec);
    }
    static SketchData* root(const GraphExec& exec) { return SketchData::of(exec.inq_root_data()); }

    static std::string inq_kinds_of_events()
    {
        std::string kinds;
        for (const char* kind : {"info", "init", "draw"})
            kinds += events.find(kind) == std::string::npos ? "" : std::string(kind) + " ";
        return kinds;
    }
};
} // namespace

TEST_F(GraphExecTest, makes_an_op_for_each_path_and_unites_several_connections)
{
    SketchNode* ball = add("ball", 0);
    SketchNode* sky = add("sky", 0);
    SketchNode* tint = add("tint", 1);
    SketchNode* out = add("out", 2);
    connect(ball, tint);
    connect(tint, out, 0);
    connect(sky, out, 0);
    connect(ball, out, 1);
    GraphExec exec(PICTURE, out, 0);
    root(exec)->request = "7";
    EXPECT_EQ(run(exec), "out(sky@7+tint(ball@7),ball@7)");
    EXPECT_EQ(events, "info out\ninfo tint\ninfo ball\ninfo sky\ninfo ball\n"
                      "init ball\ninit sky\ninit ball\ninit tint\ninit out\n"
                      "draw ball\ndraw sky\ndraw ball\ndraw tint\ndraw out\n");
    root(exec)->request = "8";
    EXPECT_EQ(run(exec), "out(sky@8+tint(ball@8),ball@8)");
}

TEST_F(GraphExecTest, takes_a_disabled_node_for_a_wire_on_its_first_input)
{
    SketchNode* mix = add("mix", 3);
    SketchNode* out = add("out", 1);
    SketchNode* a = add("a", 0);
    connect(a, mix, 0);
    connect(add("b", 0), mix, 1);
    connect(add("c", 0), mix, 2);
    connect(mix, out);
    EXPECT_EQ(run(out), "out(mix(a,b,c))");
    mix->set_is_disabled(true);
    EXPECT_EQ(run(out), "out(a)");
    EXPECT_EQ(events.find("info mix"), std::string::npos);
    mix->set_is_disabled(false);

    GraphExec exec(PICTURE, out, 0);
    mix->set_is_temp_disabled(true);
    EXPECT_EQ(run(exec), "out(mix(a,b,c))");
    exec.set_ignore_temp_disable(false);
    EXPECT_EQ(run(exec), "out(a)");
    mix->set_is_temp_disabled(false);

    const unsigned labels[] = {out->inq_label(), a->inq_label(), 0};
    exec.set_disabled_nodes(labels, 3);
    EXPECT_EQ(run(exec), "mix(,b,c)");
    EXPECT_FALSE(exec.inq_is_disabled(mix->inq_label()));
    exec.clear_disabled_nodes();
    EXPECT_EQ(run(exec), "out(mix(a,b,c))");
}

TEST_F(GraphExecTest, computes_a_disabled_node_whose_types_differ)
{
    SketchNode* drawn = add_mixed("drawn", {PICTURE, MASK}, PICTURE);
    connect(add("a", 0, PICTURE), drawn, 0);
    drawn->set_is_disabled(true);
    EXPECT_EQ(run(drawn), "a") << "an input without data fits any type";
    connect(add("b", 0, MASK), drawn, 1);
    EXPECT_EQ(run(drawn), "drawn(a,b)") << "one input that differs is enough";
}

TEST_F(GraphExecTest, converts_what_a_consumer_wants_in_another_type)
{
    register_words();
    SketchNode* out = add("out", 1);
    connect(add("poem", 0, WORDS), out);
    GraphExec exec(PICTURE, out, 0);
    root(exec)->request = "7";
    EXPECT_EQ(run(exec), "out([poem@words for 7])");
    EXPECT_EQ(exec.inq_root_data()->inq_type(), PICTURE);
    GraphExec of_words(PICTURE, add("song", 0, WORDS), 0);
    EXPECT_EQ(run(of_words), "[song@words for ]");
}

TEST_F(GraphExecTest, computes_only_what_feeds_a_selected_channel_in_a_restricted_run)
{
    SketchNode* out = add("out", 2);
    SketchNode* tint = add("tint", 1);
    connect(add("a", 0), tint);
    connect(tint, out, 0);
    connect(add("b", 0), out, 1);
    {
        GraphExec exec(PICTURE, out, 0);
        exec.set_is_restricted(true);
        run(exec);
        EXPECT_EQ(inq_kinds_of_events(), "info ");
    }
    out->input(0)->set_is_selected(true);
    GraphExec exec(PICTURE, out, 0);
    exec.set_is_restricted(true);
    EXPECT_EQ(run(exec), "tint(a)+") << "the root merges all its inputs";
    EXPECT_EQ(events.find("draw b"), std::string::npos);
    EXPECT_EQ(events.find("draw out"), std::string::npos);
    exec.set_is_restricted(false);
    EXPECT_EQ(run(exec), "out(tint(a),b)");
}

TEST_F(GraphExecTest, takes_a_new_order_of_an_input_into_the_generated_phase)
{
    new_op = ::new_op<TurningOp>;
    SketchNode* out = add("out", 1);
    new_op = ::new_op<DrawingOp>;
    for (const char* name : {"a", "b", "c"})
        connect(add(name, 0), out);
    GraphExec exec(PICTURE, out, 0);
    EXPECT_EQ(run(exec), "out(a+b+c)");
    EXPECT_EQ(events.substr(events.find("draw")), "draw a\ndraw b\ndraw c\ndraw out\n");
    EXPECT_EQ(run(exec), "out(a+b+c)") << "the same order again changes nothing";
}

TEST_F(GraphExecTest, asks_inputs_again_when_an_op_changes_its_request)
{
    new_op = ::new_op<AskingOp>;
    SketchNode* out = add("out", 1);
    new_op = ::new_op<DrawingOp>;
    SketchNode* tint = add("tint", 1);
    connect(add("a", 0), tint);
    connect(tint, out);
    EXPECT_EQ(run(out), "out(tint(a@large))");
    EXPECT_EQ(events.substr(events.find("init")),
              "init a\ninit tint\ninit a\ninit tint\ninit out\ndraw a\ndraw tint\ndraw out\n");
}

TEST_F(GraphExecTest, stops_when_the_panel_says_so)
{
    SketchNode* out = add("out", 1);
    connect(add("a", 0), out);
    GraphExec exec(PICTURE, out, 0);
    CountingPanel at_once(0), in_immediate(2), in_generated(5);
    run(exec, &at_once);
    EXPECT_EQ(inq_kinds_of_events(), "info ");
    run(exec, &in_immediate);
    EXPECT_EQ(events, "info out\ninfo a\ninit a\n");
    EXPECT_EQ(run(exec, &in_generated), "");
    EXPECT_EQ(events, "info out\ninfo a\ninit a\ninit out\ndraw a\n");
}

TEST_F(GraphExecTest, resolves_wildcards_by_the_checked_types)
{
    SketchNode* any = add_universal("any", 1);
    SketchNode* note = add("note", 0, NOTE);
    connect(note, any);
    const auto check = [&](std::initializer_list<int> types) {
        auto* list = new cdata_tDArray(0);
        for (const int type : types)
            list->insert_tail(type);
        any->set_types(list);
    };
    check({NOTE});
    GraphExec one(NOTE, any, 0);
    EXPECT_EQ(run(one), "any(note)");
    EXPECT_EQ(one.inq_root_data()->inq_type(), NOTE);
    check({MASK, NOTE});
    GraphExec wanted(NOTE, any, 0);
    EXPECT_EQ(run(wanted), "any(note)");

    SketchNode* out = add("out", 2, PICTURE);
    connect(add("a", 0), out, 0);
    connect(any, out, 1);
    EXPECT_EQ(run(out), "out(a,-)") << "what can't be resolved leaves its place empty";
    GraphExec none(PICTURE, any, 0);
    none.set_needs_reorder(true);
    none.setup_data();
    none.generate_data(nullptr);
    EXPECT_EQ(none.inq_root_data(), nullptr);
}

TEST_F(GraphExecTest, ends_a_cycle_where_its_path_is_longer_than_the_graph)
{
    SketchNode* out = add("out", 1);
    SketchNode* back = add("back", 1);
    connect(back, out);
    connect(out, back);
    EXPECT_EQ(run(out), "out(back(-))");
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
