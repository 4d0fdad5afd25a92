#pragma once

#include "imagelib/hdr/PixType.h"
#include "kivlib/hdr/Vector.h"

#include <cstddef>
#include <memory>

class KIVColour;
class KIVRectangle;

/// A rectangle of pixels with its place and its resolution. Colours are premultiplied by alpha;
/// row 0 is the top row, and every row begins on a boundary of 64 bytes. Without memory for its
/// pixels a pixmap is empty: 0 by 0, without data, and every operation on it does nothing.
class KIVPixmap : public KIVObject {
public:
    using Base = KIVObject;

    /// `data`: null, and the pixels are undefined until they are set, or `height` rows without
    /// gaps, which are copied. With `take_data` the pixmap also deletes that array.
    KIVPixmap(int width, int height, PixType type, unsigned char* data, bool take_data);
    KIVPixmap(int width, int height, int samples, int bits, unsigned char* data, bool take_data);
    KIVPixmap(const KIVPixmap&) = delete;
    KIVPixmap& operator=(const KIVPixmap&) = delete;

    const char* class_name() const override { return "KIVPixmap"; }

    int inq_width() const { return width; }
    int inq_height() const { return height; }
    PixType inq_type() const { return type; }
    bool inq_alpha() const { return type == PT_RGBA_8 || type == PT_RGBA_16; }
    int inq_samples_per_pixel() const { return inq_alpha() ? 4 : 3; }
    int inq_bits_per_sample() const { return type < PT_RGBA_16 ? 8 : 16; }
    int inq_bytes_per_pixel() const { return inq_samples_per_pixel() * inq_bits_per_sample() / 8; }

    /// The top left pixel; null if the pixmap is empty.
    unsigned char* inq_data() { return pixels.get(); }
    const unsigned char* inq_data() const { return pixels.get(); }

    /// Bytes from the beginning of one row to that of the next.
    std::size_t inq_row_bytes() const { return row_bytes; }
    unsigned char* inq_row(int y) { return pixels.get() + static_cast<std::size_t>(y) * row_bytes; }
    const unsigned char* inq_row(int y) const
    {
        return pixels.get() + static_cast<std::size_t>(y) * row_bytes;
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

    /// `pos` is the place of the top left pixel of `source`, in rows from the top; what lies
    /// outside is cut off. Without alpha of its own, the target takes the colour over black.
    void copy(const KIVPixmap* source, const IntVector2& pos);
    void composite(const KIVPixmap* source, const IntVector2& pos);

    /// Changes the layout of the pixels. False, and no change, without memory for it.
    bool convert(int samples, int bits);

    /// Pixels are always in memory.
    bool load_data_if_needed() { return pixels != nullptr; }

    /// A new pixmap of what lies in a quadrilateral, given in pixels with y upwards. Outside the
    /// pixmap is transparent.
    gsl::owner<KIVPixmap*> new_get_resampled(const Vector2& top_left, const Vector2& top_right,
                                             const Vector2& bottom_right,
                                             const Vector2& bottom_left, int new_width,
                                             int new_height) const;

private:
    struct Free {
        void operator()(unsigned char* memory) const;
    };

    void allocate(int wanted_width, int wanted_height);

    int width = 0;
    int height = 0;
    PixType type;
    std::size_t row_bytes = 0;
    std::unique_ptr<unsigned char, Free> pixels;
    Vector2 origin;
    double x_dpi = 0.0;
    double y_dpi = 0.0;
};
