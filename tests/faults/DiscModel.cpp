#include "tests/faults/DiscModel.h"

#include <algorithm>

DiscModel::DiscModel(const FolderContents& contents)
{
    for (const auto& [path, bytes] : contents) {
        if (path.ends_with('/')) {
            live_names[path.substr(0, path.size() - 1)] = IS_FOLDER;
            continue;
        }
        live_names[path] = static_cast<int>(files.size());
        files.push_back({bytes, {}});
    }
    sure_names = live_names;
}

std::string DiscModel::folder_of(const std::string& path)
{
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? "." : path.substr(0, slash);
}

void DiscModel::follow(const DiscStep& step)
{
    switch (step.kind) {
    case DiscStep::MADE_FOLDER:
        return change_names({folder_of(step.path), "", step.path, IS_FOLDER});
    case DiscStep::OPENED:
        if (step.is_new) {
            change_names({folder_of(step.path), "", step.path, static_cast<int>(files.size())});
            files.emplace_back();
        }
        if (live_names.contains(step.path))
            open_files[step.descriptor] = live_names[step.path];
        return;
    case DiscStep::WROTE:
    case DiscStep::TRUNCATED:
        return change_bytes(step);
    case DiscStep::SYNCED:
        return sync(step.path, step.descriptor);
    case DiscStep::RENAMED:
        return change_names(
            {folder_of(step.path), step.path, step.new_path, live_names[step.path]});
    case DiscStep::LINKED:
        return change_names({folder_of(step.path), "", step.new_path, live_names[step.path]});
    case DiscStep::UNLINKED:
        return change_names({folder_of(step.path), step.path, "", 0});
    }
}

void DiscModel::change_names(NameStep step)
{
    apply(step, live_names);
    unsure_names.push_back(std::move(step));
}

void DiscModel::change_bytes(const DiscStep& step)
{
    File& file = files[static_cast<std::size_t>(open_files.at(step.descriptor))];
    file.unsure.push_back({step.at, step.bytes, step.kind == DiscStep::TRUNCATED});
}

void DiscModel::sync(const std::string& path, int descriptor)
{
    const auto opened = open_files.find(descriptor);
    if (opened == open_files.end() || opened->second == IS_FOLDER)
        return sync_names(path);
    settle(files[static_cast<std::size_t>(opened->second)]);
}

void DiscModel::settle(File& file)
{
    for (const BytesStep& step : std::exchange(file.unsure, {}))
        apply(step, file.sure, false);
}

void DiscModel::sync_names(const std::string& folder)
{
    std::erase_if(unsure_names, [&](const NameStep& step) {
        if (step.folder != folder)
            return false;
        apply(step, sure_names);
        return true;
    });
}

void DiscModel::apply(const BytesStep& step, std::string& contents, bool as_zeros)
{
    const auto at = static_cast<std::size_t>(step.at);
    if (step.cuts_off)
        return contents.resize(at);
    const std::size_t end = at + step.bytes.size();
    if (contents.size() < end)
        contents.resize(end);
    contents.replace(at, step.bytes.size(),
                     as_zeros ? std::string(step.bytes.size(), '\0') : step.bytes);
}

/// A step whose old name is not there, since an earlier one was lost, is lost with it.
void DiscModel::apply(const NameStep& step, Names& names)
{
    if (!step.old_name.empty() && names.erase(step.old_name) == 0)
        return;
    if (!step.new_name.empty())
        names[step.new_name] = step.file;
}

std::string DiscModel::contents_of(const File& file, Fate::Bytes bytes, std::mt19937& random) const
{
    std::string contents = file.sure;
    const std::size_t half = file.unsure.size() / 2;
    for (std::size_t i = 0; i < file.unsure.size(); ++i) {
        const bool is_lost = bytes == Fate::NONE || (bytes == Fate::HALF && i > half) ||
                             (bytes == Fate::MIXED && random() % 3 == 0);
        if (is_lost)
            continue;
        BytesStep step = file.unsure[i];
        if (bytes == Fate::HALF && i == half)
            step.bytes.resize(step.bytes.size() / 2);
        apply(step, contents, bytes == Fate::ZEROS || (bytes == Fate::MIXED && random() % 3 == 0));
    }
    return contents;
}

FolderContents DiscModel::inq_contents(const Fate& fate, std::mt19937& random) const
{
    Names names = sure_names;
    for (std::size_t i = 0; i < unsure_names.size(); ++i)
        if (fate.names[i])
            apply(unsure_names[i], names);
    FolderContents contents;
    for (const auto& [path, file] : names) {
        const std::string folder = folder_of(path);
        if (folder != "." && !names.contains(folder))
            continue; // it went with its folder
        if (file == IS_FOLDER)
            contents[path + "/"];
        else
            contents[path] = contents_of(files[static_cast<std::size_t>(file)], fate.bytes, random);
    }
    return contents;
}

FolderContents DiscModel::inq_live() const
{
    DiscModel all = *this;
    all.sure_names = live_names;
    all.unsure_names.clear();
    std::mt19937 unused;
    return all.inq_contents({{}, Fate::ALL}, unused);
}

namespace {
std::vector<bool> at_random(std::size_t n, std::mt19937& random)
{
    std::vector<bool> choice(n);
    std::generate(choice.begin(), choice.end(), [&] { return random() % 2 == 0; });
    return choice;
}
} // namespace

/// All subsets of a few steps; of many, those that lack an end, one step or all but one, and others
/// at random.
std::vector<std::vector<bool>> DiscModel::choose_names(std::size_t most, std::mt19937& random) const
{
    const std::size_t n = unsure_names.size();
    std::vector<std::vector<bool>> choices;
    for (std::size_t kept = 0; kept <= n; ++kept) {
        std::vector<bool> choice(n, false);
        std::fill_n(choice.begin(), kept, true);
        choices.push_back(choice);
    }
    for (std::size_t i = 0; i < n; ++i) {
        choices.emplace_back(n, true)[i] = false;
        choices.emplace_back(n, false)[i] = true;
    }
    while (choices.size() < most &&
           choices.size() < (std::size_t(1) << std::min<std::size_t>(n, 20)))
        choices.push_back(at_random(n, random));
    std::ranges::sort(choices);
    choices.erase(std::ranges::unique(choices).begin(), choices.end());
    std::ranges::shuffle(choices, random);
    return choices;
}

std::set<FolderContents> DiscModel::inq_after_power_cut(std::size_t most,
                                                        std::mt19937& random) const
{
    std::set<FolderContents> states;
    for (const auto& names : choose_names(most, random))
        for (const Fate::Bytes bytes :
             {Fate::ALL, Fate::NONE, Fate::HALF, Fate::ZEROS, Fate::MIXED})
            if (states.size() < most)
                states.insert(inq_contents({names, bytes}, random));
    return states;
}
