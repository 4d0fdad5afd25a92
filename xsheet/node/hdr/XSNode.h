#pragma once

#include "compositor/lib/hdr/CNode.h"
#include "kivlib/hdr/KIVString.h"

class Column;
class SubColumn;
class XSheet;

/// A node whose values change over time: they stand in a column of the exposure sheet. Node and
/// column enter and leave a graph and its sheet together. The sheet owns the column while it
/// lies there, the node owns it otherwise; a graph is deleted before its sheet.
class XSNode : public CNode {
    KIV_STORED_ABSTRACT(XSNode, CNode);

public:
    /// With a new column without sub-columns.
    XSNode();

    /// Takes over the column, which may be null.
    explicit XSNode(gsl::owner<Column*> column);

    /// Without column until `load_finished_with_abort` finds it in the sheet.
    explicit XSNode(KIVIStream& stream);

    /// With a copy of the column.
    XSNode(const XSNode& other);
    ~XSNode() override;

    void storer(KIVOStream& stream) override;
    void init() override;
    bool load_finished_with_abort() override;
    void node_just_added_to_graph() override;
    void node_just_removed_from_graph() override;

    /// The graph has a sheet.
    void add_to_graph(CNodeGraph* graph) override;
    void remove_from_graph() override;

    /// The header text of the column, empty without one.
    KIVString inq_name() const override;
    KIVString inq_summary() const override;

    /// Null where a scene names a column that its sheet lacks: such a node has no values.
    Column* inq_column() const { return column; }
    void set_column(Column* new_column);

    /// The column as a file names it; 0 while the node is out of a graph.
    unsigned long inq_column_label() const { return column_label; }

    bool inq_column_has_changed() const { return column_has_changed; }
    void set_column_has_changed(bool changed) { column_has_changed = changed; }

    /// Null if there is none. The first sub-column of a node has the label 1.
    SubColumn* inq_subcolumn(unsigned long label) const;
    SubColumn* inq_subcolumn() const { return inq_subcolumn(1); }

    /// The user's display settings for the columns of this node type lie in a file of their own.
    /// A file that can't be read leaves the columns as they are.
    void store_column_preferences() const;
    void load_and_apply_column_preferences();

    /// The path of that file; `create` makes its folder. Empty if that fails; the user has been
    /// told.
    KIVString inq_prefs_file_for_type(bool create) const;

protected:
    void init_subcolumn(gsl::owner<SubColumn*> sub_column, const KIVString& name);

    /// Nodes with several sub-columns write their own forms of these two.
    void init_num_subcolumns(int) {}
    void update_subcol(int, SubColumn*) {}

    /// Adds behind the others. The label is what the caller expects the sub-column to get: either
    /// it has it already, or the sub-columns are added in the order of their labels.
    void add_subcolumn(unsigned long label, gsl::owner<SubColumn*> sub_column,
                       const KIVString& name);

private:
    template <class Record> void record(Record& r);
    void find_column(const XSheet& sheet);
    void tell_lost_column(const char* what) const;

    Column* column = nullptr; // owned while it lies in no sheet
    bool column_has_changed = false;
    unsigned long column_label = 0;
};
