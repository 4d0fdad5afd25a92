#include "modules/farm/hdr/JobFolder.h"

#include "imagelib/hdr/UnfinishedFile.h"
#include "kivlib/hdr/Checksum.h"
#include "kivlib/hdr/FileHandle.h"
#include "kivlib/hdr/KIVString.h"
#include "modules/farm/hdr/durable_file.h"
#include "modules/farm/src/json.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <csignal>
#include <sstream>
#include <stdexcept>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {
constexpr char PREFIX[] = ".farm-";
constexpr char JOB_FILE[] = "job.json";
constexpr char SUPERSEDED[] = "superseded";
constexpr char DONE[] = "done";
constexpr char FAIL[] = "fail";
constexpr char LOG[] = "log";
constexpr char SCRATCH[] = "tmp";

struct SizeAndTime {
    std::int64_t size;
    std::string time;
};

/// None if there is no such regular file. It is opened, since a host may remember older facts of a
/// file on a shared disc that it does not open.
std::optional<SizeAndTime> inq_size_and_time(const fs::path& file)
{
    const FileHandle handle = FileHandle::open_to_read(file.c_str());
    struct stat facts {};
    if (!handle.is_open() || ::fstat(handle.inq_descriptor(), &facts) != 0 ||
        !S_ISREG(facts.st_mode))
        return std::nullopt;
    return SizeAndTime{facts.st_size, std::to_string(facts.st_mtim.tv_sec) + "." +
                                          std::to_string(facts.st_mtim.tv_nsec)};
}

std::string inq_sum(const fs::path& file)
{
    const std::optional<FileSum> sum = inq_file_sum(file.string());
    return sum ? std::to_string(sum->sum) : "";
}

FailedTry to_failure(const Json& json)
{
    FailedTry failed;
    failed.time = json.at("time");
    failed.host = json.at("host");
    failed.order = json.at("order");
    failed.number = json.at("try");
    failed.result = json.at("result");
    failed.frames = json.at("frames");
    failed.reason = json.at("reason");
    failed.is_final = json.at("final");
    return failed;
}
} // namespace

std::optional<FrameFacts> FrameFacts::look(const fs::path& file)
{
    const std::optional<SizeAndTime> found = inq_size_and_time(file);
    const std::string sum = inq_sum(file);
    return found && !sum.empty() ? std::optional(FrameFacts{found->size, found->time, sum})
                                 : std::nullopt;
}

// Two tasks may have made the same frame, and the facts may be of the one file and the file of the
// other: it has the same contents then, though not the same time.
bool FrameFacts::are_of(const fs::path& file) const
{
    const std::optional<SizeAndTime> found = inq_size_and_time(file);
    return found && found->size == size && (found->time == time || inq_sum(file) == sum);
}

JobFolder JobFolder::of(const FarmJob& job)
{
    return JobFolder(fs::path(job.output) / (PREFIX + job.inq_key()));
}

namespace {
/// What is in a folder, as far as it can be read.
std::vector<fs::path> list_entries(const fs::path& folder)
{
    std::vector<fs::path> entries;
    std::error_code failure;
    for (fs::directory_iterator i(folder, failure); !failure && i != fs::directory_iterator();
         i.increment(failure))
        entries.push_back(i->path());
    return entries;
}

/// Links may give one folder several paths.
bool is_of(const FarmJob& job, const fs::path& folder)
{
    std::error_code failure;
    return fs::equivalent(JobFolder::of(job).inq_path(), folder, failure);
}
} // namespace

std::vector<JobFolder> JobFolder::list(const std::string& output)
{
    std::vector<std::pair<std::string, fs::path>> found;
    for (const fs::path& entry : list_entries(output)) {
        if (!entry.filename().string().starts_with(PREFIX))
            continue;
        const std::optional<FarmJob> job = JobFolder(entry).read_job();
        if (job ? is_of(*job, entry) : JobFolder(entry).has_job())
            found.emplace_back(job ? job->ordered_at : "", entry);
    }
    std::ranges::sort(found);
    std::vector<JobFolder> folders;
    for (const auto& [ordered_at, path] : found)
        folders.emplace_back(path);
    return folders;
}

void JobFolder::make() const
{
    std::error_code failure;
    for (const char* name : {"", DONE, FAIL, LOG, SCRATCH})
        fs::create_directory(path / name, failure);
    if (!fs::is_directory(path / SCRATCH, failure) || !sync_folder(path.parent_path().string()))
        throw_disc_error("can't make " + path.string());
}

// A server that has just replaced the file may have lost the old one under our hands.
std::optional<FarmJob> JobFolder::read_job() const
{
    constexpr int MOST_LOOKS = 4;
    constexpr std::chrono::milliseconds PAUSE(100);
    for (int look = 1;; ++look) {
        const std::optional<FarmJob> job = FarmJob::parse(read_file(path / JOB_FILE));
        if (job || look == MOST_LOOKS || !has_job())
            return job;
        std::this_thread::sleep_for(PAUSE);
    }
}

