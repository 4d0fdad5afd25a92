#include "kivlib/hdr/KIVColour.h"
#include "kivlib/hdr/KIVDefaultUnitHandler.h"
#include "kivlib/hdr/KIVFileReference.h"
#include "kivlib/hdr/Matrix.h"
#include "kivlib/hdr/file_operations.h"
#include "kivlib/hdr/report_error.h"
#include "tests/support/Captured.h"
#include "tests/support/OldRecord.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

static_assert(source_place("foundation/kivlib/hdr/Vector.h") == "kivlib/hdr/Vector");
static_assert(source_place("compositor/lib/src/CData.cpp") == "compositor/lib/src/CData");

namespace {
void expect_near(const Vector2& a, const Vector2& b)
{
    EXPECT_NEAR(a.x(), b.x(), 1e-12);
    EXPECT_NEAR(a.y(), b.y(), 1e-12);
}
} // namespace

TEST(Vector, reports_a_bad_index_and_uses_the_first)
{
    const Captured captured;
    const Vector v(2, 4.0);
    EXPECT_EQ(v.elem(2), 4.0);
    EXPECT_EQ(Vector2(1.0, 2.0).elem(-1), 1.0);
    const std::string errors = captured.inq_errors();
    EXPECT_NE(errors.find("kivlib/hdr/Vector, line"), std::string::npos);
    EXPECT_NE(errors.find("VECLIB [Vector::elem]: element index out of bounds\n"),
              std::string::npos);
    EXPECT_EQ(Vector().elem(0), 0.0);
}

TEST(Matrix, inverts_and_says_if_it_can_not)
{
    Matrix44 m;
    m.set_scale(Vector3(2.0, 4.0, 1.0));
    Matrix44 shift;
    shift.set_translation(Vector3(1.0, 2.0, 1.0));
    m = m * shift;
    Matrix44 inverse = m;
    ASSERT_TRUE(inverse.invert());
    expect_near(inverse * (m * Vector2(7.0, 8.0)), Vector2(7.0, 8.0));
    m.set_scale(Vector3(1.0, 0.0, 1.0));
    const Matrix44 before = m;
    EXPECT_FALSE(m.invert());
    EXPECT_TRUE(m == before);
}

TEST(KIVColour, changes_spaces_and_comes_back)
{
    const double levels[] = {0.0, 0.2, 0.5, 1.0};
    for (const double red : levels)
        for (const double green : levels)
            for (const double blue : levels) {
                float a, b, c, k;
                const KIVColour colour(red, green, blue);
                KIVColour back;
                colour.inq_hsb(&a, &b, &c);
                back.set_hsb(double{a}, double{b}, double{c});
                EXPECT_NEAR(back.inq_red(), red, 1e-6);
                EXPECT_NEAR(back.inq_green(), green, 1e-6);
                EXPECT_NEAR(back.inq_blue(), blue, 1e-6);
                colour.inq_cmyk(&a, &b, &c, &k);
                back.set_cmyk(double{a}, double{b}, double{c}, double{k});
                EXPECT_NEAR(back.inq_red(), red, 1e-6);
                EXPECT_NEAR(back.inq_blue(), blue, 1e-6);
            }
    EXPECT_EQ(KIVColour(0.0).inq_alpha(), 1.0);
}

TEST(KIVColour, goes_the_short_way_round_the_hues)
{
    KIVColour colour;
    colour.set_hsb(0.95, 1.0, 1.0);
    KIVColour target;
    target.set_hsb(0.15, 1.0, 1.0);
    colour.interpolate_hsb_to(target, 0.5F);
    float hue, saturation, brightness;
    colour.inq_hsb(&hue, &saturation, &brightness);
    EXPECT_NEAR(hue, 0.05F, 1e-6F);
    KIVColour grey(0.5);
    grey.interpolate_hsb_to(target, 0.5F);
    grey.inq_hsb(&hue, &saturation, &brightness);
    EXPECT_NEAR(hue, 0.15F, 1e-6F);
    EXPECT_NEAR(saturation, 0.5F, 1e-6F);
    KIVColour beyond(1.7e308, -1.7e308, 0.0);
    beyond.interpolate_hsb_to(target, 0.5F); // whose hue is no number
    EXPECT_FALSE(std::isnan(beyond.inq_red()));
}

