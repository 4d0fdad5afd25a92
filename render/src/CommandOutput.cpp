#include "render/hdr/CommandOutput.h"

#include "kivlib/hdr/ConsoleOStream.h"
#include "render/hdr/OutputFileType.h"

#include <climits>
#include <cstdlib>
#include <unistd.h>

namespace {
constexpr std::size_t WORKING_DIRECTORY_ROOM = 256;

/// Empty if it can't be read or is too long.
KIVString read_working_directory()
{
    char folder[WORKING_DIRECTORY_ROOM];
    return ::getcwd(folder, sizeof folder) ? folder : "";
}

KIVString our_start_directory;

constexpr const char* USAGE[] = {
    "\nUsage: CMontaray output_type [options] scene_file\n\n",
    "output_type must be 'image'.\n\n",
    "Options available are:\n",
    "-pal  \t\t - preset sizes.\n",
    "-ntsc\n-replay\n-film\n-slide\n-academy\n-academy_cineon\n-cinemascope_cineon\n"
    "-fullaperture_cineon\n-vistavision_cineon\n\n",
    "-width n \t - specify dimensions.  \n-height n \n",
    "-par n \t\t - specify pixel aspect ratio.\n\n",
    "-color file \t - specify color profile to use.\n\n",
    "-tiff \t\t - specify file type (for disk / urf option)\n",
    "-tiffuncompressed \n-tiff16 \n-tga \n-pict\n-yuv625 \n-yuv525 \n-yiq625 \n-yiq525 \n"
    "-cineon_full \n-cineon_half \n\n",
    "-alias \t\t - render aliased.\n",
    "-low_quality_ink_paint \t - render ink & paint frames at a lower quality, which is faster.\n ",
    "-transparent \t - render with alpha.\n",
    "-gamma n \t - specify the gamma value.\n",
    "-tv \t\t - interlace flicker removal filter.\n",
    "-silent \t - do not display messages.\n",
    "-verbose \t - do display messages.\n",
    "-o dir_name \t - specifies the directory to output to for render.\n\n",
    "Notes:\n",
    "The default is all frames.\n",
    "Ranges should be one of the forms: n n-m -n or n- \n",
    "Redundant arguments are ignored.\n",
    "Any argument may be shortened, as long as it remains unambiguous.\n\n",
    "Alternative Usage: CMontaray list_refs [-1] scene_file\n",
    "This lists the files which the given scene references.  If the -1 argument \n"
    "is present, then only the directly referenced files are listed.  \n"
    "If -1 is not present, indirectly referenced files are listed.\n\n",
};

void print_usage()
{
    for (const char* piece : USAGE)
        *coutp << piece;
}

struct Ambiguity {
    const char* argument;
    const char* message;
};
constexpr Ambiguity AMBIGUITIES[] = {
    {"-a", "Ambiguous argument -a: -alias or -academy or -academy_cineon Output aborted.\n"},
    {"-t", "Ambiguous argument -t: -tiff or -tiffuncompressed or -tga or -transparent or -tv - "
           "Output aborted.\n"},
    {"-p", "Ambiguous argument -p: -pal or -par - Output aborted.\n"},
    {"-pa", "Ambiguous argument -pa: -pal or -par - Output aborted.\n"},
    {"-s", "Ambiguous argument -s: -silent or -slide - Output aborted.\n"},
    {"-sl", "Ambiguous argument -sl: -slate or -slide - Output aborted.\n"},
};

bool is_prefix(std::string_view argument, std::string_view name)
{
    return name.starts_with(argument);
}

struct Size {
    int width, height;
    double pixel_aspect;
};

void use_size(OutputSettings& settings, const Size& size)
{
    settings.width = size.width;
    settings.height = size.height;
    settings.pixel_aspect = size.pixel_aspect;
    settings.width_given = settings.height_given = true;
}

struct CineonFormat {
    const char* name;
    int full_width, full_height; // half as much each way for the half form
};
constexpr CineonFormat CINEON_FORMATS[] = {
    {"academy", 3656, 2664},
    {"cinemascope", 3656, 3112},
    {"fullaperture", 4096, 3112},
    {"vistavision", 4096, 6144},
};
constexpr double CINEON_PIXEL_ASPECT = 1.5;

void use_cineon_size(OutputSettings& settings)
{
    const bool is_full = settings.file_type == CINEON_FULL_FILE;
    if (!is_full && settings.file_type != CINEON_HALF_FILE)
        return;
    const int divisor = is_full ? 1 : 2;
    for (const CineonFormat& format : CINEON_FORMATS)
        if (settings.cineon_format == format.name)
            use_size(settings, {format.full_width / divisor, format.full_height / divisor,
                                CINEON_PIXEL_ASPECT});
}

/// False unless the whole text is a decimal number.
bool read_int(const char* text, int& number)
{
    char* end = nullptr;
    number = static_cast<int>(std::clamp<long>(std::strtol(text, &end, 10), INT_MIN, INT_MAX));
    return end != text && *end == '\0';
}

bool read_double(const char* text, double& number)
{
    char* end = nullptr;
    number = std::strtod(text, &end);
    return end != text && *end == '\0' && std::isfinite(number);
}
} // namespace

