#pragma once

#include "compositor/affine/lib/hdr/CDataRender.h"
#include "compositor/lib/hdr/CDataDescriptor.h"
#include "compositor/lib/hdr/CNodeOp.h"
#include "compositor/lib/hdr/GraphExec.h"
#include "compositor/lib/test/SketchGraph.h"

/// The data type of the tests: images of which nothing is known but where they are.
constexpr int PLATE = 1611;

class Plate : public CDataRender {
public:
    CDataDescriptor* inq_desc() const override { return CDataDescriptor::find_desc_for(PLATE); }
    int inq_type() const override { return PLATE; }
    using CData::union_generated_data_from;
    void union_generated_data_from(CNodeOpArray*, AbortPanel*) override {}
};

inline IntBBox box(long left, long bottom, long right, long top)
{
    return IntBBox(IntRect(top, left, bottom, right));
}

/// A source that covers `cover`. It keeps what it was asked for last, and what it was to draw.
class PlateNode : public SketchNode {
public:
    PlateNode(const IntBBox& cover, bool is_opaque);
    gsl::owner<CNodeOp*> new_nodeop(int) override;

    IntBBox cover;
    bool is_opaque;
    Matrix44 asked_transform;
    IntBBox asked_box;
    int n_answers = 0;
    IntBBox drawn_box;
};

/// A graph of plates, evaluated from one node that lays its inputs over one another.
class PlateGraph {
public:
    PlateGraph();

    /// Puts a node on top of the inputs of `consumer`, or of the root.
    template <class Node> Node* add(gsl::owner<Node*> node, CNode* consumer = nullptr)
    {
        add_node(node, consumer ? consumer : root);
        return node;
    }

    /// Frame 1 in full quality; the result is the root's.
    const CDataRender& evaluate(const Matrix44& view = {});
    GraphExec& inq_exec();

private:
    void add_node(CNode* node, CNode* consumer);

    CNodeGraph graph{nullptr};
    SketchNode* root;
    std::unique_ptr<GraphExec> exec;
};
