#pragma once

#include "kivlib/hdr/KIVLinkedList.h"
#include "xsheet/column/hdr/SubColumn.h"

class ScribbleLine;

/// A note on one frame.
class NotesKeyCell : public KeyCell {
    KIV_STORED(NotesKeyCell, KeyCell);

public:
    NotesKeyCell(SubColumn* sub_column, int number, unsigned label);
    NotesKeyCell(const NotesKeyCell& other) = default;
    explicit NotesKeyCell(KIVIStream& stream) : KeyCell(stream) {}

    gsl::owner<BaseCell*> duplicate() const override;
    int inq_type() const override;
    bool can_set_mode(InterpMode m) const override { return m == IM_STOP; }
};

/// The animator's notes, with lines drawn by hand over the sheet.
class NotesSubColumn : public SubColumn {
    KIV_STORED(NotesSubColumn, SubColumn);

public:
    static constexpr int TYPE = 6;

    NotesSubColumn() = default;
    NotesSubColumn(const NotesSubColumn& other, bool flag = true);
    explicit NotesSubColumn(KIVIStream& stream);
    ~NotesSubColumn() override;

    void storer(KIVOStream& stream) override;
    gsl::owner<SubColumn*> duplicate() const override;
    int inq_type() const override { return TYPE; }
    KIVString inq_default_header_string() const override { return "Notes"; }

    /// A new note is an empty text.
    KeyCell* make_key(int frame) override;
    gsl::owner<KeyCell*> create_new_key_with_label(int new_label) override;

    /// Of ScribbleLine.
    KIVLinkedList* inq_scribbles() { return &scribbles; }
    void add_scribble(gsl::owner<ScribbleLine*> line);

private:
    KIVLinkedList scribbles{false}; // deleted by the destructor
};
