#include "kivlib/hdr/KIVColour.h"
#include "tests/support/Captured.h"
#include "tests/support/TempFolder.h"
#include "xsheet/store_control/hdr/CommitRecord.h"
#include "xsheet/store_control/hdr/StoreFile.h"

#include <gtest/gtest.h>

namespace {
/// A folder with parts that hold a word each, of an old and a new save.
class SaveProtocol : public testing::Test {
protected:
    ~SaveProtocol() override { FolderLock::set_patience(std::chrono::seconds(10)); }

    CommitRecord::Part part(const char* name, const std::string& content)
    {
        folder.write("sample", content);
        return {name, *inq_file_sum(folder.path("sample"))};
    }

    void save(XSheetStoreController& store, const char* name, double grey)
    {
        const KIVColour colour(grey);
        save_object(store, name, &colour);
    }

    double load(XSheetStoreController& store, const char* name)
    {
        const auto colour = LoadFile(store, name).read<KIVColour>();
        return colour ? colour->inq_red() : -1.0;
    }

    TempFolder folder;
    Captured captured;
};
} // namespace

TEST_F(SaveProtocol, believes_a_record_only_if_it_is_whole_and_names_parts_alone)
{
    const CommitRecord record({part("Graph", "new"), part("kvd", "")});
    const std::string text = record.inq_text();
    ASSERT_TRUE(CommitRecord::parse(text));
    EXPECT_EQ(CommitRecord::parse(text)->inq_text(), text);
    EXPECT_EQ(text.find("COMMIT 1\nGraph 3 "), 0U);
    for (const char* name : {"../Graph", "Graph~", "Assets", "Scene.commit~", ""})
        EXPECT_FALSE(CommitRecord::parse(CommitRecord({part(name, "")}).inq_text())) << name;
    EXPECT_FALSE(CommitRecord::parse(CommitRecord({part("kvd", ""), part("kvd", "")}).inq_text()));
    EXPECT_FALSE(CommitRecord::parse(CommitRecord({}).inq_text()));
    for (const char* line : {"", "Graph", "Graph 1", "Graph 1 ", "Graph x 1", "Graph 1 x"}) {
        Checksum sum;
        const std::string body = std::string("COMMIT 1\n") + line + '\n';
        sum.add(body.data(), body.size());
        char end[32];
        std::snprintf(end, sizeof end, "END %016lx\n", static_cast<unsigned long>(sum.get()));
        EXPECT_FALSE(CommitRecord::parse(body + end)) << line;
    }
}

TEST_F(SaveProtocol, what_a_failed_save_left_joins_only_the_next_one_of_its_folder)
{
    XSheetStoreController store;
    const auto begin = [&](const char* name) {
        store.clear_failed();
        store.open_folder(folder.path(name), 1);
        store.set_tilde_saving_enabled(true);
        return store.begin_save();
    };
    ASSERT_TRUE(begin("a"));
    save(store, "XSheet", 0.25);
    save(store, "Graph", 0.25);
    save(store, "kvd", 0.25);
    store.set_failed();
    store.save_finished();
    store.end_save();
    folder.write("a/kvd~", "another program");

    ASSERT_TRUE(begin("a"));
    EXPECT_TRUE(store.inq_part_awaits_move("XSheet"));
    save(store, "Graph", 0.5);
    store.save_finished();
    store.end_save();
    EXPECT_EQ(load(store, "XSheet"), 0.25);
    EXPECT_EQ(load(store, "Graph"), 0.5);
    EXPECT_FALSE(folder.has("a/kvd") || folder.has("a/kvd~") || folder.has("a/Scene.commit~"));

    ASSERT_TRUE(begin("a"));
    save(store, "XSheet", 0.75);
    store.set_failed();
    store.end_save();
    ASSERT_TRUE(begin("b"));
    save(store, "Graph", 1.0);
    store.save_finished();
    store.end_save();
    EXPECT_FALSE(folder.has("b/XSheet"));
    EXPECT_TRUE(folder.has("a/XSheet~"));
}

TEST_F(SaveProtocol, keeps_other_programs_out_for_so_long)
{
    FolderLock::set_patience(std::chrono::milliseconds(20));
    FolderLock reader, other_reader;
    EXPECT_EQ(reader.take(folder.path(), FolderLock::SHARED), FolderLock::HELD);
    EXPECT_EQ(other_reader.take(folder.path(), FolderLock::SHARED), FolderLock::HELD);
    XSheetStoreController store;
    store.open_folder(folder.path(), 0);
    EXPECT_FALSE(store.begin_save());
    EXPECT_EQ(captured.inq_alerts().at(0),
              "The scene " + store.inq_root_folder()->str() +
                  " is in use by another program.  Contact your system administrator.");
    store.clear_failed();
    reader.release();
    other_reader.release();
    EXPECT_TRUE(store.begin_save());
    EXPECT_EQ(reader.take(folder.path(), FolderLock::SHARED), FolderLock::BUSY);
    store.end_save();
    EXPECT_EQ(reader.take(folder.path(), FolderLock::SHARED), FolderLock::HELD);
    EXPECT_EQ(other_reader.take(folder.path("none"), FolderLock::SHARED), FolderLock::UNSUPPORTED);
}

TEST_F(SaveProtocol, a_part_that_can_not_be_replaced_fails_the_save_before_its_commit)
{
    XSheetStoreController store;
    std::filesystem::create_directory(folder.path("XSheet").str());
    store.open_folder(folder.path(), 0);
    store.set_tilde_saving_enabled(true);
    ASSERT_TRUE(store.begin_save());
    save(store, "Graph", 0.5);
    save(store, "XSheet", 0.5);
    store.save_finished();
    store.end_save();
    EXPECT_TRUE(store.inq_has_failed());
    EXPECT_FALSE(folder.has("Graph") || folder.has("Scene.commit~"));
    EXPECT_EQ(captured.inq_alerts().size(), 1U);
}
