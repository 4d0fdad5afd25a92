#pragma once

#include "xsheet/numeric/hdr/NumericKeyCell.h"
#include "xsheet/numeric/hdr/NumericSubColumn.h"

class AngleKeyCell : public NumericKeyCell {
    KIV_STORED(AngleKeyCell, NumericKeyCell);

public:
    using NumericKeyCell::NumericKeyCell;

    gsl::owner<BaseCell*> duplicate() const override { return new AngleKeyCell(*this); }
    int inq_type() const override { return 12; }
};

class AngleSubColumn : public NumericSubColumn {
    KIV_STORED(AngleSubColumn, NumericSubColumn);

public:
    AngleSubColumn();
    explicit AngleSubColumn(KIVIStream& stream) : NumericSubColumn(stream) {}

    gsl::owner<SubColumn*> duplicate() const override { return new AngleSubColumn(*this); }
    int inq_type() const override { return 12; }
    gsl::owner<KeyCell*> create_new_key_with_label(int new_label) override;
    bool is_angle_column() const override { return true; }
};
