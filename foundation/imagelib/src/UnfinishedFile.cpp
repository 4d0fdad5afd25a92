#include "imagelib/hdr/UnfinishedFile.h"

#include "kivlib/hdr/Checksum.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <unistd.h>

// The other name of a file is FILE.SPACE-FIRST-START-PROCESS~: the number of the process that
// writes it, and before that its run. A run is the first of its processes, by number and start; the
// space says where the two mean the same process. Where the system tells too little, the name is
// FILE.PROCESS~, and nobody else removes the file.

namespace {
constexpr char PART_END = '-';
constexpr char NAME_END = '~';

/// When the process was started, as the system counts; empty if that can't be known.
std::string inq_start(pid_t process)
{
    constexpr int FIELDS_BEFORE = 19; // behind the name of the program, which ends with the last )
    std::ifstream file("/proc/" + std::to_string(process) + "/stat");
    std::string line;
    std::getline(file, line, '\0');
    std::istringstream fields(line.substr(line.rfind(')') + 1));
    std::string field;
    for (int i = 0; i <= FIELDS_BEFORE; ++i)
        fields >> field;
    return fields ? field : "";
}

/// Of this start of this host, and of the part of it that this process sees. Empty if it can't be
/// known.
std::string inq_space()
{
    std::ifstream file("/proc/sys/kernel/random/boot_id");
    std::string text;
    if (!std::getline(file, text))
        return "";
    std::error_code failure;
    for (const char* part : {"/proc/self/ns/pid", "/proc/self/ns/time"})
        text += std::filesystem::read_symlink(part, failure).native();
    Checksum sum;
    sum.add(text.data(), text.size());
    return std::to_string(sum.get());
}

/// The processes whose files belong together.
struct Run {
    pid_t process = ::getpid(); // that wrote this down
    bool is_shared = false;
    std::string space = inq_space();
    std::string start = inq_start(process);

    /// What the names of its files have in common; empty if too little is known.
    std::string inq_mark() const
    {
        if (space.empty() || start.empty())
            return "";
        return space + PART_END + std::to_string(process) + PART_END + start + PART_END;
    }
};

Run& inq_run()
{
    static Run run;
    if (!run.is_shared && run.process != ::getpid())
        run = {};
    return run;
}

/// What the name of an unfinished file ends with.
std::string make_ending(pid_t process)
{
    return "." + inq_run().inq_mark() + std::to_string(process) + NAME_END;
}

/// As far as that is certain.
bool has_ended(pid_t process, const std::string& start)
{
    if (process > 0 && ::kill(process, 0) != 0 && errno == ESRCH)
        return true;
    const std::string now = inq_start(process); // another one may have got the number
    return !now.empty() && now != start;
}

bool is_abandoned(const std::string& name)
{
    const std::size_t mark = name.rfind('.') + 1;
    if (mark == 0 || !name.ends_with(NAME_END))
        return false;
    std::istringstream text(name.substr(mark));
    std::string space, first, start, process;
    std::getline(text, space, PART_END);
    std::getline(text, first, PART_END);
    std::getline(text, start, PART_END);
    return std::getline(text, process, NAME_END) && !space.empty() && space == inq_run().space &&
           has_ended(std::atoi(first.c_str()), start);
}

void remove_files(const KIVString& folder, const std::function<bool(const std::string&)>& is_meant)
{
    std::error_code failure;
    for (std::filesystem::directory_iterator entry(folder.str(), failure), end;
         !failure && entry != end; entry.increment(failure))
        if (is_meant(entry->path().filename().native()))
            ::unlink(entry->path().c_str());
}
} // namespace

bool UnfinishedFile::create(const KIVString& final_path)
{
    constexpr int PERMISSIONS = 0666;
    path = final_path;
    own_path = path + make_ending(::getpid()).c_str();
    ::unlink(own_path.c_str()); // of a process that had our number and was killed
    handle = FileHandle(
        ::open(own_path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, PERMISSIONS));
    if (!handle.is_open())
        own_path = KIVString();
    return handle.is_open();
}

bool UnfinishedFile::finish()
{
    if (std::rename(own_path.c_str(), path.c_str()) != 0)
        return false;
    own_path = KIVString();
    return true;
}

bool UnfinishedFile::leave(KIVString& other_path)
{
    if (!handle.close())
        return false;
    other_path = std::exchange(own_path, {});
    return true;
}

UnfinishedFile::~UnfinishedFile()
{
    if (!own_path.is_null())
        ::unlink(own_path.c_str());
}

void share_unfinished_files()
{
    inq_run().is_shared = true;
}

void remove_abandoned_files(const KIVString& folder)
{
    remove_files(folder, is_abandoned);
}

void remove_unfinished_files(const KIVString& folder, int process,
                             const std::set<std::string>& kept)
{
    remove_files(folder, [&kept, ending = make_ending(process)](const std::string& name) {
        return name.ends_with(ending) && !kept.contains(name);
    });
}
