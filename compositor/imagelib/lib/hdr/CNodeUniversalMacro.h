#pragma once

#include "compositor/lib/hdr/NodeClass.h"
#include "xsheet/node/hdr/DWNode.h"

/// Stands for a set of nodes. It has no channels, so no data pass through it.
class CNodeUniversalMacro : public DWNode {
    KIV_NODE(CNodeUniversalMacro, DWNode);

public:
    CNodeUniversalMacro();
    explicit CNodeUniversalMacro(KIVIStream& stream);

    /// Stands for the same nodes.
    CNodeUniversalMacro(const CNodeUniversalMacro& other) = default;

    /// Of the constituents those are stored that the file holds as well.
    void storer(KIVOStream& stream) override;
    gsl::owner<CNodeOp*> new_nodeop(int type) override;
    bool inq_is_universal() const override { return true; }

    /// `CNode`s, which belong to the graph.
    KIVLinkedList* inq_constituent_nodes() { return &constituent_nodes; }
    const KIVLinkedList* inq_constituent_nodes() const { return &constituent_nodes; }

    /// Unless it is there already.
    void add_node(CNode* node);
    void remove_node(const CNode* node);

private:
    /// Macros may hold macros in a chain as long as the scene is large.
    class Constituents : public KIVLinkedList {
    public:
        void storer(KIVOStream& stream) override;
    };

    template <class Record> void record(Record& r);

    Constituents constituent_nodes;
};
