#pragma once

#include "frontend/montaray_scene/ColumnBuilder.h"

#include <filesystem>
#include <map>
#include <memory>

class CNode;
class CNodeChannel;
class CNodeDescriptor;
class CNodeGraph;
class CoverSheet;
class KIVScene;

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
    void gather(const Place& place);
    void add_member(const Place& place, CNode* whole, bool is_folded);
    void connect(const Place& place);
    void connect_channel(const Place& place, CNodeChannel* input);
    CNodeChannel* find_output(const Place& place);
    CNode* find_node(const Place& place) const;
    void refuse_circles();
    void choose_root();
    void name_links();

    Place description;
    std::unique_ptr<KIVScene> scene;
    CNodeGraph& graph;
    ColumnBuilder columns;
    std::map<std::string, CNode*> nodes; // not owned

    struct Connection {
        Place place;
        const CNode* from; // not owned
        const CNode* to;   // not owned
    };
    std::vector<Connection> connections;
};
