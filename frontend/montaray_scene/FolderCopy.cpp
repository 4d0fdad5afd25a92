#include "frontend/montaray_scene/FolderCopy.h"

#include "kivlib/hdr/FileHandle.h"

#include <algorithm>
#include <ranges>
#include <stdexcept>
#include <sys/stat.h>

namespace fs = std::filesystem;

void throw_system_error(const std::string& what)
{
    throw std::runtime_error(what + ": " + inq_system_error().str());
}

namespace {
constexpr std::size_t MOST_AT_ONCE = 1 << 20; // bytes
constexpr mode_t PERMISSIONS = 0777;

void copy_contents(const FileHandle& source, const FileHandle& target, std::size_t size,
                   const fs::path& name)
{
    std::vector<char> buffer(std::min(size, MOST_AT_ONCE));
    while (size > 0) {
        const std::size_t n = std::min(size, buffer.size());
        if (!source.read_all(buffer.data(), n))
            throw_system_error("can't read " + name.string());
        if (!target.write_all(buffer.data(), n))
            throw_system_error("can't write the copy of " + name.string());
        size -= n;
    }
}

void copy_durably(const fs::path& from, const fs::path& to)
{
    const FileHandle source = FileHandle::open_to_read(from.c_str());
    struct stat facts {};
    if (!source.is_open() || ::fstat(source.inq_descriptor(), &facts) != 0)
        throw_system_error("can't read " + from.string());
    FileHandle target =
        FileHandle::create(to.c_str(), static_cast<int>(facts.st_mode & PERMISSIONS));
    if (!target.is_open())
        throw_system_error("can't make " + to.string());
    copy_contents(source, target, static_cast<std::size_t>(facts.st_size), from);
    const timespec times[] = {facts.st_atim, facts.st_mtim};
    ::futimens(target.inq_descriptor(), times);
    if (!target.sync() || !target.close())
        throw_system_error("can't write " + to.string());
}
/// A copy must always be open to us, to be filled and to be deleted.
void take_permissions(const fs::path& from, const fs::path& to)
{
    fs::permissions(to, fs::status(from).permissions() | fs::perms::owner_all);
}
} // namespace

void FolderCopy::run()
{
    take_permissions(from, to);
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(from))
        copy(entry);
    sync_folders();
}

// A link to a file becomes a copy of the file, so that the copy of the scene stands by itself.
void FolderCopy::copy(const fs::directory_entry& entry)
{
    const fs::path name = entry.path().lexically_relative(from);
    if (left_out.contains(name.string()))
        return;
    const fs::path place = to / name;
    if (entry.is_directory() && !entry.is_symlink()) {
        fs::create_directory(place);
        take_permissions(entry.path(), place);
        folders.push_back(place);
    } else if (entry.is_regular_file()) {
        copy_durably(entry.path(), place);
    } else if (entry.is_symlink()) {
        fs::copy_symlink(entry.path(), place);
    } else {
        passed_over.push_back(name.string());
    }
}

void FolderCopy::sync_folders() const
{
    for (const fs::path& folder : folders | std::views::reverse)
        if (!sync_folder(folder.string()))
            throw_system_error("can't write " + folder.string());
}
