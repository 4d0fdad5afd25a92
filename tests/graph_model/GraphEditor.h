#pragma once

#include "compositor/lib/hdr/CNode.h"
#include "compositor/lib/hdr/CNodeChannel.h"
#include "compositor/lib/hdr/CNodeChannelSet.h"
#include "compositor/lib/hdr/CNodeConnection.h"
#include "compositor/lib/hdr/CNodeGraph.h"
#include "kivlib/hdr/ChangeRecorder.h"
#include "tests/graph_model/GraphModel.h"

#include <functional>
#include <memory>

/// Changes a graph as an editor does, so that each change can be undone. Nodes and connections have
/// numbers that last.
class GraphEditor {
public:
    using End = GraphModel::End;
    using Change = std::function<void()>;

    explicit GraphEditor(CNodeGraph& graph) : graph(graph) { graph.set_change_recorder(&recorder); }
    GraphEditor(const GraphEditor&) = delete;
    ~GraphEditor()
    {
        for (const auto& [id, node] : nodes)
            if (!node->inq_graph())
                delete node;
    }

    void record(const Change& redo, const Change& undo)
    {
        graph.add_change_event(new Event(redo, undo));
    }
    void change(const Change& redo, const Change& undo)
    {
        redo();
        record(redo, undo);
    }

    void add(int id, gsl::owner<CNode*> node)
    {
        nodes[id] = node;
        const int index = graph.inq_nodes_list()->count();
        change([=, this] { put(id, index); }, [=, this] { nodes[id]->remove_from_graph(); });
    }

    /// With all its connections.
    void remove(int id)
    {
        while (!nodes[id]->inq_in_connections_list().inq_is_empty())
            cut(number_of(nodes[id]->inq_in_connections_list().at_index(0)));
        while (!nodes[id]->inq_out_connections_list().inq_is_empty())
            cut(number_of(nodes[id]->inq_out_connections_list().at_index(0)));
        const int index = graph.inq_nodes_list()->find_index_of(nodes[id]);
        change([=, this] { nodes[id]->remove_from_graph(); }, [=, this] { put(id, index); });
    }

    /// False if the graph refuses it. Two indices below 0 leave the places to the graph.
    bool connect(int id, End from, int output_index, End to, int input_index)
    {
        const auto join = [=, this] {
            connections[id] = output_index < 0 && input_index < 0
                                  ? graph.make_connection(output(from), input(to), true)
                                  : graph.make_connection(output(from), output_index, input(to),
                                                          input_index, true);
        };
        join();
        if (connections[id])
            record(join, [=, this] { part(id); });
        return connections[id] != nullptr;
    }

    void cut(int id)
    {
        CNodeChannel* from = connections[id]->inq_output_channel();
        CNodeChannel* to = connections[id]->inq_input_channel();
        const int output_index = from->find_index_of_connection(connections[id]);
        const int input_index = to->find_index_of_connection(connections[id]);
        change([=, this] { part(id); },
               [=, this] {
                   connections[id] =
                       graph.make_connection(from, output_index, to, input_index, true);
               });
    }

    void end_step() { graph.end_change("Edit"); }

    /// A step may pass through what no check would accept.
    bool undo()
    {
        graph.set_type_checker_disabled();
        return recorder.undo();
    }
    bool redo()
    {
        graph.set_type_checker_disabled();
        return recorder.redo();
    }

    CNodeChannel* output(End end)
    {
        return nodes[end.node]->inq_outputs()->inq_channel(end.channel);
    }
    CNodeChannel* input(End end) { return nodes[end.node]->inq_inputs()->inq_channel(end.channel); }

    int number_of(const KIVObject* connection) const
    {
        for (const auto& [id, each] : connections)
            if (each == connection)
                return id;
        return -1;
    }

    std::map<int, CNode*> nodes; // those out of the graph are the editor's
    std::map<int, CNodeConnection*> connections;

private:
    class Event : public ChangeEvt {
    public:
        Event(Change redo, Change undo) : make(std::move(redo)), take_back(std::move(undo)) {}
        void undo() override { take_back(); }
        void redo() override { make(); }

    private:
        Change make, take_back;
    };

    void part(int id) { graph.delete_connection(std::exchange(connections[id], nullptr), true); }

    void put(int id, int index)
    {
        nodes[id]->add_to_graph(&graph);
        graph.inq_nodes_list()->remove(nodes[id]);
        graph.inq_nodes_list()->add_at_index(index, nodes[id]);
    }

    CNodeGraph& graph;
    ChangeRecorder recorder;
};
