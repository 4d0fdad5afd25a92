#include "frontend/montaray_scene/verbs.h"

#include <iostream>

namespace {
constexpr char USAGE[] = "Usage: montaray-scene build DESCRIPTION.json SCENE_FOLDER\n"
                         "       montaray-scene show SCENE_FOLDER\n"
                         "\n"
                         "build  makes a scene folder from a description\n"
                         "show   prints the exposure sheet and the graph of a scene\n";
}

int main(int argc, char** argv)
{
    const std::string verb = argc > 1 ? argv[1] : "";
    if (verb == "build" && argc == 4)
        return build_scene(argv[2], argv[3]);
    if (verb == "show" && argc == 3)
        return show_scene(argv[2]);
    const bool is_help = verb == "--help" || verb == "-h";
    (is_help ? std::cout : std::cerr) << USAGE;
    return is_help ? DONE : BAD_INPUT;
}
