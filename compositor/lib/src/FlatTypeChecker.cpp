#include "compositor/lib/src/FlatTypeChecker.h"

#include "compositor/lib/hdr/CNode.h"
#include "compositor/lib/hdr/CNodeDescriptor.h"
#include "compositor/lib/hdr/DAGExec.h"
#include "compositor/lib/hdr/DAGExecError.h"
#include "compositor/lib/src/type_sets.h"

void FlatTypeChecker::run()
{
    graph.gather_feeds();
    inputs.assign(static_cast<std::size_t>(graph.inq_n_inputs()), nullptr);
    outputs.assign(static_cast<std::size_t>(graph.inq_n_outputs()), nullptr);
    bool goes_on = true;
    for (std::size_t at = 0; goes_on && at < graph.inq_order().size(); ++at) {
        const FlatGraph::Node& node = graph.inq_node(graph.inq_order()[at]);
        for (int i = 0; goes_on && i < node.n_inputs; ++i)
            goes_on = check_channel(node, i);
        goes_on = goes_on && check_node(node);
    }
    graph.set_found(std::move(inputs), std::move(outputs));
}

/// Like the next ones, false if the pass has failed.
bool FlatTypeChecker::check_channel(const FlatGraph::Node& node, int i)
{
    const auto feeds = graph.inq_feeds(node.first_input + i);
    if (feeds.empty())
        return true;
    if (feeds.size() == 1) {
        input(node, i) = output(feeds.front().output);
        return true;
    }
    return composite(node, i, feeds);
}

bool FlatTypeChecker::composite(const FlatGraph::Node& node, int i, Feeds feeds)
{
    Set types = intersect(feeds, Conversions::NONE);
    if (types && !types->empty() && !node.real->inq_can_connect_multiple_inputs(i))
        types = sets.compositable(types);
    if (!types || !types->empty()) {
        input(node, i) = types;
        return true;
    }
    types = intersect(feeds, Conversions::ALL);
    if (types->empty())
        return !exec.signal_and_drop(new DAGExecTCErrorType);
    types = sets.compositable(types);
    if (types->empty())
        return !exec.signal_and_drop(new DAGExecTCErrorComposite);
    input(node, i) = types;
    return true;
}

/// What all feeds that are constrained have in common; null if none is.
FlatTypeChecker::Set FlatTypeChecker::intersect(Feeds feeds, Conversions conversions)
{
    Set common = nullptr;
    for (const FlatGraph::Connection& feed : feeds)
        if (Set types = output(feed.output))
            common = narrowed(common, converted(types, conversions));
    return common;
}

FlatTypeChecker::Set FlatTypeChecker::intersect_inputs(const FlatGraph::Node& node,
                                                       Conversions conversions)
{
    Set common = nullptr;
    for (int i = 0; i < node.n_inputs; ++i)
        if (Set types = input(node, i))
            common = narrowed(common, converted(types, conversions));
    return common;
}

FlatTypeChecker::Set FlatTypeChecker::converted(Set types, Conversions conversions)
{
    if (conversions == Conversions::NONE)
        return types;
    types = sets.expanded(types);
    return conversions == Conversions::TO_CONCRETE ? sets.without_wildcards(types) : types;
}

bool FlatTypeChecker::check_node(const FlatGraph::Node& node)
{
    if (node.real->inq_is_universal())
        return check_universal(node, false);
    if (node.real->inq_is_generic())
        return check_universal(node, true);
    return check_ordinary(node);
}

bool FlatTypeChecker::check_ordinary(const FlatGraph::Node& node)
{
    const CNodeDescriptor* descriptor = node.real->inq_desc(); // null: the node has no channels
    for (int i = 0; i < node.n_inputs; ++i)
        if (Set offered = input(node, i))
            if (!sets.fits(offered, descriptor->inq_input_type(i)))
                return !exec.signal_and_drop(new DAGExecTCErrorType);
    for (int i = 0; i < node.n_outputs; ++i)
        output(node.first_output + i) = sets.single(descriptor->inq_output_type(i));
    return true;
}

bool FlatTypeChecker::check_universal(const FlatGraph::Node& node, bool generic)
{
    const Set types = pass_on(node, generic);
    if (!types)
        return !exec.signal_and_drop(new DAGExecTCErrorType);
    for (int i = 0; i < node.n_outputs; ++i)
        output(node.first_output + i) = types;
    if (exec.inq_store_result())
        store_types(*node.real, *types);
    return true;
}

/// Null if no type fits.
FlatTypeChecker::Set FlatTypeChecker::pass_on(const FlatGraph::Node& node, bool generic)
{
    const Set own = generic ? generic_types(*node.real) : nullptr;
    Set common = intersect_inputs(node, Conversions::NONE);
    if (!common)
        return generic ? own : all_types();
    if (node.n_inputs == 1 && !generic)
        return common;
    common = narrowed(common, own);
    if (common->empty())
        common = narrowed(intersect_inputs(node, Conversions::TO_CONCRETE), own);
    return common->empty() ? nullptr : common;
}

/// A null set does not narrow the other.
FlatTypeChecker::Set FlatTypeChecker::narrowed(Set types, Set by)
{
    if (!types || !by)
        return types ? types : by;
    return sets.intersect(types, by);
}

FlatTypeChecker::Set FlatTypeChecker::all_types()
{
    if (!every_type)
        every_type = sets.keep(all_registered_types());
    return every_type;
}

FlatTypeChecker::Set FlatTypeChecker::generic_types(CNode& node)
{
    Set& known = generics[node.inq_desc()];
    if (!known)
        known = sets.keep(generic_types_of(node.inq_desc()));
    return known;
}
