#include "xsheet/store_control/hdr/InterruptedSave.h"

#include "kivlib/hdr/FileHandle.h"
#include "xsheet/store_control/hdr/CommitRecord.h"
#include "xsheet/store_control/hdr/FolderFacts.h"

#include <cerrno>
#include <cstdio>
#include <unistd.h>

namespace {
KIVString join(const KIVString& folder, const KIVString& name)
{
    KIVString path = folder;
    return path.append_path(name);
}
} // namespace

InterruptedSave::InterruptedSave(const KIVString& folder)
    : folder(folder),
      state(inq_file_facts(join(folder, CommitRecord::FILE_NAME)).is_there() ? TORN : NONE)
{
    if (state != NONE)
        judge();
}

// The final file comes first: a part that was moved may have left an older namesake with "~".
void InterruptedSave::judge()
{
    const std::optional<CommitRecord> record = CommitRecord::read(folder);
    if (!record)
        return;
    for (const CommitRecord::Part& part : record->inq_parts()) {
        const KIVString path = join(folder, part.name);
        if (inq_file_sum(path) == part.sum)
            continue;
        const bool is_pending = inq_file_sum(path + "~") == part.sum;
        (is_pending ? pending : bad).push_back(part.name);
    }
    if (bad.empty())
        state = pending.empty() ? MOVED : PENDING;
    else
        state = pending.empty() ? OUTDATED : DAMAGED;
}

bool InterruptedSave::finish()
{
    if (state == NONE || state == DAMAGED)
        return state == NONE;
    while (!pending.empty()) {
        const KIVString path = join(folder, pending.front());
        if (std::rename((path + "~").c_str(), path.c_str()) != 0)
            return false;
        pending.erase(pending.begin());
    }
    if (!sync_folder(folder) || !remove_record())
        return false;
    state = NONE;
    return true;
}

bool InterruptedSave::remove_record() const
{
    return ::unlink(join(folder, CommitRecord::FILE_NAME).c_str()) == 0 || errno == ENOENT;
}
