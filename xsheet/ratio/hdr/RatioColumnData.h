#pragma once

class NumericSubColumn;
class RatioSubColumnWatcher;

#include "kivlib/hdr/StoredClass.h"

#include <memory>

/// The whole column follows another one: the form of old scenes, which is turned into a ratioed
/// key on request.
class RatioColumnData : public KIVObject {
    KIV_STORED(RatioColumnData, KIVObject);

public:
    explicit RatioColumnData(NumericSubColumn* sub_column);
    RatioColumnData(const RatioColumnData& other, NumericSubColumn* sub_column);
    explicit RatioColumnData(KIVIStream& stream);
    ~RatioColumnData() override;

    void storer(KIVOStream& stream) override;

    /// Finds the source of an old file by its labels, and watches it.
    void load_finished();

    double inq_add_constant() const { return add_constant; }
    double inq_mult_constant() const { return mult_constant; }
    NumericSubColumn* inq_other_sub_column() const { return other_sub_column; }

    /// The column that owns this.
    void set_sub_column(NumericSubColumn* owner) { sub_column = owner; }

    /// A copy for `owner`. It does not watch its source before `setup_watcher`.
    gsl::owner<RatioColumnData*> duplicate(NumericSubColumn* owner) const;
    void setup_watcher();
    void watcher_deleted();
    void column_values_changed_in_range(int first, int last);

    /// The source column is being deleted.
    void source_closing() { other_sub_column = nullptr; }
    void change_all();
    void set_add_constant(double constant);
    void set_mult_constant(double constant);
    double calc_element(int element, int frame) const;

private:
    template <class Record> void record(Record& r);
    void find_source();

    double add_constant = 0.0;
    double mult_constant = 1.0;
    unsigned long column_label = 0; // labels of the source in old files
    unsigned long sub_column_label = 0;
    NumericSubColumn* other_sub_column = nullptr; // not owned
    NumericSubColumn* sub_column = nullptr;       // not owned
    std::unique_ptr<RatioSubColumnWatcher> watcher;
    bool is_telling = false;
};
