#include "frontend/montaray_scene/BackupShelf.h"

#include "frontend/montaray_scene/FolderCopy.h"
#include "kivlib/hdr/FileHandle.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <limits>
#include <stdexcept>

namespace fs = std::filesystem;

namespace {
constexpr char INFIX[] = ".backup";
constexpr int LEAST_DIGITS = 4;
constexpr char MARK_START[] = "BACKUP 1\n";

/// The number of a name that is `prefix` and digits as we write them; 0 for all others.
int number_of(std::string_view name, std::string_view prefix)
{
    if (!name.starts_with(prefix))
        return 0;
    name.remove_prefix(prefix.size());
    int number = 0;
    const auto result = std::from_chars(name.data(), name.data() + name.size(), number);
    const bool is_ours =
        result.ec == std::errc() && number > 0 && name == KIVString(number, LEAST_DIGITS).str();
    return is_ours ? number : 0;
}

/// The text of a mark; empty if there is none.
std::string read_mark(const fs::path& folder)
{
    const fs::path mark = folder / BackupShelf::MARK;
    if (!fs::is_directory(fs::symlink_status(folder)) ||
        !fs::is_regular_file(fs::symlink_status(mark)))
        return "";
    std::ifstream file(mark, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string mark_of(const KIVString& copy)
{
    return MARK_START + copy.get_file().str() + "\n";
}

void write_mark(const KIVString& folder, const std::string& text)
{
    constexpr int PERMISSIONS = 0666;
    const KIVString path = KIVString(folder).append_path(BackupShelf::MARK);
    FileHandle file = FileHandle::create(path.c_str(), PERMISSIONS);
    if (!file.is_open() || !file.write_all(text.data(), text.size()) || !file.sync() ||
        !file.close())
        throw_system_error("can't write " + path.str());
}

/// The mark goes last: what an interruption leaves is known as ours.
void clear(const fs::path& folder)
{
    for (const fs::directory_entry& entry : fs::directory_iterator(folder))
        if (entry.path().filename() != BackupShelf::MARK)
            fs::remove_all(entry.path());
    fs::remove(folder / BackupShelf::MARK);
    fs::remove(folder);
}

/// Nothing that has the name `to` is replaced.
void move(const KIVString& from, const KIVString& to)
{
    if (fs::exists(fs::symlink_status(to.str())))
        throw std::runtime_error(to.str() + " is in the way");
    if (std::rename(from.c_str(), to.c_str()) != 0)
        throw_system_error("can't rename " + from.str());
}
} // namespace

BackupShelf::BackupShelf(const KIVString& scene)
    : scene(scene), parent(scene.get_path()), prefix(scene.get_file() + INFIX + "-"),
      unfinished(scene + INFIX + "~")
{}

KIVString BackupShelf::find_fault_of_name() const
{
    const std::string name = scene.get_file().str();
    const std::size_t infix = name.rfind(std::string(INFIX) + "-");
    if (name.empty())
        return "has no name";
    if (name.ends_with('~'))
        return "has the name of something unfinished";
    if (infix != std::string::npos && number_of(name, name.substr(0, infix) + INFIX + "-") > 0)
        return "is a copy itself; copy it to a name of its own first";
    return {};
}

KIVString BackupShelf::inq_copy(int number) const
{
    return KIVString(parent).append_path(prefix + KIVString(number, LEAST_DIGITS));
}

/// Not so if somebody else has put something there.
bool BackupShelf::may_be_cleared() const
{
    const fs::path place = unfinished.str();
    return fs::is_directory(fs::symlink_status(place)) &&
           (fs::is_empty(place) || read_mark(place).starts_with(MARK_START));
}

KIVString BackupShelf::begin(int number) const
{
    if (may_be_cleared())
        clear(unfinished.str());
    if (!fs::create_directory(unfinished.str()))
        throw std::runtime_error(unfinished.str() + " is in the way");
    write_mark(unfinished, mark_of(inq_copy(number)));
    return unfinished;
}

void BackupShelf::finish(int number) const
{
    move(unfinished, inq_copy(number));
    if (!sync_folder(parent))
        throw_system_error("can't write " + parent.str());
}

void BackupShelf::give_up() const
{
    if (may_be_cleared())
        clear(unfinished.str());
}

std::vector<int> BackupShelf::find_numbers() const
{
    std::vector<int> numbers;
    for (const fs::directory_entry& entry : fs::directory_iterator(parent.str()))
        if (const int number = number_of(entry.path().filename().string(), prefix))
            numbers.push_back(number);
    std::ranges::sort(numbers);
    return numbers;
}

std::vector<int> BackupShelf::inq_numbers() const
{
    std::vector<int> numbers = find_numbers();
    std::erase_if(numbers, [&](int number) { return !is_copy(number); });
    return numbers;
}

bool BackupShelf::is_copy(int number) const
{
    const KIVString copy = inq_copy(number);
    return read_mark(copy.str()) == mark_of(copy);
}

int BackupShelf::inq_next_number() const
{
    const std::vector<int> numbers = find_numbers();
    if (numbers.empty())
        return 1;
    if (numbers.back() == std::numeric_limits<int>::max())
        throw std::runtime_error("there is no number left");
    return numbers.back() + 1;
}

void BackupShelf::remove(int number) const
{
    move(inq_copy(number), unfinished);
    if (!sync_folder(parent))
        throw_system_error("can't write " + parent.str());
    clear(unfinished.str());
}
