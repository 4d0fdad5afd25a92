#pragma once

class DirectTarget;
class KIVPixmap;

/// Something that can draw itself over a target.
class RenderableImage {
public:
    virtual ~RenderableImage() = default;

    /// Draws the whole image so that its bottom left, top left and top right corners come to the
    /// three points, in the target's pixels with y upwards. False if nothing could be drawn, as the
    /// target or one of the images is missing or the place has no area. Without memory it throws,
    /// as `new` does, and may have drawn a part. `flags` says nothing, here and below.
    virtual int compositeAffine(double x0, double y0, double x1, double y1, double x2, double y2,
                                DirectTarget* target, int flags) = 0;

    /// Draws the image without scaling; (x, y) is the place of its top left pixel, in rows from
    /// the top. False without a target or an image; without memory as above.
    virtual int compositeAt(int x, int y, DirectTarget* target, int flags) = 0;
};

/// Something that can be drawn on.
class DirectTarget {
public:
    virtual ~DirectTarget() = default;

    /// Makes all of it transparent black.
    virtual void clear() = 0;

    /// Null if nothing can be drawn on it.
    virtual KIVPixmap* inq_pixmap() = 0;

    /// Whether images are filtered when they are resampled.
    virtual bool inq_high_quality() const = 0;
};

/// A pixmap for as long as it is drawn, or drawn on; the pixmap outlives it. If that is null, there
/// is nothing to draw, and nothing to draw on.
class PixmapImage : public RenderableImage, public DirectTarget {
public:
    explicit PixmapImage(KIVPixmap* pixmap) : pixmap(pixmap) {}

    int compositeAffine(double x0, double y0, double x1, double y1, double x2, double y2,
                        DirectTarget* target, int flags) override;
    int compositeAt(int x, int y, DirectTarget* target, int flags) override;

    void clear() override;
    KIVPixmap* inq_pixmap() override { return pixmap; }
    bool inq_high_quality() const override { return high_quality; }

    /// On a target: filter what is drawn on it from now on.
    void setHighQuality(bool filtered) { high_quality = filtered; }

    /// On a source: draw it with its alpha times `share`, from 0 to 1.
    void setOpacity(double share) { opacity = share; }

private:
    KIVPixmap* pixmap; // not owned
    bool high_quality = false;
    double opacity = 1.0;
};
