#include "batchapi/hdr/SlurmEngine.h"

#include "batchapi/hdr/Command.h"
#include "batchapi/src/SlurmConfiguration.h"
#include "batchapi/src/slurm_texts.h"
#include "kivlib/hdr/FileHandle.h"
#include "kivlib/hdr/file_operations.h"

#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

namespace {
constexpr char USUAL_PATH[] = "/usr/local/bin:/usr/bin:/bin";

// The words of the job reach the program as they are: no shell reads them.
constexpr std::string_view SCRIPT = "#!/bin/sh\n"
                                    "exec \"$@\" \"$SLURM_ARRAY_TASK_ID\"\n";

/// The script in a file of its own, for as long as it takes to hand it in.
class ScriptFile {
public:
    ScriptFile()
        : path(KIVString(inq_kiv_scratch_directory()).append_path("montaray-task.XXXXXX").str()),
          file(::mkostemp(path.data(), O_CLOEXEC))
    {
        is_written = file.is_open() && file.write_all(SCRIPT.data(), SCRIPT.size());
    }
    ScriptFile(const ScriptFile&) = delete;
    ScriptFile& operator=(const ScriptFile&) = delete;
    ~ScriptFile()
    {
        if (file.is_open())
            ::unlink(path.c_str());
    }

    bool inq_is_written() const { return is_written; }
    KIVString inq_path() const { return path; }

private:
    std::string path;
    FileHandle file;
    bool is_written = false;
};

KIVString inq_path(const SlurmEngine::Settings& settings)
{
    const char* own = settings.path.is_null() ? std::getenv("PATH") : settings.path.c_str();
    return own ? own : USUAL_PATH;
}

/// What the commands get, and after them the tasks: who and where the user is, the studio's wishes
/// for its jobs, and messages in one language.
std::vector<KIVString> make_environment(const KIVString& path)
{
    std::vector<KIVString> environment = {"PATH=" + path, "LANG=C"};
    if (const char* configuration = std::getenv("SLURM_CONF"))
        environment.push_back("SLURM_CONF=" + inq_absolute_path(configuration));
    for (const char* name : {"HOME", "USER", "LOGNAME", "XDG_CONFIG_HOME", "SBATCH_ACCOUNT",
                             "SBATCH_PARTITION", "SBATCH_QOS"})
        if (const char* value = std::getenv(name))
            environment.push_back(KIVString(name) + "=" + value);
    return environment;
}

/// The first words of a command that went wrong, in one line.
KIVString first_words(std::string_view errors)
{
    constexpr std::size_t MOST = 400;
    std::string words(errors.substr(0, MOST));
    words.erase(words.find_last_not_of(" \n\r\t") + 1);
    std::ranges::replace_if(
        words, [](char c) { return '\0' <= c && c < ' '; }, ' ');
    return words;
}

/// Most of them say their name themselves.
KIVString name_before(const char* program, const KIVString& words)
{
    const KIVString name = KIVString(program) + ": ";
    return words.str().starts_with(name.str()) ? words : name + words;
}

/// What is wrong with an answer; empty if nothing.
KIVString find_fault(const CommandAnswer& answer, int deadline_ms)
{
    constexpr int SECOND = 1000;
    if (answer.end == CommandEnd::NOT_STARTED)
        return KIVString("can't be started: ") + std::strerror(answer.result);
    const KIVString words = first_words(answer.errors);
    if (answer.end == CommandEnd::LATE)
        return "no answer within " + KIVString(deadline_ms / SECOND, 0) + " s. " + words;
    if (!answer.is_good())
        return words.is_null() ? "ended with result " + KIVString(answer.result, 0) : words;
    return answer.is_cut ? "the answer is too long" : KIVString();
}

/// One user's jobs alone; empty: those of this program's.
KIVString jobs_of(const KIVString& user)
{
    return "--user=" + (user.is_null() ? KIVString(std::to_string(::getuid())) : user);
}
} // namespace

/// Jobs of one name run one after another, so a job may go in parts, and a second that slips in
/// beside the first does no harm.
bool SlurmEngine::submit(const BatchJob& job, KIVString* error)
{
    const ScriptFile script;
    if (!script.inq_is_written()) {
        *error = script.inq_path() + ": " + inq_system_error();
        return false;
    }
    return std::ranges::all_of(list_indices(job.tasks), [&](const KIVString& indices) {
        return send(job, indices, script.inq_path(), error);
    });
}

bool SlurmEngine::send(const BatchJob& job, const KIVString& indices, const KIVString& script,
                       KIVString* error) const
{
    const KIVString log = as_log_pattern(job.log);
    if (log.is_null()) {
        *error = job.log + ": Slurm takes no log with a backslash in its name.";
        return false;
    }
    std::vector<KIVString> arguments = {"--parsable",
                                        "--job-name=" + job.name,
                                        "--array=" + indices,
                                        "--requeue", // when a host is lost
                                        "--dependency=singleton",
                                        "--ntasks=1",
                                        "--open-mode=append",
                                        "--output=" + log,
                                        "--chdir=" + job.folder,
                                        script};
    arguments.insert(arguments.end(), job.arguments.begin(), job.arguments.end());
    std::string output;
    if (!call("sbatch", arguments, &output, error))
        return false;
    if (is_job_number(output))
        return true;
    *error = "sbatch: the answer can't be read: " + first_words(output);
    return false;
}

bool SlurmEngine::query(const KIVString& name, const KIVString& user, std::vector<BatchTask>* tasks,
                        KIVString* error)
{
    std::string output;
    tasks->clear();
    if (!call("squeue",
              {jobs_of(user), "--name=" + name, "--array", "--states=all", "--noheader",
               KIVString("--format=") + TASK_FORMAT},
              &output, error))
        return false;
    if (read_tasks(output, tasks))
        return true;
    tasks->clear();
    *error = "squeue: the answer can't be read: " + first_words(output);
    return false;
}

/// A task that ends meanwhile is an error of the command, and none for the user.
bool SlurmEngine::cancel(const KIVString& name, KIVString* error)
{
    std::string output;
    if (call("scancel", {jobs_of({}), "--name=" + name}, &output, error))
        return true;
    std::vector<BatchTask> tasks;
    KIVString second_error;
    return query(name, {}, &tasks, &second_error) && !is_alive(tasks);
}

bool SlurmEngine::inq_highest_index(int* index, KIVString* error)
{
    if (highest_index < 0) {
        std::string output;
        if (!call("scontrol", {"show", "config"}, &output, error))
            return false;
        if (!read_highest_index(output, &highest_index) || highest_index < 0) {
            *error = "scontrol: the service takes no jobs of several tasks.";
            return false;
        }
    }
    *index = highest_index;
    return true;
}

bool SlurmEngine::call(const char* program, const std::vector<KIVString>& arguments,
                       std::string* output, KIVString* error) const
{
    *error = find_configuration_fault(settings);
    if (!error->is_null())
        return false;
    const KIVString path = inq_path(settings);
    const KIVString file = find_program(program, path);
    if (file.is_null()) {
        *error = KIVString(program) + ": is not installed.";
        return false;
    }
    const CommandAnswer answer =
        run({file, arguments, make_environment(path), settings.deadline_ms});
    *output = answer.output;
    const KIVString fault = find_fault(answer, settings.deadline_ms);
    *error = fault.is_null() ? fault : name_before(program, fault);
    return fault.is_null();
}
