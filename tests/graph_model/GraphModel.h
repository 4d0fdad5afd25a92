#pragma once

#include <algorithm>
#include <map>
#include <optional>
#include <string>
#include <vector>

/// The rules of a graph, its walks and its type check, as plainly as they can be told: all is
/// looked up by number and worked out anew whenever it is asked.
class GraphModel {
public:
    using Types = std::vector<int>;

    /// Data types of the tests: what can be united, and what each converts to.
    enum { INK = 931, LINE, TEXT, NOTE };
    struct TypeRow {
        int type;
        bool can_union;
        Types conversions;
    };
    static const std::vector<TypeRow>& rows()
    {
        static const std::vector<TypeRow> all{
            {INK, true, {}}, {LINE, false, {INK}}, {TEXT, false, {LINE, NOTE}}, {NOTE, true, {}}};
        return all;
    }
    static const TypeRow* find_row(int type)
    {
        const auto row = std::ranges::find(rows(), type, &TypeRow::type);
        return row == rows().end() ? nullptr : &*row;
    }
    static bool can_convert(int type, int to)
    {
        const TypeRow* row = find_row(type);
        return row && std::ranges::find(row->conversions, to) != row->conversions.end();
    }
    static bool is_wildcard(int type) { return type == 1 || type == 2; }

    enum class Kind { ORDINARY, UNIVERSAL, GENERIC };

    /// A class of nodes.
    struct Species {
        Kind kind;
        Types inputs, outputs, generics;
    };

    /// What the ops of a node do beside what all ops do.
    struct Manner {
        static constexpr int NONE = -1, ALL = 3;
        bool mixes = false; // computes requests and data of its own
        int asks = NONE;    // asks this input, or all, once more
        int turns = NONE;   // gives this input another order
        bool forgets = false;
        bool is_interactive = false;

        bool operator==(const Manner&) const = default;
    };

    struct Channel {
        std::vector<int> connections;
        bool is_selected = false;

        bool operator==(const Channel&) const = default;
    };
    struct Node {
        const Species* species = nullptr;
        Manner manner = {};
        std::vector<Channel> inputs, outputs;
        bool is_disabled = false, is_temp_disabled = false;
        std::optional<Types> types = {};

        bool operator==(const Node&) const = default;
    };
    struct End {
        int node, channel;
        auto operator<=>(const End&) const = default;
    };
    struct Connection {
        End from, to;
    };

    void add(int id, const Species& species, const Manner& manner)
    {
        order.push_back(id);
        nodes[id] = {&species, manner, std::vector<Channel>(species.inputs.size()),
                     std::vector<Channel>(species.outputs.size())};
    }

    void remove(int id)
    {
        std::erase(order, id);
        nodes.erase(id);
    }

    void connect(int id, const Connection& made, int output_index, int input_index)
    {
        connections[id] = made;
        insert(output(made.from).connections, output_index, id);
        insert(input(made.to).connections, input_index, id);
    }

    void cut(int id)
    {
        std::erase(output(connections[id].from).connections, id);
        std::erase(input(connections[id].to).connections, id);
        connections.erase(id);
    }

    Channel& output(End end) { return nodes[end.node].outputs[std::size_t(end.channel)]; }
    Channel& input(End end) { return nodes[end.node].inputs[std::size_t(end.channel)]; }

    bool feeds(int source, int reader) const
    {
        const std::vector<int> sources = children(reader);
        return source == reader ||
               std::ranges::any_of(sources, [&](int child) { return feeds(source, child); });
    }

    bool can_connect_multiple(End end)
    {
        const TypeRow* row = find_row(nodes[end.node].species->inputs[std::size_t(end.channel)]);
        return input(end).connections.empty() || (row && row->can_union);
    }

    /// Whether the types fit, as far as the first that does not; a circle hides all.
    bool check(const Types& all_types, bool is_stored, const Connection* proposed = nullptr)
    {
        Check run{*this, all_types, is_stored, {}, {}, {}, {}, {}};
        for (const int id : order)
            for (const Channel& channel : nodes[id].outputs)
                for (const int each : channel.connections)
                    run.mirrored.push_back(connections[each]);
        if (proposed)
            run.mirrored.push_back(*proposed);
        if (!std::ranges::all_of(order, [&](int id) { return run.sort(id); }))
            return true;
        return std::ranges::all_of(run.sorted, [&](int id) { return run.check(id); });
    }

    std::vector<int> children(int id) const
    {
        std::vector<int> found;
        for (const Channel& channel : nodes.at(id).inputs)
            for (const int each : channel.connections)
                found.push_back(connections.at(each).from.node);
        return found;
    }

