#pragma once

#include "imagelib/src/FixedPixels.h"
#include "imagelib/src/Tile.h"

#include <memory>

class DrawList;
class KIVPixmap;
class Layer;

/// What drawing needs to know of pixmaps, and what others need not.
class PixmapDrawing {
public:
    /// When a layer is drawn: its own pixels tell whether it can wait.
    enum class Time { NOW, LATER };

    /// The pixels of a source. Their memory is shared if they are fixed.
    static FixedPixels inq_pixels(const KIVPixmap& source);
    static bool is_fixed(const KIVPixmap& source);

    /// All pixels of a pixmap, to be drawn on at once.
    static Canvas inq_canvas(KIVPixmap& pixmap);

    static Tile inq_area(const KIVPixmap& pixmap);
    static void draw(KIVPixmap& target, std::unique_ptr<Layer> layer, Time time);

    /// What waits to be drawn on a pixmap, if that is all that can be seen there and `target` can
    /// make a layer of it; else null.
    static std::unique_ptr<DrawList> take_picture(KIVPixmap& pixmap, const KIVPixmap& target);
};
