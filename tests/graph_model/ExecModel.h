#pragma once

#include "tests/graph_model/GraphModel.h"
#include "tests/graph_model/Trace.h"

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
        output(*root)->request = request;
        set_up();
        generate();
        return *output(*root);
    }

    Trace trace;

private:
    enum State { ACTIVE, IS_DISABLED, QUIESCENT };
    struct Data : Facts {
        int type;
    };
    using Owned = std::unique_ptr<Data>;
    struct Op;
    struct Array {
        std::vector<Op*> ops;
        bool is_selected;
        Owned united;
        std::vector<int> order;
    };
    struct Op {
        const GraphModel::Node& node;
        int id, serial;
        Op* consumer;
        const Array* array; // of the consumer
        int channel = 0;
        std::vector<Array> inputs = {};
        Owned own = {}, converted = {};
        bool has_convertor = false;
        State state = ACTIVE;
        bool is_quiescent = false;
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
        const int serial = n_made++;
        auto op = std::make_unique<Op>(Op{node, from.node, serial, consumer, array});
        built.push_back("new " + std::to_string(serial) + " of " + std::to_string(from.node) +
                        " for " + std::to_string(requested));
        op->inputs.resize(node.inputs.size());
        op->channel = from.channel;
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
        op->own = new_data(*type);
        if (*type != requested) {
            op->converted = new_data(requested);
            const auto* row = GraphModel::find_row(*type);
            op->has_convertor =
                row && std::ranges::find(row->conversions, requested) != row->conversions.end();
        }
        ops.push_back(op.get());
        all_ops.push_back(std::move(op));
        return ops.back();
    }

    static Data* output(Op& op) { return op.converted ? op.converted.get() : op.own.get(); }
    static Data* received(const Array& array)
    {
        if (array.ops.size() == 1)
            return array.ops[0] ? output(*array.ops[0]) : nullptr;
        return array.united.get();
    }

    void say(const char* what, const Op& op)
    {
        std::vector<const Facts*> seen{op.own.get(), op.converted.get()};
        for (const Array& array : op.inputs)
            seen.push_back(received(array));
        trace.say(what, op.serial, seen);
    }

    void set_up()
    {
        if (!settings.is_interactive)
            trace.say("Initialising");
        root->is_quiescent = settings.is_restricted;
        for (Op* op : ops) {
            for (const Array& array : op->inputs)
                reset(array.united.get());
            if (op != root) {
                reset(op->own.get());
                reset(op->converted.get());
            }
        }
        const std::vector<Op*> present = ops;
        for (std::size_t i = present.size(); i-- > 0;)
            set_up(*present[i]);
    }

    static void reset(Data* data)
    {
        if (data)
            data->immediate = data->generated = 0;
    }

    void set_up(Op& op)
    {
        bool q = op.consumer ? op.consumer->is_quiescent : settings.is_restricted;
        if (op.node.outputs[std::size_t(op.channel)].is_selected ||
            (op.array && op.array->is_selected))
            q = false;
        convert_request(op);
        op.state = is_disabled(op) ? IS_DISABLED : q ? QUIESCENT : ACTIVE;
        if (op.state != IS_DISABLED)
            say("info", op);
        hand_request_on(op);
        op.is_quiescent = q;
    }

    bool is_disabled(const Op& op) const
    {
        const auto& off = settings.disabled;
        return op.node.is_disabled ||
               (op.node.is_temp_disabled && !settings.ignores_temp_disable) ||
               std::ranges::find(off, op.id) != off.end() ||
               (settings.is_interactive && !op.node.manner.is_interactive &&
                op.id != settings.interactive_node);
    }

    static void convert_request(Op& op)
    {
        if (op.has_convertor)
            op.own->request = mix(op.converted->request, 77);
    }

    void hand_request_on(Op& op)
    {
        op.state == ACTIVE ? copy_request(op) : pass_request(op, "pass");
        for (const Array& array : op.inputs)
            update_request(array);
    }

    void copy_request(Op& op)
    {
        if (!op.node.manner.mixes)
            return pass_request(op, "ask");
        say("ask", op);
        for (std::size_t i = 0; i < op.inputs.size(); ++i)
            if (Data* input = received(op.inputs[i]))
                input->request = mix(op.own->request, i);
    }

    void pass_request(Op& op, const char* what)
    {
        say(what, op);
        for (const Array& array : op.inputs)
            if (Data* input = received(array))
                input->request = op.own->request;
    }

    static void update_request(const Array& array)
    {
        for (Op* op : array.ops)
            if (array.united && op)
                output(*op)->request = array.united->request;
    }

    bool gives_up() const { return trace.lines.size() >= settings.patience; }

    void generate()
    {
        rebuild();
        const std::vector<Op*> of_immediate = ops;
        for (Op* op : of_immediate)
            if (!gives_up())
                bring(*op, IMMEDIATE);
        rebuild();
        for (Op* op : ops) {
            if (gives_up())
                return;
            if (!settings.is_interactive)
                trace.say("Rendering " + std::to_string(op->id));
            bring(*op, GENERATED);
        }
    }

    void rebuild()
    {
        if (!needs_reorder)
            return;
        needs_reorder = false;
        ops.clear();
        rebuild(root);
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
        std::uint64_t Facts::*member;
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
            (*op.converted).*phase.member = mix((*op.own).*phase.member, phase.mark);
    }

    static void unite(const Array& array, std::uint64_t Facts::*member)
    {
        std::uint64_t& sum = (*array.united).*member = 0;
        for (std::size_t k = array.ops.size(); k-- > 0;)
            if (array.ops[k])
                sum = mix(sum, output(*array.ops[k])->*member);
    }

    void pass(Op& op, const Phase& phase)
    {
        say(phase.wire, op);
        if (phase.member == &Facts::immediate)
            op.own->immediate = 0;
        if (op.inputs.empty())
            return;
        const bool has_own_types = std::ranges::all_of(op.inputs, [&](const Array& array) {
            const Data* input = received(array);
            return !input || input->type == op.own->type;
        });
        if (!has_own_types)
            return compute(op, phase);
        const std::size_t n = op.state == IS_DISABLED ? 1 : op.inputs.size();
        std::uint64_t& to = (*op.own).*phase.member;
        for (std::size_t i = 0; i < n; ++i)
            if (const Data* input = received(op.inputs[i]))
                to = n == 1 ? input->*phase.member : mix(to, input->*phase.member);
    }

    void compute(Op& op, const Phase& phase)
    {
        say(phase.compute, op);
        if (phase.member == &Facts::immediate) {
            ask_again(op);
            turn(op);
        }
        std::uint64_t& to = (*op.own).*phase.member;
        if (op.node.manner.mixes) {
            to = mix(op.own->request, std::uint64_t(op.id));
            for (const Array& array : op.inputs)
                if (const Data* input = received(array))
                    to = mix(to, input->*phase.member);
        } else if (!op.inputs.empty()) {
            if (const Data* first = received(op.inputs[0]))
                to = first->*phase.member;
            else if (phase.member == &Facts::immediate)
                to = 0;
        }
    }

    void turn(Op& op)
    {
        const GraphModel::Manner& manner = op.node.manner;
        const auto i = std::size_t(manner.turns);
        if (i < op.inputs.size() && op.inputs[i].ops.size() > 1 &&
            !(manner.forgets && trace.n_asking > 0))
            reorder(op.inputs[i], turned(op.own->request, op.inputs[i].ops.size()), manner.forgets);
    }

    void ask_again(Op& op)
    {
        const int asked = op.node.manner.asks;
        ++trace.n_asking;
        if (asked == GraphModel::Manner::ALL) {
            op.own->request |= 1;
            copy_request(op);
            for (const Array& array : op.inputs)
                ask_again(array);
        } else if (0 <= asked && asked < int(op.inputs.size())) {
            const Array& array = op.inputs[std::size_t(asked)];
            if (Data* input = received(array))
                input->request = mix(op.own->request, std::uint64_t(asked)) | 1;
            update_request(array);
            ask_again(array);
        }
        --trace.n_asking;
        say("asked", op);
    }

    void ask_again(const Array& array)
    {
        const std::vector<Op*> present = array.ops;
        for (Op* input : present)
            if (input)
                request_again(*input);
        for (Op* input : present)
            if (input)
                immediate_again(*input);
    }

    void request_again(Op& op)
    {
        convert_request(op);
        hand_request_on(op);
        for (const Array& array : op.inputs)
            for (Op* input : array.ops)
                if (input)
                    request_again(*input);
    }

    void immediate_again(Op& op)
    {
        for (const Array& array : op.inputs)
            for (Op* input : array.ops)
                if (input)
                    immediate_again(*input);
        bring(op, IMMEDIATE);
    }

    void reorder(Array& array, const std::vector<int>& new_order, bool forgets)
    {
        std::vector<Op*> old = array.ops;
        if (!array.order.empty() && !forgets) {
            if (array.order == new_order)
                return;
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
    int n_made = 0;
    bool has_foreign_types = false;
    bool needs_reorder = false;
    RunSettings settings;

public:
    std::vector<std::string> built;

private:
    Op* root;
};
