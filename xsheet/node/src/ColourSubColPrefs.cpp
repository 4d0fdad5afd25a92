#include "xsheet/node/hdr/ColourSubColPrefs.h"

#include "kivlib/hdr/Record.h"
#include "xsheet/colour/hdr/ColourSubColumn.h"

KIV_STORED_CLASS(ColourSubColPrefs, -1);

ColourSubColPrefs::ColourSubColPrefs(const ColourSubColumn* sub_column)
    : mode(sub_column->inq_colour_interp_mode())
{}

template <class Record> void ColourSubColPrefs::record(Record& r)
{
    r.value(mode);
}

KIV_STORED_RECORD(ColourSubColPrefs);
