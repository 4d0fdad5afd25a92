#include "coversheet/lib/hdr/CoverSheet.h"
#include "imagelib/hdr/KIVPixmap.h"
#include "kivlib/hdr/AbortPanel.h"
#include "render/hdr/RenderScene.h"
#include "tests/museum/Museum.h"
#include "tests/support/Captured.h"
#include "tests/support/OldRecord.h"

#include <gtest/gtest.h>

namespace {
class Aborted : public AbortPanel {
public:
    bool inq_abort() override { return true; }
};

using Pixmap = std::unique_ptr<KIVPixmap>;

Scene empty_scene()
{
    Scene scene(KIVScene::inq_unsetup_scene());
    scene->inq_graph()->set_root_node(add_node<CNodeRostrum>(*scene));
    return scene;
}

std::string pixel(const KIVPixmap& pixmap)
{
    std::string text;
    for (int i = 0; i < pixmap.inq_samples_per_pixel(); ++i)
        text += std::to_string(pixmap.inq_data()[i]) + " ";
    return text;
}

void set_camera(const FadingCard& museum, double x, double angle, double width)
{
    auto* move = static_cast<MoveColumn*>(museum.camera->inq_pos_subcolumn());
    set_key(move->find_sub_column(MoveColumn::XPOS_SUBCOL), 1, {x});
    set_key(museum.camera->inq_angle_subcolumn(), 1, {angle});
    set_key(museum.camera->inq_width_subcolumn(), 1, {width});
}
} // namespace

TEST(RenderScene, an_empty_frame_is_all_background)
{
    const Scene scene = empty_scene();
    RenderScene renderer(scene.get(), 8, 6, 1.0, 0, 0, 8, 0);
    renderer.set_camera_view();
    Pixmap frame(renderer.render_frame(1, nullptr));
    EXPECT_EQ(frame->inq_type(), PT_RGB_8);
    EXPECT_EQ(pixel(*frame), "0 0 0 ");
    EXPECT_DOUBLE_EQ(frame->inq_x_dpi(), 8 * 60.0 / 720.0);

    renderer.set_background_colour(KIVColour(0.0, 0.0, 0.0, 0.0));
    frame.reset(renderer.render_frame(1, nullptr));
    EXPECT_EQ(frame->inq_type(), PT_RGBA_8);
    EXPECT_EQ(pixel(*frame), "0 0 0 0 ");

    renderer.set_background_colour(KIVColour(1.0, 1.0, 1.0, 0.998046875));
    frame.reset(renderer.render_frame(1, nullptr));
    EXPECT_EQ(frame->inq_type(), PT_RGB_8);
    renderer.set_is_rgba(true);
    frame.reset(renderer.render_frame(1, nullptr));
    EXPECT_EQ(frame->inq_type(), PT_RGBA_8);
}

TEST(RenderScene, gives_no_frame_without_a_root_or_when_it_is_stopped)
{
    const Scene scene(KIVScene::inq_unsetup_scene());
    EXPECT_EQ(RenderScene(scene.get(), 8, 6, 1.0, 0, 0, 8, 0).render_frame(1, nullptr), nullptr);
    const FadingCard museum;
    Aborted panel;
    EXPECT_EQ(RenderScene(museum.scene.get(), 8, 6, 1.0, 0, 0, 8, 0).render_frame(1, &panel),
              nullptr);
}

TEST(RenderScene, a_dynamic_view_follows_the_camera)
{
    const FadingCard museum;
    set_camera(museum, 100.0, 0.0, 360.0);
    museum.scene->inq_cover_sheet()->set_aspect_ratio(2.0);
    RenderScene renderer(museum.scene.get(), 10.0, 1.0, 0, 0, 8, 0);
    const Pixmap frame(renderer.render_frame(1, nullptr));
    EXPECT_EQ(frame->inq_width(), 60);
    EXPECT_EQ(frame->inq_height(), 30);
    EXPECT_EQ(frame->inq_origin(), Vector2(-80.0, -90.0));
    EXPECT_EQ(frame->inq_x_dpi(), 10.0);
    EXPECT_EQ(renderer.inq_world_to_camera_transform(1) * Vector2(100.0, 0.0), Vector2(0.0, 0.0));
}

