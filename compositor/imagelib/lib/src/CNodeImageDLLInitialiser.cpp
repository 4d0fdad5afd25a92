#include "compositor/imagelib/lib/hdr/CNodeImageDLLInitialiser.h"

#include "compositor/affine/lib/hdr/CNodeAffineTransformOp.h"
#include "compositor/affine/lib/hdr/CNodeCameraRotate.h"
#include "compositor/affine/lib/hdr/CNodeCameraSize.h"
#include "compositor/affine/lib/hdr/CNodeCameraTranslate.h"
#include "compositor/imagelib/lib/hdr/CDataImage.h"
#include "compositor/imagelib/lib/hdr/CNodeRasterImage.h"
#include "compositor/imagelib/lib/hdr/CNodeRostrum.h"
#include "compositor/imagelib/lib/hdr/CNodeScreen.h"
#include "compositor/lib/hdr/CNodeGenericOpDescriptor.h"
#include "compositor/lib/hdr/DataType.h"

namespace {

const CNodeImageDLLInitialiser our_module;

constexpr NodeFamily OUTPUT = {.catagory = 1, .n_inputs = 1, .n_outputs = 1, .type = IMAGE_TYPE};
constexpr NodeFamily SOURCE = {.catagory = 30, .n_inputs = 0, .n_outputs = 1, .type = IMAGE_TYPE};
constexpr NodeFamily CAMERA = {.catagory = 10, .n_inputs = 1, .n_outputs = 1, .type = IMAGE_TYPE};

constexpr NodeRow OUTPUT_NODES[] = {node_row<CNodeRostrum>("Output", 94, Palette::HIDDEN)};
constexpr NodeRow IMAGE_NODES[] = {node_row<CNodeRasterImage>("BG/OL", 95)};
constexpr NodeRow SCREEN_NODES[] = {node_row<CNodeScreen>("Color Card", -1)};
constexpr NodeRow CAMERA_NODES[] = {
    node_row<CNodeCameraTranslate>("Camera Move", -1, Palette::HIDDEN),
    node_row<CNodeCameraRotate>("Camera Rotate", 95, Palette::HIDDEN),
    node_row<CNodeCameraSize>("Camera Size", 95, Palette::HIDDEN),
};

struct GenericRow {
    const char* class_name;
    const char* node_type;
};

// One op serves all transforms: the table is there so that another type of data is no more than
// another table.
constexpr GenericRow IMAGE_OPS[] = {
    {"CNodeImageShearTransformOp", "CNodeShearTransform"},
    {"CNodeImageTransformOp", "CNodeTransform"},
    {"CNodeImageCameraOp", "CNodeCamera"},
    {"CNodeImageTranslateOp", "CNodeTranslate"},
    {"CNodeImageNSTranslateOp", "CNodeNSTranslate"},
    {"CNodeImageEWTranslateOp", "CNodeEWTranslate"},
    {"CNodeImageRotateOp", "CNodeRotate"},
    {"CNodeImageScaleOp", "CNodeScale"},
    {"CNodeImageXScaleOp", "CNodeXScale"},
    {"CNodeImageYScaleOp", "CNodeYScale"},
    {"CNodeImageXYScaleOp", "CNodeXYScale"},
    {"CNodeImageHorFlipOp", "CNodeHorFlip"},
    {"CNodeImageVerFlipOp", "CNodeVerFlip"},
};

CNodeOp* new_transform_op(CNode* node)
{
    return new CNodeAffineTransformOp(node);
}

} // namespace

CNodeImageDLLInitialiser::CNodeImageDLLInitialiser()
{
    init();
    static_link_setup();
}

CNodeImageDLLInitialiser::CNodeImageDLLInitialiser(ClassManager* manager)
{
    init();
    setup(manager);
}

void CNodeImageDLLInitialiser::init()
{
    CDataImage::inq_desc_s();
    add_nodes(OUTPUT, OUTPUT_NODES);
    add_nodes(SOURCE, IMAGE_NODES);
    add_screen_base();
    add_nodes(SOURCE, SCREEN_NODES);
    add_nodes(CAMERA, CAMERA_NODES);
    init_generic();
}

// The record is kept as DWNode's, and reads as what any DWNode is.
void CNodeImageDLLInitialiser::add_screen_base()
{
    auto* own = new ClassDescriptor(CNodeScreenBase::inq_class_name_s(),
                                    CNodeScreenBase::inq_base_name_s(), nullptr, -1, nullptr);
    own->set_stored_type(&stored::type_of<DWNode>);
    add(own);
    ClassDescriptor* found =
        ClassManager::inq_main()->find_cd_for(CNodeScreenBase::inq_class_name_s());
    DWNode::set_class_descriptor_s(found ? found : own);
}

void CNodeImageDLLInitialiser::init_generic()
{
    for (const GenericRow& row : IMAGE_OPS)
        add(new CNodeGenericOpDescriptor(row.class_name, "CNodeGenericOp", nullptr, -1, nullptr,
                                         row.node_type, CDataImage::inq_type_s(),
                                         new_transform_op));
}
