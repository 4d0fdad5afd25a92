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
