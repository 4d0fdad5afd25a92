#pragma once

#include <unordered_set>
#include <vector>

class CNode;
class KIVString;

/// Names the sources that feed a node, the last input's first, and once for each way that leads to
/// them, as far as a walk of reasonable length comes. A cycle is no way to a source.
class SourceNames {
public:
    /// Appends to `names`, which may be null.
    explicit SourceNames(KIVString* names) : names(names) {}

    /// The first source that was met, or null.
    CNode* find(CNode* from);

private:
    struct Step {
        const CNode* node;
        std::vector<CNode*> children; // those still to be visited, the next one at the end
    };

    void visit(CNode* node);
    void add_source(CNode* source);

    KIVString* names;
    CNode* first = nullptr;
    std::vector<Step> way;
    std::unordered_set<const CNode*> on_way;
};
