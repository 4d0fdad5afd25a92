#include "compositor/lib/hdr/CNodeOp.h"
#include "compositor/lib/hdr/CNodeOpArray.h"
#include "compositor/lib/hdr/GraphExec.h"
#include "compositor/lib/test/SketchData.h"
#include "compositor/lib/test/SketchGraph.h"

#include <gtest/gtest.h>
#include <random>

namespace {
/// Data whose answer takes the place of the request, as the box of an image does. Of several inputs
/// an opaque one hides those before it that are no larger. Some sizes can't be compared.
class Area : public CData {
public:
    static constexpr int TYPE = 921;
    static CData* new_data() { return new Area; }
    static void enter()
    {
        if (!CDataDescriptor::find_desc_for(TYPE))
            new CDataDescriptor("Area", "Area", TYPE, new_data, true, nullptr, true);
    }
    static Area* of(CData* data) { return static_cast<Area*>(data); }

    CDataDescriptor* inq_desc() const override { return CDataDescriptor::find_desc_for(TYPE); }
    int inq_type() const override { return TYPE; }
    int inq_frameno() const override { return 1; }
    void copy_request_data_from(CData* consumer) override { size = of(consumer)->size; }
    void copy_immediate_data_to(CData* consumer) override
    {
        of(consumer)->size = size;
        of(consumer)->is_opaque = is_opaque;
    }
    void clear_immediate_data() override
    {
        size = 0;
        is_opaque = false;
    }
    bool inq_request_equals(const CData* other) const override
    {
        return tells_requests && size % 6 != 1 && size == static_cast<const Area*>(other)->size;
    }

    using CData::union_generated_data_from;
    using CData::union_immediate_data_from;
    void union_generated_data_from(CNodeOpArray*, AbortPanel*) override {}
    void union_immediate_data_from(CNodeOpArray* inputs, AbortPanel* abort) override
    {
        int cover = -1;
        for (int i = 0; i < inputs->inq_n_nodes(); ++i) {
            const Area& input = *of(inputs->inq_data(i));
            size = std::max(size, input.size);
            if (input.is_opaque && input.size == size)
                cover = i;
        }
        for (int i = 0; i < cover; ++i) {
            inputs->inq_data(i)->clear_immediate_data();
            inputs->inq_node_op(i)->changed_request(abort);
        }
    }

    inline static bool tells_requests = true;
    int size = 0;
    bool is_opaque = false;
};

/// A source covers a part of what is asked for; another op asks for a border more. Some then ask
/// again, for what depends on the first answer, or by hand, or while they are asked themselves, or
/// turn their inputs round.
class AreaOp : public CNodeOp {
public:
    explicit AreaOp(CNode* node) : CNodeOp(node), kind(inq_node_name().str()[0])
    {
        ++n_alive;
        n_most = std::max(n_most, n_alive);
    }
    ~AreaOp() override { --n_alive; }

    void copy_request_data_to_inputs() override
    {
        for (int i = 0; i < inq_n_inputs(); ++i)
            if (CData* input = inq_inputs(i)->inq_data())
                Area::of(input)->size = wanted() > 0 ? wanted() + border() : 0;
        if (kind == 'b' && inq_label() % 13 == 0)
            changed_request(0, nullptr);
    }
    void init_data(AbortPanel* abort) override
    {
        ++n_answers;
        CData* input = inq_n_inputs() > 0 ? inq_inputs(0)->inq_data() : nullptr;
        if (input && inq_label() % 3 == 0)
            ask_again(input, abort);
        if (inq_label() % 2 == 0 && inq_n_inputs() > 0)
            turn(*inq_inputs(0));
        if (kind == 'b' && inq_label() % 11 == 0 && inq_n_inputs() > 0)
            ask_by_hand(inq_inputs(0)->inq_node_op(0));
        Area& own = *Area::of(inq_node_data());
        own.is_opaque = inq_label() % 5 == 0;
        own.size = input ? std::min(own.size, Area::of(input)->size) : own.size * 7 / 8;
    }
    void generate_data(AbortPanel*) override
    {
        areas += std::to_string(Area::of(inq_node_data())->size) + " ";
    }

