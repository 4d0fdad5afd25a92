#include "xsheet/store_control/hdr/CommitRecord.h"
#include "xsheet/store_control/hdr/InterruptedSave.h"
#include "xsheet/store_control/hdr/SceneParts.h"
#include "xsheet/store_control/hdr/XSheetStoreController.h"
#include "xsheet/store_control/src/PendingPart.h"

#include <cerrno>
#include <cstdio>
#include <sys/stat.h>
#include <unistd.h>

// A save writes every part to a name with "~", brings them to the disc and puts a record of them
// into the folder. With the record the save has happened; the moves that are left to do then can be
// ended by anyone, at any time.

namespace {
constexpr char TAIL[] = ".  Contact your system administrator.";
constexpr char HERE[] = "."; // the working directory is the open folder

KIVString listed(const std::vector<KIVString>& names)
{
    KIVString list;
    for (const KIVString& name : names)
        list += (list.is_null() ? "" : ", ") + name;
    return list;
}

/// A file, or nothing, whose place a move can take.
bool can_be_replaced(const KIVString& name)
{
    struct stat facts {};
    if (::lstat(name.c_str(), &facts) != 0)
        return errno == ENOENT;
    errno = S_ISDIR(facts.st_mode) ? EISDIR : EEXIST;
    return S_ISREG(facts.st_mode) || S_ISLNK(facts.st_mode);
}
} // namespace

bool XSheetStoreController::take_lock(FolderLock::Kind kind)
{
    if (failed)
        return false;
    if (lock.take(HERE, kind) == FolderLock::BUSY)
        set_failed("The scene " + root_folder + " is in use by another program" + TAIL);
    return is_okay();
}

bool XSheetStoreController::begin_load()
{
    read_with_tilde.clear();
    facts_at_load.clear();
    return take_lock(FolderLock::SHARED) && recover_to_load();
}

// A lock may hold off the programs of this machine alone.
bool XSheetStoreController::end_load()
{
    const bool is_same = facts_at_load == inq_scene_facts(HERE);
    lock.release();
    return is_same;
}

/// False, and the user is told, if parts are lost.
bool XSheetStoreController::tell_damage(const InterruptedSave& interrupted)
{
    if (interrupted.inq_state() == InterruptedSave::DAMAGED)
        set_failed("The scene " + root_folder + " is damaged: a save was interrupted, and " +
                   listed(interrupted.inq_bad()) + " is lost or can't be read" + TAIL);
    return is_okay();
}

// Who may not change the folder, or can't keep others from it, reads the parts where they are. The
// folder's facts come before anything is judged by what stands in it.
bool XSheetStoreController::recover_to_load()
{
    facts_at_load = inq_scene_facts(HERE);
    if (InterruptedSave(HERE).inq_state() == InterruptedSave::NONE)
        return true;
    const bool may_move =
        lock.is_held() && lock.take(HERE, FolderLock::EXCLUSIVE) == FolderLock::HELD;
    if (!may_move && !take_lock(FolderLock::SHARED))
        return false;
    InterruptedSave interrupted = judge_undisturbed();
    if (may_move && interrupted.finish())
        facts_at_load = inq_scene_facts(HERE);
    lock.share();
    read_with_tilde = interrupted.inq_pending();
    return tell_damage(interrupted);
}

/// A folder that somebody is just saving into may look damaged.
InterruptedSave XSheetStoreController::judge_undisturbed()
{
    constexpr int MOST_TRIES = 20;
    for (int tries = 1;; ++tries) {
        facts_at_load = inq_scene_facts(HERE);
        InterruptedSave interrupted(HERE);
        const bool is_sure = interrupted.inq_state() != InterruptedSave::DAMAGED ||
                             facts_at_load == inq_scene_facts(HERE);
        if (is_sure || tries == MOST_TRIES)
            return interrupted;
    }
}

/// A folder without a scene may have been made by a save that was interrupted at once.
bool XSheetStoreController::sync_parent() const
{
    if (!folder_is_new && inq_file_facts(SCENE_CONTENTS).is_there())
        return true;
    return sync_folder("..") || (!folder_is_new && errno == EACCES);
}

bool XSheetStoreController::begin_save()
{
    is_saved = is_committed = false;
    drop_parts([&](const PendingPart& part) { return !part.is_in(root_folder); });
    if (!take_lock(FolderLock::EXCLUSIVE))
        return false;
    InterruptedSave interrupted(HERE);
    const bool is_ready =
        sync_parent() && tell_damage(interrupted) && interrupted.finish() && sync_folder(HERE);
    if (!is_ready)
        set_failed("Could not save into the folder " + root_folder + ": " + inq_system_error() +
                   TAIL);
    return is_okay();
}

