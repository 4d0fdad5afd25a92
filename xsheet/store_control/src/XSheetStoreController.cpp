#include "xsheet/store_control/hdr/XSheetStoreController.h"

#include "kivlib/hdr/BinOStream.h"
#include "kivlib/hdr/GeneralIStream.h"
#include "kivlib/hdr/KIVDateAndTime.h"
#include "kivlib/hdr/KIVFile.h"
#include "kivlib/hdr/alert_panel.h"
#include "kivlib/hdr/file_operations.h"
#include "kivlib/hdr/report_error.h"
#include "xsheet/store_control/src/PendingPart.h"

#include <cstdio>
#include <unistd.h>

namespace {
constexpr char TAIL[] = ".  Contact your system administrator.";
constexpr char SOURCE_PLACE[] = "xsheet/store_control/src/XSheetStoreController";
constexpr int UNDEFINED_MODE_LINE = 239; // the line that the report names
constexpr int ALL_MAY_USE_IT = 0777;
constexpr int IS_DIRTY = 1;
} // namespace

XSheetStoreController* inq_xs_store_control()
{
    static auto* controller = new XSheetStoreController;
    return controller;
}

XSheetStoreController::~XSheetStoreController()
{
    forget_parts();
    delete tilde_list;
}

bool XSheetStoreController::set_failed(const KIVString& message)
{
    if (!failed)
        run_alert_panel(message, "File Operation Failed", nullptr, nullptr, nullptr);
    return set_failed();
}

bool XSheetStoreController::set_failed()
{
    return !std::exchange(failed, true);
}

bool XSheetStoreController::clear_failed()
{
    return std::exchange(failed, false);
}

bool XSheetStoreController::open_folder(const KIVString& given, int mode)
{
    if (failed)
        return false;
    const KIVString path = inq_lasting_path(given);
    folder_is_new = false;
    read_with_tilde.clear();
    if (!inq_folder_exists(path)) {
        if (mode == 0) {
            set_failed("Could not find the folder " + path + TAIL);
            return false;
        }
        if (mode != 1) {
            report_error(SOURCE_PLACE, UNDEFINED_MODE_LINE) << "Undefined filemode\n";
            return false;
        }
        if (!add_folder(path)) {
            set_failed("Could not create the folder " + path + TAIL);
            return false;
        }
        folder_is_new = true;
    }
    set_root_folder(path, 0);
    if (!kiv_chdir(path))
        set_failed("Could not set the folder: " + current_path + TAIL);
    own_directory = inq_working_directory();
    return is_okay();
}

// Who saves to the same relative path twice means one scene, though the first save has left the
// working directory inside it.
KIVString XSheetStoreController::inq_lasting_path(const KIVString& path)
{
    const KIVString here = inq_working_directory();
    if (!(here == own_directory))
        outer_directory = here;
    if (path.is_null())
        return path;
    return inq_absolute_path(KIVFile(KIVString(outer_directory).append_path(path)));
}

void XSheetStoreController::set_root_folder(const KIVString& path, int)
{
    root_folder = path;
    reset_current_path();
}

void XSheetStoreController::reset_current_path()
{
    if (failed)
        return;
    current_path = root_folder;
    relative_path = ".";
    if (!root_folder.is_null() && !kiv_chdir(root_folder))
        set_failed("Could not reset the path to " + root_folder + TAIL);
}

bool XSheetStoreController::close_folder()
{
    if (failed)
        return false;
    if (!(current_path == root_folder)) {
        current_path = current_path.get_path();
        relative_path = relative_path.get_path();
    }
    if (!kiv_chdir(current_path))
        set_failed("Could not set the directory " + current_path + TAIL);
    return is_okay();
}

bool XSheetStoreController::add_folder(const KIVString& path)
{
    constexpr int EXISTS = 17;
    const int result = makedir(path, ALL_MAY_USE_IT, false);
    if (result == EXISTS)
        set_failed("The folder " + path + " already exists.  Contact your system administrator.");
    else if (result != 0)
        set_failed("Could not create the new folder " + path + TAIL);
    return result == 0;
}

bool XSheetStoreController::inq_folder_exists(const KIVString& path)
{
    return is_okay() && inq_is_directory(path);
}

bool XSheetStoreController::delete_folder(const KIVString&)
{
    return false;
}

