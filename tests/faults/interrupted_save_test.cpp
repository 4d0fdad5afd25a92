#include "tests/faults/InChild.h"
#include "tests/faults/Stage.h"
#include "tests/faults/Sweep.h"
#include "tests/faults/Tally.h"

// A save was interrupted by the end of its process, at any of its steps. Then the scene is loaded,
// or saved, and now the disc makes trouble.

namespace {
constexpr int OLD = 1;
constexpr int NEW = 2;
constexpr int NEXT = 3;
constexpr char RECORD[] = "scene/Scene.commit~";

/// All that the disc held during a save over an old scene, each state once, in order.
std::vector<FolderContents> record_save(const Stage& stage)
{
    stage.set_whole(OLD);
    const FolderContents before = read_folder(stage.disc());
    const Scene scene = load(stage.scene());
    SceneOnTrial::change(*scene, NEW);
    FaultyDisc::watch(stage.disc());
    EXPECT_TRUE(SceneOnTrial::save(*scene, stage.scene()));
    std::vector<FolderContents> states{before};
    DiscModel model(before);
    for (const DiscStep& step : FaultyDisc::inq_steps()) {
        model.follow(step);
        if (model.inq_live() != states.back())
            states.push_back(model.inq_live());
    }
    FaultyDisc::leave_alone();
    EXPECT_EQ(states.back(), read_folder(stage.disc()));
    return states;
}

/// Those in which a load finds something to put in order, a few of them unless all are asked for.
std::vector<FolderContents> choose(const std::vector<FolderContents>& states)
{
    constexpr std::size_t FEW = 2;
    std::vector<FolderContents> moving;
    for (const FolderContents& state : states)
        if (state.contains(RECORD))
            moving.push_back(state);
    if (all_faults() || moving.size() <= FEW)
        return moving;
    std::vector<FolderContents> chosen;
    for (std::size_t i = 0; i < FEW; ++i)
        chosen.push_back(moving[(2 * i + 1) * moving.size() / (2 * FEW)]);
    return chosen;
}

struct LoadNotes {
    bool has_fired = false;
    Loaded scene;
    Loaded scene_again;
};

/// Loads under a fault, and again when the disc is well.
void load_under(const Stage& stage, const Fault& fault, LoadNotes& notes)
{
    FaultyDisc::watch(stage.disc());
    FaultyDisc::arm(fault);
    notes.scene = SceneOnTrial::load_generations(stage.scene());
    notes.has_fired = FaultyDisc::has_fired();
    FaultyDisc::leave_alone();
    notes.scene_again = SceneOnTrial::load_generations(stage.scene());
}

/// `scene` is what a load without faults gives.
std::string find_loss(const Stage& stage, const ChildEnd<LoadNotes>& end, const Generations& scene)
{
    const LoadNotes& notes = end.notes;
    if (!end.was_killed && !end.was_well)
        return "the process crashed";
    if (notes.scene && notes.scene != scene)
        return "the load gave " + words_of(notes.scene);
    if (end.was_well && notes.scene_again != scene)
        return "the second load gave " + words_of(notes.scene_again);
    const Loaded later = SceneOnTrial::load_generations(stage.scene());
    return later == scene ? "" : "a later process loads " + words_of(later);
}

bool is_readable_without_changes(const Fault& fault)
{
    return changes_disc(fault.call) && fault.call != DiscCall::OPEN &&
           fault.call != DiscCall::CLOSE && fault.manner == Fault::REFUSE_FROM_NOW;
}

void try_loads(const Stage& stage, const FolderContents& state, Tally& tally)
{
    const Loaded scene = stage.load_aside(state);
    ASSERT_TRUE(scene);
    sweep_all(few_or_all_errors(), [&](const Fault& fault) {
        stage.set(state);
        const auto end =
            in_child<LoadNotes>([&](LoadNotes& notes) { load_under(stage, fault, notes); });
        if (end.was_well && !end.notes.has_fired)
            return false;
        std::string words = find_loss(stage, end, *scene);
        if (is_readable_without_changes(fault) && !end.notes.scene)
            words += " the load was refused";
        tally.add(inq_name(fault.call), fault.inq_words(), words);
        return true;
    });
}
} // namespace

