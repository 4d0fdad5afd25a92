#include "compositor/affine/lib/hdr/CNodeAffineTransformOp.h"
#include "compositor/imagelib/lib/hdr/CNodeImageDLLInitialiser.h"
#include "compositor/imagelib/lib/hdr/CNodeScreen.h"
#include "compositor/lib/hdr/CNodeGenericOpDescriptor.h"

#include <gtest/gtest.h>

namespace {

template <class Descriptor> Descriptor* find(const char* name)
{
    return static_cast<Descriptor*>(ClassManager::inq_main()->find_cd_for(name));
}

std::string tell(const char* name)
{
    const CNodeDescriptor& d = *find<CNodeDescriptor>(name);
    std::string text = d.inq_base_name().str() + " \"" + d.inq_user_type_name().str() + "\"";
    for (const int number : {d.inq_version(), d.inq_catagory_type(), int(d.inq_is_hidden()),
                             d.inq_n_inputs(), d.inq_n_outputs(), d.inq_output_type(0)})
        text += " " + std::to_string(number);
    return text;
}

} // namespace

TEST(CNodeImageDLLInitialiser, registers_the_image_nodes)
{
    EXPECT_EQ(tell("CNodeRostrum"), "DWNode \"Output\" 94 1 1 1 1 100");
    EXPECT_EQ(tell("CNodeRasterImage"), "DWNode \"BG/OL\" 95 30 0 0 1 100");
    EXPECT_EQ(tell("CNodeScreen"), "CNodeScreenBase \"Color Card\" -1 30 0 0 1 100");
    EXPECT_EQ(tell("CNodeCameraTranslate"), "CNodeTranslate \"Camera Move\" -1 10 1 1 1 100");
    EXPECT_EQ(tell("CNodeCameraRotate"), "CNodeAffineTransform \"Camera Rotate\" 95 10 1 1 1 100");
    EXPECT_EQ(tell("CNodeCameraSize"), "CNodeAffineTransform \"Camera Size\" 95 10 1 1 1 100");
}

TEST(CNodeImageDLLInitialiser, keeps_the_record_of_all_screens_with_that_of_drawing_window_nodes)
{
    const auto* screens = find<ClassDescriptor>("CNodeScreenBase");
    ASSERT_TRUE(screens);
    EXPECT_EQ(screens->inq_base_name(), "DWNode");
    EXPECT_EQ(screens->inq_reader(), nullptr);
    EXPECT_EQ(DWNode::inq_class_descriptor_s(), screens);
    EXPECT_EQ(CNodeScreenBase::inq_class_descriptor_s(), screens);
    EXPECT_TRUE(CNodeScreen().is_kind_of("DWNode"));
}

TEST(CNodeImageDLLInitialiser, lets_every_transform_carry_images)
{
    const std::pair<const char*, const char*> pairs[] = {
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
    for (const auto& [name, node_type] : pairs) {
        auto* generic = find<CNodeGenericOpDescriptor>(name);
        ASSERT_TRUE(generic) << name;
        EXPECT_EQ(generic->inq_base_name(), "CNodeGenericOp");
        EXPECT_EQ(generic->inq_node_type(), node_type);
        EXPECT_EQ(generic->inq_data_type(), 100);
        const KIVLinkedList* of_node = find<CNodeDescriptor>(node_type)->inq_generic_descriptors();
        ASSERT_TRUE(of_node) << node_type;
        EXPECT_TRUE(of_node->find(generic));
    }
    CNodeScreen node;
    const std::unique_ptr<CNodeOp> op(
        find<CNodeGenericOpDescriptor>("CNodeImageScaleOp")->inq_nodeop(&node));
    EXPECT_TRUE(op->inq_composite_through());
}
