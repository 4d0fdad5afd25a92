#include "compositor/affine/lib/test/PlateGraph.h"

namespace {
/// The descriptors last to the end of the process, as those of real classes do.
CNodeDescriptor* source_descriptor()
{
    static auto* const descriptor = new CNodeDescriptor("PlateNode", "CNode", nullptr, -1, nullptr,
                                                        "Plate", 0, true, 0, 1, PLATE, nullptr);
    return descriptor;
}

CNodeDescriptor* root_descriptor()
{
    static auto* const descriptor = new CNodeDescriptor("PlateRoot", "CNode", nullptr, -1, nullptr,
                                                        "Plates", 0, true, 1, 1, PLATE, nullptr);
    return descriptor;
}

void register_plates()
{
    if (!CDataDescriptor::find_desc_for(PLATE))
        new CDataDescriptor(
            "Plate", "Plate", PLATE, []() -> CData* { return new Plate; }, true, nullptr, true);
}

class PlateOp : public CNodeOp {
public:
    using CNodeOp::CNodeOp;

    /// A source of which nothing is wanted covers nothing.
    void init_data(AbortPanel*) override
    {
        auto& node = static_cast<PlateNode&>(*inq_node());
        auto& datum = static_cast<CDataRender&>(*inq_node_data());
        ++node.n_answers;
        node.asked_transform = datum.inq_node_to_view_transform();
        node.asked_box = datum.inq_image_ibbox_v();
        if (!node.asked_box.inq_is_empty())
            datum.set_immediate_data(node.cover, node.is_opaque);
    }
    void generate_data(AbortPanel*) override
    {
        const auto& datum = static_cast<const CDataRender&>(*inq_node_data());
        static_cast<PlateNode&>(*inq_node()).drawn_box = datum.inq_image_ibbox_v();
    }
};
} // namespace

PlateNode::PlateNode(const IntBBox& cover, bool is_opaque)
    : SketchNode(source_descriptor(), "Plate", nullptr), cover(cover), is_opaque(is_opaque)
{}

gsl::owner<CNodeOp*> PlateNode::new_nodeop(int)
{
    return new PlateOp(this);
}

PlateGraph::PlateGraph()
{
    register_plates();
    root = new SketchNode(root_descriptor(), "Root",
                          [](CNode* node) -> CNodeOp* { return new CNodeOp(node); });
    graph.add_node(root);
}

void PlateGraph::add_node(CNode* node, CNode* consumer)
{
    if (!node->inq_outputs())
        node->init();
    auto* types = new cdata_tDArray;
    types->insert_tail(PLATE);
    node->set_types(types);
    graph.add_node(node);

    CNodeChannel* from = node->inq_outputs()->inq_channel(0);
    CNodeChannel* to = consumer->inq_inputs()->inq_channel(0);
    auto* connection = new CNodeConnection(from, to);
    from->inq_connections_list()->add(connection);
    to->inq_connections_list()->add_first(connection); // the last connection lies at the bottom
}

GraphExec& PlateGraph::inq_exec()
{
    if (!exec)
        exec = std::make_unique<GraphExec>(PLATE, root, 0);
    return *exec;
}

const CDataRender& PlateGraph::evaluate(const Matrix44& view)
{
    auto& data = static_cast<CDataRender&>(*inq_exec().inq_root_data());
    data.set_request_data(1, true, false, 0, view, box(0, 0, 1000, 1000));
    inq_exec().setup_data();
    inq_exec().generate_data(nullptr);
    return data;
}
