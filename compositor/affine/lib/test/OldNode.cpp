#include "compositor/affine/lib/test/OldNode.h"

#include "compositor/affine/lib/hdr/CNodeCameraRotate.h"
#include "compositor/affine/lib/hdr/CNodeCameraSize.h"
#include "compositor/affine/lib/hdr/CNodeCameraTranslate.h"
#include "compositor/affine/lib/hdr/CNodeZTranslate.h"
#include "compositor/lib/hdr/NodeClass.h"
#include "tests/support/OldRecord.h"
#include "xsheet/node/test/old_node.h"

#include <gtest/gtest.h>

namespace {
constexpr unsigned long COLUMN_LABEL = 12;

/// The camera's old nodes, which another module registers.
class HiddenNodes : public NodeInitialiser {
public:
    HiddenNodes()
    {
        constexpr NodeRow ROWS[] = {node_row<CNodeCameraTranslate>("Camera Move", -1),
                                    node_row<CNodeCameraRotate>("Camera Rotate", 95),
                                    node_row<CNodeCameraSize>("Camera Size", 95)};
        add_nodes({.catagory = 10, .n_inputs = 1, .n_outputs = 1, .type = 100}, ROWS);
        static_link_setup();
    }
};

void register_hidden_nodes()
{
    static const HiddenNodes the_hidden_nodes;
}

std::string record_of(const char* class_name, int version, int n_numbers)
{
    register_hidden_nodes();
    OldRecord old(class_name, version);
    tell_old_node(old, version, COLUMN_LABEL);
    for (int i = 0; i < n_numbers; ++i)
        old << 77;
    return old.finish();
}
} // namespace

gsl::owner<CNodeAffineTransform*> new_affine_node(const std::string& class_name)
{
    register_hidden_nodes();
    if (class_name == CNodeZTranslate::inq_class_name_s())
        return new CNodeZTranslate; // which nothing registers
    auto* record =
        static_cast<CNodeDescriptor*>(ClassManager::inq_main()->find_cd_for(class_name.c_str()));
    return static_cast<CNodeAffineTransform*>(record->new_node(nullptr, nullptr));
}

bool reads_with_numbers(const char* class_name, int version, int n)
{
    CharIStream stream(record_of(class_name, version, n));
    const XSNode* node = XSNode::read_from(stream);
    if (!node || stream.inq_error_state())
        return false; // the stream deletes it
    delete node;
    return true;
}

OldNode::OldNode(const char* class_name, int n_numbers, const std::vector<SubColumn*>& sub_columns)
{
    CharIStream stream(record_of(class_name, 94, n_numbers));
    node = CNodeAffineTransform::read_from(stream);

    auto* column = new Column;
    column->set_label(COLUMN_LABEL);
    for (SubColumn* sub_column : sub_columns)
        column->add_sub_column(sub_column, nullptr);
    sheet.add_column(column, nullptr);
    graph.add_node(node);
    EXPECT_FALSE(node->load_finished_with_abort());
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
