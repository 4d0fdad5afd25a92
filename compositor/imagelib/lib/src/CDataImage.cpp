#include "compositor/imagelib/lib/hdr/CDataImage.h"

#include "compositor/lib/hdr/CDataDescriptor.h"
#include "compositor/lib/hdr/CNodeOpArray.h"
#include "imagelib/hdr/MipMap.h"
#include "imagelib/hdr/PixmapImage.h"
#include "kivlib/hdr/AbortPanel.h"
#include "kivlib/hdr/IntArray.h"
#include "kivlib/hdr/KIVColour.h"
#include "kivlib/hdr/Matrix.h"

#include <limits>
#include <new>
#include <typeinfo>

namespace {

/// Of a tiled image only a part is fetched once less than this share of it lies in the target.
constexpr double WHOLE_IMAGE_SHARE = 0.8;

enum Corner { TOP_LEFT, TOP_RIGHT, BOTTOM_RIGHT, BOTTOM_LEFT, N_CORNERS };

using Corners = std::array<Vector2, N_CORNERS>;

Corners copy_corners(const Vector2* corners)
{
    return {corners[TOP_LEFT], corners[TOP_RIGHT], corners[BOTTOM_RIGHT], corners[BOTTOM_LEFT]};
}

/// The nearest whole number of pixels. The same in every target: an odd picture at half its size
/// must not come from another copy because its corners were rounded elsewhere.
int round_length(double length)
{
    constexpr double MOST = std::numeric_limits<int>::max();
    constexpr double HALF_UP = 0.5 + 1e-9;
    return length + HALF_UP < MOST ? static_cast<int>(length + HALF_UP)
                                   : std::numeric_limits<int>::max();
}

PixType layer_type(const CDataRender& data)
{
    constexpr int COLOUR_AND_ALPHA = 4;
    return make_pix_type(COLOUR_AND_ALPHA, data.inq_bits_per_sample());
}

/// Without memory for its pixels it throws: with an empty one the layers would be lost, and the
/// frame would look finished.
gsl::owner<KIVPixmap*> new_pixmap_for(const IntBBox& box, PixType type)
{
    const IntRect& area = box.inq_rectangle();
    auto pixmap =
        std::make_unique<KIVPixmap>(static_cast<int>(area.get_width()),
                                    static_cast<int>(area.get_height()), type, nullptr, false);
    if (pixmap->inq_is_empty() && area.get_width() > 0 && area.get_height() > 0)
        throw std::bad_alloc();
    return pixmap.release();
}

void make_transparent(KIVPixmap& pixmap)
{
    PixmapImage(&pixmap).clear();
}

/// Where the top left pixel of `layer` comes to in a pixmap of `box`, in rows from the top.
IntVector2 find_offset(const IntBBox& layer, const IntBBox& box)
{
    const IntVector2 up = layer.inq_rectangle().get_top_left() - box.inq_rectangle().get_top_left();
    return {up.x(), -up.y()};
}

bool is_mostly_visible(const KIVRectangle& frame, int width, int height)
{
    const double image_area = static_cast<double>(width) * height;
    return frame.inq_width() * frame.inq_height() >= WHOLE_IMAGE_SHARE * image_area;
}

/// What `target` shows of a tiled image, with `corners` moved to it; null if the whole is wanted
/// or nothing came.
gsl::owner<KIVPixmap*> new_visible_region(MipMap& image, Corners& corners, int width, int height,
                                          const KIVPixmap& target)
{
    const KIVRectangle frame = target.get_frame();
    if (!image.inq_tiled() || is_mostly_visible(frame, width, height))
        return nullptr;
    const Matrix33 to_image =
        points_to_unit_square(corners[BOTTOM_LEFT], corners[BOTTOM_RIGHT], corners[TOP_LEFT]);
    const Matrix33 to_target =
        unit_square_to_points(corners[BOTTOM_LEFT], corners[BOTTOM_RIGHT], corners[TOP_LEFT]);
    Corners part{frame.get_top_left(), frame.get_top_right(), frame.get_bottom_right(),
                 frame.get_bottom_left()};
    for (Vector2& point : part)
        point = to_image * (point - target.inq_origin());
    gsl::owner<KIVPixmap*> region = image.new_region_pixmap(part.data(), width, height);
    for (int i = 0; region && i < N_CORNERS; ++i)
        corners[static_cast<std::size_t>(i)] = to_target * part[static_cast<std::size_t>(i)];
    return region;
}

/// The fourth corner follows from the three, so every affine map is served.
void draw(RenderableImage& image, const Corners& corners, KIVPixmap* target, bool high_quality)
{
    PixmapImage canvas(target);
    canvas.setHighQuality(high_quality);
    image.compositeAffine(corners[BOTTOM_LEFT].x(), corners[BOTTOM_LEFT].y(), corners[TOP_LEFT].x(),
                          corners[TOP_LEFT].y(), corners[TOP_RIGHT].x(), corners[TOP_RIGHT].y(),
                          &canvas, 0);
}

} // namespace

