#include "imagelib/hdr/KIVPixmap.h"
#include "imagelib/src/PictureReader.h"

#include <gif_lib.h>

namespace {
/// The first picture of a GIF file, at its place on the file's screen.
class GifReader : public PictureReader {
public:
    explicit GifReader(Bytes file) : file(file) {}
    ~GifReader() override
    {
        if (gif)
            DGifCloseFile(gif, nullptr);
    }

    bool read_head(PictureInfo& info) override;
    bool read_pixels(KIVPixmap& picture) override;

private:
    bool find_picture();
    bool read_extension();
    bool fail_with_code(int code);
    bool put_line(KIVPixmap& picture, const ColorMapObject& colours, int line);
    static int read(GifFileType* gif, GifByteType* to, int count);

    Bytes file;
    std::size_t position = 0;
    GifFileType* gif = nullptr;
    int transparent = NO_TRANSPARENT_COLOR;
    int screen_width = 0;
    int screen_height = 0;
    std::vector<GifPixelType> line_pixels;
    std::vector<unsigned char> line_colours;
};

int GifReader::read(GifFileType* gif, GifByteType* to, int count)
{
    auto* reader = static_cast<GifReader*>(gif->UserData);
    const std::size_t n =
        std::min(static_cast<std::size_t>(count), reader->file.size() - reader->position);
    std::memcpy(to, reader->file.data() + reader->position, n);
    reader->position += n;
    return static_cast<int>(n);
}

bool GifReader::fail_with_code(int code)
{
    const char* text = GifErrorString(code);
    return fail(text ? text : "damaged GIF file");
}

bool GifReader::read_head(PictureInfo& info)
{
    int code = 0;
    gif = DGifOpen(this, read, &code);
    if (!gif)
        return fail_with_code(code);
    if (!find_picture())
        return false;
    // some files have no screen, or one that the picture juts out of
    screen_width = std::max(gif->SWidth, gif->Image.Left + gif->Image.Width);
    screen_height = std::max(gif->SHeight, gif->Image.Top + gif->Image.Height);
    info.width = screen_width;
    info.height = screen_height;
    return true;
}

bool GifReader::find_picture()
{
    for (;;) {
        GifRecordType type = UNDEFINED_RECORD_TYPE;
        if (DGifGetRecordType(gif, &type) == GIF_ERROR)
            return fail_with_code(gif->Error);
        if (type == IMAGE_DESC_RECORD_TYPE)
            return DGifGetImageDesc(gif) == GIF_OK || fail_with_code(gif->Error);
        if (type != EXTENSION_RECORD_TYPE)
            return fail("the GIF file has no picture");
        if (!read_extension())
            return false;
    }
}

bool GifReader::read_extension()
{
    int code = 0;
    GifByteType* block = nullptr;
    int result = DGifGetExtension(gif, &code, &block);
    while (result == GIF_OK && block) {
        GraphicsControlBlock control;
        if (code == GRAPHICS_EXT_FUNC_CODE &&
            DGifExtensionToGCB(block[0], block + 1, &control) == GIF_OK)
            transparent = control.TransparentColor;
        result = DGifGetExtensionNext(gif, &block);
    }
    return result == GIF_OK || fail_with_code(gif->Error);
}

bool GifReader::put_line(KIVPixmap& picture, const ColorMapObject& colours, int line)
{
    const int width = gif->Image.Width;
    if (DGifGetLine(gif, line_pixels.data(), width) == GIF_ERROR)
        return fail_with_code(gif->Error);
    unsigned char* to = line_colours.data();
    for (const GifPixelType pixel : line_pixels) {
        if (pixel >= colours.ColorCount)
            return fail("the GIF file has a pixel without a colour");
        const GifColorType& colour = colours.Colors[pixel];
        *to++ = colour.Red;
        *to++ = colour.Green;
        *to++ = colour.Blue;
        *to++ = pixel == transparent ? 0 : 0xFF;
    }
    put_pixels(picture, gif->Image.Left, gif->Image.Top + line, line_colours.data(), width,
               {4, 8, Alpha::STRAIGHT});
    return true;
}

bool GifReader::read_pixels(KIVPixmap& picture)
{
    struct Pass {
        int first;
        int step;
    };
    constexpr Pass INTERLACED[] = {{0, 8}, {4, 8}, {2, 4}, {1, 2}};
    constexpr Pass PLAIN[] = {{0, 1}};
    const ColorMapObject* colours = gif->Image.ColorMap ? gif->Image.ColorMap : gif->SColorMap;
    if (!colours || gif->Image.Width <= 0)
        return fail("the GIF file has no colours");
    if (gif->Image.Width < screen_width || gif->Image.Height < screen_height)
        picture.clear();
    line_pixels.resize(static_cast<std::size_t>(gif->Image.Width));
    line_colours.resize(4 * line_pixels.size());
    const std::span<const Pass> passes =
        gif->Image.Interlace ? std::span<const Pass>(INTERLACED) : std::span<const Pass>(PLAIN);
    for (const Pass& pass : passes)
        for (int line = pass.first; line < gif->Image.Height; line += pass.step)
            if (!put_line(picture, *colours, line))
                return false;
    return true;
}
} // namespace

std::unique_ptr<PictureReader> make_gif_reader(Bytes file)
{
    if (file.size() < 6 || std::memcmp(file.data(), "GIF8", 4) != 0)
        return nullptr;
    return std::make_unique<GifReader>(file);
}
