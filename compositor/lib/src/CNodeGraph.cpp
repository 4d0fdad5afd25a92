#include "compositor/lib/hdr/CNodeGraph.h"

#include "compositor/lib/hdr/CNodeGraphWatcher.h"
#include "compositor/lib/src/GraphChanges.h"
#include "compositor/lib/src/GraphClaims.h"
#include "compositor/lib/src/GraphUpkeep.h"
#include "compositor/lib/src/NodeWalk.h"
#include "kivlib/hdr/ChangeRecorder.h"
#include "kivlib/hdr/KIVDLLUsageList.h"
#include "kivlib/hdr/Record.h"
#include "kivlib/hdr/report_error.h"

#include <ranges>

KIV_STORED_CLASS(CNodeGraph, 92);

namespace {
constexpr FormatVersions IS_A_NODE = before(92);
using TypeLists = FlatTypeChecker::Lists;
constexpr int MOST_ROUNDS = 1'000'000; // connections that a channel of a sound graph may have

/// The nodes of a list. Others can reach the list, and a null in it stands for no node.
class NodesOf {
    using Objects = KIVLinkedList::Objects<CNode>;

public:
    explicit NodesOf(const KIVLinkedList& list) : nodes(list.of<CNode>()) {}

    class Iterator {
    public:
        Iterator(Objects::Iterator at, Objects::Iterator end) : at(at), end(end) { pass_nulls(); }
        CNode* operator*() const { return *at; }
        Iterator& operator++()
        {
            ++at;
            pass_nulls();
            return *this;
        }
        bool operator==(const Iterator& other) const { return at == other.at; }

    private:
        void pass_nulls()
        {
            while (!(at == end) && !*at)
                ++at;
        }
        Objects::Iterator at;
        Objects::Iterator end;
    };
    Iterator begin() const { return {nodes.begin(), nodes.end()}; }
    Iterator end() const { return {nodes.end(), nodes.end()}; }

private:
    Objects nodes;
};

std::unique_ptr<KIVLinkedList> new_list()
{
    return std::make_unique<KIVLinkedList>(false);
}

template <class Fits> gsl::owner<KIVLinkedList*> find_nodes(const KIVLinkedList& nodes, Fits fits)
{
    std::unique_ptr<KIVLinkedList> found = new_list();
    for (CNode* node : NodesOf(nodes))
        if (fits(*node))
            found->add(node);
    return found.release();
}

template <class Find> CNodeChannel* find_first_channel(const KIVLinkedList& nodes, Find find)
{
    for (const CNode* node : NodesOf(nodes))
        if (CNodeChannel* channel = find(*node))
            return channel;
    return nullptr;
}

bool any_selected(const CNodeChannelSet* set)
{
    for (int i = 0; set && i < set->inq_n_channels(); ++i)
        if (set->inq_channel(i)->inq_is_selected())
            return true;
    return false;
}

bool shows_no_use(const CNode& node)
{
    const int n = std::min(node.inq_n_vis_output_channels(), node.inq_n_output_channels());
    for (int i = 0; i < n; ++i)
        if (!node.inq_outputs()->inq_channel(i)->inq_connections_list()->inq_is_empty())
            return false;
    return true;
}

bool is_output(const CNodeChannel* channel)
{
    const CNodeChannelSet* set = channel ? channel->inq_channel_set() : nullptr;
    return set && set->inq_is_output_channel_set();
}

bool is_input(const CNodeChannel* channel)
{
    const CNodeChannelSet* set = channel ? channel->inq_channel_set() : nullptr;
    return set && set->inq_is_input_channel_set();
}

/// Tells the watchers of now, of which some may go meanwhile.
template <class Watcher, class Tell> void tell_all(const KIVLinkedList& watchers, Tell tell)
{
    const KIVLinkedList told(watchers);
    for (KIVObject* watcher : told.of<KIVObject>())
        if (watchers.find(watcher))
            tell(*static_cast<Watcher*>(watcher));
}

/// Whether all that feeds the node and all that it feeds is of the graph. A missing end is no
/// harm.
bool is_connected_within(const CNodeGraph* graph, const CNode& node)
{
    for (Neighbours others : {Neighbours::children_of(&node), Neighbours::parents_of(&node)})
        while (const CNode* other = others.next())
            if (other->inq_graph() != graph)
                return false;
    return true;
}
} // namespace

