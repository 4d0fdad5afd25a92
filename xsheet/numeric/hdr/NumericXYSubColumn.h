#pragma once

#include "xsheet/numeric/hdr/NumericKeyCell.h"
#include "xsheet/numeric/hdr/NumericSubColumn.h"

/// A key of an X or a Y sub-column: it can move from one to the other.
class NumericXYKeyCell : public NumericKeyCell {
    KIV_STORED(NumericXYKeyCell, NumericKeyCell);

public:
    using NumericKeyCell::NumericKeyCell;

    gsl::owner<BaseCell*> duplicate() const override { return new NumericXYKeyCell(*this); }
    int inq_type() const override { return 22; }
};

/// East and west.
class NumericXSubColumn : public NumericSubColumn {
    KIV_STORED(NumericXSubColumn, NumericSubColumn);

public:
    NumericXSubColumn() : NumericSubColumn(1) {}
    explicit NumericXSubColumn(KIVIStream& stream);

    void storer(KIVOStream& stream) override;
    gsl::owner<SubColumn*> duplicate() const override { return new NumericXSubColumn(*this); }
    int inq_type() const override { return 22; }
    gsl::owner<KeyCell*> create_new_key_with_label(int new_label) override;
    bool is_x_column(int) const override { return true; }

private:
    template <class Record> void record(Record& r);
};

/// North and south.
class NumericYSubColumn : public NumericSubColumn {
    KIV_STORED(NumericYSubColumn, NumericSubColumn);

public:
    NumericYSubColumn() : NumericSubColumn(1) {}
    explicit NumericYSubColumn(KIVIStream& stream);

    void storer(KIVOStream& stream) override;
    gsl::owner<SubColumn*> duplicate() const override { return new NumericYSubColumn(*this); }
    int inq_type() const override { return 22; }
    gsl::owner<KeyCell*> create_new_key_with_label(int new_label) override;
    bool is_y_column(int) const override { return true; }

private:
    template <class Record> void record(Record& r);
};
