#include "xsheet/node/hdr/XSNode.h"

#include "compositor/lib/hdr/CNodeCatagory.h"
#include "compositor/lib/hdr/CNodeDescriptor.h"
#include "compositor/lib/hdr/CNodeGraph.h"
#include "kivlib/hdr/Record.h"
#include "xsheet/column/hdr/XSheet.h"
#include "xsheet/store_control/hdr/LoadFindings.h"

KIV_STORED_CLASS(XSNode, 145);

namespace {
constexpr FormatVersions HAS_RESERVED_NUMBER = since(111);
constexpr FormatVersions HAS_COLUMN_HAS_CHANGED = since(145);

gsl::owner<Column*> new_column()
{
    auto column = std::make_unique<Column>();
    column->init_after_construction();
    return column.release();
}

gsl::owner<Column*> copy_of(const Column* column)
{
    return column ? static_cast<Column*>(column->duplicate()) : nullptr;
}
} // namespace

XSNode::XSNode() : XSNode(new_column()) {}

XSNode::XSNode(gsl::owner<Column*> column)
{
    set_column(column);
}

XSNode::XSNode(const XSNode& other) : CNode(other), column_has_changed(other.column_has_changed)
{
    set_column(copy_of(other.column));
}

XSNode::~XSNode()
{
    if (column && !column->inq_column())
        delete column;
    else if (column)
        column->set_node(nullptr);
}

template <class Record> void XSNode::record(Record& r)
{
    int reserved = 0;
    r.value(column_label);
    r.value(reserved, HAS_RESERVED_NUMBER);
    r.value(column_has_changed, HAS_COLUMN_HAS_CHANGED);
}

KIV_STORED_RECORD(XSNode);

void XSNode::set_column(Column* new_column)
{
    column = new_column;
    set_values(column);
    if (column)
        column->set_node(this);
}

SubColumn* XSNode::inq_subcolumn(unsigned long label) const
{
    return column ? column->find_sub_column(label) : nullptr;
}

void XSNode::init_subcolumn(gsl::owner<SubColumn*> sub_column, const KIVString& name)
{
    add_subcolumn(1, sub_column, name);
}

void XSNode::add_subcolumn(unsigned long, gsl::owner<SubColumn*> sub_column, const KIVString& name)
{
    sub_column->init_after_construction();
    column->add_sub_column(sub_column, nullptr);
    sub_column->set_header_text(name);
}

void XSNode::init()
{
    CNode::init();
    const CNodeDescriptor* descriptor = inq_desc();
    if (!column || !descriptor)
        return;
    const KIVString* text = column->inq_header_text();
    if (!text || text->is_null())
        column->set_header_text(descriptor->inq_user_type_name());
    column->set_colour_type(CNodeCatagory::find_colour_type(descriptor->inq_catagory_type()));
}

void XSNode::add_to_graph(CNodeGraph* graph)
{
    if (column && graph->inq_xsheet())
        graph->inq_xsheet()->add_column(column, nullptr);
    CNode::add_to_graph(graph);
}

void XSNode::remove_from_graph()
{
    if (XSheet* sheet = column ? column->inq_xsheet() : nullptr)
        sheet->remove_column(column);
    CNode::remove_from_graph();
}

void XSNode::node_just_added_to_graph()
{
    if (column)
        column_label = column->inq_label();
}

void XSNode::node_just_removed_from_graph()
{
    column_label = 0;
}

bool XSNode::load_finished_with_abort()
{
    const XSheet* sheet = inq_graph() ? inq_graph()->inq_xsheet() : nullptr;
    if (!column && sheet)
        find_column(*sheet);
    return false;
}

// A damaged file may name one column for two nodes: the first has it.
void XSNode::find_column(const XSheet& sheet)
{
    SubColumn* found = sheet.find_sub_column(column_label);
    if (!found || !found->is_column())
        tell_lost_column("The sheet has no column");
    else if (static_cast<Column*>(found)->inq_node())
        tell_lost_column("Another node has the column");
    else
        set_column(static_cast<Column*>(found));
}

void XSNode::tell_lost_column(const char* what) const
{
    if (column_label != 0)
        LoadFindings::add(KIVString(what) + " " + std::to_string(column_label) + " of the node " +
                          inq_displayed_type_name());
}

KIVString XSNode::inq_name() const
{
    const KIVString* text = column ? column->inq_header_text() : nullptr;
    return text ? *text : KIVString();
}

KIVString XSNode::inq_summary() const
{
    if (!column || column->inq_sub_column_list()->count() != 1)
        return CNode::inq_summary();
    return static_cast<SubColumn*>(column->inq_sub_column_list()->at_index(0))->inq_summary();
}
