#include "imagelib/hdr/PixOpFilter.h"

#include "imagelib/hdr/KIVPixmap.h"

bool PixOpConvertType::transform(KIVPixmap* pixmap)
{
    return pixmap && pixmap->convert(samples, bits);
}

bool PixOpAddInterlace::transform(KIVPixmap* pixmap)
{
    if (!pixmap || !second_field || pixmap->inq_type() != second_field->inq_type() ||
        pixmap->inq_width() != second_field->inq_width() ||
        pixmap->inq_height() != second_field->inq_height())
        return false;
    const int first_row = order == FieldOrder::UPPER_FIRST ? 1 : 0;
    for (int y = first_row; y < pixmap->inq_height(); y += 2)
        std::memcpy(pixmap->inq_row(y), second_field->inq_row(y), pixmap->inq_row_bytes());
    return true;
}

namespace {
/// Row by row, with a copy of the row above as it was.
template <class Sample> void soften_rows(KIVPixmap& pixmap)
{
    const auto samples =
        static_cast<std::size_t>(pixmap.inq_width() * pixmap.inq_samples_per_pixel());
    const auto row = [&](int y) { return reinterpret_cast<Sample*>(pixmap.inq_row(y)); };
    std::vector<Sample> above(row(0), row(0) + samples);
    std::vector<Sample> here(samples);
    for (int y = 0; y < pixmap.inq_height(); ++y) {
        Sample* const now = row(y);
        const Sample* const below = row(std::min(y + 1, pixmap.inq_height() - 1));
        std::copy_n(now, samples, here.begin());
        for (std::size_t i = 0; i < samples; ++i)
            now[i] = static_cast<Sample>((above[i] + 2U * here[i] + below[i] + 2U) / 4U);
        above.swap(here);
    }
}
} // namespace

bool PixOpInterlaceFilter::transform(KIVPixmap* pixmap)
{
    if (!pixmap || !pixmap->inq_data())
        return false;
    if (pixmap->inq_bits_per_sample() == 8)
        soften_rows<std::uint8_t>(*pixmap);
    else
        soften_rows<std::uint16_t>(*pixmap);
    return true;
}
