#include "render/hdr/CommandOutput.h"
#include "tests/support/Captured.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>
#include <sstream>

namespace {
struct Parsed {
    int result;
    OutputSettings settings;
    std::string said;
};

/// Parses `CMontaray <words>`, split at blanks.
Parsed run(const std::string& words)
{
    std::vector<std::string> texts{"CMontaray"};
    std::istringstream split(words);
    for (std::string word; split >> word;)
        texts.push_back(word);
    std::vector<char*> argv;
    for (std::string& text : texts)
        argv.push_back(text.data());

    const Captured captured;
    CommandOutput output;
    const int result = output.use_command_line_args(static_cast<int>(argv.size()), argv.data());
    return {result, output.inq_settings(), captured.inq_output()};
}

Parsed image(const std::string& options)
{
    return run("image " + options + " scene");
}
} // namespace

TEST(Arguments, too_few_give_the_usage)
{
    const Parsed r = run("image");
    EXPECT_EQ(r.result, 204);
    EXPECT_EQ(r.said.find("\nUsage: CMontaray output_type [options] scene_file\n\n"), 0U);
    EXPECT_NE(r.said.find("-o dir_name \t - specifies the directory to output to for render.\n\n"
                          "Notes:\nThe default is all frames.\n"),
              std::string::npos);
    EXPECT_TRUE(r.said.ends_with("If -1 is not present, indirectly referenced files are "
                                 "listed.\n\n"));
}

TEST(Arguments, take_the_scene_out_of_its_quotes_whatever_the_result)
{
    EXPECT_TRUE(run("image \"scene\"").settings.scene_file == "scene");
    EXPECT_TRUE(run("image -a \"scene\"").settings.scene_file == "scene");
    EXPECT_TRUE(run("picture \"scene").settings.scene_file == "\"scene");
    EXPECT_EQ(run("picture scene").result, 201);
    EXPECT_EQ(run("picture scene").said, "");
    EXPECT_EQ(run("picture -slate scene").result, 204);
}

TEST(Arguments, ambiguous_short_forms_abort)
{
    const std::pair<const char*, const char*> forms[] = {
        {"-a", "Ambiguous argument -a: -alias or -academy or -academy_cineon Output aborted.\n"},
        {"-t", "Ambiguous argument -t: -tiff or -tiffuncompressed or -tga or -transparent or -tv "
               "- Output aborted.\n"},
        {"-p", "Ambiguous argument -p: -pal or -par - Output aborted.\n"},
        {"-pa", "Ambiguous argument -pa: -pal or -par - Output aborted.\n"},
        {"-s", "Ambiguous argument -s: -silent or -slide - Output aborted.\n"},
        {"-sl", "Ambiguous argument -sl: -slate or -slide - Output aborted.\n"},
    };
    for (const auto& [form, message] : forms) {
        const Parsed r = image(std::string(form) + " -pal");
        EXPECT_EQ(r.result, 204);
        EXPECT_EQ(r.said, message);
        EXPECT_EQ(r.settings.width, 400) << "what follows is not looked at";
        EXPECT_EQ(image("-silent " + std::string(form)).said, "");
    }
    EXPECT_NE(image("-a -silent").said, "");
}

TEST(Arguments, short_forms_mean_the_first_option_they_begin)
{
    EXPECT_TRUE(image("-c").settings.cineon_format == "cinemascope");
    EXPECT_TRUE(image("-cine").settings.cineon_format == "cinemascope");
    EXPECT_EQ(image("-f").settings.width, 1814);
    EXPECT_EQ(image("-n").settings.height, 486);
    EXPECT_TRUE(image("-v").settings.cineon_format == "vistavision");
    EXPECT_EQ(image("-y").settings.file_type, 4);
    EXPECT_EQ(image("-ti").settings.file_type, 0);
    EXPECT_EQ(image("-tiffu").settings.file_type, 1);
    EXPECT_EQ(image("-no").settings.file_type, -1);
    EXPECT_TRUE(image("-tr").settings.transparent);
    EXPECT_EQ(image("-academy").settings.width, 1814);
    EXPECT_EQ(image("-academy_").settings.width, 400);
    EXPECT_TRUE(image("-academy_").settings.cineon_format == "academy");
    EXPECT_EQ(image("-").said, "");
}

TEST(Arguments, presets_fix_size_and_aspect)
{
    struct Preset {
        const char* option;
        int width, height;
        double aspect;
    };
    const Preset presets[] = {{"-pal", 720, 576, 1.0666667},
                              {"-ntsc", 720, 486, 0.9},
                              {"-film", 1814, 1318, 1.0},
                              {"-replay", 400, 300, 1.0},
                              {"-slide", 2048, 1366, 1.0}};
    for (const Preset& p : presets) {
        const OutputSettings s = image(p.option).settings;
        EXPECT_EQ(s.width, p.width);
        EXPECT_EQ(s.height, p.height);
        EXPECT_EQ(s.pixel_aspect, p.aspect);
        EXPECT_TRUE(s.width_given && s.height_given);
    }
    EXPECT_EQ(image("-pal -width 100").settings.width, 100);
}

TEST(Arguments, file_types_have_their_numbers)
{
    const std::pair<const char*, int> types[] = {
        {"-tiff", 0},    {"-tiffuncompressed", 1}, {"-tga", 3},          {"-yuv625", 4},
        {"-yuv525", 5},  {"-yiq625", 7},           {"-yiq525", 8},       {"-pict", 9},
        {"-tiff16", 10}, {"-cineon_full", 11},     {"-cineon_half", 12}, {"-no_output", -1}};
    for (const auto& [option, number] : types)
        EXPECT_EQ(image(option).settings.file_type, number) << option;
}

