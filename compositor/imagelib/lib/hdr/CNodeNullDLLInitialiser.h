#pragma once

#include "compositor/lib/hdr/NodeClass.h"

/// Registers the nodes that take any data.
class CNodeNullDLLInitialiser : public NodeInitialiser {
public:
    CNodeNullDLLInitialiser();
    explicit CNodeNullDLLInitialiser(ClassManager* manager);

private:
    void init();
};
