#pragma once

#include "kivlib/hdr/KIVString.h"

/// What a command line asks to be rendered, and how.
struct OutputSettings {
    KIVString scene_file;
    int first_frame = -1; // from 1; 0 or less: from frame 1
    int last_frame = -1;  // inclusive; 0 or less: to the end of the scene
    int width = 400;      // pixels
    int height = 300;
    double pixel_aspect = 1.0;
    KIVString colour_profile{"none"}; // a path; "none" means no colour management
    float gamma = 0.0F;               // 0 means not given
    KIVString output_dir;
    bool anti_alias = true;
    bool key_range = false;
    bool silent = false;
    bool low_quality_ink_paint = false; // changes the report alone
    bool tv_filter = false;
    bool interlace = false;
    int file_type = 0; // of the table in OutputFileType.h
    bool transparent = false;
    KIVString cineon_format; // "academy", "cinemascope", "fullaperture", "vistavision" or empty
    bool width_given = false;
    bool height_given = false;
};
