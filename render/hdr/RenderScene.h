#pragma once

#include "kivlib/hdr/KIVColour.h"
#include "kivlib/hdr/Matrix.h"
#include "kivlib/hdr/StoredClass.h"

class AbortPanel;
class CDataImage;
class CNode;
class KIVPixmap;
class KIVRectangle;
class KIVScene;

/// Turns a frame of a scene into a pixmap. With a fixed size the pixmap shows the camera's nominal
/// view; with a resolution its size follows the camera node frame by frame (dynamic view). One that
/// was stored without its scene renders nothing, and has no dynamic view.
class RenderScene : public KIVObject {
    KIV_STORED(RenderScene, KIVObject);

public:
    /// A fixed size in pixels. `quality` 0 is the high one; `bits` are those of a channel, 8 or 16.
    RenderScene(KIVScene* scene, int width, int height, double pixel_aspect, int quality,
                int exec_flag, int bits, int low_quality);

    /// A dynamic view with `dpi` pixels for 60 world units.
    RenderScene(KIVScene* scene, double dpi, double pixel_aspect, int quality, int exec_flag,
                int bits, int low_quality);
    explicit RenderScene(KIVIStream& stream);

    void storer(KIVOStream& stream) override;

    void set_is_colour(bool colour) { is_colour = colour; }

    /// Frames that need a background get one with alpha, whatever its colour.
    void set_is_rgba(bool rgba) { is_rgba = rgba; }

    /// The colour of all that the image doesn't cover; opaque black at first.
    void set_background_colour(const KIVColour& colour) { background = colour; }

    /// The nominal camera view, its middle in the middle of the pixmap. Called before each frame.
    /// This and the next two are for a fixed size alone.
    void set_camera_view();

    /// `transform` maps world units to units of the pixmap's width over the camera's.
    void set_view_transform(const Matrix44& transform);

    /// Evaluates the graph at `node`, which the graph keeps, instead of at its root.
    void set_view_transform_and_node(const Matrix44& transform, CNode* node);
    const Matrix44& inq_camera_to_pixmap_transform() const { return camera_to_pixmap; }

    /// The frame, for the caller to delete. Null if the graph has no root, if the panel, which
    /// may be null, reports an abort, or if memory runs out.
    gsl::owner<KIVPixmap*> render_frame(int frame, AbortPanel* panel);

    bool inq_is_frame_the_same(int a, int b);

    /// Fits size and transform to the camera node's view; gives the view's bottom left corner in
    /// the world.
    Vector2 set_dynamic_view_transform(int frame);

    /// That of the camera node right below the graph's root; else the identity.
    Matrix44 inq_world_to_camera_transform(int frame);

    /// The camera's rectangle, mapped by `camera_to_world`: where its axes meet the border, and
    /// their true lengths.
    KIVRectangle inq_w_camera_rect(const Matrix44& camera_to_world);

private:
    template <class Record> void record(Record& r);

    bool check_is_fixed(int line) const;
    CNode* inq_root() const;
    double inq_camera_scale() const;
    gsl::owner<KIVPixmap*> execute(int frame, AbortPanel* panel, CNode* root);
    void request(CDataImage& image, int frame) const;
    gsl::owner<KIVPixmap*> complete(CDataImage& image) const;
    gsl::owner<KIVPixmap*> make_background_pixmap() const;
    void place(KIVPixmap& pixmap, const Vector2& origin) const;

    bool is_colour = true;
    bool is_rgba = false;
    KIVScene* scene; // not owned
    bool dynamic_view = false;
    int width = 0; // pixels; of the last frame in a dynamic view
    int height = 0;
    double dpi = 0.0; // dynamic view alone
    double pixel_aspect = 1.0;
    int quality = 0;
    int exec_flag = 0;
    int bits = 8;
    int low_quality = 0;        // no operation reads it
    CNode* view_node = nullptr; // not owned
    Matrix44 camera_to_pixmap;
    KIVColour background{0.0};
};
