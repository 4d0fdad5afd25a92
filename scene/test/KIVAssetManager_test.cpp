#include "kivlib/hdr/KIVFileReference.h"
#include "scene/hdr/KIVAssetManager.h"
#include "scene/hdr/LevelAsset.h"
#include "scene/hdr/ModelAsset.h"
#include "scene/hdr/RasterAsset.h"
#include "scene/hdr/SoundAsset.h"
#include "scene/hdr/TransitionalAssets.h"
#include "tests/support/Captured.h"
#include "tests/support/TempFolder.h"
#include "xsheet/store_control/hdr/XSheetStoreController.h"

namespace {
/// Assets in a scene folder, by the one store controller.
class AssetFolder : public testing::Test {
protected:
    AssetFolder() { store.open_folder(folder.path(), 0); }
    ~AssetFolder() override { store.clear_failed(); }

    std::unique_ptr<KIVAssetManager> load()
    {
        return std::unique_ptr<KIVAssetManager>(TransitionalAssets::load_asset_manager(&store));
    }

    TempFolder folder;
    XSheetStoreController& store = *inq_xs_store_control();
    Captured captured;
};
} // namespace

TEST_F(AssetFolder, keeps_tags_and_holes_over_a_save)
{
    KIVAssetManager manager;
    for (const char* name : {"a", "b", "c", "d", "e"})
        manager.create_and_add_asset(folder.path(std::string(name) + ".tif"), RASTER_ASSET);
    manager.create_and_add_asset(folder.path("hero.lvl"), LEVEL_ASSET);
    manager.create_and_add_asset("/far/step.wav", SOUND_ASSET);
    manager.create_and_add_asset("/far/hero.mdl", MODEL_ASSET);
    manager.lookup_asset(0, RASTER_ASSET)->set_user_name("Opening");
    manager.mark_all_unused();
    for (const unsigned long tag : {0UL, 1UL, 2UL, 4UL})
        manager.lookup_asset(tag, RASTER_ASSET)->set_used_flag(true);
    manager.lookup_asset(0, LEVEL_ASSET)->set_used_flag(true);
    manager.lookup_asset(0, MODEL_ASSET)->set_used_flag(true);
    EXPECT_EQ(manager.remove_unused_assets(), 1); // and the sound stays
    EXPECT_EQ(manager.inq_total_asset_count(), 8);
    store.set_tilde_saving_enabled(true);
    TransitionalAssets::save_asset_manager(&manager, &store);
    EXPECT_FALSE(folder.has("kvd"));
    store.save_finished();
    store.set_tilde_saving_enabled(false);

    const auto read = load();
    EXPECT_TRUE(store.is_okay());
    EXPECT_EQ(read->inq_tags(RASTER_ASSET), (std::vector<unsigned long>{0, 1, 2, 4}));
    EXPECT_EQ(read->inq_asset_count_for_type(RASTER_ASSET), 5);
    EXPECT_EQ(read->lookup_asset(3, RASTER_ASSET), nullptr);
    EXPECT_EQ(read->lookup_asset(0, RASTER_ASSET)->inq_user_name(), "Opening");
    EXPECT_EQ(read->lookup_asset(4, RASTER_ASSET)->inq_local_path(), folder.path("e.tif"));
    EXPECT_EQ(read->lookup_asset(4, RASTER_ASSET)->inq_tag(), 4U);
    EXPECT_EQ(read->lookup_asset(0, SOUND_ASSET)->inq_local_path(), "/far/step.wav");
    EXPECT_STREQ(read->lookup_asset(0, LEVEL_ASSET)->class_name(), "LevelAsset");
    EXPECT_STREQ(read->lookup_asset(0, MODEL_ASSET)->class_name(), "ModelAsset");
    EXPECT_EQ(read->create_and_add_asset("new.tif", RASTER_ASSET)->inq_tag(), 5U);
}

TEST(BaseSceneAsset, tells_of_a_missing_file_where_nobody_can_find_it)
{
    const Captured captured;
    EXPECT_FALSE(LevelAsset(0, LEVEL_ASSET, KIVFile("no.lvl")).check_for_lost_file());
    EXPECT_FALSE(ModelAsset(0, MODEL_ASSET, KIVFile("no.mdl")).check_for_lost_file());
    EXPECT_FALSE(RasterAsset(0, RASTER_ASSET, KIVFile("no.tif")).check_for_lost_file());
    EXPECT_TRUE(SoundAsset(0, SOUND_ASSET, KIVFile("no.wav")).check_for_lost_file());
    EXPECT_EQ(captured.inq_output(), "MISSING LEVEL FILE : no.lvl\nMISSING MODEL FILE : no.mdl\n"
                                     "MISSING IMAGE FILE : no.tif\n");
}

TEST_F(AssetFolder, refuses_a_record_with_tags_that_are_taken_or_impossible)
{
    for (const int second : {3, -1, 500'000'001}) {
        KIVFile scene(folder.path());
        KIVFileReferenceList list;
        for (const int tag : {3, second})
            list.add({scene, KIVFile("/far/a.tif"), "Images"}, tag);
        scene.set_reference_list_value("Images", &list);
        ASSERT_TRUE(scene.save_kvd());
        load();
        EXPECT_FALSE(store.is_okay()) << second;
        store.clear_failed();
        store.open_folder(folder.path(), 0);
    }
}
