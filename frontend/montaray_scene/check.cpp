#include "frontend/montaray_scene/Findings.h"
#include "frontend/montaray_scene/SceneFiles.h"
#include "frontend/montaray_scene/verbs.h"
#include "kivlib/hdr/SearchFileFinder.h"
#include "kivlib/hdr/file_operations.h"
#include "scene/hdr/KIVScene.h"
#include "xsheet/store_control/hdr/CommitRecord.h"
#include "xsheet/store_control/hdr/FolderFacts.h"
#include "xsheet/store_control/hdr/FolderLock.h"
#include "xsheet/store_control/hdr/InterruptedSave.h"
#include "xsheet/store_control/hdr/LoadFindings.h"
#include "xsheet/store_control/hdr/SceneParts.h"

#include <algorithm>
#include <iostream>
#include <unistd.h>

namespace {
KIVString join(const KIVString& folder, const KIVString& name)
{
    return KIVString(folder).append_path(name);
}

void tell_interrupted_save(const KIVString& folder, const InterruptedSave& interrupted,
                           Findings& findings)
{
    const KIVString record = join(folder, CommitRecord::FILE_NAME);
    switch (interrupted.inq_state()) {
    case InterruptedSave::NONE:
        break;
    case InterruptedSave::TORN:
        findings.fault(record, "a save was interrupted before it counted; recover undoes it");
        break;
    case InterruptedSave::OUTDATED:
        findings.fault(record, "is left from a save of another time; recover removes it");
        break;
    case InterruptedSave::MOVED:
    case InterruptedSave::PENDING:
        findings.fault(record, "a save was interrupted in its last moves; recover ends them");
        break;
    case InterruptedSave::DAMAGED:
        for (const KIVString& name : interrupted.inq_bad())
            findings.fault(join(folder, name), "was lost in an interrupted save");
        break;
    }
}

void note_left_overs(const KIVString& folder, const InterruptedSave& interrupted,
                     Findings& findings)
{
    for (const char* name : SCENE_PARTS) {
        const KIVString part = join(folder, name);
        const bool is_pending = std::ranges::count(interrupted.inq_pending(), name) > 0;
        if (!is_pending && inq_file_facts(part + "~").is_there())
            findings.note(part + "~", "is left from a save that did not finish, and means nothing");
        if (inq_file_facts(part + ".CKP").is_there())
            findings.note(part + ".CKP", "is a checkpoint, which no load reads");
    }
}

/// What only shows when the parts come together.
Findings check_whole(const KIVString& folder)
{
    Findings findings;
    const LoadFindings contradictions;
    Alerts alerts;
    const std::unique_ptr<KIVScene> scene(KIVScene::load_from_file(folder, nullptr, false));
    alerts.move_to(findings, folder);
    for (const KIVString& contradiction : contradictions.inq_all())
        findings.fault(folder, contradiction);
    if (!scene && !findings.has_faults())
        findings.fault(folder, "the load was given up");
    return findings;
}

void check_files(const KIVString& folder, FileSearch& search, Findings& findings)
{
    const InterruptedSave interrupted(folder);
    tell_interrupted_save(folder, interrupted, findings);
    note_left_overs(folder, interrupted, findings);

    Findings parts;
    check_parts(folder, interrupted, parts);
    findings.add(parts);
    if (!parts.has_faults() && interrupted.inq_state() != InterruptedSave::DAMAGED)
        findings.add(check_whole(folder));
    check_assets(folder, interrupted, search, findings);
    check_class_usage(folder, interrupted, findings);
}

/// Where there are no locks, a save may come between, and what was found is of two scenes.
void check_undisturbed(const KIVString& folder, FileSearch& search, Findings& findings)
{
    const std::vector<FileFacts> before = inq_scene_facts(folder);
    check_files(folder, search, findings);
    if (inq_scene_facts(folder) != before)
        findings.fault(folder, "was changed by another program meanwhile; check it again");
}
} // namespace

// The lock stays while the scene is loaded: a load of the same process can't get it alone then, so
// it does not end an interrupted save but reads the parts where they are.
int check_scene(const std::string& scene_folder, FileSearch& search)
{
    const KIVString folder = inq_absolute_path(scene_folder);
    Findings findings;
    FolderLock lock;
    if (!inq_is_directory(folder))
        findings.fault(folder, "there is no such folder");
    else if (::access(folder.c_str(), R_OK | X_OK) != 0)
        findings.fault(folder, "can't be read: " + inq_system_error());
    else if (lock.take(folder, FolderLock::SHARED) == FolderLock::BUSY)
        findings.fault(folder, "is being saved by another program");
    else {
        FolderLock::set_patience(std::chrono::milliseconds(0));
        check_undisturbed(folder, search, findings);
    }
    std::cout << findings.inq_text();
    return findings.has_faults() ? FAILED : DONE;
}
