#include "scene/hdr/KIVScene.h"
#include "scene/hdr/KIVSceneWatcher.h"
#include "tests/support/Captured.h"
#include "tests/support/TempFolder.h"
#include "xsheet/store_control/hdr/XSheetStoreController.h"

#include <gtest/gtest.h>

namespace {
/// Notes every event. Watchers can't be taken off the list, so there is one for all tests.
class Diary : public KIVSceneWatcher {
public:
    static Diary& inq()
    {
        static Diary* diary = [] {
            auto* made = new Diary;
            KIVScene::add_watcher(made);
            return made;
        }();
        diary->events.clear();
        diary->is_dirty = false;
        return *diary;
    }

    void scene_will_create(KIVScene*) override { events += "will_create "; }
    void scene_was_created(KIVScene*) override { events += "was_created "; }
    void scene_will_delete(KIVScene*) override { events += "will_delete "; }
    void scene_was_deleted(KIVScene*) override { events += "was_deleted "; }
    void scene_will_load(KIVScene*, XSheetStoreController*) override { events += "will_load "; }
    void scene_was_loaded(KIVScene*, XSheetStoreController*) override { events += "was_loaded "; }
    void scene_fully_loaded(KIVScene*, XSheetStoreController*) override { events += "fully "; }
    void scene_will_save(KIVScene*, XSheetStoreController*) override { events += "will_save "; }
    void scene_was_saved(KIVScene*, XSheetStoreController*) override { events += "was_saved "; }
    bool inq_scene_needs_saved(KIVScene*) override { return is_dirty; }

    std::string events;
    bool is_dirty = false;
};

using Scene = std::unique_ptr<KIVScene>;

Scene new_scene()
{
    return Scene(KIVScene::inq_unsetup_scene());
}

Scene load(const KIVString& folder)
{
    return Scene(KIVScene::load_from_file(folder, nullptr, false));
}

class SceneOnDisc : public testing::Test {
protected:
    TempFolder folder;
    Captured captured;
    XSheetStoreController& store = *inq_xs_store_control();
};
} // namespace

TEST_F(SceneOnDisc, tells_its_watchers_what_happens_to_it)
{
    Diary& diary = Diary::inq();
    Scene scene = new_scene();
    EXPECT_TRUE(scene->save_to_file(folder.path("shot"), false, true, false));
    scene.reset();
    EXPECT_EQ(diary.events, "will_create was_created will_save was_saved will_delete was_deleted ");
    diary.events.clear();
    EXPECT_TRUE(load(folder.path("shot")));
    EXPECT_EQ(diary.events, "will_load was_loaded fully will_delete was_deleted ");
}

TEST_F(SceneOnDisc, is_not_there_without_its_contents_file)
{
    folder.write("other", "");
    EXPECT_FALSE(load(folder.path()));
    ASSERT_EQ(captured.inq_alerts().size(), 1U);
    EXPECT_EQ(captured.inq_alerts()[0],
              "Could not open the file Scene.contents.  Contact your system administrator.");
    EXPECT_TRUE(store.is_okay());
    EXPECT_EQ(store.inq_mode_flags(), XSheetStoreController::DIRTY_FLAGS_LIVE);

    folder.write("Scene.contents", "not a stream of objects");
    EXPECT_FALSE(load(folder.path()));
    EXPECT_EQ(captured.inq_alerts().size(), 2U);
}

TEST_F(SceneOnDisc, a_copy_leaves_the_scene_unsaved_and_where_it_was)
{
    const Scene scene = new_scene();
    scene->set_needs_saving();
    EXPECT_TRUE(scene->save_to_file(folder.path("shot"), false, true, false));
    EXPECT_FALSE(scene->inq_needs_saving());
    scene->set_needs_saving();
    EXPECT_TRUE(scene->save_to_file(folder.path("copy"), true, true, true));
    EXPECT_TRUE(scene->inq_needs_saving());
    EXPECT_TRUE(scene->inq_current_file() == folder.path("shot"));
    EXPECT_TRUE(load(folder.path("copy")));
}

TEST_F(SceneOnDisc, a_watcher_may_say_that_it_needs_saving)
{
    const Scene scene = new_scene();
    EXPECT_TRUE(scene->save_to_file(folder.path("shot"), true, true, false));
    Diary& diary = Diary::inq();
    EXPECT_FALSE(scene->inq_needs_saving());
    diary.is_dirty = true;
    EXPECT_TRUE(scene->inq_needs_saving());
}

TEST_F(SceneOnDisc, is_not_in_a_folder_without_a_name)
{
    const Scene scene = new_scene();
    std::filesystem::current_path(folder.path().str());
    EXPECT_FALSE(scene->save_to_file("", true, true, false));
    EXPECT_FALSE(folder.has("Scene.contents"));
    EXPECT_FALSE(load(""));
}

TEST_F(SceneOnDisc, a_save_takes_away_the_mark_of_old_tag_positions)
{
    const Scene scene = new_scene();
    std::filesystem::create_directory(folder.path("shot").str());
    folder.write("shot/drawing_window_tags", "");
    std::filesystem::current_path(folder.path().str());
    EXPECT_TRUE(scene->save_to_file("shot", true, true, false));
    EXPECT_FALSE(folder.has("shot/drawing_window_tags"));
}

TEST_F(SceneOnDisc, a_scratch_file_is_named_after_the_scene)
{
    const Scene scene = new_scene();
    EXPECT_NE(scene->inq_scratch_file().str().find("+unnamed.scene"), std::string::npos);
    EXPECT_TRUE(scene->save_to_file(folder.path("the shot"), true, true, false));
    const std::string path = scene->inq_scratch_file().str();
    EXPECT_EQ(path.substr(path.rfind('+')), "+the_shot");
    EXPECT_TRUE(scene->save_to_file(folder.path("the shot/"), true, true, false));
    const std::string with_slash = scene->inq_scratch_file().str();
    EXPECT_EQ(with_slash.substr(with_slash.rfind('+')), "+the_shot");
}