CNodeGraph::CNodeGraph(XSheet* xsheet)
    : xsheet(xsheet), nodes(std::make_unique<KIVLinkedList>(true)), watchers(new_list()),
      upkeep(std::make_unique<GraphUpkeep>(*this))
{
    nodes->count_changes_in(&GraphChanges::our_count);
}

/// When a graph was a node itself it had a node's fields.
template <class Record> void CNodeGraph::record(Record& r)
{
    r.dropped_int(IS_A_NODE);
    r.template dropped_link<CNodeGraph>(IS_A_NODE);
    r.template dropped_owned<CNodeChannelSet>(IS_A_NODE);
    r.template dropped_owned<CNodeChannelSet>(IS_A_NODE);
    Vector2 dropped_position;
    r.embedded(dropped_position, IS_A_NODE);
    r.owned(nodes);
    r.link(root_node);
}

CNodeGraph::CNodeGraph(KIVIStream& stream)
    : KIVObject(stream), watchers(new_list()), upkeep(std::make_unique<GraphUpkeep>(*this))
{
    RecordReader r(stream);
    record(r);
    if (!nodes)
        nodes = new_list();
    if (!GraphClaims(stream, this).claim(*nodes, root_node)) {
        nodes->remove_all();
        root_node = nullptr;
    }
    nodes->count_changes_in(&GraphChanges::our_count);
    for (CNode* node : NodesOf(*nodes))
        node->set_graph(this);
}

void CNodeGraph::storer(KIVOStream& stream)
{
    KIVObject::storer(stream);
    for (const CNode* node : NodesOf(*nodes)) {
        stored_nodes.insert(node);
        if (!is_connected_within(this, *node))
            stream.set_error_state(KIVStream::BAD_DATA); // no reader would take it
    }
    CNode* const real_root = std::exchange(root_node, inq_holds(root_node) ? root_node : nullptr);
    RecordWriter r(stream);
    record(r);
    root_node = real_root;
    stored_nodes.clear();
}

bool CNodeGraph::inq_holds(const CNode* node) const
{
    if (!node || !stored_nodes.empty())
        return node && stored_nodes.contains(node);
    return nodes->find(node);
}

CNodeGraph::~CNodeGraph()
{
    delete_all_connections();
    nodes->remove_all_deleting_objects();
    for (CNodeGraphWatcher* watcher : watchers->of<CNodeGraphWatcher>())
        watcher->graph = nullptr;
}

gsl::owner<KIVLinkedList*> CNodeGraph::inq_nodes_of_type(int type) const
{
    return find_nodes(*nodes, [&](const CNode& node) { return node.inq_type() == type; });
}

gsl::owner<KIVLinkedList*> CNodeGraph::make_ordered_nodes_list() const
{
    std::unique_ptr<KIVLinkedList> ordered = new_list();
    if (root_node) {
        root_node->clear_in_list_flags();
        root_node->add_to_ordered_list(ordered.get());
    }
    return ordered.release();
}

gsl::owner<KIVLinkedList*> CNodeGraph::inq_nodes_with_no_out_puts() const
{
    return find_nodes(*nodes, shows_no_use);
}

gsl::owner<KIVLinkedList*> CNodeGraph::find_connections(const KIVLinkedList& nodes)
{
    std::unique_ptr<KIVLinkedList> found = new_list();
    std::unordered_set<const KIVObject*> met;
    for (const CNode* node : NodesOf(nodes))
        for (const KIVLinkedList& list :
             {node->inq_in_connections_list(), node->inq_out_connections_list()})
            for (KIVObject* connection : list.of<KIVObject>())
                if (met.insert(connection).second)
                    found->add(connection);
    return found.release();
}

