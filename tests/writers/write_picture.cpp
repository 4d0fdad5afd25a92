#include "imagelib/hdr/KIVPixmap.h"
#include "imagelib/hdr/KIVPixmapWriter.h"
#include "imagelib/hdr/TiffCompression.h"
#include "kivlib/hdr/ClassManager.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
#include <vector>

// write_picture WRITER VARIANT WIDTH HEIGHT SAMPLES BITS PIXELS FILE [lzw]
// Writes the rows of the file PIXELS at 120 by 180 dots an inch. Ends with the writer's error.

namespace {
constexpr int NO_WRITER = 100;

std::unique_ptr<KIVPixmapWriter> make_writer(const char* name, int variant)
{
    const ClassDescriptor* found = ClassManager::inq_main()->find_cd_for(name);
    return std::unique_ptr<KIVPixmapWriter>(
        found ? static_cast<const KIVPixmapWriterDescriptor*>(found)->new_writer(variant)
              : nullptr);
}

std::vector<char> read(const char* path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}
} // namespace

int main(int argc, char* argv[])
{
    if (argc < 9)
        return NO_WRITER;
    if (argc > 9)
        set_tiff_compression(TiffCompression::LZW);
    const auto number = [argv](int i) { return std::atoi(argv[i]); };
    const std::unique_ptr<KIVPixmapWriter> writer = make_writer(argv[1], number(2));
    if (!writer)
        return NO_WRITER;
    std::vector<char> pixels = read(argv[7]);
    KIVPixmap pixmap(number(3), number(4), number(5), number(6),
                     reinterpret_cast<unsigned char*>(pixels.data()), false);
    pixmap.set_dpi(120.0, 1.5);
    writer->write_pixmap(argv[8], &pixmap);
    return writer->inq_error();
}
