#include "batch/hdr/BatchRenderSubmit.h"

#include "batch/hdr/BatchRenderSubmitDescriptor.h"
#include "batchapi/hdr/BatchManager.h"
#include "kivlib/hdr/ConsoleOStream.h"

KIV_STORED_CLASS(BatchRenderSubmit, -1);

namespace {
/// Whether it is the record of a class of submitters.
bool is_of_submitter(const ClassDescriptor& descriptor)
{
    const ClassDescriptor* its_class = descriptor.inq_class_descriptor();
    return its_class && its_class->is_subclass_of("BatchRenderSubmitDescriptor");
}
} // namespace

BatchRenderSubmit* BatchRenderSubmit::inq_batch_render_submit()
{
    if (our_batch_render_submit)
        return our_batch_render_submit;
    const std::unique_ptr<ClassDescriptorIterator> records(
        ClassManager::inq_main()->new_iterator());
    while (records->is_valid() && !is_of_submitter(*records->inq_current()))
        records->advance();
    if (records->is_valid())
        our_batch_render_submit =
            static_cast<const BatchRenderSubmitDescriptor*>(records->inq_current())
                ->new_batchrendersubmit();
    return our_batch_render_submit;
}

bool BatchRenderSubmit::submit_render_job(const KIVString&, const BatchSceneInfo&)
{
    *cerrp << "BatchRenderSubmit::submit_render_job called on base-class\n";
    return false;
}

BatchManager* BatchRenderSubmit::inq_batch_manager()
{
    return BatchManager::inq_batch_manager();
}
