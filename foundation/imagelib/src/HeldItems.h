#pragma once

#include "kivlib/hdr/KIVString.h"

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

/// What a provider gives out by id, from 0: one item to a path. An item has a `path`, counts its
/// `holds` and its `locks`, both from what it is made with, and goes with the last of them.
template <class Item> class HeldItems {
public:
    /// The id of the path, with one hold more. A new item is made of the path and the arguments. An
    /// exception for want of memory leaves all as it was.
    template <class... Arguments>
    int hold_path(const KIVString& path, const Arguments&... arguments)
    {
        if (const auto known = ids.find(path.str()); known != ids.end()) {
            hold(known->second);
            return known->second;
        }
        auto item = std::make_unique<Item>(path, arguments...);
        const int id = static_cast<int>(items.size());
        items.emplace_back(); // an id that nobody gets, if the next line fails
        ids.emplace(path.str(), id);
        items.back() = std::move(item);
        return id;
    }

    /// Null for an id that is not given out.
    Item* find(int id) const
    {
        const bool is_known = id >= 0 && static_cast<std::size_t>(id) < items.size();
        return is_known ? items[static_cast<std::size_t>(id)].get() : nullptr;
    }

    void hold(int id)
    {
        if (Item* item = find(id))
            ++item->holds;
    }

    void let_go(int id)
    {
        Item* item = find(id);
        if (!item || item->holds == 0)
            return;
        if (--item->holds == 0)
            ids.erase(item->path.str());
        delete_if_unused(id);
    }

    /// Ends a lock, if there is one, and calls `then(item)` before the item may go.
    template <class Then> void unlock(int id, Then then)
    {
        Item* item = find(id);
        if (!item || item->locks == 0)
            return;
        --item->locks;
        then(*item);
        delete_if_unused(id);
    }

private:
    void delete_if_unused(int id)
    {
        const Item* item = find(id);
        if (item->holds == 0 && item->locks == 0)
            items[static_cast<std::size_t>(id)].reset();
    }

    std::vector<std::unique_ptr<Item>> items; // by id; null once it is given back
    std::unordered_map<std::string, int> ids; // of paths that are held
};
