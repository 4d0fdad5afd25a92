#include "compositor/affine/lib/hdr/CNodeRotate.h"
#include "compositor/imagelib/lib/hdr/CNodeRasterImage.h"
#include "imagelib/hdr/BitmapProvider.h"
#include "imagelib/hdr/KIVPixmap.h"
#include "render/hdr/RenderScene.h"
#include "tests/museum/Museum.h"
#include "tests/support/Captured.h"
#include "tests/support/Shortage.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

namespace {
/// A picture, and again turned, both scaled down, over a card. Rows of the frame have no gaps.
struct Layers : FadingCard {
    Layers() : renderer(scene.get(), 64, 48, 1.0, 0, 0, 8, 0)
    {
        std::string pixels;
        for (int i = 0; i < 3 * 400 * 300; ++i)
            pixels.push_back(static_cast<char>(i / 7));
        folder.write("art.ppm", "P6 400 300 255\n" + pixels);
        connect(*scene, add_image(), camera);
        auto* turn = add_node<CNodeRotate>(*scene);
        set_key(turn->inq_angle_subcolumn(), 1, {30.0});
        connect(*scene, add_image(), turn);
        connect(*scene, turn, camera);
    }

    CNode* add_image()
    {
        image = new CNodeRasterImage(folder.path("art.ppm"), scene->inq_graph());
        image->init();
        image->add_to_graph(scene->inq_graph());
        return image;
    }

    std::unique_ptr<KIVPixmap> render()
    {
        renderer.set_camera_view();
        return std::unique_ptr<KIVPixmap>(renderer.render_frame(30, nullptr));
    }

    TempFolder folder;
    RenderScene renderer;
    CNodeRasterImage* image = nullptr;
};

std::string inq_pixels(const std::unique_ptr<KIVPixmap>& frame)
{
    return frame ? std::string(reinterpret_cast<const char*>(frame->inq_data()), frame->inq_bytes())
                 : "no frame";
}
} // namespace

TEST(WantOfMemory, ends_in_no_frame_unless_a_picture_could_not_be_read)
{
    Layers layers;
    BitmapProvider& provider = *inq_bitmap_provider_8();
    const std::size_t old_limit = BitmapProvider::inq_cache_limit();
    BitmapProvider::set_cache_limit(0); // every frame reads the picture anew
    const int id = layers.image->inq_mipmap_id(30, 8);
    const std::string right = inq_pixels(layers.render());
    int missing = 0;
    int lost = 0;
    long before = 0;
    for (bool has_lacked = true; has_lacked; ++before) {
        const Captured console;
        std::unique_ptr<KIVPixmap> frame;
        provider.forget_loss(id);
        has_lacked = lacks_memory_after(before, [&] { frame = layers.render(); });
        const bool is_lost = frame && !provider.inq_loss(id).is_null();
        missing += frame ? 0 : 1;
        lost += is_lost ? 1 : 0;
        EXPECT_TRUE(!frame || is_lost || inq_pixels(frame) == right) << before;
        EXPECT_TRUE(inq_pixels(layers.render()) == right) << before;
    }
    EXPECT_GT(missing, 10);
    EXPECT_GT(lost, 1);
    BitmapProvider::set_cache_limit(old_limit);
}
