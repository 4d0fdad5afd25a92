#include "kivlib/hdr/GeneralOStream.h"

GeneralOStream::GeneralOStream(const char* path, int permissions)
    : GeneralOStream(path, FileHandle::open_to_write(path, permissions))
{}

GeneralOStream::GeneralOStream(const char* path, FileHandle opened, Syncing syncing)
    : path(path), file(std::move(opened)), syncing(syncing)
{
    if (!file.is_open())
        set_error(CANT_OPEN, inq_system_error());
}

GeneralOStream::~GeneralOStream()
{
    close();
}

bool GeneralOStream::alert_user_if_error() const
{
    auto* self = const_cast<GeneralOStream*>(this);
    self->flush();
    self->sync();
    return CharOStream::alert_user_if_error();
}

void GeneralOStream::close()
{
    flush();
    if (!file.close())
        set_error(CANT_WRITE, inq_system_error());
}

/// The head and the checksum speak of the whole, so a second flush writes all of it again.
void GeneralOStream::flush()
{
    if (inq_error_state() != OKAY || !file.is_open() || flushed == inq_payload().size())
        return;
    const std::string head = inq_head();
    Checksum checksum;
    const std::string tail = inq_tail(head, checksum);
    sum = {head.size() + inq_payload().size() + tail.size(), checksum.get()};
    if (!file.rewind_and_empty() || !file.write_all(head.data(), head.size()) ||
        !file.write_all(inq_payload().data(), inq_payload().size()) ||
        !file.write_all(tail.data(), tail.size()))
        set_error(CANT_WRITE, inq_system_error());
    flushed = inq_payload().size();
    is_synced = false;
}

FileHandle GeneralOStream::take_file()
{
    flush();
    return std::move(file);
}

void GeneralOStream::sync()
{
    if (inq_error_state() != OKAY || syncing != SYNCS || is_synced || !file.is_open())
        return;
    if (!file.sync())
        set_error(CANT_WRITE, inq_system_error());
    is_synced = true;
}
