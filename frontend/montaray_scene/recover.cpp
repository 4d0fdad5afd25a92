#include "frontend/montaray_scene/verbs.h"
#include "kivlib/hdr/file_operations.h"
#include "kivlib/hdr/in_one_line.h"
#include "xsheet/store_control/hdr/CommitRecord.h"
#include "xsheet/store_control/hdr/FolderFacts.h"
#include "xsheet/store_control/hdr/FolderLock.h"
#include "xsheet/store_control/hdr/InterruptedSave.h"
#include "xsheet/store_control/hdr/SceneParts.h"

#include <iostream>

namespace {
KIVString listed(const std::vector<KIVString>& names)
{
    KIVString list;
    for (const KIVString& name : names)
        list += (list.is_null() ? "" : ", ") + name;
    return list;
}

/// Parts that a save wrote and never committed. They stay: nobody reads them, and the next save
/// removes them.
std::vector<KIVString> find_stray_parts(const KIVString& folder)
{
    std::vector<KIVString> strays;
    for (const char* part : SCENE_PARTS) {
        const KIVString name = KIVString(part) + "~";
        if (inq_file_facts(KIVString(folder).append_path(name)).is_there())
            strays.push_back(name);
    }
    return strays;
}

/// What ending a save in this state does.
KIVString describe(const InterruptedSave& interrupted)
{
    switch (interrupted.inq_state()) {
    case InterruptedSave::PENDING:
        return "the save is ended: moved " + listed(interrupted.inq_pending());
    case InterruptedSave::MOVED:
        return "the save is ended: all was in its place";
    case InterruptedSave::TORN:
        return "the save is undone: the scene is the one before it";
    case InterruptedSave::OUTDATED:
        return "removed the record of a save of another time";
    default:
        return "no save was interrupted";
    }
}

class Recovery {
public:
    explicit Recovery(const std::string& scene_folder) : folder(inq_absolute_path(scene_folder)) {}

    int run()
    {
        if (!inq_is_directory(folder))
            return refuse("there is no such folder");
        FolderLock lock;
        if (lock.take(folder, FolderLock::EXCLUSIVE) == FolderLock::BUSY)
            return refuse("is in use by another program");
        InterruptedSave interrupted(folder);
        if (interrupted.inq_state() == InterruptedSave::DAMAGED)
            return refuse("is damaged, and nothing was changed: a save was interrupted, and " +
                          listed(interrupted.inq_bad()) + " is lost");
        const KIVString done = describe(interrupted);
        if (!interrupted.finish())
            return refuse("could not be changed: " + inq_system_error());
        sync_folder(folder);
        std::cout << in_one_line(folder).str() << ": " << done.str()
                  << describe_strays(find_stray_parts(folder)).str() << '\n';
        return DONE;
    }

private:
    static KIVString describe_strays(const std::vector<KIVString>& strays)
    {
        return strays.empty()
                   ? KIVString()
                   : "; " + listed(strays) + " of a save that did not finish mean nothing";
    }

    int refuse(const KIVString& reason) const
    {
        std::cerr << in_one_line(folder).str() << ": " << in_one_line(reason).str() << '\n';
        return FAILED;
    }

    KIVString folder;
};
} // namespace

int recover_scene(const std::string& scene_folder)
{
    return Recovery(scene_folder).run();
}
