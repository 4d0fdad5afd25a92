#include "imagelib/src/ComponentWriter.h"

#include "imagelib/hdr/KIVPixmap.h"
#include "imagelib/hdr/PixmapImage.h"
#include "imagelib/src/FileRows.h"
#include "imagelib/src/WrittenFile.h"
#include "kivlib/hdr/ByteBuffer.h"
#include "kivlib/hdr/KIVColour.h"

namespace {
// The digital levels of ITU-R 601. 0 and 255 are kept for synchronisation.
constexpr double BLACK = 16.0;
constexpr double LUMA_LEVELS = 219.0;
constexpr double NO_COLOUR = 128.0;
constexpr double COLOUR_LEVELS = 224.0;
constexpr float LEAST = 1.0F;
constexpr float MOST = 254.0F;

constexpr double FULL = 0xFFFF; // of the samples that come in

unsigned char to_level(float value)
{
    return static_cast<unsigned char>(std::clamp(value, LEAST, MOST) + 0.5F);
}

/// One component of a row at all its pixels.
class ComponentRow {
public:
    /// The middle of the levels for nothing of the component, or black, is at `offset`.
    ComponentRow(const ComponentShares& shares, double levels, double offset, int width)
        : offset(static_cast<float>(offset)), width(static_cast<std::size_t>(width)),
          values(this->width + 2 * REACH)
    {
        for (std::size_t c = 0; c < shares.size(); ++c)
            factors[c] = static_cast<float>(shares[c] * levels / FULL);
    }

    /// Beyond its ends a row goes on as it ends.
    void take(const std::uint16_t* row)
    {
        float* const out = values.data() + REACH;
        for (std::size_t x = 0; x < width; ++x, row += 3)
            out[x] = offset + factors[0] * static_cast<float>(row[0]) +
                     factors[1] * static_cast<float>(row[1]) +
                     factors[2] * static_cast<float>(row[2]);
        std::fill_n(values.data(), REACH, out[0]);
        std::fill_n(out + width, REACH, out[width - 1]);
    }

    unsigned char inq_level(std::size_t x) const { return to_level(values[REACH + x]); }

    /// At a place that a pair shares with its first pixel: a half-band filter around it.
    unsigned char inq_filtered_level(std::size_t x) const
    {
        const float* const v = values.data() + x;
        constexpr float MIDDLE = 16.0F / 32;
        constexpr float NEAR = 9.0F / 32;
        constexpr float FAR = -1.0F / 32;
        return to_level(MIDDLE * v[3] + NEAR * (v[2] + v[4]) + FAR * (v[0] + v[6]));
    }

private:
    static constexpr std::size_t REACH = 3; // of the filter

    std::array<float, 3> factors;
    float offset;
    std::size_t width;
    std::vector<float> values;
};

/// The shares that red, green and blue have of the greatest excursion, so that this is one half.
ComponentShares normalised(const ComponentShares& shares)
{
    const double positive =
        std::max(shares[0], 0.0) + std::max(shares[1], 0.0) + std::max(shares[2], 0.0);
    return {shares[0] / positive / 2, shares[1] / positive / 2, shares[2] / positive / 2};
}
} // namespace

gsl::owner<KIVPixmapWriter*> ComponentWriter::new_writer(const ComponentMatrix& matrix,
                                                         const char* extension, int variant)
{
    if (variant < 0 || variant >= static_cast<int>(STANDARDS.size()))
        return nullptr;
    return new ComponentWriter(matrix, extension, STANDARDS[static_cast<std::size_t>(variant)]);
}

bool ComponentWriter::fit(KIVPixmap& frame, const KIVPixmap& pixmap) const
{
    frame.set_colour(KIVColour(0.0));
    const bool has_aspect = pixmap.inq_x_dpi() > 0.0 && pixmap.inq_y_dpi() > 0.0;
    const double aspect = has_aspect ? pixmap.inq_y_dpi() / pixmap.inq_x_dpi() : 1.0;
    const double pixel_width = aspect / standard.pixel_aspect; // in pixels of the frame
    const double scale = std::min(standard.width / (pixmap.inq_width() * pixel_width),
                                  static_cast<double>(standard.height) / pixmap.inq_height());
    const double width = pixmap.inq_width() * pixel_width * scale;
    const double height = pixmap.inq_height() * scale;
    const double left = (standard.width - width) / 2;
    const double bottom = (standard.height - height) / 2;
    PixmapImage source(const_cast<KIVPixmap*>(&pixmap)); // it is only read
    PixmapImage target(&frame);
    target.setHighQuality(true);
    return source.compositeAffine(left, bottom, left, bottom + height, left + width,
                                  bottom + height, &target, 0) != 0;
}

void ComponentWriter::put_rows(unsigned char* to, const KIVPixmap& frame) const
{
    const int width = frame.inq_width();
    ComponentRow luma(matrix.luma, LUMA_LEVELS, BLACK, width);
    ComponentRow first(normalised(matrix.first), COLOUR_LEVELS, NO_COLOUR, width);
    ComponentRow second(normalised(matrix.second), COLOUR_LEVELS, NO_COLOUR, width);
    FileRows rows(frame, PT_RGB_16, Alpha::PREMULTIPLIED);
    for (int y = 0; y < frame.inq_height(); ++y) {
        const auto* const row = reinterpret_cast<const std::uint16_t*>(rows.inq_row(y));
        for (ComponentRow* component : {&luma, &first, &second})
            component->take(row);
        for (std::size_t x = 0; x < static_cast<std::size_t>(width); x += 2, to += 4) {
            to[0] = first.inq_filtered_level(x);
            to[1] = luma.inq_level(x);
            to[2] = second.inq_filtered_level(x);
            to[3] = luma.inq_level(x + 1);
        }
    }
}

std::size_t ComponentWriter::inq_file_bytes() const
{
    constexpr int BYTES_PER_PIXEL = 2;
    return static_cast<std::size_t>(standard.width * standard.height * BYTES_PER_PIXEL);
}

bool ComponentWriter::is_whole(const WrittenFile& file, const PictureForm& /*form*/) const
{
    return file.inq_size() == inq_file_bytes();
}

KIVPixmapWriter::WriteError ComponentWriter::encode(const KIVPixmap& pixmap, ByteBuffer& contents)
{
    const KIVPixmap* frame = &pixmap;
    std::unique_ptr<KIVPixmap> fitted;
    if (pixmap.inq_width() != standard.width || pixmap.inq_height() != standard.height) {
        fitted = std::make_unique<KIVPixmap>(standard.width, standard.height, pixmap.inq_type(),
                                             nullptr, false);
        if (fitted->inq_is_empty())
            return WRITE_NO_MEMORY;
        if (!fit(*fitted, pixmap))
            return WRITE_CANNOT_ENCODE;
        frame = fitted.get();
    }
    char* memory = contents.reset(inq_file_bytes());
    if (!memory)
        return WRITE_NO_MEMORY;
    put_rows(reinterpret_cast<unsigned char*>(memory), *frame);
    return WRITE_OKAY;
}
