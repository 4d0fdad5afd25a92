#pragma once

#include "imagelib/hdr/PixType.h"
#include "imagelib/src/Alpha.h"

#include <vector>

class KIVPixmap;

/// The rows of a pixmap as a file has them: in its layout, and with straight alpha where the format
/// asks for it. Whatever loses its alpha is seen over black.
class FileRows {
public:
    FileRows(const KIVPixmap& pixmap, PixType type, Alpha alpha);

    /// Row `y`, counted from the top; for as long as no other is asked for. Nothing is copied that
    /// needs no change.
    const unsigned char* inq_row(int y);

private:
    const KIVPixmap& pixmap;
    PixType type;
    bool is_divided;
    std::vector<unsigned char> straight;
    std::vector<unsigned char> converted;
};
