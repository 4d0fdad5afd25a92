#include "kivlib/hdr/KIVFile.h"

#include "kivlib/hdr/ConsoleOStream.h"
#include "kivlib/hdr/GeneralIStream.h"
#include "kivlib/hdr/KIVFileUtilities.h"
#include "kivlib/hdr/Record.h"
#include "kivlib/hdr/file_operations.h"
#include "kivlib/hdr/store_in_place.h"
#include "kivlib/src/KvdRecord.h"

#include <filesystem>

KIV_STORED_CLASS(KvdRecord, -1);

KvdRecord::KvdRecord(KIVIStream& stream) : KIVObject(stream)
{
    for (int left = stream.read_count(2 * sizeof(int)); left > 0; --left) {
        Entry entry;
        stream >> entry.key;
        entry.list = KIVFileReferenceList(stream);
        entries.push_back(std::move(entry));
    }
}

void KvdRecord::storer(KIVOStream& stream)
{
    KIVObject::storer(stream);
    stream << static_cast<int>(entries.size());
    for (Entry& entry : entries) {
        stream << entry.key;
        stream.insert_without_class_hdr(&entry.list);
    }
}

const KIVFileReferenceList* KvdRecord::find(const KIVString& key) const
{
    const auto found = std::ranges::find(entries, key, &Entry::key);
    return found == entries.end() ? nullptr : &found->list;
}

void KvdRecord::set(const KIVString& key, const KIVFileReferenceList* list)
{
    const auto found = std::ranges::find(entries, key, &Entry::key);
    if (found == entries.end() && list)
        entries.push_back({key, *list});
    else if (found != entries.end() && list)
        found->list = *list;
    else if (found != entries.end())
        entries.erase(found);
}

void KvdRecord::set_folder(const KIVString& folder)
{
    for (Entry& entry : entries)
        entry.list.set_folder(folder);
}

KIVFile::KIVFile() = default;

KIVFile::KIVFile(const KIVString& local_path)
{
    set_local_path(local_path);
}

KIVFile::KIVFile(const KIVFile& other)
    : KIVString(other), universal_path(other.universal_path), user_name(other.user_name)
{}

KIVFile& KIVFile::operator=(const KIVFile& other)
{
    KIVString::operator=(other);
    universal_path = other.universal_path;
    user_name = other.user_name;
    record.reset();
    last_way.reset();
    return *this;
}

KIVFile::~KIVFile() = default;

// A save or load changes the working directory, from which a relative path leads.
void KIVFile::set_local_path(const KIVString& path)
{
    set_path(path);
    if (!is_null())
        universal_path = inq_absolute_path(*this);
}

void KIVFile::set_path(std::string_view path)
{
    while (path.size() > 1 && path.ends_with('/'))
        path.remove_suffix(1);
    KIVString::operator=(path);
    universal_path = *this;
    record.reset();
    last_way.reset();
}

void KIVFile::set_universal_or_legacy_path(const KIVString& path)
{
    std::string with_slashes = path.str();
    std::ranges::replace(with_slashes, '\\', '/');
    set_path(with_slashes);
}

KIVString KIVFile::inq_way_to(const KIVString& target) const
{
    const KIVString place = inq_absolute_path(target);
    const KIVString folder = place.get_path();
    if (!last_way || !(last_way->to == folder))
        last_way = std::make_unique<Way>(Way{folder, find_way_to_folder(folder)});
    KIVString way = last_way->path;
    way.append_path(place.get_file());
    return way.str().starts_with("./") ? KIVString(way.str().substr(2)) : way;
}

namespace {
namespace fs = std::filesystem;

bool is_shorter(const fs::path& a, const fs::path& b)
{
    return std::distance(a.begin(), a.end()) < std::distance(b.begin(), b.end());
}

/// Nothing else is at `place`.
bool may_lead_to(const fs::path& target, const fs::path& place)
{
    std::error_code error;
    return !fs::exists(place, error) || fs::equivalent(place, target, error);
}
} // namespace

// Links may stand in the way to the folder, in the way to the target, or for the folder itself;
// what they are outside the project is of no use once the project has moved.
KIVString KIVFile::find_way_to_folder(const KIVString& target) const
{
    const fs::path place = target.str();
    const fs::path folder = inq_absolute_path(*this).str();
    const fs::path real_folder = inq_real_path(*this).str();
    fs::path best = fs::path(inq_real_path(target).str()).lexically_relative(real_folder);
    for (const fs::path& way :
         {place.lexically_relative(real_folder), place.lexically_relative(folder)})
        if (is_shorter(way, best) && may_lead_to(place, real_folder / way))
            best = way;
    return best.generic_string();
}

KIVString KIVFile::get_user_name() const
{
    if (user_name)
        return *user_name;
    KIVString name = get_file();
    name.set_extension("");
    return name;
}

KvdRecord& KIVFile::inq_record() const
{
    if (record)
        return *record;
    record = std::make_unique<KvdRecord>();
    const KIVString path = KIVFileUtilities::local_get_subfile(*this, "kvd");
    if (!inq_file_exists(path))
        return *record;
    GeneralIStream stream(path.c_str());
    std::unique_ptr<KvdRecord> stored;
    RecordReader(stream).owned(stored);
    if (stream.inq_error_state() == KIVStream::OKAY && stored)
        record = std::move(stored);
    else
        *cerrp << path << " can't be read, and is written anew.\n";
    record->set_folder(*this);
    return *record;
}

const KIVFileReferenceList* KIVFile::inq_reference_list_value(const KIVString& key) const
{
    return inq_record().find(key);
}

void KIVFile::set_reference_list_value(const KIVString& key, const KIVFileReferenceList* list)
{
    inq_record().set(key, list);
}

bool KIVFile::save_kvd()
{
    return store_in_place(inq_record(), KIVFileUtilities::local_get_subfile(*this, "kvd"));
}

void KIVFile::insert_kvd(KIVOStream& stream)
{
    stream.insert_with_class_hdr(&inq_record());
}

void KIVFile::extract_kvd(KIVIStream& stream)
{
    RecordReader(stream).owned(record);
    if (!record) {
        stream.set_error_state(KIVStream::BAD_DATA);
        record = std::make_unique<KvdRecord>();
    }
    record->set_folder(*this);
}
