#pragma once

#include "tests/graph_model/OpRules.h"

#include <memory>

/// The rules by which a graph is evaluated, as plainly as they can be told, with all ops doing
/// what the ops of the test do.
class ExecModel {
public:
    ExecModel(const GraphModel& graph, int requested_type, GraphModel::End root)
        : graph(graph), root(build(nullptr, nullptr, requested_type, root))
    {}

    bool can_run() const { return root && !has_foreign_types; }
    std::size_t inq_n_ops() const { return ops.size(); }

    const Facts& run(const RunSettings& with, std::uint64_t request)
    {
        settings = with;
        trace = {};
        root->output()->request = request;
        set_up();
        generate();
        return *root->output();
    }

    Trace trace;
    std::vector<std::string> built;

private:
    enum State { ACTIVE, IS_DISABLED, QUIESCENT };
    struct Data : Facts {
        int type;
    };
    using Owned = std::unique_ptr<Data>;
    struct Op;
    struct Array {
        Data* received() const
        {
            if (ops.size() != 1)
                return united.get();
            return ops[0] ? ops[0]->output() : nullptr;
        }

        std::vector<Op*> ops; // null where the type of a place can't be told
        bool is_selected;
        Owned united;
        std::vector<int> order;
    };
    struct Op {
        Data* output() const { return converted ? converted.get() : data.get(); }
        Data* received(int i) const { return inputs[std::size_t(i)].received(); }
        Data* own() const { return data.get(); }
        Data* of_converted() const { return converted.get(); }
        int inq_n_inputs() const { return int(inputs.size()); }
        int id() const { return number; }
        Trace& trace() const { return exec.trace; }

        ExecModel& exec;
        const GraphModel::Node& node;
        const GraphModel::Manner& manner;
        int number, serial;
        Op* consumer;
        const Array* array; // of the consumer
        int channel = 0;
        std::vector<Array> inputs = {};
        Owned data = {}, converted = {};
        bool has_convertor = false, is_quiescent = false;
        State state = ACTIVE;
    };

    static Owned new_data(int type)
    {
        return GraphModel::find_row(type) ? Owned(new Data{{}, type}) : nullptr;
    }

    static std::optional<int> resolved(int type, const GraphModel::Node& node, int requested)
    {
        if (!GraphModel::is_wildcard(type))
            return type;
        if (!node.types)
            return 100;
        if (node.types->size() == 1)
            return node.types->front();
        const bool is_possible = std::ranges::find(*node.types, requested) != node.types->end();
        return is_possible ? std::optional(requested) : std::nullopt;
    }

    Op* build(Op* consumer, const Array* array, int requested, GraphModel::End from)
    {
        const GraphModel::Node& node = graph.nodes.at(from.node);
        const std::size_t n_ops = ops.size();
        auto op = std::make_unique<Op>(Op{*this, node, node.manner, from.node, int(built.size()),
                                          consumer, array, from.channel});
        built.push_back(text_of_new_op(built.size(), from.node, requested));
        op->inputs.resize(node.inputs.size());
        const auto dropped = [&] {
            ops.resize(n_ops);
            return nullptr;
        };
        for (std::size_t i = node.inputs.size(); i-- > 0;) {
            const auto type = resolved(node.species->inputs[i], node, requested);
            if (!type)
                return dropped();
            Array& fed = op->inputs[i];
            const std::vector<int>& connections = node.inputs[i].connections;
            fed.is_selected = node.inputs[i].is_selected;
            fed.ops.resize(connections.size());
            if (connections.size() > 1)
                fed.united = new_data(*type);
            for (std::size_t k = connections.size(); k-- > 0;)
                fed.ops[k] =
                    build(op.get(), &fed, *type, graph.connections.at(connections[k]).from);
        }
        const auto type =
            resolved(node.species->outputs[std::size_t(from.channel)], node, requested);
        if (!type)
            return dropped();
        has_foreign_types |= !GraphModel::find_row(*type) || !GraphModel::find_row(requested);
        op->data = new_data(*type);
        if (*type != requested) {
            op->converted = new_data(requested);
            op->has_convertor = GraphModel::can_convert(*type, requested);
        }
        ops.push_back(op.get());
        all_ops.push_back(std::move(op));
        return ops.back();
    }

    template <class Do> static void for_present(const Array& array, Do action)
    {
        for (Op* input : array.ops)
            if (input)
                action(*input);
    }

    void set_up()
    {
        root->is_quiescent = settings.is_restricted;
        for (Op* op : ops) {
            for (const Array& array : op->inputs)
                reset(array.united.get());
            if (op != root) {
                reset(op->own());
                reset(op->of_converted());
            }
        }
        for (std::size_t i = ops.size(); i-- > 0;)
            set_up(*ops[i]);
    }

    static void reset(Data* data)
    {
        if (data)
            data->immediate = data->generated = 0;
    }

    void set_up(Op& op)
    {
        const bool is_selected = op.node.outputs[std::size_t(op.channel)].is_selected ||
                                 (op.array && op.array->is_selected);
        const bool is_above = op.consumer ? op.consumer->is_quiescent : settings.is_restricted;
        op.is_quiescent = is_above && !is_selected;
        convert_request(op);
        op.state = is_disabled(op) ? IS_DISABLED : op.is_quiescent ? QUIESCENT : ACTIVE;
        if (op.state != IS_DISABLED)
            say("info", op);
        hand_request_on(op);
    }

    bool is_disabled(const Op& op) const
    {
        const auto& off = settings.disabled;
        return op.node.is_disabled ||
               (op.node.is_temp_disabled && !settings.ignores_temp_disable) ||
               std::ranges::find(off, op.number) != off.end() ||
               (settings.is_interactive && !op.manner.is_interactive &&
                op.number != settings.interactive_node);
    }

