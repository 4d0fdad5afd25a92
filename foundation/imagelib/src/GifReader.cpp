#include "imagelib/src/PictureReader.h"

#include <gif_lib.h>

namespace {
/// The parts of a screen that its picture leaves open cost the file nothing.
constexpr std::uint64_t LARGEST_SCREEN = 1 << 26;

constexpr RowLayout LAYOUT = {4, 8, Alpha::STRAIGHT};

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
    std::uint64_t inq_most_pixels(std::uint64_t file_bytes) const override
    {
        return std::min(LARGEST_SCREEN, MOST_BY_LZW * file_bytes);
    }
    bool is_from_top() const override { return !gif->Image.Interlace; }
    bool read_pixels(RowTarget& target) override;

private:
    bool find_picture();
    bool read_extension();
    bool read_to_end();
    bool fail_with_code(int code);
    bool put_line(RowTarget& target, const ColorMapObject& colours, int line);
    bool put_margin(RowTarget& target, int first, int end);
    static int read(GifFileType* gif, GifByteType* to, int count);

    Bytes file;
    std::size_t position = 0;
    GifFileType* gif = nullptr;
    int transparent = NO_TRANSPARENT_COLOR;
    int screen_width = 0;
    int screen_height = 0;
    std::vector<GifPixelType> line_pixels;
    std::vector<unsigned char> row; // of the screen
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

bool GifReader::put_line(RowTarget& target, const ColorMapObject& colours, int line)
{
    if (DGifGetLine(gif, line_pixels.data(), gif->Image.Width) == GIF_ERROR)
        return fail_with_code(gif->Error);
    unsigned char* to = row.data() + 4 * static_cast<std::size_t>(gif->Image.Left);
    for (const GifPixelType pixel : line_pixels) {
        if (pixel >= colours.ColorCount)
            return fail("the GIF file has a pixel without a colour");
        const GifColorType& colour = colours.Colors[pixel];
        *to++ = colour.Red;
        *to++ = colour.Green;
        *to++ = colour.Blue;
        *to++ = pixel == transparent ? 0 : 0xFF;
    }
    return target.put_row(gif->Image.Top + line, row.data(), LAYOUT) || fail_by_target();
}

/// Rows of the screen that the picture leaves open; the row is still empty, or is made so.
bool GifReader::put_margin(RowTarget& target, int first, int end)
{
    std::ranges::fill(row, 0);
    for (int y = first; y < end; ++y)
        if (!target.put_row(y, row.data(), LAYOUT))
            return fail_by_target();
    return true;
}

/// Of the pictures that follow only their being there counts: a file that lacks its end is cut.
bool GifReader::read_to_end()
{
    for (;;) {
        GifRecordType type = UNDEFINED_RECORD_TYPE;
        if (DGifGetRecordType(gif, &type) == GIF_ERROR)
            return fail_with_code(gif->Error);
        if (type == TERMINATE_RECORD_TYPE)
            return true;
        if (type == EXTENSION_RECORD_TYPE) {
            if (!read_extension())
                return false;
            continue;
        }
        int code_size = 0;
        GifByteType* block = nullptr;
        int result = DGifGetImageDesc(gif);
        if (result == GIF_OK)
            result = DGifGetCode(gif, &code_size, &block);
        while (result == GIF_OK && block)
            result = DGifGetCodeNext(gif, &block);
        if (result != GIF_OK)
            return fail_with_code(gif->Error);
    }
}

bool GifReader::read_pixels(RowTarget& target)
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
    line_pixels.resize(static_cast<std::size_t>(gif->Image.Width));
    row.resize(4 * static_cast<std::size_t>(screen_width));
    if (!put_margin(target, 0, gif->Image.Top))
        return false;
    const std::span<const Pass> passes =
        gif->Image.Interlace ? std::span<const Pass>(INTERLACED) : std::span<const Pass>(PLAIN);
    for (const Pass& pass : passes)
        for (int line = pass.first; line < gif->Image.Height; line += pass.step)
            if (!put_line(target, *colours, line))
                return false;
    return put_margin(target, gif->Image.Top + gif->Image.Height, screen_height) && read_to_end();
}
} // namespace

std::unique_ptr<PictureReader> make_gif_reader(Bytes file)
{
    if (file.size() < 6 || std::memcmp(file.data(), "GIF8", 4) != 0)
        return nullptr;
    return std::make_unique<GifReader>(file);
}
