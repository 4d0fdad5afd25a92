#pragma once

#include "compositor/lib/hdr/CNodeOp.h"

/// Hands its first input on unchanged, whatever the type of the data.
class CNodeNullOp : public CNodeOp {
public:
    using CNodeOp::CNodeOp;

    bool inq_composite_through() override { return true; }
    bool inq_interactive() override { return true; }
};
