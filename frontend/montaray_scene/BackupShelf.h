#pragma once

#include "kivlib/hdr/KIVString.h"

#include <vector>

/// The numbered copies of a scene, beside it: SCENE.backup-0001 and so on. A copy is made and
/// unmade under the name SCENE.backup~, so under its number it is always whole. Only a folder with
/// a mark that names it is taken for such a copy. Operations throw a `std::runtime_error`.
class BackupShelf {
public:
    static constexpr char MARK[] = "Scene.backup"; // a file in each copy

    /// `scene` is an absolute path.
    explicit BackupShelf(const KIVString& scene);

    /// What is wrong with the name of the scene; empty if it can have copies.
    KIVString find_fault_of_name() const;

    const KIVString& inq_parent() const { return parent; }
    KIVString inq_copy(int number) const;

    /// A new folder for a copy to be, without what a copy that never was finished has left.
    KIVString begin(int number) const;

    /// The folder of `begin` becomes the copy, durably.
    void finish(int number) const;

    /// As if there had been no `begin`.
    void give_up() const;

    /// The copies, oldest first.
    std::vector<int> inq_numbers() const;

    /// One that nothing beside the scene has.
    int inq_next_number() const;
    void remove(int number) const;

private:
    std::vector<int> find_numbers() const;
    bool is_copy(int number) const;
    bool may_be_cleared() const;

    KIVString scene;
    KIVString parent;
    KIVString prefix;     // of the names of copies
    KIVString unfinished; // the path of SCENE.backup~
};
