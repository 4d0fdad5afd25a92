#include "compositor/lib/hdr/CNode.h"

#include "compositor/lib/hdr/CDataDescriptor.h"
#include "compositor/lib/hdr/CNodeDescriptor.h"
#include "compositor/lib/hdr/CNodeGraph.h"
#include "compositor/lib/hdr/DAGOpTypeChecker.h"
#include "compositor/lib/hdr/cdata_tDArray.h"
#include "compositor/lib/src/DescendentWalk.h"
#include "compositor/lib/src/GraphChanges.h"
#include "compositor/lib/src/InchoateWalk.h"
#include "compositor/lib/src/NodeWalk.h"
#include "compositor/lib/src/SourceNames.h"
#include "kivlib/hdr/BoundingBox.h"
#include "kivlib/hdr/Record.h"

#include <unordered_set>

KIV_STORED_CLASS(CNode, 146);

bool CNode::read_tags_pos_info = true;

namespace {
constexpr FormatVersions HAS_GRAPH = before(92);
constexpr FormatVersions HAS_FOLDING = since(102);
constexpr FormatVersions HAS_VALID_DISABLED = since(136);
constexpr FormatVersions HAS_TAG_POSITION = since(139);
constexpr FormatVersions HAS_MACRO = since(144);
constexpr FormatVersions HAS_WIDTH = since(146);

/// Stands for a width that is still to be computed.
constexpr double NO_WIDTH_YET = -1.0;

unsigned int new_label()
{
    static unsigned int last_label = 0;
    return ++last_label;
}

std::unique_ptr<CNodeChannelSet> new_channels(CNode* node, int n)
{
    return n > 0 ? std::make_unique<CNodeChannelSet>(node, n) : nullptr;
}

int count_channels(const CNodeChannelSet* set)
{
    return set ? set->inq_n_channels() : 0;
}

template <class Fits> bool any_channel(const CNodeChannelSet* set, Fits fits)
{
    for (int i = 0; i < count_channels(set); ++i)
        if (fits(*set->inq_channel(i)))
            return true;
    return false;
}

KIVLinkedList connections_of(const CNodeChannelSet* set)
{
    KIVLinkedList found(false);
    for (int i = 0; i < count_channels(set); ++i)
        for (KIVObject* connection : set->inq_channel(i)->inq_connections_list()->of<KIVObject>())
            found.add(connection);
    return found;
}

gsl::owner<KIVLinkedList*> list_of(Neighbours neighbours)
{
    auto nodes = std::make_unique<KIVLinkedList>(false);
    while (CNode* node = neighbours.next())
        nodes->add(node);
    return nodes.release();
}

double width_of_first(const CNodeChannelSet* set, int n)
{
    double width = 0.0;
    for (int i = 0; i < std::min(n, count_channels(set)); ++i)
        width += set->inq_channel(i)->inq_width();
    return width;
}

/// The group that a walk from group to group is asking, until it leaves the answer to the walk.
const CNode* asked_group = nullptr;

constexpr int MOST_WALKS = 100; // each asked for by a group on the way of the one before
int n_walks = 0;
} // namespace

CNode::CNode() : label(new_label()) {}

CNode::CNode(const CNode& other)
    : KIVObject(other), is_collapsed(other.is_collapsed), position(other.position),
      width(other.width), height(other.height), is_hidden(other.is_hidden), macro(other.macro),
      flags(other.flags), show_output(other.show_output), dw_tag_pos(other.dw_tag_pos),
      label(new_label())
{
    inputs = new_channels(this, other.inq_n_input_channels());
    outputs = new_channels(this, other.inq_n_output_channels());
    lay_out_channels();
}

CNode::~CNode() = default;

template <class Record> void CNode::record(Record& r)
{
    r.value(width, HAS_WIDTH, NO_WIDTH_YET);
    r.dropped_int(before(HAS_VALID_DISABLED.first));
    r.value(is_disabled, HAS_VALID_DISABLED);
    r.link(graph, HAS_GRAPH);
    r.owned(inputs);
    r.owned(outputs);
    r.embedded(position);
    r.value(is_hidden, HAS_FOLDING);
    r.value(is_collapsed, HAS_FOLDING);
    r.far_link(group, HAS_FOLDING);
    r.far_link(macro, HAS_MACRO);
    r.value(dw_tag_pos, read_tags_pos_info ? always() : HAS_TAG_POSITION);
}

