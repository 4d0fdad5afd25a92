#include "batchapi/hdr/BatchManager.h"

#include <gtest/gtest.h>

namespace {
/// Keeps `most` tasks waiting, and answers as it is told.
class Queue : public BatchEngine {
public:
    bool submit(const BatchJob& job, KIVString* error) override
    {
        ++submissions;
        for (const int index : job.tasks)
            if (waiting.size() < most)
                waiting.push_back({index, BatchState::WAITING, {}});
        *error = "No answer.";
        answers = answers_afterwards;
        return says_yes;
    }
    bool query(const KIVString&, std::vector<BatchTask>* tasks, KIVString* error) override
    {
        *tasks = answers ? waiting : std::vector<BatchTask>();
        *error = "Silence.";
        return answers;
    }
    bool cancel(const KIVString&, KIVString*) override
    {
        waiting.clear();
        return true;
    }
    bool inq_highest_index(int*, KIVString*) override { return false; }

    std::size_t most = 1000;
    bool says_yes = true;
    bool answers = true;
    bool answers_afterwards = true;
    int submissions = 0;
    std::vector<BatchTask> waiting;
};

const BatchJob JOB{"render-1", {"program"}, {0, 1, 4}, "/tmp", "/tmp/log.{task}"};

struct Service {
    Service() { manager.set_engine(std::unique_ptr<BatchEngine>(queue)); }

    BatchManager manager;
    Queue* queue = new Queue; // the manager's
    KIVString error;
};
} // namespace

TEST(BatchManager, takes_a_task_once_until_it_is_cancelled)
{
    Service s;
    EXPECT_TRUE(s.manager.submit(JOB, &s.error));
    BatchJob more = JOB;
    more.tasks = {5, 6};
    s.queue->says_yes = false;
    EXPECT_TRUE(s.manager.submit(more, &s.error)); // after all
    more.tasks = {7, 8};
    s.queue->most = s.queue->waiting.size() + 1;
    EXPECT_FALSE(s.manager.submit(more, &s.error));
    EXPECT_EQ(s.error.str(), "No answer. A part of the job render-1 was taken.");
    s.queue->says_yes = true;
    EXPECT_FALSE(s.manager.submit(JOB, &s.error));
    EXPECT_EQ(s.error.str(), "The job render-1 is in the queue already.");
    EXPECT_TRUE(s.manager.cancel("render-1", &s.error));
    EXPECT_TRUE(s.manager.submit(JOB, &s.error));
    EXPECT_EQ(s.queue->submissions, 4);
}

TEST(BatchManager, sends_nothing_that_it_could_not_find_again)
{
    Service s;
    BatchJob of_all = JOB, idle = JOB, disordered = JOB, homeless = JOB;
    of_all.name = "";
    idle.arguments.clear();
    disordered.tasks = {1, 1};
    homeless.folder = "here";
    for (const BatchJob& job : {of_all, idle, disordered, homeless})
        EXPECT_FALSE(s.manager.submit(job, &s.error)) << job.name.str();
    s.queue->waiting = {{0, BatchState::RUNNING, "host"}};
    EXPECT_FALSE(s.manager.cancel("a,b", &s.error));
    EXPECT_EQ(s.queue->waiting.size(), 1u);
    s.queue->answers = false;
    EXPECT_FALSE(s.manager.submit(JOB, &s.error)); // it may be there
    EXPECT_EQ(s.queue->submissions, 0);
    EXPECT_FALSE(BatchManager().submit(JOB, &s.error));
    EXPECT_EQ(s.error.str(), "No batch service is installed.");
}

TEST(BatchManager, does_not_hide_that_a_job_may_have_been_taken)
{
    Service s;
    s.queue->says_yes = s.queue->answers_afterwards = false;
    EXPECT_FALSE(s.manager.submit(JOB, &s.error));
    EXPECT_EQ(s.error.str(),
              "No answer. The job render-1 may have been taken all the same: Silence.");
}
