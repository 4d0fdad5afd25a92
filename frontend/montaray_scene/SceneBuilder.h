#pragma once

#include "frontend/montaray_scene/Description.h"

#include <filesystem>
#include <map>
#include <memory>

class CNode;
class CNodeChannel;
class CNodeDescriptor;
class CNodeGraph;
class Column;
class CoverSheet;
class KeyCell;
class KIVScene;
class NumericSubColumn;
class SubColumn;
class XSNode;

/// Makes a scene of a description, in memory. Throws the first `Mistake` that it meets.
class SceneBuilder {
public:
    /// Image files are named from `art_folder`.
    SceneBuilder(const Place& description, std::filesystem::path art_folder);
    ~SceneBuilder();

    std::unique_ptr<KIVScene> build();

private:
    void describe_cover_sheet(const Place& place);
    void make_node(const Place& place);
    CNode* make_new_node(const Place& place, CNodeDescriptor& descriptor);
    void fill_columns(const Place& place, XSNode& node);
    void fill_sub_column(const Place& place, SubColumn& sub_column);
    void fill_move(const Place& place, Column& column);
    void fill_keys(const Place& place, SubColumn& sub_column);
    void describe_key(const Place& place, SubColumn& sub_column, KeyCell& key);
    void set_image(const Place& place, KeyCell& key);
    void connect(const Place& place);
    void connect_channel(const Place& place, CNodeChannel* input);
    CNodeChannel* find_output(const Place& place);
    void refuse_circles();
    void choose_root();
    std::string inq_art_file(const Place& place) const;

    Place description;
    std::filesystem::path art_folder;
    std::unique_ptr<KIVScene> scene;
    CNodeGraph& graph;
    std::map<std::string, CNode*> nodes; // not owned

    struct Connection {
        Place place;
        const CNode* from; // not owned
        const CNode* to;   // not owned
    };
    std::vector<Connection> connections;
};
