#pragma once

#include "xsheet/cell/hdr/BaseCell.h"

#include <vector>

/// Cells in ascending order of their numbers, which it owns. Of equal numbers the later arrival
/// stands behind. A search goes on from where the last one ended, so that frames read in order
/// cost one step each; a jump costs a search by halves.
class BaseCellList : public KIVObject {
    KIV_STORED(BaseCellList, KIVObject);

public:
    BaseCellList() = default;
    BaseCellList(const BaseCellList&) = delete;
    BaseCellList& operator=(const BaseCellList&) = delete;
    explicit BaseCellList(KIVIStream& stream);
    ~BaseCellList() override;

    void storer(KIVOStream& stream) override;

    BaseCell* inq_first_cell() const { return cells.empty() ? nullptr : cells.front(); }
    BaseCell* inq_last_cell() const { return cells.empty() ? nullptr : cells.back(); }
    int count() const { return static_cast<int>(cells.size()); }

    /// For a walk over many cells that takes none out and adds none: the next ones are fetched
    /// meanwhile.
    template <class Function> void for_each(const Function& function) const
    {
        constexpr std::size_t AHEAD = 8;
        for (std::size_t i = 0; i < cells.size(); ++i) {
            if (i + AHEAD < cells.size())
                __builtin_prefetch(cells[i + AHEAD]);
            function(cells[i]);
        }
    }

    void add_cell(gsl::owner<BaseCell*> cell);

    /// Gives the cell that number first.
    void add_cell_at(gsl::owner<BaseCell*> cell, int number);
    gsl::owner<BaseCell*> remove_cell(BaseCell* cell);
    void delete_all_cells();

    /// Null if none bears the number.
    BaseCell* find_cell(int number);

    /// The last cell whose number is at most `number`, or null. Of equal numbers the one that the
    /// search met last is found first.
    BaseCell* find_cell_at_or_before(int number);
    BaseCell* find_cell_before(int number);

    /// From 1; -1 if the cell is not in the list.
    int inq_key_order(const BaseCell* cell) const;

private:
    using Cells = std::vector<BaseCell*>;

    BaseCell* search_from(BaseCell* start, int number) const;
    Cells::const_iterator find_behind(int number) const;
    Cells::const_iterator find_place(const BaseCell* cell) const;
    void insert(Cells::const_iterator place, BaseCell* cell);

    Cells cells; // owned; `next` and `prev` of each cell tell the same order
    BaseCell* cursor = nullptr;
};
