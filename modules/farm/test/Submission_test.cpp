#include "batch/hdr/BatchSceneInfo.h"
#include "batchapi/hdr/BatchManager.h"
#include "modules/farm/hdr/ChunkTask.h"
#include "modules/farm/hdr/FarmStatus.h"
#include "modules/farm/hdr/Submission.h"
#include "modules/farm/hdr/durable_file.h"
#include "modules/farm/test/FarmStage.h"

#include <gtest/gtest.h>
#include <stdexcept>

namespace {
using Tasks = std::vector<int>;

/// Keeps tasks until it is told to run them.
class Farm : public BatchEngine {
public:
    bool submit(const BatchJob& job, KIVString*) override
    {
        sent = job.tasks;
        if (!answers_orders)
            return false;
        for (const int index : job.tasks)
            waiting[job.name.str()].push_back({index, BatchState::WAITING, {}});
        return true;
    }
    bool query(const KIVString& name, const KIVString&, std::vector<BatchTask>* tasks,
               KIVString* error) override
    {
        if (looks_until_end > 0 && --looks_until_end == 0)
            waiting.clear();
        const auto found = waiting.find(name.str());
        *tasks = found == waiting.end() ? std::vector<BatchTask>() : found->second;
        *error = answers ? "" : "Silence.";
        return answers;
    }
    bool cancel(const KIVString& name, KIVString*) override
    {
        waiting.erase(name.str());
        return true;
    }
    bool inq_highest_index(int* index, KIVString*) override
    {
        *index = highest_index;
        return true;
    }

    bool answers = true;
    bool answers_orders = true;
    int looks_until_end = 0; // of all tasks; 0: they stay
    int highest_index = 1000;
    Tasks sent; // by the last job
    std::map<std::string, std::vector<BatchTask>> waiting;
};

/// A scene of 40 frames, in chunks of 8 for the farm.
class SubmissionTest : public testing::Test {
protected:
    SubmissionTest() { manager.set_engine(std::unique_ptr<BatchEngine>(farm)); }

    std::string submit(int first, int last, const std::string& options = "-yuv625")
    {
        farm->sent.clear();
        BatchSceneInfo info(stage.folder.path("scene"), 1, 40);
        info.set_selected_range(first, last);
        info.set_key_range(30, 60);
        const std::string renderer = stage.folder.path("renderer").str();
        return Submission(manager, {renderer, "/task"})
            .submit(RenderWords::read(options + " -o " + output(), 1.0), info);
    }

    std::string refusal_of(int first, int last)
    {
        try {
            return "taken: " + submit(first, last);
        } catch (const std::runtime_error& error) {
            return error.what();
        }
    }

    void run_all()
    {
        const auto all = std::exchange(farm->waiting, {});
        for (const auto& [name, tasks] : all)
            for (const BatchTask& task : tasks)
                ChunkTask(JobFolder(stage.folder.path("frames/.farm-" + name.substr(7)).str()),
                          task.index)
                    .run();
    }

    std::string output() const { return stage.folder.path("frames").str(); }
    FarmStatus look() { return FarmStatus::look(manager, output()); }

    JobStatus look_at_yuv()
    {
        for (const JobStatus& status : look().jobs)
            if (status.job.extension == ".yuv")
                return status;
        return {};
    }

    FarmStage stage;
    BatchManager manager;
    Farm* farm = new Farm; // the manager's
};
} // namespace

TEST_F(SubmissionTest, sends_what_is_neither_done_nor_on_its_way)
{
    EXPECT_NE(submit(1, 20).find("3 tasks for the frames 1-20 are sent"), std::string::npos);
    EXPECT_EQ(farm->sent, (Tasks{0, 1, 2}));
    EXPECT_NE(submit(1, 20).find("are on their way already"), std::string::npos);
    EXPECT_EQ(farm->sent, Tasks());
    submit(18, 34); // 21 to 24 come with the task that has 17 to 20
    EXPECT_EQ(farm->sent, (Tasks{3, 4}));
    EXPECT_EQ(farm->waiting.size(), 1U);
    EXPECT_TRUE(look().is_in_work());
    run_all();
    ASSERT_EQ(look().jobs.size(), 1U);
    EXPECT_EQ(inq_text(look().jobs[0].done), "1-34");
    EXPECT_TRUE(look().is_complete());

    EXPECT_NE(submit(1, 34).find("all frames are there"), std::string::npos);
    EXPECT_EQ(farm->sent, Tasks());
    std::filesystem::remove(stage.folder.path("frames/0009.yuv").str());
    EXPECT_FALSE(look().is_complete());
    submit(1, 34);
    EXPECT_EQ(farm->sent, Tasks{1});
    submit(1, 8, "-yuv625 -key_range"); // cut to the scene's 40 frames
    EXPECT_EQ(farm->sent, Tasks{4});
    EXPECT_THROW(submit(41, 50), std::runtime_error);
    farm->answers = false;
    EXPECT_THROW(submit(1, 40), std::runtime_error);
}

TEST_F(SubmissionTest, does_not_count_on_tasks_that_are_about_to_end)
{
    submit(1, 20);
    auto ending = farm->waiting;
    run_all();
    std::filesystem::remove(output() + "/0003.yuv");
    for (BatchTask& task : ending.begin()->second)
        task.state = BatchState::RUNNING;
    farm->waiting = ending;
    farm->looks_until_end = 3;
    submit(1, 24);
    EXPECT_EQ(farm->sent, (Tasks{0, 2}));
}

