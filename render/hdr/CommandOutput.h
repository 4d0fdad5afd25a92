#pragma once

#include "render/hdr/OutputSettings.h"

#include <memory>

class KIVPixmap;
class KIVScene;
class RenderScene;

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

    /// Loads the scene, renders the range and writes the frames. Called once, after a success of
    /// the above. The first file that can't be written ends it; those before stay.
    int perform_output();

    /// The frame as a file of the type, which may change the pixels to 8 bits; the pixmap stays
    /// the caller's.
    int write_file(const KIVString& name, KIVPixmap* pixmap, int file_type);

    const OutputSettings& inq_settings() const { return settings; }

private:
    friend class ArgumentReader;

    bool parse_limits_argument(const char* argument, int* first, int* last);

    int output_scene();
    bool set_up_colour();
    bool create_output_dir();
    bool complete_range(int scene_length);
    void complete_size(double camera_aspect);
    int inq_bits_per_channel() const;
    void report_settings();
    void report_tv_filter();
    int output_frames(KIVScene& scene);
    KIVString inq_frame_file(int frame) const;
    std::unique_ptr<KIVPixmap> render(RenderScene& renderer, KIVScene& scene, int frame);
    std::unique_ptr<KIVPixmap> render_field(RenderScene& renderer, int frame);

    OutputSettings settings;
};