    static void convert_request(Op& op)
    {
        if (op.has_convertor)
            op.data->request = mix(op.converted->request, 77);
    }

    void hand_request_on(Op& op)
    {
        say(op.state == ACTIVE ? "ask" : "pass", op);
        copy_request(op, op.state == ACTIVE && op.manner.mixes);
        for (const Array& array : op.inputs)
            update_request(array);
    }

    static void copy_request(Op& op, bool mixes)
    {
        if (mixes)
            return mix_requests(op);
        for (const Array& array : op.inputs)
            if (Data* input = array.received())
                input->request = op.data->request;
    }

    static void update_request(const Array& array)
    {
        if (array.united)
            for_present(array, [&](Op& op) { op.output()->request = array.united->request; });
    }

    bool gives_up() const { return trace.lines.size() >= settings.patience; }

    void generate()
    {
        for (const Phase* phase : {&IMMEDIATE, &GENERATED}) {
            if (std::exchange(needs_reorder, false)) {
                ops.clear();
                rebuild(root);
            }
            for (Op* op : ops)
                if (!gives_up())
                    bring(*op, *phase);
        }
    }

    void rebuild(Op* op)
    {
        for (const Array& array : op->inputs)
            for (std::size_t k = array.ops.size(); k-- > 0;)
                if (array.ops[k])
                    rebuild(array.ops[k]);
        ops.push_back(op);
    }

    /// What is told of a phase, what it brings, and the convertors' mark on that.
    struct Phase {
        const char* compute;
        const char* wire;
        FactsMember member;
        std::uint64_t mark;
    };
    static constexpr Phase IMMEDIATE{"init", "wire", &Facts::immediate, 78};
    static constexpr Phase GENERATED{"draw", "wire drawn", &Facts::generated, 79};

    void bring(Op& op, const Phase& phase)
    {
        for (const Array& array : op.inputs)
            if (array.united)
                unite(array, phase.member);
        if (op.state == ACTIVE)
            compute(op, phase);
        else
            pass(op, phase);
        if (op.has_convertor)
            (*op.converted).*phase.member = mix((*op.data).*phase.member, phase.mark);
    }

    static void unite(const Array& array, FactsMember member)
    {
        std::uint64_t& sum = (*array.united).*member = 0;
        for (std::size_t k = array.ops.size(); k-- > 0;)
            if (array.ops[k])
                sum = mix(sum, array.ops[k]->output()->*member);
    }

    void pass(Op& op, const Phase& phase)
    {
        say(phase.wire, op);
        if (phase.member == &Facts::immediate)
            op.data->immediate = 0;
        if (op.inputs.empty())
            return;
        const bool has_own_types = std::ranges::all_of(op.inputs, [&](const Array& array) {
            const Data* input = array.received();
            return !input || input->type == op.data->type;
        });
        if (!has_own_types)
            return compute(op, phase);
        const int n = op.state == IS_DISABLED ? 1 : op.inq_n_inputs();
        std::uint64_t& to = (*op.data).*phase.member;
        for (int i = 0; i < n; ++i)
            if (const Data* input = op.received(i))
                to = n == 1 ? input->*phase.member : mix(to, input->*phase.member);
    }

    void compute(Op& op, const Phase& phase)
    {
        say(phase.compute, op);
        const bool is_first = phase.member == &Facts::immediate;
        if (is_first) {
            ask_again(op, [&](int asked) { changed(op, asked); });
            if (const auto i = std::size_t(op.manner.turns); i < op.inputs.size())
                reorder(op.inputs[i], new_order(op, int(op.inputs[i].ops.size())),
                        op.manner.forgets);
        }
        if (op.manner.mixes)
            return mix_data(op, phase.member);
        if (op.inputs.empty())
            return;
        if (const Data* first = op.received(0))
            (*op.data).*phase.member = first->*phase.member;
        else if (is_first)
            op.data->immediate = 0;
    }

    void changed(Op& op, int asked)
    {
        if (asked != GraphModel::Manner::ALL) {
            update_request(op.inputs[std::size_t(asked)]);
            return bring_again(op.inputs[std::size_t(asked)]);
        }
        copy_request(op, op.manner.mixes);
        for (const Array& array : op.inputs)
            bring_again(array);
    }

    void bring_again(const Array& array)
    {
        for_present(array, [this](Op& input) { request_again(input); });
        for_present(array, [this](Op& input) { immediate_again(input); });
    }

    void request_again(Op& op)
    {
        convert_request(op);
        hand_request_on(op);
        for (const Array& array : op.inputs)
            for_present(array, [this](Op& input) { request_again(input); });
    }

    void immediate_again(Op& op)
    {
        for (const Array& array : op.inputs)
            for_present(array, [this](Op& input) { immediate_again(input); });
        bring(op, IMMEDIATE);
    }

    void reorder(Array& array, const std::vector<int>& new_order, bool forgets)
    {
        if (new_order.empty() || (!forgets && array.order == new_order))
            return;
        std::vector<Op*> old = array.ops;
        if (!array.order.empty() && !forgets) {
            for (std::size_t i = 0; i < old.size(); ++i)
                array.ops[std::size_t(array.order[i])] = old[i];
            old = array.ops;
        }
        for (std::size_t i = 0; i < old.size(); ++i)
            array.ops[i] = old[std::size_t(new_order[i])];
        array.order = new_order;
        needs_reorder = true;
    }

    const GraphModel& graph;
    std::vector<std::unique_ptr<Op>> all_ops;
    std::vector<Op*> ops; // inputs before consumers
    bool has_foreign_types = false;
    bool needs_reorder = false;
    RunSettings settings;
    Op* root;
};
