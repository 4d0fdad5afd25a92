#include "coversheet/lib/hdr/CoverSheet.h"
#include "coversheet/lib/hdr/KIVCamera.h"
#include "coversheet/lib/hdr/KIVFieldChart.h"
#include "coversheet/lib/hdr/TrimmedXSheetConverter.h"
#include "kivlib/hdr/file_operations.h"
#include "scene/hdr/KIVScene.h"
#include "tests/support/OldRecord.h"
#include "tests/support/OwnSettings.h"
#include "xsheet/column/hdr/XSheet.h"
#include "xsheet/sequence/hdr/FrameNumberColumn.h"

namespace {
std::unique_ptr<KIVScene> new_scene()
{
    return std::unique_ptr<KIVScene>(KIVScene::inq_unsetup_scene());
}

/// The fields that every release wrote, with the field size 14 and the credit `credit`.
void tell_common_fields(CharOStream& out, const KIVString& credit)
{
    KIVDateAndTime then(1000, 0);
    KIVString user("ada");
    std::array<KIVString, CoverSheet::STRING_COUNT> strings{credit};
    std::array<Approval, CoverSheet::APPROVAL_COUNT> approvals;
    for (int stamp = 0; stamp < 2; ++stamp) {
        out.insert_without_class_hdr(&then);
        out.insert_without_class_hdr(&user);
    }
    for (const KIVString& string : strings)
        out.insert_with_class_hdr(&string);
    for (const Approval& approval : approvals)
        out.insert_with_class_hdr(&approval);
    out << CAMERA_CUSTOM << 25 << 14 << 2.0 << 3 << CAMERA_HDTV << 1.5 << FIELD_CHART_GRID;
}
} // namespace

TEST(CoverSheet, reads_the_fields_of_each_version)
{
    OwnSettings settings;
    const auto scene = new_scene();
    for (const int version : {130, 131, 141, 142}) {
        SCOPED_TRACE(version);
        OldRecord old("CoverSheet", version);
        tell_common_fields(old, "first");
        if (version >= 131)
            old << 4500.0;
        if (version >= 142)
            old.nested("TrimmedXSheetConverter", 147, [](OldRecord& r) { r << 8 << 9; });
        const auto read = old.read<CoverSheet>();
        ASSERT_NE(read, nullptr);
        EXPECT_EQ(read->inq_string(0), "first");
        EXPECT_EQ(read->inq_scene_stamp_user(), "ada");
        EXPECT_EQ(read->inq_frame_rate(), 25);
        EXPECT_EQ(read->inq_field_size(), 14);
        EXPECT_EQ(read->inq_length_units(), 3);
        EXPECT_EQ(read->inq_field_chart_type(), CAMERA_HDTV);
        EXPECT_EQ(read->inq_field_chart_ratio(), 1.5);
        EXPECT_EQ(read->inq_field_chart_style(), FIELD_CHART_GRID);
        EXPECT_EQ(read->inq_unit_offset(), version >= 131 ? 4500.0 : 5000.0);
        EXPECT_EQ(read->inq_trimmed_xsht_converter() != nullptr, version >= 142);
        EXPECT_EQ(read->inq_end_trim_frames(), version >= 142 ? 9 : 0);

        read->just_loaded_into(scene.get());
        ASSERT_NE(read->inq_trimmed_xsht_converter(), nullptr);
        EXPECT_EQ(read->inq_trimmed_xsht_converter()->inq_xsheet(), scene->inq_xsheet());
        EXPECT_EQ(read->inq_start_trim_frames(), version >= 142 ? 8 : 0);
    }
}

TEST(Approval, of_the_oldest_files_has_no_contents)
{
    const auto read = OldRecord("Approval", 0).read<Approval>();
    ASSERT_NE(read, nullptr);
    EXPECT_FALSE(read->inq_approved());
    EXPECT_EQ(read->inq_approver(), "");
    EXPECT_EQ(read->inq_date(), KIVDate());
}

TEST(CoverSheet, converts_the_field_size_to_and_from_millimetres)
{
    OwnSettings settings;
    CoverSheet sheet(nullptr);
    sheet.set_field_chart_style(FIELD_CHART_GRID);
    EXPECT_EQ(sheet.inq_field_size(), 12);
    sheet.set_field_chart_style(FIELD_CHART_MILLIMETRES);
    EXPECT_EQ(sheet.inq_field_size(), 140);
    sheet.set_field_chart_style(FIELD_CHART_MILLIMETRES);
    EXPECT_EQ(sheet.inq_field_size(), 140);
    sheet.set_field_chart_style(FIELD_CHART_NORTH_SOUTH);
    EXPECT_EQ(sheet.inq_field_size(), 12);
}

TEST(CoverSheet, keeps_the_approver_of_an_approval_that_is_taken_back)
{
    OwnSettings settings;
    CoverSheet sheet(nullptr);
    EXPECT_EQ(sheet.inq_approval(2)->inq_date(), KIVDate(0, 0, 0, 0));
    sheet.set_approval(true, 2);
    sheet.set_approval(false, 2);
    EXPECT_FALSE(sheet.inq_approval(2)->inq_approved());
    EXPECT_EQ(sheet.inq_approval(2)->inq_approver(), get_user_login_name());
    EXPECT_EQ(sheet.inq_approval(2)->inq_date(), KIVDate());
}