CNode* CNodeGraph::find_single_selected_node() const
{
    CNode* selected = nullptr;
    for (CNode* node : NodesOf(*nodes)) {
        if (!node->inq_is_selected())
            continue;
        if (selected)
            return nullptr;
        selected = node;
    }
    return selected;
}

bool CNodeGraph::inq_channels_selected() const
{
    for (const CNode* node : NodesOf(*nodes))
        if (any_selected(node->inq_inputs()) || any_selected(node->inq_outputs()))
            return true;
    return false;
}

CNode* CNodeGraph::find_node(unsigned int label) const
{
    for (CNode* node : NodesOf(*nodes))
        if (node->inq_label() == label)
            return node;
    return nullptr;
}

bool CNodeGraph::is_connected_to_root(const CNode* node) const
{
    if (!node || node == root_node)
        return node;
    bool is_connected = false;
    const NodeWalk walk;
    walk_beyond(node, Neighbours::parents_of, [&](const CNode* reader) {
        is_connected = is_connected || reader == root_node;
        return !is_connected && walk.enter(reader);
    });
    return is_connected;
}

CNodeChannel* CNodeGraph::find_channel_at(const Vector2& point) const
{
    return find_first_channel(*nodes, [&](const CNode& node) -> CNodeChannel* {
        const Vector2 place = point - node.inq_position();
        CNodeChannel* channel = nullptr;
        if (!node.inq_bounds().is_inside(place))
            return channel;
        if (node.inq_inputs())
            channel = node.inq_inputs()->find_channel_at(place);
        if (!channel && node.inq_outputs())
            channel = node.inq_outputs()->find_channel_at(place);
        return channel;
    });
}

CNodeChannel* CNodeGraph::find_channel_near(const Vector2& point, double tolerance) const
{
    return find_first_channel(*nodes, [&](const CNode& node) -> CNodeChannel* {
        const Vector2 place = point - node.inq_position();
        CNodeChannel* channel = nullptr;
        if (node.inq_hidden())
            return channel;
        if (node.inq_n_vis_input_channels() > 0)
            channel = node.inq_inputs()->find_channel_near(place, tolerance);
        if (!channel && node.inq_n_vis_output_channels() > 0)
            channel = node.inq_outputs()->find_channel_near(place, tolerance);
        return channel;
    });
}

void CNodeGraph::record_dll_usage(KIVDLLUsageList* usage) const
{
    const std::unique_ptr<KIVLinkedList> ordered(make_ordered_nodes_list());
    for (const CNode* node : ordered->of<CNode>())
        usage->record_object_usage(node);
}

bool CNodeGraph::inq_can_connect_data_types(CNodeChannel* output, CNodeChannel* input)
{
    return is_output(output) && is_input(input) &&
           upkeep->check_types(TypeLists::DROPPED, output, input);
}

bool CNodeGraph::inq_can_connect_acyclic(CNodeChannel* output, CNodeChannel* input)
{
    if (!is_output(output) || !is_input(input))
        return false;
    for (CNode* node : NodesOf(*nodes))
        node->set_acyclic_flag(false);
    input->inq_node()->set_acyclic_flag(true);
    return output->inq_node()->do_acyclic_check();
}

bool CNodeGraph::inq_is_connected(const CNodeChannel* output, const CNodeChannel* input) const
{
    const KIVLinkedList& connections = *input->inq_connections_list();
    for (const auto* connection : connections.of<CNodeConnection>())
        if (connection && connection->inq_output_channel() == output)
            return true;
    return connections.inq_is_empty();
}

CNodeConnection* CNodeGraph::find_connection_between(const CNodeChannel* output,
                                                     const CNodeChannel* input) const
{
    for (auto* connection : output->inq_connections_list()->of<CNodeConnection>())
        if (connection && connection->inq_input_channel() == input)
            return connection;
    return nullptr;
}

CNodeConnection* CNodeGraph::make_connection(CNodeChannel* output, CNodeChannel* input, bool notify)
{
    constexpr int HEAD = -1;
    return make_connection(output, HEAD, input, HEAD, notify);
}