bool JobFolder::has_job() const
{
    const bool is_there = FileHandle::open_to_read((path / JOB_FILE).c_str()).is_open();
    return is_there || (errno != ENOENT && errno != ENOTDIR);
}

std::string JobFolder::inq_job_name() const
{
    return FarmJob::NAME_PREFIX + path.filename().string().substr(sizeof PREFIX - 1);
}

void JobFolder::write_job(const FarmJob& job) const
{
    write_durably(path / JOB_FILE, job.inq_text());
}

bool JobFolder::is_superseded() const
{
    return FileHandle::open_to_read((path / SUPERSEDED).c_str()).is_open();
}

void JobFolder::set_superseded(bool superseded) const
{
    if (superseded)
        write_durably(path / SUPERSEDED, "");
    else if (is_superseded() &&
             (::unlink((path / SUPERSEDED).c_str()) != 0 || !sync_folder(path.string())))
        throw_disc_error("can't change " + path.string());
}

fs::path JobFolder::inq_marker(int frame) const
{
    return path / DONE / inq_number_text(frame);
}

fs::path JobFolder::inq_log(int chunk) const
{
    return path / LOG / std::to_string(chunk);
}

bool JobFolder::is_done(const FarmJob& job, int frame) const
{
    const Json marker = parse_json(read_file(inq_marker(frame)));
    const std::optional<FrameFacts> facts = read_json<FrameFacts>([&] {
        return FrameFacts{marker.at("size"), marker.at("time"), marker.at("sum")};
    });
    return facts && marker.contains("pictures") && marker["pictures"] == job.pictures &&
           facts->are_of(fs::path(job.output) / job.inq_file_name(frame));
}

FrameSet JobFolder::inq_done(const FarmJob& job, const FrameSet& frames) const
{
    FrameSet done;
    for (const int frame : frames)
        if (is_done(job, frame))
            done.insert(frame);
    return done;
}

void JobFolder::mark_done(const FarmJob& job, int frame, const FrameFacts& facts) const
{
    const Json marker{{"size", facts.size},
                      {"time", facts.time},
                      {"sum", facts.sum},
                      {"pictures", job.pictures},
                      {"host", inq_host_name()}};
    write_durably(inq_marker(frame), inq_line(marker) + "\n");
}

// A line that two hosts wrote into one another is left out.
std::vector<FailedTry> JobFolder::read_failures(int chunk) const
{
    std::vector<FailedTry> failures;
    std::istringstream lines(read_file(path / FAIL / std::to_string(chunk)));
    for (std::string line; std::getline(lines, line);)
        if (const auto failed = read_json<FailedTry>([&] { return to_failure(parse_json(line)); }))
            failures.push_back(*failed);
    return failures;
}

void JobFolder::add_failure(int chunk, const FailedTry& failed) const
{
    const Json json{{"time", failed.time},     {"host", failed.host},     {"order", failed.order},
                    {"try", failed.number},    {"result", failed.result}, {"frames", failed.frames},
                    {"reason", failed.reason}, {"final", failed.is_final}};
    add_line_durably(path / FAIL / std::to_string(chunk), inq_line(json));
}

fs::path JobFolder::make_scratch(int number) const
{
    const fs::path scratch = path / SCRATCH / (inq_process_name() + "-" + std::to_string(number));
    std::error_code failure;
    fs::remove_all(scratch, failure); // of a process of the same number, long ago
    if (!fs::create_directory(scratch, failure))
        throw std::runtime_error("can't make " + scratch.string() + ": " + failure.message());
    return scratch;
}

namespace {
/// Whether the folder of a try, HOST-PROCESS-NUMBER, is of this host and of a process that is gone.
/// Other hosts may have a name that begins like that of this one.
bool is_dead(const std::string& name)
{
    const std::size_t end = name.rfind('-');
    const std::size_t start = end == 0 ? std::string::npos : name.rfind('-', end - 1);
    if (end == std::string::npos || start == std::string::npos ||
        name.substr(0, start) != inq_host_name())
        return false;
    pid_t pid = 0;
    const auto read = std::from_chars(&name[start + 1], &name[end], pid);
    return read.ec == std::errc() && read.ptr == &name[end] && pid > 0 && pid != ::getpid() &&
           ::kill(pid, 0) != 0 && errno == ESRCH;
}

void remove_entries(const fs::path& parent, bool (*wanted)(const std::string&))
{
    for (const fs::path& entry : list_entries(parent))
        if (wanted(entry.filename().string())) {
            std::error_code ignored;
            fs::remove_all(entry, ignored);
        }
}
} // namespace

void JobFolder::forget_done() const
{
    remove_entries(path / DONE, [](const std::string&) { return true; });
}

void JobFolder::forget_failures() const
{
    remove_entries(path / FAIL, [](const std::string&) { return true; });
}

void JobFolder::remove_dead_scratch() const
{
    remove_entries(path / SCRATCH, is_dead);
    remove_abandoned_files((path / DONE).string());
}

void JobFolder::remove_all_scratch() const
{
    remove_entries(path / SCRATCH, [](const std::string&) { return true; });
}
