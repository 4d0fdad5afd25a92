#include "imagelib/src/PictureReader.h"
#include "imagelib/src/orientation.h"
#include "kivlib/hdr/units.h"

#include <csetjmp>
#include <cstdio>
#include <cstdlib>
// after <cstdio>, which it needs
#include <jerror.h>
#include <jpeglib.h>

namespace {
constexpr int EXIF_MARKER = JPEG_APP0 + 1;
constexpr unsigned LARGEST_MARKER = 0xFFFF;
constexpr long MOST_MEMORY = 1L << 29; // of the library, for a picture told in several scans
constexpr int MOST_SCANS = 256;        // few files have a dozen
constexpr double MOST_WORK = 16.0e9;   // pixels in all scans together; takes seconds
constexpr int PROFILE_MARKER = JPEG_APP0 + 2;

/// As with PNG, errors jump into the step that called the library.
class JpegReader : public PictureReader {
public:
    explicit JpegReader(Bytes file) : file(file)
    {
        state.err = jpeg_std_error(&errors);
        errors.error_exit = take_error;
        errors.emit_message = take_message;
        state.client_data = this;
        progress.progress_monitor = count_scans;
    }
    ~JpegReader() override { jpeg_destroy_decompress(&state); }

    bool read_head(PictureInfo& info) override { return prepare_head(info) || fail(message); }
    std::uint64_t inq_most_pixels(std::uint64_t file_bytes) const override
    {
        constexpr std::uint64_t MOST_PER_BYTE = 512; // a block of 8 by 8 takes a bit at least
        return MOST_PER_BYTE * file_bytes;
    }
    bool read_pixels(RowTarget& target) override;

private:
    bool prepare_head(PictureInfo& info);
    bool read_rows(RowTarget& target);
    void note_resolution(PictureInfo& info) const;
    void note_orientation();
    void turn_inks_to_colours();
    void note_profile(PictureInfo& info);

    static void take_error(j_common_ptr common);
    static void take_message(j_common_ptr common, int level);
    static void count_scans(j_common_ptr common);

    Bytes file;
    jpeg_decompress_struct state = {};
    jpeg_error_mgr errors = {};
    jpeg_progress_mgr progress = {};
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

/// The library patches up what is damaged or missing, and warns. Only a strange number in the head
/// or a damaged profile changes nothing of the picture.
void JpegReader::take_message(j_common_ptr common, int level)
{
    const int code = common->err->msg_code;
    if (level < 0 && code != JWRN_JFIF_MAJOR && code != JWRN_BOGUS_ICC)
        take_error(common);
}

void JpegReader::count_scans(j_common_ptr common)
{
    const auto* state = reinterpret_cast<j_decompress_ptr>(common);
    const double pixels = static_cast<double>(state->image_width) * state->image_height;
    if (state->input_scan_number <= MOST_SCANS && state->input_scan_number * pixels <= MOST_WORK)
        return;
    auto* reader = static_cast<JpegReader*>(common->client_data);
    std::strncpy(reader->message, "the JPEG file has too many scans", sizeof(reader->message) - 1);
    std::longjmp(reader->jump, 1);
}

bool JpegReader::prepare_head(PictureInfo& info)
{
    if (setjmp(jump))
        return false;
    jpeg_create_decompress(&state);
    state.progress = &progress;
    state.mem->max_memory_to_use = MOST_MEMORY;
    jpeg_mem_src(&state, file.data(), file.size());
    jpeg_save_markers(&state, EXIF_MARKER, LARGEST_MARKER);
    jpeg_save_markers(&state, PROFILE_MARKER, LARGEST_MARKER);
    jpeg_read_header(&state, TRUE);
    info.width = static_cast<int>(state.image_width);
    info.height = static_cast<int>(state.image_height);
    note_resolution(info);
    note_orientation();
    note_profile(info);
    return true;
}

void JpegReader::note_orientation()
{
    constexpr unsigned char MARK[] = {'E', 'x', 'i', 'f', 0, 0};
    for (const auto* marker = state.marker_list; marker; marker = marker->next) {
        const Bytes data(marker->data, marker->data_length);
        if (marker->marker == EXIF_MARKER && data.size() > sizeof(MARK) &&
            std::memcmp(data.data(), MARK, sizeof(MARK)) == 0)
            return set_orientation(find_exif_orientation(data.subspan(sizeof(MARK))));
    }
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

bool JpegReader::read_pixels(RowTarget& target)
{
    row.resize(std::size_t{state.image_width} * 4);
    return read_rows(target) || fail(message);
}

/// The files that hold inks hold them inverted: the more, the lighter.
void JpegReader::turn_inks_to_colours()
{
    unsigned char* to = row.data();
    const unsigned char* from = row.data();
    for (JDIMENSION x = 0; x < state.image_width; ++x, to += 3, from += 4) {
        const unsigned black = from[3];
        for (int c = 0; c < 3; ++c)
            to[c] = static_cast<unsigned char>(from[c] * black / 0xFF);
    }
}

bool JpegReader::read_rows(RowTarget& target)
{
    if (setjmp(jump))
        return false;
    const bool has_inks = state.jpeg_color_space == JCS_CMYK || state.jpeg_color_space == JCS_YCCK;
    const bool is_grey = state.jpeg_color_space == JCS_GRAYSCALE;
    state.out_color_space = has_inks ? JCS_CMYK : is_grey ? JCS_GRAYSCALE : JCS_RGB;
    jpeg_start_decompress(&state);
    for (JDIMENSION y = 0; y < state.image_height; ++y) {
        JSAMPROW to = row.data();
        jpeg_read_scanlines(&state, &to, 1);
        if (has_inks)
            turn_inks_to_colours();
        if (!target.put_row(static_cast<int>(y), row.data(), {is_grey ? 1 : 3, 8, Alpha::NONE}))
            return false;
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
