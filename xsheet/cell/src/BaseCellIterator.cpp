#include "xsheet/cell/hdr/BaseCellIterator.h"

#include "xsheet/cell/hdr/BaseCellList.h"
#include "xsheet/column/hdr/SubColumn.h"

BaseCellIterator::BaseCellIterator(const BaseCellList& list)
    : BaseCellIterator(list.inq_first_cell(), list.inq_last_cell())
{}

BaseCellIterator::BaseCellIterator(BaseCell* cell, const BaseCellList& list)
    : BaseCellIterator(cell, list.inq_last_cell())
{}

BaseCell* BaseCellIterator::operator++()
{
    if (steps++ == 0)
        current = first;
    else if (current)
        current = current == last ? nullptr : current->inq_next();
    return current;
}

BaseCell* BaseCellIterator::operator--()
{
    if (steps++ == 0)
        current = last;
    else if (current)
        current = current == first ? nullptr : current->inq_prev();
    return current;
}

void BaseCellIterator::reset()
{
    current = first;
    steps = 0;
}

KeyCellIterator::KeyCellIterator(const SubColumn* sub_column)
    : cells(sub_column->inq_first_key(), sub_column->inq_last_key())
{}

KeyCellIterator::KeyCellIterator(KeyCell* key)
    : cells(key, key->inq_sub_column() ? key->inq_sub_column()->inq_last_key() : nullptr)
{}

KeyCellIterator::KeyCellIterator(KeyCell* from, KeyCell* to) : cells(from, to) {}

KeyCell* KeyCellIterator::operator++()
{
    return static_cast<KeyCell*>(++cells);
}

KeyCell* KeyCellIterator::operator--()
{
    return static_cast<KeyCell*>(--cells);
}

KeyCell* KeyCellIterator::operator()() const
{
    return static_cast<KeyCell*>(cells.inq_current());
}
