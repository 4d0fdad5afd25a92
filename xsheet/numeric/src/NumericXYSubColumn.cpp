#include "xsheet/numeric/hdr/NumericXYSubColumn.h"

#include "kivlib/hdr/Record.h"

KIV_STORED_CLASS(NumericXYKeyCell, -1);
KIV_STORED_CLASS(NumericXSubColumn, 113);
KIV_STORED_CLASS(NumericYSubColumn, 113);

namespace {
constexpr FormatVersions HAS_PARTNER = since(113);

/// A link to the other one of the pair, which nobody follows any more.
template <class Record> void record_partner(Record& r)
{
    NumericSubColumn* no_partner = nullptr;
    r.link(no_partner, HAS_PARTNER);
}
} // namespace

template <class Record> void NumericXSubColumn::record(Record& r)
{
    record_partner(r);
}

KIV_STORED_RECORD(NumericXSubColumn);

gsl::owner<KeyCell*> NumericXSubColumn::create_new_key_with_label(int new_label)
{
    return new NumericXYKeyCell(this, -1, static_cast<unsigned>(new_label));
}

template <class Record> void NumericYSubColumn::record(Record& r)
{
    record_partner(r);
}

KIV_STORED_RECORD(NumericYSubColumn);

gsl::owner<KeyCell*> NumericYSubColumn::create_new_key_with_label(int new_label)
{
    return new NumericXYKeyCell(this, -1, static_cast<unsigned>(new_label));
}
