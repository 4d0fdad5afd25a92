#pragma once

#include "kivlib/hdr/StoredClass.h"

#include <vector>

/// An object at a number.
class NumLinkOb {
public:
    NumLinkOb(KIVObject* object, int number) : object(object), number(number) {}

    KIVObject* value() const { return object; }
    int inq_number() const { return number; }

private:
    KIVObject* object; // not owned
    int number;
};

/// Objects at numbers, with holes. The list refers to its objects.
class NumberedList : public KIVObject {
    KIV_STORED(NumberedList, KIVObject);

public:
    NumberedList() = default;

    /// Claims what it reads: whoever has the list deletes the objects.
    explicit NumberedList(KIVIStream& stream);

    void storer(KIVOStream& stream) override;

    /// The link is valid until the next addition.
    NumLinkOb* add(KIVObject* object, int number);

    /// Null where there is none.
    KIVObject* find_object_at(int number) const;
    const std::vector<NumLinkOb>& inq_links() const { return links; }

private:
    std::vector<NumLinkOb> links;
};
