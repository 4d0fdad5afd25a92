#include "frontend/montaray_scene/SceneBuilder.h"

#include "compositor/imagelib/lib/hdr/CNodeGroup.h"
#include "compositor/imagelib/lib/hdr/CNodeImageDLLInitialiser.h"
#include "compositor/imagelib/lib/hdr/CNodeRasterImageLoadDelegate.h"
#include "compositor/imagelib/lib/hdr/CNodeUniversalMacro.h"
#include "compositor/imagelib/lib/hdr/CNodeUniversalReceiver.h"
#include "compositor/imagelib/lib/hdr/CNodeUniversalTransmitter.h"
#include "compositor/lib/hdr/CNodeChannel.h"
#include "compositor/lib/hdr/CNodeChannelSet.h"
#include "compositor/lib/hdr/CNodeDescriptor.h"
#include "compositor/lib/hdr/CNodeGraph.h"
#include "coversheet/lib/hdr/CoverSheet.h"
#include "frontend/montaray_scene/find_node_class.h"
#include "frontend/montaray_scene/words.h"
#include "kivlib/hdr/KIVStringList.h"
#include "scene/hdr/KIVScene.h"
#include "xsheet/column/hdr/XSheet.h"
#include "xsheet/node/hdr/XSNode.h"

#include <set>

namespace {
constexpr char NO_CIRCLES[] = "a node that this one does not feed itself";
constexpr int LONGEST_SCENE = 1'000'000; // frames
constexpr int MOST_FRAMES_A_SECOND = 1000;

/// Stands for the user who picks files for a new node.
class DescribedFile final : public CNodeRasterImageLoadDelegate {
public:
    explicit DescribedFile(std::string file) : file(std::move(file))
    {
        CNodeImageDLLInitialiser::set_delegate(this);
    }
    DescribedFile(const DescribedFile&) = delete;
    DescribedFile& operator=(const DescribedFile&) = delete;
    ~DescribedFile() { CNodeImageDLLInitialiser::set_delegate(nullptr); }

    gsl::owner<KIVStringSet*> pick_files(const KIVStringSet&, int) override
    {
        return file.empty() ? nullptr : new KIVStringSet(KIVString(file));
    }
    void extend_sheet(XSheet*, int, int) override {}

private:
    std::string file;
};

template <class Node> Node* as(CNode* node)
{
    return node->inq_type() == Node::inq_type_s() ? static_cast<Node*>(node) : nullptr;
}

void mark_in_macro(const CNodeChannelSet* channels)
{
    for (int i = 0; channels && i < channels->inq_n_channels(); ++i)
        channels->inq_channel(i)->set_is_in_macro(true);
}

bool is_within(const CNode* node, const CNode* whole)
{
    while (node && node != whole)
        node = node->inq_group() ? node->inq_group() : node->inq_macro();
    return node;
}

bool is_fed_by(const CNode* node, const CNode* source,
               const std::multimap<const CNode*, const CNode*>& sources)
{
    std::set<const CNode*> met{node};
    std::vector<const CNode*> open{node};
    while (!open.empty() && !met.contains(source)) {
        const auto [first, last] = sources.equal_range(open.back());
        open.pop_back();
        for (auto next = first; next != last; ++next)
            if (met.insert(next->second).second)
                open.push_back(next->second);
    }
    return met.contains(source);
}

} // namespace

SceneBuilder::SceneBuilder(const Place& description, std::filesystem::path art_folder)
    : description(description), scene(KIVScene::inq_unsetup_scene()), graph(*scene->inq_graph()),
      columns(*scene, std::move(art_folder))
{}

SceneBuilder::~SceneBuilder() = default;

std::unique_ptr<KIVScene> SceneBuilder::build()
{
    description.check_names({"length", "cover_sheet", "notes", "nodes", "comment"});
    if (const auto place = description.find("cover_sheet"))
        describe_cover_sheet(*place);
    scene->inq_xsheet()->set_length(description.at("length").whole(1, LONGEST_SCENE));
    if (const auto place = description.find("notes"))
        columns.add_notes(*place);
    graph.set_type_checker_disabled();
    for (const Place& place : description.at("nodes").items())
        make_node(place);
    columns.follow_sources(nodes);
    for (const Place& place : description.at("nodes").items()) {
        gather(place);
        connect(place);
    }
    refuse_circles();
    choose_root();
    name_links();
    if (!graph.set_type_checker_enabled())
        description.at("nodes").refuse("inputs whose data fit together");
    return std::move(scene);
}

