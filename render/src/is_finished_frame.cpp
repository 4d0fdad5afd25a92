#include "render/hdr/is_finished_frame.h"

#include "imagelib/hdr/KIVPixmap.h"
#include "imagelib/hdr/PixmapReader.h"
#include "kivlib/hdr/PCharArray.h"

#include <filesystem>

namespace {
bool is_readable_format(const std::string& extension)
{
    const PCharArray readable = inq_pixmap_readable_file_exts();
    for (int i = 0; i < readable.size(); ++i)
        if (extension == std::string(".") + readable.inq_element(i))
            return true;
    return false;
}
} // namespace

bool is_finished_frame(const KIVString& file, int width, int height)
{
    const std::filesystem::path path(file.str());
    std::error_code failure;
    if (!std::filesystem::is_regular_file(path, failure) ||
        std::filesystem::file_size(path, failure) == 0 || failure)
        return false;
    if (!is_readable_format(path.extension().string()))
        return true;
    constexpr int BITS = 8;
    KIVString error;
    const std::unique_ptr<KIVPixmap> frame(new_pixmap_from_file(file, BITS, error));
    return frame && frame->inq_width() == width && frame->inq_height() == height;
}
