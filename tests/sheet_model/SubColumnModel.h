#pragma once

#include "xsheet/column/hdr/SubColumn.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <utility>
#include <vector>

/// Frames from `first` to `last`; none if `last` is less.
struct Frames {
    int first = 1;
    int last = 0;

    bool are_none() const { return last < first; }
    bool hold(int frame) const { return first <= frame && frame <= last; }
    void add(const Frames& more)
    {
        if (more.are_none())
            return;
        first = are_none() ? more.first : std::min(first, more.first);
        last = std::max(last, more.last);
    }
    void add(int frame) { add(Frames{frame, frame}); }
};

/// The rules of a sub-column of one number, as plainly as they can be told. It keeps what the user
/// set, and works out all else anew whenever it is asked.
class SubColumnModel {
public:
    /// A straight ramp, or a part of one that starts and ends gently.
    struct Easing {
        bool is_gentle = false;
        double from = 0.0, to = 1.0;

        static double height_at(double time) { return time * time * (3.0 - 2.0 * time); }

        double share_at(double time) const
        {
            const double start = height_at(from);
            return is_gentle
                       ? (height_at(std::lerp(from, to, time)) - start) / (height_at(to) - start)
                       : time;
        }

        /// This keeps the earlier part.
        Easing split(double time)
        {
            const double end = std::exchange(to, std::lerp(from, to, time));
            return {is_gentle, to, end};
        }

        bool is_like(const Easing& other) const
        {
            return is_gentle == other.is_gentle &&
                   (!is_gentle || std::abs(from - other.from) + std::abs(to - other.to) < 1e-9);
        }
    };

    struct Key {
        const KeyCell* cell;
        int frame;
        double value = 0.0;
        InterpMode mode = IM_INBETWEEN;
        int limit = -1; // of a hold
        int rate = 1;
        Easing easing = {};
    };

    /// What stands on a frame.
    struct Shown {
        CellType type = CT_EMPTY;
        const KeyCell* key = nullptr;
        double value = 0.0;

        bool is_like(const Shown& other) const
        {
            return type == other.type && key == other.key && std::abs(value - other.value) < 1e-9;
        }
    };

    using Index = std::size_t;
    static constexpr int END = 1000; // behind all frames

    InterpMode mode_of(Index i) const
    {
        return keys[i].mode == IM_INBETWEEN && !has_next(i) ? IM_HOLD : keys[i].mode;
    }

    int reach_of(Index i) const
    {
        if (mode_of(i) == IM_STOP)
            return 0;
        const bool is_limited = mode_of(i) == IM_HOLD && keys[i].limit >= 0;
        return is_limited ? std::min(keys[i].limit, natural_reach_of(i)) : natural_reach_of(i);
    }

    Shown show(int frame) const
    {
        const Index i = find_behind(frame) - 1; // wraps in front of all keys, and is no index then
        if (i >= keys.size())
            return {};
        const Key& key = keys[i];
        const int offset = frame - key.frame;
        if (offset == 0)
            return {CT_KEY, key.cell, key.value};
        if (mode_of(i) == IM_INBETWEEN) {
            const int step = offset / key.rate * key.rate;
            const double share = key.easing.share_at(step / (1.0 + reach_of(i)));
            return {CT_INBETWEEN, key.cell, std::lerp(key.value, keys[i + 1].value, share)};
        }
        return offset <= reach_of(i) ? Shown{CT_HOLD, key.cell, key.value} : Shown{};
    }

    bool is_key_at(int frame) const { return show(frame).type == CT_KEY; }

    int space_at(int frame) const
    {
        const Index i = find_behind(frame - 1);
        return (i < keys.size() ? keys[i].frame : length + 1) - frame;
    }

    void insert(const Key& key)
    {
        touched.add(key.frame);
        keys.insert(keys.begin() + std::ptrdiff_t(find_behind(key.frame)), key);
    }

    Key take(Index i)
    {
        const Key key = keys[i];
        touched.add(key.frame);
        keys.erase(keys.begin() + std::ptrdiff_t(i));
        return key;
    }

    void make(int frame, const KeyCell* cell)
    {
        const Shown present = show(frame);
        Key key{cell, frame, present.value};
        if (const Index previous = find_behind(frame) - 1; previous < keys.size()) {
            Key& cut = keys[previous];
            key.mode = cut.mode;
            if (present.type == CT_INBETWEEN)
                key.easing = cut.easing.split((frame - cut.frame) / (1.0 + reach_of(previous)));
        }
        insert(key);
    }

