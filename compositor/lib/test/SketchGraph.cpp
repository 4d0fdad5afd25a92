#include "compositor/lib/test/SketchGraph.h"

#include "compositor/lib/hdr/CNodeGenericOpDescriptor.h"
#include "compositor/lib/hdr/DataType.h"
#include "compositor/lib/test/SketchData.h"

#include <map>

namespace {
constexpr int SHAPE_CONVERSIONS[] = {PICTURE, MASK, NOTE, NO_DATA_TYPE};

/// The descriptors last to the end of the process, as those of real classes do.
CNodeDescriptor* descriptor_for(int n_inputs, int type, const std::string& family = "SketchNode")
{
    static std::map<std::string, CNodeDescriptor*> made;
    const std::string name = family + std::to_string(n_inputs) + "_" + std::to_string(type);
    CNodeDescriptor*& descriptor = made[name];
    if (!descriptor)
        descriptor = new CNodeDescriptor(made.find(name)->first.c_str(), "CNode", nullptr, -1,
                                         nullptr, "Sketch", 0, true, n_inputs, 1, type, nullptr);
    return descriptor;
}

CNodeDescriptor* generic_descriptor_for(int n_inputs, const std::vector<int>& types)
{
    std::string family = "SketchGeneric";
    for (const int type : types)
        family += "_" + std::to_string(type);
    CNodeDescriptor* descriptor = descriptor_for(n_inputs, WILDCARD_TYPE, family);
    if (descriptor->inq_generic_descriptors())
        return descriptor;
    for (const int type : types) {
        const std::string name = family + "_op_" + std::to_string(type);
        descriptor->add_generic(new CNodeGenericOpDescriptor(
            name.c_str(), "CNodeGenericOp", nullptr, -1, nullptr, "NoSketchNode", type, nullptr));
    }
    return descriptor;
}
} // namespace

void register_sketch_types()
{
    if (CDataDescriptor::find_desc_for(PICTURE))
        return;
    new CDataDescriptor("SketchPicture", "Picture", PICTURE, SketchData::new_data<PICTURE>, true,
                        nullptr, true);
    new CDataDescriptor("SketchMask", "Mask", MASK, SketchData::new_data<MASK>, false, nullptr,
                        true);
    new CDataDescriptor("SketchShape", "Shape", SHAPE, SketchData::new_data<SHAPE>, false,
                        SHAPE_CONVERSIONS, true);
    new CDataDescriptor("SketchNote", "Note", NOTE, SketchData::new_data<NOTE>, true, nullptr,
                        false);
}

std::string text_of(const cdata_tDArray* types)
{
    if (!types)
        return "none";
    std::string text;
    for (int i = 0; i < types->size(); ++i)
        text += (i > 0 ? " " : "") + std::to_string((*types)[i]);
    return text;
}

std::string SketchNode::inq_checked() const
{
    return text_of(inq_types());
}

SketchNode* SketchGraph::add(CNodeDescriptor* descriptor, const char* name)
{
    auto* node = new SketchNode(descriptor, name, new_op);
    graph.add_node(node);
    return node;
}

SketchNode* SketchGraph::add(const char* name, int n_inputs, int type)
{
    return add(descriptor_for(n_inputs, type), name);
}

SketchNode* SketchGraph::add_universal(const char* name, int n_inputs)
{
    SketchNode* node = add(name, n_inputs, WILDCARD_TYPE);
    node->is_universal = true;
    return node;
}

SketchNode* SketchGraph::add_generic(const char* name, int n_inputs, const std::vector<int>& types)
{
    SketchNode* node = add(generic_descriptor_for(n_inputs, types), name);
    node->is_generic = true;
    return node;
}

CNodeConnection* SketchGraph::connect(const SketchNode* from, const SketchNode* to, int input)
{
    auto* connection = new CNodeConnection(from->output(), to->input(input));
    from->output()->inq_connections_list()->add(connection);
    to->input(input)->inq_connections_list()->add(connection);
    return connection;
}
