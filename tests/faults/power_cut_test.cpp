#include "tests/faults/Stage.h"
#include "tests/faults/Tally.h"

#include <algorithm>
#include <cerrno>
#include <functional>
#include <gtest/gtest.h>
#include <unordered_map>

namespace {
constexpr int OLD = 1;
constexpr int NEW = 2;
constexpr int NEXT = 3;
constexpr unsigned int SEED = 20240229; // any, but always the same

/// One save, load or other work on a disc: its steps, and which scenes may be there meanwhile and
/// at its end.
struct Work {
    std::vector<DiscStep> steps;
    std::vector<Loaded> meanwhile;
    std::vector<Loaded> at_end;
};

std::vector<DiscStep> record(const Stage& stage, const std::function<void()>& work)
{
    FaultyDisc::watch(stage.disc());
    work();
    std::vector<DiscStep> steps = FaultyDisc::inq_steps();
    FaultyDisc::leave_alone();
    return steps;
}

/// Cuts the power of a disc at every step of some work, and loads what it may then hold.
class PowerCut {
public:
    PowerCut(const Stage& stage, std::string title, std::size_t most_states)
        : stage(stage), tally(std::move(title)), most_states(most_states)
    {}

    /// `model` goes along, to the end of the work.
    void try_at_every_step(DiscModel& model, const Work& work)
    {
        try_at(model, work.steps.empty() ? work.at_end : work.meanwhile, "before the first step");
        for (std::size_t i = 0; i < work.steps.size(); ++i) {
            model.follow(work.steps[i]);
            const bool is_last = i + 1 == work.steps.size();
            try_at(model, is_last ? work.at_end : work.meanwhile,
                   "after step " + std::to_string(i + 1) + " of " +
                       std::to_string(work.steps.size()) + ", " + work.steps[i].path);
        }
    }

    void try_at(const DiscModel& model, const std::vector<Loaded>& allowed, const std::string& when)
    {
        for (const FolderContents& state : model.inq_after_power_cut(most_states, random)) {
            const Loaded seen = load(state);
            const bool is_allowed = std::ranges::find(allowed, seen) != allowed.end();
            tally.add("state", when, is_allowed ? "" : words_of(seen) + words_of_files(state));
        }
    }

private:
    static std::string words_of_files(const FolderContents& state)
    {
        std::string words = " from";
        for (const auto& [name, bytes] : state)
            words += " " + name + ":" + std::to_string(bytes.size());
        return words;
    }

    /// Most states come again and again.
    Loaded load(const FolderContents& state)
    {
        std::string key;
        for (const auto& [name, bytes] : state)
            key += name + ":" + std::to_string(std::hash<std::string>()(bytes)) + " ";
        const auto known = results.find(key);
        return known != results.end() ? known->second : results[key] = stage.load_aside(state);
    }

    const Stage& stage;
    Tally tally;
    std::size_t most_states;
    std::unordered_map<std::string, Loaded> results;
    std::mt19937 random{SEED};
};

/// A save of `generation` by a process of its own, so to say.
Work record_save(const Stage& stage, KIVScene& scene, int generation, const Loaded& old_scene)
{
    SceneOnTrial::change(scene, generation);
    const Loaded new_scene = Generations::whole(generation);
    Work work{{}, {old_scene, new_scene}, {new_scene}};
    work.steps = record(stage, [&] { EXPECT_TRUE(SceneOnTrial::save(scene, stage.scene())); });
    return work;
}

std::size_t few_or(std::size_t many)
{
    constexpr std::size_t FEW = 25;
    return all_faults() ? many : FEW;
}
} // namespace

TEST(PowerCut, knows_every_call_that_a_save_makes)
{
    const Stage stage;
    stage.set({});
    DiscModel model(read_folder(stage.disc()));
    const Scene scene = SceneOnTrial::make(OLD);
    for (const int generation : {OLD, NEW}) {
        for (const DiscStep& step : record_save(stage, *scene, generation, {}).steps)
            model.follow(step);
        EXPECT_EQ(model.inq_live(), read_folder(stage.disc()));
    }
}

TEST(PowerCut, during_two_saves_leaves_one_scene_whole)
{
    const Stage stage;
    stage.set_whole(OLD);
    DiscModel model(read_folder(stage.disc()));
    const Scene scene = load(stage.scene());
    PowerCut cut(stage, "power cut during two saves", few_or(400));
    cut.try_at_every_step(model, record_save(stage, *scene, NEW, Generations::whole(OLD)));
    cut.try_at_every_step(model, record_save(stage, *scene, NEXT, Generations::whole(NEW)));
}

