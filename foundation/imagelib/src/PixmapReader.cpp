#include "imagelib/hdr/PixmapReader.h"

#include "imagelib/hdr/KIVPixmap.h"
#include "imagelib/src/PictureReader.h"
#include "imagelib/src/samples.h"
#include "kivlib/hdr/ByteBuffer.h"
#include "kivlib/hdr/FileHandle.h"
#include "kivlib/hdr/PCharArray.h"

#include <sys/stat.h>

PCharArray inq_pixmap_readable_file_exts()
{
    PCharArray extensions;
    for (const char* extension :
         {"tif", "tiff", "png", "jpg", "jpeg", "gif", "tga", "pnm", "pbm", "pgm", "ppm"})
        extensions.add(extension);
    return extensions;
}

bool is_plausible(long width, long height, std::size_t file_bytes)
{
    constexpr long MOST_PER_BYTE = 4096;
    constexpr long LONGEST_SIDE = 1000000;
    return width > 0 && height > 0 && width <= LONGEST_SIDE && height <= LONGEST_SIDE &&
           width * height / MOST_PER_BYTE <= static_cast<long>(file_bytes);
}

namespace {
/// At the greater of the two depths, so that nothing is lost before the last rounding.
template <class To, class From> void put_samples(To* out, const From* in, const RowLayout& layout)
{
    using Deeper = std::conditional_t<(sizeof(To) > sizeof(From)), To, From>;
    const bool is_grey = layout.samples < 3;
    const From cover = layout.alpha == Alpha::NONE ? samples::FULL<From> : in[layout.samples - 1];
    if (cover == 0 && layout.alpha == Alpha::STRAIGHT) { // most of a drawing
        std::memset(out, 0, 4 * sizeof(To));
        return;
    }
    const Deeper alpha = samples::change_depth<Deeper>(cover);
    for (int c = 0; c < 3; ++c) {
        Deeper value = samples::change_depth<Deeper>(in[is_grey ? 0 : c]);
        if (layout.alpha == Alpha::STRAIGHT)
            value = static_cast<Deeper>(samples::multiply(value, alpha));
        out[c] = samples::change_depth<To>(value);
    }
    out[3] = samples::change_depth<To>(alpha);
}

template <class To, class From>
void put_row(To* out, const void* pixels, int count, const RowLayout& layout)
{
    const From* in = static_cast<const From*>(pixels);
    for (int i = 0; i < count; ++i, out += 4, in += layout.samples)
        put_samples(out, in, layout);
}

template <class To> void put_row_as(To* out, const void* pixels, int count, const RowLayout& layout)
{
    if (layout.bits == 8)
        put_row<To, std::uint8_t>(out, pixels, count, layout);
    else
        put_row<To, std::uint16_t>(out, pixels, count, layout);
}
} // namespace

void put_pixels(KIVPixmap& picture, int x, int y, const void* pixels, int count,
                const RowLayout& layout)
{
    unsigned char* out =
        picture.inq_row(y) + static_cast<std::ptrdiff_t>(x) * picture.inq_bytes_per_pixel();
    const bool is_as_wanted =
        layout.bits == picture.inq_bits_per_sample() &&
        (layout.samples == 3 || (layout.samples == 4 && layout.alpha == Alpha::PREMULTIPLIED));
    if (is_as_wanted)
        convert_pixels(out, picture.inq_type(), pixels, make_pix_type(layout.samples, layout.bits),
                       count);
    else if (picture.inq_bits_per_sample() == 8)
        put_row_as(out, pixels, count, layout);
    else
        put_row_as(reinterpret_cast<std::uint16_t*>(out), pixels, count, layout);
}

namespace {
/// What a head fits into, but for an uncommon one.
constexpr std::size_t START_BYTES = 1 << 16;

enum class Wanted { HEAD, PIXELS };

/// A picture file, as much of it in memory as is needed, and the reader that knows it.
class PictureFile {
public:
    /// Reads the head. False, with a text for the user, for what is no picture.
    bool open(const KIVString& path, Wanted wanted, PictureInfo& info, KIVString& error);

    gsl::owner<KIVPixmap*> new_pixmap(const PictureInfo& info, int bits);
    KIVString explain(const KIVString& reason) const
    {
        return "Can't read image " + path + ": " + reason;
    }

    const PictureReader& inq_reader() const { return *reader; }

private:
    bool find_head(Wanted wanted, PictureInfo& info);
    bool open_file();
    bool load(std::size_t bytes);
    bool load_rest();
    void choose_reader();
    bool read_head(Wanted wanted, PictureInfo& info);

    /// Gives false, for the step to return.
    bool fail(const KIVString& reason)
    {
        failure = reason;
        return false;
    }

