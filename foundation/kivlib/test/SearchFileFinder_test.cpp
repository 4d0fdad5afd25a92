#include "kivlib/hdr/KIVFile.h"
#include "kivlib/hdr/SearchFileFinder.h"
#include "kivlib/hdr/file_operations.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

TEST(FileSearch, follows_the_longest_beginning_and_then_names_in_folders)
{
    const TempFolder folder;
    for (const char* place : {"new/deep/bg", "art/bg", "more"})
        makedir(folder.path(place), 0777, true);
    for (const char* file : {"new/deep/bg/1.png", "art/2.png", "art/bg/2.png", "more/3.png"})
        folder.write(file, "");
    FileSearch search;
    search.add_prefix_map("/proj", folder.path("new"));
    search.add_prefix_map("/proj/shot/", folder.path("new/deep/"));
    search.add_search_folder(folder.path("art"));
    search.add_search_folder(folder.path("more"));
    const auto found = [&](const char* path) {
        bool leave = true;
        SearchFileFinder finder(search);
        const KIVString place = finder.find_replacement(KIVFile(path), "title", &leave);
        EXPECT_FALSE(leave); // which would give the load up
        EXPECT_EQ(finder.files_were_replaced(), !(place == path));
        return place;
    };
    EXPECT_EQ(found("/proj/shot/bg/1.png"), folder.path("new/deep/bg/1.png"));
    EXPECT_EQ(found("/project/shot/1.png"), "/project/shot/1.png"); // not the same component
    EXPECT_EQ(found("/old/bg/2.png"), folder.path("art/bg/2.png"));
    EXPECT_EQ(found("/old/fg/2.png"), folder.path("art/2.png"));
    EXPECT_EQ(found("/old/fg/2.png"), folder.path("art/2.png"));
    EXPECT_EQ(found("/proj/3.png"), folder.path("more/3.png"));
    EXPECT_EQ(found(folder.path("art/2.png").c_str()), folder.path("art/2.png"));
    EXPECT_EQ(found("/old/new\nline.png"), "/old/new\nline.png");
    const std::string art = folder.path("").str();
    EXPECT_EQ(search.report(), "found /old/bg/2.png at " + art + "art/bg/2.png\n" +
                                   "found /old/fg/2.png at " + art + "art/2.png\n" +
                                   "lost  /old/new\\nline.png\n" + //
                                   "found /proj/3.png at " + art + "more/3.png\n" +
                                   "found /proj/shot/bg/1.png at " + art + "new/deep/bg/1.png\n" +
                                   "lost  /project/shot/1.png\n4 found elsewhere, 2 lost\n");
}

TEST(FileSearch, looks_again_for_what_came_or_went_between_two_loads)
{
    const TempFolder folder;
    FileSearch search;
    search.add_search_folder(folder.path());
    EXPECT_EQ(search.find("/old/1.png"), "/old/1.png");
    folder.write("1.png", "");
    EXPECT_EQ(search.find("/old/1.png"), folder.path("1.png"));
    std::filesystem::remove(folder.path("1.png").str());
    EXPECT_EQ(search.find("/old/1.png"), "/old/1.png");
}
