#pragma once

class BaseCell;

#include "kivlib/hdr/KIVString.h"
#include "kivlib/hdr/StoredClass.h"

#include <memory>

/// What a cell holds: here a text. The cell that owns it is told of changes.
class CellData : public KIVObject {
    KIV_STORED(CellData, KIVObject);

public:
    /// `cell` may be null.
    explicit CellData(BaseCell* cell) : cell(cell) {}

    /// The copy belongs to no cell.
    CellData(const CellData& other);
    CellData& operator=(const CellData&) = delete;
    explicit CellData(KIVIStream& stream);

    void storer(KIVOStream& stream) override;

    virtual gsl::owner<CellData*> duplicate() const;

    /// True if the load can't go on.
    virtual bool load_finished_with_abort();

    /// Null until one is set.
    virtual KIVString* inq_string() const;
    virtual void set_string(const KIVString& text);

    /// The user's mark on the frame.
    virtual bool inq_cell_ringed() const;
    virtual void set_cell_ringed(bool ringed);

    BaseCell* inq_cell() const { return cell; }
    void set_cell(BaseCell* owner) { cell = owner; }

    /// Drops what was made from the old value and tells the watchers, if this is a key's.
    void data_changed();

private:
    template <class Record> void record(Record& r);
    void set_cell_needs_saving();

    BaseCell* cell; // not owned
    std::unique_ptr<KIVString> string;
    bool cell_ringed = false;
};