CNodeConnection* CNodeGraph::make_connection(CNodeChannel* output, int output_index,
                                             CNodeChannel* input, int input_index, bool notify)
{
    if (!is_output(output) || !is_input(input))
        return nullptr;
    if (type_checker_enabled && !upkeep->check_types(TypeLists::STORED, output, input))
        return nullptr;
    auto* connection = new CNodeConnection(output, input);
    upkeep->connect(*connection, output_index, input_index);
    CNode* reader = input->inq_node();
    if (notify) {
        reader->input_connections_changed();
        output->inq_node()->output_connections_changed();
    }
    const bool is_connected = update_readers(reader);
    upkeep->update_inchoate_flags();
    tell_connections_changed(is_connected);
    return connection;
}

void CNodeGraph::delete_connection(gsl::owner<CNodeConnection*> connection, bool notify)
{
    const std::unique_ptr<CNodeConnection> taken(connection);
    if (!taken)
        return;
    CNodeChannel* output = taken->inq_output_channel();
    CNodeChannel* input = taken->inq_input_channel();
    if (output) {
        upkeep->leave_output(*connection);
        if (notify && output->inq_node())
            output->inq_node()->output_connections_changed();
    }
    if (input) {
        upkeep->leave_input(*connection);
        if (notify && input->inq_node())
            input->inq_node()->input_connections_changed();
    }
    if (type_checker_enabled)
        upkeep->check_types(TypeLists::STORED, nullptr, nullptr);
    if (input && input->inq_node())
        update_input_connections(input->inq_node());
}

/// What is kept of checks would cost time with each of the edits to come.
void CNodeGraph::set_type_checker_disabled()
{
    type_checker_enabled = false;
    upkeep->drop_checker();
}

bool CNodeGraph::set_type_checker_enabled()
{
    type_checker_enabled = true;
    return upkeep->check_types(TypeLists::STORED, nullptr, nullptr);
}

void CNodeGraph::add_node(gsl::owner<CNode*> node)
{
    if (!node || (node->inq_graph() == this && nodes->find(node)))
        return;
    node->set_graph(this);
    upkeep->add_node(node);
    if (node->inq_label() == removed_root)
        set_root_node(node);
    node->node_just_added_to_graph();
    notify_number_of_nodes_changed();
}

gsl::owner<CNode*> CNodeGraph::remove_node(CNode* node)
{
    if (!node || !nodes->remove(node))
        return nullptr;
    if (node == root_node) {
        set_root_node(nullptr); // the caller may delete it
        removed_root = node->inq_label();
    }
    node->set_graph(nullptr);
    node->node_just_removed_from_graph();
    notify_number_of_nodes_changed();
    return node;
}

void CNodeGraph::set_root_node(CNode* node)
{
    root_node = node;
    removed_root = NO_NODE;
}

void CNodeGraph::update_input_connections(CNode* node)
{
    update_readers(node);
}

/// Whether the root can be reached from the node afterwards.
bool CNodeGraph::update_readers(CNode* node)
{
    const CNode* const root = root_node;
    const unsigned long seen_changes = GraphChanges::our_count;
    ReaderWalk& walk = upkeep->inq_reader_walk();
    const std::vector<CNode*> readers = walk.find(root, node);
    const bool leads_to_root = walk.inq_meets_root();
    for (CNode* reader : readers | std::views::reverse)
        reader->input_connections_updated();
    if (root_node != root || GraphChanges::our_count != seen_changes)
        return is_connected_to_root(node); // a node has changed the graph
    return leads_to_root;
}

void CNodeGraph::update_inchoate_flags()
{
    upkeep->update_all_inchoate_flags();
}

void CNodeGraph::attach_watcher(CNodeGraphWatcher* watcher)
{
    watchers->add(watcher);
}

void CNodeGraph::unattach_watcher(CNodeGraphWatcher* watcher)
{
    watchers->remove(watcher);
}

void CNodeGraph::add_selection_watcher(CNodeGraphSelectionWatcher* watcher)
{
    if (!selection_watchers)
        selection_watchers = new_list();
    selection_watchers->add(watcher);
}

void CNodeGraph::remove_selection_watcher(CNodeGraphSelectionWatcher* watcher)
{
    if (selection_watchers)
        selection_watchers->remove(watcher);
}

