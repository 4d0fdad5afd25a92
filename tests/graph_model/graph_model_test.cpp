#include "compositor/lib/hdr/GraphExec.h"
#include "compositor/lib/hdr/cdata_tDArray.h"
#include "kivlib/hdr/AbortPanel.h"
#include "tests/graph_model/ExecModel.h"
#include "tests/graph_model/GraphEditor.h"
#include "tests/graph_model/TracedNode.h"

#include <gtest/gtest.h>
#include <list>
#include <random>

namespace {
using Model = GraphModel;
using Manner = Model::Manner;
using End = Model::End;

const unsigned RUNS = std::getenv("MONTARAY_LONG") ? 20'000 : 200;
constexpr int STEPS = 60; // of a run
constexpr int MOST_NODES = 9;
constexpr int MOST_CONNECTIONS = 14;
constexpr std::size_t MOST_OPS = 200;

constexpr auto ORDINARY = Model::Kind::ORDINARY;
constexpr auto UNIVERSAL = Model::Kind::UNIVERSAL;
constexpr auto GENERIC = Model::Kind::GENERIC;
constexpr int INK = Model::INK, LINE = Model::LINE, TEXT = Model::TEXT, NOTE = Model::NOTE;

const std::vector<Model::Species> ALL_SPECIES{
    {ORDINARY, {}, {INK}, {}},
    {ORDINARY, {}, {TEXT, LINE}, {}},
    {ORDINARY, {}, {NOTE, TEXT, INK}, {}},
    {ORDINARY, {INK}, {INK}, {}},
    {ORDINARY, {INK, INK}, {INK}, {}},
    {ORDINARY, {INK, LINE, NOTE}, {LINE, INK}, {}},
    {ORDINARY, {NOTE, INK}, {}, {}},
    {ORDINARY, {LINE}, {TEXT}, {}},
    {ORDINARY, {1}, {2}, {}},
    {UNIVERSAL, {}, {1}, {}},
    {UNIVERSAL, {1}, {1}, {}},
    {UNIVERSAL, {1, 2}, {1, 1}, {}},
    {UNIVERSAL, {1, 1, 1}, {1}, {}},
    {GENERIC, {}, {2}, {NOTE, INK}},
    {GENERIC, {2}, {2}, {INK, LINE}},
    {GENERIC, {2, 2}, {2}, {LINE, NOTE, INK}},
    {GENERIC, {1}, {1}, {}},
};

/// The library's form of a species. As that of a real class it lasts to the end of the process.
CNodeDescriptor* descriptor_of(const Model::Species& species)
{
    static std::map<const Model::Species*, CNodeDescriptor*> made;
    CNodeDescriptor*& descriptor = made[&species];
    if (descriptor)
        return descriptor;
    static std::list<std::string> names;
    const std::string& name = names.emplace_back("TracedNode" + std::to_string(made.size()));
    descriptor = new CNodeDescriptor(name.c_str(), "CNode", nullptr, -1, nullptr, "Traced", 0, true,
                                     int(species.inputs.size()), int(species.outputs.size()),
                                     species.inputs.data(), species.outputs.data(), nullptr);
    for (const int type : species.generics)
        new CNodeGenericOpDescriptor(names.emplace_back(name + std::to_string(type)).c_str(),
                                     "CNodeGenericOp", nullptr, -1, nullptr, name, type, nullptr);
    return descriptor;
}

/// All types that are registered, with those of the test.
Model::Types register_types()
{
    static const bool is_first = [] {
        constexpr NewDataFunction NEW_DATA[] = {
            TracedData::new_data<INK>, TracedData::new_data<LINE>, TracedData::new_data<TEXT>,
            TracedData::new_data<NOTE>};
        for (const Model::TypeRow& row : Model::rows())
            new CDataDescriptor("TracedData", "Traced", row.type, NEW_DATA[row.type - INK],
                                row.can_union, nullptr, true);
        for (const Model::TypeRow& row : Model::rows())
            for (const int to : row.conversions)
                new TracedConvertorDescriptor(row.type, to);
        return true;
    }();
    Model::Types types;
    for (const auto* each : CDataDescriptor::inq_data_types_list()->of<CDataDescriptor>())
        types.push_back(each->inq_type());
    return is_first ? types : Model::Types{};
}

/// Loses patience when a number of lines has been told.
class TracingPanel : public AbortPanel {
public:
    explicit TracingPanel(std::size_t patience) : patience(patience) {}
    bool inq_abort() override { return our_trace.lines.size() >= patience; }

private:
    std::size_t patience;
};

/// A graph under an editor and the model of it, which do the same.
class EditedGraph {
public:
    explicit EditedGraph(unsigned seed) : random(seed), all_types(register_types()) {}

