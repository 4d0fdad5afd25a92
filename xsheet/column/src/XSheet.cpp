#include "xsheet/column/hdr/XSheet.h"

#include "kivlib/hdr/ChangeRecorder.h"
#include "kivlib/hdr/Record.h"
#include "kivlib/hdr/object_cast.h"

KIV_STORED_CLASS(XSheet, -1);

namespace {
constexpr int MOST_LINES = 10000; // above or below the frames, from a file

bool is_in(int number, int low, int high)
{
    return low <= number && number <= high;
}
} // namespace

template <class Record> void XSheet::record(Record& r)
{
    r.value(footer_lines);
    r.value(header_lines);
    r.value(scene_length);
}

XSheet::XSheet(KIVIStream& stream) : Column(stream)
{
    RecordReader r(stream);
    record(r);
    set_column(nullptr); // nothing is around a sheet
    if (!is_in(footer_lines, 0, MOST_LINES) || !is_in(header_lines, 0, MOST_LINES) ||
        !is_in(scene_length, 1, BaseCell::MOST_FRAMES))
        stream.set_error_state(KIVStream::BAD_DATA);
}

void XSheet::storer(KIVOStream& stream)
{
    Column::storer(stream);
    RecordWriter w(stream);
    record(w);
}

int XSheet::inq_header_line() const
{
    return -1 - inq_header_lines();
}

int XSheet::inq_header_line()
{
    return std::as_const(*this).inq_header_line();
}

KIVString XSheet::inq_header_path()
{
    return {};
}

bool XSheet::can_set_length(int frames)
{
    return frames > 0 && Column::can_set_length(frames);
}

void XSheet::set_length(int frames)
{
    scene_length = frames;
    Column::set_length(frames);
    set_needs_saving();
}

void XSheet::inq_key_range(int* low, int* high)
{
    *low = inq_scene_length();
    *high = 0;
    Column::inq_key_range(low, high);
    if (*low > *high)
        *low = *high = 1;
}

gsl::owner<KIVLinkedList*> XSheet::inq_shallow_sub_column_list()
{
    return inq_columns();
}

bool XSheet::add_column(gsl::owner<Column*> column, Column* after)
{
    return add_sub_column(column, after);
}

gsl::owner<Column*> XSheet::remove_column(Column* column)
{
    return remove_sub_column(column) ? column : nullptr;
}

bool XSheet::move_column(Column* column, Column* after)
{
    return move_sub_column(column, after);
}

void XSheet::claim_rest(KIVIStream& stream)
{
    unplaced = stream.claim_rest();
}

bool XSheet::load_finished_with_abort(KIVScene* loaded_scene)
{
    scene = loaded_scene;
    for (const auto& object : unplaced)
        if (auto* column = object_cast<SubColumn>(object.get()))
            if (column->load_finished_with_abort())
                return true;
    return load_finished_with_abort();
}

void XSheet::add_change_event(ChangeEvt* change)
{
    if (change_recorder)
        change_recorder->add(change);
}

void XSheet::end_change(const char* label)
{
    if (change_recorder)
        change_recorder->end(label);
}

void XSheet::convert_ratioed_columns()
{
    const std::unique_ptr<KIVLinkedList> all(inq_deep_sub_column_list());
    for (SubColumn* sub_column : all->of<SubColumn>())
        sub_column->convert_ratio_column_to_key_based();
}
