#pragma once

/// How the text search through the sheet goes.
class XSheetFinderFlags {
public:
    static constexpr int FlagForwards = 1;       // towards later frames, otherwise earlier ones
    static constexpr int FlagSearchColapsed = 2; // in collapsed columns as well
    static constexpr int FlagExactMatch = 4;     // the whole text
    static constexpr int FlagHeaderMode = 8;     // in the headers instead of the frames
    static constexpr int FlagCaseSensitive = 16;
};
