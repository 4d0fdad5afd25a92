#pragma once

#include "compositor/lib/hdr/CData.h"
#include "compositor/lib/hdr/CDataDescriptor.h"
#include "compositor/lib/hdr/CNodeChannel.h"
#include "compositor/lib/hdr/CNodeChannelSet.h"
#include "compositor/lib/hdr/CNodeConnection.h"
#include "compositor/lib/hdr/CNodeGraph.h"
#include "compositor/lib/hdr/CNodeOp.h"
#include "compositor/lib/hdr/NodeClass.h"

#include <functional>
#include <string>
#include <vector>

// SampleNode classes for tests: a source, a mixer of two inputs, a line from input to output, and a
// universal node. They tell in `log` what the graph calls.

namespace sample {

constexpr int PAINT = 7001; // can be united and ordered

inline std::vector<std::string>& log()
{
    static std::vector<std::string> calls;
    return calls;
}

class SampleNode : public CNode {
    KIV_STORED_ABSTRACT(SampleNode, CNode);

public:
    SampleNode() = default;
    explicit SampleNode(KIVIStream& stream) : CNode(stream) {}

    gsl::owner<CNodeOp*> new_nodeop(int) override { return nullptr; }
    KIVString inq_name() const override { return name; }

    bool load_finished_with_abort() override
    {
        tell("load");
        return aborts_load;
    }
    void after_load_finished() override { tell("after load"); }
    void node_just_added_to_graph() override { tell("added"); }
    void node_just_removed_from_graph() override { tell("removed"); }
    void input_connections_changed() override { tell("inputs"); }
    void input_connections_updated() override { tell("updated"); }
    void output_connections_changed() override { tell("outputs"); }

    KIVString name;
    bool aborts_load = false;

private:
    void tell(const char* call) const
    {
        if (!name.is_null())
            log().push_back(name.str() + " " + call);
    }
};

// clang-format off
#define SAMPLE_NODE(Class)                                                                         \
    class Class : public SampleNode {                                                              \
        KIV_NODE(Class, SampleNode);                                                               \
                                                                                                   \
    public:                                                                                        \
        Class() = default;                                                                         \
        explicit Class(KIVIStream& stream) : SampleNode(stream) {}

SAMPLE_NODE(SampleSource)
};
SAMPLE_NODE(SampleMix)
};
SAMPLE_NODE(SampleLine)
};
SAMPLE_NODE(SampleAnything)
    bool inq_is_universal() const override { return true; }
};
#undef SAMPLE_NODE
// clang-format on

inline const bool node_is_entered = stored::enter<SampleNode>(-1);

class Initialiser : public NodeInitialiser {
public:
    Initialiser()
    {
        add_nodes({30, 0, 1, PAINT}, std::vector{node_row<SampleSource>("Source", -1)});
        add_nodes({10, 2, 1, PAINT}, std::vector{node_row<SampleMix>("Mix", 95)});
        add_nodes({10, 1, 1, PAINT},
                  std::vector{node_row<SampleLine>("Line", -1, Palette::HIDDEN)});
        add_nodes({0, 1, 1, 1}, std::vector{node_row<SampleAnything>("Anything", -1)});
        static_link_setup();
        new CDataDescriptor("SamplePaint", "Paint", PAINT, nullptr, true, nullptr, true);
    }
};
inline const Initialiser initialiser;

/// A node with its channels.
template <class Class> Class* new_node(const char* name = "")
{
    CNode* node =
        static_cast<CNodeDescriptor*>(Class::inq_class_descriptor_s())->new_node(nullptr, nullptr);
    auto* sample_node = static_cast<Class*>(node);
    sample_node->name = name;
    return sample_node;
}

template <class Class> Class* add(CNodeGraph& graph, const char* name = "")
{
    auto* node = new_node<Class>(name);
    graph.add_node(node);
    return node;
}

inline CNodeChannel* out(const CNode* node)
{
    return node->inq_outputs()->inq_channel(0);
}

inline CNodeChannel* in(const CNode* node, int channel = 0)
{
    return node->inq_inputs()->inq_channel(channel);
}

/// A connection that nobody checks or hears of, behind those there already.
inline CNodeConnection* join(CNode* source, CNode* reader, int channel = 0)
{
    constexpr int BEHIND_ALL = 1 << 30;
    auto* connection = new CNodeConnection(out(source), in(reader, channel));
    out(source)->add_connection(connection, BEHIND_ALL);
    in(reader, channel)->add_connection(connection, BEHIND_ALL);
    return connection;
}

inline std::string names(const KIVLinkedList& nodes)
{
    std::string text;
    for (const SampleNode* node : nodes.of<SampleNode>())
        text += node->name.str();
    return text;
}

inline std::string names(gsl::owner<KIVLinkedList*> list)
{
    const std::unique_ptr<KIVLinkedList> taken(list);
    return names(*taken);
}

} // namespace sample
