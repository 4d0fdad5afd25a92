#pragma once

#include "coversheet/lib/hdr/Approval.h"
#include "kivlib/hdr/CameraType.h"
#include "kivlib/hdr/CoverSheetDefaults.h"

#include <array>
#include <memory>

class CoverSheetWindow;
class KIVScene;
class SetViewZoomPanWatcher;
class TrimmedXSheetConverter;

/// Production record of a scene: who worked on it, who approved it, and the settings of its
/// picture: camera, frame rate, field chart, units and trim. The scene owns it.
class CoverSheet : public KIVObject {
    KIV_STORED(CoverSheet, KIVObject);

public:
    static constexpr int STRING_COUNT = 18;
    static constexpr int APPROVAL_COUNT = 9;

    /// Starts from the user's defaults, which may set the length of the scene's sheet.
    explicit CoverSheet(KIVScene* scene);

    /// Belongs to no scene until `just_loaded_into`.
    explicit CoverSheet(KIVIStream& stream);
    ~CoverSheet() override;

    void storer(KIVOStream& stream) override;

    /// Indices count from 0. One out of range sets nothing; asking with one is not allowed.
    void set_string(const KIVString& text, int index);
    const KIVString& inq_string(int index) const { return strings[std::size_t(index)]; }
    void set_approval(bool is_approved, int stage);
    Approval* inq_approval(int stage) { return &approvals[std::size_t(stage)]; }

    int inq_length_units() const { return length_units; }
    void set_length_units(int units) { length_units = units; }

    const KIVDateAndTime& inq_scene_stamp_time() const { return scene_stamp_time; }
    const KIVString& inq_scene_stamp_user() const { return scene_stamp_user; }
    const KIVDateAndTime& inq_coversheet_stamp_time() const { return coversheet_stamp_time; }
    const KIVString& inq_coversheet_stamp_user() const { return coversheet_stamp_user; }
    void set_scene_timestamp(const KIVDateAndTime& time) { scene_stamp_time = time; }
    void set_scene_userstamp(const KIVString& user) { scene_stamp_user = user; }
    void set_coversheet_timestamp(const KIVDateAndTime& time) { coversheet_stamp_time = time; }
    void set_coversheet_userstamp(const KIVString& user) { coversheet_stamp_user = user; }

    /// This user changes the cover sheet, or the scene, now.
    void edit_stamp();
    void scene_stamp();

    /// The camera's width over height. A ratio makes the type custom; any other type has its ratio.
    CameraType inq_camera_type() const { return camera_type; }
    double inq_aspect_ratio() const { return aspect_ratio; }
    void set_camera_type(CameraType type);
    void set_aspect_ratio(double ratio);

    /// Frames per second.
    int inq_frame_rate() const { return frame_rate; }
    void set_frame_rate(int rate) { frame_rate = rate; }

    /// The field chart's width over height, as with the camera's.
    CameraType inq_field_chart_type() const { return field_chart_type; }
    double inq_field_chart_ratio() const { return field_chart_ratio; }
    void set_field_chart_type(CameraType type);
    void set_field_chart_ratio(double ratio);

    /// In fields, or in millimetres if the style is. Sizes of 1 and below, and of 1000 and above,
    /// are ignored.
    int inq_field_size() const { return field_size; }
    void set_field_size(int size);

    /// To and from millimetres the size is converted.
    FieldChartStyle inq_field_chart_style() const { return field_chart_style; }
    void set_field_chart_style(FieldChartStyle style);

    double inq_unit_offset() const { return unit_offset; }
    void set_unit_offset(double offset) { unit_offset = offset; }

    /// Null only in a cover sheet without a sheet, or read from an old file and not yet joined to
    /// its scene.
    TrimmedXSheetConverter* inq_trimmed_xsht_converter() const
    {
        return trimmed_xsht_converter.get();
    }

    /// Frames cut off the sheet's head and tail. The sheet's frame numbers follow.
    int inq_start_trim_frames() const;
    int inq_end_trim_frames() const;
    void set_start_trim_frames(int frames);
    void set_end_trim_frames(int frames);

    /// Frames of the whole sheet.
    int inq_scene_length() const;
    KIVScene* inq_current_scene() const { return scene; }

    CoverSheetWindow* inq_window() const { return window; }
    void set_window(CoverSheetWindow* shown_in) { window = shown_in; }

    /// There is one; it takes the place of the last.
    void add_watcher(SetViewZoomPanWatcher* new_watcher) { watcher = new_watcher; }

    /// From and to the user's defaults.
    void init_from_default();
    void save_as_default();

    int inq_dirty_flags() const { return dirty_flags; }

    /// Marks the sheet as well, and stamps the cover sheet. The setters do not call it.
    void set_needs_saving();
    void set_just_saved();
    bool inq_needs_saving() const;

    /// Joins a cover sheet that was read to its scene.
    void just_loaded_into(KIVScene* loaded_scene);

private:
    template <class Record> void record(Record& r);
    void make_trim_converter();
    void set_default_length(int frames);
    void reset_frame_columns();

    KIVScene* scene = nullptr;          // not owned
    CoverSheetWindow* window = nullptr; // not owned
    int dirty_flags = 0;
    std::array<KIVString, STRING_COUNT> strings;
    std::array<Approval, APPROVAL_COUNT> approvals;
    int length_units = 1;
    KIVDateAndTime scene_stamp_time;
    KIVString scene_stamp_user;
    KIVDateAndTime coversheet_stamp_time;
    KIVString coversheet_stamp_user;
    CameraType camera_type = CAMERA_ACADEMY;
    double aspect_ratio = 4.0 / 3.0;
    int frame_rate = 24;
    CameraType field_chart_type = CAMERA_FIELD_CHART;
    double field_chart_ratio = 1.3714285714285714;
    int field_size = 12;
    FieldChartStyle field_chart_style = FIELD_CHART_NORTH_SOUTH;
    double unit_offset = 5000.0;
    SetViewZoomPanWatcher* watcher = nullptr; // not owned
    std::unique_ptr<TrimmedXSheetConverter> trimmed_xsht_converter;
};
