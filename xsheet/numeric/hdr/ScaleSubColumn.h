#pragma once

#include "xsheet/numeric/hdr/NumericKeyCell.h"
#include "xsheet/numeric/hdr/NumericSubColumn.h"

class ScaleKeyCell : public NumericKeyCell {
    KIV_STORED(ScaleKeyCell, NumericKeyCell);

public:
    using NumericKeyCell::NumericKeyCell;

    gsl::owner<BaseCell*> duplicate() const override { return new ScaleKeyCell(*this); }
    int inq_type() const override { return 11; }
};

/// A factor of size. It never comes to nothing.
class ScaleSubColumn : public NumericSubColumn {
    KIV_STORED(ScaleSubColumn, NumericSubColumn);

public:
    ScaleSubColumn();
    explicit ScaleSubColumn(KIVIStream& stream);

    gsl::owner<SubColumn*> duplicate() const override { return new ScaleSubColumn(*this); }
    int inq_type() const override { return 11; }
    gsl::owner<KeyCell*> create_new_key_with_label(int new_label) override;
    bool is_percentage_column() const override { return true; }
};
