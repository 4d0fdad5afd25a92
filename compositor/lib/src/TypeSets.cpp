#include "compositor/lib/src/TypeSets.h"

#include "compositor/lib/src/type_sets.h"

TypeSets::Set TypeSets::keep(const cdata_tDArray& types)
{
    std::vector<int> key;
    for (int i = 0; i < types.size(); ++i)
        key.push_back(types[i]);
    auto& kept = sets[std::move(key)];
    if (!kept)
        kept = std::make_unique<cdata_tDArray>(types);
    return kept.get();
}

TypeSets::Set TypeSets::single(int type)
{
    Set& known = singles[type];
    if (!known) {
        cdata_tDArray types(0);
        types.insert_tail(type);
        known = keep(types);
    }
    return known;
}

TypeSets::Set TypeSets::intersect(Set a, Set b)
{
    if (a == b)
        return a;
    Set& known = intersections[{a, b}];
    if (!known) {
        cdata_tDArray types(*a);
        intersect_types(types, *b);
        known = keep(types);
    }
    return known;
}

template <class Change>
TypeSets::Set TypeSets::derived(std::unordered_map<Set, Set>& known, Set from, Change change)
{
    Set& to = known[from];
    if (!to) {
        cdata_tDArray types(*from);
        change(types);
        to = keep(types);
    }
    return to;
}

TypeSets::Set TypeSets::compositable(Set types)
{
    return derived(compositables, types, keep_compositable_types);
}

TypeSets::Set TypeSets::expanded(Set types)
{
    return derived(expansions, types, expand_by_conversions);
}

TypeSets::Set TypeSets::without_wildcards(Set types)
{
    return derived(concretes, types, remove_wildcards);
}

bool TypeSets::fits(Set offered, int type)
{
    if (offered->size() == 1 && (*offered)[0] == type)
        return true;
    auto& answers = fitting[offered];
    const auto known = answers.find(type);
    if (known != answers.end())
        return known->second;
    return answers[type] = inq_fits(*offered, type);
}