gsl::owner<KIVIStream*> XSheetStoreController::open_load_file(const KIVString& name)
{
    if (failed)
        return nullptr;
    if (!inq_part_exists(name)) {
        set_failed("Could not open the file " + name + TAIL);
        return nullptr;
    }
    const KIVString path = is_read_with_tilde(name) ? name + "~" : name;
    auto stream = std::make_unique<GeneralIStream>(path.c_str());
    if (stream->alert_user_if_error()) {
        set_failed();
        return nullptr;
    }
    return stream.release();
}

gsl::owner<KIVOStream*> XSheetStoreController::open_save_file(const KIVString& name)
{
    if (failed || (!tilde_saving && !keep_checkpoint(name)))
        return nullptr;
    std::unique_ptr<KIVOStream> stream(tilde_saving ? open_pending_part(name)
                                                    : new BinOStream(name.c_str(), 1, -1));
    if (stream->alert_user_if_error()) {
        was_closed(stream.get(), false);
        set_failed();
        return nullptr;
    }
    return stream.release();
}

/// A file that is about to be written anew is kept as its checkpoint, unless there is a newer one.
bool XSheetStoreController::keep_checkpoint(const KIVString& name)
{
    const KIVString checkpoint = name + ".CKP";
    if (inq_file_exists(name) &&
        (!inq_file_exists(checkpoint) || inq_file_is_newer(name, checkpoint)))
        rename_file(name, checkpoint);
    return is_okay();
}

bool XSheetStoreController::close_stream(gsl::owner<KIVStream*> given)
{
    const std::unique_ptr<KIVStream> stream(given);
    const bool is_good = stream && !failed && !stream->alert_user_if_error();
    was_closed(given, is_good);
    if (!is_good)
        set_failed();
    return is_good;
}

bool XSheetStoreController::is_read_with_tilde(const KIVString& name) const
{
    return std::ranges::find(read_with_tilde, name) != read_with_tilde.end();
}

bool XSheetStoreController::inq_part_exists(const KIVString& name)
{
    return inq_file_exists(is_read_with_tilde(name) ? name + "~" : name);
}

bool XSheetStoreController::inq_file_exists(const KIVString& name)
{
    return is_okay() && ::inq_file_exists(name);
}

bool XSheetStoreController::inq_file_is_newer(const KIVString& a, const KIVString& b)
{
    if (!inq_file_exists(a) || !inq_file_exists(b)) {
        set_failed("Could not compare the files " + a + " and " + b + TAIL);
        return false;
    }
    return inq_file_modification_time(a) > inq_file_modification_time(b);
}

bool XSheetStoreController::rename_file(const KIVString& from, const KIVString& to)
{
    if (failed)
        return false;
    if (!inq_file_exists(from)) {
        set_failed("Could not rename the file " + from +
                   " as it does not exist.  Contact your system administrator.");
        return false;
    }
    if (inq_file_exists(to))
        delete_file(to);
    return make_symbolic_link(from, to) == 0 && ::unlink(from.c_str()) == 0;
}

bool XSheetStoreController::delete_file(const KIVString& name)
{
    if (failed)
        return false;
    if (!inq_file_exists(name)) {
        set_failed("Could not delete the file " + name +
                   " as it does not exist.  Contact your system administrator.");
        return false;
    }
    return ::unlink(name.c_str()) == 0;
}

namespace {
using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

bool copy_characters(std::FILE* from, std::FILE* to)
{
    for (int c = std::fgetc(from); c != EOF; c = std::fgetc(from))
        if (std::fputc(c, to) == EOF)
            return false;
    return std::ferror(from) == 0;
}
} // namespace

bool XSheetStoreController::copy_file(const KIVString& from, const KIVString& to)
{
    const File source(std::fopen(from.c_str(), "r"), std::fclose);
    if (!source)
        return false;
    File target(std::fopen(to.c_str(), "w"), std::fclose);
    if (!target)
        return false;
    const bool is_copied = copy_characters(source.get(), target.get());
    return std::fclose(target.release()) == 0 && is_copied;
}

bool XSheetStoreController::check_needs_saving_flags(int flags) const
{
    return (flags & IS_DIRTY) != 0 || (mode_flags & SAVE_ALL) != 0;
}

int XSheetStoreController::clear_flags_after_save(int flags) const
{
    return update_dirty_flags() ? flags & ~IS_DIRTY : flags;
}

// Where a check would go; the space is not known in advance.
bool XSheetStoreController::check_disc_space()
{
    return true;
}
