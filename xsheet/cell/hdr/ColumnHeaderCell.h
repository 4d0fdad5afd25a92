#pragma once

#include "xsheet/cell/hdr/BaseCell.h"

/// The first row of a sub-column's header, which bears its text.
class ColumnHeaderCell : public BaseCell {
    KIV_STORED(ColumnHeaderCell, BaseCell);

public:
    ColumnHeaderCell(int row, unsigned label) : BaseCell(row, label) {}
    explicit ColumnHeaderCell(KIVIStream& stream) : BaseCell(stream) {}

    gsl::owner<BaseCell*> duplicate() const override;
};
