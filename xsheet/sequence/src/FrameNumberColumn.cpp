#include "xsheet/sequence/hdr/FrameNumberColumn.h"

#include "xsheet/sequence/hdr/FrameNumberSubColumn.h"

KIV_STORED_CLASS(FrameNumberColumn, -1);

FrameNumberColumn::FrameNumberColumn(const FrameNumberColumn& other, bool flag)
    : Column(other, flag)
{}

gsl::owner<SubColumn*> FrameNumberColumn::duplicate() const
{
    return new FrameNumberColumn(*this);
}

void FrameNumberColumn::init_after_construction()
{
    Column::init_after_construction();
    auto* numbers = new FrameNumberSubColumn;
    numbers->init_after_construction();
    add_sub_column(numbers, nullptr);
}
