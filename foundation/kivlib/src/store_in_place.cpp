#include "kivlib/hdr/store_in_place.h"

#include "kivlib/hdr/BinOStream.h"
#include "kivlib/hdr/alert_panel.h"

#include <cstdio>
#include <filesystem>

namespace {
bool is_on_disc(BinOStream& stream, OnFailure on_failure)
{
    if (on_failure == OnFailure::TELL_USER)
        return !stream.alert_user_if_error();
    FileHandle file = stream.take_file();
    return stream.inq_error_state() == KIVStream::OKAY && file.sync() && file.close();
}

bool store(const KIVObject& object, const KIVString& path, OnFailure on_failure)
{
    BinOStream stream(path.c_str(), 1, -1);
    stream.insert_with_class_hdr(&object);
    if (is_on_disc(stream, on_failure))
        return true;
    if (stream.inq_error_state() != KIVStream::CANT_OPEN)
        std::remove(path.c_str());
    return false;
}

KIVString folder_of(const KIVString& path)
{
    const std::string folder = std::filesystem::path(path.str()).parent_path().string();
    return folder.empty() ? "." : folder;
}
} // namespace

bool store_in_place(const KIVObject& object, const KIVString& path, OnFailure on_failure)
{
    const KIVString fresh = path + "~";
    if (!store(object, fresh, on_failure))
        return false;
    if (std::rename(fresh.c_str(), path.c_str()) == 0 && sync_folder(folder_of(path)))
        return true;
    const KIVString reason = inq_system_error();
    std::remove(fresh.c_str());
    if (on_failure == OnFailure::TELL_USER)
        run_alert_panel("The file can't be written: " + reason + ".\n" + path,
                        "File Operation Failed", nullptr, nullptr, nullptr);
    return false;
}