    /// What went wrong; empty if nothing did.
    std::string step()
    {
        run_any_edit();
        editor.end_step();
        compare();
        return wrong;
    }

    std::string undo_all()
    {
        while (!done.empty() && wrong.empty()) {
            travel(true);
            compare();
        }
        return wrong;
    }

private:
    int below(std::size_t end) { return int(random() % end); }
    bool is_lucky(std::size_t one_of) { return below(one_of) == 0; }
    void expect(bool is_so, const std::string& text) { wrong += is_so ? "" : text + ". "; }
    int any_node() { return model.order[std::size_t(below(model.order.size()))]; }

    void run_any_edit()
    {
        if (model.order.size() < 5 || is_lucky(8))
            return add();
        switch (below(16)) {
        case 0:
            return cut();
        case 1:
            return is_lucky(3) ? remove() : connect();
        case 2:
            return disable();
        case 3:
            return select_channel();
        case 4:
            return travel(is_lucky(2));
        case 6:
        case 7:
        case 8:
            return evaluate();
        default:
            return connect();
        }
    }

    void start_edit()
    {
        done.push_back(model);
        undone.clear();
    }

    void add()
    {
        if (model.order.size() >= MOST_NODES)
            return;
        const Model::Species& species = ALL_SPECIES[std::size_t(below(ALL_SPECIES.size()))];
        const Manner manner{is_lucky(2), is_lucky(4) ? below(4) : Manner::NONE,
                            is_lucky(2) ? below(3) : Manner::NONE, is_lucky(4), is_lucky(3)};
        const int id = ++last_id;
        start_edit();
        model.add(id, species, manner);
        editor.add(id, new TracedNode(id, species, descriptor_of(species), manner));
    }

    void remove()
    {
        const int id = any_node();
        start_edit();
        const auto cut_all = [&](auto& channels) {
            for (auto& channel : channels)
                while (!channel.connections.empty()) {
                    model.cut(channel.connections.front());
                    model.check(all_types, true);
                }
        };
        cut_all(model.nodes[id].inputs);
        cut_all(model.nodes[id].outputs);
        types[id] = model.nodes[id].types;
        model.remove(id);
        editor.remove(id);
    }

    void disable()
    {
        const int id = any_node();
        const bool is_off = is_lucky(2), is_for_now = is_lucky(2);
        start_edit();
        Model::Node& node = model.nodes[id];
        bool& flag = is_for_now ? node.is_temp_disabled : node.is_disabled;
        const auto set = [=, this](bool is) {
            is_for_now ? editor.nodes[id]->set_is_temp_disabled(is)
                       : editor.nodes[id]->set_is_disabled(is);
        };
        const bool was_off = std::exchange(flag, is_off);
        editor.change([=] { set(is_off); }, [=] { set(was_off); });
    }

    void select_channel()
    {
        const bool is_input = is_lucky(2);
        const std::optional<End> end = any_end(is_input);
        if (!end)
            return;
        start_edit();
        Model::Channel& channel = is_input ? model.input(*end) : model.output(*end);
        channel.is_selected = !channel.is_selected;
        const auto toggle = [=, this] {
            CNodeChannel* real = is_input ? editor.input(*end) : editor.output(*end);
            real->set_is_selected(!real->inq_is_selected());
        };
        editor.change(toggle, toggle);
    }

    std::optional<End> any_end(bool is_input)
    {
        const int id = any_node();
        const Model::Node& node = model.nodes[id];
        const std::size_t n = is_input ? node.inputs.size() : node.outputs.size();
        return n > 0 ? std::optional(End{id, below(n)}) : std::nullopt;
    }

