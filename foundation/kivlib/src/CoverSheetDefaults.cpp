#include "kivlib/hdr/CoverSheetDefaults.h"

#include "kivlib/hdr/GeneralIStream.h"
#include "kivlib/hdr/Record.h"
#include "kivlib/hdr/file_operations.h"
#include "kivlib/hdr/store_in_place.h"

KIV_STORED_CLASS(CoverSheetDefaults, -1);

namespace {
bool was_central_file_read = false;

/// One place to the end of the process: callers hold it.
CoverSheetDefaults& inq_place()
{
    static CoverSheetDefaults place;
    return place;
}

KIVString inq_central_folder()
{
    return get_user_kiv_directory().append_path("Montaray");
}

KIVString inq_central_file()
{
    return inq_central_folder().append_path("coversheet.defaults");
}
} // namespace

double inq_ratio_for_camera(CameraType type)
{
    switch (type) {
    case CAMERA_FIELD_CHART:
        return 1.3714285714285714;
    case CAMERA_EUROPEAN:
        return 1.66;
    case CAMERA_VISTAVISION:
        return 1.85;
    case CAMERA_HDTV:
        return 16.0 / 9.0;
    case CAMERA_CINEMASCOPE:
        return 2.35;
    default:
        return 4.0 / 3.0;
    }
}

template <class Record> void CoverSheetDefaults::record(Record& r)
{
    for (KIVString& credit : credits)
        r.value(credit);
    r.value(scene_length);
    r.value(length_units);
    r.value(frame_rate);
    r.value(camera_type);
    r.value(aspect_ratio);
    r.value(field_chart_type);
    r.value(field_chart_style);
    r.value(field_chart_ratio);
    r.value(field_size);
    r.value(unit_offset);
}

KIV_STORED_RECORD(CoverSheetDefaults);

bool CoverSheetDefaults::store_in_central_file() const
{
    if (!inq_is_directory(inq_central_folder()))
        makedir(inq_central_folder(), 0777, true);
    if (!store_in_place(*this, inq_central_file()))
        return false;
    was_central_file_read = false;
    return true;
}

namespace {
/// False if there is no central file, or none that can be read.
bool read_central_file()
{
    if (!inq_file_exists(inq_central_file()))
        return false;
    GeneralIStream stream(inq_central_file().c_str());
    std::unique_ptr<CoverSheetDefaults> stored;
    RecordReader(stream).owned(stored);
    if (stream.alert_user_if_error() || !stored)
        return false;
    inq_place() = *stored;
    return true;
}
} // namespace

CoverSheetDefaults* inq_cover_sheet_defaults()
{
    static bool are_there = false;
    if (!std::exchange(was_central_file_read, true))
        are_there = read_central_file();
    return are_there ? &inq_place() : nullptr;
}
