#include "imagelib/hdr/KIVPixmap.h"
#include "imagelib/src/PictureReader.h"

#include <csetjmp>
#include <cstdio>
#include <cstdlib>
// after <cstdio>, which it needs
#include <jerror.h>
#include <jpeglib.h>

namespace {
constexpr double CENTIMETRES_PER_INCH = 2.54;
constexpr int PROFILE_MARKER = JPEG_APP0 + 2;
constexpr unsigned LONGEST_MARKER = 0xFFFF;

/// As with PNG, errors jump into the step that called the library.
class JpegReader : public PictureReader {
public:
    explicit JpegReader(Bytes file) : file(file)
    {
        state.err = jpeg_std_error(&errors);
        errors.error_exit = take_error;
        errors.emit_message = take_message;
        state.client_data = this;
    }
    ~JpegReader() override { jpeg_destroy_decompress(&state); }

    bool read_head(PictureInfo& info) override { return prepare_head(info) || fail(message); }
    bool read_pixels(KIVPixmap& picture) override;

private:
    bool prepare_head(PictureInfo& info);
    bool read_rows(KIVPixmap& picture);
    void note_resolution(PictureInfo& info) const;
    void note_profile(PictureInfo& info);
    void turn_inks_to_colours(int width);

    static void take_error(j_common_ptr common);
    static void take_message(j_common_ptr common, int level);

    Bytes file;
    jpeg_decompress_struct state = {};
    jpeg_error_mgr errors = {};
    std::jmp_buf jump;
    std::vector<unsigned char> row;
    char message[JMSG_LENGTH_MAX] = "";
};

void JpegReader::take_error(j_common_ptr common)
{
    auto* reader = static_cast<JpegReader*>(common->client_data);
    common->err->format_message(common, reader->message);
    std::longjmp(reader->jump, 1);
}

/// What the library would patch up in silence is an error where pixels are missing.
void JpegReader::take_message(j_common_ptr common, int level)
{
    const int code = common->err->msg_code;
    if (level < 0 &&
        (code == JWRN_JPEG_EOF || code == JWRN_HIT_MARKER || code == JWRN_HUFF_BAD_CODE))
        take_error(common);
}

bool JpegReader::prepare_head(PictureInfo& info)
{
    if (setjmp(jump))
        return false;
    jpeg_create_decompress(&state);
    jpeg_mem_src(&state, file.data(), file.size());
    jpeg_save_markers(&state, PROFILE_MARKER, LONGEST_MARKER);
    jpeg_read_header(&state, TRUE);
    info.width = static_cast<int>(state.image_width);
    info.height = static_cast<int>(state.image_height);
    note_resolution(info);
    note_profile(info);
    return true;
}

void JpegReader::note_resolution(PictureInfo& info) const
{
    constexpr int PER_INCH = 1;
    constexpr int PER_CENTIMETRE = 2;
    if (state.density_unit != PER_INCH && state.density_unit != PER_CENTIMETRE)
        return;
    const double factor = state.density_unit == PER_INCH ? 1.0 : CENTIMETRES_PER_INCH;
    info.x_dpi = state.X_density * factor;
    info.y_dpi = state.Y_density * factor;
}

void JpegReader::note_profile(PictureInfo& info)
{
    JOCTET* data = nullptr;
    unsigned bytes = 0;
    if (!jpeg_read_icc_profile(&state, &data, &bytes))
        return;
    const std::unique_ptr<JOCTET, decltype(&std::free)> owned(data, std::free);
    info.profile.assign(data, data + bytes);
}

bool JpegReader::read_pixels(KIVPixmap& picture)
{
    row.resize(static_cast<std::size_t>(picture.inq_width()) * 4);
    return read_rows(picture) || fail(message);
}

/// The files that hold inks hold them inverted: the more, the lighter.
void JpegReader::turn_inks_to_colours(int width)
{
    unsigned char* to = row.data();
    const unsigned char* from = row.data();
    for (int x = 0; x < width; ++x, to += 3, from += 4) {
        const unsigned black = from[3];
        for (int c = 0; c < 3; ++c)
            to[c] = static_cast<unsigned char>(from[c] * black / 0xFF);
    }
}

bool JpegReader::read_rows(KIVPixmap& picture)
{
    if (setjmp(jump))
        return false;
    const bool has_inks = state.jpeg_color_space == JCS_CMYK || state.jpeg_color_space == JCS_YCCK;
    const bool is_grey = state.jpeg_color_space == JCS_GRAYSCALE;
    state.out_color_space = has_inks ? JCS_CMYK : is_grey ? JCS_GRAYSCALE : JCS_RGB;
    jpeg_start_decompress(&state);
    for (int y = 0; y < picture.inq_height(); ++y) {
        JSAMPROW to = row.data();
        jpeg_read_scanlines(&state, &to, 1);
        if (has_inks)
            turn_inks_to_colours(picture.inq_width());
        put_pixels(picture, 0, y, row.data(), picture.inq_width(),
                   {is_grey ? 1 : 3, 8, Alpha::NONE});
    }
    jpeg_finish_decompress(&state);
    return true;
}
} // namespace

std::unique_ptr<PictureReader> make_jpeg_reader(Bytes file)
{
    if (file.size() < 3 || file[0] != 0xFF || file[1] != 0xD8 || file[2] != 0xFF)
        return nullptr;
    return std::make_unique<JpegReader>(file);
}
