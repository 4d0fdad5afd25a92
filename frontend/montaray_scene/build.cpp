#include "frontend/montaray_scene/SceneBuilder.h"
#include "frontend/montaray_scene/verbs.h"
#include "scene/hdr/KIVScene.h"

#include <fstream>
#include <iostream>

namespace {
/// Throws a `Mistake` for a text that is no JSON.
nlohmann::json read_json(std::istream& file)
{
    try {
        return nlohmann::json::parse(file, nullptr, true, true);
    } catch (const nlohmann::json::exception& error) {
        throw Mistake("", std::string("not JSON: ") + error.what());
    }
}
} // namespace

int build_scene(const std::string& description, const std::string& scene_folder)
{
    std::ifstream file(description);
    if (!file) {
        std::cerr << description << ": cannot be read\n";
        return BAD_INPUT;
    }
    try {
        const nlohmann::json json = read_json(file);
        const auto folder = std::filesystem::absolute(description).parent_path();
        const std::unique_ptr<KIVScene> scene = SceneBuilder(Place(json), folder).build();
        return scene->save_to_file(scene_folder.c_str(), true, true, false) ? DONE : FAILED;
    } catch (const Mistake& mistake) {
        std::cerr << description << ": " << mistake.what() << '\n';
        return BAD_INPUT;
    } catch (const std::exception& exception) {
        std::cerr << description << ": " << exception.what() << '\n';
        return FAILED;
    }
}
