#include "xsheet/store_control/src/PendingPart.h"

#include <sys/stat.h>
#include <unistd.h>

namespace {
constexpr int PERMISSIONS = 0666; // less what the process masks out
}

KIVString PendingPart::inq_name() const
{
    std::string_view name = *this;
    if (name.starts_with("./"))
        name.remove_prefix(2);
    return name;
}

// Whoever may use the old file may use the new one.
gsl::owner<BinOStream*> PendingPart::open()
{
    const KIVString path = inq_tilde_name();
    ::unlink(path.c_str());
    FileHandle created = FileHandle::create(path.c_str(), PERMISSIONS);
    struct stat old_file {};
    if (created.is_open() && ::lstat(c_str(), &old_file) == 0 && S_ISREG(old_file.st_mode))
        static_cast<void>(::fchmod(created.inq_descriptor(), old_file.st_mode & PERMISSIONS));
    writer = new BinOStream(path.c_str(), std::move(created));
    return writer;
}

void PendingPart::was_closed(bool is_good)
{
    if (is_good) {
        file = writer->take_file();
        sum = writer->inq_sum();
        facts = inq_file_facts(inq_tilde_name());
    }
    writer = nullptr;
}

bool PendingPart::may_move_to(const KIVString& path) const
{
    return !is_stale || (folder == path && is_whole());
}

bool PendingPart::is_whole() const
{
    return facts.is_there() && inq_file_facts(inq_tilde_name()) == facts;
}

// Once only: what a failed sync has lost, a second one would not notice.
bool PendingPart::sync_and_close()
{
    if (!is_synced) {
        is_synced = file.sync();
        is_synced = file.close() && is_synced;
        facts = is_synced ? inq_file_facts(inq_tilde_name()) : FileFacts();
    }
    return is_synced;
}
