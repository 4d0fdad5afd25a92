#include "xsheet/cell/hdr/BaseCellList.h"

#include "kivlib/hdr/Record.h"

KIV_STORED_CLASS(BaseCellList, -1);

namespace {
constexpr std::size_t LEAST_BYTES_OF_A_CELL = sizeof(short); // the mark of a null
constexpr int NEARBY = 4; // cells stepped over before the search goes by halves
} // namespace

BaseCellList::BaseCellList(KIVIStream& stream) : KIVObject(stream)
{
    RecordReader r(stream);
    int left = stream.read_count(LEAST_BYTES_OF_A_CELL);
    cells.reserve(static_cast<std::size_t>(left));
    for (; left > 0; --left) {
        std::unique_ptr<BaseCell> cell;
        r.owned(cell);
        if (cell)
            add_cell(cell.release());
    }
    cursor = nullptr;
}

void BaseCellList::storer(KIVOStream& stream)
{
    KIVObject::storer(stream);
    stream << count();
    for (const BaseCell* cell : cells)
        stream.insert_with_class_hdr(cell);
}

BaseCellList::~BaseCellList()
{
    delete_all_cells();
}

void BaseCellList::delete_all_cells()
{
    note_change();
    cursor = nullptr;
    Cells deleted = std::exchange(cells, {});
    for (gsl::owner<BaseCell*> cell : deleted)
        delete cell;
    deleted.clear();
    cells = std::move(deleted); // in-betweens come back soon, as many as there were
}

void BaseCellList::insert(Cells::const_iterator place, BaseCell* cell)
{
    note_change();
    BaseCell* behind = place == cells.end() ? nullptr : *place;
    BaseCell* before = behind ? behind->prev : inq_last_cell();
    cells.insert(place, cell);
    cell->list = this;
    cell->prev = before;
    cell->next = behind;
    if (before)
        before->next = cell;
    if (behind)
        behind->prev = cell;
}

BaseCellList::Cells::const_iterator BaseCellList::find_behind(int number) const
{
    return std::ranges::upper_bound(cells, number, {}, &BaseCell::number);
}

void BaseCellList::add_cell(gsl::owner<BaseCell*> cell)
{
    const bool is_last = cells.empty() || cells.back()->number <= cell->number;
    insert(is_last ? cells.end() : find_behind(cell->number), cell);
    cursor = cell;
}

void BaseCellList::add_cell_at(gsl::owner<BaseCell*> cell, int number)
{
    cell->set_number(number);
    add_cell(cell);
}

/// Whoever renumbers cells may have put them out of order for a while, so a cell that is not where
/// its number belongs is looked for everywhere.
BaseCellList::Cells::const_iterator BaseCellList::find_place(const BaseCell* cell) const
{
    if (!cell)
        return cells.end();
    auto place = std::ranges::lower_bound(cells, cell->number, {}, &BaseCell::number);
    while (place != cells.end() && *place != cell && (*place)->number == cell->number)
        ++place;
    if (place != cells.end() && *place == cell)
        return place;
    return std::ranges::find(cells, cell);
}

gsl::owner<BaseCell*> BaseCellList::remove_cell(BaseCell* cell)
{
    const auto place = find_place(cell);
    if (place == cells.end())
        return cell;
    note_change();
    if (cell->prev)
        cell->prev->next = cell->next;
    if (cell->next)
        cell->next->prev = cell->prev;
    cell->next = cell->prev = nullptr;
    cell->list = nullptr;
    cells.erase(place);
    if (cursor == cell)
        cursor = nullptr;
    return cell;
}

BaseCell* BaseCellList::find_cell(int number)
{
    BaseCell* cell = find_cell_at_or_before(number);
    return cell && cell->number == number ? cell : nullptr;
}

BaseCell* BaseCellList::search(int number)
{
    if (cells.empty() || cells.front()->number > number)
        return nullptr;
    if (cells.back()->number < number)
        return cells.back();
    cursor = search_from(cursor ? cursor : cells.front(), number);
    return cursor;
}

BaseCell* BaseCellList::search_from(BaseCell* start, int number) const
{
    if (start->number == number)
        return start;
    BaseCell* cell = start;
    if (start->number < number) {
        for (int steps = 0; steps < NEARBY; ++steps, cell = cell->next)
            if (!cell->next || cell->next->number > number)
                return cell;
    } else {
        for (int steps = 0; steps < NEARBY; ++steps) {
            cell = cell->prev;
            if (!cell || cell->number <= number)
                return cell;
        }
    }
    const auto behind = find_behind(number);
    return behind == cells.begin() ? nullptr : *(behind - 1);
}

BaseCell* BaseCellList::find_cell_before(int number)
{
    BaseCell* cell = find_cell_at_or_before(number);
    if (cell && cell->number == number)
        cell = cell->prev;
    cursor = cell;
    return cursor;
}

int BaseCellList::inq_key_order(const BaseCell* cell) const
{
    const auto place = find_place(cell);
    return place == cells.end() ? -1 : static_cast<int>(place - cells.begin()) + 1;
}
