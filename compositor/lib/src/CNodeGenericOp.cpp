#include "compositor/lib/hdr/CNodeGenericOp.h"

#include "kivlib/hdr/Record.h"

KIV_STORED_CLASS(CNodeGenericOp, -1);

template <class Record> void CNodeGenericOp::record(Record& r)
{
    r.value(node_type);
    r.value(data_type);
}

KIV_STORED_RECORD(CNodeGenericOp);
