#pragma once

#include <memory>
#include <span>

class KIVPixmap;

/// How a picture lies, by the EXIF data of its file, which have the form of a TIFF file: 1 to 8,
/// and 1, upright, if they don't tell.
int find_exif_orientation(std::span<const unsigned char> exif);

/// Whether the rows of a picture that lies so are to become columns.
constexpr bool is_on_its_side(int orientation)
{
    return orientation >= 5;
}

/// An upright copy of a picture that lies so. Null without memory.
std::unique_ptr<KIVPixmap> make_upright(const KIVPixmap& picture, int orientation);