    /// How many ways lead to the node.
    int count_ways(int id) const
    {
        int n = 1;
        for (const int child : children(id))
            n += count_ways(child);
        return n;
    }

    std::vector<int> order; // of the graph's list
    std::map<int, Node> nodes;
    std::map<int, Connection> connections;

private:
    struct Check {
        bool sort(int id)
        {
            if (colours[id] != 0)
                return colours[id] == 2;
            colours[id] = 1;
            for (std::size_t i = 0; i < graph.nodes[id].inputs.size(); ++i)
                for (const End& from : feeds_of({id, int(i)}))
                    if (!sort(from.node))
                        return false;
            sorted.push_back(id);
            colours[id] = 2;
            return true;
        }

        std::vector<End> feeds_of(End to) const
        {
            std::vector<End> found;
            for (const Connection& each : mirrored)
                if (each.to == to)
                    found.push_back(each.from);
            return found;
        }

        bool check(int id)
        {
            Node& node = graph.nodes[id];
            for (std::size_t i = 0; i < node.inputs.size(); ++i)
                if (!composite({id, int(i)}))
                    return false;
            if (node.species->kind != Kind::ORDINARY)
                return check_open(id, node);
            for (std::size_t i = 0; i < node.inputs.size(); ++i)
                if (const auto offered = received.find({id, int(i)}); offered != received.end())
                    if (!fits(offered->second, node.species->inputs[i]))
                        return false;
            for (std::size_t i = 0; i < node.outputs.size(); ++i)
                offered[{id, int(i)}] = {node.species->outputs[i]};
            return true;
        }

        bool composite(End to)
        {
            std::vector<Types> sets;
            for (const End& from : feeds_of(to))
                sets.push_back(offered[from]);
            if (sets.empty())
                return true;
            Types common = in_common(sets);
            if (sets.size() > 1 && !graph.can_connect_multiple(to))
                keep_compositable(common);
            if (sets.size() > 1 && common.empty()) {
                std::ranges::for_each(sets, expand);
                common = in_common(sets);
                keep_compositable(common);
                if (common.empty())
                    return false;
            }
            received[to] = common;
            return true;
        }

        /// A universal or a generic node.
        bool check_open(int id, Node& node)
        {
            const bool is_generic = node.species->kind == Kind::GENERIC;
            const Types& own = is_generic ? node.species->generics : all_types;
            std::vector<Types> sets;
            for (std::size_t i = 0; i < node.inputs.size(); ++i)
                if (const auto found = received.find({id, int(i)}); found != received.end())
                    sets.push_back(found->second);
            Types common = own;
            if (!sets.empty()) {
                common = in_common(sets);
                if (is_generic)
                    common = in_common({common, own});
                if (common.empty() && (is_generic || node.inputs.size() > 1)) {
                    std::ranges::for_each(sets, expand);
                    common = in_common(sets);
                    std::erase_if(common, is_wildcard);
                    if (is_generic)
                        common = in_common({common, own});
                    if (common.empty())
                        return false;
                }
            }
            for (std::size_t i = 0; i < node.outputs.size(); ++i)
                offered[{id, int(i)}] = common;
            if (is_stored)
                node.types = common;
            return true;
        }

        static bool holds(const Types& types, int type)
        {
            return std::ranges::find(types, type) != types.end();
        }
        static Types in_common(const std::vector<Types>& sets)
        {
            Types common = sets.front();
            for (const Types& each : sets)
                std::erase_if(common, [&](int type) { return !holds(each, type); });
            return common;
        }
        static void keep_compositable(Types& types)
        {
            std::erase_if(types, [](int type) {
                const TypeRow* row = find_row(type);
                return row && !row->can_union;
            });
        }
        static void expand(Types& types)
        {
            for (std::size_t i = 0; i < types.size(); ++i)
                if (const TypeRow* row = find_row(types[i]))
                    for (const int to : row->conversions)
                        types.insert(types.begin() + int(i) + 1, to);
        }
        static bool fits(const Types& offered, int type)
        {
            return holds(offered, type) || std::ranges::any_of(offered, [type](int each) {
                       return can_convert(each, type);
                   });
        }

        GraphModel& graph;
        const Types& all_types;
        bool is_stored;
        std::vector<Connection> mirrored;
        std::map<int, int> colours;
        std::vector<int> sorted;
        std::map<End, Types> offered, received; // by outputs, by inputs
    };

    static void insert(std::vector<int>& list, int index, int id)
    {
        const int place = std::clamp(index, 0, int(list.size())); // below 0: at the head
        list.insert(list.begin() + place, id);
    }
};
