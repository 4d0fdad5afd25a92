#include "xsheet/sequence/hdr/FrameNumberSubColumn.h"

#include "coversheet/lib/hdr/CoverSheet.h"
#include "coversheet/lib/hdr/TrimmedXSheetConverter.h"
#include "kivlib/hdr/Record.h"
#include "kivlib/hdr/object_cast.h"
#include "scene/hdr/KIVScene.h"
#include "xsheet/column/hdr/XSheet.h"
#include "xsheet/node/hdr/FrameNumSubColPrefs.h"

#include <cstdio>

KIV_STORED_CLASS(FrameNumberCellData, -1);
KIV_STORED_CLASS(FrameNumberKeyCell, -1);
KIV_STORED_CLASS(FrameNumberSubColumn, -1);

namespace {
constexpr int FRAMES_PER_FOOT = 16;
constexpr int FRAMES_PER_SECOND = 24;
constexpr int SECONDS_PER_MINUTE = 60;

int inq_frame_of_foot(int number)
{
    const int frame = number % FRAMES_PER_FOOT;
    return frame == 0 ? FRAMES_PER_FOOT : frame;
}

KIVString inq_time(int number)
{
    char seconds_and_frames[32];
    std::snprintf(seconds_and_frames, sizeof seconds_and_frames, ":%2d.%2d",
                  number / FRAMES_PER_SECOND % SECONDS_PER_MINUTE, number % FRAMES_PER_SECOND);
    return KIVString(number / (FRAMES_PER_SECOND * SECONDS_PER_MINUTE), 0) + seconds_and_frames;
}

KIVString inq_text(int number, FrameNumberFormat format)
{
    switch (format) {
    case FRAME_NUMBER_PLAIN:
        return KIVString(number, 0);
    case FRAME_NUMBER_DASH:
        return "- " + KIVString(number, 0);
    case FRAME_NUMBER_QUOTE:
        return "' " + KIVString(number, 0);
    case FRAME_NUMBER_FOOT:
        return KIVString(inq_frame_of_foot(number), 0);
    case FRAME_NUMBER_TIME:
        return inq_time(number);
    default:
        return {};
    }
}

/// Null if the key has none of this kind.
FrameNumberCellData* number_data_of(BaseCell* key)
{
    CellData* data = key->inq_data();
    const bool is_number = data && data->is_kind_of(FrameNumberCellData::inq_class_name_s());
    return is_number ? static_cast<FrameNumberCellData*>(data) : nullptr;
}
} // namespace

gsl::owner<CellData*> FrameNumberCellData::duplicate() const
{
    return new FrameNumberCellData(*this);
}

void FrameNumberCellData::set_number(int number, FrameNumberFormat format)
{
    set_string(inq_text(number, format));
}

gsl::owner<BaseCell*> FrameNumberKeyCell::duplicate() const
{
    return new FrameNumberKeyCell(*this);
}

gsl::owner<CellData*> FrameNumberKeyCell::create_data()
{
    return new FrameNumberCellData(this);
}

int FrameNumberKeyCell::inq_type() const
{
    return FrameNumberSubColumn::TYPE;
}

void FrameNumberKeyCell::set_number(int n)
{
    TextKeyCell::set_number(n);
    FrameNumberCellData* data = number_data_of(this);
    if (data && inq_sub_column() && inq_sub_column()->inq_type() == FrameNumberSubColumn::TYPE)
        data->set_number(n, static_cast<FrameNumberSubColumn*>(inq_sub_column())->inq_format());
}

FrameNumberSubColumn::FrameNumberSubColumn(const FrameNumberSubColumn& other, bool flag)
    : TextCellSubColumn(other, flag), format(other.format)
{}

template <class Record> void FrameNumberSubColumn::record(Record& r)
{
    r.value(format);
}

KIV_STORED_RECORD(FrameNumberSubColumn);

gsl::owner<SubColumn*> FrameNumberSubColumn::duplicate() const
{
    return new FrameNumberSubColumn(*this);
}

void FrameNumberSubColumn::init_after_construction()
{
    TextCellSubColumn::init_after_construction();
    set_format(format);
}

void FrameNumberSubColumn::added_to_column(Column* to)
{
    if (to->inq_xsheet())
        TextCellSubColumn::added_to_column(to);
    else
        set_column(to);
}

gsl::owner<KeyCell*> FrameNumberSubColumn::create_new_key_with_label(int new_label)
{
    return new FrameNumberKeyCell(this, -1, static_cast<unsigned>(new_label));
}

gsl::owner<SubColPrefs*> FrameNumberSubColumn::create_preferences_object()
{
    return new FrameNumSubColPrefs(this);
}

void FrameNumberSubColumn::apply_preferences_object(SubColPrefs* prefs)
{
    if (const auto* number = object_cast<FrameNumSubColPrefs>(prefs))
        set_format(number->inq_format());
}

void FrameNumberSubColumn::set_format(FrameNumberFormat new_format)
{
    format = new_format;
    reset_frame_numbers();
}

void FrameNumberSubColumn::reset_frame_numbers()
{
    KeyCellIterator keys(this);
    while (KeyCell* key = keys++)
        print(key);
}

void FrameNumberSubColumn::print(KeyCell* key)
{
    if (FrameNumberCellData* data = number_data_of(key))
        data->set_number(inq_trimmed_val(key->inq_number()), format);
}

void FrameNumberSubColumn::set_length(int frames)
{
    for (int frame = 1; frame <= frames; ++frame)
        if (!inq_key_cell_list()->find_cell(frame))
            make_key_on(frame);
    delete_keys_behind(frames);
}

void FrameNumberSubColumn::make_key_on(int frame)
{
    KeyCell* key = create_new_key();
    key->set_data(key->create_data());
    insert_key(key, frame);
    print(key);
}

void FrameNumberSubColumn::delete_keys_behind(int frame)
{
    while (++frame <= inq_last_key_position())
        if (BaseCell* key = inq_key_cell_list()->find_cell(frame))
            delete remove_key(static_cast<KeyCell*>(key));
}

int FrameNumberSubColumn::inq_trimmed_val(int frame)
{
    const XSheet* sheet = inq_xsheet();
    const CoverSheet* cover =
        sheet && sheet->inq_scene() ? sheet->inq_scene()->inq_cover_sheet() : nullptr;
    const TrimmedXSheetConverter* trim = cover ? cover->inq_trimmed_xsht_converter() : nullptr;
    return trim ? trim->inq_trimmed_frame_nu(frame) : frame;
}
