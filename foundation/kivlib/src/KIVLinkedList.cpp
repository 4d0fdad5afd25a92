#include "kivlib/hdr/KIVLinkedList.h"

#include "kivlib/hdr/KIVOStream.h"

KIV_STORED_CLASS(KIVLinkedList, -1);

KIVLinkedList::KIVLinkedList(KIVIStream& stream) : KIVObject(stream), owns(false)
{
    for (int left = stream.read_count(sizeof(short)); left > 0; --left)
        if (KIVObject* object = stream.read_object(nullptr))
            add(object);
}

void KIVLinkedList::storer(KIVOStream& stream)
{
    KIVObject::storer(stream);
    stream << size;
    for (KIVObject* object : of<KIVObject>())
        stream.insert_with_class_hdr(object);
}

KIVLinkedList::KIVLinkedList(const KIVLinkedList& other) : KIVObject(other), owns(false)
{
    for (KIVObject* object : other.of<KIVObject>())
        add(object);
}

KIVLinkedList& KIVLinkedList::operator=(const KIVLinkedList& other)
{
    if (this == &other)
        return *this;
    if (owns)
        remove_all_deleting_objects();
    remove_all();
    owns = false;
    for (KIVObject* object : other.of<KIVObject>())
        add(object);
    return *this;
}

KIVLinkedList::~KIVLinkedList()
{
    if (owns)
        remove_all_deleting_objects();
    remove_all();
}

void KIVLinkedList::put_between(KIVLinkOb* before, KIVLinkOb* link, KIVLinkOb* behind)
{
    link->prev = before;
    link->next = behind;
    (before ? before->next : first) = link;
    (behind ? behind->prev : last) = link;
    ++size;
    count_change();
}

KIVLinkOb* KIVLinkedList::add(KIVObject* object)
{
    put_between(last, new KIVLinkOb(object), nullptr);
    return last;
}

KIVLinkOb* KIVLinkedList::add_first(KIVObject* object)
{
    put_between(nullptr, new KIVLinkOb(object), first);
    return first;
}

KIVLinkOb* KIVLinkedList::add_after(const KIVObject* after, KIVObject* object)
{
    KIVLinkOb* place = find(after);
    if (!place)
        return add(object);
    put_between(place, new KIVLinkOb(object), place->next);
    return place->next;
}

KIVLinkOb* KIVLinkedList::add_at_index(int index, KIVObject* object)
{
    KIVLinkOb* behind = index < 0 ? first : find_link_at(index);
    auto* link = new KIVLinkOb(object);
    put_between(behind ? behind->prev : last, link, behind);
    return link;
}

void KIVLinkedList::add_link_first(gsl::owner<KIVLinkOb*> link)
{
    put_between(nullptr, link, first);
}

void KIVLinkedList::add_link_after(KIVLinkOb* after, gsl::owner<KIVLinkOb*> link)
{
    put_between(after, link, after->next);
}

bool KIVLinkedList::remove(const KIVObject* object)
{
    KIVLinkOb* link = find(object);
    if (!link)
        return false;
    delete remove_link(link);
    return true;
}

KIVObject* KIVLinkedList::remove()
{
    if (!first)
        return nullptr;
    KIVObject* object = first->object;
    delete remove_link(first);
    return object;
}

gsl::owner<KIVLinkOb*> KIVLinkedList::remove_link(KIVLinkOb* link)
{
    (link->prev ? link->prev->next : first) = link->next;
    (link->next ? link->next->prev : last) = link->prev;
    link->prev = link->next = nullptr;
    --size;
    count_change();
    return link;
}

void KIVLinkedList::remove_all()
{
    while (first)
        delete remove_link(first);
}

void KIVLinkedList::remove_all_deleting_objects()
{
    while (first)
        delete remove();
}

KIVLinkOb* KIVLinkedList::find(const KIVObject* object) const
{
    KIVLinkOb* link = first;
    while (link && link->object != object)
        link = link->next;
    return link;
}

int KIVLinkedList::find_index_of(const KIVObject* object) const
{
    int index = 0;
    for (const KIVLinkOb* link = first; link; link = link->next, ++index)
        if (link->object == object)
            return index;
    return -1;
}

KIVLinkOb* KIVLinkedList::find_link_at(int index) const
{
    if (index < 0 || index >= size)
        return nullptr;
    KIVLinkOb* link = index < size / 2 ? first : last;
    if (link == first)
        for (; index > 0; --index)
            link = link->next;
    else
        for (; index < size - 1; ++index)
            link = link->prev;
    return link;
}

KIVObject* KIVLinkedList::at_index(int index) const
{
    const KIVLinkOb* link = find_link_at(index);
    return link ? link->object : nullptr;
}

KIVObject* ReadOnlyIterator::step_to(KIVLinkOb* link)
{
    has_started = true;
    current = link;
    resume_next = resume_prev = nullptr;
    return (*this)();
}

KIVObject* ReadOnlyIterator::operator++()
{
    if (!has_started)
        return step_to(list->inq_first_link());
    return step_to(current ? current->inq_next() : resume_next);
}

KIVObject* ReadOnlyIterator::operator--(int)
{
    if (!has_started)
        return step_to(list->inq_last_link());
    return step_to(current ? current->inq_prev() : resume_prev);
}

void ReadOnlyIterator::reset()
{
    step_to(nullptr);
    has_started = false;
}

KIVObject* KIVIterator::remove()
{
    KIVObject* object = (*this)();
    delete remove_this();
    return object;
}

gsl::owner<KIVLinkOb*> KIVIterator::remove_this()
{
    if (!current)
        return nullptr;
    KIVLinkOb* taken = std::exchange(current, nullptr);
    resume_next = taken->inq_next();
    resume_prev = taken->inq_prev();
    return changed_list->remove_link(taken);
}
