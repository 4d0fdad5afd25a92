#pragma once

#include "kivlib/hdr/StoredClass.h"

#include <iterator>

class KIVIterator;

/// One place of a list.
class KIVLinkOb {
public:
    explicit KIVLinkOb(KIVObject* object) : object(object) {}

    KIVObject* value() const { return object; }
    KIVLinkOb* inq_next() const { return next; }
    KIVLinkOb* inq_prev() const { return prev; }

private:
    friend class KIVLinkedList;

    KIVObject* object;
    KIVLinkOb* next = nullptr;
    KIVLinkOb* prev = nullptr;
};

/// Objects in an order, each as often as it was added. Indices run from 0.
class KIVLinkedList : public KIVObject {
    KIV_STORED(KIVLinkedList, KIVObject);

public:
    /// A list that owns deletes its objects when it goes; the usual one only refers to them.
    explicit KIVLinkedList(bool owns = false) : owns(owns) {}
    explicit KIVLinkedList(KIVIStream& stream);

    /// Copies refer to the same objects and own none; an owner that is assigned to deletes its own.
    KIVLinkedList(const KIVLinkedList& other);
    KIVLinkedList& operator=(const KIVLinkedList& other);
    ~KIVLinkedList() override;

    void storer(KIVOStream& stream) override;

    /// At the end.
    KIVLinkOb* add(KIVObject* object);
    KIVLinkOb* add_first(KIVObject* object);

    /// Behind `after`, or at the end if it is not in the list.
    KIVLinkOb* add_after(const KIVObject* after, KIVObject* object);

    /// Before what stands at `index`; an index out of range means the nearer end.
    KIVLinkOb* add_at_index(int index, KIVObject* object);

    /// A link that `remove_link` gave, which the list takes over.
    void add_link_first(gsl::owner<KIVLinkOb*> link);
    void add_link_after(KIVLinkOb* after, gsl::owner<KIVLinkOb*> link);

    /// False if it was not there.
    bool remove(const KIVObject* object);

    /// Takes out the first and gives its object; null from an empty list.
    KIVObject* remove();

    /// Takes out a link of this list for the caller to delete.
    gsl::owner<KIVLinkOb*> remove_link(KIVLinkOb* link);
    void remove_all();
    void remove_all_deleting_objects();

    /// Null if it is not there.
    KIVLinkOb* find(const KIVObject* object) const;

    /// -1 if it is not there.
    int find_index_of(const KIVObject* object) const;

    /// Null out of range.
    KIVObject* at_index(int index) { return std::as_const(*this).at_index(index); }
    KIVObject* at_index(int index) const;

    int count() const { return size; }
    bool inq_is_empty() const { return size == 0; }
    KIVLinkOb* inq_first_link() const { return first; }
    KIVLinkOb* inq_last_link() const { return last; }

    /// For loops: `for (CNode* node : list.of<CNode>())`. The object in hand may be taken out of
    /// the list meanwhile, others may not.
    template <class T> class Objects {
    public:
        class Iterator {
        public:
            explicit Iterator(KIVLinkOb* link) { step_to(link); }
            T* operator*() const { return static_cast<T*>(link->value()); }
            Iterator& operator++()
            {
                step_to(next);
                return *this;
            }
            bool operator==(const Iterator& other) const { return link == other.link; }

        private:
            void step_to(KIVLinkOb* to)
            {
                link = to;
                next = to ? to->inq_next() : nullptr;
            }
            KIVLinkOb* link;
            KIVLinkOb* next;
        };
        explicit Objects(KIVLinkOb* first) : first(first) {}
        Iterator begin() const { return Iterator(first); }
        Iterator end() const { return Iterator(nullptr); }

    private:
        KIVLinkOb* first;
    };
    template <class T> Objects<T> of() const { return Objects<T>(first); }

    /// From now on every change to the list is counted there too.
    void count_changes_in(unsigned long* counter) { changes = counter; }

private:
    void put_between(KIVLinkOb* before, KIVLinkOb* link, KIVLinkOb* behind);
    KIVLinkOb* find_link_at(int index) const;
    void count_change()
    {
        if (changes)
            ++*changes;
    }

    KIVLinkOb* first = nullptr;
    KIVLinkOb* last = nullptr;
    int size = 0;
    bool owns;
    unsigned long* changes = nullptr; // not owned; null: nobody counts
};

/// A walk over a list that only looks: `while (iterator++) use(iterator())`.
class ReadOnlyIterator {
public:
    explicit ReadOnlyIterator(const KIVLinkedList& list) : list(&list) {}

    /// Both forms move and give the object there; null at the end. The first step is to the first.
    KIVObject* operator++();
    KIVObject* operator++(int) { return ++*this; }

    /// A step back; the first step is to the last.
    KIVObject* operator--(int);

    /// The current object, or null.
    KIVObject* operator()() const { return current ? current->value() : nullptr; }
    void reset();

protected:
    KIVObject* step_to(KIVLinkOb* link);

    const KIVLinkedList* list;
    KIVLinkOb* current = nullptr;
    KIVLinkOb* resume_next = nullptr; // where to go on after the current link was taken out
    KIVLinkOb* resume_prev = nullptr;
    bool has_started = false;
};

/// A walk over a list that may take out what it meets.
class KIVIterator : public ReadOnlyIterator {
public:
    explicit KIVIterator(KIVLinkedList& list) : ReadOnlyIterator(list), changed_list(&list) {}

    /// Takes out the current link and gives its object.
    KIVObject* remove();

    /// Takes out the current link and gives it, for the caller to delete.
    gsl::owner<KIVLinkOb*> remove_this();

private:
    KIVLinkedList* changed_list;
};
