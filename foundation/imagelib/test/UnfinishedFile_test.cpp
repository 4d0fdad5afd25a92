#include "imagelib/hdr/UnfinishedFile.h"
#include "imagelib/hdr/make_tiled_image.h"
#include "kivlib/hdr/AbortPanel.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {
/// Begins a file in a process that is killed; the parent alone comes back.
pid_t leave_behind(const KIVString& path, bool is_shared)
{
    if (is_shared)
        share_unfinished_files();
    const pid_t process = ::fork();
    if (process == 0) {
        UnfinishedFile file;
        ::_exit(file.create(path) ? 0 : 1);
    }
    ::waitpid(process, nullptr, 0);
    return process;
}

std::set<std::string> list_names(const TempFolder& folder)
{
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder.path().str()))
        names.insert(entry.path().filename().string());
    return names;
}

struct AtOnce : AbortPanel {
    bool inq_abort() override { return true; }
};
} // namespace

TEST(UnfinishedFile, is_removed_once_its_process_is_certainly_gone)
{
    const TempFolder folder;
    UnfinishedFile live;
    ASSERT_TRUE(live.create(folder.path("live")));
    const std::set<std::string> ours = list_names(folder);
    leave_behind(folder.path("dead"), false);
    const std::string dead = *list_names(folder).begin();
    ASSERT_TRUE(dead.starts_with("dead."));
    remove_abandoned_files(folder.path());
    EXPECT_EQ(list_names(folder), ours);
    std::string elsewhere = dead;
    elsewhere[5] = elsewhere[5] == '1' ? '2' : '1'; // by another host
    for (const std::string& name : {elsewhere, std::string("art.1~"), std::string("a.1-1-1-1~")})
        folder.write(name, "");
    remove_abandoned_files(folder.path());
    EXPECT_EQ(list_names(folder).size(), 4U);
}

TEST(UnfinishedFile, of_a_run_of_several_processes_stays_while_the_first_lives)
{
    const TempFolder folder;
    const pid_t process = leave_behind(folder.path("kept"), true);
    const std::string kept = *list_names(folder).begin();
    leave_behind(folder.path("other"), true);
    remove_abandoned_files(folder.path());
    EXPECT_EQ(list_names(folder).size(), 2U);
    remove_unfinished_files(folder.path(), process, {kept});
    EXPECT_EQ(list_names(folder).size(), 2U);
    remove_unfinished_files(folder.path(), process, {});
    EXPECT_EQ(list_names(folder).size(), 1U);
}

TEST(UnfinishedFile, goes_with_a_tiling_that_is_given_up)
{
    const TempFolder folder;
    folder.write("one.pgm", "P5 1 1 255\n.");
    KIVString error;
    AtOnce abort;
    EXPECT_FALSE(make_tiled_image(folder.path("one.pgm"), folder.path("a.tif"), error, &abort));
    EXPECT_EQ(list_names(folder), std::set<std::string>{"one.pgm"});
}
