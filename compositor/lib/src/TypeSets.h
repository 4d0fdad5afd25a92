#pragma once

#include "compositor/lib/hdr/cdata_tDArray.h"

#include <cstdint>
#include <map>
#include <memory>
#include <unordered_map>
#include <vector>

/// The sets of data types that a checker meets, each kept once and from check to check: sets are
/// compared, and what was worked out of them is found again, by address.
class TypeSets {
public:
    using Set = const cdata_tDArray*;

    Set keep(const cdata_tDArray& types);
    Set single(int type);
    Set intersect(Set a, Set b);
    Set compositable(Set types);
    Set expanded(Set types);
    Set without_wildcards(Set types);
    bool fits(Set offered, int type);

private:
    struct Pair {
        Set first;
        Set second;
        bool operator==(const Pair&) const = default;
    };
    struct HashOfPair {
        std::size_t operator()(const Pair& pair) const
        {
            return std::hash<Set>()(pair.first) * 31 + std::hash<Set>()(pair.second);
        }
    };
    template <class Change>
    Set derived(std::unordered_map<Set, Set>& known, Set from, Change change);

    std::map<std::vector<int>, std::unique_ptr<cdata_tDArray>> sets;
    std::unordered_map<int, Set> singles;
    std::unordered_map<Pair, Set, HashOfPair> intersections;
    std::unordered_map<Set, Set> compositables;
    std::unordered_map<Set, Set> expansions;
    std::unordered_map<Set, Set> concretes;
    std::unordered_map<Set, std::unordered_map<int, bool>> fitting;
};