TEST(UnitHandler, shows_and_reads_its_units)
{
    KIVDefaultUnitHandler handler;
    handler.set_aspect_ratio(1.5);
    double value = -1.0;
    EXPECT_TRUE(handler.x_to_units(90.0, false) == "1.50");
    EXPECT_TRUE(handler.y_to_units(90.0, false) == "2.25");
    EXPECT_TRUE(handler.x_to_units(90.0, true) == "90.00°");
    EXPECT_TRUE(handler.y_to_internal(" 2.25 ", &value, false));
    EXPECT_DOUBLE_EQ(value, 90.0);
    EXPECT_TRUE(handler.x_to_internal("2.54cm", &value, false));
    EXPECT_DOUBLE_EQ(value, 60.0);
    handler.set_default_unit(KIV_UNIT_PERCENT);
    EXPECT_TRUE(handler.x_to_units(0.5, false) == "50.00%");
    EXPECT_TRUE(handler.x_to_internal("25 %", &value, false));
    EXPECT_DOUBLE_EQ(value, 0.25);
    for (const char* text : {"", "abc", "5 cm", "1.2.3", "nan", "5 %%", "inf", "0x10", "+-2", "%"})
        EXPECT_FALSE(handler.x_to_internal(text, &value, false)) << text;
    EXPECT_DOUBLE_EQ(value, 0.25);
    handler.set_default_unit(KIV_UNIT_FRAMES);
    EXPECT_FALSE(handler.x_to_internal("12.5", &value, false)) << "frames are whole";
    EXPECT_FALSE(handler.x_to_internal("1e400", &value, false));
    EXPECT_TRUE(handler.x_to_internal("+12 FR", &value, false));
    EXPECT_DOUBLE_EQ(value, 12.0);
    EXPECT_TRUE(handler.x_to_units(-0.3, false) == "0fr");
}

TEST(UnitHandler, reads_back_what_it_shows)
{
    KIVDefaultUnitHandler handler;
    handler.set_aspect_ratio(1.3714285714285714);
    for (int unit = KIV_UNIT_WORLD; unit <= KIV_UNIT_DEGREES; ++unit) {
        for (int places = 0; places <= 9; ++places) {
            handler.set_default_unit(static_cast<KIVUnitType>(unit));
            handler.set_precision(places);
            for (const double typed : {0.0, 0.29, -7.123456789, 57.0, 4321.987654321}) {
                double value = 0.0, again = 0.0;
                const KIVString shown = handler.y_to_units(typed, false);
                ASSERT_TRUE(handler.y_to_internal(shown, &value, false)) << shown.str();
                const KIVString second = handler.y_to_units(value, false);
                EXPECT_EQ(second.str(), shown.str());
                ASSERT_TRUE(handler.y_to_internal(second, &again, false));
                EXPECT_EQ(again, value);
            }
        }
    }
    double value = 0.0;
    handler.set_default_unit(KIV_UNIT_PERCENT);
    EXPECT_TRUE(handler.x_to_internal("57", &value, false));
    EXPECT_EQ(value, 0.57) << "and not the number next to it";
}

namespace {
/// A project with a scene and artwork beside it, and a link to artwork that lies elsewhere.
class Project : public testing::Test {
protected:
    Project()
    {
        for (const char* place : {"before/scene", "before/art", "server"})
            makedir(folder.path(place), 0777, true);
        folder.write("before/art/bg.png", "picture");
        folder.write("server/sky.png", "picture");
        link(folder.path("server"), "before/sky");
    }

    void link(const KIVString& to, const char* name) const
    {
        std::filesystem::create_directory_symlink(to.str(), folder.path(name).str());
    }

    /// Writes the record of the scene that has this path.
    void refer(const char* path_of_scene, const KIVFile& target) const
    {
        KIVFile scene(folder.path(path_of_scene));
        KIVFileReferenceList list;
        list.add({scene, target, "Images"}, 3);
        scene.set_reference_list_value("Images", &list);
        EXPECT_TRUE(scene.save_kvd());
    }
    void refer(const char* path_of_scene, const char* path_of_target) const
    {
        refer(path_of_scene, KIVFile(folder.path(path_of_target)));
    }

    KIVFile target_in(const char* path_of_scene) const
    {
        const KIVFile scene(folder.path(path_of_scene));
        const KIVFileReferenceListIter i(scene.inq_reference_list_value("Images"));
        return i.ok() && i.inq_tag() == 3 ? i.inq_target() : KIVFile();
    }

    void move(const char* from, const char* to) const
    {
        std::filesystem::rename(folder.path(from).str(), folder.path(to).str());
    }

    TempFolder folder;
};
} // namespace

