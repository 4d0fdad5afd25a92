#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

/// What is wrong with a description: the place as a JSON pointer, and what was expected there.
class Mistake : public std::runtime_error {
public:
    Mistake(const std::string& pointer, const std::string& expected);
};

/// A value of a description with the place where it stands. What does not fit is a `Mistake`.
class Place {
public:
    explicit Place(const nlohmann::json& value, std::string pointer = "")
        : value(&value), pointer(std::move(pointer))
    {}

    /// The members of an object may have these names and no others.
    void check_names(std::initializer_list<const char*> names) const;

    Place at(const char* name) const;
    std::optional<Place> find(const char* name) const;
    std::vector<Place> items() const;
    std::vector<std::pair<std::string, Place>> members() const;
    std::size_t count() const { return value->size(); }

    bool is_array() const { return value->is_array(); }
    bool is_number() const { return value->is_number(); }
    bool is_text() const { return value->is_string(); }

    double number() const;
    int whole(int least, int most) const;
    std::string text() const;
    bool truth() const;

    /// The index of the text among `words`.
    int one_of(const std::vector<std::string>& words) const;
    [[noreturn]] void refuse(const std::string& expected) const;

private:
    Place below(const nlohmann::json& member, const std::string& name) const;

    const nlohmann::json* value; // not owned
    std::string pointer;
};
