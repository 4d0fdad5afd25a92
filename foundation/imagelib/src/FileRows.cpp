#include "imagelib/src/FileRows.h"

#include "imagelib/hdr/KIVPixmap.h"
#include "imagelib/src/row_kernels.h"
#include "imagelib/src/samples.h"

FileRows::FileRows(const KIVPixmap& pixmap, PixType type, Alpha alpha)
    : pixmap(pixmap), type(type), is_divided(alpha == Alpha::STRAIGHT && pixmap.inq_alpha())
{
    constexpr std::size_t MOST_BYTES = 8; // of a pixel
    const std::size_t room = static_cast<std::size_t>(pixmap.inq_width()) * MOST_BYTES;
    straight.resize(is_divided ? room : 0);
    converted.resize(type == pixmap.inq_type() ? 0 : room);
}

/// Divided at the pixmap's depth, which is no less than the file's.
const unsigned char* FileRows::inq_row(int y)
{
    const unsigned char* row = pixmap.inq_row(y);
    if (is_divided) {
        make_straight(straight.data(), row, pixmap.inq_width(), pixmap.inq_bits_per_sample());
        row = straight.data();
    }
    if (type == pixmap.inq_type())
        return row;
    convert_pixels(converted.data(), type, row, pixmap.inq_type(), pixmap.inq_width());
    return converted.data();
}
