#pragma once

class KeyCellRatioSubColumnWatcher;
class NumericInbetweenCell;
class NumericKeyCell;
class NumericSubColumn;

#include "kivlib/hdr/KIVDefaultUnitHandler.h"
#include "kivlib/hdr/KIVLinkedList.h"
#include "kivlib/hdr/Vector.h"

#include <memory>
#include <vector>

/// Makes a key follow another column: its value is the other's times a ratio, and so much more
/// that on the lock frame it has the lock value. The key owns it.
class RatioKeyCellData : public KIVObject {
    KIV_STORED(RatioKeyCellData, KIVObject);

public:
    /// A ratio of 1 to no column yet, locked at the key's own frame and value.
    explicit RatioKeyCellData(NumericKeyCell* key);
    RatioKeyCellData(const RatioKeyCellData& other, NumericKeyCell* key);
    explicit RatioKeyCellData(KIVIStream& stream);
    ~RatioKeyCellData() override;

    void storer(KIVOStream& stream) override;

    virtual void load_finished();

    /// Null for a link that no key owns.
    void set_key(NumericKeyCell* key) { keycell = key; }
    NumericKeyCell* inq_keycell() const { return keycell; }
    int inq_order() const { return order; }
    const Vector& inq_ratio_value() const { return ratio_value; }
    const Vector& inq_lock_value() const { return lock_value; }
    int inq_lock_frame() const { return lock_frame; }

    /// Null while there is none.
    NumericSubColumn* inq_source_column() const { return source_column; }
    KIVUnitType inq_unit_type() const { return unit_type; }

    /// A copy for `key`. It does not follow its source before `setup_watcher`.
    gsl::owner<RatioKeyCellData*> duplicate(NumericKeyCell* key) const;

    void set_ratio_value(const Vector& value);
    void set_lock_value(const Vector& value);

    /// A frame outside the scene means its nearer end.
    void set_lock_frame(int frame);

    /// Locks at another frame, and there at the value that the key's sub-column gives then.
    void reset_lock_frame(int frame);
    void set_source_column(NumericSubColumn* source);
    void set_unit_type(KIVUnitType type) { unit_type = type; }

    /// Writes the key's own value.
    void update_keycell();

    /// The columns of the sheet that can be a source, in a list for the caller to delete.
    gsl::owner<KIVLinkedList*> inq_sub_column_list() const;

    /// The values, the ratios and the offsets on the frame of an in-between of the key.
    Vector inq_value(NumericInbetweenCell* cell) const;
    Vector inq_ratio(NumericInbetweenCell* cell) const;
    Vector inq_lock_val(NumericInbetweenCell* cell) const;

    void setup_watcher();

    /// The watcher is gone already.
    void watcher_deleted();
    void column_values_changed_in_range(int first, int last);

    /// The key has left its sub-column, which may go before it comes back.
    void rest() { is_resting = true; }

    /// The key is back: it makes up for what its source did meanwhile.
    void resume();

    /// The source column is being deleted.
    void source_closing() { source_column = nullptr; }

private:
    class Change;
    enum class Span { HOLDS_OWN, BLENDS_TO_RATIO, BLENDS_TO_VALUE };

    using Waiting = std::vector<NumericInbetweenCell*>;

    void answer_change(int first, int last);
    void make_sources(NumericInbetweenCell* cell) const;
    void add_unmade_sources(NumericInbetweenCell* cell, Waiting& waiting) const;
    template <class Record> void record(Record& r);
    Span inq_case() const;
    double inq_source(int i, int frame) const;
    double inq_key_offset(int i) const;
    double inq_ratio_at_inbetween(int i, NumericInbetweenCell* cell) const;
    double inq_offset_at_inbetween(int i, NumericInbetweenCell* cell) const;
    double calc_element(int i, NumericInbetweenCell* cell) const;
    NumericKeyCell* inq_next_key() const;
    NumericSubColumn* inq_own_column() const;
    template <class Calc> Vector collect(Calc calc) const;

    Vector ratio_value;
    Vector lock_value;
    NumericKeyCell* keycell = nullptr; // not owned
    int order = 0;
    int lock_frame = 1;
    NumericSubColumn* source_column = nullptr; // not owned
    KIVUnitType unit_type = KIV_UNIT_FIELDS;
    std::unique_ptr<KeyCellRatioSubColumnWatcher> watcher;
    bool is_resting = false;
    bool has_missed_change = false;
    mutable bool is_evaluating = false;

    static Change* change_in_hand; // null between changes
};

/// Whether a column of this type can be followed by ratio.
bool inq_valid_for_ratioing(unsigned long type);