CDataImage::~CDataImage() = default;

CData* CDataImage::new_data_s()
{
    return new CDataImage;
}

CDataImage* CDataImage::from(CData* data)
{
    const bool is_image = data && data->inq_type() == inq_type_s();
    return is_image ? static_cast<CDataImage*>(data) : nullptr;
}

CDataDescriptor* CDataImage::inq_desc_s()
{
    constexpr bool CAN_UNION = true;
    constexpr bool CAN_ORDER = true;
    static CDataDescriptor* const descriptor = new CDataDescriptor(
        "CDataImage", "BG/OL", inq_type_s(), new_data_s, CAN_UNION, nullptr, CAN_ORDER);
    return descriptor;
}

CDataDescriptor* CDataImage::inq_desc() const
{
    return inq_desc_s();
}

int CDataImage::inq_type() const
{
    return inq_type_s();
}

bool CDataImage::inq_request_equals(const CData* other) const
{
    return typeid(*this) == typeid(CDataImage) &&
           inq_is_asked_like(*static_cast<const CDataImage*>(other));
}

gsl::owner<KIVPixmap*> CDataImage::extract_pixmap()
{
    if (pixmap)
        pixmap->set_origin(Vector2());
    return pixmap.release();
}

bool CDataImage::finish_drawing(AbortPanel* abort) const
{
    return !pixmap || pixmap->finish_drawing(abort);
}

void CDataImage::set_generated_data(gsl::owner<KIVPixmap*> picture)
{
    did_composite = false;
    if (picture != pixmap.get())
        pixmap.reset(picture);
}

void CDataImage::set_did_composite()
{
    if (!pixmap)
        did_composite = true;
}

KIVPixmap* CDataImage::create_pixmap(PixType type)
{
    if (!pixmap) {
        pixmap.reset(new_pixmap_for(inq_image_ibbox_v(), type));
        make_transparent(*pixmap);
    }
    return place_pixmap();
}

KIVPixmap* CDataImage::create_pixmap(const KIVColour& colour, PixType type)
{
    [[maybe_unused]] const KIVPixmap* let_go = pixmap.release();
    pixmap.reset(new_pixmap_for(inq_image_ibbox_v(), type));
    pixmap->set_colour(colour);
    return place_pixmap();
}

KIVPixmap* CDataImage::place_pixmap()
{
    pixmap->set_origin(-Vector2(inq_image_ibbox_v().inq_rectangle().get_bottom_left()));
    return pixmap.get();
}

KIVPixmap* CDataImage::make_empty_layer()
{
    pixmap.reset(new_pixmap_for(inq_image_ibbox_v(), layer_type(*this)));
    make_transparent(*pixmap);
    return pixmap.get();
}

void CDataImage::set_generated_data(MipMap* image, const Vector2* corners, AbortPanel*)
{
    did_composite = false;
    pixmap.reset();
    const IntBBox& box = inq_image_ibbox_v();
    const IntRect& area = box.inq_rectangle();
    if (box.inq_is_empty() || area.get_width() <= 0 || area.get_height() <= 0)
        return;
    Corners local = copy_corners(corners);
    for (Vector2& corner : local)
        corner = corner - Vector2(area.get_bottom_left());
    composite_generated_data(image, local.data(), make_empty_layer());
}

