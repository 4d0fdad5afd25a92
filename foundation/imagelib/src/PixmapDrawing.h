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

    /// All pixels of a pixmap, to be drawn on at once.
    static Canvas inq_canvas(KIVPixmap& pixmap);

    static Tile inq_area(const KIVPixmap& pixmap);
    static void draw(KIVPixmap& target, std::unique_ptr<Layer> layer, Time time);

    /// Draws a picture of the target's depth with alpha, which nobody else needs, with its top left
    /// pixel at (x, y). What waits to be drawn on it is drawn on the target instead, as if it had
    /// been put there in the first place.
    static void hand_over(KIVPixmap& target, KIVPixmap& picture, int x, int y);

    /// Whether a pixmap was cleared, and nobody has drawn on it or looked at it since.
    static bool is_clear(const KIVPixmap& pixmap);
};
