#include "kivlib/hdr/KIVDefaults.h"
#include "tests/support/OldRecord.h"
#include "tests/support/TempFolder.h"
#include "tests/support/TestProfile.h"
#include "xsheet/colour/hdr/ColourKeyCell.h"
#include "xsheet/colour/hdr/ColourSubColumn.h"
#include "xsheet/node/hdr/ColourSubColPrefs.h"

namespace {
const KIVColour RED(1.0, 0.0, 0.0);
const KIVColour BLUE(0.0, 0.0, 1.0);

/// From red on frame 1 to blue on frame 3.
struct RedToBlue {
    explicit RedToBlue(int mode)
    {
        column.set_colour_interp_mode(mode);
        key_at(1, RED);
        key_at(3, BLUE);
    }

    void key_at(int frame, const KIVColour& colour)
    {
        static_cast<ColourCellData*>(column.make_key(frame)->inq_data())->set_colour(colour);
    }

    ColourSubColumn column;
};

void expect_colour(const KIVColour& colour, double red, double green, double blue)
{
    EXPECT_NEAR(colour.inq_red(), red, 1e-6);
    EXPECT_NEAR(colour.inq_green(), green, 1e-6);
    EXPECT_NEAR(colour.inq_blue(), blue, 1e-6);
}

int mode_at_setting(int setting)
{
    KIVDefaults::set_default("ColorInterpolationSpace", setting);
    const ColourSubColumn column;
    KIVDefaults::clear_default("ColorInterpolationSpace");
    return column.inq_colour_interp_mode();
}

void tell_vector(CharOStream& out, int size)
{
    out << size;
    for (int i = 0; i < size; ++i)
        out << 0.5;
}

/// A column without keys as a release of `version`, 82 or newer, wrote it.
void tell_column(OldRecord& out, int version)
{
    out << 0 << 0;
    out.insert_with_class_hdr(nullptr);
    out << 1L << 1L << 0;
    tell_vector(out, 3);
    tell_vector(out, 3);
    out << 3 << 2 << 1;
    if (version <= 126) {
        out << 0;
        out.insert_with_class_hdr(nullptr);
    }
    if (version >= 108)
        tell_vector(out, 3);
    if (version >= 110)
        out.insert_with_class_hdr(nullptr);
    if (version >= 110 && version <= 116) {
        out << 0;
        out.insert_with_class_hdr(nullptr);
    }
    out << 7;
}
} // namespace

TEST(ColourSubColumn, blends_in_the_colour_space_of_its_mode)
{
    expect_colour(RedToBlue(ColourSubColumn::RGB_INTERP).column.inq_colour(2), 0.5, 0.0, 0.5);
    expect_colour(RedToBlue(ColourSubColumn::HSV_INTERP).column.inq_colour(2), 1.0, 0.0, 1.0);
    expect_colour(RedToBlue(ColourSubColumn::CMY_INTERP).column.inq_colour(2), 0.5, 0.0, 0.5);

    for (const int mode : {int{ColourSubColumn::CMY_INTERP}, 9}) {
        RedToBlue to_black(mode);
        to_black.key_at(5, KIVColour(0.0));
        expect_colour(to_black.column.inq_colour(4), 0.0, 0.0, 0.5);
    }
}

TEST(ColourSubColumn, takes_its_mode_from_the_settings)
{
    EXPECT_EQ(ColourSubColumn().inq_colour_interp_mode(), 2);
    EXPECT_EQ(mode_at_setting(1), 1);
    EXPECT_EQ(mode_at_setting(3), 3);
    EXPECT_EQ(mode_at_setting(0), 2);
    EXPECT_EQ(mode_at_setting(4), 2);
}

