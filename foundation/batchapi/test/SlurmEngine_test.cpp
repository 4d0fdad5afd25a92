#include "batchapi/hdr/BatchManager.h"
#include "batchapi/hdr/SlurmEngine.h"
#include "batchapi/src/slurm_texts.h"
#include "tests/support/TempFolder.h"

#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {
constexpr int LONG_MS = 60000;
constexpr int SHORT_MS = 1000;

/// The commands of a service that keeps its queue in a file. Each is a script, which finds itself
/// in the service's folder.
class Cluster {
public:
    explicit Cluster(int deadline_ms = LONG_MS)
    {
        ::unsetenv("SLURM_CONF");
        folder.write("slurm.conf", "");
        settings = {folder.path() + ":/usr/bin:/bin", {folder.path("slurm.conf")}, "", deadline_ms};
        command("squeue", "cat queue");
        command("scancel", ": > queue");
        folder.write("queue", "");
    }

    void command(const std::string& name, const std::string& body) const
    {
        folder.write(name, "#!/bin/sh\ncd '" + folder.path().str() + "'\n" + body + "\n");
        std::filesystem::permissions(folder.path(name).str(), std::filesystem::perms::owner_all);
    }

    bool submit(const BatchJob& job)
    {
        manager.set_engine(std::make_unique<SlurmEngine>(settings));
        return manager.submit(job, &error);
    }
    std::string read(const std::string& name) const { return folder.read(name); }

    TempFolder folder;
    SlurmEngine::Settings settings;
    BatchManager manager;
    KIVString error;
};

const BatchJob JOB{"render-1", {"program"}, {0, 1}, "/tmp", "/tmp/log.{task}"};
const std::string TAKE = "printf '0 PENDING \\n1 PENDING \\n' > queue; ";

struct Answer {
    std::string sbatch;
    bool is_taken;
    std::string error;
    int deadline_ms = LONG_MS;
};

const Answer ANSWERS[] = {
    {TAKE + "echo 7", true, ""},
    {TAKE + "echo '7;south'", true, ""},
    {TAKE + "echo Hello", true, ""},
    {TAKE + "echo lost >&2; exit 1", true, ""},
    {TAKE + "kill -9 $$", true, ""},
    {TAKE + "exec sleep 600", true, "", SHORT_MS},
    {"echo waiting >&2; sleep 600; echo 7", false, "sbatch: no answer within 1 s. waiting",
     SHORT_MS},
    {"echo 'sbatch: error: no\n' >&2; exit 1", false, "sbatch: error: no"},
    {"head -c 3000000 /dev/zero", false, "sbatch: the answer is too long"},
    {"echo Hello", false, "sbatch: the answer can't be read: Hello"},
    {"echo '0 RUNNING a' > queue; echo torn >&2; exit 1", false, "sbatch: torn"}};

bool has_gone(const std::string& process)
{
    std::ifstream stat("/proc/" + process + "/stat");
    std::string number, name, state;
    return !(stat >> number >> name >> state) || state == "Z";
}
} // namespace

TEST(SlurmEngine, sends_a_job_once_and_tells_whether_it_was_taken)
{
    for (const auto reaper : {SIG_DFL, SIG_IGN}) // a program that leaves its children to the system
        for (const Answer& answer : ANSWERS) {
            SCOPED_TRACE(answer.sbatch);
            ::signal(SIGCHLD, reaper);
            Cluster cluster(answer.deadline_ms);
            cluster.command("sbatch", "echo sent >> sent; " + answer.sbatch);
            EXPECT_EQ(cluster.submit(JOB), answer.is_taken) << cluster.error.str();
            EXPECT_EQ(answer.is_taken ? "" : cluster.error.str(), answer.error);
            EXPECT_EQ(cluster.read("queue").empty(), !answer.is_taken);
            EXPECT_EQ(cluster.read("sent"), "sent\n");
        }
    ::signal(SIGCHLD, SIG_DFL);
}

TEST(SlurmEngine, ends_what_a_late_command_has_started_and_no_other_child)
{
    const pid_t own = ::fork();
    if (own == 0)
        ::_exit(7);
    Cluster cluster(SHORT_MS);
    cluster.command("squeue", "sleep 600 & echo $! > helper; wait");
    EXPECT_FALSE(cluster.submit(JOB));
    std::string helper = cluster.read("helper");
    for (helper.pop_back(); !has_gone(helper);)
        ::usleep(1000);
    int status = 0;
    EXPECT_EQ(::waitpid(own, &status, 0), own);
    EXPECT_EQ(WEXITSTATUS(status), 7);
}

TEST(SlurmEngine, says_at_once_that_there_is_no_service)
{
    Cluster cluster;
    cluster.command("squeue", ": > asked");
    cluster.settings.path = cluster.folder.path();
    EXPECT_FALSE(cluster.submit(JOB));
    EXPECT_EQ(cluster.error.str(), "sbatch: is not installed.");
    std::filesystem::remove(cluster.folder.path("asked").str());
    cluster.settings.configurations = {cluster.folder.path("none")};
    EXPECT_FALSE(cluster.submit(JOB));
    EXPECT_TRUE(cluster.error.str().starts_with("No configuration of Slurm was found"));
    EXPECT_FALSE(cluster.folder.has("asked"));
}