/// Takes the options of a command line one by one into the settings.
class ArgumentReader {
public:
    ArgumentReader(CommandOutput& output, int argc, char* const argv[])
        : output(output), settings(output.settings), argc(argc), argv(argv)
    {}

    int read_options()
    {
        for (index = 2; index < argc - 1; ++index)
            if (!read_option(argv[index]))
                return CommandOutput::BAD_USAGE;
        return result;
    }

private:
    using Effect = void (*)(ArgumentReader&);
    struct Option {
        const char* name;
        Effect effect;
    };
    static const Option OPTIONS[];

    template <auto Field, auto Value> static void set(ArgumentReader& reader)
    {
        reader.settings.*Field = Value;
    }
    template <int Width, int Height> static void use_preset(ArgumentReader& reader, double aspect)
    {
        use_size(reader.settings, {Width, Height, aspect});
    }
    static void use_academy(ArgumentReader& reader) { use_preset<1814, 1318>(reader, 1.0); }
    static void reject(ArgumentReader& reader) { reader.result = CommandOutput::BAD_USAGE; }

    /// False if the argument ends the reading.
    bool read_option(const char* argument)
    {
        if (*argument == '\0' || std::string_view(argument) == "-")
            return true;
        for (const Ambiguity& ambiguity : AMBIGUITIES)
            if (std::string_view(argument) == ambiguity.argument) {
                say(ambiguity.message);
                return false;
            }
        use_option(argument);
        return true;
    }

    /// The first name that the argument begins wins.
    void use_option(const char* argument);

    void say(const KIVString& message) const
    {
        if (!settings.silent)
            *coutp << message;
    }

    /// The argument behind the option, or null, and a word, where the scene file stands next.
    const char* take_value(const char* message_if_missing)
    {
        if (index == argc - 2) {
            say(message_if_missing);
            return nullptr;
        }
        return argv[++index];
    }

    void say_invalid(const char* option, const char* value) const
    {
        say(KIVString("Invalid argument to ") + option + ": " + value + " ignored.\n");
    }

    void read_size(const char* option, const char* missing, int& size, bool& is_given, int normal)
    {
        const char* value = take_value(missing);
        if (!value)
            return;
        int number = 0;
        if (read_int(value, number) && number != 0) {
            size = number;
            is_given = true;
        } else {
            say_invalid(option, value);
            size = normal;
        }
    }
    static void read_width(ArgumentReader& r)
    {
        r.read_size("-width", "No value specified for width option.\n", r.settings.width,
                    r.settings.width_given, OutputSettings().width);
    }
    static void read_height(ArgumentReader& r)
    {
        r.read_size("-height", "No value specified for height option.\n", r.settings.height,
                    r.settings.height_given, OutputSettings().height);
    }

    static void read_pixel_aspect(ArgumentReader& r)
    {
        constexpr double LEAST = 0.001;
        const char* value = r.take_value("No value specified for par option.\n");
        if (!value)
            return;
        double& aspect = r.settings.pixel_aspect;
        if (!read_double(value, aspect) || aspect < LEAST) {
            r.say_invalid("-par", value);
            aspect = 1.0;
        }
    }

    static void read_gamma(ArgumentReader& r)
    {
        constexpr double LEAST = 0.1;
        constexpr double MOST = 10.0;
        const char* value = r.take_value("No value specified for gamma option.\n");
        if (!value)
            return;
        double gamma = 0.0;
        if (!read_double(value, gamma) || gamma < LEAST || gamma > MOST) {
            r.say_invalid("-gamma", value);
            gamma = 0.0;
        }
        r.settings.gamma = static_cast<float>(gamma);
    }

    // A path is taken as it stands after a backslash here and after a slash there.
    static void read_output_dir(ArgumentReader& r)
    {
        const char* value = r.take_value("No path specified for -o option.\n");
        if (!value)
            return;
        KIVString folder = *value == '\\' ? "" : read_working_directory();
        r.settings.output_dir = folder.is_null() ? value : folder.append_path(value);
    }

    static void read_colour_profile(ArgumentReader& r)
    {
        const char* value = r.take_value("No path specified for -color option.\n");
        if (!value)
            return;
        const KIVString folder = *value == '/' ? "" : read_working_directory();
        r.settings.colour_profile = folder.is_null() ? KIVString(value) : folder + "/" + value;
    }

    CommandOutput& output;
    OutputSettings& settings;
    int argc;
    char* const* argv;
    int index = 0;
    int result = CommandOutput::SUCCESS;
};

