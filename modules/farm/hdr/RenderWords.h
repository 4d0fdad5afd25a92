#pragma once

#include <optional>
#include <string>
#include <vector>

/// What the option words of a render job ask for, in one form however they were put: short forms,
/// relative paths and the order of the words make no difference.
struct RenderWords {
    /// Reads the words. Throws a `std::runtime_error` that says why they make no render job: no
    /// output folder, a range of frames, what is no option, or one that makes no sense on a farm.
    static RenderWords read(const std::string& line, double camera_aspect);

    std::vector<std::string> options; // for the renderer, without the folder
    std::string output;               // absolute
    std::string extension;            // of the frames, with its point
    int width = 0;                    // of the frames, in pixels
    int height = 0;
    std::string profile; // of colours; empty: none
    bool key_range = false;
    std::optional<int> chunk_size;
};

/// Whether a file is a whole frame as the renderer writes it with the options of a job, at this
/// size in pixels. Throws as `RenderWords::read` does.
bool is_whole_frame(const std::string& file, const std::vector<std::string>& options, int width,
                    int height);
