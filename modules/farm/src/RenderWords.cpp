#include "modules/farm/hdr/RenderWords.h"

#include "imagelib/hdr/TiffCompression.h"
#include "kivlib/hdr/ConsoleOStream.h"
#include "kivlib/hdr/file_operations.h"
#include "modules/farm/hdr/option_words.h"
#include "render/hdr/CommandOutput.h"
#include "render/hdr/OutputFileType.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <stdexcept>

namespace {
constexpr int MOST_FRAMES_OF_A_CHUNK = 10000;

[[noreturn]] void refuse(const std::string& reason)
{
    throw std::runtime_error(reason);
}

/// Lets all that is said go to the error console.
class SaidAsError {
public:
    SaidAsError() : old_output(std::exchange(coutp, cerrp)) {}
    SaidAsError(const SaidAsError&) = delete;
    SaidAsError& operator=(const SaidAsError&) = delete;
    ~SaidAsError() { coutp = old_output; }

private:
    KIVOStream* old_output; // not owned
};

/// The words that begin with two hyphens, taken out of the others.
class LongOptions {
public:
    explicit LongOptions(const std::vector<std::string>& words)
    {
        for (std::size_t i = 0; i < words.size(); ++i)
            if (!words[i].starts_with("--"))
                others.push_back(words[i]);
            else
                take(words, i);
    }

    std::vector<std::string> others;
    bool is_strict = false;
    std::string tiff_compression; // empty: not told
    std::optional<int> file_type;
    std::optional<int> chunk_size;

private:
    void take(const std::vector<std::string>& words, std::size_t& i)
    {
        const std::size_t sign = words[i].find('=');
        const std::string name = words[i].substr(0, sign);
        if (name == "--strict" && sign == std::string::npos) {
            is_strict = true;
            return;
        }
        refuse_senseless(name);
        if (sign == std::string::npos && i + 1 == words.size())
            refuse(name + " needs a value.");
        take_value(name, sign == std::string::npos ? words[++i] : words[i].substr(sign + 1));
    }

    static void refuse_senseless(const std::string& name)
    {
        if (name == "--frames" || name == "--clamp")
            refuse("The options of a render job have no range of frames, such as " + name + ".");
        if (name != "--format" && name != "--tiff-compression" && name != "--chunk")
            refuse(name + " is no option of a render job.");
    }

    void take_value(const std::string& name, const std::string& value)
    {
        if (name == "--chunk")
            chunk_size = read_chunk_size(value);
        else if (name == "--format" && (value == "png" || value == "png16"))
            file_type = value == "png" ? PNG_FILE : PNG_16_FILE;
        else if (name == "--tiff-compression" && (value == "lzw" || value == "deflate"))
            tiff_compression = value;
        else
            refuse(name + " can not be " + value + ".");
    }

