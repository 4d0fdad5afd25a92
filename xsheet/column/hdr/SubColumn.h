#pragma once

class Column;
class DisplaySubColumn;
class IntArray;
class KIVColour;
class KIVLinkedList;
class KIVStringList;
class SlotList;
class SubColPrefs;
class SubColumnWatcher;
class XSheet;

#include "xsheet/cell/hdr/BaseCellIterator.h"
#include "xsheet/cell/hdr/KeyCell.h"
#include "xsheet/column/hdr/ReadTable.h"

#include <memory>

/// What stands on a frame of a sub-column.
enum CellType {
    CT_KEY = 1,
    CT_INBETWEEN = 2, // led by a key to the next one
    CT_HOLD = 3,      // held by a key
    CT_EMPTY = 4
};

/// One time line of the sheet: the user's keys, and the rows of the header above frame 1, all of
/// which it owns. It makes, moves and removes keys, keeps the reach of their neighbours right and
/// tells its watchers which frames changed. Frames run from 1.
class SubColumn : public KIVObject {
    KIV_STORED(SubColumn, KIVObject);

public:
    /// Bits of the display flags.
    enum : unsigned { HIDDEN = 1, COLLAPSED = 2 };

    SubColumn();

    /// The copy has its own keys and header, and lies in no column.
    SubColumn(const SubColumn& other, bool = true);
    SubColumn& operator=(const SubColumn&) = delete;
    explicit SubColumn(KIVIStream& stream);
    ~SubColumn() override;

    void storer(KIVOStream& stream) override;

    virtual gsl::owner<SubColumn*> duplicate() const;

    /// Makes the header. Whoever makes a sub-column calls this once; one that was read has its
    /// header already.
    virtual void init_after_construction();
    virtual void added_to_column(Column* to);
    virtual int inq_type() const;
    virtual KIVString inq_default_header_string() const;
    virtual KIVString inq_summary();
    virtual KIVString inq_header_path();

    /// The keys in order; the caller deletes the list.
    virtual gsl::owner<KIVLinkedList*> key_cells();
    virtual int inq_scene_length() const;
    virtual int inq_header_lines() const;
    virtual int inq_footer_lines() const;

    /// The row on which the header begins, 0 or less.
    virtual int inq_header_line();
    virtual bool can_make_key(int frame);

    /// A new key with the value that stands on the frame now. It does not ask `can_make_key`.
    virtual KeyCell* make_key(int frame);
    virtual gsl::owner<KeyCell*> create_new_key_with_label(int new_label);
    virtual void insert_key(gsl::owner<KeyCell*> key, int frame);
    virtual bool can_remove_key(KeyCell* key);
    virtual gsl::owner<KeyCell*> remove_key(KeyCell* key);
    virtual void column_being_removed();
    virtual void column_being_added();
    virtual bool can_remove() const;

    /// Renumbers the keys from `from[0]` on, and does nothing of what follows from that.
    virtual void move_key_cells(IntArray* from, IntArray* to);
    virtual void move_key_cells_by(SlotList& slots, int delta);
    virtual bool can_move_key_cells_by(SlotList& slots, int delta);
    virtual void set_needs_saving();
    virtual void set_just_saved();

    /// True if the load can't go on.
    virtual bool load_finished_with_abort();
    virtual bool can_set_length(int frames);

    /// Deletes the keys beyond; nobody is told of them.
    virtual void set_length(int frames);
    virtual bool is_column() const;
    virtual bool can_insert_key_type(KeyCell* key);
    virtual XSheet* inq_xsheet();
    virtual bool is_frame_the_same(int a, int b);

    /// Widens a range so that it holds all keys.
    virtual void inq_key_range(int* low, int* high);

    /// Null where none is set.
    virtual KIVColour* inq_bg_colour() const;

    /// -1 where none is set.
    virtual int inq_colour_type() const;

    /// What of this a user keeps for new nodes; may be null.
    virtual gsl::owner<SubColPrefs*> create_preferences_object();
    virtual void apply_preferences_object(SubColPrefs* prefs);

    /// The frame of the nearest hit from `frame` on, -1 for a hit in the header, 0 for none.
    virtual int find(const KIVString& text, int frame, int flags);
    virtual void get_dependencies(KIVStringList& files, bool flag);
    virtual void mark_used_assets();
    virtual bool is_empty();
    virtual void convert_ratio_column_to_key_based();
    virtual void clear_all_inbetweens();

    /// Null for one that is free.
    Column* inq_column() const { return column; }
    void set_column(Column* c) { column = c; }

    /// Its identity in the column; 0 before the column gave one.
    unsigned inq_label() const { return label; }
    void set_label(unsigned l);

    DisplaySubColumn* inq_display_graphic() const { return display_graphic; }
    void set_display_graphic(DisplaySubColumn* graphic) { display_graphic = graphic; }

    /// Whether any of `bits` is set.
    bool compare_display_flags(unsigned bits) const { return (display_flags & bits) != 0; }
    void set_display_flags(unsigned bits);
    void clear_display_flags(unsigned bits);
    void set_collapsed();
    void set_hidden();
    void set_fully_shown();

