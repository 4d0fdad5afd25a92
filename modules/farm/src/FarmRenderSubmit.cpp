#include "modules/farm/hdr/FarmRenderSubmit.h"

#include "batch/hdr/BatchSceneInfo.h"
#include "batchapi/hdr/BatchManager.h"
#include "kivlib/hdr/ConsoleOStream.h"
#include "modules/farm/hdr/FarmStatus.h"
#include "modules/farm/hdr/Submission.h"

bool FarmRenderSubmit::submit_render_job(const KIVString& options, const BatchSceneInfo& info)
{
    try {
        const RenderWords words = RenderWords::read(options.str(), info.inq_camera_aspect_ratio());
        Submission submission(with_engine(*inq_batch_manager()), FarmPrograms::find());
        *coutp << submission.submit(words, info);
        return true;
    } catch (const std::exception& exception) {
        *cerrp << "The render job was not submitted. " << exception.what() << "\n";
        return false;
    }
}
