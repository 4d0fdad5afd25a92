#pragma once

class KIVColour;
class MipMap;
class RenderableImage;

#include "compositor/affine/lib/hdr/CDataRender.h"
#include "compositor/lib/hdr/DataType.h"
#include "imagelib/hdr/KIVPixmap.h"

#include <memory>

/// The picture on an image channel. Layers meet here: a source draws itself straight into the
/// datum nearest the root that takes it, and pictures that had to be made apart are merged. The
/// lower left corner of the pixmap lies at the lower left corner of the datum's box. Memory that a
/// pixmap or a drawing lacks is an exception, as of `new`: without one of its layers a frame is
/// none.
class CDataImage : public CDataRender {
public:
    CDataImage() = default;
    CDataImage(const CDataImage&) = delete;
    CDataImage& operator=(const CDataImage&) = delete;
    ~CDataImage() override;

    static CDataDescriptor* inq_desc_s();
    static constexpr int inq_type_s() { return IMAGE_TYPE; }
    static CData* new_data_s();

    /// `data` if it is an image, else null.
    static CDataImage* from(CData* data);

    CDataDescriptor* inq_desc() const override;
    int inq_type() const override;
    void union_generated_data_from(CNodeOpArray* inputs, AbortPanel* abort,
                                   gsl::owner<IntArray*> order) override;
    void union_generated_data_from(CData* input, AbortPanel* abort) override;
    void union_generated_data_from(CNodeOpArray* inputs, AbortPanel* abort) override;
    void copy_generated_data_to(CData* consumer, AbortPanel* abort) override;

    /// A datum that drew itself into a shared target keeps its mark; only `reset_data` takes it.
    void clear_generated_data() override;
    void reset_data() override;

    /// Derived data equal nothing until they compare what their own requests hold.
    bool inq_request_equals(const CData* other) const override;

    /// Draws what waits to be drawn on the pixmap. False if the panel stopped it; the pixels are
    /// then undefined.
    bool finish_drawing(AbortPanel* abort) const;

    /// Gives the pixmap, which may be null, away to the caller. Its origin becomes (0, 0).
    gsl::owner<KIVPixmap*> extract_pixmap();

    /// Takes the pixmap over; it may be null.
    void set_generated_data(gsl::owner<KIVPixmap*> picture);

    /// Says that the pixels went into a shared target. No effect while there is a pixmap here.
    void set_did_composite();

    /// What sources draw into: a pixmap of the box's size, transparent when it is new, with the
    /// box's corner as its origin. The datum keeps it.
    KIVPixmap* create_pixmap(PixType type);

    /// Always a new pixmap, filled with `colour`. An older one is let go and not deleted: take it
    /// out with `extract_pixmap` first.
    KIVPixmap* create_pixmap(const KIVColour& colour, PixType type);

    /// Draws `image` into a new pixmap of this datum's own. In this and the next, `corners` are
    /// four points in pixels with y upwards: top left, top right, bottom right, bottom left. These
    /// are from the corner of view space, those of the next from the target's corner.
    void set_generated_data(MipMap* image, const Vector2* corners, AbortPanel* abort);

    /// These draw the image over `target` and mark this datum by `set_did_composite`.
    void composite_generated_data(MipMap* image, const Vector2* corners, KIVPixmap* target);
    void composite_generated_data(RenderableImage* image, const Vector2* corners,
                                  KIVPixmap* target);

    /// Unscaled, in the top left corner.
    void composite_generated_data(KIVPixmap* source, KIVPixmap* target);

protected:
    KIVPixmap* inq_pixmap() const { return pixmap.get(); }

private:
    bool is_high_quality() const { return inq_render_quality() == 0; }
    static bool inq_any_did_composite(const CNodeOpArray& inputs);
    KIVPixmap* place_pixmap();
    KIVPixmap* make_empty_layer();

    std::unique_ptr<KIVPixmap> pixmap;
    bool did_composite = false; // drawn into a shared target further up
};