void SceneBuilder::describe_cover_sheet(const Place& place)
{
    CoverSheet& sheet = *scene->inq_cover_sheet();
    for (const auto& [name, value] : place.members()) {
        const auto credit = CREDITS.find(name);
        if (credit != CREDITS.end())
            sheet.set_string(value.text().c_str(), credit->second);
        else if (name == "frame_rate")
            sheet.set_frame_rate(value.whole(1, MOST_FRAMES_A_SECOND));
        else if (name == "field_size")
            sheet.set_field_size(value.whole(2, 999));
        else if (name == "aspect_ratio" && value.number() > 0.0)
            sheet.set_aspect_ratio(value.number());
        else if (name == "aspect_ratio")
            value.refuse("a width over a height, above 0");
        else
            value.refuse("\"frame_rate\", \"aspect_ratio\", \"field_size\" or a credit as the "
                         "member's name");
    }
    sheet.set_needs_saving();
}

void SceneBuilder::make_node(const Place& place)
{
    place.check_names(
        {"name", "type", "class", "inputs", "columns", "disabled", "members", "folded", "comment"});
    const std::string name = place.at("name").text();
    if (name.empty() || nodes.contains(name))
        place.at("name").refuse("a name that no other node has");
    CNode* node = make_new_node(place, find_node_class(place));
    node->add_to_graph(&graph);
    nodes[name] = node;
    if (const auto disabled = place.find("disabled"))
        node->set_is_disabled(disabled->truth());
    if (!node->is_kind_of("XSNode")) {
        if (const auto keyed = place.find("columns"))
            ColumnBuilder::refuse_columns(*keyed);
        return;
    }
    auto& with_column = static_cast<XSNode&>(*node);
    with_column.inq_column()->set_header_text(name.c_str());
    if (const auto keyed = place.find("columns"))
        columns.fill_columns(*keyed, with_column);
}

CNode* SceneBuilder::make_new_node(const Place& place, CNodeDescriptor& descriptor)
{
    std::string first_file;
    if (const auto keyed = place.find("columns"))
        if (const auto images = keyed->find(IMAGES_COLUMN); images && images->count() > 0)
            first_file = columns.inq_art_file(images->items()[0].at("file"));
    const DescribedFile delegate(first_file);
    bool flag = false;
    CNode* node = descriptor.new_node(&graph, &flag);
    if (!node)
        place.refuse("a node that can be made; one of images needs them in its column \"" +
                     std::string(IMAGES_COLUMN) + "\"");
    return node;
}

/// Puts its members into a group or a macro.
void SceneBuilder::gather(const Place& place)
{
    CNode* whole = nodes[place.at("name").text()];
    const auto folded = place.find("folded");
    if (folded && !as<CNodeGroup>(whole))
        folded->refuse("it at a node of the type \"Group\"");
    const bool is_folded = folded && folded->truth();
    const auto members = place.find("members");
    if (!members)
        return;
    if (!as<CNodeGroup>(whole) && !as<CNodeUniversalMacro>(whole))
        members->refuse("them at a node of the type \"Group\" or \"Macro\"");
    for (const Place& member : members->items())
        add_member(member, whole, is_folded);
}

void SceneBuilder::add_member(const Place& place, CNode* whole, bool is_folded)
{
    CNode* member = find_node(place);
    if (member->inq_group() || member->inq_macro())
        place.refuse("a node that is in no other group or macro");
    if (is_within(whole, member))
        place.refuse("a node that does not hold this one itself");
    if (auto* macro = as<CNodeUniversalMacro>(whole)) {
        macro->add_node(member);
        member->add_to_macro(macro);
        mark_in_macro(member->inq_inputs());
        mark_in_macro(member->inq_outputs());
        return;
    }
    member->add_to_group(whole);
    if (is_folded)
        member->set_is_hidden(true);
}

