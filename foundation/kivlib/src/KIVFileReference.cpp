#include "kivlib/hdr/KIVFileReference.h"

#include "kivlib/hdr/Record.h"
#include "kivlib/hdr/file_operations.h"

#include <filesystem>

KIV_STORED_CLASS(KIVFileReference, -1);
KIV_STORED_CLASS(KIVFileReferenceList, -1);

KIVFileReference::KIVFileReference(const KIVFile& from, const KIVFile& to, const KIVString& kind)
    : kind(kind), local_path(to), user_name(to.get_user_name())
{
    const std::filesystem::path folder = inq_absolute_path(from).str();
    const std::filesystem::path target = inq_absolute_path(to).str();
    if (!to.is_null())
        relative_path = target.lexically_relative(folder).generic_string();
}

template <class Record> void KIVFileReference::record(Record& r)
{
    r.value(kind);
    r.value(local_path);
    r.value(relative_path);
    r.value(user_name);
}

KIV_STORED_RECORD(KIVFileReference);

KIVFile KIVFileReference::inq_target(const KIVString& folder) const
{
    KIVFile target(local_path);
    KIVString nearby = folder;
    if (!relative_path.is_null() && !folder.is_null() && local_path.str().starts_with('/')) {
        nearby = inq_absolute_path(nearby.append_path(relative_path));
        if (inq_file_exists(nearby))
            target.set_local_path(nearby);
    }
    target.set_user_name(user_name);
    return target;
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

void KIVFileReferenceList::add(const KIVFileReference& reference, int tag)
{
    entries.push_back({reference, tag});
}