    inline static int n_alive = 0;
    inline static int n_most = 0;
    inline static int n_answers = 0;
    inline static std::string areas; // of all ops in the generated phase

private:
    int wanted() const { return Area::of(inq_output_data())->size; }
    int border() const { return kind == 'b' ? 3 : 0; }
    void ask_again(CData* input, AbortPanel* abort)
    {
        const int half = Area::of(input)->size / 2;
        copy_request_data_to_inputs();
        if (kind == 'b')
            Area::of(input)->size = half;
        for (int i = 0; i < inq_n_inputs(); ++i)
            changed_request(i, abort);
    }
    void turn(CNodeOpArray& inputs) const
    {
        const int n = inputs.inq_n_nodes();
        IntArray order;
        for (int i = 0; i < n; ++i)
            order.add((i + 1 + wanted()) % n);
        inputs.reorder(&order, false);
    }
    /// An op of its inputs, or one of theirs, which it then may answer a second time.
    void ask_by_hand(CNodeOp* op) const
    {
        if (const CNodeOpArray* deeper = op && wanted() % 2 ? op->inq_inputs(0) : nullptr)
            op = deeper->inq_node_op(0);
        if (!op)
            return;
        if (wanted() % 3)
            op->do_request_data(nullptr);
        op->do_immediate_data(nullptr);
    }

    char kind;
};

class Requests : public testing::Test, public SketchGraph {
protected:
    Requests()
    {
        Area::enter();
        AreaOp::n_most = 0;
        new_op = [](CNode* node) -> CNodeOp* { return new AreaOp(node); };
    }

    /// The areas of all ops after two runs of which the second asks for less.
    static std::string run(CNode* root, bool tells_requests)
    {
        Area::tells_requests = tells_requests;
        AreaOp::areas.clear();
        AreaOp::n_answers = 0;
        GraphExec exec(Area::TYPE, root, 0);
        for (const int size : {1000, 400}) {
            Area::of(exec.inq_root_data())->size = size;
            exec.setup_data();
            exec.generate_data(nullptr);
        }
        return AreaOp::areas;
    }
};
} // namespace

TEST_F(Requests, give_the_same_answers_when_equal_ones_are_not_asked_twice)
{
    int n_saved = 0;
    for (unsigned seed = 1; seed <= 300; ++seed) {
        std::mt19937 random(seed);
        std::vector<SketchNode*> open{add("root", 1, Area::TYPE)};
        for (int i = 0; i < 16; ++i) {
            SketchNode* node = add(random() % 2 ? "a" : "b", random() % 4 ? 1 : 2, Area::TYPE);
            SketchNode* consumer = open[random() % open.size()];
            connect(node, consumer,
                    static_cast<int>(random()) & (consumer->inq_n_input_channels() - 1));
            open.push_back(node);
        }
        const std::string all_asked = run(open[0], false);
        const int n_answers = AreaOp::n_answers;
        ASSERT_EQ(run(open[0], true), all_asked) << "seed " << seed;
        n_saved += n_answers - AreaOp::n_answers;
    }
    EXPECT_GT(n_saved, 0);
}

TEST_F(Requests, reach_each_op_of_a_chain_a_few_times_however_long_it_is)
{
    constexpr int n = 3000;
    SketchNode* root = add("a", 1, Area::TYPE);
    SketchNode* consumer = root;
    for (int i = 1; i < n; ++i) {
        SketchNode* node = add("a", 1, Area::TYPE);
        connect(node, consumer);
        consumer = node;
    }
    run(root, true);
    EXPECT_LE(AreaOp::n_answers, 2 * 4 * n);
    EXPECT_EQ(AreaOp::n_most, n);
    EXPECT_EQ(AreaOp::n_alive, 0);
}

TEST_F(Requests, leave_no_op_behind_if_one_cannot_be_made)
{
    SketchNode* root = add("root", 2, Area::TYPE);
    connect(add("a", 0, Area::TYPE), root, 1);
    new_op = [](CNode*) -> CNodeOp* { throw std::bad_alloc(); };
    connect(add("faulty", 0, Area::TYPE), root, 0);
    EXPECT_THROW(GraphExec(Area::TYPE, root, 0), std::bad_alloc);
    EXPECT_GT(AreaOp::n_most, 1);
    EXPECT_EQ(AreaOp::n_alive, 0);
}
