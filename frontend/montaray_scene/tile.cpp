#include "frontend/CMontaray/StopSignal.h"
#include "frontend/CMontaray/exit_codes.h"
#include "frontend/montaray_scene/verbs.h"
#include "imagelib/hdr/UnfinishedFile.h"
#include "imagelib/hdr/make_tiled_image.h"
#include "kivlib/hdr/in_one_line.h"

#include <filesystem>
#include <iostream>

int tile_image(const std::string& image, const std::string& tiled_image)
{
    StopSignal::watch();
    StopSignal stop;
    remove_abandoned_files((std::filesystem::path(tiled_image).parent_path() / ".").string());
    KIVString error;
    if (make_tiled_image(image, tiled_image, error, &stop))
        return DONE;
    if (StopSignal::inq_signal() != 0)
        return SIGNAL_BASE + StopSignal::inq_signal();
    std::cerr << "montaray-scene: " << in_one_line(error).str() << '\n';
    return FAILED;
}
