#include "frontend/montaray_scene/Arguments.h"

#include "kivlib/hdr/SearchFileFinder.h"

Arguments::Arguments(int argc, char** argv, const std::set<std::string>& options,
                     const std::set<std::string>& switches)
{
    bool may_be_option = true;
    for (int i = 0; i < argc; ++i) {
        const std::string word = argv[i];
        if (may_be_option && word == "--")
            may_be_option = false;
        else if (!word.empty() && (!may_be_option || !word.starts_with("--")))
            names.push_back(word);
        else if (switches.contains(word))
            given_switches.insert(word);
        else if (options.contains(word) && i + 1 < argc)
            values[word].emplace_back(argv[++i]);
        else
            good = false;
    }
}

std::optional<std::string> Arguments::inq_value(const std::string& option) const
{
    const std::vector<std::string>& given = inq_values(option);
    return given.empty() ? std::nullopt : std::optional(given.back());
}

const std::vector<std::string>& Arguments::inq_values(const std::string& option) const
{
    static const std::vector<std::string> none;
    const auto found = values.find(option);
    return found == values.end() ? none : found->second;
}

bool Arguments::set_up(FileSearch& search) const
{
    for (const std::string& folder : inq_values("--search"))
        search.add_search_folder(folder);
    for (const std::string& map : inq_values("--map")) {
        const std::size_t sign = map.find('=');
        if (sign == std::string::npos || sign == 0 || sign + 1 == map.size())
            return false;
        search.add_prefix_map(map.substr(0, sign), map.substr(sign + 1));
    }
    return true;
}
