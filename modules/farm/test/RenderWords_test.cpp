#include "modules/farm/hdr/RenderWords.h"
#include "modules/farm/hdr/option_words.h"
#include "tests/support/Captured.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <stdexcept>

namespace {
using Words = std::vector<std::string>;

std::string refusal_of(const std::string& line)
{
    try {
        RenderWords::read(line, 1.0);
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "";
}
} // namespace

TEST(option_words, are_split_as_a_shell_does_and_joined_again)
{
    const Words words{"-o", "a b", "it's", "", "\\\"$x", "*"};
    EXPECT_EQ(split_words("  -o 'a b' it\\'s \"\" \"\\\\\\\"\\$x\" *\n"), words);
    EXPECT_EQ(split_words(join_words(words)), words);
    EXPECT_EQ(split_words("a\"b c\"'d'"), Words{"ab cd"});
    for (const char* line : {"-o 'a", "\"a", "a\\"})
        EXPECT_FALSE(split_words(line)) << line;
}

TEST(RenderWords, refuses_what_makes_no_render_job)
{
    const Captured captured;
    const std::pair<const char*, const char*> cases[] = {
        {"", "needs options"},
        {"-tga -o", "needs an output folder"},
        {"-o 'x", "not closed"},
        {"-o ''", "empty"},
        {"-o x 5-9", "such as 5-9"},
        {"-o x -7", "such as -7"},
        {"-o x 5k", "such as 5k"},
        {"-o x --frames 1-2", "such as --frames"},
        {"--frames=3 -o x", "such as --frames"},
        {"-o x --clamp", "such as --clamp"},
        {"-o x -transparant", "-transparant is no option"},
        {"-o x --dry-run", "--dry-run is no option of a render job"},
        {"-o x --chunk 0", "from 1 to"},
        {"-o x --chunk", "needs a value"},
        {"-o x --format gif", "--format can not be gif"},
        {"-o x -no_output", "can not be written"},
        {"-o x -a", "code 204"},
    };
    for (const auto& [line, reason] : cases)
        EXPECT_NE(refusal_of(line).find(reason), std::string::npos)
            << line << ": " << refusal_of(line);
}

TEST(RenderWords, have_one_form_for_all_words_that_mean_the_same)
{
    const RenderWords words = RenderWords::read(
        "-wid 960 -o sub/../frames -ti -color p.icc -gamma 0.9 -transparent --chunk 4", 1.6);
    const std::string here = std::filesystem::current_path();
    EXPECT_EQ(words.options, (Words{"-tiff", "-width", "960", "-color", here + "/p.icc", "-gamma",
                                    "0.8999999761581421", "-transparent"}));
    EXPECT_EQ(words.output, here + "/frames");
    EXPECT_EQ(words.extension, ".tif");
    EXPECT_EQ(std::pair(words.width, words.height), std::pair(960, 600));
    EXPECT_EQ(words.chunk_size, 4);

    const Words long_form = RenderWords::read("-o x --format=png16 --strict -pal", 1.0).options;
    EXPECT_EQ(long_form,
              RenderWords::read("--strict -key -sil -pal -o /y --format png16", 1.0).options);
    EXPECT_EQ(RenderWords::read("-sil -tv -yuv625 -o x", 1.0).options,
              (Words{"-yuv625", "-tv", "-silent"}));
    EXPECT_EQ(RenderWords::read("-academy_cineon -cineon_half -o x", 1.0).options,
              (Words{"-cineon_half", "-academy_cineon", "-width", "1828", "-height", "1332", "-par",
                     "1.5"}));
}
