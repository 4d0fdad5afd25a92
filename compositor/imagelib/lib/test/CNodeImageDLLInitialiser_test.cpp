#include "compositor/affine/lib/hdr/CNodeAffineTransformOp.h"
#include "compositor/imagelib/lib/hdr/CNodeImageDLLInitialiser.h"
#include "compositor/imagelib/lib/hdr/CNodeScreen.h"
#include "compositor/lib/hdr/CNodeGenericOpDescriptor.h"

#include <gtest/gtest.h>

namespace {

template <class Descriptor> Descriptor* find(const std::string& name)
{
    return static_cast<Descriptor*>(ClassManager::inq_main()->find_cd_for(name));
}

} // namespace

TEST(CNodeImageDLLInitialiser, keeps_the_record_of_all_screens_with_that_of_drawing_window_nodes)
{
    const auto* screens = find<ClassDescriptor>("CNodeScreenBase");
    ASSERT_TRUE(screens);
    EXPECT_EQ(screens->inq_reader(), nullptr);
    EXPECT_EQ(DWNode::inq_class_descriptor_s(), screens);
    EXPECT_EQ(CNodeScreenBase::inq_class_descriptor_s(), screens);
    EXPECT_TRUE(CNodeScreen().is_kind_of("DWNode"));
}

TEST(CNodeImageDLLInitialiser, lets_every_transform_carry_images)
{
    for (const std::string name :
         {"ShearTransform", "Transform", "Camera", "Translate", "NSTranslate", "EWTranslate",
          "Rotate", "Scale", "XScale", "YScale", "XYScale", "HorFlip", "VerFlip"}) {
        auto* generic = find<CNodeGenericOpDescriptor>("CNodeImage" + name + "Op");
        ASSERT_TRUE(generic) << name;
        EXPECT_EQ(generic->inq_base_name(), "CNodeGenericOp");
        EXPECT_EQ(generic->inq_data_type(), 100);
        const auto* of_node = find<CNodeDescriptor>("CNode" + name)->inq_generic_descriptors();
        EXPECT_TRUE(of_node && of_node->find(generic)) << name;
    }
    CNodeScreen node;
    const std::unique_ptr<CNodeOp> op(
        find<CNodeGenericOpDescriptor>("CNodeImageScaleOp")->inq_nodeop(&node));
    EXPECT_TRUE(op->inq_composite_through());
}
