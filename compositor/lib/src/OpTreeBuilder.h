#pragma once

#include "compositor/lib/hdr/CNodeOp.h"

#include <optional>
#include <vector>

class CNodeOpArray;
class GraphExec;

/// Turns the nodes that feed a root into a tree of ops, one for each path.
class OpTreeBuilder {
public:
    static constexpr std::size_t VALUES = 384; // bytes of a node's values that are fetched

    /// The ops are appended to `ops`, which owns them; an op stands behind all that feed it.
    OpTreeBuilder(GraphExec& exec, std::vector<CNodeOp*>& ops) : exec(exec), ops(ops) {}

    /// The op of the root; null if its data type can't be told, or if the graph has a cycle.
    CNodeOp* build(int requested_type, CNode* root, int channel);

private:
    /// An op that is being built. Its inputs are made from the last to the first.
    struct Unfinished {
        std::unique_ptr<CNodeOp> op;
        std::unique_ptr<CNodeOpArraySet> inputs;
        CNode* node;
        int output_channel;
        std::optional<int> output_type; // read while the node is at hand
        int requested_type;
        CNodeOpArray* parent;
        int place;            // in `parent`
        std::size_t first_op; // where the ops that feed it begin
        int channel;          // the input in hand
        CNodeOpArray* array;  // of that input
        int array_type;
        int places;        // of the array, still to be filled
        std::size_t feeds; // of the node, still to be followed
    };

    void take_trail(const CNode* root);
    void leave_trail(const CNode* root);
    void step_on_trail(const CNode& node);
    void start(CNodeOpArray* parent, int place, int requested_type, CNode* node, int channel);
    void follow_next(Unfinished& now);
    bool open_next_input(Unfinished& now);
    bool inq_is_endless(const CNode& next);
    void step();
    bool finish(Unfinished& now);
    void drop();

    GraphExec& exec;
    std::vector<CNodeOp*>& ops;
    std::vector<Unfinished> path;
    std::size_t longest_path = 1000; // without a graph; no longer one is taken on trust
    bool is_endless = false;
    std::vector<const CNode*> trail; // the nodes in the order in which they are met
    std::size_t n_met = 0;
    unsigned long begun_at = 0; // the count of graph changes
};
