#include "batchapi/hdr/BatchManager.h"

#include <gtest/gtest.h>

namespace {
/// Takes every job and keeps it waiting.
class Queue : public BatchEngine {
public:
    bool submit(const BatchJob& job, KIVString*) override
    {
        jobs.push_back(job.name.str());
        return true;
    }
    BatchState query(const KIVString& name) override
    {
        return std::count(jobs.begin(), jobs.end(), name.str()) ? BatchState::WAITING
                                                                : BatchState::UNKNOWN;
    }
    bool cancel(const KIVString& name) override { return std::erase(jobs, name.str()) > 0; }

private:
    std::vector<std::string> jobs;
};
} // namespace

TEST(BatchManager, takes_a_job_once_and_none_without_an_engine)
{
    BatchManager manager;
    KIVString error;
    EXPECT_FALSE(manager.submit({"render-1", {"program"}}, &error));
    EXPECT_EQ(error.str(), "No batch service is installed.");

    manager.set_engine(std::make_unique<Queue>());
    EXPECT_FALSE(manager.submit({"render-1", {}}, &error));
    EXPECT_TRUE(manager.submit({"render-1", {"program"}}, &error));
    EXPECT_FALSE(manager.submit({"render-1", {"program"}}, &error));
    EXPECT_EQ(error.str(), "The job render-1 is in the queue already.");
    EXPECT_TRUE(manager.cancel("render-1"));
    EXPECT_FALSE(manager.cancel("render-1"));
    EXPECT_EQ(manager.query("render-1"), BatchState::UNKNOWN);
}
