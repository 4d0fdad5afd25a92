#include "modules/farm/hdr/durable_file.h"

#include "imagelib/hdr/UnfinishedFile.h"
#include "kivlib/hdr/FileHandle.h"
#include "kivlib/hdr/KIVString.h"

#include <climits>
#include <fcntl.h>
#include <filesystem>
#include <pwd.h>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {
void sync_folder_of(const std::string& path)
{
    if (!sync_folder(std::filesystem::path(path).parent_path().string()))
        throw_disc_error("can't write " + path);
}
} // namespace

void throw_disc_error(const std::string& what)
{
    throw std::runtime_error(what + ": " + inq_system_error().str());
}

void write_durably(const std::string& path, const std::string& contents)
{
    UnfinishedFile file;
    if (!file.create(path) || !file.inq_handle().write_all(contents.data(), contents.size()) ||
        !file.close() || !file.finish())
        throw_disc_error("can't write " + path);
    sync_folder_of(path);
}

void add_line_durably(const std::string& path, const std::string& line)
{
    constexpr int PERMISSIONS = 0666;
    FileHandle file(::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, PERMISSIONS));
    const std::string whole = line + "\n";
    if (!file.is_open() || !file.write_all(whole.data(), whole.size()) || !file.sync() ||
        !file.close())
        throw_disc_error("can't write " + path);
    sync_folder_of(path);
}

std::string read_file(const std::string& path)
{
    const FileHandle file = FileHandle::open_to_read(path.c_str());
    struct stat facts {};
    if (!file.is_open() || ::fstat(file.inq_descriptor(), &facts) != 0 || !S_ISREG(facts.st_mode))
        return {};
    std::string contents(static_cast<std::size_t>(facts.st_size), '\0');
    return file.read_all(contents.data(), contents.size()) ? contents : "";
}

namespace {
/// Processes of two containers may have one number, and their hosts one name.
std::string inq_process_space()
{
    constexpr std::string_view FIRST_SPACE = "pid:[4026531836]";
    std::error_code failure;
    const std::string space = std::filesystem::read_symlink("/proc/self/ns/pid", failure).string();
    if (failure || space == FIRST_SPACE)
        return {};
    return "." + space.substr(space.find('[') + 1, space.size() - space.find('[') - 2);
}
} // namespace

std::string inq_host_name()
{
    char name[HOST_NAME_MAX + 1] = "";
    ::gethostname(name, sizeof name - 1);
    return name + inq_process_space();
}

std::string inq_user_name()
{
    constexpr std::size_t ROOM = 16384; // for what the system knows of a user
    std::vector<char> texts(ROOM);
    struct passwd entry {};
    struct passwd* found = nullptr;
    ::getpwuid_r(::getuid(), &entry, texts.data(), texts.size(), &found);
    return found ? found->pw_name : std::to_string(::getuid());
}

std::string inq_process_name()
{
    return inq_host_name() + "-" + std::to_string(::getpid());
}
