#pragma once

// The data types that the graph itself knows. The others are numbered by the classes that define
// the data.

/// Ends a list of data types; never a data type.
constexpr int NO_DATA_TYPE = 0;

/// Channels whose type the type check settles: universal nodes declare the first, transforms the
/// second. Both are resolved alike.
constexpr int WILDCARD_TYPE = 1;
constexpr int SECOND_WILDCARD_TYPE = 2;

/// Images; also what a wildcard channel carries on a node that was never checked.
constexpr int IMAGE_TYPE = 100;
