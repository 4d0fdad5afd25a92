#include "modules/farm/hdr/ChunkTask.h"
#include "modules/farm/hdr/durable_file.h"
#include "modules/farm/hdr/finger_prints.h"
#include "modules/farm/test/FarmStage.h"

#include <csignal>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {
/// A job of the frames 3 to 12 in chunks of four, with the tasks that come to it.
class ChunkTaskTest : public testing::Test {
protected:
    ChunkTaskTest() { start_order(); }

    void start_order(const std::string& strict = "")
    {
        const int order = job.order;
        job = FarmJob();
        job.order = order + 1;
        job.renderer = stage.folder.path("renderer").str();
        job.scene = stage.folder.path("scene").str();
        job.output = stage.folder.path("frames").str();
        job.extension = ".yuv";
        job.options = {"-yuv625"};
        if (!strict.empty())
            job.options.push_back(strict);
        job.chunk_size = 4;
        job.scene_length = 12;
        job.asked = inq_frames({3, 12});
        update_prints();
    }

    /// The renderer is part of the key.
    void update_prints()
    {
        job.renderer_print = inq_program_print(job.renderer);
        job.scene_print = inq_scene_print(job.scene);
        folder().make();
        folder().write_job(job);
    }

    void set_renderer(const std::string& trouble)
    {
        stage.set_renderer(trouble);
        update_prints();
    }

    JobFolder folder() const { return JobFolder::of(job); }
    int run(int chunk) const { return ChunkTask(folder(), chunk).run(); }
    std::vector<FailedTry> failures() const { return folder().read_failures(1); }
    FrameSet done() const { return folder().inq_done(job, job.asked); }
    bool has_scratch() const { return !std::filesystem::is_empty(folder().inq_path() / "tmp"); }

    FarmStage stage;
    FarmJob job;
};
} // namespace

TEST_F(ChunkTaskTest, renders_what_is_asked_for_and_not_done)
{
    EXPECT_EQ(run(0), ChunkTask::DONE);
    EXPECT_EQ(done(), inq_frames({3, 4})); // of 1 to 4
    EXPECT_EQ(run(0), ChunkTask::DONE);
    EXPECT_EQ(stage.count_runs(), 1);
    EXPECT_FALSE(has_scratch());

    stage.folder.write("frames/0004.yuv", "of another job");
    EXPECT_EQ(done(), inq_frames({3, 3}));
    EXPECT_EQ(run(0), ChunkTask::DONE);
    EXPECT_TRUE(stage.folder.read("frames/0004.yuv").starts_with("4 as submitted\n"));
    std::filesystem::copy_file(job.output + "/0003.yuv", job.output + "/copy");
    std::filesystem::rename(job.output + "/copy", job.output + "/0003.yuv");
    EXPECT_EQ(done(), inq_frames({3, 4})) << "a twin of the task wrote the same frame";
    EXPECT_EQ(run(7), ChunkTask::DONE) << "beyond all frames";
}

TEST_F(ChunkTaskTest, believes_files_and_not_the_renderers_result)
{
    struct {
        const char* trouble;
        int result;
        int tries;
        FrameSet done;
        const char* strict = "";
    } const cases[] = {
        {"[ $frame = 7 ] && continue", ChunkTask::FRAMES_MISSING, 3, {5, 6, 8}},
        {"[ $frame = 7 ] && exit 213", 213, 1, {5, 6}},
        {"[ $frame = 7 ] && exit 205", 205, 3, {5, 6}},
        {"[ $frame = 6 ] && write 6 $4/0006.yuv && log ',\"unreadable\":[\"x\"]' && exit 215",
         215,
         3,
         {5},
         "--strict"},
        {"[ $frame = 6 ] && write 6 $4/0006.yuv && kill -9 $$", 128 + SIGKILL, 3, {5}, "--strict"},
        {"[ $frame = 7 ] && echo 7 > $4/0007.yuv && kill -9 $$", 128 + SIGKILL, 3, {5, 6}},
        {"[ $frame = 8 ] && write 8 $4/0008.yuv && exit 9", ChunkTask::DONE, 0, {5, 6, 7, 8}},
        {"[ -e $here/scene/mark ] || { touch $here/scene/mark; exit 9; }",
         ChunkTask::DONE,
         1,
         {5, 6, 7, 8}},
    };
    for (const auto& [trouble, result, tries, frames, strict] : cases) {
        start_order(strict);
        set_renderer(trouble);
        EXPECT_EQ(run(1), result) << trouble;
        EXPECT_EQ(failures().size(), tries) << trouble;
        EXPECT_EQ(done(), frames) << trouble;
        EXPECT_FALSE(has_scratch());
    }
}

