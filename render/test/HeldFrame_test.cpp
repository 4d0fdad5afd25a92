#include "compositor/imagelib/lib/hdr/CNodeRasterImage.h"
#include "kivlib/hdr/BaseFileFinder.h"
#include "render/hdr/OutputRun.h"
#include "render/hdr/RenderScene.h"
#include "render/src/HeldFrame.h"
#include "scene/hdr/BaseSceneAsset.h"
#include "scene/hdr/KIVAssetManager.h"
#include "scene/hdr/KIVScene.h"
#include "tests/museum/Museum.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

namespace {
/// A picture over a card that fades up to frame 40, where it holds.
struct HeldScene : FadingCard {
    HeldScene() : renderer(scene.get(), 8, 6, 1.0, 0, 0, 8, 0)
    {
        folder.write("art", "a picture");
        std::filesystem::last_write_time(folder.path("art").str(),
                                         std::filesystem::file_time_type::clock::now() -
                                             std::chrono::hours(1));
        folder.write("frame", "encoded");
        auto* image = new CNodeRasterImage(folder.path("art"), scene->inq_graph());
        image->init();
        image->add_to_graph(scene->inq_graph());
        connect(*scene, image, camera);
        scene->inq_xsheet()->set_length(50);
    }

    /// Whether a frame serves for the other, after `change`.
    bool serves(
        int frame, int other, const std::function<void()>& change = [] {}, bool is_hopeless = false)
    {
        HeldFrame held(*scene, renderer, 8, is_hopeless);
        held.will_render(frame);
        FrameReport report;
        report.frame = frame;
        report.file = folder.path("frame");
        held.was_written(report);
        change();
        held.will_render(other);
        return held.open_file_for(other).is_open();
    }

    TempFolder folder;
    RenderScene renderer;
};

struct FoundElsewhere : BaseFileFinder {
    explicit FoundElsewhere(const KIVString& place) : place(place) {}
    KIVString find_replacement(const KIVFile&, const char*, bool*) override { return place; }
    bool files_were_replaced() override { return true; }

    KIVString place;
};
} // namespace

TEST(HeldFrame, serves_where_nothing_can_have_changed)
{
    HeldScene s;
    EXPECT_TRUE(s.serves(41, 45));
    EXPECT_FALSE(s.serves(30, 31)) << "the card fades";
    EXPECT_FALSE(s.serves(
        41, 45, [] {}, true))
        << "the frames are woven of two fields";
    EXPECT_FALSE(s.serves(41, 45, [&s] { s.folder.write("art", "retouched"); }));
    EXPECT_FALSE(s.serves(41, 45, [&s] { std::filesystem::remove(s.folder.path("art").str()); }));
    EXPECT_TRUE(s.serves(41, 45)) << "it is missing in both";
    s.folder.write("art", "new");
    EXPECT_FALSE(s.serves(41, 45)) << "it may change within one tick of the clock";
    std::filesystem::remove(s.folder.path("art").str());
    EXPECT_FALSE(s.serves(41, 45, [&s] { s.folder.write("frame", "retouched"); }));
    set_key(s.camera->inq_angle_subcolumn(), 41, {0.0});
    set_key(s.camera->inq_angle_subcolumn(), 50, {9.0});
    EXPECT_FALSE(s.serves(43, 45)) << "the camera turns";
}

TEST(HeldFrame, looks_at_the_file_that_was_found_in_place_of_a_lost_one)
{
    HeldScene s;
    std::filesystem::rename(s.folder.path("art").str(), s.folder.path("found").str());
    set_file_finder(new FoundElsewhere(s.folder.path("found")));
    s.scene->inq_asset_manager()->lookup_asset(0, RASTER_ASSET)->check_for_lost_file();
    delete_file_finder();
    EXPECT_TRUE(s.serves(41, 45));
    EXPECT_FALSE(s.serves(41, 45, [&s] { s.folder.write("found", "retouched"); }));
}