    static int read_chunk_size(const std::string& value)
    {
        const char* const end = value.data() + value.size();
        int size = 0;
        const auto read = std::from_chars(value.data(), end, size);
        if (read.ec != std::errc() || read.ptr != end || size < 1 || size > MOST_FRAMES_OF_A_CHUNK)
            refuse("--chunk needs a number from 1 to " + std::to_string(MOST_FRAMES_OF_A_CHUNK) +
                   ".");
        return size;
    }
};

bool is_number(const std::string& word)
{
    const std::size_t start = word.find_first_not_of(" \t\n+-");
    return start != std::string::npos && '0' <= word[start] && word[start] <= '9';
}

void refuse_other_words(const std::vector<KIVString>& words)
{
    for (const KIVString& word : words)
        if (is_number(word.str()))
            refuse("The options of a render job have no range of frames, such as " + word.str() +
                   ".");
        else
            refuse(word.str() + " is no option.");
}

std::vector<std::string> split(const std::string& line)
{
    const std::optional<std::vector<std::string>> words = split_words(line);
    if (!words)
        refuse("A quote of the options is not closed.");
    if (words->empty())
        refuse("A render job needs options, with an output folder behind -o among them.");
    if (std::ranges::count(*words, "") > 0)
        refuse("A word of the options is empty.");
    return *words;
}

/// The settings that the options make.
void read_settings(CommandOutput& output, const LongOptions& long_options)
{
    std::vector<std::string> words = long_options.others;
    words.insert(words.begin(), {"CMontaray", "image"});
    words.emplace_back("scene");
    std::vector<char*> arguments;
    for (std::string& word : words)
        arguments.push_back(word.data());
    const SaidAsError said;
    const int result =
        output.use_command_line_args(static_cast<int>(arguments.size()), arguments.data());
    if (result != CommandOutput::SUCCESS)
        refuse("The renderer refuses the options with code " + std::to_string(result) + ".");
    refuse_other_words(output.inq_other_arguments());
    if (output.inq_settings().output_dir.is_null())
        refuse("A render job needs an output folder, behind -o.");
    if (long_options.file_type)
        output.set_file_type(*long_options.file_type);
    if (output.inq_frame_path(1).is_null())
        refuse("Frames of this type can not be written.");
}

struct Flag {
    bool OutputSettings::*field;
    bool value;
    const char* option;
};
constexpr Flag FLAGS[] = {
    {&OutputSettings::anti_alias, false, "-alias"},
    {&OutputSettings::low_quality_ink_paint, true, "-low_quality_ink_paint"},
    {&OutputSettings::tv_filter, true, "-tv"},
    {&OutputSettings::interlace, true, "-interlace"},
    {&OutputSettings::transparent, true, "-transparent"},
};

struct TypeWords {
    int type;
    std::vector<std::string> words;
};
const std::vector<TypeWords> TYPE_WORDS = {
    {TIFF_FILE, {"-tiff"}},
    {TIFF_UNCOMPRESSED_FILE, {"-tiffuncompressed"}},
    {TARGA_FILE, {"-tga"}},
    {YUV_625_FILE, {"-yuv625"}},
    {YUV_525_FILE, {"-yuv525"}},
    {YIQ_625_FILE, {"-yiq625"}},
    {YIQ_525_FILE, {"-yiq525"}},
    {PICT_FILE, {"-pict"}},
    {TIFF_16_FILE, {"-tiff16"}},
    {CINEON_FULL_FILE, {"-cineon_full"}},
    {CINEON_HALF_FILE, {"-cineon_half"}},
    {PNG_FILE, {"--format", "png"}},
    {PNG_16_FILE, {"--format", "png16"}},
};

/// As short as a number can be that is read as the same one.
template <class Number> std::string inq_text(Number number)
{
    constexpr std::size_t ROOM = 64;
    char text[ROOM];
    return {text, std::to_chars(text, text + ROOM, number).ptr};
}

/// The option words that make these settings. The renderer's words don't matter, but in silence -tv
/// filters television's own formats as well.
std::vector<std::string> list_options(const OutputSettings& settings,
                                      const LongOptions& long_options)
{
    std::vector<std::string> words;
    const auto add = [&](const char* option, const std::string& value) {
        words.insert(words.end(), {option, value});
    };
    for (const TypeWords& entry : TYPE_WORDS)
        if (entry.type == settings.file_type)
            words = entry.words;
    if (!settings.cineon_format.is_null())
        words.push_back("-" + settings.cineon_format.str() + "_cineon");
    if (settings.width_given)
        add("-width", std::to_string(settings.width));
    if (settings.height_given)
        add("-height", std::to_string(settings.height));
    if (settings.pixel_aspect != 1.0)
        add("-par", inq_text(settings.pixel_aspect));
    if (!(settings.colour_profile == "none"))
        add("-color", inq_absolute_path(settings.colour_profile).str());
    if (settings.gamma != 0.0F)
        add("-gamma", inq_text(static_cast<double>(settings.gamma)));
    for (const Flag& flag : FLAGS)
        if (settings.*flag.field == flag.value)
            words.emplace_back(flag.option);
    if (settings.silent && settings.tv_filter)
        words.emplace_back("-silent");
    if (long_options.is_strict)
        words.emplace_back("--strict");
    if (long_options.tiff_compression == "lzw")
        words.insert(words.end(), {"--tiff-compression", "lzw"});
    return words;
}
} // namespace

RenderWords RenderWords::read(const std::string& line, double camera_aspect)
{
    const LongOptions long_options(split(line));
    CommandOutput output;
    read_settings(output, long_options);
    RenderWords words;
    words.options = list_options(output.inq_settings(), long_options); // as yet without all sizes
    output.complete_size(camera_aspect);
    const OutputSettings& settings = output.inq_settings();
    words.output = inq_absolute_path(settings.output_dir).str();
    words.extension = std::filesystem::path(output.inq_frame_path(1).str()).extension().string();
    words.width = settings.width;
    words.height = settings.height;
    if (!(settings.colour_profile == "none"))
        words.profile = inq_absolute_path(settings.colour_profile).str();
    words.key_range = settings.key_range;
    words.chunk_size = long_options.chunk_size;
    return words;
}

bool is_whole_frame(const std::string& file, const std::vector<std::string>& options, int width,
                    int height)
{
    std::vector<std::string> words = options;
    words.insert(words.end(), {"-width", std::to_string(width), "-height", std::to_string(height),
                               "-o", std::filesystem::path(file).parent_path().string()});
    const LongOptions long_options(words);
    CommandOutput output;
    read_settings(output, long_options);
    set_tiff_compression(long_options.tiff_compression == "lzw" ? TiffCompression::LZW
                                                                : TiffCompression::DEFLATE);
    return output.holds_frame(file);
}
