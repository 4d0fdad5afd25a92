#pragma once

#include <cstddef>
#include <list>

/// Pixels that can be had again from their files. Together they stay below a limit, as far as they
/// are not in use; those unused for longest go first.
class PixelCache {
public:
    /// Pixels that come and go together.
    class Item {
    public:
        Item() : own_place{this}, place(own_place.begin()) {}
        Item(const Item&) = delete;
        Item& operator=(const Item&) = delete;
        virtual ~Item();

        virtual std::size_t inq_bytes() const = 0;
        virtual bool is_in_use() const { return false; }

        /// Lets the pixels go, which may be the end of the item.
        virtual void drop() = 0;

    private:
        friend class PixelCache;
        std::size_t counted_bytes = 0; // 0 if the cache doesn't know it
        std::list<Item*> own_place;    // empty while it is one of the cache's
        const std::list<Item*>::iterator place;
    };

    /// `item` has been used, or its pixels have changed. It may be dropped at once. Needs no
    /// memory.
    void note_use(Item& item);
    void forget(Item& item);

    void set_limit(std::size_t bytes);
    std::size_t inq_limit() const { return limit; }
    std::size_t inq_total() const { return total; }

private:
    void drop_excess();

    std::list<Item*> items; // not owned; the last used one first
    std::size_t total = 0;
    std::size_t limit = std::size_t{512} << 20;
};

/// That of the process.
PixelCache& inq_pixel_cache();
