#include "imagelib/hdr/PixmapReader.h"

#include "imagelib/hdr/KIVPixmap.h"
#include "imagelib/src/PictureReader.h"
#include "imagelib/src/orientation.h"
#include "imagelib/src/samples.h"
#include "imagelib/src/want_of_memory.h"
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

namespace {
/// Whether a file of this size can hold the picture at all.
bool is_plausible(const PictureInfo& info, const PictureReader& reader, std::uint64_t file_bytes)
{
    constexpr std::uint64_t MOST_PER_BYTE = 4096; // whatever the format would allow
    if (info.width <= 0 || info.height <= 0 || info.width > LONGEST_SIDE ||
        info.height > LONGEST_SIDE)
        return false;
    const std::uint64_t pixels =
        std::uint64_t{static_cast<unsigned>(info.width)} * static_cast<unsigned>(info.height);
    return pixels <= MOST_PER_BYTE * file_bytes && pixels <= reader.inq_most_pixels(file_bytes);
}

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
    /// Reads the head. False for what is no picture.
    bool open(const KIVString& path, Wanted wanted, PictureInfo& info);

    /// Null without memory, or if the pixels can't be read.
    std::unique_ptr<KIVPixmap> make_pixmap(const PictureInfo& info, int bits,
                                           RowFollower* follower = nullptr);

    /// From the top. False if the target or the file gave up.
    bool read_rows(const PictureInfo& info, RowTarget& target);

    /// Whether the reason of the last step's failure lies outside the file.
    bool may_failure_pass() const { return has_failed_for_now() || inq_reason().is_null(); }

    /// Why the last step failed, for the user.
    KIVString explain_failure() const
    {
        const KIVString& reason = inq_reason();
        return "Can't read image " + path + ": " +
               (reason.is_null() ? KIVString(WANT_OF_MEMORY) : reason);
    }

private:
    bool is_upright_from_top() const
    {
        return reader->is_from_top() && reader->inq_orientation() == 1;
    }

    /// Empty for want of memory.
    const KIVString& inq_reason() const
    {
        return failure.is_null() && reader ? reader->inq_error() : failure;
    }
    bool find_head(Wanted wanted, PictureInfo& info);
    bool open_file();
    bool load(std::size_t bytes);
    bool load_rest();
    void choose_reader();
    bool read_head(Wanted wanted, PictureInfo& info);
    void turn(PictureInfo& info) const;

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
        errno = S_ISDIR(state.st_mode) ? EISDIR : EINVAL;
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
        return false;
    if (!is_plausible(info, *reader, size))
        return fail("the size of the image doesn't fit the file");
    turn(info);
    return true;
}

/// The head that the reader told, for the upright picture, and the other way round.
void PictureFile::turn(PictureInfo& info) const
{
    if (!is_on_its_side(reader->inq_orientation()))
        return;
    std::swap(info.width, info.height);
    std::swap(info.x_dpi, info.y_dpi);
}

bool PictureFile::open(const KIVString& file_path, Wanted wanted, PictureInfo& info)
{
    path = file_path;
    return find_head(wanted, info);
}

/// A pixmap that takes the rows of a reader.
class PixmapRows : public RowTarget {
public:
    /// The follower may be null.
    PixmapRows(KIVPixmap& pixmap, RowFollower* follower) : pixmap(pixmap), follower(follower) {}

    bool put_row(int y, const void* pixels, const RowLayout& layout) override
    {
        put_pixels(pixmap, 0, y, pixels, pixmap.inq_width(), layout);
        note_rows(y + 1);
        return true;
    }

    void note_rows(int rows) override
    {
        if (follower)
            follower->take_rows(pixmap, rows);
    }

    unsigned char* inq_place(int y, const RowLayout& layout) override
    {
        const bool is_as_it_is = layout.samples == 4 && layout.alpha == Alpha::PREMULTIPLIED &&
                                 layout.bits == pixmap.inq_bits_per_sample();
        return is_as_it_is ? pixmap.inq_row(y) : nullptr;
    }

private:
    KIVPixmap& pixmap;
    RowFollower* const follower; // not owned
};

std::unique_ptr<KIVPixmap> PictureFile::make_pixmap(const PictureInfo& info, int bits,
                                                    RowFollower* follower)
{
    const int orientation = reader->inq_orientation();
    PictureInfo stored = info;
    turn(stored);
    auto pixmap = std::make_unique<KIVPixmap>(stored.width, stored.height, make_pix_type(4, bits),
                                              nullptr, false);
    if (!pixmap->inq_data())
        return nullptr;
    PixmapRows rows(*pixmap, is_upright_from_top() ? follower : nullptr);
    if (!reader->read_pixels(rows))
        return nullptr;
    if (orientation != 1)
        pixmap = make_upright(*pixmap, orientation);
    if (pixmap && info.x_dpi > 0.0)
        pixmap->set_dpi(info.x_dpi, info.y_dpi / info.x_dpi);
    return pixmap;
}

bool PictureFile::read_rows(const PictureInfo& info, RowTarget& target)
{
    if (is_upright_from_top())
        return reader->read_pixels(target);
    const std::unique_ptr<KIVPixmap> pixmap = make_pixmap(info, info.bits);
    bool goes_on = pixmap != nullptr;
    for (int y = 0; goes_on && y < info.height; ++y)
        goes_on = target.put_row(y, pixmap->inq_row(y), {4, info.bits, Alpha::PREMULTIPLIED});
    return goes_on;
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
/// Runs `read(picture, info)` on a file whose head can be read. False, with a text for the user, if
/// either fails.
template <class Read>
bool with_file(const KIVString& file, Wanted wanted, PictureInfo& info, KIVString& error,
               bool* may_pass, Read read)
{
    bool is_passing = true;
    try {
        errno = 0;
        PictureFile picture;
        if (picture.open(file, wanted, info)) {
            check_resolution(info);
            if (read(picture))
                return true;
        }
        is_passing = picture.may_failure_pass();
        error = picture.explain_failure();
    } catch (const std::bad_alloc&) {
        error = "Can't read image " + file + ": " + WANT_OF_MEMORY;
    }
    if (may_pass)
        *may_pass = is_passing;
    return false;
}
} // namespace

bool inq_picture_info(const KIVString& file, PictureInfo& info, KIVString& error, bool* may_pass)
{
    return with_file(file, Wanted::HEAD, info, error, may_pass,
                     [](const PictureFile&) { return true; });
}

gsl::owner<KIVPixmap*> new_pixmap_from_file(const KIVString& file, int bits, PictureInfo& info,
                                            KIVString& error, RowFollower* follower, bool* may_pass)
{
    std::unique_ptr<KIVPixmap> pixmap;
    with_file(file, Wanted::PIXELS, info, error, may_pass, [&](PictureFile& picture) {
        pixmap = picture.make_pixmap(info, bits, follower);
        return pixmap != nullptr;
    });
    return pixmap.release();
}

bool read_picture_rows(const KIVString& file, const TargetMaker& make_target, KIVString& error)
{
    PictureInfo info;
    return with_file(file, Wanted::PIXELS, info, error, nullptr, [&](PictureFile& picture) {
        RowTarget* target = make_target(info);
        return target && picture.read_rows(info, *target);
    });
}

gsl::owner<KIVPixmap*> new_pixmap_from_file(const KIVString& file, int bits, KIVString& error)
{
    PictureInfo info;
    return new_pixmap_from_file(file, bits, info, error);
}
