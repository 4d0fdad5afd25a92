#pragma once

/// The limit of scales and widths: what has no size can't be drawn, nor turned back.
constexpr double SMALLEST_SIZE = 0.000000001;
