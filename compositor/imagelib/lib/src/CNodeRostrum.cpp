#include "compositor/imagelib/lib/hdr/CNodeRostrum.h"

#include "compositor/imagelib/lib/hdr/CNodeNullOp.h"
#include "kivlib/hdr/ConsoleOStream.h"
#include "kivlib/hdr/Record.h"
#include "xsheet/column/hdr/Column.h"

KIV_STORED_RECORD(CNodeRostrum);

namespace {
constexpr FormatVersions HAS_CAMERA_NUMBERS = before(94);
constexpr FormatVersions HAS_FOUR_CAMERA_NUMBERS = between(87, 93);

void delete_sub_columns(Column& column)
{
    KIVLinkedList* members = column.inq_sub_column_list();
    for (SubColumn* member : members->of<SubColumn>()) {
        column.tell_watchers_sub_column_removed(member);
        members->remove(member);
        delete member;
    }
}
} // namespace

template <class Record> void CNodeRostrum::record(Record& r)
{
    r.dropped_int(HAS_CAMERA_NUMBERS);
    r.dropped_int(HAS_CAMERA_NUMBERS);
    r.dropped_int(HAS_FOUR_CAMERA_NUMBERS);
    r.dropped_int(HAS_FOUR_CAMERA_NUMBERS);
}

bool CNodeRostrum::load_finished_with_abort()
{
    const bool is_aborted = DWNode::load_finished_with_abort();
    Column* column = inq_column();
    if (!column || column->inq_sub_column_list()->inq_is_empty())
        return is_aborted;
    delete_sub_columns(*column);
    column->set_needs_saving();
    *coutp << "Warning: old style camera node, column data ignored.\n";
    return is_aborted;
}

gsl::owner<CNodeOp*> CNodeRostrum::new_nodeop(int)
{
    return new CNodeNullOp(this);
}
