#include "xsheet/sequence/hdr/NotesSubColumn.h"

#include "kivlib/hdr/Record.h"
#include "xsheet/sequence/hdr/ScribbleLine.h"

KIV_STORED_CLASS(NotesKeyCell, -1);
KIV_STORED_CLASS(NotesSubColumn, -1);

NotesKeyCell::NotesKeyCell(SubColumn* sub_column, int number, unsigned label)
    : KeyCell(sub_column, number, label)
{
    KeyCell::set_mode(IM_STOP);
}

gsl::owner<BaseCell*> NotesKeyCell::duplicate() const
{
    return new NotesKeyCell(*this);
}

int NotesKeyCell::inq_type() const
{
    return NotesSubColumn::TYPE;
}

NotesSubColumn::NotesSubColumn(const NotesSubColumn& other, bool flag) : SubColumn(other, flag)
{
    for (const ScribbleLine* line : other.scribbles.of<ScribbleLine>())
        scribbles.add(line->duplicate());
}

NotesSubColumn::NotesSubColumn(KIVIStream& stream) : SubColumn(stream)
{
    RecordReader fields(stream);
    for (int left = stream.read_count(sizeof(short)); left > 0; --left) {
        std::unique_ptr<ScribbleLine> line;
        fields.owned(line);
        if (line)
            scribbles.add(line.release());
    }
}

NotesSubColumn::~NotesSubColumn()
{
    scribbles.remove_all_deleting_objects();
}

void NotesSubColumn::storer(KIVOStream& stream)
{
    SubColumn::storer(stream);
    stream.insert_without_class_hdr(&scribbles);
}

gsl::owner<SubColumn*> NotesSubColumn::duplicate() const
{
    return new NotesSubColumn(*this);
}

gsl::owner<KeyCell*> NotesSubColumn::create_new_key_with_label(int new_label)
{
    return new NotesKeyCell(this, -1, static_cast<unsigned>(new_label));
}

KeyCell* NotesSubColumn::make_key(int frame)
{
    KeyCell* key = SubColumn::make_key(frame);
    if (key)
        key->inq_data()->set_string("");
    return key;
}

void NotesSubColumn::add_scribble(gsl::owner<ScribbleLine*> line)
{
    scribbles.add(line);
}
