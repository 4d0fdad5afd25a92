#pragma once

#include "compositor/lib/src/FlatTypeChecker.h"
#include "compositor/lib/src/InchoateWalk.h"
#include "compositor/lib/src/ReaderWalk.h"

#include <memory>
#include <vector>

class CNode;
class CNodeConnection;
class CNodeGraph;

/// What a graph keeps up to date from edit to edit: the type check, the inchoate flags, and what a
/// node leads to. The graph makes its edits here; what changes in any other way is noticed by
/// `GraphChanges`, and all is worked out anew.
class GraphUpkeep {
public:
    explicit GraphUpkeep(CNodeGraph& graph) : graph(graph) {}

    void add_node(CNode* node);

    /// Puts the connection on the lists of both its channels.
    void connect(CNodeConnection& connection, int output_index, int input_index);

    /// Takes it from one of them, which it has.
    void leave_output(CNodeConnection& connection);
    void leave_input(CNodeConnection& connection);

    /// Whether the data types fit, with one more connection if two channels are given.
    bool check_types(FlatTypeChecker::Lists lists, const CNodeChannel* output,
                     const CNodeChannel* input);
    void drop_checker() { checker.reset(); }

    ReaderWalk& inq_reader_walk();

    void update_all_inchoate_flags();

    /// The same where every node was told of that changed since.
    void update_inchoate_flags();

private:
    void catch_up();
    void note_edit(const InchoateWalk::Edit& edit);

    CNodeGraph& graph;
    std::unique_ptr<FlatTypeChecker> checker; // made when there is none to keep
    ReaderWalk reader_walk;
    unsigned long seen_changes = 0;
    bool are_flags_known = false;
    std::vector<InchoateWalk::Edit> edits; // since the flags were known
};
