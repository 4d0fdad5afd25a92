#pragma once

#include "tests/graph_model/GraphModel.h"

#include <cstdint>

/// The request, the facts and the finished data that flow, each as a number that tells where it
/// comes from.
struct Facts {
    std::uint64_t request = 0, immediate = 0, generated = 0;
};
using FactsMember = std::uint64_t Facts::*;

/// What the ops did, line by line. While an op asks its inputs once more nothing is written: how
/// much of them is worked out again is open, what comes of it is not.
struct Trace {
    std::vector<std::string> lines;
    int n_asking = 0;
};

/// How an evaluation is run. Nodes are told by number.
struct RunSettings {
    bool is_restricted = false, is_interactive = false, ignores_temp_disable = true;
    int interactive_node = -1;
    std::vector<int> disabled;
    std::size_t patience; // lines until the user gives up
};

/// A number for two in their order; even, so that the last bit can mean "once more".
constexpr std::uint64_t mix(std::uint64_t a, std::uint64_t b)
{
    a = (a ^ (b + 0x9E3779B97F4A7C15U)) * 0xBF58476D1CE4E5B9U;
    return (a ^ (a >> 29)) & ~std::uint64_t{1};
}

inline std::string text_of_new_op(std::size_t serial, int node, int requested)
{
    return "new " + std::to_string(serial) + " of " + std::to_string(node) + " for " +
           std::to_string(requested);
}

// What an op of the tests does, be it one of the library or of the model. Both know `trace()`, the
// number of their node, their manner, and the facts around them.

/// Tells a step with all that the op sees then.
template <class Op> void say(const char* what, const Op& op)
{
    if (op.trace().n_asking > 0)
        return;
    std::uint64_t sum = 0;
    const auto add = [&sum](const Facts* each) {
        sum = each ? mix(mix(mix(sum, each->request), each->immediate), each->generated)
                   : mix(sum, 1);
    };
    add(op.own());
    add(op.of_converted());
    for (int i = 0; i < op.inq_n_inputs(); ++i)
        add(op.received(i));
    op.trace().lines.push_back(std::string(what) + " " + std::to_string(op.serial) + " " +
                               std::to_string(sum));
}

template <class Op> void mix_requests(const Op& op)
{
    for (int i = 0; i < op.inq_n_inputs(); ++i)
        if (Facts* input = op.received(i))
            input->request = mix(op.own()->request, std::uint64_t(i));
}

template <class Op> void mix_data(const Op& op, FactsMember member)
{
    std::uint64_t sum = mix(op.own()->request, std::uint64_t(op.id()));
    for (int i = 0; i < op.inq_n_inputs(); ++i)
        if (const Facts* input = op.received(i))
            sum = mix(sum, input->*member);
    op.own()->*member = sum;
}

/// `changed` has one input or, told the number of all, every input brought up to date.
template <class Op, class Changed> void ask_again(const Op& op, Changed changed)
{
    const int asked = op.manner.asks;
    ++op.trace().n_asking;
    if (asked == GraphModel::Manner::ALL) {
        op.own()->request |= 1;
        changed(asked);
    } else if (0 <= asked && asked < op.inq_n_inputs()) {
        if (Facts* input = op.received(asked))
            input->request = mix(op.own()->request, std::uint64_t(asked)) | 1;
        changed(asked);
    }
    --op.trace().n_asking;
    say("asked", op);
}

/// Where the inputs go on a channel that gets another order: all are shifted on. Empty for none.
template <class Op> std::vector<int> new_order(const Op& op, int n)
{
    std::vector<int> order;
    if (n > 1 && !(op.manner.forgets && op.trace().n_asking > 0))
        for (int i = 0; i < n; ++i)
            order.push_back(int((std::size_t(i) + 1 + op.own()->request / 2) % std::size_t(n)));
    return order;
}