void CNodeGraph::notify_connections_changed(bool connected_to_root)
{
    update_inchoate_flags();
    tell_connections_changed(connected_to_root);
}

void CNodeGraph::tell_connections_changed(bool connected_to_root)
{
    tell_all<CNodeGraphWatcher>(*watchers,
                                [=](auto& w) { w.connections_changed(connected_to_root); });
}

void CNodeGraph::notify_chan_selection_changed(bool has_changed)
{
    if (has_changed)
        tell_all<CNodeGraphWatcher>(*watchers, [](auto& w) { w.connections_changed(true); });
}

void CNodeGraph::notify_number_of_nodes_changed()
{
    tell_all<CNodeGraphWatcher>(*watchers, [](auto& w) { w.number_of_nodes_changed(); });
}

void CNodeGraph::selection_changed()
{
    if (selection_watchers)
        tell_all<CNodeGraphSelectionWatcher>(*selection_watchers,
                                             [](auto& w) { w.selection_changed(); });
}

void CNodeGraph::add_change_event(ChangeEvt* event)
{
    if (change_recorder)
        change_recorder->add(event);
}

void CNodeGraph::end_change(const char* name)
{
    if (!change_recorder)
        return;
    const char* stored_name = end_change_name ? end_change_name->c_str() : nullptr;
    change_recorder->end(name ? name : stored_name);
}

void CNodeGraph::set_end_change_name(const char* text)
{
    end_change_name = std::make_unique<KIVString>(text);
}

void CNodeGraph::mark_used_assets()
{
    for (CNode* node : NodesOf(*nodes))
        node->mark_used_assets();
}

bool CNodeGraph::load_finished_with_abort(XSheet* sheet, bool)
{
    xsheet = sheet;
    for (CNode* node : NodesOf(*nodes))
        node->lay_out_after_load();
    if (abort_of_load_finished())
        return true;
    constexpr int PASSES = 2; // in its second call a node may rely on all others' first
    for (int pass = 0; pass < PASSES; ++pass)
        for (CNode* node : NodesOf(*nodes))
            node->after_load_finished();
    // types that do not fit are no reason to refuse a scene
    upkeep->check_types(TypeLists::STORED, nullptr, nullptr);
    return false;
}

bool CNodeGraph::abort_of_load_finished()
{
    for (CNode* node : NodesOf(*nodes))
        if (node->load_finished_with_abort())
            return true;
    return false;
}

void CNodeGraph::delete_all_connections()
{
    std::unordered_set<const KIVObject*> gone; // in a damaged list a connection stands again
    for (const CNode* node : NodesOf(*nodes))
        for (const CNodeChannelSet* set : {node->inq_outputs(), node->inq_inputs()})
            for (int i = 0; set && i < set->inq_n_channels(); ++i)
                empty_channel(*set->inq_channel(i), gone);
}

/// Guarded against a list that does not get shorter.
void CNodeGraph::empty_channel(CNodeChannel& channel, std::unordered_set<const KIVObject*>& gone)
{
    const KIVObject* previous = nullptr; // gone by the time it is compared
    KIVLinkedList& connections = *channel.inq_connections_list();
    for (int round = 0; !connections.inq_is_empty(); ++round) {
        KIVObject* head = connections.inq_first_link()->value();
        if (round > 0 && head == previous) {
            report_here() << "Program error (repeated value).\n";
            return;
        }
        if (round == MOST_ROUNDS) {
            report_here() << "Program error (timeout).\n";
            return;
        }
        if (head && gone.insert(head).second)
            delete_connection_from_destructor(static_cast<CNodeConnection*>(head));
        else
            connections.remove(head);
        previous = head;
    }
}

void CNodeGraph::delete_connection_from_destructor(gsl::owner<CNodeConnection*> connection)
{
    const std::unique_ptr<CNodeConnection> taken(connection);
    for (CNodeChannel* channel : {taken->inq_output_channel(), taken->inq_input_channel()})
        if (channel)
            channel->remove_connection(connection);
}
