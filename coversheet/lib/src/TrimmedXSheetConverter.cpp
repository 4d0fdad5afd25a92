#include "coversheet/lib/hdr/TrimmedXSheetConverter.h"

#include "kivlib/hdr/Record.h"
#include "xsheet/column/hdr/XSheet.h"

KIV_STORED_CLASS(TrimmedXSheetConverter, 147);

namespace {
constexpr FormatVersions HELD_THE_SHEET = before(147);
} // namespace

TrimmedXSheetConverter::TrimmedXSheetConverter(const XSheet* xsheet) : xsheet(xsheet) {}

TrimmedXSheetConverter::TrimmedXSheetConverter(KIVIStream& stream) : KIVObject(stream)
{
    RecordReader fields(stream);
    record(fields);
    for (const int frames : {start_trim_frames, end_trim_frames})
        if (frames < -BaseCell::MOST_FRAMES || frames > BaseCell::MOST_FRAMES)
            stream.set_error_state(KIVStream::BAD_DATA);
    xsheet = stored_sheet.get();
}

TrimmedXSheetConverter::~TrimmedXSheetConverter() = default;

void TrimmedXSheetConverter::storer(KIVOStream& stream)
{
    KIVObject::storer(stream);
    RecordWriter fields(stream);
    record(fields);
}

template <class Record> void TrimmedXSheetConverter::record(Record& r)
{
    r.value(start_trim_frames);
    r.value(end_trim_frames);
    r.owned(stored_sheet, HELD_THE_SHEET);
}

int TrimmedXSheetConverter::inq_length() const
{
    return xsheet ? xsheet->inq_scene_length() : 0;
}

int TrimmedXSheetConverter::inq_active_length() const
{
    return inq_length() - start_trim_frames - end_trim_frames;
}

int TrimmedXSheetConverter::inq_new_real_length(int active_length) const
{
    return end_trim_frames + start_trim_frames + active_length;
}

bool TrimmedXSheetConverter::inq_frame_is_in_active_range(int frame) const
{
    return frame > start_trim_frames && frame < inq_length();
}

bool TrimmedXSheetConverter::inq_frame_is_in_start_trim_range(int frame) const
{
    return frame > 0 && frame <= start_trim_frames;
}

bool TrimmedXSheetConverter::inq_frame_is_in_end_trim_range(int frame) const
{
    return frame > inq_length() - end_trim_frames && frame <= inq_length();
}
