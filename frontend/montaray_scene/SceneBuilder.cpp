#include "frontend/montaray_scene/SceneBuilder.h"

#include "compositor/imagelib/lib/hdr/CNodeImageDLLInitialiser.h"
#include "compositor/imagelib/lib/hdr/CNodeRasterImageLoadDelegate.h"
#include "compositor/lib/hdr/CNodeChannel.h"
#include "compositor/lib/hdr/CNodeChannelSet.h"
#include "compositor/lib/hdr/CNodeDescriptor.h"
#include "compositor/lib/hdr/CNodeGraph.h"
#include "compositor/lib/hdr/CNodeRepository.h"
#include "coversheet/lib/hdr/CoverSheet.h"
#include "curveslib/hdr/Fairing.h"
#include "frontend/montaray_scene/words.h"
#include "kivlib/hdr/KIVStringList.h"
#include "scene/hdr/KIVScene.h"
#include "xsheet/column/hdr/XSheet.h"
#include "xsheet/move/hdr/MoveColumn.h"
#include "xsheet/node/hdr/XSNode.h"
#include "xsheet/numeric/hdr/NumericCellData.h"
#include "xsheet/numeric/hdr/NumericSubColumn.h"
#include "xsheet/sequence/hdr/RasterSeqCellData.h"

#include <set>

