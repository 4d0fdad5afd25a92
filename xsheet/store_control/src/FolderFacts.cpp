#include "xsheet/store_control/hdr/FolderFacts.h"

#include "xsheet/store_control/hdr/CommitRecord.h"
#include "xsheet/store_control/hdr/SceneParts.h"

#include <sys/stat.h>

bool FileFacts::are_of(const KIVString& path) const
{
    return is_there() && inq_file_facts(path) == *this;
}

FileFacts inq_file_facts(const KIVString& path)
{
    struct stat facts {};
    if (::lstat(path.c_str(), &facts) != 0)
        return {};
    return {facts.st_dev, facts.st_ino, facts.st_size, facts.st_mtim.tv_sec, facts.st_mtim.tv_nsec};
}

// Names with "~" mean something only beside a record.
std::vector<FileFacts> inq_scene_facts(const KIVString& folder)
{
    std::vector<FileFacts> facts;
    const auto add = [&](const KIVString& name) {
        KIVString path = folder;
        facts.push_back(inq_file_facts(path.append_path(name)));
        return facts.back().is_there();
    };
    const bool is_committed = add(CommitRecord::FILE_NAME);
    add(OLD_ASSET_PART);
    for (const char* part : SCENE_PARTS) {
        add(part);
        if (is_committed)
            add(KIVString(part) + "~");
    }
    return facts;
}
