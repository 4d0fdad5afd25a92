#include "xsheet/node/hdr/MoveSubColPrefs.h"

#include "kivlib/hdr/Record.h"
#include "kivlib/hdr/object_cast.h"
#include "xsheet/move/hdr/MoveColumn.h"

KIV_STORED_CLASS(MoveSubColPrefs, -1);

namespace {
/// Where the preferences of a sub-column stand in a list.
int inq_position_of(const SubColumn& sub_column)
{
    return static_cast<int>(sub_column.inq_label()) - 1;
}
} // namespace

MoveSubColPrefs::MoveSubColPrefs(MoveColumn* column)
    : mode(column->inq_mode()), list(std::make_unique<NumberedList>())
{
    for (SubColumn* member : column->inq_sub_column_list()->of<SubColumn>())
        if (SubColPrefs* prefs = member->create_preferences_object())
            list->add(prefs, inq_position_of(*member));
}

MoveSubColPrefs::~MoveSubColPrefs()
{
    if (!list)
        return;
    for (const NumLinkOb& link : list->inq_links())
        delete link.value();
}

template <class Record> void MoveSubColPrefs::record(Record& r)
{
    r.value(mode);
    r.owned(list);
}

KIV_STORED_RECORD(MoveSubColPrefs);

SubColPrefs* MoveSubColPrefs::find_prefs_of(const SubColumn& sub_column) const
{
    return list ? object_cast<SubColPrefs>(list->find_object_at(inq_position_of(sub_column)))
                : nullptr;
}