    void connect()
    {
        std::optional<End> from, to;
        for (int tries = 0; tries < 5 && !(from && to && fits({*from, *to})); ++tries) {
            from = any_end(false);
            to = any_end(true);
        }
        if (!from || !to || model.connections.size() >= MOST_CONNECTIONS)
            return;
        compare_answers({*from, *to});
        if (model.feeds(to->node, from->node) || is_lucky(4))
            return;
        const int id = ++last_id;
        const bool is_checked = !is_lucky(60);
        const int output_index = below(5) - 1;
        const int input_index = is_lucky(3) ? -1 : below(5) - 1;
        if (!is_checked)
            graph.set_type_checker_disabled();
        const Model::Connection made{*from, *to};
        const bool fits = !is_checked || model.check(all_types, true, &made);
        if (fits) {
            start_edit();
            model.connect(id, made, output_index, input_index);
        }
        expect(editor.connect(id, *from, output_index, *to, input_index) == fits,
               "The connection was " + std::string(fits ? "refused" : "made"));
        if (!is_checked)
            enable_checker();
    }

    bool fits(const Model::Connection& proposed)
    {
        return !model.feeds(proposed.to.node, proposed.from.node) &&
               model.check(all_types, false, &proposed);
    }

    /// What an editor asks before it connects.
    void compare_answers(const Model::Connection& proposed)
    {
        CNodeChannel* output = editor.output(proposed.from);
        CNodeChannel* input = editor.input(proposed.to);
        expect(graph.inq_can_connect_acyclic(output, input) !=
                   model.feeds(proposed.to.node, proposed.from.node),
               "inq_can_connect_acyclic");
        expect(graph.inq_can_connect_data_types(output, input) ==
                   model.check(all_types, false, &proposed),
               "inq_can_connect_data_types");
        expect(input->inq_node()->inq_can_connect_multiple_inputs(proposed.to.channel) ==
                   model.can_connect_multiple(proposed.to),
               "inq_can_connect_multiple_inputs");
    }

    void cut()
    {
        if (model.connections.empty())
            return;
        const int id = std::next(model.connections.begin(), below(model.connections.size()))->first;
        start_edit();
        model.cut(id);
        model.check(all_types, true);
        editor.cut(id);
    }

    /// The lists that checks leave on nodes are no part of an edit.
    void travel(bool is_back)
    {
        std::vector<Model>& from = is_back ? done : undone;
        expect((is_back ? editor.undo() : editor.redo()) != from.empty(), "undo or redo");
        for (const auto& [id, node] : model.nodes)
            types[id] = node.types;
        if (!from.empty()) {
            (is_back ? undone : done).push_back(std::exchange(model, from.back()));
            from.pop_back();
        }
        for (auto& [id, node] : model.nodes)
            node.types = types[id];
        enable_checker();
    }

    void enable_checker()
    {
        const bool fits = model.check(all_types, true);
        expect(graph.set_type_checker_enabled() == fits, "set_type_checker_enabled");
    }

    void evaluate()
    {
        const auto root = any_root();
        if (!root)
            return;
        graph.set_root_node(editor.nodes[root->node]);
        enable_checker();
        const int requested = Model::rows()[std::size_t(below(4))].type;
        ExecModel expected(model, requested, *root);
        if (!expected.can_run() || expected.inq_n_ops() > MOST_OPS)
            return;
        our_n_ops = 0;
        our_trace = {};
        GraphExec exec(requested, editor.nodes[root->node], root->channel);
        compare_lines(expected.built);
        for (int frame = 0; frame < 3 && wrong.empty(); ++frame)
            run(exec, expected);
    }

    /// Rather one that much leads to.
    std::optional<End> any_root()
    {
        std::optional<End> root = any_end(false);
        for (int i = 0; i < 3; ++i)
            if (const auto other = any_end(false))
                if (!root || model.count_ways(other->node) > model.count_ways(root->node))
                    root = other;
        return root;
    }