/// In the order of their trial, on which the meaning of a short form rests.
const ArgumentReader::Option ArgumentReader::OPTIONS[] = {
    {"-pal", [](ArgumentReader& r) { use_preset<720, 576>(r, 1.0666667); }},
    {"-ntsc", [](ArgumentReader& r) { use_preset<720, 486>(r, 0.9); }},
    {"-transparent", set<&OutputSettings::transparent, true>},
    {"-academy", use_academy},
    {"-film", use_academy},
    {"-academy_cineon", [](ArgumentReader& r) { r.settings.cineon_format = "academy"; }},
    {"-cinemascope_cineon", [](ArgumentReader& r) { r.settings.cineon_format = "cinemascope"; }},
    {"-fullaperture_cineon", [](ArgumentReader& r) { r.settings.cineon_format = "fullaperture"; }},
    {"-vistavision_cineon", [](ArgumentReader& r) { r.settings.cineon_format = "vistavision"; }},
    {"-replay", [](ArgumentReader& r) { use_preset<400, 300>(r, 1.0); }},
    {"-slide", [](ArgumentReader& r) { use_preset<2048, 1366>(r, 1.0); }},
    {"-o", read_output_dir},
    {"-alias", set<&OutputSettings::anti_alias, false>},
    {"-low_quality_ink_paint", set<&OutputSettings::low_quality_ink_paint, true>},
    {"-slate", reject},
    {"-clapper", reject},
    {"-key_range", set<&OutputSettings::key_range, true>},
    {"-silent", set<&OutputSettings::silent, true>},
    {"-verbose", set<&OutputSettings::silent, false>},
    {"-width", read_width},
    {"-height", read_height},
    {"-par", read_pixel_aspect},
    {"-color", read_colour_profile},
    {"-gamma", read_gamma},
    {"-tv", set<&OutputSettings::tv_filter, true>},
    {"-interlace", set<&OutputSettings::interlace, true>},
    {"-tiff", set<&OutputSettings::file_type, TIFF_FILE>},
    {"-tiffuncompressed", set<&OutputSettings::file_type, TIFF_UNCOMPRESSED_FILE>},
    {"-tga", set<&OutputSettings::file_type, TARGA_FILE>},
    {"-yuv625", set<&OutputSettings::file_type, YUV_625_FILE>},
    {"-yuv525", set<&OutputSettings::file_type, YUV_525_FILE>},
    {"-yiq625", set<&OutputSettings::file_type, YIQ_625_FILE>},
    {"-yiq525", set<&OutputSettings::file_type, YIQ_525_FILE>},
    {"-pict", set<&OutputSettings::file_type, PICT_FILE>},
    {"-tiff16", set<&OutputSettings::file_type, TIFF_16_FILE>},
    {"-cineon_full", set<&OutputSettings::file_type, CINEON_FULL_FILE>},
    {"-cineon_half", set<&OutputSettings::file_type, CINEON_HALF_FILE>},
    {"-no_output", set<&OutputSettings::file_type, NO_FILE>},
};

void ArgumentReader::use_option(const char* argument)
{
    for (const Option& option : OPTIONS)
        if (is_prefix(argument, option.name)) {
            option.effect(*this);
            return;
        }
    output.other_arguments.emplace_back(argument);
    output.parse_limits_argument(argument, &settings.first_frame, &settings.last_frame);
}

CommandOutput::CommandOutput()
{
    our_start_directory = read_working_directory();
}

// "5x" is reported as ignored and yet means "from 5 on"; "-10" is a negative number, which selects
// all frames.
bool CommandOutput::parse_limits_argument(const char* argument, int* first, int* last)
{
    char* rest = nullptr;
    int from = static_cast<int>(std::strtoul(argument, &rest, 10));
    int to = 0;
    bool is_clean = *rest == '\0';
    if (is_clean) {
        to = from;
    } else if (*rest == '-') {
        to = static_cast<int>(std::strtoul(rest + 1, &rest, 10));
        is_clean = *rest == '\0';
        if (!is_clean)
            from = to = 0;
    }
    if (!is_clean && !settings.silent)
        *coutp << "Invalid argument: " << argument << " ignored.\n";
    if (from == 0 && to == 0)
        return false;
    *first = from;
    *last = to;
    return true;
}

namespace {
KIVString without_quotes(std::string_view path)
{
    if (path.size() >= 2 && path.front() == '"' && path.back() == '"')
        path = path.substr(1, path.size() - 2);
    return path;
}
} // namespace

int CommandOutput::use_command_line_args(int argc, char* const argv[])
{
    constexpr int LEAST_ARGUMENTS = 3;
    if (argc < LEAST_ARGUMENTS) {
        if (!settings.silent)
            print_usage();
        return BAD_USAGE;
    }
    int result = ArgumentReader(*this, argc, argv).read_options();
    if (result == SUCCESS && std::string_view(argv[1]) != "image")
        result = NOT_AN_IMAGE;
    settings.scene_file = without_quotes(argv[argc - 1]);
    if (result != BAD_USAGE)
        use_cineon_size(settings);
    return result;
}
