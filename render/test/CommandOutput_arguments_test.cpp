#include "kivlib/hdr/file_operations.h"
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

/// Parses `CMontaray <words>`, split at blanks; `''` is the empty word.
Parsed run(const std::string& words)
{
    std::vector<std::string> texts{"CMontaray"};
    std::istringstream split(words);
    for (std::string word; split >> word;)
        texts.push_back(word == "''" ? "" : word);
    std::vector<char*> argv;
    for (std::string& text : texts)
        argv.push_back(text.data());

    const Captured captured;
    CommandOutput output;
    const int result = output.use_command_line_args(static_cast<int>(argv.size()), argv.data());
    return {result, output.inq_settings(), captured.inq_output()};
}

/// What differs from the settings at the start, in the order of the settings.
std::string changes(const OutputSettings& s)
{
    const OutputSettings old;
    std::ostringstream out;
    const auto tell = [&out](const char* name, const auto& now, const auto& before) {
        if (!(now == before))
            out << name << '=' << now << ' ';
    };
    tell("first", s.first_frame, old.first_frame);
    tell("last", s.last_frame, old.last_frame);
    tell("width", s.width, old.width);
    tell("height", s.height, old.height);
    tell("aspect", s.pixel_aspect, old.pixel_aspect);
    tell("profile", s.colour_profile.str(), old.colour_profile.str());
    tell("gamma", s.gamma, old.gamma);
    tell("dir", s.output_dir.str(), old.output_dir.str());
    tell("anti_alias", s.anti_alias, old.anti_alias);
    tell("key_range", s.key_range, old.key_range);
    tell("silent", s.silent, old.silent);
    tell("low_quality", s.low_quality_ink_paint, old.low_quality_ink_paint);
    tell("tv", s.tv_filter, old.tv_filter);
    tell("interlace", s.interlace, old.interlace);
    tell("type", s.file_type, old.file_type);
    tell("transparent", s.transparent, old.transparent);
    tell("format", s.cineon_format.str(), old.cineon_format.str());
    if (s.width_given || s.height_given)
        out << "given=" << (s.width_given ? "w" : "") << (s.height_given ? "h" : "") << ' ';
    std::string text = out.str();
    if (!text.empty())
        text.pop_back();
    return text;
}

struct Row {
    const char* options;
    const char* changes; // in a result of 0 unless `result` says otherwise
    const char* said = "";
    int result = 0;
};

