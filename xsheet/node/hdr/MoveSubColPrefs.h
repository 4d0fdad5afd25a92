#pragma once

class MoveColumn;
class SubColumn;

#include "kivlib/hdr/NumberedList.h"
#include "xsheet/node/hdr/SubColPrefs.h"

#include <memory>

/// The mode of a move, and the preferences of its sub-columns.
class MoveSubColPrefs : public SubColPrefs {
    KIV_STORED(MoveSubColPrefs, SubColPrefs);

public:
    explicit MoveSubColPrefs(MoveColumn* column);
    explicit MoveSubColPrefs(KIVIStream& stream);
    MoveSubColPrefs(const MoveSubColPrefs&) = delete;
    MoveSubColPrefs& operator=(const MoveSubColPrefs&) = delete;
    ~MoveSubColPrefs() override;

    void storer(KIVOStream& stream) override;

    int inq_mode() const { return mode; }

    /// Those of the sub-column with the same label, or null.
    SubColPrefs* find_prefs_of(const SubColumn& sub_column) const;

private:
    template <class Record> void record(Record& r);

    int mode = 0;
    std::unique_ptr<NumberedList> list; // owns its objects, at the label less 1
};