TEST(Arguments, values_are_checked_and_consumed)
{
    Parsed r = image("-width 0 -height 12x");
    EXPECT_EQ(r.said, "Invalid argument to -width: 0 ignored.\n"
                      "Invalid argument to -height: 12x ignored.\n");
    EXPECT_EQ(r.settings.width, 400);
    EXPECT_FALSE(r.settings.width_given || r.settings.height_given);
    r = image("-width 640 -par 2.5 -gamma 0.1");
    EXPECT_EQ(r.settings.width, 640);
    EXPECT_TRUE(r.settings.width_given);
    EXPECT_EQ(r.settings.pixel_aspect, 2.5);
    EXPECT_EQ(r.settings.gamma, 0.1F);
    EXPECT_EQ(image("-gamma 10").settings.gamma, 10.0F);
    for (const char* bad : {"0.09", "10.1", "2a", "nan"}) {
        r = image(std::string("-gamma ") + bad);
        EXPECT_EQ(r.settings.gamma, 0.0F);
        EXPECT_EQ(r.said, std::string("Invalid argument to -gamma: ") + bad + " ignored.\n");
    }
    r = image("-par 3 -par 0.0009");
    EXPECT_EQ(r.settings.pixel_aspect, 1.0);
    EXPECT_EQ(image("-silent -par 0").said, "");
}

TEST(Arguments, a_last_option_has_no_value)
{
    const std::pair<const char*, const char*> options[] = {
        {"-width", "No value specified for width option.\n"},
        {"-height", "No value specified for height option.\n"},
        {"-par", "No value specified for par option.\n"},
        {"-gamma", "No value specified for gamma option.\n"},
        {"-o", "No path specified for -o option.\n"},
        {"-color", "No path specified for -color option.\n"}};
    for (const auto& [option, message] : options) {
        const Parsed r = image(option);
        EXPECT_EQ(r.result, 0);
        EXPECT_EQ(r.said, message);
        EXPECT_TRUE(r.settings.scene_file == "scene");
        EXPECT_TRUE(r.settings.output_dir.is_null());
    }
}

TEST(Arguments, paths_start_from_the_working_directory)
{
    const TempFolder folder;
    std::filesystem::current_path(folder.path().str());
    EXPECT_TRUE(image("-o out").settings.output_dir == folder.path("out"));
    EXPECT_TRUE(image("-o /abs/out").settings.output_dir == "/abs/out");
    EXPECT_TRUE(image("-o \\share").settings.output_dir == "\\share");
    EXPECT_TRUE(image("-color p.icc").settings.colour_profile == folder.path("p.icc"));
    EXPECT_TRUE(image("-color /p.icc").settings.colour_profile == "/p.icc");
}

TEST(Arguments, slate_and_clapper_refuse_but_read_on)
{
    const Parsed r = image("-slate -bogus 7");
    EXPECT_EQ(r.result, 204);
    EXPECT_EQ(r.said, "Invalid argument: -bogus ignored.\n");
    EXPECT_EQ(r.settings.first_frame, 7);
    EXPECT_EQ(image("-clapper").result, 204);
    EXPECT_EQ(image("-clapper").said, "");
}

TEST(Arguments, ranges)
{
    struct Range {
        const char* argument;
        int first, last;
        bool is_reported;
    };
    const Range ranges[] = {
        {"5", 5, 5, false},       {"5-9", 5, 9, false},    {"5-", 5, 0, false},
        {"-10", -10, -10, false}, {"5x", 5, 0, true},      {"5-9x", -1, -1, true},
        {"0", -1, -1, false},     {"bogus", -1, -1, true}, {"2-3 8", 8, 8, false}};
    for (const Range& range : ranges) {
        const Parsed r = image(range.argument);
        EXPECT_EQ(r.settings.first_frame, range.first) << range.argument;
        EXPECT_EQ(r.settings.last_frame, range.last) << range.argument;
        const std::string report =
            std::string("Invalid argument: ") + range.argument + " ignored.\n";
        EXPECT_EQ(r.said, range.is_reported ? report : "") << range.argument;
        EXPECT_EQ(r.result, 0);
    }
    EXPECT_EQ(image("-silent bogus").said, "");
}

TEST(Arguments, cineon_sizes_come_last_and_for_cineon_alone)
{
    struct Form {
        const char* options;
        int width, height;
    };
    const Form forms[] = {{"-academy_cineon -cineon_full -width 100", 3656, 2664},
                          {"-academy_cineon -cineon_half", 1828, 1332},
                          {"-cinemascope_cineon -cineon_full", 3656, 3112},
                          {"-fullaperture_cineon -cineon_half", 2048, 1556},
                          {"-vistavision_cineon -cineon_full", 4096, 6144}};
    for (const Form& form : forms) {
        const OutputSettings s = image(form.options).settings;
        EXPECT_EQ(s.width, form.width);
        EXPECT_EQ(s.height, form.height);
        EXPECT_EQ(s.pixel_aspect, 1.5);
        EXPECT_TRUE(s.width_given && s.height_given);
    }
    EXPECT_EQ(image("-academy_cineon").settings.width, 400);
    EXPECT_EQ(image("-cineon_full").settings.width, 400);
    EXPECT_EQ(run("picture -academy_cineon -cineon_full scene").settings.width, 3656);
    EXPECT_EQ(image("-academy_cineon -cineon_full -slate").settings.width, 400);
}
