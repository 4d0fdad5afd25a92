#pragma once

#include "imagelib/hdr/PixType.h"
#include "kivlib/hdr/Vector.h"

#include <cstddef>
#include <memory>

class AbortPanel;
class BlockMap;
class DrawList;
class KIVColour;
class KIVRectangle;

/// A rectangle of pixels with its place and its resolution. Colours are premultiplied by alpha;
/// row 0 is the top row, and every row begins on a boundary of 64 bytes. Without memory for its
/// pixels a pixmap is empty: 0 by 0, without data, and every operation on it does nothing. What is
/// drawn over it may wait until somebody looks at the pixels; that changes nothing of the result,
/// but until `finish_drawing` even readers must be of one thread.
class KIVPixmap : public KIVObject {
public:
    using Base = KIVObject;

    /// `data`: null, and the pixels are undefined until they are set, or `height` rows without
    /// gaps, which are copied. With `take_data` the pixmap also deletes that array.
    KIVPixmap(int width, int height, PixType type, unsigned char* data, bool take_data);
    KIVPixmap(int width, int height, int samples, int bits, unsigned char* data, bool take_data);
    KIVPixmap(const KIVPixmap&) = delete;
    KIVPixmap& operator=(const KIVPixmap&) = delete;
    ~KIVPixmap() override;

    const char* class_name() const override { return "KIVPixmap"; }

    int inq_width() const { return width; }
    int inq_height() const { return height; }
    PixType inq_type() const { return type; }
    bool inq_alpha() const { return has_alpha(type); }
    int inq_samples_per_pixel() const { return inq_alpha() ? 4 : 3; }
    int inq_bits_per_sample() const { return inq_bits(type); }
    int inq_bytes_per_pixel() const { return ::inq_bytes_per_pixel(type); }

    /// The top left pixel; null if the pixmap is empty.
    unsigned char* inq_data()
    {
        draw_what_waits();
        if (blocks)
            prepare_change();
        return pixels.get();
    }
    const unsigned char* inq_data() const
    {
        draw_what_waits();
        return pixels.get();
    }
    bool inq_is_empty() const { return !pixels; }

    /// Bytes from the beginning of one row to that of the next.
    std::size_t inq_row_bytes() const { return row_bytes; }
    unsigned char* inq_row(int y) { return inq_data() + static_cast<std::size_t>(y) * row_bytes; }
    const unsigned char* inq_row(int y) const
    {
        return inq_data() + static_cast<std::size_t>(y) * row_bytes;
    }

    /// All memory of the pixels.
    std::size_t inq_bytes() const { return row_bytes * static_cast<std::size_t>(height); }

    const Vector2& inq_origin() const { return origin; }
    void set_origin(const Vector2& lower_left) { origin = lower_left; }

    /// From the origin, 60 / dpi units to a pixel; one unit while no resolution is known.
    KIVRectangle get_frame() const;

    /// Pixels per inch: `dpi` across and `dpi * pixel_aspect` down. 0: not known.
    void set_dpi(double dpi, double pixel_aspect);
    double inq_x_dpi() const { return x_dpi; }
    double inq_y_dpi() const { return y_dpi; }

    void set_colour(const KIVColour& colour);
    void clear();

    /// `pos` is the place of the top left pixel of `source`, which is never null, in rows from the
    /// top; what lies outside is cut off. Without alpha of its own, the target takes the colour
    /// over black.
    void copy(const KIVPixmap* source, const IntVector2& pos);
    void composite(const KIVPixmap* source, const IntVector2& pos);

    /// The same with a source that nobody else needs: it is deleted, and what waits to be drawn on
    /// it is drawn once, here.
    void copy_and_delete(gsl::owner<KIVPixmap*> source, const IntVector2& pos);
    void composite_and_delete(gsl::owner<KIVPixmap*> source, const IntVector2& pos);

    /// The pixels stay as they are: to draw such a pixmap over another may then wait, even until
    /// after its end. A later change, or the writable `inq_data`, ends that.
    void fix_pixels();

    /// The same with a map of them that was made while they came.
    void fix_pixels(std::shared_ptr<const BlockMap> known_blocks);
    bool inq_is_fixed() const { return blocks != nullptr; }

    /// Draws what waits. False if the panel stopped it; the pixels are then undefined, as they are
    /// after an exception for want of memory.
    bool finish_drawing(AbortPanel* abort) const;

    /// Changes the layout of the pixels. False, and no change, without memory for it.
    bool convert(int samples, int bits);

    /// Pixels are always in memory.
    bool load_data_if_needed() { return pixels != nullptr; }

    /// A new pixmap of what lies in a quadrilateral, given in pixels with y upwards. Outside the
    /// pixmap is transparent. Without memory the new one is null, empty or all transparent.
    gsl::owner<KIVPixmap*> new_get_resampled(const Vector2& top_left, const Vector2& top_right,
                                             const Vector2& bottom_right,
                                             const Vector2& bottom_left, int new_width,
                                             int new_height) const;

private:
    friend class PixmapDrawing;

    void draw_what_waits() const
    {
        if (waiting)
            finish_drawing(nullptr);
    }
    void begin_with(const unsigned char* pixel_with_alpha);
    void prepare_change();
    void allocate(int wanted_width, int wanted_height);

    int width = 0;
    int height = 0;
    PixType type;
    std::size_t row_bytes = 0;
    std::shared_ptr<unsigned char> pixels;     // shared with what waits to draw them
    std::shared_ptr<const BlockMap> blocks;    // null unless the pixels are fixed
    mutable std::unique_ptr<DrawList> waiting; // to be drawn here; null if nothing waits
    Vector2 origin;
    double x_dpi = 0.0;
    double y_dpi = 0.0;
};
