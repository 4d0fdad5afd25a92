#include "compositor/imagelib/lib/hdr/CNodeUniversalMacro.h"
#include "compositor/lib/hdr/CNode.h"
#include "compositor/lib/hdr/CNodeChannel.h"
#include "compositor/lib/hdr/CNodeChannelSet.h"
#include "compositor/lib/hdr/CNodeConnection.h"
#include "compositor/lib/hdr/CNodeDescriptor.h"
#include "compositor/lib/hdr/CNodeGraph.h"
#include "coversheet/lib/hdr/CoverSheet.h"
#include "curveslib/hdr/Fairing.h"
#include "frontend/montaray_scene/verbs.h"
#include "frontend/montaray_scene/words.h"
#include "kivlib/hdr/SearchFileFinder.h"
#include "scene/hdr/KIVScene.h"
#include "scene/hdr/RasterAsset.h"
#include "xsheet/column/hdr/XSheet.h"
#include "xsheet/numeric/hdr/NumericCellData.h"
#include "xsheet/numeric/hdr/NumericKeyCell.h"
#include "xsheet/numeric/hdr/NumericSubColumn.h"
#include "xsheet/ratio/hdr/RatioKeyCellData.h"
#include "xsheet/sequence/hdr/RasterSeqCellData.h"

#include <algorithm>
#include <iostream>
#include <set>

namespace {
std::string indent(std::size_t depth)
{
    return std::string(2 * depth, ' ');
}

std::string called(const KIVString* text)
{
    return text ? text->str() : "";
}

void show_cover_sheet(const CoverSheet& sheet)
{
    std::cout << sheet.inq_scene_length() << " frames, " << sheet.inq_frame_rate()
              << " a second, camera " << sheet.inq_aspect_ratio() << " to 1\n";
    for (const auto& [name, index] : CREDITS)
        if (!sheet.inq_string(index).is_null())
            std::cout << name << ": " << sheet.inq_string(index).c_str() << '\n';
}

/// A node at its depth below the root, with the inputs still to be shown above it on the stack.
struct ShownNode {
    const CNode* node;
    std::size_t depth;
};

void push_inputs(const CNode& node, std::size_t depth, std::vector<ShownNode>& stack)
{
    std::vector<ShownNode> inputs;
    for (int i = 0; i < node.inq_n_input_channels(); ++i)
        for (auto* connection :
             node.inq_inputs()->inq_channel(i)->inq_connections_list()->of<CNodeConnection>())
            if (const CNodeChannel* output = connection->inq_output_channel())
                inputs.push_back({output->inq_node(), depth});
    stack.insert(stack.end(), inputs.rbegin(), inputs.rend());
}

/// What stands behind its name.
void show_place_and_state(const CNode& node)
{
    std::cout << (node.inq_is_disabled() ? "  disabled" : "");
    if (const CNode* group = node.inq_group())
        std::cout << (node.inq_hidden() ? "  folded into " : "  in ") << group->inq_name().c_str();
    if (const CNode* macro = node.inq_macro())
        std::cout << "  in " << macro->inq_name().c_str();
}

/// A macro has no inputs and outputs, so it hangs on nothing.
void show_macros(const CNodeGraph& graph)
{
    const std::unique_ptr<KIVLinkedList> macros(
        graph.inq_nodes_of_type(CNodeUniversalMacro::inq_type_s()));
    for (const auto* macro : macros->of<CNodeUniversalMacro>()) {
        std::cout << indent(1) << macro->inq_name().c_str() << "  ("
                  << macro->inq_type_name().c_str() << ") of";
        const char* separator = " ";
        for (const CNode* node : macro->inq_constituent_nodes()->of<CNode>())
            std::cout << std::exchange(separator, ", ") << node->inq_name().c_str();
        std::cout << '\n';
    }
}

/// From the output down, the top layer first; what feeds several nodes is told once.
void show_graph(const CNodeGraph& graph)
{
    std::cout << "\nGraph\n";
    std::vector<ShownNode> stack{{graph.inq_root_node(), 1}};
    std::set<const CNode*> shown;
    while (!stack.empty()) {
        const auto [node, depth] = stack.back();
        stack.pop_back();
        if (!node)
            continue;
        std::cout << indent(depth) << node->inq_name().c_str() << "  ("
                  << node->inq_type_name().c_str() << ')';
        show_place_and_state(*node);
        const bool is_new = shown.insert(node).second;
        std::cout << (is_new ? "\n" : "  see above\n");
        if (is_new)
            push_inputs(*node, depth + 1, stack);
    }
    show_macros(graph);
}

void show_value(const SubColumn& column, KeyCell& key)
{
    const CellData* data = key.inq_data();
    if (!data)
        return;
    if (column.inq_type() == RASTER_COLUMN) {
        const auto& image = static_cast<const RasterSeqCellData&>(*data);
        std::cout << (image.inq_asset() ? image.inq_asset()->inq_local_path().str()
                                        : called(image.inq_file_name()));
    } else if (key.is_kind_of("NumericKeyCell")) {
        const auto& numbers = static_cast<const BaseNumericCellData&>(*data);
        for (int i = 0; i < numbers.inq_order(); ++i)
            std::cout << (i > 0 ? ", " : "") << numbers.inq_element(i);
    } else {
        std::cout << called(data->inq_string());
    }
}

/// The column that the key follows, if it does.
void show_source(const KeyCell& key)
{
    if (!key.is_kind_of("NumericKeyCell"))
        return;
    const RatioKeyCellData* link = static_cast<const NumericKeyCell&>(key).inq_ratio_data();
    if (!link || !link->inq_source_column())
        return;
    constexpr std::size_t FRONT = 3; // the bar before the first name
    const std::string path = link->inq_source_column()->inq_header_path().str();
    std::cout << ", follows " << path.substr(std::min(FRONT, path.size())) << " times";
    for (const double ratio : link->inq_ratio_value().inq_elements())
        std::cout << ' ' << ratio;
}

void show_keys(SubColumn& column, std::size_t depth)
{
    for (KeyCell* key = column.inq_first_key(); key; key = key->inq_next_key()) {
        std::cout << indent(depth) << "frame " << key->inq_number() << ": ";
        show_value(column, *key);
        std::cout << "  " << MODE_WORDS[static_cast<std::size_t>(key->inq_mode())]
                  << (key->inq_fairing() && key->inq_fairing()->inq_control_point_count() > 0
                          ? ", eased"
                          : "");
        show_source(*key);
        std::cout << '\n';
    }
}

/// Frame numbers are the same in every scene.
bool is_worth_showing(const SubColumn& column)
{
    return column.inq_type() != FRAME_NUMBER_COLUMN;
}

void show_column(Column& column, std::size_t depth)
{
    for (auto* member : column.inq_sub_column_list()->of<SubColumn>()) {
        if (!is_worth_showing(*member))
            continue;
        std::cout << indent(depth) << called(member->inq_header_text()) << '\n';
        if (member->is_column())
            show_column(static_cast<Column&>(*member), depth + 1);
        else
            show_keys(*member, depth + 1);
    }
}
} // namespace

int show_scene(const std::string& scene_folder, FileSearch* search)
{
    const std::unique_ptr<KIVScene> scene(KIVScene::load_from_file(
        scene_folder, search ? new SearchFileFinder(*search) : nullptr, false));
    if (!scene)
        return FAILED;
    show_cover_sheet(*scene->inq_cover_sheet());
    show_graph(*scene->inq_graph());
    std::cout << "\nSheet\n";
    show_column(*scene->inq_xsheet(), 1);
    if (search)
        std::cout << "\nFiles\n" << search->report().c_str();
    return DONE;
}
