#pragma once

#include "tests/faults/SceneOnTrial.h"
#include "tests/support/Captured.h"
#include "tests/support/TempFolder.h"
#include "xsheet/store_control/hdr/FolderLock.h"

#include <string>

/// A folder that stands for a disc, with scenes in it, and room beside it. Whatever the process
/// says while it stands is caught.
class Stage {
public:
    static constexpr char SCENE[] = "scene";

    // A lock that a fault refuses is never given later.
    Stage() { FolderLock::set_patience(std::chrono::milliseconds(0)); }

    std::string disc() const { return temp.path("disc").str(); }
    std::string scene() const { return disc() + "/" + SCENE; }

    /// Where a disc is looked at that the next step would change.
    std::string aside() const { return temp.path("aside").str(); }
    std::string scene_aside() const { return aside() + "/" + SCENE; }

    void set(const FolderContents& contents) const { write_folder(disc(), contents); }
    void keep_aside() const { write_folder(aside(), read_folder(disc())); }

    /// Makes the disc hold the scene of one generation, as "scene" or under another name.
    void set_whole(int generation, const std::string& name = SCENE) const
    {
        set({});
        const Scene scene = SceneOnTrial::make(generation);
        if (!SceneOnTrial::save(*scene, disc() + "/" + name))
            std::abort();
    }

    /// What a load of this disc would give, tried beside it.
    Loaded load_aside(const FolderContents& contents) const
    {
        write_folder(aside(), contents);
        return SceneOnTrial::load_generations(scene_aside());
    }

    std::size_t inq_alert_count() const { return captured.inq_alerts().size(); }

private:
    /// In memory if there is such a place: thousands of cases would wear out a disc.
    static std::filesystem::path place()
    {
        const std::filesystem::path memory = "/dev/shm";
        std::error_code error;
        return std::filesystem::is_directory(memory, error)
                   ? memory
                   : std::filesystem::temp_directory_path();
    }

    Captured captured;
    TempFolder temp{place()};
};
