#include "imagelib/src/CopyMaker.h"

#include "imagelib/hdr/KIVPixmap.h"

#include <new>

namespace {
std::shared_ptr<BlockMap> make_map(const KIVPixmap& pixmap)
{
    return std::make_shared<BlockMap>(pixmap.inq_width(), pixmap.inq_height());
}

/// With the last of its rows the pixmap is fixed.
void look_at_rows(KIVPixmap& pixmap, const std::shared_ptr<BlockMap>& blocks, int rows)
{
    if (pixmap.inq_is_fixed())
        return;
    blocks->look_at_rows(std::as_const(pixmap).inq_data(), pixmap.inq_row_bytes(),
                         pixmap.inq_bits_per_sample(), rows);
    if (rows == pixmap.inq_height())
        pixmap.fix_pixels(blocks);
}
} // namespace

void CopyMaker::begin(const KIVPixmap& picture)
{
    try {
        prepare(picture);
    } catch (const std::bad_alloc&) {
        // the picture itself is worth reading
    }
}

void CopyMaker::prepare(const KIVPixmap& picture)
{
    blocks = make_map(picture);
    copies.reserve(wanted);
    const KIVPixmap* source = &picture;
    while (copies.size() < wanted) {
        GrowingCopy copy(*source, true, true);
        source = copy.inq_copy();
        if (!source)
            return;
        copies.push_back({std::move(copy), make_map(*source)});
    }
}

void CopyMaker::take_rows(KIVPixmap& picture, int rows)
{
    if (!blocks)
        begin(picture);
    if (!blocks)
        return;
    look_at_rows(picture, blocks, rows);
    for (Copy& copy : copies) {
        rows = copy.pixels.make_rows(rows);
        if (rows == copy.rows)
            return;
        copy.rows = rows;
        look_at_rows(*copy.pixels.inq_copy(), copy.blocks, rows);
    }
}

std::vector<std::unique_ptr<KIVPixmap>> CopyMaker::finish(KIVPixmap& picture)
{
    take_rows(picture, picture.inq_height());
    std::vector<std::unique_ptr<KIVPixmap>> made;
    made.reserve(copies.size());
    for (Copy& copy : copies)
        made.push_back(copy.pixels.take_copy());
    return made;
}