namespace {
constexpr char NO_CIRCLES[] = "a node that this one does not feed itself";
constexpr char NO_COLUMNS[] = "no columns: a node of this kind has none";
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

bool is_called(const CNodeDescriptor& descriptor, const char* member, const std::string& name)
{
    if (std::string_view(member) == "class")
        return descriptor.inq_name() == name.c_str();
    return descriptor.inq_user_type_name() == name.c_str();
}

CNodeDescriptor& find_descriptor(const Place& place)
{
    const char* member = place.find("class") ? "class" : "type";
    if (place.find("class") && place.find("type"))
        place.at("type").refuse("a class or a type and not both");
    const std::string name = place.at(member).text();
    for (auto* descriptor :
         CNodeRepository::inq_repository()->inq_descriptors().of<CNodeDescriptor>())
        if (is_called(*descriptor, member, name))
            return *descriptor;
    place.at(member).refuse(member == std::string("class")
                                ? "the name of a node class, such as \"CNodeCamera\""
                                : "the name of a kind of node, such as \"Camera\"");
}

int inq_element_count(const SubColumn& sub_column)
{
    return static_cast<const NumericSubColumn&>(sub_column).inq_order();
}

void set_element(const Place& place, BaseNumericCellData& data, int i)
{
    data.set_element(i, place.number());
    if (data.inq_element(i) != place.number())
        place.refuse("a number that the column allows, such as " +
                     std::to_string(data.inq_element(i)));
}

/// A number, or an array of as many as the column has.
void set_values(const Place& place, const SubColumn& sub_column, KeyCell& key)
{
    auto& data = static_cast<BaseNumericCellData&>(*key.inq_data());
    const int count = inq_element_count(sub_column);
    if (count == 1 && !place.is_array()) {
        set_element(place, data, 0);
        return;
    }
    const std::vector<Place> items = place.items();
    if (items.size() != static_cast<std::size_t>(count))
        place.refuse("an array of " + std::to_string(count) + " numbers");
    for (int i = 0; i < count; ++i)
        set_element(items[static_cast<std::size_t>(i)], data, i);
}

/// The two handles of a curve from (0, 0) to (1, 1): x and y of the first, x and y of the second.
using Ease = std::array<double, 4>;

Ease inq_ease(const Place& place)
{
    if (place.is_text())
        return EASES[static_cast<std::size_t>(place.one_of(EASE_WORDS))];
    const std::vector<Place> items = place.items();
    Ease ease{};
    if (items.size() != ease.size())
        place.refuse("a word or an array of 4 numbers");
    for (std::size_t i = 0; i < ease.size(); ++i) {
        ease[i] = items[i].number();
        if (i % 2 == 0 && (ease[i] < 0.0 || ease[i] > 1.0))
            items[i].refuse("a time from 0 to 1");
    }
    return ease;
}

void set_ease(const Place& place, KeyCell& key)
{
    const KeyCell* next = key.inq_next_key();
    if (!next)
        place.refuse("an easing only where another key follows");
    const Ease ease = inq_ease(place);
    auto fairing = std::make_unique<Fairing>(next->inq_number() - key.inq_number() - 1);
    fairing->create_empty_cps(2);
    *fairing->inq_control_point(0) = {{0.0, 0.0}, {}, {ease[0], ease[1]}};
    *fairing->inq_control_point(1) = {{1.0, 1.0}, {ease[2] - 1.0, ease[3] - 1.0}, {}};
    key.set_fairing(fairing.release());
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

void remove_all_keys(SubColumn& sub_column)
{
    while (KeyCell* key = sub_column.inq_last_key())
        delete sub_column.remove_key(key);
}
} // namespace

SceneBuilder::SceneBuilder(const Place& description, std::filesystem::path art_folder)
    : description(description), art_folder(std::move(art_folder)),
      scene(KIVScene::inq_unsetup_scene()), graph(*scene->inq_graph())
{}

SceneBuilder::~SceneBuilder() = default;

std::unique_ptr<KIVScene> SceneBuilder::build()
{
    description.check_names({"length", "cover_sheet", "nodes", "comment"});
    if (const auto place = description.find("cover_sheet"))
        describe_cover_sheet(*place);
    scene->inq_xsheet()->set_length(description.at("length").whole(1, LONGEST_SCENE));
    graph.set_type_checker_disabled();
    for (const Place& place : description.at("nodes").items())
        make_node(place);
    for (const Place& place : description.at("nodes").items())
        connect(place);
    refuse_circles();
    choose_root();
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
    place.check_names({"name", "type", "class", "inputs", "columns", "disabled", "comment"});
    const std::string name = place.at("name").text();
    if (name.empty() || nodes.contains(name))
        place.at("name").refuse("a name that no other node has");
    CNode* node = make_new_node(place, find_descriptor(place));
    node->add_to_graph(&graph);
    nodes[name] = node;
    if (const auto disabled = place.find("disabled"))
        node->set_is_disabled(disabled->truth());
    if (!node->is_kind_of("XSNode")) {
        if (const auto columns = place.find("columns"))
            columns->refuse(NO_COLUMNS);
        return;
    }
    auto& with_column = static_cast<XSNode&>(*node);
    with_column.inq_column()->set_header_text(name.c_str());
    if (const auto columns = place.find("columns"))
        fill_columns(*columns, with_column);
}

CNode* SceneBuilder::make_new_node(const Place& place, CNodeDescriptor& descriptor)
{
    std::string first_file;
    if (const auto columns = place.find("columns"))
        if (const auto images = columns->find(IMAGES_COLUMN); images && images->count() > 0)
            first_file = inq_art_file(images->items()[0].at("file"));
    const DescribedFile delegate(first_file);
    bool flag = false;
    CNode* node = descriptor.new_node(&graph, &flag);
    if (!node)
        place.refuse("a node that can be made; one of images needs them in its column \"" +
                     std::string(IMAGES_COLUMN) + "\"");
    return node;
}

void SceneBuilder::fill_columns(const Place& place, XSNode& node)
{
    for (const auto& [name, value] : place.members()) {
        SubColumn* sub_column = nullptr;
        node.inq_column()->search_for_sub_column_name(name.c_str(), &sub_column, false);
        if (sub_column) {
            fill_sub_column(value, *sub_column);
            continue;
        }
        if (node.inq_column()->inq_sub_column_list()->inq_is_empty())
            place.refuse(NO_COLUMNS);
        std::string known;
        for (auto* each : node.inq_column()->inq_sub_column_list()->of<SubColumn>())
            known += (known.empty() ? "\"" : ", \"") + each->inq_header_text()->str() + "\"";
        value.refuse("one of the columns " + known + " as the member's name");
    }
}

void SceneBuilder::fill_sub_column(const Place& place, SubColumn& sub_column)
{
    if (sub_column.inq_type() == MOVE_COLUMN)
        fill_move(place, static_cast<Column&>(sub_column));
    else
        fill_keys(place, sub_column);
}

void SceneBuilder::fill_move(const Place& place, Column& column)
{
    place.check_names({"x", "y"});
    if (const auto x = place.find("x"))
        fill_keys(*x, *column.find_sub_column(MoveColumn::XPOS_SUBCOL));
    if (const auto y = place.find("y"))
        fill_keys(*y, *column.find_sub_column(MoveColumn::YPOS_SUBCOL));
}

/// Easings come last, when every key has its next one.
void SceneBuilder::fill_keys(const Place& place, SubColumn& sub_column)
{
    remove_all_keys(sub_column);
    const std::vector<Place> items = place.items();
    std::vector<KeyCell*> keys;
    int least_frame = 1;
    for (const Place& item : items) {
        const int frame = item.at("frame").whole(least_frame, scene->inq_scene_length());
        least_frame = frame + 1;
        keys.push_back(sub_column.make_key(frame));
        describe_key(item, sub_column, *keys.back());
    }
    for (std::size_t i = 0; i < keys.size(); ++i)
        if (const auto ease = items[i].find("ease"))
            set_ease(*ease, *keys[i]);
}

void SceneBuilder::describe_key(const Place& place, SubColumn& sub_column, KeyCell& key)
{
    InterpMode mode = IM_INBETWEEN;
    if (sub_column.inq_type() == RASTER_COLUMN) {
        place.check_names({"frame", "file", "mode"});
        set_image(place.at("file"), key);
        mode = IM_HOLD;
    } else {
        place.check_names({"frame", "value", "mode", "ease"});
        set_values(place.at("value"), sub_column, key);
    }
    if (const auto chosen = place.find("mode")) {
        mode = static_cast<InterpMode>(chosen->one_of(MODE_WORDS));
        if (!key.can_set_mode(mode))
            chosen->refuse("a mode that the column allows");
    }
    key.set_mode(mode);
}

void SceneBuilder::set_image(const Place& place, KeyCell& key)
{
    static_cast<RasterSeqCellData&>(*key.inq_data()).set_file_name(inq_art_file(place).c_str());
}

std::string SceneBuilder::inq_art_file(const Place& place) const
{
    const std::filesystem::path file = art_folder / place.text();
    std::error_code error;
    if (!std::filesystem::is_regular_file(file, error))
        place.refuse("an image file; there is no " + file.string());
    return std::filesystem::absolute(file).lexically_normal().string();
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
    for (auto layer = layers.rbegin(); layer != layers.rend(); ++layer) {
        CNodeChannel* output = find_output(*layer);
        if (output->inq_node() == input->inq_node())
            layer->refuse(NO_CIRCLES);
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

CNodeChannel* SceneBuilder::find_output(const Place& place)
{
    const auto node = nodes.find(place.text());
    if (node == nodes.end())
        place.refuse("the name of a node");
    if (node->second->inq_n_vis_output_channels() == 0)
        place.refuse("a node that has an output");
    return node->second->inq_outputs()->inq_channel(0);
}

/// The one node that shows no output.
void SceneBuilder::choose_root()
{
    for (const Place& place : description.at("nodes").items()) {
        CNode* node = nodes[place.at("name").text()];
        if (node->inq_n_vis_output_channels() > 0)
            continue;
        if (graph.inq_root_node())
            place.refuse("one output node and no more");
        graph.set_root_node(node);
    }
    if (!graph.inq_root_node())
        description.at("nodes").refuse("an output node, of the class \"CNodeRostrum\"");
}
