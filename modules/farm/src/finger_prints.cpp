#include "modules/farm/hdr/finger_prints.h"

#include "kivlib/hdr/Checksum.h"
#include "kivlib/hdr/FileHandle.h"
#include "kivlib/hdr/file_operations.h"
#include "kivlib/hdr/montaray_version.h"
#include "modules/farm/hdr/durable_file.h"
#include "xsheet/store_control/hdr/FolderLock.h"
#include "xsheet/store_control/hdr/InterruptedSave.h"
#include "xsheet/store_control/hdr/SceneParts.h"

#include <charconv>
#include <filesystem>
#include <stdexcept>
#include <sys/stat.h>

namespace {
std::string hexadecimal(Checksum::Value sum)
{
    constexpr std::size_t DIGITS = 2 * sizeof sum;
    constexpr int BASE = 16;
    char digits[DIGITS];
    const char* const end = std::to_chars(digits, digits + DIGITS, sum, BASE).ptr;
    const auto n = static_cast<std::size_t>(end - digits);
    return std::string(DIGITS - n, '0').append(digits, n);
}

/// The contents of a file.
std::string inq_contents(const std::string& path)
{
    const std::optional<FileSum> sum = inq_file_sum(path);
    return sum ? std::to_string(sum->size) + " " + hexadecimal(sum->sum) : NO_FILE_PRINT;
}

void lock(FolderLock& folder_lock, const std::string& scene)
{
    if (!inq_is_directory(scene))
        throw std::runtime_error("there is no scene " + scene);
    if (folder_lock.take(scene, FolderLock::SHARED) == FolderLock::BUSY)
        throw std::runtime_error(scene + " is being saved by another program");
    if (InterruptedSave(scene).inq_state() != InterruptedSave::NONE)
        throw std::runtime_error("a save of " + scene + " was interrupted; recover it first");
}
} // namespace

std::string inq_text_print(const std::vector<std::string>& texts)
{
    Checksum checksum;
    for (const std::string& text : texts)
        checksum.add(text.c_str(), text.size() + 1); // with its end, which no text contains
    return hexadecimal(checksum.get());
}

std::string inq_file_print(const std::string& path)
{
    const FileHandle file = FileHandle::open_to_read(path.c_str());
    struct stat facts {};
    if (!file.is_open() || ::fstat(file.inq_descriptor(), &facts) != 0)
        return NO_FILE_PRINT;
    return std::to_string(facts.st_size) + " " + std::to_string(facts.st_mtim.tv_sec) + " " +
           std::to_string(facts.st_mtim.tv_nsec);
}

std::string inq_scene_print(const std::string& scene)
{
    FolderLock scene_lock;
    lock(scene_lock, scene);
    std::vector<std::string> names(SCENE_PARTS.begin(), SCENE_PARTS.end());
    names.insert(names.end(), {OLD_ASSET_PART, DRAWING_WINDOW_TAGS});
    std::vector<std::string> texts;
    for (const std::string& name : names)
        texts.insert(texts.end(), {name, inq_contents(scene + "/" + name)});
    return inq_text_print(texts);
}

std::string inq_program_print(const std::string& program)
{
    const std::filesystem::path file = inq_real_path(program).str();
    std::vector<std::string> texts{MONTARAY_VERSION, inq_contents(file)};
    if (texts.back() == NO_FILE_PRINT)
        throw std::runtime_error("there is no program " + program);
    const std::filesystem::path folder = file.parent_path().parent_path() / LIBRARY_FOLDER;
    for (const char* name : {LIBRARY_NAMES})
        texts.push_back(inq_contents(inq_real_path((folder / name).string()).str()));
    return inq_text_print(texts);
}
