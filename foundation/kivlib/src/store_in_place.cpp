#include "kivlib/src/store_in_place.h"

#include "kivlib/hdr/BinOStream.h"
#include "kivlib/hdr/alert_panel.h"

#include <cstdio>

namespace {
bool store(const KIVObject& object, const KIVString& path)
{
    BinOStream stream(path.c_str(), 1, -1);
    stream.insert_with_class_hdr(&object);
    if (!stream.alert_user_if_error())
        return true;
    if (stream.inq_error_state() != KIVStream::CANT_OPEN)
        std::remove(path.c_str());
    return false;
}
} // namespace

bool store_in_place(const KIVObject& object, const KIVString& path)
{
    const KIVString fresh = path + "~";
    if (!store(object, fresh))
        return false;
    if (std::rename(fresh.c_str(), path.c_str()) == 0)
        return true;
    const KIVString reason = inq_system_error();
    std::remove(fresh.c_str());
    run_alert_panel("The file can't be written: " + reason + ".\n" + path, "File Operation Failed",
                    nullptr, nullptr, nullptr);
    return false;
}
