#include "compositor/lib/src/GraphUpkeep.h"

#include "compositor/lib/hdr/CNodeGraph.h"
#include "compositor/lib/src/GraphChanges.h"
#include "compositor/lib/src/NodeWalk.h"

namespace {
bool is_unconnected(const CNode& node)
{
    for (const CNodeChannelSet* set : {node.inq_inputs(), node.inq_outputs()})
        for (int i = 0; set && i < set->inq_n_channels(); ++i)
            if (!set->inq_channel(i)->inq_connections_list()->inq_is_empty())
                return false;
    return true;
}

bool has_one_connection(const CNodeChannel& channel)
{
    return channel.inq_connections_list()->count() == 1;
}

/// From an output to an input, as a checker finds connections.
bool is_regular(const CNodeConnection& connection)
{
    const CNodeChannel* output = connection.inq_output_channel();
    const CNodeChannel* input = connection.inq_input_channel();
    return output && output->inq_node() && output->inq_channel_set()->inq_is_output_channel_set() &&
           (!input || (input->inq_node() && input->inq_channel_set()->inq_is_input_channel_set()));
}
} // namespace

void GraphUpkeep::catch_up()
{
    if (seen_changes == GraphChanges::our_count)
        return;
    checker.reset();
    reader_walk.forget();
    edits.clear();
    are_flags_known = false;
    seen_changes = GraphChanges::our_count;
}

/// A node whose connections come with it, or that a list holds twice, changes more than itself.
void GraphUpkeep::add_node(CNode* node)
{
    catch_up();
    graph.inq_nodes_list()->add(node);
    if (!is_unconnected(*node) || (checker && checker->inq_knows(node)))
        return;
    if (checker)
        checker->add_node(node);
    note_edit({node});
    seen_changes = GraphChanges::our_count;
}

void GraphUpkeep::connect(CNodeConnection& connection, int output_index, int input_index)
{
    catch_up();
    CNodeChannel* output = connection.inq_output_channel();
    CNodeChannel* input = connection.inq_input_channel();
    output->add_connection(&connection, output_index);
    input->add_connection(&connection, input_index);
    if (!is_regular(connection))
        return;
    seen_changes = GraphChanges::our_count;
    if (checker)
        checker->add_connection(output, input);
    reader_walk.note_edit(output->inq_node());
    note_edit({output->inq_node(), input->inq_node(), has_one_connection(*output)});
    note_edit({input->inq_node(), nullptr, has_one_connection(*input)});
}

/// A checker knows connections by the lists of outputs.
void GraphUpkeep::leave_output(CNodeConnection& connection)
{
    catch_up();
    connection.inq_output_channel()->remove_connection(&connection);
    if (seen_changes == GraphChanges::our_count || !is_regular(connection))
        return; // it was not on the list, or is no checker's
    seen_changes = GraphChanges::our_count;
    if (checker)
        checker->remove_connection(connection.inq_output_channel(), connection.inq_input_channel());
    reader_walk.note_edit(connection.inq_output_channel()->inq_node());
    note_edit({connection.inq_output_channel()->inq_node()});
}

void GraphUpkeep::leave_input(CNodeConnection& connection)
{
    catch_up();
    connection.inq_input_channel()->remove_connection(&connection);
    if (connection.inq_output_channel() && !is_regular(connection))
        return;
    seen_changes = GraphChanges::our_count;
    note_edit({connection.inq_input_channel()->inq_node()});
}

bool GraphUpkeep::check_types(FlatTypeChecker::Lists lists, const CNodeChannel* output,
                              const CNodeChannel* input)
{
    catch_up();
    if (!checker || !checker->ask_nodes())
        checker = std::make_unique<FlatTypeChecker>(graph);
    return output && input ? checker->check_with(output, input, lists) : checker->check(lists);
}

ReaderWalk& GraphUpkeep::inq_reader_walk()
{
    catch_up();
    return reader_walk;
}

/// The flags of other graphs' nodes are not known. With too many edits all may as well be set anew.
void GraphUpkeep::note_edit(const InchoateWalk::Edit& edit)
{
    const auto most = static_cast<std::size_t>(graph.inq_nodes_list()->count());
    are_flags_known =
        are_flags_known && edit.node && edit.node->inq_graph() == &graph && edits.size() < 2 * most;
    if (are_flags_known)
        edits.push_back(edit);
}

void GraphUpkeep::update_all_inchoate_flags()
{
    catch_up();
    InchoateWalk::flag_anew(*graph.inq_nodes_list());
    edits.clear();
    are_flags_known = true;
}

void GraphUpkeep::update_inchoate_flags()
{
    catch_up();
    if (!are_flags_known) {
        update_all_inchoate_flags();
        return;
    }
    InchoateWalk::flag_after(edits, *graph.inq_nodes_list());
    edits.clear();
}
