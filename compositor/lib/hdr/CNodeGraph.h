#pragma once

#include "kivlib/hdr/KIVLinkedList.h"

#include <unordered_set>

class CNode;
class CNodeChannel;
class CNodeConnection;
class CNodeGraphSelectionWatcher;
class CNodeGraphWatcher;
class ChangeEvt;
class ChangeRecorder;
class GraphUpkeep;
class KIVDLLUsageList;
class Vector2;
class XSheet;

/// The compositor of a scene. It owns its nodes and all connections between them, and is the only
/// place where connections are made and deleted. All lists that it gives but `inq_nodes_list` are
/// new, refer to their objects, and belong to the caller. Points are canvas units.
class CNodeGraph : public KIVObject {
    KIV_STORED(CNodeGraph, KIVObject);

public:
    explicit CNodeGraph(XSheet* xsheet);

    /// Without sheet until `load_finished_with_abort`. Nodes and connections that do not fit
    /// together are an error of the stream.
    explicit CNodeGraph(KIVIStream& stream);
    ~CNodeGraph() override;

    void storer(KIVOStream& stream) override;

    XSheet* inq_xsheet() const { return xsheet; }
    CNode* inq_root_node() const { return root_node; }
    KIVLinkedList* inq_nodes_list() const { return nodes.get(); }
    bool inq_type_checker_enabled() const { return type_checker_enabled; }
    KIVString inq_name() const { return "Graph"; }

    gsl::owner<KIVLinkedList*> inq_nodes_of_type(int type) const;

    /// The root and all that feeds it, depth first, each node where it is met first.
    gsl::owner<KIVLinkedList*> make_ordered_nodes_list() const;

    /// Nodes that show no output, or whose visible outputs lead nowhere.
    gsl::owner<KIVLinkedList*> inq_nodes_with_no_out_puts() const;

    /// All connections of these nodes, each once.
    static gsl::owner<KIVLinkedList*> find_connections(const KIVLinkedList& nodes);

    /// Null unless exactly one is selected.
    CNode* find_single_selected_node() const;
    bool inq_channels_selected() const;
    bool inq_contains_node(unsigned int label) const { return find_node(label) != nullptr; }
    CNode* find_node(unsigned int label) const;

    /// Asks by address alone: the node may be gone.
    bool inq_holds(const CNode* node) const;
    bool is_connected_to_root(const CNode* node) const;
    CNodeChannel* find_channel_at(const Vector2& point) const;
    CNodeChannel* find_channel_near(const Vector2& point, double tolerance) const;
    void record_dll_usage(KIVDLLUsageList* usage) const;

    /// Whether a connection may be made from an output to an input. `make_connection` itself asks
    /// only for the data types.
    bool inq_can_connect_data_types(CNodeChannel* output, CNodeChannel* input);
    bool inq_can_connect_acyclic(CNodeChannel* output, CNodeChannel* input);

    /// Always: the node and the type check set the limit.
    bool inq_can_connect_multiple(CNodeChannel*, CNodeChannel*) const { return true; }

    /// Also true for an input without any connection.
    bool inq_is_connected(const CNodeChannel* output, const CNodeChannel* input) const;
    CNodeConnection* find_connection_between(const CNodeChannel* output,
                                             const CNodeChannel* input) const;

    /// Null, and nothing changed but the stored lists of types, if the data types do not fit or the
    /// channels are not an output and an input of nodes. Without indices the connection goes to the
    /// head of both lists. With `notify`, the two nodes are told.
    CNodeConnection* make_connection(CNodeChannel* output, CNodeChannel* input, bool notify);
    CNodeConnection* make_connection(CNodeChannel* output, int output_index, CNodeChannel* input,
                                     int input_index, bool notify);

    /// The caller tells the watchers by `notify_connections_changed` when the edit is over.
    void delete_connection(gsl::owner<CNodeConnection*> connection, bool notify);

    /// Off for a batch of edits. Turning it on checks the graph and says whether its types fit.
    bool set_type_checker_enabled();
    void set_type_checker_disabled();

    /// Takes the node over, unless it is there already. A root that was removed is the root again.
    void add_node(gsl::owner<CNode*> node);

    /// Gives the node back, whose connections have to be gone; null for a stranger. Without its
    /// root the graph has none.
    gsl::owner<CNode*> remove_node(CNode* node);
    void set_root_node(CNode* node);

    /// Tells the node and all that it leads to, down to the root.
    void update_input_connections(CNode* node);
    void update_inchoate_flags();

    void attach_watcher(CNodeGraphWatcher* watcher);
    void unattach_watcher(CNodeGraphWatcher* watcher);
    void add_selection_watcher(CNodeGraphSelectionWatcher* watcher);
    void remove_selection_watcher(CNodeGraphSelectionWatcher* watcher);
    void notify_connections_changed(bool connected_to_root);
    void notify_chan_selection_changed(bool has_changed);
    void notify_number_of_nodes_changed();
    void selection_changed();

    void set_change_recorder(ChangeRecorder* recorder) { change_recorder = recorder; }

    /// The recorder takes the event over; without one it stays the caller's.
    void add_change_event(ChangeEvt* event);

    /// `name` may be null: then the name that was set counts.
    void end_change(const char* name);
    void set_end_change_name(const char* text);

    void mark_used_assets();

    /// After the whole scene was read. True: the load is given up.
    bool load_finished_with_abort(XSheet* sheet, bool check);

private:
    static constexpr unsigned int NO_NODE = 0; // labels are above it

    template <class Record> void record(Record& r);
    bool update_readers(CNode* node);
    void tell_connections_changed(bool connected_to_root);
    void delete_all_connections();
    void delete_connection_from_destructor(gsl::owner<CNodeConnection*> connection);
    void empty_channel(CNodeChannel& channel, std::unordered_set<const KIVObject*>& gone);
    bool abort_of_load_finished();

    XSheet* xsheet = nullptr; // not owned
    std::unique_ptr<KIVLinkedList> nodes;
    CNode* root_node = nullptr;                // not owned
    ChangeRecorder* change_recorder = nullptr; // not owned
    std::unique_ptr<KIVLinkedList> watchers;
    std::unique_ptr<KIVLinkedList> selection_watchers;
    bool type_checker_enabled = true;
    std::unique_ptr<KIVString> end_change_name;
    std::unique_ptr<GraphUpkeep> upkeep;
    unsigned int removed_root = NO_NODE;           // its label
    std::unordered_set<const CNode*> stored_nodes; // while the graph is being stored
};
