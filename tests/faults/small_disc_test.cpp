#include "tests/faults/InChild.h"
#include "tests/faults/Stage.h"
#include "tests/faults/Tally.h"

#include <fcntl.h>
#include <fstream>
#include <sched.h>
#include <sys/mount.h>

// On a true file system of 256 KiB, in a name space of mounts of the test's own.

namespace {
constexpr int OLD = 1;
constexpr int NEW = 2;
constexpr char OPTIONS[] = "size=256k";
constexpr std::size_t PAGE = 4096;

bool has_own_name_space()
{
    return ::unshare(CLONE_NEWNS) == 0 || ::unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0;
}

/// Mounts a small disc where the stage has its own. For a child, whose mounts go with it.
bool mount_small_disc(const Stage& stage)
{
    stage.set({});
    return has_own_name_space() &&
           ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           ::mount("small", stage.disc().c_str(), "tmpfs", 0, OPTIONS) == 0 &&
           std::ofstream(stage.disc() + "/ballast").is_open(); // the user may be nobody on it
}

struct Notes {
    bool is_mounted = false;
    int saved = 0;
    int refused = 0;
    int lost = 0;
    Loaded found;
};

/// Runs `work(stage, notes)` on a small disc.
template <class Work> Notes on_small_disc(Work work)
{
    const Stage stage;
    stage.set({});
    const auto end = in_child<Notes>([&](Notes& notes) {
        notes.is_mounted = mount_small_disc(stage);
        if (notes.is_mounted)
            work(stage, notes);
    });
    EXPECT_TRUE(end.was_well);
    return end.notes;
}

void count(const Stage& stage, bool is_saved, const Generations& expected, Notes& notes)
{
    ++(is_saved ? notes.saved : notes.refused);
    const Loaded loaded = SceneOnTrial::load_generations(stage.scene());
    if (loaded == expected)
        return;
    ++notes.lost;
    notes.found = loaded;
}

void fill(const Stage& stage, std::size_t bytes)
{
    std::ofstream(stage.disc() + "/ballast", std::ios::binary) << std::string(bytes, 'x');
}

/// Until a few saves have failed, each with a scene that is larger than the last.
void save_growing_scenes(const Stage& stage, Notes& notes)
{
    constexpr int FAILURES = 10;
    constexpr int NODES_EACH_TIME = 20;
    const Scene scene = SceneOnTrial::make(OLD);
    int last_saved = 0;
    for (int generation = OLD; notes.refused < FAILURES; ++generation) {
        SceneOnTrial::change(*scene, generation);
        for (int i = 0; i < NODES_EACH_TIME; ++i)
            add_node<CNodeTranslate>(*scene);
        const bool is_saved = SceneOnTrial::save(*scene, stage.scene());
        last_saved = is_saved ? generation : last_saved;
        count(stage, is_saved, Generations::whole(last_saved), notes);
    }
}

/// The same save with a page more room each time.
void save_with_more_and_more_room(const Stage& stage, Notes& notes)
{
    constexpr std::size_t MOST_PAGES = 64;
    constexpr int ENOUGH_SAVED = 3;
    SceneOnTrial::save(*SceneOnTrial::make(OLD), stage.scene());
    const FolderContents old_disc = read_folder(stage.scene());
    for (std::size_t free = 0; notes.saved < ENOUGH_SAVED && free < MOST_PAGES; ++free) {
        std::filesystem::remove(stage.disc() + "/ballast");
        write_folder(stage.scene(), old_disc);
        const Scene scene = SceneOnTrial::load(stage.scene());
        SceneOnTrial::change(*scene, NEW);
        const auto space = std::filesystem::space(stage.disc());
        fill(stage, space.available - std::min<std::size_t>(space.available, free * PAGE));
        const bool is_saved = SceneOnTrial::save(*scene, stage.scene());
        count(stage, is_saved, Generations::whole(is_saved ? NEW : OLD), notes);
    }
}

void check(const Notes& notes, Tally& tally)
{
    for (int i = 0; i < notes.refused; ++i)
        tally.add("full", "a full disc", i < notes.lost ? words_of(notes.found) : "");
    EXPECT_LE(notes.lost, notes.refused);
    EXPECT_GT(notes.saved, 0);
}
} // namespace

#define SKIP_WITHOUT_MOUNT(notes)                                                                  \
    if (!(notes).is_mounted)                                                                       \
    GTEST_SKIP() << "a file system can't be mounted here"

TEST(SmallDisc, that_fills_up_keeps_the_last_scene_that_was_saved)
{
    const Notes notes = on_small_disc(save_growing_scenes);
    SKIP_WITHOUT_MOUNT(notes);
    Tally tally("growing scenes on 256 KiB");
    check(notes, tally);
}

TEST(SmallDisc, with_any_room_left_keeps_the_old_scene_or_takes_the_new)
{
    const Notes notes = on_small_disc(save_with_more_and_more_room);
    SKIP_WITHOUT_MOUNT(notes);
    Tally tally("one save on 256 KiB, page by page");
    check(notes, tally);
}
