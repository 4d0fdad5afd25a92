#pragma once

#include "compositor/lib/hdr/CNode.h"
#include "compositor/lib/hdr/CNodeDescriptor.h"
#include "compositor/lib/hdr/typeid.h"
#include "kivlib/hdr/DLLInitialiser.h"

#include <span>

// The members that every node class has beyond those of a stored class, and the table by which a
// module enters its node classes. KIV_NODE(Class, Base) stands first in the class body;
// KIV_NODE_OWN_FACTORY instead where the class writes its own `new_node_s`.

// clang-format off
#define KIV_NODE_OWN_FACTORY(Class, BaseClass)                                                     \
    KIV_STORED(Class, BaseClass);                                                                  \
                                                                                                   \
public:                                                                                            \
    static int inq_type_s()                                                                        \
    {                                                                                              \
        static const int type = register_type(#Class);                                             \
        return type;                                                                               \
    }                                                                                              \
    int inq_type() const override { return inq_type_s(); }                                         \
    gsl::owner<KIVObject*> clone() const override { return new Class(*this); }                     \
                                                                                                   \
private:                                                                                           \
    static_assert(true)

#define KIV_NODE(Class, BaseClass)                                                                 \
    KIV_NODE_OWN_FACTORY(Class, BaseClass);                                                        \
                                                                                                   \
public:                                                                                            \
    static CNode* new_node_s(CNodeGraph*, bool* flag)                                              \
    {                                                                                              \
        if (flag)                                                                                  \
            *flag = false;                                                                         \
        return new Class;                                                                          \
    }                                                                                              \
                                                                                                   \
private:                                                                                           \
    static_assert(true)
// clang-format on

/// What the node classes of one table have in common.
struct NodeFamily {
    int catagory;
    int n_inputs;
    int n_outputs;
    int type; // of all channels
};

enum class Palette { SHOWN, HIDDEN };

/// One node class in a module's table.
struct NodeRow {
    const char* class_name;
    const char* base_name;
    const char* user_type_name;
    int version;
    Palette palette;
    KIVReadFunction reader;
    NewNodeFunction new_node;
    void (*set_descriptor)(ClassDescriptor*);
    const StoredType* type;
};

/// Version -1: the class has none of its own.
template <class Node>
constexpr NodeRow node_row(const char* user_type_name, int version,
                           Palette palette = Palette::SHOWN,
                           const char* base_name = Node::inq_base_name_s())
{
    return {Node::inq_class_name_s(),
            base_name,
            user_type_name,
            version,
            palette,
            Node::inq_read_constructor(),
            Node::new_node_s,
            Node::set_class_descriptor_s,
            &stored::type_of<Node>};
}

/// Registers the node classes of one module: its `init` passes its tables to `add_nodes`.
class NodeInitialiser : public DLLInitialiser {
protected:
    /// A record that a file brought in is the class's own from then on. A class that is there
    /// already stays as it is, and this is reported.
    void add_nodes(const NodeFamily& family, std::span<const NodeRow> rows);
};
