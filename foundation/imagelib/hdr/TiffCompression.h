#pragma once

/// How TIFF files that are to be compressed are compressed, by all writers of the process.
enum class TiffCompression {
    DEFLATE, // fast, and smaller; read by everything since about 2000
    LZW      // for older readers
};

void set_tiff_compression(TiffCompression compression);