TEST(CoverSheet, gives_its_credits_and_settings_to_new_scenes)
{
    OwnSettings settings;
    const auto scene = new_scene();
    CoverSheet& sheet = *scene->inq_cover_sheet();
    for (int i = 0; i < CoverSheet::STRING_COUNT; ++i)
        sheet.set_string(KIVString(i, 0), i);
    scene->inq_xsheet()->set_length(48);
    sheet.set_camera_type(CAMERA_HDTV);
    sheet.set_field_chart_ratio(1.25);
    sheet.set_frame_rate(12);
    sheet.save_as_default();

    const auto next = new_scene();
    const CoverSheet& fresh = *next->inq_cover_sheet();
    for (int i = 0; i < CoverSheet::STRING_COUNT; ++i) {
        const bool is_per_scene = i == 2 || i == 3 || i == 4 || i == 9 || i == 16 || i == 17;
        EXPECT_EQ(fresh.inq_string(i), is_per_scene ? KIVString() : KIVString(i, 0)) << i;
    }
    EXPECT_EQ(next->inq_xsheet()->inq_scene_length(), 48);
    EXPECT_EQ(fresh.inq_camera_type(), CAMERA_HDTV);
    EXPECT_EQ(fresh.inq_aspect_ratio(), 16.0 / 9.0);
    EXPECT_EQ(fresh.inq_field_chart_ratio(), 1.25);
    EXPECT_EQ(fresh.inq_frame_rate(), 12);
}

TEST(CoverSheet, prints_the_frame_numbers_anew_when_the_trim_changes)
{
    OwnSettings settings;
    const auto scene = new_scene();
    auto* column = new FrameNumberColumn;
    column->init_after_construction();
    scene->inq_xsheet()->add_column(column, nullptr);
    scene->inq_cover_sheet()->set_start_trim_frames(10);
    const auto* numbers = static_cast<SubColumn*>(column->inq_sub_column_list()->at_index(0));
    EXPECT_EQ(*numbers->inq_last_key()->inq_data()->inq_string(), "90");
    EXPECT_EQ(*numbers->inq_first_key()->inq_data()->inq_string(), "-9");
}

TEST(TrimmedXSheetConverter, counts_frames_between_head_and_tail)
{
    const XSheet sheet(nullptr); // 100 frames
    TrimmedXSheetConverter trim(&sheet);
    EXPECT_FALSE(trim.inq_is_trimmed());
    EXPECT_FALSE(trim.inq_frame_is_in_active_range(100)); // never the last
    trim.set_start_trim_frames(10);
    trim.set_end_trim_frames(20);
    EXPECT_TRUE(trim.inq_is_trimmed());
    EXPECT_EQ(trim.inq_active_length(), 70);
    EXPECT_EQ(trim.inq_new_real_length(50), 80);
    EXPECT_EQ(trim.inq_trimmed_frame_nu(11), 1);
    EXPECT_EQ(trim.inq_real_frame_nu(1), 11);

    struct Expected {
        int frame;
        bool start, active, end;
    };
    for (const Expected& e : {Expected{0, false, false, false},
                              {1, true, false, false},
                              {10, true, false, false},
                              {11, false, true, false},
                              {80, false, true, false},
                              {81, false, true, true},
                              {99, false, true, true},
                              {100, false, false, true},
                              {101, false, false, false}}) {
        EXPECT_EQ(trim.inq_frame_is_in_start_trim_range(e.frame), e.start) << e.frame;
        EXPECT_EQ(trim.inq_frame_is_in_active_range(e.frame), e.active) << e.frame;
        EXPECT_EQ(trim.inq_frame_is_in_end_trim_range(e.frame), e.end) << e.frame;
    }
}

TEST(TrimmedXSheetConverter, of_an_old_file_brings_its_own_sheet)
{
    XSheet sheet(nullptr);
    sheet.set_length(60);
    OldRecord record("TrimmedXSheetConverter", 146);
    record << 3 << 4;
    record.insert_with_class_hdr(&sheet);
    const auto read = record.read<TrimmedXSheetConverter>();
    EXPECT_EQ(read->inq_active_length(), 53);

    const auto today = stored_and_read(*read);
    EXPECT_EQ(today->inq_xsheet(), nullptr);
    EXPECT_EQ(today->inq_end_trim_frames(), 4);
}

namespace {
class CountingCameraWatcher : public CameraWatcher {
public:
    using CameraWatcher::CameraWatcher;
    void aspect_ratio_changed() override { ++count; }
    int count = 0;
};
} // namespace

TEST(KIVCamera, sees_the_cover_sheet_and_tells_those_who_watch)
{
    OwnSettings settings;
    const auto scene = new_scene();
    scene->inq_cover_sheet()->set_aspect_ratio(1.5);
    auto camera = std::make_unique<KIVCamera>(scene.get());
    EXPECT_EQ(camera->inq_camera_rect(), KIVRectangle(-360.0, -240.0, 360.0, 240.0));

    camera->aspect_ratio_changed();
    CountingCameraWatcher stays(camera.get());
    {
        const CountingCameraWatcher leaves(camera.get());
        camera->aspect_ratio_changed();
        EXPECT_EQ(leaves.count, 1);
    }
    camera->aspect_ratio_changed();
    EXPECT_EQ(stays.count, 2);
    camera.reset(); // the watcher outlives it
}
