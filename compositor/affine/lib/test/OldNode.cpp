#include "compositor/affine/lib/test/OldNode.h"

#include "compositor/affine/lib/hdr/CNodeCameraRotate.h"
#include "compositor/affine/lib/hdr/CNodeCameraSize.h"
#include "compositor/affine/lib/hdr/CNodeCameraTranslate.h"
#include "compositor/affine/lib/hdr/CNodeZTranslate.h"

namespace {
constexpr int OLD_VERSION = 94;
constexpr unsigned long COLUMN_LABEL = 12;

constexpr NodeRow HIDDEN_NODES[] = {
    node_row<CNodeCameraTranslate>("Camera Move", -1, Palette::HIDDEN),
    node_row<CNodeCameraRotate>("Camera Rotate", 95, Palette::HIDDEN),
    node_row<CNodeCameraSize>("Camera Size", 95, Palette::HIDDEN),
};

class HiddenNodes : public NodeInitialiser {
public:
    HiddenNodes()
    {
        add_nodes({.catagory = 10, .n_inputs = 1, .n_outputs = 1, .type = 100}, HIDDEN_NODES);
        static_link_setup();
    }
};

/// The record of a node with neither channels nor group, with its column's label.
void tell_node(KIVOStream& old, int n_numbers)
{
    const Vector2 position;
    old << 0;
    old.insert_with_class_hdr(nullptr);
    old.insert_with_class_hdr(nullptr);
    old.insert_without_class_hdr(&position);
    old << 0.0 << COLUMN_LABEL;
    for (int i = 0; i < n_numbers; ++i)
        old << 77;
}
} // namespace

void register_hidden_nodes()
{
    static const HiddenNodes the_hidden_nodes;
}

bool reads_with_numbers(const char* class_name, int version, int n)
{
    register_hidden_nodes();
    OldRecord old(class_name, version);
    tell_node(old, n);
    CharIStream stream(old.finish());
    XSNode* node = XSNode::read_from(stream);
    const bool is_okay = node && stream.inq_error_state() == KIVStream::OKAY;
    if (is_okay)
        delete node;
    return is_okay && stream.num_chars_in_buffer() == 0;
}

OldNode::OldNode(const char* class_name, int n_numbers,
                 std::initializer_list<SubColumn*> sub_columns)
{
    register_hidden_nodes();
    OldRecord old(class_name, OLD_VERSION);
    tell_node(old, n_numbers);
    node = old.read<CNodeAffineTransform>().release();

    auto* column = new Column;
    column->set_label(COLUMN_LABEL);
    for (SubColumn* sub_column : sub_columns)
        column->add_sub_column(sub_column, nullptr);
    sheet.add_column(column, nullptr);
    graph.add_node(node);
    load_result = node->load_finished_with_abort();
}

std::string OldNode::inq_columns() const
{
    return columns_of(*node);
}

std::string columns_of(const XSNode& node)
{
    std::string text;
    for (SubColumn* sub_column : node.inq_column()->inq_sub_column_list()->of<SubColumn>()) {
        const KIVString* title = sub_column->inq_header_text();
        text += (text.empty() ? "" : ", ") + std::to_string(sub_column->inq_label()) + " " +
                (title ? title->str() : "");
    }
    return text;
}