    KIVString path;
    FileHandle file;
    std::size_t size = 0;
    ByteBuffer contents; // from the beginning
    KIVString failure;
    std::unique_ptr<PictureReader> reader;
};

bool PictureFile::open_file()
{
    file = FileHandle::open_to_read(path.c_str());
    struct stat state = {};
    if (!file.is_open() || ::fstat(file.inq_descriptor(), &state) != 0)
        return false;
    if (!S_ISREG(state.st_mode)) {
        errno = EISDIR;
        return false;
    }
    size = static_cast<std::size_t>(state.st_size);
    return true;
}

/// Reads on from what is there.
bool PictureFile::load(std::size_t bytes)
{
    errno = 0;
    char* to = bytes > 0 ? contents.extend(bytes) : nullptr;
    if (bytes == 0 || (to && file.read_all(to, bytes)))
        return true;
    return fail(!to || errno != 0 ? inq_system_error() : KIVString("the file ends too early"));
}

/// The reader begins anew with the whole file.
bool PictureFile::load_rest()
{
    if (!load(size - contents.size()))
        return false;
    choose_reader();
    return true;
}

void PictureFile::choose_reader()
{
    const Bytes bytes(reinterpret_cast<const unsigned char*>(contents.data()), contents.size());
    reader = make_tiff_reader(bytes, file, size);
    for (const auto make :
         {make_png_reader, make_jpeg_reader, make_gif_reader, make_pnm_reader, make_targa_reader}) {
        if (reader)
            return;
        reader = make(bytes);
    }
}

/// A long head is begun anew with the whole file.
bool PictureFile::read_head(Wanted wanted, PictureInfo& info)
{
    const bool lacks_bytes = reader->needs_whole_file() && contents.size() < size;
    if (!lacks_bytes)
        return reader->read_head(info);
    if (wanted == Wanted::HEAD && reader->read_head(info))
        return true;
    info = {};
    return load_rest() && reader->read_head(info);
}

bool PictureFile::find_head(Wanted wanted, PictureInfo& info)
{
    if (!open_file())
        return fail(inq_system_error());
    if (!load(std::min(size, START_BYTES)))
        return false;
    choose_reader();
    if (!reader)
        return fail("no known image format");
    if (!read_head(wanted, info))
        return fail(failure.is_null() ? reader->inq_error() : failure);
    return is_plausible(info.width, info.height, size) ||
           fail("the size of the image doesn't fit the file");
}

bool PictureFile::open(const KIVString& file_path, Wanted wanted, PictureInfo& info,
                       KIVString& error)
{
    path = file_path;
    if (find_head(wanted, info))
        return true;
    error = explain(failure);
    return false;
}

gsl::owner<KIVPixmap*> PictureFile::new_pixmap(const PictureInfo& info, int bits)
{
    auto pixmap = std::make_unique<KIVPixmap>(info.width, info.height, make_pix_type(4, bits),
                                              nullptr, false);
    if (!pixmap->inq_data() || !reader->read_pixels(*pixmap))
        return nullptr;
    if (info.x_dpi > 0.0)
        pixmap->set_dpi(info.x_dpi, info.y_dpi / info.x_dpi);
    return pixmap.release();
}

/// A resolution that no scanner or painter means is as good as none.
void check_resolution(PictureInfo& info)
{
    constexpr double LEAST = 1.0;
    constexpr double MOST = 100000.0;
    const auto is_sane = [&](double dpi) { return dpi >= LEAST && dpi <= MOST; };
    if (is_sane(info.x_dpi) && is_sane(info.y_dpi))
        return;
    info.x_dpi = 0.0;
    info.y_dpi = 0.0;
}
} // namespace

namespace {
gsl::owner<KIVPixmap*> read_file(const KIVString& file, int bits, PictureInfo& info,
                                 KIVString& error)
{
    PictureFile picture;
    if (!picture.open(file, Wanted::PIXELS, info, error))
        return nullptr;
    check_resolution(info);
    KIVPixmap* pixmap = picture.new_pixmap(info, bits);
    if (!pixmap) {
        const KIVString& reason = picture.inq_reader().inq_error();
        error = picture.explain(reason.is_null() ? KIVString("not enough memory") : reason);
    }
    return pixmap;
}
} // namespace

bool inq_picture_info(const KIVString& file, PictureInfo& info, KIVString& error)
{
    try {
        PictureFile picture;
        const bool is_open = picture.open(file, Wanted::HEAD, info, error);
        check_resolution(info);
        return is_open;
    } catch (const std::bad_alloc&) {
        error = "Can't read image " + file + ": not enough memory";
        return false;
    }
}

gsl::owner<KIVPixmap*> new_pixmap_from_file(const KIVString& file, int bits, PictureInfo& info,
                                            KIVString& error)
{
    try {
        return read_file(file, bits, info, error);
    } catch (const std::bad_alloc&) {
        error = "Can't read image " + file + ": not enough memory";
        return nullptr;
    }
}

gsl::owner<KIVPixmap*> new_pixmap_from_file(const KIVString& file, int bits, KIVString& error)
{
    PictureInfo info;
    return new_pixmap_from_file(file, bits, info, error);
}
