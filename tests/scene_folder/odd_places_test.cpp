#include "tests/museum/OneOfEach.h"
#include "tests/support/Captured.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

// Where a scene lies, what it is called and who may use its folder. Each gives a scene, or one
// message.

namespace {
namespace fs = std::filesystem;

constexpr uid_t NOBODY = 65534;

bool save(const KIVString& path)
{
    return OneOfEach().scene->save_to_file(path, true, true, false);
}

Scene load(const KIVString& path)
{
    return Scene(KIVScene::load_from_file(path, nullptr, false));
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

/// What `act` finds where no administrator's powers help it; false also if it dies.
template <class Act> bool holds_for_a_plain_user(Act act)
{
    const pid_t child = ::fork();
    if (child == 0) {
        const bool is_plain = ::geteuid() != 0 || (::setgid(NOBODY) == 0 && ::setuid(NOBODY) == 0);
        ::_exit(is_plain && act() ? 0 : 1);
    }
    int status = 0;
    return child > 0 && ::waitpid(child, &status, 0) == child && WIFEXITED(status) &&
           WEXITSTATUS(status) == 0;
}

class OddPlaces : public testing::Test {
protected:
    OddPlaces() { permit("", 0777); }
    ~OddPlaces() override
    {
        for (const char* name : {"shot", "shelf"})
            if (folder.has(name))
                permit(name, 0777);
    }

    void permit(const std::string& name, mode_t mode) const
    {
        EXPECT_EQ(::chmod(folder.path(name).c_str(), mode), 0);
    }

    /// A scene that everybody may use.
    void make_open_shot() const
    {
        ASSERT_TRUE(save(folder.path("shot")));
        for (const auto& entry : fs::recursive_directory_iterator(folder.path("shot").str()))
            EXPECT_EQ(::chmod(entry.path().c_str(), 0666), 0);
        permit("shot", 0777);
    }

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

/// For a user who may not do everything.
class OddPermissions : public OddPlaces {
protected:
    void SetUp() override
    {
        if (!holds_for_a_plain_user([&] { return ::access(folder.path().c_str(), W_OK) == 0; }))
            GTEST_SKIP() << "no plain user can be made here";
    }
};
} // namespace

TEST_F(OddPlaces, a_scene_may_have_any_name)
{
    for (const std::string name : {"the shot",
                                   " shot ",
                                   "the \"shot\"",
                                   "it's",
                                   "$(shot); *?[a]",
                                   "first\nsecond",
                                   "\t",
                                   "Überblendung für zwei Füchse",
                                   "場面",
                                   "\xfe\xff",
                                   "-r",
                                   "~",
                                   "shot~",
                                   "shot.CKP",
                                   "a\\b",
                                   "C:",
                                   "shot/",
                                   "shot//.",
                                   "Scene.contents",
                                   "..."}) {
        const Captured captured;
        EXPECT_TRUE(is_at_home_in(folder.path(name))) << name;
        EXPECT_EQ(captured.inq_alerts(), std::vector<std::string>()) << name;
    }
}

TEST_F(OddPlaces, a_path_may_be_as_long_as_the_system_allows)
{
    constexpr std::size_t LONG = 4000;
    std::string path = folder.path("a").str();
    while (path.size() < LONG - 250)
        path += "/" + std::string(200, 'a');
    path += "/" + std::string(LONG - 1 - path.size(), 'b');
    ASSERT_EQ(path.size(), LONG);
    fs::create_directories(fs::path(path).parent_path());
    {
        const Captured captured;
        EXPECT_TRUE(is_at_home_in(path));
        EXPECT_EQ(captured.inq_alerts(), std::vector<std::string>());
    }
    const std::string too_long = path + "/" + std::string(200, 'c');
    EXPECT_TRUE(is_save_refused(too_long, too_long));
    EXPECT_TRUE(is_refused(too_long, too_long));
    const std::string name = folder.path(std::string(300, 'd')).str();
    EXPECT_TRUE(is_save_refused(name, name));
    EXPECT_TRUE(is_refused(name, name));
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
    fs::create_directory_symlink("loop", folder.path("loop").str());
    EXPECT_TRUE(is_refused(folder.path("loop"), folder.path("loop").str()));
    EXPECT_TRUE(is_save_refused(folder.path("loop"), folder.path("loop").str()));
}

TEST_F(OddPlaces, a_part_that_is_a_link_is_read_and_replaced_but_never_written_through)
{
    const KIVString shot = folder.path("shot");
    ASSERT_TRUE(save(shot));
    for (const char* part :
         {"Scene.contents", "XSheet", "CoverSheet", "Graph", "kvd", "DLLUsage"}) {
        const std::string name = std::string("shot/") + part;
        fs::rename(folder.path(name).str(), folder.path(std::string("kept ") + part).str());
        fs::create_symlink(std::string("../kept ") + part, folder.path(name).str());
        folder.write("bait", "bait");
        fs::create_symlink("../bait", folder.path(name + "~").str());
    }
    const std::string kept = folder.read("kept XSheet");
    const Captured captured;
    const Scene scene = load(shot);
    ASSERT_TRUE(scene);
    scene->inq_xsheet()->set_length(3);
    EXPECT_TRUE(scene->save_to_file(shot, true, true, false));
    EXPECT_TRUE(captured.inq_alerts().empty());
    EXPECT_EQ(load(shot)->inq_scene_length(), 3);
    EXPECT_EQ(folder.read("kept XSheet"), kept);
    EXPECT_EQ(folder.read("bait"), "bait");
    for (const auto& entry : fs::directory_iterator(shot.str()))
        EXPECT_TRUE(fs::is_regular_file(entry.symlink_status())) << entry.path();
}

TEST_F(OddPlaces, a_part_that_is_no_file_is_refused)
{
    const KIVString shot = folder.path("shot");
    ASSERT_TRUE(save(shot));
    const KIVString sheet = folder.path("shot/XSheet");
    fs::remove(sheet.str());
    EXPECT_TRUE(is_refused(shot, "Could not open the file XSheet"));
    fs::create_symlink("XSheet", sheet.str());
    EXPECT_TRUE(is_refused(shot, "XSheet"));
    fs::remove(sheet.str());
    fs::create_directory(sheet.str());
    EXPECT_TRUE(is_refused(shot, "XSheet"));
    EXPECT_TRUE(is_save_refused(shot, "XSheet: Is a directory"));
    fs::remove(sheet.str());
    ASSERT_EQ(::mkfifo(sheet.c_str(), 0666), 0);
    EXPECT_TRUE(is_refused(shot, "XSheet"));
    fs::remove(sheet.str());
    EXPECT_TRUE(is_at_home_in(shot));
}

TEST_F(OddPlaces, a_place_that_is_a_file_is_no_scene)
{
    folder.write("file", "a text");
    EXPECT_TRUE(is_refused(folder.path("file"), folder.path("file").str()));
    EXPECT_TRUE(is_save_refused(folder.path("file"), folder.path("file").str()));
    EXPECT_TRUE(is_save_refused(folder.path("file/shot"), folder.path("file/shot").str()));
    EXPECT_EQ(folder.read("file"), "a text");
}

TEST_F(OddPermissions, a_folder_that_can_not_be_entered_is_refused)
{
    make_open_shot();
    permit("shot", 0);
    const KIVString shot = folder.path("shot");
    EXPECT_TRUE(holds_for_a_plain_user([&] { return is_refused(shot, shot.str()); }));
    EXPECT_TRUE(holds_for_a_plain_user([&] { return is_save_refused(shot, shot.str()); }));
}

TEST_F(OddPermissions, a_folder_that_can_not_be_listed_has_a_scene_all_the_same)
{
    make_open_shot();
    permit("shot", 0311);
    const KIVString shot = folder.path("shot");
    EXPECT_TRUE(holds_for_a_plain_user([&] {
        const Captured captured;
        return load(shot) && captured.inq_alerts().empty();
    }));
}

TEST_F(OddPermissions, a_folder_without_write_permission_is_read_and_keeps_its_scene)
{
    make_open_shot();
    permit("shot", 0555);
    const KIVString shot = folder.path("shot");
    const std::string before = folder.read("shot/XSheet");
    EXPECT_TRUE(holds_for_a_plain_user([&] {
        const Captured captured;
        return load(shot) && captured.inq_alerts().empty();
    }));
    EXPECT_TRUE(holds_for_a_plain_user([&] { return is_save_refused(shot, "Permission denied"); }));
    EXPECT_EQ(folder.read("shot/XSheet"), before);
    EXPECT_TRUE(load(shot));
}

TEST_F(OddPermissions, a_file_that_can_not_be_read_is_refused_by_name)
{
    make_open_shot();
    const KIVString shot = folder.path("shot");
    for (const char* part : {"Scene.contents", "XSheet", "CoverSheet", "Graph", "kvd"}) {
        permit(std::string("shot/") + part, 0);
        EXPECT_TRUE(holds_for_a_plain_user([&] { return is_refused(shot, part); })) << part;
        permit(std::string("shot/") + part, 0444);
    }
    EXPECT_TRUE(holds_for_a_plain_user([&] { return is_at_home_in(shot); })) << "files read-only";
}

TEST_F(OddPermissions, a_new_folder_needs_a_place_that_can_be_written)
{
    fs::create_directory(folder.path("shelf").str());
    permit("shelf", 0555);
    const KIVString shot = folder.path("shelf/shot");
    EXPECT_TRUE(holds_for_a_plain_user([&] { return is_save_refused(shot, shot.str()); }));
    const KIVString deep = folder.path("no/such/place");
    EXPECT_TRUE(is_save_refused(deep, deep.str()));
    EXPECT_TRUE(is_refused(deep, deep.str()));
}
