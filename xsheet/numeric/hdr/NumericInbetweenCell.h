#pragma once

class NumericKeyCell;

#include "xsheet/cell/hdr/InbetweenCell.h"

/// A frame between two numeric keys. Its value is worked out when it is first asked for.
class NumericInbetweenCell : public InbetweenCell {
public:
    NumericInbetweenCell(NumericKeyCell* key, int offset);

    gsl::owner<CellData*> create_data() override;
};
