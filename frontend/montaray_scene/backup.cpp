#include "frontend/montaray_scene/BackupShelf.h"
#include "frontend/montaray_scene/Findings.h"
#include "frontend/montaray_scene/FolderCopy.h"
#include "frontend/montaray_scene/SceneFiles.h"
#include "frontend/montaray_scene/verbs.h"
#include "kivlib/hdr/file_operations.h"
#include "kivlib/hdr/in_one_line.h"
#include "xsheet/store_control/hdr/FolderFacts.h"
#include "xsheet/store_control/hdr/FolderLock.h"
#include "xsheet/store_control/hdr/InterruptedSave.h"
#include "xsheet/store_control/hdr/SceneParts.h"

#include <iostream>
#include <stdexcept>

namespace {
/// Makes one copy of a scene.
class Backup {
public:
    explicit Backup(const KIVString& scene) : scene(scene), shelf(scene) {}

    /// Throws a `std::runtime_error` that says why there is no copy.
    void run(std::optional<int> keep)
    {
        const KIVString fault = shelf.find_fault_of_name();
        if (!fault.is_null())
            throw std::runtime_error(fault.str());
        if (!inq_is_directory(scene))
            throw std::runtime_error("there is no such folder");
        lock(shelf_lock, shelf.inq_parent(), FolderLock::EXCLUSIVE);
        make_copy(shelf.inq_next_number());
        if (keep)
            remove_all_but(static_cast<std::size_t>(*keep));
    }

private:
    static void lock(FolderLock& folder_lock, const KIVString& folder, FolderLock::Kind kind)
    {
        if (folder_lock.take(folder, kind) == FolderLock::BUSY)
            throw std::runtime_error(folder.str() + " is in use by another program");
    }

    static std::set<std::string> names_left_out()
    {
        std::set<std::string> names{BackupShelf::MARK};
        for (const char* part : SCENE_PARTS)
            names.insert(std::string(part) + "~");
        return names;
    }

    void make_copy(int number) const
    {
        const KIVString place = shelf.begin(number);
        try {
            fill(place);
            shelf.finish(number);
        } catch (...) {
            shelf.give_up();
            throw;
        }
        std::cout << in_one_line(shelf.inq_copy(number)).str() << ": made\n";
    }

    /// Where there are no locks, a save may come between, and shows in the facts.
    void fill(const KIVString& place) const
    {
        FolderLock scene_lock;
        lock(scene_lock, scene, FolderLock::SHARED);
        if (InterruptedSave(scene).inq_state() != InterruptedSave::NONE)
            throw std::runtime_error("a save was interrupted; recover the scene first");
        const std::vector<FileFacts> before = inq_scene_facts(scene);
        FolderCopy copy(scene.str(), place.str(), names_left_out());
        copy.run();
        if (inq_scene_facts(scene) != before)
            throw std::runtime_error("was changed while it was copied");
        refuse_damage(place);
        for (const std::string& name : copy.inq_passed_over())
            std::cout << in_one_line(scene).str() << ": note: " << in_one_line(name).str()
                      << " is neither file nor folder, and is not copied\n";
    }

    /// Copies of a scene that can't be read would in time replace all good ones.
    static void refuse_damage(const KIVString& copy)
    {
        Findings findings;
        check_parts(copy, InterruptedSave(copy), findings);
        if (findings.has_faults())
            throw std::runtime_error("is not sound, see check; nothing was copied");
    }

    void remove_all_but(std::size_t keep) const
    {
        std::vector<int> numbers = shelf.inq_numbers();
        numbers.resize(numbers.size() - std::min(keep, numbers.size()));
        for (const int number : numbers) {
            shelf.remove(number);
            std::cout << in_one_line(shelf.inq_copy(number)).str() << ": deleted\n";
        }
    }

    KIVString scene;
    BackupShelf shelf;
    FolderLock shelf_lock; // one copy at a time
};
} // namespace

int back_up_scene(const std::string& scene_folder, std::optional<int> keep)
{
    const KIVString scene = inq_absolute_path(scene_folder);
    try {
        FolderLock::set_patience(std::chrono::minutes(5));
        Backup(scene).run(keep);
        return DONE;
    } catch (const std::exception& exception) {
        std::cerr << in_one_line(scene).str() << ": " << in_one_line(exception.what()).str()
                  << '\n';
        return FAILED;
    }
}