TEST_F(ChunkTaskTest, counts_tries_of_all_tasks_until_the_next_order)
{
    set_renderer("exit 9");
    folder().add_failure(1, {"then", "there", 1, 1, 9, "5-8", "lost", false});
    EXPECT_EQ(run(1), 9);
    EXPECT_EQ(stage.count_runs(), 2);
    EXPECT_EQ(run(1), 9) << "requeued";
    EXPECT_EQ(stage.count_runs(), 2);
    const FailedTry last = failures().back();
    EXPECT_EQ(std::tuple(last.number, last.result, last.frames, last.is_final),
              std::tuple(3, 9, "5-8", true));

    ++job.order;
    folder().write_job(job);
    EXPECT_EQ(run(1), 9);
    EXPECT_EQ(stage.count_runs(), 5);
}

TEST_F(ChunkTaskTest, never_mixes_two_versions)
{
    set_renderer("echo saved anew > $here/scene/Scene.contents");
    EXPECT_EQ(run(1), ChunkTask::SCENE_CHANGED);
    EXPECT_EQ(run(2), ChunkTask::SCENE_CHANGED);
    EXPECT_EQ(stage.count_runs(), 1);

    start_order("--strict");
    job.shown = {{stage.folder.path("scene/Scene.contents").str(), NO_FILE_PRINT}};
    folder().write_job(job);
    EXPECT_EQ(run(1), ChunkTask::SCENE_CHANGED) << "a picture has come";

    start_order();
    stage.set_renderer("");
    EXPECT_EQ(run(1), ChunkTask::RENDERER_DIFFERS);
    update_prints();
    folder().set_superseded(true);
    EXPECT_EQ(run(1), ChunkTask::SUPERSEDED);
    EXPECT_EQ(done(), FrameSet());
    EXPECT_FALSE(stage.has_frame(5));
}

TEST_F(ChunkTaskTest, clears_up_when_it_is_stopped_and_after_those_that_were_killed)
{
    set_renderer("touch $here/begun; sleep 5 & trap 'kill $!; exit 143' TERM; wait; exit 1");
    for (const int signal : {SIGTERM, SIGKILL}) {
        const pid_t pid = ::fork();
        if (pid == 0)
            ::_exit(run(1));
        while (!stage.folder.has("begun"))
            ::usleep(1000);
        std::filesystem::remove(stage.folder.path("begun").str());
        ::kill(pid, signal);
        int status = 0;
        ::waitpid(pid, &status, 0);
        EXPECT_EQ(has_scratch(), signal == SIGKILL);
        EXPECT_TRUE(signal == SIGKILL || WEXITSTATUS(status) == 128 + SIGTERM);
    }
    EXPECT_TRUE(failures().empty());
    const std::string elsewhere = inq_host_name() + "-999999999-2-1"; // the host has such a name
    std::filesystem::create_directory(folder().inq_path() / "tmp" / elsewhere);
    EXPECT_EQ(run(7), ChunkTask::DONE);
    EXPECT_TRUE(std::filesystem::exists(folder().inq_path() / "tmp" / elsewhere));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder().inq_path() / "tmp"), {}),
              1);
}
