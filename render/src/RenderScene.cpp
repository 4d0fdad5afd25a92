#include "render/hdr/RenderScene.h"

#include "compositor/imagelib/lib/hdr/CDataImage.h"
#include "compositor/lib/hdr/CNodeChannel.h"
#include "compositor/lib/hdr/CNodeChannelSet.h"
#include "compositor/lib/hdr/CNodeConnection.h"
#include "compositor/lib/hdr/CNodeGraph.h"
#include "compositor/lib/hdr/DataType.h"
#include "compositor/lib/hdr/GraphExec.h"
#include "coversheet/lib/hdr/KIVCamera.h"
#include "imagelib/hdr/KIVPixmap.h"
#include "kivlib/hdr/AbortPanel.h"
#include "kivlib/hdr/IntBBox.h"
#include "kivlib/hdr/KIVRectangle.h"
#include "kivlib/hdr/Record.h"
#include "kivlib/hdr/entry_point.h"
#include "kivlib/hdr/report_error.h"
#include "kivlib/hdr/units.h"
#include "scene/hdr/KIVScene.h"
#include "xsheet/column/hdr/XSheet.h"
#include "xsheet/node/hdr/DWNode.h"

KIV_STORED_CLASS(RenderScene, 89);

namespace {
constexpr char SOURCE_PLACE[] = "render/src/RenderScene";

// Lines that the reports name.
constexpr int CAMERA_VIEW_LINE = 300;
constexpr int VIEW_TRANSFORM_LINE = 331;
constexpr int VIEW_TRANSFORM_AND_NODE_LINE = 359;

constexpr double OPAQUE_ALPHA = 0.998046875; // from here on a background counts as opaque
constexpr double ROUND_UP = 0.99;            // all but the tiniest fraction makes a pixel
constexpr double LEAST_SIZE = 1e-6;

int pixels(double size)
{
    constexpr double MOST = 1e9; // no memory holds it, so the frame is null
    const double whole = std::floor(size + ROUND_UP);
    return whole >= 1.0 ? static_cast<int>(std::min(whole, MOST)) : 1; // 1 for what is no number
}

Matrix44 scale(double x, double y)
{
    Matrix44 matrix;
    matrix.set_scale(Vector3(x, y, 1.0));
    return matrix;
}

/// The camera's origin in the middle of the pixmap.
Matrix44 centred_view(double x_scale, double y_scale, int width, int height)
{
    Matrix44 to_middle;
    to_middle.set_translation(Vector3(width / 2.0, height / 2.0, 0.0));
    return to_middle * scale(x_scale, y_scale);
}

/// What stands at the other end of the node's one connection; null unless there is just one
/// channel with one connection.
CNode* find_only_input(const CNode& node)
{
    if (node.inq_n_input_channels() != 1)
        return nullptr;
    const CNodeChannel* channel = node.inq_inputs()->inq_channel(0);
    if (channel->inq_connections_list()->count() != 1)
        return nullptr;
    const CNodeChannel* output = channel->find_connection_at(0)->inq_output_channel();
    return output ? output->inq_node() : nullptr;
}
} // namespace

RenderScene::RenderScene(KIVScene* scene, int width, int height, double pixel_aspect, int quality,
                         int exec_flag, int bits, int low_quality)
    : scene(scene), width(width), height(height), pixel_aspect(pixel_aspect), quality(quality),
      exec_flag(exec_flag), bits(bits), low_quality(low_quality)
{}

RenderScene::RenderScene(KIVScene* scene, double dpi, double pixel_aspect, int quality,
                         int exec_flag, int bits, int low_quality)
    : scene(scene), dynamic_view(true), dpi(dpi), pixel_aspect(pixel_aspect), quality(quality),
      exec_flag(exec_flag), bits(bits), low_quality(low_quality)
{}

template <class Record> void RenderScene::record(Record& r)
{
    r.link(scene);
    r.value(width);
    r.value(height);
    r.value(pixel_aspect);
}

KIV_STORED_RECORD(RenderScene);

bool RenderScene::check_is_fixed(int line) const
{
    if (dynamic_view)
        report_error(SOURCE_PLACE, line) << "Program error.\n";
    return !dynamic_view;
}

double RenderScene::inq_camera_scale() const
{
    return width / KIVCamera::inq_nominal_camera_width();
}

void RenderScene::set_camera_view()
{
    if (!check_is_fixed(CAMERA_VIEW_LINE))
        return;
    const double s = inq_camera_scale();
    camera_to_pixmap = centred_view(s, s * pixel_aspect, width, height);
}

void RenderScene::set_view_transform(const Matrix44& transform)
{
    if (check_is_fixed(VIEW_TRANSFORM_LINE))
        camera_to_pixmap = scale(inq_camera_scale(), inq_camera_scale()) * transform;
}

void RenderScene::set_view_transform_and_node(const Matrix44& transform, CNode* node)
{
    if (!check_is_fixed(VIEW_TRANSFORM_AND_NODE_LINE))
        return;
    camera_to_pixmap = scale(inq_camera_scale(), inq_camera_scale()) * transform;
    view_node = node;
}

bool RenderScene::inq_is_frame_the_same(int a, int b)
{
    return !scene || !scene->inq_xsheet() || scene->inq_xsheet()->is_frame_the_same(a, b);
}

/// Null without a scene: one that was stored may have none.
CNode* RenderScene::inq_root() const
{
    const CNodeGraph* graph = scene ? scene->inq_graph() : nullptr;
    return graph ? graph->inq_root_node() : nullptr;
}

