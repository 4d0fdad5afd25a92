#pragma once

#include "compositor/lib/hdr/CDataDescriptor.h"
#include "compositor/lib/hdr/CNode.h"
#include "compositor/lib/hdr/CNodeChannel.h"
#include "compositor/lib/hdr/CNodeChannelSet.h"
#include "compositor/lib/hdr/CNodeConnection.h"
#include "compositor/lib/hdr/CNodeDescriptor.h"
#include "compositor/lib/hdr/CNodeGraph.h"
#include "compositor/lib/hdr/cdata_tDArray.h"

#include <string>
#include <vector>

/// Data types of the tests. A shape can become a picture, a mask or a note; only pictures and
/// notes can be composited.
enum SketchType { PICTURE = 901, MASK = 902, SHAPE = 903, NOTE = 904 };

void register_sketch_types();

/// Makes the op of a node; a test may give nodes another.
using NewSketchOp = CNodeOp* (*)(CNode*);

/// A node without behaviour of its own.
class SketchNode : public CNode {
public:
    SketchNode(CNodeDescriptor* descriptor, const char* name, NewSketchOp new_op)
        : descriptor(descriptor), name(name), new_op(new_op)
    {
        init();
    }

    ClassDescriptor* inq_class_descriptor() const override { return descriptor; }
    int inq_type() const override { return -1; }
    KIVString inq_name() const override { return name; }
    bool inq_is_universal() const override { return is_universal; }
    bool inq_is_generic() const override { return is_generic; }
    bool inq_is_fully_connected() const override
    {
        return needs_nothing || CNode::inq_is_fully_connected();
    }
    gsl::owner<CNodeOp*> new_nodeop(int) override { return new_op ? new_op(this) : nullptr; }

    CNodeChannel* input(int i = 0) const { return inq_inputs()->inq_channel(i); }
    CNodeChannel* output(int i = 0) const { return inq_outputs()->inq_channel(i); }

    /// The list that a type check left, such as "901 902"; "none" without one.
    std::string inq_checked() const;

    bool is_universal = false;
    bool is_generic = false;
    bool needs_nothing = false; // complete without connections

private:
    CNodeDescriptor* descriptor;
    KIVString name;
    NewSketchOp new_op;
};

/// A graph that a test draws up with a few words.
class SketchGraph {
public:
    SketchGraph() : graph(nullptr) { register_sketch_types(); }

    /// A node whose channels all carry `type`, or the wildcard for a universal or generic node.
    SketchNode* add(const char* name, int n_inputs, int type = PICTURE);
    SketchNode* add_universal(const char* name, int n_inputs);

    /// A generic node of a class that has operations for `types`.
    SketchNode* add_generic(const char* name, int n_inputs, const std::vector<int>& types);

    /// Behind the connections that the input has already; nothing is checked.
    CNodeConnection* connect(const SketchNode* from, const SketchNode* to, int input = 0);

    CNodeGraph graph;
    NewSketchOp new_op = nullptr; // for the nodes that are added from now on

private:
    SketchNode* add(CNodeDescriptor* descriptor, const char* name);
};

/// The text form of a set of types: "901 902", or "none" for null.
std::string text_of(const cdata_tDArray* types);
