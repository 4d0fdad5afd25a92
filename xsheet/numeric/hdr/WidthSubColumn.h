#pragma once

#include "xsheet/numeric/hdr/NumericKeyCell.h"
#include "xsheet/numeric/hdr/NumericSubColumn.h"

class WidthKeyCell : public NumericKeyCell {
    KIV_STORED(WidthKeyCell, NumericKeyCell);

public:
    using NumericKeyCell::NumericKeyCell;

    gsl::owner<BaseCell*> duplicate() const override { return new WidthKeyCell(*this); }
    int inq_type() const override { return 13; }
};

/// The width that a camera sees, in world units.
class WidthSubColumn : public NumericSubColumn {
    KIV_STORED(WidthSubColumn, NumericSubColumn);

public:
    WidthSubColumn();
    explicit WidthSubColumn(KIVIStream& stream);

    void storer(KIVOStream& stream) override;
    gsl::owner<SubColumn*> duplicate() const override { return new WidthSubColumn(*this); }
    int inq_type() const override { return 13; }
    gsl::owner<KeyCell*> create_new_key_with_label(int new_label) override;
    double inq_blank_value(int) const override { return blank_value; }
    void set_blank_value(double value) { blank_value = value; }

private:
    template <class Record> void record(Record& r);

    double blank_value = 720.0;
};
