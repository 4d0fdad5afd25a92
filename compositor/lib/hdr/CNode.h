#pragma once

#include "kivlib/hdr/KIVLinkedList.h"
#include "kivlib/hdr/Vector.h"

class BoundingBox;
class CNodeChannel;
class CNodeChannelSet;
class CNodeDescriptor;
class CNodeGraph;
class CNodeOp;
class DAGOpBottomUp;
class DAGOpNode;
class DAGOpTopDown;
class DisplayCNode;
class KIVRectangle;
class cdata_tDArray;

/// A box of the compositor graph. Its children are the nodes that feed its inputs, its parents
/// those that read its outputs; the root of the graph is the last consumer. It owns its channels;
/// the graph owns it. All lists that it gives are new, refer to their objects, and belong to the
/// caller. Lengths are canvas units with y upwards.
class CNode : public KIVObject {
    KIV_STORED_ABSTRACT(CNode, KIVObject);

public:
    enum Flag {
        F_SELECTED = 1,
        F_ACYCLIC = 2,
        F_INCHOATE = 4,
        F_IN_LIST = 8,
        F_PASTE_WITH_ALL_LINKS = 16
    };

    /// Cleared by a caller whose old stream holds no tag positions.
    static bool read_tags_pos_info;

    /// Without channels until `init`.
    CNode();
    explicit CNode(KIVIStream& stream);

    /// Unconnected channels, no group, no graph, a label of its own.
    CNode(const CNode& other);
    CNode& operator=(const CNode&) = delete;
    ~CNode() override;

    void storer(KIVOStream& stream) override;

    /// Makes the channels that the descriptor calls for. Called once, by the factory.
    virtual void init();
    virtual void load_finished();

    /// True gives the load up.
    virtual bool load_finished_with_abort();
    virtual void mark_used_assets();

    /// Called on all nodes twice, so that the second call may rely on the others' first.
    virtual void after_load_finished();
    virtual void node_just_added_to_graph();
    virtual void node_just_removed_from_graph();
    virtual int inq_type() const = 0;
    virtual int inq_n_vis_input_channels() const;
    virtual int inq_n_vis_output_channels() const;
    virtual bool inq_can_connect_to_input_chans() const;
    virtual KIVString inq_displayed_type_name() const;
    virtual void add_to_graph(CNodeGraph* graph);
    virtual void remove_from_graph();
    virtual void input_connections_changed();

    /// Something that feeds this node has changed.
    virtual void input_connections_updated();
    virtual void output_connections_changed();

    /// What evaluates this node for the data type; may be null. The caller deletes it.
    virtual gsl::owner<CNodeOp*> new_nodeop(int requested_type) = 0;
    virtual bool inq_is_fully_connected() const;
    virtual bool inq_can_connect_multiple_inputs(int channel) const;
    virtual void add_to_group(CNode* group);
    virtual void remove_from_group();
    virtual CNode* inq_group() const;

    /// What stands for this node on the canvas: of a folded node, its group.
    virtual CNode* inq_effective_node();
    virtual void add_to_macro(CNode* macro);
    virtual void remove_from_macro();
    virtual CNode* inq_macro() const;
    virtual bool inq_is_in_macro() const;
    virtual KIVString inq_name() const = 0;
    virtual KIVString inq_summary() const;
    virtual KIVString inq_path() const;
    virtual bool inq_is_selected() const;
    virtual void set_is_selected(bool selected);
    virtual KIVString inq_output_chan_message(int channel) const;
    virtual KIVString inq_input_chan_message(int channel) const;

    /// All that feeds this node, depth first, each where it is met first. A class that gives its
    /// own answer must not build on this one: within a walk it is empty, and the walk goes on.
    virtual gsl::owner<KIVLinkedList*> inq_descendents(bool include_hidden,
                                                       bool through_collapsed) const;

    /// Universal nodes take any data, generic ones what their generic ops serve.
    virtual bool inq_is_universal() const;
    virtual bool inq_is_generic() const;
    virtual bool check_state() const;

    static double inq_min_channel_width() { return 50.0; }
    static double inq_channel_height() { return 8.0; }
    static double inq_border_thick() { return 1.0; }

    bool inq_is_disabled() const { return is_disabled; }
    bool inq_is_temp_disabled() const { return is_temp_disabled; }
    CNodeGraph* inq_graph() const { return graph; }

    /// Null for a node without inputs, or without outputs.
    CNodeChannelSet* inq_inputs() const { return inputs.get(); }
    CNodeChannelSet* inq_outputs() const { return outputs.get(); }
    int inq_n_input_channels() const;
    int inq_n_output_channels() const;
    bool inq_is_collapsed() const { return is_collapsed; }

    /// The data types that the last stored type check left; null if there was none.
    const cdata_tDArray* inq_types() const { return types.get(); }

    /// The centre.
    const Vector2& inq_position() const { return position; }
    double inq_width() const { return width; }
    double inq_height() const { return height; }
    bool inq_hidden() const { return is_hidden; }
    DisplayCNode* inq_display_node() const { return display_node; }
    double inq_dw_tag_pos() const { return dw_tag_pos; }

    /// The node's identity in this process; never stored.
    unsigned int inq_label() const { return label; }

    /// An object whose first bytes an evaluation reads for the node, so that it is brought near in
    /// time. Never looked into here; null without one.
    const void* inq_values() const { return values; }
    CNodeDescriptor* inq_desc() const;
    const KIVString& inq_type_name() const;

