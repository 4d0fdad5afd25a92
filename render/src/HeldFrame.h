#pragma once

#include "kivlib/hdr/FileHandle.h"
#include "kivlib/hdr/KIVStringList.h"

#include <sys/stat.h>
#include <vector>

class BitmapProvider;
class CNode;
class CNodeRasterImage;
class KIVScene;
class RenderScene;
struct FrameReport;

/// A file as it is on disc. Equal states of one path mean that nobody has written to it meanwhile.
class FileState {
public:
    explicit FileState(const KIVString& path);
    explicit FileState(const FileHandle& file);

    bool operator==(const FileState& other) const;

    /// Whether it is the same file with the same contents, perhaps under another name.
    bool has_contents_of(const FileState& other) const;

    /// False for a file so new that its next change might not show.
    bool is_settled() const;

private:
    struct stat facts {}; // filled while `exists` is found out
    bool exists;
};

/// The frame that was written last. Its file serves for the next one where that is proved to look
/// the same: every cell of the sheet is held, every picture is the same file in the same state, and
/// the graph has no node of an outside module, which might look at the frame number.
class HeldFrame {
public:
    /// A hopeless one, of frames in two fields, proves nothing: half a frame on, what is held may
    /// have moved.
    HeldFrame(KIVScene& scene, RenderScene& renderer, int bits, bool is_hopeless);

    /// As far as the scene goes, whatever happens to its files.
    bool is_same(int a, int b) const;

    /// Before the frame is rendered: a picture that changes later counts as changed.
    void will_render(int frame);

    /// Whether the frame was rendered without a picture that the next one may have after all.
    bool has_lost_images(int frame) const;
    void was_written(const FrameReport& report);

    /// The held frame's file if it serves for the frame, else not open. After `will_render`.
    FileHandle open_file_for(int frame) const;

    /// Those that the graph refers to on the frame and nobody can read, or could not while it was
    /// rendered.
    KIVStringList find_unreadable_images(int frame) const;

private:
    void take(CNode& node);
    KIVString explain_missing(int id) const;

    RenderScene& renderer;
    int bits;
    BitmapProvider& provider;
    bool is_provable;
    std::vector<CNodeRasterImage*> images; // not owned
    std::vector<FileState> rendered_from;
    bool are_settled = true;
    std::vector<FileState> held_from;
    bool was_settled = true;
    int held_frame = 0; // 0: none
    KIVString file;
    KIVString unfinished; // where the file waited for its name; empty if it did not
    FileState file_state{""};
};
