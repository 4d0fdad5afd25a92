#include "imagelib/src/TiffPage.h"

#include "kivlib/hdr/units.h"

namespace {
int to_size(std::uint32_t told)
{
    constexpr std::uint32_t MOST = std::numeric_limits<int>::max();
    return static_cast<int>(std::min(told, MOST));
}

/// A fourth sample of which nothing is said counts as associated alpha.
Alpha find_alpha(TIFF* tiff, int samples)
{
    std::uint16_t count = 0;
    const std::uint16_t* kinds = nullptr;
    TIFFGetFieldDefaulted(tiff, TIFFTAG_EXTRASAMPLES, &count, &kinds);
    if (samples % 2 == 1)
        return Alpha::NONE;
    return count > 0 && kinds[0] == EXTRASAMPLE_UNASSALPHA ? Alpha::STRAIGHT : Alpha::PREMULTIPLIED;
}

bool has_plain_colours(TIFF* tiff, int samples)
{
    std::uint16_t colours = PHOTOMETRIC_PALETTE;
    TIFFGetField(tiff, TIFFTAG_PHOTOMETRIC, &colours);
    switch (colours) {
    case PHOTOMETRIC_RGB:
        return samples == 3 || samples == 4;
    case PHOTOMETRIC_MINISBLACK:
        return samples == 1 || samples == 2;
    case PHOTOMETRIC_MINISWHITE:
        return samples == 1;
    default:
        return false;
    }
}
} // namespace

TiffPage TiffPage::look(TIFF* tiff)
{
    TiffPage page;
    page.width = to_size(get_tiff_field<std::uint32_t>(tiff, TIFFTAG_IMAGEWIDTH));
    page.height = to_size(get_tiff_field<std::uint32_t>(tiff, TIFFTAG_IMAGELENGTH));
    page.orientation = get_tiff_field<std::uint16_t>(tiff, TIFFTAG_ORIENTATION);
    page.is_tiled = TIFFIsTiled(tiff) != 0;
    page.block_width = page.is_tiled
                           ? to_size(get_tiff_field<std::uint32_t>(tiff, TIFFTAG_TILEWIDTH))
                           : page.width;
    page.block_height = to_size(get_tiff_field<std::uint32_t>(
        tiff, page.is_tiled ? TIFFTAG_TILELENGTH : TIFFTAG_ROWSPERSTRIP));
    if (!page.is_tiled)
        page.block_height = std::clamp(page.block_height, 1, std::max(1, page.height));
    const int samples = get_tiff_field<std::uint16_t>(tiff, TIFFTAG_SAMPLESPERPIXEL);
    const int bits = get_tiff_field<std::uint16_t>(tiff, TIFFTAG_BITSPERSAMPLE);
    page.layout = {samples, bits, find_alpha(tiff, samples)};
    page.is_plain = has_plain_colours(tiff, samples) && (bits == 8 || bits == 16) &&
                    get_tiff_field<std::uint16_t>(tiff, TIFFTAG_SAMPLEFORMAT) == SAMPLEFORMAT_UINT;
    page.is_in_planes = samples > 1 && get_tiff_field<std::uint16_t>(tiff, TIFFTAG_PLANARCONFIG) ==
                                           PLANARCONFIG_SEPARATE;
    page.is_negative =
        get_tiff_field<std::uint16_t>(tiff, TIFFTAG_PHOTOMETRIC) == PHOTOMETRIC_MINISWHITE;
    return page;
}

std::size_t TiffPage::inq_block_bytes() const
{
    const std::size_t pixel =
        is_in_planes ? static_cast<std::size_t>(layout.bits / 8) : layout.inq_bytes();
    return pixel * static_cast<std::size_t>(block_width) * static_cast<std::size_t>(block_height);
}

bool TiffPage::is_sane() const
{
    return block_width > 0 && block_height > 0 && block_width <= LONGEST_SIDE &&
           block_height <= LONGEST_SIDE &&
           inq_block_bytes() <= (is_tiled ? LARGEST_TIFF_TILE : LARGEST_TIFF_BLOCK);
}

bool get_tiff_resolution(TIFF* tiff, double& x_dpi, double& y_dpi)
{
    const auto unit = get_tiff_field<std::uint16_t>(tiff, TIFFTAG_RESOLUTIONUNIT);
    float x = 0.0F;
    float y = 0.0F;
    if ((unit != RESUNIT_INCH && unit != RESUNIT_CENTIMETER) ||
        !TIFFGetField(tiff, TIFFTAG_XRESOLUTION, &x) ||
        !TIFFGetField(tiff, TIFFTAG_YRESOLUTION, &y))
        return false;
    const double factor = unit == RESUNIT_INCH ? 1.0 : CENTIMETRES_PER_INCH;
    x_dpi = static_cast<double>(x) * factor;
    y_dpi = static_cast<double>(y) * factor;
    return true;
}
