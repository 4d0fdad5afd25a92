#pragma once

constexpr double UNITS_PER_INCH = 60.0; // of the world
constexpr double CENTIMETRES_PER_INCH = 2.54;

/// The length of so many pixels in the world; a unit each where no resolution is known.
inline double to_units(int pixels, double dpi)
{
    return dpi > 0.0 ? pixels * UNITS_PER_INCH / dpi : pixels;
}
