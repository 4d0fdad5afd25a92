#pragma once

#include "xsheet/cell/hdr/KeyCell.h"

/// A frame between two keys, with data made from both when it is first asked for. Its number is
/// the offset from the first, which owns it. It is never stored.
class InbetweenCell : public BaseCell {
public:
    /// `parent_key` may be null.
    InbetweenCell(KeyCell* parent_key, int offset);

    /// Made now if there is none yet.
    CellData* inq_data() override;
    gsl::owner<CellData*> create_data() override;
    KeyCell* inq_next_key() const override;
    KeyCell* inq_prev_key() const override { return parent_key; }
    bool is_an_inbetween() const override;

    virtual void reinbetween();

    int inq_frame_number() const;

    /// The share of the way to the next key, from 0 to 1, as it was when this cell was made.
    double inq_ifactor() const { return ifactor; }

private:
    KeyCell* parent_key; // not owned
    double ifactor;
};
