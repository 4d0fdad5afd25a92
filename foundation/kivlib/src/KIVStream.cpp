#include "kivlib/hdr/KIVStream.h"

#include "kivlib/hdr/alert_panel.h"

namespace {
const char* describe(int state)
{
    switch (state) {
    case KIVStream::CANT_OPEN:
        return "The file can't be opened";
    case KIVStream::CANT_READ:
        return "The file can't be read";
    case KIVStream::CANT_WRITE:
        return "The file can't be written";
    case KIVStream::FOREIGN_FILE:
        return "This is no file of objects";
    case KIVStream::NEWER_CONTAINER:
        return "The file was written by a newer release";
    case KIVStream::BAD_CHECKSUM:
        return "The file is damaged: its checksum does not fit";
    case KIVStream::ENDED:
        return "The file is damaged: a record ends too early";
    case KIVStream::BAD_HEADER:
        return "The file is damaged: a record has no sound header";
    case KIVStream::UNKNOWN_CLASS:
        return "The file needs classes that are not installed";
    case KIVStream::NEWER_CLASS:
        return "The file needs newer classes than are installed";
    case KIVStream::WRONG_CLASS:
        return "The file is damaged: an object is of another class than expected";
    case KIVStream::OWNED_TWICE:
        return "The file is damaged: an object has two owners";
    case KIVStream::TOO_DEEP:
        return "The objects nest too deeply";
    case KIVStream::BAD_COUNT:
        return "The file is damaged: a count is larger than its record";
    case KIVStream::BAD_NUMBER:
        return "A number is not finite";
    case KIVStream::NO_MEMORY:
        return "There is not enough memory";
    default:
        return "The file is damaged";
    }
}
} // namespace

bool KIVStream::alert_user_if_error() const
{
    if (inq_error_state() == OKAY)
        return false;
    if (!user_was_told)
        alert_user();
    user_was_told = true;
    return true;
}

void KIVStream::alert_user() const
{
    KIVString message = describe(inq_error_state());
    if (!error_detail.is_null())
        message += ": " + error_detail;
    message += ".\n" + inq_file_name();
    run_alert_panel(message, "File Operation Failed", nullptr, nullptr, nullptr);
}

void KIVStream::set_error_state(int state)
{
    if (error_state == OKAY)
        error_state = state;
}

void KIVStream::set_error(int state, const KIVString& detail)
{
    if (error_state == OKAY)
        error_detail = detail;
    set_error_state(state);
}