void XSheetStoreController::end_save()
{
    if (std::exchange(is_saved, false))
        for (const char* part : SCENE_PARTS)
            ::unlink((KIVString(part) + "~").c_str());
    lock.release();
}

void XSheetStoreController::set_tilde_saving_enabled(bool enabled)
{
    tilde_saving = enabled;
    if (enabled && tilde_list)
        for (auto* part : tilde_list->of<PendingPart>())
            part->set_stale();
}

/// Entries of the tilde list that will never be moved hold files open until they go.
template <class Condition> void XSheetStoreController::drop_parts(Condition is_dropped)
{
    std::vector<PendingPart*> dropped;
    if (tilde_list)
        for (auto* part : tilde_list->of<PendingPart>())
            if (is_dropped(*part))
                dropped.push_back(part);
    for (PendingPart* part : dropped) {
        tilde_list->remove(part);
        delete part;
    }
}

void XSheetStoreController::add_to_tilde_list(gsl::owner<PendingPart*> part)
{
    if (!tilde_list)
        tilde_list = new KIVLinkedList(false);
    tilde_list->add(part);
}

gsl::owner<BinOStream*> XSheetStoreController::open_pending_part(const KIVString& name)
{
    KIVString path = relative_path;
    path.append_path(name);
    drop_parts([&](const PendingPart& old) { return old.is_the_file(path, root_folder); });
    auto* part = new PendingPart(path, root_folder);
    add_to_tilde_list(part);
    return part->open();
}

void XSheetStoreController::was_closed(const KIVStream* stream, bool is_good)
{
    if (stream && tilde_list)
        for (auto* part : tilde_list->of<PendingPart>())
            if (part->is_written_by(stream))
                part->was_closed(is_good);
}

bool XSheetStoreController::inq_part_awaits_move(const KIVString& name) const
{
    if (tilde_list)
        for (auto* part : tilde_list->of<PendingPart>())
            if (part->is_in(root_folder) && part->inq_name() == name)
                return true;
    return false;
}

void XSheetStoreController::save_finished()
{
    if (!tilde_saving || failed || !tilde_list)
        return;
    // What an earlier save has left moves with this one only if nothing has come between.
    drop_parts([&](const PendingPart& part) { return !part.may_move_to(root_folder); });
    if (!tilde_list->inq_is_empty() && sync_parts() && commit())
        move_parts();
}

bool XSheetStoreController::sync_parts()
{
    for (auto* part : tilde_list->of<PendingPart>())
        if (!part->is_whole()) {
            set_failed("Could not write the file " + part->inq_name() + ", which was changed" +
                       TAIL);
            return false;
        } else if (!part->sync_and_close() || !can_be_replaced(*part)) {
            return refuse("Could not write the file " + part->inq_name());
        }
    return sync_folder(HERE) || refuse("Could not write the folder " + root_folder);
}

/// From here on the save has happened. Files that are no parts of a scene are moved without a
/// record, which nobody would believe.
bool XSheetStoreController::commit()
{
    std::vector<CommitRecord::Part> parts;
    for (auto* part : tilde_list->of<PendingPart>())
        parts.push_back({part->inq_name(), part->inq_sum()});
    const CommitRecord record(std::move(parts));
    is_committed = !record.names_only_parts() || record.write(HERE);
    if (is_committed)
        return true;
    const int error = errno;
    ::unlink(CommitRecord::FILE_NAME);
    errno = error;
    return refuse("Could not write the folder " + root_folder);
}

/// A move that fails is left to whoever opens the folder next, and so are those after it.
void XSheetStoreController::move_parts()
{
    is_saved = true;
    for (auto* part : tilde_list->of<PendingPart>())
        is_saved = is_saved && replace_tilde(*part);
    forget_parts();
    is_saved = is_saved && sync_folder(HERE) &&
               (::unlink(CommitRecord::FILE_NAME) == 0 || errno == ENOENT);
}

// Where there are no locks another program may have moved the file first.
bool XSheetStoreController::replace_tilde(const KIVString& name)
{
    return std::rename((name + "~").c_str(), name.c_str()) == 0 || errno == ENOENT;
}

void XSheetStoreController::forget_parts()
{
    if (tilde_list)
        tilde_list->remove_all_deleting_objects();
}

/// Fails with the words of the system behind `what`.
bool XSheetStoreController::refuse(const KIVString& what)
{
    set_failed(what + ": " + inq_system_error() + TAIL);
    return false;
}
