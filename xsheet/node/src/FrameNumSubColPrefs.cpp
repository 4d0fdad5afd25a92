#include "xsheet/node/hdr/FrameNumSubColPrefs.h"

#include "kivlib/hdr/Record.h"

KIV_STORED_CLASS(FrameNumSubColPrefs, -1);

FrameNumSubColPrefs::FrameNumSubColPrefs(const FrameNumberSubColumn* sub_column)
    : format(sub_column->inq_format())
{}

template <class Record> void FrameNumSubColPrefs::record(Record& r)
{
    r.value(format);
}

KIV_STORED_RECORD(FrameNumSubColPrefs);