    bool inq_selected_flag() const { return inq_flag(F_SELECTED); }
    bool inq_acyclic_flag() const { return inq_flag(F_ACYCLIC); }
    bool inq_inchoate_flag() const { return inq_flag(F_INCHOATE); }
    bool inq_in_list_flag() const { return inq_flag(F_IN_LIST); }
    bool inq_paste_with_all_links_flag() const { return inq_flag(F_PASTE_WITH_ALL_LINKS); }
    void set_selected_flag(bool on) { set_flag(F_SELECTED, on); }
    void set_acyclic_flag(bool on) { set_flag(F_ACYCLIC, on); }
    void set_inchoate_flag(bool on);
    void set_in_list_flag(bool on) { set_flag(F_IN_LIST, on); }
    void set_paste_with_all_links_flag(bool on) { set_flag(F_PASTE_WITH_ALL_LINKS, on); }

    /// Relative to the centre; the bounds include the strips of visible channels.
    KIVRectangle inq_border_rect() const;
    KIVRectangle inq_bounds() const;

    /// The index of the input channel at a canvas point; the channel count for a gap.
    int inq_nearest_input_channel(const Vector2& point) const;
    bool inq_any_channel_selected() const;
    KIVLinkedList inq_in_connections_list() const;
    KIVLinkedList inq_out_connections_list() const;

    /// A node that feeds, or reads, several times is there as often.
    gsl::owner<KIVLinkedList*> inq_child_nodes() const;
    gsl::owner<KIVLinkedList*> inq_parent_nodes() const;

    /// The outgoing connections of all nodes that feed this one.
    gsl::owner<KIVLinkedList*> inq_descendent_conns() const;

    /// The names of the sources that feed this node, the last input's first, with ", " between.
    KIVString inq_source_node_names() const;

    /// Appends to `names`, which may be null; gives the first source that it meets, or null.
    static CNode* inq_source_node_names(CNode* node, KIVString* names);
    static CNode* inq_source_node_channel_names(CNodeChannel* channel, KIVString* names);

    /// The node's operator in the pass called `name`, or null. The caller deletes it.
    gsl::owner<DAGOpTopDown*> inq_td_dag_op(const KIVString& name, DAGOpNode* node_op);
    gsl::owner<DAGOpBottomUp*> inq_bu_dag_op(const KIVString& name, DAGOpNode* node_op);

    void set_is_disabled(bool disabled) { is_disabled = disabled; }
    void set_is_temp_disabled(bool disabled) { is_temp_disabled = disabled; }
    void set_graph(CNodeGraph* new_graph) { graph = new_graph; }
    void show_output_channel(bool show) { show_output = show; }
    void toggle_collapse_state() { is_collapsed = !is_collapsed; }
    void set_position(const Vector2& centre) { position = centre; }
    void set_display_node(DisplayCNode* display) { display_node = display; }
    void set_dw_tag_pos(double tag_position) { dw_tag_pos = tag_position; }
    void set_types(gsl::owner<cdata_tDArray*> new_types);

    /// The position of a folded node is relative to its group's: call it once per change.
    void set_is_hidden(bool hidden);
    void reset_height(double new_height);

    /// Never narrower than the visible channels need.
    void reset_width(double new_width);

    /// Gives a node that was read its width, if the file had none, and its channels their strips.
    void lay_out_after_load();

    /// This node and all that feeds it, depth first, each where it is met first, as far as
    /// `F_IN_LIST` is not set yet.
    void add_to_ordered_list(KIVLinkedList* list);
    void clear_in_list_flags();

    /// False if a node that bears `F_ACYCLIC` feeds this one. The flag then stays on the way to it.
    bool do_acyclic_check();

    /// Marks this node and all that feeds it.
    void set_and_propogate_inchoate_flag();

    /// Brings the flag up to date here and on all that feeds this node; `box` grows by the nodes
    /// to be drawn anew.
    void update_and_propogate_inchoate_flag(BoundingBox* box);

protected:
    /// Whether a file that holds this node holds the other one too, which may be gone.
    bool is_stored_with(const CNode* other) const;

    /// For a node whose record names more nodes than its group and macro: a graph that is read
    /// with one of them missing is refused. The list is the node's own.
    void set_named_nodes(const KIVLinkedList* nodes) { named_nodes = nodes; }

    void set_values(const void* read_by_evaluations) { values = read_by_evaluations; }

private:
    friend class GraphClaims;
    friend class InchoateWalk;
    friend class NodeWalk;
    friend class ReaderWalk;

    template <class Record> void record(Record& r);
    bool inq_flag(int flag) const { return (flags & flag) != 0; }
    void set_flag(int flag, bool on) { flags = on ? flags | flag : flags & ~flag; }
    bool should_be_inchoate() const;
    CNode* find_effective_node();
    void lay_out_channels();

    bool is_disabled = false;
    bool is_temp_disabled = false;
    CNodeGraph* graph = nullptr; // not owned
    std::unique_ptr<CNodeChannelSet> inputs;
    std::unique_ptr<CNodeChannelSet> outputs;
    bool is_collapsed = false;
    std::unique_ptr<cdata_tDArray> types;
    Vector2 position;
    double width = 50.0;
    double height = 24.0;
    bool is_hidden = false;
    CNode* group = nullptr; // not owned
    CNode* macro = nullptr; // not owned
    int flags = 0;
    bool show_output = true;
    DisplayCNode* display_node = nullptr; // not owned
    double dw_tag_pos = 0.0;
    unsigned int label;
    mutable unsigned long last_walk = 0; // the walk that met this node last
    unsigned long last_reader_walk = 0;
    const KIVLinkedList* named_nodes = nullptr;
    const void* values = nullptr;
};
