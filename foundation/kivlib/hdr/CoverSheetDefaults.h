#pragma once

#include "kivlib/hdr/CameraType.h"
#include "kivlib/hdr/StoredClass.h"

#include <array>

/// What a new cover sheet starts with: the credits of the house and the settings of its picture,
/// kept in the user's directory.
class CoverSheetDefaults : public KIVObject {
    KIV_STORED(CoverSheetDefaults, KIVObject);

public:
    CoverSheetDefaults() = default;
    explicit CoverSheetDefaults(KIVIStream& stream);

    void storer(KIVOStream& stream) override;

    /// The credits that have a default, in the order of the cover sheet.
    enum Credit {
        PRODUCTION_COMPANY,
        PRODUCTION_NAME,
        DIRECTOR_NAME,
        ANIMATORS_NAME,
        ASSISTANTS_NAME,
        SFXANIMATORS_NAME,
        CAMERAANIMATOR_NAME,
        LAYOUTARTIST_NAME,
        BACKGROUNDARTIST_NAME,
        COLOURSTYLIST_NAME,
        SCANNER_NAME,
        PAINTER_NAME,
        CREDIT_COUNT
    };
    const KIVString& inq_credit(Credit credit) const { return credits[credit]; }
    void set_credit(Credit credit, const KIVString& text) { credits[credit] = text; }

    const KIVString& inq_production_company() const { return credits[PRODUCTION_COMPANY]; }
    const KIVString& inq_production_name() const { return credits[PRODUCTION_NAME]; }
    const KIVString& inq_director_name() const { return credits[DIRECTOR_NAME]; }
    const KIVString& inq_animators_name() const { return credits[ANIMATORS_NAME]; }
    const KIVString& inq_assistants_name() const { return credits[ASSISTANTS_NAME]; }
    const KIVString& inq_sfxanimators_name() const { return credits[SFXANIMATORS_NAME]; }
    const KIVString& inq_cameraanimator_name() const { return credits[CAMERAANIMATOR_NAME]; }
    const KIVString& inq_layoutartist_name() const { return credits[LAYOUTARTIST_NAME]; }
    const KIVString& inq_backgroundartist_name() const { return credits[BACKGROUNDARTIST_NAME]; }
    const KIVString& inq_colourstylist_name() const { return credits[COLOURSTYLIST_NAME]; }
    const KIVString& inq_scanner_name() const { return credits[SCANNER_NAME]; }
    const KIVString& inq_painter_name() const { return credits[PAINTER_NAME]; }

    /// Keeps the record in the user's directory, finished or as it was. False on failure.
    bool store_in_central_file() const;

    int scene_length = 100; // frames
    int length_units = 1;
    int frame_rate = 24; // frames per second
    CameraType camera_type = CAMERA_ACADEMY;
    double aspect_ratio = 4.0 / 3.0; // camera width over height
    CameraType field_chart_type = CAMERA_FIELD_CHART;
    FieldChartStyle field_chart_style = FIELD_CHART_NORTH_SOUTH;
    double field_chart_ratio = 1.3714285714285714; // chart width over height
    int field_size = 12;
    double unit_offset = 5000.0;

private:
    template <class Record> void record(Record& r);

    std::array<KIVString, CREDIT_COUNT> credits;
};

/// The defaults that the user has stored; null if there are none. The foundation keeps them, always
/// in one place.
CoverSheetDefaults* inq_cover_sheet_defaults();