CNode::CNode(KIVIStream& stream) : KIVObject(stream), label(new_label())
{
    RecordReader r(stream);
    record(r);
}

void CNode::storer(KIVOStream& stream)
{
    KIVObject::storer(stream);
    CNode* const real_group = std::exchange(group, is_stored_with(group) ? group : nullptr);
    CNode* const real_macro = std::exchange(macro, is_stored_with(macro) ? macro : nullptr);
    RecordWriter r(stream);
    record(r);
    group = real_group;
    macro = real_macro;
}

bool CNode::is_stored_with(const CNode* other) const
{
    if (graph)
        return graph->inq_holds(other);
    return other && !other->inq_graph();
}

void CNode::init()
{
    const CNodeDescriptor* descriptor = inq_desc();
    if (!descriptor)
        return;
    inputs = new_channels(this, descriptor->inq_n_inputs());
    outputs = new_channels(this, descriptor->inq_n_outputs());
    lay_out_channels();
    if (graph)
        ++GraphChanges::our_count;
}

void CNode::lay_out_channels()
{
    for (CNodeChannelSet* set : {inputs.get(), outputs.get()})
        if (set)
            set->set_width(width);
}

void CNode::load_finished() {}

bool CNode::load_finished_with_abort()
{
    load_finished();
    return false;
}

void CNode::mark_used_assets() {}

void CNode::after_load_finished() {}

void CNode::node_just_added_to_graph() {}

void CNode::node_just_removed_from_graph() {}

int CNode::inq_n_vis_input_channels() const
{
    return is_collapsed ? 0 : inq_n_input_channels();
}

int CNode::inq_n_vis_output_channels() const
{
    return show_output ? inq_n_output_channels() : 0;
}

bool CNode::inq_can_connect_to_input_chans() const
{
    return true;
}

KIVString CNode::inq_displayed_type_name() const
{
    return inq_type_name();
}

void CNode::add_to_graph(CNodeGraph* new_graph)
{
    new_graph->add_node(this);
}

void CNode::remove_from_graph()
{
    if (graph)
        graph->remove_node(this);
}

void CNode::input_connections_changed() {}

void CNode::input_connections_updated()
{
    input_connections_changed();
}

void CNode::output_connections_changed() {}

bool CNode::inq_is_fully_connected() const
{
    const auto is_free = [](const CNodeChannel& channel) {
        return channel.inq_connections_list()->inq_is_empty();
    };
    return !any_channel(inputs.get(), is_free) && !any_channel(outputs.get(), is_free);
}

bool CNode::inq_can_connect_multiple_inputs(int channel) const
{
    const CNodeChannel* input = inputs ? inputs->inq_channel(channel) : nullptr;
    if (!input)
        return false;
    if (input->inq_connections_list()->inq_is_empty())
        return true;
    const CDataDescriptor* data_type = CDataDescriptor::find_desc_for(input->find_data_type());
    return data_type && data_type->inq_can_union_data();
}

void CNode::add_to_group(CNode* new_group)
{
    group = new_group;
}

void CNode::remove_from_group()
{
    group = nullptr;
}

CNode* CNode::inq_group() const
{
    return group;
}

CNode* CNode::inq_effective_node()
{
    if (asked_group == this) {
        asked_group = nullptr;
        return this;
    }
    if (n_walks == MOST_WALKS)
        return this;
    ++n_walks;
    CNode* found = find_effective_node();
    --n_walks;
    return found;
}

/// From group to group, up to a class that gives its own answer. Groups may hold one another in a
/// damaged scene.
CNode* CNode::find_effective_node()
{
    CNode* node = this;
    std::unordered_set<const CNode*> met;
    while (node->is_hidden && node->group && met.insert(node).second) {
        node = node->group;
        asked_group = node;
        CNode* answer = node->inq_effective_node();
        const bool was_left = std::exchange(asked_group, nullptr) != node;
        if (!was_left || answer != node)
            return answer;
    }
    return node;
}

void CNode::add_to_macro(CNode* new_macro)
{
    macro = new_macro;
}

void CNode::remove_from_macro()
{
    macro = nullptr;
}

CNode* CNode::inq_macro() const
{
    return macro;
}

bool CNode::inq_is_in_macro() const
{
    const auto in_macro = [](const CNodeChannel& channel) { return channel.inq_is_in_macro(); };
    return any_channel(inputs.get(), in_macro) || any_channel(outputs.get(), in_macro);
}