TEST_F(SubmissionTest, tries_failed_chunks_again_and_tells_of_them)
{
    stage.set_renderer("[ $frame = 12 ] && [ -e $here/scene/bad ] && echo no ink && exit 213");
    stage.folder.write("scene/bad", "");
    submit(1, 24);
    const std::string name = farm->waiting.begin()->first;
    run_all();
    farm->waiting[name] = {{1, BatchState::ENDING, {}}};
    const FarmStatus status = look();
    EXPECT_EQ(inq_text(status.jobs[0].failed), "12-16");
    EXPECT_EQ(status.jobs[0].failures.at(0).last.result, 213);
    EXPECT_FALSE(status.is_complete() || status.is_in_work());
    std::filesystem::remove(stage.folder.path("scene/bad").str());
    submit(1, 24);
    EXPECT_EQ(farm->sent, Tasks{1});
    run_all();
    EXPECT_TRUE(look().is_complete());
    EXPECT_TRUE(look().jobs[0].failures.empty());
}

TEST_F(SubmissionTest, takes_the_place_of_a_job_for_the_same_files)
{
    submit(1, 16);
    run_all();
    submit(33, 40);
    submit(1, 8, "-tga"); // other files
    EXPECT_EQ(farm->waiting.size(), 2U);
    stage.folder.write("scene/Scene.contents", "saved anew");
    farm->answers_orders = false;
    EXPECT_NE(refusal_of(17, 24).find("takes the place of render-"), std::string::npos);
    farm->answers_orders = true;
    submit(17, 24);
    EXPECT_EQ(farm->sent, Tasks{2});
    EXPECT_EQ(farm->waiting.size(), 2U); // without the first
    cancel_jobs(manager, output());
    EXPECT_TRUE(farm->waiting.empty());
    submit(1, 8);
    run_all();
    EXPECT_EQ(inq_text(look().old), "9-16");
    EXPECT_FALSE(look().is_complete());

    stage.folder.write("scene/Scene.contents", "as submitted");
    submit(1, 16);
    EXPECT_EQ(farm->sent, Tasks{0}) << "9 to 16 are still those of this version";
    run_all();
    const FarmJob held_up = look_at_yuv().job;
    stage.folder.write("drawing", "repainted");
    EXPECT_NE(submit(1, 8).find("drawing has changed: all frames"), std::string::npos);
    EXPECT_EQ(farm->sent, Tasks{0});
    JobFolder::of(held_up).mark_done(held_up, 3, *FrameFacts::look(output() + "/0003.yuv"));
    EXPECT_EQ(inq_text(look_at_yuv().waiting), "1-8");
    EXPECT_EQ(inq_text(look_at_yuv().missing), "9-16,33-40");
    stage.folder.write("drawing", "repainted once more");
    run_all();
    EXPECT_EQ(inq_text(look_at_yuv().failed), "1-8");
}

TEST_F(SubmissionTest, begins_a_job_anew_that_can_not_be_read)
{
    submit(1, 16);
    run_all();
    submit(17, 24);
    const JobFolder folder = JobFolder::list(output()).at(0);
    write_durably(folder.inq_path() / "job.json", "{\"format\":1}");
    EXPECT_EQ(look().unreadable.size(), 1U);
    EXPECT_FALSE(look().is_complete());
    EXPECT_THROW(submit(1, 16), std::runtime_error) << "its tasks may know other chunks";
    cancel_jobs(manager, output());
    EXPECT_TRUE(farm->waiting.empty());
    stage.folder.write("drawing", "repainted");
    submit(1, 16);
    EXPECT_EQ(farm->sent, (Tasks{0, 1}));
}

TEST_F(SubmissionTest, knows_whose_job_is_in_which_folder)
{
    submit(1, 8);
    const std::string link = stage.folder.path("link").str();
    std::filesystem::create_directory_symlink(output(), link);
    EXPECT_EQ(JobFolder::list(link).size(), 1U);
    const std::string copy = stage.folder.path("copy").str();
    std::filesystem::copy(output(), copy, std::filesystem::copy_options::recursive);
    EXPECT_TRUE(JobFolder::list(copy).empty());
    EXPECT_EQ(cancel_jobs(manager, copy), "");

    FarmJob job = look_at_yuv().job;
    job.user = "somebody";
    JobFolder::of(job).write_job(job);
    EXPECT_THROW(cancel_jobs(manager, output()), std::runtime_error);
    EXPECT_NE(refusal_of(1, 16).find("one of somebody"), std::string::npos);
    job.asked.insert({41, 2'000'000'000});
    JobFolder::of(job).write_job(job);
    EXPECT_EQ(look().unreadable.size(), 1U);
    EXPECT_EQ(farm->waiting.size(), 1U);
}

TEST_F(SubmissionTest, keeps_chunks_while_tasks_know_them_by_number)
{
    submit(1, 10, "-yuv625 --chunk 5");
    submit(11, 20, "-yuv625 --chunk 7");
    EXPECT_EQ(farm->sent, (Tasks{2, 3}));
    run_all();
    submit(21, 40, "-yuv625 --chunk 7");
    EXPECT_EQ(farm->sent, (Tasks{2, 3, 4, 5}));
    run_all();
    farm->highest_index = 3;
    stage.folder.write("scene/Scene.contents", "saved anew");
    submit(1, 40);
    EXPECT_EQ(farm->sent, (Tasks{0, 1, 2, 3}));
}
