#pragma once

#include <array>

/// The kinds of files that frames are written to. 2 and 6 are not given out.
enum OutputFileType {
    NO_FILE = -1,
    TIFF_FILE = 0,
    TIFF_UNCOMPRESSED_FILE = 1,
    TARGA_FILE = 3,
    YUV_625_FILE = 4,
    YUV_525_FILE = 5,
    YIQ_625_FILE = 7,
    YIQ_525_FILE = 8,
    PICT_FILE = 9,
    TIFF_16_FILE = 10,
    CINEON_FULL_FILE = 11,
    CINEON_HALF_FILE = 12,
    PNG_FILE = 13, // this and the next have no option of their own
    PNG_16_FILE = 14
};

/// How the frames of a type are told of and written.
struct OutputFileKind {
    int type;
    const char* report;
    const char* writer_class; // null: none
    int writer_argument;      // for `new_writer`; Cineon's depends on the format as well
    bool is_written_in_8_bits;
};

inline constexpr std::array<OutputFileKind, 14> OUTPUT_FILE_KINDS{{
    {NO_FILE, "No frames will be output", nullptr, 0, false},
    {TIFF_FILE, "tiff compressed", "TiffWriter", 1, true},
    {TIFF_UNCOMPRESSED_FILE, "tiff not compressed", "TiffWriter", 0, true},
    {TARGA_FILE, "TGA", "TargaWriter", 0, true},
    {YUV_625_FILE, "YUV 625", "YUVWriter", 0, false},
    {YUV_525_FILE, "YUV 525", "YUVWriter", 1, false},
    {YIQ_625_FILE, "YIQ 625", "YIQWriter", 0, false},
    {YIQ_525_FILE, "YIQ 525", "YIQWriter", 1, false},
    {PICT_FILE, "PICT", "PictWriter", 0, true},
    {TIFF_16_FILE, "tiff 16bps", "TiffWriter", 0, false},
    {CINEON_FULL_FILE, "Cineon full", "CinesiteWriter", 0, false},
    {CINEON_HALF_FILE, "Cineon half", "CinesiteWriter", 1, false},
    {PNG_FILE, "PNG", "PngWriter", 0, true},
    {PNG_16_FILE, "PNG 16bps", "PngWriter", 0, false},
}};

/// Null for a number that is not given out.
constexpr const OutputFileKind* find_output_file_kind(int type)
{
    for (const OutputFileKind& kind : OUTPUT_FILE_KINDS)
        if (kind.type == type)
            return &kind;
    return nullptr;
}
