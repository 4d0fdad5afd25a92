#pragma once

#include "kivlib/hdr/KIVDateAndTime.h"

/// One stage of a scene's approval: whether it is given, and by whom and when it was given last.
class Approval : public KIVObject {
    KIV_STORED(Approval, KIVObject);

public:
    /// Not given yet.
    Approval() : date(0, 0, 0, 0) {}
    explicit Approval(KIVIStream& stream);

    void storer(KIVOStream& stream) override;

    bool inq_approved() const { return approved; }
    const KIVString& inq_approver() const { return approver; }
    const KIVDate& inq_date() const { return date; }

    /// The user of this process approves today, or takes it back; then the last approver and date
    /// stay on record.
    void set_approved(bool is_approved);

private:
    template <class Record> void record(Record& r);

    bool approved = false;
    KIVString approver;
    KIVDate date;
};
