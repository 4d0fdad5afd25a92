#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// The request, the facts and the finished data that flow, each as a number that tells where it
/// comes from.
struct Facts {
    std::uint64_t request = 0, immediate = 0, generated = 0;
};

/// What the ops did, line by line. While an op asks its inputs once more nothing is written: how
/// much of them is worked out again is open, what comes of it is not.
struct Trace {
    void say(const std::string& line)
    {
        if (n_asking == 0)
            lines.push_back(line);
    }

    /// With all that the op sees then: its own data, its converted data, and those of its inputs.
    void say(const char* what, int op, const std::vector<const Facts*>& seen);

    std::vector<std::string> lines;
    int n_asking = 0;
};

/// A number for two in their order; even, so that the last bit can mean "once more".
constexpr std::uint64_t mix(std::uint64_t a, std::uint64_t b)
{
    a = (a ^ (b + 0x9E3779B97F4A7C15U)) * 0xBF58476D1CE4E5B9U;
    return (a ^ (a >> 29)) & ~std::uint64_t{1};
}

inline void Trace::say(const char* what, int op, const std::vector<const Facts*>& seen)
{
    std::uint64_t sum = 0;
    for (const Facts* each : seen)
        sum = each ? mix(mix(mix(sum, each->request), each->immediate), each->generated)
                   : mix(sum, 1);
    say(std::string(what) + " " + std::to_string(op) + " " + std::to_string(sum));
}

/// Where the inputs of an op go that gives them another order: all are shifted on.
inline std::vector<int> turned(std::uint64_t request, std::size_t n)
{
    std::vector<int> order;
    for (std::size_t i = 0; i < n; ++i)
        order.push_back(int((i + 1 + request / 2) % n));
    return order;
}

/// How an evaluation is run. Nodes are told by number.
struct RunSettings {
    bool is_restricted = false, is_interactive = false, ignores_temp_disable = true;
    int interactive_node = -1;
    std::vector<int> disabled;
    std::size_t patience; // lines until the user gives up
};
