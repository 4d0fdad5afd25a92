#pragma once

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
    CINEON_HALF_FILE = 12
};
