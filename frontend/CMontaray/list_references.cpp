#include "frontend/CMontaray/list_references.h"

#include "frontend/CMontaray/Options.h"
#include "frontend/CMontaray/exit_codes.h"
#include "kivlib/hdr/ConsoleOStream.h"
#include "kivlib/hdr/KIVStringList.h"
#include "render/hdr/CommandOutput.h"
#include "scene/hdr/KIVScene.h"

#include <cstring>
#include <filesystem>
#include <iostream>
#include <nlohmann/json.hpp>

namespace {
using Json = nlohmann::ordered_json;

struct Reference {
    std::string path;
    std::optional<std::uintmax_t> size; // none if there is no such file

    bool is_there() const { return size.has_value(); }
};

std::optional<std::uintmax_t> inq_size(const std::string& path)
{
    std::error_code failure;
    const std::uintmax_t size = std::filesystem::file_size(path, failure);
    return failure ? std::nullopt : std::optional(size);
}

std::vector<Reference> list_files(KIVScene& scene, bool direct_only)
{
    KIVStringList files;
    scene.get_dependencies(files, direct_only);
    std::vector<Reference> references;
    for (int i = 0; i < files.count(); ++i)
        references.push_back({files.at_index(i).str(), inq_size(files.at_index(i).str())});
    return references;
}

void print_text(const std::vector<Reference>& references, bool with_sizes)
{
    for (const Reference& reference : references) {
        if (with_sizes)
            std::cout << (reference.size ? std::to_string(*reference.size) : "missing") << '\t';
        std::cout << reference.path << '\n';
    }
}

void print_json(const std::vector<Reference>& references, bool with_sizes)
{
    Json list = Json::array();
    for (const Reference& reference : references) {
        Json entry{{"path", reference.path}};
        if (with_sizes)
            entry["exists"] = reference.is_there();
        if (with_sizes && reference.size)
            entry["size"] = *reference.size;
        list.push_back(entry);
    }
    constexpr int INDENT = 2;
    std::cout << list.dump(INDENT, ' ', false, Json::error_handler_t::replace) << '\n';
}
} // namespace

int list_references(const Options& options)
{
    const std::vector<char*>& words = options.words;
    const bool direct_only = std::strcmp(words[2], "-1") == 0;
    if (words.size() != (direct_only ? 4U : 3U)) {
        std::cout << "Usage: CMontaray list_refs [-1] scene_file\n";
        return CommandOutput::BAD_USAGE;
    }
    coutp = cerrp; // what loading says is not part of the list
    const std::unique_ptr<KIVScene> scene(KIVScene::load_from_file(words.back(), nullptr, false));
    if (!scene) {
        (options.json ? std::cerr : std::cout)
            << "Failed to load scene '" << words.back() << "'.\n";
        return CommandOutput::NO_SCENE;
    }
    const std::vector<Reference> references = list_files(*scene, direct_only);
    (options.json ? print_json : print_text)(references, options.check);
    if (!std::cout.flush()) {
        std::cerr << "CMontaray: The list can't be written to its end.\n";
        return NOT_ALL_TOLD;
    }
    const bool all_there = std::ranges::all_of(references, &Reference::is_there);
    return options.check && !all_there ? static_cast<int>(FILE_MISSING) : CommandOutput::SUCCESS;
}
