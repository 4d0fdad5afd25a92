#include "xsheet/sequence/hdr/TextCellSubColumn.h"

KIV_STORED_CLASS(TextKeyCell, -1);
KIV_STORED_CLASS(TextCellSubColumn, -1);

gsl::owner<BaseCell*> TextKeyCell::duplicate() const
{
    return new TextKeyCell(*this);
}

int TextKeyCell::inq_type() const
{
    return TextCellSubColumn::TYPE;
}

TextCellSubColumn::TextCellSubColumn(const TextCellSubColumn& other, bool flag)
    : SubColumn(other, flag)
{}

gsl::owner<SubColumn*> TextCellSubColumn::duplicate() const
{
    return new TextCellSubColumn(*this);
}

gsl::owner<KeyCell*> TextCellSubColumn::create_new_key_with_label(int new_label)
{
    return new TextKeyCell(this, -1, static_cast<unsigned>(new_label));
}
