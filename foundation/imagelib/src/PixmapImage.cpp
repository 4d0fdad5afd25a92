#include "imagelib/hdr/PixmapImage.h"

#include "imagelib/hdr/KIVPixmap.h"
#include "imagelib/src/composite.h"

int PixmapImage::compositeAffine(double x0, double y0, double x1, double y1, double x2, double y2,
                                 DirectTarget* target, int /*flags*/)
{
    KIVPixmap* onto = target ? target->inq_pixmap() : nullptr;
    if (!pixmap || !onto)
        return 0;
    const double top = onto->inq_height(); // where the target's y begins to run downwards
    return composite_placed(*onto, *pixmap, {x1, top - y1}, {x2, top - y2}, {x0, top - y0},
                            {target->inq_high_quality(), opacity});
}

int PixmapImage::compositeAt(int x, int y, DirectTarget* target, int /*flags*/)
{
    KIVPixmap* onto = target ? target->inq_pixmap() : nullptr;
    if (!pixmap || !onto)
        return 0;
    composite_unscaled(*onto, *pixmap, x, y, {false, opacity});
    return 1;
}

void PixmapImage::clear()
{
    if (pixmap)
        pixmap->clear();
}
