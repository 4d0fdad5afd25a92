#include "compositor/lib/hdr/CNodeConnection.h"

#include "compositor/lib/hdr/CNodeChannel.h"
#include "compositor/lib/src/GraphChanges.h"
#include "kivlib/hdr/Record.h"

KIV_STORED_CLASS(CNodeConnection, 132);

namespace {
constexpr FormatVersions HAS_UNUSED_NUMBER = between(102, 131);
}

/// Far links: from channel to connection to channel a graph may be one long zigzag.
template <class Record> void CNodeConnection::record(Record& r)
{
    r.far_link(output_channel);
    r.far_link(input_channel);
    r.dropped_int(HAS_UNUSED_NUMBER);
}

KIV_STORED_RECORD(CNodeConnection);

void CNodeConnection::set_output_channel(CNodeChannel* channel)
{
    output_channel = channel;
    ++GraphChanges::our_count;
}

void CNodeConnection::set_input_channel(CNodeChannel* channel)
{
    input_channel = channel;
    ++GraphChanges::our_count;
}
