#include "tests/faults/InChild.h"
#include "tests/faults/Stage.h"
#include "tests/faults/Tally.h"

namespace {
constexpr int OLD = 1;
constexpr int NEW = 2;
constexpr std::chrono::seconds PATIENCE(10);
constexpr int LEAST_LOADS = 2000;
constexpr int LEAST_CHANGES = 20; // from one load to the next
constexpr int MOST_LOADS = 20000;

/// A child that saves the two generations by turns until it is ended.
class Saver {
public:
    Saver(const Stage& stage, int lock_error) : child(::fork())
    {
        if (child == 0)
            save_for_ever(stage, lock_error);
    }
    Saver(const Saver&) = delete;
    Saver& operator=(const Saver&) = delete;
    ~Saver()
    {
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
    }

private:
    [[noreturn]] static void save_for_ever(const Stage& stage, int lock_error)
    {
        ::alarm(LONGEST_CHILD);
        FaultyDisc::watch(stage.disc());
        FaultyDisc::refuse_locks(lock_error);
        const Scene scene = SceneOnTrial::make(OLD);
        for (int generation = OLD;; generation = OLD + NEW - generation) {
            SceneOnTrial::change_sheets(*scene, generation);
            SceneOnTrial::inq_card(*scene)->set_position(Vector2(generation, 0));
            SceneOnTrial::save(*scene, stage.scene());
            if (lock_error == 0)
                ::usleep(PAUSE);
        }
    }

    static constexpr useconds_t PAUSE = 500; // microseconds, in which others get a turn

    pid_t child;
};

/// The saver leaves the assets alone, since a scene's sounds only grow.
bool is_whole(const Loaded& loaded)
{
    return loaded && loaded->sheet == loaded->graph && loaded->sheet == loaded->cover_sheet;
}

void load_while_somebody_saves(const std::string& title, int lock_error)
{
    const Stage stage;
    stage.set_whole(OLD);
    Tally tally(title);
    FolderLock::set_patience(PATIENCE);
    const Saver saver(stage, lock_error);
    FaultyDisc::watch(stage.disc());
    FaultyDisc::refuse_locks(lock_error);
    int changes = 0;
    Loaded last;
    for (int i = 0; i < LEAST_LOADS || (changes < LEAST_CHANGES && i < MOST_LOADS); ++i) {
        const Loaded loaded = SceneOnTrial::load_generations(stage.scene());
        // Where locks don't work a load may be refused: it met the folder in the middle of moves.
        const bool is_good = is_whole(loaded) || (lock_error != 0 && !loaded);
        tally.add(loaded ? "load" : "refused", "a load", is_good ? "" : words_of(loaded));
        changes += loaded != last;
        last = loaded;
    }
    FaultyDisc::leave_alone();
    EXPECT_GE(changes, LEAST_CHANGES);
}
} // namespace

TEST(BusyFolder, is_never_read_as_a_mix)
{
    load_while_somebody_saves("loads while somebody saves", 0);
}

TEST(BusyFolder, is_never_read_as_a_mix_where_there_are_no_locks)
{
    load_while_somebody_saves("loads while somebody saves, without locks", ENOLCK);
}
