#include "kivlib/hdr/KIVColour.h"
#include "tests/support/Captured.h"
#include "tests/support/TempFolder.h"
#include "xsheet/store_control/hdr/StoreFile.h"

#include <gtest/gtest.h>

namespace {
class StoreController : public testing::Test {
protected:
    ~StoreController() override { store.clear_failed(); }

    void save(const char* name, double grey)
    {
        const KIVColour colour(grey);
        save_object(store, name, &colour);
    }

    double load(const char* name)
    {
        const auto colour = LoadFile(store, name).read<KIVColour>();
        return colour ? colour->inq_red() : -1.0;
    }

    TempFolder folder;
    Captured captured;
    XSheetStoreController store;
};
} // namespace

TEST_F(StoreController, tells_only_the_first_failure)
{
    EXPECT_FALSE(store.open_folder(folder.path("none"), 0));
    ASSERT_EQ(captured.inq_alerts().size(), 1U);
    EXPECT_EQ(captured.inq_alerts()[0], "Could not find the folder " + folder.path("none").str() +
                                            ".  Contact your system administrator.");
    EXPECT_EQ(store.open_load_file("XSheet"), nullptr);
    EXPECT_FALSE(store.set_failed("again"));
    EXPECT_FALSE(store.open_folder(folder.path(), 0));
    EXPECT_EQ(captured.inq_alerts().size(), 1U);
    EXPECT_TRUE(store.clear_failed());
    EXPECT_FALSE(store.clear_failed());
    EXPECT_TRUE(store.open_folder(folder.path(), 0));
}

TEST_F(StoreController, makes_a_folder_and_stands_in_it)
{
    std::filesystem::current_path(folder.path().str());
    EXPECT_TRUE(store.open_folder("scene/", 1));
    EXPECT_EQ(std::filesystem::current_path(), folder.path("scene").str());
    EXPECT_TRUE(*store.inq_root_folder() == folder.path("scene"));
    EXPECT_TRUE(store.close_folder());
    EXPECT_FALSE(store.open_folder(folder.path("no/parent"), 1));
    EXPECT_EQ(captured.inq_alerts().size(), 1U);
    EXPECT_EQ(captured.inq_alerts()[0].find("Could not create the new folder "), 0U);
}

TEST_F(StoreController, reports_an_undefined_mode_and_goes_on)
{
    EXPECT_FALSE(store.open_folder(folder.path("none"), 2));
    EXPECT_TRUE(store.is_okay());
    EXPECT_EQ(captured.inq_errors(),
              "xsheet/store_control/src/XSheetStoreController, line 239: Undefined filemode\n");
}

TEST_F(StoreController, leaves_old_files_until_the_save_is_finished)
{
    store.open_folder(folder.path(), 0);
    store.set_tilde_saving_enabled(true);
    save("XSheet", 0.25);
    EXPECT_FALSE(folder.has("XSheet"));
    store.save_finished();
    EXPECT_FALSE(folder.has("XSheet~"));
    EXPECT_EQ(load("XSheet"), 0.25);

    save("XSheet", 0.5);
    store.set_failed();
    store.save_finished();
    store.clear_failed();
    EXPECT_EQ(load("XSheet"), 0.25);
    EXPECT_TRUE(folder.has("XSheet~"));

    save("XSheet", 0.75);
    store.save_finished();
    EXPECT_EQ(load("XSheet"), 0.75);
    EXPECT_FALSE(folder.has("XSheet~"));
}

TEST_F(StoreController, keeps_a_checkpoint_of_the_file_before)
{
    store.open_folder(folder.path(), 0);
    const auto set_age = [&](const char* name, int minutes) {
        std::filesystem::last_write_time(folder.path(name).str(),
                                         std::filesystem::file_time_type::clock::now() -
                                             std::chrono::minutes(minutes));
    };
    save("prefs", 0.1);
    EXPECT_FALSE(folder.has("prefs.CKP"));
    save("prefs", 0.2);
    EXPECT_EQ(load("prefs.CKP"), 0.1);
    set_age("prefs.CKP", 5);
    save("prefs", 0.3);
    EXPECT_EQ(load("prefs.CKP"), 0.2);
    set_age("prefs", 10);
    save("prefs", 0.4);
    EXPECT_EQ(load("prefs.CKP"), 0.2);
    EXPECT_EQ(load("prefs"), 0.4);
    EXPECT_TRUE(captured.inq_alerts().empty());
}

TEST_F(StoreController, treats_every_bad_close_as_a_failure)
{
    EXPECT_FALSE(store.close_stream(nullptr));
    EXPECT_TRUE(store.clear_failed());
    folder.write("noise", "noise");
    store.open_folder(folder.path(), 0);
    EXPECT_EQ(load("noise"), -1.0);
    EXPECT_TRUE(store.inq_has_failed());
    EXPECT_EQ(captured.inq_alerts().size(), 1U); // the stream's own
    store.clear_failed();
    EXPECT_EQ(load("missing"), -1.0);
    EXPECT_EQ(captured.inq_alerts().back(),
              "Could not open the file missing.  Contact your system administrator.");
}

TEST_F(StoreController, renames_deletes_and_copies)
{
    store.open_folder(folder.path(), 0);
    folder.write("a", "1");
    folder.write("b", "2");
    EXPECT_TRUE(store.rename_file("a", "b"));
    EXPECT_EQ(folder.read("b"), "1");
    EXPECT_FALSE(folder.has("a"));
    EXPECT_TRUE(store.copy_file("b", "c"));
    EXPECT_EQ(folder.read("c"), "1");
    EXPECT_FALSE(store.copy_file("none", "d"));
    EXPECT_TRUE(store.is_okay());
    EXPECT_TRUE(store.delete_file("c"));
    EXPECT_FALSE(store.delete_file("c"));
    EXPECT_EQ(captured.inq_alerts().back(), "Could not delete the file c as it does not exist.  "
                                            "Contact your system administrator.");
}

TEST_F(StoreController, keeps_dirty_flags_by_its_mode)
{
    EXPECT_TRUE(store.check_needs_saving_flags(1));
    EXPECT_FALSE(store.check_needs_saving_flags(2));
    EXPECT_EQ(store.clear_flags_after_save(3), 2);
    store.set_mode_flags(XSheetStoreController::SAVE_ALL);
    EXPECT_TRUE(store.check_needs_saving_flags(0));
    EXPECT_EQ(store.clear_flags_after_save(3), 3);
    EXPECT_FALSE(store.update_dirty_flags());
}

TEST_F(StoreController, a_file_that_holds_no_object_is_a_failure)
{
    store.open_folder(folder.path(), 0);
    save_object(store, "empty", nullptr);
    EXPECT_TRUE(store.is_okay());
    EXPECT_EQ(LoadFile(store, "empty").read<KIVColour>(), nullptr);
    EXPECT_TRUE(store.inq_has_failed());
}
