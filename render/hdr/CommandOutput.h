#pragma once

#include "render/hdr/OutputSettings.h"

/// A run of the command line: reads the arguments, renders the frames of a scene and writes them.
/// One object serves one run; what it says goes to `coutp`.
class CommandOutput {
public:
    CommandOutput();

    /// Results of the public operations.
    enum {
        SUCCESS = 0,
        NO_OUTPUT = 1,      // no output folder, or nothing is to be written
        NOT_AN_IMAGE = 201, // the output type is not "image"
        BAD_USAGE = 204,
        NO_SCENE = 205,
        BAD_RANGE = 206,
        NO_COLOUR_PROFILE = 207,
        NO_WRITER = 213
    };

    /// Reads `image [options] scene_file` with the program's name before it. Called once, first.
    int use_command_line_args(int argc, char* const argv[]);

    const OutputSettings& inq_settings() const { return settings; }

private:
    friend class ArgumentReader;

    bool parse_limits_argument(const char* argument, int* first, int* last);

    OutputSettings settings;
};
