#include "kivlib/hdr/KIVFileReference.h"

#include "kivlib/hdr/Record.h"
#include "kivlib/hdr/file_operations.h"

#include <filesystem>

KIV_STORED_CLASS(KIVFileReference, -1);
KIV_STORED_CLASS(KIVFileReferenceList, -1);

KIVFileReference::KIVFileReference(const KIVFile& from, const KIVFile& to, const KIVString& kind)
    : kind(kind), local_path(to), user_name(to.get_user_name())
{
    if (!to.is_null())
        relative_path = from.inq_way_to(to.inq_universal_path());
}

template <class Record> void KIVFileReference::record(Record& r)
{
    r.value(kind);
    r.value(local_path);
    r.value(relative_path);
    r.value(user_name);
}

KIV_STORED_RECORD(KIVFileReference);

// Where neither path leads to a file, the place in the project is kept for the next record: the
// artwork may follow the scene.
KIVFile KIVFileReference::inq_target(const KIVString& folder, const KIVString& real_folder) const
{
    KIVFile target(local_path);
    if (!relative_path.is_null() && !folder.is_null() && !find_target_in(real_folder, target) &&
        !find_target_in(folder, target) && !inq_file_exists(local_path))
        target.set_universal_path(inq_place_in(real_folder));
    target.set_user_name(user_name);
    return target;
}

// By names alone: the way was told for the folder as it is named, which may be a symbolic link.
KIVString KIVFileReference::inq_place_in(const KIVString& folder) const
{
    KIVString place = inq_absolute_path(folder);
    place.append_path(relative_path);
    return std::filesystem::path(place.str()).lexically_normal().string();
}

bool KIVFileReference::find_target_in(const KIVString& folder, KIVFile& target) const
{
    const KIVString place = inq_place_in(folder);
    const bool is_there = inq_file_exists(place);
    if (is_there)
        target.set_local_path(place);
    return is_there;
}

KIVFileReferenceList::KIVFileReferenceList(KIVIStream& stream) : KIVObject(stream)
{
    for (int left = stream.read_count(sizeof(int)); left > 0; --left) {
        KIVFileReference reference(stream);
        int tag = 0;
        stream >> tag;
        entries.push_back({reference, tag});
    }
}

void KIVFileReferenceList::storer(KIVOStream& stream)
{
    KIVObject::storer(stream);
    stream << static_cast<int>(entries.size());
    for (Entry& entry : entries) {
        stream.insert_without_class_hdr(&entry.reference);
        stream << entry.tag;
    }
}

void KIVFileReferenceList::set_folder(const KIVString& path)
{
    folder = path;
    real_folder = inq_real_path(path);
}

void KIVFileReferenceList::add(const KIVFileReference& reference, int tag)
{
    entries.push_back({reference, tag});
}
