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
