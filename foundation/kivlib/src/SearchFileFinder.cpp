#include "kivlib/hdr/SearchFileFinder.h"

#include "kivlib/hdr/KIVFile.h"
#include "kivlib/hdr/file_operations.h"
#include "kivlib/hdr/in_one_line.h"

namespace {
/// The rest of `path` after the folder `from`; only whole components count.
bool take_prefix(std::string_view path, std::string_view from, std::string_view& rest)
{
    if (!path.starts_with(from) || (path.size() > from.size() && path[from.size()] != '/'))
        return false;
    rest = path.substr(from.size());
    return true;
}

std::string without_slashes_at_end(std::string_view path)
{
    return std::string(path.substr(0, path.find_last_not_of('/') + 1));
}

KIVString if_there(const KIVString& path)
{
    return inq_file_exists(path) ? path : KIVString();
}

KIVString last_two_components(const KIVString& path)
{
    KIVString tail = path.get_path().get_file();
    return tail.append_path(path.get_file());
}
} // namespace

void FileSearch::add_search_folder(const KIVString& folder)
{
    folders.push_back(inq_absolute_path(folder)); // a load changes the working directory
}

void FileSearch::add_prefix_map(const KIVString& from, const KIVString& to)
{
    prefix_maps.push_back({without_slashes_at_end(from), inq_absolute_path(to).str()});
    std::ranges::stable_sort(prefix_maps, std::ranges::greater(),
                             [](const PrefixMap& map) { return map.from.size(); });
}

KIVString FileSearch::find(const KIVString& path)
{
    if (inq_file_exists(path))
        return path;
    KIVString& known = places[path.str()];
    if (known.is_null() || !inq_file_exists(known)) // the disc changes between two loads
        known = look_for(path);
    return known.is_null() ? path : known;
}

KIVString FileSearch::look_for(const KIVString& path) const
{
    KIVString found = find_by_prefix(path);
    if (found.is_null())
        found = find_in_folders(last_two_components(path));
    if (found.is_null())
        found = find_in_folders(path.get_file());
    return found;
}

/// The longest beginning that fits decides.
KIVString FileSearch::find_by_prefix(std::string_view path) const
{
    std::string_view rest;
    for (const PrefixMap& map : prefix_maps)
        if (take_prefix(path, map.from, rest))
            return if_there(inq_absolute_path(map.to + std::string(rest)));
    return {};
}

KIVString FileSearch::find_in_folders(const KIVString& tail) const
{
    KIVString found;
    for (std::size_t i = 0; i < folders.size() && found.is_null() && !tail.is_null(); ++i)
        found = if_there(KIVString(folders[i]).append_path(tail));
    return found;
}

int FileSearch::inq_found_count() const
{
    return static_cast<int>(places.size()) - inq_lost_count();
}

int FileSearch::inq_lost_count() const
{
    return static_cast<int>(
        std::ranges::count_if(places, [](const auto& entry) { return entry.second.is_null(); }));
}

KIVString FileSearch::report() const
{
    KIVString text;
    for (const auto& [path, place] : places)
        text += (place.is_null() ? "lost  " + in_one_line(path)
                                 : "found " + in_one_line(path) + " at " + in_one_line(place)) +
                "\n";
    return text + KIVString(inq_found_count(), 0) + " found elsewhere, " +
           KIVString(inq_lost_count(), 0) + " lost\n";
}

KIVString SearchFileFinder::find_replacement(const KIVFile& file, const char*, bool* leave)
{
    *leave = false;
    const KIVString place = search.find(file);
    was_any_replaced |= !(place == file);
    return place;
}
