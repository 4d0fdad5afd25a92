#pragma once

#include "kivlib/hdr/KIVStringList.h"

#include <functional>

class AbortPanel;

/// What became of one frame of a run.
struct FrameReport {
    enum Outcome {
        WRITTEN,
        COPIED,     // from the file of an equal frame
        LEFT_OUT,   // the run did not want it
        NO_PIXMAP,  // nothing was rendered, or the run was stopped
        NOT_WRITTEN // whatever `result` says: not every error of a writer has one
    };

    int frame = 0;
    Outcome outcome = NO_PIXMAP;
    int result = 0;          // of `write_file`
    int writer_error = 0;    // of the writer
    KIVString file;          // with its extension; the bare name if the type has no writer
    KIVString unfinished;    // where the whole file waits for its name; empty if it has it
    KIVStringList no_images; // pictures of the frame that can't be read, with the reasons
};

/// Says which frames a run of CommandOutput renders, and hears what becomes of them. As it stands:
/// the whole range in order.
class OutputRun {
public:
    /// Whether frame `b` is proved to look like frame `a`, apart from files that change on disc.
    using SameFrames = std::function<bool(int a, int b)>;

    virtual ~OutputRun() = default;

    /// The scene is loaded. The range, whose ends are filled in, may be changed, and is told to the
    /// user then. False ends the run as invalid.
    virtual bool choose_range(int scene_length, int& first, int& last);

    /// The settings have been told; frames are asked for from now on.
    virtual void begin() {}

    /// Does what is left, in this process or in others: `render_all` asks for frames until there
    /// are none, and gives the result.
    virtual int render(const std::function<int()>& render_all) { return render_all(); }

    /// 0 ends the run.
    virtual int next_frame(const SameFrames& same);

    /// Whether to render the frame, which will be `file`. `is_there` says whether there is a whole
    /// file already such as this run writes.
    virtual bool wants_frame(int frame, const KIVString& file,
                             const std::function<bool()>& is_there);
    virtual void frame_ended(const FrameReport&) {}

    /// Asked during a frame; may be null.
    virtual AbortPanel* inq_abort_panel() { return nullptr; }

    /// Whether reports tell of pictures that can't be read.
    virtual bool looks_for_images() const { return false; }

    /// Whether files wait for `CommandOutput::finish_file` to give them their names.
    virtual bool leaves_unfinished() const { return false; }

    /// A rehearsal makes no folder.
    virtual bool is_rehearsal() const { return false; }

private:
    int next = 0;
    int last = -1;
};
