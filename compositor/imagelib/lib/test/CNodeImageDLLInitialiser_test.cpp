#include "compositor/imagelib/lib/hdr/CNodeImageDLLInitialiser.h"
#include "compositor/imagelib/lib/hdr/CNodeScreen.h"
#include "kivlib/hdr/ClassManager.h"

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
