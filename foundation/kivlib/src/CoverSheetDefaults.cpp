#include "kivlib/hdr/CoverSheetDefaults.h"

#include "kivlib/hdr/BinOStream.h"
#include "kivlib/hdr/GeneralIStream.h"
#include "kivlib/hdr/Record.h"
#include "kivlib/hdr/file_operations.h"

#include <cstdio>
#include <memory>

KIV_STORED_CLASS(CoverSheetDefaults, -1);

namespace {
std::unique_ptr<CoverSheetDefaults> our_defaults;
bool was_central_file_read = false;

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
    const KIVString path = inq_central_file();
    const KIVString fresh = path + "~";
    {
        BinOStream stream(fresh.c_str(), 1, -1);
        stream.insert_with_class_hdr(this);
        if (stream.alert_user_if_error())
            return false;
    }
    was_central_file_read = false;
    return std::rename(fresh.c_str(), path.c_str()) == 0;
}

CoverSheetDefaults* inq_cover_sheet_defaults()
{
    if (!std::exchange(was_central_file_read, true)) {
        our_defaults.reset();
        if (inq_file_exists(inq_central_file())) {
            GeneralIStream stream(inq_central_file().c_str());
            RecordReader(stream).owned(our_defaults);
            if (stream.alert_user_if_error())
                our_defaults.reset();
        }
    }
    return our_defaults.get();
}
