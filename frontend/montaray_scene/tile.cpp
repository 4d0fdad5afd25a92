#include "frontend/montaray_scene/verbs.h"
#include "imagelib/hdr/make_tiled_image.h"
#include "kivlib/hdr/in_one_line.h"

#include <iostream>

int tile_image(const std::string& image, const std::string& tiled_image)
{
    KIVString error;
    if (make_tiled_image(image, tiled_image, error))
        return DONE;
    std::cerr << "montaray-scene: " << in_one_line(error).str() << '\n';
    return FAILED;
}
