#include "kivlib/hdr/ModuleFolder.h"

#include "kivlib/hdr/ByteBuffer.h"
#include "kivlib/hdr/ClassDescriptor.h"
#include "kivlib/hdr/ClassManager.h"
#include "kivlib/hdr/DLLInitialiser.h"
#include "kivlib/hdr/FileHandle.h"
#include "kivlib/hdr/KIVOStream.h"
#include "kivlib/hdr/file_operations.h"
#include "kivlib/hdr/report_error.h"

#include <charconv>
#include <cstdlib>
#include <dlfcn.h>
#include <filesystem>
#include <optional>
#include <set>
#include <sys/stat.h>

namespace {
constexpr char EXTENSION[] = ".so";
constexpr char SETUP_NAME[] = "montaray_module_setup";

/// Beside the library, wherever it is installed.
KIVString find_module_folder()
{
    Dl_info library{};
    if (!dladdr(reinterpret_cast<const void*>(&ModuleFolder::load_class), &library))
        return {};
    KIVString folder = KIVString(library.dli_fname).get_path();
    if (folder.is_null())
        return {};
    folder = inq_absolute_path(folder);
    return folder.str().starts_with('/') ? folder.append_path("montaray").append_path("modules")
                                         : KIVString();
}

// When the library is loaded: its place may be relative to the working directory of that moment,
// and a program that later works in a scene's folder must not find modules there.
const bool is_found_early = (ModuleFolder::inq_path(), true);

/// A name from a file never leads out of the module folder.
bool is_class_name(const KIVString& name)
{
    return !name.is_null() && std::ranges::all_of(name.str(), [](char c) {
        return ('a' <= c && c <= 'z') || ('A' <= c && c <= 'Z') || ('0' <= c && c <= '9') ||
               c == '_';
    });
}

/// What a module that was loaded lacks of a class; empty if nothing.
KIVString find_gap(const KIVString& class_name)
{
    const ClassDescriptor* record = ClassManager::inq_main()->find_cd_for(class_name);
    if (!record || record->inq_is_from_stream())
        return "does not bring the class " + class_name;
    if (record->inq_reader() && !record->inq_stored_type())
        return "registers the class " + class_name + " without its type"; // links would not load
    return {};
}

struct Release {
    int major = 0;
    int minor = 0;
};

/// From a text such as "1.2.0".
std::optional<Release> read_release(std::string_view text)
{
    Release release;
    const char* end = text.data() + text.size();
    const auto [point, error] = std::from_chars(text.data(), end, release.major);
    if (error != std::errc() || point == end || *point != '.' ||
        std::from_chars(point + 1, end, release.minor).ec != std::errc())
        return {};
    return release;
}

KIVString name_of(const Release& release)
{
    return std::to_string(release.major) + "." + std::to_string(release.minor);
}

/// False if it is no regular file or can't be read.
bool read_file(const KIVString& path, ByteBuffer& content)
{
    const FileHandle file = FileHandle::open_to_read(path.c_str());
    struct stat facts {};
    if (!file.is_open() || ::fstat(file.inq_descriptor(), &facts) != 0 || !S_ISREG(facts.st_mode))
        return false;
    const auto size = static_cast<std::size_t>(facts.st_size);
    char* to = content.reset(size);
    return to && file.read_all(to, size);
}

/// The release that a module was built with, by the mark in its file: no code of a module that
/// does not fit the library runs. None if it is no module.
std::optional<Release> inq_release_of(const KIVString& path)
{
    ByteBuffer content;
    if (!read_file(path, content))
        return {};
    const std::string_view bytes(content.data(), content.size());
    const std::string_view mark(MONTARAY_MODULE_MARK);
    const std::size_t at = bytes.find(mark);
    if (at == std::string_view::npos)
        return {};
    constexpr std::size_t LONGEST = 16;
    return read_release(bytes.substr(at + mark.size(), LONGEST));
}

/// What keeps a file from being loaded; empty if nothing does.
KIVString find_fault(const KIVString& path)
{
    const std::optional<Release> theirs = inq_release_of(path);
    if (!theirs)
        return path + ": is no module";
    const Release ours = read_release(MONTARAY_VERSION).value_or(Release());
    if (theirs->major != ours.major || theirs->minor > ours.minor)
        return path + ": was built for release " + name_of(*theirs) + ", and this is " +
               name_of(ours);
    return {};
}

/// The class manager keeps what the initialiser added, and a module is never unloaded.
KIVString run_initialiser(void* module, const KIVString& path)
{
    const auto setup = reinterpret_cast<ModuleSetup>(dlsym(module, SETUP_NAME));
    if (!setup)
        return path + ": has no initialiser";
    try {
        setup(ClassManager::inq_main());
    } catch (const std::exception& exception) {
        return path + ": its initialiser failed: " + exception.what();
    } catch (...) {
        return path + ": its initialiser failed";
    }
    return {};
}

/// A module's code runs once, whatever names it has and whatever came of it.
KIVString load_file(const KIVString& path)
{
    static auto* faults_of_loaded = new std::unordered_map<std::string, KIVString>;
    const auto known = faults_of_loaded->find(path.str());
    if (known != faults_of_loaded->end())
        return known->second;
    const KIVString fault = find_fault(path);
    if (!fault.is_null())
        return fault;
    void* module = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!module) {
        const char* words = dlerror();
        return words ? words : path + ": can't be loaded";
    }
    KIVString& outcome = (*faults_of_loaded)[path.str()]; // which an initialiser may ask for
    return outcome = run_initialiser(module, path);
}

/// Whether the file under a name is one of the folder: a link must not lead out.
bool lies_in_folder(const KIVString& real_path)
{
    return real_path.get_path() == inq_real_path(ModuleFolder::inq_path());
}

KIVString load_name(const KIVString& name)
{
    const KIVString path = KIVString(ModuleFolder::inq_path()).append_path(name);
    const KIVString real_path = inq_real_path(path);
    return lies_in_folder(real_path) ? load_file(real_path)
                                     : path + ": leads out of the module folder";
}
} // namespace

const KIVString& ModuleFolder::inq_path()
{
    static const KIVString folder = find_module_folder();
    return folder;
}

bool ModuleFolder::load_class(const KIVString& class_name, KIVString& fault)
{
    fault = KIVString();
    if (inq_path().is_null() || !is_class_name(class_name))
        return false;
    const KIVString name = class_name + EXTENSION;
    if (!inq_file_exists(KIVString(inq_path()).append_path(name)))
        return false;
    fault = load_name(name);
    if (!fault.is_null())
        return false;
    const KIVString gap = find_gap(class_name);
    if (!gap.is_null())
        fault = name + ": " + gap;
    return gap.is_null();
}

void ModuleFolder::load_all()
{
    std::set<std::string> faults; // a module has several names
    std::error_code error;
    std::filesystem::directory_iterator entry(inq_path().str(), error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error))
        if (entry->path().extension() == EXTENSION)
            faults.insert(load_name(entry->path().filename().string()).str());
    faults.erase("");
    for (const std::string& fault : faults)
        report_here() << KIVString(fault) << "\n";
}
