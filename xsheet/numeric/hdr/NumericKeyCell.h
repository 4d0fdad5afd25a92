#pragma once

class KIVDefaultUnitHandler;
class NumericSubColumn;
class RatioKeyCellData;

#include "xsheet/cell/hdr/KeyCell.h"

/// A key that holds numbers. It interpolates unless it is told otherwise, and may follow another
/// column by ratio data instead of holding values of its own.
class NumericKeyCell : public KeyCell {
    KIV_STORED(NumericKeyCell, KeyCell);

public:
    NumericKeyCell(NumericSubColumn* sub_column, int number, unsigned label);
    NumericKeyCell(const NumericKeyCell& other);
    explicit NumericKeyCell(KIVIStream& stream);
    ~NumericKeyCell() override;

    void storer(KIVOStream& stream) override;
    gsl::owner<BaseCell*> duplicate() const override { return new NumericKeyCell(*this); }
    gsl::owner<CellData*> create_data() override;
    int inq_type() const override { return 3; }
    int find(const KIVString& text, int frame, int flags) override;
    bool load_finished_with_abort() override;
    BaseCell* inq_cell(int frame) override;
    gsl::owner<BaseCell*> create_inbetween(int offset) override;

    /// Whether the value grows towards the next key; for angles, which turn the other way, whether
    /// it does not.
    bool is_increasing() override;
    void added_to_subcolumn(SubColumn* column) override;
    void removed_from_subcolumn(SubColumn* column) override;

    /// Null for a key that is in no sub-column.
    NumericSubColumn* inq_numeric_sub_column() const;

    /// The elements of the sub-column.
    int inq_order() const;
    KIVDefaultUnitHandler* inq_unit_handler() const;

    /// Null for an ordinary key.
    RatioKeyCellData* inq_ratio_data() const { return ratio_data.get(); }
    bool inq_is_ratioed() const { return ratio_data != nullptr; }
    void set_is_ratioed(bool is_ratioed);
    void add_ratio_data(gsl::owner<RatioKeyCellData*> data);
    gsl::owner<RatioKeyCellData*> remove_ratio_data();

    /// What follows by ratio between this key and its neighbours is worked out anew when it is
    /// read. Nobody is told.
    void drop_inbetweens_around();

    /// Differences of element `i`. 0 where there is no earlier key or frame.
    double inq_difference_from_previous_key(int i);
    double inq_difference_from_this_key(int frame, int i);
    double inq_difference_from_previous_frame(int frame, int i);
    double inq_difference_from_previous_frame(int i);

    /// Whether it has a value of as many elements as the sub-column.
    bool has_value();

    /// Whether this key and the frames behind it hold just what its class, mode, value and easing
    /// say: it follows no other column, and no cell was made for those frames.
    bool is_plain();

    /// Whether they hold, as a plain key's, a straight blend of this key and the next.
    bool goes_straight();

    /// Element `i`, of those that there are, in such a blend, `factor` of the way to the next key.
    double blend_with_next(int i, double factor);

    /// Element `i` of this key itself; 0 without data.
    double inq_own_element(int i);

private:
    template <class Record> void record(Record& r);
    int find_crossing(double value, int frame, int flags);

    std::unique_ptr<RatioKeyCellData> ratio_data;
};