    void add_misc_cell(gsl::owner<BaseCell*> cell) { misc_cell_list.add_cell(cell); }
    gsl::owner<BaseCell*> remove_misc_cell(BaseCell* cell);
    BaseCellList* inq_misc_cell_list() { return &misc_cell_list; }
    BaseCellList* inq_key_cell_list() { return &key_cell_list; }
    KeyCell* inq_first_key() const { return static_cast<KeyCell*>(key_cell_list.inq_first_cell()); }
    KeyCell* inq_last_key() const { return static_cast<KeyCell*>(key_cell_list.inq_last_cell()); }

    /// 0 without keys.
    int inq_last_key_position() const;
    int inq_total_lines() const;

    /// What stands on the frame, or null. An in-between may be made for it now.
    BaseCell* inq_cell(int frame);

    /// The order, from 1, of the key at or before the frame; -1 without one.
    int inq_key_pos_at_row(int frame);
    CellType inq_celltype(int frame);

    /// A new key with the next label; it is not inserted yet.
    gsl::owner<KeyCell*> create_new_key();
    bool can_insert_key(KeyCell* key, int frame);

    /// Inserts keys so that the first comes to stand on `frame`. One for which there is no room is
    /// left out, and stays the caller's. Always true.
    bool insert_keys(int frame, KeyCell** keys, int count);

    /// Moves one key. A key that stands there goes a frame towards the old place, and pushes on.
    void move_key_to(KeyCell* key, int frame);

    /// Pushes a key that stands on `frame` on by `gap`, and those that are in its way.
    void make_gap_at(int frame, int gap);

    /// Moves many keys at once, from and to the frames of the same index.
    void move_keys_to_slots(IntArray* from, IntArray* to);

    /// The frames of the keys; the caller deletes the list.
    gsl::owner<SlotList*> inq_keys_slot_postions() const;

    /// Whether what stands on `slots` are neighbours in the order of keys. They are added to
    /// `out`, if it is given.
    bool inq_if_keys_are_contiguous(SlotList& slots, KIVLinkedList* out);

    /// Drops what was made between `key`, which may be null, and its neighbours.
    void fully_dirty_inbetweens_around(KeyCell* key);

    void set_header_text(const KIVString& text);

    /// Null without a header.
    KIVString* inq_header_text() const;
    BaseCell* inq_header_cell() const { return misc_cell_list.inq_first_cell(); }

    /// Free frames from `frame` to the next key or the end of the scene.
    int inq_space_at(int frame);

    /// Whether `a` frames are free at `frame` behind the last key or, where keys follow, these can
    /// move on by `b`.
    bool can_make_space_at(int frame, int a, int b);

    bool inq_needs_saving() const;

    /// The first watcher with that label, or null.
    SubColumnWatcher* inq_watcher(unsigned long watcher_label) const;

    /// The watcher stays its owner's.
    void add_watcher(SubColumnWatcher* watcher);
    SubColumnWatcher* remove_watcher(SubColumnWatcher* watcher);
    void tell_watchers_all_frames_changed();
    void tell_watchers_frame_changed(int frame);
    void tell_watchers_frame_range_changed(int first, int last);
    void inform_watchers_column_being_removed();

    /// For the user interface.
    static bool shuffle_to_make_space_for_keys;

protected:
    /// Null where there is none of the keys as they are now.
    ReadTable* inq_read_table() const
    {
        const bool is_of_today =
            read_table && read_table->made_at == key_cell_list.inq_change_count();
        return is_of_today ? read_table.get() : nullptr;
    }

    /// Whatever it speaks of, for the kind of sub-column that uses one.
    std::unique_ptr<ReadTable>& inq_kept_read_table() { return read_table; }

    /// Null before the first watcher.
    const KIVLinkedList* inq_watchers() const { return watchers.get(); }

private:
    template <class Record> void record(Record& r);
    void check_keys(KIVIStream& stream);

    KeyCell* find_key_at_or_before(int frame);
    KeyCell* find_key_before(int frame);
    KeyCell* find_key_behind(int frame);
    void split_fairing_for(KeyCell* new_key, KeyCell* previous, int offset);
    bool is_in_insert_edit_mode();
    bool can_move_key_to(int frame, SlotList& slots, bool is_insert_edit, bool are_contiguous);
    void move_keys_in_insert_mode(SlotList& slots, int delta);
    void land_key(KeyCell* key, int frame);
    void clear_watchers();
    int find_in_header(const KIVString& text, int frame, int flags) const;
    int find_in_keys(const KIVString& text, int frame, int flags);

    std::unique_ptr<ReadTable> read_table; // first, since most reads end there
    BaseCellList key_cell_list;
    BaseCellList misc_cell_list;
    mutable KIVString* header_text = nullptr;    // not owned; null where it is not known
    mutable unsigned long header_read_at = 0;    // the change count of `misc_cell_list` then
    Column* column = nullptr;                    // not owned
    DisplaySubColumn* display_graphic = nullptr; // not owned
    unsigned label = 0;
    unsigned next_key_label = 1;
    int flags = 1; // dirty
    unsigned display_flags = 0;
    std::unique_ptr<KIVLinkedList> watchers; // refers to its watchers; null before the first
};
