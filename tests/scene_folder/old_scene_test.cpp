#include "scene/hdr/RasterAsset.h"
#include "tests/museum/OneOfEach.h"
#include "tests/support/Captured.h"
#include "tests/support/OldAssets.h"
#include "tests/support/TempFolder.h"
#include "xsheet/sequence/hdr/RasterSeqSubColumn.h"

#include <gtest/gtest.h>

namespace {
/// What the scene's first picture key shows.
RasterSeqCellData* find_picture(KIVScene& scene)
{
    const std::unique_ptr<KIVLinkedList> pictures(
        scene.inq_xsheet()->inq_deep_sub_column_list(RasterSeqSubColumn::TYPE));
    const auto* column = static_cast<SubColumn*>(pictures->at_index(0));
    return static_cast<RasterSeqCellData*>(column->inq_first_key()->inq_data());
}

/// A scene from before the record of its assets: they stand in a file of their own, each under the
/// tag 2 of 5. Its picture is the third.
class OldScene : public testing::Test {
protected:
    OldScene()
    {
        OneOfEach film;
        KIVAssetManager& assets = *film.scene->inq_asset_manager();
        assets.import_asset(KIVFile("/art/walk.tif"), RASTER_ASSET, 2);
        find_picture(*film.scene)
            ->set_asset(static_cast<RasterAsset*>(assets.lookup_asset(2, RASTER_ASSET)));
        EXPECT_TRUE(film.scene->save_to_file(folder.path(), true, true, false));
        std::filesystem::remove(folder.path("kvd").str());
        folder.write("Assets", tell_old_assets());
    }

    TempFolder folder;
    Captured captured;
};
} // namespace

TEST_F(OldScene, is_read_with_its_tags_and_says_what_it_reads)
{
    const Scene scene = load(folder.path());
    ASSERT_TRUE(scene);
    EXPECT_TRUE(captured.inq_alerts().empty());
    const std::string asset = "Read user name : shown\nRead file name : art\\line.tif\n";
    EXPECT_EQ(captured.inq_output(), asset + asset + asset + "MISSING IMAGE FILE : art/line.tif\n");
    const KIVAssetManager& assets = *scene->inq_asset_manager();
    EXPECT_TRUE(assets.inq_needs_saving());
    for (const unsigned int kind : {RASTER_ASSET, LEVEL_ASSET, SOUND_ASSET}) {
        EXPECT_EQ(assets.inq_tags(kind), std::vector<unsigned long>{2}) << kind;
        EXPECT_EQ(assets.inq_asset_count_for_type(kind), 5) << kind;
    }
    EXPECT_EQ(assets.inq_asset_count_for_type(MODEL_ASSET), 0);
    EXPECT_EQ(*find_picture(*scene)->inq_file_name(), "art/line.tif");
    EXPECT_EQ(find_picture(*scene)->inq_asset(), assets.lookup_asset(2, RASTER_ASSET));
}

TEST_F(OldScene, is_saved_in_the_new_form_beside_the_old_file)
{
    ASSERT_TRUE(load(folder.path())->save_to_file(folder.path(), false, true, false));
    EXPECT_EQ(folder.read("Assets"), tell_old_assets());
    folder.write("Assets", "read no more");
    const Scene scene = load(folder.path());
    ASSERT_TRUE(scene);
    const KIVAssetManager& assets = *scene->inq_asset_manager();
    EXPECT_EQ(assets.inq_tags(RASTER_ASSET), std::vector<unsigned long>{2});
    EXPECT_EQ(assets.inq_tags(LEVEL_ASSET), std::vector<unsigned long>()) << "nothing uses it";
    EXPECT_EQ(assets.inq_tags(SOUND_ASSET), std::vector<unsigned long>{2});
    EXPECT_EQ(find_picture(*scene)->inq_asset()->inq_user_name(), "shown");
    EXPECT_TRUE(captured.inq_alerts().empty());
}
