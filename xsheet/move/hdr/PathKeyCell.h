#pragma once

class PathNumericColumnPolicy;

#include "xsheet/numeric/hdr/NumericInbetweenCell.h"
#include "xsheet/numeric/hdr/NumericKeyCell.h"

/// A key on a path: its value is the place of a bead on the curve.
class PathKeyCell : public NumericKeyCell {
    KIV_STORED(PathKeyCell, NumericKeyCell);

public:
    using NumericKeyCell::NumericKeyCell;
    PathKeyCell(const PathKeyCell& other) = default;
    explicit PathKeyCell(KIVIStream& stream);

    void storer(KIVOStream& stream) override;
    gsl::owner<BaseCell*> duplicate() const override { return new PathKeyCell(*this); }
    gsl::owner<BaseCell*> create_inbetween(int offset) override;
    void key_changed() override;

    unsigned long inq_bead_label() const { return bead_label; }
    void set_bead_label(unsigned long label) { bead_label = label; }

    /// From the start of the curve, in world units along it.
    double inq_distance_along_path();
    void set_distance_along_path(double distance);
    double inq_path_length();

    /// Whether the next key lies on another curve.
    bool diff_path_as_next_key();

private:
    template <class Record> void record(Record& r);
    PathNumericColumnPolicy* inq_path_policy() const;

    unsigned long bead_label = 0;
};

class PathInbetweenCell : public NumericInbetweenCell {
public:
    using NumericInbetweenCell::NumericInbetweenCell;

    double inq_distance_along_path();
};
