#include "coversheet/lib/hdr/CoverSheet.h"

#include "coversheet/lib/hdr/TrimmedXSheetConverter.h"
#include "kivlib/hdr/KIVDefaultUnitHandler.h"
#include "kivlib/hdr/Record.h"
#include "kivlib/hdr/file_operations.h"
#include "scene/hdr/KIVScene.h"
#include "xsheet/column/hdr/XSheet.h"
#include "xsheet/sequence/hdr/FrameNumberSubColumn.h"
#include "xsheet/store_control/hdr/XSheetStoreController.h"

KIV_STORED_CLASS(CoverSheet, 142);

namespace {
constexpr FormatVersions HAS_UNIT_OFFSET = since(131);
constexpr FormatVersions HAS_TRIM = since(142);
constexpr double OLD_UNIT_OFFSET = 5000.0;
constexpr int IS_DIRTY = 1;
constexpr int LENGTH_WITHOUT_SCENE = 100;
constexpr int FIELD_SIZE_LIMIT = 1000;

/// Where the credits that have a default stand among the strings, in the order of the defaults.
constexpr std::array<std::size_t, CoverSheetDefaults::CREDIT_COUNT> CREDIT_SLOTS = {
    0, 1, 5, 6, 7, 8, 10, 11, 12, 13, 14, 15};

XSheet* inq_sheet(const KIVScene* scene)
{
    return scene ? scene->inq_xsheet() : nullptr;
}

void tell_unit_handler(double field_chart_ratio)
{
    inq_default_unit_handler()->set_aspect_ratio(field_chart_ratio);
}

int truncated(double value)
{
    return static_cast<int>(static_cast<long>(value));
}

int fields_of_millimetres(int millimetres)
{
    return truncated((90 + 1.5 * millimetres) / 25.4 + 0.5);
}

/// Sizes in millimetres come in steps.
int millimetres_of_fields(int fields)
{
    constexpr int STEP = 20;
    return truncated((fields * 25.4 - 90) * 2 / 3 + 10) / STEP * STEP;
}
} // namespace

CoverSheet::CoverSheet(KIVScene* scene) : scene(scene)
{
    make_trim_converter();
    init_from_default();
    tell_unit_handler(field_chart_ratio);
    set_needs_saving();
}

CoverSheet::CoverSheet(KIVIStream& stream) : KIVObject(stream)
{
    RecordReader fields(stream);
    record(fields);
    tell_unit_handler(field_chart_ratio);
}

CoverSheet::~CoverSheet() = default;

void CoverSheet::storer(KIVOStream& stream)
{
    KIVObject::storer(stream);
    RecordWriter fields(stream);
    record(fields);
    set_just_saved();
}

template <class Record> void CoverSheet::record(Record& r)
{
    r.embedded(scene_stamp_time);
    r.embedded(scene_stamp_user);
    r.embedded(coversheet_stamp_time);
    r.embedded(coversheet_stamp_user);
    for (KIVString& string : strings)
        r.headed(string);
    for (Approval& approval : approvals)
        r.headed(approval);
    r.value(camera_type);
    r.value(frame_rate);
    r.value(field_size);
    r.value(aspect_ratio);
    r.value(length_units);
    r.value(field_chart_type);
    r.value(field_chart_ratio);
    r.value(field_chart_style);
    r.value(unit_offset, HAS_UNIT_OFFSET, OLD_UNIT_OFFSET);
    r.owned(trimmed_xsht_converter, HAS_TRIM);
}

void CoverSheet::just_loaded_into(KIVScene* loaded_scene)
{
    scene = loaded_scene;
    if (!trimmed_xsht_converter)
        make_trim_converter();
    else if (!trimmed_xsht_converter->inq_xsheet())
        trimmed_xsht_converter->set_xsheet(inq_sheet(scene));
}

void CoverSheet::make_trim_converter()
{
    if (const XSheet* sheet = inq_sheet(scene))
        trimmed_xsht_converter = std::make_unique<TrimmedXSheetConverter>(sheet);
}

void CoverSheet::set_string(const KIVString& text, int index)
{
    if (index >= 0 && index < STRING_COUNT)
        strings[std::size_t(index)] = text;
}

void CoverSheet::set_approval(bool is_approved, int stage)
{
    if (stage >= 0 && stage < APPROVAL_COUNT)
        approvals[std::size_t(stage)].set_approved(is_approved);
}

void CoverSheet::edit_stamp()
{
    coversheet_stamp_time.set_to_now();
    coversheet_stamp_user = get_user_login_name();
}

void CoverSheet::scene_stamp()
{
    scene_stamp_time.set_to_now();
    scene_stamp_user = get_user_login_name();
    dirty_flags = IS_DIRTY;
}

void CoverSheet::set_camera_type(CameraType type)
{
    camera_type = type;
    if (type != CAMERA_CUSTOM)
        aspect_ratio = inq_ratio_for_camera(type);
}

void CoverSheet::set_aspect_ratio(double ratio)
{
    aspect_ratio = ratio;
    set_camera_type(CAMERA_CUSTOM);
}

