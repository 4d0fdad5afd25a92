#pragma once

class BaseCellList;
class KeyCell;
class SubColumn;

#include "xsheet/cell/hdr/BaseCell.h"

/// A walk over cells from one to another, both inclusive. All forms of stepping move and give the
/// cell there; null past the end. The first step forwards is to the first cell, the first step
/// backwards to the last.
class BaseCellIterator {
public:
    explicit BaseCellIterator(const BaseCellList& list);

    /// From `cell` to the last of the list.
    BaseCellIterator(BaseCell* cell, const BaseCellList& list);
    BaseCellIterator(BaseCell* from, BaseCell* to) : current(from), first(from), last(to) {}

    BaseCell* operator++();
    BaseCell* operator++(int) { return ++*this; }
    BaseCell* operator--();
    BaseCell* operator--(int) { return --*this; }
    void reset();

    BaseCell* inq_current() const { return current; }

private:
    BaseCell* current; // not owned
    BaseCell* first;   // not owned
    BaseCell* last;    // not owned
    int steps = 0;
};

/// The same over keys: `while (iterator++) use(iterator())`.
class KeyCellIterator {
public:
    explicit KeyCellIterator(const SubColumn* sub_column);

    /// From `key` to the last of its sub-column.
    explicit KeyCellIterator(KeyCell* key);
    KeyCellIterator(KeyCell* from, KeyCell* to);

    KeyCell* operator++();
    KeyCell* operator++(int) { return ++*this; }
    KeyCell* operator--();
    KeyCell* operator--(int) { return --*this; }
    KeyCell* operator()() const;
    void reset() { cells.reset(); }

private:
    BaseCellIterator cells;
};
