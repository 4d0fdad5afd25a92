#include "imagelib/hdr/PixOpFilter.h"

#include "imagelib/hdr/KIVPixmap.h"

bool PixOpConvertType::transform(KIVPixmap* pixmap)
{
    return pixmap && pixmap->convert(samples, bits);
}
