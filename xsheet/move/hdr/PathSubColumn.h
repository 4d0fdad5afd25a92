#pragma once

class PathNumericColumnPolicy;

#include "xsheet/numeric/hdr/NumericSubColumn.h"

/// A move along a drawn curve. Its keys are made with the beads of the curve, never by frame.
class PathSubColumn : public NumericSubColumn {
    KIV_STORED(PathSubColumn, NumericSubColumn);

public:
    PathSubColumn();

    /// The path form of a column of an old file, with copies of its keys and its curves.
    explicit PathSubColumn(const NumericSubColumn& source);
    PathSubColumn(const PathSubColumn& other) = default;
    explicit PathSubColumn(KIVIStream& stream) : NumericSubColumn(stream) {}

    gsl::owner<SubColumn*> duplicate() const override { return new PathSubColumn(*this); }
    bool can_make_key(int) override { return false; }
    gsl::owner<KeyCell*> create_new_key_with_label(int new_label) override;
    bool can_remove_key(KeyCell*) override { return false; }
    void set_length(int frames) override;
    bool can_insert_key_type(KeyCell*) override { return false; }
    bool is_path_column(int) const override { return true; }

    /// In distances along the path.
    gsl::owner<Fairing*> extract_column_fairing() override;
    void calc_min_and_max_values(double* min, double* max) override;

    double inq_distance_along_path(int frame);

    /// Null under a policy of another kind.
    PathNumericColumnPolicy* inq_path_policy() const;

private:
    std::vector<double> inq_distances_along_path() const;
};
