#include "xsheet/cell/hdr/ColumnHeaderCell.h"

KIV_STORED_CLASS(ColumnHeaderCell, -1);

gsl::owner<BaseCell*> ColumnHeaderCell::duplicate() const
{
    return new ColumnHeaderCell(*this);
}
