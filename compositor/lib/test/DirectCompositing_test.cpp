#include "compositor/lib/hdr/CDataConvertor.h"
#include "compositor/lib/hdr/CNodeOp.h"
#include "compositor/lib/hdr/CNodeOpArray.h"
#include "compositor/lib/hdr/GraphExec.h"
#include "compositor/lib/test/SketchData.h"
#include "compositor/lib/test/SketchGraph.h"

#include <gtest/gtest.h>
#include <random>

namespace {
constexpr int FINE = 930; // these two become each other
constexpr int DRAFT = 931;

class DraftAndPicture : public CDataConvertor {
public:
    using CDataConvertor::CDataConvertor;

    void convert_request(CData*, CData*) override {}
    void convert_immediate(CData*, CData*) override {}
    void convert_generated(CData*, CData*, AbortPanel*) override {}
    void convert_change(CData*, CData*) override {}
    bool inq_can_composite() const override { return can_composite(*inq_owner()); }

    static bool can_composite(const CNodeOp& op) { return op.inq_label() % 4 != 0; }
};

class DraftAndPictureDescriptor : public CDataConvertorDescriptor {
public:
    using CDataConvertorDescriptor::CDataConvertorDescriptor;
    gsl::owner<CDataConvertor*> new_convertor(CNodeOp* owner) override
    {
        return new DraftAndPicture(owner);
    }
};

/// What the op of a node answers stands in the node's name: c for can composite, t for through.
class PlainOp : public CNodeOp {
public:
    using CNodeOp::CNodeOp;

    bool inq_can_composite() override { return is_named_for('c'); }
    bool inq_composite_through() override
    {
        ++n_asked;
        return is_named_for('t');
    }
    void generate_data(AbortPanel*) override
    {
        const CData* offered = inq_converted_composite_output(FINE);
        if (!is_checked)
            return;
        for (const int type : {FINE, DRAFT})
            n_wrong += inq_composite_output(type) != find_output(*this, type);
        CData* further = find_is_through(*this) ? find_output(*inq_consumer(), FINE) : nullptr;
        n_wrong += offered != (further ? further : inq_output_data());
    }

    inline static bool is_checked = true;
    inline static int n_asked = 0;
    inline static int n_wrong = 0;

private:
    bool is_named_for(char c) const { return inq_node_name().str().find(c) != std::string::npos; }

    // What is right, in the plainest form.

    static bool find_all_direct(const CNodeOp& op)
    {
        for (int k = 0; k < op.inq_inputs(0)->inq_n_nodes(); ++k) {
            CNodeOp* input = op.inq_inputs(0)->inq_nodeop(k);
            const bool draws = input->inq_converted_data() ? DraftAndPicture::can_composite(*input)
                                                           : input->inq_can_composite();
            if (!draws && !(input->inq_composite_through() && find_all_direct(*input)))
                return false;
        }
        return true;
    }
    static bool find_is_through(const CNodeOp& op)
    {
        CNodeOp* reader = op.inq_consumer();
        return reader && reader->inq_composite_through() && find_all_direct(*reader);
    }
    static CData* find_output(const CNodeOp& op, int type)
    {
        CData* own = op.inq_node_data()->inq_type() == type ? op.inq_node_data() : nullptr;
        CData* further = !op.inq_converted_data() && find_is_through(op)
                             ? find_output(*op.inq_consumer(), type)
                             : nullptr;
        return further ? further : own;
    }
};

class DirectCompositing : public testing::Test, public SketchGraph {
protected:
    DirectCompositing()
    {
        if (!CDataDescriptor::find_desc_for(DRAFT)) {
            new CDataDescriptor("Fine", "Fine", FINE, SketchData::new_data<FINE>, true, nullptr,
                                true);
            new CDataDescriptor("Draft", "Draft", DRAFT, SketchData::new_data<DRAFT>, true, nullptr,
                                true);
            new DraftAndPictureDescriptor(DRAFT, FINE);
            new DraftAndPictureDescriptor(FINE, DRAFT);
        }
        new_op = [](CNode* node) -> CNodeOp* { return new PlainOp(node); };
        PlainOp::n_asked = 0;
        PlainOp::n_wrong = 0;
    }

    static void run(CNode* root)
    {
        GraphExec exec(FINE, root, 0);
        exec.setup_data();
        exec.generate_data(nullptr);
    }
};
} // namespace

TEST_F(DirectCompositing, finds_the_target_that_the_plain_search_finds)
{
    PlainOp::is_checked = true;
    for (unsigned seed = 1; seed <= 60; ++seed) {
        std::mt19937 random(seed);
        std::vector<SketchNode*> open{add("t", 1, FINE)};
        for (int i = 0; i < 14; ++i) {
            const char* const names[] = {"t", "t", "t", "ct", "c", "-"};
            const auto size = static_cast<unsigned>(open.size());
            SketchNode* consumer = open[random() % size];
            const int type = random() % 3 ? FINE : DRAFT;
            SketchNode* node = add(names[random() % (i < 11 ? 5 : 6)], 1, type);
            connect(node, consumer);
            open.push_back(node);
        }
        run(open[0]);
        ASSERT_EQ(PlainOp::n_wrong, 0) << "seed " << seed;
    }
}

TEST_F(DirectCompositing, asks_each_op_a_few_times_however_long_the_chain_is)
{
    constexpr int n = 5000;
    PlainOp::is_checked = false; // the plain search takes too long
    SketchNode* const root = add("t", 1, FINE);
    SketchNode* consumer = root;
    for (int i = 1; i < n; ++i) {
        SketchNode* node = add("t", 1, FINE);
        connect(node, consumer);
        connect(add("c", 1, FINE), consumer);
        consumer = node;
    }
    run(root);
    EXPECT_LE(PlainOp::n_asked, 4 * 2 * n);
}
