#pragma once

#include <array>

// The files of a scene folder. A name with "~" behind it is a part on its way to its place.

inline constexpr char SCENE_CONTENTS[] = "Scene.contents";
inline constexpr char XSHEET_PART[] = "XSheet";
inline constexpr char COVER_SHEET_PART[] = "CoverSheet";
inline constexpr char GRAPH_PART[] = "Graph";
inline constexpr char ASSET_PART[] = "kvd";
inline constexpr char DLL_USAGE_PART[] = "DLLUsage";

/// All that a save writes.
inline constexpr std::array SCENE_PARTS = {SCENE_CONTENTS, XSHEET_PART, COVER_SHEET_PART,
                                           GRAPH_PART,     ASSET_PART,  DLL_USAGE_PART};

/// An older form of the assets, which is only read.
inline constexpr char OLD_ASSET_PART[] = "Assets";

/// Empty: says that nodes of an old graph hold their tag positions.
inline constexpr char DRAWING_WINDOW_TAGS[] = "drawing_window_tags";
