#include "compositor/lib/src/SourceNames.h"

#include "compositor/lib/src/NodeWalk.h"

namespace {
constexpr int MOST_STEPS = 200'000; // ladders of nodes have ways without number
}

CNode* SourceNames::find(CNode* from)
{
    visit(from);
    for (int step = 0; !way.empty() && (names ? step < MOST_STEPS : !first); ++step) {
        Step& last = way.back();
        if (CNode* child = last.children.empty() ? nullptr : last.children.back()) {
            last.children.pop_back();
            visit(child);
        } else {
            if (names) // else one way to a node is enough
                on_way.erase(last.node);
            way.pop_back();
        }
    }
    return first;
}

void SourceNames::visit(CNode* node)
{
    if (node->inq_n_input_channels() == 0) {
        add_source(node);
    } else if (on_way.insert(node).second) {
        way.push_back({node, {}});
        Neighbours children = Neighbours::children_of(node);
        while (CNode* child = children.next())
            way.back().children.push_back(child);
    }
}

void SourceNames::add_source(CNode* source)
{
    if (!first)
        first = source;
    const KIVString name = names ? source->inq_name() : KIVString();
    if (name.is_null())
        return;
    if (!names->is_null())
        *names += ", ";
    *names += name;
}