KIVString CNode::inq_summary() const
{
    return {};
}

KIVString CNode::inq_path() const
{
    return {};
}

bool CNode::inq_is_selected() const
{
    return inq_selected_flag();
}

void CNode::set_is_selected(bool selected)
{
    set_selected_flag(selected);
}

KIVString CNode::inq_output_chan_message(int) const
{
    return {};
}

KIVString CNode::inq_input_chan_message(int) const
{
    return {};
}

bool CNode::inq_is_universal() const
{
    return false;
}

bool CNode::inq_is_generic() const
{
    return false;
}

bool CNode::check_state() const
{
    return false;
}

int CNode::inq_n_input_channels() const
{
    return count_channels(inputs.get());
}

int CNode::inq_n_output_channels() const
{
    return count_channels(outputs.get());
}

CNodeDescriptor* CNode::inq_desc() const
{
    return static_cast<CNodeDescriptor*>(inq_class_descriptor());
}

const KIVString& CNode::inq_type_name() const
{
    static const KIVString nameless;
    const CNodeDescriptor* descriptor = inq_desc();
    return descriptor ? descriptor->inq_user_type_name() : nameless;
}

KIVRectangle CNode::inq_border_rect() const
{
    return {Vector2(), width, height};
}

KIVRectangle CNode::inq_bounds() const
{
    const KIVRectangle box = inq_border_rect();
    const double below = inq_n_vis_input_channels() > 0 ? inq_channel_height() : 0.0;
    const double above = inq_n_vis_output_channels() > 0 ? inq_channel_height() : 0.0;
    return {box.inq_left(), box.inq_bottom() - below, box.inq_right(), box.inq_top() + above};
}

int CNode::inq_nearest_input_channel(const Vector2& point) const
{
    const int n = inq_n_input_channels();
    const double x = point.x() - position.x();
    const auto strip = [&](int i) { return inputs->inq_channel(i)->inq_border_rect(); };
    if (n == 0 || x <= strip(0).inq_right())
        return 0;
    if (x > strip(n - 1).inq_left())
        return n - 1;
    for (int i = n - 2; i > 0; --i)
        if (x > strip(i).inq_left() && x <= strip(i).inq_right())
            return i;
    return n;
}

bool CNode::inq_any_channel_selected() const
{
    const auto selected = [](const CNodeChannel& channel) { return channel.inq_is_selected(); };
    return (inq_n_vis_input_channels() > 0 && any_channel(inputs.get(), selected)) ||
           (inq_n_vis_output_channels() > 0 && any_channel(outputs.get(), selected));
}

KIVLinkedList CNode::inq_in_connections_list() const
{
    return connections_of(inputs.get());
}

KIVLinkedList CNode::inq_out_connections_list() const
{
    return connections_of(outputs.get());
}

gsl::owner<KIVLinkedList*> CNode::inq_child_nodes() const
{
    return list_of(Neighbours::children_of(this));
}

gsl::owner<KIVLinkedList*> CNode::inq_parent_nodes() const
{
    return list_of(Neighbours::parents_of(this));
}

gsl::owner<KIVLinkedList*> CNode::inq_descendents(bool include_hidden, bool through_collapsed) const
{
    if (DescendentWalk::leave_to_walk(this))
        return new KIVLinkedList(false);
    return DescendentWalk(include_hidden, through_collapsed).find(this);
}

gsl::owner<KIVLinkedList*> CNode::inq_descendent_conns() const
{
    auto found = std::make_unique<KIVLinkedList>(false);
    const NodeWalk walk;
    walk_beyond(this, Neighbours::children_of, [&](CNode* node) {
        if (!walk.enter(node))
            return false; // its connections are there, and those of all that feeds it
        const KIVLinkedList outgoing = node->inq_out_connections_list();
        for (KIVObject* connection : outgoing.of<KIVObject>())
            found->add(connection);
        return true;
    });
    return found.release();
}

KIVString CNode::inq_source_node_names() const
{
    KIVString names;
    inq_source_node_names(const_cast<CNode*>(this), &names);
    return names;
}

CNode* CNode::inq_source_node_names(CNode* node, KIVString* names)
{
    return node ? SourceNames(names).find(node) : nullptr;
}

