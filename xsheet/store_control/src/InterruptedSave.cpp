#include "xsheet/store_control/hdr/InterruptedSave.h"

#include "kivlib/hdr/FileHandle.h"
#include "xsheet/store_control/hdr/SceneParts.h"

#include <cerrno>
#include <cstdio>
#include <sys/stat.h>
#include <unistd.h>

namespace {
KIVString join(const KIVString& folder, const KIVString& name)
{
    KIVString path = folder;
    return path.append_path(name);
}

bool is_absent(const KIVString& path)
{
    struct stat facts {};
    return ::lstat(path.c_str(), &facts) != 0 && errno == ENOENT;
}

/// Whether a file without a sum is there nevertheless, and the disc or the system does not give it
/// out now. That is no reason to give its contents up.
bool is_unread(const KIVString& path, const std::optional<FileSum>& sum)
{
    struct stat facts {};
    if (sum)
        return false;
    return ::lstat(path.c_str(), &facts) == 0 ? S_ISREG(facts.st_mode) : errno != ENOENT;
}
} // namespace

InterruptedSave::InterruptedSave(const KIVString& folder)
    : folder(folder), state(is_absent(join(folder, CommitRecord::FILE_NAME)) ? NONE : TORN)
{
    if (state != NONE)
        judge();
}

// The final file comes first: a part that was moved may have left an older namesake with "~".
void InterruptedSave::judge()
{
    bool is_obscure = false;
    const std::optional<CommitRecord> record = CommitRecord::read(folder, &is_obscure);
    if (is_obscure)
        bad.push_back(CommitRecord::FILE_NAME);
    if (record)
        for (const CommitRecord::Part& part : record->inq_parts())
            is_obscure = !judge(part) || is_obscure;
    if (is_obscure)
        state = DAMAGED;
    else if (record && bad.empty())
        state = pending.empty() ? MOVED : PENDING;
    else if (record)
        state = pending.empty() ? OUTDATED : DAMAGED;
}

/// False if it can't be said where the part is.
bool InterruptedSave::judge(const CommitRecord::Part& part)
{
    const KIVString path = join(folder, part.name);
    const std::optional<FileSum> final_sum = inq_file_sum(path);
    if (final_sum == part.sum)
        return true;
    const std::optional<FileSum> tilde_sum = inq_file_sum(path + "~");
    const bool is_pending = tilde_sum == part.sum;
    if (!is_pending && inq_file_sum(path) == part.sum)
        return true; // it was moved while we looked
    (is_pending ? pending : bad).push_back(part.name);
    return is_pending || !(is_unread(path, final_sum) || is_unread(path + "~", tilde_sum));
}

bool InterruptedSave::finish()
{
    if (state == NONE || state == DAMAGED)
        return state == NONE;
    if (!pending.empty() && !CommitRecord::sync(folder))
        return false;
    while (!pending.empty()) {
        const KIVString path = join(folder, pending.front());
        if (std::rename((path + "~").c_str(), path.c_str()) != 0)
            return false;
        pending.erase(pending.begin());
    }
    const bool has_happened = state == PENDING || state == MOVED;
    if (!sync_folder(folder) || !remove_record())
        return false;
    if (has_happened)
        ::unlink(join(folder, DRAWING_WINDOW_TAGS).c_str());
    state = NONE;
    return true;
}

bool InterruptedSave::remove_record() const
{
    return ::unlink(join(folder, CommitRecord::FILE_NAME).c_str()) == 0 || errno == ENOENT;
}
