#include "batch/hdr/BatchRenderSubmit.h"
#include "batch/hdr/BatchSceneInfo.h"
#include "coversheet/lib/hdr/KIVCamera.h"
#include "frontend/montaray_scene/verbs.h"
#include "kivlib/hdr/ModuleFolder.h"
#include "kivlib/hdr/file_operations.h"
#include "modules/farm/hdr/option_words.h"
#include "scene/hdr/KIVScene.h"

#include <iostream>

namespace {
constexpr char SUBMITTER[] = "FarmRenderSubmit";

/// Null, and the user has been told why, if there is none.
BatchRenderSubmit* find_submitter()
{
    KIVString fault;
    if (ModuleFolder::load_class(SUBMITTER, fault))
        return BatchRenderSubmit::inq_batch_render_submit();
    std::cerr << "montaray-scene: there is no module " << SUBMITTER << " in "
              << ModuleFolder::inq_path().str() << (fault.is_null() ? "" : ": ") << fault.str()
              << '\n';
    return nullptr;
}
} // namespace

int submit_render(const std::string& scene_folder, std::optional<std::pair<int, int>> frames,
                  const std::vector<std::string>& options)
{
    BatchRenderSubmit* const submitter = find_submitter();
    if (!submitter)
        return FAILED;
    const KIVString folder = inq_absolute_path(scene_folder);
    const KIVString working_directory = inq_working_directory();
    const std::unique_ptr<KIVScene> scene(KIVScene::load_from_file(folder, nullptr, false));
    if (!scene)
        return FAILED;
    kiv_chdir(working_directory); // paths among the options mean this one; loading has left it
    BatchSceneInfo info(folder, 1, scene->inq_scene_length());
    info.set_camera_aspect_ratio(scene->inq_camera()->inq_aspect_ratio());
    if (frames)
        info.set_selected_range(frames->first, frames->second);
    return submitter->submit_render_job(join_words(options), info) ? DONE : FAILED;
}