void CoverSheet::set_field_chart_type(CameraType type)
{
    field_chart_type = type;
    if (type != CAMERA_CUSTOM)
        field_chart_ratio = inq_ratio_for_camera(type);
}

void CoverSheet::set_field_chart_ratio(double ratio)
{
    field_chart_ratio = ratio;
    tell_unit_handler(ratio);
    set_field_chart_type(CAMERA_CUSTOM);
}

void CoverSheet::set_field_size(int size)
{
    if (size > 1 && size < FIELD_SIZE_LIMIT)
        field_size = size;
}

void CoverSheet::set_field_chart_style(FieldChartStyle style)
{
    const FieldChartStyle old_style = std::exchange(field_chart_style, style);
    if (old_style == style)
        return;
    if (old_style == FIELD_CHART_MILLIMETRES)
        field_size = fields_of_millimetres(field_size);
    else if (style == FIELD_CHART_MILLIMETRES)
        field_size = millimetres_of_fields(field_size);
}

int CoverSheet::inq_start_trim_frames() const
{
    return trimmed_xsht_converter ? trimmed_xsht_converter->inq_start_trim_frames() : 0;
}

int CoverSheet::inq_end_trim_frames() const
{
    return trimmed_xsht_converter ? trimmed_xsht_converter->inq_end_trim_frames() : 0;
}

void CoverSheet::set_start_trim_frames(int frames)
{
    if (trimmed_xsht_converter)
        trimmed_xsht_converter->set_start_trim_frames(frames);
    reset_frame_columns();
}

void CoverSheet::set_end_trim_frames(int frames)
{
    if (trimmed_xsht_converter)
        trimmed_xsht_converter->set_end_trim_frames(frames);
    reset_frame_columns();
}

void CoverSheet::reset_frame_columns()
{
    XSheet* sheet = inq_sheet(scene);
    if (!sheet)
        return;
    const std::unique_ptr<KIVLinkedList> columns(
        sheet->inq_deep_sub_column_list(FrameNumberSubColumn::TYPE));
    for (FrameNumberSubColumn* column : columns->of<FrameNumberSubColumn>())
        column->reset_frame_numbers();
}

int CoverSheet::inq_scene_length() const
{
    const XSheet* sheet = inq_sheet(scene);
    return sheet ? sheet->inq_scene_length() : LENGTH_WITHOUT_SCENE;
}

void CoverSheet::init_from_default()
{
    const CoverSheetDefaults* defaults = inq_cover_sheet_defaults();
    if (!defaults)
        return;
    for (std::size_t credit = 0; credit < CREDIT_SLOTS.size(); ++credit)
        strings[CREDIT_SLOTS[credit]] =
            defaults->inq_credit(static_cast<CoverSheetDefaults::Credit>(credit));
    set_default_length(defaults->scene_length);
    length_units = defaults->length_units;
    frame_rate = defaults->frame_rate;
    camera_type = defaults->camera_type;
    aspect_ratio = defaults->aspect_ratio;
    field_chart_type = defaults->field_chart_type;
    field_chart_style = defaults->field_chart_style;
    field_chart_ratio = defaults->field_chart_ratio;
    field_size = defaults->field_size;
    unit_offset = defaults->unit_offset;
    tell_unit_handler(field_chart_ratio);
}

void CoverSheet::set_default_length(int frames)
{
    XSheet* sheet = inq_sheet(scene);
    if (sheet && sheet->inq_scene_length() != frames && sheet->can_set_length(frames))
        sheet->set_length(frames);
}

void CoverSheet::save_as_default()
{
    CoverSheetDefaults first_defaults;
    CoverSheetDefaults* kept = inq_cover_sheet_defaults();
    CoverSheetDefaults& defaults = kept ? *kept : first_defaults;
    for (std::size_t credit = 0; credit < CREDIT_SLOTS.size(); ++credit)
        defaults.set_credit(static_cast<CoverSheetDefaults::Credit>(credit),
                            strings[CREDIT_SLOTS[credit]]);
    defaults.scene_length = inq_scene_length();
    defaults.length_units = length_units;
    defaults.frame_rate = frame_rate;
    defaults.camera_type = camera_type;
    defaults.aspect_ratio = aspect_ratio;
    defaults.field_chart_type = field_chart_type;
    defaults.field_chart_style = field_chart_style;
    defaults.field_chart_ratio = field_chart_ratio;
    defaults.field_size = field_size;
    defaults.unit_offset = unit_offset;
    defaults.store_in_central_file();
}

void CoverSheet::set_needs_saving()
{
    dirty_flags = IS_DIRTY;
    if (XSheet* sheet = inq_sheet(scene))
        sheet->set_needs_saving();
    edit_stamp();
}

void CoverSheet::set_just_saved()
{
    dirty_flags = inq_xs_store_control()->clear_flags_after_save(dirty_flags);
}

bool CoverSheet::inq_needs_saving() const
{
    return inq_xs_store_control()->check_needs_saving_flags(dirty_flags);
}
