#pragma once

#include <array>
#include <map>
#include <string>
#include <vector>

// The words of a description.

inline constexpr char IMAGES_COLUMN[] = "BG/OL";

// Kinds of sub-columns.
inline constexpr int NUMERIC_COLUMN = 3;
inline constexpr int RASTER_COLUMN = 4;
inline constexpr int FRAME_NUMBER_COLUMN = 7;
inline constexpr int COLOUR_COLUMN = 8;
inline constexpr int TEXT_COLUMN = 9;
inline constexpr int MOVE_COLUMN = 20;

/// By the number of the interpolation mode.
inline const std::vector<std::string> MODE_WORDS{"inbetween", "hold", "stop"};

/// Colour spaces with the modes of a colour column.
inline const std::vector<std::string> SPACE_WORDS{"rgb", "hsv", "cmy"};
inline constexpr std::array<int, 3> SPACES{1, 2, 3};

/// Members of a move with their labels.
inline const std::vector<std::string> MOVE_WORDS{"x", "y", "xy", "path"};
inline constexpr std::array<unsigned long, 4> MOVE_LABELS{1, 2, 3, 4};

inline const std::vector<std::string> EASE_WORDS{"linear", "ease", "in", "out", "in_out"};
inline constexpr std::array<std::array<double, 4>, 5> EASES{{
    {1.0 / 3, 1.0 / 3, 2.0 / 3, 2.0 / 3},
    {0.25, 0.1, 0.25, 1.0},
    {0.42, 0.0, 1.0, 1.0},
    {0.0, 0.0, 0.58, 1.0},
    {0.42, 0.0, 0.58, 1.0},
}};

/// Credits with their places on the cover sheet.
inline const std::map<std::string, int> CREDITS{
    {"production_company", 0}, {"production_name", 1}, {"director", 5},
    {"animators", 6},          {"assistants", 7},      {"effects_animators", 8},
    {"camera_animator", 10},   {"layout_artist", 11},  {"background_artist", 12},
    {"colour_stylist", 13},    {"scanner", 14},        {"painter", 15},
};
