#include "kivlib/hdr/BaseFileFinder.h"
#include "kivlib/hdr/KIVDefaults.h"
#include "kivlib/hdr/KIVFileReference.h"
#include "scene/hdr/KIVAssetManager.h"
#include "scene/hdr/LevelAsset.h"
#include "scene/hdr/ModelAsset.h"
#include "scene/hdr/RasterAsset.h"
#include "scene/hdr/SoundAsset.h"
#include "scene/hdr/TransitionalAssets.h"
#include "tests/support/Captured.h"
#include "tests/support/OldAssets.h"
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

/// Answers with one path for all files.
class OneAnswer : public BaseFileFinder {
public:
    OneAnswer(const char* path, bool leave) : path(path), leave(leave) {}

    KIVString find_replacement(const KIVFile&, const char* asked_title,
                               bool* told_to_leave) override
    {
        title = asked_title;
        *told_to_leave = leave;
        return path;
    }
    bool files_were_replaced() override { return false; }

    inline static std::string title;

private:
    KIVString path;
    bool leave;
};

/// The finder in use for as long as this lives.
struct WithFinder {
    WithFinder(const char* path, bool leave) { set_file_finder(new OneAnswer(path, leave)); }
    ~WithFinder() { delete_file_finder(); }
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

TEST_F(AssetFolder, reads_the_old_file_which_has_no_models)
{
    folder.write("Assets", tell_old_assets("LevelAsset"));
    const auto read = load();
    EXPECT_TRUE(store.is_okay());
    EXPECT_TRUE(read->inq_needs_saving());
    EXPECT_TRUE(read->inq_contents_changed());
    EXPECT_EQ(read->inq_asset_count_for_type(LEVEL_ASSET), 5);
    EXPECT_EQ(read->inq_asset_count_for_type(MODEL_ASSET), 0);
    const auto* raster = static_cast<RasterAsset*>(read->lookup_asset(2, RASTER_ASSET));
    EXPECT_EQ(raster->inq_local_path(), "art/line.tif");
    EXPECT_EQ(raster->inq_user_name(), "shown");
    EXPECT_EQ(raster->inq_mipmap_id_8(), -1);
    EXPECT_FALSE(raster->inq_has_changed());
    const auto* level = static_cast<LevelAsset*>(read->lookup_asset(2, LEVEL_ASSET));
    EXPECT_FALSE(level->inq_registration_editable()); // whatever the file says
    EXPECT_NE(
        captured.inq_output().find("Read user name : shown\nRead file name : art\\line.tif\n"),
        std::string::npos);
}

TEST_F(AssetFolder, refuses_an_old_file_with_anything_but_assets_of_the_kind)
{
    folder.write("Assets", tell_old_assets("SoundAsset"));
    load();
    EXPECT_FALSE(store.is_okay());
}

TEST(KIVAssetManager, is_not_stored_itself)
{
    const Captured captured;
    KIVAssetManager manager;
    manager.create_and_add_asset("a.mdl", MODEL_ASSET);
    CharOStream out;
    manager.storer(out);
    manager.lookup_asset(0, MODEL_ASSET)->storer(out);
    EXPECT_EQ(out.getpos(), 0);
    EXPECT_EQ(captured.inq_errors(), "KIVAssetManager is obsolete and cannot be stored.\n"
                                     "Shouldn't be trying to store a ModelAsset to disc\n");
}

TEST(KIVAssetManager, has_no_assets_of_kinds_that_do_not_exist)
{
    const Captured captured;
    KIVAssetManager manager;
    EXPECT_EQ(manager.create_and_add_asset("a", ASSET_KIND_COUNT), nullptr);
    manager.add_asset(new BaseSceneAsset(0, 7, KIVFile("b")));
    EXPECT_EQ(manager.lookup_asset(0, 7), nullptr);
    EXPECT_EQ(manager.inq_total_asset_count(), 0);
    EXPECT_EQ(std::unique_ptr<KIVFile>(manager.export_asset(RASTER_ASSET, 0)), nullptr);
}

TEST(KIVAssetManager, turns_paths_of_other_platforms)
{
    KIVAssetManager manager;
    EXPECT_EQ(manager.create_and_add_asset("a\\b.tif", RASTER_ASSET)->inq_local_path(), "a\\b.tif");
    EXPECT_EQ(manager.create_and_add_legacy_asset("a\\b.tif", RASTER_ASSET)->inq_local_path(),
              "a/b.tif");
}

TEST(BaseSceneAsset, follows_the_finder_only_to_another_place)
{
    LevelAsset asset(0, LEVEL_ASSET, KIVFile("lost.lvl"));
    {
        const WithFinder same("lost.lvl", false);
        EXPECT_FALSE(asset.check_for_lost_file());
        EXPECT_FALSE(asset.inq_has_changed());
        EXPECT_EQ(OneAnswer::title, "Replace lost level");
    }
    {
        const WithFinder stubborn("found.lvl", true);
        EXPECT_TRUE(asset.check_for_lost_file());
        EXPECT_EQ(asset.inq_local_path(), "lost.lvl");
    }
    const WithFinder found("found.lvl", false);
    EXPECT_FALSE(asset.check_for_lost_file());
    EXPECT_EQ(asset.inq_local_path(), "found.lvl");
    EXPECT_TRUE(asset.inq_has_changed());
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

TEST(RasterAsset, has_the_id_of_the_file_that_was_found)
{
    const WithFinder found("second.tif", false);
    RasterAsset asset(0, RASTER_ASSET, KIVFile("first.tif"));
    const RasterAsset other(1, RASTER_ASSET, KIVFile("second.tif"));
    EXPECT_NE(asset.inq_mipmap_id_8(), other.inq_mipmap_id_8());
    asset.check_for_lost_file();
    EXPECT_EQ(asset.inq_mipmap_id_8(), other.inq_mipmap_id_8());
    EXPECT_EQ(asset.inq_mipmap_id_16(), other.inq_mipmap_id_16());
}

TEST(LevelAsset, lets_registration_be_edited_where_the_user_wants_it)
{
    KIVDefaults::set_default("InkPaintEditRegistration", 1);
    EXPECT_TRUE(LevelAsset(0, LEVEL_ASSET, KIVFile("a")).inq_registration_editable());
    KIVDefaults::clear_default("InkPaintEditRegistration");
    EXPECT_FALSE(LevelAsset(0, LEVEL_ASSET, KIVFile("a")).inq_registration_editable());
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

TEST_F(AssetFolder, refuses_an_old_file_whose_keys_are_not_the_tags_and_kinds)
{
    struct Told {
        long key;
        int tag;
        unsigned int kind;
    };
    constexpr Told FIRST{1, 1, RASTER_ASSET};
    for (const Told& second :
         {Told{1, 1, RASTER_ASSET}, {2, 0, RASTER_ASSET}, {2, 2, LEVEL_ASSET}}) {
        OldRecord old("KIVAssetManager", 1);
        old.nested("NameKeyDictionary", 1, [&](OldRecord& r) {
            r << 2;
            for (const Told& told : {FIRST, second}) {
                r << told.key;
                tell_asset(r, "RasterAsset", told.tag, told.kind, "a.tif");
            }
        });
        old << 5;
        for (int kind = 1; kind < 3; ++kind)
            old.nested("NameKeyDictionary", 1, [](OldRecord& r) { r << 0; }) << 0;
        folder.write("Assets", old.finish());
        load();
        EXPECT_FALSE(store.is_okay()) << second.key << second.tag << second.kind;
        store.clear_failed();
        store.open_folder(folder.path(), 0);
    }
}
