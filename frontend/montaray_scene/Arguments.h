#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

class FileSearch;

/// The words behind a verb: names, options that each have a value, and switches, which have none.
/// `--` ends the options.
class Arguments {
public:
    Arguments(int argc, char** argv, const std::set<std::string>& options,
              const std::set<std::string>& switches);

    /// False after an option that is not known or lacks its value, and after an empty name.
    bool is_good() const { return good; }
    bool has_options() const { return !values.empty(); }

    const std::vector<std::string>& inq_names() const { return names; }

    /// The only name; empty if there is none or more.
    std::string inq_only_name() const { return names.size() == 1 ? names[0] : ""; }

    /// None if the option was not given; the last value counts.
    std::optional<std::string> inq_value(const std::string& option) const;

    bool has_switch(const std::string& name) const { return given_switches.contains(name); }

    /// Enters the folders of `--search` and the `OLD=NEW` of `--map`. False if one makes no sense.
    bool set_up(FileSearch& search) const;

private:
    const std::vector<std::string>& inq_values(const std::string& option) const;

    std::vector<std::string> names;
    std::map<std::string, std::vector<std::string>> values;
    std::set<std::string> given_switches;
    bool good = true;
};
