#include "tests/museum/OneOfEach.h"
#include "tests/support/Captured.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

// Where a scene lies and what it is called. Each gives a scene, or one message.

namespace {
namespace fs = std::filesystem;

bool save(const KIVString& path)
{
    return OneOfEach().scene->save_to_file(path, true, true, false);
}

/// Saves, loads and saves what was loaded.
bool is_at_home_in(const KIVString& path)
{
    if (!save(path))
        return false;
    const Scene scene = load(path);
    return scene && scene->inq_scene_length() == 4 &&
           scene->save_to_file(path, true, true, false) && load(path);
}

class OddPlaces : public testing::Test {
protected:
    /// No scene, and one message that contains `words`.
    static bool is_refused(const KIVString& path, const std::string& words)
    {
        const Captured captured;
        return !load(path) && captured.inq_alerts().size() == 1 &&
               captured.inq_alerts()[0].find(words) != std::string::npos;
    }
    static bool is_save_refused(const KIVString& path, const std::string& words)
    {
        const Captured captured;
        return !save(path) && captured.inq_alerts().size() == 1 &&
               captured.inq_alerts()[0].find(words) != std::string::npos;
    }

    TempFolder folder;
    Captured quiet;
};
} // namespace

TEST_F(OddPlaces, a_scene_may_have_any_name)
{
    for (const std::string name :
         {" the shot ", "it's \"$(shot)\"; *?[a]", "first\nsecond", "Füchse 場面", "\xfe\xff", "-r",
          "~", "shot~", "a\\b", "shot/", "shot//."}) {
        const Captured captured;
        EXPECT_TRUE(is_at_home_in(folder.path(name))) << name;
        EXPECT_EQ(captured.inq_alerts(), std::vector<std::string>()) << name;
    }
}

TEST_F(OddPlaces, a_scene_folder_may_be_reached_through_a_link)
{
    fs::create_directory(folder.path("shelf").str());
    fs::create_directory_symlink("shelf", folder.path("link").str());
    const Captured captured;
    EXPECT_TRUE(is_at_home_in(folder.path("link")));
    EXPECT_TRUE(folder.has("shelf/XSheet"));
    EXPECT_TRUE(fs::is_symlink(folder.path("link").str()));
    EXPECT_TRUE(captured.inq_alerts().empty());

    fs::create_directory_symlink("nowhere", folder.path("lost").str());
    EXPECT_TRUE(is_refused(folder.path("lost"), folder.path("lost").str()));
    EXPECT_TRUE(is_save_refused(folder.path("lost"), folder.path("lost").str()));
}

TEST_F(OddPlaces, a_place_that_is_a_file_is_no_scene)
{
    folder.write("file", "a text");
    EXPECT_TRUE(is_refused(folder.path("file"), folder.path("file").str()));
    EXPECT_TRUE(is_save_refused(folder.path("file"), folder.path("file").str()));
    EXPECT_TRUE(is_save_refused(folder.path("file/shot"), folder.path("file/shot").str()));
    EXPECT_EQ(folder.read("file"), "a text");
}
