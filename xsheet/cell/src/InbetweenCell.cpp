#include "xsheet/cell/hdr/InbetweenCell.h"

InbetweenCell::InbetweenCell(KeyCell* parent_key, int offset)
    : BaseCell(offset, 0), parent_key(parent_key),
      ifactor(parent_key ? parent_key->inq_ifactor(offset) : 0.0)
{}

CellData* InbetweenCell::inq_data()
{
    if (!inq_data_exists())
        set_data(create_data());
    return BaseCell::inq_data();
}

gsl::owner<CellData*> InbetweenCell::create_data()
{
    return new CellData(this);
}

KeyCell* InbetweenCell::inq_next_key() const
{
    return parent_key ? parent_key->inq_next_key() : nullptr;
}

bool InbetweenCell::is_an_inbetween() const
{
    return true;
}

void InbetweenCell::reinbetween() {}

int InbetweenCell::inq_frame_number() const
{
    return inq_number() + (parent_key ? parent_key->inq_number() : 0);
}
