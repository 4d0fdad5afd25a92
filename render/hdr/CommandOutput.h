#pragma once

#include "render/hdr/OutputSettings.h"

#include <memory>
#include <vector>

class HeldFrame;
class KIVPixmap;
class KIVPixmapWriter;
class KIVScene;
class OutputRun;
class RenderScene;
struct FrameReport;

/// A run of the command line: reads the arguments, renders the frames of a scene and writes them.
/// One object serves one run; what it says goes to `coutp`.
class CommandOutput {
public:
    CommandOutput();

    /// Results of the public operations. A file that can't be written gives the error of its
    /// KIVPixmapWriter as well: 208 for 1, 210 to 215 for 2 to 7, and 216.
    enum {
        SUCCESS = 0,
        NO_OUTPUT = 1,      // no output folder, or nothing is to be written
        NOT_AN_IMAGE = 201, // the output type is not "image"
        BAD_USAGE = 204,
        NO_SCENE = 205,
        BAD_RANGE = 206,
        NO_COLOUR_PROFILE = 207,
        NO_WRITER = 213 // no such class; or it was the writer's 5
    };

    /// Reads `image [options] scene_file` with the program's name before it. Called once, first.
    int use_command_line_args(int argc, char* const argv[]);

    /// Loads the scene, renders the range and writes the frames. Called once, after a success of
    /// the above. The first file that can't be written ends it; those before stay.
    int perform_output();

    /// The same, with the frames that `run` asks for; it hears of each.
    int perform_output(OutputRun& run);

    /// The frame as a file of the type, which may change the pixels to 8 bits; the pixmap stays
    /// the caller's.
    int write_file(const KIVString& name, KIVPixmap* pixmap, int file_type);

    /// Waits until the disc holds a frame's file that waits, and gives it its name in place of what
    /// had it. After a failure the frame counts as not written.
    static void finish_file(FrameReport& report);

    const OutputSettings& inq_settings() const { return settings; }

    /// The arguments that were no options, in their order: ranges of frames, and what is ignored.
    const std::vector<KIVString>& inq_other_arguments() const { return other_arguments; }

    /// Where a frame is written, with its extension; empty for a type without a writer.
    KIVString inq_frame_path(int frame) const;

    /// Whether the file is a whole frame of these settings, with both sides of the picture known.
    bool holds_frame(const KIVString& file) const;

    /// Works out the side of the picture that was not given, if the other one was.
    void complete_size(double camera_aspect);

    /// In place of the type that the arguments name.
    void set_file_type(int file_type) { settings.file_type = file_type; }

private:
    friend class ArgumentReader;

    bool parse_limits_argument(const char* argument, int* first, int* last);

    int output_scene(OutputRun& run);
    bool set_up_colour();
    bool create_output_dir();
    bool has_output_dir() const;
    bool check_output_dir();
    bool complete_range(int scene_length, OutputRun& run);
    int inq_bits_per_channel() const;
    void report_settings();
    void report_tv_filter();
    int output_frames(KIVScene& scene, OutputRun& run);
    KIVString inq_frame_file(int frame) const;
    FrameReport output_frame(RenderScene& renderer, KIVScene& scene, OutputRun& run,
                             HeldFrame& held, int frame);
    bool copy_frame(const HeldFrame& held, FrameReport& report);
    void write_frame(const KIVString& name, KIVPixmap* pixmap, FrameReport& report);
    std::unique_ptr<KIVPixmapWriter> make_writer(int file_type) const;
    std::unique_ptr<KIVPixmap> render(RenderScene& renderer, KIVScene& scene, OutputRun& run,
                                      int frame);
    std::unique_ptr<KIVPixmap> render_field(RenderScene& renderer, OutputRun& run, int frame);
    int write_file(const KIVString& name, KIVPixmap* pixmap, int file_type, FrameReport& report);
    int try_to_write_file(const KIVString& name, KIVPixmap* pixmap, int file_type,
                          FrameReport& report);

    OutputSettings settings;
    bool leaves_unfinished = false; // files, for `finish_file`
    std::vector<KIVString> other_arguments;
};
