#include "xsheet/numeric/hdr/WidthSubColumn.h"

#include "kivlib/hdr/Record.h"
#include "xsheet/numeric/src/smallest_size.h"

KIV_STORED_CLASS(WidthKeyCell, -1);
KIV_STORED_CLASS(WidthSubColumn, -1);

WidthSubColumn::WidthSubColumn() : NumericSubColumn(1)
{
    set_minimum_values(Vector(1, SMALLEST_SIZE));
    init_units("WidthUnitType", KIV_UNIT_FIELD_WIDTH, "WidthPrecision");
}

WidthSubColumn::WidthSubColumn(KIVIStream& stream) : NumericSubColumn(stream)
{
    RecordReader reader(stream);
    record(reader);
    set_minimum_values(with_element(inq_minimum_values(), 0, SMALLEST_SIZE));
}

template <class Record> void WidthSubColumn::record(Record& r)
{
    r.value(blank_value);
}

void WidthSubColumn::storer(KIVOStream& stream)
{
    Base::storer(stream);
    RecordWriter writer(stream);
    record(writer);
}

gsl::owner<KeyCell*> WidthSubColumn::create_new_key_with_label(int new_label)
{
    return new WidthKeyCell(this, -1, static_cast<unsigned>(new_label));
}