void SceneBuilder::connect(const Place& place)
{
    const auto inputs = place.find("inputs");
    if (!inputs)
        return;
    const CNode* node = nodes[place.at("name").text()];
    const std::vector<Place> items = inputs->items();
    if (items.empty())
        return;
    const bool is_by_channel = items[0].is_array();
    const std::vector<Place> channels = is_by_channel ? items : std::vector<Place>{*inputs};
    if (static_cast<int>(channels.size()) > node->inq_n_input_channels())
        inputs->refuse("inputs for " + std::to_string(node->inq_n_input_channels()) + " channels");
    for (std::size_t i = 0; i < channels.size(); ++i)
        connect_channel(channels[i], node->inq_inputs()->inq_channel(static_cast<int>(i)));
}

/// A new connection goes to the head of the list, where the top layer stands.
void SceneBuilder::connect_channel(const Place& place, CNodeChannel* input)
{
    const std::vector<Place> layers = place.items();
    const bool is_receiver = as<CNodeUniversalReceiver>(input->inq_node());
    if (is_receiver && layers.size() > 1)
        place.refuse("one node of the type \"Transmit\" and no more");
    for (auto layer = layers.rbegin(); layer != layers.rend(); ++layer) {
        CNodeChannel* output = find_output(*layer);
        if (output->inq_node() == input->inq_node())
            layer->refuse(NO_CIRCLES);
        if (is_receiver && !as<CNodeUniversalTransmitter>(output->inq_node()))
            layer->refuse("a node of the type \"Transmit\"");
        graph.make_connection(output, input, false);
        connections.push_back({*layer, output->inq_node(), input->inq_node()});
    }
}

/// Asks of a connection only where there is a circle at all.
void SceneBuilder::refuse_circles()
{
    std::map<const CNode*, int> readers_left;
    std::multimap<const CNode*, const CNode*> sources;
    for (const Connection& connection : connections) {
        ++readers_left[connection.from];
        sources.emplace(connection.to, connection.from);
    }
    std::vector<const CNode*> free; // all that reads them is out of the way
    for (const auto& [name, node] : nodes)
        if (!readers_left.contains(node))
            free.push_back(node);
    for (std::size_t i = 0; i < free.size(); ++i) {
        const auto [first, last] = sources.equal_range(free[i]);
        for (auto source = first; source != last; ++source)
            if (--readers_left[source->second] == 0)
                free.push_back(source->second);
    }
    if (free.size() == nodes.size())
        return;
    for (const Connection& connection : connections)
        if (is_fed_by(connection.from, connection.to, sources))
            connection.place.refuse(NO_CIRCLES);
}

/// The name of a node stands for its first output.
CNodeChannel* SceneBuilder::find_output(const Place& place)
{
    const bool is_named = place.is_text();
    if (!is_named)
        place.check_names({"node", "output"});
    const CNode* node = find_node(is_named ? place : place.at("node"));
    const int count = node->inq_n_vis_output_channels();
    if (count == 0)
        place.refuse("a node that has an output");
    const int number = is_named ? 1 : place.at("output").whole(1, count);
    return node->inq_outputs()->inq_channel(number - 1);
}

CNode* SceneBuilder::find_node(const Place& place) const
{
    const auto node = nodes.find(place.text());
    if (node == nodes.end())
        place.refuse("the name of a node");
    return node->second;
}

/// The one node that has inputs and shows no output.
void SceneBuilder::choose_root()
{
    for (const Place& place : description.at("nodes").items()) {
        CNode* node = nodes[place.at("name").text()];
        if (node->inq_n_vis_output_channels() > 0 || node->inq_n_input_channels() == 0)
            continue;
        if (graph.inq_root_node())
            place.refuse("one output node and no more");
        graph.set_root_node(node);
    }
    if (!graph.inq_root_node())
        description.at("nodes").refuse("an output node, of the class \"CNodeRostrum\"");
}

/// A link that was named while it was built may lack what was connected later.
void SceneBuilder::name_links()
{
    for (const auto& [name, node] : nodes)
        if (auto* transmitter = as<CNodeUniversalTransmitter>(node)) {
            transmitter->inq_subcolumn()->set_header_text("");
            transmitter->update_name();
        }
}
