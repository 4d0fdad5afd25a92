#pragma once

class CNodeGraph;
class XSNode;

#include "kivlib/hdr/KIVColour.h"
#include "kivlib/hdr/KIVLinkedList.h"
#include "xsheet/column/hdr/SubColumn.h"

#include <vector>

/// A sub-column that holds others, in an order, and owns them. Keys stand in its members alone.
class Column : public SubColumn {
    KIV_STORED(Column, SubColumn);

public:
    Column() { sub_columns.count_changes_in(&member_changes); }

    /// The copy has copies of all members, and no label and no node.
    Column(const Column& other, bool = true);
    explicit Column(KIVIStream& stream);
    ~Column() override;

    void storer(KIVOStream& stream) override;
    gsl::owner<SubColumn*> duplicate() const override;
    void added_to_column(Column* to) override;
    gsl::owner<KIVLinkedList*> key_cells() override;
    int inq_header_line() override;
    bool can_make_key(int frame) override;
    void column_being_removed() override;
    void column_being_added() override;
    bool can_remove() const override;
    void set_just_saved() override;
    bool load_finished_with_abort() override;
    bool can_set_length(int frames) override;
    void set_length(int frames) override;
    bool is_column() const override;
    bool is_frame_the_same(int a, int b) override;
    void inq_key_range(int* low, int* high) override;
    KIVColour* inq_bg_colour() const override { return bg_colour.get(); }
    int inq_colour_type() const override { return colour_type; }
    int find(const KIVString& text, int frame, int flags) override;
    void get_dependencies(KIVStringList& files, bool flag) override;
    void mark_used_assets() override;
    bool is_empty() override;
    void clear_all_inbetweens() override;

    /// Behind `after`, or at the end. The member gets a label if it has none. Always true.
    virtual bool add_sub_column(gsl::owner<SubColumn*> member, SubColumn* after);

    /// To behind `after`, or to the front. False if it is no member.
    virtual bool move_sub_column(SubColumn* member, SubColumn* after);
    virtual bool can_remove_sub_column(SubColumn* member);

    /// The member, which is the caller's now; null if it was none.
    virtual gsl::owner<SubColumn*> remove_sub_column(SubColumn* member);

    /// All members at every depth, each column directly followed by its own; the caller deletes
    /// this list, as each that is given below.
    virtual gsl::owner<KIVLinkedList*> inq_deep_sub_column_list();

    /// Those of one type.
    virtual gsl::owner<KIVLinkedList*> inq_deep_sub_column_list(unsigned long type);

    /// The direct members that are no columns.
    virtual gsl::owner<KIVLinkedList*> inq_shallow_sub_column_list();

    /// The columns at every depth.
    virtual gsl::owner<KIVLinkedList*> inq_columns();

    gsl::owner<KIVLinkedList*> inq_containers_or_data(bool containers);

    KIVLinkedList* inq_sub_column_list() { return &sub_columns; }
    const KIVLinkedList* inq_sub_column_list() const { return &sub_columns; }

    /// The node whose values stand here; null without one.
    XSNode* inq_node() const { return node; }
    void set_node(XSNode* n) { node = n; }

    /// The label of the next member that has none.
    int inq_next_sub_col_label() const { return next_sub_col_label; }
    void reset_next_sub_col_label(int next) { next_sub_col_label = next; }

    /// The direct member with that label, or null.
    SubColumn* find_sub_column(unsigned long member_label) const;

    /// Looks for the one member with exactly this header text, in `recurse` at every depth. 1 if
    /// there is one, which `*out` (null before) is then; 0 if there is none, -1 if there are more.
    int search_for_sub_column_name(const KIVString& name, SubColumn** out, bool recurse);

    /// The label of a member has changed.
    void forget_labels() { ++member_changes; }

    void set_bg_colour(const KIVColour& colour);
    void set_colour_type(int type);

    void tell_watchers_sub_column_added(SubColumn* member);
    void tell_watchers_sub_column_removed(SubColumn* member);

private:
    template <class Record> void record(Record& r);
    void read_sub_columns(KIVIStream& stream);
    void index_sub_columns() const;
    int find_in_headers(const KIVString& text, int frame, int flags);
    KIVLinkedList::Objects<SubColumn> members() const { return sub_columns.of<SubColumn>(); }

    int next_sub_col_label = 1;
    XSNode* node = nullptr;               // not owned
    std::unique_ptr<KIVColour> bg_colour; // null until it is set
    int colour_type = -1;
    KIVLinkedList sub_columns{false}; // owned, and deleted by the destructor

    // The members by their labels, of equal labels the first one. Nodes give small labels.
    struct Labelled {
        unsigned long label;
        SubColumn* member;
    };
    static constexpr std::size_t FEW = 8;
    unsigned long member_changes = 0;
    mutable unsigned long indexed_at = 0; // the changes then
    mutable SubColumn* by_small_label[FEW] = {};
    mutable std::vector<Labelled> by_label; // in the order of labels
};

/// The columns of the graph's nodes in the order of its nodes; the caller deletes the list.
gsl::owner<KIVLinkedList*> make_column_ordered_list(CNodeGraph* graph);
