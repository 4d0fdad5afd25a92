#include "tests/faults/InChild.h"
#include "tests/faults/Stage.h"
#include "tests/faults/Sweep.h"
#include "tests/faults/Tally.h"

namespace {
constexpr int OLD = 1;
constexpr int NEW = 2;
constexpr int NEXT = 3;
constexpr int OF_ANOTHER = 4;

/// A save to "scene", and what stands on the disc before.
struct Save {
    std::string title;
    FolderContents disc;
    Loaded old_scene;
    bool changes_sheets = true; // so that they are written
    bool saves_all = false;
    bool is_copy = false;

    void change(KIVScene& scene, int generation) const
    {
        SceneOnTrial::change_graph_and_assets(scene, generation);
        if (changes_sheets)
            SceneOnTrial::change_sheets(scene, generation);
    }
    Generations inq_scene(int generation) const
    {
        return changes_sheets ? Generations::whole(generation)
                              : Generations{OLD, OLD, generation, generation};
    }
};

/// What the process that saves under a fault has to say.
struct Notes {
    bool has_fired = false;
    bool has_answered = false;
    bool is_saved = false;
    bool is_told = false;
    bool is_next_saved = false;
};

/// Tries faults on one save.
class SaveUnderFaults {
public:
    SaveUnderFaults(const Stage& stage, Save save, Scene scene)
        : stage(stage), save(std::move(save)), scene(std::move(scene)), tally(this->save.title)
    {
        this->save.change(*this->scene, NEW);
    }

    void try_all(SweepSize size)
    {
        sweep_all(size, [&](const Fault& fault) { return try_fault(fault); });
    }

private:
    /// False if the fault found no call.
    bool try_fault(const Fault& fault)
    {
        stage.set(save.disc);
        const auto end = in_child<Notes>([&](Notes& notes) { run(fault, notes); });
        if (!end.was_killed && end.was_well && !end.notes.has_fired)
            return false;
        tally.add(inq_name(fault.call), fault.inq_words(), find_loss(fault, end));
        return true;
    }

    // In the child, which inherits the changed scene.
    void run(const Fault& fault, Notes& notes) const
    {
        const std::size_t alerts = stage.inq_alert_count();
        FaultyDisc::watch(stage.disc());
        FaultyDisc::arm(fault);
        notes.is_saved = save_scene(*scene);
        notes.has_answered = true;
        notes.has_fired = FaultyDisc::has_fired();
        FaultyDisc::leave_alone();
        notes.is_told = stage.inq_alert_count() > alerts;
        stage.keep_aside();
        notes.is_next_saved = save_next(fault);
    }

    bool save_scene(KIVScene& given) const
    {
        return given.save_to_file(stage.scene(), save.saves_all, true, save.is_copy);
    }

    /// The disc is well again. Now the same scene is saved anew, or another one of the process.
    bool save_next(const Fault& fault) const
    {
        if (comes_from_another(fault))
            return SceneOnTrial::make(OF_ANOTHER)->save_to_file(stage.scene(), true, true, false);
        save.change(*scene, NEXT);
        return save_scene(*scene);
    }

    static bool comes_from_another(const Fault& fault) { return fault.nth % 2 == 0; }

    /// Empty if there is none.
    std::string find_loss(const Fault& fault, const ChildEnd<Notes>& end) const
    {
        const Notes& notes = end.notes;
        if (!end.was_killed && !end.was_well)
            return "the process crashed";
        const Loaded seen = SceneOnTrial::load_generations(notes.has_answered ? stage.scene_aside()
                                                                              : stage.scene());
        const Generations new_scene = save.inq_scene(NEW);
        if (notes.is_saved && seen != new_scene)
            return "saved, but the disc holds " + words_of(seen);
        if (seen != new_scene && seen != save.old_scene)
            return "the disc holds " + words_of(seen);
        if (notes.has_answered && !notes.is_saved && fault.manner == Fault::REFUSE &&
            seen != save.old_scene)
            return "refused, but the disc holds " + words_of(seen);
        if (notes.has_answered && !notes.is_saved && !notes.is_told)
            return "refused, but nobody was told";
        return notes.has_answered ? find_later_loss(fault, notes) : find_loss_after_kill();
    }

    std::string find_later_loss(const Fault& fault, const Notes& notes) const
    {
        if (!notes.is_next_saved)
            return "the next save failed";
        return find_loss_after_save(comes_from_another(fault) ? Generations::whole(OF_ANOTHER)
                                                              : save.inq_scene(NEXT));
    }

    std::string find_loss_after_kill() const
    {
        if (!SceneOnTrial::make(OF_ANOTHER)->save_to_file(stage.scene(), true, true, false))
            return "after the kill no save succeeded";
        return find_loss_after_save(Generations::whole(OF_ANOTHER));
    }

    std::string find_loss_after_save(const Generations& saved) const
    {
        const Loaded seen = SceneOnTrial::load_generations(stage.scene());
        if (seen != saved)
            return "after the next save the disc holds " + words_of(seen);
        const std::string left = inq_left_over(read_folder(stage.scene()));
        return left.empty() ? "" : "after the next save " + left + " is left";
    }

    const Stage& stage;
    Save save;
    Scene scene;
    Tally tally;
};

constexpr char SOURCE[] = "source";

/// Over the old scene.
void try_overwriting(const std::string& title, bool changes_sheets, SweepSize size)
{
    const Stage stage;
    stage.set_whole(OLD);
    Scene scene = load(stage.scene());
    SaveUnderFaults(stage,
                    {.title = title,
                     .disc = read_folder(stage.disc()),
                     .old_scene = Generations::whole(OLD),
                     .changes_sheets = changes_sheets},
                    std::move(scene))
        .try_all(size);
}

void try_copying(const Stage& stage, const std::string& title, const FolderContents& disc,
                 const Loaded& old_scene)
{
    Scene scene = load(stage.disc() + "/" + SOURCE);
    SaveUnderFaults(
        stage,
        {.title = title, .disc = disc, .old_scene = old_scene, .saves_all = true, .is_copy = true},
        std::move(scene))
        .try_all(few_or_all_errors());
}
} // namespace

TEST(SaveUnderFaults, over_a_scene_leaves_the_old_or_the_new_one)
{
    try_overwriting("overwrite", true, SweepSize::ALL_ERRORS);
    try_overwriting("overwrite but the sheets", false, few_or_all_errors());
}

TEST(SaveUnderFaults, to_a_new_folder_leaves_no_scene_or_the_new_one)
{
    const Stage stage;
    SaveUnderFaults(stage, {.title = "new folder", .disc = {}, .old_scene = {}},
                    SceneOnTrial::make(OLD))
        .try_all(few_or_all_errors());
}

TEST(SaveUnderFaults, as_a_copy_leaves_what_was_there_or_the_new_one)
{
    const Stage stage;
    stage.set_whole(OF_ANOTHER);
    const FolderContents disc = read_folder(stage.disc());
    stage.set_whole(OLD, SOURCE);
    try_copying(stage, "copy over another", disc, Generations::whole(OF_ANOTHER));
    stage.set_whole(OLD, SOURCE);
    try_copying(stage, "copy to a new folder", read_folder(stage.disc()), {});
}
