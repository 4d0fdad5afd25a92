#pragma once

/// What stands in the sheets that are compared.
namespace large_sheet {
constexpr int FRAMES_BETWEEN_KEYS = 5;

constexpr int frame(int key)
{
    return 1 + FRAMES_BETWEEN_KEYS * key;
}

constexpr double value(int column, int key)
{
    return column + key;
}
} // namespace large_sheet
