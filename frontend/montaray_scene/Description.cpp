#include "frontend/montaray_scene/Description.h"

#include <algorithm>
#include <cmath>

namespace {
std::string escaped(const std::string& name)
{
    std::string text;
    for (const char c : name) {
        if (c == '~')
            text += "~0";
        else if (c == '/')
            text += "~1";
        else
            text += c;
    }
    return text;
}

/// An array or an object may be as large as the file.
std::string told_shortly(const nlohmann::json& value)
{
    constexpr std::size_t LONGEST = 60;
    if (value.is_structured())
        return value.is_array() ? "an array" : "an object";
    const std::string text = value.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
    return text.size() <= LONGEST ? text : text.substr(0, LONGEST) + "...";
}
} // namespace

Mistake::Mistake(const std::string& pointer, const std::string& expected)
    : std::runtime_error(pointer.empty() ? expected : pointer + ": " + expected)
{}

void Place::refuse(const std::string& expected) const
{
    throw Mistake(pointer, "expected " + expected + ", found " + told_shortly(*value));
}

Place Place::below(const nlohmann::json& member, const std::string& name) const
{
    return Place(member, pointer + "/" + escaped(name));
}

void Place::check_names(std::initializer_list<const char*> names) const
{
    for (const auto& [name, place] : members()) {
        if (std::ranges::any_of(names, [&](const char* known) { return name == known; }))
            continue;
        std::string known;
        for (const char* each : names)
            known += (known.empty() ? "" : ", ") + std::string(each);
        throw Mistake(place.pointer, "expected one of the names " + known);
    }
}

Place Place::at(const char* name) const
{
    const std::optional<Place> place = find(name);
    if (!place)
        throw Mistake(pointer, "expected a member \"" + std::string(name) + "\"");
    return *place;
}

std::optional<Place> Place::find(const char* name) const
{
    if (!value->is_object())
        refuse("an object");
    const auto member = value->find(name);
    if (member == value->end())
        return {};
    return below(*member, name);
}

std::vector<Place> Place::items() const
{
    if (!value->is_array())
        refuse("an array");
    std::vector<Place> places;
    for (std::size_t i = 0; i < value->size(); ++i)
        places.push_back(below((*value)[i], std::to_string(i)));
    return places;
}

std::vector<std::pair<std::string, Place>> Place::members() const
{
    if (!value->is_object())
        refuse("an object");
    std::vector<std::pair<std::string, Place>> places;
    for (const auto& [name, member] : value->items())
        places.emplace_back(name, below(member, name));
    return places;
}

double Place::number() const
{
    if (!value->is_number())
        refuse("a number");
    return value->get<double>();
}

int Place::whole(int least, int most) const
{
    const bool is_whole = value->is_number() && value->get<double>() == std::floor(number());
    if (!is_whole || number() < least || number() > most)
        refuse("a whole number from " + std::to_string(least) + " to " + std::to_string(most));
    return static_cast<int>(number());
}

std::string Place::text() const
{
    if (!value->is_string())
        refuse("a text");
    return value->get<std::string>();
}

bool Place::truth() const
{
    if (!value->is_boolean())
        refuse("true or false");
    return value->get<bool>();
}

int Place::one_of(const std::vector<std::string>& words) const
{
    const auto word = std::ranges::find(words, value->is_string() ? text() : "");
    if (word != words.end() && value->is_string())
        return static_cast<int>(word - words.begin());
    std::string known;
    for (const std::string& each : words)
        known += (known.empty() ? "\"" : ", \"") + each + "\"";
    refuse("one of " + known);
}