TEST(InterruptedSave, at_any_step_leaves_what_a_load_gives_whole)
{
    const Stage stage;
    Tally tally("killed at every step");
    Loaded last = Generations::whole(OLD);
    for (const FolderContents& state : record_save(stage)) {
        const Loaded seen = stage.load_aside(state);
        const bool is_whole = seen == last || seen == Generations::whole(NEW);
        tally.add("step", "a step of the save", is_whole ? "" : words_of(seen));
        last = seen; // there is no way back
    }
    EXPECT_EQ(last, Generations::whole(NEW));
}

TEST(InterruptedSave, by_a_torn_record_never_moves_a_part_of_the_scene)
{
    const Stage stage;
    Tally tally("records torn and parts damaged");
    std::size_t longest = 0;
    for (FolderContents state : record_save(stage)) {
        const std::string record = state[RECORD];
        if (record.size() <= longest)
            continue; // what is moved by then has been moved by a whole record
        longest = record.size();
        for (std::size_t size = 0; size < record.size(); ++size) {
            std::string damaged = record;
            damaged[size] = char(damaged[size] ^ (1 << size % 8));
            for (const std::string& each : {record.substr(0, size), damaged}) {
                state[RECORD] = each;
                const Loaded seen = stage.load_aside(state);
                tally.add("record", "damaged at " + std::to_string(size),
                          seen == Generations::whole(OLD) ? "" : words_of(seen));
            }
        }
        state[RECORD] = record;
        for (const auto& [name, bytes] : FolderContents(state)) {
            if (!name.ends_with('~') || name == RECORD)
                continue;
            state[name] = bytes.substr(0, bytes.size() / 2);
            const Loaded seen = stage.load_aside(state);
            const bool is_good =
                seen ? seen == Generations::whole(NEW) // as the old part is the same
                     : read_folder(stage.aside()) == state;
            tally.add("part", name + " cut", is_good ? "" : words_of(seen));
            state[name] = bytes;
        }
    }
}

TEST(InterruptedSave, is_recovered_under_faults)
{
    const Stage stage;
    Tally tally("loads after an interrupted save");
    for (const FolderContents& state : choose(record_save(stage)))
        try_loads(stage, state, tally);
}

TEST(InterruptedSave, is_recovered_by_a_save_under_faults)
{
    struct Notes {
        bool has_fired = false;
        bool is_saved = false;
    };
    const Stage stage;
    Tally tally("saves after an interrupted save");
    for (const FolderContents& state : choose(record_save(stage))) {
        const Loaded old_scene = stage.load_aside(state);
        ASSERT_TRUE(old_scene);
        const Scene scene = load(stage.scene_aside());
        SceneOnTrial::change_graph_and_assets(*scene, NEXT);
        const Generations new_scene{old_scene->sheet, old_scene->cover_sheet, NEXT, NEXT};
        sweep_all(few_or_all_errors(), [&](const Fault& fault) {
            stage.set(state);
            const auto end = in_child<Notes>([&](Notes& notes) {
                FaultyDisc::watch(stage.disc());
                FaultyDisc::arm(fault);
                notes.is_saved = SceneOnTrial::save(*scene, stage.scene());
                notes.has_fired = FaultyDisc::has_fired();
            });
            if (end.was_well && !end.notes.has_fired)
                return false;
            const Loaded seen = SceneOnTrial::load_generations(stage.scene());
            const bool is_good = seen == new_scene || (seen == old_scene && !end.notes.is_saved);
            tally.add(inq_name(fault.call), fault.inq_words(), is_good ? "" : words_of(seen));
            return true;
        });
    }
}