/// What a save has written and could not sync goes when the next one starts.
TEST(PowerCut, during_the_save_behind_a_refused_one_leaves_a_scene_whole)
{
    const Stage stage;
    PowerCut cut(stage, "sync refused, saved, power cut", few_or(100));
    bool has_fired = true;
    for (int nth = 1; has_fired; ++nth) {
        stage.set_whole(OLD);
        DiscModel model(read_folder(stage.disc()));
        const Scene scene = load(stage.scene());
        SceneOnTrial::change(*scene, NEW);
        for (const DiscStep& step : record(stage, [&] {
                 FaultyDisc::arm({DiscCall::SYNC, nth, Fault::REFUSE, EIO});
                 SceneOnTrial::save(*scene, stage.scene());
                 has_fired = FaultyDisc::has_fired();
             }))
            model.follow(step);
        Work next = record_save(stage, *scene, NEXT, Generations::whole(OLD));
        next.meanwhile.push_back(Generations::whole(NEW));
        cut.try_at_every_step(model, next);
    }
}

TEST(PowerCut, during_a_save_to_a_new_folder_leaves_none_or_a_whole_scene)
{
    const Stage stage;
    stage.set({});
    DiscModel model({});
    const Scene scene = SceneOnTrial::make(OLD);
    PowerCut cut(stage, "power cut during a first save", few_or(400));
    cut.try_at_every_step(model, record_save(stage, *scene, NEW, {}));
}

/// The process is killed at a step of its save, the disc goes on. Another one loads the scene or
/// saves it, and then the power goes.
class KilledThenCut : public testing::Test {
protected:
    KilledThenCut()
    {
        stage.set_whole(OLD);
        before = read_folder(stage.disc());
        const Scene scene = load(stage.scene());
        steps = record_save(stage, *scene, NEW, Generations::whole(OLD)).steps;
    }

    /// A disc as it is when the process has been killed behind so many steps.
    DiscModel run_until(std::size_t count) const
    {
        DiscModel model(before);
        for (std::size_t i = 0; i < count; ++i)
            model.follow(steps[i]);
        stage.set(model.inq_live());
        return model;
    }

    Stage stage;
    FolderContents before;
    std::vector<DiscStep> steps;
    const std::vector<Loaded> old_or_new = {Generations::whole(OLD), Generations::whole(NEW)};
};

TEST_F(KilledThenCut, a_load_between_makes_no_difference)
{
    PowerCut cut(stage, "killed, loaded, power cut", few_or(100));
    for (std::size_t killed_at = 0; killed_at <= steps.size(); ++killed_at) {
        DiscModel model = run_until(killed_at);
        Work load{{}, old_or_new, old_or_new};
        load.steps = record(stage, [&] { EXPECT_TRUE(::load(stage.scene())); });
        cut.try_at_every_step(model, load);
    }
}

TEST_F(KilledThenCut, a_save_between_is_one_more_scene_that_may_be_there)
{
    PowerCut cut(stage, "killed, saved, power cut", few_or(75) / 3);
    const std::size_t stride = all_faults() ? 1 : 3;
    for (std::size_t killed_at = 0; killed_at <= steps.size(); killed_at += stride) {
        DiscModel model = run_until(killed_at);
        const Scene other = SceneOnTrial::make(NEXT);
        Work save = record_save(stage, *other, NEXT, Generations::whole(OLD));
        save.meanwhile.push_back(Generations::whole(NEW));
        cut.try_at_every_step(model, save);
    }
}

/// The power is cut twice: what the first cut left is at rest when the second comes.
TEST_F(KilledThenCut, a_second_cut_during_the_recovery_changes_nothing)
{
    std::mt19937 random(SEED);
    PowerCut cut(stage, "power cut during recovery", few_or(100));
    const std::size_t stride = all_faults() ? 1 : 4;
    for (std::size_t cut_at = 0; cut_at <= steps.size(); cut_at += stride)
        for (const FolderContents& state :
             run_until(cut_at).inq_after_power_cut(few_or(60) / 4, random)) {
            const Loaded scene = stage.load_aside(state);
            stage.set(state);
            DiscModel model(state);
            Work load{{}, {scene}, {scene}};
            load.steps = record(stage, [&] { ::load(stage.scene()); });
            cut.try_at_every_step(model, load);
        }
}