TEST_F(Project, finds_its_artwork_again_where_it_has_moved_to)
{
    KIVFile named(folder.path("before/art/bg.png"));
    named.set_user_name("Opening");
    refer("before/scene", named);
    move("before", "after");
    EXPECT_EQ(target_in("after/scene"), folder.path("after/art/bg.png"));
    EXPECT_EQ(target_in("after/scene").get_user_name(), "Opening");

    makedir(folder.path("before/art"), 0777, true);
    folder.write("before/art/bg.png", "another picture at the old place");
    EXPECT_EQ(target_in("after/scene"), folder.path("after/art/bg.png"));

    move("after/art", "after/elsewhere");
    EXPECT_EQ(target_in("after/scene"), folder.path("before/art/bg.png"));
}

TEST_F(Project, is_named_through_symbolic_links)
{
    link(folder.path("before"), "shortcut");
    refer("shortcut/scene", "before/art/bg.png");
    move("before", "after");
    EXPECT_EQ(target_in("after/scene"), folder.path("after/art/bg.png"));
    link(folder.path("after/scene"), "scene");
    EXPECT_EQ(target_in("scene"), folder.path("after/art/bg.png"));

    refer("scene", "after/sky/sky.png"); // the project may bring a link of its own
    move("after", "later");
    move("server", "later/new_server");
    std::filesystem::remove(folder.path("later/sky").str());
    link("new_server", "later/sky");
    EXPECT_EQ(target_in("later/scene"), folder.path("later/sky/sky.png"));

    move("later/scene", "big_disc"); // only the scene lies elsewhere
    link(folder.path("big_disc"), "later/scene");
    refer("later/scene", "later/art/bg.png");
    move("later", "at_last");
    EXPECT_EQ(target_in("at_last/scene"), folder.path("at_last/art/bg.png"));
}

TEST_F(Project, keeps_the_place_of_artwork_that_follows_later)
{
    refer("before/scene", "before/art/bg.png");
    move("before", "after");
    move("after/art", "art_on_its_way");
    const KIVFile lost = target_in("after/scene");
    EXPECT_EQ(lost, folder.path("before/art/bg.png"));
    refer("after/scene", lost); // as a save without the artwork does
    move("art_on_its_way", "after/art");
    EXPECT_EQ(target_in("after/scene"), folder.path("after/art/bg.png"));
}

TEST_F(Project, keeps_a_file_that_was_named_from_the_working_directory_and_an_empty_name)
{
    std::filesystem::current_path(folder.path("before/art").str());
    KIVFile target("bg.png");
    target.set_user_name("");
    std::filesystem::current_path(folder.path("before/scene").str()); // as a save does
    refer("before/scene", target);
    EXPECT_EQ(target, "bg.png");
    EXPECT_EQ(target_in("before/scene"), folder.path("before/art/bg.png"));
    EXPECT_EQ(target_in("before/scene").get_user_name(), "");
}

TEST_F(Project, is_found_behind_links_as_the_system_does)
{
    EXPECT_EQ(inq_absolute_path(folder.path("before/sky/../x")), folder.path("x"));
    EXPECT_EQ(inq_absolute_path(folder.path("before/sky/./y/../x")), folder.path("before/sky/x"));
    link("nowhere", "dangling");
    EXPECT_EQ(inq_absolute_path(folder.path("dangling/../x")), folder.path("x"));
}

TEST_F(Project, is_saved_over_a_damaged_record_and_refuses_an_empty_one_in_a_stream)
{
    const Captured captured;
    folder.write("before/scene/kvd", "no record");
    refer("before/scene", "before/art/bg.png");
    EXPECT_TRUE(captured.inq_alerts().empty());
    EXPECT_EQ(captured.inq_errors(),
              folder.path("before/scene/kvd").str() + " can't be read, and is written anew.\n");
    EXPECT_EQ(target_in("before/scene"), folder.path("before/art/bg.png"));
    CharOStream out;
    out.insert_with_class_hdr(nullptr);
    CharIStream in(out.inq_container());
    KIVFile().extract_kvd(in);
    EXPECT_EQ(in.inq_error_state(), KIVStream::BAD_DATA);
}

TEST(Files, tell_the_user_that_a_record_could_not_take_its_place)
{
    const TempFolder folder;
    const Captured captured;
    makedir(folder.path("scene"), 0777, true);
    KIVFile scene(folder.path("scene"));
    EXPECT_TRUE(scene.save_kvd());
    std::filesystem::remove(folder.path("scene/kvd").str());
    makedir(folder.path("scene/kvd"), 0777, false);
    EXPECT_FALSE(scene.save_kvd());
    EXPECT_EQ(captured.inq_alerts().size(), 1U);
    EXPECT_FALSE(inq_file_exists(folder.path("scene/kvd~")));
}
