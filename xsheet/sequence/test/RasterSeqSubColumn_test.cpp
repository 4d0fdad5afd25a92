#include "kivlib/hdr/BaseFileFinder.h"
#include "scene/hdr/KIVAssetManager.h"
#include "scene/hdr/KIVScene.h"
#include "scene/hdr/RasterAsset.h"
#include "tests/support/Captured.h"
#include "tests/support/OldRecord.h"
#include "tests/support/OwnSettings.h"
#include "xsheet/column/hdr/XSheet.h"
#include "xsheet/sequence/hdr/RasterSeqCellData.h"
#include "xsheet/sequence/hdr/RasterSeqSubColumn.h"

namespace {
RasterSeqCellData& data_of(BaseCell* cell)
{
    return *static_cast<RasterSeqCellData*>(cell->inq_data());
}

/// A scene with one column of images.
struct ImageScene {
    ImageScene() : scene(KIVScene::inq_unsetup_scene()), images(new RasterSeqSubColumn)
    {
        auto* column = new Column;
        scene->inq_xsheet()->add_column(column, nullptr);
        images->init_after_construction();
        column->add_sub_column(images, nullptr);
    }

    KeyCell* show(const char* path, int frame)
    {
        KeyCell* key = images->make_key(frame);
        data_of(key).set_file_name(path);
        return key;
    }
    KIVAssetManager& assets() { return *scene->inq_asset_manager(); }

    OwnSettings settings;
    std::unique_ptr<KIVScene> scene;
    RasterSeqSubColumn* images;
};

/// A key of this scene with data as an old release stored it.
RasterSeqCellData& put_old_key(ImageScene& in, int version, int asset_id, const char* path)
{
    OldRecord old("RasterSeqCellData", version);
    old.insert_with_class_hdr(nullptr);
    old.insert_with_class_hdr(nullptr);
    old << asset_id;
    KIVString name(path);
    if (version >= 97)
        old.insert_with_class_hdr(path ? &name : nullptr);
    KeyCell* key = in.images->make_key(1);
    key->set_data(old.read<RasterSeqCellData>().release());
    return data_of(key);
}
} // namespace

TEST(RasterSeqSubColumn, binds_a_key_from_another_scene_to_its_own_assets)
{
    ImageScene here;
    ImageScene there;
    here.show("/art/other.tif", 1);
    KeyCell* key = there.show("/art/walk.tif", 1);
    KeyCell* pasted = static_cast<KeyCell*>(key->duplicate());
    EXPECT_TRUE(here.images->can_insert_key_type(pasted));
    here.images->insert_keys(5, &pasted, 1);
    EXPECT_EQ(data_of(pasted).inq_asset(), here.assets().lookup_asset(1, RASTER_ASSET));
    EXPECT_EQ(data_of(pasted).inq_asset()->inq_local_path(), "/art/walk.tif");

    KeyCell* again = static_cast<KeyCell*>(pasted->duplicate());
    here.images->insert_keys(9, &again, 1);
    EXPECT_EQ(data_of(again).inq_asset(), data_of(pasted).inq_asset());

    auto* copy = here.images->duplicate();
    here.images->inq_column()->add_sub_column(copy, nullptr);
    EXPECT_EQ(data_of(copy->inq_last_key()).inq_asset()->inq_tag(), 4U); // one for each of 3 keys
}

TEST(RasterSeqSubColumn, a_key_that_comes_back_after_a_save_has_an_asset_again)
{
    ImageScene film;
    KeyCell* key = film.show("/art/first.tif", 5);
    film.images->remove_key(key);
    film.assets().mark_all_unused();
    film.scene->mark_used_assets();
    EXPECT_EQ(film.assets().remove_unused_assets(), 1);
    film.images->insert_key(key, 5);
    const auto* asset = data_of(key).inq_asset();
    ASSERT_NE(asset, nullptr);
    EXPECT_EQ(asset, film.assets().lookup_asset(asset->inq_tag(), RASTER_ASSET));
}

TEST(RasterSeqCellData, finds_the_file_of_an_old_key_by_its_asset)
{
    ImageScene film;
    film.assets().create_and_add_asset("/art/a.tif", RASTER_ASSET);
    RasterSeqCellData& data = put_old_key(film, 96, 0, nullptr);
    EXPECT_EQ(data.inq_file_name(), nullptr);
    const Captured captured;
    EXPECT_FALSE(data.load_finished_with_abort());
    EXPECT_EQ(*data.inq_file_name(), "/art/a.tif");
    EXPECT_EQ(captured.inq_output(), "MISSING IMAGE FILE : /art/a.tif\n");
}

TEST(RasterSeqCellData, follows_an_asset_that_has_changed)
{
    ImageScene film;
    BaseSceneAsset* asset = film.assets().create_and_add_asset("/art/a.tif", RASTER_ASSET);
    asset->set_has_changed(true);
    const Captured captured;
    RasterSeqCellData& data = put_old_key(film, 97, 0, "/art/old place.tif");
    data.load_finished_with_abort();
    EXPECT_EQ(*data.inq_file_name(), "/art/a.tif");
    EXPECT_FALSE(asset->inq_has_changed());
}