TEST(SlurmEngine, hands_the_words_of_a_job_over_and_nothing_of_the_program)
{
    const int open = ::fcntl(STDOUT_FILENO, F_DUPFD, 100);
    ::setenv("MONTARAY_SECRET", "secret", 1);
    Cluster cluster;
    cluster.command("sbatch", "echo $OLDPWD > from; env > env; ls /proc/self/fd > open\n"
                              "while case $1 in --*) true;; *) false;; esac; do\n"
                              "echo \"$1\" >> options; shift; done\n"
                              "SLURM_ARRAY_TASK_ID=1 sh \"$@\" > words; " +
                                  TAKE + "echo 7");
    const BatchJob job{"render-1",
                       {"/usr/bin/printf", "<%s>", "a  b", "$HOME`id`'\"", "--name=x\n"},
                       {0, 1},
                       "/tmp",
                       "/100%/{task}/{task}.log"};
    EXPECT_TRUE(cluster.submit(job)) << cluster.error.str();
    ::close(open);
    ::unsetenv("MONTARAY_SECRET");
    EXPECT_EQ(cluster.read("words"), "<a  b><$HOME`id`'\"><--name=x\n><1>");
    EXPECT_EQ(cluster.read("options"), "--parsable\n--job-name=render-1\n--array=0-1\n--requeue\n"
                                       "--dependency=singleton\n--ntasks=1\n--open-mode=append\n"
                                       "--output=/100%%/{task}/%a.log\n--chdir=/tmp\n");
    EXPECT_EQ(cluster.read("from"), "/\n");
    EXPECT_EQ(cluster.read("env").find("secret"), std::string::npos);
    EXPECT_EQ(cluster.read("open"), "0\n1\n2\n3\n"); // the last is the folder that ls reads
}

TEST(SlurmEngine, lists_indices_by_runs_and_no_longer_than_is_taken)
{
    EXPECT_EQ(list_indices({1, 2, 3, 4, 5, 8})[0].str(), "1-5,8");
    std::vector<int> even;
    for (int i = 0; i < 4000; i += 2)
        even.push_back(i);
    std::string joined;
    for (const KIVString& list : list_indices(even)) {
        EXPECT_LE(list.length(), 4096);
        joined += list.str() + ",";
    }
    EXPECT_EQ(std::count(joined.begin(), joined.end(), ','), 2000);
    EXPECT_TRUE(joined.starts_with("0,2,4,") && joined.ends_with(",3996,3998,"));
}

TEST(SlurmEngine, takes_an_answer_as_a_whole_or_not_at_all)
{
    std::vector<BatchTask> tasks;
    EXPECT_TRUE(read_tasks("N/A CANCELLED \n10 COMPLETING a\n10 PENDING \n"
                           "9 FAILED a\n9 COMPLETING b\n",
                           &tasks));
    ASSERT_EQ(tasks.size(), 2u);
    EXPECT_EQ(tasks[0].index, 9);
    EXPECT_EQ(tasks[0].state, BatchState::ENDING);
    EXPECT_EQ(tasks[0].host.str(), "b");
    EXPECT_EQ(tasks[1].state, BatchState::WAITING);
    EXPECT_TRUE(read_tasks("", &tasks));
    for (const char* garbage :
         {"\n", "Hello\n", "1 hello\n", "-1 PENDING \n", "1x PENDING \n", "99999999999 PENDING \n",
          "N/A PENDING \n", "1 PENDING \n2", "1 RUNNING a b\n"})
        EXPECT_FALSE(read_tasks(garbage, &tasks)) << garbage;

    Cluster cluster;
    cluster.command("squeue", "echo $1 >> users");
    cluster.command("scancel", "echo $1 >> users");
    SlurmEngine engine(cluster.settings);
    EXPECT_TRUE(engine.query("render-1", "alice", &tasks, &cluster.error));
    EXPECT_TRUE(engine.query("render-1", "", &tasks, &cluster.error));
    EXPECT_TRUE(engine.cancel("render-1", &cluster.error));
    const std::string own = "--user=" + std::to_string(::getuid()) + "\n";
    EXPECT_EQ(cluster.read("users"), "--user=alice\n" + own + own);
    int index = 0;
    cluster.command("scontrol", "printf 'MaxArraySize            = 1001\\n'; echo x >> asked");
    for (int times = 0; times < 2; ++times)
        EXPECT_TRUE(engine.inq_highest_index(&index, &cluster.error));
    EXPECT_EQ(index, 1000);
    EXPECT_EQ(cluster.read("asked"), "x\n");
    for (const char* garbage : {"", "MaxArraySize = many\n", "MaxArraySize\n"})
        EXPECT_FALSE(read_highest_index(garbage, &index)) << garbage;
}
