#pragma once

#include <cstddef>
#include <vector>

class CNode;

/// From a node to all that it leads to, and not beyond the root. The last answer is kept, and a
/// node before it only adds itself: many graphs are built from the root upwards.
class ReaderWalk {
public:
    /// Each node once and before all that leads to it; `from` is the last.
    const std::vector<CNode*>& find(const CNode* root, CNode* from);

    /// Of what was found last.
    bool inq_meets_root() const { return meets_root; }

    /// Other nodes may read this one now.
    void note_edit(const CNode* node);
    void forget() { found.clear(); }

private:
    struct Step {
        CNode* node;
        std::size_t first_reader; // of those still to be entered, the last one first
    };

    bool has_met(const CNode* node) const;
    bool grow_by(CNode* from);
    void walk_from(CNode* from);
    void enter(CNode* node);

    /// Marks on nodes are those of the latest walk in the process.
    inline static unsigned long our_count = 0;

    unsigned long number = 0;
    const CNode* root = nullptr; // only compared
    bool meets_root = false;
    std::vector<CNode*> found;
    std::vector<CNode*> readers; // kept for their memory, as is the way
    std::vector<Step> way;
};