gsl::owner<KIVPixmap*> RenderScene::render_frame(int frame, AbortPanel* panel)
{
    CNode* root = inq_root();
    if (!root)
        return nullptr;
    return without_exceptions<KIVPixmap*>(nullptr, [&] { return execute(frame, panel, root); });
}

gsl::owner<KIVPixmap*> RenderScene::execute(int frame, AbortPanel* panel, CNode* root)
{
    const Vector2 origin = dynamic_view ? set_dynamic_view_transform(frame) : Vector2();
    GraphExec exec(IMAGE_TYPE, view_node ? view_node : root, 0);
    if (exec_flag != 0)
        exec.set_is_restricted(true);
    auto* image = static_cast<CDataImage*>(exec.inq_root_data());
    if (image) {
        request(*image, frame);
        exec.setup_data();
        exec.generate_data(panel);
    }
    if (panel && panel->inq_abort())
        return nullptr;
    std::unique_ptr<KIVPixmap> result(image ? complete(*image) : make_background_pixmap());
    if (!result || !result->finish_drawing(panel))
        return nullptr;
    place(*result, origin);
    return result.release();
}

void RenderScene::request(CDataImage& image, int frame) const
{
    const IntBBox whole(IntRect(height, 0, 0, width));
    image.set_request_data(frame, is_colour, bits == 16, quality, camera_to_pixmap, whole);
    image.set_inkpaint_quality(quality);
}

/// The image as the frame, over the background unless it is opaque and covers all of it.
gsl::owner<KIVPixmap*> RenderScene::complete(CDataImage& image) const
{
    const IntBBox box = image.inq_image_ibbox_v();
    std::unique_ptr<KIVPixmap> pixmap(image.extract_pixmap());
    if (!pixmap || box.inq_is_empty())
        return make_background_pixmap();
    if (!pixmap->inq_alpha() && pixmap->inq_width() >= width && pixmap->inq_height() >= height)
        return pixmap.release();
    std::unique_ptr<KIVPixmap> whole(make_background_pixmap());
    if (whole) {
        const IntVector2 corner = box.inq_rectangle().get_top_left();
        whole->composite_and_delete(pixmap.release(), IntVector2(corner.x(), height - corner.y()));
    }
    return whole.release();
}

gsl::owner<KIVPixmap*> RenderScene::make_background_pixmap() const
{
    const bool has_alpha = is_rgba || background.inq_alpha() < OPAQUE_ALPHA;
    const PixType type = make_pix_type(has_alpha ? 4 : 3, bits);
    auto pixmap = std::make_unique<KIVPixmap>(width, height, type, nullptr, false);
    if (pixmap->inq_is_empty())
        return nullptr;
    pixmap->set_colour(background);
    return pixmap.release();
}

/// Where the pixmap lies in the world, and how fine it is.
void RenderScene::place(KIVPixmap& pixmap, const Vector2& origin) const
{
    if (dynamic_view) {
        pixmap.set_origin(origin);
        pixmap.set_dpi(dpi, pixel_aspect);
        return;
    }
    const KIVRectangle camera = scene->inq_camera()->inq_camera_rect();
    pixmap.set_origin(camera.get_bottom_left());
    pixmap.set_dpi(width * UNITS_PER_INCH / camera.inq_width(), pixel_aspect);
}

Vector2 RenderScene::set_dynamic_view_transform(int frame)
{
    Matrix44 camera_to_world = inq_world_to_camera_transform(frame);
    camera_to_world.invert();
    KIVRectangle world = inq_w_camera_rect(camera_to_world);
    KIVRectangle camera = scene->inq_camera()->inq_camera_rect();
    const double fine_width = world.inq_width() * dpi / UNITS_PER_INCH;
    const double fine_height = pixel_aspect * world.inq_height() * dpi / UNITS_PER_INCH;
    width = pixels(fine_width);
    height = pixels(fine_height);
    if (fine_width > LEAST_SIZE && fine_height > LEAST_SIZE) {
        const double x = width / fine_width;
        const double y = height / fine_height;
        world = KIVRectangle(world.get_centre(), world.inq_width() * x, world.inq_height() * y);
        camera = KIVRectangle(camera.get_centre(), camera.inq_width() * x, camera.inq_height() * y);
    }
    camera_to_pixmap =
        centred_view(width / camera.inq_width(), height / camera.inq_height(), width, height);
    return world.get_bottom_left();
}

Matrix44 RenderScene::inq_world_to_camera_transform(int frame)
{
    const CNode* root = inq_root();
    const CNode* node = root ? find_only_input(*root) : nullptr;
    if (!node || std::strcmp(node->class_name(), "CNodeCamera") != 0)
        return {};
    return static_cast<const DWNode*>(node)->inq_node_transform(frame);
}

KIVRectangle RenderScene::inq_w_camera_rect(const Matrix44& camera_to_world)
{
    const double w = KIVCamera::inq_nominal_camera_width();
    const double h = w / scene->inq_camera()->inq_aspect_ratio();
    const Vector2 west = camera_to_world * Vector2(-w / 2, 0.0);
    const Vector2 east = camera_to_world * Vector2(w / 2, 0.0);
    const Vector2 south = camera_to_world * Vector2(0.0, -h / 2);
    const Vector2 north = camera_to_world * Vector2(0.0, h / 2);
    const double left = west.elem(0);
    const double bottom = south.elem(1);
    return {left, bottom, left + west.distance(east), bottom + south.distance(north)};
}
