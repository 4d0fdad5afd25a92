#include "compositor/lib/src/FlatTypeChecker.h"

#include "compositor/lib/hdr/CNode.h"
#include "compositor/lib/hdr/CNodeDescriptor.h"
#include "compositor/lib/src/GraphChanges.h"
#include "compositor/lib/src/type_sets.h"

#include <algorithm>

FlatTypeChecker::FlatTypeChecker(const CNodeGraph& c_graph) : graph(c_graph)
{
    states.reserve(index(graph.inq_n_nodes()));
    for (int number = 0; number < graph.inq_n_nodes(); ++number)
        take_node(number);
}

FlatTypeChecker::Kind FlatTypeChecker::kind_of(const CNode& node)
{
    if (node.inq_is_universal())
        return Kind::UNIVERSAL;
    return node.inq_is_generic() ? Kind::GENERIC : Kind::ORDINARY;
}

void FlatTypeChecker::take_node(int number)
{
    const CNode& real = *graph.inq_node(number).real;
    states.push_back({real.inq_desc(), kind_of(real)});
    inputs.resize(index(graph.inq_n_inputs()));
    outputs.resize(index(graph.inq_n_outputs()));
    wait_for_check(number);
}

void FlatTypeChecker::add_node(CNode* node)
{
    graph.add_node(node);
    take_node(graph.inq_n_nodes() - 1);
}

void FlatTypeChecker::add_connection(const CNodeChannel* real_output,
                                     const CNodeChannel* real_input)
{
    const int output = graph.find_output(real_output);
    const int input = graph.find_input(real_input);
    if (output == NONE || input == NONE)
        return;
    graph.connect(output, input, FlatGraph::Position::BY_OUTPUT);
    wait_for_check(graph.inq_node_of_input(input));
}

void FlatTypeChecker::remove_connection(const CNodeChannel* real_output,
                                        const CNodeChannel* real_input)
{
    const int output = graph.find_output(real_output);
    const int input = graph.find_input(real_input);
    if (output == NONE || input == NONE)
        return;
    if (const int gone = graph.find_connection(output, input); gone != NONE)
        graph.disconnect(gone);
    wait_for_check(graph.inq_node_of_input(input));
}

void FlatTypeChecker::wait_for_check(int number)
{
    if (std::exchange(state(number).is_waiting, true))
        return;
    ++n_waiting;
    first_waiting = std::min(first_waiting, graph.inq_place(number));
}

bool FlatTypeChecker::ask_nodes()
{
    for (int number = 0; number < graph.inq_n_nodes(); ++number) {
        const CNode& real = *graph.inq_node(number).real;
        if (real.inq_desc() != state(number).descriptor)
            return false;
        const Kind kind = kind_of(real);
        if (std::exchange(state(number).kind, kind) != kind)
            wait_for_check(number);
    }
    for (const auto& [input, answer] : takes_several) {
        const int number = graph.inq_node_of_input(input);
        const Node& node = graph.inq_node(number);
        if (node.real->inq_can_connect_multiple_inputs(input - node.first_input) != answer)
            wait_for_check(number);
    }
    return true;
}

bool FlatTypeChecker::check(Lists lists)
{
    if (!graph.inq_is_in_order()) {
        if (!graph.sort())
            return true;
        first_waiting = 0;
    }
    const bool has_passed = find_first_failure() == NONE;
    if (lists == Lists::DROPPED)
        return has_passed;
    int end_place = graph.inq_n_nodes();
    if (!has_passed) { // any order tells that it fails, only this one how far it comes
        graph.sort();
        first_waiting = 0;
        end_place = graph.inq_place(find_first_failure());
    }
    store_lists(end_place);
    return has_passed;
}

/// What was found beyond the proposal suits it, and stands there until the node that it feeds has
/// been checked again.
bool FlatTypeChecker::check_with(const CNodeChannel* real_output, const CNodeChannel* real_input,
                                 Lists lists)
{
    const int output = graph.find_output(real_output);
    const int input = graph.find_input(real_input);
    if (output == NONE || input == NONE)
        return check(lists);
    const bool was_in_order = graph.inq_is_in_order();
    const int proposed = graph.connect(output, input, FlatGraph::Position::LAST);
    wait_for_check(graph.inq_node_of_input(input));
    const bool has_passed = check(lists);
    graph.disconnect(proposed);
    wait_for_check(graph.inq_node_of_input(input));
    if (was_in_order)
        graph.return_to_order();
    return has_passed;
}

/// Goes through the nodes that wait, as far as the first that fails, which waits on.
int FlatTypeChecker::find_first_failure()
{
    for (; n_waiting > 0; ++first_waiting) {
        const int number = graph.inq_node_at(first_waiting);
        if (!state(number).is_waiting)
            continue;
        if (!check_node(number))
            return number;
        state(number).is_waiting = false;
        --n_waiting;
    }
    first_waiting = graph.inq_n_nodes();
    return NONE;
}

