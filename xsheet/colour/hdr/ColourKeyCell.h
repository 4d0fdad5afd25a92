#pragma once

class ColourSubColumn;

#include "kivlib/hdr/KIVColour.h"
#include "xsheet/numeric/hdr/NumericCellData.h"
#include "xsheet/numeric/hdr/NumericInbetweenCell.h"
#include "xsheet/numeric/hdr/NumericKeyCell.h"

/// The first three elements of `data`.
KIVColour colour_of(const BaseNumericCellData& data);
void set_colour_of(BaseNumericCellData& data, const KIVColour& colour);

class ColourKeyCell : public NumericKeyCell {
    KIV_STORED(ColourKeyCell, NumericKeyCell);

public:
    using NumericKeyCell::NumericKeyCell;

    gsl::owner<BaseCell*> duplicate() const override { return new ColourKeyCell(*this); }
    gsl::owner<CellData*> create_data() override;
    int inq_type() const override { return 8; }
    gsl::owner<BaseCell*> create_inbetween(int offset) override;
};

/// A frame between two colours, blended in the colour space of the sub-column.
class ColourInbetweenCell : public NumericInbetweenCell {
public:
    using NumericInbetweenCell::NumericInbetweenCell;

    gsl::owner<CellData*> create_data() override;
};

/// Red, green and blue, from 0 to 1.
class ColourCellData : public Numeric3CellData {
    KIV_STORED(ColourCellData, Numeric3CellData);

public:
    using Numeric3CellData::Numeric3CellData;
    explicit ColourCellData(ColourInbetweenCell* cell);

    gsl::owner<CellData*> duplicate() const override { return new ColourCellData(*this); }

    KIVColour inq_colour() const;
    void set_colour(const KIVColour& colour);
};
