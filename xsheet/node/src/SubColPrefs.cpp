#include "xsheet/node/hdr/SubColPrefs.h"

#include "kivlib/hdr/Record.h"
#include "xsheet/numeric/hdr/NumericSubColumn.h"

KIV_STORED_CLASS(SubColPrefs, -1);
KIV_STORED_CLASS(NumericSubColPrefs, -1);

NumericSubColPrefs::NumericSubColPrefs(const NumericSubColumn* sub_column)
    : units(sub_column->inq_unit_type()), precision(sub_column->inq_precision())
{}

template <class Record> void NumericSubColPrefs::record(Record& r)
{
    r.value(units);
    r.value(precision);
}

KIV_STORED_RECORD(NumericSubColPrefs);
