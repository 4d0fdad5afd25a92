#include "frontend/CMontaray/StopSignal.h"
#include "frontend/CMontaray/exit_codes.h"
#include "frontend/montaray_scene/verbs.h"
#include "imagelib/hdr/UnfinishedFile.h"
#include "imagelib/hdr/make_tiled_image.h"
#include "kivlib/hdr/in_one_line.h"

#include <filesystem>
#include <iostream>

namespace {
/// It is replaced as a whole, so it must not be the image, a device or the like.
bool may_be_replaced(const std::filesystem::path& file, const std::filesystem::path& image)
{
    using std::filesystem::file_type;
    std::error_code failure;
    const file_type type = std::filesystem::status(file, failure).type();
    if (type == file_type::regular)
        return !std::filesystem::equivalent(file, image, failure);
    return type == file_type::not_found || type == file_type::none; // which the write explains
}
} // namespace

int tile_image(const std::string& image, const std::string& tiled_image)
{
    if (!may_be_replaced(tiled_image, image)) {
        std::cerr << "montaray-scene: " << in_one_line(tiled_image).str()
                  << " is the image itself, or no file\n";
        return FAILED;
    }
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
