#pragma once

#include "compositor/lib/hdr/NodeClass.h"
#include "xsheet/node/hdr/DWNode.h"

class NumericSubColumn;

/// Which values become black and white, how those between are bent, and what black and white then
/// become. All are shares of full white.
struct Levels {
    double in_black = 0.0;
    double in_white = 1.0;
    double gamma = 1.0; // above 1 the middle grows lighter
    double out_black = 0.0;
    double out_white = 1.0;

    /// Of a value from 0 to 1.
    double apply(double value) const;
    bool operator==(const Levels&) const = default;
};

/// Changes the contrast of colours. Alpha stays, and colours count as they are without it.
class CNodeLevels : public DWNode {
    KIV_NODE(CNodeLevels, DWNode);

public:
    enum Value { IN_BLACK = 1, IN_WHITE, GAMMA, OUT_BLACK, OUT_WHITE };

    CNodeLevels();
    explicit CNodeLevels(KIVIStream& stream) : DWNode(stream) {}

    gsl::owner<CNodeOp*> new_nodeop(int type) override;
    bool inq_is_affine() const override { return false; }

    NumericSubColumn* inq_value_subcolumn(Value value) const;
    Levels inq_levels(int frame) const;
};
