#include "batch/hdr/BatchRenderSubmit.h"
#include "batch/hdr/BatchRenderSubmitDescriptor.h"
#include "batch/hdr/BatchSceneInfo.h"
#include "tests/support/Captured.h"
#include "tests/support/OldRecord.h"

#include <gtest/gtest.h>

namespace {
class Submitter : public BatchRenderSubmit {
public:
    Submitter() { ++our_count; }

    inline static int our_count = 0;
};

constexpr char NAME[] = "SubmitTestModule";

BatchRenderSubmitDescriptor* new_descriptor(ClassManager* manager)
{
    return new BatchRenderSubmitDescriptor(NAME, "BatchRenderSubmit", nullptr, -1, manager,
                                           []() -> BatchRenderSubmit* { return new Submitter; });
}
} // namespace

TEST(BatchRenderSubmit, is_made_once_when_a_module_offers_one)
{
    const Captured captured;
    EXPECT_EQ(BatchRenderSubmit::inq_batch_render_submit(), nullptr);
    EXPECT_EQ(captured.inq_errors(), "");

    const std::unique_ptr<BatchRenderSubmitDescriptor> written(new_descriptor(nullptr));
    stored_and_read(*written).release()->did_load(); // from a file, and without its module
    EXPECT_EQ(BatchRenderSubmit::inq_batch_render_submit(), nullptr);
    EXPECT_EQ(captured.inq_errors(),
              "batch/src/BatchRenderSubmitDescriptor, line 147: Can not make new "
              "BatchRenderSubmit (null function): SubmitTestModule.\n");

    const std::unique_ptr<BatchRenderSubmitDescriptor> module(
        new_descriptor(ClassManager::inq_main())); // which comes
    BatchRenderSubmit* submitter = BatchRenderSubmit::inq_batch_render_submit();
    ASSERT_NE(submitter, nullptr);
    EXPECT_EQ(BatchRenderSubmit::inq_batch_render_submit(), submitter);
    EXPECT_EQ(Submitter::our_count, 1);

    EXPECT_FALSE(submitter->submit_render_job("", BatchSceneInfo("", 1, 1)));
    EXPECT_TRUE(captured.inq_errors().ends_with(
        "BatchRenderSubmit::submit_render_job called on base-class\n"));
    EXPECT_EQ(BatchRenderSubmit::inq_read_constructor(), nullptr);
}
