#include "kivlib/hdr/KIVStringList.h"
#include "render/hdr/CommandOutput.h"
#include "scene/hdr/KIVScene.h"

#include <cstring>
#include <iostream>
#include <memory>

namespace {
/// `list_refs [-1] scene_file`: a file a line.
int list_references(int argc, char** argv)
{
    const bool direct_only = std::strcmp(argv[2], "-1") == 0;
    if (argc != (direct_only ? 4 : 3)) {
        std::cout << "Usage: CMontaray list_refs [-1] scene_file\n";
        return CommandOutput::BAD_USAGE;
    }
    const KIVString folder = argv[argc - 1];
    const std::unique_ptr<KIVScene> scene(KIVScene::load_from_file(folder, nullptr, false));
    if (!scene) {
        std::cout << "Failed to load scene '" << folder.c_str() << "'.\n";
        return CommandOutput::NO_SCENE;
    }
    KIVStringList files;
    scene->get_dependencies(files, direct_only);
    for (int i = 0; i < files.count(); ++i)
        std::cout << files.at_index(i).c_str() << '\n';
    return CommandOutput::SUCCESS;
}
} // namespace

int main(int argc, char** argv)
{
    if (argc > 2 && std::strcmp(argv[1], "list_refs") == 0)
        return list_references(argc, argv);
    CommandOutput output;
    const int result = output.use_command_line_args(argc, argv);
    return result == CommandOutput::SUCCESS ? output.perform_output() : result;
}
