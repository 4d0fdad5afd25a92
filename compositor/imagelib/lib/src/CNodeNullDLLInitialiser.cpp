#include "compositor/imagelib/lib/hdr/CNodeNullDLLInitialiser.h"

#include "compositor/imagelib/lib/hdr/CNodeGroup.h"
#include "compositor/imagelib/lib/hdr/CNodeNullTransform.h"
#include "compositor/imagelib/lib/hdr/CNodeUniversalMacro.h"
#include "compositor/imagelib/lib/hdr/CNodeUniversalReceiver.h"
#include "compositor/imagelib/lib/hdr/CNodeUniversalTransmitter.h"
#include "compositor/lib/hdr/DataType.h"

namespace {
constexpr NodeFamily PASSING = {
    .catagory = 0, .n_inputs = 1, .n_outputs = 1, .type = WILDCARD_TYPE};
constexpr NodeFamily MACRO = {.catagory = 0, .n_inputs = 0, .n_outputs = 0, .type = WILDCARD_TYPE};

constexpr NodeRow SINGLE_NODES[] = {
    node_row<CNodeNullTransform>("Null", 118),
    node_row<CNodeGroup>("Group", -1),
};
constexpr NodeRow MACRO_NODES[] = {node_row<CNodeUniversalMacro>("Macro", -1, Palette::HIDDEN)};
constexpr NodeRow PAIRED_NODES[] = {
    node_row<CNodeUniversalTransmitter>("Transmit", -1),
    node_row<CNodeUniversalReceiver>("Receive", -1),
};

const CNodeNullDLLInitialiser the_universal_nodes;
} // namespace

CNodeNullDLLInitialiser::CNodeNullDLLInitialiser()
{
    init();
    static_link_setup();
}

CNodeNullDLLInitialiser::CNodeNullDLLInitialiser(ClassManager* manager)
{
    init();
    setup(manager);
}

void CNodeNullDLLInitialiser::init()
{
    add_nodes(PASSING, SINGLE_NODES);
    add_nodes(MACRO, MACRO_NODES);
    add_nodes(PASSING, PAIRED_NODES);
}
