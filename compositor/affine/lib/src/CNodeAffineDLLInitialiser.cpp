#include "compositor/affine/lib/hdr/CNodeAffineDLLInitialiser.h"

#include "compositor/affine/lib/hdr/CNodeCamera.h"
#include "compositor/affine/lib/hdr/CNodeEWTranslate.h"
#include "compositor/affine/lib/hdr/CNodeHorFlip.h"
#include "compositor/affine/lib/hdr/CNodeNSTranslate.h"
#include "compositor/affine/lib/hdr/CNodeRotate.h"
#include "compositor/affine/lib/hdr/CNodeScale.h"
#include "compositor/affine/lib/hdr/CNodeShearTransform.h"
#include "compositor/affine/lib/hdr/CNodeTransform.h"
#include "compositor/affine/lib/hdr/CNodeVerFlip.h"
#include "compositor/affine/lib/hdr/CNodeXScale.h"
#include "compositor/affine/lib/hdr/CNodeXYScale.h"
#include "compositor/affine/lib/hdr/CNodeYScale.h"
#include "compositor/lib/hdr/DataType.h"

namespace {
constexpr NodeFamily AFFINE = {
    .catagory = 10, .n_inputs = 1, .n_outputs = 1, .type = SECOND_WILDCARD_TYPE};

constexpr NodeRow AFFINE_NODES[] = {
    node_row<CNodeTransform>("Transform", -1),
    node_row<CNodeCamera>("Camera", 95),
    node_row<CNodeTranslate>("Move", 95),
    node_row<CNodeNSTranslate>("N/S Move", -1),
    node_row<CNodeEWTranslate>("E/W Move", -1),
    node_row<CNodeRotate>("Rotate", 95),
    node_row<CNodeScale>("Scale", 95),
    node_row<CNodeXScale>("XScale", -1),
    node_row<CNodeYScale>("YScale", -1),
    node_row<CNodeXYScale>("XYScale", -1),
    node_row<CNodeHorFlip>("E/W Flip", -1),
    node_row<CNodeVerFlip>("N/S Flip", -1),
    node_row<CNodeShearTransform>("Shear Transform", -1),
};

const CNodeAffineDLLInitialiser the_affine_nodes;
} // namespace

CNodeAffineDLLInitialiser::CNodeAffineDLLInitialiser()
{
    init();
    static_link_setup();
}

CNodeAffineDLLInitialiser::CNodeAffineDLLInitialiser(ClassManager* manager)
{
    init();
    setup(manager);
}

void CNodeAffineDLLInitialiser::init()
{
    add_nodes(AFFINE, AFFINE_NODES);
}
