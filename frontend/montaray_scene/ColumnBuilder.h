#pragma once

#include "frontend/montaray_scene/Description.h"

#include <filesystem>
#include <functional>
#include <map>

class CNode;
class ColourSubColumn;
class Column;
class KeyCell;
class KIVScene;
class MoveColumn;
class NumericKeyCell;
class NumericSubColumn;
class PathSubColumn;
class SubColumn;
class XSNode;

/// Fills the sheet of a scene with the keys of a description. Throws the first `Mistake` that it
/// meets.
class ColumnBuilder {
public:
    /// Image files are named from `art_folder`.
    ColumnBuilder(KIVScene& scene, std::filesystem::path art_folder);

    /// The columns of a node that lies in the scene.
    void fill_columns(const Place& place, XSNode& node);

    /// A column of its own for the animator's notes.
    void add_notes(const Place& place);

    /// Ties the keys that follow another column to it, when all columns are there.
    void follow_sources(const std::map<std::string, CNode*>& nodes);

    std::string inq_art_file(const Place& place) const;
    [[noreturn]] static void refuse_columns(const Place& place);

private:
    using MakeKey = std::function<KeyCell*(const Place& place, int frame)>;

    /// A key whose value comes from another column.
    struct Follower {
        Place place;
        NumericKeyCell* key; // not owned
    };

    void fill(const Place& place, const MakeKey& make_key);
    void fill_sub_column(const Place& place, SubColumn& sub_column);
    void fill_colour(const Place& place, ColourSubColumn& colour);
    void fill_move(const Place& place, MoveColumn& move);
    void fill_path(const Place& place, PathSubColumn& path);
    void fill_keys(const Place& place, SubColumn& sub_column);
    KeyCell* make_key(const Place& place, SubColumn& sub_column, int frame);
    void describe_numbers(const Place& place, SubColumn& sub_column, KeyCell& key);
    void set_image(const Place& place, KeyCell& key) const;
    void follow(const Follower& follower, NumericSubColumn& source);

    KIVScene& scene;
    std::filesystem::path art_folder;
    std::vector<Follower> followers;
};