    /// Keys in the way go a frame towards the old place each, which is told to nobody.
    void move(Index i, int frame)
    {
        if (keys[i].frame == frame)
            return;
        touched.add({frame, frame + reach_of(i)});
        Key key = take(i);
        const int step = frame < key.frame ? 1 : -1;
        std::vector<Index> pushed;
        for (int at = frame; is_key_at(at); at += step)
            pushed.push_back(find_behind(at) - 1);
        for (const Index each : pushed) {
            untold.add(between_neighbours({keys[each].frame, keys[each].frame}));
            keys[each].frame += step;
        }
        key.frame = frame;
        insert(key);
    }

    /// What is selected and where it is to go.
    struct Selection {
        std::set<int> slots;
        int delta;
    };

    /// A slot stands for the key that is at or in front of it when its turn comes.
    void move(const Selection& moved)
    {
        std::vector<int> slots(moved.slots.begin(), moved.slots.end());
        if (moved.delta > 0)
            std::ranges::reverse(slots);
        for (const int slot : slots)
            if (const Index i = find_behind(slot) - 1; i < keys.size())
                move(i, slot + moved.delta);
    }

    /// Keys that are neighbours trade places with those that they pass.
    void move_inserting(const Selection& moved)
    {
        if (!are_neighbours(moved.slots))
            return;
        const int first = *moved.slots.begin();
        const int last = *moved.slots.rbegin();
        const int width = last - first + 1;
        std::vector<int> frames;
        for (Index i = 0; i < keys.size(); ++i) {
            int frame = keys[i].frame;
            if (moved.slots.contains(frame))
                frame += moved.delta;
            else if (frame > last && frame <= last + moved.delta)
                frame -= width;
            else if (frame < first && frame >= first + moved.delta)
                frame += width;
            if (frame != keys[i].frame)
                touched.add({frame, frame + reach_of(i)});
            frames.push_back(frame);
        }
        touched.add({first, last});
        for (Index i = 0; i < keys.size(); ++i)
            keys[i].frame = frames[i];
        std::ranges::sort(keys, {}, &Key::frame);
    }

    bool can_move(const Selection& moved, bool is_inserting) const
    {
        return std::ranges::all_of(moved.slots, [&](int slot) {
            const int to = slot + moved.delta;
            if (!is_key_at(slot))
                return true;
            if (to < 1 || to > length)
                return false;
            return is_inserting ? are_neighbours(moved.slots)
                                : !is_key_at(to) || moved.slots.contains(to);
        });
    }

    /// That a reach has lost one frame is told to nobody.
    void set_mode(Index i, InterpMode mode)
    {
        const int old_reach = reach_of(i);
        keys[i].mode = mode;
        if (reach_of(i) == old_reach - 1)
            untold.add(keys[i].frame + old_reach);
    }

    void limit(Index i, int frames)
    {
        keys[i].limit = frames == 0 || frames == natural_reach_of(i) ? -1 : frames;
        if (frames == 0)
            keys[i].mode = IM_STOP;
    }

    /// Of keys that a new length takes away nobody is told.
    void set_length(int frames)
    {
        length = frames;
        const auto gone =
            std::erase_if(keys, [frames](const Key& key) { return key.frame > frames; });
        touched = {keys.empty() ? 1 : keys.back().frame + 1, END};
        if (gone > 0)
            untold = touched;
    }

    /// The frames around some up to keys that stand outside.
    Frames between_neighbours(const Frames& frames) const
    {
        const Index before = find_behind(frames.first - 1) - 1;
        const Index behind = find_behind(frames.last);
        return {before < keys.size() ? keys[before].frame + 1 : 1,
                behind < keys.size() ? keys[behind].frame - 1 : END};
    }

    /// The first key behind a frame; the number of keys without one.
    Index find_behind(int frame) const
    {
        return Index(std::ranges::upper_bound(keys, frame, {}, &Key::frame) - keys.begin());
    }

    std::vector<Key> keys; // by frame
    int length = 0;

    /// Of the edits since these were emptied: where keys were changed, stood and came to stand with
    /// their old reach, and what the watchers need not be told.
    Frames touched, untold;

private:
    bool has_next(Index i) const { return i + 1 < keys.size(); }

    int natural_reach_of(Index i) const
    {
        if (has_next(i))
            return keys[i + 1].frame - keys[i].frame - 1;
        return mode_of(i) == IM_HOLD ? length - keys[i].frame : 0;
    }

    /// Whether each slot shows a key, and these follow each other without gaps or repeats.
    bool are_neighbours(const std::set<int>& slots) const
    {
        Index expected = find_behind(*slots.begin()) - 1;
        return std::ranges::all_of(slots, [&](int slot) {
            const Shown shown = show(slot);
            return shown.key && shown.type != CT_INBETWEEN && expected < keys.size() &&
                   shown.key == keys[expected++].cell;
        });
    }
};
