#pragma once

class Fairing;
class SlotList;
class SubColumn;

#include "xsheet/cell/hdr/BaseCellList.h"
#include "xsheet/cell/hdr/InterpMode.h"

/// What the user set on one frame, and how the frames behind it follow from that. It owns its
/// easing and the in-betweens made so far; those go with every change and come back when asked for.
class KeyCell : public BaseCell {
    KIV_STORED(KeyCell, BaseCell);

public:
    /// `sub_column` may be null.
    KeyCell(SubColumn* sub_column, int number, unsigned label);

    /// The copy lies in no sub-column.
    KeyCell(const KeyCell& other);
    KeyCell& operator=(const KeyCell&) = delete;
    explicit KeyCell(KIVIStream& stream);
    ~KeyCell() override;

    void storer(KIVOStream& stream) override;
    gsl::owner<BaseCell*> duplicate() const override;
    gsl::owner<CellData*> create_data() override;
    KeyCell* inq_next_key() const override { return static_cast<KeyCell*>(inq_next()); }
    KeyCell* inq_prev_key() const override { return static_cast<KeyCell*>(inq_prev()); }
    void set_number(int n) override;
    bool is_a_key() const override;
    void set_needs_saving() override;
    int find(const KIVString& text, int frame, int flags) override;

    virtual void set_sub_column(SubColumn* column);

    /// The cell that this key puts on a frame of its own or behind: itself, an in-between that may
    /// be made now, or null.
    virtual BaseCell* inq_cell(int frame);

    /// A new cell at `offset` frames from this key.
    virtual gsl::owner<BaseCell*> create_inbetween(int offset);
    virtual bool is_increasing();
    virtual void set_mode(InterpMode m);
    virtual bool can_set_mode(InterpMode m) const;
    virtual void inq_cargo_dependent_slots(SlotList& slots);
    virtual void copy_extra_key_data_from(KeyCell* source);

    /// The value was edited. The key lies in a sub-column.
    virtual void key_changed();
    virtual void added_to_subcolumn(SubColumn* column);
    virtual void removed_from_subcolumn(SubColumn* column);

    /// Null for a copy, and while a key is read.
    SubColumn* inq_sub_column() const { return sub_column; }
    Fairing* inq_fairing() const { return fairing.get(); }

    /// Frames behind the key that it fills.
    int inq_interp_len() const { return interp_len; }

    /// The user's limit for a hold; -1 without one.
    int inq_target_interp_len() const { return target_interp_len; }

    /// Frames per step of the in-betweens.
    int inq_sample_rate() const { return sample_rate; }

    /// The share of the way to the next key, from 0 to 1.
    double inq_ifactor(int offset) const;

    /// The mode that counts: a last key holds where it can't lead to a next one.
    InterpMode inq_mode() const;
    InterpMode inq_mode_actual() const { return mode; }

    BaseCell* create_and_add_inbetween(int offset);

    /// Null if none was made there yet.
    BaseCell* find_inbetween(int offset);

    /// Whether the step at `offset` is the one nearest to half of the way.
    bool is_middle_inbetween(int offset) const;

    void set_fairing(gsl::owner<Fairing*> new_fairing);
    void reset_interp_len();
    void clear_inbetweens();

    /// The same without a word to the watchers.
    void drop_inbetweens();

    /// Whether a cell was made for any of the frames behind the key.
    bool has_inbetweens() const { return inbetweens && inbetweens->count() > 0; }

    /// What was worked out from this key is of the past. Nobody is told.
    void note_change() const;
    void fairing_changed();
    void set_sample_rate(int frames);
    void set_target_interp_len(int frames);
    void set_interp_len(int frames);

    /// Takes over mode, rate and easing. True if anything changed.
    bool copy_interp_data_from(const KeyCell* source);

    void cargo_created() {}
    void compress_keys() {}

private:
    template <class Record> void record(Record& r);
    void make_fairing();
    int calc_natural_interp_len() const;
    int calc_interp_len() const;
    void tell_reach_changed(int old_len) const;
    void tell_frames_up_to_next_key() const;
    bool copy_fairing_from(const KeyCell* source);

    SubColumn* sub_column = nullptr; // not owned
    int interp_len = 0;
    int target_interp_len = -1;
    std::unique_ptr<BaseCellList> inbetweens; // null before the first
    InterpMode mode = IM_HOLD;
    std::unique_ptr<Fairing> fairing;
    int sample_rate = 1;
};
