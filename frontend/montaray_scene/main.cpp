#include "frontend/montaray_scene/Arguments.h"
#include "frontend/montaray_scene/verbs.h"
#include "kivlib/hdr/SearchFileFinder.h"

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
    "\n"
    "build    makes a scene folder from a description\n"
    "show     prints the exposure sheet and the graph of a scene\n"
    "check    tells what is wrong with the files of a scene, a line each, and changes nothing;\n"
    "         exit status 0: sound, 1: it is not\n"
    "recover  ends or undoes a save that was interrupted\n"
    "backup   copies a scene to SCENE_FOLDER.backup-0001 and so on, and keeps the newest N copies\n"
    "tile     writes an image in tiles, with smaller copies, so that a frame reads what it shows\n"
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

struct Verb {
    std::set<std::string> options;
    std::size_t name_count;
    std::function<int(const Arguments&)> run;
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
};
} // namespace

int main(int argc, char** argv)
{
    const std::string verb = argc > 1 ? argv[1] : "";
    int status = BAD_INPUT;
    if (const auto found = VERBS.find(verb); found != VERBS.end()) {
        const Arguments arguments(argc - 2, argv + 2, found->second.options);
        if (arguments.is_good() && arguments.inq_names().size() == found->second.name_count)
            return found->second.run(arguments);
    } else if (verb == "--help" || verb == "-h") {
        status = DONE;
    }
    (status == DONE ? std::cout : std::cerr) << USAGE;
    return status;
}
