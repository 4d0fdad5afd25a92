#include "kivlib/hdr/file_operations.h"

#include "kivlib/hdr/KIVFileUtilities.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

bool inq_file_exists(const KIVString& path)
{
    std::error_code error;
    return fs::exists(path.str(), error);
}

bool inq_is_directory(const KIVString& path)
{
    std::error_code error;
    return fs::is_directory(path.str(), error);
}

namespace {
KIVString without_slashes_at_end(std::string_view path)
{
    while (path.size() > 1 && path.ends_with('/'))
        path.remove_suffix(1);
    return path;
}
} // namespace

int makedir(const KIVString& path, int mode, bool with_parents)
{
    const KIVString folder = without_slashes_at_end(path);
    std::error_code error;
    if (with_parents)
        fs::create_directories(fs::path(folder.str()).parent_path(), error);
    if (::mkdir(folder.c_str(), static_cast<mode_t>(mode)) == 0)
        return 0;
    return errno ? errno : -1;
}

bool kiv_chdir(const KIVString& path)
{
    return ::chdir(path.c_str()) == 0;
}

KIVString inq_working_directory()
{
    std::error_code error;
    return fs::current_path(error).string();
}

namespace {
/// The folder that `..` means in `place`, which may be a symbolic link.
fs::path folder_above(const fs::path& place)
{
    std::error_code error;
    const fs::path real = fs::is_symlink(place, error) ? fs::canonical(place, error) : place;
    return (error ? place : real).parent_path();
}
} // namespace

KIVString inq_absolute_path(const KIVString& path)
{
    const fs::path given = path.str();
    fs::path absolute;
    if (!given.is_absolute())
        absolute = inq_working_directory().str();
    for (const fs::path& part : given)
        if (part == "..")
            absolute = folder_above(absolute);
        else if (part != "." && !part.empty())
            absolute /= part;
    return without_slashes_at_end(absolute.string());
}

KIVString inq_real_path(const KIVString& path)
{
    std::error_code error;
    const fs::path place = fs::weakly_canonical(inq_absolute_path(path).str(), error);
    return error ? inq_absolute_path(path) : without_slashes_at_end(place.string());
}

// A true symbolic link would dangle once `from` is removed; where no second name can be given, the
// content is copied.
int make_symbolic_link(const KIVString& from, const KIVString& to)
{
    if (::link(from.c_str(), to.c_str()) == 0)
        return 0;
    std::error_code error;
    return fs::copy_file(from.str(), to.str(), error) ? 0 : -1;
}

KIVString inq_kiv_scratch_directory()
{
    std::error_code error;
    const fs::path folder = fs::temp_directory_path(error);
    return error ? std::string("/tmp") : folder.string();
}

namespace {
KIVString inq_home_directory()
{
    if (const char* home = std::getenv("HOME"))
        return home;
    const passwd* user = ::getpwuid(::getuid());
    return user ? user->pw_dir : "/";
}
} // namespace

KIVString get_user_kiv_directory()
{
    const char* configuration = std::getenv("XDG_CONFIG_HOME");
    if (configuration && *configuration == '/')
        return configuration;
    return inq_home_directory().append_path(".config");
}

bool create_user_kiv_directory()
{
    const KIVString folder = get_user_kiv_directory();
    return inq_is_directory(folder) || makedir(folder, 0777, true) == 0;
}

KIVString get_user_login_name()
{
    const passwd* user = ::getpwuid(::getuid());
    return user ? user->pw_name : "";
}

KIVString KIVFileUtilities::local_get_subfile(const KIVString& file, const KIVString& kind)
{
    KIVString path = file;
    return inq_is_directory(file) ? path.append_path(kind) : path + "." + kind;
}
