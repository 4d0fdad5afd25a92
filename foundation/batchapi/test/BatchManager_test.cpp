#include "batchapi/hdr/BatchManager.h"

#include <gtest/gtest.h>

namespace {
/// Keeps `most` tasks of each job waiting, and then answers as it is told.
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
    bool inq_highest_index(int* index, KIVString*) override
    {
        *index = 1000;
        return true;
    }

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

TEST(BatchManager, takes_a_name_once_until_it_is_cancelled)
{
    Service s;
    EXPECT_TRUE(s.manager.submit(JOB, &s.error));
    EXPECT_FALSE(s.manager.submit(JOB, &s.error));
    EXPECT_EQ(s.error.str(), "The job render-1 is in the queue already.");
    EXPECT_TRUE(s.manager.cancel("render-1", &s.error));
    EXPECT_TRUE(s.manager.submit(JOB, &s.error));
    EXPECT_EQ(s.queue->submissions, 2);
}

TEST(BatchManager, sends_nothing_that_it_could_not_find_again)
{
    Service s;
    BatchJob of_all = JOB, idle = JOB, disordered = JOB, homeless = JOB;
    of_all.name = "";
    idle.arguments.clear();
    disordered.tasks = {1, 1};
    homeless.folder = "here";
    for (const BatchJob& job : {of_all, idle, disordered, homeless}) {
        s.error = "";
        EXPECT_FALSE(s.manager.submit(job, &s.error));
        EXPECT_FALSE(s.error.is_null());
    }
    s.queue->waiting = {{0, BatchState::RUNNING, "host"}};
    EXPECT_FALSE(s.manager.cancel("a,b", &s.error));
    EXPECT_EQ(s.queue->waiting.size(), 1u);
    s.queue->answers = false;
    EXPECT_FALSE(s.manager.submit(JOB, &s.error)); // it may be there
    EXPECT_EQ(s.queue->submissions, 0);
    EXPECT_FALSE(BatchManager().submit(JOB, &s.error));
    EXPECT_EQ(s.error.str(), "No batch service is installed.");
}

TEST(BatchManager, looks_for_a_job_before_it_says_no)
{
    Service taken;
    taken.queue->says_yes = false;
    EXPECT_TRUE(taken.manager.submit(JOB, &taken.error));

    Service in_part;
    in_part.queue->says_yes = false;
    in_part.queue->most = 2;
    EXPECT_FALSE(in_part.manager.submit(JOB, &in_part.error));
    EXPECT_EQ(in_part.error.str(), "No answer.");
    EXPECT_TRUE(in_part.queue->waiting.empty());

    Service silent;
    silent.queue->says_yes = silent.queue->answers_afterwards = false;
    EXPECT_FALSE(silent.manager.submit(JOB, &silent.error));
    EXPECT_EQ(silent.error.str(),
              "No answer. The job render-1 may have been taken all the same: Silence.");
}