CNode* CNode::inq_source_node_channel_names(CNodeChannel* channel, KIVString* names)
{
    CNode* first = nullptr;
    const KIVLinkOb* link = channel ? channel->inq_connections_list()->inq_last_link() : nullptr;
    for (; link && (names || !first); link = link->inq_prev()) {
        const auto* connection = static_cast<const CNodeConnection*>(link->value());
        const CNodeChannel* output = connection ? connection->inq_output_channel() : nullptr;
        CNode* source = inq_source_node_names(output ? output->inq_node() : nullptr, names);
        if (!first)
            first = source;
    }
    return first;
}

gsl::owner<DAGOpTopDown*> CNode::inq_td_dag_op(const KIVString&, DAGOpNode*)
{
    return nullptr;
}

gsl::owner<DAGOpBottomUp*> CNode::inq_bu_dag_op(const KIVString& name, DAGOpNode* node_op)
{
    if (!(name == "type_checker"))
        return nullptr;
    if (inq_is_universal())
        return new DAGOpUniversalTypeChecker(node_op, false);
    if (inq_is_generic())
        return new DAGOpUniversalTypeChecker(node_op, true);
    return new DAGOpDefaultTypeChecker(node_op);
}

void CNode::set_types(gsl::owner<cdata_tDArray*> new_types)
{
    types.reset(new_types);
    ++GraphChanges::our_type_lists;
}

void CNode::set_is_hidden(bool hidden)
{
    is_hidden = hidden;
    if (group)
        position = hidden ? position - group->position : group->position + position;
}

void CNode::reset_height(double new_height)
{
    height = new_height - 2 * inq_border_thick();
    for (CNodeChannelSet* set : {inputs.get(), outputs.get()})
        if (set)
            set->reset_position();
}

void CNode::reset_width(double new_width)
{
    const double borders = 2 * inq_border_thick();
    const double needed = width_of_first(inputs.get(), inq_n_vis_input_channels()) +
                          width_of_first(outputs.get(), inq_n_vis_output_channels());
    width = std::max(needed - borders, new_width - borders);
}

void CNode::lay_out_after_load()
{
    if (width == NO_WIDTH_YET)
        width = inq_min_channel_width() *
                std::max({1, inq_n_input_channels(), inq_n_output_channels()});
    lay_out_channels();
}

void CNode::add_to_ordered_list(KIVLinkedList* list)
{
    walk_from(this, Neighbours::children_of, [&](CNode* node) {
        if (node->inq_in_list_flag())
            return false;
        node->set_in_list_flag(true);
        list->add(node);
        return true;
    });
}

void CNode::clear_in_list_flags()
{
    const NodeWalk walk;
    walk_from(this, Neighbours::children_of, [&](CNode* node) {
        node->set_in_list_flag(false);
        return walk.enter(node);
    });
}

bool CNode::do_acyclic_check()
{
    struct Step {
        CNode* node;
        Neighbours children;
    };
    std::vector<Step> way;
    const NodeWalk walk;
    const auto enter = [&](CNode* node) {
        if (!node->inputs || !walk.enter(node))
            return; // nothing feeds it, or it has passed
        node->set_acyclic_flag(true);
        way.push_back({node, Neighbours::children_of(node)});
    };

    if (inq_acyclic_flag())
        return false;
    enter(this);
    while (!way.empty()) {
        CNode* child = way.back().children.next();
        if (child && child->inq_acyclic_flag())
            return false;
        if (child) {
            enter(child);
        } else {
            way.back().node->set_acyclic_flag(false);
            way.pop_back();
        }
    }
    return true;
}

void CNode::set_inchoate_flag(bool on)
{
    set_flag(F_INCHOATE, on);
    ++GraphChanges::our_count; // the graph's next round would have changed it
}

void CNode::set_and_propogate_inchoate_flag()
{
    InchoateWalk::flag(this);
    ++GraphChanges::our_count;
}

bool CNode::should_be_inchoate() const
{
    if (!inq_is_fully_connected())
        return true;
    Neighbours parents = Neighbours::parents_of(this);
    while (const CNode* parent = parents.next())
        if (parent->inq_inchoate_flag())
            return true;
    return false;
}

void CNode::update_and_propogate_inchoate_flag(BoundingBox* box)
{
    walk_from(this, Neighbours::children_of, [&](CNode* node) {
        const bool inchoate = node->should_be_inchoate();
        if (node->inq_inchoate_flag() == inchoate)
            return false;
        node->set_inchoate_flag(inchoate);
        KIVRectangle area = node->inq_bounds();
        area.move_by(node->position);
        box->set_union(area);
        return true;
    });
}