/// Like the next ones, false if no type fits.
bool FlatTypeChecker::check_node(int number)
{
    const Node& node = graph.inq_node(number);
    if (!check_inputs(number, node))
        return false;
    return state(number).kind == Kind::ORDINARY ? check_ordinary(number, node)
                                                : check_universal(number, node);
}

bool FlatTypeChecker::check_inputs(int number, const Node& node)
{
    for (int input = node.first_input; input < node.first_input + node.n_inputs; ++input) {
        const int feed = graph.inq_first_feed(input);
        Set types = nullptr;
        if (feed != NONE && graph.inq_connection(feed).next_feed == NONE)
            types = outputs[index(graph.inq_connection(feed).output)];
        else if (feed != NONE && !composite(number, input, types))
            return false;
        inputs[index(input)] = types;
    }
    return true;
}

bool FlatTypeChecker::composite(int number, int input, Set& types)
{
    types = intersect_feeds(input, Conversions::NONE);
    if (!types)
        return true;
    if (sets.compositable(types) != types && !inq_takes_several(number, input))
        types = sets.compositable(types);
    if (!types->empty())
        return true;
    types = sets.compositable(intersect_feeds(input, Conversions::ALL));
    return !types->empty();
}

bool FlatTypeChecker::inq_takes_several(int number, int input)
{
    const Node& node = graph.inq_node(number);
    return takes_several[input] =
               node.real->inq_can_connect_multiple_inputs(input - node.first_input);
}

/// What all feeds that are constrained have in common; null if none is.
FlatTypeChecker::Set FlatTypeChecker::intersect_feeds(int input, Conversions conversions)
{
    Set common = nullptr;
    for (int feed = graph.inq_first_feed(input); feed != NONE;
         feed = graph.inq_connection(feed).next_feed)
        if (Set types = outputs[index(graph.inq_connection(feed).output)])
            common = narrowed(common, converted(types, conversions));
    return common;
}

FlatTypeChecker::Set FlatTypeChecker::intersect_inputs(const Node& node, Conversions conversions)
{
    Set common = nullptr;
    for (int i = 0; i < node.n_inputs; ++i)
        if (Set types = inputs[index(node.first_input + i)])
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

bool FlatTypeChecker::check_ordinary(int number, const Node& node)
{
    const CNodeDescriptor* descriptor = state(number).descriptor; // null: there are no channels
    for (int i = 0; i < node.n_inputs; ++i)
        if (Set offered = inputs[index(node.first_input + i)])
            if (!sets.fits(offered, descriptor->inq_input_type(i)))
                return false;
    for (int i = 0; i < node.n_outputs; ++i)
        set_output(node.first_output + i, sets.single(descriptor->inq_output_type(i)));
    state(number).types = nullptr;
    return true;
}

bool FlatTypeChecker::check_universal(int number, const Node& node)
{
    const Set types = pass_on(number, node);
    if (!types)
        return false;
    for (int i = 0; i < node.n_outputs; ++i)
        set_output(node.first_output + i, types);
    if (std::exchange(state(number).types, types) != types)
        unlist(number);
    return true;
}

/// Null if no type fits.
FlatTypeChecker::Set FlatTypeChecker::pass_on(int number, const Node& node)
{
    const bool generic = state(number).kind == Kind::GENERIC;
    const Set own = generic ? generic_types(state(number).descriptor) : nullptr;
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

void FlatTypeChecker::set_output(int output, Set types)
{
    if (std::exchange(outputs[index(output)], types) == types)
        return;
    for (int reader = graph.inq_first_reader(output); reader != NONE;
         reader = graph.inq_connection(reader).next_reader)
        wait_for_check(graph.inq_node_of_input(graph.inq_connection(reader).input));
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

FlatTypeChecker::Set FlatTypeChecker::generic_types(const CNodeDescriptor* descriptor)
{
    Set& known = generics[descriptor];
    if (!known)
        known = sets.keep(generic_types_of(descriptor));
    return known;
}

void FlatTypeChecker::unlist(int number)
{
    if (!std::exchange(state(number).is_unlisted, true))
        unlisted.push_back(number);
}

void FlatTypeChecker::unlist_if_others_set_lists()
{
    if (seen_type_lists == GraphChanges::our_type_lists)
        return;
    for (int number = 0; number < graph.inq_n_nodes(); ++number)
        if (state(number).types)
            unlist(number);
}

/// On the nodes before a place in the order.
void FlatTypeChecker::store_lists(int end_place)
{
    unlist_if_others_set_lists();
    std::erase_if(unlisted, [&](int number) {
        if (graph.inq_place(number) >= end_place)
            return false;
        state(number).is_unlisted = false;
        if (const Set types = state(number).types)
            store_types(*graph.inq_node(number).real, *types);
        return true;
    });
    seen_type_lists = GraphChanges::our_type_lists;
}
