#pragma once

class Fairing;
class NumericKeyCell;
class RatioColumnData;
class SubColPrefs;

#include "kivlib/hdr/KIVDefaultUnitHandler.h"
#include "kivlib/hdr/Vector.h"
#include "xsheet/column/hdr/SubColumn.h"
#include "xsheet/numeric/hdr/NumericColumnPolicy.h"

/// The time line of a value of one or more numbers: a position, an angle, a scale. It has limits
/// and a default for each element, and a policy that works out what stands between the keys.
class NumericSubColumn : public SubColumn {
    KIV_STORED(NumericSubColumn, SubColumn);

public:
    explicit NumericSubColumn(int order = 1);
    NumericSubColumn(const NumericSubColumn& other, bool = true);
    explicit NumericSubColumn(KIVIStream& stream);
    ~NumericSubColumn() override;

    void storer(KIVOStream& stream) override;
    gsl::owner<SubColumn*> duplicate() const override { return new NumericSubColumn(*this); }
    int inq_type() const override { return 3; }
    KIVString inq_summary() override;
    int inq_header_line() override { return 0; }
    KeyCell* make_key(int frame) override;
    gsl::owner<KeyCell*> create_new_key_with_label(int new_label) override;
    void insert_key(gsl::owner<KeyCell*> key, int frame) override;
    bool load_finished_with_abort() override;
    gsl::owner<SubColPrefs*> create_preferences_object() override;
    void apply_preferences_object(SubColPrefs* prefs) override;
    void convert_ratio_column_to_key_based() override;

    /// What element `element` is shown as.
    virtual bool is_y_column(int element) const { return element == 1; }
    virtual bool is_x_column(int) const { return false; }
    virtual bool is_t_column(int) const { return false; }
    virtual bool is_path_column(int) const { return false; }
    virtual KIVUnitType inq_unit_type() const { return unit_type; }

    /// Decimal places shown.
    virtual int inq_precision() const { return precision; }

    /// The value on a frame; the blank value where there is none.
    virtual double inq_element(int element, int frame);

    /// In degrees.
    virtual bool is_angle_column() const { return false; }

    /// 1.0 is a hundred per cent.
    virtual bool is_percentage_column() const { return false; }
    virtual double inq_blank_value(int element) const { return default_values.elem(element); }

    /// One easing profile that follows the values from the first key to the last. Null for more
    /// than one element, and with fewer than two keys.
    virtual gsl::owner<Fairing*> extract_column_fairing();

    /// Of the keys of a sub-column of one element, and never less than from 1000000 to 0.
    virtual void calc_min_and_max_values(double* min, double* max);

    int inq_order() const { return order; }
    void set_last_min(double value) { last_min = value; }
    void set_last_max(double value) { last_max = value; }
    double inq_last_min() const { return last_min; }
    double inq_last_max() const { return last_max; }
    const Vector& inq_minimum_values() const { return minimum_values; }
    const Vector& inq_maximum_values() const { return maximum_values; }
    const Vector& inq_default_values() const { return default_values; }
    void set_minimum_values(const Vector& values) { minimum_values = values; }
    void set_maximum_values(const Vector& values) { maximum_values = values; }
    void set_default_values(const Vector& values) { default_values = values; }
    NumericColumnPolicy* inq_policy() const { return policy.get(); }
    void set_policy(gsl::owner<NumericColumnPolicy*> new_policy);
    KIVDefaultUnitHandler* inq_unit_handler() const { return unit_handler.get(); }
    void set_unit_type(KIVUnitType type);
    void set_precision(int places);

    /// All elements on a frame.
    Vector inq_value(int frame);

    /// Whether a key here follows `other`, be it through further columns.
    bool inq_is_ratio_looped(NumericSubColumn* other);

    /// The keys of the sheet that follow this column, in a list for the caller to delete.
    gsl::owner<KIVLinkedList*> inq_keys_ratioed_to_this();

    /// Of the scene, in hundredths of a field; 5000.0 outside a scene.
    double inq_a_peg_offset();

protected:
    void set_order(int elements) { order = elements; }
    void init_unit_handler();

    /// Takes the unit and the precision of a kind of column from the settings.
    void init_units(const char* unit_key, KIVUnitType unit, const char* precision_key);
    /// An easing profile through the keys, whose heights are `values`; null for fewer than two.
    gsl::owner<Fairing*> make_fairing_through(std::span<const double> values) const;
    static Vector with_element(Vector values, int i, double value);

private:
    template <class Record> void record(Record& r);
    void take_units_of_scene();
    double work_out_element(int element, int frame);
    bool read_value(int frame, Vector& value);
    Vector work_out_value(int frame);
    NumericKeyCell* find_straight_key(int frame, int* offset);
    void note_read();

    std::unique_ptr<KIVDefaultUnitHandler> unit_handler;
    int order;
    KIVUnitType unit_type;
    int precision;
    std::unique_ptr<NumericColumnPolicy> policy;
    bool ratioed = false;
    std::unique_ptr<RatioColumnData> ratio_column_data;
    double last_min = 0.0;
    double last_max = 0.0;
    Vector minimum_values;
    Vector maximum_values;
    Vector default_values;
};
