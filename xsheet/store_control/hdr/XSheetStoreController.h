#pragma once

#include "kivlib/hdr/KIVLinkedList.h"
#include "xsheet/store_control/hdr/FolderFacts.h"
#include "xsheet/store_control/hdr/FolderLock.h"

class BinOStream;
class InterruptedSave;
class PendingPart;

/// The one gateway between a scene and the file system. It keeps the folder that is open, opens
/// streams for files in it, protects what is there while a save runs, and turns the first failure
/// into one alert and a flag that refuses every further operation until `clear_failed`. It changes
/// the working directory of the process.
class XSheetStoreController : public KIVObject {
public:
    /// Bits of the mode.
    enum {
        SAVE_ALL = 2,        // everything needs saving, whatever its flags
        LOADING = 4,         // for `KIVScene::load_from_file`
        DIRTY_FLAGS_LIVE = 8 // objects may set and clear their flags
    };

    XSheetStoreController() = default;
    ~XSheetStoreController() override;

    int inq_mode_flags() const { return mode_flags; }
    void set_mode_flags(int flags) { mode_flags = flags; }

    bool inq_has_failed() const { return failed; }
    bool is_okay() const { return !failed; }

    /// Raises the flag, and with a message tells the user first. True if this call raised it; if
    /// it is up already nothing happens.
    bool set_failed(const KIVString& message);
    bool set_failed();

    /// True if the flag was up.
    bool clear_failed();

    /// While enabled, a file is written under its name with "~", and `save_finished` moves it.
    void set_tilde_saving_enabled(bool enabled);
    bool inq_tilde_saving_enabled() const { return tilde_saving; }

    KIVString* inq_current_path() { return &current_path; }
    KIVString* inq_root_folder() { return &root_folder; }

    /// Makes `path` the root and the working directory. Mode 0: it must be there; mode 1: it is
    /// made if it is not.
    bool open_folder(const KIVString& path, int mode);

    /// `path` from the root of the file system. A relative one counts from the directory in which
    /// the program was before a folder was opened, unless it has changed it since.
    KIVString inq_lasting_path(const KIVString& path);
    bool close_folder();
    void reset_current_path();
    bool inq_folder_exists(const KIVString& path);

    /// Folders are never deleted: false.
    bool delete_folder(const KIVString& path);

    /// A stream on a file of the open folder, for `close_stream`. Null on failure.
    gsl::owner<KIVIStream*> open_load_file(const KIVString& name);
    gsl::owner<KIVOStream*> open_save_file(const KIVString& name);

    /// Deletes `stream`. True if it is there and without error and nothing failed before; all
    /// else is a failure.
    bool close_stream(gsl::owner<KIVStream*> stream);

    /// Brings the files of a whole save to the disc and commits them: from then on the save has
    /// happened, and without failure the files are moved over their final names, in the order of
    /// their writing.
    void save_finished();

    /// Around a load or save of the open folder: keeps other programs out, and first ends what an
    /// interrupted save has left.
    bool begin_load();
    bool begin_save();

    /// False if the folder could not be kept from change and has changed: what was read may be of
    /// two scenes.
    bool end_load();
    void release_lock() { lock.release(); }

    /// Whether the save that was begun last has happened, whatever failed afterwards.
    bool inq_is_committed() const { return is_committed; }

    /// What is left of the save goes, unless it failed or waits for its last moves.
    void end_save();

    /// Whether an earlier save has left the part, which would join the next one.
    bool inq_part_awaits_move(const KIVString& name) const;

    /// Whether the scene in the open folder has the part, be it still on its way to its place.
    bool inq_part_exists(const KIVString& name);

    bool inq_file_exists(const KIVString& name);

    /// Whether `a` was changed later than `b`.
    bool inq_file_is_newer(const KIVString& a, const KIVString& b);

    /// `to` is replaced.
    bool rename_file(const KIVString& from, const KIVString& to);
    bool delete_file(const KIVString& name);
    bool copy_file(const KIVString& from, const KIVString& to);

    bool update_dirty_flags() const { return (mode_flags & DIRTY_FLAGS_LIVE) != 0; }

    /// Whether an object with these dirty flags is to be saved.
    bool check_needs_saving_flags(int flags) const;

    /// The dirty flags that an object has after it was saved.
    int clear_flags_after_save(int flags) const;
    bool check_disc_space();

private:
    bool add_folder(const KIVString& path);
    void set_root_folder(const KIVString& path, int mode);
    bool replace_tilde(const KIVString& name);
    void add_to_tilde_list(gsl::owner<PendingPart*> part);
    bool keep_checkpoint(const KIVString& name);
    gsl::owner<BinOStream*> open_pending_part(const KIVString& name);
    void was_closed(const KIVStream* stream, bool is_good);

    bool take_lock(FolderLock::Kind kind);
    bool recover_to_load();
    bool sync_parent() const;
    bool is_read_with_tilde(const KIVString& name) const;
    bool tell_damage(const InterruptedSave& interrupted);
    bool refuse(const KIVString& what);
    template <class Condition> void drop_parts(Condition is_dropped);
    InterruptedSave judge_undisturbed();
    bool sync_parts();
    bool commit();
    void move_parts();
    void forget_parts();

    KIVString root_folder;
    KIVString current_path;
    KIVString relative_path{"."};
    int mode_flags = DIRTY_FLAGS_LIVE;
    bool failed = false;
    bool tilde_saving = false;
    gsl::owner<KIVLinkedList*> tilde_list = nullptr; // of PendingPart, each gone once it is moved

    KIVString outer_directory; // the program's
    KIVString own_directory;   // the working directory since a folder was opened
    FolderLock lock;
    bool folder_is_new = false;             // made by open_folder
    bool is_committed = false;              // the save has happened
    bool is_saved = false;                  // every part has reached its place
    std::vector<KIVString> read_with_tilde; // parts that can't be moved to where they belong
    std::vector<FileFacts> facts_at_load;   // without a lock
};

/// The controller of the process.
XSheetStoreController* inq_xs_store_control();
