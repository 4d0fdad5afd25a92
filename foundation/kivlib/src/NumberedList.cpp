#include "kivlib/hdr/NumberedList.h"

#include "kivlib/hdr/KIVOStream.h"

KIV_STORED_CLASS(NumberedList, -1);

NumberedList::NumberedList(KIVIStream& stream) : KIVObject(stream)
{
    for (int left = stream.read_count(sizeof(int) + sizeof(short)); left > 0; --left) {
        int number = 0;
        stream >> number;
        KIVObject* object = stream.read_object(nullptr);
        if (object && stream.claim(object))
            add(object, number);
    }
}

void NumberedList::storer(KIVOStream& stream)
{
    KIVObject::storer(stream);
    stream << static_cast<int>(links.size());
    for (const NumLinkOb& link : links) {
        stream << link.inq_number();
        stream.insert_with_class_hdr(link.value());
    }
}

NumLinkOb* NumberedList::add(KIVObject* object, int number)
{
    return &links.emplace_back(object, number);
}

KIVObject* NumberedList::find_object_at(int number) const
{
    const auto found = std::ranges::find(links, number, &NumLinkOb::inq_number);
    return found == links.end() ? nullptr : found->value();
}
