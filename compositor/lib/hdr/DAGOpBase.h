#pragma once

#include "kivlib/hdr/KIVObject.h"

class DAGExec;
class DAGOpNode;
class KIVError;

/// What a pass over the graph does at one node.
class DAGOpBase : public KIVObject {
public:
    explicit DAGOpBase(DAGOpNode* node = nullptr) : node(node) {}

    virtual void execute() = 0;

    DAGOpNode* inq_node() const { return node; }
    DAGExec* inq_exec() const { return exec; }
    void set_exec(DAGExec* of_pass) { exec = of_pass; }

    /// Whether the pass leaves its results on the real nodes.
    bool inq_store_result() const;

    /// True if the pass is to stop.
    bool signal_exception(gsl::owner<KIVError*> error);

private:
    DAGOpNode* node;         // not owned
    DAGExec* exec = nullptr; // not owned
};

/// Takes what stands on a node's inputs and sets its outputs: from the leaves to the root.
class DAGOpBottomUp : public DAGOpBase {
public:
    using DAGOpBase::DAGOpBase;

    /// What stands on input channel `i`; null if nothing does.
    KIVObject* inq_input(int i) const;

    /// Takes `value` over; it is deleted if there is no such output channel.
    void set_output(int i, gsl::owner<KIVObject*> value);
};

/// Takes what stands on a node's outputs and sets its inputs: from the root to the leaves.
class DAGOpTopDown : public KIVObject {
public:
    explicit DAGOpTopDown(DAGOpNode* node = nullptr) : node(node) {}

    virtual void execute() = 0;

    DAGOpNode* inq_node() const { return node; }

    /// What stands on output channel `i`; null if nothing does.
    KIVObject* inq_output(int i) const;

    /// Takes `value` over; it is deleted if there is no such input channel.
    void set_input(int i, gsl::owner<KIVObject*> value);

private:
    DAGOpNode* node; // not owned
};

/// For a pass that every node must know: a node without the pass's operator fails it.
class DAGOpBottomUpDefault : public DAGOpBottomUp {
public:
    using DAGOpBottomUp::DAGOpBottomUp;

    void execute() override;
};