constexpr Row ROWS[] = {
    {"", ""},
    {"'' -", ""},

    // presets; later options override earlier ones
    {"-pal", "width=720 height=576 aspect=1.06667 given=wh"},
    {"-ntsc", "width=720 height=486 aspect=0.9 given=wh"},
    {"-academy", "width=1814 height=1318 given=wh"},
    {"-film", "width=1814 height=1318 given=wh"},
    {"-pal -replay", "given=wh"},
    {"-slide", "width=2048 height=1366 given=wh"},
    {"-pal -width 100", "width=100 height=576 aspect=1.06667 given=wh"},

    // switches
    {"-key_range", "key_range=1"},
    {"-silent -verbose", ""},

    // types of files
    {"-tga -tiff", ""},
    {"-tga", "type=3"},
    {"-yuv525", "type=5"},
    {"-yiq525", "type=8"},

    // short forms: the first name that they begin
    {"-c", "format=cinemascope"},
    {"-cine", "format=cinemascope"},
    {"-cineon", "type=11"},
    {"-f", "width=1814 height=1318 given=wh"},
    {"-fu", "format=fullaperture"},
    {"-ac", "width=1814 height=1318 given=wh"},
    {"-academy_", "format=academy"},
    {"-n", "width=720 height=486 aspect=0.9 given=wh"},
    {"-no", "type=-1"},
    {"-v", "format=vistavision"},
    {"-ve -r", "given=wh"},
    {"-y", "type=4"},
    {"-yi", "type=7"},
    {"-pi", "type=9"},
    {"-ti", ""},
    {"-tiffu", "type=1"},
    {"-tiff1", "type=10"},
    {"-tr -al -l -k -i", "anti_alias=0 key_range=1 low_quality=1 interlace=1 transparent=1"},
    {"-w 3 -h 4", "width=3 height=4 given=wh"},

    // short forms that are refused, and end the reading
    {"-a -silent", "",
     "Ambiguous argument -a: -alias or -academy or -academy_cineon Output aborted.\n", 204},
    {"-t -pal", "",
     "Ambiguous argument -t: -tiff or -tiffuncompressed or -tga or -transparent or -tv - Output "
     "aborted.\n",
     204},
    {"-p -pal", "", "Ambiguous argument -p: -pal or -par - Output aborted.\n", 204},
    {"-pa -pal", "", "Ambiguous argument -pa: -pal or -par - Output aborted.\n", 204},
    {"-s -pal", "", "Ambiguous argument -s: -silent or -slide - Output aborted.\n", 204},
    {"-sl -pal", "", "Ambiguous argument -sl: -slate or -slide - Output aborted.\n", 204},
    {"-silent -a", "silent=1", "", 204},
    {"-silent -sl", "silent=1", "", 204},

    // refused, but read on
    {"-slate -bogus 7", "first=7 last=7", "Invalid argument: -bogus ignored.\n", 204},
    {"-clapper -tv", "tv=1", "", 204},

    // values, which are consumed even if they are wrong
    {"-width -5", "width=-5 given=w"},
    {"-width 640 -width 0", "given=w", "Invalid argument to -width: 0 ignored.\n"},
    {"-width 12x 7", "first=7 last=7", "Invalid argument to -width: 12x ignored.\n"},
    {"-height tv", "", "Invalid argument to -height: tv ignored.\n"},
    {"-par 0.001", "aspect=0.001"},
    {"-par 2.5 -par 0.0009", "", "Invalid argument to -par: 0.0009 ignored.\n"},
    {"-par 1.5.", "", "Invalid argument to -par: 1.5. ignored.\n"},
    {"-gamma 0.1", "gamma=0.1"},
    {"-gamma 10", "gamma=10"},
    {"-gamma 2 -gamma 0.09", "", "Invalid argument to -gamma: 0.09 ignored.\n"},
    {"-gamma 10.1", "", "Invalid argument to -gamma: 10.1 ignored.\n"},
    {"-gamma nan", "", "Invalid argument to -gamma: nan ignored.\n"},
    {"-silent -gamma 2a -par 0 -width x -height x bogus", "silent=1"},

    // paths: one is taken as it stands after a backslash, the other after a slash
    {"-o out", "dir=CWD/out"},
    {"-o /out", "dir=/out"},
    {"-o \\share", "dir=\\share"},
    {"-color p.icc", "profile=CWD/p.icc"},
    {"-color /p.icc", "profile=/p.icc"},

    // no value in the last place
    {"-width", "", "No value specified for width option.\n"},
    {"-height", "", "No value specified for height option.\n"},
    {"-par", "", "No value specified for par option.\n"},
    {"-gamma", "", "No value specified for gamma option.\n"},
    {"-o", "", "No path specified for -o option.\n"},
    {"-color", "", "No path specified for -color option.\n"},
    {"-silent -o", "silent=1"},

    // ranges
    {"5", "first=5 last=5"},
    {"5-9", "first=5 last=9"},
    {"5-", "first=5 last=0"},
    {"5 2-3", "first=2 last=3"},
    {"-10", "first=-10 last=-10"},
    {"0", ""},
    {"5 5-9x", "first=5 last=5", "Invalid argument: 5-9x ignored.\n"},
    {"5x", "first=5 last=0", "Invalid argument: 5x ignored.\n"},
    {"-tvx", "", "Invalid argument: -tvx ignored.\n"},

    // Cineon sizes come last, and for Cineon alone
    {"-academy_cineon", "format=academy"},
    {"-academy_cineon -cineon_full -width 100",
     "width=3656 height=2664 aspect=1.5 type=11 format=academy given=wh"},
    {"-academy_cineon -cineon_half",
     "width=1828 height=1332 aspect=1.5 type=12 format=academy given=wh"},
    {"-cinemascope_cineon -cineon_full",
     "width=3656 height=3112 aspect=1.5 type=11 format=cinemascope given=wh"},
    {"-cinemascope_cineon -cineon_half",
     "width=1828 height=1556 aspect=1.5 type=12 format=cinemascope given=wh"},
    {"-fullaperture_cineon -cineon_full",
     "width=4096 height=3112 aspect=1.5 type=11 format=fullaperture given=wh"},
    {"-fullaperture_cineon -cineon_half",
     "width=2048 height=1556 aspect=1.5 type=12 format=fullaperture given=wh"},
    {"-vistavision_cineon -cineon_full",
     "width=4096 height=6144 aspect=1.5 type=11 format=vistavision given=wh"},
    {"-vistavision_cineon -cineon_half",
     "width=2048 height=3072 aspect=1.5 type=12 format=vistavision given=wh"},
    {"-academy_cineon -cineon_full -slate", "type=11 format=academy", "", 204},
};
} // namespace

TEST(Arguments, do_what_the_table_says)
{
    const TempFolder folder;
    std::filesystem::current_path(folder.path().str());
    const std::string cwd = inq_working_directory().str();
    for (const Row& row : ROWS) {
        const Parsed r = run(std::string("image ") + row.options + " scene");
        std::string expected = row.changes;
        if (const std::size_t at = expected.find("CWD"); at != std::string::npos)
            expected.replace(at, 3, cwd);
        EXPECT_EQ(changes(r.settings), expected) << row.options;
        EXPECT_EQ(r.said, row.said) << row.options;
        EXPECT_EQ(r.result, row.result) << row.options;
        EXPECT_TRUE(r.result == 204 || r.settings.scene_file == "scene") << row.options;
    }
}

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
    const std::pair<const char*, int> lines[] = {{"image \"scene\"", 0},
                                                 {"image -a \"scene\"", 204},
                                                 {"picture \"scene\"", 201},
                                                 {"picture -slate scene", 204}};
    for (const auto& [words, result] : lines) {
        EXPECT_TRUE(run(words).settings.scene_file == "scene") << words;
        EXPECT_EQ(run(words).result, result) << words;
    }
    EXPECT_TRUE(run("image \"scene").settings.scene_file == "\"scene");
    EXPECT_EQ(run("picture -academy_cineon -cineon_full scene").settings.width, 3656);
}

TEST(CommandOutput, writes_no_type_that_is_not_given_out)
{
    for (const int type : {2, 6, 99}) {
        const Captured captured;
        EXPECT_EQ(CommandOutput().write_file("a", nullptr, type), 213);
        EXPECT_EQ(
            captured.inq_output(),
            "Unsupported file format, cannot write file\nCan not write file 'a', since failed "
            "to find image writer class ''\n");
    }
    EXPECT_EQ(CommandOutput().write_file("a", nullptr, -1), 1);
}
