#pragma once

#include "coversheet/lib/hdr/CoverSheet.h"
#include "kivlib/hdr/KIVFile.h"
#include "scene/hdr/KIVAssetManager.h"
#include "tests/faults/DiscModel.h"
#include "tests/museum/Museum.h"

#include <cmath>
#include <filesystem>
#include <fstream>
#include <optional>
#include <ostream>

/// Which generation of a scene its parts are of. They are numbered, so that a mix shows.
struct Generations {
    int sheet = 0;
    int cover_sheet = 0;
    int graph = 0;
    int assets = 0;

    static Generations whole(int n) { return {n, n, n, n}; }
    bool operator==(const Generations&) const = default;
};

inline std::ostream& operator<<(std::ostream& out, const Generations& g)
{
    return out << "sheet " << g.sheet << ", cover sheet " << g.cover_sheet << ", graph " << g.graph
               << ", assets " << g.assets;
}

/// What a load gave; nothing if it was refused.
using Loaded = std::optional<Generations>;

inline std::string words_of(const Loaded& loaded)
{
    std::ostringstream words;
    if (loaded)
        words << *loaded;
    else
        words << "no scene";
    return words.str();
}

/// The scene that all faults are tried on: a fading card with a sound for each generation.
namespace SceneOnTrial {
constexpr double GREY_STEP = 1.0 / 1024; // a generation's

inline CNodeScreen* inq_card(KIVScene& scene)
{
    for (CNode* node : scene.inq_graph()->inq_nodes_list()->of<CNode>())
        if (node->is_kind_of(CNodeScreen::inq_class_name_s()))
            return static_cast<CNodeScreen*>(node);
    return nullptr;
}

inline BaseNumericCellData* inq_keyed_grey(KIVScene& scene)
{
    KeyCell* key = inq_card(scene)->inq_subcolumn()->inq_first_key();
    return static_cast<BaseNumericCellData*>(key->inq_data());
}

inline void change_sheets(KIVScene& scene, int generation)
{
    inq_keyed_grey(scene)->set_element(0, generation * GREY_STEP);
    scene.inq_cover_sheet()->set_string(std::to_string(generation), 0);
    scene.inq_cover_sheet()->set_needs_saving();
}

/// What every save writes, even if the sheets have not changed.
inline void change_graph_and_assets(KIVScene& scene, int generation)
{
    inq_card(scene)->set_position(Vector2(generation, 0));
    KIVFile sound;
    sound.set_local_path("/sounds/" + std::to_string(generation) + ".wav");
    scene.inq_asset_manager()->import_asset(sound, SOUND_ASSET,
                                            static_cast<unsigned long>(generation));
}

inline void change(KIVScene& scene, int generation)
{
    change_sheets(scene, generation);
    change_graph_and_assets(scene, generation);
}

inline Scene make(int generation)
{
    FadingCard museum;
    change(*museum.scene, generation);
    return std::move(museum.scene);
}

inline bool save(KIVScene& scene, const std::string& folder)
{
    return scene.save_to_file(folder, false, true, false);
}

inline Generations inq_generations(KIVScene& scene)
{
    const auto tags = scene.inq_asset_manager()->inq_tags(SOUND_ASSET);
    return {static_cast<int>(std::lround(inq_keyed_grey(scene)->inq_element(0) / GREY_STEP)),
            std::atoi(scene.inq_cover_sheet()->inq_string(0).c_str()),
            static_cast<int>(std::lround(inq_card(scene)->inq_position().x())),
            tags.empty() ? 0 : static_cast<int>(tags.back())};
}

inline Loaded load_generations(const std::string& folder)
{
    const Scene scene = load(folder);
    return scene ? Loaded(inq_generations(*scene)) : std::nullopt;
}
} // namespace SceneOnTrial

inline FolderContents read_folder(const std::string& folder)
{
    FolderContents contents;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        const std::string name = std::filesystem::relative(entry.path(), folder).string();
        if (entry.is_directory()) {
            contents[name + "/"];
            continue;
        }
        std::ifstream file(entry.path(), std::ios::binary);
        contents[name].assign(std::istreambuf_iterator<char>(file), {});
    }
    return contents;
}

/// The name of a file that only a save under way may have; empty if there is none.
inline std::string inq_left_over(const FolderContents& contents)
{
    for (const auto& [name, bytes] : contents)
        if (name.ends_with('~'))
            return name;
    return "";
}

/// Makes `folder` hold these contents and nothing else.
inline void write_folder(const std::string& folder, const FolderContents& contents)
{
    std::filesystem::current_path("/"); // which a load has left in the folder
    std::filesystem::remove_all(folder);
    std::filesystem::create_directory(folder);
    for (const auto& [name, bytes] : contents)
        if (name.ends_with('/'))
            std::filesystem::create_directory(folder + "/" + name);
    for (const auto& [name, bytes] : contents)
        if (!name.ends_with('/'))
            std::ofstream(folder + "/" + name, std::ios::binary) << bytes;
}
