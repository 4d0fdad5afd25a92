#pragma once

class BaseBeadKnot;
class KeyCell;
class PathKeyCell;
class SquidgeSet;
class SquidgeTable;

#include "kivlib/hdr/NameKeyDictionary.h"
#include "xsheet/numeric/hdr/NumericColumnPolicy.h"

#include <memory>

/// Goes from key to key along drawn curves, which it owns. A key says by its bead where on the
/// curve it is.
class PathNumericColumnPolicy : public NumericColumnPolicy {
    KIV_STORED(PathNumericColumnPolicy, NumericColumnPolicy);

public:
    explicit PathNumericColumnPolicy(NumericSubColumn* sub_column);
    explicit PathNumericColumnPolicy(KIVIStream& stream);
    ~PathNumericColumnPolicy() override;

    void storer(KIVOStream& stream) override;

    /// (0, 0) without a table; empty if the earlier key has no bead.
    Vector update_inbetween_value(NumericInbetweenCell* cell) override;

    /// (0, 0) for a key without a bead.
    Vector update_key_value(NumericKeyCell* key) override;
    gsl::owner<NumericColumnPolicy*> duplicate(NumericSubColumn* copy_owner) const override;
    void load_finished() override;

    SquidgeSet* inq_squidges() const { return squidges.get(); }
    void set_squidges(gsl::owner<SquidgeSet*> set);
    SquidgeTable* inq_squidge_table() const { return squidge_table.get(); }
    void set_squidge_table(gsl::owner<SquidgeTable*> table);

    void added_key(PathKeyCell* key);
    void removed_key(PathKeyCell* key);

    /// Enters the keys of the sub-column, and them alone.
    void setup_key_table();

    /// Null on a miss.
    PathKeyCell* get_key_with_label(unsigned long bead_label) const;

    /// From the first knot of an open curve, from the first key's bead on a closed one. 0.0 for a
    /// key without a bead.
    double inq_distance_along_path(PathKeyCell* key) const;

    /// Those of all keys, in their order.
    std::vector<double> inq_distances_along_path() const;
    void set_distance_along_path(PathKeyCell* key, double distance);
    double inq_path_length(PathKeyCell* key) const;
    bool diff_path_as_next_key(PathKeyCell* key) const;

private:
    template <class Record> void record(Record& r);
    void make_table();
    const KeyCell* inq_first_key() const;
    BaseBeadKnot* find_bead(const KeyCell* key) const;
    double calc_way_to_next_key(const KeyCell* key) const;
    Vector calculate_inbetween_value(BaseBeadKnot* from, BaseBeadKnot* to, double factor) const;

    std::unique_ptr<SquidgeSet> squidges;
    std::unique_ptr<SquidgeTable> squidge_table;
    NameKeyDictionary key_table;
};