TEST(RenderScene, a_dynamic_view_of_a_turned_camera_has_its_true_lengths)
{
    const FadingCard museum;
    set_camera(museum, 100.0, 30.0, 360.0); // half the nominal width
    museum.scene->inq_cover_sheet()->set_aspect_ratio(2.0);
    constexpr double DPI = 10.013; // a thirteenth of a pixel more than 60 makes one more
    RenderScene renderer(museum.scene.get(), DPI, 2.0, 0, 0, 8, 0);
    const Pixmap frame(renderer.render_frame(1, nullptr));
    EXPECT_EQ(frame->inq_width(), 61);
    EXPECT_EQ(frame->inq_height(), 61); // 180 units, the pixels half as high as wide
    const double grown = 61.0 / (360.0 * DPI / 60.0);
    const double cosine = std::sqrt(0.75);
    EXPECT_NEAR(frame->inq_origin().elem(0), 100.0 - 180.0 * cosine + 180.0 * (1.0 - grown), 1e-9);
    EXPECT_NEAR(frame->inq_origin().elem(1), -90.0 * cosine + 90.0 * (1.0 - grown), 1e-9);
    const Vector2 corner = renderer.inq_camera_to_pixmap_transform() * Vector2(360.0, 180.0);
    EXPECT_NEAR(corner.elem(0), 30.5 + 30.5 / grown, 1e-9);
    EXPECT_NEAR(corner.elem(1), 30.5 + 30.5 / grown, 1e-9);
}

TEST(RenderScene, fixed_views_are_scaled_to_the_width)
{
    const FadingCard museum;
    auto* other = add_node<CNodeScreen>(*museum.scene);
    set_key(other->inq_subcolumn(), 1, {1.0, 0.0, 0.0});
    RenderScene renderer(museum.scene.get(), 100, 50, 2.0, 0, 0, 8, 0);
    renderer.set_camera_view();
    EXPECT_EQ(renderer.inq_camera_to_pixmap_transform() * Vector2(72.0, 72.0), Vector2(60.0, 45.0));
    Matrix44 move;
    move.set_translation(Vector3(36.0, 72.0, 0.0));
    renderer.set_view_transform(move);
    EXPECT_EQ(renderer.inq_camera_to_pixmap_transform() * Vector2(0.0, 0.0), Vector2(5.0, 10.0));
    EXPECT_EQ(pixel(*Pixmap(renderer.render_frame(40, nullptr))), "255 255 255 ");
    renderer.set_view_transform_and_node(move, other);
    EXPECT_EQ(renderer.inq_camera_to_pixmap_transform() * Vector2(0.0, 0.0), Vector2(5.0, 10.0));
    EXPECT_EQ(pixel(*Pixmap(renderer.render_frame(40, nullptr))), "255 0 0 ");
    RenderScene restricted(museum.scene.get(), 100, 50, 2.0, 0, 1, 8, 0);
    EXPECT_EQ(pixel(*Pixmap(restricted.render_frame(40, nullptr))), "0 0 0 ");
}

TEST(RenderScene, a_view_of_no_size_is_one_pixel_and_one_beyond_measure_none)
{
    const FadingCard museum;
    const auto render = [&](double dpi) {
        RenderScene renderer(museum.scene.get(), dpi, 1.0, 0, 0, 8, 0);
        return Pixmap(renderer.render_frame(1, nullptr));
    };
    const Pixmap least = render(0.0);
    EXPECT_EQ(least->inq_width(), 1);
    EXPECT_EQ(least->inq_height(), 1);
    EXPECT_EQ(render(1e12), nullptr);
}

TEST(RenderScene, comes_back_with_its_size_and_without_a_scene_renders_nothing)
{
    const RenderScene renderer(nullptr, 320, 200, 0.5, 1, 1, 16, 1);
    const auto back = stored_and_read(renderer);
    ASSERT_TRUE(back);
    back->set_camera_view();
    EXPECT_EQ(back->inq_camera_to_pixmap_transform() * Vector2(0.0, 0.0), Vector2(160.0, 100.0));
    EXPECT_EQ(back->render_frame(1, nullptr), nullptr);
    EXPECT_TRUE(back->inq_is_frame_the_same(1, 2));
}

TEST(RenderScene, a_camera_that_is_not_next_to_the_root_is_not_followed)
{
    const FadingCard museum;
    set_camera(museum, 100.0, 0.0, 360.0);
    connect(*museum.scene, museum.card, museum.output);
    RenderScene renderer(museum.scene.get(), 10.0, 1.0, 0, 0, 8, 0);
    EXPECT_EQ(renderer.inq_world_to_camera_transform(1), Matrix44());
}

TEST(RenderScene, fixed_views_are_refused_in_dynamic_mode)
{
    const Captured captured;
    const FadingCard museum;
    RenderScene renderer(museum.scene.get(), 10.0, 1.0, 0, 0, 8, 0);
    renderer.set_camera_view();
    renderer.set_view_transform(Matrix44());
    renderer.set_view_transform_and_node(Matrix44(), museum.card);
    EXPECT_EQ(captured.inq_errors(), "render/src/RenderScene, line 300: Program error.\n"
                                     "render/src/RenderScene, line 331: Program error.\n"
                                     "render/src/RenderScene, line 359: Program error.\n");
    EXPECT_EQ(renderer.inq_camera_to_pixmap_transform(), Matrix44());
}