TEST(ColourSubColumn, describes_its_colour_by_the_numbers_that_people_type)
{
    RedToBlue colours(ColourSubColumn::RGB_INTERP);
    const auto summary_of = [&](int mode, const KIVColour& colour) {
        auto* data = static_cast<ColourCellData*>(colours.column.inq_first_key()->inq_data());
        data->set_colour(colour);
        colours.column.set_colour_interp_mode(mode);
        return colours.column.inq_summary().str();
    };
    const KIVColour dark_blue(0.2, 0.0, 0.4);
    EXPECT_EQ(summary_of(ColourSubColumn::RGB_INTERP, dark_blue), "...R51/G0/B102");
    EXPECT_EQ(summary_of(ColourSubColumn::HSV_INTERP, dark_blue), "...H270/S100/V40");
    EXPECT_EQ(summary_of(ColourSubColumn::CMY_INTERP, dark_blue), "...C204/M255/Y153");
    EXPECT_EQ(summary_of(ColourSubColumn::CMY_INTERP, KIVColour(1.0)), "...C0/M0/Y0");
    EXPECT_EQ(summary_of(0, RED), "...");

    colours.column.set_colour_interp_mode(ColourSubColumn::RGB_INTERP);
    auto* data = static_cast<ColourCellData*>(colours.column.inq_first_key()->inq_data());
    data->set_element(0, std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(colours.column.inq_summary(), "...R0/G0/B0");
}

TEST(ColourSubColumn, comes_back_and_gives_its_mode_to_another)
{
    const RedToBlue colours(ColourSubColumn::CMY_INTERP);
    const auto read = stored_and_read(colours.column);
    ASSERT_TRUE(read);
    EXPECT_FALSE(read->load_finished_with_abort());
    EXPECT_EQ(read->inq_order(), 3);
    EXPECT_EQ(read->inq_colour_interp_mode(), ColourSubColumn::CMY_INTERP);
    EXPECT_EQ(read->inq_colour(3), BLUE);
    expect_colour(read->inq_colour(2), 0.5, 0.0, 0.5);

    const std::unique_ptr<SubColPrefs> prefs(read->create_preferences_object());
    ColourSubColumn other;
    other.apply_preferences_object(nullptr);
    other.apply_preferences_object(prefs.get());
    EXPECT_EQ(other.inq_colour_interp_mode(), ColourSubColumn::CMY_INTERP);
}

TEST(ColourSubColumn, goes_to_the_output_profile_when_it_is_read)
{
    const TempFolder folder;
    const std::string screen = folder.path("screen.icc").str();
    const std::string swap = folder.path("swap.icc").str();
    folder.write("screen.icc", as_text(take_data(cmsCreate_sRGBProfile())));
    folder.write("swap.icc", as_text(take_data(make_swapping_profile())));
    auto colours = std::make_unique<RedToBlue>(int{ColourSubColumn::RGB_INTERP});
    const auto expect_read = [&](const std::string& profile, const KIVColour& first) {
        const auto read = stored_and_read(colours->column);
        ASSERT_TRUE(read);
        for (int times = 0; times < 2; ++times) // the second time it is there already
            EXPECT_FALSE(read->load_finished_with_abort());
        EXPECT_EQ(read->inq_profile(), profile.c_str());
        for (const auto& [got, wanted] :
             {std::pair{read->inq_colour(1), first}, {read->inq_colour(3), BLUE}}) {
            EXPECT_NEAR(got.inq_red(), wanted.inq_red(), 0.002);
            EXPECT_NEAR(got.inq_green(), wanted.inq_green(), 0.002);
            EXPECT_NEAR(got.inq_blue(), wanted.inq_blue(), 0.002);
        }
    };
    {
        const OutputProfile output(swap);
        expect_read("", RED);
    }
    {
        const OutputProfile output(screen);
        colours = std::make_unique<RedToBlue>(int{ColourSubColumn::RGB_INTERP});
    }
    expect_read(screen, RED);
    const OutputProfile output(swap);
    expect_read(swap, KIVColour(0.0, 1.0, 0.0));
    folder.write("screen.icc", "no profile any more");
    inq_colour_manager()->set_output_profile_path("");
    inq_colour_manager()->set_output_profile_path(swap.c_str());
    expect_read(screen, RED);
}

TEST(ColourSubColumn, reads_old_forms)
{
    for (const int version : {107, 108, 121, 122, 127}) {
        OldRecord record("ColourSubColumn", version);
        tell_column(record, version);
        if (version >= 108)
            record << KIVString("film.icm");
        const auto column = record.read<ColourSubColumn>();
        ASSERT_TRUE(column) << version;
        EXPECT_EQ(column->inq_order(), version < 122 ? 1 : 3) << version;
        EXPECT_EQ(column->inq_colour_interp_mode(), 7);
        EXPECT_EQ(column->inq_profile(), version < 108 ? "" : "film.icm") << version;
    }
}
