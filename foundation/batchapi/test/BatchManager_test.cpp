#include "batchapi/hdr/BatchManager.h"

#include <gtest/gtest.h>

namespace {
using States = std::map<int, BatchState>;

/// Takes `most` tasks, and answers as it is told.
class Queue : public BatchEngine {
public:
    bool submit(const BatchJob& job, KIVString* error) override
    {
        ++submissions;
        for (const int index : job.tasks)
            if (most-- > 0)
                states[index] = BatchState::WAITING;
        *error = "No answer.";
        answers = answers_afterwards;
        return says_yes;
    }
    bool query(const KIVString&, const KIVString&, std::vector<BatchTask>* tasks,
               KIVString* error) override
    {
        if (answers)
            for (const auto& [index, state] : states)
                tasks->push_back({index, state, {}});
        *error = "Silence.";
        return answers;
    }
    bool cancel(const KIVString&, KIVString*) override
    {
        states.clear();
        return true;
    }
    bool inq_highest_index(int*, KIVString*) override { return false; }

    int most = 1000;
    bool says_yes = true;
    bool answers = true;
    bool answers_afterwards = true;
    int submissions = 0;
    States states;
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
    s.queue->most = 1;
    EXPECT_FALSE(s.manager.submit(more, &s.error));
    EXPECT_EQ(s.error.str(), "No answer. A part of the job render-1 was taken.");
    s.queue->says_yes = true;
    s.queue->most = 1000;
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
    s.queue->states = {{0, BatchState::RUNNING}};
    EXPECT_FALSE(s.manager.cancel("a,b", &s.error));
    EXPECT_EQ(s.queue->states.size(), 1u);
    std::vector<BatchTask> tasks;
    EXPECT_FALSE(s.manager.query("render-1", "a,b", &tasks, &s.error));
    s.queue->answers = false;
    EXPECT_FALSE(s.manager.submit(JOB, &s.error)); // it may be there
    EXPECT_EQ(s.queue->submissions, 0);
    EXPECT_FALSE(BatchManager().submit(JOB, &s.error));
    EXPECT_EQ(s.error.str(), "No batch service is installed.");
}

TEST(BatchManager, tells_a_job_from_what_is_left_of_an_earlier_one)
{
    using enum BatchState;
    const struct {
        States before;
        int most;
        bool says_yes;
        const char* error;
        std::size_t n_left;
    } rows[] = {{{{0, ENDED}, {1, ENDING}, {4, ENDED}}, 3, true, "", 3},
                {{{0, ENDED}, {1, ENDING}, {4, ENDED}}, 3, false, "", 3},
                {{{0, ENDED}, {1, ENDING}, {4, ENDED}}, 0, false, "No answer.", 3},
                {{{0, ENDED}, {1, ENDED}, {4, ENDED}}, 1, false, "No answer.", 0}, // cancelled
                {{{1, ENDED}, {4, ENDED}, {7, RUNNING}},
                 1,
                 false,
                 "No answer. A part of the job render-1 was taken.",
                 4},
                {{{0, UNKNOWN}}, 3, true, "The job render-1 is in the queue already.", 1}};
    for (const auto& row : rows) {
        Service s;
        s.queue->states = row.before;
        s.queue->most = row.most;
        s.queue->says_yes = row.says_yes;
        const bool is_taken = s.manager.submit(JOB, &s.error);
        EXPECT_EQ(is_taken ? "" : s.error.str(), row.error);
        EXPECT_EQ(s.queue->states.size(), row.n_left) << row.error;
    }
}

TEST(BatchManager, does_not_hide_that_a_job_may_have_been_taken)
{
    Service s;
    s.queue->says_yes = s.queue->answers_afterwards = false;
    EXPECT_FALSE(s.manager.submit(JOB, &s.error));
    EXPECT_EQ(s.error.str(),
              "No answer. The job render-1 may have been taken all the same: Silence.");
}
