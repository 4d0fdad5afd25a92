#include "frontend/montaray_scene/Arguments.h"
#include "frontend/montaray_scene/verbs.h"
#include "kivlib/hdr/SearchFileFinder.h"
#include "kivlib/hdr/prepare_process.h"

#include <charconv>
#include <functional>
#include <iostream>

namespace {
constexpr char USAGE[] =
    "Usage: montaray-scene build DESCRIPTION.json SCENE_FOLDER\n"
    "       montaray-scene show [SEARCH] SCENE_FOLDER\n"
    "       montaray-scene check [SEARCH] SCENE_FOLDER\n"
    "       montaray-scene recover SCENE_FOLDER\n"
    "       montaray-scene backup SCENE_FOLDER [--keep N]\n"
    "       montaray-scene tile IMAGE OUT.tif\n"
    "       montaray-scene submit SCENE_FOLDER [--frames A-B] [--chunk N] -- OPTIONS\n"
    "       montaray-scene status OUTPUT_FOLDER [--json] [--watch]\n"
    "       montaray-scene cancel OUTPUT_FOLDER\n"
    "\n"
    "build    makes a scene folder from a description\n"
    "show     prints the exposure sheet and the graph of a scene\n"
    "check    tells what is wrong with the files of a scene, a line each, and changes nothing;\n"
    "         exit status 0: sound, 1: it is not\n"
    "recover  ends or undoes a save that was interrupted\n"
    "backup   copies a scene to SCENE_FOLDER.backup-0001 and so on, and keeps the newest N copies\n"
    "tile     writes an image in tiles, with smaller copies, so that a frame reads what it shows\n"
    "submit   sends frames to the farm, N of them to a task; OPTIONS are those of CMontaray "
    "image,\n"
    "         with -o OUTPUT_FOLDER among them and without a range\n"
    "status   tells which frames of the farm are there and what became of the others; --watch "
    "does\n"
    "         so once no task is left, and shows meanwhile how far it is; exit status 0: all are\n"
    "         there, 3: some are on their way, 4: some are missing\n"
    "cancel   takes the frames that are not there yet out of the farm's queue\n"
    "\n"
    "SEARCH says where artwork may be that is not at its place, as often as needed:\n"
    "  --map OLD=NEW    what was under the folder OLD is under NEW\n"
    "  --search FOLDER  in this folder\n";

/// A whole number above 0.
bool read_count(const std::string& text, int& count)
{
    const char* end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, count);
    return result.ec == std::errc() && result.ptr == end && count > 0;
}

int refuse(const char* reason)
{
    std::cerr << "montaray-scene: " << reason << '\n';
    return BAD_INPUT;
}

int show_or_check(const Arguments& arguments, bool is_check)
{
    FileSearch search;
    if (!arguments.set_up(search))
        return refuse("--map needs OLD=NEW");
    if (is_check)
        return check_scene(arguments.inq_only_name(), search);
    return show_scene(arguments.inq_only_name(), arguments.has_options() ? &search : nullptr);
}

int back_up(const Arguments& arguments)
{
    int keep = 0;
    const std::optional<std::string> text = arguments.inq_value("--keep");
    if (text && !read_count(*text, keep))
        return refuse("--keep needs a number above 0");
    return back_up_scene(arguments.inq_only_name(), text ? std::optional(keep) : std::nullopt);
}

/// "5" or "5-9".
bool read_range(const std::string& text, std::pair<int, int>& range)
{
    const std::size_t sign = text.find('-');
    if (!read_count(text.substr(0, sign), range.first))
        return false;
    range.second = range.first;
    return sign == std::string::npos ||
           (read_count(text.substr(sign + 1), range.second) && range.first <= range.second);
}

int submit(const Arguments& arguments)
{
    std::pair<int, int> range;
    const std::optional<std::string> frames = arguments.inq_value("--frames");
    if (frames && !read_range(*frames, range))
        return refuse("--frames needs a range such as 5-9");
    std::vector<std::string> options(arguments.inq_names().begin() + 1,
                                     arguments.inq_names().end());
    if (const std::optional<std::string> chunk = arguments.inq_value("--chunk"))
        options.insert(options.end(), {"--chunk", *chunk});
    return submit_render(arguments.inq_names()[0], frames ? std::optional(range) : std::nullopt,
                         options);
}

int show_status(const Arguments& arguments)
{
    return show_farm_status(arguments.inq_only_name(), arguments.has_switch("--json"),
                            arguments.has_switch("--watch"));
}

constexpr std::size_t MANY = 0;

struct Verb {
    std::set<std::string> options;
    std::size_t name_count; // MANY: one or more
    std::function<int(const Arguments&)> run;
    std::set<std::string> switches = {};

    bool takes(const Arguments& arguments) const
    {
        const std::size_t n = arguments.inq_names().size();
        return arguments.is_good() && (name_count == MANY ? n > 0 : n == name_count);
    }
};

const std::map<std::string, Verb> VERBS{
    {"build",
     {{}, 2, [](const Arguments& a) { return build_scene(a.inq_names()[0], a.inq_names()[1]); }}},
    {"show",
     {{"--search", "--map"}, 1, [](const Arguments& a) { return show_or_check(a, false); }}},
    {"check",
     {{"--search", "--map"}, 1, [](const Arguments& a) { return show_or_check(a, true); }}},
    {"recover", {{}, 1, [](const Arguments& a) { return recover_scene(a.inq_only_name()); }}},
    {"backup", {{"--keep"}, 1, back_up}},
    {"tile",
     {{}, 2, [](const Arguments& a) { return tile_image(a.inq_names()[0], a.inq_names()[1]); }}},
    {"submit", {{"--frames", "--chunk"}, MANY, submit}},
    {"status", {{}, 1, show_status, {"--json", "--watch"}}},
    {"cancel", {{}, 1, [](const Arguments& a) { return cancel_farm_jobs(a.inq_only_name()); }}},
};

int run(int argc, char** argv)
{
    const std::string verb = argc > 1 ? argv[1] : "";
    int status = BAD_INPUT;
    if (const auto found = VERBS.find(verb); found != VERBS.end()) {
        const Verb& known = found->second;
        const Arguments arguments(argc - 2, argv + 2, known.options, known.switches);
        if (known.takes(arguments))
            return known.run(arguments);
    } else if (verb == "--help" || verb == "-h") {
        status = DONE;
    }
    (status == DONE ? std::cout : std::cerr) << USAGE;
    return status;
}
} // namespace

int main(int argc, char** argv)
{
    prepare_process();
    const int status = run(argc, argv);
    if (std::cout.flush() && !std::ferror(stdout))
        return status;
    std::cerr << "montaray-scene: not all could be printed\n";
    return status == DONE ? static_cast<int>(FAILED) : status;
}
