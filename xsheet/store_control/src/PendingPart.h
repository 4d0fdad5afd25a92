#pragma once

#include "kivlib/hdr/BinOStream.h"
#include "kivlib/hdr/Checksum.h"
#include "kivlib/hdr/KIVString.h"
#include "xsheet/store_control/hdr/FolderFacts.h"

/// An entry of the tilde list: a part of a save, itself the path from the open folder, which is
/// written under its name with "~" and awaits its move.
class PendingPart : public KIVString {
public:
    PendingPart(const KIVString& path, const KIVString& folder) : KIVString(path), folder(folder) {}

    /// The same without the dot of the open folder.
    KIVString inq_name() const;

    KIVString inq_tilde_name() const { return *this + "~"; }

    /// Creates the file; whatever has the name goes. The caller deletes the stream, after
    /// `was_closed`.
    gsl::owner<BinOStream*> open();
    bool is_written_by(const KIVStream* stream) const { return stream && stream == writer; }
    void was_closed(bool is_good);

    bool is_in(const KIVString& path) const { return folder == path; }
    bool is_the_file(const KIVString& name, const KIVString& path) const
    {
        return *this == name && is_in(path);
    }

    /// Left by an earlier save.
    void set_stale() { is_stale = true; }

    /// Whether a save of the folder `path` takes this part along: its own always, and one that an
    /// earlier save of that folder has left if it is whole.
    bool may_move_to(const KIVString& path) const;

    /// Whether the file was written to its end, and is still what was written.
    bool is_whole() const;
    const FileSum& inq_sum() const { return sum; }

    /// False if the file may not be on the disc; it is not whole then.
    bool sync_and_close();

private:
    KIVString folder;
    BinOStream* writer = nullptr; // not owned
    FileHandle file;              // written, and open until it is synced
    FileSum sum;
    FileFacts facts; // none until the file is written whole
    bool is_synced = false;
    bool is_stale = false;
};