    void run(GraphExec& exec, ExecModel& expected)
    {
        RunSettings settings{is_lucky(3), is_lucky(3), !is_lucky(3),
                             any_node(),  {},          is_lucky(4) ? random() % 100 : 100'000};
        std::vector<unsigned> labels;
        for (int n = is_lucky(3) ? below(3) : 0; n > 0; --n) {
            settings.disabled.push_back(any_node());
            labels.push_back(editor.nodes[settings.disabled.back()]->inq_label());
        }
        const std::uint64_t request = 2 * (random() % 1000);
        exec.set_is_restricted(settings.is_restricted);
        exec.set_is_interactive(settings.is_interactive);
        exec.set_ignore_temp_disable(settings.ignores_temp_disable);
        exec.set_interactive_node(int(editor.nodes[settings.interactive_node]->inq_label()));
        exec.set_disabled_nodes(labels.data(), int(labels.size()));

        our_trace = {};
        Facts& root = *TracedData::facts_of(exec.inq_root_data());
        root.request = request;
        TracingPanel panel(settings.patience);
        exec.setup_data();
        exec.generate_data(&panel);

        const Facts& wanted = expected.run(settings, request);
        compare_lines(expected.trace.lines);
        expect(root.immediate == wanted.immediate && root.generated == wanted.generated,
               "The root has other data");
    }

    void compare_lines(const std::vector<std::string>& expected)
    {
        const auto& told = our_trace.lines;
        const auto [there, here] = std::ranges::mismatch(told, expected);
        const auto line = [](auto at, const auto& lines) {
            return at == lines.end() ? "none" : *at;
        };
        expect(there == told.end() && here == expected.end(),
               "Line " + std::to_string(there - told.begin()) + " is '" + line(there, told) +
                   "' and not '" + line(here, expected) + "'");
    }

    void compare()
    {
        const CNode* root = graph.inq_root_node();
        std::vector<int> order;
        for (auto* node : graph.inq_nodes_list()->of<CNode>()) {
            const int id = number_of(*node);
            order.push_back(id);
            const Model::Node& wanted = model.nodes[id];
            expect(read(*node, wanted) == wanted, "Node " + std::to_string(id) + " is otherwise");
            if (root && root->inq_graph())
                expect(graph.is_connected_to_root(node) == model.feeds(id, number_of(*root)),
                       "is_connected_to_root " + std::to_string(id));
        }
        expect(order == model.order, "The nodes are others or in another order");
    }

    static int number_of(const CNode& node) { return std::stoi(node.inq_name().str()); }

    /// A node of the graph as the model would have it.
    Model::Node read(CNode& node, const Model::Node& wanted) const
    {
        Model::Node found;
        found.species = wanted.species;
        found.manner = wanted.manner;
        for (int i = 0; i < node.inq_n_input_channels(); ++i)
            found.inputs.push_back(read(*node.inq_inputs()->inq_channel(i)));
        for (int i = 0; i < node.inq_n_output_channels(); ++i)
            found.outputs.push_back(read(*node.inq_outputs()->inq_channel(i)));
        found.is_disabled = node.inq_is_disabled();
        found.is_temp_disabled = node.inq_is_temp_disabled();
        if (const cdata_tDArray* types = node.inq_types())
            found.types.emplace(types->inq_data_ptr(0), types->inq_data_ptr(0) + types->size());
        return found;
    }

    Model::Channel read(const CNodeChannel& channel) const
    {
        Model::Channel found{{}, channel.inq_is_selected()};
        for (const auto* each : channel.inq_connections_list()->of<CNodeConnection>())
            found.connections.push_back(editor.number_of(each));
        return found;
    }

    std::mt19937 random;
    const Model::Types all_types;
    CNodeGraph graph{nullptr};
    GraphEditor editor{graph};
    Model model;
    std::vector<Model> done, undone; // as it was before each step, and behind those undone
    std::map<int, std::optional<Model::Types>> types;
    std::string wrong;
    int last_id = 0;
};
} // namespace

TEST(GraphModel, agrees_with_a_graph_after_any_edit_and_in_any_evaluation)
{
    for (unsigned seed = 0; seed < RUNS; ++seed) {
        EditedGraph edited(seed);
        for (int step = 0; step < STEPS; ++step)
            ASSERT_EQ(edited.step(), "") << "seed " << seed << ", step " << step;
        ASSERT_EQ(edited.undo_all(), "") << "seed " << seed;
    }
}
