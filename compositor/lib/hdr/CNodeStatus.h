#pragma once

#include "kivlib/hdr/KIVError.h"

/// What the evaluation is doing, for the console: starting, or rendering one node.
class CNodeStatus : public KIVError {
public:
    CNodeStatus() : KIVError(FAMILY, CODE) {}
    explicit CNodeStatus(const KIVString& node_name)
        : KIVError(FAMILY, CODE), has_node(true), node_name(node_name)
    {}

    gsl::owner<KIVObject*> clone() const override { return new CNodeStatus(*this); }
    KIVString inq_description() const override;

    bool inq_has_node() const { return has_node; }
    const KIVString& inq_node_name() const { return node_name; }

private:
    static constexpr int FAMILY = 32;
    static constexpr int CODE = 400;

    bool has_node = false;
    KIVString node_name;
};
