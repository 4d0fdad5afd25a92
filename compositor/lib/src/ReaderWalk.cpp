#include "compositor/lib/src/ReaderWalk.h"

#include "compositor/lib/src/NodeWalk.h"

const std::vector<CNode*>& ReaderWalk::find(const CNode* new_root, CNode* from)
{
    if (root != new_root || number != our_count)
        forget();
    root = new_root;
    if (found.empty() || (found.back() != from && !grow_by(from)))
        walk_from(from);
    return found;
}

void ReaderWalk::note_edit(const CNode* node)
{
    if (number != our_count || has_met(node))
        forget();
}

bool ReaderWalk::has_met(const CNode* node) const
{
    return node->last_reader_walk == number;
}

/// False unless the last found node reads it, and no others but those found.
bool ReaderWalk::grow_by(CNode* from)
{
    if (from == root || has_met(from))
        return false;
    bool leads_to_last = false;
    Neighbours beyond = Neighbours::parents_of(from);
    while (const CNode* reader = beyond.next()) {
        if (!has_met(reader))
            return false;
        leads_to_last = leads_to_last || reader == found.back();
    }
    if (!leads_to_last)
        return false;
    from->last_reader_walk = number;
    found.push_back(from);
    return true;
}

void ReaderWalk::walk_from(CNode* from)
{
    number = ++our_count;
    meets_root = false;
    found.clear();
    enter(from);
    while (!way.empty()) {
        if (readers.size() == way.back().first_reader) {
            found.push_back(way.back().node);
            way.pop_back();
        } else {
            CNode* reader = readers.back();
            readers.pop_back();
            enter(reader);
        }
    }
}

void ReaderWalk::enter(CNode* node)
{
    if (has_met(node))
        return;
    node->last_reader_walk = number;
    way.push_back({node, readers.size()});
    if (node == root) {
        meets_root = true;
        return;
    }
    Neighbours beyond = Neighbours::parents_of(node);
    while (CNode* reader = beyond.next())
        readers.push_back(reader);
}
