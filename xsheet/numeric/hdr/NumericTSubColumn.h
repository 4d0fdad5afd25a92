#pragma once

#include "xsheet/numeric/hdr/NumericKeyCell.h"
#include "xsheet/numeric/hdr/NumericSubColumn.h"

class NumericTKeyCell : public NumericKeyCell {
    KIV_STORED(NumericTKeyCell, NumericKeyCell);

public:
    using NumericKeyCell::NumericKeyCell;

    gsl::owner<BaseCell*> duplicate() const override { return new NumericTKeyCell(*this); }
    int inq_type() const override { return 21; }
};

/// A translation: X and Y keyed together.
class NumericTSubColumn : public NumericSubColumn {
    KIV_STORED(NumericTSubColumn, NumericSubColumn);

public:
    NumericTSubColumn() : NumericSubColumn(2) {}
    explicit NumericTSubColumn(KIVIStream& stream) : NumericSubColumn(stream) {}

    gsl::owner<SubColumn*> duplicate() const override { return new NumericTSubColumn(*this); }
    int inq_type() const override { return 21; }
    gsl::owner<KeyCell*> create_new_key_with_label(int new_label) override;
    bool is_t_column(int) const override { return true; }
};