void CDataImage::composite_generated_data(MipMap* image, const Vector2* corners, KIVPixmap* target)
{
    Corners placed = copy_corners(corners);
    const int width = round_length(placed[TOP_RIGHT].distance(placed[TOP_LEFT]));
    const int height = round_length(placed[BOTTOM_RIGHT].distance(placed[TOP_RIGHT]));
    const std::unique_ptr<KIVPixmap> region(
        new_visible_region(*image, placed, width, height, *target));
    if (region)
        region->fix_pixels(); // so that its drawing can wait
    KIVPixmap* source = region ? region.get() : image->inq_pixmap(width, height);
    if (!source)
        return;
    source->load_data_if_needed();
    PixmapImage picture(source);
    draw(picture, placed, target, is_high_quality());
    set_did_composite();
}

void CDataImage::composite_generated_data(RenderableImage* image, const Vector2* corners,
                                          KIVPixmap* target)
{
    draw(*image, copy_corners(corners), target, is_high_quality());
    set_did_composite();
}

void CDataImage::composite_generated_data(KIVPixmap* source, KIVPixmap* target)
{
    PixmapImage canvas(target);
    canvas.setHighQuality(is_high_quality());
    PixmapImage(source).compositeAt(0, 0, &canvas, 0);
    set_did_composite();
}

// The first layer is the bottom one: it brings its alpha, and what comes later goes over it.
void CDataImage::union_generated_data_from(CData* input, AbortPanel*)
{
    CDataImage* layer = from(input);
    if (!layer)
        return;
    std::unique_ptr<KIVPixmap> picture(layer->extract_pixmap());
    if (layer->did_composite) {
        set_did_composite();
        return;
    }
    if (!picture || layer->inq_image_ibbox_v().inq_is_empty())
        return;
    const IntVector2 offset = find_offset(layer->inq_image_ibbox_v(), inq_image_ibbox_v());
    if (pixmap)
        pixmap->composite_and_delete(picture.release(), offset);
    else if (layer->inq_image_ibbox_v() == inq_image_ibbox_v())
        pixmap = std::move(picture);
    else
        make_empty_layer()->copy_and_delete(picture.release(), offset);
}

void CDataImage::union_generated_data_from(CNodeOpArray* inputs, AbortPanel* abort)
{
    if (!inq_image_ibbox_v().inq_is_empty())
        union_generated_data_from(inputs, abort, sort_input_order(inputs));
}

void CDataImage::union_generated_data_from(CNodeOpArray* inputs, AbortPanel* abort,
                                           gsl::owner<IntArray*> order)
{
    const std::unique_ptr<const IntArray> bottom_up(order);
    if (pixmap) {
        did_composite = true; // sources have drawn into this very datum
        return;
    }
    // One input in a shared target means that all are: whole trees go one way or the other.
    if (!inq_image_ibbox_v().inq_is_empty() && inq_any_did_composite(*inputs)) {
        set_did_composite();
        return;
    }
    for (int i = 0; i < bottom_up->size(); ++i) {
        if (abort && abort->inq_abort())
            return;
        union_generated_data_from(inputs->inq_data(bottom_up->inq_element(i)), abort);
    }
}

bool CDataImage::inq_any_did_composite(const CNodeOpArray& inputs)
{
    for (int i = 0; i < inputs.inq_n_nodes(); ++i) {
        const CDataImage* layer = from(inputs.inq_data(i));
        if (layer && layer->did_composite)
            return true;
    }
    return false;
}

void CDataImage::copy_generated_data_to(CData* consumer, AbortPanel*)
{
    CDataImage* to = from(consumer);
    if (!to)
        return;
    if (did_composite && !pixmap)
        to->set_did_composite();
    else
        to->set_generated_data(extract_pixmap());
}

void CDataImage::clear_generated_data()
{
    if (did_composite)
        return;
    CDataRender::clear_generated_data();
    pixmap.reset();
}

void CDataImage::reset_data()
{
    clear_immediate_data();
    CDataRender::clear_generated_data();
    did_composite = false;
    pixmap.reset();
}
