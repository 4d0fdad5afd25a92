#pragma once

class BaseCellList;
class BaseDisplayCell;
class KeyCell;

#include "kivlib/hdr/KIVString.h"
#include "xsheet/cell/hdr/CellData.h"

#include <memory>

/// One place of a column: a key, a cell between two keys, or a row of the header. It owns its data
/// and stands in the list that owns it.
class BaseCell : public KIVObject {
    KIV_STORED(BaseCell, KIVObject);

public:
    /// Frames and rows from a file lie within this many of 0.
    static constexpr int MOST_FRAMES = 100'000'000;

    /// A label of 0 means that none was given yet.
    BaseCell(int number, unsigned label) : number(number), label(label) {}

    /// The copy has data of its own and stands in no list.
    BaseCell(const BaseCell& other);
    BaseCell& operator=(const BaseCell&) = delete;
    explicit BaseCell(KIVIStream& stream);
    ~BaseCell() override;

    void storer(KIVOStream& stream) override;

    /// Where data goes that is kept apart from the scene.
    virtual const KIVString& inq_save_directory() const;
    virtual gsl::owner<BaseCell*> duplicate() const;

    /// May be null.
    virtual CellData* inq_data();
    virtual void data_created();

    /// New data that fits this cell; the cell does not take it.
    virtual gsl::owner<CellData*> create_data();
    virtual void set_number(int n);
    virtual int inq_type() const;
    virtual KeyCell* inq_next_key() const;
    virtual KeyCell* inq_prev_key() const;
    virtual bool is_a_key() const;
    virtual bool is_an_inbetween() const;
    virtual void set_needs_saving();
    virtual void set_just_saved();
    virtual bool inq_should_save_data() const;
    virtual bool inq_save_separate_data() const;

    /// True if the load can't go on.
    virtual bool load_finished_with_abort();
    virtual bool inq_can_compress_keys() const;

    /// This cell's number if it holds `text` under `flags` (of XSheetFinderFlags), -1 if that
    /// number is 0, and 0 if it does not hold it.
    virtual int find(const KIVString& text, int frame, int flags);
    virtual void ring_unring();

    bool inq_data_exists() const { return data != nullptr; }
    unsigned inq_label() const { return label; }
    void set_label(unsigned l) { label = l; }

    /// A key's frame; for a row of the header 0 or less; for a cell between two keys its offset
    /// from the first.
    int inq_number() const { return number; }

    BaseDisplayCell* inq_display_cell() const { return display_cell; }
    void set_display_cell(BaseDisplayCell* cell) { display_cell = cell; }

    /// The neighbours in the list of this cell.
    BaseCell* inq_next() const { return next; }
    BaseCell* inq_prev() const { return prev; }

    /// Deletes the present data. `new_data` may be null.
    void set_data(gsl::owner<CellData*> new_data);

    /// The file of data that is kept apart.
    KIVString inq_data_file() const;
    KIVString inq_full_path_data_file() const;

    bool inq_needs_saving() const;

    /// Lets go of data that is safe in a file of its own. True if it did.
    bool compress_cell();

protected:
    /// Null for a cell that stands in none.
    BaseCellList* inq_list() const { return list; }

private:
    friend class BaseCellList;

    template <class Record> void record(Record& r);

    std::unique_ptr<CellData> data;
    BaseCell* next = nullptr;     // not owned
    BaseCell* prev = nullptr;     // not owned
    BaseCellList* list = nullptr; // not owned
    int number = 0;
    unsigned label = 0;
    int flags = 1;                           // dirty
    BaseDisplayCell* display_cell = nullptr; // not owned
};
