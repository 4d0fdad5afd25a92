#include "frontend/CMontaray/Options.h"

#include "frontend/CMontaray/exit_codes.h"
#include "render/hdr/CommandOutput.h"

#include <charconv>
#include <cstring>
#include <iostream>

const char* const OPTIONS_HELP =
    "CMontaray renders the frames of a scene, or lists the files that it refers to.\n"
    "\n"
    "  CMontaray image [options] scene_file\n"
    "  CMontaray list_refs [-1] [--json] [--check] scene_file\n"
    "\n"
    "  --frames LIST        frames to render, such as 1-10,20,30-60x2\n"
    "  --clamp              frames past the end of the scene are left out, and no mistake\n"
    "  --skip-existing      frames whose files are there already are not rendered again\n"
    "  --strict             exit code 221 if a frame, a picture or a file was left out\n"
    "  --jobs N             N processes share the frames\n"
    "  --dry-run            tells what would be rendered and what is missing\n"
    "  --progress           tells on the error console how far the run is\n"
    "  --log-jsonl FILE     adds a JSON object to FILE for all that happens\n"
    "  --format png|png16   PNG files, of 8 or 16 bits\n"
    "  --tiff-compression deflate|lzw   of -tiff; lzw is for old readers\n"
    "  --json               of list_refs: as JSON\n"
    "  --check              of list_refs: with sizes; exit code 222 if a file is missing\n"
    "  --help  --version\n"
    "\n"
    "Most other options are told by CMontaray without any argument.\n";

namespace {
constexpr int MOST_JOBS = 256;

struct Switch {
    const char* name;
    bool Options::*field;
};
constexpr Switch SWITCHES[] = {
    {"--help", &Options::help},         {"--version", &Options::version},
    {"--clamp", &Options::clamp},       {"--skip-existing", &Options::skip_existing},
    {"--strict", &Options::strict},     {"--dry-run", &Options::dry_run},
    {"--progress", &Options::progress}, {"--json", &Options::json},
    {"--check", &Options::check},
};

/// Null if there is no switch of the name.
const Switch* find_switch(const std::string& name)
{
    for (const Switch& entry : SWITCHES)
        if (name == entry.name)
            return &entry;
    return nullptr;
}
} // namespace

bool Options::refuse(int code, const std::string& reason)
{
    std::cerr << "CMontaray: " << reason << '\n';
    mistake = code;
    return false;
}

bool Options::read(int argc, char** argv)
{
    bool has_ended = false;
    for (int i = 0; i < argc; ++i) {
        const std::string_view word = argv[i];
        if (i == 0 || has_ended || !word.starts_with("--")) {
            words.push_back(argv[i]);
            continue;
        }
        if (word == "--") {
            has_ended = true;
            continue;
        }
        const char* const sign = std::strchr(argv[i], '=');
        const std::string name(word.substr(0, sign ? word.find('=') : word.size()));
        names.push_back(name);
        if (find_switch(name)) {
            if (!read_switch(name, sign))
                return false;
            continue;
        }
        const char* const value = sign ? sign + 1 : i + 1 < argc ? argv[i + 1] : nullptr;
        if (!read_value(name, value))
            return false;
        i += sign ? 0 : 1;
    }
    return true;
}

bool Options::read_switch(const std::string& name, bool has_value)
{
    this->*find_switch(name)->field = true;
    return !has_value || refuse(CommandOutput::BAD_USAGE, name + " takes no value.");
}

bool Options::check_form(bool is_list)
{
    for (const std::string& name : names) {
        const bool is_of_list = name == "--json" || name == "--check";
        if (is_of_list != is_list)
            return refuse(CommandOutput::BAD_USAGE,
                          name + " is no option of " + (is_list ? "list_refs." : "image."));
    }
    return true;
}

bool Options::read_value(const std::string& name, const char* value)
{
    struct Valued {
        const char* name;
        bool (Options::*read)(const std::string& value);
    };
    constexpr Valued VALUED[] = {
        {"--frames", &Options::read_frames},
        {"--jobs", &Options::read_jobs},
        {"--log-jsonl", &Options::read_log_file},
        {"--format", &Options::read_format},
        {"--tiff-compression", &Options::read_tiff_compression},
    };
    for (const Valued& option : VALUED)
        if (name == option.name)
            return value ? (this->*option.read)(value)
                         : refuse(CommandOutput::BAD_USAGE, name + " needs a value.");
    return refuse(CommandOutput::BAD_USAGE, "There is no option " + name + ".");
}

bool Options::read_frames(const std::string& value)
{
    frames = FrameList::parse(value);
    return frames || refuse(BAD_FRAME_LIST, "'" + value + "' is no list of frames.");
}

bool Options::read_jobs(const std::string& value)
{
    const char* const end = value.data() + value.size();
    const auto read = std::from_chars(value.data(), end, jobs);
    const bool is_good =
        read.ec == std::errc() && read.ptr == end && jobs >= 1 && jobs <= MOST_JOBS;
    return is_good || refuse(CommandOutput::BAD_USAGE,
                             "--jobs needs a number from 1 to " + std::to_string(MOST_JOBS) + ".");
}

bool Options::read_log_file(const std::string& value)
{
    log_file = value;
    return !value.empty() || refuse(CommandOutput::BAD_USAGE, "--log-jsonl needs a file.");
}

bool Options::read_format(const std::string& value)
{
    if (value == "png")
        file_type = PNG_FILE;
    else if (value == "png16")
        file_type = PNG_16_FILE;
    return file_type || refuse(CommandOutput::BAD_USAGE, "There is no format '" + value + "'.");
}

bool Options::read_tiff_compression(const std::string& value)
{
    if (value == "lzw")
        tiff_compression = TiffCompression::LZW;
    else if (value == "deflate")
        tiff_compression = TiffCompression::DEFLATE;
    else
        return refuse(CommandOutput::BAD_USAGE, "TIFF has no compression '" + value + "' here.");
    return true;
}
