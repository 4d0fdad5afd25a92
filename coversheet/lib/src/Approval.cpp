#include "coversheet/lib/hdr/Approval.h"

#include "kivlib/hdr/Record.h"
#include "kivlib/hdr/file_operations.h"

KIV_STORED_CLASS(Approval, -1);

namespace {
constexpr FormatVersions HAS_CONTENTS = since(1);
} // namespace

template <class Record> void Approval::record(Record& r)
{
    r.value(approved, HAS_CONTENTS);
    r.embedded(approver, HAS_CONTENTS);
    r.embedded(date, HAS_CONTENTS);
}

KIV_STORED_RECORD(Approval);

void Approval::set_approved(bool is_approved)
{
    approved = is_approved;
    if (!approved)
        return;
    approver = get_user_login_name();
    date = KIVDate();
}
